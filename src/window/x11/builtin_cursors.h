// The seven cursors that the library brings along, as the bytes of the files under cursors/.
#pragma once

#include <cstddef>
#include <cstdint>

namespace pelt {

struct BuiltinCursor {
    int32_t group;     // number of the resource, 101 to 107
    const char* name;  // of the file, without its extension
    const uint8_t* bytes;
    size_t size;
};

inline constexpr int BUILTIN_CURSOR_COUNT = 7;
extern const BuiltinCursor BUILTIN_CURSORS[BUILTIN_CURSOR_COUNT];  // in the order of their groups

}  // namespace pelt
