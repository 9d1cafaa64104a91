// The OpenGL window: what the rest of the system knows of it. All rules stand here once; native.h below is the seam
// to the window system. Every operation on a window that does not exist, or has lost its context, does nothing.
#pragma once

#include <cstdint>
#include <string>

#include "window/native.h"

namespace pelt {

// (window, 0, event record or null)
using WindowProc = void (*)(WindowHandle window, int32_t zero, const void* event);

// Empties the window layer; called once at start. The instance goes to the native layer: on X11 it is the Tcl_Interp
// that loads the library (its main window names the display; 0 works until a cursor or the pointer is asked for before
// there is a window), on Win32 the instance handle. A second call releases the contexts of all windows first.
void gl_system_init(std::uintptr_t instance);

// The instance that was not known then; windows and cursors stay.
void gl_system_bind(std::uintptr_t instance);

// Creates a child of the parent in its client size, makes the context, calls init, shows it; the first frame is
// drawn when it returns. A name already in use gives that window, also when it is dead. Returns the handle, 0 when the
// system refuses (nothing is kept then). Null procedures are skipped. Without a context the window is shown and never
// draws, and init is not called. A popup covers the screen and has no border.
WindowHandle gl_window_create(const char* name, WindowHandle parent, WindowProc init, WindowProc paint,
                              WindowProc resize, WindowProc event, int popup);

// The same without a desktop, in a parent of its own of this size, with as many samples a pixel as the driver has up to
// the wanted ones. 0 when there is no driver, or not for this size; the failure is then a line that says which.
inline constexpr int64_t OFFSCREEN_BYTES_MAX = int64_t{1} << 30;
inline constexpr int64_t OFFSCREEN_BYTES_PER_SAMPLE = 8;  // colour and depth
WindowHandle gl_window_create_offscreen(int32_t width, int32_t height, int32_t samples, WindowProc init,
                                        WindowProc paint, WindowProc resize, WindowProc event, std::string* failure);

// From begin to end the context of the window draws into an area of this size beside it, at the samples that the driver
// has up to these (-1 for those of the window). False, with nothing changed, when there is no memory for it, or its
// layer has no such areas: pictures are then drawn behind the window.
bool gl_has_picture_areas(WindowHandle window);
bool gl_picture_begin(WindowHandle window, int32_t width, int32_t height, int32_t samples);
void gl_picture_end(WindowHandle window);

void gl_make_current(WindowHandle window);     // 0 releases the current context
bool gl_context_current(WindowHandle window);  // this window's context is there and current
void gl_begin_paint(WindowHandle window);
void gl_end_paint(WindowHandle window);
void gl_swap_buffers(WindowHandle window);
bool gl_swap_keeps_back_buffer(WindowHandle window);
void gl_set_background(WindowHandle window, int red, int green, int blue);
void gl_context_destroy(WindowHandle window);

// Place in the parent and size of the drawing area, in pixels. Outputs become 0 for a window that does not exist.
void gl_window_geometry(WindowHandle window, int32_t* x, int32_t* y, int32_t* width, int32_t* height);
WindowHandle gl_window_parent(WindowHandle window);
// Border included. The size is held within what the window can take.
void gl_window_move(WindowHandle window, int32_t x, int32_t y, int32_t width, int32_t height);

// Cuts a size to the largest that the window system takes and that the window's driver says it can draw.
void gl_window_clamp_size(WindowHandle window, int32_t* width, int32_t* height);
void gl_window_invalidate(WindowHandle window);  // leaves a paint pending

void gl_show_cursor(int flag);
void gl_status_text(WindowHandle status_bar, const char* text);

// Whether events have been read from the display of a Tk window token, or of one of these windows, that the event loop
// of Tcl has not taken over yet.
bool gl_events_held(void* tk_window);

// The window of a Tk window token (Tk_Window), made if Tk had not made it yet; 0 for null.
WindowHandle gl_window_of_tk(void* tk_window);

}  // namespace pelt
