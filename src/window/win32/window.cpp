// Windows on Win32: a child of a Tk window, unknown to Tk. What surprises: no size is kept here for others to ask, the
// system always knows; what is kept serves to tell whether a size message leaves a paint due. Only windows of our own
// are moved, shown or destroyed, because the system gives the handle of a dead window to another one.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "window/win32/native_win32.h"

// Behind everything of ours, for the macros of Xlib.
#include <tk.h>
#include <tkPlatDecls.h>

namespace pelt {

namespace {

constexpr char CLASS_NAME[] = "Kestrane CAD";
constexpr UINT CLASS_STYLE = CS_VREDRAW | CS_HREDRAW | CS_SAVEBITS;
constexpr INT_PTR CLASS_BACKGROUND = 5;
constexpr DWORD STYLE_CHILD = WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | WS_BORDER;
constexpr DWORD STYLE_POPUP = WS_POPUP | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | WS_MAXIMIZE;
constexpr UINT STATUS_SET_TEXT = 1025;     // of a status bar control, text in the system's code page
constexpr WPARAM STATUS_PART_PLAIN = 256;  // the first field, without borders

HINSTANCE instance;
std::vector<std::unique_ptr<Win32Window>> windows;

// The window of Tk behind a handle, or null; null too in a program without Tk.
Tk_Window tk_window_of(HWND handle) { return tkPlatStubsPtr == nullptr ? nullptr : Tk_HWNDToWindow(handle); }

}  // namespace

// ---- What the files of this layer share.

Win32Window* win32_find(HWND handle) {
    for (const auto& each : windows) {
        if (each->handle == handle) { return each.get(); }
    }
    return nullptr;
}

const Win32Window* win32_any() { return windows.empty() ? nullptr : windows.front().get(); }

HWND win32_create_hidden(int32_t width, int32_t height) {
    return CreateWindowExA(0, CLASS_NAME, "", WS_POPUP, 0, 0, width, height, nullptr, nullptr, instance, nullptr);
}

void win32_forget(HWND handle) {
    Win32Window* gone = win32_find(handle);
    if (gone == nullptr) { return; }
    std::unique_ptr<Win32Window> record;
    const auto is_gone = [gone](const auto& each) { return each.get() == gone; };
    const auto at = std::find_if(windows.begin(), windows.end(), is_gone);
    record.swap(*at);
    windows.erase(at);
    win32_unfollow(record.get());
}

// ---- The seam.

// A second call finds the class registered already, and its answer does not matter.
void native_init(std::uintptr_t module) {
    instance = reinterpret_cast<HINSTANCE>(module);
    WNDCLASSA window_class{};
    window_class.style = CLASS_STYLE;
    window_class.lpfnWndProc = win32_class_procedure;
    window_class.hInstance = instance;
    window_class.hbrBackground = reinterpret_cast<HBRUSH>(CLASS_BACKGROUND);
    window_class.lpszClassName = CLASS_NAME;
    RegisterClassA(&window_class);
}

WindowHandle native_window_of_tk(void* tk_window) {
    if (tk_window == nullptr || tkPlatStubsPtr == nullptr) { return 0; }
    const auto token = static_cast<Tk_Window>(tk_window);
    Tk_MakeWindowExist(token);
    return win32_window(Tk_GetHWND(Tk_WindowId(token)));
}

namespace {

bool client_size(WindowHandle window, int32_t* width, int32_t* height) {
    RECT area{};
    if (window == 0 || GetClientRect(win32_handle(window), &area) == 0) { return false; }
    *width = area.right;
    *height = area.bottom;
    return true;
}

WindowHandle window_create(const char* title, WindowHandle parent, int32_t outer_width, int32_t outer_height,
                           bool popup) {
    const HWND handle = CreateWindowExA(0, CLASS_NAME, title, popup ? STYLE_POPUP : STYLE_CHILD, 0, 0, outer_width,
                                        outer_height, win32_handle(parent), nullptr, instance, nullptr);
    if (handle == nullptr) { return 0; }
    auto record = std::make_unique<Win32Window>();
    record->handle = handle;
    record->tk_parent = tk_window_of(win32_handle(parent));
    client_size(win32_window(handle), &record->width, &record->height);
    client_size(parent, &record->parent_width, &record->parent_height);
    windows.push_back(std::move(record));
    win32_follow(windows.back().get());
    return win32_window(handle);
}

void window_raise(WindowHandle window) {
    if (win32_find(win32_handle(window)) == nullptr) { return; }
    SetWindowPos(win32_handle(window), nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE);
}

void window_show(WindowHandle window) {
    Win32Window* found = win32_find(win32_handle(window));
    if (found == nullptr) { return; }
    found->paint_pending = true;
    ShowWindow(win32_handle(window), SW_RESTORE);
}

void window_move(WindowHandle window, int32_t x, int32_t y, int32_t outer_width, int32_t outer_height) {
    if (win32_find(win32_handle(window)) == nullptr) { return; }
    SetWindowPos(win32_handle(window), nullptr, x, y, outer_width, outer_height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void window_destroy(WindowHandle window) {
    if (win32_find(win32_handle(window)) != nullptr) { DestroyWindow(win32_handle(window)); }
}

bool window_origin(WindowHandle window, int32_t* x, int32_t* y) {
    RECT outer{};
    if (window == 0 || GetWindowRect(win32_handle(window), &outer) == 0) { return false; }
    POINT corner{outer.left, outer.top};
    const HWND parent = GetParent(win32_handle(window));
    if (parent != nullptr) { ScreenToClient(parent, &corner); }
    *x = corner.x;
    *y = corner.y;
    return true;
}

WindowHandle window_parent(WindowHandle window) {
    return window == 0 ? 0 : win32_window(GetParent(win32_handle(window)));
}

// The wheel of one of ours goes on to the Tk parent. The system would do the same, but Tk looks for a window of its
// own below the pointer, finds ours there, and drops the event.
std::intptr_t default_message(WindowHandle window, uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
    const bool wheel = message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
    if (wheel && win32_pass_wheel_on(win32_handle(window), message, wparam, lparam)) { return 0; }
    return DefWindowProcA(win32_handle(window), message, wparam, lparam);
}

bool paint_pending(WindowHandle window) {
    const Win32Window* found = win32_find(win32_handle(window));
    return found != nullptr && (found->paint_pending || GetUpdateRect(found->handle, nullptr, FALSE) != 0);
}

void invalidate(WindowHandle window) {
    Win32Window* found = win32_find(win32_handle(window));
    if (found == nullptr) { return; }
    found->paint_pending = true;
    InvalidateRect(found->handle, nullptr, TRUE);
}

void begin_paint(WindowHandle window, NativePaint* paint) {
    static_assert(sizeof(PAINTSTRUCT) <= sizeof(NativePaint) && alignof(PAINTSTRUCT) <= alignof(NativePaint));
    Win32Window* found = win32_find(win32_handle(window));
    if (found == nullptr || paint == nullptr) { return; }
    found->paint_pending = false;
    BeginPaint(win32_handle(window), reinterpret_cast<PAINTSTRUCT*>(paint->bytes));
}

void end_paint(WindowHandle window, NativePaint* paint) {
    if (window == 0 || paint == nullptr) { return; }
    EndPaint(win32_handle(window), reinterpret_cast<const PAINTSTRUCT*>(paint->bytes));
}

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
    win32_offer_drawing(&layer);
    return layer;
}

}  // namespace

const NativeLayer* native_desktop_layer() {
    static const NativeLayer layer = make_layer();
    return &layer;
}

bool native_events_held(void*) { return false; }

void native_status_text(WindowHandle status_bar, const char* text) {
    if (status_bar == 0 || text == nullptr) { return; }
    SendMessageA(win32_handle(status_bar), STATUS_SET_TEXT, STATUS_PART_PLAIN, reinterpret_cast<LPARAM>(text));
}

}  // namespace pelt
