// Points, faces, lines and layers taken out of a model.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/faces.h"
#include "scene/session.h"

namespace pelt {

// How much went.
struct DeletedParts {
    int32_t points;
    int32_t faces;
    int32_t lines;
    int32_t layers;
};

// A point takes the faces and lines that have it as a corner along, and its texture coordinates; where it lent a normal
// or a control point alone, the corner's own takes its place.
bool edit_delete_points(Session* session, Model* model, const std::vector<int32_t>& ids, DeletedParts* deleted,
                        EditRefusal* refused);

// Faces, lines, or both.
bool edit_delete_primitives(Session* session, Model* model, const std::vector<PrimitiveName>& names,
                            DeletedParts* deleted, EditRefusal* refused);

// The layers belong to the model. Their points stay.
bool edit_delete_layers(Session* session, Model* model, const std::vector<const Layer*>& layers, DeletedParts* deleted,
                        EditRefusal* refused);

// Of the layer, behind change_model: the primitives in these slots go.
void remove_primitives(Session* session, Model* model, const LayerPrimitives& primitives);

// Of one model, behind change_model: the points go, with their texture coordinates and from the counts of their joints.
// No primitive may name them any more.
void remove_points(Session* session, Model* model, const std::vector<int32_t>& ids);

}  // namespace pelt
