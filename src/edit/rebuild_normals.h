// Normals made out of faces.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/faces.h"
#include "scene/session.h"

namespace pelt {

// Every point, or with a layer each corner of its faces, gets the normal that the faces around it make, of all layers.
bool edit_rebuild_normals(Session* session, Model* model, const Layer* layer, EditRefusal* refused);

// Of one model, behind change_model: the points get the normals that their faces make. Points without a face keep
// theirs. Their poses are made anew by settle_model.
void make_normals(Model* model, const std::vector<int32_t>& ids);

// Those of the points that no face but the given ones uses, be it for its normal alone.
std::vector<int32_t> points_of_these_alone(Model* model, const std::vector<LayerPrimitives>& faces,
                                           const std::vector<int32_t>& ids);

}  // namespace pelt
