// Cursors by number, and the pointer.
#pragma once

#include <cstdint>

#include "foundation/file_access.h"

namespace pelt {

// Id of a new cursor: one of the built-in names, or a cursor file. 0 on failure. The key is not looked at.
// The names are rotate, pan, zoom, x, y, z and pick. Ids start at 1, the same name gives a new one each time.
int32_t cursor_create(const char* key, const char* name);
int cursor_apply(int32_t id);  // 0 is the arrow; 1, or 0 for an unknown or negative id

// The path as the system wants it, cut to the buffer: where a slash does not separate it becomes a backslash.
void cursor_path(const char* name, char (&path)[PATH_BUFFER_SIZE], PathRules rules);

// Screen coordinates. 1, or 0 when the system refuses or an output is null.
int pointer_set(int32_t x, int32_t y);
int pointer_get(int32_t* x, int32_t* y);

}  // namespace pelt
