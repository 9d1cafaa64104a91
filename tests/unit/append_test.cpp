// New records behind the last one, never in a hole, and taking records out.
#include "scene/append.h"

#include <gtest/gtest.h>

#include "scene/change.h"
#include "support/edit_model.h"

namespace pelt {
namespace {

using namespace edit_model;

class AppendTest : public EditTest {
protected:
    AppendTest() : model(empty_model()) {
        put_points(model.get(), {{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {0, 9, 0}});
        layer = put_layer(model.get());
    }

    Owned model;
    Layer* layer;
};

TEST_F(AppendTest, EndSlotIsBehindTheLastOccupiedOne) {
    EXPECT_EQ(list_end_slot(nullptr), 0);
    EXPECT_EQ(list_end_slot(&layer->lines), 0);
    EXPECT_EQ(list_end_slot(&model->points), 4);
    list_remove(&model->points, 2);
    EXPECT_EQ(list_end_slot(&model->points), 4);
    list_remove(&model->points, 4);
    EXPECT_EQ(list_end_slot(&model->points), 3);
    for (int32_t id = 10; id < 210; ++id) { list_add(&model->points, id); }
    EXPECT_EQ(list_end_slot(&model->points), 202);
}

TEST_F(AppendTest, PointIsLikeTheOtherOneAndStandsLast) {
    model_remove_point(model.get(), 2);
    Point* like = point_of(model.get(), 3);
    like->weight = 0.25f;
    like->state_index = 7;
    EXPECT_EQ(model_next_point(model.get()), 5);
    const Point* added = model_append_point(model.get(), 5, *like);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(point_ids(model.get()), (Ids{1, 3, 4, 5}));
    expect_vector(added->position, {9, 9, 0});
    EXPECT_EQ(added->weight, 0.25f);
    EXPECT_EQ(added->state_index, -1);
    like->state_index = -1;
}

TEST_F(AppendTest, FirstPointOfAModelIsNumberOne) { EXPECT_EQ(model_next_point(empty_model().get()), 1); }

TEST_F(AppendTest, PrimitivesStandLastWithNumbersOfTheirOwn) {
    const Triangle* one = put_triangle(model.get(), "body", {1, 2, 3});
    Triangle* two = put_triangle(model.get(), "body", {1, 2, 4, 3});
    put_polygon(model.get(), "body", {1, 2, 3});
    put_polygon(model.get(), "body", {2, 3, 4});
    const int32_t last_id = two->id;
    two->state_index = 5;
    layer_remove_triangle(model.get(), layer, list_index_of(&layer->triangles, one->id, 0));
    const Triangle* added = layer_append_triangle(model.get(), layer, *two);
    two->state_index = -1;
    EXPECT_EQ(triangles_of(model.get(), "body"), (std::vector<Ids>{{1, 2, 4, 3}, {1, 2, 4, 3}}));
    EXPECT_GT(added->id, last_id);
    EXPECT_EQ(list_find<Triangle>(&layer->triangles, added->id), added);
    EXPECT_EQ(added->state_index, -1);
    layer_remove_polygon(model.get(), layer, 0);
    layer_append_polygon(model.get(), layer, {{4, 3, 0, 0}, {3, 3, 0, 0}, {1, 1, 0, 0}});
    EXPECT_EQ(strips_of(model.get(), "body"), (std::vector<Strip>{{{2, 3, 4}, {2, 3, 4}}, {{4, 3, 1}, {3, 3, 1}}}));
}

TEST_F(AppendTest, LinesAndTextureCoordinates) {
    layer_append_line(model.get(), layer, {1, 2});
    layer_append_line(model.get(), layer, {2, 3, 4});
    layer_remove_line(model.get(), layer, 0);
    layer_append_line(model.get(), layer, {4, 1});
    std::vector<int> counts;
    for (const Line& line : list_elements<Line>(layer->lines)) { counts.push_back(line.vertex_count); }
    EXPECT_EQ(counts, (Ids{3, 2}));
    layer_append_uvee(model.get(), layer, {2, 0.5f, 0.25f});
    layer_append_uvee(model.get(), layer, {1, 0, 0});
    layer_append_uvee(model.get(), layer, {2, 1, 1});
    EXPECT_EQ(list_count(&layer->uvees), 2);
    EXPECT_EQ(list_find<Uvee>(&layer->uvees, 2)->u, 1.0f);
    layer_remove_uvee(model.get(), layer, list_index_of(&layer->uvees, 2, 0));
    EXPECT_EQ(list_find<Uvee>(&layer->uvees, 2), nullptr);
}

// What a listener hears of one list.
struct Heard {
    std::vector<std::pair<int32_t, int32_t>> slots;  // list, slot
};

TEST_F(AppendTest, EachOfThemIsTold) {
    static Heard heard;
    heard = {};
    static const ChangeListener LISTENER{
        nullptr,
        [](void*, Model*) {},
        [](void*, Model*, Layer*, ContentList list, int32_t slot) { heard.slots.emplace_back(list, slot); },
        [](void*, Session*) {},
        [](void*, Session*, SceneList, int32_t) {},
        [](void*, Model*, Layer*) { return false; },
        [](void*, Model*) { return false; },
        [](void*, Session*, const RootModel&) { return false; },
        [](void*, Session*) {}};
    put_triangle(model.get(), "body", {1, 2, 3});
    change_watch(model.get());
    change_listener = &LISTENER;
    model_append_point(model.get(), 9, *point_of(model.get(), 1));
    layer_append_triangle(model.get(), layer, *last_triangle(layer));
    layer_append_polygon(model.get(), layer, {{1, 1, 0, 0}});
    layer_append_line(model.get(), layer, {1});
    layer_append_uvee(model.get(), layer, {1, 0, 0});
    layer_append_uvee(model.get(), layer, {1, 1, 1});
    layer_remove_triangle(model.get(), layer, 0);
    layer_remove_polygon(model.get(), layer, 0);
    layer_remove_line(model.get(), layer, 0);
    layer_remove_uvee(model.get(), layer, 0);
    change_listener = nullptr;
    EXPECT_EQ(heard.slots, (std::vector<std::pair<int32_t, int32_t>>{{CONTENT_POINTS, 4},
                                                                     {CONTENT_TRIANGLES, 1},
                                                                     {CONTENT_POLYGONS, 0},
                                                                     {CONTENT_LINES, 0},
                                                                     {CONTENT_UVEES, 0},
                                                                     {CONTENT_UVEES, 0},
                                                                     {CONTENT_TRIANGLES, 0},
                                                                     {CONTENT_POLYGONS, 0},
                                                                     {CONTENT_LINES, 0},
                                                                     {CONTENT_UVEES, 0}}));
}

}  // namespace
}  // namespace pelt
