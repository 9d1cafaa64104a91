// Files and paths: the table of five, lines, what may be opened, how names are found and cut.
#include "foundation/file_access.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/long_path.h"
#include "support/temp_dir.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace pelt {
namespace {

using test::TempDir;

// Opens for reading; the test ends here when that fails.
int open_read(const std::string& path) {
    const int slot = file_open(path.c_str(), "r");
    EXPECT_GE(slot, 0) << path;
    return slot;
}

// All lines of a file as file_gets hands them out with a buffer of this size.
std::vector<std::string> lines_of(const std::string& path, int size) {
    std::vector<std::string> lines;
    std::vector<char> buffer(static_cast<size_t>(size));
    const int slot = open_read(path);
    while (file_gets(buffer.data(), size, slot) != nullptr) { lines.emplace_back(buffer.data()); }
    EXPECT_NE(file_eof(slot), 0);
    EXPECT_EQ(file_error(slot), 0);
    file_close(slot);
    return lines;
}

using Lines = std::vector<std::string>;

// Text of a result that may be null.
std::string text(const char* result) { return result != nullptr ? result : "(null)"; }

TEST(FileTable, InitIsAlwaysOne) {
    EXPECT_EQ(file_table_init(), 1);
    TempDir dir;
    const int slot = open_read(dir.write("a", "x"));
    EXPECT_EQ(file_table_init(), 1);
    char c = 0;
    EXPECT_EQ(file_read(slot, &c, 1, 1), 1U);  // a later call leaves the open file alone
    EXPECT_EQ(file_close(slot), 1);
}

TEST(FileTable, SixthOpenGivesMinusOneAndTheFileIsNotTouched) {
    TempDir dir;
    const std::string path = dir.write("a", "x");
    for (int expected = 0; expected < FILE_TABLE_SIZE; ++expected) {
        EXPECT_EQ(file_open(path.c_str(), "r"), expected);
    }
    EXPECT_EQ(file_open(path.c_str(), "r"), -1);
    EXPECT_EQ(file_open(dir.file("new").c_str(), "w"), -1);
    EXPECT_FALSE(dir.exists("new"));
    EXPECT_EQ(file_exists(path.c_str()), 0);  // the test needs a slot as well: intended
    for (int slot = 0; slot < FILE_TABLE_SIZE; ++slot) { EXPECT_EQ(file_close(slot), 1); }
    EXPECT_EQ(file_exists(path.c_str()), 1);
}

TEST(FileTable, LowestFreeSlotIsTakenAgain) {
    TempDir dir;
    const std::string path = dir.write("a", "x");
    for (int i = 0; i < 4; ++i) { open_read(path); }
    EXPECT_EQ(file_close(2), 1);
    EXPECT_EQ(file_open(path.c_str(), "r"), 2);
    for (int slot = 0; slot < 4; ++slot) { file_close(slot); }
}

TEST(FileTable, CloseOfAFreeOrBadSlotIsZeroAndHarmless) {
    TempDir dir;
    for (int slot : {-1, 0, 4, 5, 1 << 30, -(1 << 30)}) { EXPECT_EQ(file_close(slot), 0) << slot; }
    const int slot = open_read(dir.write("a", "x"));
    EXPECT_EQ(file_close(slot), 1);
    EXPECT_EQ(file_close(slot), 0);
    EXPECT_EQ(file_open(dir.file("a").c_str(), "r"), 0);  // the count did not go wrong
    EXPECT_EQ(file_close(0), 1);
}

TEST(FileTable, BadSlotsGiveNothing) {
    char buffer[8] = "before";
    for (int slot : {-1, 0, 5}) {
        EXPECT_EQ(file_read(slot, buffer, 1, 1), 0U);
        EXPECT_EQ(file_write(slot, buffer, 1, 1), 0U);
        EXPECT_EQ(file_gets(buffer, 8, slot), nullptr);
        EXPECT_EQ(file_eof(slot), 0);
        EXPECT_EQ(file_error(slot), 0);
    }
    EXPECT_STREQ(buffer, "before");
}

TEST(FileOpen, NullNamesAndOtherModesAreRefused) {
    TempDir dir;
    const std::string path = dir.write("a", "x");
    EXPECT_EQ(file_open(nullptr, "r"), -1);
    EXPECT_EQ(file_open(path.c_str(), nullptr), -1);
    EXPECT_EQ(file_open("", "r"), -1);
    for (const char* mode : {"", "a", "rb", "r+", "wx"}) { EXPECT_EQ(file_open(path.c_str(), mode), -1) << mode; }
    EXPECT_EQ(dir.read("a"), "x");
}

TEST(FileOpen, MissingFileGivesMinusOne) {
    TempDir dir;
    EXPECT_EQ(file_open(dir.file("missing").c_str(), "r"), -1);
    EXPECT_EQ(file_open(dir.file("no/such/dir").c_str(), "w"), -1);
    EXPECT_EQ(file_open(std::string(100000, 'x').c_str(), "r"), -1);
    EXPECT_EQ(file_exists(dir.file("missing").c_str()), 0);
}

TEST(FileOpen, DirectoryIsNoFile) {
    TempDir dir;
    const std::string path = dir.make_dir("x.mod");
    EXPECT_EQ(file_open(path.c_str(), "r"), -1);
    EXPECT_EQ(file_open(path.c_str(), "w"), -1);
    EXPECT_EQ(file_exists(path.c_str()), 0);
    EXPECT_EQ(file_exists((path + "/").c_str()), 0);
}

#ifndef _WIN32
TEST(FileOpen, PipeIsNeverOpenedAndNothingWaits) {
    TempDir dir;
    const std::string path = dir.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(file_open(path.c_str(), "r"), -1);
    EXPECT_EQ(file_open(path.c_str(), "w"), -1);
    EXPECT_EQ(file_exists(path.c_str()), 0);
}

TEST(FileOpen, DeviceIsNotRead) { EXPECT_EQ(file_open("/dev/zero", "r"), -1); }

TEST(FileOpen, LinkToAFileIsFollowed) {
    TempDir dir;
    dir.write("a", "content");
    std::filesystem::create_symlink("a", dir.file("link"));
    std::filesystem::create_symlink("nowhere", dir.file("dangling"));
    EXPECT_EQ(file_exists(dir.file("link").c_str()), 1);
    EXPECT_EQ(file_exists(dir.file("dangling").c_str()), 0);
}

TEST(FileWrite, FullDeviceSetsTheErrorMarkAndCloseStillWorks) {
    const int slot = file_open("/dev/full", "w");
    ASSERT_GE(slot, 0);
    const std::string block(200000, 'x');
    file_write(slot, block.data(), 1, block.size());
    EXPECT_NE(file_error(slot), 0);
    EXPECT_EQ(file_close(slot), 1);
}
#endif

TEST(FileGets, DropsTheNewlineAndHandsOutALastLineWithoutOne) {
    TempDir dir;
    EXPECT_EQ(lines_of(dir.write("a", "one\n\ntwo"), 64), (Lines{"one", "", "two"}));
    EXPECT_EQ(lines_of(dir.write("b", "one\ntwo\n"), 64), (Lines{"one", "two"}));
    EXPECT_EQ(lines_of(dir.write("c", ""), 64), Lines{});
    EXPECT_EQ(lines_of(dir.write("d", "\n"), 64), Lines{""});
}

TEST(FileGets, CarriageReturnBeforeTheNewlineGoesWithIt) {
    TempDir dir;
    EXPECT_EQ(lines_of(dir.write("a", "one\r\n\r\ntwo\r\n"), 64), (Lines{"one", "", "two"}));
    EXPECT_EQ(lines_of(dir.write("b", "a\rb\r\r\nc\r"), 64), (Lines{"a\rb\r", "c\r"}));
}

TEST(FileGets, LineOfExactlyTheCapacityLeavesItsNewlineForTheNextCall) {
    TempDir dir;
    EXPECT_EQ(lines_of(dir.write("a", "1234567\nx\n"), 8), (Lines{"1234567", "", "x"}));
    EXPECT_EQ(lines_of(dir.write("b", "1234567\r\nx\n"), 8), (Lines{"1234567", "", "x"}));
    EXPECT_EQ(lines_of(dir.write("c", "1234567"), 8), Lines{"1234567"});
}

TEST(FileGets, LineOneShorterThanTheCapacityIsWhole) {
    TempDir dir;
    EXPECT_EQ(lines_of(dir.write("a", "123456\nx\n"), 8), (Lines{"123456", "x"}));
    EXPECT_EQ(lines_of(dir.write("b", "123456\r\nx\n"), 8), (Lines{"123456", "x"}));
    EXPECT_EQ(lines_of(dir.write("c", "123456\rx\n"), 8), (Lines{"123456\r", "x"}));
}

TEST(FileGets, LongLineComesInPieces) {
    TempDir dir;
    EXPECT_EQ(lines_of(dir.write("a", "abcdefghij\nk\n"), 5), (Lines{"abcd", "efgh", "ij", "k"}));
    EXPECT_EQ(lines_of(dir.write("b", "abcd"), 2), (Lines{"a", "b", "c", "d"}));
}

TEST(FileGets, SizeBelowTwoGivesNull) {
    TempDir dir;
    const int slot = open_read(dir.write("a", "x\n"));
    char buffer[4] = "yes";
    for (int size : {1, 0, -1}) { EXPECT_EQ(file_gets(buffer, size, slot), nullptr); }
    EXPECT_EQ(file_gets(nullptr, 4, slot), nullptr);
    EXPECT_STREQ(buffer, "yes");
    EXPECT_STREQ(file_gets(buffer, 4, slot), "x");
    file_close(slot);
}

TEST(FileGets, ZeroBytesAreHandedOutAsTheyAre) {
    TempDir dir;
    const std::string content("\0ab\0\ncd\n", 8);
    const int slot = open_read(dir.write("a", content));
    char buffer[16];
    std::memset(buffer, 'x', sizeof buffer);
    ASSERT_NE(file_gets(buffer, sizeof buffer, slot), nullptr);
    EXPECT_EQ(std::memcmp(buffer, "\0ab\0\0x", 6), 0);
    EXPECT_STREQ(file_gets(buffer, sizeof buffer, slot), "cd");
    EXPECT_EQ(file_gets(buffer, sizeof buffer, slot), nullptr);
    file_close(slot);
}

TEST(FileGets, LinesAcrossTheReadAheadAreWhole) {
    TempDir dir;
    std::string content;
    Lines expected;
    for (int i = 0; content.size() < 300000; ++i) {
        expected.push_back(std::to_string(i) + std::string(static_cast<size_t>(i * 37 % 211), 'y'));
        content += expected.back() + (i % 3 == 0 ? "\r\n" : "\n");
    }
    EXPECT_EQ(lines_of(dir.write("a", content), 1024), expected);
}

TEST(FileGets, EndingPartedByTheReadAheadIsStillOne) {
    // The CR is the last byte of a block of 65536 bytes, the LF the first of the next.
    TempDir dir;
    const std::string first(65535, 'a');
    const std::string path = dir.write("a", first + "\r\nb\r\n");
    EXPECT_EQ(lines_of(path, 100000), (Lines{first, "b"}));
    EXPECT_EQ(lines_of(path, 65537), (Lines{first, "b"}));  // the limit falls between the two as well
    EXPECT_EQ(lines_of(path, 65536), (Lines{first, "", "b"}));
}

TEST(FileGets, EndMarkIsSetWhenAReadWantedMore) {
    TempDir dir;
    char buffer[16];
    int slot = open_read(dir.write("a", "x\n"));
    file_gets(buffer, sizeof buffer, slot);
    EXPECT_EQ(file_eof(slot), 0);
    EXPECT_EQ(file_gets(buffer, sizeof buffer, slot), nullptr);
    EXPECT_NE(file_eof(slot), 0);
    file_close(slot);
    slot = open_read(dir.write("b", "x"));
    file_gets(buffer, sizeof buffer, slot);
    EXPECT_NE(file_eof(slot), 0);
    file_close(slot);
}

TEST(FileRead, MixesWithLinesAndReportsWholeElements) {
    TempDir dir;
    const int slot = open_read(dir.write("a", "line\n0123456789"));
    char buffer[32] = {};
    EXPECT_STREQ(file_gets(buffer, sizeof buffer, slot), "line");
    EXPECT_EQ(file_read(slot, buffer, 4, 1), 1U);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    EXPECT_EQ(file_eof(slot), 0);
    EXPECT_EQ(file_read(slot, buffer, 4, 3), 1U);  // six bytes are left: one element and a half
    EXPECT_EQ(std::string(buffer, 6), "456789");
    EXPECT_NE(file_eof(slot), 0);
    EXPECT_EQ(file_read(slot, buffer, 1, 1), 0U);
    file_close(slot);
}

TEST(FileRead, RefusesSizesThatMakeNoSense) {
    TempDir dir;
    const int slot = open_read(dir.write("a", "content"));
    char buffer[8];
    EXPECT_EQ(file_read(slot, buffer, 0, 5), 0U);
    EXPECT_EQ(file_read(slot, buffer, 5, 0), 0U);
    EXPECT_EQ(file_read(slot, nullptr, 1, 1), 0U);
    EXPECT_EQ(file_read(slot, buffer, SIZE_MAX / 2, 3), 0U);
    EXPECT_EQ(file_write(slot, "x", 1, 1), 0U);  // opened for reading
    EXPECT_EQ(file_read(slot, buffer, 7, 1), 1U);
    file_close(slot);
}

TEST(FileWrite, PassesBytesAsTheyAre) {
    TempDir dir;
    const std::string content("a\nb\r\nc\0d\x1a\xff\n", 12);
    const int slot = file_open(dir.file("out").c_str(), "w");
    ASSERT_GE(slot, 0);
    EXPECT_EQ(file_write(slot, content.data(), 4, 3), 3U);
    char c;
    EXPECT_EQ(file_read(slot, &c, 1, 1), 0U);  // opened for writing
    EXPECT_EQ(file_gets(&c, 1, slot), nullptr);
    EXPECT_EQ(file_close(slot), 1);
    EXPECT_EQ(dir.read("out"), content);
}

TEST(FileWrite, OpeningEmptiesAFile) {
    TempDir dir;
    const std::string path = dir.write("a", "former");
    file_close(file_open(path.c_str(), "w"));
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

#ifndef _WIN32
TEST(FileWrite, BackslashSeparatesWhereTheDirectoryOnlyExistsThatWay) {
    TempDir dir;
    dir.make_dir("out/deep");
    EXPECT_EQ(file_write_all((dir.path() + "\\out\\deep\\pic.tga").c_str(), "x", 1), 1);
    EXPECT_EQ(dir.read("out/deep/pic.tga"), "x");
    EXPECT_EQ(file_write_all((dir.path() + "/out\\pic.tga").c_str(), "y", 1), 1);
    EXPECT_EQ(dir.read("out/pic.tga"), "y");
    EXPECT_EQ(file_write_all((dir.path() + "/none\\pic.tga").c_str(), "y", 1), 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST(FileWrite, BackslashInAnExistingNameStays) {
    TempDir dir;
    dir.make_dir("a\\b");
    dir.make_dir("c");
    dir.write("c\\d", "former");
    EXPECT_EQ(file_write_all(dir.file("a\\b/pic").c_str(), "x", 1), 1);
    EXPECT_EQ(dir.read("a\\b/pic"), "x");
    EXPECT_EQ(file_write_all(dir.file("c\\d").c_str(), "new", 3), 1);
    EXPECT_EQ(dir.read("c\\d"), "new");
}
#endif

TEST(FileWriteAll, WritesOrReportsThatItCannotOpen) {
    TempDir dir;
    EXPECT_EQ(file_write_all(dir.file("a").c_str(), "content", 7), 1);
    EXPECT_EQ(dir.read("a"), "content");
    EXPECT_EQ(file_write_all(dir.file("a").c_str(), nullptr, 0), 1);
    EXPECT_EQ(dir.read("a"), "");
    EXPECT_EQ(file_write_all(dir.file("no/a").c_str(), "x", 1), 0);
    EXPECT_EQ(file_write_all(nullptr, "x", 1), 0);
    EXPECT_EQ(file_write_all(dir.file("b").c_str(), nullptr, 5), 0);
    EXPECT_FALSE(dir.exists("b"));
}

TEST(FileReadAll, GivesTheWholeContentOfAnySize) {
    TempDir dir;
    for (size_t size : {size_t{1}, size_t{65534}, size_t{65535}, size_t{65536}, size_t{65537}, size_t{3000000}}) {
        std::string content(size, '\0');
        for (size_t i = 0; i < size; ++i) { content[i] = static_cast<char>(i * 31 % 251); }
        size_t read = 0;
        char* block = file_read_all(dir.write("a", content).c_str(), &read);
        ASSERT_NE(block, nullptr);
        ASSERT_EQ(read, size);
        EXPECT_EQ(std::memcmp(block, content.data(), size), 0);
        EXPECT_EQ(block[size], '\0');
        std::free(block);
    }
}

TEST(FileReadAll, EmptyOrMissingFileGivesNull) {
    TempDir dir;
    size_t size = 7;
    EXPECT_EQ(file_read_all(dir.write("a", "").c_str(), &size), nullptr);
    EXPECT_EQ(size, 0U);
    size = 7;
    EXPECT_EQ(file_read_all(dir.file("missing").c_str(), &size), nullptr);
    EXPECT_EQ(size, 0U);
    char* block = file_read_all(dir.write("b", "x").c_str(), nullptr);
    EXPECT_STREQ(block, "x");
    std::free(block);
    EXPECT_EQ(file_open(dir.file("b").c_str(), "r"), 0);  // every slot is free again
    file_close(0);
}

#ifndef _WIN32
TEST(FileResolve, ExactNameComesFirst) {
    TempDir dir;
    dir.write("Ship.mod", "");
    dir.write("ship.mod", "");
    EXPECT_EQ(file_resolve(dir.file("ship.mod").c_str()), dir.file("ship.mod"));
    EXPECT_EQ(file_resolve(dir.file("Ship.mod").c_str()), dir.file("Ship.mod"));
}

TEST(FileResolve, IgnoresCaseComponentByComponentAndTakesTheLowestInByteOrder) {
    TempDir dir;
    dir.write("Models/Sub/SHIP.mod", "");
    dir.write("Models/Sub/Ship.MOD", "");
    dir.write("Models/Sub/ship.tga", "");
    EXPECT_EQ(file_resolve(dir.file("models/SUB/ship.mod").c_str()), dir.file("Models/Sub/SHIP.mod"));
    dir.write("MODELS/sub/sHip.mod", "");
    EXPECT_EQ(file_resolve(dir.file("models/SUB/ship.mod").c_str()), dir.file("MODELS/sub/sHip.mod"));
}

TEST(FileResolve, BackslashSeparates) {
    TempDir dir;
    dir.write("Models/ship.mod", "x");
    EXPECT_EQ(file_resolve((dir.path() + "\\Models\\ship.mod").c_str()), dir.file("Models/ship.mod"));
    EXPECT_EQ(file_resolve((dir.path() + "/models\\SHIP.MOD").c_str()), dir.file("Models/ship.mod"));
    EXPECT_EQ(file_exists((dir.path() + "\\models\\ship.mod").c_str()), 1);
    const int slot = open_read(dir.path() + "\\models\\ship.mod");
    char c = 0;
    EXPECT_EQ(file_read(slot, &c, 1, 1), 1U);
    EXPECT_EQ(c, 'x');
    file_close(slot);
}

TEST(FileResolve, BackslashInARealNameIsFoundFirst) {
    TempDir dir;
    dir.write("a\\b", "");
    dir.write("a/b", "");
    EXPECT_EQ(file_resolve(dir.file("a\\b").c_str()), dir.file("a\\b"));
}

TEST(FileResolve, DirectoryThatLeadsNowhereIsGivenUpForTheNext) {
    TempDir dir;
    dir.make_dir("models");
    dir.write("Models/ship.mod", "");
    EXPECT_EQ(file_resolve(dir.file("models/ship.mod").c_str()), dir.file("Models/ship.mod"));
}

TEST(FileResolve, OnlyRegularFilesCount) {
    TempDir dir;
    dir.make_dir("SHIP.mod");
    EXPECT_EQ(file_resolve(dir.file("ship.mod").c_str()), "");
    dir.write("Ship.mod", "");
    EXPECT_EQ(file_resolve(dir.file("ship.mod").c_str()), dir.file("Ship.mod"));
    EXPECT_EQ(file_resolve(dir.file("SHIP.mod").c_str()), dir.file("Ship.mod"));
    EXPECT_EQ(file_resolve(dir.file("Ship.mod/").c_str()), "");
    EXPECT_EQ(file_resolve(dir.path().c_str()), "");
}

TEST(FileResolve, RelativeNamesStayRelative) {
    TempDir dir;
    dir.write("Models/Ship.mod", "");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    EXPECT_EQ(file_resolve("models/ship.mod"), "Models/Ship.mod");
    EXPECT_EQ(file_resolve(".\\models\\..\\MODELS\\ship.mod"), "./Models/../Models/Ship.mod");
    std::filesystem::current_path(dir.file("Models"));
    EXPECT_EQ(file_resolve("SHIP.MOD"), "Ship.mod");
    std::filesystem::current_path(before);
}

TEST(FileResolve, APathAsLongAsTheSystemAllowsIsFoundIgnoringCase) {
    TempDir dir;
    const std::string deep = test::directory_of_length(dir, PATH_MAX - 20);
    const std::string real = dir.write(deep + "Ship.mod", "");
    EXPECT_EQ(file_exists(real.c_str()), 1);
    std::string other = dir.path() + "\\" + deep + "ship.MOD";
    for (size_t i = dir.path().size(); i < other.size(); ++i) { other[i] = other[i] == 'd' ? 'D' : other[i]; }
    EXPECT_EQ(file_resolve(other.c_str()), real);
}

TEST(FileResolve, ManyDirectoriesOnTheWayAreNoHindrance) {
    constexpr size_t LEVELS = 300;  // more than one search lists otherwise
    TempDir dir;
    std::string real;
    std::string other;
    for (size_t i = 0; i < LEVELS; ++i) {
        real += "d/";
        other += "D\\";
    }
    dir.write(real + "Ship.mod", "");
    EXPECT_EQ(file_resolve((dir.path() + "/" + other + "SHIP.mod").c_str()), dir.file(real + "Ship.mod"));
    EXPECT_EQ(file_resolve((dir.path() + "/" + other + "none.mod").c_str()), "");
}

TEST(FileResolve, NothingAndEndlessPathsAreEmpty) {
    EXPECT_EQ(file_resolve(nullptr), "");
    EXPECT_EQ(file_resolve(""), "");
    EXPECT_EQ(file_resolve("/"), "");
    EXPECT_EQ(file_resolve("\\\\"), "");
    EXPECT_EQ(file_resolve(std::string(100000, '/').c_str()), "");
    std::string deep;
    for (int i = 0; i < 20000; ++i) { deep += "./"; }
    EXPECT_EQ(file_resolve((deep + "x").c_str()), "");
    EXPECT_EQ(file_resolve(("/" + std::string(50000, 'a')).c_str()), "");
}

TEST(PathJoin, PutsOneSeparatorBetween) {
    EXPECT_EQ(path_join("models", "ship.mod"), "models/ship.mod");
    EXPECT_EQ(path_join("models/", "ship.mod"), "models/ship.mod");
    EXPECT_EQ(path_join("models\\", "ship.mod"), "models\\ship.mod");
    EXPECT_EQ(path_join("", "ship.mod"), "ship.mod");
    EXPECT_EQ(path_join(nullptr, "ship.mod"), "ship.mod");
    EXPECT_EQ(path_join("models", nullptr), "models/");
}
#endif

TEST(PathBaseName, NameIsLowerCaseWithoutDirectoryAndExtension) {
    for (PathRules rules : {PATH_RULES_POSIX, PATH_RULES_WIN32}) {
        EXPECT_EQ(text(path_base_name("C:\\Models\\Ship.MOD", rules)), "ship");
        EXPECT_EQ(text(path_base_name("ship.mod", rules)), "ship");
    }
}

TEST(PathDirectory, KeepsItsSeparatorAndItsCaseByTheRules) {
    EXPECT_EQ(text(path_directory("C:\\Models\\Ship.MOD", PATH_RULES_WIN32)), "c:\\models\\");
    EXPECT_EQ(text(path_directory("C:\\Models\\Ship.MOD", PATH_RULES_POSIX)), "C:\\Models\\");
    for (PathRules rules : {PATH_RULES_POSIX, PATH_RULES_WIN32}) {
        EXPECT_EQ(text(path_directory("ship.mod", rules)), "");
        EXPECT_EQ(text(path_directory("a.mo", rules)), "");
        EXPECT_EQ(text(path_directory("\\a", rules)), "\\");
    }
}

TEST(PathBaseName, FourCharactersOrFewerAreNoName) {
    for (PathRules rules : {PATH_RULES_POSIX, PATH_RULES_WIN32}) {
        for (const char* path : {"a.mo", ".mod", "ship", "abc", "a"}) {
            EXPECT_EQ(path_base_name(path, rules), nullptr) << path;
        }
        EXPECT_EQ(text(path_base_name("a.mod", rules)), "a");
    }
}

TEST(PathBaseName, ForwardSlashesAreNoSeparatorsOnWin32) {
    EXPECT_EQ(text(path_base_name("c:/m/Ship.mod", PATH_RULES_WIN32)), "c:/m/ship");
    EXPECT_EQ(text(path_directory("c:/m/Ship.mod", PATH_RULES_WIN32)), "");
}

TEST(PathBaseName, ForwardSlashesSeparateOnPosix) {
    EXPECT_EQ(text(path_base_name("/home/Me/Ship.mod", PATH_RULES_POSIX)), "ship");
    EXPECT_EQ(text(path_directory("/home/Me/Ship.mod", PATH_RULES_POSIX)), "/home/Me/");
    EXPECT_EQ(text(path_base_name("/home\\Me/Sub\\Ship.mod", PATH_RULES_POSIX)), "ship");
    EXPECT_EQ(text(path_directory("/home\\Me/Sub\\Ship.mod", PATH_RULES_POSIX)), "/home\\Me/Sub\\");
}

TEST(PathRules, AnyPathHasADirectoryHoweverLong) {
    const std::string directory = std::string(5000, 'd') + "\\";
    EXPECT_EQ(path_directory_length((directory + "a.mod").c_str()), directory.size());
    EXPECT_EQ(path_directory_length("c:/m/ship.mod", PATH_RULES_POSIX), 5U);
    EXPECT_EQ(path_directory_length("c:/m/ship.mod", PATH_RULES_WIN32), 0U);
    EXPECT_EQ(path_directory_length("ship.mod"), 0U);
    EXPECT_EQ(path_directory_length(nullptr), 0U);
}

TEST(PathRules, SeparatorsBecomeThoseThatCount) {
    EXPECT_EQ(path_with_separators("c:/m\\ship.mod", PATH_RULES_WIN32), "c:\\m\\ship.mod");
    EXPECT_EQ(path_with_separators("c:/m\\ship.mod", PATH_RULES_POSIX), "c:/m\\ship.mod");
    EXPECT_EQ(path_with_separators(nullptr), "");
}

TEST(PathRules, OnlyARelativePathIsTakenFromTheBase) {
    const std::string joined = std::string("base") + PATH_SEPARATOR;
    for (PathRules rules : {PATH_RULES_POSIX, PATH_RULES_WIN32}) {
        EXPECT_EQ(path_from("base", "models", rules), joined + "models");
        EXPECT_EQ(path_from("base", ".", rules), joined + ".");
        EXPECT_EQ(path_from("base", "", rules), joined);
        EXPECT_EQ(path_from("base", nullptr, rules), joined);
        EXPECT_EQ(path_from("base", "/models", rules), "/models");
        EXPECT_EQ(path_from("base", "\\models", rules), "\\models");
        EXPECT_EQ(path_from(nullptr, "models", rules), "models");
        EXPECT_EQ(path_from("", "models", rules), "models");
    }
    EXPECT_EQ(path_from("base", "C:\\models", PATH_RULES_WIN32), "C:\\models");
    EXPECT_EQ(path_from("base", "C:models", PATH_RULES_POSIX), joined + "C:models");
}

TEST(PathRules, APathFitsAModelWithoutBeingCut) {
    const std::string directory(254, 'd');
    EXPECT_TRUE(path_fits((directory + "\\a.mod").c_str()));
    EXPECT_FALSE(path_fits((directory + "d\\a.mod").c_str()));
    EXPECT_FALSE(path_fits((directory + "d/a.mod").c_str(), PATH_RULES_POSIX));
    EXPECT_TRUE(path_fits((directory + "d/a.mod").c_str(), PATH_RULES_WIN32)) << "no directory as that system has them";
    EXPECT_TRUE(path_fits(std::string(511, 'n').c_str()));
    EXPECT_FALSE(path_fits(std::string(512, 'n').c_str()));
    EXPECT_TRUE(path_fits(""));
    EXPECT_FALSE(path_fits(nullptr));
}

TEST(PathBaseName, RulesOfTheSystemAreTheDefault) {
#ifdef _WIN32
    EXPECT_EQ(text(path_directory("A/B\\c.mod")), "a/b\\");
#else
    EXPECT_EQ(text(path_directory("A/B\\c.mod")), "A/B\\");
    EXPECT_EQ(text(path_directory("A/c.mod")), "A/");
#endif
}

TEST(PathBaseName, OnlyAnExtensionOfThreeCharactersIsCut) {
    for (PathRules rules : {PATH_RULES_POSIX, PATH_RULES_WIN32}) {
        EXPECT_EQ(text(path_base_name("model.data", rules)), "model.data");
        EXPECT_EQ(text(path_base_name("model.gz", rules)), "model.gz");
        EXPECT_EQ(text(path_base_name("model.tar.tga", rules)), "model.tar");
    }
}

TEST(PathBaseName, SeparatorAmongTheLastFourCharactersIsNotSeen) {
    for (PathRules rules : {PATH_RULES_POSIX, PATH_RULES_WIN32}) {
        EXPECT_EQ(text(path_base_name("models\\abc", rules)), "models\\abc");
        EXPECT_EQ(text(path_base_name("a\\models\\abc", rules)), "models\\abc");
    }
}

TEST(PathBaseName, NameMayBeEmptyBehindADirectory) {
    EXPECT_EQ(text(path_base_name("models\\.mod", PATH_RULES_WIN32)), "");
}

TEST(PathLimits, NullAndEmptyAreNull) {
    EXPECT_EQ(path_base_name(nullptr), nullptr);
    EXPECT_EQ(path_base_name(""), nullptr);
    EXPECT_EQ(path_directory(nullptr), nullptr);
    EXPECT_EQ(path_directory(""), nullptr);
}

TEST(PathLimits, FiveHundredAndTwelveAreRefusedAndOneLessIsTaken) {
    const std::string just(507, 'a');
    const std::string path = just + ".mod";  // 511 characters
    ASSERT_EQ(path.size(), 511U);
    EXPECT_EQ(text(path_base_name(path.c_str())), just);
    EXPECT_EQ(text(path_directory(path.c_str())), "");
    for (size_t more : {size_t{1}, size_t{2}, size_t{100000}}) {
        const std::string longer = std::string(more, 'b') + path;
        EXPECT_EQ(path_base_name(longer.c_str()), nullptr);
        EXPECT_EQ(path_directory(longer.c_str()), nullptr);
    }
}

TEST(PathLimits, BaseNameAndDirectoryShareABuffer) {
    const char* name = path_base_name("ship.mod");
    const char* directory = path_directory("models\\wing.mod");
    EXPECT_EQ(name, directory);
}

TEST(PathSetExtension, ReplacesWhatStandsBehindTheDot) {
    EXPECT_EQ(text(path_set_extension("ship.mod", "obj")), "ship.obj");
    EXPECT_EQ(text(path_set_extension("model.data", "obj")), "model.obj");
    EXPECT_EQ(text(path_set_extension("ship.mod", ".obj")), "ship..obj");  // an extension with its dot leaves two
    EXPECT_EQ(text(path_set_extension("ship.mod", "jpeg")), "ship.jpeg");
}

TEST(PathSetExtension, WithoutADotItIsAppended) {
    EXPECT_EQ(text(path_set_extension("abcdef", "obj")), "abcdefobj");
    EXPECT_EQ(text(path_set_extension("a.mo", "obj")), "a.moobj");        // below five characters
    EXPECT_EQ(text(path_set_extension("ship.gz", "obj")), "ship.gzobj");  // the dot stands too far back to be seen
    EXPECT_EQ(text(path_set_extension(".abcd", "obj")), ".abcdobj");      // a dot in the first place is none
    EXPECT_EQ(text(path_set_extension("a.mod", "obj")), "a.obj");
}

TEST(PathSetExtension, StaysInBounds) {
    EXPECT_EQ(text(path_set_extension("", "obj")), "obj");
    EXPECT_EQ(text(path_set_extension(nullptr, "obj")), "obj");
    EXPECT_EQ(text(path_set_extension("ship.mod", nullptr)), "ship.");
    EXPECT_EQ(text(path_set_extension("ship.mod", std::string(9000, 'e').c_str())), "ship." + std::string(506, 'e'));
    EXPECT_EQ(text(path_set_extension(std::string(9000, 'p').c_str(), "obj")), std::string(511, 'p'));
}

TEST(PathFileName, DoesAsTheBaseNameWithoutTestsOfLength) {
    EXPECT_EQ(text(path_file_name("C:\\Models\\Ship.MOD", PATH_RULES_WIN32)), "ship");
    EXPECT_EQ(text(path_file_name("/m/Ship.mod", PATH_RULES_POSIX)), "ship");
    EXPECT_EQ(text(path_file_name("/m/Ship.mod", PATH_RULES_WIN32)), "/m/ship");
}

TEST(PathFileName, ShortNullAndEndlessPathsAreDefined) {
    EXPECT_EQ(text(path_file_name("Abc")), "abc");
    EXPECT_EQ(text(path_file_name("A")), "a");
    EXPECT_EQ(text(path_file_name(".mod")), "");
    EXPECT_EQ(text(path_file_name("Abcd")), "abcd");
    EXPECT_EQ(text(path_file_name("")), "");
    EXPECT_EQ(text(path_file_name(nullptr)), "");
    EXPECT_EQ(text(path_file_name(std::string(9000, 'P').c_str())), std::string(511, 'p'));
}

TEST(PathFileDir, DropsTheSeparator) {
    EXPECT_EQ(text(path_file_dir("C:\\Models\\Ship.MOD", PATH_RULES_WIN32)), "c:\\models");
    EXPECT_EQ(text(path_file_dir("/Models/Ship.MOD", PATH_RULES_POSIX)), "/Models");
    EXPECT_EQ(text(path_file_dir("/Models/Ship.MOD", PATH_RULES_WIN32)), "");
    EXPECT_EQ(text(path_file_dir("ship.mod")), "");
    EXPECT_EQ(text(path_file_dir("")), "");
    EXPECT_EQ(text(path_file_dir(nullptr)), "");
    EXPECT_EQ(text(path_file_dir((std::string(9000, 'p') + "\\x").c_str())), "");
}

}  // namespace
}  // namespace pelt
