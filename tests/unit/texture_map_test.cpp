#include "formats/texture_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "formats/layer_image.h"
#include "formats/model_reader.h"
#include "foundation/load_error.h"
#include "scene/model.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::TempDir;

constexpr float INFINITE = std::numeric_limits<float>::infinity();

// ---- folding ----

// The rule, word by word. Ends only for numbers below 2 to the power of 25.
float folded_step_by_step(float x) {
    while (x > 2.0f) { x -= 2.0f; }
    return x <= 1.0f ? x : 1.0f - (x - 1.0f);
}

TEST(FoldUv, RunsBackAndForthBetweenZeroAndOne) {
    EXPECT_EQ(fold_uv(0.0f), 0.0f);
    EXPECT_EQ(fold_uv(0.25f), 0.25f);
    EXPECT_EQ(fold_uv(1.0f), 1.0f);
    EXPECT_EQ(fold_uv(1.25f), 0.75f);
    EXPECT_EQ(fold_uv(2.0f), 0.0f);
    EXPECT_EQ(fold_uv(2.25f), 0.25f);
    EXPECT_EQ(fold_uv(3.5f), 0.5f);
    EXPECT_EQ(fold_uv(4.0f), 0.0f);
    EXPECT_EQ(fold_uv(127.75f), 0.25f);
}

TEST(FoldUv, GivesExactlyWhatTakingTwoAwayGives) {
    for (float x = 0.0f; x < 300.0f; x += 0.0371f) {
        ASSERT_EQ(fold_uv(x), folded_step_by_step(x)) << x;
        ASSERT_EQ(std::signbit(fold_uv(x)), std::signbit(folded_step_by_step(x))) << x;
    }
    for (const float x : {1e-30f, 0.99999994f, 1.0000001f, 1.9999999f, 2.0000002f, 3.9999998f, 4.0000005f, 1023.9999f,
                          65535.996f, 1000000.06f, 8388607.5f, 16777214.0f, 16777217.0f, 33554430.0f}) {
        EXPECT_EQ(fold_uv(x), folded_step_by_step(x)) << x;
    }
}

TEST(FoldUv, EndsForNumbersOfAnySize) {
    EXPECT_EQ(fold_uv(33554436.0f), 0.0f);
    EXPECT_EQ(fold_uv(1e30f), 0.0f) << "an even number of whole steps";
    EXPECT_EQ(fold_uv(std::numeric_limits<float>::max()), 0.0f);
}

TEST(FoldUv, NonFiniteGivesZero) {
    EXPECT_EQ(fold_uv(INFINITE), 0.0f);
    EXPECT_EQ(fold_uv(-INFINITE), 0.0f);
    EXPECT_EQ(fold_uv(std::numeric_limits<float>::quiet_NaN()), 0.0f);
}

// ---- the planar map ----

constexpr Vec3 LOW{0.0f, 10.0f, -4.0f};
constexpr Vec3 HIGH{8.0f, 30.0f, 4.0f};

TEST(PlanarUv, EachAxisCodeNamesAnAxisAndADirection) {
    struct {
        int code;
        float expected;
    } const cases[] = {{AXIS_X, 0.75f},
                       {AXIS_Y, 0.25f},
                       {AXIS_Z, 0.125f},
                       {AXIS_MINUS_X, 0.25f},
                       {AXIS_MINUS_Y, 0.75f},
                       {AXIS_MINUS_Z, 0.875f},
                       {0, 0.0f},
                       {7, 0.0f},
                       {-1, 0.0f}};
    for (const auto& each : cases) {
        // x a quarter in, y a quarter in, z seven eighths in.
        EXPECT_EQ(planar_uv(2.0f, 15.0f, 3.0f, &LOW, &HIGH, each.code, AXIS_Y).u, each.expected) << each.code;
        EXPECT_EQ(planar_uv(2.0f, 15.0f, 3.0f, &LOW, &HIGH, AXIS_X, each.code).v, each.expected) << each.code;
    }
}

TEST(PlanarUv, ABoxWithoutExtentDividesByZero) {
    const Vec3 flat_high{8.0f, 10.0f, 4.0f};
    const UvPair on_it = planar_uv(2.0f, 10.0f, 0.0f, &LOW, &flat_high, AXIS_MINUS_X, AXIS_Y);
    EXPECT_EQ(on_it.u, 0.25f);
    EXPECT_TRUE(std::isnan(on_it.v));
    EXPECT_EQ(planar_uv(2.0f, 11.0f, 0.0f, &LOW, &flat_high, AXIS_Y, AXIS_Y).u, INFINITE);
}

// ---- layers ----

class TextureMap : public testing::Test {
protected:
    TextureMap() {
        dir.write("a.tga", test::solid_tga(1, 1, 1, 2, 3));
        model = model_create(dir.file("m.mod").c_str(), nullptr);
        load_error_set(nullptr);
    }
    ~TextureMap() override { model_release(model); }

    void add(const std::string& lines) { ASSERT_EQ(model_read_data(model, lines.c_str()), 1) << load_error_get(); }
    Layer& layer() { return *model_find_layer(model, "a"); }
    Triangle& triangle(int32_t slot = 0) { return *list_at<Triangle>(&layer().triangles, slot, 0); }
    PolygonVertex& polygon_vertex(int32_t index) {
        auto* polygon = list_at<Polygon>(&layer().polygons, 0, 0);
        return *list_at<PolygonVertex>(&polygon->vertices, index, 0);
    }
    void expect_uv(const Triangle& of, int corner, float u, float v) {
        EXPECT_EQ(of.uvs[corner][0], u) << "corner " << corner;
        EXPECT_EQ(of.uvs[corner][1], v) << "corner " << corner;
    }

    // A square of two triangles in the plane of x and y, from 0, 0 to 100, 200.
    static constexpr const char* SQUARE =
        "points\n1 0 0 5\n2 100 0 5\n3 0 200 5\n4 100 200 5\n"
        "layer a 1 2 3 doublesided\ntriangles\n0 1 2 3\n1 1 2 3 4\n";

    TempDir dir;
    Model* model;
};

TEST_F(TextureMap, AnImageMapsEveryCornerOfTrianglesAndQuads) {
    add(std::string(SQUARE) + "image a.tga -x y\n");
    expect_uv(triangle(0), 0, 0.0f, 0.0f);
    expect_uv(triangle(0), 1, 1.0f, 0.0f);
    expect_uv(triangle(0), 2, 0.0f, 1.0f);
    expect_uv(triangle(1), 3, 1.0f, 1.0f);
    expect_uv(triangle(0), 3, 0.0f, 0.0f);  // a triangle has no fourth corner
}

TEST_F(TextureMap, PolygonsAreMappedToo) {
    add("points\n1 0 0 5\n2 100 0 5\n3 0 200 5\n4 50 50 5\nlayer a 1 2 3 x\n"
        "triangles\n2 1 2 3 4\nimage a.tga -x y\n");
    EXPECT_EQ(polygon_vertex(1).u, 1.0f);
    EXPECT_EQ(polygon_vertex(1).v, 0.0f);
    EXPECT_EQ(polygon_vertex(3).u, 0.5f);
    EXPECT_EQ(polygon_vertex(3).v, 0.25f);
}

TEST_F(TextureMap, TheBoxTakesInPolygonsAndLines) {
    add("points\n1 0 0 0\n2 1 0 0\n3 0 1 0\n4 -7 0 0\n5 0 9 0\n6 0 0 30\n"
        "layer a 1 2 3 x\ntriangles\n0 1 2 3\n2 1 2 4\nlines\n2 5 6\n");
    EXPECT_EQ(layer_compute_bounds(model, "a"), 1);
    EXPECT_EQ(layer().bounds_min.x, -7.0f);
    EXPECT_EQ(layer().bounds_min.y, 0.0f);
    EXPECT_EQ(layer().bounds_max.x, 1.0f);
    EXPECT_EQ(layer().bounds_max.y, 9.0f);
    EXPECT_EQ(layer().bounds_max.z, 30.0f);
}

TEST_F(TextureMap, TheBoxStartsAtTheFirstCornerNotAtTheOrigin) {
    add("points\n1 50 60 70\n2 51 61 71\n3 52 60 70\nlayer a 1 2 3 x\ntriangles\n2 2 1 3\n");
    EXPECT_EQ(layer_compute_bounds(model, "a"), 1);
    EXPECT_EQ(layer().bounds_min.x, 50.0f);
    EXPECT_EQ(layer().bounds_min.z, 70.0f);
    EXPECT_EQ(layer().bounds_max.x, 52.0f);
}

TEST_F(TextureMap, ALayerOfLinesAloneHasNoBox) {
    add("points\n1 5 6 7\n2 8 9 10\nlayer a 1 2 3 x\nlines\n2 1 2\n");
    EXPECT_EQ(layer_compute_bounds(model, "a"), 0);
    EXPECT_EQ(layer().bounds_max.x, 0.0f);
    EXPECT_EQ(layer_map_uvees(model, "a"), 0);
}

TEST_F(TextureMap, MirroredCopiesAreNotTakenIn) {
    add("points\n1 10 0 0\n2 20 0 0\n3 10 5 0\nlayer a 1 2 3 x mirror x\ntriangles\n0 1 2 3\n");
    EXPECT_EQ(layer_compute_bounds(model, "a"), 1);
    EXPECT_EQ(layer().bounds_min.x, 10.0f);
}

TEST_F(TextureMap, AbsentLayersAndNullsAreRefusedWithoutAText) {
    add("layer a 1 2 3 x\n");
    EXPECT_EQ(layer_map_uvees(model, "b"), 0);
    EXPECT_EQ(layer_map_uvees(model, nullptr), 0);
    EXPECT_EQ(layer_map_uvees(nullptr, "a"), 0);
    EXPECT_EQ(layer_compute_bounds(nullptr, "a"), 0);
    EXPECT_EQ(layer_compute_bounds(model, nullptr), 0);
    EXPECT_EQ(layer_compute_bounds(model, "b"), 0);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(TextureMap, ALayerWithoutAnImageIsNotMapped) {
    add(SQUARE);
    EXPECT_EQ(layer_map_uvees(model, "a"), 0);
    EXPECT_EQ(layer().bounds_max.x, 0.0f) << "the box is not computed either";
}

TEST_F(TextureMap, ABoxThatIsFlatGivesNonFiniteCoordinates) {
    add("points\n1 0 7 0\n2 100 7 0\n3 0 7 100\nlayer a 1 2 3 x\ntriangles\n0 1 2 3\nimage a.tga -x y\n");
    EXPECT_EQ(triangle().uvs[1][0], 1.0f);
    EXPECT_TRUE(std::isnan(triangle().uvs[1][1]));
}

TEST_F(TextureMap, RepeatFactorsScale) {
    add(std::string(SQUARE) + "image a.tga -x y repeat 2 2\n");
    expect_uv(triangle(0), 1, 2.0f, 0.0f);
    expect_uv(triangle(1), 3, 2.0f, 2.0f);
}

TEST_F(TextureMap, NegativeRepeatFactorsFoldBack) {
    add(std::string(SQUARE) + "image a.tga -x y repeat -1 -1.25\n");
    expect_uv(triangle(0), 0, 0.0f, 0.0f);
    expect_uv(triangle(1), 3, 1.0f, 0.75f);
}

TEST_F(TextureMap, PositiveCoordinatesAreNotFolded) {
    add(std::string(SQUARE) + "image a.tga -x y repeat 128 128\n");
    expect_uv(triangle(1), 3, 128.0f, 128.0f);
}

TEST_F(TextureMap, RepeatFactorsOfAnySizeEnd) {
    add(std::string(SQUARE) + "image a.tga -x y\n");
    EXPECT_EQ(model_set_image_repeat(model, "a", 1, -1e30f, -INFINITE), 1);
    EXPECT_EQ(triangle(1).uvs[3][0], 0.0f);
    EXPECT_EQ(triangle(1).uvs[3][1], 0.0f);
}

TEST_F(TextureMap, AUveeWinsOverTheMapAndIgnoresRepeat) {
    add(std::string(SQUARE) + "uvees\n2 0.3 -7.5\nimage a.tga -x y repeat 2 2\n");
    expect_uv(triangle(0), 1, 0.3f, -7.5f);
    expect_uv(triangle(1), 1, 0.3f, -7.5f);
    expect_uv(triangle(1), 3, 2.0f, 2.0f);
}

TEST_F(TextureMap, AUveeGivenTwiceKeepsTheSecond) {
    add(std::string(SQUARE) + "uvees\n2 0.3 0.5\n2 0.75 0.25\nimage a.tga -x y\n");
    expect_uv(triangle(0), 1, 0.75f, 0.25f);
}

TEST_F(TextureMap, AMissingPointEndsTheMapWithoutAText) {
    add(std::string(SQUARE) + "image a.tga -x y\n");
    triangle(1).uvs[3][0] = 42.0f;
    triangle(0).uvs[1][0] = 42.0f;
    ASSERT_EQ(model_remove_point(model, 3), 1);
    EXPECT_EQ(layer_map_uvees(model, "a"), 0);
    EXPECT_EQ(layer_compute_bounds(model, "a"), 0);
    expect_uv(triangle(0), 1, 1.0f, 0.0f);  // what stood before the missing point is mapped, by the old box
    EXPECT_EQ(triangle(1).uvs[3][0], 42.0f);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(TextureMap, AMissingPointOfALineSpoilsTheBoxAlone) {
    add("points\n1 0 0 0\n2 100 0 0\n3 0 200 0\n4 900 900 0\nlayer a 1 2 3 x\n"
        "triangles\n0 1 2 3\nlines\n2 1 4\nimage a.tga -x y\n");
    EXPECT_EQ(layer().bounds_max.x, 900.0f);
    ASSERT_EQ(model_remove_point(model, 4), 1);
    EXPECT_EQ(layer_compute_bounds(model, "a"), 0);
    EXPECT_EQ(layer_map_uvees(model, "a"), 1);
    EXPECT_EQ(layer().bounds_max.x, 900.0f);
}

TEST_F(TextureMap, AnIdThatSixteenBitsCutToANegativeOneIsMissing) {
    const int32_t points[] = {1, 2, 40000};
    add("points\n1 0 0 0\n2 1 0 0\n40000 0 1 0\nlayer a 1 2 3 x\n");
    ASSERT_EQ(model_add_triangle(model, "a", 0, points, nullptr, nullptr, 0), 1);
    EXPECT_EQ(layer_compute_bounds(model, "a"), 0);
    EXPECT_EQ(model_add_image(model, "a", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y), 0);
}

}  // namespace
}  // namespace pelt
