// The record behind the window layer, shared by the files of this folder; others use gl_window.h.
#pragma once

#include <cstdint>

#include "foundation/keyed_list.h"
#include "window/gl_window.h"
#include "window/native.h"

namespace pelt {

struct GlContext {
    NativeDevice device_context;  // kept as long as the context lives
    NativeContext render_context;
    NativePaint paint;  // between begin and end of a paint
};

struct GlWindow {
    const NativeLayer* layer;  // that made it
    WindowHandle handle;
    WindowProc init_proc;
    WindowProc paint_proc;
    WindowProc resize_proc;
    WindowProc event_proc;
    GlContext* context;             // owned; null before it is made and after it is destroyed
    int32_t width_max, height_max;  // what its driver can draw; 0 as long as that is not known
};

struct GlSystem {
    std::uintptr_t instance;
    KeyedList windows;  // GlWindow by name; entries stay when the window dies
    KeyedList cursors;  // NativeCursor by id
    int32_t current_cursor;
    const NativeLayer* layer;  // in which windows are made; null for that of the desktop
    GlWindow* current_window;  // whose context is current; into windows, whose elements never move
};

extern GlSystem gl_system;

// First entry with that handle, or null; null for 0.
GlWindow* gl_window_find(WindowHandle window);

// The layer of a window of ours; for any other, such as a parent, the one in which windows are made.
const NativeLayer& gl_layer(WindowHandle window);

}  // namespace pelt
