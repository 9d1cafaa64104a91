// A window that nobody sees: an ordinary one in a parent that is never shown. What surprises: the system lends no other
// drawing area to OpenGL as it is here, so that there are no samples, and pictures are drawn behind the window.
#include "window/win32/native_win32.h"

namespace pelt {

bool native_offscreen_open(int32_t width, int32_t height, int32_t, NativeOffscreen* made, std::string* failure) {
    const HWND parent = win32_create_hidden(width, height);
    if (parent == nullptr) {
        *failure = "the system makes no window of " + std::to_string(width) + "x" + std::to_string(height);
        return false;
    }
    *made = NativeOffscreen{native_desktop_layer(), win32_window(parent), 0, 0};
    return true;
}

void native_offscreen_close(const NativeOffscreen& offscreen) { DestroyWindow(win32_handle(offscreen.parent)); }

}  // namespace pelt
