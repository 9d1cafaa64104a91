// Which elements of one sequence stand for which of another.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pelt {

inline constexpr int NO_MATCH = -1;

// For each element of the second sequence the place of its own in the first, rising, or NO_MATCH for one that was
// added. Equal keys stand for each other; what lies between two such pairs on both sides is paired in its order, as an
// element that changed. Of a sequence that was mixed as much as can be found in order stays. Nearly linear in the
// lengths.
std::vector<int> match_sequences(const std::vector<std::string>& before, const std::vector<std::string>& after);

}  // namespace pelt
