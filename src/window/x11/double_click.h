// Double clicks as Win32 recognises them, for window systems that only report presses.
#pragma once

#include <cstdint>

namespace pelt {

inline constexpr uint32_t DOUBLE_CLICK_MILLISECONDS = 500;
inline constexpr int32_t DOUBLE_CLICK_PIXELS = 4;

// The press before; zero-filled for none.
struct ClickRecord {
    uint32_t button;  // 0 for none
    uint32_t time;    // milliseconds of a clock that may wrap around
    int32_t x, y;     // pixels
};

// True when this press is the second of a double click: same button, in time, in place, both limits included. The
// record then starts anew, so that a third press is a first one.
bool click_is_double(ClickRecord* last, uint32_t button, uint32_t time, int32_t x, int32_t y);

}  // namespace pelt
