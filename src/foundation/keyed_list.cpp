// The one collection of the system: slots of fixed-size elements with keys.
//
// What surprises: several answers look odd and are relied on. A repeated add is a find, keys below 1 are never removed,
// a slot used again shows the bytes of its former tenant, and an empty list leaves its cursor where it was. The blocks
// are in list_storage.cpp, the ways to find a key in list_index.cpp.
#include "foundation/keyed_list.h"

#include <bit>
#include <cstring>

#include "foundation/list_storage.h"

namespace pelt {

namespace {

int free_slot(KeyedList* list, int32_t slot) {
    list_key_removed(list, slot);
    if (list->kind == KEY_INT) { std::memset(list_key_entry(list, slot), 0, sizeof(int32_t)); }
    list_slot_release(list, slot);
    return 1;
}

void store_text_key(KeyedList* list, int32_t slot, const char* key) {
    unsigned char* entry = list_key_entry(list, slot);
    const size_t length = list_key_length(key);
    std::memcpy(entry, key, length);
    entry[length] = 0;
}

// Hands out the element and the key of the cursor's slot.
void* walk_element(KeyedList* list, int32_t* int_key, const char** text_key) {
    void* element = list_at(list, list->cursor, 0);
    if (element != nullptr && int_key != nullptr) { *int_key = list_int_key(list, list->cursor); }
    if (element != nullptr && text_key != nullptr) { *text_key = list_text_key(list, list->cursor); }
    return element;
}

void* walk_first(KeyedList* list, int32_t* int_key, const char** text_key) {
    if (!list_has_storage(list) || list->count == 0) {
        return nullptr;  // the cursor of an empty list stays where it was: intended
    }
    list->cursor = list_next_slot(list, 0);
    return walk_element(list, int_key, text_key);
}

void* walk_next(KeyedList* list, int32_t* int_key, const char** text_key) {
    if (!list_has_storage(list)) { return nullptr; }
    list->cursor = list->cursor < list->capacity ? list_next_slot(list, list->cursor + 1) : list->capacity;
    return walk_element(list, int_key, text_key);
}

// Occupied slots before this one. Without holes there is nothing to count: a model of many joints asks for the rank of
// each.
int32_t rank_of(const KeyedList* list, int32_t slot) {
    if (list->count == list->storage->used) { return slot; }
    const uint64_t* occupied = list->storage->occupied;
    int32_t rank = 0;
    for (int32_t word = 0; word < slot / LIST_WORD_SLOTS; ++word) { rank += std::popcount(occupied[word]); }
    const uint64_t below = (uint64_t{1} << (slot % LIST_WORD_SLOTS)) - 1;
    return rank + std::popcount(occupied[slot / LIST_WORD_SLOTS] & below);
}

int32_t slot_or_rank(const KeyedList* list, int32_t slot, int by_rank) {
    return slot >= 0 && by_rank != 0 ? rank_of(list, slot) : slot;
}

}  // namespace

int list_init(KeyedList* list, int32_t element_size, int32_t kind) {
    if (list == nullptr || element_size < 1 || kind < KEY_NONE || kind > KEY_STRING) { return 0; }
    *list = KeyedList{};
    list->element_size = element_size;
    list->kind = kind;
    return 1;
}

int list_free(KeyedList* list) {
    if (list == nullptr) { return 0; }
    list_storage_release(list);
    *list = KeyedList{};
    return 1;
}

int list_clear(KeyedList* list) {
    if (list == nullptr) { return 0; }
    const int32_t element_size = list->element_size;
    const int32_t kind = list->kind;
    list_free(list);
    list_init(list, element_size, kind);  // a list never set up stays so, which is no failure
    return 1;
}

int list_copy(const KeyedList* source, KeyedList* destination) {
    if (source == nullptr || destination == nullptr) { return 0; }
    if (source == destination) { return 1; }
    *destination = *source;
    destination->storage = nullptr;
    if (source->capacity < 1) { return 1; }
    if (!list_storage_copy(source, destination)) {
        list_clear(destination);
        return 0;
    }
    if (source->storage->index != nullptr) { list_index_build(destination); }
    return 1;
}

void* list_add(KeyedList* list, int32_t key) {
    if (list == nullptr || list->element_size < 1 || list->kind == KEY_STRING || !list_storage_ensure(list)) {
        return nullptr;
    }
    int32_t slot = list_slot_of(list, key);
    if (slot < 0) {
        slot = list_slot_take(list);
        if (slot < 0) { return nullptr; }
        std::memcpy(list_key_entry(list, slot), &key, sizeof key);
        list_key_added(list, slot);
    }
    return list_at(list, slot, 0);
}

void* list_add(KeyedList* list, const char* key) {
    // The storage comes before the test of the text: a refused null text still gives the list its first slots.
    if (list == nullptr || list->element_size < 1 || list->kind != KEY_STRING || !list_storage_ensure(list) ||
        key == nullptr) {
        return nullptr;
    }
    int32_t slot = list_slot_of(list, key);
    if (slot < 0) {
        slot = list_slot_take(list);
        if (slot < 0) { return nullptr; }
        store_text_key(list, slot, key);
        list_key_added(list, slot);
    }
    return list_at(list, slot, 0);
}

int32_t list_slot_for(const KeyedList* list, int32_t key) {
    if (list == nullptr || list->element_size < 1 || list->kind == KEY_STRING) { return -1; }
    const int32_t slot = list_slot_of(list, key);
    return slot < 0 ? list_free_slot(list) : slot;
}

int32_t list_slot_for(const KeyedList* list, const char* key) {
    if (list == nullptr || list->element_size < 1 || list->kind != KEY_STRING || key == nullptr) { return -1; }
    const int32_t slot = list_slot_of(list, key);
    return slot < 0 ? list_free_slot(list) : slot;
}

void* list_add_at(KeyedList* list, int32_t slot, int32_t key) {
    if (list == nullptr || list->element_size < 1 || list->kind == KEY_STRING || !list_slot_take_at(list, slot)) {
        return nullptr;
    }
    std::memcpy(list_key_entry(list, slot), &key, sizeof key);
    list_key_added(list, slot);
    return list_at(list, slot, 0);
}

void* list_add_at(KeyedList* list, int32_t slot, const char* key) {
    if (list == nullptr || list->element_size < 1 || list->kind != KEY_STRING || key == nullptr ||
        !list_slot_take_at(list, slot)) {
        return nullptr;
    }
    store_text_key(list, slot, key);
    list_key_added(list, slot);
    return list_at(list, slot, 0);
}

void* list_slot_bytes(const KeyedList* list, int32_t slot) {
    return list_has_storage(list) && slot >= 0 && slot < list->capacity ? list_slot_element(list, slot) : nullptr;
}

int list_remove(KeyedList* list, int32_t key) {
    if (key < 1) {
        return 0;  // keys below 1 can be added and found but not removed: intended
    }
    const int32_t slot = list_slot_of(list, key);
    return slot < 0 ? 0 : free_slot(list, slot);
}

int list_remove(KeyedList* list, const char* key) {
    const int32_t slot = list_slot_of(list, key);
    return slot < 0 ? 0 : free_slot(list, slot);
}

int list_remove_slot(KeyedList* list, int32_t slot) {
    return list_at(list, slot, 0) == nullptr ? 0 : free_slot(list, slot);
}

const void* list_find_any(const KeyedList* list, int32_t key) { return list_at(list, list_slot_of(list, key), 0); }

const void* list_find(const KeyedList* list, const char* key) { return list_at(list, list_slot_of(list, key), 0); }

void* list_first(KeyedList* list) { return walk_first(list, nullptr, nullptr); }

void* list_first(KeyedList* list, int32_t* key) { return walk_first(list, key, nullptr); }

void* list_first(KeyedList* list, const char** key) { return walk_first(list, nullptr, key); }

void* list_next(KeyedList* list) { return walk_next(list, nullptr, nullptr); }

void* list_next(KeyedList* list, int32_t* key) { return walk_next(list, key, nullptr); }

void* list_next(KeyedList* list, const char** key) { return walk_next(list, nullptr, key); }

int32_t list_count(const KeyedList* list) { return list_has_storage(list) ? list->count : 0; }

int32_t list_index_of(const KeyedList* list, int32_t key, int by_rank) {
    return slot_or_rank(list, list_slot_of(list, key), by_rank);
}

int32_t list_index_of(const KeyedList* list, const char* key, int by_rank) {
    return slot_or_rank(list, list_slot_of(list, key), by_rank);
}

const void* list_at_rank(const KeyedList* list, int32_t rank) {
    if (!list_has_storage(list) || rank < 0 || rank >= list->count) { return nullptr; }
    int32_t word = 0;
    for (int32_t ones; rank >= (ones = std::popcount(list->storage->occupied[word])); ++word) { rank -= ones; }
    uint64_t bits = list->storage->occupied[word];
    for (; rank > 0; --rank) { bits &= bits - 1; }
    return list_at(list, word * LIST_WORD_SLOTS + std::countr_zero(bits), 0);
}

int32_t list_int_key(const KeyedList* list, int32_t slot) {
    return list_at(list, slot, 0) == nullptr || list->kind == KEY_STRING ? 0 : list_int_key_at(list, slot);
}

const char* list_text_key(const KeyedList* list, int32_t slot) {
    return list_at(list, slot, 0) == nullptr || list->kind != KEY_STRING ? nullptr : list_text_key_at(list, slot);
}

}  // namespace pelt
