// The seam to the window system: what a native layer offers, and nothing else. No rule lives behind it; which message
// does what, the table of windows and the order of creation stand in gl_window.cpp, input.cpp, cursor.cpp, palette.cpp.
// A library has several layers: that of its desktop, and where pictures can be drawn without one, that too. Each window
// belongs to the layer that made it.
//
// Duties of every layer, beside these functions:
// - It turns its events into window_procedure(window, message, wparam, lparam), with the numbers of messages.h, from
//   inside the event loop of Tcl. Positions are pixels of the drawing area, sizes and positions are message_pair.
// - A change of a window's own size, by window_move or from outside, sends MESSAGE_SIZE, before the move
//   returns, and leaves a paint pending. A change of the parent's size sends MESSAGE_SIZE to the child and moves
//   nothing.
// - A pending paint is handed over as MESSAGE_PAINT when the event loop runs, once for any number of exposures, and
//   stays pending until begin_paint.
// - window_destroy, and a window that its parent takes along, send MESSAGE_DESTROY while the window still lives.
//
// All functions accept a window, device, context, palette or cursor of 0, and a window that is gone: they do nothing
// and answer 0 or false. Single thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace pelt {

using WindowHandle = std::uintptr_t;   // 0 for none
using NativeDevice = std::uintptr_t;   // what a window is drawn through; lives as long as its context
using NativeContext = std::uintptr_t;  // an OpenGL rendering context
using NativePalette = std::uintptr_t;
using NativeCursor = std::uintptr_t;

// What the layer keeps between begin and end of a paint; lent by the caller.
struct NativePaint {
    alignas(16) unsigned char bytes[96];
};

// The format that a device has. Only a display with a palette of its own has NATIVE_FORMAT_NEEDS_PALETTE.
inline constexpr uint32_t NATIVE_FORMAT_NEEDS_PALETTE = 0x80;
struct NativeFormat {
    uint32_t flags;
    int32_t color_bits;
    int32_t red_bits, red_shift;
    int32_t green_bits, green_shift;
    int32_t blue_bits, blue_shift;
};

struct PaletteEntry {
    uint8_t red, green, blue, flags;
};

// ---- What a layer calls. Both are defined above the seam, in gl_window.cpp.

// Every event of a window, as a message of three numbers, whatever the window system. Message and wparam count with
// their low 16 bits, but for the wheel, which passes whole.
std::intptr_t window_procedure(WindowHandle window, uint32_t message, std::uintptr_t wparam, std::intptr_t lparam);

// Hands the paint message over while a paint is pending, three times at most: a paint that only took over a new size
// did not draw, and the next one does.
void gl_paint_pending(WindowHandle window);

// ---- What a layer offers.

// Handles of one layer mean nothing to another, and no two layers give the same handle to a window.
struct NativeLayer {
    // ---- Windows. Sizes in pixels; "outer" counts the border of one pixel on each side, "client" is the drawing area.

    // A window at (0, 0) of the parent, not shown yet, in a visual that OpenGL can draw to where there is one. A popup
    // has no border and covers the screen. 0 when the system refuses.
    WindowHandle (*window_create)(const char* title, WindowHandle parent, int32_t outer_width, int32_t outer_height,
                                  bool popup);
    void (*window_raise)(WindowHandle window);  // to the top of its siblings
    void (*window_show)(WindowHandle window);   // leaves a paint pending
    void (*window_move)(WindowHandle window, int32_t x, int32_t y, int32_t outer_width, int32_t outer_height);
    void (*window_destroy)(WindowHandle window);

    // Any window of the process, the parent included. False when it does not exist; the outputs are untouched then.
    bool (*client_size)(WindowHandle window, int32_t* width, int32_t* height);

    // Outer upper left corner in the drawing area of the parent.
    bool (*window_origin)(WindowHandle window, int32_t* x, int32_t* y);
    WindowHandle (*window_parent)(WindowHandle window);  // 0 for a top-level window

    // What the system does with a message by itself; its result.
    std::intptr_t (*default_message)(WindowHandle window, uint32_t message, std::uintptr_t wparam,
                                     std::intptr_t lparam);

    // ---- Drawing.

    NativeDevice (*device_get)(WindowHandle window);
    void (*device_release)(WindowHandle window, NativeDevice device);
    bool (*format_set)(NativeDevice device);  // double buffer, RGBA, depth of 16 bits or more; false when refused
    bool (*format_get)(NativeDevice device, NativeFormat* format);
    NativeContext (*context_create)(NativeDevice device);
    void (*context_destroy)(NativeContext context);
    bool (*context_make_current)(NativeDevice device, NativeContext context);  // 0, 0 releases the current one
    // The largest picture that the driver of the current context can draw. False when it does not say.
    bool (*drawing_limit)(int32_t* width, int32_t* height);
    void (*swap_buffers)(NativeDevice device);
    bool (*swap_keeps_back_buffer)(NativeDevice device);           // the back buffer still holds the frame after a swap
    void (*set_background)(NativeDevice device, uint32_t colour);  // 0x00BBGGRR, of the device, not of OpenGL

    // A drawing area beside the window's, for one picture: from begin to end the context draws there. The samples are
    // as many as the driver has, up to this; -1 for those of the window. Begin is false, and nothing has changed, when
    // it is not to be had. Null where a layer has none: pictures are then drawn behind the window.
    bool (*picture_begin)(NativeDevice device, NativeContext context, int32_t width, int32_t height, int32_t samples);
    void (*picture_end)(NativeDevice device, NativeContext context);

    // ---- Paints.

    bool (*paint_pending)(WindowHandle window);
    void (*invalidate)(WindowHandle window);                       // leaves a paint pending
    void (*begin_paint)(WindowHandle window, NativePaint* paint);  // nothing is pending any more
    void (*end_paint)(WindowHandle window, NativePaint* paint);

    // ---- Palettes; null where no display has one: format_get then never says that one is needed.

    NativePalette (*palette_create)(const PaletteEntry* entries, int32_t count);
    NativePalette (*palette_select)(NativeDevice device, NativePalette palette);  // the one it displaces
    void (*palette_realize)(NativeDevice device);
    void (*palette_update_colors)(NativeDevice device);
};

// ---- Without a desktop.

// What a window is made in that nobody sees.
struct NativeOffscreen {
    const NativeLayer* layer;
    WindowHandle parent;            // a record of the wanted size, or a hidden window; goes with native_offscreen_close
    int32_t width_max, height_max;  // what the driver can draw; 0 where only a window of ours tells
};

// False with a line that says what is missing. Samples as in picture_begin.
bool native_offscreen_open(int32_t width, int32_t height, int32_t samples, NativeOffscreen* made, std::string* failure);
void native_offscreen_close(const NativeOffscreen& offscreen);

// ---- What there is once: the desktop that this library is built for.

const NativeLayer* native_desktop_layer();

// Called once at start. On X11 the instance is the Tcl interpreter whose main window names the display (0: the
// display is known from the first native_window_of_tk on); on Win32 it is the instance handle.
void native_init(std::uintptr_t instance);

// Window of a Tk_Window, made if Tk had not made it yet; 0 for null.
WindowHandle native_window_of_tk(void* tk_window);

// Whether events have been read from the display of this Tk_Window (or null), or of a window of ours, that the event
// loop of Tcl has not taken over. They do not make it wake up. False where the system hands over messages by itself.
bool native_events_held(void* tk_window);

NativeCursor native_cursor_load_builtin(int32_t group);  // 101 to 107, see builtin_cursors.h; 0 on failure
NativeCursor native_cursor_load_file(const char* path);  // 0 when it is no cursor file
void native_cursor_apply(NativeCursor cursor);           // 0 is the arrow of the system
void native_cursor_show(bool shown);
bool native_pointer_set(int32_t x, int32_t y);  // screen coordinates
bool native_pointer_get(int32_t* x, int32_t* y);

void native_status_text(WindowHandle status_bar, const char* text);  // first field of a status bar control

}  // namespace pelt
