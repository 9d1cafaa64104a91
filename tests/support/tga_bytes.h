// TGA files for tests, byte by byte.
#pragma once

#include <string>

namespace pelt::test {

// What a file says about itself. The pixels follow as they are given, in the order of the file: blue, green, red.
struct TgaForm {
    int width = 1;
    int height = 1;
    int depth = 24;
    int type = 2;
    int descriptor = 0;
    std::string id_field = {};
};

inline std::string tga_bytes(const TgaForm& form, const std::string& pixels) {
    const auto byte = [](int value) { return static_cast<char>(static_cast<unsigned char>(value & 0xFF)); };
    std::string bytes(18, '\0');
    bytes[0] = byte(static_cast<int>(form.id_field.size()));
    bytes[2] = byte(form.type);
    bytes[12] = byte(form.width);
    bytes[13] = byte(form.width >> 8);
    bytes[14] = byte(form.height);
    bytes[15] = byte(form.height >> 8);
    bytes[16] = byte(form.depth);
    bytes[17] = byte(form.descriptor);
    return bytes + form.id_field + pixels;
}

// A picture of one colour, 24 bits.
inline std::string solid_tga(int width, int height, int red, int green, int blue) {
    std::string pixels;
    for (int i = 0; i < width * height; ++i) {
        for (const int channel : {blue, green, red}) {
            pixels += static_cast<char>(static_cast<unsigned char>(channel));
        }
    }
    TgaForm form;
    form.width = width;
    form.height = height;
    return tga_bytes(form, pixels);
}

}  // namespace pelt::test
