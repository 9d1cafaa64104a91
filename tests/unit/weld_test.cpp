// Points made one.
#include "edit/weld.h"

#include <gtest/gtest.h>

#include "support/modelling_scene.h"

namespace pelt {
namespace {

using namespace edit_model;

class WeldTest : public ModellingTest {
protected:
    WeldTest() {
        put_points(model, {{0, 0, 0}, {0, 10, 0}, {10, 10, 0}, {10, 0, 0}, {20, 5, 0}, {5, 5, 30}});
        put_layer(model, "body");
    }
    bool weld(const std::vector<int32_t>& ids) { return edit_weld(&session, model, ids, &refused); }
    const Triangle& only() { return *last_triangle(layer_of(model, "body")); }
};

TEST_F(WeldTest, TheFirstStandsForTheOthersEverywhere) {
    put_triangle(model, "body", {1, 2, 3});
    put_triangle(model, "body", {4, 5, 6});
    put_triangle(model, "body", {1, 3, 5}, {1, 3, 6, 0});
    put_line("body", {6, 1});
    expect_step([&] { return weld({2, 6}); });
    EXPECT_EQ(point_ids(model), (Ids{1, 2, 3, 4, 5}));
    expect_vector(point_of(model, 2)->position, {0, 10, 0});
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 2, 3}, {4, 5, 2}, {1, 3, 5}}));
    EXPECT_EQ(triangle_normals_of(model, "body")[2], (Ids{1, 3, 2}));
    EXPECT_EQ(lines_of("body"), (std::vector<Ids>{{2, 1}}));
    expect_vector(model->bounds_max, {20, 10, 0});
}

TEST_F(WeldTest, ATriangleThatLosesACornerGoes) {
    put_triangle(model, "body", {1, 2, 3});
    put_triangle(model, "body", {2, 3, 4});
    expect_step([&] { return weld({1, 2}); });
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 3, 4}}));
}

TEST_F(WeldTest, AQuadThatLosesACornerBecomesATriangleThatFacesTheSameWay) {
    // Around: 1, 2, 3, 4. Each of its edges in turn.
    const std::vector<std::pair<std::vector<int32_t>, std::vector<Ids>>> cases = {
        {{1, 2}, {{1, 3, 4}, {3, 4, 1}, {4, 1, 3}}},
        {{2, 3}, {{1, 2, 4}, {2, 4, 1}, {4, 1, 2}}},
        {{3, 4}, {{1, 2, 3}, {2, 3, 1}, {3, 1, 2}}},
        {{4, 1}, {{4, 2, 3}, {2, 3, 4}, {3, 4, 2}}}};
    for (const auto& [ids, turns] : cases) {
        put_triangle(model, "body", {1, 2, 4, 3});
        expect_step([&] { return weld(ids); });
        const std::vector<Ids> left = triangles_of(model, "body");
        ASSERT_EQ(left.size(), 1u);
        EXPECT_NE(std::find(turns.begin(), turns.end(), left[0]), turns.end()) << ids[0];
        std::string name;
        history_undo(&name);
        list_remove_slot(&layer_of(model, "body")->triangles, 0);
    }
}

TEST_F(WeldTest, AQuadThatFoldsOrLosesTwoCornersGoes) {
    put_triangle(model, "body", {1, 2, 4, 3});
    put_triangle(model, "body", {5, 1, 3, 6});
    expect_step([&] { return weld({1, 3}); });
    EXPECT_EQ(triangles_of(model, "body").size(), 0u);
    put_triangle(model, "body", {1, 2, 4, 5});
    expect_step([&] { return weld({1, 2, 4}); });
    EXPECT_EQ(triangles_of(model, "body").size(), 0u);
}

TEST_F(WeldTest, ACurvedQuadKeepsItsCurvedSides) {
    const int16_t controls[] = {1, 2, 2, 3, 3, 4, 4, 1};  // along 1-2, 2-3, 3-4, 4-1
    Triangle* quad = put_triangle(model, "body", {1, 2, 4, 3}, {}, 4);
    std::copy(std::begin(controls), std::end(controls), quad->controls);
    expect_step([&] { return weld({1, 2}); });
    EXPECT_EQ(only().curve_type, 3);
    EXPECT_EQ(Ids(only().points, only().points + 3), (Ids{1, 3, 4}));
    EXPECT_EQ(Ids(only().controls, only().controls + 6), (Ids{1, 3, 3, 4, 4, 1}));
}

TEST_F(WeldTest, AQuadCurvedAlongTwoSidesKeepsTheOneOrBothThatAreLeft) {
    put_triangle(model, "body", {1, 2, 4, 3}, {}, 2);  // curved along 1-2 and 4-3
    expect_step([&] { return weld({2, 3}); });
    EXPECT_EQ(only().curve_type, 2);  // along the edges from its first corner
    EXPECT_EQ(only().points[0], 2);
    std::string name;
    history_undo(&name);
    expect_step([&] { return weld({1, 2}); });
    EXPECT_EQ(only().curve_type, 1);  // along the edge between its first two
    EXPECT_EQ(std::minmax(only().points[0], only().points[1]), std::minmax<int16_t>(3, 4));
}

TEST_F(WeldTest, APolygonStaysOneAsLongAsItDoesNotFold) {
    put_polygon(model, "body", {1, 2, 4, 3});
    expect_step([&] { return weld({6, 3}); });
    EXPECT_EQ(strips_of(model, "body"), (std::vector<Strip>{{{1, 2, 4, 6}, {1, 2, 4, 6}}}));
    // 1, 2, 4 and 4, 2, 6 are its triangles: the first is left.
    expect_step([&] { return weld({4, 6}); });
    EXPECT_TRUE(strips_of(model, "body").empty());
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{1, 2, 4}}));
}

TEST_F(WeldTest, APolygonInTheMiddleFallsApartIntoTriangles) {
    put_polygon(model, "body", {1, 2, 4, 3, 5});
    // 1-2-4, 4-2-3, 4-3-5: with 4 for 2 the last is left.
    expect_step([&] { return weld({4, 2}); });
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{4, 3, 5}}));
}

TEST_F(WeldTest, LinesLoseWhatStandsTwiceInARow) {
    put_line("body", {1, 2, 3, 2});
    put_line("body", {2, 3});
    put_line("body", {4, 1, 2});
    expect_step([&] { return weld({2, 3}); });
    EXPECT_EQ(lines_of("body"), (std::vector<Ids>{{1, 2}, {4, 1, 2}}));
}

TEST_F(WeldTest, TextureCoordinatesAreTakenOverWhereThereAreNone) {
    put_layer(model, "roof");
    model_add_uvee(model, "body", 2, 0.25f, 0.5f);
    model_add_uvee(model, "body", 3, 0.75f, 0.5f);
    model_add_uvee(model, "roof", 1, 0.125f, 0);
    model_add_uvee(model, "roof", 2, 1, 1);
    expect_step([&] { return weld({1, 2, 3}); });
    const Layer* body = layer_of(model, "body");
    ASSERT_EQ(list_count(&body->uvees), 1);
    EXPECT_EQ(list_find<Uvee>(&body->uvees, 1)->u, 0.25f);
    EXPECT_EQ(list_find<Uvee>(&layer_of(model, "roof")->uvees, 1)->u, 0.125f);
}

TEST_F(WeldTest, OnePointAloneOrOneThatFacesCannotNameIsRefused) {
    expect_refused([&] { return weld({1}); }, "two or more");
    put_point(model, 40000, {0, 0, 0});
    expect_refused([&] { return weld({40000, 1}); }, "40000");
}

}  // namespace
}  // namespace pelt
