// Finds the lowest slot whose vector equals another exactly, as a search through the slots in order would.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "foundation/math3d.h"

namespace pelt {

// Bits of the three numbers, with one zero for both.
struct ExactKey {
    uint32_t bits[3];
    bool operator==(const ExactKey&) const = default;
};

// Slots of one vector. A place in the table that is not used has no slots and was never given a key.
struct ExactEntry {
    ExactKey key;
    int32_t lowest = -1;  // slot, -1 when all were removed
    int32_t others = -1;  // place in ExactIndex::others of the slots above the lowest, -1 for none ever
    bool used = false;
};

// Zero-initialised, it is empty.
struct ExactIndex {
    std::vector<ExactEntry> table;  // open addressing, a power of 2 of places; emptied entries keep theirs
    uint32_t used = 0;
    std::vector<std::set<int32_t>> others;
};

// Makes room for so many vectors.
void exact_index_reserve(ExactIndex* index, uint32_t count);

// A vector with a non-number equals nothing: adding and removing it does nothing, finding it gives -1.
void exact_index_add(ExactIndex* index, const Vec3& vector, int32_t slot);
void exact_index_remove(ExactIndex* index, const Vec3& vector, int32_t slot);
int32_t exact_index_find(const ExactIndex& index, const Vec3& vector);

}  // namespace pelt
