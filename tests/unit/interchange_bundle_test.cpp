// The bytes between the process that reads a strange file and the one that writes its model.
#include "interchange/import_bundle.h"

#include <gtest/gtest.h>

namespace pelt {
namespace {

ImportResult some_result() {
    ImportResult result;
    result.notes = {"a note", ""};
    result.losses = {"a loss"};
    result.sources = {"/somewhere/x.obj"};
    result.main = "made.mod";
    result.files = {{"made_wood.tga", std::string("a\0b", 3)}, {"made.mod", "points\n"}};
    return result;
}

TEST(ImportBundle, IsWhatItWasMadeOf) {
    const ImportResult sent = some_result();
    ImportResult got;
    ASSERT_TRUE(import_unbundle(import_bundle(sent), &got));
    EXPECT_EQ(got.error, "");
    EXPECT_EQ(got.notes, sent.notes);
    EXPECT_EQ(got.losses, sent.losses);
    EXPECT_EQ(got.sources, sent.sources);
    EXPECT_EQ(got.main, sent.main);
    ASSERT_EQ(got.files.size(), 2u);
    EXPECT_EQ(got.files[0].name, "made_wood.tga");
    EXPECT_EQ(got.files[0].content, std::string("a\0b", 3));
}

TEST(ImportBundle, IsRefusedWhereverItIsCut) {
    const std::string bytes = import_bundle(some_result());
    for (size_t size = 0; size < bytes.size(); ++size) {
        ImportResult got;
        EXPECT_FALSE(import_unbundle(bytes.substr(0, size), &got)) << size;
    }
    ImportResult got;
    EXPECT_FALSE(import_unbundle(bytes + "x", &got));
}

TEST(ImportBundle, SurvivesAnyByteInAnyPlace) {
    const std::string bytes = import_bundle(some_result());
    for (size_t i = 0; i < bytes.size(); ++i) {
        for (const char byte : {'\0', '\x7F', '\xFF'}) {
            std::string changed = bytes;
            changed[i] = byte;
            ImportResult got;
            import_unbundle(changed, &got);
            for (const ImportedFile& file : got.files) { EXPECT_LE(file.content.size(), bytes.size()); }
        }
    }
}

TEST(ImportBundle, HasNoFileInAnotherDirectory) {
    for (const char* name : {"../made.mod", "/etc/made", "a\\b", "c:x", "", "..", ".profile"}) {
        ImportResult result = some_result();
        result.files[0].name = name;
        ImportResult got;
        EXPECT_FALSE(import_unbundle(import_bundle(result), &got)) << name;
    }
}

}  // namespace
}  // namespace pelt
