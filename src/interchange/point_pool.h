// The points, normals and primitives of one model, numbered as its file has them.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "interchange/soup.h"

namespace pelt {

// The highest id that a primitive holds.
inline constexpr size_t POOL_POINT_LIMIT = 32767;

struct PoolPoint {
    std::array<int32_t, 3> place;
    std::array<int16_t, 3> normal;  // as in the soup
    std::array<uint8_t, 4> colour;
    int32_t skin;
};

// Corners by number of their points, from 0, in the order of the soup.
struct PoolFace {
    int32_t look;
    int32_t count;
    std::array<uint32_t, 4> points;
    std::array<uint32_t, 4> normals;  // points that have the normals of the corners
};

struct PointPool {
    bool has_normals = false;
    std::vector<PoolPoint> points;
    std::vector<PoolFace> faces;
    std::map<int32_t, std::map<uint32_t, std::array<float, 2>>> uvees;  // by look, by point
};

// As few points as there can be: corners share one where place, colour and skin are the same, and a place has as many
// points as it has texture coordinates in one layer. A normal that no point has gets a point for itself, behind all
// others. A pool of more points than the limit holds is not complete. has_uvees tells by look whether its corners have
// coordinates of their own.
PointPool make_pool(const SoupPart& part, const std::vector<bool>& has_uvees);

}  // namespace pelt
