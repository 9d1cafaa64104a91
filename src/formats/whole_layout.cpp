// The order of the points in a file. What surprises: counts that deal the points right stay as they are, also where
// they are greater than what is left to deal; a model that was read comes out in the order it was read in.
#include "formats/whole_layout.h"

#include <algorithm>
#include <map>
#include <utility>

#include "formats/point_dealing.h"
#include "scene/model.h"

namespace pelt {

namespace {

using JointPair = std::pair<const Joint*, const Joint*>;

bool blends_can_be_written(const Model& model) {
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        if (blend.point_count < 1) { return false; }
    }
    return true;
}

// The lay-out of the model as it stands; false when its counts deal a point to other joints than its own.
bool lay_as_it_stands(const Model& model, WholeLayout* layout) {
    bool right = blends_can_be_written(model);
    size_t dealt = 0;
    deal_points(
        model, [](const Joint&) {},
        [&](const Point& point, const Joint* joint_a, const Joint* joint_b) {
            right = right && point.joint_a == joint_a && point.joint_b == joint_b;
            ++dealt;
        });
    if (!right) { return false; }
    for (const Joint& joint : list_elements<Joint>(model.joints)) { layout->joint_counts.push_back(joint.point_count); }
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        layout->blends.push_back(LaidBlend{&blend, blend.point_count});
    }
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const bool own = layout->points.size() >= dealt && (point->joint_a != nullptr || point->joint_b != nullptr);
        layout->points.push_back(LaidPoint{point.int_key(), &*point, own});
    }
    return true;
}

// Points that are dealt together, in the order of the groups; those of no group come last.
struct Groups {
    std::map<JointPair, size_t> by_joints;
    std::vector<std::vector<LaidPoint>> groups;
};

size_t add_group(Groups& groups, const Joint* joint_a, const Joint* joint_b) {
    groups.by_joints.emplace(JointPair{joint_a, joint_b}, groups.groups.size());
    groups.groups.emplace_back();
    return groups.groups.size() - 1;
}

void sort_points(Groups& groups, const Model& model) {
    groups.groups.emplace_back();
    const auto points = list_elements<Point>(model.points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const auto group = groups.by_joints.find(JointPair{point->joint_a, point->joint_b});
        const bool dealt = group != groups.by_joints.end();
        const bool own = !dealt && (point->joint_a != nullptr || point->joint_b != nullptr);
        const size_t place = dealt ? group->second : groups.groups.size() - 1;
        groups.groups[place].push_back(LaidPoint{point.int_key(), &*point, own});
    }
}

WholeLayout lay_anew(const Model& model) {
    Groups groups;
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        add_group(groups, &joint, model_find_joint(&model, joint.parent_name));
    }
    const size_t joints = groups.groups.size();
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        add_group(groups, blend.joint_a, blend.joint_b);
    }
    sort_points(groups, model);
    WholeLayout layout;
    const auto count_of = [&](size_t group) { return static_cast<int32_t>(groups.groups[group].size()); };
    for (size_t joint = 0; joint < joints; ++joint) { layout.joint_counts.push_back(count_of(joint)); }
    size_t group = joints;
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        if (count_of(group) > 0) { layout.blends.push_back(LaidBlend{&blend, count_of(group)}); }
        ++group;
    }
    for (const std::vector<LaidPoint>& points : groups.groups) {
        layout.points.insert(layout.points.end(), points.begin(), points.end());
    }
    return layout;
}

}  // namespace

WholeLayout whole_layout(const Model* model) {
    WholeLayout layout;
    if (model == nullptr || lay_as_it_stands(*model, &layout)) { return layout; }
    return lay_anew(*model);
}

void model_settle_counts(Model* model) {
    if (model == nullptr) { return; }
    const WholeLayout layout = whole_layout(model);
    auto left = static_cast<int32_t>(layout.points.size());
    const auto dealt = [&](int32_t count) {
        const int32_t taken = std::clamp(count, 0, left);
        left -= taken;
        return taken;
    };
    auto count = layout.joint_counts.begin();
    for (Joint& joint : list_elements<Joint>(model->joints)) { joint.point_count = dealt(*count++); }
    auto laid = layout.blends.begin();
    const auto blends = list_elements<BlendWeight>(model->blends);
    for (auto blend = blends.begin(); blend != blends.end(); ++blend) {
        const bool is_laid = laid != layout.blends.end() && laid->blend == &*blend;
        blend->point_count = is_laid ? dealt(laid++->count) : 0;
        if (blend->point_count == 0) { list_remove_slot(&model->blends, blend.slot()); }
    }
}

}  // namespace pelt
