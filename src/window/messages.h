// The numbers in which every native layer speaks to window_procedure. They are those of Win32, so that the layer
// there passes its messages on as they come; the others translate into them.
#pragma once

#include <cstdint>

namespace pelt {

enum Message : uint32_t {
    MESSAGE_DESTROY = 0x0002,
    MESSAGE_SIZE = 0x0005,
    MESSAGE_SET_FOCUS = 0x0007,
    MESSAGE_PAINT = 0x000F,
    MESSAGE_CLOSE = 0x0010,
    MESSAGE_KEY_DOWN = 0x0100,
    MESSAGE_KEY_UP = 0x0101,
    MESSAGE_CHAR = 0x0102,
    MESSAGE_MOUSE_MOVE = 0x0200,
    MESSAGE_LEFT_DOWN = 0x0201,
    MESSAGE_LEFT_UP = 0x0202,
    MESSAGE_LEFT_DOUBLE = 0x0203,
    MESSAGE_RIGHT_DOWN = 0x0204,
    MESSAGE_RIGHT_UP = 0x0205,
    MESSAGE_RIGHT_DOUBLE = 0x0206,
    MESSAGE_MIDDLE_DOWN = 0x0207,
    MESSAGE_MIDDLE_UP = 0x0208,
    MESSAGE_MIDDLE_DOUBLE = 0x0209,
    MESSAGE_WHEEL = 0x020A,
    MESSAGE_WHEEL_SIDEWAYS = 0x020E,
    MESSAGE_MOUSE_LEAVE = 0x02A3,
    MESSAGE_QUERY_PALETTE = 0x030F,
    MESSAGE_PALETTE_CHANGED = 0x0311,

    // No message of any system: the wheel was turned over the window. The position is that of the pointer; the high
    // half of the wparam is how far, WHEEL_NOTCH for a notch, positive away from the hand. A turn sideways is one with
    // HELD_SHIFT, positive to the left, as Tk has it.
    MESSAGE_WHEEL_HERE = 0x7F00,
};

inline constexpr int32_t WHEEL_NOTCH = 120;

// What is held down, in the wparam of a mouse message: the state after the event.
enum HeldKeys : uint32_t {
    HELD_LEFT = 0x01,
    HELD_RIGHT = 0x02,
    HELD_SHIFT = 0x04,
    HELD_CONTROL = 0x08,
    HELD_MIDDLE = 0x10,
    HELD_ALT = 0x1000,    // each layer adds it
    HELD_AGAIN = 0x2000,  // no key: this press is the second of a double click, and the layer has no message for it
};

// The wparam of a wheel.
constexpr std::uintptr_t message_wheel(int32_t distance, uint32_t held) {
    return (static_cast<uint32_t>(distance) << 16) | (held & 0xFFFFu);
}

// Two signed 16-bit numbers (a position or a size) in one lparam, x in the low half.
constexpr std::intptr_t message_pair(int32_t x, int32_t y) {
    const uint32_t bits = (static_cast<uint32_t>(y) << 16) | (static_cast<uint32_t>(x) & 0xFFFFu);
    return static_cast<std::intptr_t>(static_cast<int32_t>(bits));
}

}  // namespace pelt
