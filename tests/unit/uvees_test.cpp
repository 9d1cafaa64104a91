// Storing texture coordinates as uvees, and shaking them.
#include <gtest/gtest.h>

#include <bit>
#include <map>

#include "reduce/flatten.h"
#include "support/edit_model.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

using UvMap = std::map<int, std::pair<float, float>>;

UvMap uvees_of(Model* model, const char* layer) {
    UvMap out;
    for (const Uvee& uvee : list_elements<Uvee>(layer_of(model, layer)->uvees)) { out[uvee.point] = {uvee.u, uvee.v}; }
    return out;
}

void number_uvs(Triangle* triangle, float base) {
    for (int i = 0; i < 4; ++i) {
        triangle->uvs[i][0] = base + static_cast<float>(i);
        triangle->uvs[i][1] = -base - static_cast<float>(i);
    }
}

class Uvees : public EditTest {
protected:
    Uvees() {
        put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
        put_layer(model.get());
    }
    void attach_image_record() { *list_add<LayerImage>(&layer_of(model.get(), "body")->images, 1) = LayerImage{}; }
    Owned model = empty_model();
};

TEST_F(Uvees, all_corners_are_stored_also_without_an_image) {
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3}), 10);
    EXPECT_EQ(model_triangulate_all(model.get()), 1);
    EXPECT_EQ(uvees_of(model.get(), "body"), (UvMap{{1, {10, -10}}, {2, {11, -11}}, {3, {12, -12}}}));
}

TEST_F(Uvees, fourth_corner_of_a_triangle_leaves_its_text) {
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_triangulate_all(model.get()), 1);
    EXPECT_EQ(error_text(), "uvee point not found in model");
}

TEST_F(Uvees, quads_are_split_before_their_corners_are_stored) {
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3, 4}), 10);
    model_triangulate_all(model.get());
    EXPECT_EQ(triangles_of(model.get(), "body").size(), 2u);
    // The new half was never mapped: without an image its corners bring 0.
    EXPECT_EQ(uvees_of(model.get(), "body"), (UvMap{{1, {10, -10}}, {2, {0, 0}}, {3, {0, 0}}, {4, {0, 0}}}));
}

TEST_F(Uvees, the_last_corner_at_a_point_decides) {
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3}), 10);
    number_uvs(put_triangle(model.get(), "body", {1, 4, 4}), 20);
    model_triangulate_all(model.get());
    EXPECT_EQ(uvees_of(model.get(), "body"), (UvMap{{1, {20, -20}}, {2, {11, -11}}, {3, {12, -12}}, {4, {22, -22}}}));
}

TEST_F(Uvees, store_passes_over_layers_without_an_image) {
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3}), 10);
    EXPECT_EQ(model_store_uvees(model.get()), 1);
    EXPECT_TRUE(uvees_of(model.get(), "body").empty());
}

TEST_F(Uvees, store_takes_the_fourth_corner_of_a_quad_alone) {
    attach_image_record();
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3, 4}), 10);
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3}), 20);
    EXPECT_EQ(model_store_uvees(model.get()), 1);
    EXPECT_EQ(uvees_of(model.get(), "body"), (UvMap{{1, {20, -20}}, {2, {21, -21}}, {3, {22, -22}}, {4, {13, -13}}}));
    EXPECT_EQ(error_text(), "(none)");
}

TEST_F(Uvees, jitter_of_nothing_changes_nothing) {
    model_add_uvee(model.get(), "body", 1, 0.25f, -3.0f);
    EXPECT_EQ(model_jitter_uvees(model.get(), 0.0f, 0.0f), 1);
    EXPECT_EQ(uvees_of(model.get(), "body"), (UvMap{{1, {0.25f, -3.0f}}}));
}

// The first four numbers of the sequence from its seed, worked out apart.
constexpr float JITTER[] = {13562, 31639, 29789, 28584};
constexpr uint32_t SCALE_BITS = 0x38000100;

TEST_F(Uvees, jitter_takes_a_fresh_number_for_each_coordinate) {
    put_layer(model.get(), "second");
    model_add_uvee(model.get(), "body", 2, 0, 0);
    model_add_uvee(model.get(), "second", 1, 1, 1);
    EXPECT_EQ(model_jitter_uvees(model.get(), 2.0f, 4.0f), 1);
    const float scale = std::bit_cast<float>(SCALE_BITS);
    EXPECT_EQ(uvees_of(model.get(), "body"), (UvMap{{2, {JITTER[0] * (2 * scale), JITTER[1] * (4 * scale)}}}));
    EXPECT_EQ(uvees_of(model.get(), "second"),
              (UvMap{{1, {1 + JITTER[2] * (2 * scale), 1 + JITTER[3] * (4 * scale)}}}));
}

TEST_F(Uvees, jitter_makes_the_same_shifts_each_time_and_none_is_negative) {
    Owned other = empty_model();
    put_points(other.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    put_layer(other.get());
    for (Model* each : {model.get(), other.get()}) {
        for (int id = 1; id <= 4; ++id) { model_add_uvee(each, "body", id, 0.5f, 0.5f); }
        model_jitter_uvees(each, 0.01f, 0.01f);
    }
    EXPECT_EQ(uvees_of(model.get(), "body"), uvees_of(other.get(), "body"));
    for (const auto& [id, uv] : uvees_of(model.get(), "body")) {
        EXPECT_GE(uv.first, 0.5f) << id;
        EXPECT_GE(uv.second, 0.5f) << id;
        EXPECT_LE(uv.first, 0.51001f) << id;
    }
}

TEST_F(Uvees, jitter_leaves_the_corners_of_primitives) {
    number_uvs(put_triangle(model.get(), "body", {1, 2, 3}), 10);
    model_add_uvee(model.get(), "body", 1, 0, 0);
    model_jitter_uvees(model.get(), 1.0f, 1.0f);
    EXPECT_EQ(last_triangle(layer_of(model.get(), "body"))->uvs[0][0], 10.0f);
}

TEST_F(Uvees, null_and_empty_models) {
    EXPECT_EQ(model_triangulate_all(nullptr), 0);
    EXPECT_EQ(model_store_uvees(nullptr), 0);
    EXPECT_EQ(model_jitter_uvees(nullptr, 1, 1), 0);
    Owned empty = empty_model();
    EXPECT_EQ(model_triangulate_all(empty.get()), 1);
    EXPECT_EQ(model_store_uvees(empty.get()), 1);
    EXPECT_EQ(model_jitter_uvees(empty.get(), 1, 1), 1);
}

}  // namespace
