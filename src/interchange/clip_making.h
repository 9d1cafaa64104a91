// Clips of this system made of animations, and what they cost.
#pragma once

#include <string>
#include <vector>

#include "interchange/motion_plan.h"

namespace pelt {

struct MadeClip {
    std::string name;                 // of the file that the row plays; empty for a row that stands still
    std::vector<ImportedFile> files;  // it and those that it pulls in, which come first
};

struct MadeAnimation {
    std::string name;             // as the files have it
    std::vector<MadeClip> clips;  // by row
    std::string note;             // rate and bound, as they are told
    std::string loss;             // where the bound is not kept; else empty
};

// The clips of an animation: stem is what the names of all its files begin with.
MadeAnimation make_clips(const MotionPlan& plan, const aiAnimation& animation, double scale, const std::string& stem);

// How far the points of a scene are at most, and on average, from where its source has them, over all its animations,
// in units of the source.
struct MotionCost {
    double largest_by_weights = 0.0;  // because two joints at most move a point
    double mean_by_weights = 0.0;
    double largest = 0.0;  // for all reasons: joints only turn
    double mean = 0.0;
};
MotionCost measure_motion(const MotionPlan& plan, const SourceScene& source);

}  // namespace pelt
