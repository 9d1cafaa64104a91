// Pictures as TGA files.
#include <algorithm>
#include <utility>

#include "images/picture_files.h"

namespace pelt {

namespace {

constexpr size_t HEADER_SIZE = 18;
constexpr uint8_t TRUE_COLOUR = 2;
constexpr uint8_t ALPHA_BITS = 8;

}  // namespace

bool picture_to_tga(const Picture& picture, PictureFile* file, std::string* failure) {
    file->size = HEADER_SIZE + picture.row_size() * static_cast<size_t>(picture.height);
    file->bytes = picture_memory(file->size);
    if (file->bytes == nullptr) {
        *failure = "no memory for the file";
        return false;
    }
    uint8_t* header = file->bytes.get();
    const auto low = [](int32_t value) { return static_cast<uint8_t>(value & 0xFF); };
    header[2] = TRUE_COLOUR;
    header[12] = low(picture.width);
    header[13] = low(picture.width >> 8);
    header[14] = low(picture.height);
    header[15] = low(picture.height >> 8);
    header[16] = low(8 * picture.channels);
    header[17] = picture.channels == 4 ? ALPHA_BITS : 0;
    uint8_t* to = header + HEADER_SIZE;
    for (int32_t y = picture.height - 1; y >= 0; --y) {
        std::copy_n(picture.row(y), picture.row_size(), to);
        for (const uint8_t* end = to + picture.row_size(); to < end; to += picture.channels) {
            std::swap(to[0], to[2]);
        }
    }
    return true;
}

}  // namespace pelt
