// The rules of the OpenGL window: the table of windows with the procedures to call for each, the order in which one is
// made, and which message does what. Everything native lies behind native.h, which calls back into window_procedure,
// also from inside the calls made here (a move sends a size message before it returns); so no pointer into the table
// is used again after such a call without looking the window up anew.
#include "window/gl_window.h"

#include <algorithm>

#include "window/cursor.h"
#include "window/gl_system.h"
#include "window/input.h"
#include "window/messages.h"
#include "window/native.h"
#include "window/palette.h"

namespace pelt {

GlSystem gl_system;

namespace {

constexpr int PAINT_ATTEMPTS = 3;
constexpr int32_t WINDOW_SIZE_MAX = 32767;  // no window system takes more than 16 signed bits
constexpr int32_t WINDOW_PLACE_MIN = -32768;
constexpr int32_t NEW_WINDOW_SIZE_MAX = 4096;  // no driver is asked for more before it has said what it can draw

bool gl_cursor_shown = true;

// The window when it is the one whose context is current, else null.
GlWindow* drawing_window(WindowHandle window) {
    GlWindow* current = gl_system.current_window;
    if (window == 0 || current == nullptr || current->handle != window || current->context == nullptr) {
        return nullptr;
    }
    return current;
}

int32_t new_window_size(int32_t size) { return std::clamp(size, 1, NEW_WINDOW_SIZE_MAX); }

// Some drivers write out of bounds when a window is larger than they can draw.
void learn_drawing_limit(GlWindow* entry) {
    int32_t width = 0, height = 0;
    if (entry->width_max != 0 || !entry->layer->drawing_limit(&width, &height)) { return; }
    entry->width_max = std::clamp(width, 1, WINDOW_SIZE_MAX);
    entry->height_max = std::clamp(height, 1, WINDOW_SIZE_MAX);
}

// Format, context, init. The palette belongs to the failed path alone: a format that was set makes none, whatever the
// depth of the display. This is intended.
void create_context(WindowHandle window) {
    if (gl_window_find(window) == nullptr) { return; }
    const NativeLayer& layer = gl_layer(window);
    const NativeDevice device = layer.device_get(window);
    if (!layer.format_set(device)) { palette_set_up(layer, device); }
    const NativeContext context = layer.context_create(device);
    GlWindow* entry = gl_window_find(window);
    if (context == 0 || entry == nullptr) {
        layer.context_destroy(context);
        layer.device_release(window, device);
        return;
    }
    entry->context = new GlContext{device, context, {}};
    if (entry->init_proc != nullptr) { entry->init_proc(window, 0, nullptr); }
}

std::string size_text(int32_t width, int32_t height) { return std::to_string(width) + "x" + std::to_string(height); }

// Whether a limit, 0 where it is not known, allows the size; false with a line that names it.
bool driver_draws(int32_t width_max, int32_t height_max, int32_t width, int32_t height, std::string* failure) {
    if (width_max == 0 || (width <= width_max && height <= height_max)) { return true; }
    *failure = "the driver draws at most " + size_text(width_max, height_max) + " pixels";
    return false;
}

bool offscreen_is_good(WindowHandle window, int32_t width, int32_t height, std::string* failure) {
    const GlWindow* entry = gl_window_find(window);
    if (entry == nullptr || entry->context == nullptr) {
        *failure = "the driver has no memory for " + size_text(width, height) + " pixels";
        return false;
    }
    return driver_draws(entry->width_max, entry->height_max, width, height, failure);
}

// The system has given the handle of a dead window to a new one: the dead entry must not be found by it any more.
void forget_handle(WindowHandle window) {
    while (GlWindow* dead = gl_window_find(window)) {
        gl_context_destroy(window);
        dead->handle = 0;
    }
}

}  // namespace

void gl_system_init(std::uintptr_t instance) {
    for (const GlWindow& entry : list_elements<GlWindow>(gl_system.windows)) { gl_context_destroy(entry.handle); }
    list_free(&gl_system.windows);
    list_free(&gl_system.cursors);
    gl_system = GlSystem{};
    list_init(&gl_system.windows, sizeof(GlWindow), KEY_STRING);
    list_init(&gl_system.cursors, sizeof(NativeCursor), KEY_INT);
    gl_cursor_shown = true;
    palette_reset();
    gl_system_bind(instance);
}

void gl_system_bind(std::uintptr_t instance) {
    gl_system.instance = instance;
    native_init(instance);
}

const NativeLayer& gl_layer(WindowHandle window) {
    if (const GlWindow* entry = gl_window_find(window)) { return *entry->layer; }
    return gl_system.layer != nullptr ? *gl_system.layer : *native_desktop_layer();
}

GlWindow* gl_window_find(WindowHandle window) {
    if (window == 0) { return nullptr; }
    for (GlWindow& entry : list_elements<GlWindow>(gl_system.windows)) {
        if (entry.handle == window) { return &entry; }
    }
    return nullptr;
}

WindowHandle gl_window_create(const char* name, WindowHandle parent, WindowProc init, WindowProc paint,
                              WindowProc resize, WindowProc event, int popup) {
    if (name == nullptr) { return 0; }
    if (const void* known = list_find(&gl_system.windows, name)) { return static_cast<const GlWindow*>(known)->handle; }

    int32_t x = 0, y = 0, width = 0, height = 0;
    gl_window_geometry(parent, &x, &y, &width, &height);
    // Messages of the creation find no entry yet and do nothing: the window enters the table afterwards.
    const NativeLayer& layer = gl_layer(parent);
    const WindowHandle window =
        layer.window_create(name, parent, new_window_size(width), new_window_size(height), popup != 0);
    if (window == 0) { return 0; }
    layer.window_raise(window);

    forget_handle(window);
    GlWindow* entry = list_add<GlWindow>(&gl_system.windows, name);
    if (entry == nullptr) {
        layer.window_destroy(window);
        return 0;
    }
    *entry = GlWindow{&layer, window, init, paint, resize, event, nullptr, 0, 0};
    create_context(window);
    gl_set_background(window, 0, 0, 0);
    layer.window_show(window);
    gl_paint_pending(window);
    return window;
}

WindowHandle gl_window_create_offscreen(int32_t width, int32_t height, int32_t samples, WindowProc init,
                                        WindowProc paint, WindowProc resize, WindowProc event, std::string* failure) {
    if (int64_t{width} * height * std::max(samples, 1) * OFFSCREEN_BYTES_PER_SAMPLE > OFFSCREEN_BYTES_MAX) {
        *failure = size_text(width, height) + " pixels at " + std::to_string(std::max(samples, 1)) +
                   " samples are more than is allowed";
        return 0;
    }
    NativeOffscreen offscreen{};
    if (!native_offscreen_open(width, height, samples, &offscreen, failure)) { return 0; }
    WindowHandle window = 0;
    if (driver_draws(offscreen.width_max, offscreen.height_max, width, height, failure)) {
        gl_system.layer = offscreen.layer;
        // A name of its own for each attempt: that of a failed one stays in the table.
        const std::string name = "offscreen " + std::to_string(list_count(&gl_system.windows));
        window = gl_window_create(name.c_str(), offscreen.parent, init, paint, resize, event, 0);
        if (offscreen_is_good(window, width, height, failure)) { return window; }
    }
    if (window != 0) { offscreen.layer->window_destroy(window); }
    native_offscreen_close(offscreen);
    gl_system.layer = nullptr;
    return 0;
}

bool gl_has_picture_areas(WindowHandle window) { return gl_layer(window).picture_begin != nullptr; }

bool gl_picture_begin(WindowHandle window, int32_t width, int32_t height, int32_t samples) {
    const GlWindow* entry = drawing_window(window);
    return entry != nullptr && entry->layer->picture_begin != nullptr &&
           entry->layer->picture_begin(entry->context->device_context, entry->context->render_context, width, height,
                                       samples);
}

void gl_picture_end(WindowHandle window) {
    const GlWindow* entry = drawing_window(window);
    if (entry == nullptr || entry->layer->picture_end == nullptr) { return; }
    entry->layer->picture_end(entry->context->device_context, entry->context->render_context);
}

void gl_paint_pending(WindowHandle window) {
    for (int attempt = 0; attempt < PAINT_ATTEMPTS && gl_layer(window).paint_pending(window); ++attempt) {
        window_procedure(window, MESSAGE_PAINT, 0, 0);
        // Without a context no paint ever begins, so repeating it would be in vain.
        const GlWindow* entry = gl_window_find(window);
        if (entry == nullptr || entry->context == nullptr) { return; }
    }
}

void gl_make_current(WindowHandle window) {
    if (window == 0) {
        const GlWindow* current = gl_system.current_window;
        gl_layer(current != nullptr ? current->handle : 0).context_make_current(0, 0);
        gl_system.current_window = nullptr;
        return;
    }
    GlWindow* entry = gl_window_find(window);
    if (entry == nullptr || entry->context == nullptr) { return; }
    const GlContext& context = *entry->context;
    if (context.device_context == 0 || context.render_context == 0) { return; }
    if (!entry->layer->context_make_current(context.device_context, context.render_context)) { return; }
    gl_system.current_window = entry;
    learn_drawing_limit(entry);
}

bool gl_context_current(WindowHandle window) { return drawing_window(window) != nullptr; }

void gl_begin_paint(WindowHandle window) {
    if (gl_system.current_window == nullptr) { gl_make_current(window); }
    if (GlWindow* entry = drawing_window(window)) { entry->layer->begin_paint(window, &entry->context->paint); }
}

void gl_end_paint(WindowHandle window) {
    if (GlWindow* entry = drawing_window(window)) { entry->layer->end_paint(window, &entry->context->paint); }
}

void gl_swap_buffers(WindowHandle window) {
    const GlWindow* entry = drawing_window(window);
    if (entry != nullptr && entry->context->device_context != 0) {
        entry->layer->swap_buffers(entry->context->device_context);
    }
}

bool gl_swap_keeps_back_buffer(WindowHandle window) {
    const GlWindow* entry = drawing_window(window);
    return entry != nullptr && entry->layer->swap_keeps_back_buffer(entry->context->device_context);
}

void gl_set_background(WindowHandle window, int red, int green, int blue) {
    const GlWindow* entry = drawing_window(window);
    if (entry == nullptr) { return; }
    const auto byte = [](int value) { return static_cast<uint32_t>(value) & 0xFFu; };
    entry->layer->set_background(entry->context->device_context, byte(red) | byte(green) << 8 | byte(blue) << 16);
}

void gl_context_destroy(WindowHandle window) {
    GlWindow* entry = gl_window_find(window);
    if (entry == nullptr) { return; }
    if (gl_system.current_window == entry) { gl_make_current(0); }
    GlContext* context = entry->context;
    entry->context = nullptr;  // before the release, which may bring messages of its own
    if (context == nullptr) { return; }
    entry->layer->context_destroy(context->render_context);
    entry->layer->device_release(window, context->device_context);
    delete context;
}

void gl_window_geometry(WindowHandle window, int32_t* x, int32_t* y, int32_t* width, int32_t* height) {
    if (x == nullptr || y == nullptr || width == nullptr || height == nullptr) { return; }
    *x = *y = *width = *height = 0;
    const NativeLayer& layer = gl_layer(window);
    if (!layer.client_size(window, width, height)) { return; }
    if (layer.window_parent(window) != 0) { layer.window_origin(window, x, y); }
}

WindowHandle gl_window_parent(WindowHandle window) { return gl_layer(window).window_parent(window); }

void gl_window_move(WindowHandle window, int32_t x, int32_t y, int32_t width, int32_t height) {
    gl_window_clamp_size(window, &width, &height);
    gl_layer(window).window_move(window, std::clamp(x, WINDOW_PLACE_MIN, WINDOW_SIZE_MAX),
                                 std::clamp(y, WINDOW_PLACE_MIN, WINDOW_SIZE_MAX), std::max(width, 1),
                                 std::max(height, 1));
}

void gl_window_clamp_size(WindowHandle window, int32_t* width, int32_t* height) {
    const GlWindow* entry = gl_window_find(window);
    const bool known = entry != nullptr && entry->width_max > 0;
    *width = std::min(*width, known ? entry->width_max : WINDOW_SIZE_MAX);
    *height = std::min(*height, known ? entry->height_max : WINDOW_SIZE_MAX);
}

void gl_window_invalidate(WindowHandle window) { gl_layer(window).invalidate(window); }

// The window system counts how often its cursor was hidden, so the same wish twice must reach it once.
void gl_show_cursor(int flag) {
    const bool shown = flag != 0;
    if (shown == gl_cursor_shown) { return; }
    gl_cursor_shown = shown;
    native_cursor_show(shown);
}

void gl_status_text(WindowHandle status_bar, const char* text) {
    if (status_bar != 0 && text != nullptr) { native_status_text(status_bar, text); }
}

WindowHandle gl_window_of_tk(void* tk_window) { return native_window_of_tk(tk_window); }

bool gl_events_held(void* tk_window) { return native_events_held(tk_window); }

// ---- The window procedure.

namespace {

// A message with the 16 bits that count of its number and wparam.
struct MessageRecord {
    WindowHandle window;
    uint32_t number;
    uint32_t wparam;
    std::intptr_t lparam;
};

using MessageAction = std::intptr_t (*)(const MessageRecord& message);

enum MessageReturn { RETURN_ZERO, RETURN_DEFAULT, RETURN_RESULT };

struct MessageRule {
    uint32_t first, last;
    MessageAction action;
    MessageReturn returns;  // DEFAULT: the system handles the message afterwards, with its result
};

void call_procedure(WindowHandle window, WindowProc GlWindow::*procedure) {
    const GlWindow* entry = gl_window_find(window);
    if (entry != nullptr && entry->*procedure != nullptr) { (entry->*procedure)(window, 0, nullptr); }
}

std::intptr_t on_mouse(const MessageRecord& message) {
    cursor_apply(gl_system.current_cursor);  // no window has a cursor of its own
    input_mouse(message.window, message.number, message.wparam, message.lparam);
    input_pointer(message.window, message.number, message.wparam, message.lparam);
    return 0;
}

std::intptr_t on_leave(const MessageRecord& message) {
    input_pointer(message.window, message.number, message.wparam, message.lparam);
    return 0;
}

std::intptr_t on_key(const MessageRecord& message) {
    input_key(message.window, message.number, message.wparam);
    return 0;
}

std::intptr_t on_destroy(const MessageRecord& message) {
    gl_context_destroy(message.window);
    return 0;
}

std::intptr_t on_size(const MessageRecord& message) {
    call_procedure(message.window, &GlWindow::resize_proc);
    return 0;
}

std::intptr_t on_focus(const MessageRecord&) {
    cursor_apply(gl_system.current_cursor);
    return 0;
}

std::intptr_t on_paint(const MessageRecord& message) {
    call_procedure(message.window, &GlWindow::paint_proc);
    call_procedure(message.window, &GlWindow::resize_proc);
    return 0;
}

std::intptr_t on_close(const MessageRecord& message) {
    gl_context_destroy(message.window);
    gl_layer(message.window).window_destroy(message.window);
    return 0;
}

std::intptr_t on_query_palette(const MessageRecord& message) { return palette_take(message.window); }

// Sixteen bits against a full handle: a window whose handle does not fit them follows its own change too. Intended.
std::intptr_t on_palette_changed(const MessageRecord& message) {
    if (message.wparam != message.window) { palette_follow(message.window); }
    return 0;
}

constexpr MessageRule MESSAGE_RULES[] = {
    {MESSAGE_MOUSE_MOVE, MESSAGE_MIDDLE_DOUBLE, on_mouse, RETURN_ZERO},
    {MESSAGE_KEY_DOWN, MESSAGE_CHAR, on_key, RETURN_DEFAULT},
    {MESSAGE_DESTROY, MESSAGE_DESTROY, on_destroy, RETURN_DEFAULT},
    {MESSAGE_SIZE, MESSAGE_SIZE, on_size, RETURN_ZERO},
    {MESSAGE_SET_FOCUS, MESSAGE_SET_FOCUS, on_focus, RETURN_DEFAULT},
    {MESSAGE_PAINT, MESSAGE_PAINT, on_paint, RETURN_ZERO},
    {MESSAGE_CLOSE, MESSAGE_CLOSE, on_close, RETURN_DEFAULT},
    {MESSAGE_MOUSE_LEAVE, MESSAGE_MOUSE_LEAVE, on_leave, RETURN_DEFAULT},
    {MESSAGE_QUERY_PALETTE, MESSAGE_QUERY_PALETTE, on_query_palette, RETURN_RESULT},
    {MESSAGE_PALETTE_CHANGED, MESSAGE_PALETTE_CHANGED, on_palette_changed, RETURN_DEFAULT},
};

}  // namespace

std::intptr_t window_procedure(WindowHandle window, uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
    if (message == MESSAGE_WHEEL_HERE) {
        input_pointer(window, message, wparam, lparam);
        return 0;
    }
    // The wheel keeps its distance in the high half of wparam, for the top-level window that will get it.
    if (message == MESSAGE_WHEEL || message == MESSAGE_WHEEL_SIDEWAYS) {
        return gl_layer(window).default_message(window, message, wparam, lparam);
    }
    const MessageRecord record{window, message & 0xFFFFu, static_cast<uint32_t>(wparam & 0xFFFFu), lparam};
    for (const MessageRule& rule : MESSAGE_RULES) {
        if (record.number < rule.first || record.number > rule.last) { continue; }
        const std::intptr_t result = rule.action(record);
        if (rule.returns == RETURN_ZERO) { return 0; }
        if (rule.returns == RETURN_RESULT) { return result; }
        break;
    }
    return gl_layer(window).default_message(window, record.number, record.wparam, record.lparam);
}

}  // namespace pelt
