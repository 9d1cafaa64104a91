// Cursors by number, and the pointer.
#pragma once

#include <cstdint>

namespace pelt {

// Id of a new cursor: one of the built-in names, or a cursor file. 0 on failure. The key is not looked at.
int32_t cursor_create(const char* key, const char* name);
int cursor_apply(int32_t id);  // 0 is the arrow; 1, or 0 for an unknown or negative id

int pointer_set(int32_t x, int32_t y);  // screen coordinates
int pointer_get(int32_t* x, int32_t* y);

}  // namespace pelt
