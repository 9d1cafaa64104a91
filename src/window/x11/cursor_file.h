// Pictures of cursors, and the files that hold them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace pelt {

inline constexpr int32_t CURSOR_SIZE_MAX = 256;
inline constexpr int32_t CURSOR_SIZE_WANTED = 32;
inline constexpr size_t CURSOR_X_ENTRY_MAX = 4096;

struct CursorImage {
    int32_t width, height;  // 1 to CURSOR_SIZE_MAX
    int32_t hot_x, hot_y;   // inside the picture
    uint32_t* pixels;       // 0xAARRGGBB, not premultiplied, rows from the top; owned (cursor_image_free)
};

// Reads the bytes of a .cur file: of several pictures the one nearest to 32 pixels, with 1, 4, 8, 24 or 32 bits. A
// pixel that would invert the screen becomes black. False, with an empty record, for anything cut short or senseless.
bool cursor_file_parse(const uint8_t* bytes, size_t size, CursorImage* image);

// Whether the directory of a cursor file of X can be believed: at most CURSOR_X_ENTRY_MAX entries, each picture whole
// in the file, and all of them together no more than the file, so that its reader asks for no more memory than that.
// The library that reads such files compares each entry with each other, and makes a picture for each of the wanted
// size, whether or not several name the same bytes.
bool cursor_file_x_is_sound(const uint8_t* bytes, size_t size);

// Releases the pixels and empties the record.
void cursor_image_free(CursorImage* image);

}  // namespace pelt
