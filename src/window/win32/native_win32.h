// What the files of the Win32 layer share.
#pragma once

#include <windows.h>

#include "window/native.h"

namespace pelt {

// One window of ours, from its creation until the system has destroyed it. Known by its handle alone: any message may
// end in a script that destroys the window, so nobody keeps a pointer to the record across one.
struct Win32Window {
    HWND handle;
    void* tk_parent;                      // Tk_Window; null when the parent is not a window of Tk, and when it is gone
    int32_t width, height;                // of the drawing area, as the last size message told
    int32_t parent_width, parent_height;  // of the last size message that came from the parent
    bool paint_pending;                   // beside what the system itself knows of as not painted
    bool leave_watched;                   // the system will tell when the pointer leaves
    int32_t wheel[2];                     // what is left of a turn that is less than a notch: upright, sideways
};

// The library itself, where its resources are; null before the system has attached it.
extern HINSTANCE win32_module;

inline HWND win32_handle(WindowHandle window) { return reinterpret_cast<HWND>(window); }
inline WindowHandle win32_window(HWND handle) { return reinterpret_cast<WindowHandle>(handle); }

// Our window with that handle, or null; never one that is gone.
Win32Window* win32_find(HWND handle);
const Win32Window* win32_any();  // one of ours, or null when there is none

// The drawing part of the seam.
void win32_offer_drawing(NativeLayer* layer);

// A window of this size, never to be shown and no one of ours; null when the system refuses.
HWND win32_create_hidden(int32_t width, int32_t height);

// The procedure of the window class, in events.cpp.
LRESULT CALLBACK win32_class_procedure(HWND handle, UINT message, WPARAM wparam, LPARAM lparam);

// A new window follows its Tk parent, and gets the wheel that turns over it; both end when it is unfollowed.
void win32_follow(Win32Window* window);
void win32_unfollow(Win32Window* window);

// The window is gone: its record goes too.
void win32_forget(HWND handle);

// The wheel turned over the window: its Tk parent gets an event as if it had turned there. False without such a parent.
bool win32_pass_wheel_on(HWND handle, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace pelt
