// Writing a whole file on Windows: what happens to its other names and attributes, and when it is in use elsewhere.
#include "foundation/file_replace.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "foundation/file_find_win32.h"
#include "support/temp_dir.h"

using namespace pelt;
using pelt::test::TempDir;

namespace {

int put(const std::string& path, const std::string& content) {
    return file_replace(path.c_str(), content.data(), content.size()).opened ? 1 : 0;
}

std::ptrdiff_t entries(const TempDir& dir) {
    return std::distance(std::filesystem::directory_iterator(dir.path()), {});
}

HANDLE open_to_read(const std::string& path, DWORD share) {
    return CreateFileW(file_system_name(path.c_str()).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
}

}  // namespace

TEST(FileReplaceWin32, AFileOfTwoNamesStaysOneFile) {
    TempDir dir;
    const std::string path = dir.write("a", "former content");
    ASSERT_NE(CreateHardLinkA(dir.file("b").c_str(), path.c_str(), nullptr), 0);
    EXPECT_EQ(put(path, "new"), 1);
    EXPECT_EQ(dir.read("b"), "new");
    EXPECT_EQ(put(path, "new and longer than before"), 1);
    EXPECT_EQ(dir.read("b"), "new and longer than before");
    EXPECT_EQ(entries(dir), 2);
}

TEST(FileReplaceWin32, AHiddenFileStaysHidden) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    ASSERT_NE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_HIDDEN), 0);
    const DWORD before = GetFileAttributesA(path.c_str());
    EXPECT_EQ(put(path, "new"), 1);
    EXPECT_EQ(dir.read("a"), "new");
    EXPECT_EQ(GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_HIDDEN, before & FILE_ATTRIBUTE_HIDDEN);
}

TEST(FileReplaceWin32, AFileThatOthersReadIsWrittenInPlace) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    const HANDLE reader = open_to_read(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(put(path, "new"), 1);
    CloseHandle(reader);
    EXPECT_EQ(dir.read("a"), "new");
    EXPECT_EQ(entries(dir), 1);
}

TEST(FileReplaceWin32, AFileThatMayNotBeWrittenIsLeftAlone) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    const HANDLE reader = open_to_read(path, FILE_SHARE_READ);
    EXPECT_EQ(put(path, "new"), 0);
    CloseHandle(reader);
    EXPECT_EQ(dir.read("a"), "former");
    EXPECT_EQ(entries(dir), 1);
}

// Memory that nobody may read stands in for the full disk, because it fails a write just as that does.
TEST(FileReplaceWin32, AWriteThatFailsLeavesTheFormerFileWholeAndNoPartOfANewOne) {
    TempDir dir;
    constexpr size_t LENGTH = 4096;
    void* unreadable = VirtualAlloc(nullptr, LENGTH, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS);
    ASSERT_NE(unreadable, nullptr);
    const std::string alone = dir.write("alone", "former");
    const std::string twice = dir.write("twice", "former too");
    ASSERT_NE(CreateHardLinkA(dir.file("again").c_str(), twice.c_str(), nullptr), 0);  // written in place
    for (const std::string& path : {alone, twice, dir.file("new")}) {
        const FileReplacement result = file_replace(path.c_str(), unreadable, LENGTH);
        EXPECT_TRUE(result.opened);
        EXPECT_NE(result.error, 0);
        EXPECT_EQ(result.former, "");
    }
    VirtualFree(unreadable, 0, MEM_RELEASE);
    EXPECT_EQ(dir.read("alone"), "former");
    EXPECT_EQ(dir.read("twice"), "former too");
    EXPECT_EQ(entries(dir), 3);
}

TEST(FileReplaceWin32, TheOwnerStays) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    constexpr SECURITY_INFORMATION ABOUT = OWNER_SECURITY_INFORMATION;
    const auto security = [&] {
        DWORD size = 0;
        GetFileSecurityA(path.c_str(), ABOUT, nullptr, 0, &size);
        std::string record(size, '\0');
        EXPECT_NE(GetFileSecurityA(path.c_str(), ABOUT, record.data(), size, &size), 0);
        return record;
    };
    const std::string before = security();
    EXPECT_EQ(put(path, "new"), 1);
    EXPECT_EQ(dir.read("a"), "new");
    EXPECT_EQ(security(), before);
}

TEST(FileReplaceWin32, WhatFailsHasANumberThatTheLibraryOfCHasWordsFor) {
    TempDir dir;
    dir.make_dir("folder");
    EXPECT_EQ(file_replace(dir.file("none/a").c_str(), "x", 1).error, ENOENT);
    EXPECT_EQ(file_replace(dir.file("folder").c_str(), "x", 1).error, EACCES);
    EXPECT_EQ(file_replace("", "x", 1).error, ENOENT);
}

TEST(FileReplaceWin32, ADeviceTakesTheBytesAndAPipeIsRefused) {
    EXPECT_EQ(put("NUL", "content"), 1);
    const HANDLE pipe =
        CreateNamedPipeA("\\\\.\\pipe\\pelt test", PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    EXPECT_EQ(put("\\\\.\\pipe\\pelt test", "content"), 0);
    CloseHandle(pipe);
}
