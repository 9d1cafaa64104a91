// The verbs of the script command, their handlers, and what all of them share: the search for a word, the boxes for
// what is missing, some forms of results.
#pragma once

#include <iterator>
#include <span>

#include "foundation/text.h"
#include "script/arguments.h"

namespace pelt {

struct Model;
struct Vec3;

// A handler gets the table from its own word on: entry 0 is that word, entry 1 the next.
using CommandProc = void (*)(Words words);

struct Command {
    const char* word;
    CommandProc run;
    const char* step = nullptr;  // what a person reads of what it changed, for one that changes models or the scene
};

// Which of the two texts tells that no sub-command was found.
enum UnknownKind { UNKNOWN_COMMAND, UNKNOWN_ATTRIBUTE };

// The row whose member "word" is exactly this one, or null; for any table of rows that have one.
template <typename Table>
auto command_find(const Table& table, const char* word) -> decltype(std::data(table)) {
    for (const auto& row : table) {
        if (str_equal(row.word, word)) { return &row; }
    }
    return nullptr;
}

// The row of the first word behind entry 0 that names one, with words moved to that word; null when there is none.
// Words that name none are skipped, whatever they are: this tolerance is intended, in the whole layer. The last word
// examined goes to last, which stays as it is without any.
template <typename Table>
auto command_search(const Table& table, Words* words, const char** last) -> decltype(std::data(table)) {
    for (Words word = *words + 1; *word != nullptr; ++word) {
        *last = *word;
        if (const auto* row = command_find(table, *word)) {
            *words = word;
            return row;
        }
    }
    return nullptr;
}

// Runs the first sub-command among the words behind the verb. Without any, a box names the verb and the last word
// examined.
void command_run_sub(Words words, const char* verb, UnknownKind kind, std::span<const Command> table);
void command_unknown(UnknownKind kind, const char* verb, const char* last_word);

// What the reading of arguments gave; where it failed, a box shows the usage.
bool args_or_usage(bool read, const char* usage);

// The model or the layer's name that a command works on, or null after a box that says that none is selected.
Model* command_current_model();
const char* command_selected_layer();

void command_result_vector(const Vec3& vector);
void command_result_id(int32_t id, const char* failure);  // for 0 a box shows the failure, and sets its own result

// What sorvel does behind its own name: finds the verb, skipping words that name none, and runs it.
void cmd_dispatch(Words words);

void cmd_add(Words words);
void cmd_animate(Words words);
void cmd_callback(Words words);
void cmd_create(Words words);
void cmd_delete(Words words);
void cmd_display(Words words);
void cmd_draw(Words words);
void cmd_file(Words words);
void cmd_find(Words words);
void cmd_get(Words words);
void cmd_reload(Words words);
void cmd_reset(Words words);
void cmd_select(Words words);
void cmd_set(Words words);

// The forms of "add vertex" and "set vertex", which differ in their texts alone.
struct VertexTexts {
    const char* usage;
    const char* unknown;  // with "%s" for the word
    const char* point_usage;
    const char* normal_usage;
    const char* color_usage;
    const char* transparency_usage;
};
void cmd_vertex(Words words, const VertexTexts& texts);

void cmd_set_layer(Words words);

inline constexpr const char* MIRROR_WORDS[] = {"none", "x", "y", "z"};  // by the mirror code of a layer

}  // namespace pelt
