// Where models and children stand, and new models, as a script asks for them. False, with nothing changed, for a
// refusal.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "edit/refusal.h"
#include "scene/session.h"

namespace pelt {

// What is not given stays.
struct PlaceEdit {
    std::optional<Vec3> translation;
    std::optional<Vec3> scale;
    std::optional<std::array<std::string, 3>> rotation;  // texts as mat_rotate_text takes them
};

// A model that stands in the scene by itself.
bool edit_place_model(Session* session, Model* model, const PlaceEdit& edit, EditRefusal* refused);

// A child, in all models that were read from the file whose line it is.
bool edit_place_child(Session* session, ChildLink* link, const PlaceEdit& edit, EditRefusal* refused);

// Whether the texts are a rotation that the line of a child can hold.
bool child_rotation_fits(const std::array<std::string, 3>& rotation, EditRefusal* refused);

// The model in whose children the link stands; null for none of the scene.
Model* session_link_owner(Session* session, const ChildLink* link);

// The state of a link, where it has one, follows its line, or the animation that moves the tree.
void child_place_anew(Session* session, Model* owner, ChildLink* link);

// An empty model beside what stands in the scene; its id, or 0 for a name that no file could have.
int32_t edit_new_model(Session* session, const std::string& name, EditRefusal* refused);

}  // namespace pelt
