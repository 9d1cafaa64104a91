// Adding, removing and closing the models of the scene.
#include "motion/root_models.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "formats/animation.h"
#include "foundation/text.h"
#include "motion/transform_state.h"

namespace pelt {
namespace {

std::vector<std::string> reports;
Session* reported = nullptr;
int nested_calls = 0;

void record_status(const char* text) { reports.push_back(text); }

// Closes from inside the reports of a closing, a few times.
void close_again(const char*) {
    if (nested_calls < 3) {
        ++nested_calls;
        session_close_all(reported);
    }
}

void add_from_inside(const char*) {
    if (nested_calls < 2) {
        ++nested_calls;
        session_add_root(reported, model_create("nested.mod", nullptr), nullptr);
    }
}

void reset_from_inside(const char*) {
    if (nested_calls < 2) {
        ++nested_calls;
        session_reset(reported, 0);
    }
}

class RootModelsTest : public ::testing::Test {
protected:
    RootModelsTest() {
        reports.clear();
        nested_calls = 0;
        reported = &session;
        session_init(&session);
    }
    ~RootModelsTest() override {
        session.status_callback = nullptr;
        session_reset(&session, 1);
    }

    Model* add(const char* name = "root.mod") {
        Model* model = model_create(name, nullptr);
        model_set_point(model, 1, 1, 2, 3, 1.0f);
        session_add_root(&session, model, nullptr);
        return model;
    }

    int32_t key_of(const Model* model) {
        const auto roots = list_elements<RootModel>(session.root_models);
        for (auto root = roots.begin(); root != roots.end(); ++root) {
            if (root->model == model) { return root.int_key(); }
        }
        return 0;
    }

    ChildLink* lend(Model* parent, Model* child) {
        ChildLink* link = model_add_child(parent, child, "lent", 0, 0, 0, 1, 1, 1, "0", "0", "0");
        link->borrowed = 1;
        child_state(&session, link);
        return link;
    }

    Session session{};
};

TEST_F(RootModelsTest, AddGivesTheIdOfTheModelStateAndGrowsTheCounters) {
    const int32_t next_state = next_model_state_id;
    const int32_t next_root = next_root_id;
    Model* model = model_create("a.mod", nullptr);
    EXPECT_EQ(next_state, session_add_root(&session, model, nullptr));
    EXPECT_EQ(next_root + 1, next_root_id);
    EXPECT_EQ(next_root, key_of(model));
    EXPECT_EQ(model, list_find<ModelState>(&session.model_states, next_state)->model);
}

TEST_F(RootModelsTest, AddOfANullModelReleasesTheAnimationThatItWasGiven) {
    Model* model = add();
    EXPECT_EQ(session_add_root(&session, nullptr, animation_create(model)), 0);
    EXPECT_EQ(list_count(&session.root_models), 1);
}

TEST_F(RootModelsTest, RemoveReleasesOneRootAndItsRecords) {
    Model* first = add();
    Model* second = add();
    point_state(&session, model_find_point(first, 1));
    EXPECT_EQ(session_remove_root(&session, key_of(first)), 1);
    EXPECT_EQ(list_count(&session.root_models), 1);
    EXPECT_EQ(list_count(&session.model_states), 1);
    EXPECT_EQ(list_count(&session.point_states), 0);
    EXPECT_NE(key_of(second), 0);
}

TEST_F(RootModelsTest, RemoveOfAnUnknownKeyFails) {
    add();
    EXPECT_EQ(session_remove_root(&session, 0), 0);
    EXPECT_EQ(session_remove_root(&session, -1), 0);
    EXPECT_EQ(session_remove_root(&session, next_root_id), 0);
    EXPECT_EQ(session_remove_root(nullptr, 1), 0);
    EXPECT_EQ(list_count(&session.root_models), 1);
}

TEST_F(RootModelsTest, RemoveReleasesTheAnimationToo) {
    Model* model = model_create("a.mod", nullptr);
    session_add_root(&session, model, animation_create(model));
    EXPECT_EQ(session_remove_root(&session, key_of(model)), 1);
    EXPECT_EQ(list_count(&session.root_models), 0);
}

TEST_F(RootModelsTest, RemoveEmptiesTheAnimationsThatHangOnTheModel) {
    Model* parent = model_create("parent.mod", nullptr);
    model_add_joint(parent, "hip", 0, 0, 0, "world", 0);
    ModelAnimation* parent_animation = animation_create(parent);
    session_add_root(&session, parent, parent_animation);
    Model* rider = model_create("rider.mod", nullptr);
    ModelAnimation* animation = animation_create(rider);
    animation->parent_model = parent;
    animation->parent_animation = parent_animation;
    animation->parent_joint = model_find_joint(parent, "hip");
    session_add_root(&session, rider, animation);
    EXPECT_EQ(session_remove_root(&session, key_of(parent)), 1);
    EXPECT_EQ(animation->parent_model, nullptr);
    EXPECT_EQ(animation->parent_animation, nullptr);
    EXPECT_EQ(animation->parent_joint, nullptr);
    scene_evaluate(&session);
}

TEST_F(RootModelsTest, RemoveLeavesTheAnimationsThatHangOnAnotherModel) {
    Model* parent = model_create("parent.mod", nullptr);
    ModelAnimation* parent_animation = animation_create(parent);
    session_add_root(&session, parent, parent_animation);
    Model* going = model_create("going.mod", nullptr);
    session_add_root(&session, going, animation_create(going));
    Model* rider = model_create("rider.mod", nullptr);
    ModelAnimation* animation = animation_create(rider);
    animation->parent_model = parent;
    animation->parent_animation = parent_animation;
    session_add_root(&session, rider, animation);
    EXPECT_EQ(session_remove_root(&session, key_of(going)), 1);
    EXPECT_EQ(parent, animation->parent_model);
    EXPECT_EQ(parent_animation, animation->parent_animation);
}

TEST_F(RootModelsTest, RemoveEmptiesTheLinksThatBorrowTheModelWhereverTheyAre) {
    Model* lent = add("lent.mod");
    Model* parent = add("parent.mod");
    Model* child = model_create("child.mod", parent);
    model_add_child(parent, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    ChildLink* direct = lend(parent, lent);
    ChildLink* deep = lend(child, lent);
    ASSERT_EQ(list_count(&session.child_states), 2);
    EXPECT_EQ(session_remove_root(&session, key_of(lent)), 1);
    EXPECT_EQ(direct->model, nullptr);
    EXPECT_EQ(deep->model, nullptr);
    EXPECT_EQ(direct->state_index, -1);
    EXPECT_EQ(list_count(&session.child_states), 0);
    EXPECT_EQ(list_count(&parent->children), 2) << "the links stay";
    EXPECT_EQ(session_find_model(&session, "lent"), 0);
}

TEST_F(RootModelsTest, RemoveEmptiesLinksThatBorrowAnOwnedChildOfTheModel) {
    Model* owner = add("owner.mod");
    Model* child = model_create("child.mod", owner);
    model_add_child(owner, child, "child", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    Model* other = add("other.mod");
    ChildLink* link = lend(other, child);
    EXPECT_EQ(session_remove_root(&session, key_of(owner)), 1);
    EXPECT_EQ(link->model, nullptr);
}

TEST_F(RootModelsTest, RemovePassesOverLinksWithoutAModelInTheRootsThatGoAndStay) {
    Model* going = add("going.mod");
    Model* staying = add("staying.mod");
    for (Model* model : {going, staying}) { model_add_child(model, nullptr, "ghost", 0, 0, 0, 1, 1, 1, "0", "0", "0"); }
    EXPECT_EQ(session_remove_root(&session, key_of(going)), 1);
    EXPECT_EQ(list_count(&staying->children), 1);
}

TEST_F(RootModelsTest, RemoveOfTheBorrowerKeepsTheLentModelWithItsId) {
    Model* lent = add("lent.mod");
    Model* parent = add("parent.mod");
    lend(parent, lent);
    const int32_t id = model_state(&session, lent)->id;
    EXPECT_EQ(session_remove_root(&session, key_of(parent)), 1);
    EXPECT_EQ(id, model_state(&session, lent)->id);
    EXPECT_EQ(list_count(&session.child_states), 0);
    EXPECT_EQ(list_count(&session.root_models), 1);
}

TEST_F(RootModelsTest, CloseAllReportsTwiceAlsoForAnEmptyScene) {
    session_set_status_callback(&session, record_status);
    session.triangles_drawn = 7;
    EXPECT_EQ(session_close_all(&session), 1);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], "Time: 0.00 of 0.00, Triangles: 7, Closing currently open Model file");
    EXPECT_EQ(reports[1], "Time: 0.00 of 0.00, Triangles: 7, Ready");
}

TEST_F(RootModelsTest, CloseAllReportsTheOldLengthFirstAndTheNewOneLast) {
    session_set_status_callback(&session, record_status);
    session.anim_time = 1.0f;
    session.anim_end = 2.0f;
    session_close_all(&session);
    EXPECT_EQ(reports[0], "Time: 1.00 of 2.00, Triangles: 0, Closing currently open Model file");
    EXPECT_EQ(reports[1], "Time: 1.00 of 0.00, Triangles: 0, Ready");
}

TEST_F(RootModelsTest, CloseAllEmptiesTheSceneAndKeepsSelectionAndClock) {
    Model* model = add();
    session.anim_end = 3.0f;
    session.anim_time = 1.0f;
    session.radius = 99.0f;
    session.animation_path = str_dup("scene.txt");
    list_add<SelectedModel>(&session.selection.models, 5)->model = model;
    EXPECT_EQ(session_close_all(&session), 1);
    EXPECT_EQ(list_count(&session.root_models), 0);
    EXPECT_EQ(list_count(&session.model_states), 0);
    EXPECT_EQ(session.anim_end, 0.0f);
    EXPECT_EQ(session.anim_time, 1.0f);
    EXPECT_EQ(session.radius, 10.0f);
    EXPECT_EQ(session.animation_path, nullptr);
    EXPECT_EQ(list_count(&session.selection.models), 1);
    EXPECT_EQ(session_close_all(nullptr), 1);
}

TEST_F(RootModelsTest, CloseAllReleasesModelsThatBorrowEachOtherOnce) {
    Model* first = add("first.mod");
    Model* second = add("second.mod");
    Model* third = add("third.mod");
    lend(first, second);
    lend(second, third);
    lend(first, third);
    EXPECT_EQ(session_close_all(&session), 1);
    EXPECT_EQ(list_count(&session.model_states), 0);
    EXPECT_EQ(list_count(&session.child_states), 0);
}

TEST_F(RootModelsTest, IdsNeverComeBackAfterAClosing) {
    const int32_t before = model_state(&session, add())->id;
    session_close_all(&session);
    const int32_t after = model_state(&session, add())->id;
    EXPECT_GT(after, before);
}

TEST_F(RootModelsTest, AStatusProcedureMayCloseInTheMiddleOfAClosing) {
    add();
    add();
    session_set_status_callback(&session, close_again);
    EXPECT_EQ(session_close_all(&session), 1);
    EXPECT_EQ(nested_calls, 3);
    EXPECT_EQ(list_count(&session.root_models), 0);
}

TEST_F(RootModelsTest, AStatusProcedureMayResetInTheMiddleOfAClosing) {
    add();
    session_set_status_callback(&session, reset_from_inside);
    EXPECT_EQ(session_close_all(&session), 1);
    EXPECT_EQ(list_count(&session.root_models), 0);
}

TEST_F(RootModelsTest, WhatAStatusProcedureAddsBeforeTheClosingGoesAndAfterItStays) {
    add();
    session_set_status_callback(&session, add_from_inside);
    EXPECT_EQ(session_close_all(&session), 1);
    EXPECT_EQ(nested_calls, 2);
    EXPECT_EQ(list_count(&session.root_models), 1) << "added by the report that the scene is ready";
}

TEST_F(RootModelsTest, AModelWithALayerNameTooLongForAKeyIsClosed) {
    Model* model = add();
    model_add_layer(model, std::string(80, 'x').c_str(), 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(session_close_all(&session), 1);
    session_reset(&session, 0);
    EXPECT_EQ(list_count(&session.root_models), 0);
}

}  // namespace
}  // namespace pelt
