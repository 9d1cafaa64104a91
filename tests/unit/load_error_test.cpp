// The load-error record: its text, its place and its limits.
#include "foundation/load_error.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace pelt {
namespace {

class LoadErrorTest : public ::testing::Test {
protected:
    void SetUp() override {
        load_error_watch(nullptr, nullptr);
        load_error_set(nullptr);
    }
    void TearDown() override { SetUp(); }
};

TEST_F(LoadErrorTest, WithNoReadInProgressTheBareTextIsStored) {
    EXPECT_EQ(load_error_get(), nullptr);
    load_error_set("could not find: x");
    EXPECT_STREQ(load_error_get(), "could not find: x");
}

TEST_F(LoadErrorTest, DuringAReadTheFileAndLineAreAdded) {
    const int32_t line = 12;
    load_error_watch("c:/m/ship.mod", &line);
    load_error_set("Bad triangle definition");
    EXPECT_STREQ(load_error_get(), "Bad triangle definition (file: c:/m/ship.mod, line: 12)");
}

TEST_F(LoadErrorTest, PlaceIsThatOfTheMomentOfTheError) {
    int32_t line = 1;
    load_error_watch("a.mod", &line);
    line = 99;
    load_error_set("late");
    line = 100;
    EXPECT_STREQ(load_error_get(), "late (file: a.mod, line: 99)");
    load_error_watch(nullptr, nullptr);
    load_error_set("after");
    EXPECT_STREQ(load_error_get(), "after");
}

TEST_F(LoadErrorTest, TheFailureHasItsPartsUncut) {
    const int32_t line = 12;
    const std::string text(1000, 't');
    load_error_watch("c:/m/ship (file: x, line: 1).mod", &line, "1 2 \"three");
    load_error_set(text.c_str());
    EXPECT_EQ(load_failure().text, text);
    EXPECT_EQ(load_failure().file, "c:/m/ship (file: x, line: 1).mod");
    EXPECT_EQ(load_failure().line, 12);
    EXPECT_EQ(load_failure().source, "1 2 \"three");
    load_error_set(nullptr);
    EXPECT_EQ(load_failure().text, "");
    EXPECT_EQ(load_failure().line, 0);
}

TEST_F(LoadErrorTest, AFailureWithoutAFileIsGivenOneOnce) {
    load_error_set("bad normal");
    load_failure_in("inner.mod");
    load_failure_in("outer.mod");
    EXPECT_EQ(load_failure().file, "inner.mod");
    EXPECT_STREQ(load_error_get(), "bad normal");
}

TEST_F(LoadErrorTest, ProblemsAreTheLastOfEachLineOfAFile) {
    int32_t line = 3;
    load_error_set("before");
    load_problems_begin();
    load_error_set("outside a file");
    load_error_watch("a.mod", &line, "image none.tga");
    load_error_set("first of the line");
    load_error_set("last of the line");
    line = 4;
    load_error_set("next line");
    load_error_watch("b.mod", &line, "");
    load_error_set("same line of another file");
    const std::vector<LoadFailure> problems = load_problems_end();
    load_error_set("behind the end");
    ASSERT_EQ(problems.size(), 3u);
    EXPECT_EQ(problems[0].text, "last of the line");
    EXPECT_EQ(problems[0].source, "image none.tga");
    EXPECT_EQ(problems[1].text, "next line");
    EXPECT_EQ(problems[2].file, "b.mod");
    load_problems_begin();
    EXPECT_TRUE(load_problems_end().empty());
}

TEST_F(LoadErrorTest, ProblemsAreBounded) {
    int32_t line = 0;
    load_error_watch("a.mod", &line);
    load_problems_begin();
    for (line = 1; line <= 1000; ++line) { load_error_set("bad"); }
    const std::vector<LoadFailure> problems = load_problems_end();
    ASSERT_EQ(problems.size(), LOAD_PROBLEM_LIMIT);
    EXPECT_EQ(problems.back().line, static_cast<int32_t>(LOAD_PROBLEM_LIMIT));
}

TEST_F(LoadErrorTest, LineWithoutAFileNameIsAddedUnlessItIsZero) {
    int32_t line = 5;
    load_error_watch(nullptr, &line);
    load_error_set("text");
    EXPECT_STREQ(load_error_get(), "text (line: 5)");
    line = 0;
    load_error_set("text");
    EXPECT_STREQ(load_error_get(), "text");
}

TEST_F(LoadErrorTest, FileNameWithoutALineCountsAsLineZero) {
    load_error_watch("a.mod", nullptr);
    load_error_set("text");
    EXPECT_STREQ(load_error_get(), "text (file: a.mod, line: 0)");
}

TEST_F(LoadErrorTest, NullClearsTheRecord) {
    load_error_set("text");
    load_error_set(nullptr);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LoadErrorTest, OnlyTheLatestTextIsKept) {
    load_error_set("first");
    load_error_set("second");
    EXPECT_STREQ(load_error_get(), "second");
}

TEST_F(LoadErrorTest, EmptyTextIsAText) {
    load_error_set("");
    EXPECT_STREQ(load_error_get(), "");
}

TEST_F(LoadErrorTest, LongTextIsCutTo255Bytes) {
    const int32_t line = std::numeric_limits<int32_t>::min();
    const std::string file(1000, 'f');
    load_error_set(std::string(10000, 't').c_str());
    EXPECT_EQ(load_error_get(), std::string(255, 't'));
    load_error_watch(file.c_str(), &line);
    load_error_set("x");
    EXPECT_EQ(load_error_get(), "x (file: " + std::string(246, 'f'));
    load_error_watch("f", &line);
    load_error_set("x");
    EXPECT_STREQ(load_error_get(), "x (file: f, line: -2147483648)");
}

TEST_F(LoadErrorTest, LongTextIsCutBetweenCharacters) {
    load_error_set((std::string(254, 't') + "\u00e9").c_str());
    ASSERT_NE(load_error_get(), nullptr);
    EXPECT_EQ(load_error_get(), std::string(254, 't'));
}

TEST_F(LoadErrorTest, TextOfExactly255BytesIsWhole) {
    const std::string text(255, 't');
    load_error_set(text.c_str());
    EXPECT_EQ(load_error_get(), text);
}

TEST_F(LoadErrorTest, RecordMayBeSetFromItself) {
    load_error_set("text");
    load_error_set(load_error_get());
    EXPECT_STREQ(load_error_get(), "text");
    load_error_set_format("again: %s", load_error_get());
    EXPECT_STREQ(load_error_get(), "again: text");
}

TEST_F(LoadErrorTest, PercentSignsOfATextAreData) {
    load_error_set("%s%n%d");
    EXPECT_STREQ(load_error_get(), "%s%n%d");
    load_error_set_format("could not find: %s", "%s%n.mod");
    EXPECT_STREQ(load_error_get(), "could not find: %s%n.mod");
}

TEST_F(LoadErrorTest, FormatTakesOneParameter) {
    const int32_t line = 3;
    load_error_watch("a.mod", &line);
    load_error_set_format("could not find: %s", "ship.mod");
    EXPECT_STREQ(load_error_get(), "could not find: ship.mod (file: a.mod, line: 3)");
    load_error_watch(nullptr, nullptr);
    load_error_set_format("no parameter", "x");
    EXPECT_STREQ(load_error_get(), "no parameter");
    load_error_set_format("null: %s", nullptr);
    EXPECT_STREQ(load_error_get(), "null: ");
    load_error_set_format(nullptr, "x");
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LoadErrorTest, LongParameterIsCutWithinBounds) {
    load_error_set_format("a: %s", std::string(100000, 'p').c_str());
    EXPECT_EQ(load_error_get(), "a: " + std::string(252, 'p'));
}

}  // namespace
}  // namespace pelt
