// A picture that the program made, and the bytes of the files that hold one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace pelt {

using PictureMemory = std::unique_ptr<uint8_t[], decltype(&std::free)>;

// Rows from the top without padding; red, green, blue and, with four channels, alpha, by which they are not multiplied.
struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 3;  // 3 or 4
    PictureMemory pixels{nullptr, &std::free};

    size_t row_size() const { return static_cast<size_t>(width) * static_cast<size_t>(channels); }
    uint8_t* row(int32_t from_top) const { return pixels.get() + static_cast<size_t>(from_top) * row_size(); }
};

// A whole file in memory.
struct PictureFile {
    PictureMemory bytes{nullptr, &std::free};
    size_t size = 0;
};

// A black picture of this size, each side at least 1. False when there is no memory for it.
bool picture_make(int32_t width, int32_t height, int32_t channels, Picture* picture);

// Memory for so many bytes; null when there is not so much.
PictureMemory picture_memory(size_t size);

}  // namespace pelt
