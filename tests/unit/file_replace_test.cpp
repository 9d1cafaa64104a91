// A whole file written in one go: what is left when the disk is full, the directory read-only or the target no plain
// file. A limit on the size of files stands in for the full disk, because it fails a write just as that does. Calls of
// the system that cannot be made to fail from outside are this program's own here, and fail when told.
#include "foundation/file_replace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>

#include "foundation/file_access.h"
#include "support/temp_dir.h"

#ifndef _WIN32
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr int NEVER = INT_MAX;

// Which calls fail, counted from 1, and whether a failing one ends the process instead.
struct Faults {
    int fsync_from = NEVER;
    int fsync_to = NEVER;
    int rename_from = NEVER;
    int setxattr_from = NEVER;
    bool kill = false;
    int fsyncs = 0;
    int renames = 0;
    int setxattrs = 0;
    std::string order;  // "f" for a file brought to the disk, "d" for a directory, "r" for a rename
};
Faults faults;

int fail_or_die() {
    if (faults.kill) { raise(SIGKILL); }
    errno = EIO;
    return -1;
}

}  // namespace

extern "C" int fsync(int descriptor) {
    struct stat status {};
    fstat(descriptor, &status);
    faults.order += S_ISDIR(status.st_mode) ? 'd' : 'f';
    const int call = ++faults.fsyncs;
    if (call >= faults.fsync_from && call <= faults.fsync_to) { return fail_or_die(); }
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int rename(const char* from, const char* to) {
    faults.order += 'r';
    if (++faults.renames >= faults.rename_from) { return fail_or_die(); }
    return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

extern "C" int fsetxattr(int descriptor, const char* name, const void* value, size_t size, int flags) noexcept {
    if (++faults.setxattrs >= faults.setxattr_from) { return fail_or_die(); }
    return static_cast<int>(syscall(SYS_fsetxattr, descriptor, name, value, size, flags));
}
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
    for (int i = 0; i < FILE_TABLE_SIZE; ++i) { ASSERT_EQ(file_open(path.c_str(), "r"), i); }
    EXPECT_EQ(put(path, "new"), 0);
    for (int i = 0; i < FILE_TABLE_SIZE; ++i) { EXPECT_EQ(file_close(i), 1); }
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
        if (geteuid() == 0) { EXPECT_EQ(seteuid(other), 0); }
    }
    ~ReadOnlyDirectory() {
        if (geteuid() != getuid()) { EXPECT_EQ(seteuid(getuid()), 0); }
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

// ---- what a file is beside its content ----

ino_t file_number(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_ino;
}

constexpr const char* ACCESS_LIST = "system.posix_acl_access";

// One user more than the file's own may read, in the form of the system: a version, then tag, permissions and number.
std::string access_list(unsigned char user) {
    constexpr unsigned char NO_ONE = 0xFF;
    std::string list("\x02\0\0\0", 4);
    const auto add = [&](unsigned char tag, unsigned char may, unsigned char id) {
        const unsigned char high = id == NO_ONE ? NO_ONE : 0;
        for (const unsigned char byte : {tag, {}, may, {}, id, high, high, high}) { list += static_cast<char>(byte); }
    };
    add(0x01, 6, NO_ONE);
    add(0x02, 4, user);
    add(0x04, 4, NO_ONE);
    add(0x10, 4, NO_ONE);
    add(0x20, 0, NO_ONE);
    return list;
}

std::string attribute(const std::string& path, const char* name) {
    char value[256];
    const ssize_t size = getxattr(path.c_str(), name, value, sizeof value);
    return size < 0 ? "none" : std::string(value, static_cast<size_t>(size));
}

bool give_attribute(const std::string& path, const char* name, const std::string& value) {
    return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

class FileReplaceFaults : public testing::Test {
protected:
    FileReplaceFaults() { faults = Faults{}; }
    ~FileReplaceFaults() override { faults = Faults{}; }

    FileReplacement replace(const std::string& content) {
        return file_replace(path.c_str(), content.data(), content.size());
    }
    // What the test does in a process of its own ends by the signal that a fault sends.
    void replace_and_die(const std::string& content) {
        const pid_t child = fork();
        if (child == 0) {
            faults.kill = true;
            replace(content);
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    }
    std::string beside() {
        std::string found;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with(".pelt-")) { found += dir.read(name); }
        }
        return found;
    }

    TempDir dir;
    std::string path = dir.write("a", "former content");
};

TEST_F(FileReplaceFaults, AReplacedFileKeepsItsGroupAndOwner) {
    constexpr id_t other = 4321;
    for (const uid_t owner : {geteuid(), static_cast<uid_t>(other)}) {
        if (chown(path.c_str(), owner, other) != 0) { GTEST_SKIP() << "files cannot be given away here"; }
        ASSERT_EQ(chmod(path.c_str(), 02750), 0);
        EXPECT_EQ(replace("new").error, 0);
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, owner);
        EXPECT_EQ(status.st_gid, other);
        EXPECT_EQ(status.st_mode & 07777, 02750U);
        EXPECT_EQ(dir.read("a"), "new");
    }
}

TEST_F(FileReplaceFaults, AFileOfAnotherIsWrittenInPlace) {
    if (geteuid() != 0) { GTEST_SKIP() << "only root can take another's place"; }
    const std::string longer = dir.write("b", "content of root's");
    ASSERT_EQ(chmod(longer.c_str(), 0666), 0);
    ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
    const ino_t before = file_number(longer);
    ASSERT_EQ(seteuid(65534), 0);
    EXPECT_EQ(put(longer, "new"), 1);
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(dir.read("b"), "new");
    EXPECT_EQ(file_number(longer), before);
    EXPECT_EQ(entries(dir), 2);
}

TEST_F(FileReplaceFaults, AReplacedFileKeepsItsExtendedAttributes) {
    if (!give_attribute(path, "user.origin", "a workshop")) {
        GTEST_SKIP() << "no such attributes on this file system";
    }
    ASSERT_TRUE(give_attribute(path, "user.empty", ""));
    const ino_t before = file_number(path);
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_NE(file_number(path), before) << "the directory takes new files: it is replaced";
    EXPECT_EQ(attribute(path, "user.origin"), "a workshop");
    EXPECT_EQ(attribute(path, "user.empty"), "");
    EXPECT_EQ(dir.read("a"), "new");
}

TEST_F(FileReplaceFaults, AReplacedFileKeepsItsAccessList) {
    if (!give_attribute(path, ACCESS_LIST, access_list(77))) { GTEST_SKIP() << "no access lists on this file system"; }
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_EQ(attribute(path, ACCESS_LIST), access_list(77));
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(FileReplaceFaults, AnAccessListOfTheDirectorysIsNotPutOnAReplacedFile) {
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    if (!give_attribute(dir.path(), "system.posix_acl_default", access_list(77))) {
        GTEST_SKIP() << "no access lists on this file system";
    }
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_EQ(attribute(path, ACCESS_LIST), "none");
    EXPECT_EQ(put(dir.file("made"), "x"), 1);
    EXPECT_NE(attribute(dir.file("made"), ACCESS_LIST), "none") << "a new file has it";
}

TEST_F(FileReplaceFaults, AFileWhoseAttributesNoOtherCanHaveIsWrittenInPlace) {
    if (!give_attribute(path, "user.origin", "a workshop")) {
        GTEST_SKIP() << "no such attributes on this file system";
    }
    const ino_t before = file_number(path);
    faults.setxattr_from = 1;
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_EQ(file_number(path), before);
    EXPECT_EQ(attribute(path, "user.origin"), "a workshop");
    EXPECT_EQ(dir.read("a"), "new");
    EXPECT_EQ(entries(dir), 1);
}

// ---- faults ----

TEST_F(FileReplaceFaults, TheContentIsOnTheDiskBeforeItTakesTheName) {
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_EQ(faults.order, "frd");
    faults.order.clear();
    EXPECT_EQ(put(dir.file("made"), "new"), 1);
    EXPECT_EQ(faults.order, "frd");
}

TEST_F(FileReplaceFaults, WhatIsWrittenInPlaceHasACopyOnTheDiskFirst) {
    std::filesystem::create_hard_link(path, dir.file("b"));
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_EQ(faults.order, "fdf");
    EXPECT_EQ(dir.read("b"), "new");
    EXPECT_EQ(entries(dir), 2);
}

TEST_F(FileReplaceFaults, ADiskThatFailsLeavesTheFormerFileWhole) {
    faults.fsync_from = 1;
    const FileReplacement result = replace("new");
    EXPECT_TRUE(result.opened);
    EXPECT_EQ(result.error, EIO);
    EXPECT_EQ(dir.read("a"), "former content");
    EXPECT_EQ(put(dir.file("made"), "new"), 1);
    EXPECT_EQ(entries(dir), 1);
}

TEST_F(FileReplaceFaults, AFileWhosePlaceCannotBeTakenIsWrittenInPlace) {
    const ino_t before = file_number(path);
    faults.rename_from = 1;
    EXPECT_EQ(replace("new").error, 0);
    EXPECT_EQ(dir.read("a"), "new");
    EXPECT_EQ(file_number(path), before);
    EXPECT_EQ(entries(dir), 1);
}

TEST_F(FileReplaceFaults, ANewFileThatCannotTakeItsNameIsNotThere) {
    faults.rename_from = 1;
    const std::string made = dir.file("made");
    const FileReplacement result = file_replace(made.c_str(), "new", 3);
    EXPECT_FALSE(result.opened);
    EXPECT_EQ(result.error, EIO);
    EXPECT_EQ(entries(dir), 1);
}

TEST_F(FileReplaceFaults, AFailureInPlacePutsTheFormerContentBack) {
    for (const std::string& content : {std::string("new"), std::string(5000, 'n')}) {
        faults = Faults{};
        std::filesystem::remove(dir.file("b"));
        std::filesystem::create_hard_link(path, dir.file("b"));
        faults.fsync_from = faults.fsync_to = 3;  // behind the copy and its directory
        const FileReplacement result = replace(content);
        EXPECT_EQ(result.error, EIO);
        EXPECT_EQ(result.former, "");
        EXPECT_EQ(dir.read("a"), "former content");
        EXPECT_EQ(dir.read("b"), "former content");
        EXPECT_EQ(entries(dir), 2);
    }
}

TEST_F(FileReplaceFaults, FormerContentThatCannotBePutBackIsKeptAndNamed) {
    std::filesystem::create_hard_link(path, dir.file("b"));
    faults.fsync_from = 3;
    const FileReplacement result = replace("new");
    EXPECT_EQ(result.error, EIO);
    ASSERT_NE(result.former, "");
    EXPECT_EQ(dir.read(std::filesystem::path(result.former).filename().string()), "former content");
}

TEST_F(FileReplaceFaults, WithoutRoomForACopyNothingIsWrittenInPlace) {
    std::filesystem::create_hard_link(path, dir.file("b"));
    {
        FullDisk disk(4);
        EXPECT_EQ(replace("new").error, EFBIG);
    }
    EXPECT_EQ(dir.read("a"), "former content");
    EXPECT_EQ(entries(dir), 2);
}

TEST_F(FileReplaceFaults, KilledBeforeTheContentTakesTheNameLeavesTheFormerFile) {
    faults.rename_from = 1;
    replace_and_die("new");
    EXPECT_EQ(dir.read("a"), "former content");
}

TEST_F(FileReplaceFaults, KilledWhileWritingInPlaceLeavesTheCopy) {
    std::filesystem::create_hard_link(path, dir.file("b"));
    faults.fsync_from = 3;
    replace_and_die("new");
    EXPECT_EQ(beside(), "former content");
}

TEST_F(FileReplaceFaults, AFileThatMayNotBeReadIsReplacedAllTheSame) {
    if (geteuid() != 0) { GTEST_SKIP() << "only root can become another"; }
    const std::string secret = dir.write("secret", "former");
    ASSERT_EQ(chmod(secret.c_str(), 0200), 0);
    ASSERT_EQ(chown(secret.c_str(), 65534, getegid()), 0);
    ASSERT_EQ(chown(dir.path().c_str(), 65534, getegid()), 0);
    ASSERT_EQ(seteuid(65534), 0);
    EXPECT_EQ(put(secret, "new"), 1);
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(dir.read("secret"), "new");
    EXPECT_EQ(entries(dir), 2);
}

TEST_F(FileReplaceFaults, AFileWithoutANameAnyMoreIsWrittenInPlace) {
    const int held = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(held, 0);
    std::filesystem::remove(path);
    EXPECT_EQ(put("/proc/self/fd/" + std::to_string(held), "new"), 1);
    char content[16];
    EXPECT_EQ(read(held, content, sizeof content), 3);
    close(held);
    EXPECT_EQ(entries(dir), 0) << "no file under the name that it had";
}

#endif

}  // namespace
}  // namespace pelt
