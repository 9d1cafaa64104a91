// Finds the lowest slot whose vector equals another exactly, as a search through the slots in order would.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <unordered_map>

#include "foundation/math3d.h"

namespace pelt {

// It cannot throw, and so the table keeps no copy of it beside each vector: less memory to walk through.
struct ExactHash {
    size_t operator()(const Vec3& vector) const noexcept;
};

// Equality of floats is not that of their bits: the two zeros are equal.
struct ExactEqual {
    bool operator()(const Vec3& a, const Vec3& b) const { return a.x == b.x && a.y == b.y && a.z == b.z; }
};

template <typename Value>
using ExactMap = std::unordered_map<Vec3, Value, ExactHash, ExactEqual>;

// Most vectors belong to one slot. Zero-initialised, it is empty.
struct ExactIndex {
    ExactMap<int32_t> lowest;
    ExactMap<std::set<int32_t>> others;  // slots above the lowest
};

// Makes room for so many vectors.
void exact_index_reserve(ExactIndex* index, uint32_t count);

// A vector with a non-number equals nothing: adding and removing it does nothing, finding it gives -1.
void exact_index_add(ExactIndex* index, const Vec3& vector, int32_t slot);
void exact_index_remove(ExactIndex* index, const Vec3& vector, int32_t slot);
int32_t exact_index_find(const ExactIndex& index, const Vec3& vector);

}  // namespace pelt
