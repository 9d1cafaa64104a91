// The scene as a picture in memory, in any size.
#pragma once

#include <cstdint>
#include <string>

#include "images/picture.h"

namespace pelt {

inline constexpr int32_t PICTURE_SIZE_MAX = 65535;               // pixels each way
inline constexpr int64_t PICTURE_PIXELS_MAX = int64_t{1} << 28;  // in all
inline constexpr int32_t SUPERSAMPLE_MAX = 8;

struct PictureWish {
    int32_t width = 0, height = 0;  // 0, 0 for the size of the view
    int32_t samples = -1;           // of each pixel, as many as the driver has up to that; -1 for those of the window
    int32_t supersample = 1;        // drawn so many times as large each way, and averaged
    bool transparent = false;       // with alpha in place of the background
};

// Draws a frame of its own, of which nothing is shown. It shows what the window shows, larger or smaller, and to the
// sides of it what else there is when the shape differs. Needs the window with its context. False, with a line that
// says why, when there is no memory.
bool picture_draw(const PictureWish& wish, Picture* picture, std::string* failure);

}  // namespace pelt
