// The records that the files of the X11 layer share.
#pragma once

#include <tk.h>

#include <GL/glx.h>

#include "window/native.h"
#include "window/x11/double_click.h"

namespace pelt {

inline constexpr int32_t X11_BORDER = 1;

// The visual in which OpenGL can draw; visual is null when the display has none.
struct X11Visual {
    Visual* visual;
    int depth;
    GLXFBConfig config;  // null on a display that only knows the older way of choosing
    XVisualInfo info;
    bool swap_keeps_back_buffer;
};

// One window of ours. It lives from window_create until its X window is gone; the memory then waits for
// handlers that are still running (Tcl_Preserve).
struct X11Window {
    Display* display;
    int screen;
    Window id;
    WindowHandle parent;
    Tk_Window tk_parent;  // null when the parent is not a window of Tk
    Tk_ErrorHandler error_handler;
    Colormap colormap;  // 0 without a visual of its own
    X11Visual visual;

    int32_t x, y;           // outer corner in the parent
    int32_t width, height;  // of the drawing area
    int32_t border;
    int32_t parent_width, parent_height;  // of the last size message
    unsigned long move_serial;            // the first request that asked for the present size
    unsigned long paint_serial;           // exposures from before this request are already painted over
    bool shown;
    bool paint_pending;
    bool closing;

    ClickRecord last_press;
    Cursor cursor;  // the one defined on it
};

// The display in use: that of the last parent window, or of the main window; null when there is none.
Display* x11_display();

// Our window with that handle, or null; never one that is gone.
X11Window* x11_find(WindowHandle window);
X11Window* const* x11_windows(int* count);

// The window of Tk with that id on the display in use, or null.
Tk_Window x11_tk_window(WindowHandle window);

// A new window gets its handlers, and loses them.
void x11_follow(X11Window* window);
void x11_unfollow(X11Window* window);

// The window ends, by our wish or because it is gone already. Sends MESSAGE_DESTROY.
void x11_close(X11Window* window, bool already_gone);

// Takes over a new size of the drawing area: a paint is due, and MESSAGE_SIZE goes out.
void x11_size_changed(X11Window* window, int32_t width, int32_t height);

// The drawing part of the seam.
void x11_offer_drawing(NativeLayer* layer);

X11Visual x11_choose_visual(Display* display, int screen);
void x11_define_cursor(X11Window* window);

// Errors of the requests made between begin and end are kept from the application; end answers whether there was one.
struct X11ErrorTrap {
    Display* display;
    Tk_ErrorHandler handler;
    bool seen;
};
void x11_trap_begin(X11ErrorTrap* trap, Display* display);
bool x11_trap_end(X11ErrorTrap* trap);

}  // namespace pelt
