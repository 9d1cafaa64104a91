// Marks over a frame: none where nothing is marked, and nothing left behind where something is.
#include "render/marks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "application/session_lifecycle.h"
#include "motion/root_models.h"
#include "render/frame.h"
#include "support/drawing_scene.h"
#include "support/native_null.h"
#include "support/recording_gl.h"

namespace pelt {
namespace {

using recording_gl::lines;
using Lines = std::vector<std::string>;

class MarksTest : public testing::Test {
protected:
    MarksTest() {
        *marks() = Marks{};
        null_reset();
        recording_gl::reset();
        session_init(&session);
        frame_bind(&session, &view);
        model = model_create("marked.mod", nullptr);
        model_add_layer(model, "body", 127, 100, 80, 1, 1, AXIS_X);
        const int places[5][3] = {{-10, -10, 0}, {10, -10, 0}, {-10, 10, 0}, {10, 10, 0}, {0, 0, 20}};
        for (int i = 0; i < 5; ++i) {
            model_set_point(model, i + 1, places[i][0], places[i][1], places[i][2], 1.0f);
            model_set_gouraud(model, i + 1, 10 * i, 100, 200, 0);
        }
        model->has_gouraud = 1;
        const int32_t quad[4] = {1, 2, 3, 4}, triangle[4] = {1, 2, 5, 0}, line[2] = {3, 5}, strip[3] = {2, 4, 5};
        model_add_triangle(model, "body", 1, quad, nullptr, nullptr, 0);
        model_add_triangle(model, "body", 0, triangle, nullptr, nullptr, 3);
        model_add_polygon(model, "body", 3, strip, nullptr);
        model_add_line(model, "body", 2, line);
        session_add_root(&session, model, nullptr);
        window = gl_window_create("view", null_add_window(302, 202), view_init, nullptr, view_resize, nullptr, 0);
        frame_draw();
    }
    ~MarksTest() override {
        *marks() = Marks{};
        session_close_all(&session);
        for (KeyedList* list : {&session.model_states, &session.point_states, &session.triangle_caches,
                                &session.joint_states, &session.child_states, &session.root_models}) {
            list_free(list);
        }
        gl_context_destroy(window);
    }
    MarksTest(const MarksTest&) = delete;
    MarksTest& operator=(const MarksTest&) = delete;

    Lines frame() {
        recording_gl::clear();
        frame_draw();
        return lines();
    }
    ModelMarks marked(std::vector<int32_t> points, std::vector<std::string> layers) const {
        return {model, model->serial, std::move(points), std::move(layers), {}, {}, {}};
    }
    void mark_everything() {
        *marks() = Marks{{marked({1, 5}, {"body"})}, 5.0f, true, {1, 2, 3}, MARK_AXIS_Y, true, true, false};
        Layer* body = model_find_layer(model, "body");
        for (const Triangle& each : list_elements<Triangle>(body->triangles)) {
            marks()->models[0].faces.push_back(each.id);
        }
        for (const Polygon& each : list_elements<Polygon>(body->polygons)) {
            marks()->models[0].polygons.push_back(each.id);
        }
        for (const Line& each : list_elements<Line>(body->lines)) { marks()->models[0].lines.push_back(each.id); }
    }

    Session session{};
    ViewState view{};
    Model* model = nullptr;
    WindowHandle window = 0;
};

// The frame of before there were marks, call for call.
TEST_F(MarksTest, NothingMarkedIsTheDescribedFrame) {
    const Lines before = frame();
    marks()->in_pictures = true;  // alone it marks nothing
    EXPECT_EQ(frame(), before);
    marks()->models.push_back({model, model->serial + 1000, {1, 2}, {"body"}, {}, {}, {}});  // of a model that is gone
    EXPECT_EQ(frame(), before);
    EXPECT_TRUE(marks()->models.empty());
    EXPECT_EQ(recording_gl::count_calls("glPushAttrib"), 0);
}

// The described frame first, then the marks within one pair of glPushAttrib and glPopAttrib, then the swap.
TEST_F(MarksTest, MarksComeBehindTheFrameAndBeforeTheSwap) {
    const Lines plain = frame();
    mark_everything();
    const int swaps = null_window(window)->swaps;
    const Lines with = frame();
    const auto first = std::find_if(with.begin(), with.end(),
                                    [](const std::string& line) { return line.rfind("glPushAttrib", 0) == 0; });
    const auto last = std::find(with.begin(), with.end(), "glPopAttrib");
    ASSERT_TRUE(first != with.end() && last != with.end());
    EXPECT_GT(last - first, 50);
    Lines without(with.begin(), first);
    without.insert(without.end(), last + 1, with.end());
    EXPECT_EQ(without, plain);
    EXPECT_EQ(with.end() - last, 3);  // behind it the end of the matrix, and the flush
    EXPECT_EQ(null_window(window)->swaps, swaps + 1);
}

TEST_F(MarksTest, StateIsPutBack) {
    for (const int wireframe : {0, 1}) {
        session.display_wireframe = wireframe;
        session.display_skeleton = wireframe;
        session.display_points = wireframe;
        *marks() = Marks{};
        frame();
        const auto state = [] {
            return std::tuple(recording_gl::enabled(GL_LIGHTING), recording_gl::enabled(GL_TEXTURE_2D),
                              recording_gl::enabled(GL_BLEND), recording_gl::enabled(GL_DEPTH_TEST),
                              recording_gl::enabled(GL_LINE_STIPPLE), recording_gl::enabled(GL_POLYGON_OFFSET_LINE),
                              recording_gl::current_colour(), recording_gl::polygon_modes(),
                              recording_gl::blend_factors(), recording_gl::depth_mask(), recording_gl::matrix_mode(),
                              recording_gl::modelview(), recording_gl::projection(), recording_gl::modelview_depth(),
                              recording_gl::line_width());
        };
        const auto plain = state();
        const auto flags = std::tuple(session.display_gouraud, session.display_normals, session.display_quadlines);
        mark_everything();
        frame();
        EXPECT_EQ(state(), plain);
        EXPECT_EQ(recording_gl::attribute_depth(), 0);
        EXPECT_EQ(std::tuple(session.display_gouraud, session.display_normals, session.display_quadlines), flags);
        EXPECT_EQ(recording_gl::point_size(), 1.0f);
    }
    EXPECT_TRUE(recording_gl::errors().empty()) << recording_gl::joined(recording_gl::errors());
}

TEST_F(MarksTest, PointsAreSquaresOfTwoSizes) {
    marks()->models = {marked({5, 77}, {})};
    const Lines with = frame();
    Lines points;
    for (const std::string& line : with) {
        const bool size = line.rfind("glPointSize", 0) == 0;
        if (size || (!points.empty() && (line == "glBegin GL_POINTS" || line.rfind("glVertex3f", 0) == 0))) {
            points.push_back(line);
        }
    }
    // The mirrored half has the point at the same place: it lies in the plane of the mirror.
    const Lines once = {"glBegin GL_POINTS", "glVertex3f 0 0 20", "glVertex3f 0 0 20"};
    Lines wanted = {"glPointSize 8"};
    drawing_scene::append(wanted, once);
    wanted.push_back("glPointSize 5");
    drawing_scene::append(wanted, once);
    EXPECT_EQ(points, wanted);
    EXPECT_EQ(recording_gl::count_lines("glDisable GL_DEPTH_TEST"), 1);
}

// Edges are sent as the surfaces are, in both halves and both tones, but without the colours of points.
TEST_F(MarksTest, EdgesAreTheSurfacesAsLines) {
    const size_t plain = frame().size();
    marks()->models = {marked({}, {"body"})};
    frame();
    const size_t vertices = static_cast<size_t>(recording_gl::count_calls("glVertex3f"));
    *marks() = Marks{};
    frame();
    const auto of_frame = static_cast<size_t>(recording_gl::count_calls("glVertex3f"));
    const size_t of_lines = 2 * 2;  // the line and its mirrored half belong to no edge
    EXPECT_EQ(vertices, of_frame + 2 * (of_frame - of_lines));
    EXPECT_GT(plain, 0u);
    marks()->models = {marked({}, {"body"})};
    const Lines with = frame();
    const auto from = std::find(with.begin(), with.end(), "glEnable GL_POLYGON_OFFSET_LINE");
    const auto to = std::find(with.begin(), with.end(), "glPopAttrib");
    for (auto line = from; line != to; ++line) { EXPECT_NE(line->rfind("glColor4f", 0), 0u) << *line; }
}

TEST_F(MarksTest, HiddenLayersHaveNoEdgesAndAreInNoPass) {
    marks()->edges = true;
    model_find_layer(model, "body")->hidden = 1;
    frame();
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 0);
    EXPECT_EQ(session.triangles_drawn, 0);
    model_find_layer(model, "body")->hidden = 0;
    frame();
    EXPECT_GT(recording_gl::count_calls("glVertex3f"), 0);
}

TEST_F(MarksTest, DotsOfHiddenLayersAreNotDrawn) {
    session.display_points = 1;
    frame();
    const int all = recording_gl::count_calls("glRasterPos3f");
    EXPECT_EQ(all, 6);
    model_add_layer(model, "other", 1, 1, 1, 0, 0, 0);
    const int32_t kept[2] = {1, 2};
    model_add_line(model, "other", 2, kept);
    model_find_layer(model, "body")->hidden = 1;
    frame();
    EXPECT_EQ(recording_gl::count_calls("glRasterPos3f"), 3);
}

TEST_F(MarksTest, AGridHasNotTooManyLines) {
    for (const float step : {1e-30f, 0.001f, 7.0f, 1e9f}) {
        *marks() = Marks{};
        frame();
        const int plain = recording_gl::count_calls("glVertex3f");
        marks()->grid_step = step;
        frame();
        const int lines_drawn = (recording_gl::count_calls("glVertex3f") - plain) / 4;  // two tones, two ends
        EXPECT_GE(lines_drawn, 2 * 3) << step;
        EXPECT_LE(lines_drawn, 2 * 201) << step;
    }
}

TEST_F(MarksTest, PicturesHaveNoneUnlessAsked) {
    EXPECT_FALSE(marks_stay_out_of_pictures());
    marks()->edges = true;
    EXPECT_TRUE(marks_stay_out_of_pictures());
    recording_gl::clear();
    frame_draw_unswapped();
    EXPECT_EQ(recording_gl::count_calls("glPushAttrib"), 0);
    marks()->in_pictures = true;
    EXPECT_FALSE(marks_stay_out_of_pictures());
    frame_draw_unswapped();
    EXPECT_EQ(recording_gl::count_calls("glPushAttrib"), 1);
}

}  // namespace
}  // namespace pelt
