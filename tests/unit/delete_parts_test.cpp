// Points, faces, lines and layers taken out.
#include "edit/delete_parts.h"

#include <gtest/gtest.h>

#include "edit/binding_counts.h"
#include "support/modelling_scene.h"

namespace pelt {
namespace {

using namespace edit_model;

class DeletePartsTest : public ModellingTest {
protected:
    DeletePartsTest() {
        put_points(model, {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {50, 50, 9}, {60, 50, 9}});
        put_layer(model, "body");
        put_layer(model, "roof");
    }
    bool delete_points(const std::vector<int32_t>& ids) {
        return edit_delete_points(&session, model, ids, &deleted, &refused);
    }

    DeletedParts deleted{};
};

TEST_F(DeletePartsTest, APointTakesWhatHasItAsACorner) {
    put_triangle(model, "body", {1, 2, 3});
    put_triangle(model, "body", {1, 2, 4, 3});
    put_triangle(model, "body", {4, 5, 6});
    put_polygon(model, "roof", {4, 5, 6});
    put_polygon(model, "roof", {1, 2, 3, 4});
    put_line("roof", {5, 6});
    put_line("roof", {6, 2, 5});
    model_add_uvee(model, "roof", 2, 0.5f, 0.5f);
    model_add_uvee(model, "roof", 4, 0.5f, 0.5f);
    expect_step([&] { return delete_points({2}); });
    EXPECT_EQ(point_ids(model), (Ids{1, 3, 4, 5, 6}));
    EXPECT_EQ(triangles_of(model, "body"), (std::vector<Ids>{{4, 5, 6}}));
    EXPECT_EQ(strips_of(model, "roof"), (std::vector<Strip>{{{4, 5, 6}, {4, 5, 6}}}));
    EXPECT_EQ(lines_of("roof"), (std::vector<Ids>{{5, 6}}));
    EXPECT_EQ(list_count(&layer_of(model, "roof")->uvees), 1);
    EXPECT_EQ(deleted.points, 1);
    EXPECT_EQ(deleted.faces, 3);
    EXPECT_EQ(deleted.lines, 1);
}

TEST_F(DeletePartsTest, ALentNormalOrControlGoesBackToItsCorner) {
    Triangle* curved = put_triangle(model, "body", {1, 2, 3}, {5, 2, 6, 0}, 3);
    // Controls by edges: at 1 and 2, at 2 and 3, at 3 and 1.
    const int16_t controls[] = {5, 2, 6, 3, 3, 5};
    std::copy(std::begin(controls), std::end(controls), curved->controls);
    expect_step([&] { return delete_points({5}); });
    const Triangle* left = last_triangle(layer_of(model, "body"));
    EXPECT_EQ(triangle_normals_of(model, "body"), (std::vector<Ids>{{1, 2, 6}}));
    EXPECT_EQ(Ids(left->controls, left->controls + 6), (Ids{1, 2, 6, 3, 3, 1}));
    EXPECT_EQ(deleted.faces, 0);
    // A file has no normals of their own for the corners of a polygon; scripts can give it some.
    put_polygon(model, "body", {1, 2, 3}, {1, 4, 6});
    ASSERT_TRUE(delete_points({4}));
    EXPECT_EQ(strips_of(model, "body"), (std::vector<Strip>{{{1, 2, 3}, {1, 2, 6}}}));
}

TEST_F(DeletePartsTest, AQuadsControlsGoBackByTheirOwnEdges) {
    Triangle* curved = put_triangle(model, "body", {1, 2, 4, 3}, {}, 4);
    std::fill(std::begin(curved->controls), std::end(curved->controls), int16_t{5});
    expect_step([&] { return delete_points({5}); });
    const Triangle* left = last_triangle(layer_of(model, "body"));
    // The outline runs 1, 2, 3, 4; its edges are told as 1-2, 2-3, 3-4, 4-1.
    EXPECT_EQ(Ids(left->controls, left->controls + 8), (Ids{1, 2, 2, 3, 3, 4, 4, 1}));
}

TEST_F(DeletePartsTest, APointBeyondTheNumbersOfFacesIsNoCornerOfAny) {
    put_point(model, 65537, {7, 7, 7});  // its low half is 1
    put_triangle(model, "body", {1, 2, 3});
    ASSERT_TRUE(delete_points({65537}));
    EXPECT_EQ(triangles_of(model, "body").size(), 1u);
    EXPECT_EQ(point_ids(model), (Ids{1, 2, 3, 4, 5, 6}));
}

TEST_F(DeletePartsTest, TheBoxBecomesThatOfWhatIsLeft) {
    expect_step([&] { return delete_points({5, 6}); });
    expect_vector(model->bounds_max, {10, 10, 0});
    expect_step([&] { return delete_points({1, 2, 3, 4}); });
    expect_vector(model->bounds_max, {0, 0, 0});
    EXPECT_EQ(list_count(&model->points), 0);
}

TEST_F(DeletePartsTest, FacesAndLinesGoAlone) {
    put_triangle(model, "body", {1, 2, 3});
    const PrimitiveName triangle = last("body");
    put_triangle(model, "roof", {1, 2, 4, 3});
    put_polygon(model, "roof", {1, 2, 3, 4});
    put_line("roof", {5, 6});
    const PrimitiveName polygon = last("roof", PrimitiveKind::POLYGON);
    const PrimitiveName line = last("roof", PrimitiveKind::LINE);
    expect_step([&] {
        return edit_delete_primitives(&session, model, {polygon, triangle, triangle}, &deleted, &refused);
    });
    EXPECT_EQ(deleted.faces, 2);
    EXPECT_TRUE(triangles_of(model, "body").empty());
    EXPECT_EQ(triangles_of(model, "roof").size(), 1u);
    EXPECT_TRUE(strips_of(model, "roof").empty());
    expect_step([&] { return edit_delete_primitives(&session, model, {line}, &deleted, &refused); });
    EXPECT_EQ(deleted.lines, 1);
    EXPECT_TRUE(lines_of("roof").empty());
    EXPECT_EQ(point_ids(model).size(), 6u);
    expect_refused(
        [&] {
            return edit_delete_primitives(&session, model, {last("roof"), line}, &deleted, &refused);
        },
        ("l" + std::to_string(line.id)).c_str());
}

TEST_F(DeletePartsTest, LayersGoWithTheirFacesAndLeaveThePoints) {
    put_layer(model, "a name of more than thirty-two characters");
    put_triangle(model, "body", {1, 2, 3});
    put_polygon(model, "body", {1, 2, 3});
    put_line("body", {1, 2});
    std::vector<const Layer*> going;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (std::string(layer.name) != "roof") { going.push_back(&layer); }
    }
    expect_step([&] { return edit_delete_layers(&session, model, going, &deleted, &refused); });
    EXPECT_EQ(layer_names(model), (std::vector<std::string>{"roof"}));
    EXPECT_EQ(deleted.layers, 2);
    EXPECT_EQ(deleted.faces, 2);
    EXPECT_EQ(deleted.lines, 1);
    EXPECT_EQ(point_ids(model).size(), 6u);
}

TEST_F(DeletePartsTest, AnUnknownPointIsRefusedAsAWhole) {
    expect_refused([&] { return delete_points({1, 77}); }, "77");
}

// Points 1 and 2 are dealt to the arm, 3 to the hand, 4 to the blend of both, 5 says its joints itself.
class BoundPartsTest : public DeletePartsTest {
protected:
    BoundPartsTest() {
        Joint* arm = put_joint(model, "arm");
        Joint* hand = put_joint(model, "hand", "arm");
        blend = model_add_blend(model, "hand", "world", 1);
        arm->point_count = 2;
        hand->point_count = 1;
        bind(1, arm, nullptr);
        bind(2, arm, nullptr);
        bind(3, hand, arm);
        bind(4, hand, nullptr);
        bind(5, arm, hand);
    }
    void bind(int32_t id, Joint* a, Joint* b) {
        point_of(model, id)->joint_a = a;
        point_of(model, id)->joint_b = b;
    }
    Ids counts() {
        Ids out;
        for (const Joint& joint : list_elements<Joint>(model->joints)) { out.push_back(joint.point_count); }
        for (const BlendWeight& each : list_elements<BlendWeight>(model->blends)) { out.push_back(each.point_count); }
        return out;
    }

    BlendWeight* blend;
};

TEST_F(BoundPartsTest, DeletedPointsLowerTheCountsThatTheyWereIn) {
    EXPECT_EQ(counts(), (Ids{2, 1, 1}));
    ASSERT_TRUE(delete_points({1, 5}));
    EXPECT_EQ(counts(), (Ids{1, 1, 1}));
    ASSERT_TRUE(delete_points({4}));
    EXPECT_EQ(counts(), (Ids{1, 1}));  // a blend group without points goes
    ASSERT_TRUE(delete_points({2, 3, 6}));
    EXPECT_EQ(counts(), (Ids{0, 0}));
}

TEST_F(BoundPartsTest, DeletedPointsOfABlendReadBack) {
    expect_step([&] { return delete_points({4, 6}); });
    expect_step([&] { return delete_points({2}); });
}

TEST_F(BoundPartsTest, APointThatWasBoundByHandCountsWithItsOwnJoints) {
    bind(1, model_find_joint(model, "hand"), model_find_joint(model, "arm"));
    model_find_joint(model, "hand")->point_count = 2;
    ASSERT_TRUE(delete_points({1}));
    EXPECT_EQ(counts(), (Ids{2, 1, 1}));
}

}  // namespace
}  // namespace pelt
