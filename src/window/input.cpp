// Mouse and key messages become event records. What surprises: the button state that travels in the message overrules
// the message itself, so a move with a button held is a move with that button, the release of one of two buttons
// reports the one that is left, and left and right together are the middle button.
#include "window/input.h"

#include "window/gl_system.h"
#include "window/messages.h"

namespace pelt {

namespace {

struct MouseRule {
    int32_t code;
    int32_t button;
    int32_t pressed;
    int32_t double_click;
};

// One rule for each message from MESSAGE_MOUSE_MOVE on, in the order of their numbers. A double click counts as a
// release here; the button state, which says that the button is down, corrects that.
constexpr MouseRule MOUSE_RULES[] = {
    {INPUT_MOUSE_MOVE, 0, 0, 0},    // move
    {INPUT_MOUSE_BUTTON, 1, 1, 0},  // left down
    {INPUT_MOUSE_BUTTON, 1, 0, 0},  // left up
    {INPUT_MOUSE_BUTTON, 1, 0, 1},  // left double
    {INPUT_MOUSE_BUTTON, 3, 1, 0},  // right down
    {INPUT_MOUSE_BUTTON, 3, 0, 0},  // right up
    {INPUT_MOUSE_BUTTON, 3, 0, 1},  // right double
    {INPUT_MOUSE_BUTTON, 2, 1, 0},  // middle down
    {INPUT_MOUSE_BUTTON, 2, 0, 0},  // middle up
    {INPUT_MOUSE_BUTTON, 2, 0, 1},  // middle double
};
static_assert(sizeof(MOUSE_RULES) / sizeof(MOUSE_RULES[0]) == MESSAGE_MIDDLE_DOUBLE - MESSAGE_MOUSE_MOVE + 1);

// One record each, valid during the call that gets it.
MouseEvent mouse_event;
KeyEvent key_event;

PointerProc pointer_listener = nullptr;

// What the events of the listener go on from.
struct PointerPast {
    bool inside;       // the pointer has not left since the event before
    uint32_t buttons;  // that were held in it
    int32_t x, y;
    int32_t button;     // pressed last
    int32_t clicks[4];  // by button: of its last press
} pointer_past;

// The button that the state says is held, 0 for none.
int32_t held_button(uint32_t held) {
    const bool left = (held & HELD_LEFT) != 0;
    const bool right = (held & HELD_RIGHT) != 0;
    if ((left && right) || (held & HELD_MIDDLE) != 0) { return 2; }
    if (right) { return 3; }
    return left ? 1 : 0;
}

constexpr uint32_t BUTTON_BITS[] = {0, HELD_LEFT, HELD_MIDDLE, HELD_RIGHT};

// The button of a drag: the one pressed last as long as it is down, else the first that is.
int32_t dragging_button(uint32_t held) {
    if ((held & BUTTON_BITS[pointer_past.button]) != 0) { return pointer_past.button; }
    for (int32_t button = 1; button <= 3; ++button) {
        if ((held & BUTTON_BITS[button]) != 0) { return button; }
    }
    return 0;
}

void complete_button(const MouseRule& rule, PointerEvent* event) {
    event->button = rule.button;
    if (rule.pressed != 0 || rule.double_click != 0) {
        event->kind = PointerKind::PRESS;
        pointer_past.button = rule.button;
        const bool again = rule.double_click != 0 || (event->held & HELD_AGAIN) != 0;
        pointer_past.clicks[rule.button] = again ? 2 : 1;
    } else {
        event->kind = PointerKind::RELEASE;
    }
    event->clicks = pointer_past.clicks[rule.button];
}

void complete_move(PointerEvent* event) {
    event->button = dragging_button(event->held);
    event->kind = event->button != 0 ? PointerKind::DRAG : PointerKind::MOVE;
}

int32_t low_half(std::intptr_t pair) { return static_cast<int16_t>(static_cast<uint32_t>(pair) & 0xFFFFu); }
int32_t high_half(std::uintptr_t pair) { return static_cast<int16_t>(static_cast<uint32_t>(pair) >> 16); }

}  // namespace

void input_listen(PointerProc listener) { pointer_listener = listener; }

void input_pointer(WindowHandle window, uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
    if (gl_window_find(window) == nullptr) { return; }
    PointerEvent event{
        PointerKind::LEAVE, 0, pointer_past.x, pointer_past.y, static_cast<uint32_t>(wparam & 0xFFFFu), 0, 0};
    const PointerPast before = pointer_past;
    pointer_past.inside = message != MESSAGE_MOUSE_LEAVE;
    pointer_past.buttons = event.held & (HELD_LEFT | HELD_RIGHT | HELD_MIDDLE);
    if (pointer_past.inside) {
        event.x = pointer_past.x = low_half(lparam);
        event.y = pointer_past.y = high_half(static_cast<std::uintptr_t>(lparam));
    }
    if (message == MESSAGE_WHEEL_HERE) {
        event.kind = PointerKind::WHEEL;
        event.wheel = high_half(wparam);
    } else if (message == MESSAGE_MOUSE_MOVE) {
        // One system sends a move behind each release, without any.
        const bool moved = before.x != event.x || before.y != event.y;
        if (before.inside && !moved && before.buttons == pointer_past.buttons) { return; }
        complete_move(&event);
    } else if (message > MESSAGE_MOUSE_MOVE && message <= MESSAGE_MIDDLE_DOUBLE) {
        complete_button(MOUSE_RULES[message - MESSAGE_MOUSE_MOVE], &event);
    }
    if (pointer_listener != nullptr) { pointer_listener(event); }
}

void input_mouse(WindowHandle window, uint32_t message, uint32_t wparam, std::intptr_t lparam) {
    const GlWindow* entry = gl_window_find(window);
    if (entry == nullptr || message < MESSAGE_MOUSE_MOVE || message > MESSAGE_MIDDLE_DOUBLE) { return; }

    const MouseRule& rule = MOUSE_RULES[message - MESSAGE_MOUSE_MOVE];
    mouse_event = MouseEvent{rule.code, 0, 0, rule.button, rule.double_click, rule.pressed};
    if (const int32_t held = held_button(wparam); held != 0) {
        mouse_event.button = held;
        mouse_event.pressed = 1;
    }
    const auto position = static_cast<int32_t>(lparam);  // 32 bits, also where lparam has 64
    mouse_event.x = static_cast<int16_t>(position & 0xFFFF);
    mouse_event.y = position >> 16;
    if (entry->event_proc != nullptr) { entry->event_proc(window, 0, &mouse_event); }
}

void input_key(WindowHandle window, uint32_t message, uint32_t wparam) {
    const GlWindow* entry = gl_window_find(window);
    if (entry == nullptr) { return; }
    if (message == MESSAGE_KEY_DOWN) { key_event = KeyEvent{INPUT_KEY_DOWN, wparam}; }
    if (message == MESSAGE_KEY_UP) { key_event = KeyEvent{INPUT_KEY_UP, wparam}; }
    // A character message hands on the record of the key message before it. Intended.
    if (entry->event_proc != nullptr) { entry->event_proc(window, 0, &key_event); }
}

}  // namespace pelt
