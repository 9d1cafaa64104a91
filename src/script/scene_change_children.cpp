// The form of "scene" that adds children to models and takes them away.
#include <cstring>

#include "application/application.h"
#include "edit/edit_children.h"
#include "edit/history.h"
#include "foundation/file_access.h"
#include "foundation/path_relative.h"
#include "foundation/text.h"
#include "motion/transform_state.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr const char* MODEL_EXTENSION = ".mod";
constexpr int CHILD_MOST = 9;  // a file and all three keys

Session* session() { return &application()->session; }

// The name by which a line of the parent leads to the file.
bool read_child_name(const Model* parent, const char* word, std::string* name) {
    const std::string file = scene_text(word);
    const size_t extension = std::strlen(MODEL_EXTENSION);
    if (file.size() <= extension || !str_equal_ignoring_case(file.c_str() + file.size() - extension, MODEL_EXTENSION)) {
        scene_refuse_argument("file", word, "that of a model, which ends in .mod");
        return false;
    }
    *name = path_relative(scene_absolute_path(model_directory(parent)), scene_absolute_path(file));
    if (name->size() <= extension) {
        scene_refuse_argument("file", word, "one that a name leads to from the directory of the model");
        return false;
    }
    name->resize(name->size() - extension);
    *name = path_with_separators(name->c_str());
    return true;
}

Tcl_Obj* add_child(const SceneWords& words) {
    SceneModel found{};
    PlaceEdit place;
    EditRefusal refused;
    std::string name;
    if (!words.has(2)) { return scene_refuse_argument("word", words.raw(1), "followed by the file of a model"); }
    if (!scene_read_model(words.raw(0), &found) || !scene_read_place_options(words, 3, &place) ||
        !read_child_name(found.model, words.raw(2), &name)) {
        return nullptr;
    }
    ChildLink* link = nullptr;
    history_command_name("add child");
    if (!edit_add_child(session(), found.model, name, place, &link, &refused)) { return scene_refuse_edit(refused); }
    const ChildState* state = child_state(session(), link);
    return reply_text(scene_child_name(state != nullptr ? state->id : 0));
}

Tcl_Obj* change_child(const SceneWords& words) {
    if (std::strcmp(words.raw(1), "add") == 0) { return add_child(words); }
    if (std::strcmp(words.raw(1), "remove") != 0) {
        return scene_refuse_argument("word", words.raw(1), "add or remove");
    }
    if (words.has(2)) { return scene_refuse_argument("word", words.raw(2), "left out"); }
    SceneModel found{};
    EditRefusal refused;
    if (!scene_read_place(words.raw(0), &found)) { return nullptr; }
    if (found.link == nullptr) { return scene_refuse_argument("id", words.raw(0), "that of a child"); }
    history_command_name("remove child");
    return edit_remove_child(session(), found.link, &refused) ? reply_nothing() : scene_refuse_edit(refused);
}

constexpr SceneForm FORMS[] = {
    {"child", "ID WORD ?FILE? ?key value ...?", 2, CHILD_MOST,
     "with the word add reads a file as a child of a model, at a place; with remove takes a child away", change_child},
};

}  // namespace

std::span<const SceneForm> scene_child_change_forms() { return FORMS; }

}  // namespace pelt
