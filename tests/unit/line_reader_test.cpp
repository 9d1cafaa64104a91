#include "formats/line_reader.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

using test::TempDir;

struct Row {
    int32_t number;
    std::vector<std::string> tokens;
};

using Action = std::function<void()>;

void run_action(void* context) { (*static_cast<Action*>(context))(); }

int run_file(const std::string& path, Action action) {
    return reader_run_file(path.c_str(), "#", 1, run_action, &action);
}

int run_data(const std::string& text, Action action) {
    return reader_run_data(text.c_str(), "#", 1, run_action, &action);
}

Row current_row() {
    Row row{reader_line_number(), {}};
    for (int32_t i = 0; i < reader_token_count(); ++i) { row.tokens.emplace_back(reader_text(i)); }
    return row;
}

using Tokens = std::vector<std::string>;

// The tokens of one line, read from memory.
Tokens tokens_of(const std::string& line) {
    Tokens tokens;
    EXPECT_EQ(run_data(line, [&] { tokens = current_row().tokens; }), 1);
    return tokens;
}

class LineReading : public testing::Test {
protected:
    std::vector<Row> rows_of_file(const std::string& content) {
        std::vector<Row> rows;
        EXPECT_EQ(run_file(dir.write("lines.txt", content), [&] { rows.push_back(current_row()); }), 1);
        return rows;
    }
    std::vector<Row> rows_of_data(const std::string& content) {
        std::vector<Row> rows;
        EXPECT_EQ(run_data(content, [&] { rows.push_back(current_row()); }), 1);
        return rows;
    }
    TempDir dir;
};

// ---- tokens ----

TEST(Tokens, AreCutAtBlanksAndTabs) { EXPECT_EQ(tokens_of("  a\t\tb c\t"), (Tokens{"a", "b", "c"})); }

TEST(Tokens, QuotesKeepBlanksTogether) { EXPECT_EQ(tokens_of("\"a b\" c"), (Tokens{"a b", "c"})); }

TEST(Tokens, TheNextTokenStartsRightBehindAClosingQuote) {
    EXPECT_EQ(tokens_of("\"a\"b"), (Tokens{"a", "b"}));
    EXPECT_EQ(tokens_of("\"a\"\"b\""), (Tokens{"a", "b"}));
}

TEST(Tokens, AQuoteInsideAWordIsAnOrdinaryCharacter) { EXPECT_EQ(tokens_of("a\"b"), (Tokens{"a\"b"})); }

TEST(Tokens, AnEmptyQuotedTokenEndsTheLine) {
    EXPECT_EQ(tokens_of("x \"\" y"), (Tokens{"x"}));
    EXPECT_EQ(tokens_of("\"\" y"), Tokens{});
}

TEST(Tokens, AnUnclosedQuoteRunsToTheEndOfTheLine) { EXPECT_EQ(tokens_of("x \"a b"), (Tokens{"x", "a b"})); }

TEST(Tokens, ALoneQuoteIsEmpty) { EXPECT_EQ(tokens_of("x \""), (Tokens{"x"})); }

TEST(Tokens, AQuotedBlankIsAToken) { EXPECT_EQ(tokens_of("\" \" y"), (Tokens{" ", "y"})); }

TEST(Tokens, NoMoreThan256AreKept) {
    std::string line;
    for (int i = 0; i < 300; ++i) { line += std::to_string(i % 10) + " "; }
    const Tokens tokens = tokens_of(line);
    EXPECT_EQ(tokens.size(), 256u);
    EXPECT_EQ(tokens.back(), "5");
}

TEST(Tokens, ThoseBeyondTheLimitAreKnownToBeThere) {
    std::string line = "0";
    for (int i = 1; i < READER_TOKEN_LIMIT; ++i) { line += " 0"; }
    const auto has_more = [](const std::string& text) {
        int more = -1;
        run_data(text, [&] { more = reader_has_more_tokens(); });
        return more;
    };
    for (const char* nothing : {"", " \t", " \"\" x", " \""}) { EXPECT_EQ(has_more(line + nothing), 0) << nothing; }
    for (const char* token : {" 1", "\tx", " \"a b\"", " \"a"}) { EXPECT_EQ(has_more(line + token), 1) << token; }
    EXPECT_EQ(has_more("1 2 3"), 0);
    EXPECT_EQ(reader_has_more_tokens(), 0) << "outside a read";
}

TEST(Tokens, ALongerOneIsCutTo255Bytes) {
    const std::string long_word(400, 'w');
    EXPECT_EQ(tokens_of(long_word + " b"), (Tokens{long_word.substr(0, 255), "b"}));
    EXPECT_EQ(tokens_of("\"" + long_word + "\"b"), (Tokens{long_word.substr(0, 255), "b"}));
    EXPECT_EQ(tokens_of(std::string(255, 'w') + " b"), (Tokens{std::string(255, 'w'), "b"}));
}

TEST(Tokens, ALongNumberIsClassifiedAsCut) {
    const std::string line = std::string(255, '7') + "x";
    run_data(line, [] {
        EXPECT_TRUE(reader_is_int(0));
        EXPECT_EQ(reader_int(0), std::numeric_limits<int32_t>::max());
    });
}

// ---- classes and values ----

struct NumberCase {
    const char* token;
    WordClass kind;
    int32_t as_int;
    float as_float;
};

TEST(TokenValues, FollowTheClassOfTheWord) {
    const NumberCase cases[] = {
        {"12", WORD_INT, 12, 12.0f},
        {"-12", WORD_INT, -12, -12.0f},
        {"007", WORD_INT, 7, 7.0f},
        {"-", WORD_INT, 0, 0.0f},
        {"--5", WORD_INT, 0, 0.0f},
        {"5-3", WORD_INT, 5, 5.0f},
        {"-5-3", WORD_INT, -5, -5.0f},
        {"999999999", WORD_INT, 999999999, 999999999.0f},
        {"-999999999", WORD_INT, -999999999, -999999999.0f},
        {"2147483647", WORD_INT, 2147483647, 2147483647.0f},
        {"2147483648", WORD_INT, 2147483647, 2147483647.0f},
        {"-2147483649", WORD_INT, -2147483647 - 1, -2147483648.0f},
        {"99999999999999999999", WORD_INT, 2147483647, 2147483647.0f},
        {"1.5", WORD_FLOAT, 0, 1.5f},  // an integer is taken only from a token written as one
        {"-.5", WORD_FLOAT, 0, -0.5f},
        {"5.", WORD_FLOAT, 0, 5.0f},
        {".", WORD_FLOAT, 0, 0.0f},
        {"0.1", WORD_FLOAT, 0, 0.1f},
        {"3000000000.0", WORD_FLOAT, 0, 3e9f},
        {"1.2.3", WORD_TEXT, 0, 0.0f},
        {"1e5", WORD_TEXT, 0, 0.0f},
        {"+5", WORD_TEXT, 0, 0.0f},
        {"1/2", WORD_TEXT, 0, 0.0f},
        {"nan", WORD_TEXT, 0, 0.0f},
        {"inf", WORD_TEXT, 0, 0.0f},
    };
    for (const NumberCase& expected : cases) {
        for (const char* quote : {"", "\""}) {
            const std::string line = std::string("7 8.5 ").append(quote).append(expected.token).append(quote);
            SCOPED_TRACE(line);
            run_data(line, [&] {
                ASSERT_EQ(reader_token_count(), 3);
                EXPECT_EQ(reader_is_int(2), expected.kind == WORD_INT ? 1 : 0);
                EXPECT_EQ(reader_is_float(2), expected.kind == WORD_FLOAT ? 1 : 0);
                EXPECT_EQ(reader_is_text(2), expected.kind == WORD_TEXT ? 1 : 0);
                EXPECT_EQ(reader_int(2), expected.as_int);
                EXPECT_EQ(reader_float(2), expected.as_float);
            });
        }
    }
}

// The reader takes short integers on the way; it must agree with the rules for words everywhere.
TEST(TokenValues, AgreeWithTheRulesForWords) {
    const std::string alphabet = "05-.x";
    for (int number = 1; number < 5 * 5 * 5 * 5 * 5; ++number) {
        std::string word;
        for (int rest = number; rest > 0; rest /= 5) { word += alphabet[static_cast<size_t>(rest % 5)]; }
        run_data(word, [&] {
            const WordClass kind = word_class(word.c_str());
            EXPECT_EQ(reader_is_int(0), kind == WORD_INT ? 1 : 0) << word;
            EXPECT_EQ(reader_is_float(0), kind == WORD_FLOAT ? 1 : 0) << word;
            EXPECT_EQ(reader_int(0), kind == WORD_INT ? text_to_int(word.c_str()) : 0) << word;
        });
    }
}

TEST(TokenValues, AnEnormousFloatIsInfinite) {
    run_data(std::string("1").append(200, '0').append(".0"), [] {
        EXPECT_TRUE(reader_is_float(0));
        EXPECT_EQ(reader_float(0), std::numeric_limits<float>::infinity());
    });
}

TEST(TokenValues, IndicesOutOfRangeGiveNothing) {
    run_data("1 2", [] {
        for (const int32_t index : {-1, 2, 255, 256, 100000, std::numeric_limits<int32_t>::min()}) {
            EXPECT_EQ(reader_text(index), nullptr);
            EXPECT_EQ(reader_int(index), 0);
            EXPECT_EQ(reader_float(index), 0.0f);
            EXPECT_EQ(reader_is_int(index) + reader_is_float(index) + reader_is_text(index), 0);
            EXPECT_EQ(reader_token_equals("1", index), 0);
        }
    });
}

TEST(TokenValues, TokensAreComparedWhole) {
    run_data("layer b", [] {
        EXPECT_EQ(reader_token_equals("layer", 0), 1);
        EXPECT_EQ(reader_token_equals("Layer", 0), 0);
        EXPECT_EQ(reader_token_equals("lay", 0), 0);
        EXPECT_EQ(reader_token_equals(nullptr, 0), 0);
    });
}

TEST(TokenValues, NothingIsThereOutsideARead) {
    EXPECT_EQ(reader_token_count(), 0);
    EXPECT_EQ(reader_line(), nullptr);
    EXPECT_EQ(reader_line_number(), 0);
    EXPECT_EQ(reader_file_name(), nullptr);
    EXPECT_EQ(reader_text(0), nullptr);
    EXPECT_EQ(reader_int(0), 0);
    EXPECT_EQ(reader_float(0), 0.0f);
    EXPECT_EQ(reader_is_int(0), 0);
    reader_abort();
}

// ---- comments ----

TEST(Comments, CountInTheFirstColumnOnly) {
    EXPECT_EQ(tokens_of("#comment"), Tokens{});
    EXPECT_EQ(tokens_of(" #comment"), (Tokens{"#comment"}));
    EXPECT_EQ(tokens_of("a #b"), (Tokens{"a", "#b"}));
}

TEST(Comments, AnyOfTheGivenCharactersMarksOne) {
    Tokens tokens;
    Action action = [&] { tokens.emplace_back(reader_text(0)); };
    EXPECT_EQ(reader_run_data(";a\n#b\n!c\nd\n", ";!", 2, run_action, &action), 1);
    EXPECT_EQ(tokens, (Tokens{"#b", "d"}));
}

TEST(Comments, NoneAreKnownWithoutCharacters) {
    Tokens tokens;
    Action action = [&] { tokens.emplace_back(reader_text(0)); };
    EXPECT_EQ(reader_run_data("#a", nullptr, 0, run_action, &action), 1);
    EXPECT_EQ(reader_run_data("#b", "#", -1, run_action, &action), 1);
    EXPECT_EQ(tokens, (Tokens{"#a", "#b"}));
}

// ---- lines ----

TEST_F(LineReading, AFileCountsPhysicalLines) {
    const auto rows = rows_of_file("a\n\n   \n#c\nb");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].number, 1);
    EXPECT_EQ(rows[1].number, 5);
    EXPECT_EQ(rows[1].tokens, (Tokens{"b"}));
}

TEST_F(LineReading, MemoryDoesNotCountEmptyLines) {
    const auto rows = rows_of_data("a\n\n   \n#c\nb");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].number, 1);
    EXPECT_EQ(rows[1].number, 4);
}

TEST_F(LineReading, EveryKindOfLineEndEndsALineInMemory) {
    const auto rows = rows_of_data("a\rb\nc\r\nd");
    ASSERT_EQ(rows.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(rows[i].tokens, (Tokens{std::string(1, static_cast<char>('a' + i))}));
        EXPECT_EQ(rows[i].number, static_cast<int32_t>(i) + 1);
    }
}

TEST_F(LineReading, ATextCanBeReadByTheRulesOfAFile) {
    std::string text =
        "\xEF\xBB\xBF"
        "a\r\n\n# no\n\rb \r c\r\r\nd\0e\n";
    text += std::string("f\0g\n", 4) + std::string(1023, 'h') + "\n" + std::string(1022, 'i') + "\r\n";
    text += std::string(1023, 'j') + "\r\nk\n" + std::string(2000, 'l') + "\r\nlast\r";
    std::vector<Row> rows;
    Action action = [&] { rows.push_back(current_row()); };
    EXPECT_EQ(reader_run_text(text, "#", 1, run_action, &action), 1);
    const std::vector<Row> expected = rows_of_file(text);
    ASSERT_EQ(rows.size(), expected.size());
    EXPECT_GT(rows.size(), 8u);
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].number, expected[i].number);
        EXPECT_EQ(rows[i].tokens, expected[i].tokens) << rows[i].number;
    }
    Action stop = [] { reader_abort(); };
    EXPECT_EQ(reader_run_text(text, "#", 1, run_action, &stop), 0);
    EXPECT_EQ(reader_run_text(text, "#", 1, nullptr, nullptr), 0);
}

TEST_F(LineReading, AFileWithCrLfReadsLikeOneWithLf) {
    const auto rows = rows_of_file("points\r\n1 2 3\r\n\r\nend\r\n");
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].tokens, (Tokens{"1", "2", "3"}));
    EXPECT_EQ(rows[2].tokens, (Tokens{"end"}));
    EXPECT_EQ(rows[2].number, 4);
}

TEST_F(LineReading, AByteOrderMarkAtTheStartIsPassedOver) {
    const std::string mark = "\xEF\xBB\xBF";
    EXPECT_EQ(rows_of_file(mark + "points\n" + mark + "x\n").at(0).tokens, (Tokens{"points"}));
    EXPECT_EQ(rows_of_file(mark + "points\n" + mark + "x\n").at(1).tokens, (Tokens{mark + "x"}));
    EXPECT_EQ(rows_of_file(mark + "#comment\nx\n").at(0).tokens, (Tokens{"x"}));
    EXPECT_EQ(rows_of_file(mark).size(), 0u);
    EXPECT_EQ(rows_of_file(mark + "\nx").at(0).number, 2);
    EXPECT_EQ(rows_of_data(mark + "points\n").at(0).tokens, (Tokens{"points"}));
    EXPECT_EQ(rows_of_data(mark).size(), 0u);
}

TEST_F(LineReading, AnEmptyInputReadsToItsEnd) {
    EXPECT_EQ(rows_of_file("").size(), 0u);
    EXPECT_EQ(rows_of_data("").size(), 0u);
}

TEST_F(LineReading, ALongLineArrivesInPiecesThatCountAsLines) {
    const std::string line = std::string(1020, ' ') + "abcdef" + "\nnext\n";
    for (const auto& rows : {rows_of_file(line), rows_of_data(line)}) {
        ASSERT_EQ(rows.size(), 3u);
        EXPECT_EQ(rows[0].tokens, (Tokens{"abc"}));
        EXPECT_EQ(rows[1].tokens, (Tokens{"def"}));
        EXPECT_EQ(rows[1].number, 2);
        EXPECT_EQ(rows[2].number, 3);
    }
}

TEST_F(LineReading, ACommentCharacterAtTheStartOfAPieceMarksOne) {
    const std::string line = std::string("a").append(1022, ' ').append("#b\nc");
    for (const auto& rows : {rows_of_file(line), rows_of_data(line)}) {
        ASSERT_EQ(rows.size(), 2u);
        EXPECT_EQ(rows[1].tokens, (Tokens{"c"}));
        EXPECT_EQ(rows[1].number, 3);
    }
}

TEST_F(LineReading, TheGreatestLineFitsWithAllItsTokens) {
    std::string line;
    for (int i = 0; i < 511; ++i) { line += "x "; }
    line += "y";  // 1023 bytes
    const auto rows = rows_of_data(line);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].tokens.size(), 256u);
    EXPECT_EQ(rows_of_data(std::string(1023, 'z')).at(0).tokens.at(0).size(), 255u);
}

TEST_F(LineReading, TheLineItselfStaysWhole) {
    Action action = [] { EXPECT_STREQ(reader_line(), "  a \"b c\" d"); };
    EXPECT_EQ(reader_run_data("  a \"b c\" d\n", "#", 1, run_action, &action), 1);
}

TEST_F(LineReading, AZeroByteEndsItsLine) {
    const auto rows = rows_of_file(std::string("\0x\na\0b\nc\n", 8));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].tokens, (Tokens{"a"}));
    EXPECT_EQ(rows[1].tokens, (Tokens{"c"}));
    EXPECT_EQ(rows[1].number, 3);
}

TEST_F(LineReading, TheNameIsThePathOrStandsForMemory) {
    const std::string path = dir.write("a.txt", "x");
    run_file(path, [&] { EXPECT_EQ(reader_file_name(), path); });
    run_data("x", [] { EXPECT_STREQ(reader_file_name(), "(data)"); });
}

// ---- arguments, abort, nesting ----

TEST_F(LineReading, UnusableArgumentsAreRefused) {
    const std::string path = dir.write("a.txt", "x");
    int calls = 0;
    Action action = [&] { ++calls; };
    EXPECT_EQ(reader_run_file(nullptr, "#", 1, run_action, &action), 0);
    EXPECT_EQ(reader_run_file(path.c_str(), nullptr, 1, run_action, &action), 0);
    EXPECT_EQ(reader_run_file(path.c_str(), "#", 1, nullptr, &action), 0);
    EXPECT_EQ(reader_run_data(nullptr, "#", 1, run_action, &action), 0);
    EXPECT_EQ(reader_run_data("x", nullptr, 1, run_action, &action), 0);
    EXPECT_EQ(reader_run_data("x", "#", 1, nullptr, &action), 0);
    EXPECT_EQ(calls, 0);
}

TEST_F(LineReading, AFileThatCannotBeOpenedGivesZeroWithoutAText) {
    load_error_set(nullptr);
    EXPECT_EQ(run_file(dir.file("none.txt"), [] { FAIL(); }), 0);
    EXPECT_EQ(run_file(dir.make_dir("folder"), [] { FAIL(); }), 0);
    EXPECT_EQ(load_error_get(), nullptr);
}

TEST_F(LineReading, AnAbortEndsTheReadBehindTheRunningCallback) {
    const std::string text = "a 1\nb 2\nc 3\n";
    const std::string path = dir.write("a.txt", text);
    for (const bool from_file : {true, false}) {
        Tokens seen;
        const Action action = [&] {
            if (reader_token_equals("b", 0)) { reader_abort(); }
            seen.emplace_back(reader_text(1));  // the line can still be read
        };
        EXPECT_EQ(from_file ? run_file(path, action) : run_data(text, action), 0);
        EXPECT_EQ(seen, (Tokens{"1", "2"}));
    }
}

TEST_F(LineReading, AnAbortOnTheLastLineCounts) {
    EXPECT_EQ(run_data("a", [] { reader_abort(); }), 0);
    EXPECT_EQ(run_file(dir.write("a.txt", "a"), [] { reader_abort(); }), 0);
}

TEST_F(LineReading, AnAbortThatIsTakenBackEndsNothing) {
    int lines = 0;
    const auto go_on = [&] {
        ++lines;
        EXPECT_EQ(reader_take_abort_back(), 0);
        reader_abort();
        EXPECT_EQ(reader_take_abort_back(), 1);
    };
    EXPECT_EQ(run_data("a\nb\n", go_on), 1);
    EXPECT_EQ(run_file(dir.write("a.txt", "a\nb\n"), go_on), 1);
    EXPECT_EQ(lines, 4);
    EXPECT_EQ(reader_take_abort_back(), 0) << "outside a read";
}

TEST_F(LineReading, AnAbortedReadClosesItsFile) {
    const std::string path = dir.write("a.txt", "a\nb\n");
    for (int i = 0; i < 2 * FILE_TABLE_SIZE; ++i) {
        int calls = 0;
        EXPECT_EQ(run_file(path,
                           [&] {
                               ++calls;
                               reader_abort();
                           }),
                  0);
        EXPECT_EQ(calls, 1);
    }
}

// A nested read leaves no read in progress until the callback that ran it returns: intended.
TEST_F(LineReading, TheOuterReadGoesOnBehindANestedOne) {
    const std::string outer = "a\nb\n";
    const std::string outer_path = dir.write("outer.txt", outer);
    const std::string inner_path = dir.write("inner.txt", "x y\n");
    for (const bool from_file : {true, false}) {
        std::vector<Row> rows;
        Tokens inner;
        const Action action = [&] {
            rows.push_back(current_row());
            EXPECT_EQ(run_file(inner_path, [&] { inner.emplace_back(reader_file_name()); }), 1);
            EXPECT_EQ(reader_token_count(), 0);
            EXPECT_EQ(reader_file_name(), nullptr);
        };
        EXPECT_EQ(from_file ? run_file(outer_path, action) : run_data(outer, action), 1);
        ASSERT_EQ(rows.size(), 2u);
        EXPECT_EQ(rows[1].tokens, (Tokens{"b"}));
        EXPECT_EQ(rows[1].number, 2);
        EXPECT_EQ(inner, (Tokens{inner_path, inner_path}));
    }
    EXPECT_EQ(reader_file_name(), nullptr);
}

TEST_F(LineReading, AnAbortOfANestedReadLeavesTheOuterOneAlone) {
    int outer_lines = 0;
    EXPECT_EQ(run_data("a\nb\n",
                       [&] {
                           ++outer_lines;
                           EXPECT_EQ(run_data("x\ny\n", [] { reader_abort(); }), 0);
                       }),
              1);
    EXPECT_EQ(outer_lines, 2);
}

TEST_F(LineReading, ANestedReadThatCannotBeOpenedLeavesTheOuterOneAlone) {
    int outer_lines = 0;
    EXPECT_EQ(run_data("a\nb\n",
                       [&] {
                           ++outer_lines;
                           run_file(dir.file("none"), [] {});
                       }),
              1);
    EXPECT_EQ(outer_lines, 2);
}

TEST_F(LineReading, NestingIsBoundedByTheTableOfFiles) {
    const std::string path = dir.write("a.txt", "x");
    int depth = 0;
    Action nest;
    nest = [&] {
        ++depth;
        run_file(path, nest);
    };
    EXPECT_EQ(run_file(path, nest), 1);
    EXPECT_EQ(depth, FILE_TABLE_SIZE);
}

TEST_F(LineReading, ALoadErrorCarriesThePlaceOfTheInnermostRead) {
    const std::string path = dir.write("a.txt", "\n\nx\n");
    std::string in_outer;
    std::string in_inner;
    std::string behind_inner;
    std::string in_next;
    const auto text_now = [] {
        load_error_set("bad");
        return std::string(load_error_get());
    };
    run_data("a\nb\n", [&] {
        if (reader_line_number() == 1) {
            in_outer = text_now();
            run_file(path, [&] { in_inner = text_now(); });
            behind_inner = text_now();
        } else {
            in_next = text_now();
        }
    });
    EXPECT_EQ(in_outer, "bad (file: (data), line: 1)");
    EXPECT_EQ(in_inner, "bad (file: " + path + ", line: 3)");
    EXPECT_EQ(behind_inner, "bad");
    EXPECT_EQ(in_next, "bad (file: (data), line: 2)");
    EXPECT_EQ(text_now(), "bad") << "no read is left";
    load_error_set(nullptr);
}

TEST_F(LineReading, AFailedOpenLeavesNoPlaceBehind) {
    run_file(dir.file("none.txt"), [] {});
    load_error_set("bad");
    EXPECT_STREQ(load_error_get(), "bad");
    load_error_set(nullptr);
}

// What the places of a text hold is what the tokens were made of.
TEST_F(LineReading, LinesAndTokensOfATextHavePlaces) {
    const std::string text =
        "\xEF\xBB\xBF one  \"two words\"3\r\n# none\n\n\tfour \"open\n" + std::string(1023, 'x') + "yy z";
    std::vector<std::string> lines;
    std::vector<std::string> tokens;
    struct Seen {
        const std::string& text;
        std::vector<std::string>& lines;
        std::vector<std::string>& tokens;
    } seen{text, lines, tokens};
    const auto note = [](void* context) {
        const Seen& out = *static_cast<Seen*>(context);
        const TextPlace line = reader_line_place();
        out.lines.push_back(out.text.substr(line.begin, line.end - line.begin));
        for (const TextPlace& place : reader_token_places()) {
            out.tokens.push_back(out.lines.back().substr(place.begin, place.end - place.begin));
        }
    };
    EXPECT_EQ(reader_run_text(text, "#", 1, note, &seen), 1);
    EXPECT_EQ(lines,
              (std::vector<std::string>{" one  \"two words\"3", "\tfour \"open", std::string(1023, 'x'), "yy z"}));
    EXPECT_EQ(tokens, (std::vector<std::string>{"one", "\"two words\"", "3", "four", "\"open", std::string(1023, 'x'),
                                                "yy", "z"}));
}

TEST_F(LineReading, ATextCanStandForAFile) {
    const auto fail = [](void*) {
        load_error_set("bad");
        reader_abort();
    };
    EXPECT_EQ(reader_run_text("\n\nx\n", "#", 1, fail, nullptr, "a.mod"), 0);
    EXPECT_STREQ(load_error_get(), "bad (file: a.mod, line: 3)");
    load_error_set(nullptr);
}

#ifdef __linux__
// A regular file whose first byte cannot be read.
TEST_F(LineReading, AStreamThatBreaksOffEndsTheReadWithZero) {
    int calls = 0;
    EXPECT_EQ(run_file("/proc/self/mem", [&] { ++calls; }), 0);
    EXPECT_EQ(calls, 0);
}
#endif

}  // namespace
}  // namespace pelt
