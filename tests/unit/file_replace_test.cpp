// A whole file written in one go: what is left when the disk is full, the directory read-only or the target no plain
// file. A limit on the size of files stands in for the full disk, because it fails a write just as that does.
#include "foundation/file_replace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>

#include "foundation/file_access.h"
#include "support/temp_dir.h"

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace pelt {
namespace {

using test::TempDir;

int put(const std::string& path, const std::string& content) {
    return file_write_all(path.c_str(), content.data(), content.size());
}

std::ptrdiff_t entries(const TempDir& dir) {
    return std::distance(std::filesystem::directory_iterator(dir.path()), {});
}

TEST(FileReplace, MakesAndReplacesAndLeavesNothingBeside) {
    TempDir dir;
    EXPECT_EQ(put(dir.file("a"), "first"), 1);
    EXPECT_EQ(put(dir.file("a"), "a longer second"), 1);
    EXPECT_EQ(put(dir.file("a"), "3"), 1);
    EXPECT_EQ(dir.read("a"), "3");
    EXPECT_EQ(entries(dir), 1);
}

TEST(FileReplace, ANameThatCannotBeOpenedGives0) {
    TempDir dir;
    dir.make_dir("folder");
    EXPECT_EQ(put("", "x"), 0);
    EXPECT_EQ(put(dir.file("folder"), "x"), 0);
    EXPECT_EQ(put(dir.file("none/a"), "x"), 0);
    EXPECT_EQ(put(dir.file("new/"), "x"), 0);
    EXPECT_EQ(put(dir.file(std::string(300, 'n')), "x"), 0);
    EXPECT_EQ(entries(dir), 1);
}

TEST(FileReplace, AFullTableOfFilesRefusesAndLosesNothing) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    for (int i = 0; i < FILE_TABLE_SIZE; ++i) ASSERT_EQ(file_open(path.c_str(), "r"), i);
    EXPECT_EQ(put(path, "new"), 0);
    for (int i = 0; i < FILE_TABLE_SIZE; ++i) EXPECT_EQ(file_close(i), 1);
    EXPECT_EQ(dir.read("a"), "former");
    EXPECT_EQ(put(path, "new"), 1);
}

#ifndef _WIN32

// As long as it lives, no file can become longer than this many bytes.
class FullDisk {
public:
    explicit FullDisk(rlim_t size) {
        former_handler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit{size, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, former_handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit former_{};
    void (*former_handler_)(int) = nullptr;
};

// As long as it lives, the directory takes no new files; as another user where the tests run as one whom that would
// not stop.
class ReadOnlyDirectory {
public:
    explicit ReadOnlyDirectory(const TempDir& dir) : path_(dir.path()) {
        constexpr uid_t other = 65534;
        if (geteuid() == 0) {
            for (const auto& entry : std::filesystem::directory_iterator(path_)) {
                EXPECT_EQ(chown(entry.path().c_str(), other, other), 0);
            }
            EXPECT_EQ(chown(path_.c_str(), other, other), 0);
        }
        EXPECT_EQ(chmod(path_.c_str(), 0555), 0);
        if (geteuid() == 0) {
            EXPECT_EQ(seteuid(other), 0);
        }
    }
    ~ReadOnlyDirectory() {
        if (geteuid() != getuid()) {
            EXPECT_EQ(seteuid(getuid()), 0);
        }
        chmod(path_.c_str(), 0755);
    }
    ReadOnlyDirectory(const ReadOnlyDirectory&) = delete;
    ReadOnlyDirectory& operator=(const ReadOnlyDirectory&) = delete;

private:
    std::string path_;
};

TEST(FileReplace, AFullDiskLeavesTheFormerFileWhole) {
    TempDir dir;
    const std::string path = dir.write("picture.tga", "former content");
    {
        FullDisk disk(4096);
        EXPECT_EQ(put(path, std::string(100000, 'n')), 1);  // intended: the result tells only of the opening
    }
    EXPECT_EQ(dir.read("picture.tga"), "former content");
    EXPECT_EQ(entries(dir), 1);
}

TEST(FileReplace, AFullDiskLeavesNoPartOfANewFile) {
    TempDir dir;
    {
        FullDisk disk(4096);
        EXPECT_EQ(put(dir.file("picture.tga"), std::string(100000, 'n')), 1);
    }
    EXPECT_EQ(entries(dir), 0);
}

TEST(FileReplace, AReadOnlyDirectoryLetsAWritableFileBeWritten) {
    TempDir dir;
    const std::string longer = dir.write("longer", "former content");
    const std::string shorter = dir.write("shorter", "f");
    {
        ReadOnlyDirectory read_only(dir);
        EXPECT_EQ(put(longer, "new"), 1);
        EXPECT_EQ(put(shorter, "new"), 1);
        EXPECT_EQ(put(dir.file("other"), "new"), 0);
    }
    EXPECT_EQ(dir.read("longer"), "new");
    EXPECT_EQ(dir.read("shorter"), "new");
    EXPECT_EQ(entries(dir), 2);
}

TEST(FileReplace, AReadOnlyDirectoryOnAFullDiskLosesNothing) {
    TempDir dir;
    const std::string path = dir.write("picture.tga", "former content");
    {
        ReadOnlyDirectory read_only(dir);
        FullDisk disk(4096);
        EXPECT_EQ(put(path, std::string(100000, 'n')), 1);
    }
    EXPECT_EQ(dir.read("picture.tga"), "former content");
}

TEST(FileReplace, AFileWithoutWritePermissionIsLeftAlone) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    {
        ReadOnlyDirectory read_only(dir);
        EXPECT_EQ(put(path, "new"), 0);
    }
    EXPECT_EQ(dir.read("a"), "former");
}

TEST(FileReplace, ALinkStaysALinkAndPermissionsStay) {
    TempDir dir;
    dir.make_dir("deep");
    const std::string path = dir.write("deep/real", "former");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    std::filesystem::create_symlink("deep/real", dir.file("link"));
    std::filesystem::create_symlink("deep/later", dir.file("dangling"));
    EXPECT_EQ(put(dir.file("link"), "new"), 1);
    EXPECT_EQ(put(dir.file("dangling"), "made"), 1);
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("dangling")));
    EXPECT_EQ(dir.read("deep/real"), "new");
    EXPECT_EQ(dir.read("deep/later"), "made");
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST(FileReplace, AFileOfTwoNamesStaysOneFile) {
    TempDir dir;
    const std::string path = dir.write("a", "former content");
    std::filesystem::create_hard_link(path, dir.file("b"));
    EXPECT_EQ(put(path, "new"), 1);
    EXPECT_EQ(dir.read("b"), "new");
}

TEST(FileReplace, ADeviceTakesTheBytesAndAPipeIsRefused) {
    TempDir dir;
    EXPECT_EQ(put("/dev/full", "content"), 1);
    EXPECT_EQ(put("/dev/null", "content"), 1);
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(put(dir.file("pipe"), "content"), 0);
}

#endif

}  // namespace
}  // namespace pelt
