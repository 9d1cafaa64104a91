// Texture coordinates of a layer: a planar map along two axes of the layer's box, overridden point by point by
// explicit uvees. They are computed once, when an image is attached, and stored in the primitives.
//
// What surprises: a box without extent along an axis divides by zero. The non-finite coordinates that come of it are
// intended and travel on into the primitives.
#include "formats/texture_map.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "scene/change.h"

namespace pelt {

namespace {

constexpr float FOLD_PERIOD = 2.0f;

Layer* find_layer(Model* model, const char* name) {
    return model != nullptr && name != nullptr ? list_find<Layer>(&model->layers, name) : nullptr;
}

// A box that starts at the first place it takes in. A missing point spoils it for good.
struct Box {
    Vec3 low;
    Vec3 high;
    bool empty;
    bool spoiled;
};

void take_in(Box& box, const Point* point) {
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
    box_take_in(place, &box.low, &box.high);
}

// A set of the ids that corners can name. A point is the corner of some six triangles: what is done for each id of a
// set instead of each corner is done that much less often.
class IdSet {
public:
    void add(int16_t id) { words_[word(id)] |= bit(id); }
    bool has(int16_t id) const { return (words_[word(id)] & bit(id)) != 0; }
    template <typename Action>
    void for_each(const Action& action) const {
        for (size_t word = 0; word < std::size(words_); ++word) {
            for (uint64_t left = words_[word]; left != 0; left &= left - 1) {
                action(static_cast<int16_t>(word * WORD_BITS + static_cast<size_t>(std::countr_zero(left))));
            }
        }
    }

private:
    static constexpr size_t WORD_BITS = 64;
    static size_t word(int16_t id) { return static_cast<uint16_t>(id) / WORD_BITS; }
    static uint64_t bit(int16_t id) { return uint64_t{1} << (static_cast<uint16_t>(id) % WORD_BITS); }

    uint64_t words_[(UINT16_MAX + 1) / WORD_BITS] = {};
};

bool same_bits(float a, float b) { return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b); }

// What one walk over a layer finds.
struct Survey {
    Box box{{}, {}, true, false};
    IdSet ids;      // of the corners
    IdSet missing;  // those of them without a point
};

// Calls the action with each primitive's list and record, its corner's id and the two coordinates it keeps, until that
// answers false.
template <typename AnyLayer, typename Action>
bool for_each_corner(AnyLayer& layer, const Action& action) {
    for (auto& triangle : list_elements<Triangle>(layer.triangles)) {
        for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
            auto& uv = triangle.uvs[corner];
            if (!action(CONTENT_TRIANGLES, &triangle, triangle.points[corner], uv[0], uv[1])) { return false; }
        }
    }
    for (auto& polygon : list_elements<Polygon>(layer.polygons)) {
        for (auto& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            if (!action(CONTENT_POLYGONS, &polygon, vertex.point, vertex.u, vertex.v)) { return false; }
        }
    }
    return true;
}

void survey_layer(const Model* model, const Layer& layer, Survey& survey) {
    for_each_corner(layer, [&](ContentList, const void*, int16_t id, float, float) {
        if (survey.box.empty) {
            take_in(survey.box, model_find_point(model, id));  // the box starts at the first corner of all
        }
        survey.ids.add(id);
        return true;
    });
    survey.ids.for_each([&](int16_t id) {
        const Point* point = model_find_point(model, id);
        take_in(survey.box, point);
        if (point == nullptr) { survey.missing.add(id); }
    });
    for (const Line& line : list_elements<Line>(layer.lines)) {
        for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
            take_in(survey.box, model_find_point(model, line_point_id(stored)));
        }
    }
}

bool store_bounds(Model* model, Layer& layer, const Survey& survey) {
    if (!layer_has_surface(layer) || survey.box.empty || survey.box.spoiled) { return false; }
    change_element(model, nullptr, CONTENT_LAYERS, &layer);
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
    static constexpr Form FORMS[] = {{nullptr, false},  {&Vec3::x, true}, {&Vec3::y, false}, {&Vec3::z, true},
                                     {&Vec3::x, false}, {&Vec3::y, true}, {&Vec3::z, false}};
    const Form& form = FORMS[code >= AXIS_X && code <= AXIS_MINUS_Z ? code : 0];
    if (form.component == nullptr) { return PlanarAxis{nullptr, false, 0.0f, 0.0f}; }
    return PlanarAxis{form.component, form.reversed, low.*form.component, high.*form.component - low.*form.component};
}

float planar_coordinate(const PlanarAxis& axis, const Vec3& place) {
    if (axis.component == nullptr) { return 0.0f; }
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

UvPair map_point(const LayerMap& map, int32_t point_id, const Vec3& place) {
    if (const Uvee* uvee = map.has_uvees ? list_find<Uvee>(&map.layer.uvees, point_id) : nullptr) {
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
bool map_corners(Model* model, Layer& layer, const Survey& survey) {
    const LayerMap map{layer, list_count(&layer.uvees) > 0,
                       planar_axis(layer.image_axis_u, layer.bounds_min, layer.bounds_max),
                       planar_axis(layer.image_axis_v, layer.bounds_min, layer.bounds_max)};
    size_t first = UINT16_MAX;
    size_t last = 0;
    survey.ids.for_each([&](int16_t id) {
        first = std::min<size_t>(first, static_cast<uint16_t>(id));
        last = std::max<size_t>(last, static_cast<uint16_t>(id));
    });
    std::vector<UvPair> mapped(last >= first ? last - first + 1 : 0);
    const auto place_of = [&](int16_t id) -> UvPair& { return mapped[static_cast<uint16_t>(id) - first]; };
    survey.ids.for_each([&](int16_t id) {
        if (const Point* point = model_find_point(model, id)) { place_of(id) = map_point(map, id, point->position); }
    });
    const bool told = change_is_told(model);
    return for_each_corner(layer, [&](ContentList list, const void* record, int16_t id, float& u, float& v) {
        if (survey.missing.has(id)) { return false; }
        const UvPair& uv = place_of(id);
        // Only what changes, since that is what it costs to take it back.
        if (told && (!same_bits(u, uv.u) || !same_bits(v, uv.v))) { change_element(model, &layer, list, record); }
        u = uv.u;
        v = uv.v;
        return true;
    });
}

}  // namespace

int layer_map_uvees(Model* model, const char* layer) { return layer_map(model, find_layer(model, layer)); }

int layer_map(Model* model, Layer* layer) {
    if (layer == nullptr || layer_first_image(layer) == nullptr || !layer_has_surface(*layer)) { return 0; }
    Survey survey;
    survey_layer(model, *layer, survey);
    // A line with a missing point spoils the box alone: the map then goes by the box as it was.
    store_bounds(model, *layer, survey);
    return map_corners(model, *layer, survey) ? 1 : 0;
}

void layer_unmap(Model* model, Layer* layer) {
    if (layer == nullptr) { return; }
    for_each_corner(*layer, [&](ContentList list, const void* record, int16_t, float& u, float& v) {
        if (u != 0.0f || v != 0.0f) { change_element(model, layer, list, record); }
        u = 0.0f;
        v = 0.0f;
        return true;
    });
}

int layer_compute_bounds(Model* model, const char* layer) {
    Layer* target = find_layer(model, layer);
    if (target == nullptr) { return 0; }
    Survey survey;
    survey_layer(model, *target, survey);
    return store_bounds(model, *target, survey) ? 1 : 0;
}

UvPair planar_uv(float x, float y, float z, const Vec3* bounds_min, const Vec3* bounds_max, int axis_u, int axis_v) {
    const Vec3 place{x, y, z};
    return UvPair{planar_coordinate(planar_axis(axis_u, *bounds_min, *bounds_max), place),
                  planar_coordinate(planar_axis(axis_v, *bounds_min, *bounds_max), place)};
}

float fold_uv(float x) {
    if (!std::isfinite(x)) { return 0.0f; }
    if (x > FOLD_PERIOD) {
        // Exact, as is every step of taking 2 away. A multiple of 2 ends at 0 here and at 2 there, which folds to 0.
        x = std::fmod(x, FOLD_PERIOD);
    }
    return x <= 1.0f ? x : 1.0f - (x - 1.0f);
}

}  // namespace pelt
