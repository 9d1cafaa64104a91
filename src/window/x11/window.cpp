// Windows on X11: a child of a Tk window on Tk's own display connection, unknown to Tk. What surprises: sizes are kept
// here and not asked from the server, so that a move answers its size message before it returns, as the seam wants, and
// no query waits for the server. Everything that can die under our hands (the parent, our window) may do so at any
// time; the errors that requests on it then bring are swallowed.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "window/messages.h"
#include "window/x11/native_x11.h"

namespace pelt {

namespace {

std::vector<X11Window*> windows;
Display* parent_display;  // of the last parent asked for
Display* main_display;    // of the main window at load

int trap_error(ClientData data, XErrorEvent*) {
    static_cast<X11ErrorTrap*>(data)->seen = true;
    return 0;
}

// For the whole life of a window: someone else may destroy it between any two requests.
int window_error(ClientData data, XErrorEvent* error) {
    return error->resourceid == static_cast<const X11Window*>(data)->id ? 0 : 1;
}

void free_window(char* memory) { delete reinterpret_cast<X11Window*>(memory); }

struct WindowPlan {
    Display* display;
    int screen;
    Window x_parent;
    int32_t outer_width, outer_height, border;
    bool popup;
};

Window create_x_window(const WindowPlan& plan, const X11Visual& visual, Colormap colormap) {
    XSetWindowAttributes attributes{};
    attributes.background_pixmap = None;  // nothing is wiped before a redraw
    attributes.border_pixel = 0;
    attributes.colormap = colormap;
    attributes.override_redirect = plan.popup ? True : False;
    attributes.event_mask =
        ExposureMask | StructureNotifyMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask | LeaveWindowMask;
    unsigned long mask = CWBackPixmap | CWBorderPixel | CWEventMask | CWOverrideRedirect;
    if (colormap != None) { mask |= CWColormap; }
    const auto width = static_cast<unsigned>(std::max(plan.outer_width - 2 * plan.border, 1));
    const auto height = static_cast<unsigned>(std::max(plan.outer_height - 2 * plan.border, 1));
    const bool own = visual.visual != nullptr;
    X11ErrorTrap trap{};
    x11_trap_begin(&trap, plan.display);
    const Window id = XCreateWindow(plan.display, plan.x_parent, 0, 0, width, height,
                                    static_cast<unsigned>(plan.border), own ? visual.depth : CopyFromParent,
                                    InputOutput, own ? visual.visual : nullptr, mask, &attributes);
    return x11_trap_end(&trap) ? None : id;
}

// In the visual of OpenGL, or without it where there is none or the server refuses it.
Window create_in_some_visual(const WindowPlan& plan, X11Visual* visual, Colormap* colormap) {
    *colormap = None;
    if (visual->visual != nullptr) {
        const Window root = RootWindow(plan.display, plan.screen);
        *colormap = XCreateColormap(plan.display, root, visual->visual, AllocNone);
        if (const Window id = create_x_window(plan, *visual, *colormap)) { return id; }
        XFreeColormap(plan.display, *colormap);
        *colormap = None;
        *visual = X11Visual{};
    }
    return create_x_window(plan, *visual, None);
}

int screen_of(Display* display, WindowHandle window) {
    if (const Tk_Window tk_window = x11_tk_window(window)) { return Tk_ScreenNumber(tk_window); }
    XWindowAttributes attributes{};
    X11ErrorTrap trap{};
    x11_trap_begin(&trap, display);
    const bool known = XGetWindowAttributes(display, window, &attributes) != 0;
    if (x11_trap_end(&trap) || !known) { return DefaultScreen(display); }
    return XScreenNumberOfScreen(attributes.screen);
}

}  // namespace

// ---- What the files of this layer share.

Display* x11_display() { return parent_display != nullptr ? parent_display : main_display; }

X11Window* x11_find(WindowHandle window) {
    for (X11Window* each : windows) {
        if (each->id == window) { return each; }
    }
    return nullptr;
}

X11Window* const* x11_windows(int* count) {
    *count = static_cast<int>(windows.size());
    return windows.data();
}

Tk_Window x11_tk_window(WindowHandle window) {
    Display* display = x11_display();
    return display == nullptr || window == 0 ? nullptr : Tk_IdToWindow(display, static_cast<Window>(window));
}

void x11_trap_begin(X11ErrorTrap* trap, Display* display) {
    *trap = X11ErrorTrap{display, nullptr, false};
    trap->handler = Tk_CreateErrorHandler(display, -1, -1, -1, trap_error, trap);
}

bool x11_trap_end(X11ErrorTrap* trap) {
    XSync(trap->display, False);
    Tk_DeleteErrorHandler(trap->handler);
    return trap->seen;
}

void x11_size_changed(X11Window* window, int32_t width, int32_t height) {
    window->width = width;
    window->height = height;
    window->paint_pending = true;
    window_procedure(window->id, MESSAGE_SIZE, 0, message_pair(width, height));
}

// The order matters: no handler may find the window half gone, and the context must go before what it draws to.
void x11_close(X11Window* window, bool already_gone) {
    if (window->closing) { return; }
    window->closing = true;
    x11_unfollow(window);
    X11ErrorTrap trap{};
    x11_trap_begin(&trap, window->display);
    window_procedure(window->id, MESSAGE_DESTROY, 0, 0);
    if (!already_gone) { XDestroyWindow(window->display, window->id); }
    if (window->colormap != None) { XFreeColormap(window->display, window->colormap); }
    x11_trap_end(&trap);
    Tk_DeleteErrorHandler(window->error_handler);
    windows.erase(std::find(windows.begin(), windows.end(), window));
    Tcl_EventuallyFree(window, reinterpret_cast<Tcl_FreeProc*>(free_window));
}

// ---- The seam.

void native_init(std::uintptr_t instance) {
    auto* interpreter = reinterpret_cast<Tcl_Interp*>(instance);
    const Tk_Window main_window = interpreter == nullptr ? nullptr : Tk_MainWindow(interpreter);
    if (main_window != nullptr) { main_display = Tk_Display(main_window); }
}

WindowHandle native_window_of_tk(void* tk_window) {
    if (tk_window == nullptr) { return 0; }
    const auto token = static_cast<Tk_Window>(tk_window);
    Tk_MakeWindowExist(token);
    parent_display = Tk_Display(token);
    return Tk_WindowId(token);
}

namespace {

WindowHandle window_create(const char* title, WindowHandle parent, int32_t outer_width, int32_t outer_height,
                           bool popup) {
    Display* display = x11_display();
    if (display == nullptr || parent == 0) { return 0; }
    WindowPlan plan{display,
                    screen_of(display, parent),
                    static_cast<Window>(parent),
                    outer_width,
                    outer_height,
                    popup ? 0 : X11_BORDER,
                    popup};
    if (popup) {
        plan.x_parent = RootWindow(display, plan.screen);
        plan.outer_width = DisplayWidth(display, plan.screen);
        plan.outer_height = DisplayHeight(display, plan.screen);
    }
    X11Visual visual = x11_choose_visual(display, plan.screen);
    Colormap colormap = None;
    const Window id = create_in_some_visual(plan, &visual, &colormap);
    if (id == None) { return 0; }
    if (title != nullptr) { XStoreName(display, id, title); }

    auto* window = new X11Window{};
    window->display = display;
    window->screen = plan.screen;
    window->id = id;
    window->parent = parent;
    window->tk_parent = x11_tk_window(parent);
    window->colormap = colormap;
    window->visual = visual;
    window->border = plan.border;
    window->width = std::max(plan.outer_width - 2 * plan.border, 1);
    window->height = std::max(plan.outer_height - 2 * plan.border, 1);
    window->error_handler = Tk_CreateErrorHandler(display, -1, -1, -1, window_error, window);
    windows.push_back(window);
    x11_follow(window);
    x11_define_cursor(window);
    return id;
}

void window_raise(WindowHandle window) {
    if (const X11Window* found = x11_find(window)) { XRaiseWindow(found->display, found->id); }
}

void window_show(WindowHandle window) {
    X11Window* found = x11_find(window);
    if (found == nullptr) { return; }
    XMapWindow(found->display, found->id);
    found->shown = found->paint_pending = true;
}

void window_move(WindowHandle window, int32_t x, int32_t y, int32_t outer_width, int32_t outer_height) {
    X11Window* found = x11_find(window);
    if (found == nullptr) { return; }
    const int32_t width = std::max(outer_width - 2 * found->border, 1);
    const int32_t height = std::max(outer_height - 2 * found->border, 1);
    const bool resized = width != found->width || height != found->height;
    if (!resized && x == found->x && y == found->y) { return; }
    found->x = x;
    found->y = y;
    found->move_serial = NextRequest(found->display);
    XMoveResizeWindow(found->display, found->id, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height));
    if (resized) { x11_size_changed(found, width, height); }
}

void window_destroy(WindowHandle window) {
    if (X11Window* found = x11_find(window)) { x11_close(found, false); }
}

bool client_size(WindowHandle window, int32_t* width, int32_t* height) {
    if (const X11Window* found = x11_find(window)) {
        *width = found->width;
        *height = found->height;
        return true;
    }
    const Tk_Window tk_window = x11_tk_window(window);
    if (tk_window == nullptr) { return false; }
    *width = Tk_Width(tk_window);
    *height = Tk_Height(tk_window);
    return true;
}

bool window_origin(WindowHandle window, int32_t* x, int32_t* y) {
    if (const X11Window* found = x11_find(window)) {
        *x = found->x;
        *y = found->y;
        return true;
    }
    const Tk_Window tk_window = x11_tk_window(window);
    if (tk_window == nullptr) { return false; }
    *x = Tk_X(tk_window);
    *y = Tk_Y(tk_window);
    return true;
}

WindowHandle window_parent(WindowHandle window) {
    if (const X11Window* found = x11_find(window)) { return found->parent; }
    const Tk_Window tk_window = x11_tk_window(window);
    if (tk_window == nullptr || Tk_IsTopLevel(tk_window)) { return 0; }
    const Tk_Window parent = Tk_Parent(tk_window);
    return parent == nullptr ? 0 : Tk_WindowId(parent);
}

// X11 does nothing by itself with a message.
std::intptr_t default_message(WindowHandle, uint32_t, std::uintptr_t, std::intptr_t) { return 0; }

bool paint_pending(WindowHandle window) {
    const X11Window* found = x11_find(window);
    return found != nullptr && found->shown && found->paint_pending && !found->closing;
}

void invalidate(WindowHandle window) {
    X11Window* found = x11_find(window);
    if (found == nullptr) { return; }
    found->paint_pending = true;
    XClearArea(found->display, found->id, 0, 0, 0, 0, True);
}

// The server has seen the empty request before it shows anything of the frame that begins here, so an exposure that
// carries an older number was painted over by that frame, and is not painted a second time.
void begin_paint(WindowHandle window, NativePaint*) {
    X11Window* found = x11_find(window);
    if (found == nullptr) { return; }
    found->paint_pending = false;
    found->paint_serial = NextRequest(found->display);
    XNoOp(found->display);
    XFlush(found->display);
}

void end_paint(WindowHandle, NativePaint*) {}

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
    x11_offer_drawing(&layer);
    return layer;
}

}  // namespace

const NativeLayer* native_desktop_layer() {
    static const NativeLayer layer = make_layer();
    return &layer;
}

bool native_events_held(void* tk_window) {
    if (tk_window != nullptr && XQLength(Tk_Display(static_cast<Tk_Window>(tk_window))) > 0) { return true; }
    return std::any_of(windows.begin(), windows.end(), [](X11Window* each) { return XQLength(each->display) > 0; });
}

// A status bar control is a thing of Win32; a Tk window shows the text that its script gives it.
void native_status_text(WindowHandle, const char*) {}

}  // namespace pelt
