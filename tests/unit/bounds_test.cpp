// Boxes, sizes, centres, and the radius of the scene.
#include "edit/bounds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "application/session_lifecycle.h"
#include "edit/selection.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"

namespace pelt {
namespace {

void expect_vec(float x, float y, float z, const Vec3& v) {
    EXPECT_NEAR(x, v.x, 1e-3);
    EXPECT_NEAR(y, v.y, 1e-3);
    EXPECT_NEAR(z, v.z, 1e-3);
}

class BoundsTest : public ::testing::Test {
protected:
    BoundsTest() { session_init(&session); }
    ~BoundsTest() override { session_reset(&session, 1); }

    // A model with the box of these two corners, not in the scene yet.
    Model* make(Vec3 a, Vec3 b, Model* parent = nullptr) {
        Model* model = model_create("made.mod", parent);
        model_set_point(model, 1, static_cast<int32_t>(a.x), static_cast<int32_t>(a.y), static_cast<int32_t>(a.z), 1);
        model_set_point(model, 2, static_cast<int32_t>(b.x), static_cast<int32_t>(b.y), static_cast<int32_t>(b.z), 1);
        return model;
    }

    Model* add(Vec3 a, Vec3 b) {
        Model* model = make(a, b);
        session_add_root(&session, model, nullptr);
        return model;
    }

    ChildLink* link(Model* parent, Model* child, Vec3 position, Vec3 scale = {1, 1, 1}, const char* turn = "0") {
        return model_add_child(parent, child, "link", position.x, position.y, position.z, scale.x, scale.y, scale.z,
                               "0", "0", turn);
    }

    Session session{};
};

TEST_F(BoundsTest, NullModelHasABoxOfZeros) {
    const Box box = model_bounds(nullptr, nullptr);
    expect_vec(0, 0, 0, box.lower);
    expect_vec(0, 0, 0, box.upper);
    EXPECT_EQ(model_largest_extent(nullptr, nullptr), 0.0f);
}

TEST_F(BoundsTest, SizeCentreAndLargestExtentComeFromTheBox) {
    Model* model = add({-30, 2, 4}, {10, 6, 9});
    expect_vec(40, 4, 5, model_size(model, nullptr));
    expect_vec(-10, 4, 6.5f, model_centre(model, nullptr));
    EXPECT_FLOAT_EQ(model_largest_extent(model, nullptr), 30.0f);
}

TEST_F(BoundsTest, TheMatrixMovesTheBox) {
    Model* model = add({0, 0, 0}, {1, 2, 3});
    Mat4 matrix;
    mat_identity(&matrix);
    mat_translate(&matrix, 10, 20, 30);
    mat_scale(&matrix, -1, 1, 1);
    const Box box = model_bounds(model, &matrix);
    expect_vec(9, 20, 30, box.lower);
    expect_vec(10, 22, 33, box.upper);
}

TEST_F(BoundsTest, UnderARotationTheBoxIsThatOfTwoCornersAndMayCollapse) {
    Model* model = add({0, 0, 0}, {10, 10, 0});
    Mat4 matrix;
    mat_identity(&matrix);
    mat_rotate(&matrix, 0, 0, 45);
    const Box box = model_bounds(model, &matrix);
    expect_vec(0, 0, 0, box.lower);
    expect_vec(0, 14.1421356f, 0, box.upper);
}

TEST_F(BoundsTest, AModelWithoutPointsAndOneChildHasTheBoxOfTheChildAlone) {
    Model* parent = model_create("empty.mod", nullptr);
    session_add_root(&session, parent, nullptr);
    link(parent, make({5, 5, 5}, {6, 7, 8}, parent), {0, 0, 0});
    const Box box = model_bounds(parent, nullptr);
    expect_vec(5, 5, 5, box.lower);
    expect_vec(6, 7, 8, box.upper);
}

TEST_F(BoundsTest, AChildLiesInTheBoxAtItsPlace) {
    Model* parent = add({0, 0, 0}, {1, 1, 1});
    link(parent, make({0, 0, 0}, {2, 2, 2}, parent), {10, 20, 30});
    expect_vec(12, 22, 32, model_size(parent, nullptr));
}

TEST_F(BoundsTest, AChildIsScaledThenTurnedThenMoved) {
    Model* parent = add({0, 0, 0}, {1, 1, 1});
    // (2, 3, 4) scaled to (4, 9, 4), turned by 90 degrees about z to (-9, 4, 4), moved to (-9, 14, 4).
    link(parent, make({0, 0, 0}, {2, 3, 4}, parent), {0, 10, 0}, {2, 3, 1}, "90");
    const Box box = model_bounds(parent, nullptr);
    expect_vec(-9, 0, 0, box.lower);
    expect_vec(1, 14, 4, box.upper);
}

TEST_F(BoundsTest, LinksChainUnderTheMatrixAndTheMatrixStaysAsItWas) {
    Model* parent = add({0, 0, 0}, {1, 1, 1});
    Model* child = make({0, 0, 0}, {1, 1, 1}, parent);
    link(parent, child, {10, 0, 0});
    link(child, make({0, 0, 0}, {1, 1, 1}, child), {100, 0, 0});
    link(parent, make({0, 0, 0}, {1, 1, 1}, parent), {-5, 0, 0});
    Mat4 matrix;
    mat_identity(&matrix);
    mat_scale(&matrix, 2, 2, 2);
    const Box box = model_bounds(parent, &matrix);
    expect_vec(-10, 0, 0, box.lower);
    expect_vec(222, 2, 2, box.upper);
    EXPECT_EQ(matrix.m[0], 2.0f);
    EXPECT_EQ(matrix.m[3], 0.0f);
}

// Intended: its place does not count, nor does the matrix.
TEST_F(BoundsTest, ALinkWithoutAModelWidensTheBoxByTheOrigin) {
    Model* parent = add({5, 6, 7}, {8, 9, 10});
    link(parent, nullptr, {-100, 200, 300});
    Mat4 matrix;
    mat_identity(&matrix);
    mat_translate(&matrix, 20, 30, 40);
    const Box box = model_bounds(parent, &matrix);
    expect_vec(0, 0, 0, box.lower);
    expect_vec(28, 39, 50, box.upper);
}

TEST_F(BoundsTest, ALinkWithoutAModelIsTheFirstBoxOfAModelWithoutPoints) {
    Model* parent = model_create("empty.mod", nullptr);
    session_add_root(&session, parent, nullptr);
    link(parent, nullptr, {1, 1, 1});
    link(parent, make({5, 5, 5}, {6, 7, 8}, parent), {0, 0, 0});
    const Box box = model_bounds(parent, nullptr);
    expect_vec(0, 0, 0, box.lower);
    expect_vec(6, 7, 8, box.upper);
}

TEST_F(BoundsTest, AMatrixThatTurnsAnAxisRoundKeepsTheCornersSorted) {
    Model* model = add({1, 2, 3}, {4, 6, 8});
    Mat4 matrix;
    mat_identity(&matrix);
    mat_scale(&matrix, -1, -1, -1);
    const Box box = model_bounds(model, &matrix);
    expect_vec(-4, -6, -8, box.lower);
    expect_vec(-1, -2, -3, box.upper);
}

TEST_F(BoundsTest, EachAxisIsSortedByItself) {
    Model* model = add({20, -10, -30}, {25, -5, -25});
    const Box box = model_bounds(model, nullptr);
    expect_vec(20, -10, -30, box.lower);
    expect_vec(25, -5, -25, box.upper);
}

TEST_F(BoundsTest, TheLargestExtentIsLookedForInAllSixValues) {
    const Vec3 low{-1, -2, -3};
    const Vec3 high{1, 2, 3};
    for (int axis = 0; axis < 3; ++axis) {
        const Vec3 far{axis == 0 ? 50.0f : 0, axis == 1 ? 50.0f : 0, axis == 2 ? 50.0f : 0};
        EXPECT_EQ(model_largest_extent(add(low, far), nullptr), 50.0f) << axis;
        const Vec3 back{-far.x, -far.y, -far.z};
        EXPECT_EQ(model_largest_extent(add(back, high), nullptr), 50.0f) << axis;
    }
}

TEST_F(BoundsTest, AChildIsTurnedByItsThreeTextsInTheOrderWritten) {
    Model* parent = add({0, 0, 0}, {0, 0, 0});
    // (1, 2, 3) by the half turn about z to (-1, -2, 3), by the quarter back about y to (-3, -2, -1), by that about x
    // to (-3, 1, -2).
    model_add_child(parent, make({0, 0, 0}, {1, 2, 3}, parent), "turned", 0, 0, 0, 1, 1, 1, "90", "-90", "180");
    const Box box = model_bounds(parent, nullptr);
    expect_vec(-3, 0, -2, box.lower);
    expect_vec(0, 1, 0, box.upper);
}

TEST_F(BoundsTest, ACircleOfLinksEnds) {
    Model* a = add({0, 0, 0}, {1, 1, 1});
    ChildLink* circle = link(a, a, {1, 0, 0});
    circle->borrowed = 1;
    EXPECT_TRUE(std::isfinite(model_size(a, nullptr).x));
    circle->model = nullptr;
}

TEST_F(BoundsTest, AnEmptySceneHasItsCentreAtTheOriginAndStoresIt) {
    session.centre = Vec3{1, 2, 3};
    expect_vec(0, 0, 0, scene_centre(&session));
    expect_vec(0, 0, 0, session.centre);
    expect_vec(0, 0, 0, scene_centre(nullptr));
}

TEST_F(BoundsTest, TheFirstBoxOfTheSceneIsTakenAsItIsAndLaterOnesWidenIt) {
    add({10, 10, 10}, {20, 20, 20});
    expect_vec(15, 15, 15, scene_centre(&session));
    add({30, 0, 12}, {40, 5, 13});
    expect_vec(25, 10, 15, scene_centre(&session));
    expect_vec(25, 10, 15, session.centre);
}

TEST_F(BoundsTest, TheCentreOfTheSceneFollowsThePlacementOfItsModels) {
    Model* model = add({0, 0, 0}, {2, 2, 2});
    ModelState* state = model_state(&session, model);
    state->translate = Vec3{100, 0, 0};
    model_state_rebuild(state);
    expect_vec(101, 1, 1, scene_centre(&session));
}

TEST_F(BoundsTest, TheCentreOfTheSelectionIsNotStored) {
    add({0, 0, 0}, {2, 2, 2});
    Model* second = add({10, 10, 10}, {20, 20, 20});
    expect_vec(0, 0, 0, selection_centre(&session));
    selection_add_model(&session, model_state(&session, second)->id);
    session.centre = Vec3{1, 2, 3};
    expect_vec(15, 15, 15, selection_centre(&session));
    expect_vec(1, 2, 3, session.centre);
    expect_vec(0, 0, 0, selection_centre(nullptr));
}

TEST_F(BoundsTest, TheCentreOfASelectedChildWithoutAStateUsesItsRestAndMakesNoState) {
    Model* parent = add({0, 0, 0}, {1, 1, 1});
    Model* child = make({10, 10, 10}, {20, 20, 20}, parent);
    next_child_state_id = next_child_state_id < 9000 ? 9000 : next_child_state_id;
    ASSERT_EQ(selection_add_model(&session, child_state(&session, link(parent, child, {500, 0, 0}))->id), 1);
    expect_vec(15, 15, 15, selection_centre(&session));
    EXPECT_EQ(child->state_index, -1);
}

TEST_F(BoundsTest, RadiusIsTwiceTheLargestSizeWithTheTranslationAdded) {
    Model* model = add({0, 0, 0}, {10, 40, 30});
    session_grow_radius(&session, model);
    EXPECT_EQ(session_get_radius(&session), 80.0f);
    model_state(&session, model)->translate = Vec3{100, 0, -500};
    session_grow_radius(&session, model);
    EXPECT_EQ(session_get_radius(&session), 220.0f);
    EXPECT_EQ(session_get_radius(nullptr), 0.0f);
}

TEST_F(BoundsTest, RadiusAddsTheTranslationOfEachAxisToTheSizeOfThatAxis) {
    Model* model = add({0, 0, 0}, {10, 20, 30});
    const Vec3 places[] = {{100, 0, 0}, {0, 100, 0}, {0, 0, 100}};
    const float radii[] = {220.0f, 240.0f, 260.0f};
    for (int axis = 0; axis < 3; ++axis) {
        model_state(&session, model)->translate = places[axis];
        session_grow_radius(&session, model);
        EXPECT_EQ(radii[axis], session.radius);
    }
}

TEST_F(BoundsTest, RadiusOnlyGrows) {
    session.radius = 80.0f;
    Model* model = add({0, 0, 0}, {10, 39, 30});
    session_grow_radius(&session, model);
    EXPECT_EQ(session.radius, 80.0f);
    session_grow_radius(&session, nullptr);
    session_grow_radius(nullptr, model);
    EXPECT_EQ(session.radius, 80.0f);
}

TEST_F(BoundsTest, RadiusIgnoresASizeThatIsNotFinite) {
    Model* model = add({0, 0, 0}, {10, 10, 10});
    const float huge = std::numeric_limits<float>::max();
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Vec3& place : {Vec3{nan, 0, 500}, Vec3{500, nan, 0}, Vec3{0, 500, nan}, Vec3{infinity, 0, 0},
                              Vec3{0, -infinity, 500}, Vec3{0, 0, huge}}) {
        model_state(&session, model)->translate = place;
        session_grow_radius(&session, model);
        EXPECT_EQ(session.radius, 10.0f);
    }
}

TEST_F(BoundsTest, GrowingTheRadiusMakesTheState) {
    Model* model = make({0, 0, 0}, {10, 10, 10});
    session_grow_radius(&session, model);
    EXPECT_NE(model->state_index, -1);
    session_add_root(&session, model, nullptr);
    EXPECT_EQ(list_count(&session.model_states), 1);
}

}  // namespace
}  // namespace pelt
