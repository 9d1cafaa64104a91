// Mouse and key messages as event records.
#pragma once

#include <cstdint>

#include "window/gl_window.h"

namespace pelt {

enum InputCode : int32_t {
    INPUT_MOUSE_MOVE = 10000,
    INPUT_MOUSE_BUTTON = 10001,
    INPUT_KEY_UP = 11002,
    INPUT_KEY_DOWN = 11003,
};

struct MouseEvent {
    int32_t code;
    int32_t x;  // pixels in the window; negative outside during a drag
    int32_t y;
    int32_t button;  // 0 none, 1 left, 2 middle, 3 right
    int32_t double_click;
    int32_t pressed;
};

struct KeyEvent {
    int32_t code;
    uint32_t key;
};

// Translate a message and hand the record to the window's event procedure.
void input_mouse(WindowHandle window, uint32_t message, uint32_t wparam, std::intptr_t lparam);
void input_key(WindowHandle window, uint32_t message, uint32_t wparam);

}  // namespace pelt
