// Placements of models, joints, children and points at a time. Expected places are worked out by hand.
#include "motion/transform_state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "motion/root_models.h"
#include "support/animation_fixture.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

using test::ClipBuilder;
using test::place_key;
using test::turn_key;

constexpr int32_t TRANSLATE = 0;
constexpr int32_t ROTATE = 1;
constexpr int32_t JOINTS = 2;  // slot of the first joint
constexpr float HALF = 0.70710678f;
constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

void expect_vec(const Vec3& v, float x, float y, float z, float tolerance = 1e-4f) {
    EXPECT_NEAR(v.x, x, tolerance);
    EXPECT_NEAR(v.y, y, tolerance);
    EXPECT_NEAR(v.z, z, tolerance);
}

Vec3 translation(const Mat4& m) { return {m.m[3], m.m[7], m.m[11]}; }

Vec3 applied(const Mat4& m, Vec3 p) {
    return {p.x * m.m[0] + p.y * m.m[1] + p.z * m.m[2] + m.m[3], p.x * m.m[4] + p.y * m.m[5] + p.z * m.m[6] + m.m[7],
            p.x * m.m[8] + p.y * m.m[9] + p.z * m.m[10] + m.m[11]};
}

void expect_identity(const Mat4& m, float tolerance = 1e-6f) {
    for (int i = 0; i < 16; ++i) { EXPECT_NEAR(m.m[i], i % 5 == 0 ? 1.0f : 0.0f, tolerance) << "element " << i; }
}

void expect_transposed(const Mat4& gl, const Mat4& m) {
    for (int i = 0; i < 16; ++i) { EXPECT_EQ(gl.m[i], m.m[i % 4 * 4 + i / 4]) << "element " << i; }
}

class TransformState : public ::testing::Test {
protected:
    void SetUp() override { test::set_up_lists(&session); }
    void TearDown() override {
        builders.clear();
        for (ModelAnimation* animation : animations) { animation_release(animation); }
        for (Model* model : models) { model_release(model); }
        test::free_lists(&session);
    }

    Model* model() {
        models.push_back(model_create("figure.mod", nullptr));
        return models.back();
    }
    // To be called when the model's joints and links are all there.
    ModelAnimation* animate(Model* of) {
        animations.push_back(animation_create(of));
        builders.push_back(std::make_unique<ClipBuilder>(&animations.back()->clip, animations.back()->slot_count));
        return animations.back();
    }
    ClipBuilder& clip() { return *builders.back(); }

    Joint* joint(Model* of, const char* name, int x, int y, int z, const char* parent) {
        EXPECT_EQ(model_add_joint(of, name, x, y, z, parent, 0), 1);
        return model_find_joint(of, name);
    }
    Point* point(Model* of, int32_t id, int x, int y, int z, float weight, const char* a, const char* b = "world") {
        model_set_point(of, id, x, y, z, weight);
        model_set_point_joints(of, id, a, b);
        return model_find_point(of, id);
    }
    Vec3 position(Point* p) { return point_state(&session, p)->position; }
    Vec3 normal(Point* p) { return point_state(&session, p)->normal; }
    Vec3 joint_position(Model* of, Joint* j) { return joint_state(&session, of, j)->position; }
    ChildLink* link(Model* of, const char* name, Model* child, float x = 0, float y = 0, float z = 0) {
        ChildLink* added = model_add_child(of, child, name, x, y, z, 1, 1, 1, "0", "0", "0");
        if (child != nullptr) { std::erase(models, child); }
        return added;
    }

    Session session{};
    std::vector<Model*> models;
    std::vector<ModelAnimation*> animations;
    std::deque<std::unique_ptr<ClipBuilder>> builders;
};

// Making records.

TEST_F(TransformState, ModelStateStartsAtIdentity) {
    Model* m = model();
    const int32_t id = next_model_state_id;
    ModelState* state = model_state(&session, m);
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->id, id);
    EXPECT_EQ(next_model_state_id, id + 1);
    EXPECT_EQ(state->time, TIME_NEVER);
    expect_vec(state->translate, 0, 0, 0, 0);
    expect_vec(state->scale, 1, 1, 1, 0);
    for (const char* text : {state->rotate[0], state->rotate[1], state->rotate[2]}) { EXPECT_STREQ(text, "0"); }
    expect_identity(state->matrix, 0);
    expect_identity(state->rotation, 0);
    expect_identity(state->gl_matrix, 0);
    EXPECT_EQ(state->reserved, 0);
    EXPECT_EQ(state->model, m);
    EXPECT_EQ(list_at(&session.model_states, m->state_index, 0), state);
    EXPECT_EQ(model_state(&session, m), state);
    EXPECT_EQ(list_count(&session.model_states), 1);
}

TEST_F(TransformState, RecordInAUsedSlotKeepsNothingButTheTriangleCount) {
    Model* first = model();
    ModelState* old = model_state(&session, first);
    old->time = 7;
    old->translate = {1, 2, 3};
    old->matrix.m[3] = 9;
    old->rotation.m[3] = 9;
    old->gl_matrix.m[3] = 9;
    std::strcpy(old->rotate[1], "x123456");
    old->reserved = 4;
    old->triangle_count = 55;
    session_forget_model(&session, first);
    Model* second = model();
    ModelState* state = model_state(&session, second);
    ASSERT_EQ(state, old);
    EXPECT_EQ(state->time, TIME_NEVER);
    expect_vec(state->translate, 0, 0, 0, 0);
    expect_identity(state->matrix, 0);
    expect_identity(state->rotation, 0);
    expect_identity(state->gl_matrix, 0);
    EXPECT_STREQ(state->rotate[1], "0");
    EXPECT_EQ(state->reserved, 0);
    EXPECT_EQ(state->triangle_count, 55);
}

TEST_F(TransformState, NullArgumentsGiveNoRecord) {
    Model* m = model();
    Joint* j = joint(m, "a", 0, 0, 0, "world");
    Point p{};
    p.state_index = -1;
    ChildLink l{};
    l.state_index = -1;
    EXPECT_EQ(model_state(nullptr, m), nullptr);
    EXPECT_EQ(model_state(&session, nullptr), nullptr);
    EXPECT_EQ(joint_state(nullptr, m, j), nullptr);
    EXPECT_EQ(joint_state(&session, nullptr, j), nullptr);
    EXPECT_EQ(joint_state(&session, m, nullptr), nullptr);
    EXPECT_EQ(child_state(nullptr, &l), nullptr);
    EXPECT_EQ(child_state(&session, nullptr), nullptr);
    EXPECT_EQ(point_state(nullptr, &p), nullptr);
    EXPECT_EQ(point_state(&session, nullptr), nullptr);
}

TEST_F(TransformState, SessionThatWasNotSetUpGivesNoRecordAndEvaluatesNothing) {
    Session bare{};
    Model* m = model();
    Joint* j = joint(m, "a", 1, 2, 3, "world");
    Point* p = point(m, 1, 1, 2, 3, 1.0f, "a");
    ChildLink* l = link(m, "child", nullptr);
    EXPECT_EQ(model_state(&bare, m), nullptr);
    EXPECT_EQ(joint_state(&bare, m, j), nullptr);
    EXPECT_EQ(point_state(&bare, p), nullptr);
    EXPECT_EQ(child_state(&bare, l), nullptr);
    ModelAnimation* a = animate(m);
    model_evaluate(&bare, 1.0f, m, a);
    joints_evaluate(&bare, 1.0f, m, a);
    points_evaluate(&bare, 1.0f, m);
    EXPECT_EQ(child_evaluate(&bare, 1.0f, l, a, 0), 1);
    EXPECT_EQ(m->state_index, -1);
    EXPECT_EQ(p->state_index, -1);
}

TEST_F(TransformState, NullSessionOrModelEvaluatesNothing) {
    Model* m = model();
    ModelAnimation* a = animate(m);
    scene_evaluate(nullptr);
    model_evaluate(nullptr, 1.0f, m, a);
    model_evaluate(&session, 1.0f, nullptr, a);
    model_evaluate(&session, 1.0f, m, nullptr);
    joints_evaluate(nullptr, 1.0f, m, a);
    joints_evaluate(&session, 1.0f, nullptr, a);
    joint_evaluate(&session, 1.0f, m, a, nullptr);
    points_evaluate(&session, 1.0f, nullptr);
    EXPECT_EQ(child_evaluate(&session, 1.0f, nullptr, a, 5), 5);
    model_state_rebuild(nullptr);
    EXPECT_EQ(list_count(&session.model_states), 0);
}

TEST_F(TransformState, IdsGoOnBehindTheLastNumberWithoutTakingOneInUse) {
    const int32_t before = next_point_state_id;
    Point kept{};
    kept.state_index = -1;
    next_point_state_id = 1;
    EXPECT_EQ(point_state(&session, &kept)->id, 1);
    next_point_state_id = std::numeric_limits<int32_t>::max();
    Point last{};
    last.state_index = -1;
    EXPECT_EQ(point_state(&session, &last)->id, std::numeric_limits<int32_t>::max());
    Point wrapped{};
    wrapped.state_index = -1;
    EXPECT_EQ(point_state(&session, &wrapped)->id, 2);
    next_point_state_id = before;
}

TEST_F(TransformState, JointAtRestHasItsOffsetFromItsParent) {
    Model* m = model();
    Joint* base = joint(m, "base", 10, 0, 0, "world");
    Joint* tip = joint(m, "tip", 10, 5, 0, "base");
    ModelAnimation* a = animate(m);
    JointState* s = joint_state(&session, m, tip);
    EXPECT_EQ(s->parent, base);
    EXPECT_EQ(s->slot, JOINTS + 1);
    EXPECT_EQ(s->time, TIME_NEVER);
    expect_vec(s->offset, 0, 5, 0, 0);
    expect_vec(s->position, 10, 5, 0, 0);
    expect_vec(translation(s->inverse_base), -10, -5, 0, 0);
    expect_identity(s->skin, 0);
    joints_evaluate(&session, 1.0f, m, a);
    expect_vec(translation(s->world), 10, 5, 0);
    expect_identity(s->skin);
    expect_vec(s->position, 10, 5, 0);
    EXPECT_EQ(joint_state(&session, m, base)->parent, nullptr);
    expect_vec(joint_state(&session, m, base)->offset, 10, 0, 0, 0);
}

TEST_F(TransformState, OffsetIsTheDifferenceOfThePlacesOnEveryAxis) {
    Model* m = model();
    joint(m, "base", 10, 20, 30, "world");
    Joint* tip = joint(m, "tip", 11, 22, 33, "base");
    expect_vec(joint_state(&session, m, tip)->offset, 1, 2, 3, 0);
    expect_vec(translation(joint_state(&session, m, tip)->inverse_base), -11, -22, -33, 0);
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, turn_key(1, 0, 0, 90)}, {JOINTS + 1, turn_key(0, 1, 0, 90)}}).end(1);
    joints_evaluate(&session, 0.5f, m, a);
    const JointState* s = joint_state(&session, m, tip);
    // The quarter about x of the base takes the offset (1, 2, 3) to (1, -3, 2).
    expect_vec(translation(s->world), 11, 17, 32);
    expect_vec(s->position, 11, 17, 32);
    // A point 1 along x, 2 along y and 3 along z of the tip: by its quarter about y to (3, 2, -1), by that of the base
    // to (3, 1, 2).
    expect_vec(applied(s->skin, {12, 24, 36}), 14, 18, 34);
}

TEST_F(TransformState, JointOfUnknownParentHangsOnWorld) {
    Model* m = model();
    Joint* j = joint(m, "j", 1, 2, 3, "nobody");
    EXPECT_EQ(joint_state(&session, m, j)->parent, nullptr);
    expect_vec(joint_state(&session, m, j)->offset, 1, 2, 3, 0);
    j->state_index = -1;
    j->parent_name[0] = '\0';
    EXPECT_EQ(joint_state(&session, m, j)->parent, nullptr);
}

TEST_F(TransformState, RecordIsNotRefreshedFromItsJoint) {
    Model* m = model();
    Joint* j = joint(m, "j", 1, 0, 0, "world");
    joint_state(&session, m, j);
    j->position = {50, 0, 0};
    joints_evaluate(&session, 1.0f, m, animate(m));
    expect_vec(joint_state(&session, m, j)->offset, 1, 0, 0, 0);
    expect_vec(translation(joint_state(&session, m, j)->inverse_base), -1, 0, 0, 0);
}

TEST_F(TransformState, ChildStateStandsMovedTurnedScaledAsTheFileSays) {
    Model* m = model();
    ChildLink* l = model_add_child(m, nullptr, "box", 1, 2, 3, 2, 3, 4, "0", "0", "90");
    ChildState* state = child_state(&session, l);
    // (1, 1, 1) scaled to (2, 3, 4), turned about z to (-3, 2, 4), moved to (-2, 4, 7).
    expect_vec(applied(state->matrix, {1, 1, 1}), -2, 4, 7);
    expect_transposed(state->gl_matrix, state->matrix);
    EXPECT_EQ(state->link, l);
    EXPECT_EQ(state->time, TIME_NEVER);
}

TEST_F(TransformState, ChildIsTurnedByItsThreeTextsInTheOrderWritten) {
    Model* m = model();
    ChildLink* l = model_add_child(m, nullptr, "box", 10, 20, 30, 2, 3, 4, "90", "-90", "180");
    // (1, 1, 1) scaled to (2, 3, 4), by the half turn about z to (-2, -3, 4), by the quarter back about y to
    // (-4, -3, -2), by that about x to (-4, 2, -3).
    expect_vec(applied(child_state(&session, l)->matrix, {1, 1, 1}), 6, 22, 27);
}

TEST_F(TransformState, RebuildPutsTheTranslationUnderTurnAndScale) {
    ModelState* state = model_state(&session, model());
    state->translate = {1, 0, 0};
    state->scale = {2, 3, 4};
    mat_identity(&state->rotation);
    mat_rotate(&state->rotation, 0, 0, 90);
    model_state_rebuild(state);
    // The origin is moved to (1, 0, 0), turned to (0, 1, 0), scaled to (0, 3, 0).
    expect_vec(applied(state->matrix, {0, 0, 0}), 0, 3, 0);
    // (0, 1, 0) is moved to (1, 1, 0), turned to (-1, 1, 0), scaled to (-2, 3, 0).
    expect_vec(applied(state->matrix, {0, 1, 0}), -2, 3, 0);
    expect_transposed(state->gl_matrix, state->matrix);
    // The origin is moved to (5, 6, 7), turned to (-6, 5, 7), scaled to (-12, 15, 28).
    state->translate = {5, 6, 7};
    model_state_rebuild(state);
    expect_vec(translation(state->matrix), -12, 15, 28);
}

// Joints.

TEST_F(TransformState, TwoJointArmAtRestAt45AndAt90Degrees) {
    Model* m = model();
    Joint* elbow_first[2];
    joint(m, "shoulder", 0, 0, 0, "world");
    elbow_first[0] = joint(m, "elbow", 10, 0, 0, "shoulder");
    elbow_first[1] = model_find_joint(m, "shoulder");
    Point* hand = point(m, 1, 20, 0, 0, 1.0f, "elbow");
    Point* upper = point(m, 2, 5, 0, 0, 1.0f, "shoulder");
    model_set_normal(m, 1, 0, 1, 0);
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 0)}, {JOINTS + 1, turn_key(0, 0, 1, 0)}});
    clip().frame(2, {{JOINTS, turn_key(0, 0, 1, 90)}, {JOINTS + 1, turn_key(0, 0, 1, 90)}});

    model_evaluate(&session, 0.0f, m, a);
    expect_vec(position(hand), 20, 0, 0);
    expect_vec(position(upper), 5, 0, 0);
    expect_vec(normal(hand), 0, 1, 0);

    model_evaluate(&session, 1.0f, m, a);  // both at 45 degrees: the forearm stands at 90
    expect_vec(position(upper), 5 * HALF, 5 * HALF, 0);
    expect_vec(joint_position(m, elbow_first[0]), 10 * HALF, 10 * HALF, 0);
    expect_vec(position(hand), 10 * HALF, 10 * HALF + 10, 0);
    expect_vec(normal(hand), -1, 0, 0);

    model_evaluate(&session, 2.0f, m, a);  // both at 90: the forearm stands at 180
    expect_vec(position(upper), 0, 5, 0);
    expect_vec(joint_position(m, elbow_first[0]), 0, 10, 0);
    expect_vec(position(hand), -10, 10, 0);
    expect_vec(normal(hand), 0, -1, 0);
    expect_vec(joint_position(m, elbow_first[1]), 0, 0, 0);
}

TEST_F(TransformState, NormalMatrixHasNoTranslation) {
    Model* m = model();
    Joint* j = joint(m, "j", 3, 4, 5, "world");
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 90)}}).end(1);
    joints_evaluate(&session, 0.5f, m, a);
    const Mat4& n = joint_state(&session, m, j)->normal_matrix;
    expect_vec(translation(n), 0, 0, 0, 0);
    EXPECT_EQ(n.m[12], 0.0f);
    EXPECT_EQ(n.m[13], 0.0f);
    EXPECT_EQ(n.m[14], 0.0f);
    EXPECT_EQ(n.m[15], 1.0f);
    expect_vec(applied(n, {1, 0, 0}), 0, 1, 0);
}

// A rotation key that is not of unit length leaves its square in the last element of every matrix but this one.
TEST_F(TransformState, NormalMatrixDividesByNothing) {
    Model* m = model();
    Joint* j = joint(m, "j", 3, 4, 5, "world");
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, {0, 0, 0, 2}}}).end(1);
    joints_evaluate(&session, 0.5f, m, a);
    EXPECT_EQ(joint_state(&session, m, j)->world.m[15], 4.0f);
    const Mat4& n = joint_state(&session, m, j)->normal_matrix;
    EXPECT_EQ(n.m[15], 1.0f);
    expect_vec(translation(n), 0, 0, 0, 0);
    expect_vec(applied(n, {1, 2, 3}), 4, 8, 12);
}

TEST_F(TransformState, ParentLaterInTheListGivesTheSameAsParentEarlier) {
    Model* down = model();
    Joint* down_tip = joint(down, "tip", 10, 5, 0, "base");
    joint(down, "base", 10, 0, 0, "world");
    ModelAnimation* down_animation = animate(down);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 30)}, {JOINTS + 1, turn_key(1, 0, 0, 90)}}).end(1);
    Model* up = model();
    joint(up, "base", 10, 0, 0, "world");
    Joint* up_tip = joint(up, "tip", 10, 5, 0, "base");
    ModelAnimation* up_animation = animate(up);
    clip().frame(0, {{JOINTS, turn_key(1, 0, 0, 90)}, {JOINTS + 1, turn_key(0, 0, 1, 30)}}).end(1);

    joints_evaluate(&session, 0.5f, down, down_animation);
    joints_evaluate(&session, 0.5f, up, up_animation);
    const JointState* a = joint_state(&session, down, down_tip);
    const JointState* b = joint_state(&session, up, up_tip);
    expect_vec(a->position, 10, 0, 5);  // the base's quarter turn about x takes the offset along y to z
    EXPECT_EQ(std::memcmp(&a->world, &b->world, sizeof(Mat4)), 0);
    EXPECT_EQ(std::memcmp(&a->skin, &b->skin, sizeof(Mat4)), 0);
    EXPECT_EQ(a->parent, model_find_joint(down, "base"));
}

TEST_F(TransformState, SecondEvaluationAtTheSameTimeLeavesAJointAlone) {
    Model* m = model();
    Joint* j = joint(m, "j", 1, 2, 3, "world");
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 30)}}).end(5);
    joint_evaluate(&session, 1.0f, m, a, j);
    JointState* state = joint_state(&session, m, j);
    state->world.m[0] = 1234.0f;  // shows whether it is worked out again
    joint_evaluate(&session, 1.0f, m, a, j);
    EXPECT_EQ(state->world.m[0], 1234.0f);
    joint_evaluate(&session, 2.0f, m, a, j);
    EXPECT_NE(state->world.m[0], 1234.0f);
}

TEST_F(TransformState, EvaluatingAJointTakesItsAncestorsAlongAndNoOthers) {
    Model* m = model();
    Joint* top = joint(m, "top", 0, 0, 0, "world");
    Joint* middle = joint(m, "middle", 0, 1, 0, "top");
    Joint* end = joint(m, "end", 0, 2, 0, "middle");
    Joint* side = joint(m, "side", 1, 0, 0, "top");
    joint_evaluate(&session, 1.0f, m, animate(m), end);
    EXPECT_EQ(joint_state(&session, m, top)->time, 1.0f);
    EXPECT_EQ(joint_state(&session, m, middle)->time, 1.0f);
    EXPECT_EQ(joint_state(&session, m, end)->time, 1.0f);
    EXPECT_EQ(joint_state(&session, m, side)->time, TIME_NEVER);
}

TEST_F(TransformState, JointWithoutAnimationStaysAtRest) {
    Model* m = model();
    Joint* j = joint(m, "j", 1, 2, 3, "world");
    joint_evaluate(&session, 1.0f, m, nullptr, j);
    expect_identity(joint_state(&session, m, j)->skin);
}

std::string name_of(int number) { return std::string("j").append(std::to_string(number)); }

// The first joint of the list is the end of the chain, so that all others hang above it.
TEST_F(TransformState, ChainOfTenThousandJointsInEitherOrder) {
    constexpr int LENGTH = 10000;
    for (const bool root_first : {true, false}) {
        Model* m = model();
        for (int i = 0; i < LENGTH; ++i) {
            const int number = root_first ? i : LENGTH - 1 - i;
            joint(m, name_of(number).c_str(), number, 0, 0, number == 0 ? "world" : name_of(number - 1).c_str());
        }
        ModelAnimation* a = animate(m);
        const int32_t root_slot = JOINTS + model_joint_index(m, "j0");
        clip().frame(0, {{root_slot, turn_key(0, 0, 1, 90)}}).end(1);
        joints_evaluate(&session, 0.5f, m, a);
        Joint* end = model_find_joint(m, name_of(LENGTH - 1).c_str());
        expect_vec(joint_position(m, end), 0, LENGTH - 1, 0, 0.5f);
        expect_vec(joint_state(&session, m, end)->offset, 1, 0, 0, 0);
    }
}

TEST_F(TransformState, ChainOfTenThousandJointsIsWorkedOutOnceAtATimeThatIsNoNumber) {
    constexpr int LENGTH = 10000;
    Model* m = model();
    for (int i = 0; i < LENGTH; ++i) {
        joint(m, name_of(i).c_str(), i, 0, 0, i == 0 ? "world" : name_of(i - 1).c_str());
    }
    ModelAnimation* a = animate(m);
    joints_evaluate(&session, NOT_A_NUMBER, m, a);
    JointState* first = joint_state(&session, m, model_find_joint(m, "j0"));
    first->world.m[0] = 1234.0f;
    joints_evaluate(&session, NOT_A_NUMBER, m, a);
    EXPECT_EQ(first->world.m[0], 1234.0f);
}

TEST_F(TransformState, LinkThatClosesACircleOfJointsCountsAsWorld) {
    Model* m = model();
    Joint* a = joint(m, "a", 1, 0, 0, "b");
    Joint* b = joint(m, "b", 3, 0, 0, "c");
    Joint* c = joint(m, "c", 7, 0, 0, "a");
    ModelAnimation* animation = animate(m);
    clip().frame(0, {{JOINTS + 2, turn_key(0, 0, 1, 90)}}).end(1);
    joints_evaluate(&session, 0.5f, m, animation);
    EXPECT_EQ(joint_state(&session, m, a)->parent, b);
    EXPECT_EQ(joint_state(&session, m, b)->parent, c);
    EXPECT_EQ(joint_state(&session, m, c)->parent, nullptr);
    expect_vec(joint_state(&session, m, c)->offset, 7, 0, 0, 0);
    // c stands at (7, 0, 0) and turns; b lies 4 before it along x, a another 2.
    expect_vec(joint_position(m, c), 7, 0, 0);
    expect_vec(joint_position(m, b), 7, -4, 0);
    expect_vec(joint_position(m, a), 7, -6, 0);
}

TEST_F(TransformState, CircleIsCutAtTheSameLinkWhateverJointIsAskedFirst) {
    for (const char* first : {"a", "b", "c", "tail"}) {
        Model* m = model();
        joint(m, "tail", 9, 0, 0, "b");
        joint(m, "a", 1, 0, 0, "b");
        joint(m, "b", 3, 0, 0, "c");
        Joint* c = joint(m, "c", 7, 0, 0, "a");
        joint_evaluate(&session, 1.0f, m, animate(m), model_find_joint(m, first));
        int cut = 0;
        for (Joint& each : list_elements<Joint>(m->joints)) {
            cut += joint_state(&session, m, &each)->parent == nullptr ? 1 : 0;
        }
        EXPECT_EQ(cut, 1) << first;
        EXPECT_EQ(joint_state(&session, m, c)->parent, nullptr) << first;
    }
}

TEST_F(TransformState, CircleEndsWhenTheRecordAtItsCutIsMadeAgain) {
    Model* m = model();
    joint(m, "a", 1, 0, 0, "b");
    joint(m, "b", 3, 0, 0, "c");
    Joint* c = joint(m, "c", 7, 0, 0, "a");
    ModelAnimation* a = animate(m);
    joints_evaluate(&session, 1.0f, m, a);
    session_forget_joint(&session, c);
    joints_evaluate(&session, 2.0f, m, a);
    for (Joint& each : list_elements<Joint>(m->joints)) { EXPECT_EQ(joint_state(&session, m, &each)->time, 2.0f); }
}

TEST_F(TransformState, CircleOfTenThousandJointsEnds) {
    constexpr int LENGTH = 10000;
    Model* m = model();
    for (int i = 0; i < LENGTH; ++i) { joint(m, name_of(i).c_str(), i, 0, 0, name_of((i + 1) % LENGTH).c_str()); }
    joints_evaluate(&session, 1.0f, m, animate(m));
    EXPECT_EQ(joint_state(&session, m, model_find_joint(m, name_of(LENGTH - 1).c_str()))->parent, nullptr);
    expect_vec(joint_position(m, model_find_joint(m, "j0")), 0, 0, 0, 0.5f);
}

TEST_F(TransformState, JointThatIsItsOwnParentHangsOnWorld) {
    Model* m = model();
    Joint* j = joint(m, "j", 4, 0, 0, "world");
    std::strcpy(j->parent_name, "j");
    joints_evaluate(&session, 1.0f, m, animate(m));
    EXPECT_EQ(joint_state(&session, m, j)->parent, nullptr);
    expect_vec(joint_position(m, j), 4, 0, 0);
}

TEST_F(TransformState, JointAddedLaterHasNoTrackAndTakesNoneOfAChild) {
    Model* m = model();
    joint(m, "old", 0, 0, 0, "world");
    link(m, "child", nullptr);
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 90)}, {JOINTS + 1, turn_key(0, 0, 1, 90)}}).end(9);
    model_evaluate(&session, 1.0f, m, a);
    Joint* added = joint(m, "new", 2, 0, 0, "old");
    model_evaluate(&session, 2.0f, m, a);
    const JointState* state = joint_state(&session, m, added);
    EXPECT_EQ(state->slot, JOINTS + 1);
    expect_vec(state->position, 0, 2, 0);  // it follows its parent and has no turn of its own
    expect_vec(applied(state->normal_matrix, {1, 0, 0}), 0, 1, 0);
}

// Points.

TEST_F(TransformState, ModelWithoutJointsGetsPointStatesAtRestAndOnlyItsMatrixMoves) {
    Model* m = model();
    Point* p = point(m, 1, 1, 2, 3, 1.0f, "world");
    Point* q = point(m, 2, 4, 5, 6, 0.0f, "world");
    model_set_normal(m, 1, 0, 1, 0);
    ModelAnimation* a = animate(m);
    clip().frame(0, {{TRANSLATE, place_key(0, 10, 0)}}).end(1);
    model_evaluate(&session, 0.5f, m, a);
    EXPECT_EQ(list_count(&session.point_states), 2);
    expect_vec(position(p), 1, 2, 3, 0);
    expect_vec(position(q), 4, 5, 6, 0);
    expect_vec(normal(p), 0, 1, 0, 0);
    expect_vec(translation(model_state(&session, m)->matrix), 0, 10, 0, 0);
}

TEST_F(TransformState, PointWithoutAJointFollowsItsPositionButKeepsItsNormal) {
    Model* m = model();
    Point* p = point(m, 1, 1, 2, 3, 1.0f, "world");
    points_evaluate(&session, 0.0f, m);
    p->position = {7, 8, 9};
    p->normal = {1, 0, 0};
    points_evaluate(&session, 0.0f, m);
    expect_vec(position(p), 7, 8, 9, 0);
    expect_vec(normal(p), 0, 0, 1, 0);
}

// Joint a at the origin turned by 90 degrees about z; joint b at the origin turned by 180.
class Weights : public TransformState {
protected:
    void SetUp() override {
        TransformState::SetUp();
        m = model();
        joint(m, "a", 0, 0, 0, "world");
        joint(m, "b", 0, 0, 0, "world");
    }
    void evaluate() {
        ModelAnimation* animation = animate(m);
        clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 90)}, {JOINTS + 1, turn_key(0, 0, 1, 180)}}).end(1);
        model_evaluate(&session, 0.5f, m, animation);
    }
    Model* m = nullptr;
};

TEST_F(Weights, QuarterWithoutSecondJointLiesOnTheStraightLineNotOnAnArc) {
    Point* p = point(m, 1, 8, 0, 0, 0.25f, "a");
    model_set_normal(m, 1, 1, 0, 0);
    evaluate();
    expect_vec(position(p), 6, 2, 0);           // a quarter of the way from (8, 0, 0) to (0, 8, 0)
    expect_vec(normal(p), 0.75f, 0.25f, 0.0f);  // not made unit length again
}

TEST_F(Weights, QuarterWithSecondJointBlendsBothPlaces) {
    Point* p = point(m, 1, 8, 0, 0, 0.25f, "a", "b");
    model_set_normal(m, 1, 1, 0, 0);
    evaluate();
    expect_vec(position(p), -6, 2, 0);  // a quarter of (0, 8, 0) and three quarters of (-8, 0, 0)
    expect_vec(normal(p), -0.75f, 0.25f, 0.0f);
}

// Joint a turned by a quarter about x, joint b by a half about y, so that every axis shows.
TEST_F(TransformState, EveryAxisOfPlaceAndNormalIsBlended) {
    Model* m = model();
    joint(m, "a", 0, 0, 0, "world");
    joint(m, "b", 0, 0, 0, "world");
    Point* both = point(m, 1, 1, 2, 3, 0.25f, "a", "b");
    Point* half_free = point(m, 2, 1, 2, 3, 0.25f, "a");
    for (int id = 1; id <= 2; ++id) {
        model_set_normal(m, id, 2, 3, 6);  // of the length 7
    }
    ModelAnimation* animation = animate(m);
    clip().frame(0, {{JOINTS, turn_key(1, 0, 0, 90)}, {JOINTS + 1, turn_key(0, 1, 0, 180)}}).end(1);
    model_evaluate(&session, 0.5f, m, animation);
    // A quarter of (1, -3, 2) and three quarters of (-1, 2, -3), or of (1, 2, 3) at rest.
    expect_vec(position(both), -0.5f, 0.75f, -1.75f);
    expect_vec(position(half_free), 1, 0.75f, 2.75f);
    // A quarter of (2, -6, 3) and three quarters of (-2, 3, -6), or of (2, 3, 6).
    expect_vec(normal(both), -1.0f / 7, 0.75f / 7, -3.75f / 7);
    expect_vec(normal(half_free), 2.0f / 7, 0.75f / 7, 5.25f / 7);
}

TEST_F(Weights, BetweenOneAndTwoTheSecondJointHasNoShare) {
    Point* p = point(m, 1, 8, 0, 0, 1.5f, "a", "b");
    model_set_normal(m, 1, 1, 0, 0);
    evaluate();
    expect_vec(position(p), 0, 8, 0);
    expect_vec(normal(p), 0, 1, 0);
}

TEST_F(Weights, OfExactlyOneTheSecondJointIsNotEvenLookedAt) {
    Point* p = point(m, 1, 8, 0, 0, 1.0f, "a", "b");
    ModelAnimation* animation = animate(m);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 90)}, {JOINTS + 1, {NOT_A_NUMBER, 0, 0, 1}}}).end(1);
    model_evaluate(&session, 0.5f, m, animation);
    expect_vec(position(p), 0, 8, 0);
}

TEST_F(Weights, BetweenMinusOneAndZeroTheFirstJointHasNoShare) {
    Point* p = point(m, 1, 8, 0, 0, -0.5f, "a", "b");
    model_set_normal(m, 1, 1, 0, 0);
    evaluate();
    expect_vec(position(p), -8, 0, 0);
    expect_vec(normal(p), -1, 0, 0);
}

TEST_F(Weights, OneAndBeyondFollowTheFirstJointAlone) {
    Point* one = point(m, 1, 8, 0, 0, 1.0f, "a", "b");
    Point* beyond = point(m, 2, 8, 0, 0, 2.0f, "a", "b");
    model_set_normal(m, 2, 1, 0, 0);
    evaluate();
    expect_vec(position(one), 0, 8, 0);
    expect_vec(position(beyond), 0, 8, 0);
    expect_vec(normal(beyond), 0, 1, 0);
}

TEST_F(Weights, ZeroAndBelowFollowTheSecondJointAlone) {
    Point* zero = point(m, 1, 8, 0, 0, 0.0f, "a", "b");
    Point* below = point(m, 2, 8, 0, 0, -1.0f, "a", "b");
    model_set_normal(m, 2, 1, 0, 0);
    evaluate();
    expect_vec(position(zero), -8, 0, 0);
    expect_vec(position(below), -8, 0, 0);
    expect_vec(normal(below), -1, 0, 0);
}

TEST_F(Weights, ZeroWithoutSecondJointKeepsItsRecordForEver) {
    Point* p = point(m, 1, 8, 0, 0, 0.0f, "a");
    evaluate();
    ASSERT_GE(p->state_index, 0);
    expect_vec(position(p), 8, 0, 0, 0);
    p->position = {1, 1, 1};
    evaluate();
    expect_vec(position(p), 8, 0, 0, 0);
}

TEST_F(Weights, SecondJointWithoutFirstMovesNothing) {
    Point* p = point(m, 1, 8, 0, 0, 0.0f, "world", "b");
    evaluate();
    expect_vec(position(p), 8, 0, 0, 0);
}

TEST_F(Weights, WeightThatIsNoNumberFollowsTheSecondJoint) {
    Point* p = point(m, 1, 8, 0, 0, 0.0f, "a", "b");
    p->weight = NOT_A_NUMBER;
    evaluate();
    expect_vec(position(p), -8, 0, 0);
}

TEST_F(Weights, PointsThatChangeJointsFromOneToTheNextKeepTheirOwn) {
    Point* points[6];
    for (int i = 0; i < 6; ++i) { points[i] = point(m, i + 1, 8, 0, 0, 1.0f, i % 2 == 0 ? "a" : "b"); }
    evaluate();
    for (int i = 0; i < 6; ++i) {
        if (i % 2 == 0) {
            expect_vec(position(points[i]), 0, 8, 0);
        } else {
            expect_vec(position(points[i]), -8, 0, 0);
        }
    }
}

// Child links.

TEST_F(TransformState, PlacementOfTheFileIsLostOnceAnAnimationRuns) {
    Model* m = model();
    ChildLink* l = link(m, "box", model(), 1, 2, 3);
    expect_vec(translation(child_state(&session, l)->matrix), 1, 2, 3, 0);
    model_evaluate(&session, 1.0f, m, nullptr);
    expect_vec(translation(child_state(&session, l)->matrix), 1, 2, 3, 0);
    model_evaluate(&session, 1.0f, m, animate(m));
    expect_identity(child_state(&session, l)->matrix, 0);
    expect_identity(child_state(&session, l)->gl_matrix, 0);
    EXPECT_EQ(child_state(&session, l)->time, 1.0f);
}

TEST_F(TransformState, LinksAreNumberedDepthFirstALinkBeforeItsSubTree) {
    Model* m = model();
    joint(m, "j", 0, 0, 0, "world");
    Model* left = model();
    Model* right = model();
    ChildLink* links[4] = {};
    links[0] = link(m, "left", left);
    links[1] = link(left, "leaf", model());
    links[2] = link(left, "empty", nullptr);
    links[3] = link(m, "right", right);
    ModelAnimation* a = animate(m);
    ASSERT_EQ(a->slot_count, 1 + 4 + 2);
    clip()
        .frame(0, {{3, turn_key(0, 0, 1, 10)},
                   {4, turn_key(0, 0, 1, 20)},
                   {5, turn_key(0, 0, 1, 30)},
                   {6, turn_key(0, 0, 1, 40)}})
        .end(1);
    model_evaluate(&session, 0.5f, m, a);
    for (int i = 0; i < 4; ++i) {
        const Mat4& turned = child_state(&session, links[i])->matrix;
        const double radians = (i + 1) * 10 / 180.0 * std::numbers::pi;
        EXPECT_NEAR(turned.m[4], std::sin(radians), 1e-5) << i;
        expect_transposed(child_state(&session, links[i])->gl_matrix, turned);
    }
    EXPECT_EQ(child_evaluate(&session, 0.5f, links[0], a, 0), 3);
    EXPECT_EQ(child_evaluate(&session, 0.5f, links[3], a, 3), 4);
}

TEST_F(TransformState, ChildIsARigidBody) {
    Model* m = model();
    Model* child = model();
    Joint* j = joint(child, "j", 0, 0, 0, "world");
    Point* p = point(child, 1, 1, 2, 3, 1.0f, "j");
    link(m, "child", child);
    model_evaluate(&session, 1.0f, m, animate(m));
    EXPECT_EQ(j->state_index, -1);
    EXPECT_EQ(p->state_index, -1);
}

TEST_F(TransformState, LinkAddedLaterHasNoTrack) {
    Model* m = model();
    link(m, "old", nullptr);
    ModelAnimation* a = animate(m);
    // The table of a frame has one entry behind the last track: a name may have filled it.
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 90)}, {JOINTS + 1, turn_key(0, 0, 1, 90)}}).end(9);
    ChildLink* added = link(m, "new", nullptr, 1, 1, 1);
    model_evaluate(&session, 1.0f, m, a);
    expect_identity(child_state(&session, added)->matrix, 0);
}

TEST_F(TransformState, NumbersAtTheLimitsHaveNoTrackAndDoNotOverflow) {
    Model* m = model();
    ChildLink* l = link(m, "box", nullptr);
    ModelAnimation* a = animate(m);
    constexpr int32_t LAST = std::numeric_limits<int32_t>::max();
    EXPECT_EQ(child_evaluate(&session, 1.0f, l, a, LAST), LAST);
    EXPECT_EQ(child_evaluate(&session, 1.0f, l, a, -1), 0);
    EXPECT_EQ(child_evaluate(&session, 1.0f, l, nullptr, 0), 1);
    expect_identity(child_state(&session, l)->matrix, 0);
}

TEST_F(TransformState, BorrowedLinksThatLeadInACircleEnd) {
    Model* m = model();
    Model* other = model();
    for (int i = 0; i < 3; ++i) {
        model_add_child(m, other, "other", 0, 0, 0, 1, 1, 1, "0", "0", "0")->borrowed = 1;
        model_add_child(other, m, "m", 0, 0, 0, 1, 1, 1, "0", "0", "0")->borrowed = 1;
    }
    ModelAnimation a{};
    a.enabled = 1;
    ChildLink* first = list_at<ChildLink>(&m->children, 0, 0);
    const int32_t next = child_evaluate(&session, 1.0f, first, &a, 0);
    EXPECT_GT(next, MODEL_TREE_DEPTH_LIMIT);
    EXPECT_LE(next, MODEL_TREE_NODE_LIMIT);
    model_evaluate(&session, 1.0f, m, &a);
}

// Models.

TEST_F(TransformState, ModelIsTurnedAboutItsOriginThenMoved) {
    Model* m = model();
    ModelAnimation* a = animate(m);
    clip().frame(0, {{TRANSLATE, place_key(5, 0, 0)}, {ROTATE, turn_key(0, 0, 1, 90)}}).end(1);
    model_evaluate(&session, 0.5f, m, a);
    const ModelState* state = model_state(&session, m);
    expect_vec(applied(state->matrix, {1, 0, 0}), 5, 1, 0);
    expect_transposed(state->gl_matrix, state->matrix);
    EXPECT_EQ(state->time, TIME_NEVER);  // never written, so that a model is evaluated on every call
}

TEST_F(TransformState, DisabledAnimationMovesNothing) {
    Model* m = model();
    ModelAnimation* a = animate(m);
    clip().frame(0, {{TRANSLATE, place_key(5, 0, 0)}}).end(1);
    a->enabled = 0;
    model_evaluate(&session, 0.5f, m, a);
    EXPECT_EQ(m->state_index, -1);
}

TEST_F(TransformState, ModelIsEvaluatedAgainAtTheSameTimeButNotAtTheTimeOfNever) {
    Model* m = model();
    ModelAnimation* a = animate(m);
    clip().frame(-1, {{TRANSLATE, place_key(5, 0, 0)}}).start(-1).end(1);
    model_evaluate(&session, TIME_NEVER, m, a);
    expect_identity(model_state(&session, m)->matrix, 0);
    model_evaluate(&session, 0.5f, m, a);
    model_state(&session, m)->matrix.m[3] = 77;
    model_evaluate(&session, 0.5f, m, a);
    expect_vec(translation(model_state(&session, m)->matrix), 5, 0, 0, 0);
}

TEST_F(TransformState, EvaluationOverwritesThePlacementOfTheSelection) {
    Model* m = model();
    ModelState* state = model_state(&session, m);
    state->translate = {9, 0, 0};
    model_state_rebuild(state);
    model_evaluate(&session, 0.5f, m, animate(m));
    expect_identity(state->matrix, 0);
    expect_vec(state->translate, 9, 0, 0, 0);
}

// A parent at (0, 10, 0) turned by 90 degrees about z, with a joint at (4, 0, 0) that turns as much again.
class Hanging : public TransformState {
protected:
    void SetUp() override {
        TransformState::SetUp();
        body = model();
        hand = joint(body, "hand", 4, 0, 0, "world");
        body_animation = animate(body);
        clip()
            .frame(0,
                   {{TRANSLATE, place_key(0, 10, 0)}, {ROTATE, turn_key(0, 0, 1, 90)}, {JOINTS, turn_key(0, 0, 1, 90)}})
            .end(9);
        tool = model();
        tool_animation = animate(tool);
        clip().frame(0, {{TRANSLATE, place_key(1, 0, 0)}}).end(9);
        tool_animation->parent_model = body;
        tool_animation->parent_animation = body_animation;
    }
    Vec3 tool_place() { return translation(model_state(&session, tool)->matrix); }

    Model* body = nullptr;
    Joint* hand = nullptr;
    ModelAnimation* body_animation = nullptr;
    Model* tool = nullptr;
    ModelAnimation* tool_animation = nullptr;
};

TEST_F(Hanging, WithoutAParentJointTheParentsMatrixAloneCounts) {
    model_evaluate(&session, 1.0f, tool, tool_animation);
    expect_vec(tool_place(), 0, 11, 0);
}

TEST_F(Hanging, OnAJointItFollowsJointAndParent) {
    tool_animation->parent_joint = hand;
    model_evaluate(&session, 1.0f, tool, tool_animation);
    // (1, 0, 0) by the joint to (4, 1, 0), by the parent to (-1, 4, 0) + (0, 10, 0).
    expect_vec(tool_place(), -1, 14, 0);
    // The tool's x axis, turned twice by a quarter.
    const Mat4& m = model_state(&session, tool)->matrix;
    expect_vec(applied(m, {1, 0, 0}), -2, 14, 0);
    expect_transposed(model_state(&session, tool)->gl_matrix, m);
}

TEST_F(Hanging, RowOrderDoesNotMatter) {
    tool_animation->parent_joint = hand;
    session_add_root(&session, tool, tool_animation);
    session_add_root(&session, body, body_animation);
    session.anim_time = 1.0f;
    scene_evaluate(&session);
    expect_vec(tool_place(), -1, 14, 0);
    expect_vec(translation(model_state(&session, body)->matrix), 0, 10, 0);
}

TEST_F(Hanging, OnAStillParentItTakesThatPlacementAsItStands) {
    tool_animation->parent_animation = nullptr;
    tool_animation->parent_joint = hand;
    ModelState* state = model_state(&session, body);
    state->translate = {0, 0, 3};
    model_state_rebuild(state);
    model_evaluate(&session, 1.0f, tool, tool_animation);
    // The joint was never evaluated, so that its world is still the identity.
    expect_vec(tool_place(), 1, 0, 3);
}

TEST_F(Hanging, ParentThatWasEmptiedCountsAsWorld) {
    tool_animation->parent_joint = hand;
    tool_animation->parent_model = nullptr;
    tool_animation->parent_animation = nullptr;
    model_evaluate(&session, 1.0f, tool, tool_animation);
    expect_vec(tool_place(), 1, 0, 0);
}

TEST_F(Hanging, JointsOfAParentThatGrowWhileTheAnimationRunsLeaveTheRowWhereItWas) {
    tool_animation->parent_joint = hand;
    session_add_root(&session, body, body_animation);
    session_add_root(&session, tool, tool_animation);
    session.anim_time = 1.0f;
    scene_evaluate(&session);
    for (int i = 0; i < 100; ++i) { joint(body, name_of(i).c_str(), i, 0, 0, "hand"); }
    session.anim_time = 2.0f;
    scene_evaluate(&session);
    expect_vec(tool_place(), -1, 14, 0);
}

TEST_F(Hanging, TwoModelsThatHangOnEachOtherEnd) {
    body_animation->parent_model = tool;
    body_animation->parent_animation = tool_animation;
    model_evaluate(&session, 1.0f, tool, tool_animation);
    // The link from the body back to the tool closes the circle.
    expect_vec(translation(model_state(&session, body)->matrix), 0, 10, 0);
    expect_vec(tool_place(), 0, 11, 0);
    session_add_root(&session, tool, tool_animation);
    session_add_root(&session, body, body_animation);
    session.anim_time = 2.0f;
    scene_evaluate(&session);
    expect_vec(tool_place(), 0, 11, 0);
}

TEST_F(Hanging, ModelThatHangsOnItselfStandsInTheScene) {
    tool_animation->parent_model = tool;
    tool_animation->parent_animation = tool_animation;
    model_evaluate(&session, 1.0f, tool, tool_animation);
    expect_vec(tool_place(), 1, 0, 0);
}

TEST_F(TransformState, ChainOfThousandsOfModelsEnds) {
    constexpr int LENGTH = 3000;
    std::vector<ModelAnimation> chain(LENGTH);
    std::vector<AnimationClip> clips(1);
    for (int i = 0; i < LENGTH; ++i) {
        ModelAnimation& a = chain[static_cast<size_t>(i)];
        a.enabled = 1;
        Model* m = model();
        if (i > 0) {
            a.parent_model = models[static_cast<size_t>(i) - 1];
            a.parent_animation = &chain[static_cast<size_t>(i) - 1];
        }
        ClipBuilder(&a.clip, 2);  // empty again at once
        session_add_root(&session, m, &a);
    }
    ClipBuilder first(&chain[0].clip, 2);
    first.frame(0, {{TRANSLATE, place_key(3, 0, 0)}}).end(9);
    session.anim_time = 1.0f;
    model_evaluate(&session, 1.0f, models.back(), &chain.back());
    expect_vec(translation(model_state(&session, models.back())->matrix), 3, 0, 0);
    scene_evaluate(&session);
    expect_vec(translation(model_state(&session, models.back())->matrix), 3, 0, 0);
}

TEST_F(TransformState, NonFiniteAndEnormousTimesEnd) {
    Model* m = model();
    Joint* j = joint(m, "j", 1, 0, 0, "world");
    Point* p = point(m, 1, 2, 0, 0, 1.0f, "j");
    link(m, "box", nullptr);
    ModelAnimation* a = animate(m);
    clip().frame(0, {{JOINTS, turn_key(0, 0, 1, 90)}}).frame(1, {{JOINTS, turn_key(0, 0, 1, 90)}});
    for (float time : {INFINITE, -INFINITE, 3e38f, -3e38f}) {
        model_evaluate(&session, time, m, a);
        expect_vec(position(p), 2, 0, 0);  // outside of the clip: at rest
        EXPECT_EQ(joint_state(&session, m, j)->time, time);
    }
    model_evaluate(&session, NOT_A_NUMBER, m, a);
    EXPECT_TRUE(std::isnan(joint_state(&session, m, j)->time));
}

TEST_F(TransformState, SceneWithoutAnimationsEvaluatesNothing) {
    Model* m = model();
    point(m, 1, 1, 2, 3, 1.0f, "world");
    session_add_root(&session, m, nullptr);
    scene_evaluate(&session);
    EXPECT_EQ(list_count(&session.point_states), 0);
}

// Opening an animation.

class LoadAnimation : public ::testing::Test {
protected:
    void SetUp() override {
        session_init(&session);
        dir.write("a.mod", "# nothing\n");
    }
    void TearDown() override { session_reset(&session, 0); }
    int open(float length, int keep_radius = 0) {
        dir.write("walk", "0.0 0 0 0\n" + std::to_string(length) + " 6 0 0\n");
        dir.write("scene", dir.path() + " a.mod " + dir.path() + " walk world\n");
        return session_load_animation(&session, dir.file("scene").c_str(), keep_radius);
    }
    test::TempDir dir;
    Session session{};
};

TEST_F(LoadAnimation, ClockBeyondTheEndGoesBackToTheEnd) {
    session.anim_time = 5.0f;
    ASSERT_EQ(open(3.0f), 1);
    EXPECT_EQ(session.anim_time, 3.0f);
    EXPECT_EQ(session.anim_end, 3.0f);
}

TEST_F(LoadAnimation, ClockBeforeTheEndStaysWhereItWas) {
    session.anim_time = 5.0f;
    ASSERT_EQ(open(8.0f), 1);
    EXPECT_EQ(session.anim_time, 5.0f);
    // The scene stands at that time: five eighths of the way.
    const RootModel* root = list_first<RootModel>(&session.root_models);
    expect_vec(translation(model_state(&session, root->model)->matrix), 3.75f, 0, 0);
}

TEST_F(LoadAnimation, PathIsKeptWhileTheSceneStands) {
    ASSERT_EQ(open(2.0f), 1);
    EXPECT_EQ(std::string(session.animation_path), dir.file("scene"));
    session_close_all(&session);
    EXPECT_EQ(session.animation_path, nullptr);
    EXPECT_EQ(session.anim_end, 0.0f);
}

std::string reported;

TEST_F(LoadAnimation, FailureLeavesAnEmptySceneAndReportsTheText) {
    session_set_message_callback(&session, [](const char* text) { reported = text; });
    reported.clear();
    EXPECT_EQ(open(0.0f), 0);
    EXPECT_EQ(reported, "could not find animation file: " + dir.path() + "\\walk");
    EXPECT_EQ(list_count(&session.root_models), 0);
    EXPECT_EQ(session_load_animation(&session, "no such scene list", 0), 0);
    EXPECT_EQ(reported, "file does not exist: no such scene list");
}

TEST_F(LoadAnimation, ModelThatARowHangsOnCanBeRemovedWhileTheAnimationRuns) {
    dir.write("b.mod", "# nothing\n");
    dir.write("walk", "0.0 1 0 0\n9.0 1 0 0\n");
    const std::string d = dir.path();
    dir.write("scene", d + " a.mod " + d + " walk world\n" + d + " b.mod " + d + " walk a.mod\n");
    ASSERT_EQ(session_load_animation(&session, dir.file("scene").c_str(), 0), 1);
    int32_t body_key = 0;
    list_first(&session.root_models, &body_key);
    const RootModel* row = list_next<RootModel>(&session.root_models);
    expect_vec(translation(model_state(&session, row->model)->matrix), 2, 0, 0);
    ASSERT_EQ(session_remove_root(&session, body_key), 1);
    session.anim_time = 1.0f;
    scene_evaluate(&session);
    expect_vec(translation(model_state(&session, row->model)->matrix), 1, 0, 0);
}

}  // namespace
}  // namespace pelt
