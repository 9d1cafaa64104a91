// Faces and lines of a model as a script names them, and as they stand in every model of the same file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "edit/refusal.h"
#include "scene/model.h"

namespace pelt {

enum class PrimitiveKind { TRIANGLE, POLYGON, LINE };  // a quad is one of the first

// By the running number of its kind, which no other of the kind has.
struct PrimitiveName {
    PrimitiveKind kind;
    int32_t id;
};

// By the order of the lists, which models of one file have in common.
struct PrimitivePlace {
    PrimitiveKind kind;
    int32_t layer;
    int32_t rank;
};

// Primitives of one layer, by their slots, each once.
struct LayerPrimitives {
    Layer* layer;
    std::vector<int32_t> triangles;
    std::vector<int32_t> polygons;
    std::vector<int32_t> lines;
};

// Where the named primitives of the model stand; false with a refusal where there is none of that name.
bool find_primitives(const Model* model, const std::vector<PrimitiveName>& names, std::vector<PrimitivePlace>* places,
                     EditRefusal* refused);

// Those that stand at these places in a model of the same file, layer by layer in the model's order.
std::vector<LayerPrimitives> primitives_at(Model* model, const std::vector<PrimitivePlace>& places);

// How scripts call a primitive: "12", "p12" for a polygon, "l12" for a line.
std::string primitive_text(const PrimitiveName& name);

// Corners around the outline, as they are stored: seen from the front they run clockwise.
std::vector<int16_t> triangle_outline(const Triangle& triangle);

// Edges in the direction of the outline. Of a polygon those of its triangles that no other of them shares.
struct FaceEdge {
    int16_t from;
    int16_t to;
};
void add_triangle_edges(const Triangle& triangle, std::vector<FaceEdge>* edges);
void add_polygon_edges(const Polygon& polygon, std::vector<FaceEdge>* edges);

}  // namespace pelt
