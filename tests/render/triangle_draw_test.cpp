#include "render/triangle_draw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "support/drawing_scene.h"

namespace pelt {
namespace {

using drawing_scene::append;
using drawing_scene::gl;
using drawing_scene::Lines;
using drawing_scene::Scene;
using recording_gl::lines;

// Corner n of the scene (1 to 4) stands at (n, 10 n, 0), its normal, held by point 10 + n, is (0, n, 1), its texture
// coordinates are (n, n / 8), its colour bytes n * 51, n * 20, 255, n * 10.
class TriangleDraw : public testing::Test {
protected:
    void SetUp() override {
        for (int n = 1; n <= 4; ++n) {
            const auto f = static_cast<float>(n);
            scene.add_point(n, {f, 10 * f, 0}, {9, 9, 9});
            scene.add_point(10 + n, {0, 0, 0}, {0, f, 1});
            Point* point = scene.point(n);
            point->gouraud[0] = static_cast<unsigned char>(n * 51);
            point->gouraud[1] = static_cast<unsigned char>(n * 20);
            point->gouraud[2] = 255;
            point->gouraud[3] = static_cast<unsigned char>(n * 10);
        }
        recording_gl::clear();
    }
    void TearDown() override { EXPECT_EQ(recording_gl::joined(recording_gl::errors()), ""); }

    Triangle* add(int quad, int curve_type = 0) {
        Triangle* triangle = scene.add_primitive(quad, 0);
        triangle->curve_type = static_cast<int16_t>(curve_type);
        for (int i = 0; i < 4; ++i) {
            triangle->uvs[i][0] = static_cast<float>(i + 1);
            triangle->uvs[i][1] = static_cast<float>(i + 1) / 8;
        }
        return triangle;
    }

    Polygon* add_polygon(int count) {
        int32_t points[8], normals[8];
        for (int i = 0; i < count; ++i) {
            points[i] = i % 4 + 1;
            normals[i] = i % 4 + 11;
        }
        EXPECT_EQ(model_add_polygon(scene.model, "body", count, points, normals), 1);
        Polygon* last = nullptr;
        for (Polygon& polygon : list_elements<Polygon>(scene.layer->polygons)) { last = &polygon; }
        int n = 0;
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(last->vertices)) {
            const int corner = n++ % 4 + 1;
            vertex.u = static_cast<float>(corner);
            vertex.v = static_cast<float>(corner) / 8;
        }
        return last;
    }

    int32_t draw(Triangle* triangle, bool textured, bool mirrored, bool reflection = false) {
        recording_gl::clear();
        return triangle_draw(&scene.session, scene.model, triangle, textured, mirrored, reflection);
    }
    int32_t draw(Polygon* polygon, bool textured, bool mirrored, bool reflection = false) {
        recording_gl::clear();
        return polygon_draw(&scene.session, scene.model, polygon, textured, mirrored, reflection);
    }

    // The calls of one corner.
    static Lines vertex(int n, bool textured = false, bool gouraud = false) {
        Lines out;
        if (textured) { out.push_back(gl("glTexCoord2f", n, static_cast<float>(n) / 8)); }
        if (gouraud) {
            constexpr float scale = 0.00392157f;
            out.push_back(gl("glColor4f", static_cast<float>(n * 51) * scale, static_cast<float>(n * 20) * scale,
                             255.0f * scale, 1.0f - static_cast<float>(n * 10) * scale));
        }
        append(out, {gl("glNormal3f", 0, n, 1), gl("glVertex3f", n, 10 * n, 0)});
        return out;
    }
    static Lines primitive(const char* mode, std::initializer_list<int> corners, bool textured = false,
                           bool gouraud = false) {
        Lines out = {std::string("glBegin ") + mode};
        for (const int n : corners) { append(out, vertex(n, textured, gouraud)); }
        out.push_back("glEnd");
        return out;
    }
    // Two triangles with the diagonal hidden, corners as they are sent.
    static Lines split_quad(std::initializer_list<int> corners, bool textured = false, bool gouraud = false) {
        Lines out = {"glBegin GL_TRIANGLES"};
        int i = 0;
        for (const int n : corners) {
            out.push_back("glEdgeFlag GL_TRUE");
            if (i++ % 3 == 1) { out.push_back("glEdgeFlag GL_FALSE"); }
            append(out, vertex(n, textured, gouraud));
        }
        out.push_back("glEnd");
        return out;
    }

    Scene scene;
};

TEST_F(TriangleDraw, ATriangleReversesItsStoredOrder) {
    EXPECT_EQ(draw(add(0), false, false), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 3, 2}));
}

TEST_F(TriangleDraw, AMirroredTriangleKeepsItsStoredOrder) {
    EXPECT_EQ(draw(add(0), false, true), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 2, 3}));
}

TEST_F(TriangleDraw, ATexturedTriangleSendsItsCoordinates) {
    EXPECT_EQ(draw(add(0), true, false), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 3, 2}, true));
    EXPECT_EQ(draw(add(0), true, true), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 2, 3}, true));
}

TEST_F(TriangleDraw, GouraudColoursTakeAFullByteAsFullIntensityAndTheFourthAsTransparency) {
    scene.model->has_gouraud = 1;
    EXPECT_EQ(draw(add(0), true, false), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 3, 2}, true, true));
    EXPECT_NEAR(recording_gl::current_colour()[0], 2 * 51 / 255.0, 1e-5);  // of the last corner, which stays current
    EXPECT_NEAR(recording_gl::current_colour()[3], 1 - 20 / 255.0, 1e-5);
}

TEST_F(TriangleDraw, GouraudColoursOfAModelWithoutThemAreNeverSent) {
    scene.session.display_gouraud = 1;
    draw(add(0), false, false);
    draw(add(1), false, true);
    draw(add_polygon(4), false, true);
    EXPECT_EQ(recording_gl::count_calls("glColor4f"), 0);
}

TEST_F(TriangleDraw, GouraudColoursSwitchedOffAreNotSent) {
    scene.model->has_gouraud = 1;
    scene.session.display_gouraud = 0;
    draw(add(0), false, false);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 3, 2}));
}

TEST_F(TriangleDraw, AQuadIsTwoTrianglesThatHideItsDiagonal) {
    EXPECT_EQ(draw(add(1), false, false), 2);
    EXPECT_EQ(lines(), split_quad({1, 3, 2, 4, 2, 3}));
}

TEST_F(TriangleDraw, AMirroredQuadKeepsItsStoredOrder) {
    EXPECT_EQ(draw(add(1), false, true), 2);
    EXPECT_EQ(lines(), split_quad({1, 2, 3, 4, 3, 2}));
}

TEST_F(TriangleDraw, ATexturedGouraudQuadSendsBothBeforeTheNormal) {
    scene.model->has_gouraud = 1;
    EXPECT_EQ(draw(add(1), true, false), 2);
    EXPECT_EQ(lines(), split_quad({1, 3, 2, 4, 2, 3}, true, true));
}

TEST_F(TriangleDraw, AQuadWithQuadlinesIsAStrip) {
    scene.session.display_quadlines = 1;
    EXPECT_EQ(draw(add(1), false, false), 2);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLE_STRIP", {1, 3, 2, 4}));
    EXPECT_EQ(draw(add(1), true, true), 2);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLE_STRIP", {1, 2, 3, 4}, true));
}

// In line mode an edge shows when the flag in force at its first vertex is set.
TEST_F(TriangleDraw, InLineModeAQuadShowsItsFourEdgesAndWithQuadlinesItsDiagonal) {
    draw(add(1), false, true);
    std::vector<int> sent;
    std::vector<bool> flags;
    bool flag = true;
    for (const recording_gl::Call& call : recording_gl::calls()) {
        const std::string name = recording_gl::function_name(call.function);
        if (name == "glEdgeFlag") { flag = call.arguments[0] != 0.0; }
        if (name != "glVertex3f") { continue; }
        sent.push_back(static_cast<int>(call.arguments[0]));
        flags.push_back(flag);
    }
    std::set<std::pair<int, int>> edges;
    for (size_t i = 0; i < sent.size(); ++i) {
        const size_t next = i % 3 == 2 ? i - 2 : i + 1;
        if (flags[i]) { edges.insert(std::minmax(sent[i], sent[next])); }
    }
    const std::set<std::pair<int, int>> outline = {{1, 2}, {2, 4}, {3, 4}, {1, 3}};
    EXPECT_EQ(edges, outline);
    scene.session.display_quadlines = 1;
    draw(add(1), false, true);
    EXPECT_EQ(recording_gl::count_calls("glEdgeFlag"), 0);  // a strip shows all of its edges
}

TEST_F(TriangleDraw, ATriangleOfCurveTypeFourIsAPlainOne) {
    EXPECT_EQ(draw(add(0, 4), false, false), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 3, 2}));
    scene.session.display_quadlines = 1;
    EXPECT_EQ(draw(add(0, 4), false, true), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 2, 3}));
    EXPECT_EQ(draw(add(0, 4), false, true, true), 1);
    EXPECT_EQ(recording_gl::count_lines("glBegin GL_TRIANGLES"), 1);
}

TEST_F(TriangleDraw, CurvedPrimitivesAreDrawnFlatHere) {
    EXPECT_EQ(draw(add(0, 3), false, false), 1);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLES", {1, 3, 2}));
    EXPECT_EQ(draw(add(1, 2), false, false), 2);
    EXPECT_EQ(lines(), split_quad({1, 3, 2, 4, 2, 3}));
}

TEST_F(TriangleDraw, APointWithAStateIsDrawnWhereItIsPosed) {
    Triangle* triangle = add(0);
    scene.pose(2, {70, 80, 90}, {1, 1, 1});
    scene.pose(13, {5, 5, 5}, {0.5f, 0.25f, 0});
    draw(triangle, false, true);
    const Lines expected = {"glBegin GL_TRIANGLES", "glNormal3f 0 1 1",      "glVertex3f 1 10 0", "glNormal3f 0 2 1",
                            "glVertex3f 70 80 90",  "glNormal3f 0.5 0.25 0", "glVertex3f 3 30 0", "glEnd"};
    EXPECT_EQ(lines(), expected);
}

TEST_F(TriangleDraw, ACornerWhoseNormalIsItsOwnIsPosedToo) {
    const int32_t points[4] = {1, 2, 3, 0};
    model_add_triangle(scene.model, "body", 0, points, nullptr, nullptr, 0);
    scene.pose(1, {70, 80, 90}, {1, 2, 3});
    Triangle* triangle = nullptr;
    for (Triangle& t : list_elements<Triangle>(scene.layer->triangles)) { triangle = &t; }
    draw(triangle, false, true);
    EXPECT_EQ(lines()[1], "glNormal3f 1 2 3");
    EXPECT_EQ(lines()[2], "glVertex3f 70 80 90");
}

TEST_F(TriangleDraw, AReferenceThatCannotBeResolvedDrawsNothingAndCountsZero) {
    for (const bool normal : {false, true}) {
        for (const int quad : {0, 1}) {
            Triangle* triangle = add(quad);
            (normal ? triangle->normals : triangle->points)[quad ? 3 : 2] = 999;
            for (const bool reflection : {false, true}) {
                EXPECT_EQ(draw(triangle, true, false, reflection), 0);
                EXPECT_EQ(lines(), Lines{});
            }
        }
    }
}

TEST_F(TriangleDraw, APointRemovedAfterTheFirstFrameDrawsNothing) {
    Triangle* triangle = add(0);
    EXPECT_EQ(draw(triangle, false, false), 1);
    model_remove_point(scene.model, 2);
    EXPECT_EQ(draw(triangle, false, false), 0);
    EXPECT_EQ(lines(), Lines{});
}

// ---- Polygons

TEST_F(TriangleDraw, APolygonTurnsItsFirstTriangleRoundAndThenRunsTheStripFromItsSecondVertex) {
    EXPECT_EQ(draw(add_polygon(5), false, false), 3);
    Lines expected = primitive("GL_TRIANGLES", {3, 2, 1});
    append(expected, primitive("GL_TRIANGLE_STRIP", {2, 3, 4, 1}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(TriangleDraw, AMirroredPolygonIsOneStrip) {
    EXPECT_EQ(draw(add_polygon(5), false, true), 3);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLE_STRIP", {1, 2, 3, 4, 1}));
}

TEST_F(TriangleDraw, ATexturedGouraudPolygonSendsBoth) {
    scene.model->has_gouraud = 1;
    EXPECT_EQ(draw(add_polygon(4), true, true), 2);
    EXPECT_EQ(lines(), primitive("GL_TRIANGLE_STRIP", {1, 2, 3, 4}, true, true));
    EXPECT_EQ(draw(add_polygon(4), true, false), 2);
    Lines expected = primitive("GL_TRIANGLES", {3, 2, 1}, true, true);
    append(expected, primitive("GL_TRIANGLE_STRIP", {2, 3, 4}, true, true));
    EXPECT_EQ(lines(), expected);
}

// Intended: the strip behind the triangle has two vertices then and draws nothing.
TEST_F(TriangleDraw, APolygonOfThreeVerticesDrawsOneTriangle) {
    EXPECT_EQ(draw(add_polygon(3), false, false), 1);
    Lines expected = primitive("GL_TRIANGLES", {3, 2, 1});
    append(expected, primitive("GL_TRIANGLE_STRIP", {2, 3}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(TriangleDraw, APolygonOfFewerThanThreeVerticesDrawsNothingAndCountsZero) {
    for (int count = 0; count < 3; ++count) {
        Polygon* polygon = add_polygon(count);
        for (const bool mirrored : {false, true}) {
            for (const bool reflection : {false, true}) {
                EXPECT_EQ(draw(polygon, true, mirrored, reflection), 0);
                EXPECT_EQ(lines(), Lines{});
            }
        }
    }
}

TEST_F(TriangleDraw, APolygonWithAReferenceThatCannotBeResolvedDrawsNothing) {
    for (const bool normal : {false, true}) {
        Polygon* polygon = add_polygon(4);
        auto* vertex = list_at<PolygonVertex>(&polygon->vertices, 3, 0);
        (normal ? vertex->normal : vertex->point) = 999;
        EXPECT_EQ(draw(polygon, true, false), 0);
        EXPECT_EQ(draw(polygon, true, false, true), 0);
        EXPECT_EQ(lines(), Lines{});
    }
}

TEST_F(TriangleDraw, APolygonBeyondTheLimitIsDrawnUpToIt) {
    std::vector<int32_t> points(600, 1);
    ASSERT_EQ(model_add_polygon(scene.model, "body", 600, points.data(), nullptr), 1);
    Polygon* polygon = nullptr;
    for (Polygon& p : list_elements<Polygon>(scene.layer->polygons)) { polygon = &p; }
    EXPECT_EQ(draw(polygon, true, true), POLYGON_VERTEX_LIMIT - 2);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), POLYGON_VERTEX_LIMIT);
    EXPECT_EQ(draw(polygon, true, true, true), POLYGON_VERTEX_LIMIT - 2);
}

TEST_F(TriangleDraw, APolygonIsDrawnWhereItsPointsArePosed) {
    Polygon* polygon = add_polygon(3);
    scene.pose(1, {70, 80, 90}, {1, 1, 1});
    scene.pose(11, {5, 5, 5}, {0.5f, 0.25f, 0});
    draw(polygon, false, true);
    EXPECT_EQ(lines()[1], "glNormal3f 0.5 0.25 0");
    EXPECT_EQ(lines()[2], "glVertex3f 70 80 90");
}

// ---- Reflection

struct Pair {
    double u, v;
};

// The same in double precision, from the columns that OpenGL holds: the direction of the normal in the view weighs
// three parts, that of the place on the screen one, and half of all stands for 1.
Pair expected_reflection(const Vec3& position, const Vec3& normal) {
    const std::array<float, 16> view = recording_gl::modelview(), projection = recording_gl::projection();
    double eye[4], turned[3];
    for (size_t row = 0; row < 4; ++row) {
        eye[row] = double{view[row]} * position.x + double{view[4 + row]} * position.y +
                   double{view[8 + row]} * position.z + double{view[12 + row]};
        if (row < 3) {
            turned[row] =
                double{view[row]} * normal.x + double{view[4 + row]} * normal.y + double{view[8 + row]} * normal.z;
        }
    }
    double screen[2];
    for (size_t row = 0; row < 2; ++row) {
        screen[row] = 0;
        for (size_t k = 0; k < 4; ++k) { screen[row] += double{projection[4 * k + row]} * eye[k]; }
    }
    const double length = std::hypot(screen[0], screen[1]);
    const double x = length > 0 ? screen[0] / length : 0, y = length > 0 ? screen[1] / length : 0;
    return {1.5 + 0.5 * (0.75 * turned[0] + 0.25 * x), 1.5 - 0.5 * (0.75 * turned[1] + 0.25 * y)};
}

void set_matrices() {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glScalef(0.5f, 0.25f, -0.001f);
    glTranslatef(-3.0f, 2.0f, 0.0f);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glRotatef(37.0f, 0.0f, 1.0f, 0.0f);
    glRotatef(-61.0f, 1.0f, 0.0f, 0.0f);
    glTranslatef(4.0f, -1.0f, 9.0f);
    recording_gl::clear();
}

TEST_F(TriangleDraw, ReflectionCoordinatesFollowTheNormalInTheViewAndThePlaceOnTheScreen) {
    set_matrices();
    const Vec3 positions[5] = {{1, 2, 3}, {-4, 0, 1}, {100, -50, 7}, {0, 0, 0}, {0.25f, -8, -3}};
    const Vec3 normals[5] = {{0, 0, 1}, {1, 0, 0}, {0, -1, 0}, {0.6f, 0.8f, 0}, {-0.36f, 0.48f, 0.8f}};
    const Vec3 *position[5], *normal[5];
    for (int i = 0; i < 5; ++i) {
        position[i] = &positions[i];
        normal[i] = &normals[i];
    }
    UvPair uvs[5];
    reflection_coords(position, normal, uvs, 5);
    const Lines reads = {"glGetFloatv GL_MODELVIEW_MATRIX", "glGetFloatv GL_PROJECTION_MATRIX"};
    EXPECT_EQ(lines(), reads);  // once for all
    for (int i = 0; i < 5; ++i) {
        const Pair expected = expected_reflection(positions[i], normals[i]);
        EXPECT_NEAR(uvs[i].u, expected.u, 1e-5) << i;
        EXPECT_NEAR(uvs[i].v, expected.v, 1e-5) << i;
        EXPECT_GE(uvs[i].u, 1.0f);
        EXPECT_LE(uvs[i].u, 2.0f);
        EXPECT_GE(uvs[i].v, 1.0f);
        EXPECT_LE(uvs[i].v, 2.0f);
    }
}

// A script may load any matrix. Normals are turned as if its bottom row were 0 0 0 1; for places it counts: the sum of
// the row divides, so that a negative one turns the direction round.
TEST_F(TriangleDraw, TheBottomRowOfTheViewCountsForPlacesAndNotForNormalsOfAReflection) {
    const Vec3 position = {3, 4, 5}, normal = {0.36f, 0.48f, 0.8f};
    const Vec3 *positions[1] = {&position}, *normals[1] = {&normal};
    for (size_t negative = 0; negative < 5; ++negative) {
        float bottom[5] = {1, 1, 1, 1};  // of which one is less than minus the rest, or none
        bottom[negative] = -5;
        // Columns: a quarter turn about z, then a move.
        const float view[16] = {0, 1, 0, bottom[0], -1, 0, 0, bottom[1], 0, 0, 1, bottom[2], 10, 20, 30, bottom[3]};
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixf(view);
        recording_gl::clear();
        UvPair uvs[1];
        reflection_coords(positions, normals, uvs, 1);
        // The place comes to (-4 + 10, 3 + 20), the normal to (-0.48, 0.36).
        const double length = std::hypot(6.0, 23.0) * (negative < 4 ? -1 : 1);
        EXPECT_NEAR(uvs[0].u, 1.5 + (-0.48 * 0.375 + 6.0 / length * 0.125), 1e-6);
        EXPECT_NEAR(uvs[0].v, 1.5 - (0.36 * 0.375 + 23.0 / length * 0.125), 1e-6);
    }
}

TEST_F(TriangleDraw, APointInTheMiddleOfTheScreenReflectsByItsNormalAlone) {
    const Vec3 position = {0, 0, 5}, normal = {0.6f, 0.8f, 0};
    const Vec3 *positions[1] = {&position}, *normals[1] = {&normal};
    UvPair uvs[1];
    reflection_coords(positions, normals, uvs, 1);
    EXPECT_NEAR(uvs[0].u, 1.5 + 0.6 * 0.375, 1e-6);
    EXPECT_NEAR(uvs[0].v, 1.5 - 0.8 * 0.375, 1e-6);
}

// How far out a point stands counts nothing, also for one on an axis of the screen.
TEST_F(TriangleDraw, APointOnAnAxisOfTheScreenReflectsByItsSideAlone) {
    const Vec3 places[4] = {{4, 0, 0}, {-0.25f, 0, 0}, {0, 5, 0}, {0, -0.5f, 0}};
    const Vec3 normal = {0, 0, 1};
    const Vec3* positions[4] = {&places[0], &places[1], &places[2], &places[3]};
    const Vec3* normals[4] = {&normal, &normal, &normal, &normal};
    UvPair uvs[4];
    reflection_coords(positions, normals, uvs, 4);
    const float expected[4][2] = {{1.625f, 1.5f}, {1.375f, 1.5f}, {1.5f, 1.375f}, {1.5f, 1.625f}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(uvs[i].u, expected[i][0]) << i;
        EXPECT_EQ(uvs[i].v, expected[i][1]) << i;
    }
}

// The computed coordinates take the place of the primitive's own; no colour is sent.
void expect_reflected(const char* mode, std::initializer_list<int> corners) {
    const std::vector<recording_gl::Call>& calls = recording_gl::calls();
    ASSERT_EQ(calls.size(), corners.size() * 3 + 4);
    EXPECT_EQ(recording_gl::call_text(calls[0]), "glGetFloatv GL_MODELVIEW_MATRIX");
    EXPECT_EQ(recording_gl::call_text(calls[1]), "glGetFloatv GL_PROJECTION_MATRIX");
    EXPECT_EQ(recording_gl::call_text(calls[2]), std::string("glBegin ") + mode);
    EXPECT_EQ(recording_gl::call_text(calls.back()), "glEnd");
    size_t at = 3;
    for (const int n : corners) {
        const auto f = static_cast<float>(n);
        const Pair expected = expected_reflection({f, 10 * f, 0}, {0, f, 1});
        EXPECT_STREQ(recording_gl::function_name(calls[at].function), "glTexCoord2f");
        EXPECT_NEAR(calls[at].arguments[0], expected.u, 1e-5);
        EXPECT_NEAR(calls[at].arguments[1], expected.v, 1e-5);
        EXPECT_EQ(recording_gl::call_text(calls[at + 1]), gl("glNormal3f", 0, n, 1));
        EXPECT_EQ(recording_gl::call_text(calls[at + 2]), gl("glVertex3f", n, 10 * n, 0));
        at += 3;
    }
}

TEST_F(TriangleDraw, AReflectedTriangleSendsComputedCoordinatesAndNoColour) {
    scene.model->has_gouraud = 1;
    Triangle* triangle = add(0);
    set_matrices();
    EXPECT_EQ(draw(triangle, true, false, true), 1);
    expect_reflected("GL_TRIANGLES", {1, 3, 2});
    EXPECT_EQ(draw(triangle, false, true, true), 1);
    expect_reflected("GL_TRIANGLES", {1, 2, 3});
}

TEST_F(TriangleDraw, AReflectedQuadIsAStripWithoutEdgeFlags) {
    scene.session.display_quadlines = 0;
    Triangle* quad = add(1);
    set_matrices();
    EXPECT_EQ(draw(quad, true, false, true), 2);
    expect_reflected("GL_TRIANGLE_STRIP", {1, 3, 2, 4});
    EXPECT_EQ(draw(quad, true, true, true), 2);
    expect_reflected("GL_TRIANGLE_STRIP", {1, 2, 3, 4});
}

// Intended: the reflection pass does not reverse the winding of a polygon.
TEST_F(TriangleDraw, AReflectedPolygonIsAStripInListOrderWhateverTheMirror) {
    Polygon* polygon = add_polygon(4);
    set_matrices();
    EXPECT_EQ(draw(polygon, true, false, true), 2);
    expect_reflected("GL_TRIANGLE_STRIP", {1, 2, 3, 4});
    EXPECT_EQ(draw(polygon, true, true, true), 2);
    expect_reflected("GL_TRIANGLE_STRIP", {1, 2, 3, 4});
}

}  // namespace
}  // namespace pelt
