// The inside of a KeyedList: its blocks and bitmap (list_storage.cpp) and the ways to find a key (list_index.cpp).
// Only these two and keyed_list.cpp include it.
#pragma once

#include <cstring>

#include "foundation/keyed_list.h"

namespace pelt {

inline constexpr int32_t LIST_FIRST_CAPACITY = 16;
inline constexpr int32_t LIST_WORD_SLOTS = 64;                // slots of a word of the bitmap
inline constexpr size_t LIST_TEXT_ENTRY = KEY_TEXT_SIZE + 1;  // a cut key is terminated too

inline bool list_has_storage(const KeyedList* list) {
    return list != nullptr && list->element_size >= 1 && list->storage != nullptr;
}

inline int32_t list_block_slots(int32_t block) { return block == 0 ? LIST_FIRST_CAPACITY : list_block_start(block); }

// Where the keys begin in a block: behind the elements, aligned for integers.
inline size_t list_keys_offset(const KeyedList* list, int32_t slots) {
    const size_t elements = static_cast<size_t>(slots) * static_cast<size_t>(list->element_size);
    return (elements + sizeof(int32_t) - 1) / sizeof(int32_t) * sizeof(int32_t);
}

inline size_t list_key_size(const KeyedList* list) {
    return list->kind == KEY_STRING ? LIST_TEXT_ENTRY : sizeof(int32_t);
}

// The entry of a slot in the key table. Occupied or not, the slot must be below the capacity.
inline unsigned char* list_key_entry(const KeyedList* list, int32_t slot) {
    const int32_t block = list_block_of(slot);
    const auto offset = static_cast<size_t>(slot - list_block_start(block));
    return list->storage->blocks[block] + list_keys_offset(list, list_block_slots(block)) +
           offset * list_key_size(list);
}

inline int32_t list_int_key_at(const KeyedList* list, int32_t slot) {
    int32_t key;
    std::memcpy(&key, list_key_entry(list, slot), sizeof key);
    return key;
}

inline const char* list_text_key_at(const KeyedList* list, int32_t slot) {
    return reinterpret_cast<const char*>(list_key_entry(list, slot));
}

// Length of a text as far as it matters: KEY_TEXT_SIZE for everything that does not fit.
inline size_t list_key_length(const char* text) {
    const void* end = std::memchr(text, 0, KEY_TEXT_SIZE);
    return end == nullptr ? KEY_TEXT_SIZE : static_cast<size_t>(static_cast<const char*>(end) - text);
}

// What grows a list throws std::bad_alloc when there is no memory for it, with the list as it was.

// Gives a list without storage its first slots; true.
bool list_storage_ensure(KeyedList* list);
void list_storage_release(KeyedList* list);

// Makes the destination's storage a copy of the source's, which it must not share; true. The destination has the
// source's kind and element size, and no index yet.
bool list_storage_copy(const KeyedList* source, KeyedList* destination);

// The bytes of a slot below the capacity, occupied or not.
inline unsigned char* list_slot_element(const KeyedList* list, int32_t slot) {
    const int32_t block = list_block_of(slot);
    const auto offset = static_cast<size_t>(slot - list_block_start(block));
    return list->storage->blocks[block] + offset * static_cast<size_t>(list->element_size);
}

// The slot that the next new key takes: the lowest free one, or the one behind the last.
int32_t list_free_slot(const KeyedList* list);

// Occupies the lowest free slot. The key is stored by the caller.
int32_t list_slot_take(KeyedList* list);

// Occupies this slot. False, with nothing done, when it is occupied already or is none that a list can have.
bool list_slot_take_at(KeyedList* list, int32_t slot);
void list_slot_release(KeyedList* list, int32_t slot);

// Slot of a key; -1 when it is absent, of the wrong type, or when the list has no storage.
int32_t list_slot_of(const KeyedList* list, int32_t key);
int32_t list_slot_of(const KeyedList* list, const char* key);

// To be called when a slot was taken and its key is stored, and before a slot is released.
void list_key_added(KeyedList* list, int32_t slot);
void list_key_removed(KeyedList* list, int32_t slot);

// Makes the index anew from the occupied slots. Without memory for it the list is scanned from then on.
void list_index_build(const KeyedList* list);

}  // namespace pelt
