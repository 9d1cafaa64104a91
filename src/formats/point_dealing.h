// How the points of a model file come to their joints: a line of a joint or a blend group says a count, and the points
// are dealt out in their order, to the joints, then to the blend groups.
#pragma once

#include <concepts>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "scene/model.h"

namespace pelt {

// Calls on_joint with each joint that is dealt to, which ends with the points, and on_point with each point that is
// dealt and the joints that it goes to. The points behind those keep what their own lines say.
template <typename SomeModel, typename JointAction, typename PointAction>
    requires std::same_as<std::remove_const_t<SomeModel>, Model>
void deal_points(SomeModel& model, const JointAction& on_joint, const PointAction& on_point) {
    auto point = list_elements<Point>(model.points).begin();
    const auto deal = [&](int32_t count, auto* joint_a, auto* joint_b) {
        for (int32_t i = 0; i < count && point != std::default_sentinel; ++i, ++point) {
            on_point(*point, joint_a, joint_b);
        }
    };
    for (auto& joint : list_elements<Joint>(model.joints)) {
        if (point == std::default_sentinel) { return; }
        on_joint(joint);
        deal(joint.point_count, &joint, model_find_joint(&model, joint.parent_name));
    }
    for (const BlendWeight& blend : list_elements<BlendWeight>(model.blends)) {
        deal(blend.point_count, blend.joint_a, blend.joint_b);
    }
}

}  // namespace pelt
