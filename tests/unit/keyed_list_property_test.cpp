// Random operations on a KeyedList, each answer held against a plain list of slots that is searched from the front:
// a million on a short list, and fewer on one of many words of the bitmap. Both grow, shrink and are emptied one
// element after the other, in turn. What surprises: an element that takes a slot used before shows the bytes of its
// former tenant; the plain list keeps them too.
#include "foundation/keyed_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace pelt {
namespace {

constexpr int32_t LOWEST_KEY = -4;

struct Course {
    int operations;
    int32_t keys;   // as many, from LOWEST_KEY on
    int phase;      // operations of each phase of growing and of shrinking; the list is emptied after both
    int32_t slots;  // that the list must have had at its longest
};
constexpr Course SHORT_LIST{1000000, 90, 500, 32};
constexpr Course LONG_LIST{60000, 3000, 10000, 1025};

struct PlainSlot {
    bool occupied;
    int32_t key;
    int32_t value;
};

struct PlainList {
    std::vector<PlainSlot> slots;  // those that were ever used

    int32_t slot_of(int32_t key) const {
        for (size_t i = 0; i < slots.size(); ++i) {
            if (slots[i].occupied && slots[i].key == key) { return static_cast<int32_t>(i); }
        }
        return -1;
    }
    int32_t rank_of_slot(int32_t slot) const {
        int32_t rank = 0;
        for (int32_t i = 0; i < slot; ++i) { rank += slots[static_cast<size_t>(i)].occupied ? 1 : 0; }
        return rank;
    }
    int32_t count() const { return rank_of_slot(static_cast<int32_t>(slots.size())); }
    // The first occupied slot, or the value given when there is none.
    int32_t first_slot(int32_t none) const {
        for (size_t i = 0; i < slots.size(); ++i) {
            if (slots[i].occupied) { return static_cast<int32_t>(i); }
        }
        return none;
    }
    int32_t* add(int32_t key) {
        const int32_t found = slot_of(key);
        if (found >= 0) { return &slots[static_cast<size_t>(found)].value; }
        for (PlainSlot& slot : slots) {
            if (slot.occupied) { continue; }
            slot.occupied = true;
            slot.key = key;
            return &slot.value;
        }
        slots.push_back({true, key, 0});
        return &slots.back().value;
    }
    int32_t free_slot() const {
        for (size_t i = 0; i < slots.size(); ++i) {
            if (!slots[i].occupied) { return static_cast<int32_t>(i); }
        }
        return static_cast<int32_t>(slots.size());
    }
    int32_t* add_at(int32_t slot, int32_t key) {
        while (slots.size() <= static_cast<size_t>(slot)) { slots.push_back({false, 0, 0}); }
        PlainSlot& wanted = slots[static_cast<size_t>(slot)];
        if (wanted.occupied) { return nullptr; }
        wanted.occupied = true;
        wanted.key = key;
        return &wanted.value;
    }
    int remove_slot(int32_t slot) {
        if (slot < 0 || slot >= static_cast<int32_t>(slots.size()) || !slots[static_cast<size_t>(slot)].occupied) {
            return 0;
        }
        slots[static_cast<size_t>(slot)].occupied = false;
        return 1;
    }
};

// How a key is given to the list, for either kind.
struct IntKeys {
    static constexpr int32_t KIND = KEY_INT;
    static int32_t key(int32_t number) { return number; }
    static bool removable(int32_t number) { return number >= 1; }  // intended: other keys are never removed
    static bool is(const KeyedList& list, int32_t slot, int32_t number) { return list_int_key(&list, slot) == number; }
};
struct TextKeys {
    static constexpr int32_t KIND = KEY_STRING;
    static const char* key(int32_t number) {
        static char text[16];
        std::snprintf(text, sizeof text, "key%d", number);
        return text;
    }
    static bool removable(int32_t) { return true; }
    static bool is(const KeyedList& list, int32_t slot, int32_t number) {
        const char* text = list_text_key(&list, slot);
        return text != nullptr && std::string(text) == key(number);
    }
};

template <typename Keys>
void expect_same_walk(const KeyedList& list, const PlainList& plain) {
    size_t at = 0;
    for (auto it = list_elements<int32_t>(list).begin(); it != std::default_sentinel; ++it) {
        while (at < plain.slots.size() && !plain.slots[at].occupied) { ++at; }
        ASSERT_LT(at, plain.slots.size());
        ASSERT_EQ(it.slot(), static_cast<int32_t>(at));
        ASSERT_EQ(*it, plain.slots[at].value);
        ASSERT_TRUE(Keys::is(list, it.slot(), plain.slots[at].key));
        ++at;
    }
    while (at < plain.slots.size() && !plain.slots[at].occupied) { ++at; }
    ASSERT_EQ(at, plain.slots.size());
}

// The same by way of the list's own cursor.
void expect_same_cursor(KeyedList* list, const PlainList& plain) {
    const void* element = list_first(list);
    for (const PlainSlot& slot : plain.slots) {
        if (!slot.occupied) { continue; }
        ASSERT_NE(element, nullptr);
        ASSERT_EQ(*static_cast<const int32_t*>(element), slot.value);
        element = list_next(list);
    }
    ASSERT_EQ(element, nullptr);
}

// A copy answers as its source does, and what happens to one does not show in the other.
template <typename Keys>
void expect_same_copy(const KeyedList& list, const PlainList& plain) {
    KeyedList copy{};
    ASSERT_EQ(list_copy(&list, &copy), 1);
    expect_same_walk<Keys>(copy, plain);
    for (const PlainSlot& slot : plain.slots) {
        if (slot.occupied) { ASSERT_NE(list_find(&copy, Keys::key(slot.key)), nullptr); }
    }
    list_clear(&copy);
    ASSERT_EQ(list_count(&copy), 0);
    ASSERT_EQ(list_count(&list), plain.count());
    list_free(&copy);
}

// Takes every element away, one after the other: from the front, from the back or in any order. The list keeps its
// slots, and with them whatever it remembers of those that were in use.
template <typename Keys>
void empty_both(KeyedList* list, PlainList* plain, std::mt19937* random) {
    std::vector<int32_t> slots;
    for (size_t i = 0; i < plain->slots.size(); ++i) {
        if (plain->slots[i].occupied) { slots.push_back(static_cast<int32_t>(i)); }
    }
    switch ((*random)() % 3) {
        case 0: std::reverse(slots.begin(), slots.end()); break;
        case 1: std::shuffle(slots.begin(), slots.end(), *random); break;
        default: break;
    }
    for (const int32_t slot : slots) {
        const int32_t key = plain->slots[static_cast<size_t>(slot)].key;
        ASSERT_EQ(Keys::removable(key) ? list_remove(list, Keys::key(key)) : list_remove_slot(list, slot), 1);
        ASSERT_EQ(list_find(list, Keys::key(key)), nullptr);
        plain->remove_slot(slot);
        ASSERT_EQ(list_next_slot(list, 0), plain->first_slot(list->capacity));
    }
    ASSERT_EQ(list_count(list), 0);
    ASSERT_EQ(list_first(list), nullptr);
}

template <typename Keys>
void run_operations(const Course& course, unsigned seed) {
    std::mt19937 random(seed);
    KeyedList list{};
    ASSERT_EQ(list_init(&list, sizeof(int32_t), Keys::KIND), 1);
    PlainList plain;
    int emptied = 0;
    size_t longest = 0;
    for (int step = 0; step < course.operations; ++step) {
        if (step % (2 * course.phase) == 0) {
            longest = std::max(longest, plain.slots.size());
            ASSERT_NO_FATAL_FAILURE(empty_both<Keys>(&list, &plain, &random));
            ++emptied;
        }
        const int32_t number = LOWEST_KEY + static_cast<int32_t>(random() % static_cast<unsigned>(course.keys));
        const int32_t slot = plain.slot_of(number);
        // Growing and shrinking in turn, so that lists of every size are met.
        const bool growing = step / course.phase % 2 == 0;
        switch (random() % 10) {
            case 0:
            case 1: {
                if (!growing && random() % 4 != 0) { break; }
                auto* value = static_cast<int32_t*>(list_add(&list, Keys::key(number)));
                int32_t* expected = plain.add(number);
                ASSERT_NE(value, nullptr);
                ASSERT_EQ(*value, *expected);
                *value = *expected = step;
                break;
            }
            case 2:
            case 3: {
                if (growing && random() % 4 != 0) { break; }
                const int expected = Keys::removable(number) ? plain.remove_slot(slot) : 0;
                ASSERT_EQ(list_remove(&list, Keys::key(number)), expected);
                break;
            }
            case 4: {
                const auto* value = static_cast<const int32_t*>(list_find(&list, Keys::key(number)));
                ASSERT_EQ(value != nullptr, slot >= 0);
                if (value != nullptr) { ASSERT_EQ(*value, plain.slots[static_cast<size_t>(slot)].value); }
                break;
            }
            case 5:
                ASSERT_EQ(list_index_of(&list, Keys::key(number), 0), slot);
                ASSERT_EQ(list_index_of(&list, Keys::key(number), 1), slot < 0 ? -1 : plain.rank_of_slot(slot));
                if (slot >= 0) { ASSERT_EQ(list_at(&list, plain.rank_of_slot(slot), 1), list_at(&list, slot, 0)); }
                break;
            case 6:
                if (random() % 8 == 0) { ASSERT_EQ(list_remove_slot(&list, number), plain.remove_slot(number)); }
                break;
            case 7: {
                // Putting back: a free slot that is told, under a key that no other slot has.
                const auto wanted = static_cast<int32_t>(random() % (plain.slots.size() + 3));
                if (slot >= 0 || random() % 4 != 0) { break; }
                int32_t* expected = plain.add_at(wanted, number);
                auto* value = static_cast<int32_t*>(list_add_at(&list, wanted, Keys::key(number)));
                ASSERT_EQ(value != nullptr, expected != nullptr);
                if (value == nullptr) { break; }
                ASSERT_EQ(*value, *expected);
                ASSERT_EQ(list_slot_of_element(&list, value), wanted);
                *value = *expected = step;
                break;
            }
            case 8: ASSERT_EQ(list_slot_for(&list, Keys::key(number)), slot >= 0 ? slot : plain.free_slot()); break;
            default:
                ASSERT_EQ(list_count(&list), plain.count());
                if (step % 997 == 0) {
                    ASSERT_NO_FATAL_FAILURE(expect_same_walk<Keys>(list, plain));
                    ASSERT_NO_FATAL_FAILURE(expect_same_cursor(&list, plain));
                    ASSERT_NO_FATAL_FAILURE(expect_same_copy<Keys>(list, plain));
                }
                if (random() % 20000 == 0) {
                    list_clear(&list);
                    plain.slots.clear();
                }
                break;
        }
    }
    expect_same_walk<Keys>(list, plain);
    list_free(&list);
    EXPECT_GE(emptied, 3);
    EXPECT_GE(longest, static_cast<size_t>(course.slots));
}

TEST(KeyedListProperty, AMillionOperationsOnNumbersAnswerAsAPlainListDoes) { run_operations<IntKeys>(SHORT_LIST, 1); }
TEST(KeyedListProperty, AMillionOperationsOnTextsAnswerAsAPlainListDoes) { run_operations<TextKeys>(SHORT_LIST, 2); }
TEST(KeyedListProperty, OperationsOnManyNumbersAnswerAsAPlainListDoes) { run_operations<IntKeys>(LONG_LIST, 3); }
TEST(KeyedListProperty, OperationsOnManyTextsAnswerAsAPlainListDoes) { run_operations<TextKeys>(LONG_LIST, 4); }

}  // namespace
}  // namespace pelt
