// Joints by a script's word. What surprises: a joint owns no points, a point names its joints; how many points a joint
// has is counted anew behind each change, in the way in which they would stand in a file.
#include "edit/edit_joints.h"

#include <cmath>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "edit/ranks.h"
#include "formats/animation.h"
#include "formats/name_rules.h"
#include "formats/texture_map.h"
#include "foundation/text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"
#include "scene/measure.h"

namespace pelt {

namespace {

constexpr const char* WORLD = "world";

// Whole numbers, as a line holds them.
float whole(float value) { return static_cast<float>(float_to_int(std::round(value))); }
Vec3 whole_place(const Vec3& place) { return Vec3{whole(place.x), whole(place.y), whole(place.z)}; }

const Joint* joint_with_name(const Model* model, const std::string& name) {
    for (const Joint& joint : list_elements<Joint>(model->joints)) {
        if (name == joint.name) { return &joint; }
    }
    return nullptr;
}

// ---- checks ----

bool check_name(const Model* model, const std::string& name, EditRefusal* refused) {
    if (!name_fits_line(name, KEY_NAME_MOST) || name == WORLD) {
        return edit_refuse(
            refused, EDIT_ARGUMENT,
            "bad name of a joint \"" + name + "\": must be " + name_rule(KEY_NAME_MOST) + ", and not \"world\"");
    }
    if (joint_with_name(model, name) != nullptr) {
        return edit_refuse(refused, EDIT_STATE, "the model has a joint \"" + name + "\" already");
    }
    return true;
}

bool check_parent(const Model* model, const std::string& parent, EditRefusal* refused) {
    if (parent == WORLD || joint_named(model, parent) != nullptr) { return true; }
    return edit_refuse(refused, EDIT_ARGUMENT, "bad parent \"" + parent + "\": must be world, or a joint of the model");
}

bool check_circle(const Model* model, const std::string& name, const std::string& parent, EditRefusal* refused) {
    return !joint_would_hang_on_itself(model, name, parent) ||
           edit_refuse(refused, EDIT_STATE, "joint \"" + name + "\" would hang on itself");
}

// A joint that is the way of other things cannot go.
bool check_removal(Session* session, const std::vector<Model*>& targets, int32_t rank, EditRefusal* refused) {
    for (Model* target : targets) {
        const auto* joint = at_rank<const Joint>(target->joints, rank);
        const RootModel* own = session_root_of(session, target);
        if (own != nullptr && own->animation != nullptr) {
            return edit_refuse(refused, EDIT_STATE,
                               "a model of a scene list keeps its joints: the tracks of clips are counted by them");
        }
        for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
            if (root.animation != nullptr && root.animation->parent_joint == joint) {
                return edit_refuse(refused, EDIT_STATE,
                                   std::string("joint \"") + joint->name + "\" carries the model " + root.model->name +
                                       " of the scene list");
            }
        }
    }
    return true;
}

// ---- changes ----

// The joint and all below it.
std::unordered_set<const Joint*> joints_below(const Model* model, const Joint* top) {
    std::unordered_multimap<const Joint*, const Joint*> by_parent;
    for (const Joint& joint : list_elements<Joint>(model->joints)) {
        by_parent.emplace(model_find_joint(model, joint.parent_name), &joint);
    }
    std::unordered_set<const Joint*> below{top};
    for (std::vector<const Joint*> left{top}; !left.empty();) {
        const auto [first, last] = by_parent.equal_range(left.back());
        left.pop_back();
        for (auto each = first; each != last; ++each) {
            if (below.insert(each->second).second) { left.push_back(each->second); }
        }
    }
    return below;
}

// Everything that hangs on the joint goes as far as it does.
void move_with_joint(Session* session, Model* model, Joint* top, const Vec3& place) {
    const Vec3 way = vec_subtract(place, top->position);
    const auto moved = [&](const Vec3& from) {
        return whole_place(Vec3{from.x + way.x, from.y + way.y, from.z + way.z});
    };
    const std::unordered_set<const Joint*> below = joints_below(model, top);
    change_model(model);
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        if (below.count(&joint) != 0) { model_move_joint(model, &joint, moved(joint.position)); }
    }
    for (Point& point : list_elements<Point>(model->points)) {
        if (below.count(point.joint_a) == 0 || point.joint_a == nullptr) { continue; }
        change_point(model, &point);
        point.position = moved(point.position);
    }
    model_measure(model);
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        layer_map(model, &layer);
        session_forget_layer(session, &layer);
    }
}

void change_joint_by(Session* session, Model* model, Joint* joint, const JointEdit& edit) {
    if (edit.name && *edit.name != joint->name) { model_rename_joint(model, joint, edit.name->c_str()); }
    if (edit.parent && *edit.parent != joint->parent_name) {
        model_set_joint_parent(model, joint, edit.parent->c_str());
    }
    if (edit.place && edit.follow) {
        move_with_joint(session, model, joint, whole_place(*edit.place));
    } else if (edit.place) {
        model_move_joint(model, joint, whole_place(*edit.place));
    }
}

void finish(Session* session, const std::vector<Model*>& targets) {
    for (Model* target : targets) {
        settle_counts(target);
        session_forget_poses(session, target);
    }
    scene_evaluate(session);
    models_changed_alike(targets);
}

}  // namespace

const Joint* joint_named(const Model* model, const std::string& name) { return model_find_joint(model, name.c_str()); }

bool joint_would_hang_on_itself(const Model* model, const std::string& name, const std::string& parent) {
    std::string above = parent;
    // The bound is for circles that stand already.
    for (int32_t steps = list_count(&model->joints) + 1; steps > 0 && above != WORLD; --steps) {
        if (above == name) { return true; }
        const Joint* joint = joint_named(model, above);
        if (joint == nullptr) { return false; }
        above = joint->parent_name;
    }
    return false;
}

void settle_counts(Model* model) {
    using JointPair = std::pair<const Joint*, const Joint*>;
    std::map<JointPair, int32_t> counts;  // of points, each to be given out once
    for (const Point& point : list_elements<Point>(model->points)) { ++counts[{point.joint_a, point.joint_b}]; }
    const auto take = [&](const Joint* joint_a, const Joint* joint_b) {
        const auto found = counts.find({joint_a, joint_b});
        return found != counts.end() ? std::exchange(found->second, 0) : 0;
    };
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        const int32_t count = take(&joint, model_find_joint(model, joint.parent_name));
        if (count == joint.point_count) { continue; }
        change_element(model, nullptr, CONTENT_JOINTS, &joint);
        joint.point_count = count;
    }
    const auto blends = list_elements<BlendWeight>(model->blends);
    for (auto blend = blends.begin(); blend != blends.end(); ++blend) {
        const int32_t count = take(blend->joint_a, blend->joint_b);
        if (count == blend->point_count) { continue; }
        change_slot(model, nullptr, CONTENT_BLENDS, blend.slot());
        blend->point_count = count;
        if (count == 0) { list_remove_slot(&model->blends, blend.slot()); }
    }
}

bool edit_joint(Session* session, Model* model, const Joint* joint, const JointEdit& edit, EditRefusal* refused) {
    const std::string name = edit.name ? *edit.name : joint->name;
    const std::string parent = edit.parent ? *edit.parent : joint->parent_name;
    if (name != joint->name && !check_name(model, name, refused)) { return false; }
    if (edit.parent && *edit.parent != joint->name && !check_parent(model, parent, refused)) { return false; }
    if (edit.parent && !check_circle(model, joint->name, parent, refused)) { return false; }
    if (name != joint->name && !check_circle(model, name, parent, refused)) { return false; }
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    const int32_t rank = rank_in(model->joints, joint);
    for (Model* target : targets) { change_joint_by(session, target, at_rank<Joint>(target->joints, rank), edit); }
    finish(session, targets);
    return true;
}

bool edit_new_joint(Session* session, Model* model, const std::string& name, const JointEdit& edit,
                    EditRefusal* refused) {
    if (edit.name || edit.follow) {
        return edit_refuse(refused, EDIT_ARGUMENT,
                           "a new joint has its name already, and nothing that could follow it");
    }
    const std::string parent = edit.parent ? *edit.parent : WORLD;
    std::vector<Model*> targets;
    if (!check_name(model, name, refused) || !check_parent(model, parent, refused) ||
        !check_circle(model, name, parent, refused) || !edit_targets(session, model, &targets, refused)) {
        return false;
    }
    const Vec3 place = whole_place(edit.place.value_or(Vec3{0.0f, 0.0f, 0.0f}));
    for (Model* target : targets) {
        if (model_append_joint(target, name.c_str(), place, parent.c_str()) == nullptr) {
            return edit_refuse(refused, EDIT_STATE, "the model has no room for another joint");
        }
    }
    finish(session, targets);
    return true;
}

bool edit_remove_joint(Session* session, Model* model, const Joint* joint, EditRefusal* refused) {
    std::vector<Model*> targets;
    const int32_t rank = rank_in(model->joints, joint);
    if (!edit_targets(session, model, &targets, refused) || !check_removal(session, targets, rank, refused)) {
        return false;
    }
    for (Model* target : targets) {
        auto* going = at_rank<Joint>(target->joints, rank);
        session_forget_poses(session, target);  // while the joint is there to be forgotten
        model_remove_joint(target, going);
    }
    finish(session, targets);
    return true;
}

bool edit_bind(Session* session, Model* model, const std::vector<int32_t>& points, const Binding& binding,
               EditRefusal* refused) {
    std::vector<Model*> targets;
    if (binding.joint_a == nullptr && binding.joint_b != nullptr) {
        return edit_refuse(refused, EDIT_ARGUMENT, "a second joint needs a first one");
    }
    if (binding.joint_a != nullptr && binding.joint_a == binding.joint_b) {
        return edit_refuse(refused, EDIT_ARGUMENT, "the two joints are one");
    }
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    const int32_t rank_a = rank_in(model->joints, binding.joint_a);
    const int32_t rank_b = rank_in(model->joints, binding.joint_b);
    for (Model* target : targets) {
        auto* joint_a = at_rank<Joint>(target->joints, rank_a);
        auto* joint_b = at_rank<Joint>(target->joints, rank_b);
        // With one joint the other share, which is none, goes to its parent: so does the reader deal points.
        if (joint_a != nullptr && joint_b == nullptr) { joint_b = model_find_joint(target, joint_a->parent_name); }
        for (const int32_t id : points) {
            model_bind_point(target, list_find<Point>(&target->points, id), joint_a, joint_b, binding.share);
        }
    }
    finish(session, targets);
    return true;
}

bool edit_weight(Session* session, Model* model, const std::vector<int32_t>& points, float weight,
                 EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    for (Model* target : targets) {
        for (const int32_t id : points) {
            Point* point = list_find<Point>(&target->points, id);
            model_bind_point(target, point, point->joint_a, point->joint_b, weight);
        }
    }
    finish(session, targets);
    return true;
}

}  // namespace pelt
