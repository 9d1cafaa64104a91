// How large a model is to be made so that its places are whole numbers.
#pragma once

#include <string>

#include "interchange/source_scene.h"

namespace pelt {

// Whole numbers up to this one are floats as well.
inline constexpr double LARGEST_COORDINATE = 16777216.0;

struct WholeScale {
    double scale;
    std::string note;   // the choice, as it is told
    std::string error;  // why there is none; else empty
};

// The scale that was asked for, or a power of ten: the smallest at which all places are whole and the model is large
// enough to be seen, otherwise the smallest at which rounding moves no place by more than a ten-thousandth of the
// model's size.
WholeScale choose_scale(const SourceScene& source, double wanted);

}  // namespace pelt
