// See native_null.h. Handles start at 0x10001, so that none of them fits into 16 bits.
#include "support/native_null.h"

#include <algorithm>
#include <deque>

#include "window/messages.h"

namespace pelt {

NullSystem null_system;

namespace {

constexpr WindowHandle FIRST_HANDLE = 0x10001;

std::deque<NullWindow> windows;  // a deque, so that records stay where they are

NullWindow* living(WindowHandle window) {
    NullWindow* found = null_window(window);
    return found != nullptr && found->exists ? found : nullptr;
}

void log_call(const char* name) { null_system.calls.emplace_back(name); }

NullWindow& add_record(WindowHandle parent) {
    NullWindow& added = windows.emplace_back();
    added.handle = FIRST_HANDLE + windows.size() - 1;
    added.parent = parent;
    return added;
}

// A device is the handle of its window, a context is the same with one bit more.
constexpr NativeContext CONTEXT_BIT = 0x1000000;

void size_changed(WindowHandle window, int32_t client_width, int32_t client_height) {
    if (NullWindow* changed = living(window)) { changed->paint_pending = true; }
    window_procedure(window, MESSAGE_SIZE, 0, message_pair(client_width, client_height));
}

}  // namespace

void null_reset() {
    gl_system_init(0);  // while the old records still stand: it releases their contexts
    windows.clear();
    null_system = NullSystem{};
    gl_system_init(0);
}

WindowHandle null_add_window(int32_t width, int32_t height, WindowHandle parent, int32_t x, int32_t y) {
    NullWindow& added = add_record(parent);
    added.x = x;
    added.y = y;
    added.width = width;
    added.height = height;
    added.shown = true;
    return added.handle;
}

NullWindow* null_window(WindowHandle window) {
    if (window < FIRST_HANDLE || window - FIRST_HANDLE >= windows.size()) { return nullptr; }
    return &windows[window - FIRST_HANDLE];
}

void null_resize(WindowHandle window, int32_t width, int32_t height) {
    NullWindow* parent = living(window);
    if (parent == nullptr || (parent->width == width && parent->height == height)) { return; }
    parent->width = width;
    parent->height = height;
    for (size_t i = 0; i < windows.size(); ++i) {
        if (windows[i].parent != window || !windows[i].exists || windows[i].border == 0) { continue; }
        window_procedure(windows[i].handle, MESSAGE_SIZE, 0, message_pair(width, height));
    }
}

void null_destroy_tree(WindowHandle window) {
    for (size_t i = 0; i < windows.size(); ++i) {
        if (windows[i].parent == window && windows[i].exists) {
            native_desktop_layer()->window_destroy(windows[i].handle);
        }
    }
    if (NullWindow* gone = living(window)) { gone->exists = false; }
}

void null_expose(WindowHandle window) {
    if (NullWindow* exposed = living(window)) { exposed->paint_pending = true; }
}

int null_run(int rounds) {
    int sent = 0;
    for (int round = 0; round < rounds; ++round) {
        const int before = sent;
        for (size_t i = 0; i < windows.size(); ++i) {
            if (!native_desktop_layer()->paint_pending(windows[i].handle)) { continue; }
            window_procedure(windows[i].handle, MESSAGE_PAINT, 0, 0);
            ++sent;
        }
        if (sent == before) { break; }
    }
    return sent;
}

// ---- The seam.

namespace {

WindowHandle window_create(const char* title, WindowHandle parent, int32_t outer_width, int32_t outer_height,
                           bool popup) {
    log_call("create");
    if (null_system.fail_window) { return 0; }
    NullWindow& made = add_record(parent);
    made.title = title == nullptr ? "" : title;
    made.width = outer_width;
    made.height = outer_height;
    made.border = popup ? 0 : NULL_BORDER;
    const WindowHandle handle = made.handle;
    size_changed(handle, outer_width - 2 * made.border, outer_height - 2 * made.border);
    made.paint_pending = false;
    return handle;
}

void window_raise(WindowHandle window) {
    log_call("raise");
    if (NullWindow* raised = living(window)) { ++raised->raises; }
}

void window_show(WindowHandle window) {
    log_call("show");
    if (NullWindow* shown = living(window)) { shown->shown = shown->paint_pending = true; }
}

void window_move(WindowHandle window, int32_t x, int32_t y, int32_t outer_width, int32_t outer_height) {
    log_call("move");
    NullWindow* moved = living(window);
    if (moved == nullptr) { return; }
    ++moved->moves;
    moved->x = x;
    moved->y = y;
    if (moved->width == outer_width && moved->height == outer_height) { return; }
    moved->width = outer_width;
    moved->height = outer_height;
    size_changed(window, outer_width - 2 * moved->border, outer_height - 2 * moved->border);
}

void window_destroy(WindowHandle window) {
    log_call("destroy");
    NullWindow* gone = living(window);
    if (gone == nullptr) { return; }
    window_procedure(window, MESSAGE_DESTROY, 0, 0);
    gone->exists = gone->shown = gone->paint_pending = false;
}

bool client_size(WindowHandle window, int32_t* width, int32_t* height) {
    const NullWindow* found = living(window);
    if (found == nullptr) { return false; }
    *width = std::max(found->width - 2 * found->border, 0);
    *height = std::max(found->height - 2 * found->border, 0);
    return true;
}

bool window_origin(WindowHandle window, int32_t* x, int32_t* y) {
    const NullWindow* found = living(window);
    if (found == nullptr) { return false; }
    *x = found->x;
    *y = found->y;
    return true;
}

WindowHandle window_parent(WindowHandle window) {
    const NullWindow* found = living(window);
    return found == nullptr ? 0 : found->parent;
}

std::intptr_t default_message(WindowHandle window, uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
    null_system.defaults.push_back({window, message, wparam, lparam});
    return null_system.default_result;
}

NativeDevice device_get(WindowHandle window) {
    log_call("device");
    NullWindow* found = living(window);
    if (found == nullptr) { return 0; }
    ++found->devices;
    return window;
}

void device_release(WindowHandle window, NativeDevice device) {
    if (device == 0) { return; }
    log_call("release");
    if (NullWindow* found = null_window(window)) { --found->devices; }
}

bool format_set(NativeDevice device) {
    log_call("format");
    return device != 0 && !null_system.fail_format;
}

bool format_get(NativeDevice device, NativeFormat* format) {
    log_call("format_get");
    if (device == 0) { return false; }
    *format = null_system.format;
    return true;
}

NativeContext context_create(NativeDevice device) {
    log_call("context");
    NullWindow* found = living(device);
    if (found == nullptr || null_system.fail_context) { return 0; }
    ++found->contexts;
    return device | CONTEXT_BIT;
}

void context_destroy(NativeContext context) {
    if (context == 0) { return; }
    log_call("context_destroy");
    if (NullWindow* found = null_window(context & ~CONTEXT_BIT)) { --found->contexts; }
}

bool context_make_current(NativeDevice device, NativeContext context) {
    log_call(context == 0 ? "current_none" : "current");
    null_system.current_device = device;
    null_system.current_context = context;
    ++null_system.makes_current;
    return true;
}

bool drawing_limit(int32_t* width, int32_t* height) {
    *width = null_system.drawing_limit_width;
    *height = null_system.drawing_limit_height;
    return *width > 0;
}

void swap_buffers(NativeDevice device) {
    log_call("swap");
    if (NullWindow* found = living(device)) { ++found->swaps; }
}

bool swap_keeps_back_buffer(NativeDevice device) { return device != 0 && null_system.keeps_back_buffer; }

void set_background(NativeDevice device, uint32_t colour) {
    log_call("background");
    if (NullWindow* found = living(device)) { found->background = colour; }
}

bool paint_pending(WindowHandle window) {
    const NullWindow* found = living(window);
    return found != nullptr && found->shown && found->paint_pending;
}

void invalidate(WindowHandle window) {
    ++null_system.invalidations;
    null_expose(window);
}

void begin_paint(WindowHandle window, NativePaint*) {
    log_call("begin_paint");
    NullWindow* found = living(window);
    if (found == nullptr) { return; }
    found->paint_pending = false;
    ++found->paints_begun;
}

void end_paint(WindowHandle window, NativePaint*) {
    log_call("end_paint");
    if (NullWindow* found = living(window)) { ++found->paints_ended; }
}

NativePalette palette_create(const PaletteEntry* entries, int32_t count) {
    log_call("palette");
    null_system.palette.assign(entries, entries + count);
    return 0x500 + static_cast<NativePalette>(++null_system.palettes);
}

NativePalette palette_select(NativeDevice, NativePalette palette) {
    null_system.selections.push_back(palette);
    return null_system.displaced_palette;
}

void palette_realize(NativeDevice) { ++null_system.realizes; }

void palette_update_colors(NativeDevice) { ++null_system.colour_updates; }

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
    layer.palette_create = palette_create;
    layer.palette_select = palette_select;
    layer.palette_realize = palette_realize;
    layer.palette_update_colors = palette_update_colors;
    return layer;
}

}  // namespace

const NativeLayer* native_desktop_layer() {
    static const NativeLayer layer = make_layer();
    return &layer;
}

bool native_offscreen_open(int32_t width, int32_t height, int32_t samples, NativeOffscreen* made,
                           std::string* failure) {
    null_system.offscreen_samples = samples;
    if (null_system.fail_offscreen) {
        *failure = "no driver";
        return false;
    }
    *made = NativeOffscreen{native_desktop_layer(), null_add_window(width, height), 0, 0};
    if (null_system.tells_offscreen_limit) {
        made->width_max = null_system.drawing_limit_width;
        made->height_max = null_system.drawing_limit_height;
    }
    return true;
}

void native_offscreen_close(const NativeOffscreen& offscreen) { null_destroy_tree(offscreen.parent); }

void native_init(std::uintptr_t instance) { null_system.instance = instance; }

WindowHandle native_window_of_tk(void* tk_window) {
    const auto handle = reinterpret_cast<WindowHandle>(tk_window);
    return living(handle) == nullptr ? 0 : handle;
}

bool native_events_held(void*) { return false; }

NativeCursor native_cursor_load_builtin(int32_t group) {
    null_system.builtin_loads.push_back(group);
    return static_cast<NativeCursor>(group);
}

NativeCursor native_cursor_load_file(const char* path) {
    null_system.file_loads.emplace_back(path);
    const auto& files = null_system.cursor_files;
    const auto found = std::find(files.begin(), files.end(), path);
    return found == files.end() ? 0 : 0x1000 + static_cast<NativeCursor>(found - files.begin());
}

void native_cursor_apply(NativeCursor cursor) { null_system.cursors_applied.push_back(cursor); }

void native_cursor_show(bool shown) { null_system.cursor_shows.push_back(shown); }

bool native_pointer_set(int32_t x, int32_t y) {
    if (null_system.fail_pointer) { return false; }
    null_system.pointer_x = x;
    null_system.pointer_y = y;
    return true;
}

bool native_pointer_get(int32_t* x, int32_t* y) {
    if (null_system.fail_pointer) { return false; }
    *x = null_system.pointer_x;
    *y = null_system.pointer_y;
    return true;
}

void native_status_text(WindowHandle status_bar, const char* text) {
    null_system.status_bar = status_bar;
    null_system.status_text = text;
}

}  // namespace pelt
