// How well a pixel format suits, judged alike by every layer that chooses for itself: only then do pictures made by two
// of them have the same pixels.
#pragma once

#include <cstdint>

namespace pelt {

struct PixelFormat {
    int32_t colour_bits;  // of each component
    int32_t alpha_bits;
    int32_t depth_bits;
    int32_t stencil_bits;
    int32_t accumulation_bits;
    int32_t samples;              // 0 and 1 are the same
    bool opaque;                  // nothing behind the window shines through where a desktop is composed
    bool warns;                   // the driver has something against it
    bool swap_keeps_back_buffer;  // the back buffer still holds the frame after a swap
};

inline constexpr int32_t PIXEL_COLOUR_BITS = 5;   // the least: 16 bits in all
inline constexpr int32_t PIXEL_DEPTH_BITS = 16;   // the least
inline constexpr int32_t PIXEL_SAMPLES_MAX = 64;  // that anyone may ask for

// Larger is better. The samples decide: as many as wanted, else the most below that; then what a user sees.
constexpr int32_t pixel_format_score(const PixelFormat& format, int32_t samples) {
    const int32_t wanted = samples > 1 ? samples : 0;
    const int32_t given = format.samples > 1 ? format.samples : 0;
    int32_t score = 0;
    if (given == wanted) { score += (PIXEL_SAMPLES_MAX + 1) << 8; }
    if (given < wanted) { score += given << 8; }
    if (format.alpha_bits == 0 && format.opaque) { score += 128; }
    if (!format.warns) { score += 64; }
    if (format.colour_bits == 8) { score += 32; }
    if (format.swap_keeps_back_buffer) { score += 16; }
    if (format.depth_bits >= 32) { score += 8; }
    if (format.depth_bits >= 24) { score += 4; }
    if (format.stencil_bits == 0) { score += 2; }
    if (format.accumulation_bits == 0) { score += 1; }
    return score;
}

}  // namespace pelt
