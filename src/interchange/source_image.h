// Images of other kinds made into those of this system.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

// Decoded pixels: red, green, blue, alpha; rows from the top, without padding.
struct SourceImage {
    int32_t width = 0;
    int32_t height = 0;
    bool has_alpha = false;
    std::vector<uint8_t> pixels;
};

// What is told of a picture that became one with a colour key.
struct KeyedPicture {
    bool has_key = false;
    std::array<int32_t, 3> key{};
    bool was_smooth = false;  // some alpha was neither none nor full
};

// Decodes a file of any kind that the library knows. False with the reason.
bool decode_image(const std::string& bytes, SourceImage* image, std::string* error);

// Makes the picture no larger than most pixels on a side. Whether there was something to do.
bool shrink_image(SourceImage* image, int32_t most);

// Makes what is more transparent than the cutoff one colour that nothing else in the picture has, and all else opaque.
// Without such a pixel there is no key.
KeyedPicture key_image(SourceImage* image, float cutoff);

// The bytes of a TGA file of 24 bits.
std::string tga_of(const SourceImage& image);

}  // namespace pelt
