// Bytes of files that are kept: shared, known again, never needed.
#include "foundation/file_text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/temp_dir.h"

namespace pelt {
namespace {

TEST(FileText, HoldsAllBytesOfAFile) {
    const test::TempDir dir;
    for (const size_t size : {size_t{0}, size_t{1}, size_t{4096}, size_t{100001}}) {
        std::string bytes;
        for (size_t i = 0; i < size; ++i) { bytes += static_cast<char>(i * 7 % 256); }
        const auto text = file_text_read(dir.write("a", bytes).c_str());
        ASSERT_NE(text, nullptr) << size;
        EXPECT_EQ(text->view(), bytes);
    }
    EXPECT_EQ(file_text_read(dir.file("nothing").c_str()), nullptr);
    EXPECT_EQ(file_text_read(dir.path().c_str()), nullptr);
}

TEST(FileText, TheSameBytesOfAFileAreHeldOnce) {
    const test::TempDir dir;
    const std::string path = dir.write("a", "one");
    const auto first = file_text_read(path.c_str());
    EXPECT_EQ(file_text_read(path.c_str()), first);
    EXPECT_NE(file_text_read(dir.write("b", "one").c_str()), first);
    dir.write("a", "two");
    const auto second = file_text_read(path.c_str());
    EXPECT_NE(second, first);
    EXPECT_EQ(first->view(), "one");
    EXPECT_EQ(second->view(), "two");
}

TEST(FileText, KnowsWhetherItsFileChanged) {
    const test::TempDir dir;
    const std::string path = dir.write("a", "one");
    const auto text = file_text_read(path.c_str());
    EXPECT_EQ(file_text_state(*text, path), FileState::AS_KNOWN);
    dir.write("a", "two");
    EXPECT_EQ(file_text_state(*text, path), FileState::CHANGED);
    file_text_note_written(*text, path, "two");
    EXPECT_EQ(file_text_state(*text, path), FileState::AS_KNOWN);
    dir.write("a", "one");
    EXPECT_EQ(file_text_state(*text, path), FileState::CHANGED);
    std::filesystem::remove(test::path_of(path));
    EXPECT_EQ(file_text_state(*text, path), FileState::GONE);
    // Of a file that it was never read from or written to it says nothing.
    EXPECT_EQ(file_text_state(*text, dir.write("b", "x")), FileState::AS_KNOWN);
}

}  // namespace
}  // namespace pelt
