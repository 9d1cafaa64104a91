// The verbs of the script command, their handlers, and the search for a word that all of them share.
#pragma once

#include <span>

#include "script/arguments.h"

namespace pelt {

struct Model;

// A handler gets the table from its own word on: entry 0 is that word, entry 1 the next.
using CommandProc = void (*)(Words words);

struct Command {
    const char* word;
    CommandProc run;
};

// Which of the two texts tells that no sub-command was found.
enum UnknownKind { UNKNOWN_COMMAND, UNKNOWN_ATTRIBUTE };

// The row that a word names exactly, or null.
const Command* command_find(std::span<const Command> table, const char* word);

// Runs the first sub-command among the words behind the verb. Words that name none are skipped, whatever they are: this
// tolerance is intended, in the whole layer. Without any, a box names the verb and the last word examined.
void command_run_sub(Words words, const char* verb, UnknownKind kind, std::span<const Command> table);
void command_unknown(UnknownKind kind, const char* verb, const char* last_word);

// The model that a command works on, or null after a box that says that none is selected.
Model* command_current_model();

// What sorvel does behind its own name: finds the verb, skipping words that are none, and runs it.
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
void vertex_run(Words words, const VertexTexts& texts);

void layer_set_run(Words words);  // "set layer"; entry 0 is the word "layer"

}  // namespace pelt
