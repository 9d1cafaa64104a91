// The picture in the window as a TGA file.
#pragma once

#include <cstdint>

namespace pelt {

inline constexpr int32_t CAPTURE_BORDERS = 2;    // pixels each way that a picture of a window leaves out
inline constexpr int32_t CAPTURE_MASK = 0xFFFC;  // sizes of pictures are multiples of four

// Writes the lower left part of the viewport, at most this size, cut to multiples of four. Reports nothing.
void screen_capture(const char* path, int32_t width, int32_t height);

}  // namespace pelt
