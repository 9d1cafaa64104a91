// The third native layer: no window system at all. Windows are records in a table, everything that reaches the seam is
// counted or kept for a test to look at, and each part can be told to fail. It keeps the duties of native.h as a real
// layer does: creation and a change of size send MESSAGE_SIZE before they return and leave a paint pending, destroy
// sends MESSAGE_DESTROY. There is no event loop: null_run() hands over the pending paints.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "window/gl_window.h"

namespace pelt {

inline constexpr int32_t NULL_BORDER = 1;

struct NullWindow {
    WindowHandle handle = 0;
    WindowHandle parent = 0;
    std::string title;
    int32_t x = 0, y = 0;
    int32_t width = 0, height = 0;  // outer
    int32_t border = 0;
    bool exists = true;
    bool shown = false;
    bool paint_pending = false;
    uint32_t background = 0xFFFFFFFF;  // last colour given to the device; this value for none yet
    int raises = 0;
    int moves = 0;
    int paints_begun = 0;
    int paints_ended = 0;
    int swaps = 0;
    int devices = 0;   // got and not released
    int contexts = 0;  // made and not destroyed
};

// What the layer is told, and what it saw beside the windows.
struct NullSystem {
    // To be set by a test.
    bool fail_window = false;
    bool fail_format = false;
    bool fail_context = false;
    bool fail_pointer = false;
    bool fail_offscreen = false;
    bool tells_offscreen_limit = false;  // before there is a window
    bool keeps_back_buffer = true;
    int32_t drawing_limit_width = 0;  // what the driver can draw; 0 when it does not say
    int32_t drawing_limit_height = 0;
    NativeFormat format{};                  // what native_format_get answers
    NativePalette displaced_palette = 0;    // what the first selection answers
    std::intptr_t default_result = 77;      // what the system answers to a message
    std::vector<std::string> cursor_files;  // paths that hold a cursor

    // To be looked at.
    std::vector<std::string> calls;  // names of the calls that change something, in order
    std::uintptr_t instance = 0;
    NativeDevice current_device = 0;
    NativeContext current_context = 0;
    int makes_current = 0;
    int32_t offscreen_samples = -1;  // of the last call; -1 for none yet
    struct Default {
        WindowHandle window;
        uint32_t message;
        std::uintptr_t wparam;
        std::intptr_t lparam;
    };
    std::vector<Default> defaults;          // messages that went to the system
    std::vector<PaletteEntry> palette;      // the entries of the palette made last
    std::vector<NativePalette> selections;  // palettes selected, in order
    int palettes = 0;
    int realizes = 0;
    int colour_updates = 0;
    int invalidations = 0;
    std::vector<NativeCursor> cursors_applied;
    std::vector<int32_t> builtin_loads;   // groups
    std::vector<std::string> file_loads;  // paths as they arrive
    std::vector<bool> cursor_shows;
    int32_t pointer_x = 0, pointer_y = 0;
    WindowHandle status_bar = 0;
    std::string status_text;
};

extern NullSystem null_system;

// An empty table, no window, all defaults; then gl_system_init(0). Call it at the start of each test.
void null_reset();

// A window that the toolkit made (no border), shown. native_window_of_tk takes its handle as the token.
WindowHandle null_add_window(int32_t width, int32_t height, WindowHandle parent = 0, int32_t x = 0, int32_t y = 0);

// The record of a window, also of a destroyed one; null for a handle never given out. Stays valid until null_reset.
NullWindow* null_window(WindowHandle window);

// The toolkit gives its window another size: its children get MESSAGE_SIZE.
void null_resize(WindowHandle window, int32_t width, int32_t height);

// The toolkit destroys its window and takes the children along: they get MESSAGE_DESTROY alone.
void null_destroy_tree(WindowHandle window);

// Something uncovers the window.
void null_expose(WindowHandle window);

// Hands over pending paints as an event loop does, at most this many rounds. Returns the messages sent.
int null_run(int rounds = 4);

}  // namespace pelt
