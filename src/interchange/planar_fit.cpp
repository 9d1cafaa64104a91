// Finds the planar map that texture coordinates came from.
#include "interchange/planar_fit.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "formats/texture_map.h"
#include "scene/layer.h"

namespace pelt {

namespace {

constexpr float CLOSE = 1.0f / 4096.0f;
constexpr float LARGEST_REPEAT = 128.0f;

struct LookBox {
    Vec3 low;
    Vec3 high;
    std::vector<const SoupVertex*> corners;  // of surfaces
};

Vec3 place_of(const SoupVertex& vertex) {
    return {static_cast<float>(vertex.place[0]), static_cast<float>(vertex.place[1]),
            static_cast<float>(vertex.place[2])};
}

// The box is what the layer will have: lines widen it as well.
LookBox box_of_look(const SoupPart& part, int32_t look) {
    LookBox box{{HUGE_VALF, HUGE_VALF, HUGE_VALF}, {-HUGE_VALF, -HUGE_VALF, -HUGE_VALF}, {}};
    for (const SoupFace& face : part.faces) {
        for (size_t i = 0; face.look == look && face.count >= 2 && i < static_cast<size_t>(face.count); ++i) {
            const SoupVertex& vertex = part.vertices[face.corners[i]];
            box_take_in(place_of(vertex), &box.low, &box.high);
            if (face.count >= 3) { box.corners.push_back(&vertex); }
        }
    }
    return box;
}

float extent_along(const LookBox& box, int axis) {
    const float extents[] = {box.high.x - box.low.x, box.high.y - box.low.y, box.high.z - box.low.z};
    return extents[(axis - AXIS_X) % 3];
}

struct AxisFit {
    int axis;
    float repeat;
};

// component 0 is u, 1 is v; the map gives both by the same rule.
std::optional<AxisFit> fit_axis(const LookBox& box, size_t component) {
    for (int axis = AXIS_X; axis <= AXIS_MINUS_Z; ++axis) {
        if (!(extent_along(box, axis) > 0.0f)) { continue; }
        const auto mapped = [&](const SoupVertex* vertex) {
            const Vec3 place = place_of(*vertex);
            return planar_uv(place.x, place.y, place.z, &box.low, &box.high, axis, axis).u;
        };
        const SoupVertex* farthest =
            *std::max_element(box.corners.begin(), box.corners.end(),
                              [&](const SoupVertex* a, const SoupVertex* b) { return mapped(a) < mapped(b); });
        const float share = mapped(farthest);
        if (!(share > 0.5f)) { continue; }
        for (const float repeat : {1.0f, std::round(farthest->uv[component] / share * 10000.0f) / 10000.0f}) {
            const bool fits = repeat > 0.0f && repeat <= LARGEST_REPEAT &&
                              std::all_of(box.corners.begin(), box.corners.end(), [&](const SoupVertex* vertex) {
                                  return std::fabs(mapped(vertex) * repeat - vertex->uv[component]) <= CLOSE;
                              });
            if (fits) { return AxisFit{axis, repeat}; }
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<PlanarFit> fit_planar(const SoupPart& part, int32_t look) {
    const LookBox box = box_of_look(part, look);
    if (box.corners.empty()) { return std::nullopt; }
    const std::optional<AxisFit> u = fit_axis(box, 0);
    const std::optional<AxisFit> v = u.has_value() ? fit_axis(box, 1) : std::nullopt;
    if (!v.has_value()) { return std::nullopt; }
    return PlanarFit{u->axis, v->axis, u->repeat, v->repeat};
}

PlanarFit any_planar(const SoupPart& part, int32_t look) {
    const LookBox box = box_of_look(part, look);
    int longest = AXIS_X;
    for (const int axis : {AXIS_Y, AXIS_Z}) {
        if (extent_along(box, axis) > extent_along(box, longest)) { longest = axis; }
    }
    return {longest, longest};
}

}  // namespace pelt
