// The rules of the OpenGL window, on the layer without a window system.
#include "window/gl_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "support/native_null.h"
#include "window/cursor.h"
#include "window/gl_system.h"
#include "window/input.h"
#include "window/messages.h"

namespace pelt {
namespace {

struct Call {
    std::string procedure;
    WindowHandle window;
    int32_t zero;
    const void* event;
};
std::vector<Call> calls;
int resizes_before_drawing;  // resize calls that only take over a size

int count_of(const std::string& procedure) {
    return static_cast<int>(
        std::count_if(calls.begin(), calls.end(), [&](const Call& call) { return call.procedure == procedure; }));
}

void on_init(WindowHandle window, int32_t zero, const void* event) {
    calls.push_back({"init", window, zero, event});
    gl_make_current(window);
}
void on_paint(WindowHandle window, int32_t zero, const void* event) { calls.push_back({"paint", window, zero, event}); }
void on_resize(WindowHandle window, int32_t zero, const void* event) {
    calls.push_back({"resize", window, zero, event});
    if (resizes_before_drawing > 0) {
        --resizes_before_drawing;
        return;
    }
    gl_begin_paint(window);
    gl_swap_buffers(window);
    gl_end_paint(window);
}
void on_event(WindowHandle window, int32_t zero, const void* event) { calls.push_back({"event", window, zero, event}); }

class GlWindowTest : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        calls.clear();
        resizes_before_drawing = 0;
        parent = null_add_window(400, 300);
    }
    WindowHandle create(const char* name = "view") {
        return gl_window_create(name, parent, on_init, on_paint, on_resize, on_event, 0);
    }
    // A live window with nothing logged yet.
    WindowHandle create_quietly(const char* name = "view") {
        const WindowHandle window = create(name);
        calls.clear();
        null_system.calls.clear();
        null_system.defaults.clear();
        null_system.cursors_applied.clear();
        return window;
    }
    WindowHandle parent = 0;
};

// ---- Start.

TEST_F(GlWindowTest, InitEmptiesTheSystemAndHandsTheInstanceOn) {
    create();
    cursor_create("pelt", "pan");
    cursor_apply(0);
    gl_system_init(0x55);
    EXPECT_EQ(gl_system.instance, 0x55u);
    EXPECT_EQ(null_system.instance, 0x55u);
    EXPECT_EQ(list_count(&gl_system.windows), 0);
    EXPECT_EQ(list_count(&gl_system.cursors), 0);
    EXPECT_EQ(gl_system.current_cursor, 0);
    EXPECT_EQ(gl_system.current_window, nullptr);
}

TEST_F(GlWindowTest, ASecondInitReleasesTheContextsOfAllWindows) {
    const WindowHandle window = create();
    EXPECT_EQ(null_window(window)->contexts, 1);
    gl_system_init(0);
    EXPECT_EQ(null_window(window)->contexts, 0);
    EXPECT_EQ(null_window(window)->devices, 0);
    EXPECT_EQ(null_system.current_context, 0u);
    EXPECT_EQ(gl_window_find(window), nullptr);
}

// ---- Layers.

int swaps_of_the_other;

// Like the desktop's, but its windows are swapped and painted on their own account.
NativeLayer other_layer() {
    NativeLayer other = *native_desktop_layer();
    other.swap_buffers = [](NativeDevice) { ++swaps_of_the_other; };
    return other;
}

TEST_F(GlWindowTest, AWindowStaysWithTheLayerThatMadeIt) {
    static const NativeLayer other = other_layer();
    const WindowHandle first = create("first");
    gl_system.layer = &other;
    swaps_of_the_other = 0;
    const WindowHandle second = create("second");
    EXPECT_EQ(swaps_of_the_other, 1);
    gl_system.layer = nullptr;
    EXPECT_EQ(gl_window_find(first)->layer, native_desktop_layer());
    EXPECT_EQ(gl_window_find(second)->layer, &other);
    gl_make_current(second);
    gl_swap_buffers(second);
    gl_make_current(first);
    gl_swap_buffers(first);
    EXPECT_EQ(swaps_of_the_other, 2);
    EXPECT_EQ(null_window(second)->swaps, 0);
    EXPECT_EQ(null_window(first)->swaps, 2);
}

TEST_F(GlWindowTest, AnInitGoesBackToTheLayerOfTheDesktop) {
    static const NativeLayer other = other_layer();
    gl_system.layer = &other;
    gl_system_init(0);
    EXPECT_EQ(gl_window_find(create())->layer, native_desktop_layer());
}

// ---- Without a desktop.

TEST_F(GlWindowTest, AnOffscreenWindowIsAWindowInAParentOfItsOwn) {
    std::string failure;
    const WindowHandle window =
        gl_window_create_offscreen(640, 480, 4, on_init, on_paint, on_resize, on_event, &failure);
    ASSERT_NE(window, 0u) << failure;
    EXPECT_EQ(null_system.offscreen_samples, 4);
    EXPECT_EQ(null_window(window)->width, 640);
    EXPECT_EQ(null_window(gl_window_parent(window))->height, 480);
    EXPECT_EQ(count_of("init"), 1);
    EXPECT_EQ(null_window(window)->swaps, 1) << "making a window draws one frame";
}

TEST_F(GlWindowTest, WithoutADriverThereIsNoOffscreenWindowAndOneOfTheDesktopCanStillBeMade) {
    std::string failure;
    null_system.fail_offscreen = true;
    EXPECT_EQ(gl_window_create_offscreen(640, 480, 0, on_init, on_paint, on_resize, on_event, &failure), 0u);
    EXPECT_EQ(failure, "no driver");
    EXPECT_EQ(list_count(&gl_system.windows), 0);
    EXPECT_NE(create(), 0u);
}

TEST_F(GlWindowTest, AnOffscreenWindowWithoutAContextIsNoneAndMayBeTriedAgain) {
    std::string failure;
    null_system.fail_context = true;
    EXPECT_EQ(gl_window_create_offscreen(640, 480, 0, on_init, on_paint, on_resize, on_event, &failure), 0u);
    EXPECT_EQ(failure, "the driver has no memory for 640x480 pixels");
    EXPECT_EQ(gl_system.layer, nullptr);
    EXPECT_EQ(gl_system.current_window, nullptr);
    null_system.fail_context = false;
    EXPECT_NE(gl_window_create_offscreen(640, 480, 0, on_init, on_paint, on_resize, on_event, &failure), 0u);
}

TEST_F(GlWindowTest, AnOffscreenWindowThatTheDriverCannotDrawIsRefusedWhetherThatIsKnownBeforeOrAfter) {
    for (const bool before : {true, false}) {
        null_system.drawing_limit_width = 1000;
        null_system.drawing_limit_height = 479;
        null_system.tells_offscreen_limit = before;
        calls.clear();
        std::string failure;
        EXPECT_EQ(gl_window_create_offscreen(640, 480, 0, on_init, on_paint, on_resize, on_event, &failure), 0u);
        EXPECT_EQ(failure, "the driver draws at most 1000x479 pixels");
        EXPECT_EQ(count_of("init"), before ? 0 : 1);
        EXPECT_EQ(gl_system.layer, nullptr);
        EXPECT_EQ(gl_system.current_window, nullptr);
    }
}

TEST_F(GlWindowTest, AnOffscreenWindowOfMoreMemoryThanIsAllowedIsRefused) {
    std::string failure;
    EXPECT_EQ(gl_window_create_offscreen(8192, 8192, 4, on_init, on_paint, on_resize, on_event, &failure), 0u);
    EXPECT_EQ(failure, "8192x8192 pixels at 4 samples are more than is allowed");
    EXPECT_EQ(null_system.offscreen_samples, -1);
}

TEST_F(GlWindowTest, AWindowOfALayerWithoutPictureAreasHasNone) {
    EXPECT_FALSE(gl_picture_begin(create(), 10, 10, 0));
    gl_picture_end(0);
}

// ---- Creation.

TEST_F(GlWindowTest, CreationMakesAChildOfTheParentsClientSizeAtTheOrigin) {
    const WindowHandle window = create();
    ASSERT_NE(window, 0u);
    const NullWindow& made = *null_window(window);
    EXPECT_EQ(made.parent, parent);
    EXPECT_EQ(made.title, "view");
    EXPECT_EQ(made.x, 0);
    EXPECT_EQ(made.y, 0);
    EXPECT_EQ(made.width, 400);
    EXPECT_EQ(made.height, 300);
    EXPECT_EQ(made.raises, 1);
    EXPECT_TRUE(made.shown);
    EXPECT_EQ(made.background, 0u);
}

TEST_F(GlWindowTest, CreationGoesInItsOrder) {
    create();
    const std::vector<std::string> expected = {"create",     "raise", "device",      "format", "context",  "current",
                                               "background", "show",  "begin_paint", "swap",   "end_paint"};
    EXPECT_EQ(null_system.calls, expected);
}

TEST_F(GlWindowTest, InitRunsOnceWithTheHandleBeforeTheFirstPaint) {
    const WindowHandle window = create();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].procedure, "init");
    EXPECT_EQ(calls[1].procedure, "paint");
    EXPECT_EQ(calls[2].procedure, "resize");
    for (const Call& call : calls) {
        EXPECT_EQ(call.window, window);
        EXPECT_EQ(call.zero, 0);
        EXPECT_EQ(call.event, nullptr);
    }
}

TEST_F(GlWindowTest, SizeMessagesDuringCreationComeBeforeTheRecordAndDoNothing) {
    create();
    // The null layer sends one size message from inside its creation; the only resize is that of the first paint.
    EXPECT_EQ(count_of("resize"), 1);
    EXPECT_EQ(calls[0].procedure, "init");
}

TEST_F(GlWindowTest, AKnownNameGivesItsWindowAndMakesNone) {
    const WindowHandle window = create();
    const auto made = null_system.calls.size();
    EXPECT_EQ(create(), window);
    EXPECT_EQ(null_system.calls.size(), made);
    EXPECT_EQ(list_count(&gl_system.windows), 1);
}

TEST_F(GlWindowTest, TheNameOfADeadWindowGivesTheDeadHandle) {
    const WindowHandle window = create();
    null_destroy_tree(parent);
    EXPECT_EQ(create(), window);
    EXPECT_EQ(gl_window_find(window)->context, nullptr);
}

TEST_F(GlWindowTest, ANewWindowWithTheHandleOfADeadOneIsTheNewOne) {
    const WindowHandle dead = create("dead");
    gl_context_destroy(dead);
    gl_window_find(dead)->handle = dead + 1;  // the one that is given out next
    EXPECT_EQ(create("new"), dead + 1);
    const auto* entry = list_find<const GlWindow>(&gl_system.windows, "new");
    EXPECT_EQ(gl_window_find(dead + 1), entry);
    EXPECT_NE(entry->context, nullptr);
    EXPECT_TRUE(gl_context_current(dead + 1));
    EXPECT_EQ(create("dead"), 0u);
}

TEST_F(GlWindowTest, AnotherNameMakesAnotherWindow) {
    const WindowHandle first = create("first");
    const WindowHandle second = create("second");
    EXPECT_NE(first, second);
    EXPECT_EQ(gl_window_find(first)->handle, first);
    EXPECT_EQ(gl_window_find(second)->handle, second);
}

TEST_F(GlWindowTest, NoNameGivesNoWindow) {
    EXPECT_EQ(gl_window_create(nullptr, parent, on_init, on_paint, on_resize, on_event, 0), 0u);
    EXPECT_TRUE(null_system.calls.empty());
}

TEST_F(GlWindowTest, ARefusedWindowGivesZeroKeepsNothingAndMayBeTriedAgain) {
    null_system.fail_window = true;
    EXPECT_EQ(create(), 0u);
    EXPECT_EQ(list_count(&gl_system.windows), 0);
    EXPECT_TRUE(calls.empty());
    null_system.fail_window = false;
    EXPECT_NE(create(), 0u);
}

TEST_F(GlWindowTest, WithoutAContextTheWindowIsShownAndNeverDraws) {
    null_system.fail_context = true;
    const WindowHandle window = create();
    ASSERT_NE(window, 0u);
    EXPECT_TRUE(null_window(window)->shown);
    EXPECT_EQ(count_of("init"), 0);
    EXPECT_EQ(gl_window_find(window)->context, nullptr);
    EXPECT_EQ(null_window(window)->devices, 0);
    EXPECT_EQ(null_window(window)->swaps, 0);
    EXPECT_EQ(null_window(window)->background, 0xFFFFFFFFu);
    EXPECT_FALSE(gl_context_current(window));
    EXPECT_EQ(count_of("paint"), 1);  // repeating would be in vain
}

TEST_F(GlWindowTest, AFailedFormatStillTriesTheContext) {
    null_system.fail_format = true;
    const WindowHandle window = create();
    EXPECT_EQ(null_window(window)->contexts, 1);
    EXPECT_EQ(count_of("init"), 1);
    const std::vector<std::string> head(null_system.calls.begin() + 2, null_system.calls.begin() + 6);
    EXPECT_EQ(head, (std::vector<std::string>{"device", "format", "format_get", "context"}));
}

TEST_F(GlWindowTest, NullProceduresAreSkipped) {
    const WindowHandle window = gl_window_create("view", parent, nullptr, nullptr, nullptr, nullptr, 0);
    ASSERT_NE(window, 0u);
    EXPECT_EQ(window_procedure(window, MESSAGE_PAINT, 0, 0), 0);
    EXPECT_EQ(window_procedure(window, MESSAGE_SIZE, 0, 0), 0);
    EXPECT_EQ(window_procedure(window, MESSAGE_MOUSE_MOVE, 0, 0), 0);
    window_procedure(window, MESSAGE_KEY_DOWN, 65, 0);
    EXPECT_TRUE(calls.empty());
}

TEST_F(GlWindowTest, AParentOfNoSizeGivesAChildOfOnePixel) {
    const WindowHandle small = null_add_window(0, 0);
    const WindowHandle window = gl_window_create("view", small, on_init, on_paint, on_resize, on_event, 0);
    EXPECT_EQ(null_window(window)->width, 1);
    EXPECT_EQ(null_window(window)->height, 1);
    const WindowHandle orphan = gl_window_create("orphan", 0, on_init, on_paint, on_resize, on_event, 0);
    EXPECT_EQ(null_window(orphan)->width, 1);
}

TEST_F(GlWindowTest, APopupHasNoBorder) {
    const WindowHandle window = gl_window_create("popup", parent, on_init, on_paint, on_resize, on_event, 1);
    EXPECT_EQ(null_window(window)->border, 0);
    EXPECT_EQ(null_window(create())->border, 1);
}

// ---- The first frame.

TEST_F(GlWindowTest, TheFirstPaintIsRepeatedWhileItOnlyTakesOverASize) {
    resizes_before_drawing = 1;
    const WindowHandle window = create();
    EXPECT_EQ(count_of("resize"), 2);
    EXPECT_EQ(null_window(window)->swaps, 1);
    EXPECT_FALSE(null_window(window)->paint_pending);
}

TEST_F(GlWindowTest, TheFirstPaintIsRepeatedThreeTimesAtMost) {
    resizes_before_drawing = 100;
    const WindowHandle window = create();
    EXPECT_EQ(count_of("resize"), 3);
    EXPECT_EQ(null_window(window)->swaps, 0);
    EXPECT_TRUE(null_window(window)->paint_pending);
}

TEST_F(GlWindowTest, AFrameDrawnAtOnceIsNotRepeated) {
    const WindowHandle window = create();
    EXPECT_EQ(count_of("resize"), 1);
    EXPECT_EQ(null_window(window)->swaps, 1);
    EXPECT_EQ(null_window(window)->paints_begun, 1);
    EXPECT_EQ(null_window(window)->paints_ended, 1);
    EXPECT_EQ(null_run(), 0);
}

void destroy_parent(WindowHandle window, int32_t, const void*) { null_destroy_tree(gl_window_parent(window)); }

TEST_F(GlWindowTest, AWindowDestroyedDuringItsFirstPaintLeavesADeadHandle) {
    const WindowHandle window = gl_window_create("view", parent, on_init, nullptr, destroy_parent, on_event, 0);
    ASSERT_NE(window, 0u);
    EXPECT_EQ(gl_window_find(window)->context, nullptr);
    gl_begin_paint(window);
    gl_swap_buffers(window);
    EXPECT_EQ(null_window(window)->swaps, 0);
}

TEST_F(GlWindowTest, AWindowDestroyedByItsInitLeavesADeadHandle) {
    const WindowHandle window = gl_window_create("view", parent, destroy_parent, on_paint, on_resize, on_event, 0);
    ASSERT_NE(window, 0u);
    EXPECT_EQ(gl_window_find(window)->context, nullptr);
    EXPECT_EQ(null_window(window)->contexts, 0);
    EXPECT_TRUE(calls.empty());
}

// ---- Context, paint, swap.

TEST_F(GlWindowTest, MakeCurrentOfZeroReleases) {
    const WindowHandle window = create();
    EXPECT_TRUE(gl_context_current(window));
    gl_make_current(0);
    EXPECT_FALSE(gl_context_current(window));
    EXPECT_EQ(null_system.current_context, 0u);
    EXPECT_EQ(gl_system.current_window, nullptr);
}

TEST_F(GlWindowTest, MakeCurrentOfAWindowWithoutContextChangesNothing) {
    const WindowHandle window = create();
    null_system.fail_context = true;
    const WindowHandle other = create("other");
    gl_make_current(other);
    gl_make_current(parent);
    gl_make_current(0x9999);
    EXPECT_TRUE(gl_context_current(window));
}

TEST_F(GlWindowTest, BeginPaintMakesTheWindowCurrentWhenNoneIs) {
    const WindowHandle window = create_quietly();
    gl_make_current(0);
    gl_begin_paint(window);
    EXPECT_TRUE(gl_context_current(window));
    EXPECT_EQ(null_window(window)->paints_begun, 2);
}

TEST_F(GlWindowTest, PaintAndSwapOfAWindowThatIsNotCurrentDoNothing) {
    const WindowHandle first = create("first");
    const WindowHandle second = create("second");
    EXPECT_TRUE(gl_context_current(second));
    null_expose(first);
    gl_begin_paint(first);
    gl_swap_buffers(first);
    gl_end_paint(first);
    gl_set_background(first, 1, 2, 3);
    EXPECT_TRUE(null_window(first)->paint_pending);
    EXPECT_EQ(null_window(first)->swaps, 1);  // that of its own first frame
    EXPECT_EQ(null_window(first)->paints_ended, 1);
    EXPECT_EQ(null_window(first)->background, 0u);
    EXPECT_FALSE(gl_swap_keeps_back_buffer(first));
}

TEST_F(GlWindowTest, EndPaintMakesNothingCurrent) {
    const WindowHandle window = create_quietly();
    gl_make_current(0);
    gl_end_paint(window);
    EXPECT_FALSE(gl_context_current(window));
    EXPECT_EQ(null_window(window)->paints_ended, 1);
}

TEST_F(GlWindowTest, BackgroundIsRedGreenBlueFromTheLowByte) {
    const WindowHandle window = create();
    gl_set_background(window, 0x12, 0x34, 0x56);
    EXPECT_EQ(null_window(window)->background, 0x563412u);
    gl_set_background(window, -1, 256, std::numeric_limits<int>::max());
    EXPECT_EQ(null_window(window)->background, 0xFF00FFu);
}

TEST_F(GlWindowTest, TheBackBufferIsKeptWhereTheLayerSaysSo) {
    const WindowHandle window = create();
    EXPECT_TRUE(gl_swap_keeps_back_buffer(window));
    null_system.keeps_back_buffer = false;
    EXPECT_FALSE(gl_swap_keeps_back_buffer(window));
}

TEST_F(GlWindowTest, AfterTheContextIsDestroyedNothingDrawsAndNoneIsMade) {
    const WindowHandle window = create();
    gl_context_destroy(window);
    EXPECT_EQ(gl_system.current_window, nullptr);
    EXPECT_EQ(null_system.current_context, 0u);
    EXPECT_EQ(null_window(window)->contexts, 0);
    EXPECT_EQ(null_window(window)->devices, 0);
    gl_begin_paint(window);
    gl_swap_buffers(window);
    gl_end_paint(window);
    gl_make_current(window);
    EXPECT_FALSE(gl_context_current(window));
    EXPECT_EQ(null_window(window)->swaps, 1);
    gl_context_destroy(window);
    gl_context_destroy(0);
    gl_context_destroy(0x9999);
    EXPECT_EQ(null_window(window)->contexts, 0);
}

TEST_F(GlWindowTest, TheContextGoesInItsOrder) {
    const WindowHandle window = create_quietly();
    gl_context_destroy(window);
    EXPECT_EQ(null_system.calls, (std::vector<std::string>{"current_none", "context_destroy", "release"}));
}

TEST_F(GlWindowTest, DestroyingAContextThatIsNotCurrentLeavesTheCurrentOne) {
    const WindowHandle first = create("first");
    const WindowHandle second = create("second");
    gl_context_destroy(first);
    EXPECT_TRUE(gl_context_current(second));
}

// ---- Geometry.

TEST_F(GlWindowTest, GeometryIsTheDrawingAreaAtItsOuterCornerInTheParent) {
    const WindowHandle window = create();
    gl_window_move(window, 7, -8, 200, 100);
    int32_t x = 9, y = 9, width = 9, height = 9;
    gl_window_geometry(window, &x, &y, &width, &height);
    EXPECT_EQ(x, 7);
    EXPECT_EQ(y, -8);
    EXPECT_EQ(width, 198);
    EXPECT_EQ(height, 98);
}

TEST_F(GlWindowTest, ATopLevelWindowKeepsTheOrigin) {
    const WindowHandle top = null_add_window(320, 240, 0, 50, 60);
    int32_t x = 9, y = 9, width = 9, height = 9;
    gl_window_geometry(top, &x, &y, &width, &height);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(width, 320);
    EXPECT_EQ(height, 240);
}

TEST_F(GlWindowTest, GeometryWithANullOutputWritesNothing) {
    const WindowHandle window = create();
    int32_t x = 9, y = 9, width = 9;
    gl_window_geometry(window, &x, &y, &width, nullptr);
    gl_window_geometry(window, nullptr, &y, &width, &x);
    EXPECT_EQ(x, 9);
    EXPECT_EQ(y, 9);
    EXPECT_EQ(width, 9);
}

TEST_F(GlWindowTest, GeometryOfAWindowThatDoesNotExistIsZero) {
    for (const WindowHandle window : {WindowHandle{0}, WindowHandle{0x9999}}) {
        int32_t x = 9, y = 9, width = 9, height = 9;
        gl_window_geometry(window, &x, &y, &width, &height);
        EXPECT_EQ(x + y + width + height, 0);
    }
    EXPECT_EQ(gl_window_parent(0x9999), 0u);
}

TEST_F(GlWindowTest, AMoveThatChangesTheSizeSendsASizeMessageAndLeavesAPaint) {
    const WindowHandle window = create_quietly();
    resizes_before_drawing = 1;
    gl_window_move(window, 0, 0, 302, 203);
    EXPECT_EQ(count_of("resize"), 1);
    EXPECT_EQ(null_run(), 1);
    EXPECT_EQ(count_of("paint"), 1);
    EXPECT_EQ(count_of("resize"), 2);
    calls.clear();
    gl_window_move(window, 20, 30, 302, 203);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(null_run(), 0);
}

TEST_F(GlWindowTest, MovesBeyondAnyRangeAreHeldInSixteenBits) {
    const WindowHandle window = create();
    constexpr int32_t LOW = std::numeric_limits<int32_t>::min();
    constexpr int32_t HIGH = std::numeric_limits<int32_t>::max();
    gl_window_move(window, LOW, HIGH, HIGH, LOW);
    EXPECT_EQ(null_window(window)->x, -32768);
    EXPECT_EQ(null_window(window)->y, 32767);
    EXPECT_EQ(null_window(window)->width, 32767);
    EXPECT_EQ(null_window(window)->height, 1);
}

TEST_F(GlWindowTest, NoWindowIsLargerThanItsDriverCanDraw) {
    null_system.drawing_limit_width = 8000;
    null_system.drawing_limit_height = 6000;
    const WindowHandle window = create();
    gl_window_move(window, 0, 0, 32767, 32767);
    EXPECT_EQ(null_window(window)->width, 8000);
    EXPECT_EQ(null_window(window)->height, 6000);
    gl_window_move(window, 0, 0, 8001, 5999);
    EXPECT_EQ(null_window(window)->width, 8000);
    EXPECT_EQ(null_window(window)->height, 5999);
    int32_t width = 9000, height = 100;
    gl_window_clamp_size(window, &width, &height);
    EXPECT_EQ(width, 8000);
    EXPECT_EQ(height, 100);
    width = height = 40000;
    gl_window_clamp_size(parent, &width, &height);  // of its driver nothing is known
    EXPECT_EQ(width, 32767);
    EXPECT_EQ(height, 32767);
}

TEST_F(GlWindowTest, AWindowIsBornInASizeThatEveryDriverCanDraw) {
    parent = null_add_window(32767, 4097);
    const WindowHandle window = create();
    EXPECT_EQ(null_window(window)->width, 4096);
    EXPECT_EQ(null_window(window)->height, 4096);
}

TEST_F(GlWindowTest, ALimitBeyondAnyWindowSystemIsHeldInSixteenBits) {
    null_system.drawing_limit_width = null_system.drawing_limit_height = std::numeric_limits<int32_t>::max();
    const WindowHandle window = create();
    gl_window_move(window, 0, 0, 100000, 100000);
    EXPECT_EQ(null_window(window)->width, 32767);
    EXPECT_EQ(null_window(window)->height, 32767);
}

TEST_F(GlWindowTest, ANewSizeOfTheParentReachesTheWindowAsASizeMessage) {
    const WindowHandle window = create_quietly();
    null_resize(parent, 302, 203);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].procedure, "resize");
    EXPECT_EQ(calls[0].window, window);
    EXPECT_EQ(gl_window_parent(window), parent);
    null_resize(parent, 302, 203);
    EXPECT_EQ(calls.size(), 1u);
}

TEST_F(GlWindowTest, TheWindowOfATokenIsThatOfTheLayer) {
    EXPECT_EQ(gl_window_of_tk(reinterpret_cast<void*>(parent)), parent);
    EXPECT_EQ(gl_window_of_tk(nullptr), 0u);
}

// ---- The window procedure.

TEST_F(GlWindowTest, MouseMessagesApplyTheCursorReachTheEventProcedureAndReturnZero) {
    const WindowHandle window = create();
    const int32_t pan = cursor_create("pelt", "pan");
    cursor_apply(pan);
    for (uint32_t message = 0x200; message <= 0x209; ++message) {
        calls.clear();
        null_system.defaults.clear();
        null_system.cursors_applied.clear();
        EXPECT_EQ(window_procedure(window, message, 0, 0), 0) << message;
        EXPECT_EQ(null_system.cursors_applied, std::vector<NativeCursor>{104}) << message;
        ASSERT_EQ(calls.size(), 1u) << message;
        EXPECT_EQ(calls[0].procedure, "event");
        EXPECT_EQ(calls[0].window, window);
        EXPECT_EQ(calls[0].zero, 0);
        EXPECT_NE(calls[0].event, nullptr);
        EXPECT_TRUE(null_system.defaults.empty()) << message;
    }
}

TEST_F(GlWindowTest, KeyMessagesReachTheEventProcedureAndTheSystem) {
    const WindowHandle window = create();
    for (uint32_t message = 0x100; message <= 0x102; ++message) {
        calls.clear();
        null_system.defaults.clear();
        EXPECT_EQ(window_procedure(window, message, 65, 7), 77) << message;
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].procedure, "event");
        ASSERT_EQ(null_system.defaults.size(), 1u);
        EXPECT_EQ(null_system.defaults[0].message, message);
    }
}

TEST_F(GlWindowTest, TheSizeMessageCallsResizeAloneAndReturnsZero) {
    const WindowHandle window = create_quietly();
    EXPECT_EQ(window_procedure(window, 5, 0, 0), 0);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].procedure, "resize");
    EXPECT_TRUE(null_system.defaults.empty());
}

TEST_F(GlWindowTest, ThePaintMessageCallsPaintThenResizeAndReturnsZero) {
    const WindowHandle window = create_quietly();
    EXPECT_EQ(window_procedure(window, 15, 0, 0), 0);
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].procedure, "paint");
    EXPECT_EQ(calls[1].procedure, "resize");
    EXPECT_TRUE(null_system.defaults.empty());
}

TEST_F(GlWindowTest, TheFocusMessageAppliesTheCursorAndGoesToTheSystem) {
    const WindowHandle window = create_quietly();
    EXPECT_EQ(window_procedure(window, 7, 0, 0), 77);
    EXPECT_EQ(null_system.cursors_applied, std::vector<NativeCursor>{0});
    ASSERT_EQ(null_system.defaults.size(), 1u);
}

TEST_F(GlWindowTest, TheDestroyMessageReleasesTheContextAndGoesToTheSystem) {
    const WindowHandle window = create_quietly();
    EXPECT_EQ(window_procedure(window, 2, 0, 0), 77);
    EXPECT_EQ(gl_window_find(window)->context, nullptr);
    EXPECT_EQ(null_window(window)->contexts, 0);
    EXPECT_TRUE(null_window(window)->exists);
}

TEST_F(GlWindowTest, TheCloseMessageDestroysContextAndWindowAndGoesToTheSystem) {
    const WindowHandle window = create_quietly();
    EXPECT_EQ(window_procedure(window, 16, 0, 0), 77);
    EXPECT_FALSE(null_window(window)->exists);
    EXPECT_EQ(null_window(window)->contexts, 0);
    EXPECT_NE(gl_window_find(window), nullptr);
    // Its destruction sends the destroy message, which finds the context gone.
    ASSERT_EQ(null_system.defaults.size(), 2u);
    EXPECT_EQ(null_system.defaults[0].message, 2u);
    EXPECT_EQ(null_system.defaults[1].message, 16u);
}

TEST_F(GlWindowTest, CloseTwiceFindsNoContextAndADeadHandle) {
    const WindowHandle window = create_quietly();
    window_procedure(window, 16, 0, 0);
    EXPECT_EQ(window_procedure(window, 16, 0, 0), 77);
    EXPECT_EQ(null_window(window)->contexts, 0);
    EXPECT_EQ(null_window(window)->devices, 0);
}

TEST_F(GlWindowTest, AParentThatDiesDeliversDestroyAlone) {
    const WindowHandle window = create_quietly();
    null_destroy_tree(parent);
    ASSERT_EQ(null_system.defaults.size(), 1u);
    EXPECT_EQ(null_system.defaults[0].message, 2u);
    EXPECT_EQ(gl_window_find(window)->context, nullptr);
    EXPECT_TRUE(calls.empty());
}

TEST_F(GlWindowTest, MessagesForAWindowWithoutRecordDoNothingFurther) {
    create_quietly();
    for (const uint32_t message : {2u, 5u, 7u, 15u, 16u, 0x100u, 0x102u, 0x200u, 0x209u, 0x30Fu, 0x311u}) {
        window_procedure(0x777777, message, 0, 0);
    }
    EXPECT_TRUE(calls.empty());
}

TEST_F(GlWindowTest, AnUnknownMessageGoesToTheSystemWithReducedNumbersAndWholeLparam) {
    const WindowHandle window = create_quietly();
    const auto lparam = static_cast<std::intptr_t>(-0x123456789);
    EXPECT_EQ(window_procedure(window, 0xABCD0400, 0x7654321, lparam), 77);
    ASSERT_EQ(null_system.defaults.size(), 1u);
    EXPECT_EQ(null_system.defaults[0].window, window);
    EXPECT_EQ(null_system.defaults[0].message, 0x400u);
    EXPECT_EQ(null_system.defaults[0].wparam, 0x4321u);
    EXPECT_EQ(null_system.defaults[0].lparam, lparam);
    EXPECT_TRUE(calls.empty());
}

TEST_F(GlWindowTest, HighBitsOfMessageAndWparamDoNotCount) {
    const WindowHandle window = create_quietly();
    EXPECT_EQ(window_procedure(window, 0xFFFF0005, 0, 0), 0);
    EXPECT_EQ(count_of("resize"), 1);
    // The button state beyond 16 bits is no button state.
    window_procedure(window, 0x10200, 0xFFFF0000u | 2u, message_pair(3, 4));
    const auto* event = static_cast<const MouseEvent*>(calls.back().event);
    EXPECT_EQ(event->code, 10000);
    EXPECT_EQ(event->button, 3);
    // A key keeps its low 16 bits.
    window_procedure(window, 0x70100, 0x120041, 0);
    const auto* key = static_cast<const KeyEvent*>(calls.back().event);
    EXPECT_EQ(key->code, 11003);
    EXPECT_EQ(key->key, 0x41u);
}

TEST_F(GlWindowTest, TheWheelPassesUncut) {
    const WindowHandle window = create_quietly();
    window_procedure(window, 0x20A, 0xFF880005u, 1);
    window_procedure(window, 0x20E, 0x00780001u, 2);
    window_procedure(window, 0x1020A, 0x00780001u, 3);  // not the wheel, only its low bits
    ASSERT_EQ(null_system.defaults.size(), 3u);
    EXPECT_EQ(null_system.defaults[0].wparam, 0xFF880005u);
    EXPECT_EQ(null_system.defaults[1].wparam, 0x00780001u);
    EXPECT_EQ(null_system.defaults[2].wparam, 0x0001u);
    EXPECT_TRUE(calls.empty());
}

// ---- Beside the window.

TEST_F(GlWindowTest, ShowCursorPassesOnlyChanges) {
    gl_show_cursor(1);
    EXPECT_TRUE(null_system.cursor_shows.empty());
    gl_show_cursor(0);
    gl_show_cursor(0);
    gl_show_cursor(1);
    gl_show_cursor(5);
    EXPECT_EQ(null_system.cursor_shows, (std::vector<bool>{false, true}));
}

TEST_F(GlWindowTest, StatusTextReachesTheStatusBar) {
    gl_status_text(parent, "Ready");
    EXPECT_EQ(null_system.status_bar, parent);
    EXPECT_EQ(null_system.status_text, "Ready");
    gl_status_text(0, "lost");
    gl_status_text(parent, nullptr);
    EXPECT_EQ(null_system.status_text, "Ready");
}

}  // namespace
}  // namespace pelt
