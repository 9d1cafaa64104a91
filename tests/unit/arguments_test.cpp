// Words, typed arguments and result texts, without Tcl. The room lies in the shared library, which shows nothing but
// its entry points, so that its source is compiled into this test.
#include "script/arguments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace pelt {
namespace {

std::vector<std::string> split(const std::vector<const char*>& argv, WordConverter converter = nullptr) {
    WordTable table;
    words_split(&table, static_cast<int>(argv.size()), argv.data(), converter);
    std::vector<std::string> words;
    for (Words word = table.words.data(); *word != nullptr; ++word) { words.emplace_back(*word); }
    return words;
}

using Texts = std::vector<std::string>;

TEST(WordsSplit, ArgumentsAreCutAtBlanks) { EXPECT_EQ(split({"a", "b c", "d"}), (Texts{"a", "b", "c", "d"})); }
TEST(WordsSplit, TabsAndLineEndsBelongToWords) { EXPECT_EQ(split({"a\tb\nc d"}), (Texts{"a\tb\nc", "d"})); }
TEST(WordsSplit, TwoBlanksDropTheRestOfTheArgument) { EXPECT_EQ(split({"set  x 1", "y"}), (Texts{"set", "y"})); }
TEST(WordsSplit, ALeadingBlankDropsTheArgument) { EXPECT_EQ(split({" a b", "c"}), (Texts{"c"})); }
TEST(WordsSplit, ATrailingBlankAddsNothing) { EXPECT_EQ(split({"a "}), (Texts{"a"})); }
TEST(WordsSplit, AnEmptyArgumentAddsNothing) { EXPECT_EQ(split({"", "a", ""}), (Texts{"a"})); }
TEST(WordsSplit, NoArgumentsGiveATableOfOneNull) { EXPECT_TRUE(split({}).empty()); }

TEST(WordsSplit, TheTableEndsAt1024Words) {
    std::vector<const char*> argv(1023, "x");
    argv.push_back("last");
    argv.push_back("lost");
    argv.push_back("lost too");
    const Texts words = split(argv);
    ASSERT_EQ(words.size(), 1024u);
    EXPECT_EQ(words.back(), "last");
}

TEST(WordsSplit, TheTableEndsAt1024WordsWithinAnArgument) {
    std::string text = "x";
    for (int i = 0; i < 3000; ++i) { text += " x"; }
    EXPECT_EQ(split({"command", text.c_str()}).size(), 1024u);
}

TEST(WordsSplit, AConverterGetsEachWordAlone) {
    const auto converter = [](const char* word, size_t length, std::string* out) {
        *out += '<' + std::string(word, length) + '>';
    };
    EXPECT_EQ(split({"ab c", "d"}, converter), (Texts{"<ab>", "<c>", "<d>"}));
}

TEST(WordsSplit, ATableCanBeFilledAgain) {
    WordTable table;
    const char* first[] = {"a", "b", "c"};
    const char* second[] = {"d"};
    words_split(&table, 3, first, nullptr);
    words_split(&table, 1, second, nullptr);
    EXPECT_STREQ(table.words[0], "d");
    EXPECT_EQ(table.words[1], nullptr);
}

struct Number {
    const char* word;
    int accepted;
    int32_t value;
};

TEST(ArgRead, Integers) {
    const Number numbers[] = {{"12", 1, 12},  {"1.0", 0, 99},  {"--5", 1, 0}, {"5-3", 1, 5},
                              {"-7", 1, -7},  {"+1", 0, 99},   {"", 1, 0},    {"-", 1, 0},
                              {"1e3", 0, 99}, {"0x10", 0, 99}, {"1/2", 0, 99}};
    for (const Number& number : numbers) {
        int32_t value = 99;
        EXPECT_EQ(arg_read(&value, number.word, ARG_INT), number.accepted) << number.word;
        EXPECT_EQ(value, number.value) << number.word;
    }
}

TEST(ArgRead, IntegersBeyond32BitsSaturate) {
    int32_t value = 0;
    EXPECT_EQ(arg_read(&value, "2147483648", ARG_INT), 1);
    EXPECT_EQ(value, std::numeric_limits<int32_t>::max());
    EXPECT_EQ(arg_read(&value, "-99999999999999999999999", ARG_INT), 1);
    EXPECT_EQ(value, std::numeric_limits<int32_t>::min());
}

TEST(ArgRead, Floats) {
    const struct {
        const char* word;
        int accepted;
        float value;
    } numbers[] = {{"1", 1, 1.0f},    {".5", 1, 0.5f},  {"5.", 1, 5.0f},     {"-.5", 1, -0.5f},
                   {"1e3", 0, 99.0f}, {"+1", 0, 99.0f}, {"1.2.3", 0, 99.0f}, {"x", 0, 99.0f}};
    for (const auto& number : numbers) {
        float value = 99.0f;
        EXPECT_EQ(arg_read(&value, number.word, ARG_FLOAT), number.accepted) << number.word;
        EXPECT_EQ(value, number.value) << number.word;
    }
}

TEST(ArgRead, Flags) {
    const Number flags[] = {{"on", 1, 1},   {"true", 1, 1}, {"off", 1, 0},  {"false", 1, 0},
                            {"1", 1, 1},    {"0", 1, 0},    {"2", 1, 2},    {"-3", 1, -3},
                            {"1.0", 0, 99}, {"ON", 0, 99},  {"yes", 0, 99}, {"True", 0, 99}};
    for (const Number& flag : flags) {
        int32_t value = 99;
        EXPECT_EQ(arg_read(&value, flag.word, ARG_FLAG), flag.accepted) << flag.word;
        EXPECT_EQ(value, flag.value) << flag.word;
    }
}

TEST(ArgRead, ATextIsThePointerItself) {
    const char* word = "anything at all";
    const char* value = nullptr;
    EXPECT_EQ(arg_read(&value, word, ARG_TEXT), 1);
    EXPECT_EQ(value, word);
}

TEST(ArgRead, ANullDestinationOrWordGives0) {
    int32_t value = 99;
    EXPECT_EQ(arg_read(nullptr, "1", ARG_INT), 0);
    for (const int kind : {ARG_INT, ARG_FLOAT, ARG_TEXT, ARG_FLAG}) { EXPECT_EQ(arg_read(&value, nullptr, kind), 0); }
    EXPECT_EQ(value, 99);
}

TEST(ArgRead, AnUnknownKindStoresNothingAndGives1) {
    int32_t value = 99;
    for (const int kind : {0, 5, -1}) { EXPECT_EQ(arg_read(&value, "1", kind), 1); }
    EXPECT_EQ(value, 99);
}

TEST(ArgsRead, NothingBehindTheEndOfTheTableIsRead) {
    const char* words[] = {"1", "2", nullptr};
    int32_t ints[4] = {9, 9, 9, 9};
    EXPECT_EQ(args_read_ints(words, ints, 4), 0);
    EXPECT_EQ(ints[1], 2);
    EXPECT_EQ(ints[2], 9);
    float floats[3] = {};
    EXPECT_EQ(args_read_floats(words + 2, floats, 3), 0);
    const char* texts[2] = {};
    EXPECT_EQ(args_read_texts(words, texts, 2), 1);
    EXPECT_STREQ(texts[1], "2");
    EXPECT_EQ(args_read_floats(words + 2, floats, 0), 1);
}

TEST(Format, OnOff) {
    EXPECT_STREQ(fmt_on_off(0), "off");
    EXPECT_STREQ(fmt_on_off(1), "on");
    EXPECT_STREQ(fmt_on_off(-7), "on");
}

TEST(Format, Int) {
    EXPECT_STREQ(fmt_int(0), "0");
    EXPECT_STREQ(fmt_int(-2147483647 - 1), "-2147483648");
}

TEST(Format, AnIntListEndsInABlank) {
    const int32_t values[] = {1, 2};
    EXPECT_STREQ(fmt_int_list(values, 2), "1 2 ");
}

TEST(Format, AFloatListHasSixDecimalsAndEndsInABlank) {
    const float values[] = {1.0f, -0.5f, 1e-7f};
    EXPECT_STREQ(fmt_float_list(values, 3), "1.000000 -0.500000 0.000000 ");
}

TEST(Format, ANonNumberPrintsAsNan) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const float values[] = {nan, -nan, infinity, -infinity};
    EXPECT_STREQ(fmt_float_list(values, 4), "nan nan inf -inf ");
}

TEST(Format, ANegativeCountGivesNull) {
    EXPECT_EQ(fmt_int_list(nullptr, -1), nullptr);
    EXPECT_EQ(fmt_float_list(nullptr, -1), nullptr);
}

TEST(Format, ACountOf0GivesWhatTheBufferHeld) {
    fmt_int(42);
    EXPECT_STREQ(fmt_int_list(nullptr, 0), "42");
    EXPECT_STREQ(fmt_float_list(nullptr, 0), "42");
}

TEST(Format, AnIntListBeyond8150CharactersGivesNull) {
    // Ten characters each, with the blank: 815 of them are exactly the limit.
    const std::vector<int32_t> values(816, 123456789);
    ASSERT_NE(fmt_int_list(values.data(), 815), nullptr);
    EXPECT_EQ(std::string(fmt_int_list(values.data(), 815)).size(), 8150u);
    EXPECT_EQ(fmt_int_list(values.data(), 816), nullptr);
}

TEST(Format, AFloatListBeyond8150CharactersGivesNull) {
    // The largest float has 39 digits before its point: 46 characters, 47 with the blank.
    const std::vector<float> values(1000, std::numeric_limits<float>::max());
    const char* text = fmt_float_list(values.data(), 173);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(text).size(), 173u * 47u);
    EXPECT_EQ(fmt_float_list(values.data(), 174), nullptr);
    EXPECT_EQ(fmt_float_list(values.data(), 1000), nullptr);
}

TEST(Format, AMatrixHasNoBlankAtTheEnd) {
    float values[16];
    std::string expected;
    for (int i = 0; i < 16; ++i) {
        values[i] = static_cast<float>(i);
        expected += (i > 0 ? " " : "") + std::to_string(i) + ".000000";
    }
    EXPECT_EQ(fmt_matrix(values), expected);
}

}  // namespace
}  // namespace pelt
