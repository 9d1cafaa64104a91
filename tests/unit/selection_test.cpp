// The selection, the clipboard, and what is done with what is selected.
#include "edit/selection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/bounds.h"
#include "edit/pancake.h"
#include "formats/animation.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/model_tree.h"

namespace pelt {
namespace {

using Vec4 = std::vector<double>;
using Matrix = std::vector<Vec4>;

// An arithmetic of its own, in doubles, to check the rotations against.
Matrix times(const Matrix& left, const Matrix& right) {
    Matrix out(4, Vec4(4, 0.0));
    for (size_t r = 0; r < 4; ++r) {
        for (size_t c = 0; c < 4; ++c) {
            for (size_t k = 0; k < 4; ++k) { out[r][c] += left[r][k] * right[k][c]; }
        }
    }
    return out;
}

Matrix moved(double x, double y, double z) { return {{1, 0, 0, x}, {0, 1, 0, y}, {0, 0, 1, z}, {0, 0, 0, 1}}; }

Matrix turned_z(double degrees) {
    const double a = degrees * std::acos(-1.0) / 180.0;
    return {{std::cos(a), -std::sin(a), 0, 0}, {std::sin(a), std::cos(a), 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
}

Matrix transposed(const Matrix& m) {
    Matrix out = m;
    for (size_t r = 0; r < 4; ++r) {
        for (size_t c = 0; c < 4; ++c) { out[r][c] = m[c][r]; }
    }
    return out;
}

void expect_matrix(const Matrix& expected, const Mat4& m) {
    for (size_t r = 0; r < 4; ++r) {
        for (size_t c = 0; c < 4; ++c) {
            EXPECT_NEAR(expected[r][c], m.m[4 * r + c], 2e-4) << "row " << r << ", column " << c;
        }
    }
}

class SelectionTest : public ::testing::Test {
protected:
    SelectionTest() { session_init(&session); }
    ~SelectionTest() override { session_reset(&session, 1); }

    int32_t add(const char* name = "made.mod") {
        Model* model = model_create(name, nullptr);
        model_set_point(model, 1, 0, 0, 0, 1.0f);
        model_set_point(model, 2, 2, 3, 4, 1.0f);
        return session_add_root(&session, model, nullptr);
    }

    Model* model_of(int32_t id) { return state(id)->model; }
    ModelState* state(int32_t id) { return list_find<ModelState>(&session.model_states, id); }
    int32_t selected() const { return list_count(&session.selection.models); }
    int32_t roots() const { return list_count(&session.root_models); }

    // An owned child with a state of its link; gives the id of that state.
    int32_t add_child(Model* parent, const char* name = "child.mod") {
        Model* child = model_create(name, parent);
        model_set_point(child, 1, 1, 1, 1, 1.0f);
        ChildLink* link = model_add_child(parent, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
        return child_state(&session, link)->id;
    }

    void select(int32_t id) { ASSERT_EQ(selection_add_model(&session, id), 1); }

    Session session{};
};

// ---- what is selected ----

TEST_F(SelectionTest, InitSetsUpAllListsOfBothSets) {
    Session fresh{};
    selection_init(&fresh);
    for (const SelectionSet* set : {&fresh.selection, &fresh.clipboard}) {
        EXPECT_EQ(static_cast<int32_t>(sizeof(SelectedModel)), set->models.element_size);
        EXPECT_EQ(static_cast<int32_t>(sizeof(SelectedChild)), set->children.element_size);
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(i < 5 ? 12 : 8, set->unused[i].element_size);
            EXPECT_EQ(set->unused[i].kind, KEY_INT);
        }
    }
    selection_init(nullptr);
}

TEST_F(SelectionTest, AddingAnUnknownIdFails) {
    add();
    EXPECT_EQ(selection_add_model(&session, 0), 0);
    EXPECT_EQ(selection_add_model(&session, -1), 0);
    EXPECT_EQ(selection_add_model(&session, next_model_state_id + 1000), 0);
    EXPECT_EQ(selection_add_child(&session, next_child_state_id + 1000), 0);
    EXPECT_EQ(selected(), 0);
}

TEST_F(SelectionTest, SelectingTheSameIdTwiceLeavesOneEntry) {
    const int32_t id = add();
    select(id);
    select(id);
    EXPECT_EQ(selected(), 1);
}

TEST_F(SelectionTest, TheCurrentModelIsThatOfTheFirstSlot) {
    const int32_t first = add("first.mod");
    const int32_t second = add("second.mod");
    select(first);
    select(second);
    EXPECT_EQ(model_of(first), selection_current_model(&session));
    EXPECT_EQ(selection_clear(&session), 1);
    select(second);
    select(first);
    EXPECT_EQ(model_of(second), selection_current_model(&session));
}

TEST_F(SelectionTest, NothingSelectedIsNoCurrentModel) {
    add();
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_current_model(nullptr), nullptr);
}

TEST_F(SelectionTest, AChildIsSelectedByTheIdOfItsLink) {
    const int32_t parent = add();
    const int32_t unlike = 5000;  // far from the ids of model states
    next_child_state_id = next_child_state_id < unlike ? unlike : next_child_state_id;
    const int32_t child = add_child(model_of(parent));
    select(child);
    EXPECT_STREQ(selection_current_model(&session)->name, "child");
}

TEST_F(SelectionTest, AllReplacesTheSelectionByTheModelsThatHaveAState) {
    const int32_t first = add();
    const int32_t second = add();
    add_child(model_of(first));
    select(second);
    session.selection.centre = Vec3{1, 2, 3};
    EXPECT_EQ(selection_all(&session), 1);
    EXPECT_EQ(selected(), 2);
    EXPECT_EQ(model_of(first), selection_current_model(&session));
    EXPECT_EQ(session.selection.centre.x, 0.0f);
}

TEST_F(SelectionTest, ClearEmptiesListsCentreAndAxis) {
    const int32_t parent = add();
    select(parent);
    selection_add_child(&session, add_child(model_of(parent)));
    selection_set_centre(&session, 1, 2, 3);
    selection_set_axis(&session, 1, 2, 9);
    EXPECT_EQ(selection_clear(&session), 1);
    EXPECT_EQ(selected(), 0);
    EXPECT_EQ(list_count(&session.selection.children), 0);
    for (const Vec3& v : {session.selection.centre, session.selection.axis}) {
        EXPECT_EQ(v.x, 0.0f);
        EXPECT_EQ(v.y, 0.0f);
        EXPECT_EQ(v.z, 0.0f);
    }
}

TEST_F(SelectionTest, ASelectedChildKeepsItsLink) {
    const int32_t parent = add();
    const int32_t id = add_child(model_of(parent));
    EXPECT_EQ(selection_add_child(&session, id), 1);
    SelectedChild* entry = list_find<SelectedChild>(&session.selection.children, id);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(list_at(&model_of(parent)->children, 0, 0), entry->link);
    EXPECT_EQ(entry->link, list_find<ChildState>(&session.child_states, id)->link);
    session_close_all(&session);
    EXPECT_EQ(list_find(&session.child_states, id), nullptr) << "the entry names nothing any more";
}

TEST_F(SelectionTest, AfterAResetThereIsNoCurrentModel) {
    select(add());
    session_reset(&session, 0);
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selected(), 0);
}

// ---- clipboard ----

TEST_F(SelectionTest, CopyIsShallowAndLeavesCentreAndAxisOut) {
    const int32_t id = add();
    select(id);
    selection_set_centre(&session, 1, 2, 3);
    session.clipboard_cut = 1;
    EXPECT_EQ(selection_copy(&session), 1);
    EXPECT_EQ(session.clipboard_cut, 0);
    EXPECT_EQ(session.clipboard.centre.x, 0.0f);
    const SelectedModel* entry = list_find<SelectedModel>(&session.clipboard.models, id);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(model_of(id), entry->model);
    EXPECT_EQ(selection_copy(&session), 1);
    EXPECT_EQ(list_count(&session.clipboard.models), 1);
    EXPECT_EQ(clipboard_clear(&session), 1);
    EXPECT_EQ(list_count(&session.clipboard.models), 0);
    EXPECT_EQ(selected(), 1);
}

TEST_F(SelectionTest, CopyOfAnEmptySelectionEmptiesTheClipboardThatStaysUsable) {
    const int32_t id = add();
    select(id);
    selection_copy(&session);
    selection_clear(&session);
    EXPECT_EQ(selection_copy(&session), 1);
    EXPECT_EQ(list_count(&session.clipboard.models), 0);
    select(id);
    EXPECT_EQ(selection_copy(&session), 1);
    EXPECT_EQ(list_count(&session.clipboard.models), 1);
}

TEST_F(SelectionTest, CutLeavesTheModelInTheSceneAndSelected) {
    select(add());
    EXPECT_EQ(selection_cut(&session), 1);
    EXPECT_EQ(session.clipboard_cut, 1);
    EXPECT_EQ(selected(), 1);
    EXPECT_EQ(roots(), 1);
    EXPECT_EQ(list_count(&session.clipboard.models), 1);
}

TEST_F(SelectionTest, PasteChangesNothing) {
    select(add());
    selection_copy(&session);
    EXPECT_EQ(selection_paste(), 1);
    EXPECT_EQ(roots(), 1);
    EXPECT_EQ(selected(), 1);
    EXPECT_EQ(list_count(&session.clipboard.models), 1);
}

TEST_F(SelectionTest, TheListsThatNothingFillsAreCopiedAndClearedLikeTheOthers) {
    for (KeyedList& list : session.selection.unused) { list_add(&list, 7); }
    selection_add_child(&session, add_child(model_of(add())));
    EXPECT_EQ(selection_copy(&session), 1);
    EXPECT_EQ(selection_clear(&session), 1);
    EXPECT_EQ(list_count(&session.clipboard.children), 1);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(list_count(&session.selection.unused[i]), 0);
        EXPECT_EQ(list_count(&session.clipboard.unused[i]), 1);
        EXPECT_NE(list_find(&session.clipboard.unused[i], 7), nullptr);
    }
    EXPECT_EQ(clipboard_clear(&session), 1);
    EXPECT_EQ(list_count(&session.clipboard.children), 0);
    for (const KeyedList& list : session.clipboard.unused) { EXPECT_EQ(list_count(&list), 0); }
}

// ---- transforms ----

TEST_F(SelectionTest, TranslationIsAbsoluteOrAdded) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 1);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 1);
    expect_matrix(moved(1, 2, 3), state(id)->matrix);
    EXPECT_EQ(selection_translate(&session, 1, 1, 1, 1), 1);
    expect_matrix(moved(2, 3, 4), state(id)->matrix);
    EXPECT_EQ(state(id)->gl_matrix.m[12], 2.0f);
}

TEST_F(SelectionTest, TranslationGrowsTheRadiusAndScaleDoesNot) {
    select(add());
    session.radius = 10.0f;
    selection_scale(&session, 100, 100, 100, 0);
    EXPECT_EQ(session.radius, 10.0f);
    selection_translate(&session, 0, 0, 46, 0);
    EXPECT_EQ(session.radius, 100.0f);  // twice 4 + 46
}

TEST_F(SelectionTest, ScaleIsAbsoluteOrMultiplied) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_scale(&session, 2, 3, 4, 0), 1);
    EXPECT_EQ(selection_scale(&session, 2, 3, 4, 0), 1);
    EXPECT_EQ(state(id)->matrix.m[5], 3.0f);
    EXPECT_EQ(selection_scale(&session, 2, 2, 2, 1), 1);
    EXPECT_EQ(state(id)->matrix.m[0], 4.0f);
    EXPECT_EQ(state(id)->matrix.m[10], 8.0f);
}

TEST_F(SelectionTest, EachAxisIsMovedAndScaledByItsOwnNumber) {
    const int32_t id = add();
    select(id);
    selection_translate(&session, 1, 2, 3, 0);
    selection_translate(&session, 10, 20, 40, 1);
    EXPECT_EQ(state(id)->translate.x, 11.0f);
    EXPECT_EQ(state(id)->translate.y, 22.0f);
    EXPECT_EQ(state(id)->translate.z, 43.0f);
    selection_scale(&session, 2, 3, 4, 0);
    selection_scale(&session, 5, 7, 11, 1);
    EXPECT_EQ(state(id)->scale.x, 10.0f);
    EXPECT_EQ(state(id)->scale.y, 21.0f);
    EXPECT_EQ(state(id)->scale.z, 44.0f);
}

TEST_F(SelectionTest, AllSelectedModelsAreMoved) {
    const int32_t first = add();
    const int32_t second = add();
    selection_all(&session);
    EXPECT_EQ(selection_translate(&session, 5, 0, 0, 0), 1);
    EXPECT_EQ(state(first)->translate.x, 5.0f);
    EXPECT_EQ(state(second)->translate.x, 5.0f);
}

TEST_F(SelectionTest, TransformsOfAnEmptySelectionSucceed) {
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 1);
    EXPECT_EQ(selection_scale(&session, 1, 2, 3, 0), 1);
    EXPECT_EQ(selection_rotate(&session, "1", "2", "3", 0), 1);
    EXPECT_EQ(selection_add_data(&session, "points"), 1);
    EXPECT_EQ(selection_pancake(&session), 1);
}

TEST_F(SelectionTest, RotationWithoutACentreIsAboutTheOrigin) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_rotate(&session, "0", "0", "30", 0), 1);
    expect_matrix(turned_z(30), state(id)->matrix);
    EXPECT_EQ(selection_rotate(&session, "0", "0", "30", 0), 1);
    expect_matrix(turned_z(30), state(id)->matrix);
    EXPECT_EQ(selection_rotate(&session, "0", "0", "30", 1), 1);
    expect_matrix(turned_z(60), state(id)->matrix);
}

TEST_F(SelectionTest, ARelativeRotationTurnsWhatStoodBefore) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_rotate(&session, "0", "0", "90", 0), 1);
    EXPECT_EQ(selection_rotate(&session, "90", "0", "0", 1), 1);
    // x goes to y by the first turn and on to z by the second; y goes to -x, and z to -y.
    expect_matrix({{0, -1, 0, 0}, {0, 0, -1, 0}, {1, 0, 0, 0}, {0, 0, 0, 1}}, state(id)->matrix);
}

TEST_F(SelectionTest, RotationAboutACentreKeepsTheCentreInPlace) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_set_centre(&session, 10, 20, 30), 1);
    EXPECT_EQ(selection_rotate(&session, "0", "0", "90", 0), 1);
    expect_matrix(times(moved(10, 20, 30), times(turned_z(90), moved(-10, -20, -30))), state(id)->rotation);
    Vec3 centre{10, 20, 30};
    Vec3 place;
    mat_transform_point(&state(id)->rotation, &centre, &place);
    EXPECT_NEAR(place.x, 10.0f, 1e-4);
    EXPECT_NEAR(place.y, 20.0f, 1e-4);
}

TEST_F(SelectionTest, ACentreThatLiesOnAnAxisCountsToo) {
    const int32_t id = add();
    select(id);
    // All three texts turn, so that no centre stands still by chance.
    const Vec3 centres[] = {{5, 0, 0}, {0, 5, 0}, {0, 0, 5}};
    for (const Vec3& centre : centres) {
        selection_set_centre(&session, centre.x, centre.y, centre.z);
        ASSERT_EQ(selection_rotate(&session, "90", "90", "90", 0), 1);
        Vec3 place;
        mat_transform_point(&state(id)->rotation, &centre, &place);
        EXPECT_NEAR(centre.x, place.x, 1e-4);
        EXPECT_NEAR(centre.y, place.y, 1e-4);
        EXPECT_NEAR(centre.z, place.z, 1e-4);
        // By the quarter about z x goes to y, by that about y it stays, by that about x it goes on to z.
        Vec3 beside{centre.x + 1, centre.y, centre.z};
        mat_transform_point(&state(id)->rotation, &beside, &place);
        EXPECT_NEAR(centre.z + 1, place.z, 1e-4);
    }
}

TEST_F(SelectionTest, AnAxisAlongAnyDirectionCounts) {
    const int32_t id = add();
    select(id);
    selection_set_centre(&session, 1, 2, 3);
    const Vec3 axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
    for (const Vec3& axis : axes) {
        selection_set_axis(&session, 1 + axis.x, 2 + axis.y, 3 + axis.z);
        ASSERT_EQ(selection_rotate(&session, "0", "0", "90", 0), 1);
        const Vec3 on_axis{1 + 7 * axis.x, 2 + 7 * axis.y, 3 + 7 * axis.z};
        Vec3 place;
        mat_transform_point(&state(id)->rotation, &on_axis, &place);
        EXPECT_NEAR(on_axis.x, place.x, 1e-4);
        EXPECT_NEAR(on_axis.y, place.y, 1e-4);
        EXPECT_NEAR(on_axis.z, place.z, 1e-4);
    }
}

TEST_F(SelectionTest, AnAxisWithoutACentreHasNoEffect) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_set_axis(&session, 1, 0, 0), 1);
    EXPECT_EQ(session.selection.axis.x, 1.0f);
    EXPECT_EQ(selection_rotate(&session, "0", "0", "90", 0), 1);
    expect_matrix(turned_z(90), state(id)->rotation);
}

TEST_F(SelectionTest, TheAxisIsTakenFromTheCentreThatIsSetBefore) {
    selection_set_axis(&session, 0, 0, 5);
    EXPECT_EQ(session.selection.axis.z, 1.0f);
    selection_set_centre(&session, 0, 3, 0);
    EXPECT_EQ(session.selection.axis.z, 1.0f) << "setting the centre leaves the axis";
    selection_set_axis(&session, 0, 3, -2);
    EXPECT_EQ(session.selection.axis.z, -1.0f);
    EXPECT_EQ(session.selection.axis.y, 0.0f);
    selection_set_centre(&session, 1, 2, 3);
    selection_set_axis(&session, 1 + 2, 2 - 3, 3 + 6);  // (2, -3, 6) has the length 7
    EXPECT_FLOAT_EQ(2.0f / 7.0f, session.selection.axis.x);
    EXPECT_FLOAT_EQ(-3.0f / 7.0f, session.selection.axis.y);
    EXPECT_FLOAT_EQ(6.0f / 7.0f, session.selection.axis.z);
}

// Rows across, across, along the axis, worked out by hand: U = axis x z, V = axis x U, both of unit length.
void expect_rotation_about(Session* session, ModelState* state, const Matrix& frame) {
    ASSERT_EQ(selection_rotate(session, "0", "0", "90", 0), 1);
    const Matrix turn = times(transposed(frame), times(turned_z(90), frame));
    expect_matrix(times(moved(1, 2, 3), times(turn, moved(-1, -2, -3))), state->rotation);
}

TEST_F(SelectionTest, RotationAboutAnAxisTurnsInItsFrame) {
    const int32_t id = add();
    select(id);
    selection_set_centre(&session, 1, 2, 3);
    selection_set_axis(&session, 2, 2, 3);  // the axis (1, 0, 0): U = (0, -1, 0), V = (0, 0, -1)
    expect_rotation_about(&session, state(id), {{0, 0, -1, 0}, {0, -1, 0, 0}, {1, 0, 0, 0}, {0, 0, 0, 1}});
}

TEST_F(SelectionTest, RotationAboutASlantedAxisTurnsInItsFrame) {
    const int32_t id = add();
    select(id);
    selection_set_centre(&session, 1, 2, 3);
    selection_set_axis(&session, 1, 5, 7);  // the axis (0, 0.6, 0.8): U = (1, 0, 0), V = (0, 0.8, -0.6)
    expect_rotation_about(&session, state(id), {{0, 0.8, -0.6, 0}, {1, 0, 0, 0}, {0, 0.6, 0.8, 0}, {0, 0, 0, 1}});
}

TEST_F(SelectionTest, RotationAboutAnAxisParallelToZTakesTheLimitOfItsFrame) {
    const int32_t id = add();
    select(id);
    selection_set_centre(&session, 1, 2, 3);
    selection_set_axis(&session, 1, 2, 8);
    expect_rotation_about(&session, state(id), {{1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    selection_set_axis(&session, 1, 2, -8);
    expect_rotation_about(&session, state(id), {{-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}});
}

TEST_F(SelectionTest, RotationTextsOutOfOrderAndBadTextsAreTakenAsFarAsTheyGo) {
    const int32_t id = add();
    select(id);
    EXPECT_EQ(selection_rotate(&session, "z30", "abc", "z60", 0), 1);
    expect_matrix(turned_z(30), state(id)->rotation);
    EXPECT_EQ(selection_rotate(&session, nullptr, "0", "0", 0), 0);
}

// ---- deletion ----

TEST_F(SelectionTest, DeleteOfAnEmptySelectionSucceeds) {
    add();
    EXPECT_EQ(selection_delete(&session), 1);
    EXPECT_EQ(roots(), 1);
}

TEST_F(SelectionTest, DeleteTakesTheSelectedRootsAndClearsTheSelection) {
    const int32_t first = add("first.mod");
    add("second.mod");
    const int32_t third = add("third.mod");
    select(first);
    select(third);
    EXPECT_EQ(selection_delete(&session), 1);
    EXPECT_EQ(roots(), 1);
    EXPECT_EQ(selected(), 0);
    EXPECT_EQ(session_find_model(&session, "first"), 0);
    EXPECT_NE(session_find_model(&session, "second"), 0);
}

TEST_F(SelectionTest, AChildCannotBeDeletedAndStopsTheWalk) {
    const int32_t parent = add("parent.mod");
    next_child_state_id = next_child_state_id < 9000 ? 9000 : next_child_state_id;
    const int32_t child = add_child(model_of(parent));
    const int32_t other = add("other.mod");
    select(child);
    select(other);
    EXPECT_EQ(selection_delete(&session), 0);
    EXPECT_EQ(roots(), 2);
    EXPECT_EQ(selected(), 2) << "the selection stays";
}

TEST_F(SelectionTest, AChildWithAModelStateOfItsOwnIsNoRootEither) {
    const int32_t parent = add("parent.mod");
    next_child_state_id = next_child_state_id < 9000 ? 9000 : next_child_state_id;
    select(add_child(model_of(parent)));
    ASSERT_EQ(selection_translate(&session, 1, 0, 0, 0), 1);
    const int32_t id = model_state(&session, selection_current_model(&session))->id;
    selection_clear(&session);
    select(id);
    EXPECT_EQ(selection_delete(&session), 0);
    EXPECT_EQ(roots(), 1);
}

TEST_F(SelectionTest, DeletedModelsLeaveNothingThatPointsAtThem) {
    const int32_t parent = add("parent.mod");
    const int32_t rider = add("rider.mod");
    RootModel* root = list_at<RootModel>(&session.root_models, 1, 1);
    root->animation = animation_create(root->model);
    root->animation->parent_model = model_of(parent);
    select(parent);
    EXPECT_EQ(selection_delete(&session), 1);
    EXPECT_EQ(root->animation->parent_model, nullptr);
    scene_evaluate(&session);
    EXPECT_NE(state(rider), nullptr);
}

// ---- stale entries ----

TEST_F(SelectionTest, EveryOperationAnswersZeroForAClosedModelAndFollowsNothing) {
    select(add());
    selection_copy(&session);
    session_close_all(&session);
    const int32_t alive = add();
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_scale(&session, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_rotate(&session, "1", "2", "3", 0), 0);
    EXPECT_EQ(selection_delete(&session), 0);
    EXPECT_EQ(selection_add_data(&session, "points\n5 1 1 1\n"), 0);
    EXPECT_EQ(selection_add_child_model(&session, alive), 0);
    EXPECT_EQ(selection_pancake(&session), 0);
    const Vec3 centre = selection_centre(&session);
    EXPECT_EQ(centre.x, 0.0f);
    EXPECT_EQ(selected(), 1);
    EXPECT_EQ(selection_copy(&session), 1);
    EXPECT_EQ(selection_cut(&session), 1);
    EXPECT_EQ(roots(), 1);
    EXPECT_EQ(state(alive)->translate.x, 0.0f);
}

TEST_F(SelectionTest, AWalkStopsAtAStaleEntryWithTheEarlierModelsMoved) {
    const int32_t first = add("first.mod");
    const int32_t second = add("second.mod");
    const int32_t third = add("third.mod");
    selection_all(&session);
    const int32_t key = list_int_key(&session.root_models, 1);
    session_remove_root(&session, key);
    EXPECT_EQ(state(second), nullptr);
    EXPECT_EQ(selection_translate(&session, 7, 0, 0, 0), 0);
    EXPECT_EQ(state(first)->translate.x, 7.0f);
    EXPECT_EQ(state(third)->translate.x, 0.0f);
}

TEST_F(SelectionTest, AStaleChildEntryIsNotFollowed) {
    const int32_t parent = add();
    next_child_state_id = next_child_state_id < 9000 ? 9000 : next_child_state_id;
    const int32_t child = add_child(model_of(parent));
    select(child);
    session_close_all(&session);
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_add_model(&session, child), 0);
    EXPECT_EQ(selection_add_child(&session, child), 0);
}

// An id of a link and an id of a model can be the same number.
TEST_F(SelectionTest, AnEntryWhoseIdNamesAnotherModelByNowIsStale) {
    next_model_state_id = next_model_state_id < 12000 ? 12000 : next_model_state_id;
    const int32_t parent = add();
    next_child_state_id = next_model_state_id;
    const int32_t child = add_child(model_of(parent));
    next_child_state_id += 9000;  // the tests behind this one want different numbers again
    select(child);
    session_close_all(&session);
    ASSERT_EQ(child, add());
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_pancake(&session), 0);
    EXPECT_EQ(selection_delete(&session), 0);
    EXPECT_EQ(roots(), 1);
}

// What a closed model leaves to the next one: its address, which the allocator hands out again, and the number of its
// key, which the other counter may reach.
TEST_F(SelectionTest, AnEntryNeverTakesANewModelForAFreedOneWithItsAddressAndId) {
    next_model_state_id = next_model_state_id < 22000 ? 22000 : next_model_state_id;
    const int32_t parent = add();
    next_child_state_id = next_model_state_id;
    const int32_t freed = add_child(model_of(parent));
    next_child_state_id += 9000;
    select(freed);
    session_close_all(&session);
    ASSERT_EQ(freed, add());
    auto* entry = list_find<SelectedModel>(&session.selection.models, freed);
    entry->model = model_of(freed);
    EXPECT_EQ(selection_entry_model(&session, freed, entry), nullptr);
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_pancake(&session), 0);
    EXPECT_EQ(selection_centre(&session).x, 0.0f);
    EXPECT_EQ(selection_delete(&session), 0);
    EXPECT_EQ(roots(), 1);
    select(freed);
    EXPECT_EQ(model_of(freed), selection_current_model(&session)) << "selected anew it counts";
}

TEST_F(SelectionTest, AnEntryOfARootNeverTakesANewChildForAFreedModelWithItsAddressAndId) {
    next_model_state_id = next_model_state_id < 42000 ? 42000 : next_model_state_id;
    const int32_t freed = add();
    select(freed);
    session_close_all(&session);
    const int32_t parent = add();
    next_child_state_id = freed;
    ASSERT_EQ(freed, add_child(model_of(parent)));
    next_child_state_id += 9000;
    const auto* child = list_find<ChildState>(&session.child_states, freed);
    list_find<SelectedModel>(&session.selection.models, freed)->model = child->link->model;
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 0);
}

TEST_F(SelectionTest, ASelectedLinkWithoutAModelAnswersZero) {
    const int32_t parent = add();
    next_child_state_id = next_child_state_id < 9000 ? 9000 : next_child_state_id;
    ChildLink* link = model_add_child(model_of(parent), nullptr, "none", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    select(child_state(&session, link)->id);
    EXPECT_EQ(selection_current_model(&session), nullptr);
    EXPECT_EQ(selection_translate(&session, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_pancake(&session), 0);
}

// ---- adding data ----

TEST_F(SelectionTest, DataIsAddedToEverySelectedModel) {
    const int32_t first = add();
    const int32_t second = add();
    selection_all(&session);
    EXPECT_EQ(selection_add_data(&session, "points\n5\t1\t2\t3\nlayer\tskin\t1\t2\t3\tx\n"), 1);
    EXPECT_EQ(model_count_points(model_of(first)), 3);
    EXPECT_NE(model_find_layer(model_of(second), "skin"), nullptr);
}

TEST_F(SelectionTest, BadDataFailsAtTheFirstModel) {
    const int32_t first = add();
    const int32_t second = add();
    selection_all(&session);
    EXPECT_EQ(selection_add_data(&session, "points\n5\t1\t2\t3\nlayer\tskin\n"), 0);
    EXPECT_EQ(model_count_points(model_of(first)), 3);
    EXPECT_EQ(model_count_points(model_of(second)), 2);
    EXPECT_EQ(selection_add_data(&session, nullptr), 0);
    EXPECT_EQ(selection_add_data(nullptr, "points"), 0);
}

TEST_F(SelectionTest, AChildLineLeavesALinkWithoutAModelThatEveryWalkPassesOver) {
    const int32_t id = add();
    select(id);
    ASSERT_EQ(selection_add_data(&session, "child\tghost\t1\t2\t3\t1\t1\t1\t0\t0\t0\n"), 1);
    ASSERT_EQ(model_count_children(model_of(id)), 1);
    child_state(&session, model_find_child(model_of(id), "ghost"));
    EXPECT_EQ(session_find_model(&session, "ghost"), 0);
    EXPECT_EQ(model_size(model_of(id), nullptr).x, 2.0f);
    EXPECT_EQ(model_find_point(model_of(id), 99), nullptr);
    EXPECT_EQ(selection_delete(&session), 1);
    EXPECT_EQ(list_count(&session.child_states), 0);
}

TEST_F(SelectionTest, AJointCalledWorldWrittenAnewLeavesNoRecordBehind) {
    const int32_t id = add();
    select(id);
    const char* text = "joint\tworld\t1\t2\t3\thip\t0\n";
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(selection_add_data(&session, text), 1);
        Joint* joint = list_find<Joint>(&model_of(id)->joints, "world");
        joint_state(&session, model_of(id), joint);
    }
    EXPECT_EQ(list_count(&session.joint_states), 1);
}

// ---- adding children ----

TEST_F(SelectionTest, AnAddedChildIsBorrowedAtItsPlaceAndStaysARoot) {
    const int32_t parent = add("parent.mod");
    const int32_t child = add("child.mod");
    state(child)->translate = Vec3{1, 2, 3};
    state(child)->scale = Vec3{4, 5, 6};
    select(parent);
    ASSERT_EQ(selection_add_child_model(&session, child), 1);
    EXPECT_EQ(selected(), 0);
    EXPECT_EQ(roots(), 2);
    const ChildLink* link = model_find_child(model_of(parent), "child");
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(model_of(child), link->model);
    EXPECT_EQ(link->borrowed, 1);
    EXPECT_EQ(link->position.y, 2.0f);
    EXPECT_EQ(link->scale.z, 6.0f);
    EXPECT_STREQ(link->rotate[0], "0");
    EXPECT_EQ(model_of(child)->parent, nullptr);
}

TEST_F(SelectionTest, AnUnknownIdOrASelectedOneIsNoChild) {
    const int32_t parent = add();
    select(parent);
    EXPECT_EQ(selection_add_child_model(&session, parent), 0);
    EXPECT_EQ(selection_add_child_model(&session, next_model_state_id + 1000), 0);
    EXPECT_EQ(selection_add_child_model(nullptr, parent), 0);
    EXPECT_EQ(selected(), 1);
    EXPECT_EQ(model_count_children(model_of(parent)), 0);
}

TEST_F(SelectionTest, AddingAChildToAnEmptySelectionSucceeds) {
    EXPECT_EQ(selection_add_child_model(&session, add()), 1);
}

TEST_F(SelectionTest, AModelNeverBecomesItsOwnDescendant) {
    const int32_t a = add("a.mod");
    const int32_t b = add("b.mod");
    const int32_t c = add("c.mod");
    select(a);
    ASSERT_EQ(selection_add_child_model(&session, b), 1);
    select(b);
    ASSERT_EQ(selection_add_child_model(&session, c), 1);
    select(c);
    EXPECT_EQ(selection_add_child_model(&session, a), 0);
    EXPECT_EQ(selection_add_child_model(&session, b), 0);
    EXPECT_EQ(selected(), 1);
    EXPECT_EQ(model_count_children(model_of(c)), 0);
}

TEST_F(SelectionTest, AChildMayNotTakeItsOwnAncestorInThroughAnOwnedLink) {
    const int32_t parent = add("parent.mod");
    next_child_state_id = next_child_state_id < 9000 ? 9000 : next_child_state_id;
    select(add_child(model_of(parent)));
    EXPECT_EQ(selection_add_child_model(&session, parent), 0);
    EXPECT_EQ(model_count_children(model_of(parent)), 1);
}

TEST_F(SelectionTest, TheTreeKeepsItsDepth) {
    int32_t top = add();
    for (int level = 0; level < MODEL_TREE_DEPTH_LIMIT; ++level) {
        const int32_t above = add();
        select(above);
        ASSERT_EQ(selection_add_child_model(&session, top), 1) << level;
        top = above;
    }
    select(add());
    EXPECT_EQ(selection_add_child_model(&session, top), 0);
    EXPECT_EQ(model_tree_size(model_of(top)).depth, MODEL_TREE_DEPTH_LIMIT);
    // Also from below: the lowest may not get a child that would stand one too deep.
    selection_clear(&session);
    const Model* lowest = list_at<RootModel>(&session.root_models, 0, 0)->model;
    select(list_at<ModelState>(&session.model_states, lowest->state_index, 0)->id);
    EXPECT_EQ(selection_add_child_model(&session, add()), 0);
    EXPECT_EQ(model_count_children(lowest), 0);
}

TEST_F(SelectionTest, TheTreeKeepsItsNumberOfModelsWithEachRepetitionCounted) {
    int32_t top = add();
    for (int level = 1; level < 12; ++level) {
        const int32_t above = add();
        for (int twice = 0; twice < 2; ++twice) {
            select(above);
            ASSERT_EQ(selection_add_child_model(&session, top), 1);
        }
        top = above;
    }
    ASSERT_EQ(model_tree_size(model_of(top)).nodes, 4095);
    const int32_t one_more = add();
    select(top);
    ASSERT_EQ(selection_add_child_model(&session, one_more), 1) << "4096 are allowed";
    select(top);
    EXPECT_EQ(selection_add_child_model(&session, one_more), 0);
    EXPECT_EQ(model_tree_size(model_of(top)).nodes, 4096);
    EXPECT_GT(model_size(model_of(top), nullptr).x, 0.0f);
}

// The slot that it took keeps its bytes until the next link comes.
TEST_F(SelectionTest, ARefusedLendLeavesNoBorrowedLinkForTheNextChild) {
    const int32_t parent = add("parent.mod");
    const int32_t large = add("large.mod");
    for (int i = 0; i < MODEL_TREE_NODE_LIMIT; ++i) {
        model_add_child(model_of(large), nullptr, "ghost", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    }
    select(parent);
    ASSERT_EQ(selection_add_child_model(&session, large), 0);
    ASSERT_EQ(list_count(&model_of(parent)->children), 0);
    const ChildLink* slot = list_add<ChildLink>(&model_of(parent)->children, 1);
    ASSERT_EQ(slot->borrowed, 1) << "the slot of the link that was refused";
    list_remove(&model_of(parent)->children, 1);
    add_child(model_of(parent));
    const ChildLink* owned = model_find_child(model_of(parent), "child");
    ASSERT_EQ(slot, owned);
    EXPECT_EQ(owned->borrowed, 0) << "its model would never be released";
}

TEST_F(SelectionTest, ATreeElsewhereThatIsTooLargeDoesNotStandInTheWay) {
    const int32_t large = add("large.mod");
    for (int i = 0; i < MODEL_TREE_NODE_LIMIT; ++i) {
        model_add_child(model_of(large), nullptr, "ghost", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    }
    const int32_t parent = add("parent.mod");
    select(parent);
    EXPECT_EQ(selection_add_child_model(&session, add("child.mod")), 1);
}

TEST_F(SelectionTest, AnAddedChildIsReleasedOnceWhoeverGoesFirst) {
    for (const bool parent_first : {true, false}) {
        const int32_t parent = add("parent.mod");
        const int32_t child = add("child.mod");
        select(parent);
        ASSERT_EQ(selection_add_child_model(&session, child), 1);
        select(parent_first ? parent : child);
        EXPECT_EQ(selection_delete(&session), 1);
        EXPECT_EQ(roots(), 1);
        ModelState* left = state(parent_first ? child : parent);
        ASSERT_NE(left, nullptr) << "the id of the one that stays is still valid";
        if (!parent_first) { EXPECT_EQ(model_find_child(left->model, "child")->model, nullptr); }
        select(left->id);
        EXPECT_EQ(selection_delete(&session), 1);
        EXPECT_EQ(roots(), 0);
    }
}

TEST_F(SelectionTest, AnAddedChildSurvivesAClosingAndAResetWithoutASecondRelease) {
    const int32_t parent = add("parent.mod");
    const int32_t child = add("child.mod");
    select(parent);
    ASSERT_EQ(selection_add_child_model(&session, child), 1);
    child_state(&session, model_find_child(model_of(parent), "child"));
    session_reset(&session, 0);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(list_count(&session.child_states), 0);
}

TEST_F(SelectionTest, NullSessionsAnswerZero) {
    EXPECT_EQ(selection_clear(nullptr), 0);
    EXPECT_EQ(clipboard_clear(nullptr), 0);
    EXPECT_EQ(selection_all(nullptr), 0);
    EXPECT_EQ(selection_add_model(nullptr, 1), 0);
    EXPECT_EQ(selection_add_child(nullptr, 1), 0);
    EXPECT_EQ(selection_copy(nullptr), 0);
    EXPECT_EQ(selection_cut(nullptr), 0);
    EXPECT_EQ(selection_translate(nullptr, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_scale(nullptr, 1, 2, 3, 0), 0);
    EXPECT_EQ(selection_rotate(nullptr, "1", "2", "3", 0), 0);
    EXPECT_EQ(selection_set_centre(nullptr, 1, 2, 3), 0);
    EXPECT_EQ(selection_set_axis(nullptr, 1, 2, 3), 0);
    EXPECT_EQ(selection_delete(nullptr), 0);
}

}  // namespace
}  // namespace pelt
