// Word classes, conversions that saturate, and the heap and buffer helpers.
#include "foundation/text.h"

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace pelt {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
const double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

// A heap text as a std::string; "(null)" for null.
std::string take(char* text) {
    std::string result = text != nullptr ? text : "(null)";
    str_free(text);
    return result;
}

std::string float_text(double value, int decimals) {
    char buffer[600];
    const size_t length = float_to_text(value, decimals, buffer, sizeof buffer);
    EXPECT_EQ(length, std::strlen(buffer));
    return buffer;
}

TEST(WordClass, NullIsNone) { EXPECT_EQ(word_class(nullptr), WORD_NONE); }

TEST(WordClass, DigitsAndMinusSignsAnywhereAreIntegers) {
    for (const char* text : {"12", "-", "--5", "5-3", "-0", "", "99999999999999999999"}) {
        EXPECT_EQ(word_class(text), WORD_INT) << text;
    }
}

TEST(WordClass, ExactlyOnePointMakesAFloat) {
    for (const char* text : {"1.0", ".5", "5.", "-.5", ".", "-.-", "1.-2"}) {
        EXPECT_EQ(word_class(text), WORD_FLOAT) << text;
    }
}

TEST(WordClass, EverythingElseIsText) {
    for (const char* text : {"1.2.3", "1e3", "+1", "1/2", "/", "a", " 1", "1 ", "1:", "on", "\xff", "0x1", "1,5"}) {
        EXPECT_EQ(word_class(text), WORD_TEXT) << text;
    }
}

TEST(TextToInt, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(text_to_int("12"), 12);
    EXPECT_EQ(text_to_int("-12"), -12);
    EXPECT_EQ(text_to_int("5-3"), 5);
    EXPECT_EQ(text_to_int("1.9"), 1);
    EXPECT_EQ(text_to_int(" \t\n\v\f\r+7x"), 7);
    EXPECT_EQ(text_to_int("007"), 7);
}

TEST(TextToInt, NothingNumericIsZero) {
    for (const char* text : {"", "-", "--5", "+-5", "-+5", "x1", ".5", "- 5"}) {
        EXPECT_EQ(text_to_int(text), 0) << text;
    }
    EXPECT_EQ(text_to_int(nullptr), 0);
}

TEST(TextToInt, SaturatesBeyond32Bits) {
    EXPECT_EQ(text_to_int("2147483646"), 2147483646);
    EXPECT_EQ(text_to_int("2147483647"), INT_MAX);
    EXPECT_EQ(text_to_int("2147483648"), INT_MAX);
    EXPECT_EQ(text_to_int("4294967297"), INT_MAX);
    EXPECT_EQ(text_to_int("-2147483647"), -2147483647);
    EXPECT_EQ(text_to_int("-2147483648"), INT_MIN);
    EXPECT_EQ(text_to_int("-2147483649"), INT_MIN);
    EXPECT_EQ(text_to_int(std::string(5000, '9').c_str()), INT_MAX);
    EXPECT_EQ(text_to_int(("-" + std::string(5000, '9')).c_str()), INT_MIN);
}

TEST(TextToDouble, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(text_to_double("1"), 1.0);
    EXPECT_EQ(text_to_double(".5"), 0.5);
    EXPECT_EQ(text_to_double("5."), 5.0);
    EXPECT_EQ(text_to_double("-.5"), -0.5);
    EXPECT_EQ(text_to_double("5-3"), 5.0);
    EXPECT_EQ(text_to_double("1.25.75"), 1.25);
    EXPECT_EQ(text_to_double(" \t\n\v\f\r+1.5e2x"), 150.0);
    EXPECT_EQ(text_to_double("1e"), 1.0);
    EXPECT_EQ(text_to_double("1e+"), 1.0);
    EXPECT_EQ(text_to_double("25E-1"), 2.5);
}

TEST(TextToDouble, NothingNumericIsZero) {
    for (const char* text : {"", "-", "--5", "+-5", "-+5", ".", "-.", "e5", ".e5", "x", "- 5"}) {
        EXPECT_EQ(text_to_double(text), 0.0) << text;
    }
    EXPECT_EQ(text_to_double(nullptr), 0.0);
}

TEST(TextToDouble, OnlyDecimalNumbersAreNumbers) {
    for (const char* text : {"inf", "-inf", "nan", "-nan", "infinity", "0x10"}) {
        EXPECT_EQ(text_to_double(text), 0.0) << text;
    }
}

TEST(TextToDouble, MinusZeroKeepsItsSign) {
    EXPECT_TRUE(std::signbit(text_to_double("-0")));
    EXPECT_TRUE(std::signbit(text_to_double("-0.0")));
    EXPECT_FALSE(std::signbit(text_to_double("0")));
}

TEST(TextToDouble, TooLargeIsInfiniteAndTooSmallIsZero) {
    EXPECT_EQ(text_to_double("1e999"), INFINITE);
    EXPECT_EQ(text_to_double("-1e999"), -INFINITE);
    EXPECT_EQ(text_to_double("1e99999999999999999999"), INFINITE);
    EXPECT_EQ(text_to_double(std::string(400, '9').c_str()), INFINITE);
    EXPECT_EQ(text_to_double(("-" + std::string(400, '9') + ".5").c_str()), -INFINITE);
    EXPECT_EQ(text_to_double("1e-999"), 0.0);
    EXPECT_EQ(text_to_double("123e-99999999999999999999"), 0.0);
    EXPECT_EQ(text_to_double(("." + std::string(400, '0') + "1").c_str()), 0.0);
    EXPECT_TRUE(std::signbit(text_to_double(("-." + std::string(400, '0') + "1").c_str())));
    EXPECT_EQ(text_to_double(("." + std::string(400, '0') + "1e401").c_str()), 1.0);
    EXPECT_EQ(text_to_double((std::string(400, '0') + "7").c_str()), 7.0);
}

TEST(TextToDouble, SmallestAndLargestDoublesAreExact) {
    EXPECT_EQ(text_to_double("5e-324"), 5e-324);
    EXPECT_EQ(text_to_double("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(TextToDouble, AgreesWithTheLibraryOnRandomWords) {
    std::mt19937_64 random(11);
    for (int i = 0; i < 200000; ++i) {
        std::string text = random() % 2 == 0 ? "-" : "";
        const size_t whole = random() % 12;
        const size_t decimals = random() % 14;
        for (size_t k = 0; k < whole; ++k) { text += static_cast<char>('0' + random() % 10); }
        text += random() % 8 != 0 ? "." : "";
        for (size_t k = 0; k < decimals; ++k) { text += static_cast<char>('0' + random() % 10); }
        if (random() % 10 == 0) { text += "e" + std::to_string(static_cast<int>(random() % 60) - 30); }
        const double expected = std::strtod(text.c_str(), nullptr);
        ASSERT_EQ(text_to_double(text.c_str()), expected) << text;
    }
}

TEST(TextToDouble, HardRoundingCasesAgreeWithTheLibrary) {
    for (const char* text : {"9007199254740993", "9007199254740992", "9007199254740991.5", "0.1", "0.3", "1.15",
                             "123456789012345678", "1234567890123456789", "0.000000000000000001", "4503599627370496.5",
                             "0.1000000000000000055511151231257827", "8.5e22", "179769313486231580793728971405301"}) {
        EXPECT_EQ(text_to_double(text), std::strtod(text, nullptr)) << text;
    }
}

TEST(TextToDouble, DoesNotDependOnTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "C"}) {
        std::setlocale(LC_ALL, name);
        EXPECT_EQ(text_to_double("1.5"), 1.5);
        EXPECT_EQ(text_to_double("1.5e1"), 15.0);
        EXPECT_EQ(text_to_double("1,5"), 1.0);
        EXPECT_EQ(float_text(1.5, 2), "1.50");
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(FloatToInt, CutsTowardsZero) {
    EXPECT_EQ(float_to_int(1.9), 1);
    EXPECT_EQ(float_to_int(-1.9), -1);
    EXPECT_EQ(float_to_int(0.0), 0);
    EXPECT_EQ(float_to_int(2147483646.9), 2147483646);
    EXPECT_EQ(float_to_int(-2147483647.9), -2147483647);
}

TEST(FloatToInt, SaturatesAndTurnsANonNumberIntoZero) {
    EXPECT_EQ(float_to_int(2147483647.0), INT_MAX);
    EXPECT_EQ(float_to_int(2147483648.0), INT_MAX);
    EXPECT_EQ(float_to_int(1e300), INT_MAX);
    EXPECT_EQ(float_to_int(INFINITE), INT_MAX);
    EXPECT_EQ(float_to_int(-2147483648.0), INT_MIN);
    EXPECT_EQ(float_to_int(-2147483649.0), INT_MIN);
    EXPECT_EQ(float_to_int(-INFINITE), INT_MIN);
    EXPECT_EQ(float_to_int(NOT_A_NUMBER), 0);
    EXPECT_EQ(float_to_int(-NOT_A_NUMBER), 0);
}

TEST(ToFloat, RoundsToTheNearestFloat) {
    EXPECT_EQ(to_float(0.1), 0.1f);
    EXPECT_EQ(to_float(-16777217.0), -16777216.0f);
    EXPECT_EQ(to_float(1e-60), 0.0f);
}

TEST(ToFloat, TooLargeBecomesAnInfinity) {
    const float largest = std::numeric_limits<float>::max();
    const float infinite = std::numeric_limits<float>::infinity();
    const double half_step_above = 3.4028235677973366e38;  // 2^128 - 2^103
    EXPECT_EQ(to_float(double{largest}), largest);
    EXPECT_EQ(to_float(std::nextafter(half_step_above, 0.0)), largest);
    EXPECT_EQ(to_float(half_step_above), infinite);
    EXPECT_EQ(to_float(-std::nextafter(half_step_above, 0.0)), -largest);
    EXPECT_EQ(to_float(1e300), infinite);
    EXPECT_EQ(to_float(-1e300), -infinite);
    EXPECT_EQ(to_float(INFINITE), infinite);
    EXPECT_EQ(to_float(-INFINITE), -infinite);
    EXPECT_TRUE(std::isnan(to_float(NOT_A_NUMBER)));
}

TEST(FloatToText, WritesTheDecimalsAsked) {
    EXPECT_EQ(float_text(1.5, 6), "1.500000");
    EXPECT_EQ(float_text(-0.125, 2), "-0.12");  // a tie goes to the even digit
    EXPECT_EQ(float_text(2.0, 0), "2");
    EXPECT_EQ(float_text(-0.0, 2), "-0.00");
    EXPECT_EQ(float_text(0.1, 20), "0.10000000000000000555");
}

TEST(FloatToText, NonNumberHasNoSign) {
    EXPECT_EQ(float_text(NOT_A_NUMBER, 6), "nan");
    EXPECT_EQ(float_text(-NOT_A_NUMBER, 6), "nan");
    EXPECT_EQ(float_text(INFINITE, 6), "inf");
    EXPECT_EQ(float_text(-INFINITE, 2), "-inf");
}

TEST(FloatToText, AgreesWithTheFormatter) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 20000; ++i) {
        const double value = std::ldexp(static_cast<double>(random()) - 9e18, static_cast<int>(random() % 200) - 150);
        const int decimals = static_cast<int>(random() % 10);
        char expected[512];
        std::snprintf(expected, sizeof expected, "%.*f", decimals, value);
        ASSERT_EQ(float_text(value, decimals), expected);
    }
}

TEST(FloatToText, LargestNumberWithUnreasonableDecimalsStaysInBounds) {
    const double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(float_text(largest, 0).size(), 309U);
    EXPECT_EQ(float_text(-largest, INT_MAX).substr(0, 8), "-1797693");
    EXPECT_EQ(float_text(0.5, -3), "0.500000");
}

TEST(FloatToText, IsCutToItsBuffer) {
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(float_to_text(123456.75, 2, buffer, 5), 4U);
    EXPECT_STREQ(buffer, "1234");
    EXPECT_EQ(buffer[5], 'x');
    EXPECT_EQ(float_to_text(1.0, 2, buffer, 1), 0U);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(float_to_text(1.0, 2, buffer, 0), 0U);
    EXPECT_EQ(float_to_text(1.0, 2, nullptr, 10), 0U);
}

TEST(StrField, FieldsAreTheStretchesBetweenSeparators) {
    EXPECT_EQ(take(str_field("set matrix view", ' ', 0)), "set");
    EXPECT_EQ(take(str_field("set matrix view", ' ', 1)), "matrix");
    EXPECT_EQ(take(str_field("set matrix view", ' ', 2)), "view");
    EXPECT_EQ(str_field("set matrix view", ' ', 3), nullptr);
    EXPECT_EQ(take(str_field("one", ' ', 0)), "one");
}

TEST(StrField, EmptyFieldIsNull) {
    EXPECT_EQ(str_field("set  background 1", ' ', 1), nullptr);
    EXPECT_EQ(take(str_field("set  background 1", ' ', 2)), "background");
    EXPECT_EQ(str_field(" leading", ' ', 0), nullptr);
    EXPECT_EQ(str_field("trailing ", ' ', 1), nullptr);
    EXPECT_EQ(str_field("", ' ', 0), nullptr);
    EXPECT_EQ(str_field(" ", ' ', 0), nullptr);
    EXPECT_EQ(str_field(nullptr, ' ', 0), nullptr);
    EXPECT_EQ(str_field("a b", ' ', -1), nullptr);
}

TEST(StrField, OnlyTheSeparatorSeparates) {
    EXPECT_EQ(take(str_field("a\tb\nc d", ' ', 0)), "a\tb\nc");
    EXPECT_EQ(take(str_field("a,b c", ',', 1)), "b c");
}

TEST(StrReplaceChar, ReplacesEverywhereInPlace) {
    char text[] = "say \"hi\"";
    EXPECT_EQ(str_replace_char(text, '"', '\''), text);
    EXPECT_STREQ(text, "say 'hi'");
    EXPECT_EQ(str_replace_char(nullptr, 'a', 'b'), nullptr);
}

TEST(StrDup, CopiesToTheHeap) {
    const char* source = "text";
    char* copy = str_dup(source);
    EXPECT_NE(copy, source);
    EXPECT_EQ(take(copy), "text");
    EXPECT_EQ(take(str_dup("")), "");
    EXPECT_EQ(str_dup(nullptr), nullptr);
    str_free(nullptr);
}

TEST(StrCopy, CutsToTheBufferAndSaysSo) {
    char buffer[5];
    EXPECT_TRUE(str_copy("four", buffer));
    EXPECT_STREQ(buffer, "four");
    EXPECT_FALSE(str_copy("fiver", buffer));
    EXPECT_STREQ(buffer, "five");
    EXPECT_TRUE(str_copy("", buffer));
    EXPECT_STREQ(buffer, "");
}

TEST(StrCopy, CutsBetweenCharacters) {
    char buffer[5];
    EXPECT_FALSE(str_copy("abc\u00e9", buffer));
    EXPECT_STREQ(buffer, "abc");
    EXPECT_TRUE(str_copy("ab\u00e9", buffer));
    EXPECT_STREQ(buffer, "ab\u00e9");
    EXPECT_FALSE(str_copy("a\u20acb", buffer + 1, 4));
    EXPECT_STREQ(buffer + 1, "a");
}

TEST(TextCutLength, LeavesWholeCharactersOfEachLength) {
    const char text[] = "a\u00e9\u20ac\U0001f642z";  // one, two, three and four bytes, and one more
    const size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
    for (size_t length = 0; length < std::size(expected); ++length) {
        EXPECT_EQ(text_cut_length(text, length), expected[length]) << length;
    }
}

TEST(TextCutLength, TakesBytesThatAreNoCharactersAsTheyStand) {
    EXPECT_EQ(text_cut_length("\x80\x80\x80\x80\x80\x80", 6), 6u);
    EXPECT_EQ(text_cut_length("\x80", 1), 1u);
    EXPECT_EQ(text_cut_length("a\x80\x80", 3), 3u);
    EXPECT_EQ(text_cut_length("", 0), 0u);
}

TEST(TextFormat, CutsBetweenCharactersAndTellsTheLength) {
    char buffer[8];
    EXPECT_EQ(text_format(buffer, sizeof buffer, "%d %s", 42, "abcd"), 7u);
    EXPECT_STREQ(buffer, "42 abcd");
    EXPECT_EQ(text_format(buffer, sizeof buffer, "%d %s", 42, "abcde"), 7u);
    EXPECT_STREQ(buffer, "42 abcd");
    EXPECT_EQ(text_format(buffer, sizeof buffer, "%d %s", 42, "abc\u00e9"), 6u);
    EXPECT_STREQ(buffer, "42 abc");
    EXPECT_EQ(text_format(buffer, 1, "%s", "\u00e9"), 0u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(text_format(nullptr, 0, "%s", "x"), 0u);
}

TEST(StrCopy, NullSourceWritesAnEmptyText) {
    char buffer[4] = "abc";
    EXPECT_TRUE(str_copy(nullptr, buffer));
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(str_copy("a", nullptr, 4));
    EXPECT_FALSE(str_copy("a", buffer, 0));
}

TEST(StrCopy, TextOntoItselfStaysWhole) {
    char buffer[8] = "abc";
    EXPECT_TRUE(str_copy(buffer, buffer));
    EXPECT_STREQ(buffer, "abc");
    EXPECT_TRUE(str_copy(buffer + 1, buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "bc");
}

TEST(StrCase, ChangesAsciiLettersAloneAlsoWithNegativeCharacters) {
    char text[] = "@AZ[`az{\xc4\xe4\xff";
    EXPECT_EQ(str_lower(text), text);
    EXPECT_STREQ(text, "@az[`az{\xc4\xe4\xff");
    EXPECT_EQ(str_upper(text), text);
    EXPECT_STREQ(text, "@AZ[`AZ{\xc4\xe4\xff");
    EXPECT_EQ(str_lower(nullptr), nullptr);
    EXPECT_EQ(str_upper(nullptr), nullptr);
}

TEST(StrEqual, ComparesWithAndWithoutCase) {
    EXPECT_TRUE(str_equal("a", "a"));
    EXPECT_FALSE(str_equal("a", "A"));
    EXPECT_FALSE(str_equal("a", "ab"));
    EXPECT_FALSE(str_equal(nullptr, nullptr));
    EXPECT_FALSE(str_equal("a", nullptr));
    EXPECT_TRUE(str_equal_ignoring_case("Ship.MOD", "sHIP.mod"));
    EXPECT_FALSE(str_equal_ignoring_case("ship", "ship.mod"));
    EXPECT_FALSE(str_equal_ignoring_case("ship.mod", "ship"));
    EXPECT_FALSE(str_equal_ignoring_case("[", "{"));
    EXPECT_FALSE(str_equal_ignoring_case(nullptr, nullptr));
    EXPECT_TRUE(str_equal_ignoring_case("", ""));
}

TEST(IntToText, WritesDecimalDigits) {
    const int32_t values[] = {0, 7, -7, 10, 1234567890, INT_MAX, INT_MIN};
    const char* texts[] = {"0", "7", "-7", "10", "1234567890", "2147483647", "-2147483648"};
    for (int i = 0; i < 7; ++i) {
        char buffer[12];
        EXPECT_EQ(int_to_text(values[i], buffer), 1);
        EXPECT_STREQ(buffer, texts[i]);
    }
    EXPECT_EQ(int_to_text(1, nullptr), 1);
}

}  // namespace
}  // namespace pelt
