// The table of verbs and the one search that verbs and sub-commands share. What surprises: an unknown word is skipped
// and the search goes on behind it; only a line without any known word is told of.
#include "script/commands.h"

#include "application/application.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "script/messages.h"

namespace pelt {

namespace {

constexpr Command VERBS[] = {
    {"add", cmd_add},       {"animate", cmd_animate}, {"callback", cmd_callback}, {"create", cmd_create},
    {"delete", cmd_delete}, {"display", cmd_display}, {"draw", cmd_draw},         {"file", cmd_file},
    {"find", cmd_find},     {"get", cmd_get},         {"reload", cmd_reload},     {"reset", cmd_reset},
    {"set", cmd_set},       {"select", cmd_select},
};

// Runs the first row that one of the words behind entry 0 names. False when there is none, with the last word examined.
bool run_first(Words words, std::span<const Command> table, const char** last) {
    for (Words word = words + 1; *word != nullptr; ++word) {
        *last = *word;
        if (const Command* found = command_find(table, *word)) {
            found->run(word);
            return true;
        }
    }
    return false;
}

}  // namespace

const Command* command_find(std::span<const Command> table, const char* word) {
    for (const Command& row : table) {
        if (str_equal(row.word, word)) { return &row; }
    }
    return nullptr;
}

void command_unknown(UnknownKind kind, const char* verb, const char* last_word) {
    msg_info_format(kind == UNKNOWN_COMMAND ? "sorvel: unknown %s command: %s" : "sorvel: unknown %s attribute: %s",
                    verb, last_word);
}

void command_run_sub(Words words, const char* verb, UnknownKind kind, std::span<const Command> table) {
    const char* last = "";
    if (!run_first(words, table, &last)) { command_unknown(kind, verb, last); }
}

Model* command_current_model() {
    Model* model = selection_current_model(&application()->session);
    if (model == nullptr) { msg_info("sorvel: no model selected"); }
    return model;
}

void cmd_dispatch(Words words) {
    const char* last = nullptr;
    if (!run_first(words, VERBS, &last) && last != nullptr) { msg_info_format("sorvel: unknown command: %s", last); }
}

}  // namespace pelt
