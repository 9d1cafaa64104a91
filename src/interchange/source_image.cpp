// Decodes, shrinks, keys and encodes pictures.
//
// What surprises: the colour of the key is looked for from magenta on, because whoever opens the picture elsewhere
// takes that for what it is.
#include "interchange/source_image.h"

#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>

#include <algorithm>
#include <limits>
#include <set>

namespace pelt {

namespace {

constexpr int CHANNELS = 4;
constexpr int64_t MOST_PIXELS = int64_t{1} << 28;
constexpr int32_t MOST_ON_A_SIDE = 32767;  // as a header of the format holds it
constexpr uint32_t MAGENTA = 0xFF00FF;

uint32_t colour_at(const SourceImage& image, size_t at) {
    return static_cast<uint32_t>(image.pixels[at] << 16 | image.pixels[at + 1] << 8 | image.pixels[at + 2]);
}

}  // namespace

bool decode_image(const std::string& bytes, SourceImage* image, std::string* error) {
    int width = 0;
    int height = 0;
    int channels = 0;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        *error = "it is too large";
        return false;
    }
    const int size = static_cast<int>(bytes.size());
    if (!stbi_info_from_memory(data, size, &width, &height, &channels)) {
        *error = "it is of a kind that is not known";
        return false;
    }
    if (width < 1 || height < 1 || int64_t{width} * height > MOST_PIXELS) {
        *error = "it is too large";
        return false;
    }
    unsigned char* pixels = stbi_load_from_memory(data, size, &width, &height, &channels, CHANNELS);
    if (pixels == nullptr) {
        *error = "it is broken";
        return false;
    }
    image->width = width;
    image->height = height;
    image->has_alpha = channels == 2 || channels == 4;
    image->pixels.assign(pixels, pixels + static_cast<size_t>(width) * static_cast<size_t>(height) * CHANNELS);
    stbi_image_free(pixels);
    return true;
}

bool shrink_image(SourceImage* image, int32_t most) {
    const int32_t allowed = std::clamp(most, 1, MOST_ON_A_SIDE);
    const int32_t longest = std::max(image->width, image->height);
    if (longest <= allowed) { return false; }
    const auto shrunk = [&](int32_t side) {
        return static_cast<int32_t>(std::max(int64_t{1}, (int64_t{side} * allowed + longest / 2) / longest));
    };
    SourceImage smaller{shrunk(image->width), shrunk(image->height), image->has_alpha, {}};
    smaller.pixels.resize(static_cast<size_t>(smaller.width) * static_cast<size_t>(smaller.height) * CHANNELS);
    constexpr int ALPHA_CHANNEL = 3;
    stbir_resize_uint8_srgb(image->pixels.data(), image->width, image->height, 0, smaller.pixels.data(), smaller.width,
                            smaller.height, 0, CHANNELS, ALPHA_CHANNEL, 0);
    *image = std::move(smaller);
    return true;
}

KeyedPicture key_image(SourceImage* image, float cutoff) {
    KeyedPicture result;
    const auto is_clear = [&](size_t at) { return static_cast<float>(image->pixels[at + 3]) < cutoff * 255.0f; };
    std::set<uint32_t> taken;  // of the colours near the key
    constexpr uint32_t LOOKED_AT = 0xFFFF;
    for (size_t at = 0; at < image->pixels.size(); at += CHANNELS) {
        const uint8_t alpha = image->pixels[at + 3];
        result.was_smooth = result.was_smooth || (alpha != 0 && alpha != 255);
        if (is_clear(at)) {
            result.has_key = true;
        } else if (((MAGENTA - colour_at(*image, at)) & 0xFFFFFF) <= LOOKED_AT) {
            taken.insert(colour_at(*image, at));
        }
    }
    if (!result.has_key) { return result; }
    // A picture that has all of these colours has the last of them in places that are opaque: one more shade of many.
    uint32_t key = MAGENTA;
    for (uint32_t step = 0; step < LOOKED_AT && taken.count(key) != 0; ++step) { --key; }
    result.key = {static_cast<int32_t>(key >> 16), static_cast<int32_t>(key >> 8 & 0xFF),
                  static_cast<int32_t>(key & 0xFF)};
    for (size_t at = 0; at < image->pixels.size(); at += CHANNELS) {
        if (!is_clear(at)) { continue; }
        for (size_t i = 0; i < result.key.size(); ++i) { image->pixels[at + i] = static_cast<uint8_t>(result.key[i]); }
    }
    return result;
}

std::string tga_of(const SourceImage& image) {
    constexpr size_t HEADER_SIZE = 18;
    constexpr char TRUE_COLOUR = 2;
    constexpr char DEPTH = 24;
    const auto byte = [](int32_t value) { return static_cast<char>(static_cast<unsigned char>(value & 0xFF)); };
    std::string file(HEADER_SIZE, '\0');
    file[2] = TRUE_COLOUR;
    file[12] = byte(image.width);
    file[13] = byte(image.width >> 8);
    file[14] = byte(image.height);
    file[15] = byte(image.height >> 8);
    file[16] = DEPTH;
    const size_t row = static_cast<size_t>(image.width) * CHANNELS;
    file.reserve(HEADER_SIZE + image.pixels.size() / CHANNELS * 3);
    for (int32_t y = image.height - 1; y >= 0; --y) {
        const uint8_t* pixel = image.pixels.data() + static_cast<size_t>(y) * row;
        for (int32_t x = 0; x < image.width; ++x, pixel += CHANNELS) {
            for (const int channel : {2, 1, 0}) { file += static_cast<char>(pixel[channel]); }
        }
    }
    return file;
}

}  // namespace pelt
