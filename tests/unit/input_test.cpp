// Mouse and key messages as event records.
#include "window/input.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/native_null.h"
#include "window/messages.h"

namespace pelt {
namespace {

std::vector<MouseEvent> mouse_events;
std::vector<KeyEvent> key_events;
std::vector<const void*> addresses;

void on_event(WindowHandle, int32_t zero, const void* event) {
    EXPECT_EQ(zero, 0);
    addresses.push_back(event);
    const int32_t code = *static_cast<const int32_t*>(event);
    if (code == 10000 || code == 10001) {
        mouse_events.push_back(*static_cast<const MouseEvent*>(event));
    } else {
        key_events.push_back(*static_cast<const KeyEvent*>(event));
    }
}

class InputTest : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        const WindowHandle parent = null_add_window(100, 100);
        window = gl_window_create("view", parent, nullptr, nullptr, nullptr, on_event, 0);
        mouse_events.clear();
        key_events.clear();
        addresses.clear();
    }
    MouseEvent mouse(uint32_t message, uint32_t wparam, int32_t x = 0, int32_t y = 0) {
        input_mouse(window, message, wparam, message_pair(x, y));
        return mouse_events.empty() ? MouseEvent{} : mouse_events.back();
    }
    WindowHandle window = 0;
};

// The table of messages without any button state.
TEST_F(InputTest, EachMessageHasItsCodeButtonPressAndDoubleClick) {
    const int expected[10][5] = {{0x200, 10000, 0, 0, 0}, {0x201, 10001, 1, 1, 0}, {0x202, 10001, 1, 0, 0},
                                 {0x203, 10001, 1, 0, 1}, {0x204, 10001, 3, 1, 0}, {0x205, 10001, 3, 0, 0},
                                 {0x206, 10001, 3, 0, 1}, {0x207, 10001, 2, 1, 0}, {0x208, 10001, 2, 0, 0},
                                 {0x209, 10001, 2, 0, 1}};
    for (const auto& row : expected) {
        const MouseEvent event = mouse(static_cast<uint32_t>(row[0]), 0);
        EXPECT_EQ(event.code, row[1]) << row[0];
        EXPECT_EQ(event.button, row[2]) << row[0];
        EXPECT_EQ(event.pressed, row[3]) << row[0];
        EXPECT_EQ(event.double_click, row[4]) << row[0];
    }
}

TEST_F(InputTest, AnyHeldButtonOverrulesEveryMessage) {
    for (uint32_t message = 0x200; message <= 0x209; ++message) {
        for (uint32_t held = 0; held < 32; ++held) {
            const bool left = held % 2 == 1, right = held / 2 % 2 == 1, middle = held / 16 == 1;
            if (!left && !right && !middle) { continue; }
            const int32_t button = middle || (left && right) ? 2 : right ? 3 : 1;
            const MouseEvent event = mouse(message, held);
            EXPECT_EQ(event.button, button) << message << " " << held;
            EXPECT_EQ(event.pressed, 1) << message << " " << held;
            EXPECT_EQ(event.code, message == 0x200 ? 10000 : 10001);
            EXPECT_EQ(event.double_click, message == 0x203 || message == 0x206 || message == 0x209 ? 1 : 0);
        }
    }
}

TEST_F(InputTest, ShiftAndControlAreNoButtons) {
    const MouseEvent event = mouse(0x200, HELD_SHIFT | HELD_CONTROL);
    EXPECT_EQ(event.button, 0);
    EXPECT_EQ(event.pressed, 0);
}

TEST_F(InputTest, ARightPressWhileTheLeftIsHeldIsTheMiddleInTheMovesToo) {
    EXPECT_EQ(mouse(MESSAGE_RIGHT_DOWN, HELD_LEFT | HELD_RIGHT).button, 2);
    EXPECT_EQ(mouse(MESSAGE_MOUSE_MOVE, HELD_LEFT | HELD_RIGHT).button, 2);
    // The release of one of the two reports the one that is left, as held.
    const MouseEvent release = mouse(MESSAGE_LEFT_UP, HELD_RIGHT);
    EXPECT_EQ(release.button, 3);
    EXPECT_EQ(release.pressed, 1);
}

TEST_F(InputTest, ADoubleClickCountsAsReleasedUnlessTheStateSaysDown) {
    EXPECT_EQ(mouse(MESSAGE_LEFT_DOUBLE, 0).pressed, 0);
    const MouseEvent event = mouse(MESSAGE_LEFT_DOUBLE, HELD_LEFT);
    EXPECT_EQ(event.pressed, 1);
    EXPECT_EQ(event.double_click, 1);
    EXPECT_EQ(event.button, 1);
}

TEST_F(InputTest, NegativeCoordinatesKeepTheirSign) {
    const int32_t pairs[][2] = {{-1, -1}, {-51, 20}, {20, -51}, {-32768, 32767}, {32767, -32768}, {0, 0}, {-1, 0}};
    for (const auto& pair : pairs) {
        const MouseEvent event = mouse(MESSAGE_MOUSE_MOVE, HELD_LEFT, pair[0], pair[1]);
        EXPECT_EQ(event.x, pair[0]);
        EXPECT_EQ(event.y, pair[1]);
    }
}

TEST_F(InputTest, LparamIsCutTo32BitsBeforeItsHalvesAreTaken) {
    if (sizeof(std::intptr_t) < 8) { GTEST_SKIP() << "lparam has no more than 32 bits here"; }
    const auto wide = static_cast<std::intptr_t>(0x7654321000000000 | 0xFFFE0003);
    input_mouse(window, MESSAGE_MOUSE_MOVE, 0, wide);
    EXPECT_EQ(mouse_events.back().x, 3);
    EXPECT_EQ(mouse_events.back().y, -2);
}

TEST_F(InputTest, TheRecordIsOneAndTheSame) {
    mouse(MESSAGE_MOUSE_MOVE, 0);
    mouse(MESSAGE_LEFT_DOWN, HELD_LEFT);
    ASSERT_EQ(addresses.size(), 2u);
    EXPECT_EQ(addresses[0], addresses[1]);
}

TEST_F(InputTest, AMessageForAWindowWithoutRecordDoesNothing) {
    input_mouse(0x777777, MESSAGE_LEFT_DOWN, HELD_LEFT, 0);
    input_key(0x777777, MESSAGE_KEY_DOWN, 65);
    input_mouse(0, MESSAGE_LEFT_DOWN, HELD_LEFT, 0);
    EXPECT_TRUE(addresses.empty());
}

TEST_F(InputTest, AMessageThatIsNoneOfTheMouseDoesNothing) {
    input_mouse(window, 0x1FF, 0, 0);
    input_mouse(window, 0x20A, 0, 0);
    EXPECT_TRUE(addresses.empty());
}

TEST_F(InputTest, KeysGoDownAndUpAndACharacterRepeatsTheRecord) {
    input_key(window, MESSAGE_KEY_DOWN, 0x41);
    input_key(window, MESSAGE_CHAR, 0x61);
    input_key(window, MESSAGE_KEY_UP, 0x41);
    input_key(window, MESSAGE_CHAR, 0x62);
    ASSERT_EQ(key_events.size(), 4u);
    EXPECT_EQ(key_events[0].code, 11003);
    EXPECT_EQ(key_events[0].key, 0x41u);
    EXPECT_EQ(key_events[1].code, 11003);
    EXPECT_EQ(key_events[1].key, 0x41u);
    EXPECT_EQ(key_events[2].code, 11002);
    EXPECT_EQ(key_events[2].key, 0x41u);
    EXPECT_EQ(key_events[3].code, 11002);
    EXPECT_EQ(key_events[3].key, 0x41u);
}

// ---- the listener ----

std::vector<PointerEvent> heard;
void on_pointer(const PointerEvent& event) { heard.push_back(event); }

class ListenerTest : public InputTest {
protected:
    void SetUp() override {
        InputTest::SetUp();
        // What the events of another test left: no button is down, the pointer is at 0, 0.
        for (const uint32_t up : {MESSAGE_LEFT_UP, MESSAGE_MIDDLE_UP, MESSAGE_RIGHT_UP}) { send(up, 0, 0, 0); }
        heard.clear();
        mouse_events.clear();
        input_listen(on_pointer);
    }
    void TearDown() override { input_listen(nullptr); }
    PointerEvent send(uint32_t message, std::uintptr_t wparam, int32_t x, int32_t y) {
        window_procedure(window, message, wparam, message_pair(x, y));
        return heard.empty() ? PointerEvent{} : heard.back();
    }
};

void expect_event(const PointerEvent& event, PointerKind kind, int32_t button, int32_t x, int32_t y, uint32_t held,
                  int32_t clicks, int32_t wheel) {
    EXPECT_EQ(event.kind, kind);
    EXPECT_EQ(event.button, button);
    EXPECT_EQ(event.x, x);
    EXPECT_EQ(event.y, y);
    EXPECT_EQ(event.held, held);
    EXPECT_EQ(event.clicks, clicks);
    EXPECT_EQ(event.wheel, wheel);
}

TEST_F(ListenerTest, EachEventHasAllThatIsKnownOfIt) {
    expect_event(send(MESSAGE_MOUSE_MOVE, HELD_ALT, -3, 4), PointerKind::MOVE, 0, -3, 4, HELD_ALT, 0, 0);
    expect_event(send(MESSAGE_LEFT_DOWN, HELD_LEFT | HELD_SHIFT, 5, 6), PointerKind::PRESS, 1, 5, 6,
                 HELD_LEFT | HELD_SHIFT, 1, 0);
    expect_event(send(MESSAGE_MOUSE_MOVE, HELD_LEFT, 7, -8), PointerKind::DRAG, 1, 7, -8, HELD_LEFT, 0, 0);
    expect_event(send(MESSAGE_LEFT_UP, 0, 7, 8), PointerKind::RELEASE, 1, 7, 8, 0, 1, 0);
    expect_event(send(MESSAGE_LEFT_DOUBLE, HELD_LEFT, 7, 8), PointerKind::PRESS, 1, 7, 8, HELD_LEFT, 2, 0);
    expect_event(send(MESSAGE_LEFT_UP, 0, 7, 8), PointerKind::RELEASE, 1, 7, 8, 0, 2, 0);
    expect_event(send(MESSAGE_WHEEL_HERE, message_wheel(-240, HELD_CONTROL), 9, 10), PointerKind::WHEEL, 0, 9, 10,
                 HELD_CONTROL, 0, -240);
    expect_event(send(MESSAGE_MOUSE_LEAVE, 0, 99, 99), PointerKind::LEAVE, 0, 9, 10, 0, 0, 0);
    EXPECT_EQ(heard.size(), 8u);
}

// The described records say otherwise: left and right together are the middle button there.
TEST_F(ListenerTest, TwoButtonsKeepTheirNames) {
    send(MESSAGE_LEFT_DOWN, HELD_LEFT, 0, 0);
    EXPECT_EQ(send(MESSAGE_RIGHT_DOWN, HELD_LEFT | HELD_RIGHT, 0, 0).button, 3);
    EXPECT_EQ(mouse_events.back().button, 2);
    EXPECT_EQ(send(MESSAGE_MOUSE_MOVE, HELD_LEFT | HELD_RIGHT, 1, 1).button, 3);
    EXPECT_EQ(send(MESSAGE_RIGHT_UP, HELD_LEFT, 1, 1).button, 3);
    EXPECT_EQ(send(MESSAGE_MOUSE_MOVE, HELD_LEFT, 2, 1).button, 1);
    EXPECT_EQ(send(MESSAGE_MIDDLE_DOWN, HELD_LEFT | HELD_MIDDLE, 1, 1).button, 2);
}

// One system sends it behind each release.
TEST_F(ListenerTest, AMoveThatGoesNowhereIsNone) {
    send(MESSAGE_MOUSE_MOVE, 0, 5, 6);
    send(MESSAGE_MOUSE_MOVE, 0, 5, 6);
    EXPECT_EQ(heard.size(), 1u);
    send(MESSAGE_MOUSE_LEAVE, 0, 0, 0);
    send(MESSAGE_MOUSE_MOVE, 0, 5, 6);
    EXPECT_EQ(heard.size(), 3u);
}

TEST_F(ListenerTest, APressCanSayThatItIsTheSecond) {
    EXPECT_EQ(send(MESSAGE_LEFT_DOWN, HELD_LEFT, 5, 6).clicks, 1);
    EXPECT_EQ(send(MESSAGE_LEFT_UP, 0, 5, 6).clicks, 1);
    EXPECT_EQ(send(MESSAGE_LEFT_DOWN, HELD_LEFT | HELD_AGAIN, 5, 6).clicks, 2);
    EXPECT_EQ(send(MESSAGE_LEFT_UP, 0, 5, 6).clicks, 2);
}

TEST_F(ListenerTest, TheDescribedRecordsStayWhatTheyAreAndTheWheelIsPassedOn) {
    send(MESSAGE_LEFT_DOWN, HELD_LEFT | HELD_ALT, 3, 4);
    ASSERT_EQ(mouse_events.size(), 1u);
    EXPECT_EQ(mouse_events[0].button, 1);
    EXPECT_EQ(mouse_events[0].pressed, 1);
    EXPECT_EQ(window_procedure(window, MESSAGE_WHEEL_HERE, message_wheel(120, 0), 0), 0);
    EXPECT_EQ(window_procedure(window, MESSAGE_WHEEL, message_wheel(120, 0), 0), null_system.default_result);
    send(MESSAGE_MOUSE_LEAVE, 0, 0, 0);
    EXPECT_EQ(mouse_events.size(), 1u);
    EXPECT_EQ(heard.size(), 3u);
}

TEST_F(ListenerTest, NobodyListensToAWindowThatIsNoneOrAfterTheEnd) {
    window_procedure(0x777777, MESSAGE_WHEEL_HERE, message_wheel(120, 0), 0);
    window_procedure(0, MESSAGE_LEFT_DOWN, HELD_LEFT, 0);
    input_listen(nullptr);
    send(MESSAGE_LEFT_DOWN, HELD_LEFT, 0, 0);
    EXPECT_TRUE(heard.empty());
}

}  // namespace
}  // namespace pelt
