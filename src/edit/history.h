// What was done to the scene, step by step, to be taken back and done again. It listens to every change
// (scene/change.h) of one session; there is one history in a process.
//
// Changes are made by commands, one inside history_command_begin and _end. A command that changed something is a step,
// or a part of the step that a script has begun. A command that is called while another is at work, by a report,
// belongs to the outer one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scene/session.h"

namespace pelt {

inline constexpr int64_t HISTORY_LIMIT = int64_t{256} << 20;  // bytes, until it is set

// Begins to keep what is done to the session, without any step so far; in place of a session that was kept before.
void history_attach(Session* session);
void history_detach();
void history_clear();

// The name is what a person reads in a menu, as in "Undo layer colour". Of a whole command all can be put back, also
// where the limit keeps nothing.
void history_command_begin(const char* name, bool whole);
void history_command_end();
void history_command_name(const char* name);  // another one for the command at work; nothing without one

// All that the command at work has changed is put back: for one that fails half way. Steps that could be done again
// still can. Nothing is put back where a report has run other commands inside it, whose work would go with its own.
void history_put_back();

// A step of several commands. False, with nothing done, where there is one already, or none, or a command is at work
// around the one in hand. An end gives the step's name, or an empty text when nothing was changed.
bool history_step_begin(const std::string& name);
bool history_step_end(std::string* name);
bool history_step_cancel();  // puts everything back
bool history_step_is_open();

// One step back or forth: its name, which is empty when there is none. False where a step is open or a command is at
// work around the one in hand.
bool history_undo(std::string* name);
bool history_redo(std::string* name);

struct HistoryState {
    std::vector<std::string> names;  // of the steps, the first one done first
    int32_t position = 0;            // how many of them are done
    int64_t bytes = 0;               // what they take, with all that is kept for them
    int64_t limit = 0;
    int64_t dropped = 0;     // steps that the limit has cost since the scene was opened
    int64_t beginnings = 0;  // times that all was forgotten, because the scene was replaced
};
HistoryState history_state();

// The oldest steps go where more is kept than this. With 0 nothing is kept.
void history_set_limit(int64_t bytes);

// Where a point was when the open step began, or, without one, the command at work. False for a point that was not
// there. What moves by an amount counts from here, so that a drag of many moves rounds once.
bool history_point_before(Model* model, int32_t id, Vec3* place);

// The model's file now has the content of the model: of all models that were read from that file and stand in the
// scene. What is kept outside of the scene is changed against that file from now on.
void history_mark_saved(Session* session, Model* model);

// Changes to the file of a model, counted: the most of all models that were read from it. 0 exactly when all of them
// are what the file has.
int64_t history_file_changes(const Session* session, const Model* model);

// The same of all files of the scene together, and of models that have none.
int64_t history_changes(const Session* session);

}  // namespace pelt
