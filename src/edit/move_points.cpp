// Moving points. What is told of is where a point is drawn: posed by its joints, mirrored, in its place in the scene.
// What is stored is where it rests, so each change goes back through all of that; in double precision, since a place
// that should come out whole must not be rounded to its neighbour.
#include "edit/move_points.h"

#include <cmath>
#include <map>

#include "edit/history.h"
#include "edit/point_settings.h"
#include "edit/settle.h"
#include "motion/transform_state.h"
#include "scene/change.h"

namespace pelt {

namespace {

// A way back that magnifies what the way there made smaller by more than this is lost in the rounding of the matrices,
// which are floats.
constexpr double CONDITION_MOST = 1e6;
constexpr PlaceChange UNCHANGED{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {0, 0, 0}};

struct Place {
    double v[3];
};

Place place_of(const Vec3& p) { return {{p.x, p.y, p.z}}; }

Place apply(const PlaceChange& change, const Place& p) {
    Place out;
    for (int row = 0; row < 3; ++row) {
        const double* m = change.linear[row];
        out.v[row] = m[0] * p.v[0] + m[1] * p.v[1] + m[2] * p.v[2] + change.shift[row];
    }
    return out;
}

// First inner, then outer.
PlaceChange joined(const PlaceChange& outer, const PlaceChange& inner) {
    PlaceChange out{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            for (int k = 0; k < 3; ++k) { out.linear[row][column] += outer.linear[row][k] * inner.linear[k][column]; }
        }
    }
    const Place shift = apply(outer, {{inner.shift[0], inner.shift[1], inner.shift[2]}});
    for (int row = 0; row < 3; ++row) { out.shift[row] = shift.v[row]; }
    return out;
}

PlaceChange of_matrix(const Mat4& m) {
    PlaceChange out;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) { out.linear[row][column] = m.m[4 * row + column]; }
        out.shift[row] = m.m[4 * row + 3];
    }
    return out;
}

double length(const double* v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

double largest(const double m[3][3]) { return std::fmax(length(m[0]), std::fmax(length(m[1]), length(m[2]))); }

// The inverse of the turning and scaling part. False when that is as good as singular, or not finite.
bool invert(const PlaceChange& change, double out[3][3]) {
    const auto& m = change.linear;
    const auto cofactor = [&](int row, int column) {
        const int r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double volume = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) { out[row][column] = cofactor(column, row) / volume; }
    }
    return largest(m) * largest(out) <= CONDITION_MOST;
}

// ---- where a point is drawn ----

// Placements of links and models from the one that was named up to the scene.
bool find_place(Session* session, Model* at, const Model* model, const ChildLink* link, const Mat4& above, int depth,
                Mat4* place) {
    if (at == nullptr || depth > MODEL_TREE_DEPTH_LIMIT) { return false; }
    Mat4 here = above;
    const ModelState* state = list_at<const ModelState>(&session->model_states, at->state_index, 0);
    if (state != nullptr) { mat_multiply(&state->matrix, &here, &here); }
    if (at == model && link == nullptr) {
        *place = here;
        return true;
    }
    for (ChildLink& child : list_elements<ChildLink>(at->children)) {
        const ChildState* placed = child_state(session, &child);
        if (placed == nullptr) { continue; }
        Mat4 below;
        mat_multiply(&placed->matrix, &here, &below);
        const bool wanted = &child == link;
        if (find_place(session, child.model, model, wanted ? nullptr : link, below, depth + 1, place)) { return true; }
    }
    return false;
}

PlaceChange scene_place(Session* session, const Model* model, const ChildLink* link) {
    Mat4 world;
    mat_identity(&world);
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        Mat4 place;
        if (find_place(session, root.model, model, link, world, 0, &place)) { return of_matrix(place); }
    }
    return UNCHANGED;
}

PlaceChange mirror_of(const Layer* layer) {
    PlaceChange out = UNCHANGED;
    if (layer != nullptr && layer->mirror != 0 && layer->mirror_axis >= AXIS_X && layer->mirror_axis <= AXIS_Z) {
        const int axis = layer->mirror_axis - AXIS_X;
        out.linear[axis][axis] = -1.0;
    }
    return out;
}

PlaceChange skin_of(Session* session, Model* model, Joint* joint) {
    const JointState* state = joint != nullptr ? joint_state(session, model, joint) : nullptr;
    return state != nullptr ? of_matrix(state->skin) : UNCHANGED;
}

// What takes a point from its rest to its pose, as motion/skinning does; nothing for one without a pose.
PlaceChange pose_of(Session* session, Model* model, const Point& point) {
    if (point.state_index == -1 || point.joint_a == nullptr) { return UNCHANGED; }
    if (point.weight >= 1.0f) { return skin_of(session, model, point.joint_a); }
    const PlaceChange b = skin_of(session, model, point.joint_b);
    if (!(point.weight > 0.0f)) { return b; }
    const PlaceChange a = skin_of(session, model, point.joint_a);
    const double share = point.weight;
    PlaceChange out;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            out.linear[row][column] = share * a.linear[row][column] + (1.0 - share) * b.linear[row][column];
        }
        out.shift[row] = share * a.shift[row] + (1.0 - share) * b.shift[row];
    }
    return out;
}

// ---- where it comes to rest ----

struct Rest {
    int32_t id;
    Vec3 place;
};

// False when the way back from the pose does not exist or leads to no number.
bool find_rest(const PlaceChange& drawn, const PlaceChange& change, const Vec3& from, Vec3* to) {
    double back[3][3];
    if (!invert(drawn, back)) { return false; }
    const Place base = place_of(from);
    const Place seen = apply(drawn, base);
    const Place wanted = apply(change, seen);
    double place[3];
    for (int row = 0; row < 3; ++row) {
        place[row] = base.v[row];
        for (int k = 0; k < 3; ++k) { place[row] += back[row][k] * (wanted.v[k] - seen.v[k]); }
        if (!std::isfinite(place[row])) { return false; }
    }
    *to = {whole_number(place[0]), whole_number(place[1]), whole_number(place[2])};
    return true;
}

// Points that the open step has made, by model and id; what an earlier step has left here is never asked for.
std::map<std::pair<uint64_t, int32_t>, Vec3> new_points;

// A drag tells with each of its calls how far it has come in all.
Vec3 place_to_start_from(Model* model, int32_t id, const Point& point) {
    Vec3 before;
    if (history_point_before(model, id, &before)) { return before; }
    const auto made = new_points.find({model->serial, id});
    return made != new_points.end() ? made->second : point.position;
}

bool find_rests(Session* session, Model* model, const std::vector<int32_t>& ids, const PlaceChange& change,
                const DragSpace& space, std::vector<Rest>* rests, EditRefusal* refused) {
    const PlaceChange around =
        joined(space.in_scene ? scene_place(session, model, space.link) : UNCHANGED, mirror_of(space.mirror));
    for (const int32_t id : ids) {
        const Point* point = list_find<const Point>(&model->points, id);
        if (point == nullptr) { return edit_refuse(refused, EDIT_ARGUMENT, "there is no point " + std::to_string(id)); }
        const bool posed = point->state_index != -1 && point->joint_a != nullptr;
        Rest rest{id, {}};
        const PlaceChange drawn = posed ? joined(around, pose_of(session, model, *point)) : around;
        if (!find_rest(drawn, change, place_to_start_from(model, id, *point), &rest.place)) {
            return edit_refuse(
                refused, EDIT_STATE,
                "point " + std::to_string(id) + " cannot be moved as it is posed: the way back is singular");
        }
        rests->push_back(rest);
    }
    return true;
}

void store_rests(Session* session, Model* model, const std::vector<Rest>& rests) {
    change_model(model);
    Changed changed;
    for (const Rest& rest : rests) {
        Point* point = list_find<Point>(&model->points, rest.id);
        change_point(model, point);
        point->position = rest.place;
        changed.points.push_back(rest.id);
    }
    settle_model(session, model, changed);
}

}  // namespace

void remember_new_point(const Model* model, int32_t id, const Vec3& place) {
    if (!history_step_is_open()) {
        new_points.clear();
        return;
    }
    new_points[{model->serial, id}] = place;
}

PlaceChange moved_by(const Vec3& by) {
    PlaceChange out = UNCHANGED;
    out.shift[0] = by.x;
    out.shift[1] = by.y;
    out.shift[2] = by.z;
    return out;
}

PlaceChange scaled_about(const Vec3& centre, const Vec3& factors) {
    const double c[3] = {centre.x, centre.y, centre.z};
    const double f[3] = {factors.x, factors.y, factors.z};
    PlaceChange out{};
    for (int i = 0; i < 3; ++i) {
        out.linear[i][i] = f[i];
        out.shift[i] = c[i] - f[i] * c[i];
    }
    return out;
}

bool turned_about(const Vec3& centre, const Vec3& axis, float degrees, PlaceChange* out) {
    constexpr double RADIANS = 3.14159265358979323846 / 180.0;
    double n[3] = {axis.x, axis.y, axis.z};
    const double size = length(n);
    if (!(size > 0.0) || !std::isfinite(size)) { return false; }
    for (double& component : n) { component /= size; }
    const double c = std::cos(degrees * RADIANS), s = std::sin(degrees * RADIANS), rest = 1.0 - c;
    const double linear[3][3] = {
        {c + n[0] * n[0] * rest, n[0] * n[1] * rest - n[2] * s, n[0] * n[2] * rest + n[1] * s},
        {n[1] * n[0] * rest + n[2] * s, c + n[1] * n[1] * rest, n[1] * n[2] * rest - n[0] * s},
        {n[2] * n[0] * rest - n[1] * s, n[2] * n[1] * rest + n[0] * s, c + n[2] * n[2] * rest}};
    const double at[3] = {centre.x, centre.y, centre.z};
    for (int row = 0; row < 3; ++row) {
        out->shift[row] = at[row];
        for (int column = 0; column < 3; ++column) {
            out->linear[row][column] = linear[row][column];
            out->shift[row] -= linear[row][column] * at[column];
        }
    }
    return true;
}

bool edit_point_places(Session* session, Model* model, const std::vector<int32_t>& ids, const PlaceChange& change,
                       const DragSpace& space, EditRefusal* refused) {
    std::vector<Model*> targets;
    std::vector<Rest> rests;
    if (!edit_targets(session, model, &targets, refused) ||
        !find_rests(session, model, ids, change, space, &rests, refused)) {
        return false;
    }
    for (Model* target : targets) { store_rests(session, target, rests); }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
