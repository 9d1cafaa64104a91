// The blocks in which a KeyedList keeps its elements and keys, and the bitmap of its occupied slots.
//
// What surprises: nothing here ever moves. Storage grows by whole blocks that double, so that a slot is found by the
// highest bit of its number, and a pointer to an element or a key text holds until the list is cleared.
#include "foundation/list_storage.h"

#include <bit>
#include <cstdlib>
#include <new>

namespace pelt {

namespace {

constexpr int32_t LAST_CAPACITY = 1 << 30;  // doubling this would leave 32 bits
constexpr int32_t BLOCK_LIMIT = 27;         // blocks that make up LAST_CAPACITY
constexpr int32_t SMALL_BLOCKS = 2;

int32_t block_count(const KeyedList* list) { return list->capacity < 1 ? 0 : list_block_of(list->capacity - 1) + 1; }

int32_t word_count(int32_t capacity) { return (capacity + LIST_WORD_SLOTS - 1) / LIST_WORD_SLOTS; }

size_t block_bytes(const KeyedList* list, int32_t block) {
    const int32_t slots = list_block_slots(block);
    return list_keys_offset(list, slots) + static_cast<size_t>(slots) * list_key_size(list);
}

// Zero-filled.
template <typename Element>
Element* new_array(size_t count) {
    auto* array = static_cast<Element*>(std::calloc(count, sizeof(Element)));
    if (array == nullptr) { throw std::bad_alloc(); }
    return array;
}

// Storage without any slot.
ListStorage* storage_new() {
    auto* storage = new_array<ListStorage>(1);
    storage->blocks = storage->small_blocks;
    storage->occupied = &storage->small_occupied;
    return storage;
}

// Room in the bitmap for this many slots, the new ones free.
void occupied_reserve(ListStorage* storage, int32_t old_capacity, int32_t capacity) {
    const int32_t old_words = word_count(old_capacity);
    const int32_t words = word_count(capacity);
    if (words <= 1 || words == old_words) { return; }
    auto* occupied = new_array<uint64_t>(static_cast<size_t>(words));
    std::memcpy(occupied, storage->occupied, static_cast<size_t>(old_words) * sizeof(uint64_t));
    if (storage->occupied != &storage->small_occupied) { std::free(storage->occupied); }
    storage->occupied = occupied;
}

// Adds the next block, zero-filled: 16 slots, then as many as there are. At the end of what 32 bits count or of the
// memory it throws, with all as it was.
void grow(KeyedList* list) {
    ListStorage* storage = list->storage;
    if (list->capacity >= LAST_CAPACITY) { throw std::bad_alloc(); }
    const int32_t capacity = list->capacity == 0 ? LIST_FIRST_CAPACITY : list->capacity * 2;
    const int32_t block = block_count(list);
    if (block == SMALL_BLOCKS && storage->blocks == storage->small_blocks) {
        auto** blocks = new_array<unsigned char*>(BLOCK_LIMIT);
        std::memcpy(blocks, storage->small_blocks, sizeof storage->small_blocks);
        storage->blocks = blocks;
    }
    occupied_reserve(storage, list->capacity, capacity);
    storage->blocks[block] = new_array<unsigned char>(block_bytes(list, block));
    list->capacity = capacity;
}

// The lowest free slot, or the capacity. Without holes that is the first slot never used, and nothing is searched.
int32_t lowest_free_slot(ListStorage* storage, int32_t count) {
    if (count == storage->used) { return storage->used; }
    int32_t word = storage->full_words;
    while (~storage->occupied[word] == 0) { ++word; }
    storage->full_words = word;
    return word * LIST_WORD_SLOTS + std::countr_one(storage->occupied[word]);
}

void occupy(KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    const int32_t word = slot / LIST_WORD_SLOTS;
    storage->occupied[word] |= uint64_t{1} << (slot % LIST_WORD_SLOTS);
    storage->used = slot < storage->used ? storage->used : slot + 1;
    ++list->count;
}

}  // namespace

bool list_storage_ensure(KeyedList* list) {
    if (list->storage == nullptr) {
        list->capacity = 0;
        list->storage = storage_new();
    }
    if (list->capacity == 0) { grow(list); }
    return true;
}

void list_storage_release(KeyedList* list) {
    ListStorage* storage = list->storage;
    if (storage == nullptr) { return; }
    for (int32_t block = 0; block < block_count(list); ++block) { std::free(storage->blocks[block]); }
    if (storage->blocks != storage->small_blocks) { std::free(storage->blocks); }
    if (storage->occupied != &storage->small_occupied) { std::free(storage->occupied); }
    std::free(storage->index);
    std::free(storage);
    list->storage = nullptr;
    list->capacity = 0;
}

bool list_storage_copy(const KeyedList* source, KeyedList* destination) {
    destination->capacity = 0;
    destination->storage = storage_new();
    while (destination->capacity < source->capacity) { grow(destination); }
    const ListStorage* from = source->storage;
    ListStorage* to = destination->storage;
    for (int32_t block = 0; block < block_count(source); ++block) {
        std::memcpy(to->blocks[block], from->blocks[block], block_bytes(source, block));
    }
    std::memcpy(to->occupied, from->occupied, static_cast<size_t>(word_count(source->capacity)) * sizeof(uint64_t));
    to->used = from->used;
    to->full_words = from->full_words;
    to->first_key = from->first_key;
    to->consecutive = from->consecutive;
    return true;
}

int32_t list_free_slot(const KeyedList* list) {
    return list_has_storage(list) ? lowest_free_slot(list->storage, list->count) : 0;
}

int32_t list_slot_take(KeyedList* list) {
    const int32_t slot = lowest_free_slot(list->storage, list->count);
    if (slot >= list->capacity) { grow(list); }
    occupy(list, slot);
    return slot;
}

bool list_slot_take_at(KeyedList* list, int32_t slot) {
    if (slot < 0 || slot >= LAST_CAPACITY || list_at(list, slot, 0) != nullptr) { return false; }
    list_storage_ensure(list);
    while (slot >= list->capacity) { grow(list); }
    occupy(list, slot);
    return true;
}

int32_t list_end_slot(const KeyedList* list) {
    if (!list_has_storage(list)) { return 0; }
    for (int32_t word = word_count(list->storage->used); word-- > 0;) {
        const uint64_t bits = list->storage->occupied[word];
        if (bits != 0) { return word * LIST_WORD_SLOTS + static_cast<int32_t>(std::bit_width(bits)); }
    }
    return 0;
}

int32_t list_slot_of_element(const KeyedList* list, const void* element) {
    if (!list_has_storage(list)) { return -1; }
    const auto address = reinterpret_cast<uintptr_t>(element);
    const auto size = static_cast<size_t>(list->element_size);
    for (int32_t block = 0; block < block_count(list); ++block) {
        const auto start = reinterpret_cast<uintptr_t>(list->storage->blocks[block]);
        const auto slots = static_cast<size_t>(list_block_slots(block));
        if (address >= start && address - start < slots * size) {
            const int32_t slot = list_block_start(block) + static_cast<int32_t>((address - start) / size);
            return list_slot_occupied(list->storage, slot) ? slot : -1;
        }
    }
    return -1;
}

void list_slot_release(KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    const int32_t word = slot / LIST_WORD_SLOTS;
    storage->occupied[word] &= ~(uint64_t{1} << (slot % LIST_WORD_SLOTS));
    storage->full_words = word < storage->full_words ? word : storage->full_words;
    --list->count;
}

int32_t list_next_slot_beyond(const KeyedList* list, int32_t slot) {
    if (!list_has_storage(list)) { return 0; }
    const ListStorage* storage = list->storage;
    slot = slot < 0 ? 0 : slot;
    if (slot >= storage->used || list->count == 0) { return list->capacity; }
    int32_t word = slot / LIST_WORD_SLOTS;
    uint64_t bits = storage->occupied[word] & (~uint64_t{0} << (slot % LIST_WORD_SLOTS));
    for (const int32_t words = word_count(storage->used); bits == 0; bits = storage->occupied[word]) {
        if (++word >= words) { return list->capacity; }
    }
    return word * LIST_WORD_SLOTS + std::countr_zero(bits);
}

}  // namespace pelt
