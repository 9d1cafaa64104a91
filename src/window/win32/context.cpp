// OpenGL on Win32: pixel format, contexts and palettes. A device is a device context of the window, kept as long as the
// OpenGL context lives.
#include <cstdint>
#include <vector>

#include "window/win32/native_win32.h"

// Behind the system's own header, whose types it is written in.
#include <GL/gl.h>

namespace pelt {

namespace {

constexpr WORD PALETTE_VERSION = 0x300;

// Colour and depth of 16 bits are the least; everything that is not named is 0.
constexpr PIXELFORMATDESCRIPTOR wanted_format() {
    PIXELFORMATDESCRIPTOR format{};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 16;
    format.cDepthBits = 16;
    return format;
}
constexpr PIXELFORMATDESCRIPTOR WANTED_FORMAT = wanted_format();
static_assert(sizeof(PIXELFORMATDESCRIPTOR) == 40);
static_assert(NATIVE_FORMAT_NEEDS_PALETTE == PFD_NEED_PALETTE);

HDC device_context(NativeDevice device) { return reinterpret_cast<HDC>(device); }
HGLRC render_context(NativeContext context) { return reinterpret_cast<HGLRC>(context); }

bool describe_format(NativeDevice device, PIXELFORMATDESCRIPTOR* format) {
    if (device == 0) { return false; }
    const int number = GetPixelFormat(device_context(device));
    return number != 0 && DescribePixelFormat(device_context(device), number, sizeof *format, format) != 0;
}

NativeDevice device_get(WindowHandle window) {
    if (win32_find(win32_handle(window)) == nullptr) { return 0; }
    return reinterpret_cast<NativeDevice>(GetDC(win32_handle(window)));
}

void device_release(WindowHandle window, NativeDevice device) {
    if (device != 0) { ReleaseDC(win32_handle(window), device_context(device)); }
}

bool format_set(NativeDevice device) {
    if (device == 0) { return false; }
    const int number = ChoosePixelFormat(device_context(device), &WANTED_FORMAT);
    return number != 0 && SetPixelFormat(device_context(device), number, &WANTED_FORMAT) != 0;
}

bool format_get(NativeDevice device, NativeFormat* format) {
    PIXELFORMATDESCRIPTOR described{};
    if (!describe_format(device, &described)) { return false; }
    *format = NativeFormat{described.dwFlags,    described.cColorBits,  described.cRedBits,  described.cRedShift,
                           described.cGreenBits, described.cGreenShift, described.cBlueBits, described.cBlueShift};
    return true;
}

NativeContext context_create(NativeDevice device) {
    return device == 0 ? 0 : reinterpret_cast<NativeContext>(wglCreateContext(device_context(device)));
}

void context_destroy(NativeContext context) {
    if (context != 0) { wglDeleteContext(render_context(context)); }
}

bool context_make_current(NativeDevice device, NativeContext context) {
    if (device == 0 || context == 0) { return wglMakeCurrent(nullptr, nullptr) != 0; }
    return wglMakeCurrent(device_context(device), render_context(context)) != 0;
}

bool drawing_limit(int32_t* width, int32_t* height) {
    GLint limits[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits);
    *width = limits[0];
    *height = limits[1];
    return *width > 0 && *height > 0;
}

void swap_buffers(NativeDevice device) {
    if (device != 0) { SwapBuffers(device_context(device)); }
}

bool swap_keeps_back_buffer(NativeDevice device) {
    PIXELFORMATDESCRIPTOR described{};
    return describe_format(device, &described) && (described.dwFlags & PFD_SWAP_COPY) != 0;
}

void set_background(NativeDevice device, uint32_t colour) {
    if (device != 0) { SetBkColor(device_context(device), colour); }
}

// ---- Palettes.

NativePalette palette_create(const PaletteEntry* entries, int32_t count) {
    if (entries == nullptr || count <= 0) { return 0; }
    const auto size = static_cast<size_t>(count);
    std::vector<uint32_t> memory(size + sizeof(LOGPALETTE) / sizeof(uint32_t));  // the header holds one entry already
    auto* palette = reinterpret_cast<LOGPALETTE*>(memory.data());
    palette->palVersion = PALETTE_VERSION;
    palette->palNumEntries = static_cast<WORD>(count);
    for (size_t i = 0; i < size; ++i) {
        palette->palPalEntry[i] = PALETTEENTRY{entries[i].red, entries[i].green, entries[i].blue, entries[i].flags};
    }
    return reinterpret_cast<NativePalette>(CreatePalette(palette));
}

NativePalette palette_select(NativeDevice device, NativePalette palette) {
    if (device == 0 || palette == 0) { return 0; }
    return reinterpret_cast<NativePalette>(
        SelectPalette(device_context(device), reinterpret_cast<HPALETTE>(palette), FALSE));
}

void palette_realize(NativeDevice device) {
    if (device != 0) { RealizePalette(device_context(device)); }
}

void palette_update_colors(NativeDevice device) {
    if (device != 0) { UpdateColors(device_context(device)); }
}

}  // namespace

void win32_offer_drawing(NativeLayer* layer) {
    layer->device_get = device_get;
    layer->device_release = device_release;
    layer->format_set = format_set;
    layer->format_get = format_get;
    layer->context_create = context_create;
    layer->context_destroy = context_destroy;
    layer->context_make_current = context_make_current;
    layer->drawing_limit = drawing_limit;
    layer->swap_buffers = swap_buffers;
    layer->swap_keeps_back_buffer = swap_keeps_back_buffer;
    layer->set_background = set_background;
    layer->palette_create = palette_create;
    layer->palette_select = palette_select;
    layer->palette_realize = palette_realize;
    layer->palette_update_colors = palette_update_colors;
}

}  // namespace pelt
