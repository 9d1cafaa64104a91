// What follows from a change of a model's points and primitives: boxes, texture coordinates, poses, and the run-time
// records that the frame goes by.
#pragma once

#include <bitset>
#include <cstdint>
#include <vector>

#include "scene/session.h"

namespace pelt {

// Point ids as primitives name them, in 16 bits.
class CornerSet {
public:
    // An id that no primitive can name is passed over.
    void add(int32_t id) {
        if (id >= 1 && id <= INT16_MAX) { ids_.set(static_cast<size_t>(id)); }
    }
    void add_all(const CornerSet& other) { ids_ |= other.ids_; }
    bool has(int16_t id) const { return id > 0 && ids_[static_cast<size_t>(id)]; }

private:
    std::bitset<INT16_MAX + 1> ids_;
};

CornerSet corner_set(const std::vector<int32_t>& ids);

// Whether a corner of the primitive is one of these points. Each step of a drag asks all triangles of a model.
inline bool triangle_touches(const Triangle& triangle, const CornerSet& points) {
    const int16_t* p = triangle.points;
    return points.has(p[0]) || points.has(p[1]) || points.has(p[2]) || (triangle.quad && points.has(p[3]));
}
bool polygon_touches(const Polygon& polygon, const CornerSet& points);
bool line_touches(const Line& line, const CornerSet& points);

// What was done to a model.
struct Changed {
    std::vector<int32_t> points;       // that are new or have another place, normal, weight or joint
    std::vector<const Layer*> layers;  // that have other primitives or texture coordinates of their own
};

// To be called when the change is made, behind change_model. Model and layer boxes become what a load would make them.
void settle_model(Session* session, Model* model, const Changed& changed);

}  // namespace pelt
