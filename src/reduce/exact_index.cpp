// An index of vectors by exact equality of floats. What surprises: equality is not that of the bits, for the two zeros
// are equal and a non-number equals nothing, itself included. Most vectors belong to one slot, which stands in the
// table itself; only the others go into a sorted set.
#include "reduce/exact_index.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

#include "foundation/key_hash.h"

namespace pelt {

namespace {

constexpr uint32_t FIRST_TABLE = 16;

bool is_comparable(const Vec3& v) { return v.x == v.x && v.y == v.y && v.z == v.z; }

uint32_t number_bits(float value) { return value == 0.0f ? 0U : std::bit_cast<uint32_t>(value); }

ExactKey key_of(const Vec3& v) { return ExactKey{{number_bits(v.x), number_bits(v.y), number_bits(v.z)}}; }

size_t hash_of(const ExactKey& key) { return static_cast<size_t>(key_hash(key.bits, sizeof key.bits)); }

// Where the key stands, or would be put. The table has a free place.
size_t place_of(const std::vector<ExactEntry>& table, const ExactKey& key) {
    const size_t mask = table.size() - 1;
    size_t place = hash_of(key) & mask;
    while (table[place].used && table[place].key != key) { place = (place + 1) & mask; }
    return place;
}

// The entry of the vector, null when there is none; as const as the table is.
template <typename Table>
auto entry_of(Table& table, const Vec3& vector) -> decltype(table.data()) {
    if (table.empty() || !is_comparable(vector)) { return nullptr; }
    auto& entry = table[place_of(table, key_of(vector))];
    return entry.used ? &entry : nullptr;
}

// Entries that were emptied are dropped, unless they had several slots once.
void rebuild(ExactIndex* index, size_t places) {
    std::vector<ExactEntry> table(places);
    index->used = 0;
    for (const ExactEntry& entry : index->table) {
        if (entry.used && (entry.lowest >= 0 || entry.others >= 0)) {
            table[place_of(table, entry.key)] = entry;
            ++index->used;
        }
    }
    index->table = std::move(table);
}

std::set<int32_t>& others_of(ExactIndex* index, ExactEntry* entry) {
    if (entry->others < 0) {
        entry->others = static_cast<int32_t>(index->others.size());
        index->others.emplace_back();
    }
    return index->others[static_cast<size_t>(entry->others)];
}

}  // namespace

void exact_index_reserve(ExactIndex* index, uint32_t count) {
    const size_t places = std::bit_ceil(size_t{count} * 2 + FIRST_TABLE);  // at most half full
    if (places > index->table.size()) { rebuild(index, places); }
}

void exact_index_add(ExactIndex* index, const Vec3& vector, int32_t slot) {
    if (!is_comparable(vector)) { return; }
    if ((size_t{index->used} + 1) * 2 > index->table.size()) {
        rebuild(index, std::bit_ceil(size_t{index->used} * 4 + FIRST_TABLE));
    }
    ExactEntry& entry = index->table[place_of(index->table, key_of(vector))];
    if (!entry.used) {
        entry.used = true;
        entry.key = key_of(vector);
        ++index->used;
    }
    if (entry.lowest < 0) {
        entry.lowest = slot;
    } else if (slot != entry.lowest) {
        std::set<int32_t>& others = others_of(index, &entry);
        others.insert(others.end(), std::max(slot, entry.lowest));  // at the end: slots mostly come in order
        entry.lowest = std::min(slot, entry.lowest);
    }
}

void exact_index_remove(ExactIndex* index, const Vec3& vector, int32_t slot) {
    ExactEntry* entry = entry_of(index->table, vector);
    if (entry == nullptr) { return; }
    std::set<int32_t>* others = entry->others >= 0 ? &index->others[static_cast<size_t>(entry->others)] : nullptr;
    if (slot != entry->lowest) {
        if (others != nullptr) { others->erase(slot); }
    } else if (others != nullptr && !others->empty()) {
        entry->lowest = *others->begin();
        others->erase(others->begin());
    } else {
        entry->lowest = -1;
    }
}

int32_t exact_index_find(const ExactIndex& index, const Vec3& vector) {
    const ExactEntry* entry = entry_of(index.table, vector);
    return entry != nullptr ? entry->lowest : -1;
}

}  // namespace pelt
