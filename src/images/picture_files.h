// Pictures as the bytes of files.
#pragma once

#include <cstdint>
#include <string>

#include "images/picture.h"

namespace pelt {

inline constexpr int32_t TGA_SIZE_MAX = 65535;  // pixels each way that such a file can tell

// Uncompressed true colour, the lowest row first. False, with a line that says why, when there is no memory.
bool picture_to_tga(const Picture& picture, PictureFile* file, std::string* failure);

// Dots per inch, or 0 for a file that says nothing of it. False, with a line that says why, without the library that
// does it, or when there is no memory.
bool picture_to_png(const Picture& picture, int32_t dpi, PictureFile* file, std::string* failure);

}  // namespace pelt
