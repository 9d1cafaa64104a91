// KeyedList: slots, keys, order, growth, and the paths by which a key is found.
#include "foundation/keyed_list.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace pelt {
namespace {

constexpr int32_t INT_MAX_KEY = std::numeric_limits<int32_t>::max();
constexpr int32_t INT_MIN_KEY = std::numeric_limits<int32_t>::min();

// A list that frees itself.
struct List : KeyedList {
    List(int32_t size, int32_t list_kind) { list_init(this, size, list_kind); }
    ~List() { list_free(this); }
    List(const List&) = delete;
    List& operator=(const List&) = delete;
};

int32_t* add_int(KeyedList* list, int32_t key) { return static_cast<int32_t*>(list_add(list, key)); }

// Keys 1 to n, each element holding 100 times its key.
void fill(KeyedList* list, int32_t n) {
    for (int32_t key = 1; key <= n; ++key) { *add_int(list, key) = 100 * key; }
}

std::vector<int32_t> keys_in_walk(KeyedList* list) {
    std::vector<int32_t> keys;
    int32_t key = 0;
    for (void* element = list_first(list, &key); element != nullptr; element = list_next(list, &key)) {
        keys.push_back(key);
    }
    return keys;
}

TEST(KeyedListInit, RefusesElementSizeZeroAndLeavesTheRecord) {
    KeyedList list;
    std::memset(&list, 0x5a, sizeof list);
    KeyedList before = list;
    EXPECT_EQ(list_init(&list, 0, KEY_INT), 0);
    EXPECT_EQ(list_init(&list, -1, KEY_INT), 0);
    EXPECT_EQ(std::memcmp(&list, &before, sizeof list), 0);
}

TEST(KeyedListInit, RefusesKindThreeAndLeavesTheRecord) {
    KeyedList list;
    std::memset(&list, 0x5a, sizeof list);
    KeyedList before = list;
    EXPECT_EQ(list_init(&list, 4, 3), 0);
    EXPECT_EQ(list_init(&list, 4, -1), 0);
    EXPECT_EQ(std::memcmp(&list, &before, sizeof list), 0);
}

TEST(KeyedListInit, RefusesNull) { EXPECT_EQ(list_init(nullptr, 4, KEY_INT), 0); }

TEST(KeyedListInit, AllocatesNothing) {
    List list(4, KEY_INT);
    EXPECT_EQ(list.capacity, 0);
    EXPECT_EQ(list.storage, nullptr);
    EXPECT_EQ(list.cursor, 0);
    EXPECT_EQ(list.count, 0);
    EXPECT_EQ(list.element_size, 4);
    EXPECT_EQ(list.kind, KEY_INT);
}

TEST(KeyedListAdd, FirstAddGivesSixteenSlotsAndTheSeventeenthDoubles) {
    List list(4, KEY_INT);
    add_int(&list, 1);
    EXPECT_EQ(list.capacity, 16);
    fill(&list, 16);
    EXPECT_EQ(list.capacity, 16);
    add_int(&list, 17);
    EXPECT_EQ(list.capacity, 32);
    EXPECT_EQ(list_index_of(&list, 17, 0), 16);
}

TEST(KeyedListAdd, CapacityGoesOnDoubling) {
    List list(4, KEY_NONE);
    int32_t expected = 16;
    for (int32_t n = 1; n <= 5000; ++n) {
        add_int(&list, n);
        expected = n > expected ? expected * 2 : expected;
        ASSERT_EQ(list.capacity, expected) << n;
    }
}

TEST(KeyedListAdd, SameKeyTwiceIsAFindWithTheContentUnchanged) {
    List list(4, KEY_INT);
    int32_t* first = add_int(&list, 7);
    *first = 1234;
    EXPECT_EQ(add_int(&list, 7), first);
    EXPECT_EQ(*first, 1234);
    EXPECT_EQ(list_count(&list), 1);
}

TEST(KeyedListAdd, SameTextTwiceIsAFind) {
    List list(4, KEY_STRING);
    void* first = list_add(&list, "top");
    EXPECT_EQ(list_add(&list, std::string("top").c_str()), first);
    EXPECT_NE(list_add(&list, "Top"), first);
    EXPECT_EQ(list_count(&list), 2);
}

TEST(KeyedListAdd, FreshSlotIsZeroFilledInEveryBlock) {
    List list(24, KEY_INT);
    const std::vector<unsigned char> zeros(24, 0);
    for (int32_t key = 1; key <= 300; ++key) {
        void* element = list_add(&list, key);
        ASSERT_EQ(std::memcmp(element, zeros.data(), 24), 0) << key;
        std::memset(element, 0xff, 24);
    }
}

TEST(KeyedListAdd, ElementsAndKeyTextsNeverMove) {
    List list(8, KEY_STRING);
    std::vector<void*> elements;
    std::vector<const char*> texts;
    for (int i = 0; i < 2000; ++i) {
        elements.push_back(list_add(&list, ("key" + std::to_string(i)).c_str()));
        texts.push_back(list_text_key(&list, i));
    }
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(list_at(&list, i, 0), elements[static_cast<size_t>(i)]);
        ASSERT_EQ(list_text_key(&list, i), texts[static_cast<size_t>(i)]);
        ASSERT_EQ("key" + std::to_string(i), texts[static_cast<size_t>(i)]);
    }
}

TEST(KeyedListAdd, NullTextIsRefusedButGivesTheListItsFirstSlots) {
    List list(4, KEY_STRING);
    EXPECT_EQ(list_add(&list, nullptr), nullptr);
    EXPECT_EQ(list.capacity, 16);
    EXPECT_EQ(list_count(&list), 0);
    EXPECT_NE(list_add(&list, "a"), nullptr);
    EXPECT_EQ(list_add(&list, nullptr), nullptr);
    EXPECT_EQ(list_count(&list), 1);
}

TEST(KeyedListAdd, KeyOfTheWrongTypeIsRefused) {
    List ints(4, KEY_INT);
    List texts(4, KEY_STRING);
    List bag(4, KEY_NONE);
    EXPECT_EQ(list_add(&ints, "1"), nullptr);
    EXPECT_EQ(list_add(&bag, "1"), nullptr);
    EXPECT_EQ(list_add(&texts, 1), nullptr);
    EXPECT_EQ(ints.storage, nullptr);
    EXPECT_EQ(texts.storage, nullptr);
    list_add(&ints, 1);
    list_add(&texts, "1");
    EXPECT_EQ(list_find(&ints, "1"), nullptr);
    EXPECT_EQ(list_find(&texts, 1), nullptr);
    EXPECT_EQ(list_remove(&texts, 1), 0);
    EXPECT_EQ(list_remove(&ints, "1"), 0);
    EXPECT_EQ(list_index_of(&texts, 1, 0), -1);
    EXPECT_EQ(list_index_of(&ints, "1", 0), -1);
}

TEST(KeyedListAdd, ZeroFilledRecordRefusesEverything) {
    KeyedList list{};
    EXPECT_EQ(list_add(&list, 1), nullptr);
    EXPECT_EQ(list_add(&list, "a"), nullptr);
    EXPECT_EQ(list_find(&list, 1), nullptr);
    EXPECT_EQ(list_remove(&list, 1), 0);
    EXPECT_EQ(list_remove_slot(&list, 0), 0);
    EXPECT_EQ(list_first(&list), nullptr);
    EXPECT_EQ(list_next(&list), nullptr);
    EXPECT_EQ(list_count(&list), 0);
    EXPECT_EQ(list_at(&list, 0, 0), nullptr);
    EXPECT_EQ(list_at(&list, 0, 1), nullptr);
    EXPECT_EQ(list_index_of(&list, 1, 0), -1);
    EXPECT_EQ(list_next_slot(&list, 0), 0);
    EXPECT_EQ(list_clear(&list), 1);
    EXPECT_EQ(list.element_size, 0);
    int visited = 0;
    for (int32_t& element : list_elements<int32_t>(list)) { visited += 1 + element; }
    EXPECT_EQ(visited, 0);
}

TEST(KeyedListAdd, NullListIsRefusedEverywhere) {
    EXPECT_EQ(list_add(nullptr, 1), nullptr);
    EXPECT_EQ(list_add(nullptr, "a"), nullptr);
    EXPECT_EQ(list_find(nullptr, 1), nullptr);
    EXPECT_EQ(list_find(nullptr, "a"), nullptr);
    EXPECT_EQ(list_remove(nullptr, 1), 0);
    EXPECT_EQ(list_remove(nullptr, "a"), 0);
    EXPECT_EQ(list_remove_slot(nullptr, 0), 0);
    EXPECT_EQ(list_first(nullptr), nullptr);
    EXPECT_EQ(list_next(nullptr), nullptr);
    EXPECT_EQ(list_count(nullptr), 0);
    EXPECT_EQ(list_at(nullptr, 0, 0), nullptr);
    EXPECT_EQ(list_at(nullptr, 0, 1), nullptr);
    EXPECT_EQ(list_index_of(nullptr, 1, 0), -1);
    EXPECT_EQ(list_index_of(nullptr, "a", 1), -1);
    EXPECT_EQ(list_int_key(nullptr, 0), 0);
    EXPECT_EQ(list_text_key(nullptr, 0), nullptr);
    EXPECT_EQ(list_next_slot(nullptr, 3), 0);
    EXPECT_EQ(list_free(nullptr), 0);
    EXPECT_EQ(list_clear(nullptr), 0);
    KeyedList destination{};
    EXPECT_EQ(list_copy(nullptr, &destination), 0);
    EXPECT_EQ(list_copy(&destination, nullptr), 0);
}

TEST(KeyedListRemove, KeyZeroAndNegativeKeysAreFoundButNotRemoved) {
    List list(4, KEY_INT);
    void* zero = list_add(&list, 0);
    void* negative = list_add(&list, -5);
    EXPECT_EQ(list_find(&list, 0), zero);
    EXPECT_EQ(list_find(&list, -5), negative);
    EXPECT_EQ(list_remove(&list, 0), 0);
    EXPECT_EQ(list_remove(&list, -5), 0);
    EXPECT_EQ(list_find(&list, 0), zero);
    EXPECT_EQ(list_find(&list, -5), negative);
    EXPECT_EQ(list_count(&list), 2);
}

TEST(KeyedListRemove, SlotThreeOfFiveLeavesAHoleThatTheNextAddFills) {
    List list(4, KEY_INT);
    fill(&list, 5);
    EXPECT_EQ(list_remove(&list, 4), 1);  // key 4 lies in slot 3
    EXPECT_EQ(list_count(&list), 4);
    EXPECT_EQ(keys_in_walk(&list), (std::vector<int32_t>{1, 2, 3, 5}));
    EXPECT_EQ(list_at(&list, 3, 0), nullptr);
    EXPECT_EQ(*static_cast<int32_t*>(list_at(&list, 3, 1)), 500);
    int32_t* reused = add_int(&list, 77);
    EXPECT_EQ(list_index_of(&list, 77, 0), 3);
    EXPECT_EQ(*reused, 400);  // the bytes of the former tenant
    EXPECT_EQ(list_count(&list), 5);
}

TEST(KeyedListRemove, IndexBehindAHoleIsFourBySlotAndThreeByRank) {
    List list(4, KEY_INT);
    fill(&list, 5);
    list_remove(&list, 4);
    EXPECT_EQ(list_index_of(&list, 5, 0), 4);
    EXPECT_EQ(list_index_of(&list, 5, 1), 3);
    EXPECT_EQ(list_index_of(&list, 4, 0), -1);
    EXPECT_EQ(list_index_of(&list, 4, 1), -1);
}

TEST(KeyedListRemove, LowestHoleIsFilledFirst) {
    List list(4, KEY_INT);
    fill(&list, 200);
    for (int32_t key : {150, 3, 90}) { EXPECT_EQ(list_remove(&list, key), 1); }
    const int32_t keys[4] = {1000, 2000, 3000, 4000};
    const int32_t slots[4] = {2, 89, 149, 200};
    for (int i = 0; i < 4; ++i) {
        list_add(&list, keys[i]);
        EXPECT_EQ(list_index_of(&list, keys[i], 0), slots[i]);
    }
}

TEST(KeyedListRemove, HoleAtTheEndIsUsedAgainWithItsBytes) {
    List list(4, KEY_INT);
    fill(&list, 3);
    EXPECT_EQ(list_remove(&list, 3), 1);
    EXPECT_EQ(*add_int(&list, 9), 300);
    EXPECT_EQ(list_index_of(&list, 9, 0), 2);
}

TEST(KeyedListRemove, RemovedTextStaysInTheTableAndIsNotFound) {
    List list(4, KEY_STRING);
    list_add(&list, "top");
    const char* text = list_text_key(&list, 0);
    EXPECT_EQ(list_remove(&list, "top"), 1);
    EXPECT_STREQ(text, "top");
    EXPECT_EQ(list_find(&list, "top"), nullptr);
    EXPECT_EQ(list_text_key(&list, 0), nullptr);
    EXPECT_EQ(list_remove(&list, "top"), 0);
    EXPECT_EQ(list_count(&list), 0);
}

TEST(KeyedListRemove, NullTextIsNoKey) {
    List list(4, KEY_STRING);
    list_add(&list, "a");
    EXPECT_EQ(list_remove(&list, nullptr), 0);
    EXPECT_EQ(list_find(&list, nullptr), nullptr);
    EXPECT_EQ(list_index_of(&list, nullptr, 0), -1);
}

TEST(KeyedListRemove, StorageStaysWhenTheLastElementGoes) {
    List list(4, KEY_INT);
    list_add(&list, 1);
    list_remove(&list, 1);
    EXPECT_EQ(list_count(&list), 0);
    EXPECT_EQ(list.capacity, 16);
    EXPECT_NE(list.storage, nullptr);
}

TEST(KeyedListRemove, DoesNotMoveTheCursor) {
    List list(4, KEY_INT);
    fill(&list, 4);
    list_first(&list);
    list_next(&list);
    EXPECT_EQ(list.cursor, 1);
    list_remove(&list, 2);
    EXPECT_EQ(list.cursor, 1);
    int32_t key = 0;
    list_next(&list, &key);
    EXPECT_EQ(key, 3);
}

TEST(KeyedListRemove, BySlotTakesWhateverKeyTheSlotHolds) {
    List list(4, KEY_INT);
    list_add(&list, 0);
    list_add(&list, -3);
    EXPECT_EQ(list_remove_slot(&list, 1), 1);
    EXPECT_EQ(list_remove_slot(&list, 1), 0);
    EXPECT_EQ(list_remove_slot(&list, -1), 0);
    EXPECT_EQ(list_remove_slot(&list, 16), 0);
    EXPECT_EQ(list_remove_slot(&list, 0), 1);
    EXPECT_EQ(list_find(&list, 0), nullptr);
    EXPECT_EQ(list_count(&list), 0);
}

TEST(KeyedListWalk, EmptyPopulatedListDoesNotResetTheCursor) {
    List list(4, KEY_INT);
    fill(&list, 3);
    list_first(&list);
    list_next(&list);
    list_next(&list);
    for (int32_t key = 1; key <= 3; ++key) { list_remove(&list, key); }
    EXPECT_EQ(list_first(&list), nullptr);
    EXPECT_EQ(list.cursor, 2);
}

TEST(KeyedListWalk, NextWithoutFirstStartsAtSlotOne) {
    List list(4, KEY_INT);
    fill(&list, 3);
    EXPECT_EQ(*static_cast<int32_t*>(list_next(&list)), 200);
}

TEST(KeyedListWalk, StaysNullBehindTheEnd) {
    List list(4, KEY_INT);
    fill(&list, 2);
    list_first(&list);
    list_next(&list);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(list_next(&list), nullptr);
        EXPECT_EQ(list.cursor, 16);
    }
    EXPECT_NE(list_first(&list), nullptr);
}

TEST(KeyedListWalk, CursorOutsideTheListIsHarmless) {
    List list(4, KEY_INT);
    fill(&list, 2);
    list.cursor = INT_MAX_KEY;
    EXPECT_EQ(list_next(&list), nullptr);
    list.cursor = INT_MIN_KEY;
    EXPECT_EQ(*static_cast<int32_t*>(list_next(&list)), 100);
}

TEST(KeyedListWalk, HandsOutTerminatedTexts) {
    List list(4, KEY_STRING);
    list_add(&list, "b");
    list_add(&list, "a");
    const char* key = nullptr;
    ASSERT_NE(list_first(&list, &key), nullptr);
    EXPECT_STREQ(key, "b");
    ASSERT_NE(list_next(&list, &key), nullptr);
    EXPECT_STREQ(key, "a");
    EXPECT_EQ(list_next(&list, &key), nullptr);
}

TEST(KeyedListWalk, FindAtAndIndexLeaveTheCursorAlone) {
    List list(4, KEY_INT);
    fill(&list, 40);
    list_first(&list);
    list_next(&list);
    list_find(&list, 30);
    list_at(&list, 20, 0);
    list_at(&list, 20, 1);
    list_index_of(&list, 10, 1);
    list_next_slot(&list, 5);
    EXPECT_EQ(list.cursor, 1);
}

TEST(KeyedListWalk, EmptiedFromTheFrontByRestarting) {
    List list(4, KEY_INT);
    fill(&list, 1000);
    int32_t key = 0;
    int32_t expected = 1;
    while (list_first(&list, &key) != nullptr) {
        ASSERT_EQ(key, expected++);
        ASSERT_EQ(list_remove(&list, key), 1);
    }
    EXPECT_EQ(expected, 1001);
    list_add(&list, 5);
    EXPECT_EQ(keys_in_walk(&list), (std::vector<int32_t>{5}));
}

TEST(KeyedListWalk, NestedElementsMeetEveryPair) {
    List list(4, KEY_INT);
    fill(&list, 100);
    list_remove(&list, 50);
    int64_t sum = 0;
    for (const int32_t& outer : list_elements<int32_t>(list)) {
        for (const int32_t& inner : list_elements<int32_t>(list)) { sum += int64_t{outer} * inner; }
    }
    const int64_t total = 100 * (5050 - 50);
    EXPECT_EQ(sum, total * total);
    EXPECT_EQ(list.cursor, 0);
}

TEST(KeyedListWalk, ElementInHandMayBeRemovedAndElementsBehindMayBeAdded) {
    List list(4, KEY_INT);
    fill(&list, 3);
    const auto elements = list_elements<int32_t>(list);
    std::vector<int32_t> met;
    for (auto it = elements.begin(); it != elements.end(); ++it) {
        met.push_back(it.int_key());
        list_remove_slot(&list, it.slot());
        if (it.slot() == 1) {
            list_add(&list, 60);  // slot 0 again, which is behind us
            list_add(&list, 61);  // slot 1, likewise
            for (int32_t key = 70; key < 90; ++key) {
                list_add(&list, key);  // slots 3 to 22, in front
            }
        }
    }
    EXPECT_EQ(met.size(), 3U + 20U);
    EXPECT_EQ(met.back(), 89);
    EXPECT_EQ(list_count(&list), 2);
}

TEST(KeyedListWalk, EndsWhenTheListIsClearedInTheLoop) {
    List list(4, KEY_INT);
    fill(&list, 100);
    int visited = 0;
    for (int32_t& element : list_elements<int32_t>(list)) {
        visited += element > 0 ? 1 : 0;
        list_clear(&list);
    }
    EXPECT_EQ(visited, 1);
}

TEST(KeyedListAt, RefusesNegativeFreeAndTooLargeIndices) {
    List list(4, KEY_INT);
    fill(&list, 5);
    for (int32_t index : {INT_MIN_KEY, -1, 5, 15, 16, 17, INT_MAX_KEY}) {
        EXPECT_EQ(list_at(&list, index, 0), nullptr) << index;
        EXPECT_EQ(list_at(&list, index, 1), nullptr) << index;
        EXPECT_EQ(list_int_key(&list, index), 0) << index;
        EXPECT_EQ(list_text_key(&list, index), nullptr) << index;
    }
}

TEST(KeyedListAt, RankCountsOccupiedSlotsAcrossWords) {
    List list(4, KEY_INT);
    fill(&list, 500);
    for (int32_t key = 1; key <= 500; key += 2) { list_remove(&list, key); }
    for (int32_t rank = 0; rank < 250; ++rank) {
        ASSERT_EQ(*static_cast<int32_t*>(list_at(&list, rank, 1)), 200 * (rank + 1));
        ASSERT_EQ(list_index_of(&list, 2 * (rank + 1), 1), rank);
    }
    EXPECT_EQ(list_at(&list, 250, 1), nullptr);
}

TEST(KeyedListNextSlot, SkipsHolesAndEndsAtTheCapacity) {
    List list(4, KEY_INT);
    fill(&list, 200);
    for (int32_t key = 11; key <= 190; ++key) { list_remove(&list, key); }
    EXPECT_EQ(list_next_slot(&list, -7), 0);
    EXPECT_EQ(list_next_slot(&list, 9), 9);
    EXPECT_EQ(list_next_slot(&list, 10), 190);
    EXPECT_EQ(list_next_slot(&list, 150), 190);
    EXPECT_EQ(list_next_slot(&list, 200), 256);
    EXPECT_EQ(list_next_slot(&list, INT_MAX_KEY), 256);
}

TEST(KeyedListFree, AddIsRefusedAfterFreeAndWorksAfterClear) {
    List list(4, KEY_INT);
    list_add(&list, 1);
    EXPECT_EQ(list_clear(&list), 1);
    EXPECT_EQ(list.capacity, 0);
    EXPECT_NE(list_add(&list, 1), nullptr);
    EXPECT_EQ(list_free(&list), 1);
    EXPECT_EQ(list.element_size, 0);
    EXPECT_EQ(list.kind, 0);
    EXPECT_EQ(list_add(&list, 1), nullptr);
}

TEST(KeyedListNone, AcceptsTheSameKeyAnyNumberOfTimesAndFindsNothing) {
    List list(4, KEY_NONE);
    for (int i = 0; i < 40; ++i) { ASSERT_NE(list_add(&list, 5), nullptr); }
    EXPECT_EQ(list_count(&list), 40);
    EXPECT_EQ(list_find(&list, 5), nullptr);
    EXPECT_EQ(list_remove(&list, 5), 0);
    EXPECT_EQ(list_index_of(&list, 5, 0), -1);
    EXPECT_EQ(list_count(&list), 40);
    EXPECT_EQ(keys_in_walk(&list), std::vector<int32_t>(40, 5));
    EXPECT_EQ(list_int_key(&list, 39), 5);
}

TEST(KeyedListCopy, CopyOfAListWithoutElementsSharesNothing) {
    List source(4, KEY_INT);
    KeyedList copy;
    EXPECT_EQ(list_copy(&source, &copy), 1);
    EXPECT_EQ(copy.storage, nullptr);
    list_add(&source, 1);
    list_add(&copy, 2);
    EXPECT_EQ(list_find(&copy, 1), nullptr);
    EXPECT_EQ(list_find(&source, 2), nullptr);
    list_free(&copy);
}

TEST(KeyedListCopy, CopyHoldsTheSameSlotsCursorAndKeysAndGrowsByItself) {
    for (int32_t step : {1, 7}) {
        List source(4, KEY_INT);
        for (int32_t i = 1; i <= 150; ++i) { *add_int(&source, i * step * (i % 2 == 0 ? 1 : -1)) = i; }
        list_first(&source);
        list_next(&source);
        list_remove(&source, 4 * step);
        KeyedList copy;
        ASSERT_EQ(list_copy(&source, &copy), 1);
        EXPECT_EQ(copy.cursor, source.cursor);
        EXPECT_EQ(copy.capacity, source.capacity);
        EXPECT_EQ(keys_in_walk(&copy), keys_in_walk(&source));
        EXPECT_EQ(*static_cast<int32_t*>(list_find(&copy, 6 * step)), 6);
        EXPECT_NE(list_find(&copy, 6 * step), list_find(&source, 6 * step));
        EXPECT_EQ(*add_int(&copy, 5000), 4);  // the hole and its bytes were copied too
        for (int32_t i = 0; i < 500; ++i) { list_add(&copy, 6000 + i); }
        EXPECT_EQ(list_find(&source, 5000), nullptr);
        EXPECT_EQ(list_count(&source), 149);
        list_free(&copy);
        EXPECT_EQ(*static_cast<int32_t*>(list_find(&source, 6 * step)), 6);
    }
}

TEST(KeyedListCopy, TextsAreFoundInTheCopy) {
    List source(4, KEY_STRING);
    for (int i = 0; i < 100; ++i) { list_add(&source, ("k" + std::to_string(i)).c_str()); }
    KeyedList copy;
    list_copy(&source, &copy);
    list_free(&source);
    for (int i = 0; i < 100; ++i) { ASSERT_EQ(list_index_of(&copy, ("k" + std::to_string(i)).c_str(), 0), i); }
    list_free(&copy);
}

TEST(KeyedListCopy, OfAListOntoItselfChangesNothing) {
    List list(4, KEY_INT);
    fill(&list, 20);
    EXPECT_EQ(list_copy(&list, &list), 1);
    EXPECT_EQ(list_count(&list), 20);
    EXPECT_EQ(*static_cast<int32_t*>(list_find(&list, 20)), 2000);
}

TEST(KeyedListText, KeyOfThirtyOneBytesWorks) {
    List list(4, KEY_STRING);
    const std::string key(31, 'k');
    void* element = list_add(&list, key.c_str());
    EXPECT_EQ(list_find(&list, key.c_str()), element);
    EXPECT_EQ(list_add(&list, key.c_str()), element);
    EXPECT_EQ(list_text_key(&list, 0), key);
    EXPECT_EQ(list_remove(&list, key.c_str()), 1);
}

TEST(KeyedListText, KeyOfThirtyTwoBytesIsCutAndNeverFoundAndEachAddTakesASlot) {
    for (int before : {0, 40}) {  // found by scanning, found by the index
        List list(4, KEY_STRING);
        for (int i = 0; i < before; ++i) { list_add(&list, ("s" + std::to_string(i)).c_str()); }
        const std::string stored(32, 'k');
        const std::string key = stored + "tail";
        void* first = list_add(&list, key.c_str());
        void* second = list_add(&list, stored.c_str());
        EXPECT_NE(first, second);
        EXPECT_NE(list_add(&list, stored.c_str()), second);
        EXPECT_EQ(list_count(&list), before + 3);
        EXPECT_EQ(list_text_key(&list, before), stored);
        EXPECT_EQ(list_text_key(&list, before + 1), stored);
        EXPECT_EQ(list_find(&list, key.c_str()), nullptr);
        EXPECT_EQ(list_find(&list, stored.c_str()), nullptr);
        EXPECT_EQ(list_find(&list, stored.substr(0, 31).c_str()), nullptr);
        EXPECT_EQ(list_index_of(&list, stored.c_str(), 0), -1);
        EXPECT_EQ(list_remove(&list, stored.c_str()), 0);
        EXPECT_EQ(list_remove_slot(&list, before), 1);
        EXPECT_EQ(list_count(&list), before + 2);
    }
}

TEST(KeyedListText, EmptyTextIsAKey) {
    List list(4, KEY_STRING);
    void* element = list_add(&list, "");
    EXPECT_EQ(list_find(&list, ""), element);
    EXPECT_EQ(list_remove(&list, ""), 1);
}

TEST(KeyedListText, ReusedSlotShowsTheNewTextAlone) {
    List list(4, KEY_STRING);
    list_add(&list, "a long former key");
    list_remove(&list, "a long former key");
    list_add(&list, "new");
    EXPECT_STREQ(list_text_key(&list, 0), "new");
    EXPECT_EQ(list_find(&list, "a long former key"), nullptr);
}

TEST(KeyedListRecord, MayBeHandedOnByteByByte) {
    KeyedList first{};
    list_init(&first, 4, KEY_INT);
    fill(&first, 100);
    KeyedList second;
    std::memcpy(&second, &first, sizeof first);
    std::memset(&first, 0, sizeof first);
    EXPECT_EQ(*static_cast<int32_t*>(list_find(&second, 77)), 7700);
    fill(&second, 300);
    EXPECT_EQ(*static_cast<int32_t*>(list_find(&second, 300)), 30000);
    list_free(&second);
}

TEST(KeyedListKeys, ExtremeKeysAreDistinct) {
    List list(4, KEY_INT);
    const int32_t keys[] = {INT_MAX_KEY, INT_MIN_KEY, -1, 0, 1};
    for (int32_t key : keys) { list_add(&list, key); }
    for (int i = 0; i < 5; ++i) { EXPECT_EQ(list_index_of(&list, keys[i], 0), i); }
    EXPECT_EQ(list_find(&list, INT_MIN_KEY + 1), nullptr);
    EXPECT_EQ(list_remove(&list, INT_MAX_KEY), 1);
}

TEST(KeyedListKeys, RunOfKeysThatBreaksLateIsStillFound) {
    List list(4, KEY_INT);
    for (int32_t key = 100; key < 200; ++key) { list_add(&list, key); }
    EXPECT_EQ(list_find(&list, 99), nullptr);
    EXPECT_EQ(list_find(&list, 200), nullptr);
    list_add(&list, 5000);
    list_add(&list, 99);
    for (int32_t key = 99; key < 200; ++key) { ASSERT_EQ(list_index_of(&list, key, 0), key == 99 ? 101 : key - 100); }
    EXPECT_EQ(list_index_of(&list, 5000, 0), 100);
    EXPECT_EQ(list_find(&list, 200), nullptr);
}

// A slow list by the rules alone: what every operation must agree with.
struct SlowList {
    struct Slot {
        bool occupied = false;
        int32_t key = 0;
        int32_t value = 0;
    };
    std::vector<Slot> slots;
    int32_t count = 0;

    int32_t find(int32_t key) const {
        for (size_t i = 0; i < slots.size(); ++i) {
            if (slots[i].occupied && slots[i].key == key) { return static_cast<int32_t>(i); }
        }
        return -1;
    }
    Slot& add(int32_t key) {
        size_t place = 0;
        while (place < slots.size() && slots[place].occupied) { ++place; }
        if (place == slots.size()) { slots.resize(slots.empty() ? 16 : 2 * slots.size()); }
        slots[place].occupied = true;
        slots[place].key = key;
        ++count;
        return slots[place];
    }
};

void compare(const KeyedList& list, const SlowList& slow, int key_range, bool texts) {
    ASSERT_EQ(list_count(&list), slow.count);
    ASSERT_EQ(list.capacity, static_cast<int32_t>(slow.slots.size()));
    for (int32_t key = 1; key <= key_range; ++key) {
        const int32_t slot =
            texts ? list_index_of(&list, ("n" + std::to_string(key)).c_str(), 0) : list_index_of(&list, key, 0);
        ASSERT_EQ(slot, slow.find(key)) << key;
        if (slot >= 0) { ASSERT_EQ(*list_at<int32_t>(&list, slot, 0), slow.slots[static_cast<size_t>(slot)].value); }
    }
    int32_t expected = 0;
    for (int32_t slot = list_next_slot(&list, 0); slot < list.capacity; slot = list_next_slot(&list, slot + 1)) {
        while (!slow.slots[static_cast<size_t>(expected)].occupied) { ++expected; }
        ASSERT_EQ(slot, expected++);
    }
}

void exercise(int32_t kind, int key_range, unsigned seed) {
    List list(4, kind);
    SlowList slow;
    std::mt19937 random(seed);
    for (int step = 0; step < 6000; ++step) {
        const int32_t key = static_cast<int32_t>(random() % static_cast<unsigned>(key_range)) + 1;
        const std::string text = "n" + std::to_string(key);
        const bool texts = kind == KEY_STRING;
        const bool growing = step / 1500 % 2 == 0;
        if (random() % 3 != (growing ? 0U : 1U) && (growing || random() % 2 == 0)) {
            auto* element = static_cast<int32_t*>(texts ? list_add(&list, text.c_str()) : list_add(&list, key));
            const int32_t known = slow.find(key);
            SlowList::Slot& slot = known >= 0 ? slow.slots[static_cast<size_t>(known)] : slow.add(key);
            ASSERT_EQ(*element, slot.value);
            *element = slot.value = step;
        } else {
            const int32_t known = slow.find(key);
            const int removed = texts ? list_remove(&list, text.c_str()) : list_remove(&list, key);
            ASSERT_EQ(removed, known >= 0 ? 1 : 0);
            if (known >= 0) {
                slow.slots[static_cast<size_t>(known)].occupied = false;
                --slow.count;
            }
        }
        if (step % 500 == 499) { compare(list, slow, key_range, texts); }
    }
}

TEST(KeyedListRandom, IntegerKeysAgreeWithASlowList) {
    exercise(KEY_INT, 12, 1);
    exercise(KEY_INT, 60, 2);
    exercise(KEY_INT, 900, 3);
}

TEST(KeyedListRandom, TextKeysAgreeWithASlowList) {
    exercise(KEY_STRING, 12, 4);
    exercise(KEY_STRING, 60, 5);
    exercise(KEY_STRING, 900, 6);
}

TEST(KeyedListScale, HundredThousandScatteredKeysAreAllFound) {
    List list(4, KEY_INT);
    constexpr int32_t n = 100000;
    for (int32_t i = 0; i < n; ++i) { *add_int(&list, static_cast<int32_t>(int64_t{i} * 7919 % n) * 16 + 1) = i; }
    ASSERT_EQ(list_count(&list), n);
    for (int32_t i = 0; i < n; ++i) {
        ASSERT_EQ(*static_cast<int32_t*>(list_find(&list, static_cast<int32_t>(int64_t{i} * 7919 % n) * 16 + 1)), i);
    }
    EXPECT_EQ(list_find(&list, 2), nullptr);
}

// Keys that meet in one place under a hash that everybody knows: a mixing of the bits that can be run backwards, and
// FNV-1a of a text. However they were chosen, they must not meet here.

// The longest stretch of taken places in the index of a list, which is what a search may have to go along.
size_t longest_stretch(const KeyedList& list) {
    const ListStorage* storage = list.storage;
    size_t longest = 0;
    size_t stretch = 0;
    for (size_t place = 0; place <= 2 * size_t{storage->index_mask}; ++place) {
        stretch = storage->index[place & storage->index_mask] != 0 ? stretch + 1 : 0;
        longest = std::max(longest, stretch);
    }
    return longest;
}

// By chance it is about a hundred where two thirds of the places are taken.
constexpr size_t STRETCH_BY_CHANCE = 1000;

constexpr uint32_t inverse_of(uint32_t odd) {
    uint32_t inverse = odd;
    for (int i = 0; i < 5; ++i) { inverse *= 2 - odd * inverse; }
    return inverse;
}

// The number that the mixing of MurmurHash3 turns into this one.
uint32_t unmixed(uint32_t mixed) {
    mixed ^= mixed >> 16;
    mixed *= inverse_of(0xc2b2ae35U);
    mixed ^= mixed >> 13 ^ mixed >> 26;
    mixed *= inverse_of(0x85ebca6bU);
    return mixed ^ mixed >> 16;
}

TEST(KeyedListIndex, IntegersChosenToCollideAreSpread) {
    List list(4, KEY_INT);
    for (uint32_t high = 1; list_count(&list) < 20000; ++high) {
        const uint32_t key = unmixed(high << 15);
        if (key <= static_cast<uint32_t>(INT_MAX_KEY)) { add_int(&list, static_cast<int32_t>(key)); }
    }
    EXPECT_LT(longest_stretch(list), STRETCH_BY_CHANCE);
}

constexpr uint32_t FNV_FACTOR = 16777619U;
constexpr uint32_t FNV_INVERSE = inverse_of(FNV_FACTOR);

// Five letters that stand for a number; letter by letter, because half a million of them are tried.
constexpr uint32_t HALF = 5;
uint32_t letter_of(uint32_t number, uint32_t place) {
    constexpr uint32_t POWERS[HALF] = {1, 26, 26 * 26, 26 * 26 * 26, 26 * 26 * 26 * 26};
    return 'a' + number / POWERS[place] % 26;
}
std::string letters(uint32_t number) {
    std::string text;
    for (uint32_t place = 0; place < HALF; ++place) { text += static_cast<char>(letter_of(number, place)); }
    return text;
}

// Texts of ten letters that all take FNV-1a from one value to the other: those whose first half leads where the
// second half comes from.
std::vector<std::string> bridges(uint32_t from, uint32_t to) {
    constexpr uint32_t HALVES = 1U << 18;
    std::vector<uint64_t> first(HALVES);
    for (uint32_t number = 0; number < HALVES; ++number) {
        uint32_t hash = from;
        for (uint32_t place = 0; place < HALF; ++place) { hash = (hash ^ letter_of(number, place)) * FNV_FACTOR; }
        first[number] = uint64_t{hash} << 32 | number;
    }
    std::sort(first.begin(), first.end());
    std::vector<std::string> texts;
    for (uint32_t number = 0; number < HALVES; ++number) {
        uint32_t hash = to;
        for (uint32_t place = HALF; place-- > 0;) { hash = hash * FNV_INVERSE ^ letter_of(number, place); }
        const auto found = std::lower_bound(first.begin(), first.end(), uint64_t{hash} << 32);
        if (found != first.end() && *found >> 32 == hash) {
            texts.push_back(letters(static_cast<uint32_t>(*found)) + letters(number));
        }
    }
    return texts;
}

TEST(KeyedListIndex, TextsChosenToCollideAreSpread) {
    constexpr uint32_t FNV_START = 2166136261U;
    const std::vector<std::string> heads = bridges(FNV_START, 1);
    const std::vector<std::string> middles = bridges(1, 2);
    const std::vector<std::string> tails = bridges(2, 3);
    List list(4, KEY_STRING);
    for (const std::string& head : heads) {
        for (const std::string& middle : middles) {
            for (size_t i = 0; i < tails.size() && list_count(&list) < 2000; ++i) {
                list_add(&list, (head + middle + tails[i]).c_str());
            }
        }
    }
    ASSERT_EQ(list_count(&list), 2000);
    EXPECT_LT(longest_stretch(list), STRETCH_BY_CHANCE);
    EXPECT_NE(list_find(&list, (heads[0] + middles[0] + tails[0]).c_str()), nullptr);
    EXPECT_EQ(list_find(&list, (heads[0] + middles[0] + "zzzzzzzzzz").c_str()), nullptr);
}

template <typename AnyList>
constexpr bool GIVES_CONST_ELEMENTS =
    std::is_const_v<std::remove_pointer_t<decltype(list_find(std::declval<AnyList*>(), 1))>> &&
    std::is_const_v<std::remove_pointer_t<decltype(list_find(std::declval<AnyList*>(), "a"))>> &&
    std::is_const_v<std::remove_pointer_t<decltype(list_at(std::declval<AnyList*>(), 0, 0))>> &&
    std::is_const_v<std::remove_pointer_t<decltype(list_find<int32_t>(std::declval<AnyList*>(), 1))>> &&
    std::is_const_v<std::remove_pointer_t<decltype(list_at<int32_t>(std::declval<AnyList*>(), 0, 1))>> &&
    std::is_const_v<std::remove_reference_t<decltype(*list_elements<int32_t>(std::declval<AnyList&>()).begin())>>;

TEST(KeyedListConst, AConstListGivesElementsThatCannotBeChanged) {
    EXPECT_TRUE(GIVES_CONST_ELEMENTS<const KeyedList>);
    EXPECT_TRUE(GIVES_CONST_ELEMENTS<const List>);
    List list(4, KEY_INT);
    fill(&list, 2);
    *list_find<int32_t>(&list, 1) = 7;
    *list_at<int32_t>(&list, 1, 0) = 8;
    for (int32_t& value : list_elements<int32_t>(list)) { ++value; }
    EXPECT_EQ(*static_cast<int32_t*>(list_find(&list, 1)), 8);
    EXPECT_EQ(*static_cast<int32_t*>(list_at(&list, 1, 0)), 9);
}

// ---- putting back as it was ----

TEST(KeyedListAddAt, FillsTheSlotThatIsToldAndTheNextAddTheLowestFreeOne) {
    List list(4, KEY_INT);
    fill(&list, 5);
    list_remove(&list, 2);
    list_remove(&list, 4);
    EXPECT_EQ(list_slot_for(&list, int32_t{9}), 1);
    auto* element = static_cast<int32_t*>(list_add_at(&list, 3, int32_t{4}));
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(*element, 400) << "the bytes of the former tenant";
    EXPECT_EQ(list_index_of(&list, int32_t{4}, 0), 3);
    EXPECT_EQ(keys_in_walk(&list), (std::vector<int32_t>{1, 3, 4, 5}));
    add_int(&list, 9);
    EXPECT_EQ(list_index_of(&list, int32_t{9}, 0), 1);
}

TEST(KeyedListAddAt, GrowsTheListAndLeavesZerosInWhatItPassesOver) {
    List list(4, KEY_INT);
    ASSERT_NE(list_add_at(&list, 40, int32_t{7}), nullptr);
    EXPECT_EQ(list.capacity, 64);
    EXPECT_EQ(list_count(&list), 1);
    EXPECT_EQ(*static_cast<int32_t*>(list_slot_bytes(&list, 39)), 0);
    EXPECT_EQ(list_slot_for(&list, int32_t{1}), 0);
    EXPECT_EQ(*add_int(&list, 1), 0);
    EXPECT_EQ(list_index_of(&list, int32_t{1}, 0), 0);
    EXPECT_EQ(list_index_of(&list, int32_t{7}, 1), 1);
}

TEST(KeyedListAddAt, RefusesWhatIsOccupiedOrNoSlot) {
    List list(4, KEY_INT);
    fill(&list, 2);
    EXPECT_EQ(list_add_at(&list, 1, int32_t{9}), nullptr);
    EXPECT_EQ(list_add_at(&list, -1, int32_t{9}), nullptr);
    EXPECT_EQ(list_add_at(&list, INT_MAX_KEY, int32_t{9}), nullptr);
    EXPECT_EQ(list_add_at(&list, 5, "text"), nullptr) << "a key of the wrong type";
    EXPECT_EQ(list_add_at(nullptr, 5, int32_t{9}), nullptr);
    KeyedList none{};
    EXPECT_EQ(list_add_at(&none, 0, int32_t{9}), nullptr);
    EXPECT_EQ(list_count(&list), 2);
}

TEST(KeyedListAddAt, KeysThatRunOnAreFoundBothWaysWhenOneIsPutElsewhere) {
    List list(4, KEY_INT);
    fill(&list, 40);
    for (int32_t key = 1; key <= 40; ++key) { list_remove(&list, key); }
    // Back to front, so that the first of them stands in no first slot.
    for (int32_t key = 40; key >= 1; --key) { ASSERT_NE(list_add_at(&list, key - 1, key), nullptr); }
    for (int32_t key = 1; key <= 40; ++key) { ASSERT_EQ(list_index_of(&list, key, 0), key - 1); }
    list_remove(&list, 10);
    ASSERT_NE(list_add_at(&list, 9, int32_t{99}), nullptr);
    for (int32_t key = 1; key <= 40; ++key) { ASSERT_EQ(list_index_of(&list, key, 0), key == 10 ? -1 : key - 1); }
    EXPECT_EQ(list_index_of(&list, int32_t{99}, 0), 9);
}

TEST(KeyedListAddAt, ACutTextKeyStaysCutAndIsNeverFound) {
    const std::string name(50, 'n');
    List list(4, KEY_STRING);
    list_add(&list, name.c_str());
    const std::string key = list_text_key(&list, 0);
    list_remove_slot(&list, 0);
    ASSERT_NE(list_add_at(&list, 0, key.c_str()), nullptr);
    EXPECT_EQ(list_text_key(&list, 0), key);
    EXPECT_EQ(list_find(&list, name.c_str()), nullptr);
    EXPECT_EQ(list_find(&list, key.c_str()), nullptr);
}

TEST(KeyedListSlotOfElement, TellsTheSlotOfAnAddressInTheList) {
    List list(12, KEY_INT);
    for (int32_t key = 1; key <= 70; ++key) { list_add(&list, key); }
    for (int32_t slot = 0; slot < 70; ++slot) { EXPECT_EQ(list_slot_of_element(&list, list_at(&list, slot, 0)), slot); }
    const void* freed = list_at(&list, 20, 0);
    list_remove_slot(&list, 20);
    EXPECT_EQ(list_slot_of_element(&list, freed), -1);
    EXPECT_EQ(list_slot_of_element(&list, &list), -1);
    EXPECT_EQ(list_slot_of_element(&list, nullptr), -1);
    KeyedList none{};
    EXPECT_EQ(list_slot_of_element(&none, &list), -1);
}

TEST(KeyedListSlotFor, IsTheSlotThatTheAddThenTakes) {
    List list(4, KEY_STRING);
    EXPECT_EQ(list_slot_for(&list, "a"), 0);
    list_add(&list, "a");
    EXPECT_EQ(list_slot_for(&list, "a"), 0);
    EXPECT_EQ(list_slot_for(&list, "b"), 1);
    EXPECT_EQ(list_slot_for(&list, static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(list_slot_for(&list, int32_t{3}), -1);
    EXPECT_EQ(list_count(&list), 1);
}

}  // namespace
}  // namespace pelt
