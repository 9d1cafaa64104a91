// Children of models as a script asks for them, in every model that was read from the same file. False, with nothing
// changed, for a refusal.
#pragma once

#include "edit/edit_placement.h"

namespace pelt {

// Reads the model that lies under this name (a path from the parent's directory, without its extension) and adds it
// behind the children of the parent. What is not given of its place is 0, 1 and no turn. The new link of this parent is
// in *link.
bool edit_add_child(Session* session, Model* parent, const std::string& name, const PlaceEdit& place, ChildLink** link,
                    EditRefusal* refused);

bool edit_remove_child(Session* session, ChildLink* link, EditRefusal* refused);

}  // namespace pelt
