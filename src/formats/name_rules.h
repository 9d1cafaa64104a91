// What a line of a model file can hold as the name of something.
#pragma once

#include <cstddef>
#include <string>

#include "foundation/keyed_list.h"

namespace pelt {

// Bytes of the names of layers and joints, which other lines look them up by, and of images and children.
inline constexpr size_t KEY_NAME_MOST = KEY_TEXT_SIZE - 1;
inline constexpr size_t FILE_NAME_MOST = 127;

// Whether a line can hold the name and whoever reads it finds it again: 1 byte to the given number of them, no line
// ends, no quote at its start, and none at all beside a blank or a tab.
bool name_fits_line(const std::string& name, size_t most);

// The same as a text that goes on behind "must be".
std::string name_rule(size_t most);

}  // namespace pelt
