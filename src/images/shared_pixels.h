// Decoded pixels of image files, kept once for a file whatever names lead to it.
#pragma once

#include <cstdint>
#include <map>

#include "foundation/file_find.h"

namespace pelt {

struct KeyedPixels {
    unsigned char* bytes;  // std::malloc
    int32_t users;
};

// The pixels of one file in one state. A file that changed since has another record, for those who read it since.
struct SharedPixels {
    FileIdentity identity;
    int32_t width;
    int32_t height;
    unsigned char* pixels;  // std::malloc; 3 bytes a pixel, red, green, blue, rows without padding
    int32_t users;
    std::map<uint32_t, KeyedPixels> keyed;  // by key colour
};

// The pixels of a TGA file with one more user, or null with the reason in *error: a static text valid until the next
// call. Each use is to be given back by shared_pixels_release.
SharedPixels* shared_pixels_read(const char* path, const char** error);
void shared_pixels_release(SharedPixels* shared);
SharedPixels* shared_pixels_use(SharedPixels* shared);  // one more user of those that are there

// 4 bytes a pixel with alpha 0 where the colour equals the key and 255 elsewhere, with one more user; null without
// memory for them. To be given back, before the pixels are, by shared_pixels_release_keyed, which accepts null.
unsigned char* shared_pixels_keyed(SharedPixels* shared, unsigned char red, unsigned char green, unsigned char blue);
void shared_pixels_release_keyed(SharedPixels* shared, const unsigned char* bytes);
unsigned char* shared_pixels_use_keyed(SharedPixels* shared, unsigned char* bytes);  // one more user; null for null

}  // namespace pelt
