#include "foundation/path_relative.h"

#include <gtest/gtest.h>

namespace pelt {
namespace {

TEST(PathRelative, NamesLeadDownAndUp) {
    EXPECT_EQ(path_relative("/a/b/", "/a/b/c.mod"), "c.mod");
    EXPECT_EQ(path_relative("/a/b", "/a/b/c/d.mod"), "c/d.mod");
    EXPECT_EQ(path_relative("/a/b", "/a/c.mod"), "../c.mod");
    EXPECT_EQ(path_relative("/a/b/", "/d/e.mod"), "../../d/e.mod");
    EXPECT_EQ(path_relative("/", "/e.mod"), "e.mod");
    EXPECT_EQ(path_relative("/a", "/e.mod"), "../e.mod");
    EXPECT_EQ(path_relative("/a/bc", "/a/b/e.mod"), "../b/e.mod") << "parts are compared whole";
    EXPECT_EQ(path_relative("C:/a", "C:/b/e.mod"), "../b/e.mod");
}

TEST(PathRelative, NoNameLeadsToAnotherDrive) {
    EXPECT_EQ(path_relative("C:/a", "D:/a/e.mod"), "");
    EXPECT_EQ(path_relative("/a", "C:/e.mod"), "");
    EXPECT_EQ(path_relative("/a", ""), "");
    EXPECT_EQ(path_relative("", "/a"), "a");
}

TEST(PathRelative, AFileAsDeepAsItsDirectoryIsNotTakenForIt) {
    EXPECT_EQ(path_relative("/a/b", "/a/b"), "../b");
    EXPECT_EQ(path_relative("/a/b/c", "/a/b"), "../../b");
}

}  // namespace
}  // namespace pelt
