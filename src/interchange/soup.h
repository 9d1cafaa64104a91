// The faces of a scene with everything that stands at their corners, in the numbers that the format holds: what is
// left of a source before it becomes points and primitives.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace pelt {

inline constexpr int32_t NO_SKIN = -1;
inline constexpr float SOUP_NORMAL_SCALE = 1000.0f;

struct SoupVertex {
    std::array<int32_t, 3> place;
    std::array<int16_t, 3> normal;  // in thousandths; zeros for none
    std::array<float, 2> uv;
    std::array<uint8_t, 4> colour;  // red, green, blue, transparency, as a point has it
    int32_t skin;                   // NO_SKIN, or what moves it
};

struct SoupFace {
    int32_t look;                     // number of its layer's look
    int32_t count;                    // of corners: 1 for a lone point, 2 for a line
    std::array<uint32_t, 4> corners;  // in the order of the source, which is counter-clockwise; round its outline
};

// What becomes one model.
struct SoupPart {
    std::string name;
    bool coloured = false;  // some of its vertices have a colour of their own
    std::vector<SoupVertex> vertices;
    std::vector<SoupFace> faces;
};

// Removes the vertices that no face has.
void soup_compact(SoupPart* part);

// Two halves along the longest axis, each with faces; the second is empty for a part that cannot be cut.
std::array<SoupPart, 2> soup_halves(const SoupPart& part);

}  // namespace pelt
