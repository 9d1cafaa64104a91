// Reader of TGA images: uncompressed true colour of 24 or 32 bits.
#pragma once

#include <cstdint>
#include <cstdio>

namespace pelt {

// Decoded pixels: 3 bytes each, red, green, blue, rows without padding, the last row of the file first.
struct TgaImage {
    int32_t width;
    int32_t height;
    unsigned char* pixels;  // std::malloc, owned by whoever holds the record
};

// A new record (release with tga_free), or null with the reason in *error: a static text valid until the next call.
TgaImage* tga_read(const char* path, const char** error);

// The same from a stream that stands at its start and stays open; a null one is a file that cannot be opened. The path
// is for the reason.
TgaImage* tga_read_stream(std::FILE* file, const char* path, const char** error);

void tga_free(TgaImage* image);

}  // namespace pelt
