// Cursors and the pointer on X11. What surprises: a cursor may be loaded before any display is known, so a cursor is
// kept as pictures and turned into one of the server's when it is first shown.
#include <X11/cursorfont.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "foundation/file_access.h"
#include "window/x11/builtin_cursors.h"
#include "window/x11/native_x11.h"
#include "window/x11/pictures.h"

namespace pelt {

namespace {

constexpr size_t CURSOR_FILE_MAX = size_t{4} << 20;

struct X11Cursor {
    XcursorImages* images;
    Display* display;  // where it was made; null before
    Cursor cursor;
};

X11Cursor* applied;  // null is the arrow
bool hidden;

// Cursors that every display has: made once for the display in use.
struct StockCursors {
    Display* display;
    Cursor arrow, empty;
} stock;

Cursor make_empty(Display* display) {
    static const char NOTHING[] = {0};
    const Window root = DefaultRootWindow(display);
    const Pixmap blank = XCreateBitmapFromData(display, root, NOTHING, 1, 1);
    XColor black{};
    const Cursor cursor = XCreatePixmapCursor(display, blank, blank, &black, &black, 0, 0);
    XFreePixmap(display, blank);
    return cursor;
}

Cursor realized(X11Cursor* cursor, Display* display) {
    if (cursor->display != display) {
        X11ErrorTrap trap{};
        x11_trap_begin(&trap, display);
        cursor->cursor = XcursorImagesLoadCursor(display, cursor->images);
        if (x11_trap_end(&trap)) { cursor->cursor = None; }
        cursor->display = display;
    }
    return cursor->cursor;
}

Cursor cursor_now(Display* display) {
    if (stock.display != display) {
        stock = StockCursors{display, XCreateFontCursor(display, XC_left_ptr), make_empty(display)};
    }
    if (hidden) { return stock.empty; }
    if (applied == nullptr) { return stock.arrow; }
    const Cursor cursor = realized(applied, display);
    return cursor == None ? stock.arrow : cursor;
}

void define_everywhere() {
    int count = 0;
    X11Window* const* windows = x11_windows(&count);
    for (int i = 0; i < count; ++i) { x11_define_cursor(windows[i]); }
}

NativeCursor keep(XcursorImages* images) {
    if (images == nullptr) { return 0; }
    return reinterpret_cast<NativeCursor>(new X11Cursor{images, nullptr, None});
}

// The whole file up to the limit; a longer one is no cursor.
std::unique_ptr<uint8_t[]> read_file(const char* path, size_t* size) {
    const int slot = file_open(file_resolve(path).c_str(), "r");
    if (slot < 0) { return nullptr; }
    auto bytes = std::make_unique<uint8_t[]>(CURSOR_FILE_MAX + 1);
    *size = file_read(slot, bytes.get(), 1, CURSOR_FILE_MAX + 1);
    file_close(slot);
    if (*size > CURSOR_FILE_MAX) { return nullptr; }
    return bytes;
}

Window pointer_root(Display* display) {
    int count = 0;
    X11Window* const* windows = x11_windows(&count);
    return count > 0 && windows[0]->display == display ? RootWindow(display, windows[0]->screen)
                                                       : DefaultRootWindow(display);
}

}  // namespace

void x11_define_cursor(X11Window* window) {
    const Cursor cursor = cursor_now(window->display);
    if (window->cursor == cursor) { return; }
    window->cursor = cursor;
    XDefineCursor(window->display, window->id, cursor);
}

NativeCursor native_cursor_load_builtin(int32_t group) {
    for (const BuiltinCursor& builtin : BUILTIN_CURSORS) {
        if (builtin.group == group) { return keep(x11_cursor_pictures(builtin.bytes, builtin.size)); }
    }
    return 0;
}

NativeCursor native_cursor_load_file(const char* path) {
    size_t size = 0;
    const std::unique_ptr<uint8_t[]> bytes = read_file(path, &size);
    return bytes != nullptr ? keep(x11_cursor_pictures(bytes.get(), size)) : 0;
}

void native_cursor_apply(NativeCursor cursor) {
    applied = reinterpret_cast<X11Cursor*>(cursor);
    define_everywhere();
}

void native_cursor_show(bool shown) {
    hidden = !shown;
    define_everywhere();
}

bool native_pointer_set(int32_t x, int32_t y) {
    Display* display = x11_display();
    if (display == nullptr) { return false; }
    // The protocol has 16 bits for each; the server itself keeps the pointer on the screen.
    const auto within = [](int32_t value) { return std::clamp(value, INT16_MIN, INT16_MAX); };
    XWarpPointer(display, None, pointer_root(display), 0, 0, 0, 0, within(x), within(y));
    XFlush(display);
    return true;
}

bool native_pointer_get(int32_t* x, int32_t* y) {
    Display* display = x11_display();
    if (display == nullptr) { return false; }
    Window root = None, child = None;
    int root_x = 0, root_y = 0, window_x = 0, window_y = 0;
    unsigned state = 0;
    XQueryPointer(display, pointer_root(display), &root, &child, &root_x, &root_y, &window_x, &window_y, &state);
    *x = root_x;
    *y = root_y;
    return true;
}

}  // namespace pelt
