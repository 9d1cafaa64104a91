// Models of this system made of soup, and the texts of their files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interchange/point_pool.h"
#include "interchange/soup.h"
#include "interchange/surface_look.h"

namespace pelt {

struct Model;

struct SkinShare {
    int32_t joint_a;  // -1 for none
    int32_t joint_b;
    float weight;
};

struct MadeJoint {
    std::string name;
    std::string parent;  // or "world"
    std::array<int32_t, 3> place;
};

struct MadeSkeleton {
    std::vector<MadeJoint> joints;
    std::vector<SkinShare> skins;  // by number of the soup
};

struct MadeModel {
    std::string text;           // of its file
    std::string error;          // why there is none; else empty
    int64_t bytes = 0;          // that its records take
    bool is_too_large = false;  // it needs more ids than primitives can name
};

// The text of the model of a part, which was read again and found the same.
MadeModel make_model(const SoupPart& part, const LookBook& book, const MadeSkeleton& skeleton,
                     const std::string& file_name);

// The text of a model of nothing but children of these names, at their places.
MadeModel make_parent_model(const std::vector<std::string>& children, const std::string& file_name);

}  // namespace pelt
