// A turn as the three texts by which scripts and files say it.
#pragma once

#include <array>
#include <string>

#include "foundation/math3d.h"

namespace pelt {

// Angles in degrees about x, y and z, of which mat_rotate_text makes the rotation of the matrix again. What in the
// matrix is no rotation is left out.
std::array<std::string, 3> rotation_texts(const Mat4& matrix);

}  // namespace pelt
