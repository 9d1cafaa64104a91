// Which elements of one sequence stand for which of another.
#include "formats/sequence_match.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace pelt {
namespace {

std::vector<std::string> letters(const std::string& text) {
    std::vector<std::string> all;
    for (const char c : text) { all.emplace_back(1, c); }
    return all;
}

std::vector<int> match(const std::string& before, const std::string& after) {
    return match_sequences(letters(before), letters(after));
}

using Places = std::vector<int>;

TEST(SequenceMatch, WhatIsEqualStands) {
    EXPECT_EQ(match("", ""), Places{});
    EXPECT_EQ(match("abc", "abc"), (Places{0, 1, 2}));
    EXPECT_EQ(match("abc", "ac"), (Places{0, 2}));
    EXPECT_EQ(match("ac", "abc"), (Places{0, NO_MATCH, 1}));
    EXPECT_EQ(match("aaa", "aa"), (Places{0, 1}));
}

TEST(SequenceMatch, WhatLiesBetweenIsPairedInItsOrder) {
    EXPECT_EQ(match("abc", "axc"), (Places{0, 1, 2}));
    EXPECT_EQ(match("abcd", "axd"), (Places{0, 1, 3}));
    EXPECT_EQ(match("abd", "axyd"), (Places{0, 1, NO_MATCH, 2}));
    EXPECT_EQ(match("abc", "xyz"), (Places{0, 1, 2}));
}

TEST(SequenceMatch, OfWhatWasMixedTheLongestRunStays) {
    EXPECT_EQ(match("abcde", "bcdea"), (Places{1, 2, 3, 4, NO_MATCH}));
}

TEST(SequenceMatch, PlacesRiseAndAreTakenOnce) {
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        const auto word = [&] {
            std::string text;
            for (auto i = random() % 12; i > 0; --i) { text += static_cast<char>('a' + random() % 4); }
            return text;
        };
        const std::string before = word();
        const std::string after = word();
        int last = -1;
        for (const int place : match(before, after)) {
            if (place == NO_MATCH) { continue; }
            EXPECT_GT(place, last) << before << " " << after;
            EXPECT_LT(place, static_cast<int>(before.size()));
            last = place;
        }
    }
}

}  // namespace
}  // namespace pelt
