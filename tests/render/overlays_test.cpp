// Overlays as exact call sequences, and the OpenGL state that each finds and leaves.
#include "render/overlays.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/drawing_scene.h"

namespace pelt {
namespace {

using drawing_scene::append;
using drawing_scene::gl;
using drawing_scene::gl_vertex;
using drawing_scene::Lines;
using drawing_scene::Scene;
using recording_gl::lines;

const char* const GLYPHS[10] = {"003e4141414141414141413e", "000e04040404040404040c04", "003f2120100806012121211e",
                                "001e210101010e010101211e", "0004040404047f4424140c04", "001e21010101be202020203f",
                                "001e212121213e202020211e", "00101008080404020201013f", "001e212121211e212121211e",
                                "001e210101011f212121211e"};

std::string glyph_line(int digit) { return std::string("glBitmap 8 12 -2 0 8 0 ") + GLYPHS[digit]; }

std::string colour_line(int row) {
    const char* const colours[6] = {"1 1 1 1", "1 1 0 1", "0 1 0 1", "1 0 1 1", "0 1 1 1", "1 1 1 1"};
    return std::string("glColor4f ") + colours[row];
}

class Overlay : public testing::Test {
protected:
    ~Overlay() override { EXPECT_TRUE(recording_gl::errors().empty()); }

    void set_switches(bool lighting, bool texture, bool blend) {
        (lighting ? glEnable : glDisable)(GL_LIGHTING);
        (texture ? glEnable : glDisable)(GL_TEXTURE_2D);
        (blend ? glEnable : glDisable)(GL_BLEND);
        glColor4f(0.25f, 0.5f, 0.75f, 0.125f);
        recording_gl::clear();
    }

    // Runs the check in each combination of the three switches, with a colour that no overlay uses.
    template <typename Check>
    void in_every_state(Check check) {
        for (int bits = 0; bits < 8; ++bits) {
            SCOPED_TRACE(bits);
            const bool lighting = bits & 1, texture = bits & 2, blend = bits & 4;
            set_switches(lighting, texture, blend);
            check(lighting, texture, blend);
            EXPECT_EQ(recording_gl::enabled(GL_LIGHTING), lighting);
            EXPECT_EQ(recording_gl::enabled(GL_TEXTURE_2D), texture);
            EXPECT_EQ(recording_gl::enabled(GL_BLEND), blend);
            EXPECT_EQ(recording_gl::current_colour(), (std::array<float, 4>{0.25f, 0.5f, 0.75f, 0.125f}));
        }
    }

    Lines points_lines() {
        recording_gl::clear();
        points_draw(&scene.session, scene.model);
        return lines();
    }

    Lines line_lines(Line* line) {
        recording_gl::clear();
        line_draw(&scene.session, scene.model, line);
        return lines();
    }

    template <typename Primitive>
    Primitive* last(KeyedList& list) {
        Primitive* found = nullptr;
        for (Primitive& primitive : list_elements<Primitive>(list)) { found = &primitive; }
        return found;
    }

    Line* add_line(const std::vector<int32_t>& ids) {
        EXPECT_EQ(model_add_line(scene.model, "body", static_cast<int>(ids.size()), ids.data()), 1);
        return last<Line>(scene.layer->lines);
    }

    Polygon* add_polygon(const std::vector<int32_t>& ids) {
        EXPECT_EQ(model_add_polygon(scene.model, "body", static_cast<int>(ids.size()), ids.data(), nullptr), 1);
        return last<Polygon>(scene.layer->polygons);
    }

    Scene scene;
};

using PointsDraw = Overlay;

TEST_F(PointsDraw, SendsADotAndANumberForEachPointAndForTheOrigin) {
    scene.add_point(3, {1, 2, 3});
    scene.add_point(10, {-1, 0.5f, 0});
    scene.session.points_color_index = 2;
    EXPECT_EQ(points_lines(),
              (Lines{"glDisable GL_LIGHTING", colour_line(2), "glBegin GL_POINTS", "glVertex3f 0 0 0",
                     "glVertex3f 1 2 3", "glVertex3f -1 0.5 0", "glEnd", "glPixelStorei GL_UNPACK_ALIGNMENT 1",
                     "glRasterPos3f 0 0 0", glyph_line(0), "glRasterPos3f 1 2 3", glyph_line(3),
                     "glRasterPos3f -1 0.5 0", glyph_line(1), glyph_line(0), "glEnable GL_LIGHTING"}));
}

TEST_F(PointsDraw, WithoutPointsStillMarksTheOrigin) {
    EXPECT_EQ(points_lines(), (Lines{"glDisable GL_LIGHTING", colour_line(0), "glBegin GL_POINTS", "glVertex3f 0 0 0",
                                     "glEnd", "glPixelStorei GL_UNPACK_ALIGNMENT 1", "glRasterPos3f 0 0 0",
                                     glyph_line(0), "glEnable GL_LIGHTING"}));
}

TEST_F(PointsDraw, EachColourIndexIsItsRow) {
    for (int row = 0; row <= 5; ++row) {
        scene.session.points_color_index = row;
        EXPECT_EQ(points_lines()[1], colour_line(row));
        EXPECT_EQ(recording_gl::count_calls("glColor4f"), 1);
    }
}

TEST_F(PointsDraw, ACycleRunsThroughFiveRowsAndStartsAnewForTheNumbers) {
    scene.session.points_color_index = -1;
    for (int id = 1; id <= 7; ++id) { scene.add_point(id, {static_cast<float>(id), 0, 0}); }
    const int rows[7] = {0, 1, 2, 3, 4, 0, 1};
    Lines expected{"glDisable GL_LIGHTING", colour_line(0), "glBegin GL_POINTS", "glVertex3f 0 0 0"};
    for (int i = 0; i < 7; ++i) { append(expected, {colour_line(rows[i]), gl("glVertex3f", i + 1, 0, 0)}); }
    // No colour for the origin's digit: it has that of the last point.
    append(expected, {"glEnd", "glPixelStorei GL_UNPACK_ALIGNMENT 1", "glRasterPos3f 0 0 0", glyph_line(0)});
    for (int i = 0; i < 7; ++i) {
        append(expected, {colour_line(rows[i]), gl("glRasterPos3f", i + 1, 0, 0), glyph_line(i + 1)});
    }
    expected.push_back("glEnable GL_LIGHTING");
    EXPECT_EQ(points_lines(), expected);
}

TEST_F(PointsDraw, APointIdOfTenDrawsOneAndZeroEightPixelsApart) {
    scene.add_point(10, {0, 0, 0});
    points_lines();
    std::vector<recording_gl::Call> glyphs;
    for (const recording_gl::Call& call : recording_gl::calls()) {
        if (std::string(recording_gl::function_name(call.function)) == "glBitmap") { glyphs.push_back(call); }
    }
    ASSERT_EQ(glyphs.size(), 3u);  // the origin's first
    EXPECT_EQ(recording_gl::call_text(glyphs[1]), glyph_line(1));
    EXPECT_EQ(recording_gl::call_text(glyphs[2]), glyph_line(0));
    EXPECT_EQ(glyphs[1].arguments[4], 8.0);
}

TEST_F(PointsDraw, EveryDigitHasItsGlyph) {
    scene.add_point(1234567890, {0, 0, 0});
    const Lines all = points_lines();
    const int digits[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 0};
    for (size_t i = 0; i < 10; ++i) { EXPECT_EQ(all[10 + i], glyph_line(digits[i])); }
}

TEST_F(PointsDraw, AMinusSignIsPassedOver) {
    Point* point = list_add<Point>(&scene.model->points, int32_t{-12});
    ASSERT_NE(point, nullptr);
    *point = Point{};
    point->state_index = -1;
    const Lines all = points_lines();
    EXPECT_EQ(Lines(all.end() - 4, all.end()),
              (Lines{"glRasterPos3f 0 0 0", glyph_line(1), glyph_line(2), "glEnable GL_LIGHTING"}));
}

TEST_F(PointsDraw, PosedPositionsWinForDotAndNumber) {
    scene.add_point(4, {1, 1, 1});
    scene.pose(4, {5, 6, 7}, {0, 0, 1});
    points_lines();
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 5 6 7"), 1);
    EXPECT_EQ(recording_gl::count_lines("glRasterPos3f 5 6 7"), 1);
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 1 1 1"), 0);
}

TEST_F(PointsDraw, EndsWithLightingOnAndLeavesTextureBlendAndItsColour) {
    scene.session.points_color_index = 4;
    for (bool on : {false, true}) {
        set_switches(on, on, on);
        points_draw(&scene.session, scene.model);
        EXPECT_TRUE(recording_gl::enabled(GL_LIGHTING));
        EXPECT_EQ(recording_gl::enabled(GL_TEXTURE_2D), on);
        EXPECT_EQ(recording_gl::enabled(GL_BLEND), on);
        EXPECT_EQ(recording_gl::current_colour(), (std::array<float, 4>{0, 1, 1, 1}));
    }
}

TEST_F(PointsDraw, ColourIndicesOutsideTheTableAreDropped) {
    for (int32_t kept : {-1, 0, 5}) {
        session_set_points_color(&scene.session, kept);
        EXPECT_EQ(scene.session.points_color_index, kept);
        for (int32_t dropped :
             {6, -2, 1000, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
            session_set_points_color(&scene.session, dropped);
            EXPECT_EQ(scene.session.points_color_index, kept);
        }
    }
    session_set_points_color(nullptr, 1);
}

TEST_F(PointsDraw, NullsDrawNothing) {
    recording_gl::clear();
    points_draw(nullptr, scene.model);
    points_draw(&scene.session, nullptr);
    skeleton_draw(nullptr, scene.model);
    skeleton_draw(&scene.session, nullptr);
    line_draw(&scene.session, scene.model, nullptr);
    triangle_normals_draw(&scene.session, scene.model, nullptr);
    polygon_normals_draw(&scene.session, scene.model, nullptr);
    patch_normals_draw(&scene.session, scene.model, nullptr, 0, nullptr, nullptr);
    EXPECT_TRUE(lines().empty());
}

using SkeletonDraw = Overlay;

Lines joint_lines(const Vec3& place, float s) {
    return {"glPushMatrix",
            gl("glTranslatef", place.x, place.y, place.z),
            "glBegin GL_LINES",
            "glColor3f 1 0 1",
            gl("glVertex3f", -s, 0, 0),
            gl("glVertex3f", s, 0, 0),
            gl("glVertex3f", 0, -s, 0),
            gl("glVertex3f", 0, s, 0),
            gl("glVertex3f", 0, 0, -s),
            gl("glVertex3f", 0, 0, s),
            "glEnd",
            "glPopMatrix"};
}

Lines bone_lines(const Vec3& from, const Vec3& to) {
    return {"glBegin GL_LINES", "glColor3f 1 0.5 0.5", gl_vertex(from), gl_vertex(to), "glEnd"};
}

TEST_F(SkeletonDraw, MarksEachJointAndDrawsABoneToItsParent) {
    model_add_joint(scene.model, "arm", 10, 5, 0, "root", 0);  // its parent stands later in the list
    model_add_joint(scene.model, "root", 10, 0, 0, "world", 0);
    scene.session.radius = 40.0f;
    recording_gl::clear();
    skeleton_draw(&scene.session, scene.model);
    Lines expected{"glDisable GL_LIGHTING", "glDisable GL_TEXTURE_2D"};
    append(expected, joint_lines({10, 5, 0}, 1));
    append(expected, bone_lines({10, 5, 0}, {10, 0, 0}));
    append(expected, joint_lines({10, 0, 0}, 1));
    expected.push_back("glEnable GL_LIGHTING");
    EXPECT_EQ(lines(), expected);
}

TEST_F(SkeletonDraw, FollowsTheEvaluatedPositions) {
    model_add_joint(scene.model, "root", 1, 2, 3, "world", 0);
    joint_state(&scene.session, scene.model, model_find_joint(scene.model, "root"))->position = {7, 8, 9};
    recording_gl::clear();
    skeleton_draw(&scene.session, scene.model);
    EXPECT_EQ(recording_gl::count_lines("glTranslatef 7 8 9"), 1);
}

TEST_F(SkeletonDraw, ItsMarksAreAFortiethOfTheRadius) {
    model_add_joint(scene.model, "root", 0, 0, 0, "world", 0);
    scene.session.radius = 10.0f;
    recording_gl::clear();
    skeleton_draw(&scene.session, scene.model);
    EXPECT_EQ(recording_gl::count_lines("glVertex3f -0.25 0 0"), 1);
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 0 0 0.25"), 1);
}

TEST_F(SkeletonDraw, WithoutJointsOnlyTouchesTheSwitches) {
    recording_gl::clear();
    skeleton_draw(&scene.session, scene.model);
    EXPECT_EQ(lines(), (Lines{"glDisable GL_LIGHTING", "glDisable GL_TEXTURE_2D", "glEnable GL_LIGHTING"}));
}

TEST_F(SkeletonDraw, EndsWithLightingOnTextureOffAndItsColour) {
    model_add_joint(scene.model, "root", 0, 0, 0, "world", 0);
    for (bool on : {false, true}) {
        set_switches(on, on, on);
        skeleton_draw(&scene.session, scene.model);
        EXPECT_TRUE(recording_gl::enabled(GL_LIGHTING));
        EXPECT_FALSE(recording_gl::enabled(GL_TEXTURE_2D));
        EXPECT_EQ(recording_gl::enabled(GL_BLEND), on);
        EXPECT_EQ(recording_gl::current_colour(), (std::array<float, 4>{1, 0, 1, 1}));
        EXPECT_EQ(recording_gl::modelview_depth(), 1);
    }
}

TEST_F(SkeletonDraw, JointsInACircleLoseTheBoneThatClosesIt) {
    model_add_joint(scene.model, "one", 1, 0, 0, "two", 0);
    model_add_joint(scene.model, "two", 2, 0, 0, "one", 0);
    recording_gl::clear();
    skeleton_draw(&scene.session, scene.model);
    EXPECT_EQ(recording_gl::count_lines("glColor3f 1 0 1"), 2);
    EXPECT_EQ(recording_gl::count_lines("glColor3f 1 0.5 0.5"), 1);
}

using LineDraw = Overlay;

TEST_F(LineDraw, SendsOneStripInTheColourThatIsCurrent) {
    scene.add_point(1, {1, 0, 0});
    scene.add_point(2, {2, 0, 0});
    scene.add_point(3, {3, 0, 0});
    Line* line = add_line({1, 3, 2, 1});
    in_every_state([&](bool lighting, bool texture, bool) {
        line_draw(&scene.session, scene.model, line);
        Lines expected{"glGetIntegerv GL_LIGHTING", "glGetIntegerv GL_TEXTURE_2D",
                       "glDisable GL_LIGHTING",     "glDisable GL_TEXTURE_2D",
                       "glBegin GL_LINE_STRIP",     "glVertex3f 1 0 0",
                       "glVertex3f 3 0 0",          "glVertex3f 2 0 0",
                       "glVertex3f 1 0 0",          "glEnd"};
        if (lighting) { expected.push_back("glEnable GL_LIGHTING"); }
        if (texture) { expected.push_back("glEnable GL_TEXTURE_2D"); }
        EXPECT_EQ(lines(), expected);
    });
}

TEST_F(LineDraw, AnimatedPointsMoveTheirLines) {
    scene.add_point(1, {1, 0, 0});
    scene.add_point(2, {2, 0, 0});
    scene.pose(2, {0, 9, 0}, {0, 0, 1});
    line_lines(add_line({1, 2}));
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 0 9 0"), 1);
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 2 0 0"), 0);
}

TEST_F(LineDraw, WithAMissingPointDrawsNothing) {
    scene.add_point(1, {1, 0, 0});
    scene.add_point(2, {2, 0, 0});
    scene.add_point(3, {3, 0, 0});
    Line* line = add_line({1, 2, 3});
    model_remove_point(scene.model, 3);
    EXPECT_TRUE(line_lines(line).empty());
}

TEST_F(LineDraw, AVertexCountBeyondTheListDrawsTheList) {
    scene.add_point(1, {1, 0, 0});
    scene.add_point(2, {2, 0, 0});
    Line* line = add_line({1, 2});
    line->vertex_count = 400;
    line_lines(line);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 2);
    line->vertex_count = 1;
    line_lines(line);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 1);
    for (int16_t none : {int16_t{0}, int16_t{-3}}) {
        line->vertex_count = none;
        EXPECT_TRUE(line_lines(line).empty());
    }
}

TEST_F(LineDraw, NeverSendsMoreThanFiveHundredAndTwelvePoints) {
    scene.add_point(1, {1, 0, 0});
    Line* line = add_line(std::vector<int32_t>(512, 1));
    line_lines(line);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 512);
    for (int i = 0; i < 100; ++i) { *static_cast<int32_t*>(list_add(&line->vertices, int32_t{1000 + i})) = 1; }
    line->vertex_count = 612;
    line_lines(line);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 512);
}

using NormalsDraw = Overlay;

Lines stroke_lines(const char* colour, const std::vector<Vec3>& places, const std::vector<Vec3>& directions,
                   float length, bool lighting = false, bool texture = false, bool blend = false) {
    Lines out{"glGetIntegerv GL_LIGHTING",
              "glGetIntegerv GL_TEXTURE_2D",
              "glGetFloatv GL_CURRENT_COLOR",
              "glGetBooleanv GL_BLEND",
              "glDisable GL_LIGHTING",
              "glDisable GL_TEXTURE_2D",
              "glDisable GL_BLEND",
              colour,
              "glBegin GL_LINES"};
    for (size_t i = 0; i < places.size(); ++i) {
        const Vec3 &p = places[i], &n = directions[i];
        out.push_back(gl_vertex(p));
        out.push_back(gl("glVertex3f", p.x + length * n.x, p.y + length * n.y, p.z + length * n.z));
    }
    out.push_back("glEnd");
    if (lighting) { out.push_back("glEnable GL_LIGHTING"); }
    if (texture) { out.push_back("glEnable GL_TEXTURE_2D"); }
    if (blend) { out.push_back("glEnable GL_BLEND"); }
    out.push_back("glColor4f 0.25 0.5 0.75 0.125");
    return out;
}

// A triangle with sides 3, 4, 5: its mean edge is 4. The fourth point stands far off.
class Strokes : public NormalsDraw {
protected:
    Strokes() {
        scene.add_curved_points();
        for (int i = 0; i < 4; ++i) {
            scene.point(1 + i)->position = places[static_cast<size_t>(i)];
            scene.point(1 + i)->normal = own[static_cast<size_t>(i)];
            scene.point(11 + i)->normal = named[static_cast<size_t>(i)];
        }
    }
    std::vector<Vec3> first(const std::vector<Vec3>& all, int count) { return {all.begin(), all.begin() + count}; }

    const std::vector<Vec3> places{{0, 0, 0}, {3, 0, 0}, {0, 4, 0}, {30, 40, 0}};
    const std::vector<Vec3> own{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, -1, 0}};
    const std::vector<Vec3> named{{0, 0, 1}, {0, 0, -1}, {0, 1, 0}, {-1, 0, 0}};
};

TEST_F(Strokes, OfATriangleAreYellowAndHalfItsMeanEdge) {
    Triangle* triangle = scene.add_primitive(0, 0);
    in_every_state([&](bool lighting, bool texture, bool blend) {
        triangle_normals_draw(&scene.session, scene.model, triangle);
        EXPECT_EQ(lines(),
                  stroke_lines("glColor3f 1 1 0", first(places, 3), first(named, 3), 2.0f, lighting, texture, blend));
    });
}

TEST_F(Strokes, OfAQuadAreFourWithTheLengthOfCorners012) {
    Triangle* quad = scene.add_primitive(1, 0);
    set_switches(true, false, false);
    triangle_normals_draw(&scene.session, scene.model, quad);
    EXPECT_EQ(lines(), stroke_lines("glColor3f 1 1 0", places, named, 2.0f, true));
}

TEST_F(Strokes, FollowPosedPointsAndNormals) {
    Triangle* triangle = scene.add_primitive(0, 0);
    scene.pose(1, {0, 0, 8}, {0, 0, 0});
    scene.pose(12, {0, 0, 0}, {1, 0, 0});
    recording_gl::clear();
    triangle_normals_draw(&scene.session, scene.model, triangle);
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 0 0 8"), 1);
    const float length = (std::sqrt(73.0f) + 5.0f + std::sqrt(80.0f)) / 3.0f * 0.5f;
    EXPECT_EQ(recording_gl::count_lines(gl("glVertex3f", 3.0f + length, 0, 0)), 1);
}

TEST_F(Strokes, OfADegenerateTriangleAreDots) {
    for (int id : {1, 2, 3}) { scene.point(id)->position = {2, 2, 2}; }
    Triangle* triangle = scene.add_primitive(0, 0);
    recording_gl::clear();
    triangle_normals_draw(&scene.session, scene.model, triangle);
    EXPECT_EQ(recording_gl::count_lines("glVertex3f 2 2 2"), 6);
}

TEST_F(Strokes, OfATriangleWithAMissingReferenceAreNotDrawn) {
    Triangle* quad = scene.add_primitive(1, 0);
    quad->points[3] = 999;
    Triangle* triangle = scene.add_primitive(0, 0);
    triangle->normals[1] = -4;
    recording_gl::clear();
    triangle_normals_draw(&scene.session, scene.model, quad);
    triangle_normals_draw(&scene.session, scene.model, triangle);
    EXPECT_TRUE(lines().empty());
}

TEST_F(Strokes, OfAPolygonAreYellowWithTheLengthOfItsFirstThree) {
    Polygon* polygon = add_polygon({1, 2, 3, 4});
    in_every_state([&](bool lighting, bool texture, bool blend) {
        polygon_normals_draw(&scene.session, scene.model, polygon);
        EXPECT_EQ(lines(), stroke_lines("glColor3f 1 1 0", places, own, 2.0f, lighting, texture, blend));
    });
}

TEST_F(Strokes, OfAPolygonTakeTheNormalsThatItNames) {
    const int32_t ids[3] = {1, 2, 3}, normals[3] = {11, 12, 13};
    ASSERT_EQ(model_add_polygon(scene.model, "body", 3, ids, normals), 1);
    set_switches(false, false, false);
    polygon_normals_draw(&scene.session, scene.model, last<Polygon>(scene.layer->polygons));
    EXPECT_EQ(lines(), stroke_lines("glColor3f 1 1 0", first(places, 3), first(named, 3), 2.0f));
}

TEST_F(Strokes, OfAPolygonUnderThreeVerticesAreNotDrawn) {
    Polygon* polygon = add_polygon({1, 2, 3, 4});
    for (int16_t count : {int16_t{2}, int16_t{1}, int16_t{0}, int16_t{-1}}) {
        polygon->vertex_count = count;
        recording_gl::clear();
        polygon_normals_draw(&scene.session, scene.model, polygon);
        EXPECT_TRUE(lines().empty());
    }
}

TEST_F(Strokes, OfAPolygonThatClaimsMoreVerticesThanItHasAreThoseItHas) {
    Polygon* polygon = add_polygon({1, 2, 3});
    polygon->vertex_count = 32767;
    set_switches(false, false, false);
    polygon_normals_draw(&scene.session, scene.model, polygon);
    EXPECT_EQ(lines(), stroke_lines("glColor3f 1 1 0", first(places, 3), first(own, 3), 2.0f));
    list_clear(&polygon->vertices);
    recording_gl::clear();
    polygon_normals_draw(&scene.session, scene.model, polygon);
    EXPECT_TRUE(lines().empty());
}

TEST_F(Strokes, OfAPolygonWithAMissingPointAreNotDrawn) {
    Polygon* polygon = add_polygon({1, 2, 3, 4});
    model_remove_point(scene.model, 4);
    recording_gl::clear();
    polygon_normals_draw(&scene.session, scene.model, polygon);
    EXPECT_TRUE(lines().empty());
}

TEST_F(Strokes, OfAPatchAreCyanAndAQuarterOfTheMeanEdgeOfItsCorners) {
    Triangle* triangle = scene.add_primitive(0, 3);
    const std::vector<Vec3> vertices{{1, 1, 1}, {2, 1, 1}, {0, 0, 5}, {9, 9, 9}};
    const std::vector<Vec3> directions{{1, 0, 0}, {0, 0, 1}, {0, 1, 0}, {0, -1, 0}};
    in_every_state([&](bool lighting, bool texture, bool blend) {
        patch_normals_draw(&scene.session, scene.model, triangle, 4, vertices.data(), directions.data());
        EXPECT_EQ(lines(), stroke_lines("glColor3f 0 1 1", vertices, directions, 1.0f, lighting, texture, blend));
    });
}

TEST_F(Strokes, OfAPatchWithAMissingCornerAreNotDrawn) {
    Triangle* triangle = scene.add_primitive(0, 3);
    triangle->points[2] = 999;
    const Vec3 vertex{1, 1, 1};
    recording_gl::clear();
    patch_normals_draw(&scene.session, scene.model, triangle, 1, &vertex, &vertex);
    EXPECT_TRUE(lines().empty());
}

TEST_F(Strokes, NonFiniteCoordinatesAreDrawnAsTheyCome) {
    const float bad[3] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::max()};
    Triangle* triangle = scene.add_primitive(0, 0);
    for (float value : bad) {
        scene.point(2)->position = {value, value, value};
        recording_gl::clear();
        triangle_normals_draw(&scene.session, scene.model, triangle);
        EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 6);
        points_draw(&scene.session, scene.model);
    }
}

TEST(MeanEdge, IsAThirdOfTheThreeLengths) {
    const Vec3 a{0, 0, 0}, b{-3, 0, 0}, c{0, 4, 0};
    EXPECT_EQ(triangle_mean_edge(&a, &b, &c), 4.0f);
    EXPECT_EQ(triangle_mean_edge(&c, &a, &b), 4.0f);
    EXPECT_EQ(triangle_mean_edge(&a, &a, &a), 0.0f);
    const Vec3 far{1, 2, 2};
    EXPECT_FLOAT_EQ(triangle_mean_edge(&a, &far, &a), 2.0f);
}

}  // namespace
}  // namespace pelt
