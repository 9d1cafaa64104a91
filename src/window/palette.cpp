// The palette of a display with few colours. What surprises: it is set up only for a device whose pixel format could
// NOT be set; where OpenGL got its format no palette is ever made.
#include "window/palette.h"

#include "window/gl_system.h"

namespace pelt {

namespace {

constexpr int32_t PALETTE_BITS_MAX = 8;

NativePalette gl_palette;      // 0 until one is made
NativePalette gl_old_palette;  // what the last selection displaced

// The colours of the system inside a palette of 3, 3 and 2 bits.
struct SystemColour {
    int32_t index;
    PaletteEntry entry;
};
constexpr SystemColour SYSTEM_COLOURS[] = {
    {3, {128, 0, 0, 0}},       {24, {0, 128, 0, 0}},      {27, {128, 128, 0, 0}},    {64, {0, 0, 128, 0}},
    {67, {128, 0, 128, 0}},    {88, {0, 128, 128, 0}},    {173, {192, 192, 192, 0}}, {181, {192, 220, 192, 0}},
    {236, {166, 202, 240, 0}}, {247, {255, 251, 240, 0}}, {164, {160, 160, 164, 0}}, {91, {128, 128, 128, 0}},
};

bool is_three_three_two(const NativeFormat& format) {
    return format.color_bits == 8 && format.red_bits == 3 && format.red_shift == 0 && format.green_bits == 3 &&
           format.green_shift == 3 && format.blue_bits == 2 && format.blue_shift == 6;
}

void select_palette(const NativeLayer& layer, NativeDevice device) {
    gl_old_palette = layer.palette_select(device, gl_palette);
    layer.palette_realize(device);
}

// Selects the palette for the length of one action on the window.
template <typename Action>
int with_palette(WindowHandle window, Action action) {
    if (gl_palette == 0) { return 0; }
    const NativeLayer& layer = gl_layer(window);
    const NativeDevice device = layer.device_get(window);
    select_palette(layer, device);
    action(layer, device);
    if (gl_old_palette != 0) { layer.palette_select(device, gl_old_palette); }
    layer.device_release(window, device);
    return 1;
}

}  // namespace

uint8_t palette_component(uint32_t value, int32_t bits, int32_t shift) {
    static constexpr uint8_t LEVELS_1[] = {0, 255};
    static constexpr uint8_t LEVELS_2[] = {0, 85, 170, 255};
    static constexpr uint8_t LEVELS_3[] = {0, 36, 73, 109, 146, 182, 219, 255};
    if (shift < 0) { return 0; }
    const uint32_t cut = shift > 31 ? 0 : value >> shift;
    switch (bits) {
        case 1: return LEVELS_1[cut % 2];
        case 2: return LEVELS_2[cut % 4];
        case 3: return LEVELS_3[cut % 8];
        default: return 0;
    }
}

int32_t palette_entries(const NativeFormat& format, PaletteEntry (&entries)[256]) {
    if (format.color_bits < 0 || format.color_bits > PALETTE_BITS_MAX) { return 0; }
    const int32_t count = 1 << format.color_bits;
    for (int32_t i = 0; i < count; ++i) {
        const auto value = static_cast<uint32_t>(i);
        entries[i] = PaletteEntry{palette_component(value, format.red_bits, format.red_shift),
                                  palette_component(value, format.green_bits, format.green_shift),
                                  palette_component(value, format.blue_bits, format.blue_shift), 0};
    }
    if (is_three_three_two(format)) {
        for (const SystemColour& colour : SYSTEM_COLOURS) { entries[colour.index] = colour.entry; }
    }
    return count;
}

void palette_set_up(const NativeLayer& layer, NativeDevice device) {
    NativeFormat format{};
    if (!layer.format_get(device, &format)) { return; }
    if ((format.flags & NATIVE_FORMAT_NEEDS_PALETTE) == 0) { return; }
    PaletteEntry entries[256];
    const int32_t count = palette_entries(format, entries);
    if (count == 0) { return; }
    gl_palette = layer.palette_create(entries, count);
    select_palette(layer, device);
}

int palette_take(WindowHandle window) {
    return with_palette(window, [window](const NativeLayer& layer, NativeDevice) {
        layer.invalidate(window);
        gl_paint_pending(window);
    });
}

void palette_follow(WindowHandle window) {
    with_palette(window, [](const NativeLayer& layer, NativeDevice device) { layer.palette_update_colors(device); });
}

void palette_reset() { gl_palette = gl_old_palette = 0; }

}  // namespace pelt
