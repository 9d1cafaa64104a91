// A window with an OpenGL context, by the shortest way there is: Xlib and GLX, double-buffered, with depth.
#pragma once

#include <GL/glx.h>
#include <X11/Xlib.h>

namespace bench {

struct GlxWindow {
    Display* display;
    Window window;
};

// A null display on failure. Nothing is released: the programs end with it.
inline GlxWindow open_glx_window(unsigned width, unsigned height) {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) { return {nullptr, 0}; }
    int wanted[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_DEPTH_SIZE, 16, None};
    XVisualInfo* visual = glXChooseVisual(display, DefaultScreen(display), wanted);
    if (visual == nullptr) { return {nullptr, 0}; }
    const Window root = RootWindow(display, visual->screen);
    XSetWindowAttributes attributes{};
    attributes.colormap = XCreateColormap(display, root, visual->visual, AllocNone);
    attributes.event_mask = StructureNotifyMask;
    const Window window = XCreateWindow(display, root, 0, 0, width, height, 0, visual->depth, InputOutput,
                                        visual->visual, CWColormap | CWEventMask, &attributes);
    GLXContext context = glXCreateContext(display, visual, nullptr, True);
    XMapWindow(display, window);
    for (XEvent event{}; event.type != MapNotify;) { XNextEvent(display, &event); }
    if (context == nullptr || !glXMakeCurrent(display, window, context)) { return {nullptr, 0}; }
    return {display, window};
}

}  // namespace bench
