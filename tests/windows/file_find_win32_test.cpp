// Files on Windows: names that no code page holds, bytes as they are, and devices that are no files.
#include "foundation/file_find_win32.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <string>

#include "foundation/file_access.h"
#include "foundation/file_find.h"
#include "support/long_path.h"
#include "support/temp_dir.h"

using namespace pelt;
using pelt::test::TempDir;
namespace test = pelt::test;

TEST(FileFindWin32, NamesAreUtf8HereAndWideToTheSystem) {
    EXPECT_EQ(file_system_name("a/\xC3\xBC\xE2\x98\x83.mod"), L"a/\u00fc\u2603.mod");
    EXPECT_EQ(file_system_name("\xF0\x9F\x90\x91"), L"\xD83D\xDC11");  // beyond 16 bits
    EXPECT_TRUE(file_system_name("").empty());
    EXPECT_TRUE(file_system_name(nullptr).empty());
    EXPECT_TRUE(file_system_name(std::string(40000, 'a').c_str()).empty());
}

TEST(FileFindWin32, ANameThatIsNotUtf8StillBecomesSomeName) { EXPECT_EQ(file_system_name("caf\xE9.mod").size(), 8u); }

TEST(FileFindWin32, AFileWithAWideNameIsWrittenAndReadAgain) {
    TempDir dir;
    const std::string path = dir.path() + "/\xC3\xBC\xE2\x98\x83.mod";
    ASSERT_EQ(file_write_all(path.c_str(), "x", 1), 1);
    EXPECT_NE(GetFileAttributesW(file_system_name(path.c_str()).c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(file_exists(path.c_str()), 1);
}

TEST(FileFindWin32, BytesStandAsTheyAre) {
    TempDir dir;
    const std::string path = dir.file("bytes.tga");
    const char bytes[] = {'\n', '\r', '\n', 26, 0, '\r', 'x'};
    ASSERT_EQ(file_write_all(path.c_str(), bytes, sizeof bytes), 1);
    size_t size = 0;
    char* read = file_read_all(path.c_str(), &size);
    ASSERT_EQ(size, sizeof bytes);
    EXPECT_EQ(std::string(read, size), std::string(bytes, sizeof bytes));
    std::free(read);
}

TEST(FileFindWin32, OnlyANameThatIsTooLongForTheSystemComesInItsLongForm) {
    const std::wstring mark = L"\\\\?\\";
    EXPECT_EQ(file_system_path("a/b.mod"), L"a/b.mod");
    EXPECT_EQ(file_system_path("NUL"), L"NUL");
    EXPECT_TRUE(file_system_path("").empty());
    EXPECT_TRUE(file_system_path(nullptr).empty());
    const std::string part(100, 'a');
    const std::string fits = "C:/" + part + "/" + part + "/" + std::string(54, 'b');  // 259
    EXPECT_EQ(file_system_path(fits.c_str()), file_system_name(fits.c_str()));
    std::wstring longer = file_system_name((fits + "b").c_str());
    for (wchar_t& c : longer) { c = c == L'/' ? L'\\' : c; }
    EXPECT_EQ(file_system_path((fits + "b").c_str()), mark + longer);
    const std::string share = "\\\\host\\share\\" + part + "\\" + part + "\\" + part;
    EXPECT_EQ(file_system_path(share.c_str()), mark + L"UNC" + file_system_name(share.c_str()).substr(1));
    const std::string marked = "\\\\?\\C:\\" + part + "\\" + part + "\\" + part;
    EXPECT_EQ(file_system_path(marked.c_str()), file_system_name(marked.c_str()));
    const std::wstring relative = file_system_path((part + "/../" + part + "/" + part + "/" + part).c_str());
    EXPECT_EQ(relative.substr(0, 4), mark);
    EXPECT_EQ(relative.find(L".."), std::wstring::npos) << "in the long form it would be a name";
}

TEST(FileFindWin32, AFileInADeepFolderIsWrittenReadAndReplaced) {
    TempDir dir;
    const std::string path = dir.path() + "/" + test::directory_of_length(dir, test::LONG_DIRECTORY) + "file.txt";
    ASSERT_EQ(file_write_all(path.c_str(), "x", 1), 1);
    EXPECT_EQ(file_write_all(path.c_str(), "yz", 2), 1);
    EXPECT_EQ(file_exists(path.c_str()), 1);
    EXPECT_EQ(file_resolve(path.c_str()), path);
    size_t size = 0;
    char* read = file_read_all(path.c_str(), &size);
    ASSERT_EQ(size, 2U);
    EXPECT_EQ(std::string(read, size), "yz");
    std::free(read);
    EXPECT_EQ(file_stream_read((dir.path() + "/" + test::directory_of_length(dir, test::LONG_DIRECTORY)).c_str()),
              nullptr);
}

TEST(FileFindWin32, CaseAndBothSeparatorsAreTheSystemsBusiness) {
    TempDir dir;
    ASSERT_EQ(file_write_all(dir.file("Model.MOD").c_str(), "x", 1), 1);
    const std::string other = dir.file("model.mod");
    EXPECT_EQ(file_resolve(other.c_str()), other);
    std::string backward = other;
    for (char& c : backward) {
        if (c == '/') { c = '\\'; }
    }
    EXPECT_EQ(file_exists(backward.c_str()), 1);
}

TEST(FileFindWin32, AFolderAndADeviceAreNoFilesToRead) {
    TempDir dir;
    EXPECT_EQ(file_stream_read(dir.path().c_str()), nullptr);
    EXPECT_EQ(file_stream_write(dir.path().c_str()), nullptr);
    EXPECT_EQ(file_stream_read("NUL"), nullptr);
    EXPECT_EQ(file_stream_read("COM1"), nullptr);
    EXPECT_EQ(file_stream_read("\\\\.\\pipe\\no such pipe"), nullptr);
}

TEST(FileFindWin32, PathsAreJoinedByABackslash) {
    EXPECT_EQ(path_join("a", "b"), "a\\b");
    EXPECT_EQ(path_join("a/", "b"), "a/b");
    EXPECT_EQ(path_join("", "b"), "b");
}
