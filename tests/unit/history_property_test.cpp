// Random edits, taken back and done again in random order, with the whole scene held against what it was at each place
// of the history. A place is told apart by its dump, which has every field, slot, key and id.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/history.h"
#include "support/random_edits.h"
#include "support/scene_dump.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::RandomEdits;
using test::SceneDump;

constexpr int EDITS = 250;

class HistoryProperty : public testing::TestWithParam<uint32_t> {
protected:
    HistoryProperty() {
        for (const char* name : {"red.tga", "blue.tga"}) {
            test::TgaForm form;
            form.width = 2;
            dir.write(name, test::tga_bytes(form, std::string(name, 6)));
        }
        session_init(&session);
        history_attach(&session);
    }
    ~HistoryProperty() override {
        session_reset(&session, 0);
        history_detach();
        session_reset(&session, 0);
        for (KeyedList* list : {&session.selection.models, &session.clipboard.models}) { list_free(list); }
        EXPECT_EQ(list_count(image_registry()), 0);
        EXPECT_EQ(image_held_bytes(), 0);
    }

    std::string dump() {
        edits.know_children();
        SceneDump dump(&session);
        std::string text = dump.text();
        EXPECT_EQ(dump.faults(), "");
        return text;
    }
    void expect_at_position() {
        const auto position = static_cast<size_t>(history_state().position);
        ASSERT_LT(position, dumps.size());
        ASSERT_EQ(test::dump_difference(dumps[position], dump()), "") << "at position " << position;
    }
    void note_step(int32_t before) {
        const int32_t position = history_state().position;
        ASSERT_LE(position, before + 1);
        if (position == before) {
            // A command that changed nothing is no step.
            ASSERT_EQ(test::dump_difference(dumps[static_cast<size_t>(position)], dump()), "");
            return;
        }
        dumps.resize(static_cast<size_t>(position));
        dumps.push_back(dump());
    }
    void edit() {
        const int32_t before = history_state().position;
        if (edits.below(5) == 0) {
            ASSERT_TRUE(history_step_begin("several"));
            for (int i = edits.below(6); i >= 0; --i) { command(); }
            std::string name;
            if (edits.below(4) == 0) {
                ASSERT_TRUE(history_step_cancel());
            } else {
                ASSERT_TRUE(history_step_end(&name));
            }
        } else {
            command();
        }
        note_step(before);
    }
    void command() {
        history_command_begin("edit", true);
        for (int i = edits.below(3); i >= 0; --i) { edits.change(); }
        if (edits.below(12) == 0) { history_put_back(); }
        history_command_end();
        edits.use_scene();
    }
    void take(bool back) {
        std::string name;
        const int32_t position = history_state().position;
        const auto count = static_cast<int32_t>(history_state().names.size());
        ASSERT_TRUE(back ? history_undo(&name) : history_redo(&name));
        const int32_t expected = back ? std::max(position - 1, 0) : std::min(position + 1, count);
        ASSERT_EQ(history_state().position, expected);
        ASSERT_EQ(name.empty(), expected == position);
        expect_at_position();
        edits.use_scene();
    }

    pelt::test::TempDir dir;
    Session session{};
    RandomEdits edits{&session, GetParam(), dir.file(""), {"red.tga", "blue.tga", "missing.tga"}};
    std::vector<std::string> dumps;
};

TEST_P(HistoryProperty, every_place_of_the_history_is_what_it_was) {
    dumps.push_back(dump());
    for (int i = 0; i < EDITS; ++i) {
        ASSERT_NO_FATAL_FAILURE(edit()) << "edit " << i;
        while (edits.below(3) == 0) { ASSERT_NO_FATAL_FAILURE(take(edits.below(2) == 0)) << "edit " << i; }
    }
    while (history_state().position > 0) { ASSERT_NO_FATAL_FAILURE(take(true)); }
    const size_t count = history_state().names.size();
    for (size_t i = 0; i < count; ++i) { ASSERT_NO_FATAL_FAILURE(take(false)); }
    while (history_state().position > 0) { ASSERT_NO_FATAL_FAILURE(take(true)); }
}

TEST_P(HistoryProperty, a_small_limit_drops_the_oldest_and_keeps_the_rest_exact) {
    constexpr int64_t LIMIT = 40000;
    history_set_limit(LIMIT);
    std::vector<std::string> kept{dump()};
    for (int i = 0; i < EDITS / 2; ++i) {
        const HistoryState before = history_state();
        history_command_begin("edit", false);
        edits.change();
        history_command_end();
        const HistoryState after = history_state();
        EXPECT_LE(after.bytes, LIMIT);
        const auto dropped = static_cast<size_t>(after.dropped - before.dropped);
        const bool is_step = after.names.size() + dropped > before.names.size();
        if (is_step) { kept.push_back(dump()); }
        ASSERT_LE(dropped, kept.size() - 1);
        kept.erase(kept.begin(), kept.begin() + static_cast<ptrdiff_t>(dropped));
        ASSERT_EQ(kept.size(), after.names.size() + 1);
    }
    // Taking back can cost steps too: an added model that is kept outside of the scene counts.
    const int64_t dropped = history_state().dropped;
    std::string name;
    while (history_state().position > 0) {
        ASSERT_TRUE(history_undo(&name));
        const auto place = static_cast<size_t>(history_state().position + history_state().dropped - dropped);
        if (history_state().position == 0) { return; }
        ASSERT_EQ(test::dump_difference(kept[place], dump()), "") << "position " << place;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, HistoryProperty, testing::Range(1U, 13U));

}  // namespace
}  // namespace pelt
