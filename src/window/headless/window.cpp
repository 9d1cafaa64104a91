// Windows that nobody sees: records here, and a drawing area of the driver for each. What surprises: the parent, which
// elsewhere belongs to a toolkit, is a record too; and there are no events, so that a paint that is left pending is
// handed over when Tcl is idle.
#include <algorithm>
#include <memory>
#include <vector>

#include "window/headless/egl.h"
#include "window/messages.h"
#include "window/native.h"

// Behind everything of ours.
#include <tcl.h>

namespace pelt {

namespace {

constexpr WindowHandle FIRST_HANDLE = 0x80000001;  // no window of a desktop has such a one
constexpr int32_t BORDER = 1;

struct Area {
    WindowHandle handle;
    WindowHandle parent;  // 0 for what a window is made in
    int32_t x, y;
    int32_t width, height;  // without the border
    int32_t border;
    EGLSurface surface;  // null for a parent
    bool shown;
    bool paint_pending;
};

// The area beside the window for pictures; kept, because the next one is mostly like the last.
struct PictureArea {
    EGLSurface surface;
    int32_t width, height, samples;
};

std::vector<std::unique_ptr<Area>> areas;
WindowHandle next_handle = FIRST_HANDLE;
int32_t window_samples;
PictureArea picture;

Area* find(WindowHandle window) {
    for (const auto& each : areas) {
        if (each->handle == window) { return each.get(); }
    }
    return nullptr;
}

Area* device_area(NativeDevice device) { return find(device); }  // a device is the handle of its window

void forget(WindowHandle window) {
    std::erase_if(areas, [window](const auto& each) { return each->handle == window; });
}

// ---- Paints.

bool paint_pending(WindowHandle window) {
    const Area* found = find(window);
    return found != nullptr && found->shown && found->paint_pending;
}

void paint_when_idle(ClientData data) { gl_paint_pending(reinterpret_cast<WindowHandle>(data)); }

void leave_paint(Area* area) {
    area->paint_pending = true;
    Tcl_CancelIdleCall(paint_when_idle, reinterpret_cast<ClientData>(area->handle));
    Tcl_DoWhenIdle(paint_when_idle, reinterpret_cast<ClientData>(area->handle));
}

void invalidate(WindowHandle window) {
    if (Area* found = find(window)) { leave_paint(found); }
}

void begin_paint(WindowHandle window, NativePaint*) {
    Area* found = find(window);
    if (found == nullptr) { return; }
    found->paint_pending = false;
    Tcl_CancelIdleCall(paint_when_idle, reinterpret_cast<ClientData>(window));
}

void end_paint(WindowHandle, NativePaint*) {}

// ---- Windows.

void take_size(WindowHandle window, int32_t width, int32_t height) {
    Area* area = find(window);
    area->width = width;
    area->height = height;
    leave_paint(area);
    window_procedure(window, MESSAGE_SIZE, 0, message_pair(width, height));
}

Area* add_area(WindowHandle parent, int32_t width, int32_t height, int32_t border) {
    auto area = std::make_unique<Area>();
    area->handle = next_handle++;
    area->parent = parent;
    area->width = width;
    area->height = height;
    area->border = border;
    areas.push_back(std::move(area));
    return areas.back().get();
}

WindowHandle window_create(const char*, WindowHandle parent, int32_t outer_width, int32_t outer_height, bool popup) {
    if (find(parent) == nullptr) { return 0; }
    const int32_t border = popup ? 0 : BORDER;
    const int32_t width = std::max(outer_width - 2 * border, 1);
    const int32_t height = std::max(outer_height - 2 * border, 1);
    const EGLSurface surface = egl_surface_create(width, height, window_samples);
    if (surface == EGL_NO_SURFACE) { return 0; }
    Area* area = add_area(parent, width, height, border);
    area->surface = surface;
    return area->handle;
}

void window_raise(WindowHandle) {}

void window_show(WindowHandle window) {
    Area* found = find(window);
    if (found == nullptr) { return; }
    found->shown = true;
    leave_paint(found);
}

// A drawing area has the size it was made in, so that another size is another one. The old one stays when there is no
// memory for the new.
bool replace_surface(Area* area, int32_t width, int32_t height) {
    const EGLSurface surface = egl_surface_create(width, height, window_samples);
    if (surface == EGL_NO_SURFACE) { return false; }
    if (!egl_make_current(surface)) {
        egl_make_current(area->surface);
        egl_surface_destroy(surface);
        return false;
    }
    egl_surface_destroy(area->surface);
    area->surface = surface;
    return true;
}

void window_move(WindowHandle window, int32_t x, int32_t y, int32_t outer_width, int32_t outer_height) {
    Area* found = find(window);
    if (found == nullptr || found->surface == EGL_NO_SURFACE) { return; }
    found->x = x;
    found->y = y;
    const int32_t width = std::max(outer_width - 2 * found->border, 1);
    const int32_t height = std::max(outer_height - 2 * found->border, 1);
    if (width == found->width && height == found->height) { return; }
    if (replace_surface(found, width, height)) { take_size(window, width, height); }
}

void window_destroy(WindowHandle window) {
    if (find(window) == nullptr) { return; }
    Tcl_CancelIdleCall(paint_when_idle, reinterpret_cast<ClientData>(window));
    window_procedure(window, MESSAGE_DESTROY, 0, 0);
    if (const Area* gone = find(window)) { egl_surface_destroy(gone->surface); }
    forget(window);
}

bool client_size(WindowHandle window, int32_t* width, int32_t* height) {
    const Area* found = find(window);
    if (found == nullptr) { return false; }
    *width = found->width;
    *height = found->height;
    return true;
}

bool window_origin(WindowHandle window, int32_t* x, int32_t* y) {
    const Area* found = find(window);
    if (found == nullptr) { return false; }
    *x = found->x;
    *y = found->y;
    return true;
}

WindowHandle window_parent(WindowHandle window) {
    const Area* found = find(window);
    return found != nullptr ? found->parent : 0;
}

std::intptr_t default_message(WindowHandle, uint32_t, std::uintptr_t, std::intptr_t) { return 0; }

// ---- Drawing.

NativeDevice device_get(WindowHandle window) { return find(window) != nullptr ? window : 0; }
void device_release(WindowHandle, NativeDevice) {}

// The format was chosen with the drawing area.
bool format_set(NativeDevice device) { return device_area(device) != nullptr; }

bool format_get(NativeDevice device, NativeFormat* format) {
    if (device_area(device) == nullptr) { return false; }
    *format = NativeFormat{};
    return true;
}

// The driver has made it when it was opened.
NativeContext context_create(NativeDevice device) {
    const Area* area = device_area(device);
    if (area == nullptr || !egl_make_current(area->surface)) { return 0; }
    return reinterpret_cast<NativeContext>(egl_context());
}

void context_destroy(NativeContext context) {
    if (context == 0) { return; }
    egl_surface_destroy(picture.surface);
    picture = PictureArea{};
    egl_context_destroy();
}

bool context_make_current(NativeDevice device, NativeContext context) {
    if (device == 0 || context == 0) { return egl_make_current(EGL_NO_SURFACE); }
    const Area* area = device_area(device);
    return area != nullptr && egl_make_current(area->surface);
}

bool drawing_limit(int32_t* width, int32_t* height) {
    egl_drawing_limit(width, height);
    return true;
}

// There is one buffer, and whoever wants it reads it.
void swap_buffers(NativeDevice) {}
bool swap_keeps_back_buffer(NativeDevice) { return true; }
void set_background(NativeDevice, uint32_t) {}

bool picture_begin(NativeDevice device, NativeContext context, int32_t width, int32_t height, int32_t samples) {
    const Area* area = device_area(device);
    if (area == nullptr || context == 0) { return false; }
    if (samples < 0) { samples = window_samples; }
    if (picture.surface == EGL_NO_SURFACE || picture.width != width || picture.height != height ||
        picture.samples != samples) {
        egl_surface_destroy(picture.surface);
        picture = PictureArea{egl_surface_create(width, height, samples), width, height, samples};
    }
    if (picture.surface != EGL_NO_SURFACE && egl_make_current(picture.surface)) { return true; }
    egl_make_current(area->surface);
    return false;
}

void picture_end(NativeDevice device, NativeContext context) { context_make_current(device, context); }

NativeLayer make_layer() {
    NativeLayer layer{};
    layer.window_create = window_create;
    layer.window_raise = window_raise;
    layer.window_show = window_show;
    layer.window_move = window_move;
    layer.window_destroy = window_destroy;
    layer.client_size = client_size;
    layer.window_origin = window_origin;
    layer.window_parent = window_parent;
    layer.default_message = default_message;
    layer.paint_pending = paint_pending;
    layer.invalidate = invalidate;
    layer.begin_paint = begin_paint;
    layer.end_paint = end_paint;
    layer.device_get = device_get;
    layer.device_release = device_release;
    layer.format_set = format_set;
    layer.format_get = format_get;
    layer.context_create = context_create;
    layer.context_destroy = context_destroy;
    layer.context_make_current = context_make_current;
    layer.drawing_limit = drawing_limit;
    layer.swap_buffers = swap_buffers;
    layer.swap_keeps_back_buffer = swap_keeps_back_buffer;
    layer.set_background = set_background;
    layer.picture_begin = picture_begin;
    layer.picture_end = picture_end;
    return layer;
}

}  // namespace

bool native_offscreen_open(int32_t width, int32_t height, int32_t samples, NativeOffscreen* made,
                           std::string* failure) {
    static const NativeLayer layer = make_layer();
    if (!egl_open(samples, failure)) { return false; }
    window_samples = samples;
    *made = NativeOffscreen{&layer, add_area(0, width, height, 0)->handle, 0, 0};
    egl_drawing_limit(&made->width_max, &made->height_max);
    return true;
}

void native_offscreen_close(const NativeOffscreen& offscreen) { forget(offscreen.parent); }

}  // namespace pelt
