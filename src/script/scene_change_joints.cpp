// The forms of "scene" that change joints and what hangs on them.
#include <cstring>

#include "application/application.h"
#include "edit/edit_joints.h"
#include "edit/history.h"
#include "foundation/text.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

constexpr const char* WORLD = "world";
constexpr float WEIGHT_LEAST = -1.0f;
constexpr float WEIGHT_MOST = 2.0f;

Session* session() { return &application()->session; }

bool read_joint(const Model* model, const char* word, const Joint** joint) {
    std::string names;
    for (const Joint& each : list_elements<Joint>(model->joints)) {
        if (str_equal(each.name, WORLD)) { continue; }
        if (system_to_tcl(each.name) == word) {
            *joint = &each;
            return true;
        }
        if (names.size() < 400) { names += (names.empty() ? "" : ", ") + std::string(each.name); }
    }
    scene_refuse_argument("joint", word, names.empty() ? "a joint, of which this model has none" : names);
    return false;
}

// An empty word and "world" stand for no joint.
bool read_joint_or_none(const Model* model, const char* word, const Joint** joint) {
    *joint = nullptr;
    return word[0] == '\0' || std::strcmp(word, WORLD) == 0 || read_joint(model, word, joint);
}

bool read_flag(const char* what, const char* word, bool* flag) {
    int32_t value = 0;
    if (!scene_read_int(what, word, 0, 1, &value)) { return false; }
    *flag = value != 0;
    return true;
}

bool read_joint_edit(const SceneWords& words, int first, JointEdit* edit) {
    return scene_read_options(
        words, first,
        {
            {"name",
             [&](const char* word) {
                 edit->name = scene_text(word);
                 return true;
             }},
            {"parent",
             [&](const char* word) {
                 edit->parent = word[0] != '\0' ? scene_text(word) : WORLD;
                 return true;
             }},
            {"place", [&](const char* word) { return scene_read_vec("place", word, &edit->place.emplace()); }},
            {"follow", [&](const char* word) { return read_flag("follow", word, &edit->follow); }},
        });
}

Tcl_Obj* new_joint(const SceneWords& words, Model* model) {
    JointEdit edit;
    EditRefusal refused;
    if (!read_joint_edit(words, 3, &edit)) { return nullptr; }
    history_command_name("new joint");
    const std::string name = words.text(1);
    return edit_new_joint(session(), model, name, edit, &refused) ? reply_text(name) : scene_refuse_edit(refused);
}

Tcl_Obj* change_joint(const SceneWords& words) {
    SceneModel found{};
    const Joint* joint = nullptr;
    EditRefusal refused;
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    if (words.has(2) && std::strcmp(words.raw(2), "-new") == 0) { return new_joint(words, found.model); }
    if (!read_joint(found.model, words.raw(1), &joint)) { return nullptr; }
    if (words.count == 2) { return scene_joint_value(found.model, const_cast<Joint*>(joint)); }
    if (words.count == 3 && std::strcmp(words.raw(2), "-remove") == 0) {
        history_command_name("remove joint");
        return edit_remove_joint(session(), found.model, joint, &refused) ? reply_nothing()
                                                                          : scene_refuse_edit(refused);
    }
    JointEdit edit;
    if (!read_joint_edit(words, 2, &edit)) { return nullptr; }
    history_command_name(edit.place ? "move joint" : edit.name ? "rename joint" : "joint");
    return edit_joint(session(), found.model, joint, edit, &refused) ? reply_nothing() : scene_refuse_edit(refused);
}

Tcl_Obj* change_binding(const SceneWords& words) {
    SceneModel found{};
    std::vector<int32_t> points;
    Binding binding{nullptr, nullptr, 1.0f};
    EditRefusal refused;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_points(found.model, words.raw(1), &points) ||
        !read_joint_or_none(found.model, words.raw(2), &binding.joint_a)) {
        return nullptr;
    }
    if (words.has(3) && !read_joint_or_none(found.model, words.raw(3), &binding.joint_b)) { return nullptr; }
    if (words.has(3) && words.raw(3)[0] != '\0') { binding.share = 0.5f; }
    if (words.has(4) && !scene_read_real("share", words.raw(4), 0.0f, 1.0f, &binding.share)) { return nullptr; }
    history_command_name("bind points");
    return edit_bind(session(), found.model, points, binding, &refused) ? reply_nothing() : scene_refuse_edit(refused);
}

Tcl_Obj* change_weight(const SceneWords& words) {
    SceneModel found{};
    std::vector<int32_t> points;
    float weight = 0.0f;
    EditRefusal refused;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_points(found.model, words.raw(1), &points) ||
        !scene_read_real("weight", words.raw(2), WEIGHT_LEAST, WEIGHT_MOST, &weight)) {
        return nullptr;
    }
    history_command_name("weight");
    return edit_weight(session(), found.model, points, weight, &refused) ? reply_nothing() : scene_refuse_edit(refused);
}

constexpr int JOINT_MOST = 11;  // -new and all four keys

constexpr SceneForm FORMS[] = {
    {"joint", "ID NAME ?-new? ?-remove? ?key value ...?", 2, JOINT_MOST,
     "everything known of a joint; makes one, takes it away, or sets name, parent and place", change_joint},
    {"bind", "ID POINTS JOINT ?JOINT2? ?SHARE?", 3, 5,
     "the points follow a joint, or two by a share of the first; with an empty name they stand still", change_binding},
    {"weight", "ID POINTS W", 3, 3, "the share by which points follow their first joint, -1 to 2", change_weight},
};

}  // namespace

std::span<const SceneForm> scene_joint_change_forms() { return FORMS; }

}  // namespace pelt
