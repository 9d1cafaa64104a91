// Cursors by number, and the pointer. What surprises: a cursor is not a property of the window. The number in force is
// applied again at each mouse message, and nothing that was loaded is ever released.
#include "window/cursor.h"

#include <cstdint>
#include <limits>

#include "foundation/text.h"
#include "window/gl_system.h"
#include "window/native.h"

namespace pelt {

namespace {

struct BuiltinName {
    const char* name;
    int32_t group;
};
constexpr BuiltinName BUILTIN_NAMES[] = {
    {"rotate", 106}, {"pan", 104}, {"zoom", 101}, {"x", 105}, {"y", 103}, {"z", 107}, {"pick", 102},
};

int32_t cursor_next_id;  // counts for the life of the process: no id comes twice

int32_t builtin_group(const char* name) {
    for (const BuiltinName& builtin : BUILTIN_NAMES) {
        if (str_equal(builtin.name, name)) { return builtin.group; }
    }
    return 0;
}

NativeCursor load_cursor(const char* name) {
    if (const int32_t group = builtin_group(name); group != 0) { return native_cursor_load_builtin(group); }
    char path[PATH_BUFFER_SIZE];
    cursor_path(name, path, PATH_RULES);
    return native_cursor_load_file(path);
}

}  // namespace

void cursor_path(const char* name, char (&path)[PATH_BUFFER_SIZE], PathRules rules) {
    str_copy(name, path);
    if (!rules.slash_separates) { str_replace_char(path, '/', '\\'); }
}

int32_t cursor_create(const char*, const char* name) {
    if (name == nullptr || cursor_next_id == std::numeric_limits<int32_t>::max()) { return 0; }
    const NativeCursor cursor = load_cursor(name);
    if (cursor == 0) { return 0; }
    auto* slot = list_add<NativeCursor>(&gl_system.cursors, ++cursor_next_id);
    if (slot == nullptr) { return 0; }
    *slot = cursor;
    return cursor_next_id;
}

int cursor_apply(int32_t id) {
    if (id < 0) { return 0; }
    NativeCursor cursor = 0;
    if (id != 0) {
        const void* slot = list_find(&gl_system.cursors, id);
        if (slot == nullptr) { return 0; }
        cursor = *static_cast<const NativeCursor*>(slot);
    }
    gl_system.current_cursor = id;
    native_cursor_apply(cursor);
    return 1;
}

int pointer_set(int32_t x, int32_t y) { return native_pointer_set(x, y) ? 1 : 0; }

int pointer_get(int32_t* x, int32_t* y) {
    if (x == nullptr || y == nullptr) { return 0; }
    return native_pointer_get(x, y) ? 1 : 0;
}

}  // namespace pelt
