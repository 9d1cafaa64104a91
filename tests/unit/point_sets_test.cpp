// Points that go with points.
#include "edit/point_sets.h"

#include <gtest/gtest.h>

#include "support/edit_model.h"

namespace pelt {
namespace {

using namespace edit_model;

class PointSetsTest : public EditTest {
protected:
    PointSetsTest() : owner(empty_model()), model(owner.get()) {
        for (int32_t id = 1; id <= 9; ++id) { put_point(model, id, {static_cast<float>(id), 0, 0}); }
        put_point(model, 40000, {0, 0, 0});
        put_layer(model, "body");
        put_layer(model, "roof");
        put_triangle(model, "body", {1, 2, 3});
        put_triangle(model, "roof", {3, 4, 5, 6});
        put_polygon(model, "roof", {7, 8, 6});
        const int line[] = {8, 9};
        model_add_line(model, "body", 2, line);
    }
    Owned owner;
    Model* model;
};

TEST_F(PointSetsTest, LinkedGoesThroughFacesAndLinesOfAllLayers) {
    EXPECT_EQ(points_linked(model, {9}), (Ids{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(points_linked(model, {40000}), (Ids{40000}));
    EXPECT_EQ(points_linked(model, {}), (Ids{}));
    put_point(model, 10, {0, 0, 0});
    EXPECT_EQ(points_linked(model, {10}), (Ids{10}));
}

TEST_F(PointSetsTest, GrownTakesOneStep) {
    EXPECT_EQ(points_grown(model, {1}), (Ids{1, 2, 3}));
    EXPECT_EQ(points_grown(model, {3}), (Ids{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(points_grown(model, {9, 40000}), (Ids{8, 9, 40000}));
    EXPECT_EQ(points_grown(model, {}), (Ids{}));
}

TEST_F(PointSetsTest, InvertedIsAllTheOthers) {
    EXPECT_EQ(points_inverted(model, {9, 1, 40000, 3}), (Ids{2, 4, 5, 6, 7, 8}));
    EXPECT_EQ(points_inverted(model, {}).size(), 10u);
}

TEST_F(PointSetsTest, LikeByLayerTakesAllThatItsFacesAndLinesUse) {
    EXPECT_EQ(points_like(model, {1}, PointLikeness::LAYER), (Ids{1, 2, 3, 8, 9}));
    EXPECT_EQ(points_like(model, {7}, PointLikeness::LAYER), (Ids{3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(points_like(model, {40000}, PointLikeness::LAYER), (Ids{40000}));
}

TEST_F(PointSetsTest, LikeByNormalAndColour) {
    for (int32_t id = 1; id <= 9; ++id) { point_of(model, id)->normal = {0, 1, 0}; }
    point_of(model, 4)->normal = {0, 1, 0.00005f};
    point_of(model, 5)->normal = {0, 1, 0.0002f};
    point_of(model, 6)->normal = {0, std::nanf(""), 0};
    EXPECT_EQ(points_like(model, {1}, PointLikeness::NORMAL), (Ids{1, 2, 3, 4, 7, 8, 9}));
    EXPECT_EQ(points_like(model, {6, 40000}, PointLikeness::NORMAL), (Ids{6, 40000}));
    point_of(model, 2)->gouraud[0] = 1;
    point_of(model, 3)->gouraud[0] = 1;
    point_of(model, 3)->gouraud[3] = 1;
    EXPECT_EQ(points_like(model, {2}, PointLikeness::COLOUR), (Ids{2}));
    EXPECT_EQ(points_like(model, {2, 9}, PointLikeness::COLOUR), (Ids{1, 2, 4, 5, 6, 7, 8, 9, 40000}));
}

}  // namespace
}  // namespace pelt
