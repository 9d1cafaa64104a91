// Boxes, sizes and centres. What surprises: of a model's box only two opposite corners are transformed, so that under
// a rotation the box is that of these two points and may collapse; and children stand where their links place them
// at rest, whatever an animation does with them.
#include "edit/bounds.h"

#include <algorithm>
#include <cmath>

#include "edit/selection.h"
#include "motion/transform_state.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr float RADIUS_OF_SIZE = 2.0f;  // the radius is this many times the largest size

Box sorted_box(const Vec3& a, const Vec3& b) {
    Box box{a, b};
    if (b.x < a.x) { std::swap(box.lower.x, box.upper.x); }
    if (b.y < a.y) { std::swap(box.lower.y, box.upper.y); }
    if (b.z < a.z) { std::swap(box.lower.z, box.upper.z); }
    return box;
}

void widen_box(Box* box, const Box& by) {
    for (const Vec3& corner : {by.lower, by.upper}) { box_take_in(corner, &box->lower, &box->upper); }
}

// Joins boxes, the first as it is.
struct JoinedBox {
    Box box{};
    bool have = false;
};

void join_box(JoinedBox* joined, const Box& box) {
    if (joined->have) {
        widen_box(&joined->box, box);
    } else {
        *joined = JoinedBox{box, true};
    }
}

// A link without a model counts as a box of no size at the origin: intended.
Box bounds_below(const Model* model, const Mat4& matrix, int32_t level) {
    if (model == nullptr) { return Box{}; }
    Vec3 first;
    Vec3 second;
    mat_transform_point(&matrix, &model->bounds_min, &first);
    mat_transform_point(&matrix, &model->bounds_max, &second);
    JoinedBox joined{sorted_box(first, second), list_count(&model->points) > 0};
    if (level >= MODEL_TREE_DEPTH_LIMIT) { return joined.box; }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        Mat4 placement = child_placement(&link);
        mat_multiply(&placement, &matrix, &placement);
        join_box(&joined, bounds_below(link.model, placement, level + 1));
    }
    return joined.box;
}

Vec3 box_size(const Box& box) { return vec_subtract(box.upper, box.lower); }

Vec3 box_centre(const Box& box) { return vec_weighted(box_size(box), 0.5f, box.lower, 1.0f); }

}  // namespace

Box model_bounds(const Model* model, const Mat4* matrix) {
    Mat4 identity;
    mat_identity(&identity);
    return bounds_below(model, matrix != nullptr ? *matrix : identity, 0);
}

Vec3 model_size(const Model* model, const Mat4* matrix) { return box_size(model_bounds(model, matrix)); }

Vec3 model_centre(const Model* model, const Mat4* matrix) { return box_centre(model_bounds(model, matrix)); }

float model_largest_extent(const Model* model, const Mat4* matrix) {
    const Box box = model_bounds(model, matrix);
    float largest = 0.0f;
    for (const float value : {box.lower.x, box.lower.y, box.lower.z, box.upper.x, box.upper.y, box.upper.z}) {
        largest = std::max(largest, std::fabs(value));
    }
    return largest;
}

Vec3 scene_centre(Session* session) {
    if (session == nullptr) { return Vec3{}; }
    JoinedBox joined;
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        const ModelState* state = model_state(session, root.model);
        join_box(&joined, model_bounds(root.model, state != nullptr ? &state->matrix : nullptr));
    }
    session->centre = box_centre(joined.box);
    return session->centre;
}

Vec3 selection_centre(Session* session) {
    if (session == nullptr) { return Vec3{}; }
    JoinedBox joined;
    const auto entries = list_elements<SelectedModel>(session->selection.models);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        const Model* model = selection_entry_model(session, entry.int_key(), &*entry);
        if (model == nullptr) { continue; }
        // A state is looked up and not made here: asking for a centre changes nothing.
        const ModelState* state = list_at<const ModelState>(&session->model_states, model->state_index, 0);
        join_box(&joined, model_bounds(model, state != nullptr ? &state->matrix : nullptr));
    }
    return box_centre(joined.box);
}

float session_get_radius(const Session* session) { return session != nullptr ? session->radius : 0.0f; }

void session_grow_radius(Session* session, Model* model) {
    if (session == nullptr || model == nullptr) { return; }
    const Vec3 size = model_size(model, nullptr);
    const ModelState* state = model_state(session, model);
    const Vec3 translate = state != nullptr ? state->translate : Vec3{};
    const float x = size.x + translate.x;
    const float y = size.y + translate.y;
    const float z = size.z + translate.z;
    const float radius = std::max({x, y, z}) * RADIUS_OF_SIZE;
    const bool finite = std::isfinite(x) && std::isfinite(y) && std::isfinite(z) && std::isfinite(radius);
    if (finite && radius > session->radius) {
        change_scene_fields(session);
        session->radius = radius;
    }
}

}  // namespace pelt
