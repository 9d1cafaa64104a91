// Texture coordinates of a layer: a planar map along two axes of the layer's box, overridden point by point by
// explicit uvees. They are computed once, when an image is attached, and stored in the primitives.
//
// What surprises: a box without extent along an axis divides by zero. The non-finite coordinates that come of it are
// intended and travel on into the primitives.
#include "formats/texture_map.h"

#include <cmath>

#include "scene/model.h"

namespace pelt {

namespace {

constexpr float FOLD_PERIOD = 2.0f;

Layer* find_layer(const Model* model, const char* name) {
    return model != nullptr && name != nullptr ? static_cast<Layer*>(list_find(&model->layers, name)) : nullptr;
}

bool has_surface(const Layer& layer) {
    return list_count(&layer.triangles) > 0 || list_count(&layer.polygons) > 0;
}

// A box that starts at the first place it takes in.
struct Box {
    Vec3 low;
    Vec3 high;
    bool empty = true;
};

void widen_axis(float value, float& low, float& high) {
    if (value < low) {
        low = value;
    }
    if (value > high) {
        high = value;
    }
}

// False when the point does not exist.
bool take_in(Box& box, const Model* model, int32_t point_id) {
    const Point* point = model_find_point(model, point_id);
    if (point == nullptr) {
        return false;
    }
    const Vec3& place = point->position;
    if (box.empty) {
        box = Box{place, place, false};
    }
    widen_axis(place.x, box.low.x, box.high.x);
    widen_axis(place.y, box.low.y, box.high.y);
    widen_axis(place.z, box.low.z, box.high.z);
    return true;
}

bool take_in_layer(Box& box, const Model* model, const Layer& layer) {
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
            if (!take_in(box, model, triangle.points[corner])) {
                return false;
            }
        }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            if (!take_in(box, model, vertex.point)) {
                return false;
            }
        }
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            if (!take_in(box, model, line_point_id(stored))) {
                return false;
            }
        }
    }
    return !box.empty;
}

bool compute_bounds(const Model* model, Layer& layer) {
    Box box;
    if (!has_surface(layer) || !take_in_layer(box, model, layer)) {
        return false;
    }
    layer.bounds_min = box.low;
    layer.bounds_max = box.high;
    return true;
}

float fold_negative(float value) { return value < 0.0f ? fold_uv(-value) : value; }

// False when the point does not exist.
bool map_point(const Model* model, const Layer& layer, int32_t point_id, UvPair& out) {
    const Point* point = model_find_point(model, point_id);
    if (point == nullptr) {
        return false;
    }
    if (const auto* uvee = static_cast<const Uvee*>(list_find(&layer.uvees, point_id))) {
        out = UvPair{uvee->u, uvee->v};  // repeat factors do not apply to these
        return true;
    }
    const Vec3& place = point->position;
    out = planar_uv(place.x, place.y, place.z, &layer.bounds_min, &layer.bounds_max, layer.image_axis_u,
                    layer.image_axis_v);
    if (layer.image_repeat) {
        out.u = fold_negative(out.u * layer.repeat_u);
        out.v = fold_negative(out.v * layer.repeat_v);
    }
    return true;
}

bool map_triangles(const Model* model, const Layer& layer) {
    for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
            UvPair uv{};
            if (!map_point(model, layer, triangle.points[corner], uv)) {
                return false;
            }
            triangle.uvs[corner][0] = uv.u;
            triangle.uvs[corner][1] = uv.v;
        }
    }
    return true;
}

bool map_polygons(const Model* model, const Layer& layer) {
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            UvPair uv{};
            if (!map_point(model, layer, vertex.point, uv)) {
                return false;
            }
            vertex.u = uv.u;
            vertex.v = uv.v;
        }
    }
    return true;
}

float planar_coordinate(int axis, const Vec3& share) {
    switch (axis) {
        case AXIS_X: return 1.0f - share.x;
        case AXIS_Y: return share.y;
        case AXIS_Z: return 1.0f - share.z;
        case AXIS_MINUS_X: return share.x;
        case AXIS_MINUS_Y: return 1.0f - share.y;
        case AXIS_MINUS_Z: return share.z;
        default: return 0.0f;
    }
}

}  // namespace

int layer_map_uvees(Model* model, const char* layer) {
    Layer* target = find_layer(model, layer);
    if (target == nullptr || layer_first_image(target) == nullptr || !has_surface(*target)) {
        return 0;
    }
    // A line with a missing point spoils the box alone: the map then goes by the box as it was.
    compute_bounds(model, *target);
    return map_triangles(model, *target) && map_polygons(model, *target) ? 1 : 0;
}

int layer_compute_bounds(Model* model, const char* layer) {
    Layer* target = find_layer(model, layer);
    return target != nullptr && compute_bounds(model, *target) ? 1 : 0;
}

UvPair planar_uv(float x, float y, float z, const Vec3* bounds_min, const Vec3* bounds_max, int axis_u, int axis_v) {
    const Vec3 share{(x - bounds_min->x) / (bounds_max->x - bounds_min->x),
                     (y - bounds_min->y) / (bounds_max->y - bounds_min->y),
                     (z - bounds_min->z) / (bounds_max->z - bounds_min->z)};
    return UvPair{planar_coordinate(axis_u, share), planar_coordinate(axis_v, share)};
}

float fold_uv(float x) {
    if (!std::isfinite(x)) {
        return 0.0f;
    }
    if (x > FOLD_PERIOD) {
        // Exact, as is every step of taking 2 away. A multiple of 2 ends at 0 here and at 2 there, which folds to 0.
        x = std::fmod(x, FOLD_PERIOD);
    }
    return x <= 1.0f ? x : 1.0f - (x - 1.0f);
}

}  // namespace pelt
