// The models that stand directly in the scene: adding, removing, closing all.
#pragma once

#include <cstdint>

#include "scene/session.h"

namespace pelt {

// Takes over both; returns the id of the model's ModelState, 0 for a null model. row is that of the scene list.
int32_t session_add_root(Session* session, Model* model, ModelAnimation* animation, int32_t row = 0);

// The root in whose tree the model stands by itself or as a child that was read with it; null for one of no root.
RootModel* session_root_of(Session* session, const Model* model);

// Forgets and releases one root by its key in root_models; what pointed at it from elsewhere in the scene (animation
// parents, borrowed links) is emptied first. 1, or 0 for an unknown key.
int session_remove_root(Session* session, int32_t key);

// The same for a child of a model that stands: its link goes, and what it owns with it. 0 for a link that is none of
// the model's.
int session_remove_child(Session* session, Model* owner, ChildLink* link);

// Forgets and releases all roots, and with them the animation, without a report; the rest of the session stays.
void session_release_roots(Session* session);

// Reports, empties the scene, reports. Always 1.
int session_close_all(Session* session);

}  // namespace pelt
