// OpenGL on X11: which visual, and the contexts. What surprises: the visual has to be chosen before the window is made,
// so setting the format of a device only tells whether that worked. A device is the record of its window.
#include <cstdint>

#include "window/pixel_format.h"
#include "window/x11/native_x11.h"

#ifndef GLX_SWAP_METHOD_OML
#define GLX_SWAP_METHOD_OML 0x8060
#define GLX_SWAP_COPY_OML 0x8062
#endif

namespace pelt {

namespace {

struct X11Context {
    Display* display;
    GLXContext context;
};

X11Window* device_window(NativeDevice device) { return reinterpret_cast<X11Window*>(device); }

int config_value(Display* display, GLXFBConfig config, int attribute) {
    int value = 0;
    return glXGetFBConfigAttrib(display, config, attribute, &value) == 0 ? value : 0;
}

bool swap_copies(Display* display, GLXFBConfig config) {
    return config_value(display, config, GLX_SWAP_METHOD_OML) == GLX_SWAP_COPY_OML;
}

PixelFormat format_of(Display* display, GLXFBConfig config, const XVisualInfo& info) {
    const auto value = [&](int attribute) { return config_value(display, config, attribute); };
    return PixelFormat{.colour_bits = value(GLX_RED_SIZE),
                       .alpha_bits = value(GLX_ALPHA_SIZE),
                       .depth_bits = value(GLX_DEPTH_SIZE),
                       .stencil_bits = value(GLX_STENCIL_SIZE),
                       .accumulation_bits = value(GLX_ACCUM_RED_SIZE),
                       .samples = value(GLX_SAMPLES),
                       .opaque = info.depth < 32,
                       .warns = value(GLX_CONFIG_CAVEAT) != GLX_NONE,
                       .swap_keeps_back_buffer = swap_copies(display, config)};
}

void choose_config(Display* display, int screen, X11Visual* chosen) {
    // clang-format off
    static constexpr int WANTED[] = {
        GLX_X_RENDERABLE, True, GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT, GLX_RENDER_TYPE, GLX_RGBA_BIT, GLX_DOUBLEBUFFER, True,
        GLX_RED_SIZE, PIXEL_COLOUR_BITS, GLX_GREEN_SIZE, PIXEL_COLOUR_BITS, GLX_BLUE_SIZE, PIXEL_COLOUR_BITS,
        GLX_DEPTH_SIZE, PIXEL_DEPTH_BITS, 0,
    };
    // clang-format on
    int count = 0;
    GLXFBConfig* configs = glXChooseFBConfig(display, screen, WANTED, &count);
    int best = -1;
    for (int i = 0; configs != nullptr && i < count; ++i) {
        XVisualInfo* info = glXGetVisualFromFBConfig(display, configs[i]);
        if (info == nullptr) { continue; }
        const int score = pixel_format_score(format_of(display, configs[i], *info), 0);
        if (score > best) {
            best = score;
            *chosen = X11Visual{info->visual, info->depth, configs[i], *info, swap_copies(display, configs[i])};
        }
        XFree(info);
    }
    if (configs != nullptr) { XFree(configs); }
}

void choose_older_way(Display* display, int screen, X11Visual* chosen) {
    // clang-format off
    int wanted[] = {
        GLX_RGBA, GLX_DOUBLEBUFFER,
        GLX_RED_SIZE, PIXEL_COLOUR_BITS, GLX_GREEN_SIZE, PIXEL_COLOUR_BITS, GLX_BLUE_SIZE, PIXEL_COLOUR_BITS,
        GLX_DEPTH_SIZE, PIXEL_DEPTH_BITS, 0,
    };
    // clang-format on
    XVisualInfo* info = glXChooseVisual(display, screen, wanted);
    if (info == nullptr) { return; }
    *chosen = X11Visual{info->visual, info->depth, nullptr, *info, false};
    XFree(info);
}

GLXContext create_context(const X11Window& window, Bool direct) {
    X11Visual visual = window.visual;
    X11ErrorTrap trap{};
    x11_trap_begin(&trap, window.display);
    const GLXContext context = visual.config != nullptr
                                   ? glXCreateNewContext(window.display, visual.config, GLX_RGBA_TYPE, nullptr, direct)
                                   : glXCreateContext(window.display, &visual.info, nullptr, direct);
    if (!x11_trap_end(&trap)) { return context; }
    if (context != nullptr) { glXDestroyContext(window.display, context); }
    return nullptr;
}

}  // namespace

X11Visual x11_choose_visual(Display* display, int screen) {
    X11Visual chosen{};
    int error = 0, event = 0, major = 0, minor = 0;
    if (!glXQueryExtension(display, &error, &event)) { return chosen; }
    if (!glXQueryVersion(display, &major, &minor)) { return chosen; }
    X11ErrorTrap trap{};
    x11_trap_begin(&trap, display);
    if (major > 1 || minor >= 3) { choose_config(display, screen, &chosen); }
    if (chosen.visual == nullptr) { choose_older_way(display, screen, &chosen); }
    x11_trap_end(&trap);
    return chosen;
}

namespace {

NativeDevice device_get(WindowHandle window) { return reinterpret_cast<NativeDevice>(x11_find(window)); }

void device_release(WindowHandle, NativeDevice) {}

bool format_set(NativeDevice device) { return device != 0 && device_window(device)->visual.visual != nullptr; }

// Whatever the display is, it needs no palette: the window has a visual and a colour map of its own.
bool format_get(NativeDevice device, NativeFormat* format) {
    if (device == 0) { return false; }
    *format = NativeFormat{};
    format->color_bits = device_window(device)->visual.depth;
    return true;
}

NativeContext context_create(NativeDevice device) {
    if (!format_set(device)) { return 0; }
    const X11Window& window = *device_window(device);
    GLXContext context = create_context(window, True);
    if (context == nullptr) { context = create_context(window, False); }
    if (context == nullptr) { return 0; }
    return reinterpret_cast<NativeContext>(new X11Context{window.display, context});
}

void context_destroy(NativeContext context) {
    auto* gone = reinterpret_cast<X11Context*>(context);
    if (gone == nullptr) { return; }
    if (glXGetCurrentContext() == gone->context) { glXMakeCurrent(gone->display, None, nullptr); }
    glXDestroyContext(gone->display, gone->context);
    delete gone;
}

bool context_make_current(NativeDevice device, NativeContext context) {
    if (device == 0 || context == 0) {
        Display* display = glXGetCurrentDisplay();
        return display == nullptr || glXMakeCurrent(display, None, nullptr) != 0;
    }
    const X11Window& window = *device_window(device);
    X11ErrorTrap trap{};
    x11_trap_begin(&trap, window.display);
    const bool made = glXMakeCurrent(window.display, window.id, reinterpret_cast<X11Context*>(context)->context) != 0;
    return !x11_trap_end(&trap) && made;
}

bool drawing_limit(int32_t* width, int32_t* height) {
    GLint limits[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits);
    *width = limits[0];
    *height = limits[1];
    return *width > 0 && *height > 0;
}

void swap_buffers(NativeDevice device) {
    if (device != 0) { glXSwapBuffers(device_window(device)->display, device_window(device)->id); }
}

bool swap_keeps_back_buffer(NativeDevice device) {
    return device != 0 && device_window(device)->visual.swap_keeps_back_buffer;
}

// The window has no background: OpenGL paints all of it.
void set_background(NativeDevice, uint32_t) {}

}  // namespace

void x11_offer_drawing(NativeLayer* layer) {
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
}

}  // namespace pelt
