// Formatted text for files: fields, numbers, and what becomes of a sink that refuses.
#include "formats/text_output.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "foundation/file_access.h"
#include "foundation/text.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

// What has been put into an output of its own.
struct Sheet {
    std::string text;
    TextOutput out = text_output_to_string(&text);
    std::string taken() {
        EXPECT_TRUE(text_finish(out));
        return std::exchange(text, {});
    }
};

TEST(TextOutput, FieldsAreFilledToTheirWidthAndNeverCut) {
    Sheet sheet;
    text_put(sheet.out, "<%5d|%-5d|%d>", 12, -3, 123456);
    EXPECT_EQ(sheet.taken(), "<   12|-3   |123456>");
    text_put(sheet.out, "<%5d|%-3d>", 1234567, 1234567);
    EXPECT_EQ(sheet.taken(), "<1234567|1234567>");
    text_put(sheet.out, "<%-8s|%5s|%s>", "ab", "cd", "efg");
    EXPECT_EQ(sheet.taken(), "<ab      |   cd|efg>");
    for (const size_t length : {510u, 511u, 512u, 513u, 600u}) {
        text_put(sheet.out, "<%-2s>", std::string(length, 'x').c_str());
        EXPECT_EQ(sheet.taken(), "<" + std::string(length, 'x') + ">");
    }
    text_put(sheet.out, "<%6s|%s|%s>", float_to_text(0.5, 3).c_str(), float_to_text(-1.25, 4).c_str(),
             float_to_text(2.0, 6).c_str());
    EXPECT_EQ(sheet.taken(), "< 0.500|-1.2500|2.000000>");
}

TEST(TextOutput, NumbersAtTheEndsOfTheirRange) {
    Sheet sheet;
    text_put(sheet.out, "%d %d", std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(sheet.taken(), "-2147483648 2147483647");
    text_put(sheet.out, "%6s %s", float_to_text(std::numeric_limits<double>::quiet_NaN(), 3).c_str(),
             float_to_text(-std::numeric_limits<double>::infinity(), 6).c_str());
    EXPECT_EQ(sheet.taken(), "   nan -inf");
    text_put(sheet.out, "%s", float_to_text(1e30, 0).c_str());
    EXPECT_EQ(sheet.taken(), "1000000000000000019884624838656");
}

// A width counts bytes, also of a name beyond ASCII.
TEST(TextOutput, AWidthCountsBytes) {
    Sheet sheet;
    text_put(sheet.out, "<%-4s|%4s>", "\xC3\xA4", "\xFF");
    EXPECT_EQ(sheet.taken(), "<\xC3\xA4  |   \xFF>");
}

TEST(TextOutput, LongTextsAreHandedOnInBetween) {
    std::vector<size_t> sizes;
    TextOutput out{[](void* context, const char*, size_t size) {
                       static_cast<std::vector<size_t>*>(context)->push_back(size);
                       return true;
                   },
                   &sizes,
                   {},
                   false};
    const std::string piece(1000, 'p');
    for (int i = 0; i < 200; ++i) { text_put(out, "%s", piece.c_str()); }
    EXPECT_TRUE(text_finish(out));
    size_t total = 0;
    for (const size_t size : sizes) { total += size; }
    EXPECT_EQ(total, 200000u);
    EXPECT_GT(sizes.size(), 1u);
}

TEST(TextOutput, ASinkThatRefusesIsNotAskedAgain) {
    int asked = 0;
    TextOutput out{[](void* context, const char*, size_t) {
                       ++*static_cast<int*>(context);
                       return false;
                   },
                   &asked,
                   {},
                   false};
    for (int i = 0; i < 3; ++i) { text_put(out, "%s", std::string(100000, 'x').c_str()); }
    EXPECT_FALSE(text_finish(out));
    EXPECT_EQ(asked, 1);
}

TEST(TextOutput, ASlotOfTheTableOfFilesTakesTheText) {
    const test::TempDir dir;
    const int slot = file_open(dir.file("a.txt").c_str(), "w");
    ASSERT_GE(slot, 0);
    TextOutput out = text_output_to_slot(&slot);
    text_put(out, "%d\n", 7);
    EXPECT_TRUE(text_finish(out));
    file_close(slot);
    EXPECT_EQ(dir.read("a.txt"), "7\n");
    text_put(out, "more");
    EXPECT_FALSE(text_finish(out)) << "the slot is closed";
}

TEST(TextOutput, AFileThatTakesNothingIsTold) {
    const int slot = file_open("/dev/full", "w");
    if (slot < 0) { GTEST_SKIP() << "no /dev/full here"; }
    TextOutput out = text_output_to_slot(&slot);
    text_put(out, "%s", std::string(200000, 'x').c_str());
    EXPECT_FALSE(text_finish(out));
    file_close(slot);
}

TEST(TextOutput, ACommentHoldsNoLineEnds) {
    EXPECT_EQ(text_for_comment("a\nb\tc\x7F\x01 d\xC3\xA4"), "a?b?c?? d\xC3\xA4");
    EXPECT_EQ(text_for_comment(nullptr), "");
}

}  // namespace
}  // namespace pelt
