// An index of vectors by exact equality of floats.
#include "reduce/exact_index.h"

#include <algorithm>
#include <bit>

#include "foundation/key_hash.h"

namespace pelt {

namespace {

bool is_comparable(const Vec3& v) { return v.x == v.x && v.y == v.y && v.z == v.z; }

uint32_t number_bits(float value) { return value == 0.0f ? 0U : std::bit_cast<uint32_t>(value); }

}  // namespace

size_t ExactHash::operator()(const Vec3& vector) const noexcept {
    const uint32_t bits[3] = {number_bits(vector.x), number_bits(vector.y), number_bits(vector.z)};
    return static_cast<size_t>(key_hash(bits, sizeof bits));
}

void exact_index_reserve(ExactIndex* index, uint32_t count) { index->lowest.reserve(count); }

void exact_index_add(ExactIndex* index, const Vec3& vector, int32_t slot) {
    if (!is_comparable(vector)) { return; }
    const auto [entry, is_new] = index->lowest.try_emplace(vector, slot);
    if (is_new || slot == entry->second) { return; }
    std::set<int32_t>& others = index->others[vector];
    others.insert(others.end(), std::max(slot, entry->second));  // at the end: slots mostly come in order
    entry->second = std::min(slot, entry->second);
}

void exact_index_remove(ExactIndex* index, const Vec3& vector, int32_t slot) {
    const auto entry = index->lowest.find(vector);
    if (entry == index->lowest.end()) { return; }
    const auto others = index->others.find(vector);
    const bool alone = others == index->others.end() || others->second.empty();
    if (slot != entry->second) {
        if (!alone) { others->second.erase(slot); }
    } else if (alone) {
        index->lowest.erase(entry);
    } else {
        entry->second = *others->second.begin();
        others->second.erase(others->second.begin());
    }
}

int32_t exact_index_find(const ExactIndex& index, const Vec3& vector) {
    const auto entry = index.lowest.find(vector);
    return entry != index.lowest.end() ? entry->second : -1;
}

}  // namespace pelt
