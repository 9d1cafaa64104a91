// A root that is read anew: what goes over to the new model, and what is lost.
#include "motion/root_exchange.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/selection.h"
#include "formats/animation.h"
#include "motion/placement_text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/model.h"

namespace pelt {
namespace {

class RootExchange : public ::testing::Test {
protected:
    RootExchange() { session_init(&session); }
    ~RootExchange() override { session_reset(&session, 1); }

    static Model* make(const std::vector<std::string>& layers, const std::vector<std::string>& children) {
        Model* model = model_create("made.mod", nullptr);
        model_set_point(model, 1, 1, 2, 3, 1);
        for (const std::string& layer : layers) { model_add_layer(model, layer.c_str(), 1, 2, 3, 0, 0, 0); }
        for (const std::string& child : children) {
            Model* below = model_create((child + ".mod").c_str(), model);
            model_set_point(below, 1, 1, 2, 3, 1);
            model_add_child(model, below, child.c_str(), 0, 0, 0, 1, 1, 1, "0", "0", "0");
        }
        return model;
    }

    int32_t enter(Model* model) { return session_add_root(&session, model, nullptr); }
    int32_t first_key() { return list_elements<RootModel>(session.root_models).begin().int_key(); }
    Model* first_model() { return list_elements<RootModel>(session.root_models).begin()->model; }
    static std::vector<ChildLink*> links(Model* model) {
        std::vector<ChildLink*> all;
        for (ChildLink& link : list_elements<ChildLink>(model->children)) { all.push_back(&link); }
        return all;
    }
    bool exchange(Model* fresh) { return session_exchange_roots(&session, {{first_key(), fresh, nullptr}}, &lost); }

    Session session{};
    std::vector<LostPart> lost;
};

TEST_F(RootExchange, TheIdAndThePlacementStay) {
    const int32_t id = enter(make({"a"}, {}));
    model_state(&session, first_model())->translate = Vec3{4, 5, 6};
    Model* fresh = make({"a"}, {});
    ASSERT_TRUE(exchange(fresh));
    EXPECT_EQ(first_model(), fresh);
    EXPECT_EQ(model_state(&session, fresh)->id, id);
    EXPECT_EQ(model_state(&session, fresh)->model, fresh);
    EXPECT_EQ(model_state(&session, fresh)->translate.y, 5.0f);
    EXPECT_TRUE(lost.empty());
    EXPECT_EQ(list_count(&session.model_states), 1);
}

TEST_F(RootExchange, ChildrenOfOneNameKeepTheirIdsInOrder) {
    enter(make({}, {"wing", "tail", "wing"}));
    std::vector<int32_t> ids;
    for (ChildLink* link : links(first_model())) { ids.push_back(child_state(&session, link)->id); }
    Model* fresh = make({}, {"wing", "wing", "fin"});
    ASSERT_TRUE(exchange(fresh));
    const std::vector<ChildLink*> now = links(fresh);
    EXPECT_EQ(child_state(&session, now[0])->id, ids[0]);
    EXPECT_EQ(child_state(&session, now[1])->id, ids[2]);
    EXPECT_EQ(child_state(&session, now[0])->link, now[0]);
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_STREQ(lost[0].kind, "child");
    EXPECT_EQ(lost[0].name, "tail");
    EXPECT_EQ(lost[0].id, ids[1]);
    EXPECT_EQ(list_find(&session.child_states, ids[1]), nullptr);
    EXPECT_GT(child_state(&session, now[2])->id, ids[2]) << "a new child has a new id";
}

TEST_F(RootExchange, AChildStandsWhereItsNewLineSays) {
    enter(make({}, {"wing"}));
    const int32_t child = child_state(&session, links(first_model())[0])->id;
    Model* fresh = make({}, {"wing"});
    links(fresh)[0]->position = Vec3{7, 8, 9};
    ASSERT_TRUE(exchange(fresh));
    const ChildState* state = list_find<const ChildState>(&session.child_states, child);
    EXPECT_EQ(state->matrix.m[3], 7.0f);
    EXPECT_EQ(state->gl_matrix.m[13], 8.0f) << "as it is drawn";
}

TEST_F(RootExchange, AModelThatNoClipMovesAnyMoreGoesBackToItsPlacement) {
    Model* model = make({}, {});
    session_add_root(&session, model, animation_create(model), 1);
    ModelState* state = model_state(&session, model);
    state->translate = Vec3{1, 2, 3};
    scene_evaluate(&session);
    ASSERT_EQ(state->matrix.m[3], 0.0f) << "a clip says it all";
    ASSERT_TRUE(exchange(make({}, {})));
    EXPECT_EQ(state->matrix.m[3], 1.0f);
    EXPECT_EQ(state->gl_matrix.m[14], 3.0f);
}

TEST_F(RootExchange, LayersThatAreGoneAreNamedWithTheirModel) {
    const int32_t id = enter(make({"roof", "door"}, {}));
    ASSERT_TRUE(exchange(make({"door", "window"}, {})));
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_STREQ(lost[0].kind, "layer");
    EXPECT_EQ(lost[0].name, "roof");
    EXPECT_EQ(lost[0].id, id);
    EXPECT_FALSE(lost[0].is_child);
}

TEST_F(RootExchange, TheSelectionFollows) {
    const int32_t id = enter(make({}, {"wing"}));
    const int32_t child = child_state(&session, links(first_model())[0])->id;
    selection_add_model(&session, id);
    selection_add_child(&session, child);
    Model* fresh = make({}, {"wing"});
    ASSERT_TRUE(exchange(fresh));
    EXPECT_EQ(selection_current_model(&session), fresh);
    const auto* entry = list_find<const SelectedChild>(&session.selection.children, child);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->link, links(fresh)[0]);
}

TEST_F(RootExchange, ASelectedChildThatIsGoneIsSelectedNoMore) {
    enter(make({}, {"wing"}));
    const int32_t child = child_state(&session, links(first_model())[0])->id;
    selection_add_model(&session, child + 1000000);
    selection_add_child(&session, child);
    ASSERT_TRUE(exchange(make({}, {})));
    EXPECT_EQ(list_find(&session.child_states, child), nullptr) << "the id by which the entry is looked up";
    EXPECT_EQ(selection_current_model(&session), nullptr);
}

TEST_F(RootExchange, AModelThatIsLentIsLentAnew) {
    const int32_t lender = enter(make({}, {}));
    const int32_t borrower = enter(make({}, {}));
    selection_add_model(&session, borrower);
    ASSERT_EQ(selection_add_child_model(&session, lender), 1);
    Model* fresh = make({}, {});
    ASSERT_TRUE(exchange(fresh));
    Model* other = list_find<const ModelState>(&session.model_states, borrower)->model;
    ASSERT_EQ(links(other).size(), 1u);
    EXPECT_EQ(links(other)[0]->model, fresh);
    EXPECT_EQ(links(other)[0]->borrowed, 1);
}

TEST_F(RootExchange, ALoanInTheOldModelIsLostAndItsModelStays) {
    const int32_t borrower = enter(make({}, {}));
    const int32_t lender = enter(make({}, {}));
    Model* lent = list_find<const ModelState>(&session.model_states, lender)->model;
    selection_add_model(&session, borrower);
    ASSERT_EQ(selection_add_child_model(&session, lender), 1);
    ASSERT_TRUE(exchange(make({}, {})));
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_STREQ(lost[0].kind, "child");
    EXPECT_EQ(list_find<const ModelState>(&session.model_states, lender)->model, lent);
}

TEST_F(RootExchange, ManyRootsAreExchangedAtOnce) {
    const int32_t lender = enter(make({}, {"wing"}));
    const int32_t borrower = enter(make({}, {}));
    const int32_t stays = enter(make({}, {}));
    for (const int32_t id : {borrower, stays}) {
        selection_clear(&session);
        selection_add_model(&session, id);
        ASSERT_EQ(selection_add_child_model(&session, lender), 1);
    }
    selection_add_model(&session, lender);
    Model* first = make({}, {"wing"});
    Model* second = make({}, {});
    auto root = list_elements<RootModel>(session.root_models).begin();
    const int32_t first_key = root.int_key();
    const int32_t second_key = (++root).int_key();
    ASSERT_TRUE(session_exchange_roots(&session, {{first_key, first, nullptr}, {second_key, second, nullptr}}, &lost));
    EXPECT_EQ(model_state(&session, first)->id, lender);
    EXPECT_EQ(model_state(&session, second)->id, borrower);
    ASSERT_EQ(lost.size(), 1u) << "the loan of the one that was exchanged";
    EXPECT_STREQ(lost[0].kind, "child");
    Model* third = list_find<const ModelState>(&session.model_states, stays)->model;
    EXPECT_EQ(links(third)[0]->model, first);
    const auto* entry = list_find<const SelectedModel>(&session.selection.models, lender);
    EXPECT_EQ(selection_entry_model(&session, lender, entry), first);
}

TEST_F(RootExchange, AnUnknownKeyTakesNothingOver) {
    Model* fresh = make({}, {});
    enter(make({}, {}));
    Model* stays = first_model();
    Model* other = make({}, {});
    EXPECT_FALSE(session_exchange_roots(&session, {{first_key(), other, nullptr}, {12345, fresh, nullptr}}, &lost));
    EXPECT_EQ(first_model(), stays);
    model_release(other);
    model_release(fresh);
}

// ---- a turn as three texts ----

void expect_same_turn(float x, float y, float z) {
    Mat4 wanted;
    mat_identity(&wanted);
    mat_rotate(&wanted, x, y, z);
    const auto texts = rotation_texts(wanted);
    Mat4 found;
    ASSERT_EQ(mat_rotate_text(&found, texts[0].c_str(), texts[1].c_str(), texts[2].c_str()), 1);
    for (int i = 0; i < 16; ++i) {
        EXPECT_NEAR(found.m[i], wanted.m[i], 1e-4)
            << x << " " << y << " " << z << ": " << texts[0] << " " << texts[1] << " " << texts[2];
    }
}

TEST(RotationTexts, MakeTheSameTurnAgain) {
    for (float x = -180; x <= 180; x += 37.5f) {
        for (float y = -90; y <= 90; y += 22.5f) {
            for (float z = -180; z <= 180; z += 60) { expect_same_turn(x, y, z); }
        }
    }
}

TEST(RotationTexts, AreShort) {
    Mat4 turn;
    mat_identity(&turn);
    EXPECT_EQ(rotation_texts(turn)[0], "0");
    mat_rotate(&turn, 0, 0, 30);
    EXPECT_EQ(rotation_texts(turn)[2], "30");
    EXPECT_EQ(rotation_texts(turn)[1], "0");
}

}  // namespace
}  // namespace pelt
