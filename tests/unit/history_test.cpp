// The history: steps, what is told of them, and the places of a step that no script reaches yet.
#include "edit/history.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/selection.h"
#include "formats/model_reader.h"
#include "foundation/text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"
#include "support/scene_dump.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

class HistoryTest : public testing::Test {
protected:
    HistoryTest() {
        session_init(&session);
        history_attach(&session);
        const std::string text =
            "points\n1 0 0 0\n2 9 0 0\n3 0 9 0\nlayer body 1 2 3 doublesided\ntriangles\n0 1 2 3\n";
        model = model_load(dir.write("ship.mod", text).c_str());
        id = session_add_root(&session, model, nullptr);
        history_clear();
    }
    ~HistoryTest() override {
        session_reset(&session, 0);
        history_detach();
        for (KeyedList* list : {&session.selection.models, &session.clipboard.models}) { list_free(list); }
    }
    void command(const char* step, const std::function<void()>& work) {
        history_command_begin(step, true);
        work();
        history_command_end();
    }
    void move(int32_t point, int32_t x) {
        command("move", [&] { model_set_point(model, point, x, 0, 0, 1.0f); });
    }
    std::string dump() { return test::SceneDump(&session).text(); }
    float x_of(int32_t point) { return list_find<Point>(&model->points, point)->position.x; }
    std::vector<std::string> names() { return history_state().names; }

    test::TempDir dir;
    Session session{};
    Model* model = nullptr;
    int32_t id = 0;
    std::string name;
};

using Names = std::vector<std::string>;

TEST_F(HistoryTest, a_command_that_fails_half_way_is_put_back_and_is_no_step) {
    move(1, 5);
    history_undo(&name);
    const std::string before = dump();
    command("extrude", [&] {
        model_set_point(model, 1, 7, 7, 7, 1.0f);
        model_add_layer(model, "new", 1, 1, 1, 0, 0, 0);
        model_delete_layer(model, "body");
        history_put_back();
    });
    EXPECT_EQ(test::dump_difference(before, dump()), "");
    EXPECT_EQ(names(), Names{"move"});
    EXPECT_TRUE(history_redo(&name));
    EXPECT_EQ(name, "move");
    EXPECT_EQ(x_of(1), 5.0f);
}
TEST_F(HistoryTest, a_command_that_fails_in_a_step_takes_nothing_else_with_it) {
    ASSERT_TRUE(history_step_begin("drag"));
    move(1, 5);
    command("fails", [&] {
        model_set_point(model, 1, 7, 0, 0, 1.0f);
        model_set_point(model, 2, 7, 0, 0, 1.0f);
        history_put_back();
    });
    EXPECT_EQ(x_of(1), 5.0f);
    EXPECT_EQ(x_of(2), 9.0f);
    EXPECT_TRUE(history_step_end(&name));
    history_undo(&name);
    EXPECT_EQ(x_of(1), 0.0f);
}
TEST_F(HistoryTest, a_point_is_told_where_it_was_when_the_step_began) {
    Vec3 place{};
    ASSERT_TRUE(history_step_begin("drag"));
    ASSERT_TRUE(history_point_before(model, 1, &place));
    EXPECT_EQ(place.x, 0.0f) << "nothing has moved it";
    move(1, 5);
    move(1, 8);
    ASSERT_TRUE(history_point_before(model, 1, &place));
    EXPECT_EQ(place.x, 0.0f);
    move(40, 8);
    EXPECT_FALSE(history_point_before(model, 40, &place)) << "it was not there";
    EXPECT_FALSE(history_point_before(model, 41, &place));
    history_step_end(&name);
    ASSERT_TRUE(history_point_before(model, 1, &place));
    EXPECT_EQ(place.x, 8.0f) << "no step is open";
    command("move", [&] {
        model_set_point(model, 1, 20, 0, 0, 1.0f);
        ASSERT_TRUE(history_point_before(model, 1, &place));
    });
    EXPECT_EQ(place.x, 8.0f) << "where the command found it";
}
TEST_F(HistoryTest, a_command_inside_another_is_a_part_of_it) {
    command("outer", [&] {
        model_set_point(model, 1, 5, 0, 0, 1.0f);
        command("inner", [&] {
            model_set_point(model, 2, 5, 0, 0, 1.0f);
            EXPECT_FALSE(history_undo(&name));
            EXPECT_FALSE(history_step_begin("x"));
        });
        history_put_back();  // nothing: the work of the inner one would go too
    });
    EXPECT_EQ(names(), Names{"outer"});
    EXPECT_EQ(x_of(1), 5.0f);
    history_undo(&name);
    EXPECT_EQ(x_of(2), 9.0f);
}
TEST_F(HistoryTest, a_name_that_is_found_later_is_that_of_the_command_at_work) {
    command("change", [&] {
        history_command_name("layer colour");
        model_set_layer_colour(model, "body", 9, 9, 9);
    });
    EXPECT_EQ(names(), Names{"layer colour"});
}
TEST_F(HistoryTest, what_no_command_changes_leaves_nothing_to_take_back) {
    move(1, 5);
    model_set_point(model, 2, 5, 0, 0, 1.0f);
    EXPECT_EQ(names(), Names{});
    EXPECT_TRUE(history_undo(&name));
    EXPECT_EQ(x_of(1), 5.0f);
}
TEST_F(HistoryTest, a_layer_of_a_slot_used_again_keeps_apart_from_its_former_tenant) {
    const std::string before = dump();
    command("exchange", [&] {
        session_delete_layer(&session, model, "body");
        model_add_layer(model, "other", 4, 4, 4, 0, 0, 0);
        const int32_t corners[4] = {3, 2, 1, 0};
        model_add_triangle(model, "other", 0, corners, nullptr, nullptr, 0);
    });
    const std::string after = dump();
    history_undo(&name);
    EXPECT_EQ(test::dump_difference(before, dump()), "");
    history_redo(&name);
    EXPECT_EQ(test::dump_difference(after, dump()), "");
}
TEST_F(HistoryTest, a_layer_that_came_and_went_in_one_step_costs_nothing) {
    command("come and go", [&] {
        model_add_layer(model, "guest", 4, 4, 4, 0, 0, 0);
        const int32_t corners[4] = {3, 2, 1, 0};
        model_add_triangle(model, "guest", 0, corners, nullptr, nullptr, 0);
        session_delete_layer(&session, model, "guest");
    });
    EXPECT_EQ(names(), Names{});
    EXPECT_EQ(model_unsaved_changes(model), 0);
}
TEST_F(HistoryTest, two_layers_change_their_names_in_one_step) {
    command("new", [&] { model_add_layer(model, "other", 4, 4, 4, 0, 0, 0); });
    const std::string before = dump();
    command("exchange", [&] {
        session_rename_layer(&session, model, "body", "third");
        session_rename_layer(&session, model, "other", "body");
        session_rename_layer(&session, model, "third", "other");
    });
    const std::string after = dump();
    history_undo(&name);
    EXPECT_EQ(test::dump_difference(before, dump()), "");
    history_redo(&name);
    EXPECT_EQ(test::dump_difference(after, dump()), "");
}
TEST_F(HistoryTest, a_deleted_model_lives_as_long_as_a_step_names_it) {
    const uint64_t serial = model->serial;
    selection_add_model(&session, id);
    command("delete", [&] { selection_delete(&session); });
    ASSERT_NE(change_watched_model(serial), nullptr);
    EXPECT_EQ(change_watched_model(serial)->watched, WATCH_KEPT_OUTSIDE);
    EXPECT_GT(history_state().bytes, 2000) << "what is kept outside counts";
    history_undo(&name);
    EXPECT_EQ(model->watched, WATCH_IN_SCENE);
    history_redo(&name);
    history_clear();
    EXPECT_EQ(change_watched_model(serial), nullptr);
}
TEST_F(HistoryTest, a_model_that_is_deleted_without_a_history_is_gone) {
    history_set_limit(0);
    const uint64_t serial = model->serial;
    selection_add_model(&session, id);
    history_command_begin("delete", false);
    selection_delete(&session);
    history_command_end();
    EXPECT_EQ(change_watched_model(serial), nullptr);
    history_set_limit(HISTORY_LIMIT);
}
TEST_F(HistoryTest, an_id_that_another_state_took_meanwhile_moves_on) {
    const int32_t first_slot = model->state_index;
    selection_add_model(&session, id);
    command("delete", [&] { selection_delete(&session); });
    // A state that is made because it is asked for takes the free slot, and no step has it.
    Model* asked = model_create("asked.mod", nullptr);
    ModelState* state = model_state(&session, asked);
    const int32_t asked_id = state->id;
    ASSERT_EQ(asked->state_index, first_slot);
    history_undo(&name);
    EXPECT_EQ(model->state_index, first_slot);
    EXPECT_EQ(list_at<ModelState>(&session.model_states, first_slot, 0)->id, id);
    EXPECT_EQ(list_at<ModelState>(&session.model_states, asked->state_index, 0)->id, asked_id);
    session_forget_model(&session, asked);
    model_release(asked);
}
TEST_F(HistoryTest, saved_content_is_told_by_its_version) {
    move(1, 5);
    move(1, 6);
    history_mark_saved(&session, model);
    EXPECT_EQ(history_changes(&session), 0);
    history_undo(&name);
    EXPECT_EQ(history_changes(&session), 1);
    history_undo(&name);
    EXPECT_EQ(history_file_changes(&session, model), 2) << "the file has what was taken back";
    history_redo(&name);
    history_redo(&name);
    EXPECT_EQ(history_changes(&session), 0);
    history_undo(&name);
    move(1, 7);
    EXPECT_EQ(history_changes(&session), 1) << "as many changes, and others";
}
TEST_F(HistoryTest, a_model_that_was_saved_under_another_name_keeps_it) {
    command("rename", [&] { model_rename(model, "named.mod"); });
    move(1, 5);
    str_free(model->opened_path);
    model->opened_path = str_dup("saved as this");
    history_undo(&name);
    EXPECT_STREQ(model->opened_path, "saved as this");
    history_redo(&name);
    EXPECT_STREQ(model->opened_path, "saved as this");
    history_undo(&name);
    history_undo(&name);
    EXPECT_EQ(name, "rename");
    EXPECT_STREQ(model->name, "ship");
    EXPECT_EQ(model_file(model), dir.file("ship.mod"));
}
TEST_F(HistoryTest, models_of_one_file_count_and_are_saved_as_one) {
    Model* twin = model_load(dir.file("ship.mod").c_str());
    session_add_root(&session, twin, nullptr);
    history_clear();
    command("both", [&] {
        model_set_point(model, 1, 5, 0, 0, 1.0f);
        model_set_point(twin, 1, 5, 0, 0, 1.0f);
    });
    EXPECT_EQ(history_changes(&session), 1);
    EXPECT_EQ(history_file_changes(&session, twin), 1);
    history_mark_saved(&session, model);
    EXPECT_EQ(history_changes(&session), 0);
    EXPECT_EQ(model_unsaved_changes(twin), 0);
    history_undo(&name);
    EXPECT_EQ(history_changes(&session), 1);
}
TEST_F(HistoryTest, a_model_outside_of_the_scene_is_changed_against_a_file_saved_since) {
    Model* twin = model_load(dir.file("ship.mod").c_str());
    const int32_t twin_id = session_add_root(&session, twin, nullptr);
    history_clear();
    move(1, 5);
    selection_add_model(&session, twin_id);
    command("delete", [&] { selection_delete(&session); });
    history_mark_saved(&session, model);
    EXPECT_EQ(history_changes(&session), 0);
    history_undo(&name);
    EXPECT_EQ(history_changes(&session), 1) << "the twin is what the file was";
}
TEST_F(HistoryTest, the_limit_counts_bytes_and_says_what_it_cost) {
    for (int i = 1; i <= 50; ++i) { move(1, i); }
    const int64_t bytes = history_state().bytes;
    EXPECT_EQ(names().size(), 50U);
    EXPECT_GT(bytes, 50 * static_cast<int64_t>(sizeof(Point)));
    history_set_limit(bytes / 2);
    const HistoryState state = history_state();
    EXPECT_LE(state.bytes, bytes / 2);
    EXPECT_EQ(state.names.size() + static_cast<size_t>(state.dropped), 50U);
    while (history_state().position > 0) { history_undo(&name); }
    EXPECT_EQ(x_of(1), static_cast<float>(state.dropped));
    history_set_limit(HISTORY_LIMIT);
}
TEST_F(HistoryTest, without_a_history_nothing_is_asked_of_it) {
    history_detach();
    EXPECT_TRUE(history_undo(&name));
    EXPECT_EQ(name, "");
    EXPECT_FALSE(history_step_begin("x"));
    history_command_begin("x", true);
    history_put_back();
    history_command_end();
    EXPECT_EQ(history_state().limit, 0);
    Vec3 place{};
    EXPECT_TRUE(history_point_before(model, 2, &place));
    EXPECT_EQ(place.x, 9.0f);
}

}  // namespace
}  // namespace pelt
