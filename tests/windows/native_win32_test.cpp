// The native layer with real windows, below a window of the test's own that stands where Tk's would.
#include "window/win32/native_win32.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/file_access.h"
#include "support/temp_dir.h"
#include "window/cursor.h"
#include "window/gl_window.h"
#include "window/input.h"
#include "window/messages.h"
#include "window/palette.h"
#include "window/x11/builtin_cursors.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

using namespace pelt;
using pelt::test::TempDir;

namespace {

const NativeLayer& layer = *native_desktop_layer();

struct Received {
    UINT message;
    WPARAM wparam;
    LPARAM lparam;
};
std::vector<Received> at_parent;
std::string status_text;
std::vector<MouseEvent> mouse;
std::vector<KeyEvent> keys;
int inits, resizes, paints;
HWND destroys;  // what the next procedure of ours destroys, as a script may; null for nothing
bool draws;     // whether a resize begins and ends a paint, as a frame does

LRESULT CALLBACK parent_procedure(HWND handle, UINT message, WPARAM wparam, LPARAM lparam) {
    at_parent.push_back({message, wparam, lparam});
    if (message == 1025) { status_text = reinterpret_cast<const char*>(lparam); }
    return message == 1025 ? 0 : DefWindowProcA(handle, message, wparam, lparam);
}

void destroy_what_is_due() {
    const HWND due = destroys;
    destroys = nullptr;
    if (due != nullptr) { DestroyWindow(due); }
}

void on_init(WindowHandle window, int32_t, const void*) {
    ++inits;
    gl_make_current(window);
    destroy_what_is_due();
}
void on_paint(WindowHandle, int32_t, const void*) {
    ++paints;
    destroy_what_is_due();
}
void on_resize(WindowHandle window, int32_t, const void*) {
    ++resizes;
    destroy_what_is_due();
    if (!draws) { return; }
    gl_begin_paint(window);
    gl_swap_buffers(window);
    gl_end_paint(window);
}
void on_event(WindowHandle, int32_t, const void* event) {
    const int32_t code = *static_cast<const int32_t*>(event);
    if (code == INPUT_KEY_UP || code == INPUT_KEY_DOWN) {
        keys.push_back(*static_cast<const KeyEvent*>(event));
    } else {
        mouse.push_back(*static_cast<const MouseEvent*>(event));
    }
    destroy_what_is_due();
}

// Serves what is posted; the number of messages, at most the limit.
int serve(int limit = 200) {
    int served = 0;
    for (MSG message; served < limit && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0; ++served) {
        DispatchMessageA(&message);
    }
    return served;
}

size_t parent_got(UINT message) {
    size_t count = 0;
    for (const Received& each : at_parent) { count += each.message == message; }
    return count;
}

class NativeWin32 : public testing::Test {
protected:
    void SetUp() override {
        const HINSTANCE module = GetModuleHandleA(nullptr);
        DllMain(module, DLL_PROCESS_ATTACH, nullptr);
        gl_system_init(reinterpret_cast<std::uintptr_t>(module));
        WNDCLASSA parent_class{};
        parent_class.lpfnWndProc = parent_procedure;
        parent_class.hInstance = module;
        parent_class.lpszClassName = "Pelt test parent";
        RegisterClassA(&parent_class);
        create();
    }
    // The parent is not made the active window: no window manager is there to answer for one.
    void create() {
        parent = CreateWindowExA(0, "Pelt test parent", "parent", WS_POPUP, 0, 0, 300, 200, nullptr, nullptr,
                                 GetModuleHandleA(nullptr), nullptr);
        ShowWindow(parent, SW_SHOWNOACTIVATE);
        serve();
        draws = true;
        destroys = nullptr;
        window = create_view("view");
        handle = win32_handle(window);
        serve();
        forget();
    }
    WindowHandle create_view(const char* name, int popup = 0) {
        return gl_window_create(name, win32_window(parent), on_init, on_paint, on_resize, on_event, popup);
    }
    void TearDown() override {
        DestroyWindow(parent);
        serve();
    }
    void forget() {
        at_parent.clear();
        mouse.clear();
        keys.clear();
        inits = resizes = paints = 0;
    }
    LRESULT send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return win32_class_procedure(handle, message, wparam, lparam);
    }

    HWND parent = nullptr;
    HWND handle = nullptr;
    WindowHandle window = 0;
};

}  // namespace

TEST_F(NativeWin32, TheClassHasItsNameStyleAndNoCursor) {
    WNDCLASSA found{};
    ASSERT_NE(GetClassInfoA(GetModuleHandleA(nullptr), "Kestrane CAD", &found), 0);
    EXPECT_EQ(found.style, 0x803u);
    EXPECT_EQ(found.hCursor, nullptr);
    EXPECT_EQ(found.hbrBackground, reinterpret_cast<HBRUSH>(5));
    EXPECT_EQ(found.cbClsExtra + found.cbWndExtra, 0);
}

TEST_F(NativeWin32, TheWindowIsAChildWithABorderOfOnePixelInTheSizeOfItsParent) {
    ASSERT_NE(window, 0u);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(handle, GWL_STYLE)) & ~static_cast<DWORD>(WS_VISIBLE), 0x46800000u);
    EXPECT_EQ(GetWindowLongA(handle, GWL_EXSTYLE), 0);
    EXPECT_TRUE(IsWindowVisible(handle));
    int32_t x = 7, y = 7, width = 0, height = 0;
    gl_window_geometry(window, &x, &y, &width, &height);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(width, 298);
    EXPECT_EQ(height, 198);
    EXPECT_EQ(gl_window_parent(window), win32_window(parent));
}

TEST_F(NativeWin32, APopupIsBornMaximisedAndWithoutABorder) {
    const WindowHandle popup = layer.window_create("popup", win32_window(parent), 50, 40, true);
    ASSERT_NE(popup, 0u);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(win32_handle(popup), GWL_STYLE)), 0x87000000u);
    layer.window_destroy(popup);
    EXPECT_FALSE(IsWindow(win32_handle(popup)));
}

TEST_F(NativeWin32, AWindowThatTheSystemRefusesGivesZeroAndMayBeTriedAgain) {
    const HWND living = parent;
    parent = CreateWindowExA(0, "Pelt test parent", "gone", WS_POPUP, 0, 0, 30, 20, nullptr, nullptr,
                             GetModuleHandleA(nullptr), nullptr);
    DestroyWindow(parent);
    EXPECT_EQ(create_view("other"), 0u);
    EXPECT_EQ(gl_window_create("other", 0, on_init, on_paint, on_resize, on_event, 0), 0u);
    EXPECT_EQ(inits, 0);
    EXPECT_TRUE(gl_context_current(window));
    parent = living;
    EXPECT_NE(create_view("other"), 0u);
    EXPECT_EQ(inits, 1);
}

TEST_F(NativeWin32, TheLibraryKnowsItselfFromBeingAttached) {
    const HINSTANCE module = win32_module;
    const auto other = reinterpret_cast<HINSTANCE>(0x1230000);
    for (const DWORD reason : {DWORD{DLL_PROCESS_DETACH}, DWORD{DLL_THREAD_DETACH}, DWORD{77}}) {
        EXPECT_EQ(DllMain(other, reason, nullptr), TRUE);
        EXPECT_EQ(win32_module, module) << reason;
    }
    for (const DWORD reason : {DWORD{DLL_PROCESS_ATTACH}, DWORD{DLL_THREAD_ATTACH}}) {
        EXPECT_EQ(DllMain(other, reason, nullptr), TRUE);
        EXPECT_EQ(win32_module, other) << reason;
        EXPECT_EQ(DllMain(module, reason, nullptr), TRUE);
    }
}

TEST_F(NativeWin32, TheFormatHasTwoBuffersColoursAndDepth) {
    const HDC device = GetDC(handle);
    PIXELFORMATDESCRIPTOR format{};
    const int number = GetPixelFormat(device);
    ASSERT_GT(number, 0);
    DescribePixelFormat(device, number, sizeof format, &format);
    ReleaseDC(handle, device);
    EXPECT_EQ(format.dwFlags & 0x25u, 0x25u);
    EXPECT_EQ(format.iPixelType, PFD_TYPE_RGBA);
    EXPECT_GE(format.cDepthBits, 16);
    EXPECT_TRUE(gl_context_current(window));
}

TEST_F(NativeWin32, CreationDrawsTheFirstFrameAndInitialisesOnce) {
    DestroyWindow(handle);
    forget();
    const WindowHandle other = create_view("other");
    EXPECT_EQ(inits, 1);
    EXPECT_GE(paints, 1);
    EXPECT_FALSE(layer.paint_pending(other));
}

TEST_F(NativeWin32, ASecondWindowOfTheSameNameIsTheFirstAlsoWhenItIsDead) {
    EXPECT_EQ(create_view("view"), window);
    DestroyWindow(handle);
    EXPECT_EQ(create_view("view"), window);
    EXPECT_EQ(inits, 0);
}

TEST_F(NativeWin32, AMoveSendsASizeOnlyWhenTheSizeChangesAndASizeMessageIsHandedOnAlsoWhenItIsNone) {
    gl_window_move(window, 5, 6, 300, 200);
    EXPECT_EQ(resizes, 0);
    gl_window_move(window, 5, 6, 200, 100);
    EXPECT_GE(resizes, 1);
    forget();
    EXPECT_EQ(send(WM_SIZE, 0, message_pair(198, 98)), 0);
    EXPECT_EQ(resizes, 1);
    EXPECT_EQ(send(WM_SIZE, 0, message_pair(190, 98)), 0);
    EXPECT_EQ(resizes, 2);
}

TEST_F(NativeWin32, EachMouseMessageBecomesARecordAndAnswersZero) {
    struct Case {
        UINT message;
        WPARAM held;
        int32_t code, button, pressed, double_click;
    };
    static constexpr Case CASES[] = {
        {WM_MOUSEMOVE, 0, 10000, 0, 0, 0},      {WM_LBUTTONDOWN, 1, 10001, 1, 1, 0},
        {WM_LBUTTONUP, 0, 10001, 1, 0, 0},      {WM_LBUTTONDBLCLK, 1, 10001, 1, 1, 1},
        {WM_LBUTTONDBLCLK, 0, 10001, 1, 0, 1},  {WM_RBUTTONDOWN, 2, 10001, 3, 1, 0},
        {WM_RBUTTONUP, 0, 10001, 3, 0, 0},      {WM_RBUTTONDBLCLK, 2, 10001, 3, 1, 1},
        {WM_MBUTTONDOWN, 16, 10001, 2, 1, 0},   {WM_MBUTTONUP, 0, 10001, 2, 0, 0},
        {WM_MBUTTONDBLCLK, 16, 10001, 2, 1, 1}, {WM_RBUTTONDOWN, 3, 10001, 2, 1, 0},
        {WM_LBUTTONUP, 2, 10001, 3, 1, 0},
    };
    const int32_t pan = cursor_create("pelt", "pan");
    ASSERT_EQ(cursor_apply(pan), 1);
    const HCURSOR in_force = GetCursor();
    for (const Case& each : CASES) {
        mouse.clear();
        SetCursor(nullptr);
        EXPECT_EQ(send(each.message, each.held, message_pair(12, 34)), 0);
        ASSERT_EQ(mouse.size(), 1u) << each.message;
        EXPECT_EQ(GetCursor(), in_force) << each.message;
        EXPECT_EQ(mouse[0].code, each.code) << each.message;
        EXPECT_EQ(mouse[0].double_click, each.double_click) << each.message;
        EXPECT_EQ(mouse[0].button, each.button) << each.message;
        EXPECT_EQ(mouse[0].pressed, each.pressed) << each.message;
        EXPECT_EQ(mouse[0].x, 12);
        EXPECT_EQ(mouse[0].y, 34);
    }
}

TEST_F(NativeWin32, HighBitsOfMessageWordAndPlaceDoNotCount) {
    const LPARAM place = static_cast<LPARAM>(0x7FFFFFFF00000000ll) | 0xFFFDFFFBll;
    EXPECT_EQ(send(0x70000u | WM_LBUTTONDOWN, 0xABCD0001u, place), 0);
    ASSERT_EQ(mouse.size(), 1u);
    EXPECT_EQ(mouse[0].button, 1);
    EXPECT_EQ(mouse[0].x, -5);
    EXPECT_EQ(mouse[0].y, -3);
    send(WM_LBUTTONUP);
    EXPECT_EQ(send(0x10000u | WM_SIZE, 0, message_pair(298, 198)), 0);
    EXPECT_EQ(resizes, 1);
    EXPECT_EQ(send(0x10000u | WM_SIZE, 0, static_cast<LPARAM>(0x5555555500000000ll) | message_pair(297, 198)), 0);
    EXPECT_EQ(resizes, 2);
    EXPECT_EQ(send(0x20000u | WM_PAINT), 0);
    EXPECT_EQ(paints, 1);
    send(0x70000u | WM_KEYDOWN, 0x120041u);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].key, 0x41u);
}

TEST_F(NativeWin32, TheSystemGetsTheLowBitsAndTheWholeLparam) {
    // Above four gigabytes, so that an address cut to 32 bits would lead elsewhere.
    constexpr uintptr_t HIGH_PLACE = uintptr_t{1} << 36;
    auto* text = static_cast<char*>(
        VirtualAlloc(reinterpret_cast<void*>(HIGH_PLACE), 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(send(0xABCD0000u | WM_GETTEXT, 0x70003u, reinterpret_cast<LPARAM>(text)), 2);  // room for two of "view"
    EXPECT_STREQ(text, "vi");
    VirtualFree(text, 0, MEM_RELEASE);
}

TEST_F(NativeWin32, ADragKeepsThePointerUntilTheLastButtonIsUp) {
    send(WM_LBUTTONDOWN, HELD_LEFT);
    EXPECT_EQ(GetCapture(), handle);
    send(WM_RBUTTONDOWN, HELD_LEFT | HELD_RIGHT);
    send(WM_LBUTTONUP, HELD_RIGHT);
    EXPECT_EQ(GetCapture(), handle);
    send(WM_MOUSEMOVE, 0);
    EXPECT_EQ(GetCapture(), handle);
    send(WM_RBUTTONUP, 0);
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(NativeWin32, AMoveAtTheSamePlaceIsHandedOn) {
    send(WM_LBUTTONDOWN, HELD_LEFT, message_pair(7, 8));
    mouse.clear();
    SetCursor(nullptr);
    EXPECT_EQ(send(WM_MOUSEMOVE, HELD_LEFT, message_pair(7, 8)), 0);
    EXPECT_NE(GetCursor(), nullptr) << "what lay over the window may have set a cursor of its own";
    send(WM_MOUSEMOVE, HELD_LEFT, message_pair(7, 8));
    ASSERT_EQ(mouse.size(), 2u);
    for (const MouseEvent& each : mouse) {
        EXPECT_EQ(each.code, INPUT_MOUSE_MOVE);
        EXPECT_EQ(each.button, 1);
        EXPECT_EQ(each.x, 7);
        EXPECT_EQ(each.y, 8);
    }
    send(WM_LBUTTONUP, 0, message_pair(7, 8));
}

TEST_F(NativeWin32, KeyMessagesBecomeRecordsAndGoOn) {
    send(WM_KEYDOWN, 0x41);
    send(WM_CHAR, 'a');
    send(WM_KEYUP, 0x41);
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(keys[0].code, INPUT_KEY_DOWN);
    EXPECT_EQ(keys[1].code, INPUT_KEY_DOWN);
    EXPECT_EQ(keys[2].code, INPUT_KEY_UP);
    EXPECT_EQ(keys[2].key, 0x41u);
}

TEST_F(NativeWin32, TheWheelGoesOnToTheParentWithItsWholeWord) {
    const WPARAM turned = (static_cast<WPARAM>(0xFF88) << 16) | 4;
    send(WM_MOUSEWHEEL, turned, message_pair(1, 2));
    send(WM_MOUSEHWHEEL, turned, message_pair(1, 2));
    ASSERT_EQ(parent_got(WM_MOUSEWHEEL), 1u);
    for (const Received& each : at_parent) {
        if (each.message == WM_MOUSEWHEEL) { EXPECT_EQ(each.wparam, turned); }
    }
    EXPECT_TRUE(mouse.empty());
}

TEST_F(NativeWin32, NoPaletteIsMadeAndTheQuestionForItAnswersZero) {
    EXPECT_EQ(send(WM_QUERYNEWPALETTE), 0);
    send(WM_PALETTECHANGED, 0x1234);
    EXPECT_EQ(paints, 0);
}

TEST_F(NativeWin32, FocusAndAnUnknownMessageGoToTheSystem) {
    SetCursor(nullptr);
    send(WM_SETFOCUS);
    EXPECT_EQ(GetCursor(), LoadCursorA(nullptr, reinterpret_cast<const char*>(32512)));
    EXPECT_EQ(send(WM_GETTEXTLENGTH), 4);  // of the title "view"
    EXPECT_TRUE(mouse.empty());
}

TEST_F(NativeWin32, APaintIsRepeatedUntilAFrameHasBegun) {
    InvalidateRect(handle, nullptr, FALSE);
    serve();
    EXPECT_EQ(paints, 1);
    EXPECT_EQ(resizes, 1);
    forget();
    draws = false;
    InvalidateRect(handle, nullptr, FALSE);
    EXPECT_LT(serve(), 200) << "the system must not ask for the same paint for ever";
    EXPECT_EQ(paints, 3);
}

TEST_F(NativeWin32, ADeadContextLeavesNoPaintMessageBehind) {
    gl_context_destroy(window);
    EXPECT_FALSE(gl_context_current(window));
    InvalidateRect(handle, nullptr, FALSE);
    EXPECT_LT(serve(), 200);
    gl_swap_buffers(window);
    gl_begin_paint(window);
}

TEST_F(NativeWin32, ADestroyMessageTakesTheContextAndNotTheWindow) {
    send(WM_DESTROY);
    EXPECT_FALSE(gl_context_current(window));
    EXPECT_TRUE(IsWindow(handle));
    InvalidateRect(handle, nullptr, FALSE);
    EXPECT_LT(serve(), 200) << "the system must not ask for the same paint for ever";
    send(WM_DESTROY);
    layer.window_destroy(window);
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_EQ(win32_find(handle), nullptr);
}

TEST_F(NativeWin32, AWindowOfTheClassThatNobodyKnowsServesEveryMessage) {
    const HWND stray = CreateWindowExA(0, "Kestrane CAD", "stray", WS_CHILD | WS_VISIBLE, 0, 0, 20, 10, parent, nullptr,
                                       GetModuleHandleA(nullptr), nullptr);
    ASSERT_NE(stray, nullptr);
    EXPECT_LT(serve(), 200) << "the system must not ask for the same paint for ever";
    forget();
    for (UINT message = WM_MOUSEMOVE; message <= WM_MBUTTONDBLCLK; ++message) {
        EXPECT_EQ(win32_class_procedure(stray, message, 0, 0), 0);
    }
    for (const UINT message : {WM_KEYDOWN, WM_KEYUP, WM_CHAR, WM_SIZE, WM_SETFOCUS, WM_PAINT, WM_QUERYNEWPALETTE,
                               WM_PALETTECHANGED, WM_MOUSEWHEEL, WM_DESTROY, WM_CLOSE}) {
        win32_class_procedure(stray, message, 0, 0);
    }
    EXPECT_TRUE(mouse.empty() && keys.empty());
    EXPECT_EQ(resizes + paints, 0);
    DestroyWindow(stray);
}

TEST_F(NativeWin32, AProcedureMayDestroyTheWindowOrItsParent) {
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_KEYDOWN, WM_CHAR, WM_SIZE, WM_PAINT}) {
        for (const bool the_parent : {false, true}) {
            destroys = the_parent ? parent : handle;
            send(message, 0, message_pair(20, 30));
            EXPECT_EQ(destroys, nullptr) << message;
            EXPECT_FALSE(IsWindow(handle)) << message;
            EXPECT_EQ(win32_any(), nullptr) << message;
            EXPECT_EQ(GetCapture(), nullptr) << message;
            EXPECT_FALSE(gl_context_current(window)) << message;
            EXPECT_LT(serve(), 200);
            if (!the_parent) { DestroyWindow(parent); }
            gl_system_init(reinterpret_cast<std::uintptr_t>(GetModuleHandleA(nullptr)));
            create();
        }
    }
}

TEST_F(NativeWin32, AWindowDestroyedWhileItIsMadeIsADeadOne) {
    destroys = parent;
    const WindowHandle other = create_view("other");
    EXPECT_NE(other, 0u);
    EXPECT_FALSE(IsWindow(win32_handle(other)));
    EXPECT_EQ(win32_any(), nullptr);
    EXPECT_EQ(create_view("other"), other);
    EXPECT_EQ(paints, 0);
}

TEST_F(NativeWin32, CloseTwiceIsHarmless) {
    send(WM_CLOSE);
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_EQ(win32_find(handle), nullptr);
    send(WM_CLOSE);
    EXPECT_TRUE(IsWindow(parent));
}

TEST_F(NativeWin32, AWindowThatIsNotOursIsNeverTouched) {
    layer.window_destroy(win32_window(parent));
    layer.window_move(win32_window(parent), 0, 0, 10, 10);
    EXPECT_TRUE(IsWindow(parent));
    EXPECT_EQ(layer.device_get(win32_window(parent)), 0u);
    EXPECT_FALSE(layer.paint_pending(win32_window(parent)));
    int32_t width = 0, height = 0;
    ASSERT_TRUE(layer.client_size(win32_window(parent), &width, &height));
    EXPECT_EQ(width, 300);
}

TEST_F(NativeWin32, AParentThatIsDestroyedTakesTheWindowAlong) {
    DestroyWindow(parent);
    EXPECT_EQ(win32_any(), nullptr);
    EXPECT_FALSE(gl_context_current(window));
    int32_t width = 0, height = 0;
    EXPECT_FALSE(layer.client_size(window, &width, &height));
}

TEST_F(NativeWin32, NothingIsDoneForNull) {
    EXPECT_EQ(layer.device_get(0), 0u);
    EXPECT_FALSE(layer.format_set(0));
    EXPECT_EQ(layer.context_create(0), 0u);
    EXPECT_EQ(layer.window_parent(0), 0u);
    EXPECT_EQ(native_window_of_tk(nullptr), 0u);
    layer.swap_buffers(0);
    layer.end_paint(0, nullptr);
    NativeFormat format{};
    EXPECT_FALSE(layer.format_get(0, &format));
}

TEST_F(NativeWin32, TheStatusTextReachesTheFirstPartWithoutBorders) {
    status_text.clear();
    gl_status_text(win32_window(parent), "ready");
    EXPECT_EQ(status_text, "ready");
    EXPECT_EQ(at_parent.back().wparam, 256u);
}

TEST_F(NativeWin32, APaletteHoldsItsEntries) {
    const NativeFormat format{NATIVE_FORMAT_NEEDS_PALETTE, 8, 3, 0, 3, 3, 2, 6};
    PaletteEntry entries[256];
    ASSERT_EQ(palette_entries(format, entries), 256);
    const NativePalette palette = layer.palette_create(entries, 256);
    ASSERT_NE(palette, 0u);
    PALETTEENTRY kept[256]{};
    ASSERT_EQ(GetPaletteEntries(reinterpret_cast<HPALETTE>(palette), 0, 256, kept), 256u);
    EXPECT_EQ(kept[236].peRed, 166);
    EXPECT_EQ(kept[236].peGreen, 202);
    EXPECT_EQ(kept[236].peBlue, 240);
    EXPECT_EQ(kept[255].peBlue, 255);
    DeleteObject(reinterpret_cast<HPALETTE>(palette));
    EXPECT_EQ(layer.palette_create(entries, 0), 0u);
}

TEST_F(NativeWin32, APaletteIsSelectedAndTheOneBeforeComesBack) {
    const PaletteEntry entries[2] = {{1, 2, 3, 0}, {4, 5, 6, 0}};
    const NativePalette palette = layer.palette_create(entries, 2);
    const NativeDevice device = layer.device_get(window);
    const NativePalette before = layer.palette_select(device, palette);
    EXPECT_NE(before, 0u);
    layer.palette_realize(device);
    layer.palette_update_colors(device);
    EXPECT_EQ(layer.palette_select(device, before), palette);
    EXPECT_EQ(layer.palette_select(0, palette), 0u);
    EXPECT_EQ(layer.palette_select(device, 0), 0u);
    layer.device_release(window, device);
    DeleteObject(reinterpret_cast<HPALETTE>(palette));
}

TEST_F(NativeWin32, TheCursorsInTheResourcesAreThoseOfTheFiles) {
    constexpr size_t FILE_HEADER = 22;   // of a file with one picture
    constexpr size_t GROUP_ID_AT = 18;   // of the picture, in its group
    constexpr size_t HOT_SPOT_SIZE = 4;  // in front of the picture
    for (const BuiltinCursor& cursor : BUILTIN_CURSORS) {
        const auto bytes_of = [](int32_t number, int type) -> std::string {
            const HRSRC found = FindResourceA(win32_module, reinterpret_cast<const char*>(intptr_t{number}),
                                              reinterpret_cast<const char*>(intptr_t{type}));
            if (found == nullptr) { return {}; }
            const auto* bytes = static_cast<const char*>(LockResource(LoadResource(win32_module, found)));
            return {bytes, SizeofResource(win32_module, found)};
        };
        const std::string group = bytes_of(cursor.group, 12);
        ASSERT_GT(group.size(), GROUP_ID_AT + 1) << cursor.name;
        const std::string picture = bytes_of(static_cast<uint8_t>(group[GROUP_ID_AT]), 1);
        const std::string file(reinterpret_cast<const char*>(cursor.bytes), cursor.size);
        EXPECT_EQ(picture.substr(HOT_SPOT_SIZE), file.substr(FILE_HEADER)) << cursor.name;
    }
}

TEST_F(NativeWin32, SevenCursorsAreInTheResourcesWithTheirHotSpots) {
    struct Spot {
        int32_t group;
        DWORD x, y;
    };
    static constexpr Spot SPOTS[] = {{101, 16, 0}, {102, 15, 15}, {103, 17, 6}, {104, 17, 21},
                                     {105, 17, 6}, {106, 25, 15}, {107, 17, 6}};
    for (const Spot& spot : SPOTS) {
        const auto cursor = reinterpret_cast<HICON>(native_cursor_load_builtin(spot.group));
        ASSERT_NE(cursor, nullptr) << spot.group;
        ICONINFO info{};
        ASSERT_NE(GetIconInfo(cursor, &info), 0);
        EXPECT_EQ(info.xHotspot, spot.x) << spot.group;
        EXPECT_EQ(info.yHotspot, spot.y) << spot.group;
        EXPECT_EQ(info.fIcon, FALSE);
    }
    EXPECT_EQ(native_cursor_load_builtin(108), 0u);
}

TEST_F(NativeWin32, ACursorFileIsFoundByAUtf8NameWithForwardSlashes) {
    TempDir dir;
    const std::string path = dir.path() + "/z\xC3\xBCge\xE2\x98\x83.cur";
    ASSERT_EQ(file_write_all(path.c_str(), BUILTIN_CURSORS[0].bytes, BUILTIN_CURSORS[0].size), 1);
    const int32_t id = cursor_create("pelt", path.c_str());
    EXPECT_GT(id, 0);
    EXPECT_EQ(cursor_apply(id), 1);
    EXPECT_EQ(GetCursor() != nullptr, true);
    EXPECT_EQ(cursor_apply(0), 1);
    EXPECT_EQ(cursor_create("pelt", dir.file("none.cur").c_str()), 0);
    for (const std::string& no_file : {dir.path(), std::string("NUL"), std::string("\\\\.\\pipe\\none")}) {
        EXPECT_EQ(cursor_create("pelt", no_file.c_str()), 0) << no_file;
    }
}

TEST_F(NativeWin32, HidingTheCursorTwiceCountsOnce) {
    const int before = ShowCursor(TRUE) - 1;
    ShowCursor(FALSE);
    gl_show_cursor(0);
    gl_show_cursor(0);
    gl_show_cursor(1);
    gl_show_cursor(1);
    EXPECT_EQ(ShowCursor(TRUE) - 1, before);
    ShowCursor(FALSE);
}
