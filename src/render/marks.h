// Marks: what a program draws over the described frame. Points as squares, edges, a ground grid, the axes of a handle,
// the skeleton through the surface; each in a dark and a light tone, so that it stands out on whatever lies below it.
// With nothing marked no call is made, and behind the marks all of OpenGL's state is what it was before them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "render/view.h"
#include "scene/session.h"

namespace pelt {

enum MarkAxis : int32_t { MARK_AXIS_NONE, MARK_AXIS_X, MARK_AXIS_Y, MARK_AXIS_Z };

// Of one model, wherever it stands. Ids and names that it has not, or has no more, mark nothing.
struct ModelMarks {
    const Model* model;  // to be used only where the scene has a model of this serial
    uint64_t serial;
    std::vector<int32_t> points;
    std::vector<std::string> layers;
    std::vector<int32_t> faces;  // triangles and quads
    std::vector<int32_t> polygons;
    std::vector<int32_t> lines;
};

struct Marks {
    std::vector<ModelMarks> models;
    float grid_step;  // 0 for no grid
    bool handle;
    Vec3 handle_place;     // in the world
    MarkAxis handle_axis;  // the one that is held
    bool edges;            // of all layers, over solid surfaces
    bool xray;             // the skeleton through the surface
    bool in_pictures;      // pictures have marks too
};

Marks* marks();  // those of the one view

// Forgets the marks of models that the scene has no more.
void marks_forget_gone(Session* session);

// Whether a frame has marks, and a picture has none of them.
bool marks_stay_out_of_pictures();

// Draws them, under a modelview matrix that leads from the world.
void marks_draw(Session* session, const ViewState* view);

}  // namespace pelt
