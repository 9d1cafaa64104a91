#include "render/view_matrices.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/drawing_scene.h"
#include "support/native_null.h"
#include "support/recording_gl.h"

namespace pelt {
namespace {

using drawing_scene::gl;
using drawing_scene::Lines;
using recording_gl::lines;

class ViewMatrices : public testing::Test {
protected:
    void SetUp() override {
        null_reset();
        recording_gl::reset();
        view = ViewState{};
        view.extent_x = 8.0f;
        view.extent_y = 4.0f;
        view.extent_z = 16.0f;
        view.zoom = 2.0f;
    }
    void TearDown() override {
        EXPECT_EQ(recording_gl::joined(recording_gl::errors()), "");
        null_reset();
    }
    void open() {
        const WindowHandle parent = null_add_window(402, 302);
        view.window = gl_window_create("view", parent, make_current, nullptr, nullptr, nullptr, 0);
        recording_gl::clear();
    }
    static void make_current(WindowHandle window, int32_t, const void*) { gl_make_current(window); }

    ViewState view{};
};

Lines rotation_lines(float angle, float pitch) {
    return {"glMatrixMode GL_MODELVIEW", "glLoadIdentity", gl("glRotatef", angle, 0, 1, 0),
            gl("glRotatef", pitch, 1, 0, 0)};
}

TEST_F(ViewMatrices, ProjectionIsAScaleAndAShift) {
    open();
    view.pan_x = 1.0f;
    view.pan_y = -2.0f;
    view_load_projection(&view);
    const Lines expected = {"glMatrixMode GL_PROJECTION", "glLoadIdentity", "glScalef 0.25 0.5 -0.0625",
                            "glTranslatef -1 2 0"};
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(recording_gl::matrix_mode(), static_cast<GLenum>(GL_PROJECTION));
}

TEST_F(ViewMatrices, ANearerPointHasTheSmallerDepth) {
    open();
    view_load_projection(&view);
    const std::array<float, 16> m = recording_gl::projection();
    EXPECT_LT(m[10] * 3.0f + m[14], m[10] * -3.0f + m[14]);
}

TEST_F(ViewMatrices, RotationIsRebuiltFromAngleAndPitch) {
    open();
    view.angle = 90.0f;
    view.pitch = 45.0f;
    view_load_rotation(&view);
    EXPECT_EQ(lines(), rotation_lines(90.0f, 45.0f));
}

TEST_F(ViewMatrices, RotationInFreeRotationOnlySelectsTheMatrix) {
    open();
    view.freerotate = 1;
    view_load_rotation(&view);
    EXPECT_EQ(lines(), Lines{"glMatrixMode GL_MODELVIEW"});
}

TEST_F(ViewMatrices, SetAnglesStoresAndLoads) {
    open();
    view_set_angles(&view, 180.0f, -90.0f);
    EXPECT_EQ(view.angle, 180.0f);
    EXPECT_EQ(view.pitch, -90.0f);
    EXPECT_EQ(lines(), rotation_lines(180.0f, -90.0f));
}

TEST_F(ViewMatrices, NamedViewsTakeEffectAtOnceUnderFreeRotationWhichStaysOn) {
    open();
    view.freerotate = 1;
    view_set_angles(&view, 0.0f, 180.0f);
    EXPECT_EQ(lines(), rotation_lines(0.0f, 180.0f));
    EXPECT_EQ(view.freerotate, 1);
    const std::array<float, 16> m = recording_gl::modelview();
    EXPECT_NEAR(m[0], 1.0, 1e-6);
    EXPECT_NEAR(m[5], -1.0, 1e-6);
    EXPECT_NEAR(m[10], -1.0, 1e-6);
}

TEST_F(ViewMatrices, RotateAddsToTheAnglesWithoutACall) {
    open();
    view.angle = 10.0f;
    view.pitch = 20.0f;
    view_rotate(&view, 5.0f, -30.0f);
    EXPECT_EQ(view.angle, 15.0f);
    EXPECT_EQ(view.pitch, -10.0f);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(ViewMatrices, RotateInFreeRotationActsInScreenAxes) {
    open();
    view.freerotate = 1;
    glLoadIdentity();
    glTranslatef(5.0f, 6.0f, 7.0f);
    recording_gl::clear();
    view_rotate(&view, 90.0f, 30.0f);
    const Lines expected = {"glMatrixMode GL_MODELVIEW",
                            "glGetFloatv GL_MODELVIEW_MATRIX",
                            "glLoadIdentity",
                            "glRotatef 90 0 1 0",
                            "glRotatef 30 1 0 0",
                            "glMultMatrixf 1 0 0 0 0 1 0 0 0 0 1 0 5 6 7 1"};
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(view.angle, 0.0f);
    EXPECT_EQ(view.pitch, 0.0f);
    // Rotation about y by 90 of the rotation about x by 30 of (5, 6, 7).
    const double c = std::cos(std::acos(-1.0) / 6), s = 0.5;
    const std::array<float, 16> m = recording_gl::modelview();
    EXPECT_NEAR(m[12], 6 * s + 7 * c, 1e-5);
    EXPECT_NEAR(m[13], 6 * c - 7 * s, 1e-5);
    EXPECT_NEAR(m[14], -5, 1e-5);
}

TEST_F(ViewMatrices, RotateInFreeRotationSkipsAnAngleOfZero) {
    open();
    view.freerotate = 1;
    view_rotate(&view, 0.0f, 30.0f);
    EXPECT_EQ(recording_gl::count_calls("glRotatef"), 1);
    EXPECT_EQ(recording_gl::count_lines("glRotatef 30 1 0 0"), 1);
    recording_gl::clear();
    view_rotate(&view, 30.0f, 0.0f);
    EXPECT_EQ(recording_gl::count_calls("glRotatef"), 1);
    EXPECT_EQ(recording_gl::count_lines("glRotatef 30 0 1 0"), 1);
}

TEST_F(ViewMatrices, BackgroundIsStoredAndBecomesTheClearColour) {
    open();
    view_set_background(&view, 0.25f, 0.5f, 0.75f);
    EXPECT_EQ(lines(), Lines{"glClearColor 0.25 0.5 0.75 0"});
    EXPECT_EQ(view.background[0], 0.25f);
    EXPECT_EQ(view.background[1], 0.5f);
    EXPECT_EQ(view.background[2], 0.75f);
}

TEST_F(ViewMatrices, GetMatrixGivesRows) {
    open();
    glLoadIdentity();
    glTranslatef(5.0f, 6.0f, 7.0f);
    recording_gl::clear();
    Mat4 out;
    view_get_matrix(&view, &out);
    const Lines expected = {"glMatrixMode GL_MODELVIEW", "glGetFloatv GL_MODELVIEW_MATRIX"};
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(out.m[3], 5.0f);
    EXPECT_EQ(out.m[7], 6.0f);
    EXPECT_EQ(out.m[11], 7.0f);
    EXPECT_EQ(out.m[12], 0.0f);
}

TEST_F(ViewMatrices, SetMatrixSendsColumns) {
    open();
    Mat4 matrix;
    for (int i = 0; i < 16; ++i) { matrix.m[i] = static_cast<float>(i); }
    view_set_matrix(&view, &matrix);
    const Lines expected = {"glMatrixMode GL_MODELVIEW", "glLoadMatrixf 0 4 8 12 1 5 9 13 2 6 10 14 3 7 11 15"};
    EXPECT_EQ(lines(), expected);
}

TEST_F(ViewMatrices, WithoutAContextValuesAreStoredAndNoCallIsMade) {
    Mat4 matrix{};
    view_load_projection(&view);
    view_load_rotation(&view);
    view_set_angles(&view, 1.0f, 2.0f);
    view_rotate(&view, 3.0f, 4.0f);
    view_set_background(&view, 0.5f, 0.25f, 1.0f);
    view_set_matrix(&view, &matrix);
    view_get_matrix(&view, &matrix);
    view.freerotate = 1;
    view_rotate(&view, 3.0f, 4.0f);
    view_set_angles(&view, 7.0f, 8.0f);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(view.angle, 7.0f);
    EXPECT_EQ(view.pitch, 8.0f);
    EXPECT_EQ(view.freerotate, 1);
    EXPECT_EQ(view.background[2], 1.0f);
    Mat4 identity;
    mat_identity(&identity);
    for (int i = 0; i < 16; ++i) { EXPECT_EQ(matrix.m[i], identity.m[i]); }
}

TEST_F(ViewMatrices, AWindowThatLostItsContextGetsNoCall) {
    open();
    gl_context_destroy(view.window);
    view_set_background(&view, 0.5f, 0.25f, 1.0f);
    view_load_projection(&view);
    view_set_angles(&view, 1.0f, 2.0f);
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(view.background[0], 0.5f);
}

// What the next frame loads, without a question to OpenGL.
void expect_transforms(const ViewState& view) {
    recording_gl::clear();
    Mat4 modelview, projection;
    view_transforms(&view, &modelview, &projection);
    EXPECT_EQ(lines(), Lines{});
    ViewState copy = view;
    view_load_projection(&copy);
    view_load_rotation(&copy);
    glPushMatrix();
    glTranslatef(-view.focus.x, -view.focus.y, -view.focus.z);
    const auto held = recording_gl::modelview(), shown = recording_gl::projection();
    glPopMatrix();
    for (size_t row = 0; row < 4; ++row) {
        for (size_t column = 0; column < 4; ++column) {
            EXPECT_NEAR(modelview.m[4 * row + column], held[4 * column + row], 1e-5f) << row << column;
            EXPECT_NEAR(projection.m[4 * row + column], shown[4 * column + row], 1e-6f) << row << column;
        }
    }
}

TEST_F(ViewMatrices, TransformsAreThoseOfTheFrameInEveryKindOfRotation) {
    open();
    view.focus = {1.0f, -2.0f, 3.0f};
    view.pan_x = 0.5f;
    view.pan_y = -0.25f;
    view_set_angles(&view, 30.0f, -50.0f);
    expect_transforms(view);
    view_rotate(&view, 12.0f, 7.0f);
    expect_transforms(view);
    view_load_rotation(&view);
    view_set_freerotate(&view, 1);
    expect_transforms(view);
    for (int i = 0; i < 200; ++i) { view_rotate(&view, 3.0f, i % 2 == 0 ? 0.0f : -5.0f); }
    expect_transforms(view);
    Mat4 matrix;
    mat_identity(&matrix);
    mat_rotate(&matrix, 10.0f, 20.0f, 30.0f);
    view_set_matrix(&view, &matrix);
    expect_transforms(view);
    view_set_angles(&view, 90.0f, 45.0f);
    expect_transforms(view);
    view_set_freerotate(&view, 0);
    expect_transforms(view);
}

}  // namespace
}  // namespace pelt
