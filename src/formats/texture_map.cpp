// Texture coordinates of a layer: a planar map along two axes of the layer's box, overridden point by point by
// explicit uvees. They are computed once, when an image is attached, and stored in the primitives.
//
// What surprises: a box without extent along an axis divides by zero. The non-finite coordinates that come of it are
// intended and travel on into the primitives.
#include "formats/texture_map.h"

#include <cmath>
#include <vector>

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

// A box that starts at the first place it takes in. A missing point spoils it for good.
struct Box {
    Vec3 low;
    Vec3 high;
    bool empty;
    bool spoiled;
};

void widen_axis(float value, float& low, float& high) {
    low = value < low ? value : low;
    high = value > high ? value : high;
}

inline void take_in(Box& box, const Point* point) {
    if (point == nullptr) {
        box.spoiled = true;
        return;
    }
    const Vec3& place = point->position;
    if (box.empty) {
        box.low = place;
        box.high = place;
        box.empty = false;
    }
    widen_axis(place.x, box.low.x, box.high.x);
    widen_axis(place.y, box.low.y, box.high.y);
    widen_axis(place.z, box.low.z, box.high.z);
}

// What one walk over a layer finds: its box, and the points of its corners in the order in which they are mapped, so
// that each is looked up once. Null for a missing point.
struct Survey {
    Box box;
    std::vector<const Point*> corners;
};

inline void take_corner(Survey& survey, const Model* model, int32_t point_id) {
    const Point* point = model_find_point(model, point_id);
    survey.corners.push_back(point);
    take_in(survey.box, point);
}

Survey survey_layer(const Model* model, const Layer& layer) {
    Survey survey{Box{{}, {}, true, false}, {}};
    survey.corners.reserve(static_cast<size_t>(list_count(&layer.triangles)) * 4);
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
            take_corner(survey, model, triangle.points[corner]);
        }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            take_corner(survey, model, vertex.point);
        }
    }
    for (const Line& line : list_elements<Line>(layer.lines)) {
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            take_in(survey.box, model_find_point(model, line_point_id(stored)));
        }
    }
    return survey;
}

bool store_bounds(Layer& layer, const Survey& survey) {
    if (!has_surface(layer) || survey.box.empty || survey.box.spoiled) {
        return false;
    }
    layer.bounds_min = survey.box.low;
    layer.bounds_max = survey.box.high;
    return true;
}

// One coordinate of the planar map: where a place lies between the ends of the box along an axis, from either end.
// Ends that coincide are not guarded against: the division by zero is intended.
struct PlanarAxis {
    float Vec3::*component;  // null for a code that is no axis, which gives 0
    bool reversed;
    float low;
    float extent;
};

PlanarAxis planar_axis(int code, const Vec3& low, const Vec3& high) {
    struct Form {
        float Vec3::*component;
        bool reversed;
    };
    static constexpr Form FORMS[] = {{nullptr, false},   {&Vec3::x, true}, {&Vec3::y, false}, {&Vec3::z, true},
                                     {&Vec3::x, false}, {&Vec3::y, true}, {&Vec3::z, false}};
    const Form& form = FORMS[code >= AXIS_X && code <= AXIS_MINUS_Z ? code : 0];
    if (form.component == nullptr) {
        return PlanarAxis{nullptr, false, 0.0f, 0.0f};
    }
    return PlanarAxis{form.component, form.reversed, low.*form.component, high.*form.component - low.*form.component};
}

float planar_coordinate(const PlanarAxis& axis, const Vec3& place) {
    if (axis.component == nullptr) {
        return 0.0f;
    }
    const float share = (place.*axis.component - axis.low) / axis.extent;
    return axis.reversed ? 1.0f - share : share;
}

float fold_negative(float value) { return value < 0.0f ? fold_uv(-value) : value; }

// The map of a layer, ready to be asked corner by corner.
struct LayerMap {
    const Layer& layer;
    bool has_uvees;
    PlanarAxis u;
    PlanarAxis v;
};

inline UvPair map_point(const LayerMap& map, int32_t point_id, const Vec3& place) {
    const void* found = map.has_uvees ? list_find(&map.layer.uvees, point_id) : nullptr;
    if (const auto* uvee = static_cast<const Uvee*>(found)) {
        return UvPair{uvee->u, uvee->v};  // repeat factors do not apply to these
    }
    UvPair uv{planar_coordinate(map.u, place), planar_coordinate(map.v, place)};
    if (map.layer.image_repeat) {
        uv.u = fold_negative(uv.u * map.layer.repeat_u);
        uv.v = fold_negative(uv.v * map.layer.repeat_v);
    }
    return uv;
}

// False, with the corners before it mapped, at the first missing point.
bool map_corners(const Layer& layer, const Survey& survey) {
    const LayerMap map{layer, list_count(&layer.uvees) > 0,
                       planar_axis(layer.image_axis_u, layer.bounds_min, layer.bounds_max),
                       planar_axis(layer.image_axis_v, layer.bounds_min, layer.bounds_max)};
    auto point = survey.corners.begin();
    for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner, ++point) {
            if (*point == nullptr) {
                return false;
            }
            const UvPair uv = map_point(map, triangle.points[corner], (*point)->position);
            triangle.uvs[corner][0] = uv.u;
            triangle.uvs[corner][1] = uv.v;
        }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            if (*point == nullptr) {
                return false;
            }
            const UvPair uv = map_point(map, vertex.point, (*point)->position);
            vertex.u = uv.u;
            vertex.v = uv.v;
            ++point;
        }
    }
    return true;
}

}  // namespace

int layer_map_uvees(Model* model, const char* layer) {
    Layer* target = find_layer(model, layer);
    if (target == nullptr || layer_first_image(target) == nullptr || !has_surface(*target)) {
        return 0;
    }
    const Survey survey = survey_layer(model, *target);
    // A line with a missing point spoils the box alone: the map then goes by the box as it was.
    store_bounds(*target, survey);
    return map_corners(*target, survey) ? 1 : 0;
}

int layer_compute_bounds(Model* model, const char* layer) {
    Layer* target = find_layer(model, layer);
    return target != nullptr && store_bounds(*target, survey_layer(model, *target)) ? 1 : 0;
}

UvPair planar_uv(float x, float y, float z, const Vec3* bounds_min, const Vec3* bounds_max, int axis_u, int axis_v) {
    const Vec3 place{x, y, z};
    return UvPair{planar_coordinate(planar_axis(axis_u, *bounds_min, *bounds_max), place),
                  planar_coordinate(planar_axis(axis_v, *bounds_min, *bounds_max), place)};
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
