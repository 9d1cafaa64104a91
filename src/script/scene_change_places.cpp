// The forms of "scene" that place models and children, and make new models.
#include "application/application.h"
#include "edit/edit_placement.h"
#include "edit/history.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr int PLACE_MOST = 7;  // all three keys
constexpr const char* UNNAMED = "untitled";

Session* session() { return &application()->session; }

Tcl_Obj* change_place(const SceneWords& words) {
    SceneModel found{};
    PlaceEdit edit;
    EditRefusal refused;
    if (!scene_read_place(words.raw(0), &found) || !scene_read_place_options(words, 1, &edit)) { return nullptr; }
    history_command_name(found.link != nullptr ? "place child" : "place model");
    const bool placed = found.link != nullptr ? edit_place_child(session(), found.link, edit, &refused)
                                              : edit_place_model(session(), found.model, edit, &refused);
    return placed ? reply_nothing() : scene_refuse_edit(refused);
}

Tcl_Obj* new_model(const SceneWords& words) {
    EditRefusal refused;
    history_command_name("new model");
    const int32_t id = edit_new_model(session(), words.has(0) ? words.text(0) : UNNAMED, &refused);
    return id != 0 ? reply_int(id) : scene_refuse_edit(refused);
}

constexpr SceneForm FORMS[] = {
    {"place", "ID key value ?key value ...?", 3, PLACE_MOST,
     "puts a model or a child where the keys say: translation, scale, rotation", change_place},
    {"new", "?NAME?", 0, 1, "an empty model beside what stands in the scene", new_model},
};

}  // namespace

std::span<const SceneForm> scene_place_change_forms() { return FORMS; }

}  // namespace pelt
