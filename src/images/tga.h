// Reader of TGA images: uncompressed true colour of 24 or 32 bits.
#pragma once

#include <cstdint>

namespace pelt {

// Decoded pixels: 3 bytes each, red, green, blue, rows without padding, the last row of the file first.
struct TgaImage {
    int32_t width;
    int32_t height;
    unsigned char* pixels;  // std::malloc, owned by whoever holds the record
};

// A new record (release with tga_free), or null with the reason in *error: a static text valid until the next call.
TgaImage* tga_read(const char* path, const char** error);
void tga_free(TgaImage* image);

}  // namespace pelt
