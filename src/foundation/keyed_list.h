// KeyedList: the one collection of the system. Elements of a fixed size stored by value in numbered slots, each slot
// with a key. A slot never changes, and neither does the address of an element while it is in the list: storage grows
// by whole blocks. Removal leaves a hole, which the next add fills (lowest first), so that a walk goes in slot order.
// Look-up and add by key cost constant time. Elements are plain bytes: what they own is released by their owner.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

namespace pelt {

enum KeyKind : int32_t { KEY_NONE = 0, KEY_INT = 1, KEY_STRING = 2 };

// Bytes of a text key that are stored. A longer key is cut to these and is never found again.
inline constexpr size_t KEY_TEXT_SIZE = 32;

// What a list that has had an element holds, private to the functions below; it stands here so that the access by
// slot can be inlined. Block 0 holds slots 0 to 15, block 1 the next 16, and each further block as many as all before
// it. A block is its elements followed by their keys.
struct ListStorage {
    unsigned char** blocks;  // small_blocks, or a heap array once there are more of them
    unsigned char* small_blocks[2];
    uint64_t* occupied;  // one bit a slot: small_occupied, or a heap array beyond 64 slots
    uint64_t small_occupied;
    uint32_t* index;      // open addressing: slot + 1, or 0 for a free place; null while there is no need
    uint32_t index_mask;  // places of the index, less 1
    int32_t index_count;  // places of the index that are taken
    int32_t used;         // slots from this one on have never been occupied
    int32_t full_words;   // every slot in this many leading words of the bitmap is occupied
    int32_t first_key;    // see consecutive
    bool consecutive;     // KEY_INT: each occupied slot s holds the key first_key + s; no index is needed
};

// A plain record: it may be copied byte by byte to hand the list on (the source must then be forgotten).
// Zero-filled, it is a valid list that refuses everything.
struct KeyedList {
    int32_t kind;          // KeyKind
    int32_t cursor;        // slot of the walk in progress; one for each list
    int32_t count;         // occupied slots
    int32_t element_size;  // bytes of an element; 0 for a list that was not set up
    int32_t capacity;      // slots: 0, 16, 32, 64, ...
    ListStorage* storage;  // null until the first add
};

// Sets the record up for elements of this size; releases nothing. Returns 0, with the record as it was, for a null
// list, a size below 1 or an unknown kind; else 1.
int list_init(KeyedList* list, int32_t element_size, int32_t kind);

// Releases the storage and zeroes the record, so that it has to be set up again. 0 for null, else 1.
int list_free(KeyedList* list);

// Releases the storage; the list stays set up. 0 for null, else 1.
int list_clear(KeyedList* list);

// Byte-wise (shallow) copy with its own storage. The destination's old content is not released. 0 for a null source.
int list_copy(const KeyedList* source, KeyedList* destination);

// The element under the key, existing or new. A new element is zero-filled in a slot never used before, and holds
// the bytes of its former tenant in a slot used again. Null for a list not set up, a key of the wrong type, a null
// text. A KEY_NONE list takes a new slot at every add.
void* list_add(KeyedList* list, int32_t key);
void* list_add(KeyedList* list, const char* key);

// Frees the slot of the key; the element's bytes stay. 1 when a slot was freed, else 0. An integer key below 1 is
// never removed; nothing is ever removed from a KEY_NONE list.
int list_remove(KeyedList* list, int32_t key);
int list_remove(KeyedList* list, const char* key);

// Frees an occupied slot by its number, whatever its key; the way out for keys that cannot be found. 1 or 0.
int list_remove_slot(KeyedList* list, int32_t slot);

// For whoever puts a list back as it was. The slot that an add under the key would answer with: that of the key, or
// the lowest free one; -1 where the add would be refused. Nothing is changed.
int32_t list_slot_for(const KeyedList* list, int32_t key);
int32_t list_slot_for(const KeyedList* list, const char* key);

// The element of a new occupied slot with this number and key, as list_add would give it; null when the slot is
// occupied, negative or beyond what a list can have, and for what list_add refuses. The caller sees to it that no other
// slot holds the key. A text key longer than KEY_TEXT_SIZE is cut, as ever.
void* list_add_at(KeyedList* list, int32_t slot, int32_t key);
void* list_add_at(KeyedList* list, int32_t slot, const char* key);

// The slot behind the last occupied one: where what is to come last in the order of the list goes.
int32_t list_end_slot(const KeyedList* list);

// The bytes of a slot, occupied or not: what the next tenant of a free one finds. Null beyond the capacity.
void* list_slot_bytes(const KeyedList* list, int32_t slot);

// The slot of an element of the list by its address; -1 for an address that is none of it.
int32_t list_slot_of_element(const KeyedList* list, const void* element);

// The element under the key, or null. The cursor is not touched. This and the other look-ups give what may be changed
// where the list may.
inline const void* list_find(const KeyedList* list, int32_t key);
const void* list_find_any(const KeyedList* list, int32_t key);  // its half for keys that do not run on
const void* list_find(const KeyedList* list, const char* key);

// First and next element of the walk that the list's cursor holds, with the key; null at the end. A key text lies in
// the key table and is always terminated. An empty list leaves the cursor where it was.
void* list_first(KeyedList* list);
void* list_first(KeyedList* list, int32_t* key);
void* list_first(KeyedList* list, const char** key);
void* list_next(KeyedList* list);
void* list_next(KeyedList* list, int32_t* key);
void* list_next(KeyedList* list, const char** key);

// Occupied slots; 0 for null or a list without storage.
int32_t list_count(const KeyedList* list);

// Slot of the key (by_rank 0), or the number of occupied slots before it (by_rank not 0); -1 when absent.
int32_t list_index_of(const KeyedList* list, int32_t key, int by_rank);
int32_t list_index_of(const KeyedList* list, const char* key, int by_rank);

// Element of a slot (by_rank 0, constant time) or of the occupied slot with that rank (by_rank not 0, linear).
// Null for a free slot or an index out of range, negative ones included.
const void* list_at_rank(const KeyedList* list, int32_t rank);
inline const void* list_at(const KeyedList* list, int32_t index, int by_rank);

// Key of an occupied slot; 0 or null otherwise.
int32_t list_int_key(const KeyedList* list, int32_t slot);
const char* list_text_key(const KeyedList* list, int32_t slot);

// First occupied slot at or behind the given one, or the capacity when there is none.
inline int32_t list_next_slot(const KeyedList* list, int32_t slot);
int32_t list_next_slot_beyond(const KeyedList* list, int32_t slot);  // its slow half

// Whether the slot, which must be at least 0 and below the capacity, is occupied.
inline bool list_slot_occupied(const ListStorage* storage, int32_t slot) {
    return (storage->occupied[slot >> 6] >> (slot & 63)) & 1;
}

// The block that holds a slot, and the slot with which a block begins.
inline int32_t list_block_of(int32_t slot) {
    return static_cast<int32_t>(std::bit_width(static_cast<uint32_t>(slot) | 8U)) - 4;
}
inline int32_t list_block_start(int32_t block) { return static_cast<int32_t>((8U << block) & ~15U); }

inline const void* list_at(const KeyedList* list, int32_t index, int by_rank) {
    if (by_rank != 0) { return list_at_rank(list, index); }
    if (list == nullptr || index < 0 || index >= list->capacity || !list_slot_occupied(list->storage, index)) {
        return nullptr;
    }
    const int32_t block = list_block_of(index);
    const auto offset = static_cast<size_t>(index - list_block_start(block));
    return list->storage->blocks[block] + offset * static_cast<size_t>(list->element_size);
}

// The reading of a model is to a quarter the finding of ids that run on: inlined, that is one subtraction.
inline const void* list_find(const KeyedList* list, int32_t key) {
    if (list == nullptr || list->storage == nullptr || !list->storage->consecutive) { return list_find_any(list, key); }
    const int64_t slot = static_cast<int64_t>(key) - list->storage->first_key;
    return slot >= 0 && slot < list->capacity ? list_at(list, static_cast<int32_t>(slot), 0) : nullptr;
}

inline int32_t list_next_slot(const KeyedList* list, int32_t slot) {
    if (list != nullptr && slot >= 0 && slot < list->capacity && list_slot_occupied(list->storage, slot)) {
        return slot;
    }
    return list_next_slot_beyond(list, slot);
}

// Templates, so that a literal null is left to the functions above.
template <typename List, typename Key>
    requires std::convertible_to<List*, KeyedList*>
void* list_find(List* list, Key key) {
    return const_cast<void*>(list_find(static_cast<const KeyedList*>(list), key));
}
template <typename List>
    requires std::convertible_to<List*, KeyedList*>
void* list_at(List* list, int32_t index, int by_rank) {
    return const_cast<void*>(list_at(static_cast<const KeyedList*>(list), index, by_rank));
}

// The same for lists of a known element: list_find<Point>(&model->points, id).
template <typename List, typename Element>
    requires std::convertible_to<List*, const KeyedList*>
using ElementOf = std::conditional_t<std::is_const_v<List>, const Element, Element>;

template <typename Element, typename Key>
Element* list_add(KeyedList* list, Key key) {
    return static_cast<Element*>(list_add(list, key));
}
template <typename Element, typename List, typename Key>
ElementOf<List, Element>* list_find(List* list, Key key) {
    return static_cast<ElementOf<List, Element>*>(list_find(list, key));
}
template <typename Element, typename List>
ElementOf<List, Element>* list_at(List* list, int32_t index, int by_rank) {
    return static_cast<ElementOf<List, Element>*>(list_at(list, index, by_rank));
}
template <typename Element, typename... Key>
Element* list_first(KeyedList* list, Key... key) {
    return static_cast<Element*>(list_first(list, key...));
}
template <typename Element, typename... Key>
Element* list_next(KeyedList* list, Key... key) {
    return static_cast<Element*>(list_next(list, key...));
}

// A walk that leaves the list's cursor alone and may be nested: for (Point& point : list_elements<Point>(list)).
// The iterator knows slot() and int_key() and text_key(). Elements added behind the current slot are met too;
// removing the element in hand is safe.
template <typename Element>
class ListElements {
    static_assert(std::is_trivially_copyable_v<Element>);

public:
    class iterator {
    public:
        iterator(const KeyedList* list, int32_t slot) : list_(list), slot_(slot) {}
        Element& operator*() const { return *operator->(); }
        Element* operator->() const { return static_cast<Element*>(const_cast<void*>(list_at(list_, slot_, 0))); }
        iterator& operator++() {
            slot_ = list_next_slot(list_, slot_ + 1);
            return *this;
        }
        // The end is wherever no slot is left, also when the list grew or was emptied during the walk.
        bool operator==(std::default_sentinel_t) const { return list_ == nullptr || slot_ >= list_->capacity; }
        int32_t slot() const { return slot_; }
        int32_t int_key() const { return list_int_key(list_, slot_); }
        const char* text_key() const { return list_text_key(list_, slot_); }

    private:
        const KeyedList* list_;
        int32_t slot_;
    };

    explicit ListElements(const KeyedList* list) : list_(list) {}
    iterator begin() const { return iterator(list_, list_next_slot(list_, 0)); }
    std::default_sentinel_t end() const { return {}; }

private:
    const KeyedList* list_;
};

template <typename Element, typename List>
ListElements<ElementOf<List, Element>> list_elements(List& list) {
    return ListElements<ElementOf<List, Element>>(&list);
}

}  // namespace pelt
