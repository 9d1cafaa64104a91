// Formatted text for files: fields, numbers, and what becomes of a sink that refuses.
#include "formats/text_output.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "foundation/file_access.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

bool take_to_string(void* context, const char* bytes, size_t size) {
    static_cast<std::string*>(context)->append(bytes, size);
    return true;
}

std::string put(const char* format, std::initializer_list<TextValue> values = {}) {
    std::string text;
    TextOutput out{take_to_string, &text, {}, false};
    text_put(out, format, values);
    EXPECT_TRUE(text_finish(out));
    return text;
}

TEST(TextOutput, FieldsAreFilledToTheirWidthAndNeverCut) {
    EXPECT_EQ(put("<%5d|%-5d|%d>", {12, -3, 123456}), "<   12|-3   |123456>");
    EXPECT_EQ(put("<%5d|%-3d>", {1234567, 1234567}), "<1234567|1234567>");
    EXPECT_EQ(put("<%-8s|%5s|%s>", {"ab", "cd", "efg"}), "<ab      |   cd|efg>");
    EXPECT_EQ(put("<%-2s>", {std::string(600, 'x').c_str()}), "<" + std::string(600, 'x') + ">");
    EXPECT_EQ(put("<%6.3f|%.4f|%f>", {0.5, -1.25f, 2.0}), "< 0.500|-1.2500|2.000000>");
}

TEST(TextOutput, NumbersAtTheEndsOfTheirRange) {
    EXPECT_EQ(put("%d %d", {std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}),
              "-2147483648 2147483647");
    EXPECT_EQ(put("%6.3f %f", {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()}),
              "   nan -inf");
    EXPECT_EQ(put("%.0f", {1e30}), "1000000000000000019884624838656");
}

TEST(TextOutput, AValueTooFewLeavesItsFieldAsItStands) {
    EXPECT_EQ(put("%d %s", {1}), "1 %s");
    EXPECT_EQ(put("%s", {static_cast<const char*>(nullptr)}), "");
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
    for (int i = 0; i < 200; ++i) { text_put(out, "%s", {piece.c_str()}); }
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
    for (int i = 0; i < 3; ++i) { text_put(out, "%s", {std::string(100000, 'x').c_str()}); }
    EXPECT_FALSE(text_finish(out));
    EXPECT_EQ(asked, 1);
}

TEST(TextOutput, ASlotOfTheTableOfFilesTakesTheText) {
    const test::TempDir dir;
    const int slot = file_open(dir.file("a.txt").c_str(), "w");
    ASSERT_GE(slot, 0);
    TextOutput out = text_output_to_slot(&slot);
    text_put(out, "%d\n", {7});
    EXPECT_TRUE(text_finish(out));
    file_close(slot);
    EXPECT_EQ(dir.read("a.txt"), "7\n");
    text_put(out, "more");
    EXPECT_FALSE(text_finish(out)) << "the slot is closed";
}

TEST(TextOutput, ACommentHoldsNoLineEnds) {
    EXPECT_EQ(text_for_comment("a\nb\tc\x7F\x01 d\xC3\xA4"), "a?b?c?? d\xC3\xA4");
    EXPECT_EQ(text_for_comment(nullptr), "");
}

}  // namespace
}  // namespace pelt
