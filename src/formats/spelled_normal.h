// How a normal is written so that the reader, which stores every normal divided by its length, stores it again.
#pragma once

#include "foundation/math3d.h"

namespace pelt {

struct SpelledNormal {
    Vec3 written;
    bool found;  // false for a normal that reading makes of nothing, such as one of another length than 1
};

// The vector whose direction is read as the normal: exactly where one is found, otherwise within the last place.
SpelledNormal spell_normal(const Vec3& normal);

}  // namespace pelt
