#include "render/uvee_inset.h"

#include <gtest/gtest.h>

#include <cmath>

#include "scene/model.h"

namespace pelt {
namespace {

class UveeInset : public testing::Test {
protected:
    void SetUp() override {
        model = model_create("inset.mod", nullptr);
        for (int id = 1; id <= 4; ++id) { model_set_point(model, id, id, id * id, 0, 1.0f); }
    }
    void TearDown() override { model_release(model); }

    Layer* add_layer(const char* name) {
        model_add_layer(model, name, 127, 127, 127, 0, 0, 0);
        return model_find_layer(model, name);
    }

    void add_image(Layer* layer, int32_t width, int32_t height) {
        auto* image = list_add<LayerImage>(&layer->images, 1);
        *image = LayerImage{};
        image->width[0] = width;
        image->height[0] = height;
        image->width[1] = 1000;  // of another slot, which does not count
    }

    Triangle* add_triangle(const char* layer, float u, float v) {
        const int32_t points[4] = {1, 2, 3, 4};
        EXPECT_EQ(model_add_triangle(model, layer, 1, points, nullptr, nullptr, 0), 1);
        Triangle* last = nullptr;
        for (Triangle& triangle : list_elements<Triangle>(model_find_layer(model, layer)->triangles)) {
            last = &triangle;
        }
        for (float(&uv)[2] : last->uvs) {
            uv[0] = u;
            uv[1] = v;
        }
        return last;
    }

    Polygon* add_polygon(const char* layer, float u, float v) {
        const int32_t points[3] = {1, 2, 3};
        EXPECT_EQ(model_add_polygon(model, layer, 3, points, nullptr), 1);
        Polygon* last = nullptr;
        for (Polygon& polygon : list_elements<Polygon>(model_find_layer(model, layer)->polygons)) { last = &polygon; }
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(last->vertices)) {
            vertex.u = u;
            vertex.v = v;
        }
        return last;
    }

    Model* model = nullptr;
};

TEST_F(UveeInset, ANullModelGivesZero) { EXPECT_EQ(model_inset_uvees(nullptr, 0.5f, 0.5f), 0); }

TEST_F(UveeInset, PullsAllFourPairsHalfATexelInFromEachBorder) {
    add_image(add_layer("body"), 11, 21);  // steps of 0.1 and 0.05
    Triangle* low = add_triangle("body", 0.0f, 0.0f);
    Triangle* high = add_triangle("body", 1.0f, 1.0f);
    Triangle* middle = add_triangle("body", 0.5f, 0.25f);
    EXPECT_EQ(model_inset_uvees(model, 0.5f, 0.5f), 1);
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(low->uvs[i][0], 0.05, 1e-6);
        EXPECT_NEAR(low->uvs[i][1], 0.025, 1e-6);
        EXPECT_NEAR(high->uvs[i][0], 0.95, 1e-6);
        EXPECT_NEAR(high->uvs[i][1], 0.975, 1e-6);
        EXPECT_NEAR(middle->uvs[i][0], 0.5, 1e-6);
        EXPECT_NEAR(middle->uvs[i][1], 0.25 * 0.95 + 0.025, 1e-6);
    }
}

TEST_F(UveeInset, LowAndHighActOnTheirOwnBorders) {
    add_image(add_layer("body"), 11, 11);
    Triangle* low = add_triangle("body", 0.0f, 1.0f);
    model_inset_uvees(model, 1.0f, 2.0f);
    EXPECT_NEAR(low->uvs[0][0], 0.1, 1e-6);
    EXPECT_NEAR(low->uvs[0][1], 0.8, 1e-6);
}

TEST_F(UveeInset, PolygonVerticesMoveToo) {
    add_image(add_layer("body"), 11, 11);
    add_triangle("body", 0.0f, 0.0f);
    Polygon* polygon = add_polygon("body", 0.0f, 1.0f);
    model_inset_uvees(model, 0.5f, 0.5f);
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
        EXPECT_NEAR(vertex.u, 0.05, 1e-6);
        EXPECT_NEAR(vertex.v, 0.95, 1e-6);
    }
}

TEST_F(UveeInset, ALayerOfPolygonsAloneIsPassedOver) {
    add_image(add_layer("body"), 11, 11);
    Polygon* polygon = add_polygon("body", 0.0f, 1.0f);
    EXPECT_EQ(model_inset_uvees(model, 0.5f, 0.5f), 1);
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
        EXPECT_EQ(vertex.u, 0.0f);
        EXPECT_EQ(vertex.v, 1.0f);
    }
}

TEST_F(UveeInset, ALayerWithoutAnImageIsPassedOver) {
    add_layer("bare");
    add_image(add_layer("body"), 11, 11);
    Triangle* bare = add_triangle("bare", 0.0f, 1.0f);
    Triangle* dressed = add_triangle("body", 0.0f, 1.0f);
    model_inset_uvees(model, 0.5f, 0.5f);
    EXPECT_EQ(bare->uvs[0][0], 0.0f);
    EXPECT_EQ(bare->uvs[0][1], 1.0f);
    EXPECT_NEAR(dressed->uvs[0][0], 0.05, 1e-6);
}

TEST_F(UveeInset, EachCallInsetsOnceMore) {
    add_image(add_layer("body"), 11, 11);
    Triangle* triangle = add_triangle("body", 0.0f, 0.0f);
    model_inset_uvees(model, 0.5f, 0.5f);
    model_inset_uvees(model, 0.5f, 0.5f);
    EXPECT_NEAR(triangle->uvs[0][0], 0.05 * 0.9 + 0.05, 1e-6);
}

TEST_F(UveeInset, ZeroChangesNothing) {
    add_image(add_layer("body"), 11, 11);
    Triangle* triangle = add_triangle("body", 0.25f, 0.75f);
    model_inset_uvees(model, 0.0f, 0.0f);
    EXPECT_EQ(triangle->uvs[0][0], 0.25f);
    EXPECT_EQ(triangle->uvs[0][1], 0.75f);
}

// Intended: there is no guard.
TEST_F(UveeInset, AnImageOfWidthOneLeavesNonFiniteUvees) {
    add_image(add_layer("body"), 1, 11);
    Triangle* triangle = add_triangle("body", 0.0f, 0.0f);
    model_inset_uvees(model, 0.5f, 0.5f);
    EXPECT_FALSE(std::isfinite(triangle->uvs[0][0]));
    EXPECT_NEAR(triangle->uvs[0][1], 0.05, 1e-6);
}

TEST_F(UveeInset, AnImageOfNoSizeIsDefined) {
    add_image(add_layer("body"), 0, INT32_MIN);
    Triangle* triangle = add_triangle("body", 0.0f, 0.0f);
    model_inset_uvees(model, 0.5f, 0.5f);
    EXPECT_NEAR(triangle->uvs[0][0], -0.5, 1e-6);
    EXPECT_NEAR(triangle->uvs[0][1], 0.0, 1e-6);
}

}  // namespace
}  // namespace pelt
