// A file deals its points out by counts. Whose count a point is in shows when they are dealt once more; where that
// gives a point to others than its own joints, since it was bound by hand, its own joints say it.
#include "edit/binding_counts.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_map>

#include "scene/change.h"

namespace pelt {

namespace {

using JointPair = std::pair<const Joint*, const Joint*>;

struct Deal {
    std::unordered_map<const Point*, PointCounter> dealt;  // of points that come to their own joints
    std::map<JointPair, PointCounter> by_joints;           // the first counter of each pair
};

Deal deal_again(Model* model) {
    Deal deal;
    auto point = list_elements<Point>(model->points).begin();
    const auto take = [&](int32_t count, const Joint* a, const Joint* b, PointCounter counter) {
        deal.by_joints.emplace(JointPair{a, b}, counter);
        for (int32_t i = 0; i < count && point != std::default_sentinel; ++i, ++point) {
            if (point->joint_a == a && point->joint_b == b) { deal.dealt.emplace(&*point, counter); }
        }
    };
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        take(joint.point_count, &joint, model_find_joint(model, joint.parent_name), {&joint, nullptr});
    }
    for (BlendWeight& blend : list_elements<BlendWeight>(model->blends)) {
        take(blend.point_count, blend.joint_a, blend.joint_b, {nullptr, &blend});
    }
    return deal;
}

PointCounter counter_of(const Deal& deal, const Point* point) {
    if (point == nullptr || (point->joint_a == nullptr && point->joint_b == nullptr)) { return {}; }
    const auto dealt = deal.dealt.find(point);
    if (dealt != deal.dealt.end()) { return dealt->second; }
    const auto found = deal.by_joints.find(JointPair{point->joint_a, point->joint_b});
    return found != deal.by_joints.end() ? found->second : PointCounter{};
}

}  // namespace

std::vector<PointCounter> point_counters(Model* model, const std::vector<int32_t>& ids) {
    std::vector<PointCounter> counters(ids.size());
    if (list_count(&model->joints) == 0) { return counters; }
    const Deal deal = deal_again(model);
    std::transform(ids.begin(), ids.end(), counters.begin(),
                   [&](int32_t id) { return counter_of(deal, list_find<Point>(&model->points, id)); });
    return counters;
}

void raise_counts(Model* model, const std::vector<PointCounter>& counters) {
    for (const PointCounter& counter : counters) {
        if (counter.joint != nullptr) {
            change_element(model, nullptr, CONTENT_JOINTS, counter.joint);
            joint_gain_point(counter.joint);
        } else if (counter.blend != nullptr && counter.blend->point_count < INT32_MAX) {
            change_element(model, nullptr, CONTENT_BLENDS, counter.blend);
            ++counter.blend->point_count;
        }
    }
}

void lower_counts(Model* model, const std::vector<PointCounter>& counters) {
    for (const PointCounter& counter : counters) {
        if (counter.joint != nullptr && counter.joint->point_count > 0) {
            change_element(model, nullptr, CONTENT_JOINTS, counter.joint);
            --counter.joint->point_count;
        } else if (counter.blend != nullptr && counter.blend->point_count > 0) {
            change_element(model, nullptr, CONTENT_BLENDS, counter.blend);
            if (--counter.blend->point_count == 0) {
                list_remove_slot(&model->blends, list_slot_of_element(&model->blends, counter.blend));
            }
        }
    }
}

}  // namespace pelt
