// The table of verbs and the one search that verbs and sub-commands share. What surprises: an unknown word is skipped
// and the search goes on behind it; only a line without any known word is told of.
#include "script/commands.h"

#include "foundation/text.h"
#include "script/messages.h"

namespace pelt {

namespace {

constexpr Command VERBS[] = {
    {'a', "add", cmd_add},       {'a', "animate", cmd_animate}, {'c', "callback", cmd_callback},
    {'c', "create", cmd_create}, {'d', "delete", cmd_delete},   {'d', "display", cmd_display},
    {'d', "draw", cmd_draw},     {'f', "file", cmd_file},       {'f', "find", cmd_find},
    {'g', "get", cmd_get},       {'r', "reload", cmd_reload},   {'r', "reset", cmd_reset},
    {'s', "set", cmd_set},       {'s', "select", cmd_select},
};

}  // namespace

const Command* command_find(std::span<const Command> table, const char* word) {
    for (const Command& row : table) {
        if (row.letter == word[0] && str_equal(row.word, word)) { return &row; }
    }
    return nullptr;
}

void command_unknown(UnknownKind kind, const char* verb, const char* last_word) {
    msg_info_format(kind == UNKNOWN_COMMAND ? "sorvel: unknown %s command: %s" : "sorvel: unknown %s attribute: %s",
                    verb, last_word);
}

void command_run_sub(Words words, const char* verb, UnknownKind kind, std::span<const Command> table) {
    const char* last = "";
    for (Words word = words + 1; *word != nullptr; ++word) {
        last = *word;
        const Command* found = command_find(table, *word);
        if (found != nullptr) {
            found->run(word);
            return;
        }
    }
    command_unknown(kind, verb, last);
}

void cmd_dispatch(Words words) {
    const char* last = nullptr;
    for (Words word = words + 1; *word != nullptr; ++word) {
        last = *word;
        const Command* verb = command_find(VERBS, *word);
        if (verb != nullptr) {
            verb->run(word);
            return;
        }
    }
    if (last != nullptr) { msg_info_format("sorvel: unknown command: %s", last); }
}

}  // namespace pelt
