// The colour palette of displays that need one.
#pragma once

#include <cstdint>

#include "window/native.h"

namespace pelt {

// One component (0 to 255) of a palette index, cut out as that many bits at that shift; 1 to 3 bits, else 0.
uint8_t palette_component(uint32_t value, int32_t bits, int32_t shift);

// The entries of a format, count = 2 to its colour bits, at most 256. Returns the count, 0 when there can be none.
int32_t palette_entries(const NativeFormat& format, PaletteEntry (&entries)[256]);

// Makes and selects a palette if the format of the device needs one. For a device whose format could not be set.
void palette_set_up(const NativeLayer& layer, NativeDevice device);

// The window came to the front: 1 when there is a palette and it was realized (the window repaints), else 0.
int palette_take(WindowHandle window);

// Another window changed the system's palette.
void palette_follow(WindowHandle window);

// Forgets the palette, as at start.
void palette_reset();

}  // namespace pelt
