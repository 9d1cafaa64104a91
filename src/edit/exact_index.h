// Finds the lowest slot whose vector equals another exactly, as a search through the slots in order would.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <unordered_map>

#include "foundation/math3d.h"

namespace pelt {

// Bits of the three numbers, with one zero for both.
struct ExactKey {
    uint32_t bits[3];
    bool operator==(const ExactKey&) const = default;
};

struct ExactKeyHash {
    size_t operator()(const ExactKey& key) const;
};

using ExactIndex = std::unordered_map<ExactKey, std::set<int32_t>, ExactKeyHash>;

// A vector with a non-number equals nothing: adding and removing it does nothing, finding it gives -1.
void exact_index_add(ExactIndex* index, const Vec3& vector, int32_t slot);
void exact_index_remove(ExactIndex* index, const Vec3& vector, int32_t slot);
int32_t exact_index_find(const ExactIndex& index, const Vec3& vector);

}  // namespace pelt
