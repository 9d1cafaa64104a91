// Bakes curved primitives into flat ones. What surprises: the level of detail that callers pass does nothing, since the
// strips are laid out for edges cut in two; neighbours share no new points; and a strip of five vertices, split later,
// doubles its last triangle. All of it is intended.
#include "reduce/tessellate.h"

#include "formats/texture_map.h"
#include "foundation/text.h"
#include "reduce/flatten_limits.h"
#include "scene/model.h"
#include "surfaces/patch.h"

namespace pelt {

namespace {

constexpr int CORNER_LIMIT = 4;
constexpr int NEW_LIMIT = 5;
constexpr int PLACE_LIMIT = CORNER_LIMIT + NEW_LIMIT;
constexpr int STRIP_LIMIT = 6;
constexpr float COLOUR_BYTES = 255.0f;

// Places of a primitive: its corners, and the points that are made.
enum Place : int { P0, P1, P2, P3, M0, M1, M2, M3, M4 };

// A new point takes the joint of to where that hangs on the joint of parent, and the joint of from otherwise.
struct JointRule {
    Place target, from, to, parent;
};

struct StripForm {
    int count;
    Place places[STRIP_LIMIT];
};

// How the primitives of one curve type are taken apart.
struct BakeForm {
    int type;
    int new_count;
    int vertices[NEW_LIMIT];  // of the grid, for each new point
    JointRule joints[NEW_LIMIT];
    int strip_count;
    StripForm strips[2];
    bool has_triangle;
    Place triangle[3];
};

constexpr BakeForm TRIANGLE_1 = {1, 1, {1}, {{M0, P0, P1, P0}}, 1, {{4, {P0, M0, P2, P1}}}, false, {}};

constexpr BakeForm TRIANGLE_2 = {2,     2, {1, 3}, {{M0, P0, P1, P0}, {M1, P0, P2, P0}}, 1, {{5, {P0, M0, M1, P1, P2}}},
                                 false, {}};

constexpr BakeForm TRIANGLE_3 = {3,         3,
                                 {1, 3, 4}, {{M0, P0, P1, P0}, {M1, P0, P2, P0}, {M2, P1, P2, P1}},
                                 1,         {{5, {P0, M0, M1, M2, P2}}},
                                 true,      {M0, P1, M2}};

// The second edge looks at the joint of corner 0 and not of its own end: intended.
constexpr BakeForm QUAD_2 = {2,     2, {2, 3}, {{M0, P0, P1, P0}, {M1, P2, P3, P0}}, 1, {{6, {P1, P3, M0, M1, P0, P2}}},
                             false, {}};

// The centre comes last, after the two points that it looks at.
constexpr BakeForm QUAD_4 = {4,
                             5,
                             {1, 3, 4, 5, 7},
                             {{M0, P0, P2, P0}, {M1, P0, P1, P0}, {M3, P2, P3, P2}, {M4, P1, P3, P1}, {M2, M0, M4, M0}},
                             2,
                             {{6, {P0, M1, M0, M2, P2, M3}}, {6, {M1, P1, M2, M4, M3, P3}}},
                             false,
                             {}};

const BakeForm& form_of(const Triangle& triangle) {
    static constexpr const BakeForm* TRIANGLES[] = {&TRIANGLE_1, &TRIANGLE_2, &TRIANGLE_3};
    if (triangle.quad) { return triangle.curve_type == QUAD_2.type ? QUAD_2 : QUAD_4; }
    return *TRIANGLES[patch_triangle_type(triangle.curve_type) - 1];
}

// What a primitive refers to.
struct BakedCorners {
    PatchCorners patch;
    const Point* points[CORNER_LIMIT];
};

bool copy_normal(const Model* model, int32_t id, Vec3* out) {
    const Point* point = list_find<const Point>(&model->points, id);
    if (point != nullptr) { *out = point->normal; }
    return point != nullptr;
}

// False when one of the points is not the model's own.
bool gather(const Model* model, const Triangle& triangle, BakedCorners* out) {
    PatchCorners* corners = &out->patch;
    corners->count = triangle_corners(&triangle);
    for (int i = 0; i < corners->count; ++i) {
        const Point* point = list_find<const Point>(&model->points, triangle.points[i]);
        if (point == nullptr || !copy_normal(model, triangle.normals[i], &corners->normals[i])) { return false; }
        out->points[i] = point;
        corners->positions[i] = point->position;
        corners->uvs[i] = triangle.uvs[i];
        corners->colours[i] = point->gouraud;
    }
    for (int i = 0; i < 2 * corners->count; ++i) {
        if (!copy_normal(model, triangle.controls[i], &corners->normals[PATCH_EDGE_NORMALS + i])) { return false; }
    }
    return true;
}

void blend_weights(const BakedCorners& corners, const PatchSurface& surface, float* out) {
    float weights[CORNER_LIMIT] = {};
    bool same_joint[CORNER_LIMIT] = {};
    for (int i = 0; i < corners.patch.count; ++i) {
        weights[i] = corners.points[i]->weight;
        same_joint[i] = corners.points[i]->joint_a == corners.points[0]->joint_a;
    }
    patch_surface_weights(surface, weights, same_joint, out);
}

// One primitive being replaced.
struct Bake {
    Model* model;
    const Layer* layer;
    const Triangle* triangle;
    const BakeForm* form;
    int32_t ids[PLACE_LIMIT];
    int32_t normals[PLACE_LIMIT];
};

void add_attributes(const Bake& bake, const PatchSurface& surface, int vertex, int32_t id) {
    const int offset = vertex * surface.attribute_count;
    if (surface.colours != nullptr) {
        const float* colour = surface.colours + offset;
        model_set_gouraud(bake.model, id, float_to_int(colour[0] * COLOUR_BYTES),
                          float_to_int(colour[1] * COLOUR_BYTES), float_to_int(colour[2] * COLOUR_BYTES),
                          float_to_int(bake.layer->transparency * COLOUR_BYTES));
    }
    if (surface.uvs != nullptr) {
        model_add_uvee(bake.model, bake.layer->name, id, surface.uvs[offset], surface.uvs[offset + 1]);
    }
}

void add_points(const Bake& bake, const PatchSurface& surface, const float* weights) {
    for (int i = 0; i < bake.form->new_count; ++i) {
        const int vertex = bake.form->vertices[i];
        const int32_t id = bake.ids[M0 + i];
        const Vec3& place = surface.positions[vertex];
        const Vec3& normal = surface.normals[vertex];
        model_set_point(bake.model, id, float_to_int(place.x), float_to_int(place.y), float_to_int(place.z),
                        weights[vertex]);
        model_set_normal(bake.model, id, normal.x, normal.y, normal.z);
        add_attributes(bake, surface, vertex, id);
    }
}

Joint* joint_by_rule(const Model* model, const JointRule& rule, Joint* const joints[PLACE_LIMIT]) {
    const Joint* parent = joints[rule.parent];
    const int32_t parent_rank = parent != nullptr ? model_joint_index(model, parent->name) : -1;
    Joint* to = joints[rule.to];
    return to != nullptr && to->parent_index == parent_rank ? to : joints[rule.from];
}

void bind_joints(const Bake& bake, const BakedCorners& corners) {
    Joint* joints[PLACE_LIMIT] = {};
    for (int i = 0; i < corners.patch.count; ++i) { joints[i] = corners.points[i]->joint_a; }
    for (int i = 0; i < bake.form->new_count; ++i) {
        const JointRule& rule = bake.form->joints[i];
        Joint* joint = joint_by_rule(bake.model, rule, joints);
        joints[rule.target] = joint;
        Point* point = list_find<Point>(&bake.model->points, bake.ids[rule.target]);
        point->joint_a = joint;
        if (joint != nullptr) { joint_gain_point(joint); }
        if (joint != joints[P0]) { point->weight = 1.0f - point->weight; }
    }
}

void add_replacements(const Bake& bake) {
    int32_t points[STRIP_LIMIT];
    int32_t normals[STRIP_LIMIT];
    const auto take = [&](const Place* places, int count) {
        for (int i = 0; i < count; ++i) {
            points[i] = bake.ids[places[i]];
            normals[i] = bake.normals[places[i]];
        }
    };
    for (int i = 0; i < bake.form->strip_count; ++i) {
        const StripForm& strip = bake.form->strips[i];
        take(strip.places, strip.count);
        model_add_polygon(bake.model, bake.layer->name, strip.count, points, normals);
    }
    if (bake.form->has_triangle) {
        take(bake.form->triangle, 3);
        model_add_triangle(bake.model, bake.layer->name, 0, points, normals, nullptr, 0);
    }
}

Bake begin_bake(Model* model, const Layer* layer, const Triangle* triangle, int32_t next_id) {
    Bake bake{model, layer, triangle, &form_of(*triangle), {}, {}};
    for (int i = 0; i < CORNER_LIMIT; ++i) {
        bake.ids[i] = triangle->points[i];
        bake.normals[i] = triangle->normals[i];
    }
    for (int i = 0; i < bake.form->new_count; ++i) { bake.ids[M0 + i] = bake.normals[M0 + i] = next_id + i; }
    return bake;
}

// New points of all curved primitives that can be baked.
int64_t count_new_points(const Model* model) {
    int64_t count = 0;
    BakedCorners unused;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            if (triangle.curve_type > 0 && layer_can_be_found(model, &layer) && gather(model, triangle, &unused)) {
                count += form_of(triangle).new_count;
            }
        }
    }
    return count;
}

void remove_curved(Layer* layer) {
    const auto triangles = list_elements<Triangle>(layer->triangles);
    for (auto triangle = triangles.begin(); triangle != triangles.end(); ++triangle) {
        if (triangle->curve_type > 0) { list_remove_slot(&layer->triangles, triangle.slot()); }
    }
}

}  // namespace

int model_tessellate(Model* model, int lod) {
    if (model == nullptr) { return 0; }
    const int64_t new_points = count_new_points(model);
    if (new_points > 0 && !point_id_fits(model_highest_point(model) + new_points)) { return 0; }
    int32_t next_id = new_points > 0 ? model_highest_point(model) + 1 : POINT_ID_LIMIT;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        if (!layer_can_be_found(model, &layer)) { continue; }
        for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            next_id += triangle_bake(model, &layer, &triangle, lod, next_id);
        }
        remove_curved(&layer);
        layer_map_uvees(model, layer.name);
    }
    return 1;
}

int triangle_bake(Model* model, Layer* layer, Triangle* triangle, int /*lod*/, int32_t next_id) {
    BakedCorners corners;
    if (model == nullptr || layer == nullptr || triangle == nullptr || triangle->curve_type <= 0 || next_id < 1 ||
        !layer_can_be_found(model, layer) || !gather(model, *triangle, &corners)) {
        return 0;
    }
    if (!point_id_fits(int64_t{next_id} + form_of(*triangle).new_count - 1)) { return 0; }
    const Bake bake = begin_bake(model, layer, triangle, next_id);
    PatchSurface surface;
    patch_surface(corners.patch, bake.form->type, BAKE_LEVEL, &surface);
    patch_surface_attributes(corners.patch, list_count(&layer->uvees) > 0, model->has_gouraud != 0, GOURAUD_SCALE,
                             &surface);
    float weights[PATCH_VERTEX_LIMIT];
    blend_weights(corners, surface, weights);
    add_points(bake, surface, weights);
    if (list_count(&model->joints) > 0) { bind_joints(bake, corners); }
    add_replacements(bake);
    return bake.form->new_count;
}

}  // namespace pelt
