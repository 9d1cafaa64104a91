// The one collection of the system: slots of fixed-size elements with keys.
//
// What surprises: there are three ways to find a key and a list chooses by itself. Integer keys that run on by one
// from slot to slot, as ids from a counter do, are found by subtraction and cost no memory. Other lists are scanned
// while they are short, and get an index (open addressing with linear probing, holes closed on removal) when they
// outgrow that. Callers see slot order in every case.
#include "foundation/keyed_list.h"

#include <cstdlib>
#include <cstring>

namespace pelt {

namespace {

constexpr int32_t FIRST_CAPACITY = 16;
constexpr int32_t LAST_CAPACITY = 1 << 30;  // doubling this would leave 32 bits
constexpr int32_t BLOCK_LIMIT = 27;         // blocks that make up LAST_CAPACITY
constexpr int32_t SMALL_BLOCKS = 2;
constexpr int32_t WORD_SLOTS = 64;
constexpr int32_t SCAN_LIMIT = 16;          // used slots up to which a key is looked for without an index
constexpr uint32_t FIRST_INDEX_SIZE = 64;
constexpr size_t TEXT_ENTRY_SIZE = KEY_TEXT_SIZE + 1;  // a cut key is terminated too

bool has_storage(const KeyedList* list) {
    return list != nullptr && list->element_size >= 1 && list->storage != nullptr;
}

int32_t block_slots(int32_t block) {
    return block == 0 ? FIRST_CAPACITY : list_block_start(block);
}

int32_t block_count(const KeyedList* list) {
    return list->capacity < 1 ? 0 : list_block_of(list->capacity - 1) + 1;
}

int32_t word_count(int32_t capacity) {
    return (capacity + WORD_SLOTS - 1) / WORD_SLOTS;
}

// Where the keys begin in a block: behind the elements, aligned for integers.
size_t keys_offset(const KeyedList* list, int32_t slots) {
    const size_t elements = static_cast<size_t>(slots) * static_cast<size_t>(list->element_size);
    return (elements + sizeof(int32_t) - 1) / sizeof(int32_t) * sizeof(int32_t);
}

size_t key_entry_size(const KeyedList* list) {
    return list->kind == KEY_STRING ? TEXT_ENTRY_SIZE : sizeof(int32_t);
}

size_t block_bytes(const KeyedList* list, int32_t block) {
    const int32_t slots = block_slots(block);
    return keys_offset(list, slots) + static_cast<size_t>(slots) * key_entry_size(list);
}

unsigned char* key_entry(const KeyedList* list, int32_t slot) {
    const int32_t block = list_block_of(slot);
    const auto offset = static_cast<size_t>(slot - list_block_start(block));
    return list->storage->blocks[block] + keys_offset(list, block_slots(block)) + offset * key_entry_size(list);
}

int32_t int_key_at(const KeyedList* list, int32_t slot) {
    int32_t key;
    std::memcpy(&key, key_entry(list, slot), sizeof key);
    return key;
}

const char* text_key_at(const KeyedList* list, int32_t slot) {
    return reinterpret_cast<const char*>(key_entry(list, slot));
}

// Length of a text as far as it matters: KEY_TEXT_SIZE for everything that does not fit.
size_t key_length(const char* text) {
    const void* end = std::memchr(text, 0, KEY_TEXT_SIZE);
    return end == nullptr ? KEY_TEXT_SIZE : static_cast<size_t>(static_cast<const char*>(end) - text);
}

uint32_t mix(uint32_t value) {
    value ^= value >> 16;
    value *= 0x85ebca6bU;
    value ^= value >> 13;
    value *= 0xc2b2ae35U;
    return value ^ (value >> 16);
}

uint32_t hash_int(int32_t key) {
    return mix(static_cast<uint32_t>(key));
}

uint32_t hash_text(const char* text) {
    uint32_t hash = 2166136261U;
    for (; *text != '\0'; ++text) {
        hash = (hash ^ static_cast<unsigned char>(*text)) * 16777619U;
    }
    return mix(hash);
}

uint32_t hash_of_slot(const KeyedList* list, int32_t slot) {
    return list->kind == KEY_INT ? hash_int(int_key_at(list, slot)) : hash_text(text_key_at(list, slot));
}

// A cut text key is in no index: it is never found.
bool is_findable(const KeyedList* list, int32_t slot) {
    return list->kind != KEY_STRING || key_length(text_key_at(list, slot)) < KEY_TEXT_SIZE;
}

// The slot of an occupied entry for which match(slot) holds, by way of the index or, without one, in slot order.
template <typename Match>
int32_t find_with(const KeyedList* list, uint32_t hash, Match match) {
    const ListStorage* storage = list->storage;
    if (storage->index != nullptr) {
        for (uint32_t place = hash & storage->index_mask;; place = (place + 1) & storage->index_mask) {
            const uint32_t entry = storage->index[place];
            if (entry == 0) {
                return -1;
            }
            const auto slot = static_cast<int32_t>(entry - 1);
            if (match(slot)) {
                return slot;
            }
        }
    }
    for (int32_t slot = list_next_slot(list, 0); slot < storage->used; slot = list_next_slot(list, slot + 1)) {
        if (match(slot)) {
            return slot;
        }
    }
    return -1;
}

int32_t slot_of(const KeyedList* list, int32_t key) {
    if (!has_storage(list) || list->kind != KEY_INT) {
        return -1;
    }
    const ListStorage* storage = list->storage;
    if (storage->consecutive) {
        const int64_t slot = static_cast<int64_t>(key) - storage->first_key;
        const bool found = slot >= 0 && slot < storage->used && list_slot_occupied(storage, static_cast<int32_t>(slot));
        return found ? static_cast<int32_t>(slot) : -1;
    }
    return find_with(list, hash_int(key), [list, key](int32_t slot) { return int_key_at(list, slot) == key; });
}

int32_t slot_of(const KeyedList* list, const char* key) {
    if (!has_storage(list) || list->kind != KEY_STRING || key == nullptr) {
        return -1;
    }
    const size_t length = key_length(key);
    if (length >= KEY_TEXT_SIZE) {
        return -1;
    }
    return find_with(list, hash_text(key), [list, key, length](int32_t slot) {
        return std::memcmp(text_key_at(list, slot), key, length + 1) == 0;
    });
}

void index_put(ListStorage* storage, uint32_t hash, int32_t slot) {
    uint32_t place = hash & storage->index_mask;
    while (storage->index[place] != 0) {
        place = (place + 1) & storage->index_mask;
    }
    storage->index[place] = static_cast<uint32_t>(slot) + 1;
    ++storage->index_count;
}

void index_drop(ListStorage* storage) {
    std::free(storage->index);
    storage->index = nullptr;
    storage->index_mask = 0;
    storage->index_count = 0;
}

// Makes an index of all occupied slots. Without memory for it the list is scanned from then on.
void index_build(const KeyedList* list) {
    ListStorage* storage = list->storage;
    index_drop(storage);
    uint64_t size = FIRST_INDEX_SIZE;
    while (size < 2 * static_cast<uint64_t>(list->count) + 2) {
        size *= 2;
    }
    storage->index = static_cast<uint32_t*>(std::calloc(size, sizeof(uint32_t)));
    if (storage->index == nullptr) {
        return;
    }
    storage->index_mask = static_cast<uint32_t>(size - 1);
    for (int32_t slot = list_next_slot(list, 0); slot < storage->used; slot = list_next_slot(list, slot + 1)) {
        if (is_findable(list, slot)) {
            index_put(storage, hash_of_slot(list, slot), slot);
        }
    }
}

// Enters a slot that has just been occupied into whatever finds its key.
void index_add(const KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    if (list->kind == KEY_NONE || storage->consecutive) {
        return;
    }
    if (storage->index == nullptr) {
        if (storage->used > SCAN_LIMIT) {
            index_build(list);
        }
        return;
    }
    if (!is_findable(list, slot)) {
        return;
    }
    const uint64_t places = static_cast<uint64_t>(storage->index_mask) + 1;
    if (3 * (static_cast<uint64_t>(storage->index_count) + 1) > 2 * places) {
        index_build(list);
        return;
    }
    index_put(storage, hash_of_slot(list, slot), slot);
}

// Takes a slot, whose key still stands, out of the index, and moves up those that had to probe past it.
void index_remove(const KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    if (storage->index == nullptr || !is_findable(list, slot)) {
        return;
    }
    const uint32_t mask = storage->index_mask;
    uint32_t hole = hash_of_slot(list, slot) & mask;
    while (storage->index[hole] != static_cast<uint32_t>(slot) + 1) {
        hole = (hole + 1) & mask;
    }
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

void storage_release(KeyedList* list) {
    ListStorage* storage = list->storage;
    if (storage == nullptr) {
        return;
    }
    for (int32_t block = 0; block < block_count(list); ++block) {
        std::free(storage->blocks[block]);
    }
    if (storage->blocks != storage->small_blocks) {
        std::free(storage->blocks);
    }
    if (storage->occupied != &storage->small_occupied) {
        std::free(storage->occupied);
    }
    std::free(storage->index);
    std::free(storage);
    list->storage = nullptr;
    list->capacity = 0;
}

// Storage without any slot.
ListStorage* storage_new() {
    auto* storage = static_cast<ListStorage*>(std::calloc(1, sizeof(ListStorage)));
    if (storage != nullptr) {
        storage->blocks = storage->small_blocks;
        storage->occupied = &storage->small_occupied;
    }
    return storage;
}

// Room in the bitmap for this many slots, the new ones free.
bool occupied_reserve(ListStorage* storage, int32_t old_capacity, int32_t capacity) {
    const int32_t old_words = word_count(old_capacity);
    const int32_t words = word_count(capacity);
    if (words <= 1 || words == old_words) {
        return true;
    }
    auto* occupied = static_cast<uint64_t*>(std::calloc(static_cast<size_t>(words), sizeof(uint64_t)));
    if (occupied == nullptr) {
        return false;
    }
    std::memcpy(occupied, storage->occupied, static_cast<size_t>(old_words) * sizeof(uint64_t));
    if (storage->occupied != &storage->small_occupied) {
        std::free(storage->occupied);
    }
    storage->occupied = occupied;
    return true;
}

// Adds the next block, zero-filled: 16 slots, then as many as there are. False, with all as it was, at the end of
// what 32 bits count or of the memory.
bool grow(KeyedList* list) {
    ListStorage* storage = list->storage;
    if (list->capacity >= LAST_CAPACITY) {
        return false;
    }
    const int32_t capacity = list->capacity == 0 ? FIRST_CAPACITY : list->capacity * 2;
    const int32_t block = block_count(list);
    if (block == SMALL_BLOCKS && storage->blocks == storage->small_blocks) {
        auto** blocks = static_cast<unsigned char**>(std::calloc(BLOCK_LIMIT, sizeof(unsigned char*)));
        if (blocks == nullptr) {
            return false;
        }
        std::memcpy(blocks, storage->small_blocks, sizeof storage->small_blocks);
        storage->blocks = blocks;
    }
    if (!occupied_reserve(storage, list->capacity, capacity)) {
        return false;
    }
    storage->blocks[block] = static_cast<unsigned char*>(std::calloc(1, block_bytes(list, block)));
    if (storage->blocks[block] == nullptr) {
        return false;
    }
    list->capacity = capacity;
    return true;
}

bool ensure_storage(KeyedList* list) {
    if (list->storage == nullptr) {
        list->capacity = 0;
        list->storage = storage_new();
        if (list->storage != nullptr && !grow(list)) {
            storage_release(list);
        }
    }
    return list->storage != nullptr;
}

// The lowest free slot, or the capacity. Without holes that is the first slot never used, and nothing is searched.
int32_t lowest_free_slot(ListStorage* storage, int32_t count) {
    if (count == storage->used) {
        return storage->used;
    }
    int32_t word = storage->full_words;
    while (~storage->occupied[word] == 0) {
        ++word;
    }
    storage->full_words = word;
    return word * WORD_SLOTS + std::countr_one(storage->occupied[word]);
}

// Occupies the lowest free slot; -1 when the list cannot grow. The key is stored by the caller.
int32_t take_slot(KeyedList* list) {
    ListStorage* storage = list->storage;
    const int32_t slot = lowest_free_slot(storage, list->count);
    if (slot >= list->capacity && !grow(list)) {
        return -1;
    }
    const int32_t word = slot / WORD_SLOTS;
    storage->occupied[word] |= uint64_t{1} << (slot % WORD_SLOTS);
    storage->used = slot < storage->used ? storage->used : slot + 1;
    storage->empty_words = word < storage->empty_words ? word : storage->empty_words;
    ++list->count;
    return slot;
}

// Whether the keys still run on by one from slot to slot with this one added.
void note_consecutive(KeyedList* list, int32_t slot, int32_t key) {
    ListStorage* storage = list->storage;
    if (list->count == 1 && slot == 0) {
        storage->consecutive = true;
        storage->first_key = key;
        index_drop(storage);
    } else if (storage->consecutive) {
        storage->consecutive = static_cast<int64_t>(key) == static_cast<int64_t>(storage->first_key) + slot;
    }
}

int free_slot(KeyedList* list, int32_t slot) {
    ListStorage* storage = list->storage;
    index_remove(list, slot);
    if (list->kind == KEY_INT) {
        std::memset(key_entry(list, slot), 0, sizeof(int32_t));
    }
    const int32_t word = slot / WORD_SLOTS;
    storage->occupied[word] &= ~(uint64_t{1} << (slot % WORD_SLOTS));
    storage->full_words = word < storage->full_words ? word : storage->full_words;
    --list->count;
    return 1;
}

// Hands out the element and the key of the cursor's slot.
void* walk_element(const KeyedList* list, int32_t* int_key, const char** text_key) {
    void* element = list_at(list, list->cursor, 0);
    if (element != nullptr && int_key != nullptr) {
        *int_key = list_int_key(list, list->cursor);
    }
    if (element != nullptr && text_key != nullptr) {
        *text_key = list_text_key(list, list->cursor);
    }
    return element;
}

void* walk_first(KeyedList* list, int32_t* int_key, const char** text_key) {
    if (!has_storage(list) || list->count == 0) {
        return nullptr;  // the cursor of an empty list stays where it was: intended
    }
    list->cursor = list_next_slot(list, 0);
    return walk_element(list, int_key, text_key);
}

void* walk_next(KeyedList* list, int32_t* int_key, const char** text_key) {
    if (!has_storage(list)) {
        return nullptr;
    }
    list->cursor = list->cursor < list->capacity ? list_next_slot(list, list->cursor + 1) : list->capacity;
    return walk_element(list, int_key, text_key);
}

// Occupied slots before this one.
int32_t rank_of(const KeyedList* list, int32_t slot) {
    const uint64_t* occupied = list->storage->occupied;
    int32_t rank = 0;
    for (int32_t word = 0; word < slot / WORD_SLOTS; ++word) {
        rank += std::popcount(occupied[word]);
    }
    const uint64_t below = (uint64_t{1} << (slot % WORD_SLOTS)) - 1;
    return rank + std::popcount(occupied[slot / WORD_SLOTS] & below);
}

int32_t slot_or_rank(const KeyedList* list, int32_t slot, int by_rank) {
    return slot >= 0 && by_rank != 0 ? rank_of(list, slot) : slot;
}

}  // namespace

int list_init(KeyedList* list, int32_t element_size, int32_t kind) {
    if (list == nullptr || element_size < 1 || kind < KEY_NONE || kind > KEY_STRING) {
        return 0;
    }
    *list = KeyedList{};
    list->element_size = element_size;
    list->kind = kind;
    return 1;
}

int list_free(KeyedList* list) {
    if (list == nullptr) {
        return 0;
    }
    storage_release(list);
    *list = KeyedList{};
    return 1;
}

int list_clear(KeyedList* list) {
    if (list == nullptr) {
        return 0;
    }
    const int32_t element_size = list->element_size;
    const int32_t kind = list->kind;
    list_free(list);
    list_init(list, element_size, kind);  // a list never set up stays so, which is no failure
    return 1;
}

int list_copy(const KeyedList* source, KeyedList* destination) {
    if (source == nullptr || destination == nullptr) {
        return 0;
    }
    if (source == destination) {
        return 1;
    }
    *destination = *source;
    destination->storage = nullptr;
    if (source->capacity < 1) {
        return 1;
    }
    destination->capacity = 0;
    destination->storage = storage_new();
    while (destination->storage != nullptr && destination->capacity < source->capacity) {
        if (!grow(destination)) {
            list_clear(destination);
            return 0;
        }
    }
    if (destination->storage == nullptr) {
        list_clear(destination);
        return 0;
    }
    ListStorage* storage = destination->storage;
    for (int32_t block = 0; block < block_count(source); ++block) {
        std::memcpy(storage->blocks[block], source->storage->blocks[block], block_bytes(source, block));
    }
    std::memcpy(storage->occupied, source->storage->occupied,
                static_cast<size_t>(word_count(source->capacity)) * sizeof(uint64_t));
    storage->used = source->storage->used;
    storage->full_words = source->storage->full_words;
    storage->empty_words = source->storage->empty_words;
    storage->first_key = source->storage->first_key;
    storage->consecutive = source->storage->consecutive;
    if (source->storage->index != nullptr) {
        index_build(destination);
    }
    return 1;
}

void* list_add(KeyedList* list, int32_t key) {
    if (list == nullptr || list->element_size < 1 || list->kind == KEY_STRING || !ensure_storage(list)) {
        return nullptr;
    }
    int32_t slot = slot_of(list, key);
    if (slot < 0) {
        slot = take_slot(list);
        if (slot < 0) {
            return nullptr;
        }
        std::memcpy(key_entry(list, slot), &key, sizeof key);
        if (list->kind == KEY_INT) {
            note_consecutive(list, slot, key);
            index_add(list, slot);
        }
    }
    return list_at(list, slot, 0);
}

void* list_add(KeyedList* list, const char* key) {
    // The storage comes before the test of the text: a refused null text still gives the list its first slots.
    if (list == nullptr || list->element_size < 1 || list->kind != KEY_STRING || !ensure_storage(list) ||
        key == nullptr) {
        return nullptr;
    }
    int32_t slot = slot_of(list, key);
    if (slot < 0) {
        slot = take_slot(list);
        if (slot < 0) {
            return nullptr;
        }
        unsigned char* entry = key_entry(list, slot);
        const size_t length = key_length(key);
        std::memcpy(entry, key, length);
        entry[length] = 0;
        index_add(list, slot);
    }
    return list_at(list, slot, 0);
}

int list_remove(KeyedList* list, int32_t key) {
    if (key < 1) {
        return 0;  // keys below 1 can be added and found but not removed: intended
    }
    const int32_t slot = slot_of(list, key);
    return slot < 0 ? 0 : free_slot(list, slot);
}

int list_remove(KeyedList* list, const char* key) {
    const int32_t slot = slot_of(list, key);
    return slot < 0 ? 0 : free_slot(list, slot);
}

int list_remove_slot(KeyedList* list, int32_t slot) {
    return list_at(list, slot, 0) == nullptr ? 0 : free_slot(list, slot);
}

void* list_find(const KeyedList* list, int32_t key) {
    return list_at(list, slot_of(list, key), 0);
}

void* list_find(const KeyedList* list, const char* key) {
    return list_at(list, slot_of(list, key), 0);
}

void* list_first(KeyedList* list) {
    return walk_first(list, nullptr, nullptr);
}

void* list_first(KeyedList* list, int32_t* key) {
    return walk_first(list, key, nullptr);
}

void* list_first(KeyedList* list, const char** key) {
    return walk_first(list, nullptr, key);
}

void* list_next(KeyedList* list) {
    return walk_next(list, nullptr, nullptr);
}

void* list_next(KeyedList* list, int32_t* key) {
    return walk_next(list, key, nullptr);
}

void* list_next(KeyedList* list, const char** key) {
    return walk_next(list, nullptr, key);
}

int32_t list_count(const KeyedList* list) {
    return has_storage(list) ? list->count : 0;
}

int32_t list_index_of(const KeyedList* list, int32_t key, int by_rank) {
    return slot_or_rank(list, slot_of(list, key), by_rank);
}

int32_t list_index_of(const KeyedList* list, const char* key, int by_rank) {
    return slot_or_rank(list, slot_of(list, key), by_rank);
}

void* list_at_rank(const KeyedList* list, int32_t rank) {
    if (!has_storage(list) || rank < 0 || rank >= list->count) {
        return nullptr;
    }
    int32_t word = 0;
    for (int32_t ones; rank >= (ones = std::popcount(list->storage->occupied[word])); ++word) {
        rank -= ones;
    }
    uint64_t bits = list->storage->occupied[word];
    for (; rank > 0; --rank) {
        bits &= bits - 1;
    }
    return list_at(list, word * WORD_SLOTS + std::countr_zero(bits), 0);
}

int32_t list_int_key(const KeyedList* list, int32_t slot) {
    return list_at(list, slot, 0) == nullptr || list->kind == KEY_STRING ? 0 : int_key_at(list, slot);
}

const char* list_text_key(const KeyedList* list, int32_t slot) {
    return list_at(list, slot, 0) == nullptr || list->kind != KEY_STRING ? nullptr : text_key_at(list, slot);
}

int32_t list_next_slot_beyond(const KeyedList* list, int32_t slot) {
    if (!has_storage(list)) {
        return 0;
    }
    ListStorage* storage = list->storage;
    slot = slot < 0 ? 0 : slot;
    if (slot >= storage->used || list->count == 0) {
        return list->capacity;
    }
    // A search from the front is remembered, so that emptying a list from its front stays linear.
    const bool from_front = slot <= storage->empty_words * WORD_SLOTS;
    int32_t word = from_front ? storage->empty_words : slot / WORD_SLOTS;
    uint64_t bits = storage->occupied[word];
    if (!from_front) {
        bits &= ~uint64_t{0} << (slot % WORD_SLOTS);
    }
    for (const int32_t words = word_count(storage->used); bits == 0; bits = storage->occupied[word]) {
        if (++word >= words) {
            return list->capacity;
        }
    }
    if (from_front) {
        storage->empty_words = word;
    }
    return word * WORD_SLOTS + std::countr_zero(bits);
}

}  // namespace pelt
