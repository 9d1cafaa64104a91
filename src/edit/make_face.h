// Faces made out of points, and turned over.
#pragma once

#include <cstdint>
#include <vector>

#include "edit/faces.h"
#include "scene/session.h"

namespace pelt {

// A line of a file holds no more.
inline constexpr int32_t POLYGON_CORNERS_MOST = 255;

enum class FaceForm { TRIANGLE, QUAD, POLYGON, CURVED };

struct FaceWish {
    FaceForm form;
    int32_t curve_type;           // of CURVED: 1 to 3 of three corners, 2 or 4 of four
    std::vector<int32_t> points;  // around the outline
};

// A face behind all others of its layer. Where a point belongs to no other face it gets the normal of this one. Of a
// polygon the outline is laid as a strip, from side to side.
bool edit_add_face(Session* session, Model* model, const Layer* layer, const FaceWish& wish, PrimitiveName* made,
                   EditRefusal* refused);

// Turns faces over, with the normals of those points that no other face uses.
bool edit_flip(Session* session, Model* model, const std::vector<PrimitiveName>& names, EditRefusal* refused);

// The order in which a strip takes the corners of an outline; and the record of a triangle or, of four corners, a quad.
std::vector<int16_t> strip_of_outline(const std::vector<int16_t>& outline);
Triangle triangle_of_outline(const std::vector<int16_t>& outline, int16_t curve_type);

}  // namespace pelt
