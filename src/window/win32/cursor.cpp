// Cursors and the pointer on Win32, and the handle of the library, in whose resources the built-in cursors are. What
// surprises: a cursor holds only until the pointer moves on, because the window class has none of its own; the portable
// half applies it again at each message of the mouse.
#include <cstdint>

#include "foundation/file_access.h"
#include "foundation/file_find_win32.h"
#include "window/win32/native_win32.h"

namespace pelt {

HINSTANCE win32_module;

NativeCursor native_cursor_load_builtin(int32_t group) {
    if (win32_module == nullptr) { return 0; }
    const auto resource = reinterpret_cast<const char*>(static_cast<std::intptr_t>(group));
    return reinterpret_cast<NativeCursor>(LoadCursorA(win32_module, resource));
}

// Plain files alone: the system would wait for what a device or a pipe may have to say.
NativeCursor native_cursor_load_file(const char* path) {
    if (file_resolve(path).empty()) { return 0; }
    return reinterpret_cast<NativeCursor>(LoadCursorFromFileW(file_system_name(path).c_str()));
}

void native_cursor_apply(NativeCursor cursor) {
    SetCursor(cursor != 0 ? reinterpret_cast<HCURSOR>(cursor) : LoadCursor(nullptr, IDC_ARROW));
}

void native_cursor_show(bool shown) { ShowCursor(shown ? TRUE : FALSE); }

bool native_pointer_set(int32_t x, int32_t y) { return SetCursorPos(x, y) != 0; }

bool native_pointer_get(int32_t* x, int32_t* y) {
    POINT place{};
    if (GetCursorPos(&place) == 0) { return false; }
    *x = place.x;
    *y = place.y;
    return true;
}

}  // namespace pelt

// Called by the system when the library is loaded, for each thread, and when it goes.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH || reason == DLL_THREAD_ATTACH) { pelt::win32_module = instance; }
    return TRUE;
}
