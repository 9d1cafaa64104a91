// Events of X11 as messages. What surprises: Tk does not know our window and lets its events pass; they are picked up
// by a generic handler, which Tk runs for every event of the display. Any message may end in a script that destroys
// the window, so its record is preserved and not trusted afterwards.
#include <cstdint>

#include "window/messages.h"
#include "window/x11/native_x11.h"

namespace pelt {

namespace {

// The first, the second and the third button; each has its messages for down, up and double.
struct ButtonRule {
    unsigned button;
    unsigned mask;
    uint32_t held;
    Message down, up, twice;
};
constexpr ButtonRule BUTTON_RULES[] = {
    {Button1, Button1Mask, HELD_LEFT, MESSAGE_LEFT_DOWN, MESSAGE_LEFT_UP, MESSAGE_LEFT_DOUBLE},
    {Button2, Button2Mask, HELD_MIDDLE, MESSAGE_MIDDLE_DOWN, MESSAGE_MIDDLE_UP, MESSAGE_MIDDLE_DOUBLE},
    {Button3, Button3Mask, HELD_RIGHT, MESSAGE_RIGHT_DOWN, MESSAGE_RIGHT_UP, MESSAGE_RIGHT_DOUBLE},
};

constexpr unsigned WHEEL_FIRST = 4;
constexpr unsigned WHEEL_LAST = 7;

uint32_t held_keys(unsigned state) {
    uint32_t held = 0;
    for (const ButtonRule& rule : BUTTON_RULES) {
        if ((state & rule.mask) != 0) { held |= rule.held; }
    }
    if ((state & ShiftMask) != 0) { held |= HELD_SHIFT; }
    if ((state & ControlMask) != 0) { held |= HELD_CONTROL; }
    if ((state & Mod1Mask) != 0) { held |= HELD_ALT; }
    return held;
}

// The wheel belongs to the scripts: it is sent on to the frame, as if it had turned there.
void pass_wheel_on(const X11Window& window, const XButtonEvent& button) {
    if (window.tk_parent == nullptr || Tk_WindowId(window.tk_parent) == None) { return; }
    XEvent event{};
    event.xbutton = button;
    event.xbutton.window = Tk_WindowId(window.tk_parent);
    event.xbutton.subwindow = None;
    event.xbutton.x += window.x + window.border;
    event.xbutton.y += window.y + window.border;
    Tk_QueueWindowEvent(&event, TCL_QUEUE_TAIL);
}

// Up, down, left and right are buttons that are pressed once a notch. Tk of today makes the last two the first two with
// Shift before anyone sees them; where it does not, that is done here.
void tell_wheel(const X11Window& window, const XButtonEvent& button) {
    const bool sideways = button.button > WHEEL_FIRST + 1;
    const bool back = (button.button - WHEEL_FIRST) % 2 == 1;
    const uint32_t held = held_keys(button.state) | (sideways ? static_cast<uint32_t>(HELD_SHIFT) : 0u);
    window_procedure(window.id, MESSAGE_WHEEL_HERE, message_wheel(back ? -WHEEL_NOTCH : WHEEL_NOTCH, held),
                     message_pair(button.x, button.y));
}

// A drag that leaves the window keeps the pointer until the last button is up; the leave of that time comes then.
void on_leave(const X11Window& window, const XCrossingEvent& crossing) {
    constexpr unsigned BUTTONS = Button1Mask | Button2Mask | Button3Mask;
    const bool over = crossing.detail == NotifyInferior || crossing.mode == NotifyGrab;
    if (over || (crossing.mode == NotifyNormal && (crossing.state & BUTTONS) != 0)) { return; }
    window_procedure(window.id, MESSAGE_MOUSE_LEAVE,
                     held_keys(crossing.state) & ~(HELD_LEFT | HELD_MIDDLE | HELD_RIGHT), 0);
}

void on_button(X11Window* window, const XButtonEvent& button) {
    if (button.button >= WHEEL_FIRST && button.button <= WHEEL_LAST) {
        pass_wheel_on(*window, button);
        if (button.type == ButtonPress) { tell_wheel(*window, button); }
        return;
    }
    for (const ButtonRule& rule : BUTTON_RULES) {
        if (rule.button != button.button) { continue; }
        Message message = rule.up;
        uint32_t held = held_keys(button.state) & ~rule.held;  // X tells the state before the event
        if (button.type == ButtonPress) {
            held |= rule.held;
            const bool twice = click_is_double(&window->last_press, button.button, static_cast<uint32_t>(button.time),
                                               button.x_root, button.y_root);
            message = twice ? rule.twice : rule.down;
        }
        window_procedure(window->id, message, held, message_pair(button.x, button.y));
        return;
    }
}

void on_motion(const X11Window& window, const XMotionEvent& motion) {
    window_procedure(window.id, MESSAGE_MOUSE_MOVE, held_keys(motion.state), message_pair(motion.x, motion.y));
}

bool is_older(unsigned long serial, unsigned long than) { return static_cast<long>(serial - than) < 0; }

void on_expose(X11Window* window, const XExposeEvent& expose) {
    if (expose.count != 0 || is_older(expose.serial, window->paint_serial)) { return; }
    window->paint_pending = true;
    gl_paint_pending(window->id);
}

// Our own moves are known already; this is for a size that someone else gave the window.
void on_configure(X11Window* window, const XConfigureEvent& configure) {
    if (is_older(configure.serial, window->move_serial)) { return; }
    if (configure.width == window->width && configure.height == window->height) { return; }
    x11_size_changed(window, configure.width, configure.height);
}

int on_event(ClientData data, XEvent* event) {
    auto* window = static_cast<X11Window*>(data);
    if (event->xany.window != window->id || event->xany.display != window->display || window->closing) { return 0; }
    Tcl_Preserve(window);
    switch (event->type) {
        case ButtonPress:
        case ButtonRelease: on_button(window, event->xbutton); break;
        case MotionNotify: on_motion(*window, event->xmotion); break;
        case LeaveNotify: on_leave(*window, event->xcrossing); break;
        case Expose: on_expose(window, event->xexpose); break;
        case ConfigureNotify: on_configure(window, event->xconfigure); break;
        case DestroyNotify: x11_close(window, true); break;
        default: break;
    }
    Tcl_Release(window);
    return 1;
}

// The parent got another size, or dies and takes our window along.
void on_parent_event(ClientData data, XEvent* event) {
    auto* window = static_cast<X11Window*>(data);
    if (window->closing) { return; }
    Tcl_Preserve(window);
    if (event->type == DestroyNotify) {
        x11_close(window, false);
    } else if (event->type == ConfigureNotify) {
        const int32_t width = Tk_Width(window->tk_parent);
        const int32_t height = Tk_Height(window->tk_parent);
        if (width != window->parent_width || height != window->parent_height) {
            window->parent_width = width;
            window->parent_height = height;
            window_procedure(window->id, MESSAGE_SIZE, 0, message_pair(width, height));
        }
    }
    Tcl_Release(window);
}

}  // namespace

void x11_follow(X11Window* window) {
    Tk_CreateGenericHandler(on_event, window);
    if (window->tk_parent == nullptr) { return; }
    window->parent_width = Tk_Width(window->tk_parent);
    window->parent_height = Tk_Height(window->tk_parent);
    Tk_CreateEventHandler(window->tk_parent, StructureNotifyMask, on_parent_event, window);
}

void x11_unfollow(X11Window* window) {
    Tk_DeleteGenericHandler(on_event, window);
    if (window->tk_parent == nullptr) { return; }
    Tk_DeleteEventHandler(window->tk_parent, StructureNotifyMask, on_parent_event, window);
    window->tk_parent = nullptr;
}

}  // namespace pelt
