// What the forms of the verb "scene" have in common: their table, their arguments, their failures.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

#include "application/problem.h"

struct Tcl_Obj;

namespace pelt {

struct ChildLink;
struct Joint;
struct Layer;
struct Model;

// The words of a call behind that of the form, in Tcl's form and as the system has them.
struct SceneWords {
    int count;
    const char* const* words;

    bool has(int index) const { return index < count; }
    const char* raw(int index) const { return words[index]; }
    std::string text(int index) const;
};

// Returns the result, or null after a refusal.
using SceneProc = Tcl_Obj* (*)(const SceneWords& words);

struct SceneForm {
    const char* word;
    const char* arguments;  // as a person writes them
    int least;              // words behind that of the form
    int most;
    const char* help;
    SceneProc run;
};

// The forms of one subject; scene_command.cpp joins them.
std::span<const SceneForm> scene_file_forms();
std::span<const SceneForm> scene_model_forms();
std::span<const SceneForm> scene_view_forms();
std::span<const SceneForm> scene_picture_forms();
std::span<const SceneForm> scene_pick_forms();
std::span<const SceneForm> scene_mark_forms();
std::span<const SceneForm> scene_history_forms();
std::span<const SceneForm> scene_point_change_forms();
std::span<const SceneForm> scene_face_change_forms();
std::span<const SceneForm> scene_layer_change_forms();
std::span<const SceneForm> scene_place_change_forms();
std::span<const SceneForm> scene_joint_change_forms();
std::span<const SceneForm> scene_child_change_forms();
std::span<const SceneForm> scene_paste_forms();

// Questions whose words are those of a form that changes too.
Tcl_Obj* scene_ask_point(const SceneWords& words);
std::span<const SceneForm> scene_save_forms();
Tcl_Obj* scene_ask_layer(const SceneWords& words);
Tcl_Obj* scene_joint_value(Model* model, Joint* joint);

// The call "sorvel scene" with the words behind it. Code and result are those of a Tcl command.
int scene_command(int argc, const char* const* argv);

// Make the failure of the call; all return null. The text of an argument's failure is to name the argument and what is
// allowed.
Tcl_Obj* scene_refuse(const char* kind, const std::string& text);
Tcl_Obj* scene_refuse_load();  // with what problem_last says
Tcl_Obj* scene_refuse_argument(const std::string& what, const char* word, const std::string& allowed);

// A model of the scene, and the link it stands at where it was named as a child. A child's model may be null.
struct SceneModel {
    Model* model;
    ChildLink* link;
};

// Read arguments. False after a refusal.
bool scene_read_int(const char* what, const char* word, int32_t least, int32_t most, int32_t* value);
bool scene_read_real(const char* what, const char* word, float least, float most, float* value);
bool scene_read_flag(const char* what, const char* word, bool* value);
bool scene_read_model(const char* word, SceneModel* found);  // with a model
bool scene_read_place(const char* word, SceneModel* found);  // with a model or a link
bool scene_read_layer(const Model* model, const SceneWords& words, int index, const Layer** layer);

// How scripts name a child.
std::string scene_child_name(int32_t id);

// The same of a model, or of the child that hangs at the link.
Tcl_Obj* scene_reply_id(Model* model, ChildLink* link);

}  // namespace pelt
