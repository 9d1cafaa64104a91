// The scene as a model of its own: a line for each model that stands in it.
//
// What surprises: a line turns a child by three texts of seven characters. Of the many that come near a turn those are
// taken that move the corners of the model least.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "application/application.h"
#include "application/files_of_scene.h"
#include "application/name_beside.h"
#include "application/problem.h"
#include "application/save_file.h"
#include "application/scene_load.h"
#include "application/scene_save.h"
#include "edit/bounds.h"
#include "formats/model_save.h"
#include "foundation/file_access.h"
#include "foundation/text.h"
#include "scene/model.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

constexpr double DEGREES = 180.0 / std::numbers::pi;
constexpr size_t TURN_LENGTH = sizeof ChildLink::rotate[0] - 1;
constexpr float NEAR = 1e-4f;     // of the scene's size
constexpr double SHEAR = 1e-5;    // cosine of an angle that is taken for a right one
constexpr double UPRIGHT = 1e-6;  // cosine below which a right angle is one

using Corners = std::array<Vec3, 8>;
using Turns = std::array<std::string, 3>;

struct Placement {
    Vec3 place;
    Vec3 scale;
    Turns turns;
};

Vec3 column(const Mat4& m, int i) { return {m.m[i], m.m[4 + i], m.m[8 + i]}; }

double length(const Vec3& v) { return std::sqrt(double{v.x} * v.x + double{v.y} * v.y + double{v.z} * v.z); }

Corners corners_of(const Model* model) {
    const Box box = model_bounds(model, nullptr);
    Corners corners;
    for (size_t i = 0; i < corners.size(); ++i) {
        corners[i] = {(i & 1) != 0 ? box.upper.x : box.lower.x, (i & 2) != 0 ? box.upper.y : box.lower.y,
                      (i & 4) != 0 ? box.upper.z : box.lower.z};
    }
    return corners;
}

Vec3 moved(const Mat4& matrix, const Vec3& place) {
    Vec3 out;
    mat_transform_point(&matrix, &place, &out);
    return out;
}

// ---- turns ----

// The texts of an angle that are nearest to it, in each of the forms that it can have.
std::vector<std::string> angle_texts(double degrees) {
    std::vector<std::string> texts;
    for (const double turn : {0.0, 360.0, -360.0}) {
        for (const double step : {0.0, 1.0, -1.0}) {
            for (int decimals = 6; decimals >= 0; --decimals) {
                const double unit = std::pow(10.0, decimals);
                const double value = (std::round((degrees + turn) * unit) + step) / unit;
                const std::string text = float_to_text(value, decimals);
                if (text.size() > TURN_LENGTH) { continue; }
                texts.push_back(text);
                break;
            }
        }
    }
    return texts;
}

Mat4 placed(const Placement& placement) {
    ChildLink link{};
    link.position = placement.place;
    link.scale = placement.scale;
    for (size_t i = 0; i < 3; ++i) { str_copy(placement.turns[i].c_str(), link.rotate[i]); }
    return child_placement(&link);
}

// How far the corner that moves furthest comes to lie from where it is to.
double distance(const Mat4& wanted, const Placement& placement, const Corners& corners) {
    const Mat4 matrix = placed(placement);
    double furthest = 0.0;
    for (const Vec3& corner : corners) {
        const double each = length(vec_subtract(moved(matrix, corner), moved(wanted, corner)));
        furthest = each <= furthest ? furthest : each;  // a non-number counts
    }
    // Of a model without any extent its axes are compared.
    for (int i = 0; i < 3; ++i) {
        furthest = std::max(furthest, length(vec_subtract(column(matrix, i), column(wanted, i))) * NEAR);
    }
    return furthest;
}

// The angles about x, y and z of a rotation, and the same turn said the other way round.
std::array<std::array<double, 3>, 2> angles_of(const std::array<Vec3, 3>& axes) {
    const double cosine = std::hypot(double{axes[0].x}, double{axes[1].x});
    const bool upright = cosine < UPRIGHT;
    const double y = std::atan2(double{axes[2].x}, cosine);
    const double x =
        upright ? std::atan2(double{axes[1].z}, double{axes[1].y}) : std::atan2(-double{axes[2].y}, double{axes[2].z});
    const double z = upright ? 0.0 : std::atan2(-double{axes[1].x}, double{axes[0].x});
    return {{{x * DEGREES, y * DEGREES, z * DEGREES}, {x * DEGREES + 180, 180 - y * DEGREES, z * DEGREES + 180}}};
}

void find_turns(const Mat4& wanted, const std::array<Vec3, 3>& axes, const Corners& corners, Placement* best) {
    double least = std::numeric_limits<double>::infinity();
    for (const std::array<double, 3>& angles : angles_of(axes)) {
        const auto xs = angle_texts(angles[0]);
        const auto ys = angle_texts(angles[1]);
        const auto zs = angle_texts(angles[2]);
        for (const std::string& x : xs) {
            for (const std::string& y : ys) {
                for (const std::string& z : zs) {
                    const Placement tried{best->place, best->scale, {x, y, z}};
                    const double off = distance(wanted, tried, corners);
                    if (!(off < least)) { continue; }
                    least = off;
                    best->turns = tried.turns;
                }
            }
        }
    }
}

// ---- placements ----

Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vec3 across(const Vec3& v) {
    Vec3 out = cross(v, std::fabs(v.x) < 0.5f ? Vec3{1, 0, 0} : Vec3{0, 1, 0});
    vec_normalise(&out);
    return out;
}

// Axes of length 1 at right angles for those that a scale of 0 has left without any.
void complete(std::array<Vec3, 3>& axes, const std::array<bool, 3>& known) {
    const auto count = std::count(known.begin(), known.end(), true);
    if (count == 0) { axes = {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}}; }
    for (size_t i = 0; count == 1 && i < 3; ++i) {
        if (!known[i]) { continue; }
        axes[(i + 1) % 3] = across(axes[i]);
        axes[(i + 2) % 3] = cross(axes[i], axes[(i + 1) % 3]);
    }
    for (size_t i = 0; count == 2 && i < 3; ++i) {
        if (!known[i]) { axes[i] = cross(axes[(i + 1) % 3], axes[(i + 2) % 3]); }
    }
}

// False with the reason where no line can say it.
bool find_placement(const Mat4& wanted, const Corners& corners, double nearness, Placement* placement,
                    std::string* reason) {
    *reason = "it stands at no place";
    for (const float value : wanted.m) {
        if (!std::isfinite(value)) { return false; }
    }
    std::array<Vec3, 3> axes;
    std::array<bool, 3> known;
    std::array<double, 3> scale;
    for (int i = 0; i < 3; ++i) {
        const auto axis = static_cast<size_t>(i);
        axes[axis] = column(wanted, i);
        scale[axis] = length(axes[axis]);
        known[axis] = scale[axis] > 0.0;
        if (known[axis]) { vec_normalise(&axes[axis]); }
    }
    *reason = "it is sheared, which no line can say";
    for (size_t i = 0; i < 3; ++i) {
        const size_t next = (i + 1) % 3;
        if (known[i] && known[next] && std::fabs(vec_dot(axes[i], axes[next])) > SHEAR) { return false; }
    }
    complete(axes, known);
    if (vec_dot(cross(axes[0], axes[1]), axes[2]) < 0.0f) {
        scale[0] = -scale[0];
        axes[0] = {-axes[0].x, -axes[0].y, -axes[0].z};
    }
    placement->place = {wanted.m[3], wanted.m[7], wanted.m[11]};
    placement->scale = {to_float(scale[0]), to_float(scale[1]), to_float(scale[2])};
    find_turns(wanted, axes, corners, placement);
    *reason = "seven characters for an angle do not say how it is turned";
    return distance(wanted, *placement, corners) <= nearness;
}

// ---- the scene ----

const ModelState* state_of(const Session& session, const Model* model) {
    return list_at<const ModelState>(&session.model_states, model->state_index, 0);
}

double scene_size(const Session& session) {
    Vec3 low{};
    Vec3 high{};
    bool any = false;
    for (const RootModel& root : list_elements<RootModel>(session.root_models)) {
        const ModelState* state = state_of(session, root.model);
        if (state == nullptr) { continue; }
        for (const Vec3& corner : corners_of(root.model)) {
            const Vec3 place = moved(state->matrix, corner);
            if (!any) { low = high = place; }
            any = true;
            box_take_in(place, &low, &high);
        }
    }
    const Vec3 size = vec_subtract(high, low);
    const float largest = std::max({size.x, size.y, size.z});
    return largest > 0.0f && std::isfinite(largest) ? largest : EMPTY_SCENE_RADIUS;
}

bool is_still(const Session& session) {
    const auto roots = list_elements<const RootModel>(session.root_models);
    bool moves = session.animation_path != nullptr;
    for (const RootModel& root : roots) { moves = moves || root.animation != nullptr; }
    return !moves || save_refuse(PROBLEM_STATE, "the scene is animated, which a model cannot be");
}

bool may_be_named(const Model* model, const std::string& target, std::string* name) {
    const std::string file = model_file(model);
    const std::string of = std::string("model ") + model->name + ": ";
    if (file.empty()) { return save_refuse(PROBLEM_STATE, of + "it has no file yet: save it first"); }
    if (model_tree_changes(model) != 0) {
        return save_refuse(PROBLEM_UNSAVED, of + "it has changes that its file has not: save it first");
    }
    const std::string found = file_resolve(file.c_str());
    if (found.empty()) { return save_refuse(PROBLEM_FILE, of + "its file is gone", file); }
    if (found == file_resolve(target.c_str())) { return save_refuse(PROBLEM_STATE, of + "this is its file", target); }
    *name = child_name_of(name_beside(target, found));
    const bool fits = !name->empty() && name->size() < sizeof ChildLink::name;
    return fits || save_refuse(PROBLEM_STATE, of + "its file has no name that the line of a child can say", found);
}

// What a load of the file would refuse.
bool fits_a_tree(const Session& session) {
    TreeSize size{0, 1};
    int64_t bytes = 0;
    for (const RootModel& root : list_elements<const RootModel>(session.root_models)) {
        const TreeSize each = model_tree_size(root.model);
        size = {std::max(size.depth, each.depth + 1), size.nodes + each.nodes};
        bytes += model_record_bytes(root.model) + model_child_bytes(root.model);
    }
    const bool fits =
        size.depth <= MODEL_TREE_DEPTH_LIMIT && size.nodes <= MODEL_TREE_NODE_LIMIT && bytes <= MODEL_CHILD_BYTES_LIMIT;
    return fits || save_refuse(PROBLEM_STATE, "the models of the scene are more than one model can have below it");
}

bool add_root(const Session& session, const Model* root, const std::string& target, double nearness, Model* scene) {
    std::string name;
    if (!may_be_named(root, target, &name)) { return false; }
    const ModelState* state = state_of(session, root);
    Placement placement;
    std::string reason;
    if (state == nullptr || !find_placement(state->matrix, corners_of(root), nearness, &placement, &reason)) {
        return save_refuse(PROBLEM_STATE, std::string("model ") + root->name + ": " + reason);
    }
    const Vec3& place = placement.place;
    const Vec3& scale = placement.scale;
    model_add_child(scene, nullptr, name.c_str(), place.x, place.y, place.z, scale.x, scale.y, scale.z,
                    placement.turns[0].c_str(), placement.turns[1].c_str(), placement.turns[2].c_str());
    return true;
}

struct Release {
    void operator()(Model* model) const { model_release(model); }
};

}  // namespace

bool scene_save_as_model(Application* app, const std::string& file, SaveDone* done) {
    const Session& session = app->session;
    const std::string target = path_with_separators(file.c_str());
    if (list_count(&session.root_models) == 0) { return save_refuse(PROBLEM_STATE, "the scene is empty"); }
    if (!is_still(session) || !fits_a_tree(session) || !save_target_is_good(target)) { return false; }
    const std::unique_ptr<Model, Release> scene(model_create_long(target.c_str(), nullptr));
    const double nearness = scene_size(session) * NEAR;
    for (const RootModel& root : list_elements<const RootModel>(session.root_models)) {
        if (!add_root(session, root.model, target, nearness, scene.get())) { return false; }
    }
    if (!save_spares_scene(session, target)) { return false; }
    const ModelSave save = model_save_whole(scene.get(), scene->name);
    if (!save.refused.empty()) { return save_refuse(PROBLEM_STATE, save.refused); }
    done->path = target;
    return save_write(target, save.text);
}

}  // namespace pelt
