// How a KeyedList finds a key. There are three ways and a list chooses by itself. Integer keys that run on by one from
// slot to slot, as ids from a counter do, are found by subtraction and cost no memory. Other lists are scanned while
// they are short, and get an index (open addressing with linear probing, holes closed on removal) when they outgrow
// that.
#include "foundation/list_storage.h"

#include <cstdlib>

#include "foundation/key_hash.h"

namespace pelt {

namespace {

constexpr int32_t SCAN_LIMIT = 16;  // used slots up to which a key is looked for without an index
constexpr uint32_t FIRST_INDEX_SIZE = 64;

// No file can hold keys that meet in one place: see key_hash.h.
uint32_t hash_int(int32_t key) { return static_cast<uint32_t>(key_hash(key)); }

uint32_t hash_text(const char* text) { return static_cast<uint32_t>(key_hash(text, list_key_length(text))); }

uint32_t hash_of_slot(const KeyedList* list, int32_t slot) {
    return list->kind == KEY_INT ? hash_int(list_int_key_at(list, slot)) : hash_text(list_text_key_at(list, slot));
}

// A cut text key is in no index: it is never found.
bool is_findable(const KeyedList* list, int32_t slot) {
    return list->kind != KEY_STRING || list_key_length(list_text_key_at(list, slot)) < KEY_TEXT_SIZE;
}

// The slot of an occupied entry for which match(slot) holds, by way of the index or, without one, in slot order.
template <typename Hash, typename Match>
int32_t find_with(const KeyedList* list, Hash hash, Match match) {
    const ListStorage* storage = list->storage;
    if (storage->index != nullptr) {
        for (uint32_t place = hash() & storage->index_mask;; place = (place + 1) & storage->index_mask) {
            const uint32_t entry = storage->index[place];
            if (entry == 0) { return -1; }
            const auto slot = static_cast<int32_t>(entry - 1);
            if (match(slot)) { return slot; }
        }
    }
    for (int32_t slot = list_next_slot(list, 0); slot < storage->used; slot = list_next_slot(list, slot + 1)) {
        if (match(slot)) { return slot; }
    }
    return -1;
}

void index_put(ListStorage* storage, uint32_t hash, int32_t slot) {
    uint32_t place = hash & storage->index_mask;
    while (storage->index[place] != 0) { place = (place + 1) & storage->index_mask; }
    storage->index[place] = static_cast<uint32_t>(slot) + 1;
    ++storage->index_count;
}

void index_drop(ListStorage* storage) {
    std::free(storage->index);
    storage->index = nullptr;
    storage->index_mask = 0;
    storage->index_count = 0;
}

// Whether the keys still run on by one from slot to slot with that of this slot added.
void note_consecutive(KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    const int32_t key = list_int_key_at(list, slot);
    if (list->count == 1 && slot == 0) {
        storage->consecutive = true;
        storage->first_key = key;
        index_drop(storage);
    } else if (storage->consecutive) {
        storage->consecutive = static_cast<int64_t>(key) == static_cast<int64_t>(storage->first_key) + slot;
    }
}

}  // namespace

int32_t list_slot_of(const KeyedList* list, int32_t key) {
    if (!list_has_storage(list) || list->kind != KEY_INT) { return -1; }
    const ListStorage* storage = list->storage;
    if (storage->consecutive) {
        const int64_t slot = static_cast<int64_t>(key) - storage->first_key;
        const bool found = slot >= 0 && slot < storage->used && list_slot_occupied(storage, static_cast<int32_t>(slot));
        return found ? static_cast<int32_t>(slot) : -1;
    }
    return find_with(
        list, [key] { return hash_int(key); },
        [list, key](int32_t slot) { return list_int_key_at(list, slot) == key; });
}

int32_t list_slot_of(const KeyedList* list, const char* key) {
    if (!list_has_storage(list) || list->kind != KEY_STRING || key == nullptr) { return -1; }
    const size_t length = list_key_length(key);
    if (length >= KEY_TEXT_SIZE) { return -1; }
    return find_with(
        list, [key] { return hash_text(key); },
        [list, key, length](int32_t slot) { return std::memcmp(list_text_key_at(list, slot), key, length + 1) == 0; });
}

void list_index_build(const KeyedList* list) {
    ListStorage* storage = list->storage;
    index_drop(storage);
    uint64_t size = FIRST_INDEX_SIZE;
    while (size < 2 * static_cast<uint64_t>(list->count) + 2) { size *= 2; }
    storage->index = static_cast<uint32_t*>(std::calloc(size, sizeof(uint32_t)));
    if (storage->index == nullptr) { return; }
    storage->index_mask = static_cast<uint32_t>(size - 1);
    for (int32_t slot = list_next_slot(list, 0); slot < storage->used; slot = list_next_slot(list, slot + 1)) {
        if (is_findable(list, slot)) { index_put(storage, hash_of_slot(list, slot), slot); }
    }
}

void list_key_added(KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    if (list->kind == KEY_INT) { note_consecutive(list, slot); }
    if (list->kind == KEY_NONE || storage->consecutive) { return; }
    if (storage->index == nullptr) {
        if (storage->used > SCAN_LIMIT) { list_index_build(list); }
        return;
    }
    if (!is_findable(list, slot)) { return; }
    const uint64_t places = static_cast<uint64_t>(storage->index_mask) + 1;
    if (3 * (static_cast<uint64_t>(storage->index_count) + 1) > 2 * places) {
        list_index_build(list);
        return;
    }
    index_put(storage, hash_of_slot(list, slot), slot);
}

void list_key_removed(KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    if (storage->index == nullptr || !is_findable(list, slot)) { return; }
    const uint32_t mask = storage->index_mask;
    uint32_t hole = hash_of_slot(list, slot) & mask;
    while (storage->index[hole] != static_cast<uint32_t>(slot) + 1) { hole = (hole + 1) & mask; }
    // Those that had to probe past it move up.
    for (uint32_t place = (hole + 1) & mask; storage->index[place] != 0; place = (place + 1) & mask) {
        const uint32_t home = hash_of_slot(list, static_cast<int32_t>(storage->index[place] - 1)) & mask;
        if (((place - home) & mask) >= ((place - hole) & mask)) {
            storage->index[hole] = storage->index[place];
            hole = place;
        }
    }
    storage->index[hole] = 0;
    --storage->index_count;
}

}  // namespace pelt
