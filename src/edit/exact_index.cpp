// An index of vectors by exact equality of floats. What surprises: equality is not that of the bits, for the two zeros
// are equal and a non-number equals nothing, itself included.

#include "edit/exact_index.h"

#include <bit>

namespace pelt {

namespace {

constexpr uint64_t HASH_FACTOR = 0x9E3779B97F4A7C15ULL;

bool is_comparable(const Vec3& v) {
    return v.x == v.x && v.y == v.y && v.z == v.z;
}

uint32_t number_bits(float value) {
    return value == 0.0f ? 0U : std::bit_cast<uint32_t>(value);
}

ExactKey key_of(const Vec3& v) {
    return ExactKey{{number_bits(v.x), number_bits(v.y), number_bits(v.z)}};
}

}  // namespace

size_t ExactKeyHash::operator()(const ExactKey& key) const {
    uint64_t hash = 0;
    for (const uint32_t bits : key.bits) {
        hash = (hash ^ bits) * HASH_FACTOR;
        hash ^= hash >> 29;
    }
    return static_cast<size_t>(hash);
}

void exact_index_add(ExactIndex* index, const Vec3& vector, int32_t slot) {
    if (is_comparable(vector)) {
        (*index)[key_of(vector)].insert(slot);
    }
}

void exact_index_remove(ExactIndex* index, const Vec3& vector, int32_t slot) {
    const auto entry = is_comparable(vector) ? index->find(key_of(vector)) : index->end();
    if (entry == index->end()) {
        return;
    }
    entry->second.erase(slot);
    if (entry->second.empty()) {
        index->erase(entry);
    }
}

int32_t exact_index_find(const ExactIndex& index, const Vec3& vector) {
    const auto entry = is_comparable(vector) ? index.find(key_of(vector)) : index.end();
    return entry != index.end() ? *entry->second.begin() : -1;
}

}  // namespace pelt
