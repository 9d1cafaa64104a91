// Turns mirrored layers into real ones. What surprises: points are matched by their exact place, before a new point is
// cut to integers, so a corner at a fraction gets a new point each time it is met; and a corner on the mirror plane is
// its own mirror image, whose normal is turned over again by each primitive that meets there. Both are intended. What
// reads as a search through all points is answered by an index, kept up to date as points and normals are made.
#include "reduce/bake_mirror.h"

#include <string>
#include <vector>

#include "formats/layer_image.h"
#include "foundation/text.h"
#include "reduce/carry_settings.h"
#include "reduce/exact_index.h"
#include "reduce/flatten_limits.h"
#include "reduce/scratch_copy.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr int NEW_IDS_PER_CORNER = 2;          // at most: one for the place, one for the normal
constexpr int CORNER_ORDER[4] = {0, 2, 1, 3};  // turns a triangle or a quad over

struct MirrorBake {
    Model* model;
    ExactIndex places;   // slots of its points
    ExactIndex normals;  // likewise, once it was asked for
    bool normals_known;
    int64_t next_id;
    int axis;         // of the layer in hand
    bool out_of_ids;  // an id would have passed the limit: the rest is not done
};

struct MirroredCorner {
    int32_t point;
    int32_t normal;
};

std::string mirror_layer_name(const Layer& layer) { return std::string(layer.name) + "_mirror"; }

const Point* own_point(const Model* model, int32_t id) { return list_find<Point>(&model->points, id); }

int32_t slot_of(const MirrorBake& bake, int32_t id) { return list_index_of(&bake.model->points, id, 0); }

// The id of the first point that the index knows for the vector; -1 when there is none.
int32_t id_of(const MirrorBake& bake, const ExactIndex& index, const Vec3& vector) {
    const int32_t slot = exact_index_find(index, vector);
    return slot >= 0 ? list_int_key(&bake.model->points, slot) : -1;
}

MirrorBake begin_bake(Model* model) {
    MirrorBake bake{model, {}, {}, false, int64_t{model_highest_point(model)} + 1, 0, false};
    exact_index_reserve(&bake.places, static_cast<uint32_t>(list_count(&model->points)));
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        exact_index_add(&bake.places, point->position, point.slot());
    }
    return bake;
}

// Most models name no normal of another point and need no index of normals.
int32_t find_normal(MirrorBake* bake, const Vec3& normal) {
    if (!bake->normals_known) {
        exact_index_reserve(&bake->normals, static_cast<uint32_t>(list_count(&bake->model->points)));
        const auto points = list_elements<Point>(bake->model->points);
        for (auto point = points.begin(); point != points.end(); ++point) {
            exact_index_add(&bake->normals, point->normal, point.slot());
        }
        bake->normals_known = true;
    }
    return id_of(*bake, bake->normals, normal);
}

// 0, which no point has, when there is none left.
int32_t take_id(MirrorBake* bake) {
    if (!point_id_fits(bake->next_id)) {
        bake->out_of_ids = true;
        return 0;
    }
    return static_cast<int32_t>(bake->next_id++);
}

void index_new_point(MirrorBake* bake, int32_t id) {
    const Point* point = own_point(bake->model, id);
    exact_index_add(&bake->places, point->position, slot_of(*bake, id));
    if (bake->normals_known) { exact_index_add(&bake->normals, point->normal, slot_of(*bake, id)); }
}

int32_t add_point(MirrorBake* bake, const Vec3& place) {
    const int32_t id = take_id(bake);
    if (model_set_point(bake->model, id, float_to_int(place.x), float_to_int(place.y), float_to_int(place.z), 1.0f)) {
        index_new_point(bake, id);
    }
    return id;
}

// A point for a normal alone: it lies at the origin.
int32_t add_normal(MirrorBake* bake, const Vec3& normal) {
    const int32_t id = take_id(bake);
    if (model_set_normal(bake->model, id, normal.x, normal.y, normal.z)) { index_new_point(bake, id); }
    return id;
}

void store_normal(MirrorBake* bake, int32_t id, const Vec3& normal) {
    const Point* point = own_point(bake->model, id);
    const Vec3 old = point->normal;
    model_set_normal(bake->model, id, normal.x, normal.y, normal.z);
    const bool changed = old.x != point->normal.x || old.y != point->normal.y || old.z != point->normal.z;
    if (bake->normals_known && changed) {
        exact_index_remove(&bake->normals, old, slot_of(*bake, id));
        exact_index_add(&bake->normals, point->normal, slot_of(*bake, id));
    }
}

MirroredCorner mirror_corner(MirrorBake* bake, int32_t point_id, int32_t normal_id) {
    const Point* point = own_point(bake->model, point_id);
    const Vec3 place = mirrored_along(point->position, bake->axis);
    int32_t out = id_of(*bake, bake->places, place);
    if (out < 0) { out = add_point(bake, place); }
    if (bake->out_of_ids) { return {0, 0}; }
    if (normal_id == point_id) {
        store_normal(bake, out, mirrored_along(point->normal, bake->axis));
        return {out, out};
    }
    const Vec3 normal = mirrored_along(own_point(bake->model, normal_id)->normal, bake->axis);
    const int32_t known = find_normal(bake, normal);
    return {out, known >= 0 ? known : add_normal(bake, normal)};
}

void mirror_triangle(MirrorBake* bake, const Triangle& triangle, const char* target) {
    const int corners = triangle_corners(&triangle);
    for (int i = 0; i < corners; ++i) {
        if (!own_point(bake->model, triangle.points[i]) || !own_point(bake->model, triangle.normals[i])) { return; }
    }
    int32_t points[4];
    int32_t normals[4];
    for (int i = 0; i < corners; ++i) {
        const int from = CORNER_ORDER[i];
        const MirroredCorner corner = mirror_corner(bake, triangle.points[from], triangle.normals[from]);
        points[i] = corner.point;
        normals[i] = corner.normal;
    }
    if (bake->out_of_ids) { return; }
    if (corners == 3) {
        // Read for the last of the default controls alone: it closes their ring.
        points[3] = points[0];
    }
    model_add_triangle(bake->model, target, triangle.quad, points, normals, nullptr, triangle.curve_type);
}

// A strip turns over when its first vertex is taken away: that one goes into a triangle of its own.
void mirror_polygon(MirrorBake* bake, const Polygon& polygon, const char* target) {
    const std::vector<PolygonVertex> strip = polygon_strip(polygon);
    if (strip.size() < STRIP_MIN) { return; }
    for (const PolygonVertex& vertex : strip) {
        if (!own_point(bake->model, vertex.point) || !own_point(bake->model, vertex.normal)) { return; }
    }
    std::vector<int32_t> points;
    std::vector<int32_t> normals;
    for (const PolygonVertex& vertex : strip) {
        const MirroredCorner corner = mirror_corner(bake, vertex.point, vertex.normal);
        points.push_back(corner.point);
        normals.push_back(corner.normal);
    }
    if (bake->out_of_ids) { return; }
    const int32_t first_points[3] = {points[0], points[2], points[1]};
    const int32_t first_normals[3] = {normals[0], normals[2], normals[1]};
    model_add_triangle(bake->model, target, 0, first_points, first_normals, nullptr, 0);
    model_add_polygon(bake->model, target, static_cast<int>(points.size()) - 1, points.data() + 1, normals.data() + 1);
}

// The same axis from the other end, where it is that of the mirror.
int turned_image_axis(int code, int mirror_axis) {
    if (mirror_axis < AXIS_X || mirror_axis > AXIS_Z) { return code; }
    const int opposite = mirror_axis + (AXIS_MINUS_X - AXIS_X);
    return code == mirror_axis ? opposite : code == opposite ? mirror_axis : code;
}

void move_image(Model* model, Layer* layer, const char* target) {
    LayerImage* image = layer_first_image(layer);
    if (image == nullptr) {
        return;  // with transparency and colour key left behind: intended
    }
    const bool has_own = image->names[IMAGE_SLOT_MIRROR][0] != '\0';
    model_add_image(model, target, IMAGE_SLOT_BASE, image->names[has_own ? IMAGE_SLOT_MIRROR : IMAGE_SLOT_BASE],
                    turned_image_axis(layer->image_axis_u, layer->mirror_axis),
                    turned_image_axis(layer->image_axis_v, layer->mirror_axis));
    // Intended: behind the image, which therefore has no colour key.
    carry_settings(model, target, *layer);
    layer_image_release_slot(image, IMAGE_SLOT_MIRROR);
    image->names[IMAGE_SLOT_MIRROR][0] = '\0';
}

void mirror_primitives(MirrorBake* bake, const Layer& layer, const char* target) {
    bake->axis = layer.mirror_axis;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        mirror_triangle(bake, triangle, target);
        if (bake->out_of_ids) { return; }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        mirror_polygon(bake, polygon, target);
        if (bake->out_of_ids) { return; }
    }
}

// False when point ids ran out, with the model in any state.
bool bake_layers(Model* model) {
    MirrorBake bake = begin_bake(model);
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        if (!layer.mirror) { continue; }
        const std::string target = mirror_layer_name(layer);
        // A layer of that name may exist; it is then added to.
        model_add_layer(model, target.c_str(), layer.colour[0], layer.colour[1], layer.colour[2], layer.singlesided, 0,
                        AXIS_X);
        mirror_primitives(&bake, layer, target.c_str());
        if (bake.out_of_ids) { return false; }
        move_image(model, &layer, target.c_str());
        layer.mirror = 0;
    }
    return true;
}

bool names_fit(const Model* model) {
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (layer.mirror && !layer_name_fits(mirror_layer_name(layer).c_str())) { return false; }
    }
    return true;
}

int32_t count_mirrors(const Model* model) {
    int32_t count = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) { count += layer.mirror ? 1 : 0; }
    return count;
}

// Corners that are mirrored, or more: a mirrored layer that is added to by another one mirrors what it got, and so on
// through at most all of them, and each time a polygon becomes a triangle more.
int64_t most_corners(const Model* model, int32_t mirrors) {
    int64_t corners = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (!layer.mirror) { continue; }
        corners += int64_t{list_count(&layer.triangles)} * 4;
        for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
            corners += polygon.vertex_count + int64_t{mirrors} * 4;
        }
    }
    return corners * mirrors;
}

// Where it is not plain that the ids suffice, a copy is baked to see.
bool ids_fit(const Model* model, int32_t mirrors) {
    if (model_highest_point(model) + NEW_IDS_PER_CORNER * most_corners(model, mirrors) <= POINT_ID_LIMIT) {
        return true;
    }
    Model* trial = model_scratch_copy(model);
    const bool fits = bake_layers(trial);
    model_release(trial);
    return fits;
}

}  // namespace

int model_bake_mirror(Model* model) {
    if (model == nullptr) { return 0; }
    const int32_t mirrors = count_mirrors(model);
    if (mirrors == 0) { return 1; }
    if (!names_fit(model) || !ids_fit(model, mirrors)) { return 0; }
    return bake_layers(model) ? 1 : 0;
}

}  // namespace pelt
