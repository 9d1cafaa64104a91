// How the display flags act together on a whole model, and that a frame allocates nothing.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "render/scene_draw.h"
#include "support/drawing_scene.h"

// The process's own count of allocations, for the frames that must make none. A sanitizer has its own allocator.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#define COUNTS_ALLOCATIONS 1
static long allocations;
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* malloc(size_t size) {
    ++allocations;
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
}
#endif

namespace pelt {
namespace {

using drawing_scene::Lines;
using drawing_scene::Scene;
using recording_gl::lines;

// One layer with a curved quad, a flat triangle, a polygon and a line.
class Interplay : public testing::Test {
protected:
    Interplay() {
        const int32_t ids[4] = {1, 2, 3, 4};
        scene.add_curved_points();
        scene.add_primitive(1, 4);
        scene.add_primitive(0, 0);
        model_add_polygon(scene.model, "body", 4, ids, nullptr);
        model_add_line(scene.model, "body", 2, ids);
    }
    ~Interplay() override { EXPECT_TRUE(recording_gl::errors().empty()); }

    int32_t draw() {
        recording_gl::clear();
        return model_draw(&scene.session, scene.model);
    }
    // What is sent between glBegin and glEnd, with the primitives.
    Lines geometry() {
        Lines out;
        for (const std::string& line : lines()) {
            if (line.starts_with("glBegin") || line.starts_with("glVertex3f")) { out.push_back(line); }
        }
        return out;
    }
    int begun(const char* primitive) { return recording_gl::count_lines(std::string("glBegin ") + primitive); }

    Scene scene;
};

TEST_F(Interplay, WithoutTrianglesOnlyLinesAndOverlaysRemainAndTheCountIsZero) {
    scene.session.display_triangles = 0;
    scene.session.display_points = 1;
    scene.session.display_skeleton = 1;
    model_add_joint(scene.model, "root", 0, 0, 0, "world", 0);
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(begun("GL_TRIANGLES") + begun("GL_TRIANGLE_STRIP"), 0);
    EXPECT_EQ(begun("GL_LINE_STRIP"), 1);
    EXPECT_EQ(begun("GL_POINTS"), 1);
    EXPECT_EQ(begun("GL_LINES"), 1);
    scene.session.display_lines = 0;
    EXPECT_EQ(draw(), 0);
    EXPECT_EQ(begun("GL_LINE_STRIP"), 0);
    EXPECT_EQ(begun("GL_POINTS"), 1);
}

TEST_F(Interplay, WithoutTrianglesTheOtherSurfaceFlagsChangeNothing) {
    scene.session.display_triangles = 0;
    draw();
    const Lines plain = lines();
    for (int32_t Session::*flag :
         {&Session::display_wireframe, &Session::display_textures, &Session::display_backfaces,
          &Session::display_reflect, &Session::display_curves, &Session::display_pnfilter, &Session::display_lod,
          &Session::display_quadlines, &Session::display_gouraud, &Session::display_normals}) {
        scene.session.*flag = !(scene.session.*flag);
        draw();
        EXPECT_EQ(lines(), plain);
    }
}

TEST_F(Interplay, WireframeOnlyChangesThePolygonMode) {
    const int32_t count = draw();
    const Lines filled = geometry();
    EXPECT_EQ(recording_gl::count_lines("glPolygonMode GL_FRONT_AND_BACK GL_FILL"), 1);
    scene.session.display_wireframe = 1;
    EXPECT_EQ(draw(), count);
    EXPECT_EQ(geometry(), filled);
    EXPECT_EQ(recording_gl::count_lines("glPolygonMode GL_FRONT_AND_BACK GL_LINE"), 1);
}

TEST_F(Interplay, WireframeOverridesBackfacesOff) {
    scene.layer->singlesided = 1;
    scene.session.display_backfaces = 0;
    draw();
    EXPECT_EQ(recording_gl::count_lines("glPolygonMode GL_BACK GL_LINE"), 1);
    scene.session.display_wireframe = 1;
    draw();
    EXPECT_EQ(recording_gl::count_lines("glPolygonMode GL_BACK GL_LINE"), 0);
    EXPECT_EQ(recording_gl::count_lines("glPolygonMode GL_FRONT_AND_BACK GL_LINE"), 1);
}

TEST_F(Interplay, OverlaysComeBeforeTheLayers) {
    scene.session.display_points = 1;
    draw();
    const Lines all = geometry();
    EXPECT_EQ(all.front(), "glBegin GL_POINTS");
}

TEST_F(Interplay, CurvesNeedALevelAndALevelNeedsCurves) {
    EXPECT_EQ(draw(), 8 + 1 + 2);
    scene.session.display_lod = 0;
    EXPECT_EQ(draw(), 2 + 1 + 2);
    scene.session.display_lod = 3;
    EXPECT_EQ(draw(), 32 + 1 + 2);
    scene.session.display_curves = 0;
    EXPECT_EQ(draw(), 2 + 1 + 2);
}

TEST_F(Interplay, QuadLinesLeaveTheTrianglesOfCurvedPrimitivesAlone) {
    draw();
    const Lines before = lines();
    scene.session.display_quadlines = 1;
    draw();
    EXPECT_EQ(lines(), before);
}

TEST_F(Interplay, PointsEndWithLightingOnAndTheModelThenSwitchesItOff) {
    scene.session.display_points = 1;
    scene.session.display_skeleton = 1;
    scene.session.display_lighting = 0;
    draw();
    EXPECT_FALSE(recording_gl::enabled(GL_LIGHTING));
    Lines switches;
    for (const std::string& line : lines()) {
        if (line.ends_with("GL_LIGHTING") && !line.starts_with("glGet")) { switches.push_back(line); }
        if (line == "glDepthMask GL_TRUE") { break; }
    }
    EXPECT_EQ(switches, (Lines{"glDisable GL_LIGHTING", "glEnable GL_LIGHTING", "glDisable GL_LIGHTING",
                               "glEnable GL_LIGHTING", "glDisable GL_LIGHTING"}));
}

TEST_F(Interplay, TheMirroredPassMirrorsItsNormals) {
    scene.session.display_normals = 1;
    scene.session.display_lines = 0;
    scene.layer->mirror = 1;
    scene.layer->mirror_axis = AXIS_X;
    draw();
    const Lines all = lines();
    int inside = 0, outside = 0;
    bool mirrored = false;
    for (const std::string& line : all) {
        if (line.starts_with("glScalef")) { mirrored = true; }
        if (line == "glPopMatrix") { mirrored = false; }
        if (line == "glBegin GL_LINES") { ++(mirrored ? inside : outside); }
    }
    EXPECT_EQ(outside, 4);  // cyan and yellow of the curved quad, the triangle, the polygon
    EXPECT_EQ(inside, 4);
}

#if COUNTS_ALLOCATIONS
TEST_F(Interplay, AFrameAfterTheFirstAllocatesNothing) {
    model_add_joint(scene.model, "root", 0, 0, 0, "world", 0);
    model_add_joint(scene.model, "arm", 1, 0, 0, "root", 0);
    scene.add_colours();
    scene.layer->mirror = 1;
    scene.layer->mirror_axis = AXIS_X;
    Session& session = scene.session;
    session.display_points = session.display_skeleton = session.display_normals = 1;
    session.display_lod = 6;
    recording_gl::set_mode(recording_gl::Mode::silent);
    for (int32_t Session::*path :
         {&Session::display_curvenet, &Session::display_pnfilter, &Session::display_curvepath}) {
        session.*path = 1;
        model_draw(&session, scene.model);
        const long before = allocations;
        const int32_t count = model_draw(&session, scene.model);
        EXPECT_EQ(allocations, before);
        EXPECT_GT(count, 2 * 98);
        session.*path = 0;
    }
    const long before = allocations;
    void* volatile block = std::malloc(1);
    const long after = allocations;
    std::free(block);
    EXPECT_EQ(after, before + 1);  // so the count does count
}
#endif

}  // namespace
}  // namespace pelt
