#include "render/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#include "application/session_lifecycle.h"
#include "motion/root_models.h"
#include "support/drawing_scene.h"
#include "support/native_null.h"
#include "support/recording_gl.h"
#include "window/native.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

long new_calls = 0;

size_t heap_in_use() {
#ifdef __GLIBC__
    return mallinfo2().uordblks;
#else
    return 0;
#endif
}

}  // namespace

// Counted, so that a frame can be shown to allocate nothing. Not inlined, or the compiler takes the pair for a
// mismatch.
[[gnu::noinline]] void* operator new(size_t size) {
    ++new_calls;
    if (void* memory = std::malloc(size != 0 ? size : 1)) { return memory; }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept { std::free(memory); }

namespace pelt {
namespace {

using drawing_scene::append;
using drawing_scene::gl;
using drawing_scene::Lines;
using recording_gl::lines;

Session session;
ViewState view;
std::vector<std::string> statuses;

void note_status(const char* text) { statuses.emplace_back(text); }

class Frame : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        recording_gl::reset();
        session_init(&session);
        session_set_status_callback(&session, note_status);
        view = ViewState{};
        frame_bind(&session, &view);
        statuses.clear();
    }
    void TearDown() override {
        EXPECT_EQ(recording_gl::joined(recording_gl::errors()), "");
        recording_gl::set_mode(recording_gl::Mode::record);
        session_reset(&session, 1);
        null_reset();
    }

    // A window in a parent of this size, with its first frame, and a clean slate behind it.
    void open(int32_t width, int32_t height) {
        parent = null_add_window(width, height);
        window = gl_window_create("view", parent, view_init, nullptr, view_resize, nullptr, 0);
        forget();
    }
    void forget() {
        recording_gl::clear();
        statuses.clear();
        null_system.calls.clear();
    }

    int swaps() const { return null_window(window)->swaps; }

    WindowHandle parent = 0;
    WindowHandle window = 0;
};

Lines projection_lines() {
    return {"glMatrixMode GL_PROJECTION", "glLoadIdentity",
            gl("glScalef", 1.0f / (view.extent_x * 0.25f * view.zoom), 1.0f / (view.extent_y * 0.25f * view.zoom),
               -(1.0f / view.extent_z)),
            gl("glTranslatef", -view.pan_x, -view.pan_y, 0)};
}

// From the projection to the swap, with an empty scene.
Lines picture_lines() {
    Lines out = projection_lines();
    append(out, {"glMatrixMode GL_MODELVIEW", "glLoadIdentity", gl("glRotatef", view.angle, 0, 1, 0),
                 gl("glRotatef", view.pitch, 1, 0, 0), "glPushMatrix",
                 gl("glTranslatef", -view.focus.x, -view.focus.y, -view.focus.z), "glPopMatrix", "glFlush"});
    return out;
}

Lines frame_lines() {
    Lines out = {"glClear GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT"};
    append(out, picture_lines());
    return out;
}

void add_triangle_model(const char* name) {
    Model* model = model_create(name, nullptr);
    model_add_layer(model, "body", 127, 127, 127, 0, 0, 0);
    for (int id = 1; id <= 3; ++id) { model_set_point(model, id, id, id * id, 0, 1.0f); }
    const int32_t points[4] = {1, 2, 3, 0};
    model_add_triangle(model, "body", 0, points, nullptr, nullptr, 0);
    session_add_root(&session, model, nullptr);
}

struct Size {
    int32_t width, height;
};

bool extents_are_finite() {
    return std::isfinite(view.extent_x) && std::isfinite(view.extent_y) && std::isfinite(view.extent_z);
}

// ---- view_init

TEST_F(Frame, InitMakesExactlyTheseCalls) {
    parent = null_add_window(302, 152);
    gl_window_create("view", parent, view_init, nullptr, nullptr, nullptr, 0);
    const Lines expected = {
        "glMatrixMode GL_PROJECTION",
        "glLoadIdentity",
        gl("glScalef", 2, 4, -(1.0f / 600.0f)),  // extents 2 and 1
        "glTranslatef 0 0 0",
        "glClearColor 0 0 0 0",
        "glShadeModel GL_SMOOTH",
        "glEnable GL_DEPTH_TEST",
        "glPixelStorei GL_UNPACK_ALIGNMENT 1",
        "glTexEnvf GL_TEXTURE_ENV GL_TEXTURE_ENV_MODE GL_MODULATE",
        "glEnable GL_COLOR_MATERIAL",
        "glColorMaterial GL_FRONT_AND_BACK GL_DIFFUSE",
        "glMaterialfv GL_FRONT GL_DIFFUSE 0.5 0.5 0.5 1",
        "glMaterialfv GL_FRONT GL_AMBIENT 0.35 0.35 0.35 1",
        "glMaterialfv GL_FRONT GL_SPECULAR 0.05 0.05 0.05 1",
        "glMaterialfv GL_FRONT GL_SHININESS 0.2",
        "glLightfv GL_LIGHT0 GL_AMBIENT 0.8 0.8 0.8 0",
        "glLightModelf GL_LIGHT_MODEL_LOCAL_VIEWER 1",
        "glLightfv GL_LIGHT1 GL_POSITION 0 0 1 0",
        "glLightfv GL_LIGHT2 GL_POSITION 0 0 -1 0",
        "glEnable GL_LIGHTING",
        "glEnable GL_LIGHT0",
        "glEnable GL_LIGHT1",
        "glDepthFunc GL_LEQUAL",
        "glMatrixMode GL_MODELVIEW",
        "glLoadIdentity",
    };
    EXPECT_EQ(lines(), expected);
    EXPECT_FALSE(recording_gl::enabled(GL_LIGHT2));
}

TEST_F(Frame, InitSetsTheViewFromTheDrawingAreaOfTheWindow) {
    view.angle = view.pitch = view.pan_x = view.pan_y = view.focus.x = view.background[1] = 9.0f;
    view.freerotate = 1;
    session.points_color_index = 4;
    parent = null_add_window(302, 152);
    window = gl_window_create("view", parent, view_init, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(view.window, window);
    EXPECT_EQ(view.width, 300);
    EXPECT_EQ(view.height, 150);
    EXPECT_FLOAT_EQ(view.extent_x, 2.0f);
    EXPECT_FLOAT_EQ(view.extent_y, 1.0f);
    EXPECT_EQ(view.extent_z, 600.0f);
    EXPECT_EQ(view.zoom, 1.0f);
    EXPECT_EQ(view.angle, 0.0f);
    EXPECT_EQ(view.pitch, 0.0f);
    EXPECT_EQ(view.pan_x, 0.0f);
    EXPECT_EQ(view.pan_y, 0.0f);
    EXPECT_EQ(view.focus.x, 0.0f);
    EXPECT_EQ(view.background[1], 0.0f);
    EXPECT_EQ(view.freerotate, 1);
    EXPECT_EQ(session.points_color_index, 0);
}

TEST_F(Frame, CreationStoresTheSizeOfTheParentAndThenDrawsTheFirstFrame) {
    parent = null_add_window(302, 203);
    window = gl_window_create("view", parent, view_init, nullptr, view_resize, nullptr, 0);
    EXPECT_EQ(view.width, 302);
    EXPECT_EQ(view.height, 203);
    EXPECT_EQ(swaps(), 1);
    EXPECT_EQ(statuses, std::vector<std::string>{"300x200"});
    EXPECT_FALSE(native_desktop_layer()->paint_pending(window));
    // 2 * 300 / 300 for the drawing area of 300 by 201, scaled to the size of the parent.
    EXPECT_NEAR(view.extent_x, 2.0 * 302 / 300, 1e-5);
    EXPECT_NEAR(view.extent_y, 2.0 * 203 / 300, 1e-5);
}

// ---- frame_draw

TEST_F(Frame, DrawBeforeAWindowExistsDrawsAndReportsNothing) {
    frame_draw();
    frame_draw_unswapped();
    frame_swap();
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(statuses, std::vector<std::string>{});
    EXPECT_EQ(null_system.makes_current, 0);
}

TEST_F(Frame, NothingBoundDrawsNothing) {
    open(300, 300);
    frame_bind(nullptr, nullptr);
    frame_draw();
    frame_draw_unswapped();
    frame_swap();
    view_init(window, 0, nullptr);
    view_resize(window, 0, nullptr);
    view_set_size(100, 100);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(frame_view(), nullptr);
}

TEST_F(Frame, AFrameMakesExactlyTheseCalls) {
    open(402, 302);
    view.angle = 30.0f;
    view.pitch = -20.0f;
    view.pan_x = 1.5f;
    view.pan_y = -0.5f;
    view.zoom = 2.0f;
    view.extent_x = 8.0f;
    view.extent_y = 4.0f;
    view.extent_z = 16.0f;
    view.focus = {1.0f, 2.0f, -3.0f};
    frame_draw();
    const Lines expected = {
        "glClear GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT",
        "glMatrixMode GL_PROJECTION",
        "glLoadIdentity",
        "glScalef 0.25 0.5 -0.0625",
        "glTranslatef -1.5 0.5 0",
        "glMatrixMode GL_MODELVIEW",
        "glLoadIdentity",
        "glRotatef 30 0 1 0",
        "glRotatef -20 1 0 0",
        "glPushMatrix",
        "glTranslatef -1 -2 3",
        "glPopMatrix",
        "glFlush",
    };
    EXPECT_EQ(lines(), expected);
    const std::vector<std::string> native = {"begin_paint", "swap", "end_paint"};
    EXPECT_EQ(null_system.calls, native);
}

TEST_F(Frame, AFixedSizeDrawsTheBackgroundOnAFieldOfTheInverseColour) {
    open(402, 302);
    view.fixed_size = 1;
    view.background[0] = 0.25f;
    view.background[1] = 0.5f;
    view.background[2] = 1.0f;
    frame_draw();
    Lines expected = {
        "glClearColor 0.75 0.5 0 0",
        "glClear GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT",
        "glColor4f 0.25 0.5 1 0",
        "glDisable GL_LIGHTING",
        "glDisable GL_DEPTH_TEST",
        "glDisable GL_TEXTURE_2D",
        "glMatrixMode GL_PROJECTION",
        "glLoadIdentity",
        "glMatrixMode GL_MODELVIEW",
        "glPushMatrix",
        "glLoadIdentity",
        "glBegin GL_TRIANGLE_STRIP",
        "glVertex2f -2 -2",
        "glVertex2f -2 2",
        "glVertex2f 2 -2",
        "glVertex2f 2 2",
        "glEnd",
        "glPopMatrix",
        "glClearColor 0.25 0.5 1 0",
        "glEnable GL_LIGHTING",
        "glEnable GL_DEPTH_TEST",
        "glEnable GL_TEXTURE_2D",
    };
    append(expected, picture_lines());
    EXPECT_EQ(lines(), expected);
}

TEST_F(Frame, AFixedSizeLeavesTexturesOnAfterItsBackgroundAndEachModelSwitchesThemOff) {
    open(402, 302);
    view.fixed_size = 1;
    session.display_textures = 0;
    frame_draw();
    EXPECT_TRUE(recording_gl::enabled(GL_TEXTURE_2D));
    add_triangle_model("a.mod");
    recording_gl::clear();
    frame_draw();
    EXPECT_FALSE(recording_gl::enabled(GL_TEXTURE_2D));
    const Lines all = lines();
    const auto on = std::find(all.begin(), all.end(), "glEnable GL_TEXTURE_2D");
    ASSERT_NE(on, all.end());
    EXPECT_NE(std::find(on, all.end(), "glDisable GL_TEXTURE_2D"), all.end());
}

TEST_F(Frame, FreeRotationLeavesTheMatrixAsItStands) {
    open(402, 302);
    view.freerotate = 1;
    frame_draw();
    Lines expected = {"glClear GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT"};
    append(expected, projection_lines());
    append(expected, {"glMatrixMode GL_MODELVIEW", "glPushMatrix", "glTranslatef 0 0 0", "glPopMatrix", "glFlush"});
    EXPECT_EQ(lines(), expected);
}

TEST_F(Frame, TheSceneIsDrawnBetweenFocusAndSwapAndCounted) {
    open(402, 302);
    add_triangle_model("a.mod");
    add_triangle_model("b.mod");
    frame_draw();
    EXPECT_EQ(recording_gl::count_lines("glBegin GL_TRIANGLES"), 2);
    EXPECT_EQ(session.triangles_drawn, 2);
    EXPECT_EQ(recording_gl::modelview_depth(), 1);
    EXPECT_EQ(lines().back(), "glFlush");
}

TEST_F(Frame, DrawMakesTheContextCurrentWhenNoneIs) {
    open(402, 302);
    gl_make_current(0);
    frame_draw();
    EXPECT_EQ(lines(), frame_lines());
    EXPECT_EQ(swaps(), 2);
}

TEST_F(Frame, UnswappedDrawsTheSamePictureAndLeavesAPaintPending) {
    open(402, 302);
    null_expose(window);
    frame_draw_unswapped();
    Lines expected = frame_lines();
    expected.pop_back();  // without the flush
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(swaps(), 1);
    EXPECT_TRUE(native_desktop_layer()->paint_pending(window));
}

TEST_F(Frame, ADeadWindowIsNotDrawnOn) {
    open(402, 302);
    null_destroy_tree(parent);
    forget();
    frame_draw();
    frame_draw_unswapped();
    frame_swap();
    view_set_size(100, 200);
    view_resize(window, 0, nullptr);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(view.width, 100);
    EXPECT_EQ(null_window(window)->swaps, 1);
}

TEST_F(Frame, AWindowWithoutAContextNeverDraws) {
    null_system.fail_context = true;
    open(402, 302);
    frame_draw();
    view_resize(window, 0, nullptr);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(Frame, AFrameAfterTheFirstAllocatesNothing) {
    open(402, 302);
    add_triangle_model("a.mod");
    frame_draw();
    recording_gl::set_mode(recording_gl::Mode::silent);
    null_system.calls.reserve(1000);  // the null window's own log
    const long before = new_calls;
    const size_t used = heap_in_use();
    frame_draw();
    EXPECT_EQ(heap_in_use(), used);
    EXPECT_EQ(new_calls, before);
}

// ---- view_resize

TEST_F(Frame, ANewSizeScalesTheExtentsAndWaitsForThePaint) {
    open(400, 300);
    view.extent_x = 8.0f;
    view.extent_y = 6.0f;
    null_resize(parent, 600, 150);
    EXPECT_EQ(view.width, 600);
    EXPECT_EQ(view.height, 150);
    EXPECT_FLOAT_EQ(view.extent_x, 12.0f);
    EXPECT_FLOAT_EQ(view.extent_y, 3.0f);
    EXPECT_EQ(null_window(window)->width, 600);
    EXPECT_EQ(null_window(window)->height, 150);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(statuses, std::vector<std::string>{});
    null_run();
    Lines expected = {"glViewport 0 0 600 150"};
    append(expected, projection_lines());
    append(expected, frame_lines());
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(statuses, std::vector<std::string>{"596x148"});
}

// A window system may hand over the paint of a new size only after the script's next frame, which then replaces it.
TEST_F(Frame, AFrameBeforeThePaintOfANewSizeTakesThatPaintsPlace) {
    open(400, 300);
    null_resize(parent, 600, 150);
    frame_draw();
    Lines expected = {"glViewport 0 0 600 150"};
    append(expected, projection_lines());
    append(expected, frame_lines());
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(statuses, std::vector<std::string>{"596x148"});
    EXPECT_FALSE(native_desktop_layer()->paint_pending(window));
    recording_gl::clear();
    frame_draw();
    EXPECT_EQ(lines(), frame_lines());
    EXPECT_EQ(statuses, std::vector<std::string>{"596x148"});
}

TEST_F(Frame, TheStatusOfA302By203WindowReads300x200) {
    open(400, 300);
    null_resize(parent, 302, 203);
    null_run();
    EXPECT_EQ(statuses, std::vector<std::string>{"300x200"});
}

// The null window sends its size message before the move returns.
TEST_F(Frame, AMoveThatSendsASizeMessageScalesTheExtentsOnceAndEnds) {
    open(400, 300);
    view.extent_x = 4.0f;
    const int moves = null_window(window)->moves;
    null_resize(parent, 800, 300);
    EXPECT_FLOAT_EQ(view.extent_x, 8.0f);
    EXPECT_EQ(null_window(window)->moves, moves + 1);
}

TEST_F(Frame, AParentWithoutASizeCausesNoDrawAndNoStatus) {
    open(400, 300);
    null_resize(parent, 0, 0);
    view_resize(window, 0, nullptr);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(statuses, std::vector<std::string>{});
    EXPECT_EQ(view.width, 400);
    EXPECT_EQ(view.height, 300);
}

TEST_F(Frame, AParentOf1By0DoesNotCountAsEmpty) {
    open(400, 300);
    const float extent_x = view.extent_x, extent_y = view.extent_y;
    null_resize(parent, 1, 0);
    EXPECT_EQ(view.width, 1);
    EXPECT_EQ(view.height, 0);
    EXPECT_TRUE(extents_are_finite());
    EXPECT_GT(view.extent_x, 0.0f);
    EXPECT_GT(view.extent_y, 0.0f);
    null_resize(parent, 400, 300);
    EXPECT_NEAR(view.extent_x, extent_x, 1e-5);
    EXPECT_NEAR(view.extent_y, extent_y, 1e-5);
}

TEST_F(Frame, AParentOf0By1DoesNotCountAsEmptyEither) {
    open(400, 300);
    null_resize(parent, 0, 1);
    EXPECT_EQ(view.width, 0);
    EXPECT_EQ(view.height, 1);
    EXPECT_TRUE(extents_are_finite());
    EXPECT_GT(view.extent_x, 0.0f);
    EXPECT_GT(view.extent_y, 0.0f);
}

TEST_F(Frame, AFrameNotYetMappedGivesTheRightViewAfterTheNextResize) {
    open(1, 1);
    EXPECT_TRUE(extents_are_finite());
    EXPECT_EQ(view.width, 1);
    EXPECT_EQ(view.height, 1);
    null_resize(parent, 600, 300);
    null_run();
    EXPECT_NEAR(view.extent_x, 2.0 * 600 / 300, 1e-4);  // as if it had been created in that size
    EXPECT_NEAR(view.extent_y, 2.0 * 300 / 300, 1e-4);
    EXPECT_EQ(statuses.back(), "596x296");
}

TEST_F(Frame, ASceneFittedBeforeTheFrameIsMappedIsFittedAfterTheNextResize) {
    open(1, 1);
    view_fit(&view, 100.0f, false);
    null_resize(parent, 600, 300);
    null_run();
    // A radius of 100 with its margin of 5 per cent fills the shorter side.
    EXPECT_NEAR(view.extent_x, 2.0 * 105.0, 1e-3);
    EXPECT_NEAR(view.extent_y, 105.0, 1e-3);
    null_resize(parent, 1200, 300);
    null_run();
    EXPECT_NEAR(view.extent_x, 4.0 * 105.0, 1e-3);  // from then on a larger window shows more
    EXPECT_NEAR(view.extent_y, 105.0, 1e-3);
}

TEST_F(Frame, AFrameThatCollapsesAndComesBackHasTheScaleThatItHad) {
    open(1, 1);
    view_fit(&view, 100.0f, false);
    null_resize(parent, 600, 300);
    null_run();
    null_resize(parent, 600, 600);
    null_run();
    null_resize(parent, 1, 1);
    null_run();
    null_resize(parent, 600, 600);
    null_run();
    // A radius of 100 with its margin, in 300 pixels at first: the scale of then, not a new fit.
    EXPECT_NEAR(view.extent_x, 210.0, 1e-3);
    EXPECT_NEAR(view.extent_y, 210.0, 1e-3);
}

TEST_F(Frame, AFixedSizeIsARealSizeToo) {
    open(1, 1);
    view_fit(&view, 100.0f, false);
    view_set_size(600, 300);
    EXPECT_NEAR(view.extent_x, 210.0, 1e-3);
    view_set_size(0, 0);
    null_resize(parent, 600, 600);
    null_run();
    EXPECT_NEAR(view.extent_x, 210.0, 1e-3);
    EXPECT_NEAR(view.extent_y, 210.0, 1e-3);
}

TEST_F(Frame, AParentLargerThanTheDriverCanDrawIsFollowedAsFarAsItCan) {
    null_system.drawing_limit_width = 5000;
    null_system.drawing_limit_height = 4500;
    open(32767, 32767);
    EXPECT_EQ(view.width, 5000);
    EXPECT_EQ(view.height, 4500);
    EXPECT_EQ(null_window(window)->width, 5000);
    EXPECT_EQ(null_window(window)->height, 4500);
    EXPECT_NEAR(view.extent_x, 2.0 * 5000 / 300, 1e-2);
    EXPECT_EQ(swaps(), 1);
    null_resize(parent, 300, 32000);
    null_run();
    EXPECT_EQ(view.width, 300);
    EXPECT_EQ(view.height, 4500);
    EXPECT_EQ(statuses, std::vector<std::string>{"296x4496"});  // two pixels less, and a multiple of four
    view_set_size(200, 100);
    forget();
    view_set_size(0, 0);
    null_run();
    EXPECT_EQ(null_window(window)->height, 4500);
    EXPECT_EQ(lines().front(), "glViewport 0 0 300 4500");
}

TEST_F(Frame, AParentOfNoSizeAtCreationStaysFinite) {
    open(0, 0);
    EXPECT_TRUE(extents_are_finite());
    null_resize(parent, 300, 300);
    EXPECT_TRUE(extents_are_finite());
    EXPECT_NEAR(view.extent_x, 2.0, 1e-4);
}

TEST_F(Frame, ExtentsStayFiniteHoweverOftenTheSizeChanges) {
    open(400, 300);
    view.extent_x = 1e38f;
    for (int i = 0; i < 20; ++i) {
        null_resize(parent, 1, 1);
        null_resize(parent, 3000, 3000);
    }
    EXPECT_TRUE(extents_are_finite());
}

TEST_F(Frame, WithAFixedSizeAResizeMovesTheWindowAndDrawsButKeepsTheView) {
    open(400, 300);
    view_set_size(200, 100);
    const float extent_x = view.extent_x, extent_y = view.extent_y;
    forget();
    null_resize(parent, 500, 350);
    EXPECT_EQ(view.width, 200);
    EXPECT_EQ(view.height, 100);
    EXPECT_EQ(view.extent_x, extent_x);
    EXPECT_EQ(view.extent_y, extent_y);
    EXPECT_EQ(null_window(window)->width, 500);
    EXPECT_GE(recording_gl::count_lines("glViewport 0 0 200 100"), 1);
    EXPECT_EQ(statuses.back(), "500x350");
    EXPECT_GE(swaps(), 2);
}

TEST_F(Frame, WithoutAStatusProcedureNothingIsReported) {
    open(400, 300);
    session_set_status_callback(&session, nullptr);
    null_expose(window);
    null_run();
    view_set_size(100, 100);
    EXPECT_EQ(statuses, std::vector<std::string>{});
}

// ---- view_set_size

TEST_F(Frame, SetSizeFixesTheSizeScalesAndDraws) {
    open(400, 300);
    view.extent_x = 8.0f;
    view.extent_y = 6.0f;
    view_set_size(200, 600);
    EXPECT_EQ(view.fixed_size, 1);
    EXPECT_EQ(view.width, 200);
    EXPECT_EQ(view.height, 600);
    EXPECT_FLOAT_EQ(view.extent_x, 4.0f);
    EXPECT_FLOAT_EQ(view.extent_y, 12.0f);
    Lines expected = {"glViewport 0 0 200 600"};
    append(expected, projection_lines());
    const Lines all = lines();
    ASSERT_GT(all.size(), expected.size());
    EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<long>(expected.size())), expected);
    EXPECT_EQ(all.back(), "glFlush");
    EXPECT_EQ(statuses, std::vector<std::string>{"Window resize = 200x600"});
    EXPECT_EQ(null_window(window)->width, 400);  // the window keeps its size
}

TEST_F(Frame, SetSizeOutOfRangeChangesNothing) {
    open(400, 300);
    for (const auto& size : {std::pair{19, 100},
                             {100, 19},
                             {100, 3001},
                             {3001, 100},
                             {0, 100},
                             {100, 0},
                             {-5, 100},
                             {INT32_MIN, INT32_MAX}}) {
        view_set_size(size.first, size.second);
    }
    EXPECT_EQ(view.fixed_size, 0);
    EXPECT_EQ(view.width, 400);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(statuses, std::vector<std::string>{});
}

TEST_F(Frame, SetSizeAtTheLimitsIsAccepted) {
    open(400, 300);
    view_set_size(20, 3000);
    EXPECT_EQ(view.fixed_size, 1);
    EXPECT_EQ(view.width, 20);
    EXPECT_EQ(view.height, 3000);
    view_set_size(3000, 20);
    EXPECT_EQ(view.width, 3000);
}

TEST_F(Frame, SetSizeToTheCurrentSizeFixesNothing) {
    open(400, 300);
    view_set_size(400, 300);
    EXPECT_EQ(view.fixed_size, 0);
    EXPECT_EQ(lines(), Lines{});
    frame_draw();
    EXPECT_EQ(recording_gl::count_calls("glVertex2f"), 0);  // no inverted background
}

TEST_F(Frame, SetSizeZeroFollowsTheParentAgain) {
    open(400, 310);
    const float extent_x = view.extent_x, extent_y = view.extent_y;
    view_set_size(200, 100);
    view_set_size(0, 0);
    EXPECT_EQ(view.fixed_size, 0);
    EXPECT_EQ(view.width, 400);  // through the size message of the move to 300 by 300
    EXPECT_EQ(view.height, 310);
    EXPECT_NEAR(view.extent_x, extent_x, 1e-5);
    EXPECT_NEAR(view.extent_y, extent_y, 1e-5);
    EXPECT_EQ(null_window(window)->width, 400);
    forget();
    null_run();
    EXPECT_EQ(lines().front(), "glViewport 0 0 400 310");
    EXPECT_EQ(recording_gl::count_calls("glVertex2f"), 0);
}

TEST_F(Frame, SetSizeZeroLeavesNoWindowBehindWhereTheParentIsOfTheFixedSize) {
    open(400, 310);
    view_set_size(500, 200);
    null_resize(parent, 500, 200);
    null_run();
    view_set_size(0, 0);
    null_run();
    EXPECT_EQ(null_window(window)->width, 500);
    EXPECT_EQ(null_window(window)->height, 200);
}

TEST_F(Frame, SetSizeZeroInAParentOfTheSizeMovedToShowsItsPictureWithTheNextDraw) {
    open(300, 300);
    view_set_size(200, 100);
    view_set_size(0, 0);
    forget();
    frame_draw();
    EXPECT_EQ(view.width, 300);
    EXPECT_EQ(view.height, 300);
    EXPECT_NE(std::find(lines().begin(), lines().end(), "glViewport 0 0 300 300"), lines().end());
    EXPECT_EQ(statuses.back(), "296x296");
}

// Whatever the sizes of parent, window and view are, and with a frame that the script asks for at once or without.
TEST_F(Frame, SetSizeZeroReportsAndDrawsOnce) {
    struct Case {
        Size parent, fixed;  // a fixed size of 0 by 0: none was set
    };
    static constexpr Case CASES[] = {{{400, 310}, {200, 100}}, {{500, 200}, {500, 204}}, {{300, 300}, {200, 100}},
                                     {{400, 310}, {0, 0}},     {{300, 300}, {0, 0}},     {{500, 200}, {300, 300}}};
    for (const Case& each : CASES) {
        for (const bool at_once : {false, true}) {
            TearDown();
            SetUp();
            open(each.parent.width, each.parent.height);
            if (each.fixed.width != 0) { view_set_size(each.fixed.width, each.fixed.height); }
            const int before = swaps();
            forget();
            view_set_size(0, 0);
            EXPECT_EQ(swaps(), before) << "the paint draws, or the next frame";
            if (at_once) { frame_draw(); }
            null_run();
            EXPECT_EQ(swaps(), before + 1) << each.parent.width << " " << each.fixed.width << " " << at_once;
            EXPECT_EQ(statuses.size(), 1u) << each.parent.width << " " << each.fixed.width << " " << at_once;
            EXPECT_EQ(view.width, each.parent.width);
            EXPECT_EQ(view.height, each.parent.height);
            EXPECT_EQ(null_window(window)->width, each.parent.width);
            EXPECT_EQ(null_window(window)->height, each.parent.height);
        }
    }
}

// The parent may have grown to the fixed size meanwhile.
TEST_F(Frame, SetSizeZeroInAParentOfTheFixedSizeReportsAndDrawsOnce) {
    open(400, 310);
    view_set_size(500, 200);
    null_resize(parent, 500, 200);
    null_run();
    const int before = swaps();
    forget();
    view_set_size(0, 0);
    null_run();
    EXPECT_EQ(swaps(), before + 1);
    EXPECT_EQ(statuses, std::vector<std::string>{"496x196"});
}

TEST_F(Frame, SetSizeBeforeAWindowExistsStaysFinite) {
    view_set_size(200, 100);
    EXPECT_TRUE(extents_are_finite());
    EXPECT_EQ(lines(), Lines{});
    view_set_size(0, 0);
    EXPECT_EQ(view.fixed_size, 0);
}

// ---- session_set_smooth

class Smooth : public Frame {
protected:
    void SetUp() override {
        Frame::SetUp();
        for (const char* name : {"a.mod", "b.mod"}) {
            add_triangle_model(name);
            Model* model = nullptr;
            for (RootModel& root : list_elements<RootModel>(session.root_models)) { model = root.model; }
            Layer* layer = model_find_layer(model, "body");
            auto* image = list_add<LayerImage>(&layer->images, 1);
            *image = LayerImage{};
            image->width[0] = image->height[0] = 11;
        }
    }
    // The first coordinate of each model.
    std::vector<float> first_u() const {
        std::vector<float> out;
        for (const RootModel& root : list_elements<RootModel>(session.root_models)) {
            for (const Layer& layer : list_elements<Layer>(root.model->layers)) {
                for (const Triangle& t : list_elements<Triangle>(layer.triangles)) { out.push_back(t.uvs[0][0]); }
            }
        }
        return out;
    }
};

// Intended: the flag is never stored.
TEST_F(Smooth, OnInsetsAllModelsOnceMoreEachTimeAndStoresNothing) {
    session_set_smooth(&session, 1);
    for (const float u : first_u()) { EXPECT_NEAR(u, 0.05, 1e-6); }
    EXPECT_EQ(session.display_smooth, 0);
    session_set_smooth(&session, 1);
    for (const float u : first_u()) { EXPECT_NEAR(u, 0.095, 1e-6); }
    EXPECT_EQ(first_u().size(), 2u);
}

TEST_F(Smooth, OffDoesNothing) {
    session_set_smooth(&session, 0);
    for (const float u : first_u()) { EXPECT_EQ(u, 0.0f); }
}

TEST_F(Smooth, OffWithTheFlagSetInsetsByNothing) {
    session.display_smooth = 1;
    session_set_smooth(&session, 0);
    for (const float u : first_u()) { EXPECT_EQ(u, 0.0f); }
    EXPECT_EQ(session.display_smooth, 1);
}

TEST_F(Smooth, AModelAddedLaterIsNotInset) {
    session_set_smooth(&session, 1);
    add_triangle_model("c.mod");
    EXPECT_EQ(first_u().back(), 0.0f);
}

}  // namespace
}  // namespace pelt
