// Children by a script's word, and where they stand.
#include "edit/edit_children.h"

#include "motion/transform_state.h"
#include "scene/model_tree.h"
#include "support/edited_scene.h"

namespace pelt {
namespace {

using test::EditedScene;

const std::string WHEEL =
    "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\nlayer rim 1 2 3 x\ntriangles\n0 1 2 3\nimage a.tga x y\n";
const std::string CART = "child wheel 0 0 0 1 1 1 0 0 0\nchild wheel 5 0 0 1 1 1 0 0 0\n";

class EditChildren : public EditedScene {
protected:
    EditChildren() { dir.write("wheel.mod", WHEEL); }
    ChildLink* add(Model* parent, const std::string& name, const PlaceEdit& place = {}) {
        ChildLink* link = nullptr;
        refused = {};
        return edit_add_child(&session, parent, name, place, &link, &refused) ? link : nullptr;
    }
    static ChildLink* link(Model* model, int32_t rank) { return list_at<ChildLink>(&model->children, rank, 1); }
};

TEST_F(EditChildren, AChildIsReadAndPlaced) {
    Model* cart = open(CART, "cart.mod");
    PlaceEdit place;
    place.translation = Vec3{1.5f, 2.0f, -3.0f};
    place.scale = Vec3{2.0f, 1.0f, 1.0f};
    place.rotation = {"z90", "0", "-4.5"};
    ChildLink* added = add(cart, "wheel", place);
    ASSERT_NE(added, nullptr) << refused.text;
    expect_says(cart, CART + "child wheel 1.5 2.0 -3.0 2 1 1 z90 0 -4.5\n");
    EXPECT_EQ(added->model->parent, cart);
    EXPECT_EQ(list_count(&added->model->points), 3);
    ASSERT_NE(add(cart, "wheel"), nullptr);
    expect_says(cart, CART + "child wheel 1.5 2.0 -3.0 2 1 1 z90 0 -4.5\nchild wheel 0 0 0 1 1 1 0 0 0\n");
}

TEST_F(EditChildren, AllModelsOfAFileGetAChildOfTheirOwn) {
    dir.write("cart.mod", CART);
    Model* train = open("child cart 0 0 0 1 1 1 0 0 0\nchild cart 9 0 0 1 1 1 0 0 0\n", "train.mod");
    Model* first = link(train, 0)->model;
    Model* second = link(train, 1)->model;
    const ChildLink* added = add(second, "wheel");
    ASSERT_NE(added, nullptr);
    expect_says(first, CART + "child wheel 0 0 0 1 1 1 0 0 0\n");
    expect_says(second, CART + "child wheel 0 0 0 1 1 1 0 0 0\n");
    EXPECT_EQ(added->model->parent, second);
    EXPECT_EQ(link(first, 2)->model->parent, first);
    ASSERT_TRUE(edit_remove_child(&session, link(first, 0), &refused));
    expect_says(first, "child wheel 5 0 0 1 1 1 0 0 0\nchild wheel 0 0 0 1 1 1 0 0 0\n");
    expect_says(second, "child wheel 5 0 0 1 1 1 0 0 0\nchild wheel 0 0 0 1 1 1 0 0 0\n");
    ASSERT_NE(add(first, "wheel"), nullptr);
    EXPECT_EQ(list_index_of(&first->children, link(first, 2)->id, 0), 3) << "behind the last, not in the hole";
}

TEST_F(EditChildren, WhatCannotBeAChildIsRefused) {
    Model* cart = open(CART, "cart.mod");
    const uint64_t version = cart->version;
    EXPECT_EQ(add(cart, "nowhere"), nullptr);
    EXPECT_EQ(refused.kind, EDIT_FILE);
    EXPECT_EQ(refused.file, dir.file("nowhere.mod"));
    EXPECT_EQ(add(cart, "cart"), nullptr) << "it would be its own child";
    EXPECT_EQ(refused.kind, EDIT_FILE);
    EXPECT_EQ(add(cart, std::string(128, 'a')), nullptr);
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
    PlaceEdit place;
    place.rotation = {"0", "12345678", "0"};
    EXPECT_EQ(add(cart, "wheel", place), nullptr);
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
    EXPECT_EQ(cart->version, version);
}

TEST_F(EditChildren, ATreeKeepsWithinItsBounds) {
    std::string lines;
    for (int i = 0; i < MODEL_TREE_NODE_LIMIT - 1; ++i) { lines += "child dot 0 0 0 1 1 1 0 0 0\n"; }
    dir.write("dot.mod", "");
    Model* many = open(lines, "many.mod");
    EXPECT_EQ(add(many, "dot"), nullptr);
    EXPECT_EQ(model_tree_size(many).nodes, MODEL_TREE_NODE_LIMIT);
}

TEST_F(EditChildren, WhatAChildLentIsLentNoMore) {
    Model* cart = open(CART, "cart.mod");
    Model* other = open("", "other.mod");
    Model* wheel = link(cart, 0)->model;
    model_state(&session, wheel);
    ChildLink* borrowed = model_add_child(other, wheel, "wheel", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    borrowed->borrowed = 1;
    ASSERT_TRUE(edit_remove_child(&session, link(cart, 0), &refused));
    EXPECT_EQ(borrowed->model, nullptr);
    ASSERT_TRUE(edit_remove_child(&session, borrowed, &refused)) << "a link without a model";
    EXPECT_EQ(list_count(&other->children), 0);
}

TEST_F(EditChildren, APlaceIsThatOfTheLine) {
    Model* cart = open(CART, "cart.mod");
    ChildLink* wheel = link(cart, 1);
    const ChildState* state = child_state(&session, wheel);
    PlaceEdit place;
    place.translation = Vec3{7.0f, 8.0f, 9.0f};
    place.rotation = {"0", "0", "90"};
    ASSERT_TRUE(edit_place_child(&session, wheel, place, &refused));
    expect_says(cart, "child wheel 0 0 0 1 1 1 0 0 0\nchild wheel 7 8 9 1 1 1 0 0 90\n");
    EXPECT_NEAR(state->matrix.m[1], -1.0f, 1e-6f) << "a quarter turn about z";
    EXPECT_EQ(state->matrix.m[3], 7.0f);
    EXPECT_EQ(state->gl_matrix.m[12], 7.0f);
}

}  // namespace
}  // namespace pelt
