// Curved primitives as exact call sequences: what is sent, in which order and under which state.
#include "render/patch_draw.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "render/overlays.h"
#include "render/scene_draw.h"
#include "render/triangle_draw.h"
#include "support/curved_scene.h"

namespace pelt {
namespace {

using namespace curved_scene;

TEST_F(CurvedDraw, TriangleSendsItsTriplesTurnedUnlessMirrored) {
    Triangle* triangle = scene.add_primitive(0, 3);
    for (int level = 1; level <= 6; ++level) {
        scene.session.display_lod = level;
        const Expected patch = curved(scene, false, 3, level);
        for (bool mirrored : {false, true}) {
            EXPECT_EQ(draw(triangle, false, mirrored), (level + 1) * (level + 1));
            EXPECT_EQ(lines(), sent(patch, {}, {.mirrored = mirrored}));
        }
    }
}

TEST_F(CurvedDraw, QuadSendsItsTriplesWithHiddenDiagonals) {
    Triangle* quad = scene.add_primitive(1, 4);
    for (int level = 1; level <= 6; ++level) {
        scene.session.display_lod = level;
        const Expected patch = curved(scene, true, 4, level);
        for (bool mirrored : {false, true}) {
            EXPECT_EQ(draw(quad, false, mirrored), 2 * (level + 1) * (level + 1));
            EXPECT_EQ(lines(), sent(patch, {}, {.mirrored = mirrored, .hide_diagonals = true}));
        }
    }
}

TEST_F(CurvedDraw, EachTriangleOfAQuadHasTheEdgeBehindItsSecondVertexHidden) {
    Triangle* quad = scene.add_primitive(1, 4);
    for (bool mirrored : {false, true}) {
        draw(quad, true, mirrored);
        const std::vector<bool> flags = edge_flags();
        ASSERT_EQ(flags.size(), 24u);
        for (size_t i = 0; i < flags.size(); ++i) { EXPECT_EQ(flags[i], i % 3 != 1); }
    }
}

TEST_F(CurvedDraw, PartlyCurvedTypesHaveTheirOwnGrids) {
    for (int type : {1, 2}) {
        Triangle* triangle = scene.add_primitive(0, type);
        scene.session.display_lod = 2;
        EXPECT_EQ(draw(triangle), type == 1 ? 3 : 5);
        EXPECT_EQ(lines(), sent(curved(scene, false, type, 2), {}, {}));
    }
    Triangle* quad = scene.add_primitive(1, 2);
    scene.session.display_lod = 3;
    EXPECT_EQ(draw(quad, false, true), 8);
    EXPECT_EQ(lines(), sent(curved(scene, true, 2, 3), {}, {.mirrored = true, .hide_diagonals = true}));
}

TEST_F(CurvedDraw, ATriangleOfTypeFourIsDrawnAsTypeThree) {
    Triangle* triangle = scene.add_primitive(0, 4);
    ASSERT_NE(triangle, nullptr);
    scene.session.display_lod = 2;
    EXPECT_EQ(draw(triangle, true), 9);
    const Lines four = lines();
    EXPECT_EQ(draw(scene.add_primitive(0, 3), true), 9);
    EXPECT_EQ(four, lines());
}

TEST_F(CurvedDraw, TextureCoordinatesAreInterpolated) {
    for (int quad : {0, 1}) {
        Triangle* triangle = scene.add_primitive(quad, quad ? 4 : 3);
        const Expected patch = curved(scene, quad, quad ? 4 : 3, 1);
        for (bool mirrored : {false, true}) {
            draw(triangle, true, mirrored);
            EXPECT_EQ(lines(), sent(patch, attribute_lines(patch, SCENE_UVS, nullptr),
                                    {.mirrored = mirrored, .hide_diagonals = quad == 1}));
        }
    }
}

TEST_F(CurvedDraw, GouraudColoursAreSentWithoutTheirTransparency) {
    scene.add_colours();
    for (int quad : {0, 1}) {
        Triangle* triangle = scene.add_primitive(quad, quad ? 4 : 3);
        const Expected patch = curved(scene, quad, quad ? 4 : 3, 1);
        for (bool textured : {false, true}) {
            draw(triangle, textured);
            const Extras extras = attribute_lines(patch, textured ? SCENE_UVS : nullptr, SCENE_COLOURS);
            EXPECT_EQ(lines(), sent(patch, extras, {.hide_diagonals = quad == 1}));
            EXPECT_EQ(recording_gl::count_calls("glColor4f"), 0);
        }
    }
}

TEST_F(CurvedDraw, GouraudNeedsBothTheModelAndTheDisplayFlag) {
    Triangle* triangle = scene.add_primitive(0, 3);
    EXPECT_EQ(scene.model->has_gouraud, 0);
    draw(triangle);
    EXPECT_EQ(recording_gl::count_calls("glColor3f"), 0);
    scene.add_colours();
    draw(triangle);
    EXPECT_EQ(recording_gl::count_calls("glColor3f"), 12);
    scene.session.display_gouraud = 0;
    draw(triangle);
    EXPECT_EQ(recording_gl::count_calls("glColor3f"), 0);
}

TEST_F(CurvedDraw, MiddleOfAnEdgeHasTheMeanOfItsCornersColoursAndCoordinates) {
    scene.add_colours();
    draw(scene.add_primitive(0, 3), true, true);
    // Vertex 1 of the first triple lies half way from corner 0 to corner 1.
    EXPECT_EQ(lines()[5], gl("glTexCoord2f", 0.5f, 0.125f));
    const recording_gl::Call& colour = recording_gl::calls()[6];
    EXPECT_NEAR(colour.arguments[0], 0.5, 1e-5);
    EXPECT_NEAR(colour.arguments[1], 0.5, 1e-5);
    EXPECT_NEAR(colour.arguments[2], (51 + 102) / 2.0 / 255.0, 1e-5);
}

TEST_F(CurvedDraw, ReflectionPassSendsComputedCoordinatesAndNoEdgeFlags) {
    scene.add_colours();
    for (int quad : {0, 1}) {
        Triangle* triangle = scene.add_primitive(quad, quad ? 4 : 3);
        const Expected patch = curved(scene, quad, quad ? 4 : 3, 1);
        const Vec3* places[PATCH_VERTEX_LIMIT];
        const Vec3* directions[PATCH_VERTEX_LIMIT];
        for (int i = 0; i < patch.vertex_count; ++i) {
            places[i] = &patch.places[i];
            directions[i] = &patch.directions[i];
        }
        UvPair uvs[PATCH_VERTEX_LIMIT];
        reflection_coords(places, directions, uvs, patch.vertex_count);
        for (bool gouraud : {false, true}) {
            scene.session.display_gouraud = gouraud;
            Extras extras = gouraud ? attribute_lines(patch, nullptr, SCENE_COLOURS)
                                    : Extras(static_cast<size_t>(patch.vertex_count));
            for (int i = 0; i < patch.vertex_count; ++i) {
                Lines& own = extras[static_cast<size_t>(i)];
                own.insert(own.begin(), gl("glTexCoord2f", uvs[i].u, uvs[i].v));
            }
            for (bool mirrored : {false, true}) {
                for (bool textured : {false, true}) {  // makes no difference here
                    EXPECT_EQ(draw(triangle, textured, mirrored, true), patch.triangle_count);
                    Lines expected{"glGetFloatv GL_MODELVIEW_MATRIX", "glGetFloatv GL_PROJECTION_MATRIX"};
                    append(expected, sent(patch, extras, {.mirrored = mirrored, .flag_behind = false}));
                    EXPECT_EQ(lines(), expected);
                }
            }
        }
    }
}

TEST_F(CurvedDraw, ReflectionCoordinatesFollowTheNormalAndThePlaceOnTheScreen) {
    Triangle* quad = scene.add_primitive(1, 4);
    draw(quad, true, false, true);
    const auto& calls = recording_gl::calls();
    int vertices = 0;
    for (size_t i = 0; i + 2 < calls.size(); ++i) {
        if (std::string(recording_gl::function_name(calls[i].function)) != "glTexCoord2f") { continue; }
        // Without a view, the screen is the x-y plane.
        const auto &uv = calls[i].arguments, &n = calls[i + 1].arguments, &p = calls[i + 2].arguments;
        const double length = std::hypot(p[0], p[1]);
        EXPECT_NEAR(uv[0], 1.5 + n[0] * 0.375 + p[0] / length * 0.125, 1e-5);
        EXPECT_NEAR(uv[1], 1.5 - n[1] * 0.375 - p[1] / length * 0.125, 1e-5);
        ++vertices;
    }
    EXPECT_EQ(vertices, 24);
}

TEST_F(CurvedDraw, CountGrowsWithTheLevel) {
    Triangle* triangle = scene.add_primitive(0, 3);
    Triangle* quad = scene.add_primitive(1, 4);
    const int counts[6][2] = {{4, 8}, {9, 18}, {16, 32}, {25, 50}, {36, 72}, {49, 98}};
    for (int level = 1; level <= 6; ++level) {
        scene.session.display_lod = level;
        EXPECT_EQ(draw(triangle), counts[level - 1][0]);
        EXPECT_EQ(draw(quad), counts[level - 1][1]);
    }
}

TEST_F(CurvedDraw, LevelIsHeldToOneToSix) {
    Triangle* quad = scene.add_primitive(1, 4);
    for (int level : {7, 1000, std::numeric_limits<int>::max()}) {
        scene.session.display_lod = level;
        EXPECT_EQ(draw(quad), 98);
    }
    for (int level : {0, -1, std::numeric_limits<int>::min()}) {
        scene.session.display_lod = level;
        EXPECT_EQ(draw(quad), 8);
    }
}

TEST_F(CurvedDraw, PosedPositionsAndNormalsWin) {
    Triangle* triangle = scene.add_primitive(0, 3);
    draw(triangle);
    const Lines rest = lines();
    scene.pose(2, {7, -3, 1}, {1, 0, 0});
    scene.pose(12, {0, 0, 0}, drawing_scene::unit(3, 0, 4));
    scene.pose(21, {0, 0, 0}, drawing_scene::unit(0, 3, 4));
    draw(triangle);
    EXPECT_NE(lines(), rest);
    Expected patch = curved(scene, false, 3, 1);
    patch.corners[1] = {7, -3, 1};
    patch.normals[1] = drawing_scene::unit(3, 0, 4);
    patch.normals[4] = drawing_scene::unit(0, 3, 4);
    patch.make();
    EXPECT_EQ(lines(), sent(patch, {}, {}));
}

TEST_F(CurvedDraw, CornerNormalsComeFromTheNamedPointsAndNotFromTheCorners) {
    Triangle* triangle = scene.add_primitive(0, 3);
    draw(triangle);
    const Lines before = lines();
    for (int id = 1; id <= 3; ++id) { scene.point(id)->normal = {5, 5, 5}; }
    draw(triangle);
    EXPECT_EQ(lines(), before);
}

TEST_F(CurvedDraw, AReferenceThatLeadsNowhereDrawsNothing) {
    int16_t* (*const places[])(Triangle*) = {
        [](Triangle* t) { return &t->points[0]; }, [](Triangle* t) { return &t->points[2]; },
        [](Triangle* t) { return &t->normals[1]; }, [](Triangle* t) { return &t->controls[0]; },
        [](Triangle* t) { return &t->controls[5]; }};
    for (int quad : {0, 1}) {
        for (const auto& place : places) {
            for (int16_t id : {int16_t{999}, int16_t{0}, int16_t{-5}}) {
                Triangle* triangle = scene.add_primitive(quad, quad ? 4 : 3);
                *place(triangle) = id;
                for (bool reflection : {false, true}) { EXPECT_EQ(draw(triangle, true, false, reflection), 0); }
                EXPECT_TRUE(lines().empty());
                scene.session.display_curvepath = 1;
                EXPECT_EQ(draw(triangle), 0);
                EXPECT_TRUE(lines().empty());
                scene.session.display_curvepath = 0;
            }
        }
    }
    EXPECT_EQ(draw(nullptr), 0);
    EXPECT_EQ(triangle_draw_curved(nullptr, scene.model, scene.add_primitive(0, 3), false, false, false), 0);
}

TEST_F(CurvedDraw, DegenerateAndNonFinitePrimitivesAreDrawnAsTheyCome) {
    Triangle* triangle = scene.add_primitive(0, 3);
    Triangle* quad = scene.add_primitive(1, 4);
    scene.session.display_normals = 1;
    const auto draw_all = [&] {
        EXPECT_EQ(draw(triangle, true, false, true), 4);
        EXPECT_EQ(draw(quad, true, false, true), 8);
        EXPECT_EQ(triangle_draw_pn(&scene.session, scene.model, quad, true, false), 8);
        EXPECT_EQ(triangle_draw_skinned(&scene.session, scene.model, quad, true, false), 8);
    };
    for (int id = 1; id <= 4; ++id) { scene.point(id)->position = {2, 2, 2}; }
    draw_all();
    EXPECT_EQ(recording_gl::count_calls("glVertex3f") % 2, 0);
    for (Point& point : list_elements<Point>(scene.model->points)) { point.normal = {0, 0, 0}; }
    draw_all();
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                      std::numeric_limits<float>::max()}) {
        for (Point& point : list_elements<Point>(scene.model->points)) {
            point.position = point.normal = {bad, bad, -bad};
        }
        draw_all();
    }
}

TEST_F(CurvedDraw, NormalsFollowThePatchInCyan) {
    Triangle* quad = scene.add_primitive(1, 2);
    scene.session.display_normals = 1;
    draw(quad);
    const Expected patch = curved(scene, true, 2, 1);
    const Lines surface = sent(patch, {}, {.hide_diagonals = true});
    const Lines all = lines();
    ASSERT_GT(all.size(), surface.size());
    EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(surface.size())), surface);
    EXPECT_EQ(recording_gl::count_lines("glColor3f 0 1 1"), 1);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f", surface.size()), 2 * patch.vertex_count);
}

class FilteredDraw : public CurvedDraw {
protected:
    int32_t draw_pn(Triangle* triangle, bool textured = false, bool mirrored = false) {
        recording_gl::clear();
        return triangle_draw_pn(&scene.session, scene.model, triangle, textured, mirrored);
    }
};

TEST_F(FilteredDraw, TriangleBecomesAFullPatchFromTheNormalsOfItsPoints) {
    for (int type : {0, 1, 3, 4}) {  // its own curve type has no say
        Triangle* triangle = scene.add_primitive(0, type);
        for (int level : {1, 6}) {
            scene.session.display_lod = level;
            const Expected patch = filtered(scene, {1, 2, 3}, level);
            for (bool mirrored : {false, true}) {
                EXPECT_EQ(draw_pn(triangle, false, mirrored), patch.triangle_count);
                EXPECT_EQ(lines(), sent(patch, {}, {.mirrored = mirrored, .flag_first = true}));
            }
        }
    }
}

TEST_F(FilteredDraw, QuadBecomesTwoPatchesOfCorners012And213) {
    const float second_uvs[3][2] = {{0.125f, 1}, {1, 0}, {0.75f, 0.5f}};
    Triangle* quad = scene.add_primitive(1, 0);
    scene.session.display_lod = 2;
    for (bool mirrored : {false, true}) {
        EXPECT_EQ(draw_pn(quad, true, mirrored), 18);
        const Expected first = filtered(scene, {1, 2, 3}, 2), second = filtered(scene, {3, 2, 4}, 2);
        const Sending how{.mirrored = mirrored, .flag_first = true};
        Lines expected = sent(first, attribute_lines(first, SCENE_UVS, nullptr), how);
        append(expected, sent(second, attribute_lines(second, second_uvs, nullptr), how));
        EXPECT_EQ(lines(), expected);
    }
}

TEST_F(FilteredDraw, BothHalvesTakeTheColoursOfTheirCornersAndLoseTheFourthByte) {
    scene.add_colours();
    const unsigned char second_colours[3][4] = {{153, 0, 255, 0}, {0, 255, 102, 0}, {1, 2, 3, 0}};
    draw_pn(scene.add_primitive(1, 4));
    const Expected first = filtered(scene, {1, 2, 3}, 1), second = filtered(scene, {3, 2, 4}, 1);
    Lines expected = sent(first, attribute_lines(first, nullptr, SCENE_COLOURS), {.flag_first = true});
    append(expected, sent(second, attribute_lines(second, nullptr, second_colours), {.flag_first = true}));
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(recording_gl::count_calls("glColor4f"), 0);
}

TEST_F(FilteredDraw, HidesNoEdges) {
    draw_pn(scene.add_primitive(1, 0));
    for (bool flag : edge_flags()) { EXPECT_TRUE(flag); }
}

TEST_F(FilteredDraw, NormalsFollowEachHalf) {
    scene.session.display_normals = 1;
    draw_pn(scene.add_primitive(1, 0));
    EXPECT_EQ(recording_gl::count_lines("glColor3f 0 1 1"), 2);
    Lines order;
    for (const std::string& line : lines()) {
        if (line.starts_with("glBegin")) { order.push_back(line); }
    }
    EXPECT_EQ(order, (Lines{"glBegin GL_TRIANGLES", "glBegin GL_LINES", "glBegin GL_TRIANGLES", "glBegin GL_LINES"}));
}

TEST_F(FilteredDraw, SecondHalfOfAQuadDrawsItsNetThroughTheQuadList) {
    scene.session.display_curvenet = 1;
    draw_pn(scene.add_primitive(1, 0));
    Lines nets;
    bool in_net = false;
    for (const std::string& line : lines()) {
        if (line == "glBegin GL_LINES") { in_net = true; }
        if (line == "glEnd") { in_net = false; }
        if (in_net) { nets.push_back(line); }
    }
    ASSERT_EQ(nets.size(), 2u + 34u + 54u);
    const Expected second = filtered(scene, {3, 2, 4}, 1);
    EXPECT_EQ(nets[36], gl_vertex(second.net[0]));        // first pair of the quad list, 0-1
    EXPECT_EQ(nets[36 + 53], gl_vertex(second.net[15]));  // its last one, 11-15: a normal among the points
    EXPECT_EQ(nets[36 + 52], gl_vertex(second.net[11]));
}

TEST_F(FilteredDraw, AReferenceThatLeadsNowhereDrawsNothing) {
    for (int corner : {0, 3}) {
        Triangle* quad = scene.add_primitive(1, 0);
        quad->points[corner] = 999;
        EXPECT_EQ(draw_pn(quad), 0);
        EXPECT_TRUE(lines().empty());
    }
    Triangle* triangle = scene.add_primitive(0, 0);
    triangle->normals[0] = 999;  // not looked at here
    EXPECT_EQ(draw_pn(triangle), 4);
}

using PairList = std::vector<std::pair<int, int>>;

const PairList TRIANGLE_NET = {{0, 1}, {1, 3}, {3, 6}, {2, 4}, {4, 7}, {0, 2}, {1, 2}, {1, 4}, {4, 5},
                               {2, 5}, {3, 4}, {3, 7}, {6, 7}, {7, 8}, {4, 8}, {8, 9}, {5, 9}};
const PairList QUAD_NET = {{0, 1},   {1, 2},   {2, 3},   {4, 5}, {5, 6},  {6, 7},   {8, 9}, {9, 10}, {10, 11},
                           {12, 13}, {13, 14}, {14, 15}, {1, 4}, {4, 8},  {8, 12},  {0, 4}, {4, 8},  {8, 12},
                           {1, 5},   {5, 9},   {9, 13},  {2, 6}, {6, 10}, {10, 14}, {3, 7}, {7, 11}, {11, 15}};

Lines net_lines(const Vec3* slots, const PairList& pairs) {
    Lines out{"glGetIntegerv GL_LIGHTING", "glGetIntegerv GL_TEXTURE_2D", "glGetFloatv GL_CURRENT_COLOR",
              "glDisable GL_LIGHTING",     "glDisable GL_TEXTURE_2D",     "glColor3f 1 0 0",
              "glBegin GL_LINES"};
    for (const auto& [from, to] : pairs) {
        out.push_back(gl_vertex(slots[from]));
        out.push_back(gl_vertex(slots[to]));
    }
    out.push_back("glEnd");
    return out;
}

TEST_F(CurvedDraw, NetOfATriangleIsDrawnInFrontOfItsSurface) {
    scene.session.display_curvenet = 1;
    Triangle* triangle = scene.add_primitive(0, 2);
    glColor4f(0.25f, 0.5f, 0.75f, 0.5f);
    draw(triangle);
    const Expected patch = curved(scene, false, 2, 1);
    Lines expected = net_lines(patch.net, TRIANGLE_NET);
    expected.push_back("glColor3f 0.25 0.5 0.75");
    append(expected, sent(patch, {}, {}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(CurvedDraw, NetOfAQuadHasItsThreeOddLines) {
    scene.session.display_curvenet = 1;
    Triangle* quad = scene.add_primitive(1, 4);
    draw(quad);
    const Expected patch = curved(scene, true, 4, 1);
    Lines expected = net_lines(patch.net, QUAD_NET);
    expected.push_back("glColor3f 1 1 1");
    append(expected, sent(patch, {}, {.hide_diagonals = true}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(CurvedDraw, NetPutsLightingAndTextureBackAndTheColourWithoutItsAlpha) {
    const Vec3 slots[24] = {};
    for (bool lighting : {false, true}) {
        for (bool texture : {false, true}) {
            (lighting ? glEnable : glDisable)(GL_LIGHTING);
            (texture ? glEnable : glDisable)(GL_TEXTURE_2D);
            glColor4f(0.25f, 0.5f, 0.75f, 0.125f);
            recording_gl::clear();
            patch_net_draw(slots, true);
            Lines expected = net_lines(slots, QUAD_NET);
            if (lighting) { expected.push_back("glEnable GL_LIGHTING"); }
            if (texture) { expected.push_back("glEnable GL_TEXTURE_2D"); }
            expected.push_back("glColor3f 0.25 0.5 0.75");
            EXPECT_EQ(lines(), expected);
            EXPECT_EQ(recording_gl::enabled(GL_LIGHTING), lighting);
            EXPECT_EQ(recording_gl::enabled(GL_TEXTURE_2D), texture);
            EXPECT_EQ(recording_gl::current_colour()[3], 1.0f);
        }
    }
}

TEST_F(CurvedDraw, CurvesOffLeavesTheCurveTypeAndDrawsTheFlatQuad) {
    Triangle* quad = scene.add_primitive(1, 4);
    scene.session.display_curves = 0;
    EXPECT_EQ(layer_draw(&scene.session, scene.model, scene.layer, 1.0f, false, false, false), 2);
    EXPECT_EQ(quad->curve_type, 4);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 6);
    EXPECT_EQ(edge_flags(), (std::vector<bool>{true, false, true, true, false, true}));
}

TEST_F(CurvedDraw, LevelZeroDrawsFlatEvenUnderTheFilter) {
    scene.add_primitive(1, 4);
    scene.session.display_lod = 0;
    for (int filter : {0, 1}) {
        scene.session.display_pnfilter = filter;
        EXPECT_EQ(layer_draw(&scene.session, scene.model, scene.layer, 1.0f, false, false, false), 2);
    }
}

TEST_F(CurvedDraw, ALayerTakesTheFilterForAllAndTheCurvesForCurvedOnes) {
    scene.add_primitive(0, 0);
    scene.add_primitive(0, 1);
    scene.session.display_lod = 2;
    EXPECT_EQ(layer_draw(&scene.session, scene.model, scene.layer, 1.0f, false, false, false), 1 + 3);
    scene.session.display_pnfilter = 1;
    EXPECT_EQ(layer_draw(&scene.session, scene.model, scene.layer, 1.0f, false, false, false), 9 + 9);
}

TEST_F(CurvedDraw, AReflectionPassUnderTheFilterUsesItsOwnTextureCoordinates) {
    scene.add_primitive(0, 3);
    scene.session.display_pnfilter = 1;
    layer_draw(&scene.session, scene.model, scene.layer, 1.0f, true, false, true);
    const Expected patch = filtered(scene, {1, 2, 3}, 1);
    EXPECT_EQ(lines(), sent(patch, attribute_lines(patch, SCENE_UVS, nullptr), {.flag_first = true}));
}

TEST_F(CurvedDraw, ShowsCyanStrokesOnItsVerticesAndYellowOnesAtItsCorners) {
    scene.add_primitive(0, 3);
    scene.session.display_normals = 1;
    layer_draw(&scene.session, scene.model, scene.layer, 1.0f, false, false, false);
    EXPECT_EQ(recording_gl::count_lines("glColor3f 0 1 1"), 1);
    EXPECT_EQ(recording_gl::count_lines("glColor3f 1 1 0"), 1);
    EXPECT_EQ(recording_gl::count_calls("glVertex3f"), 12 + 2 * 6 + 2 * 3);
}

}  // namespace
}  // namespace pelt
