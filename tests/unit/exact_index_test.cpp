// Vectors found by exact equality, lowest slot first.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "reduce/exact_index.h"

namespace {

using namespace pelt;

TEST(ExactIndex, lowest_slot_is_found_whatever_the_order_of_adding) {
    ExactIndex index;
    exact_index_add(&index, {1, 2, 3}, 7);
    exact_index_add(&index, {1, 2, 3}, 4);
    exact_index_add(&index, {1, 2, 3}, 9);
    EXPECT_EQ(exact_index_find(index, {1, 2, 3}), 4);
    exact_index_remove(&index, {1, 2, 3}, 4);
    EXPECT_EQ(exact_index_find(index, {1, 2, 3}), 7);
}

TEST(ExactIndex, neighbouring_floats_differ) {
    ExactIndex index;
    exact_index_add(&index, {1.0f, 0, 0}, 1);
    EXPECT_EQ(exact_index_find(index, {std::nextafter(1.0f, 2.0f), 0, 0}), -1);
    EXPECT_EQ(exact_index_find(index, {0, 1.0f, 0}), -1);
}

TEST(ExactIndex, both_zeros_are_equal) {
    ExactIndex index;
    exact_index_add(&index, {-0.0f, 0.0f, -0.0f}, 3);
    EXPECT_EQ(exact_index_find(index, {0.0f, -0.0f, 0.0f}), 3);
    exact_index_remove(&index, {0.0f, 0.0f, 0.0f}, 3);
    EXPECT_EQ(exact_index_find(index, {0.0f, 0.0f, 0.0f}), -1);
}

TEST(ExactIndex, a_non_number_equals_nothing_and_an_infinity_itself) {
    ExactIndex index;
    const float nan = std::nanf("");
    exact_index_add(&index, {nan, 0, 0}, 1);
    EXPECT_TRUE(index.lowest.empty());
    EXPECT_EQ(exact_index_find(index, {nan, 0, 0}), -1);
    exact_index_remove(&index, {0, nan, 0}, 1);
    exact_index_add(&index, {INFINITY, 0, 0}, 2);
    EXPECT_EQ(exact_index_find(index, {INFINITY, 0, 0}), 2);
    EXPECT_EQ(exact_index_find(index, {-INFINITY, 0, 0}), -1);
}

TEST(ExactIndex, removing_what_is_not_there_does_nothing) {
    ExactIndex index;
    exact_index_remove(&index, {1, 1, 1}, 1);
    exact_index_add(&index, {1, 1, 1}, 2);
    exact_index_remove(&index, {1, 1, 1}, 1);
    EXPECT_EQ(exact_index_find(index, {1, 1, 1}), 2);
}

TEST(ExactIndex, many_vectors_and_slots_as_in_a_plain_search) {
    // Few vectors with many slots each and many vectors with one, added and removed at random.
    ExactIndex index;
    std::vector<Vec3> at(4000, Vec3{-1, -1, -1});  // what stands in each slot; below 0 for nothing
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        const auto slot = static_cast<int32_t>(random() % at.size());
        Vec3& place = at[static_cast<size_t>(slot)];
        if (place.x >= 0) {
            exact_index_remove(&index, place, slot);
            place = {-1, -1, -1};
        } else {
            const auto number = static_cast<float>(random() % 2 ? random() % 5 : random() % 100000);
            place = {number, 0.5f, 1};
            exact_index_add(&index, place, slot);
        }
        const Vec3 sought = step % 2 ? Vec3{static_cast<float>(random() % 5), 0.5f, 1} : at[random() % at.size()];
        int32_t expected = -1;
        for (size_t i = 0; i < at.size() && expected < 0 && sought.x >= 0; ++i) {
            if (at[i].x == sought.x) { expected = static_cast<int32_t>(i); }
        }
        ASSERT_EQ(exact_index_find(index, sought), expected) << step;
    }
}

}  // namespace
