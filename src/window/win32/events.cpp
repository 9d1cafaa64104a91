// The procedure of our window class, and what Tk tells of the parent. What surprises: the messages go up as they come,
// also a move or a size that is none; only a paint that nobody begins, the pointer during a drag and the wheel are
// looked at here. The parent is followed through Tk and not by its messages: a script that runs because of a new size
// may destroy the parent, and in the middle of Tk's own resizing that would pull the ground away below it.
#include <cstdint>
#include <cstdlib>

#include "window/messages.h"
#include "window/win32/native_win32.h"

// Behind everything of ours, for the macros of Xlib.
#include <tk.h>
#include <tkPlatDecls.h>

namespace pelt {

namespace {

constexpr uint32_t MESSAGE_BITS = 0xFFFF;  // of a number, that count
constexpr uint32_t HELD_BUTTONS = HELD_LEFT | HELD_RIGHT | HELD_MIDDLE;

HHOOK wheel_hook;  // while there is a window of ours

// ---- The wheel.

int32_t low_half(LPARAM pair) { return static_cast<int16_t>(static_cast<uint32_t>(pair) & 0xFFFFu); }
int32_t high_half(LPARAM pair) { return static_cast<int16_t>(static_cast<uint32_t>(pair) >> 16); }

// Depending on the system's settings the wheel goes to the window below the pointer or to the one that has the
// keyboard, where Tk drops it. So it is always handed to ours when the pointer is over it.
LRESULT CALLBACK on_message_taken(int code, WPARAM wparam, LPARAM lparam) {
    auto* message = reinterpret_cast<MSG*>(lparam);
    if (code == HC_ACTION && (message->message == WM_MOUSEWHEEL || message->message == WM_MOUSEHWHEEL)) {
        const HWND below = WindowFromPoint(POINT{low_half(message->lParam), high_half(message->lParam)});
        if (win32_find(below) != nullptr) { message->hwnd = below; }
    }
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

unsigned tk_state() {
    struct KeyMask {
        int key;
        unsigned mask;
    };
    static constexpr KeyMask MASKS[] = {{VK_SHIFT, ShiftMask},
                                        {VK_CONTROL, ControlMask},
                                        {VK_LBUTTON, Button1Mask},
                                        {VK_MBUTTON, Button2Mask},
                                        {VK_RBUTTON, Button3Mask}};
    unsigned state = 0;
    for (const KeyMask& each : MASKS) {
        if (GetKeyState(each.key) < 0) { state |= each.mask; }
    }
    return (GetKeyState(VK_CAPITAL) & 1) != 0 ? state | LockMask : state;
}

// Whole notches of what has been turned; the rest waits for the next message.
int32_t whole_notches(int32_t* turned, int32_t more) {
    *turned += more;
    const int32_t whole = *turned / WHEEL_NOTCH * WHEEL_NOTCH;
    *turned -= whole;
    return whole;
}

// ---- The parent.

// Our window is named by its handle, which names nothing any more when it is gone.
void on_parent_event(ClientData data, XEvent* event) {
    const auto handle = static_cast<HWND>(data);
    Win32Window* window = win32_find(handle);
    if (window == nullptr) { return; }
    if (event->type == DestroyNotify) {
        window->tk_parent = nullptr;
        DestroyWindow(handle);
    } else if (event->type == ConfigureNotify) {
        const auto tk_parent = static_cast<Tk_Window>(window->tk_parent);
        const int32_t width = Tk_Width(tk_parent);
        const int32_t height = Tk_Height(tk_parent);
        if (width == window->parent_width && height == window->parent_height) { return; }
        window->parent_width = width;
        window->parent_height = height;
        window_procedure(win32_window(handle), MESSAGE_SIZE, 0, message_pair(width, height));
    }
}

// ---- The procedure of the class.

// A new size leaves a paint due. A window that is just being created has no record yet.
void note_size(HWND handle, LPARAM lparam) {
    Win32Window* window = win32_find(handle);
    if (window == nullptr) { return; }
    const auto width = static_cast<int32_t>(static_cast<uint32_t>(lparam) & 0xFFFFu);
    const auto height = static_cast<int32_t>(static_cast<uint32_t>(lparam) >> 16);
    if (width == window->width && height == window->height) { return; }
    window->width = width;
    window->height = height;
    window->paint_pending = true;
}

// The system repeats a paint message for ever until the paint was begun. A window that has lost its context begins
// none, so that what is left is declared painted; so is that of a window we do not know (any more).
void on_paint(HWND handle) {
    if (Win32Window* window = win32_find(handle)) {
        window->paint_pending = true;
        gl_paint_pending(win32_window(handle));
    } else {
        window_procedure(win32_window(handle), MESSAGE_PAINT, 0, 0);
    }
    if (IsWindow(handle)) { ValidateRect(handle, nullptr); }
}

// A drag that leaves the window keeps the pointer until the last button is up.
void keep_pointer(HWND handle, uint32_t message, WPARAM held) {
    const bool down = message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN || message == WM_MBUTTONDOWN ||
                      message == WM_LBUTTONDBLCLK || message == WM_RBUTTONDBLCLK || message == WM_MBUTTONDBLCLK;
    if (down) {
        SetCapture(handle);
    } else if (message != WM_MOUSEMOVE && (held & HELD_BUTTONS) == 0 && GetCapture() == handle) {
        ReleaseCapture();
    }
}

// The system tells of a pointer that leaves only when it was asked to since the pointer came.
void watch_leave(HWND handle, uint32_t message) {
    Win32Window* window = win32_find(handle);
    if (window == nullptr) { return; }
    if (message == WM_MOUSELEAVE) {
        window->leave_watched = false;
    } else if (!window->leave_watched) {
        TRACKMOUSEEVENT wish{sizeof wish, TME_LEAVE, handle, 0};
        window->leave_watched = TrackMouseEvent(&wish) != 0;
    }
}

// The window class gets no messages of double clicks: intended. Who counts clicks is told by a bit of its own.
uint32_t pressed_again(HWND handle, uint32_t message, LPARAM place) {
    if (message != WM_LBUTTONDOWN && message != WM_RBUTTONDOWN && message != WM_MBUTTONDOWN) { return 0; }
    static struct {
        HWND handle;
        uint32_t message;
        LONG time;
        int32_t x, y;
    } last;
    const LONG time = GetMessageTime();
    const int32_t x = low_half(place);
    const int32_t y = high_half(place);
    const bool again = last.handle == handle && last.message == message &&
                       static_cast<uint32_t>(time) - static_cast<uint32_t>(last.time) <= GetDoubleClickTime() &&
                       2 * std::abs(x - last.x) <= GetSystemMetrics(SM_CXDOUBLECLK) &&
                       2 * std::abs(y - last.y) <= GetSystemMetrics(SM_CYDOUBLECLK);
    last = {again ? nullptr : handle, message, time, x, y};  // a third press is a first one
    return again ? static_cast<uint32_t>(HELD_AGAIN) : 0u;
}

uint32_t alt_held() { return GetKeyState(VK_MENU) < 0 ? static_cast<uint32_t>(HELD_ALT) : 0u; }

// Beside the message itself, whose place is one of the screen.
void tell_wheel(HWND handle, uint32_t message, WPARAM wparam, LPARAM lparam) {
    if (win32_find(handle) == nullptr) { return; }
    POINT place{low_half(lparam), high_half(lparam)};
    ScreenToClient(handle, &place);
    const bool sideways = message == WM_MOUSEHWHEEL;
    const uint32_t held = (static_cast<uint32_t>(wparam) & MESSAGE_BITS) | alt_held() |
                          (sideways ? static_cast<uint32_t>(HELD_SHIFT) : 0u);
    const int32_t turned = high_half(static_cast<LPARAM>(wparam));
    window_procedure(win32_window(handle), MESSAGE_WHEEL_HERE, message_wheel(sideways ? -turned : turned, held),
                     message_pair(place.x, place.y));
}

}  // namespace

LRESULT CALLBACK win32_class_procedure(HWND handle, UINT message, WPARAM wparam, LPARAM lparam) {
    const uint32_t number = message & MESSAGE_BITS;
    if (number == WM_SIZE) { note_size(handle, lparam); }
    if (number == WM_PAINT) {
        on_paint(handle);
        return 0;
    }
    if (number == WM_MOUSEMOVE || number == WM_MOUSELEAVE) { watch_leave(handle, number); }
    if (number >= MESSAGE_MOUSE_MOVE && number <= MESSAGE_MIDDLE_DOUBLE) {
        keep_pointer(handle, number, wparam);
        wparam |= alt_held() | pressed_again(handle, number, lparam);
    }
    if (message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL) { tell_wheel(handle, message, wparam, lparam); }
    const LRESULT result = window_procedure(win32_window(handle), message, wparam, lparam);
    // The very last message. Anyone can send the one that tells of the destruction, to a window that lives on.
    if (message == WM_NCDESTROY) { win32_forget(handle); }
    return result;
}

bool win32_pass_wheel_on(HWND handle, UINT message, WPARAM wparam, LPARAM lparam) {
    Win32Window* window = win32_find(handle);
    if (window == nullptr || window->tk_parent == nullptr) { return false; }
    const auto tk_parent = static_cast<Tk_Window>(window->tk_parent);
    const bool sideways = message == WM_MOUSEHWHEEL;
    const int32_t turned = high_half(static_cast<LPARAM>(wparam));
    const int32_t whole = whole_notches(&window->wheel[sideways ? 1 : 0], sideways ? -turned : turned);
    if (whole == 0 || Tk_WindowId(tk_parent) == None) { return true; }

    POINT place{low_half(lparam), high_half(lparam)};
    XEvent event{};
    event.xkey.type = MouseWheelEvent;
    event.xkey.send_event = -1;  // made by the system: Tk then takes the distance as it stands
    event.xkey.display = Tk_Display(tk_parent);
    event.xkey.serial = LastKnownRequestProcessed(event.xkey.display);
    event.xkey.window = Tk_WindowId(tk_parent);
    event.xkey.x_root = static_cast<int>(place.x);
    event.xkey.y_root = static_cast<int>(place.y);
    ScreenToClient(Tk_GetHWND(Tk_WindowId(tk_parent)), &place);
    event.xkey.x = static_cast<int>(place.x);
    event.xkey.y = static_cast<int>(place.y);
    event.xkey.state = tk_state() | (sideways ? static_cast<unsigned>(ShiftMask) : 0u);
    event.xkey.time = static_cast<Time>(GetMessageTime());
    event.xkey.same_screen = True;
    event.xkey.keycode = static_cast<unsigned>(whole);
    Tk_QueueWindowEvent(&event, TCL_QUEUE_TAIL);
    return true;
}

void win32_follow(Win32Window* window) {
    if (window->tk_parent == nullptr) { return; }
    Tk_CreateEventHandler(static_cast<Tk_Window>(window->tk_parent), StructureNotifyMask, on_parent_event,
                          window->handle);
    if (wheel_hook == nullptr) {
        wheel_hook = SetWindowsHookExA(WH_GETMESSAGE, on_message_taken, nullptr, GetCurrentThreadId());
    }
}

void win32_unfollow(Win32Window* window) {
    if (window->tk_parent != nullptr) {
        Tk_DeleteEventHandler(static_cast<Tk_Window>(window->tk_parent), StructureNotifyMask, on_parent_event,
                              window->handle);
        window->tk_parent = nullptr;
    }
    if (win32_any() == nullptr && wheel_hook != nullptr) {
        UnhookWindowsHookEx(wheel_hook);
        wheel_hook = nullptr;
    }
}

}  // namespace pelt
