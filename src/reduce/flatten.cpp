// Merges child models into their parent. A merge is tried on copies first, so that one that has to be refused leaves
// nothing behind; and what a child refers to is looked up in the child alone, because the same number may well be a
// point of the parent.
#include "reduce/flatten.h"

#include <limits>
#include <string>

#include "formats/layer_image.h"
#include "formats/texture_map.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "reduce/bake_mirror.h"
#include "reduce/carry_settings.h"
#include "reduce/flatten_limits.h"
#include "reduce/scratch_copy.h"
#include "reduce/tessellate.h"
#include "scene/model.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

constexpr int ALL_CORNERS = 4;
constexpr int ALL_CONTROLS = 8;
constexpr int32_t NO_POINT = 0;  // never the id of a point

// Where a child stands in its parent: scaled, then turned, then moved.
struct Placement {
    Vec3 position;
    Vec3 scale;
    Mat4 turn;
};

// One model being merged into another.
struct Merge {
    Model* parent;
    const Model* child;
    Placement placement;
    int32_t base;     // what is added to the child's ids
    int32_t counter;  // in the names of the layers
};

Placement placement_of(const Vec3& position, const Vec3& scale, const char* rotate_x, const char* rotate_y,
                       const char* rotate_z) {
    Placement placement{position, scale, {}};
    mat_rotate_text(&placement.turn, rotate_x, rotate_y, rotate_z);  // as in child_placement
    return placement;
}

std::string merged_layer_name(const Merge& merge, const Layer& layer) {
    return std::to_string(merge.counter) + "_" + layer.name;
}

// The id in the parent of what the child calls id.
int32_t merged_id(const Merge& merge, int32_t id) {
    return list_find(&merge.child->points, id) != nullptr ? id + merge.base : NO_POINT;
}

bool merge_fits(const Merge& merge) {
    if (list_count(&merge.child->points) > 0 &&
        !point_id_fits(int64_t{merge.base} + model_highest_point(merge.child))) {
        return false;
    }
    for (const Layer& layer : list_elements<Layer>(merge.child->layers)) {
        if (layer_has_surface(layer) && !layer_name_fits(merged_layer_name(merge, layer).c_str())) { return false; }
    }
    return true;
}

void merge_point(const Merge& merge, int32_t id, const Point& point) {
    const Placement& at = merge.placement;
    Vec3 normal;
    mat_transform_point(&at.turn, &point.normal, &normal);
    const Vec3 scaled{point.position.x * at.scale.x, point.position.y * at.scale.y, point.position.z * at.scale.z};
    Vec3 turned;
    mat_transform_point(&at.turn, &scaled, &turned);
    model_set_point(merge.parent, id, float_to_int(turned.x + at.position.x), float_to_int(turned.y + at.position.y),
                    float_to_int(turned.z + at.position.z), point.weight);
    if (merge.parent->has_normals) { model_set_normal(merge.parent, id, normal.x, normal.y, normal.z); }
    if (merge.parent->has_gouraud) {
        model_set_gouraud(merge.parent, id, point.gouraud[0], point.gouraud[1], point.gouraud[2], point.gouraud[3]);
    }
}

void merge_points(const Merge& merge) {
    const auto points = list_elements<Point>(merge.child->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        merge_point(merge, point.int_key() + merge.base, *point);
    }
}

void merge_triangle(const Merge& merge, const Triangle& triangle, const char* target) {
    int32_t points[ALL_CORNERS];
    int32_t normals[ALL_CORNERS];
    int32_t controls[ALL_CONTROLS];
    for (int i = 0; i < ALL_CORNERS; ++i) {
        points[i] = merged_id(merge, triangle.points[i]);
        normals[i] = merged_id(merge, triangle.normals[i]);
        model_add_uvee(merge.parent, target, points[i], triangle.uvs[i][0], triangle.uvs[i][1]);
    }
    for (int i = 0; i < ALL_CONTROLS; ++i) { controls[i] = merged_id(merge, triangle.controls[i]); }
    model_add_triangle(merge.parent, target, triangle.quad, points, normals, controls, triangle.curve_type);
}

// Everything of a layer that is no primitive. Its image finds nothing to map yet: the coordinates come as uvees, and so
// the axes are x and y whatever those of the child are: intended.
void merge_settings(const Merge& merge, const Layer& layer, const char* target) {
    // A layer of that name may exist; it is then added to.
    model_add_layer(merge.parent, target, layer.colour[0], layer.colour[1], layer.colour[2], layer.singlesided, 0,
                    AXIS_X);
    carry_settings(merge.parent, target, layer);
    if (const LayerImage* image = layer_first_image(&layer)) {
        model_add_image(merge.parent, target, IMAGE_SLOT_BASE, image->names[IMAGE_SLOT_BASE], AXIS_X, AXIS_Y);
    }
}

void merge_layer(const Merge& merge, const Layer& layer) {
    const std::string name = merged_layer_name(merge, layer);
    const char* target = name.c_str();
    merge_settings(merge, layer, target);
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        merge_triangle(merge, triangle, target);
    }
    const auto uvees = list_elements<Uvee>(layer.uvees);
    for (auto uvee = uvees.begin(); uvee != uvees.end(); ++uvee) {
        model_add_uvee(merge.parent, target, merged_id(merge, uvee.int_key()), uvee->u, uvee->v);
    }
}

bool prepare_child(Model* child) {
    return model_bake_mirror(child) && model_triangulate(child) && model_triangulate_all(child);
}

Merge begin_merge(Model* parent, const Model* child, const Placement& placement, int32_t counter) {
    // Above the limit nothing fits, so a base that would not be a number here need not be one.
    const int32_t highest = model_highest_point(parent);
    return Merge{parent, child, placement, highest > POINT_ID_LIMIT ? POINT_ID_LIMIT : highest + 1, counter};
}

void count_up(int32_t* counter) { *counter = *counter < std::numeric_limits<int32_t>::max() ? *counter + 1 : 1; }

// False, with nothing added to the parent, when the child does not fit in; the child may be prepared then.
bool merge_model(Model* parent, Model* child, const Placement& placement, int32_t* counter) {
    const int32_t child_gouraud = child->has_gouraud;
    const int32_t child_normals = child->has_normals;  // those of a baked mirror come too late to count: intended
    if (!prepare_child(child)) { return false; }
    const Merge merge = begin_merge(parent, child, placement, *counter);
    if (!merge_fits(merge)) { return false; }
    parent->has_gouraud |= child_gouraud;
    parent->has_normals |= child_normals;
    merge_points(merge);
    for (const Layer& layer : list_elements<Layer>(child->layers)) {
        if (list_count(&layer.triangles) > 0) { merge_layer(merge, layer); }
    }
    count_up(counter);
    return true;
}

void release_children(Model* model) {
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { model_release(link.model); }
    }
    list_clear(&model->children);
}

bool merge_links(Model* model, int32_t* counter);

bool merge_link(Model* model, const ChildLink& link, Model* child, int32_t* counter) {
    const Placement placement = placement_of(link.position, link.scale, link.rotate[0], link.rotate[1], link.rotate[2]);
    return merge_links(child, counter) && merge_model(model, child, placement, counter);
}

// Merges all that hangs below the model into it and drops the links. False when something does not fit or a link has no
// model, with the model and the models below it in any state.
bool merge_links(Model* model, int32_t* counter) {
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model == nullptr) {
            load_error_set_format("child without a model: %s", link.name);
            return false;
        }
        Model* child = link.borrowed ? model_scratch_copy(link.model) : link.model;
        const bool merged = merge_link(model, link, child, counter);
        if (link.borrowed) { model_release(child); }
        if (!merged) { return false; }
    }
    release_children(model);
    return true;
}

bool tree_fits(const Model* model) {
    if (!model_tree_fits(model)) {
        load_error_set("child models nested too deeply");
        return false;
    }
    return true;
}

// Whether all children can be merged, tried on copies.
bool children_fit(const Model* model, int32_t counter) {
    if (list_count(&model->children) == 0) { return true; }
    if (!tree_fits(model)) { return false; }
    Model* trial = model_scratch_copy(model);
    const bool merged = merge_links(trial, &counter);
    model_release(trial);
    return merged;
}

// A borrowed model is baked as a copy, which is the parent's own.
bool bake_children(Model* model) {
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model == nullptr) { continue; }
        if (link.borrowed) {
            link.model = model_scratch_copy(link.model);
            link.borrowed = 0;
        }
        if (!bake_children(link.model) || !model_bake_mirror(link.model) || !model_tessellate(link.model, BAKE_LEVEL)) {
            return false;
        }
    }
    return true;
}

}  // namespace

int model_flatten(Model* model) {
    if (model == nullptr) { return 0; }
    int32_t counter = 1;
    // Splitting changes nothing that decides about the merge, so that may be refused before anything is done.
    if (!children_fit(model, counter)) { return 0; }
    model_triangulate_all(model);
    return merge_links(model, &counter) ? 1 : 0;
}

int model_flatten_baked(Model* model) {
    if (model == nullptr || !tree_fits(model) || !bake_children(model) || !model_flatten(model)) { return 0; }
    for (const Layer& layer : list_elements<Layer>(model->layers)) { layer_map_uvees(model, layer.name); }
    return 1;
}

int model_merge_children(Model* model, int32_t* counter) {
    if (model == nullptr || counter == nullptr) { return 0; }
    return children_fit(model, *counter) && merge_links(model, counter) ? 1 : 0;
}

int model_merge_child(Model* parent, Model* child, float x, float y, float z, float scale_x, float scale_y,
                      float scale_z, const char* rotate_x, const char* rotate_y, const char* rotate_z,
                      int32_t* counter) {
    if (parent == nullptr || child == nullptr || parent == child || rotate_x == nullptr || rotate_y == nullptr ||
        rotate_z == nullptr || counter == nullptr) {
        return 0;
    }
    const Placement placement = placement_of({x, y, z}, {scale_x, scale_y, scale_z}, rotate_x, rotate_y, rotate_z);
    Model* trial = model_scratch_copy(child);
    const bool fits = prepare_child(trial) && merge_fits(begin_merge(parent, trial, placement, *counter));
    model_release(trial);
    return fits && merge_model(parent, child, placement, counter) ? 1 : 0;
}

}  // namespace pelt
