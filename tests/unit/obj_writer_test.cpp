// The export to Wavefront text, read back by a reader of its own.
#include "formats/obj_writer.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/load_error.h"
#include "support/model_text.h"
#include "support/obj_reader.h"

namespace pelt {
namespace {

using test::ObjFile;
using test::OwnedModel;
using test::TempDir;
using Numbers = std::vector<std::vector<int>>;

class ObjWriter : public testing::Test {
protected:
    OwnedModel read(const std::string& text) {
        OwnedModel model = test::read_model(dir, "model.mod", text);
        EXPECT_NE(model, nullptr) << load_error_get();
        return model;
    }
    static std::string text_of(const OwnedModel& model) { return model_write_obj_text(model.get(), "m.obj"); }
    ObjFile exported(const std::string& text) { return test::read_obj(text_of(read(text))); }

    TempDir dir;
};

TEST_F(ObjWriter, TheHeadNamesTheProgramAndTheFile) {
    const std::string text = text_of(read("points\n1 1 2 3\n"));
    const std::string first = text.substr(0, text.find('\n') + 1);
    EXPECT_EQ(first[0], '#');
    EXPECT_NE(first.find("generated automatically by Sorvel"), std::string::npos);
    EXPECT_EQ(text.substr(first.size()), "#\n# model: m.obj\n#\n#\n# world points\n#\nv 1.000000 3.000000 2.000000\n");
}

TEST_F(ObjWriter, YAndZChangePlaces) {
    const ObjFile file = exported("points\n1 1 2 3\n2 -4 5 -6\n");
    ASSERT_EQ(file.vertices.size(), 2u);
    EXPECT_EQ(file.vertices[0], (std::array<double, 3>{1, 3, 2}));
    EXPECT_EQ(file.vertices[1], (std::array<double, 3>{-4, -6, 5}));
}

TEST_F(ObjWriter, AQuadIsTwoFacesWithTheDiagonalFromCornerOneToTwo) {
    const ObjFile file = exported(
        "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\n4 1 1 0\n"
        "layer a 1 2 3 singlesided\ntriangles\n1 1 2 3 4\n");
    EXPECT_EQ(file.vertices.size(), 4u);
    ASSERT_EQ(file.groups.size(), 1u);
    EXPECT_EQ(file.groups[0].name, "a");
    EXPECT_EQ(file.groups[0].faces, (Numbers{{1, 2, 3}, {3, 2, 4}}));
}

TEST_F(ObjWriter, ALayerWithNothingInItHasNoGroup) {
    const ObjFile file = exported(
        "points\n1 0 0 0\n2 1 0 0\nlayer none 1 2 3 singlesided\n"
        "layer wire 1 2 3 singlesided\nlines\n2 2 1 2\n");
    ASSERT_EQ(file.groups.size(), 1u);
    EXPECT_EQ(file.groups[0].name, "wire");
    EXPECT_EQ(file.groups[0].lines, (Numbers{{2, 1, 2}}));
    EXPECT_TRUE(file.groups[0].faces.empty());
}

TEST_F(ObjWriter, TrianglesAndLinesNameLinesOfTheFileAndPolygonsNameIds) {
    const ObjFile file = exported(
        "points\n10 0 0 0\n20 1 0 0\n30 0 1 0\nlayer a 1 2 3 singlesided\n"
        "triangles\n0 10 20 30\n2 10 20 30\nlines\n2 30 10\n");
    ASSERT_EQ(file.groups.size(), 1u);
    EXPECT_EQ(file.groups[0].faces, (Numbers{{1, 2, 3}, {10, 20, 30}}));
    EXPECT_EQ(file.groups[0].lines, (Numbers{{3, 1}}));
}

TEST_F(ObjWriter, NumbersFollowTheOrderOfTheFileNotThatOfTheIds) {
    const ObjFile file = exported("points\n7 0 0 0\n2 1 0 0\n5 0 1 0\nlayer a 1 2 3 singlesided\ntriangles\n0 2 5 7\n");
    EXPECT_EQ(file.groups[0].faces, (Numbers{{2, 3, 1}}));
}

TEST_F(ObjWriter, ARemovedPointLeavesNoGapInTheNumbers) {
    const OwnedModel model = read(
        "points\n1 0 0 0\n2 1 0 0\n3 2 0 0\n4 3 0 0\n"
        "layer a 1 2 3 singlesided\ntriangles\n0 1 3 4\n");
    model_remove_point(model.get(), 2);
    EXPECT_EQ(test::read_obj(text_of(model)).groups[0].faces, (Numbers{{1, 2, 3}}));
}

TEST_F(ObjWriter, CurvedPrimitivesComeOutFlat) {
    const ObjFile file = exported(
        "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\n4 1 1 0\nlayer a 1 2 3 singlesided\n"
        "triangles\n3 1 2 3\n4 1 2 3 4\n");
    EXPECT_EQ(file.groups[0].faces, (Numbers{{1, 2, 3}, {1, 2, 3}, {3, 2, 4}}));
}

TEST_F(ObjWriter, APointOfAChildIsNumberZero) {
    dir.write("wing.mod", "points\n50 0 0 0\n");
    const OwnedModel model = read(
        "points\n1 0 0 0\n2 1 0 0\nlayer a 1 2 3 singlesided\n"
        "child wing 0 0 0 1 1 1 0 0 0\n");
    const int32_t points[] = {1, 2, 50};
    ASSERT_EQ(model_add_triangle(model.get(), "a", 0, points, nullptr, nullptr, 0), 1);
    const ObjFile file = test::read_obj(text_of(model));
    EXPECT_EQ(file.vertices.size(), 2u) << "child models are not visited";
    EXPECT_EQ(file.groups[0].faces, (Numbers{{1, 2, 0}}));
}

TEST_F(ObjWriter, PositionsAreThoseOfTheRestPose) {
    const OwnedModel model = read("joint a 5 6 7 world 1\npoints\n1 1 2 3\n");
    EXPECT_EQ(test::read_obj(text_of(model)).vertices[0], (std::array<double, 3>{1, 3, 2}));
}

// ---- the operations of the library ----

TEST_F(ObjWriter, AnExtensionIsKeptWithItsDotSoThatThereAreTwo) {
    const OwnedModel model = read("points\n1 1 2 3\n");
    EXPECT_EQ(model_write_obj(model.get(), dir.file("tree.mod").c_str()), 1);
    EXPECT_EQ(test::read_obj(dir.read("tree..obj")).vertices.size(), 1u);
    EXPECT_EQ(model_write_obj(model.get(), dir.file("a_tree").c_str()), 1);
    EXPECT_TRUE(dir.exists("a_tree.obj"));
    EXPECT_EQ(test::read_obj(dir.read("a_tree.obj")).comments[2], "# model: " + dir.file("a_tree.obj"));
}

TEST_F(ObjWriter, NullArgumentsAndAFileThatCannotBeOpenedGiveZero) {
    const OwnedModel model = read("points\n1 1 2 3\n");
    EXPECT_EQ(model_write_obj(nullptr, dir.file("a.mod").c_str()), 0);
    EXPECT_EQ(model_write_obj(model.get(), nullptr), 0);
    EXPECT_EQ(model_write_obj(model.get(), dir.file("no/such/directory/a.mod").c_str()), 0);
    EXPECT_EQ(model_write_obj_text(nullptr, "a"), "");
}

TEST_F(ObjWriter, OnlyFormatOneIsKnown) {
    const OwnedModel model = read("points\n1 1 2 3\n");
    for (const int format : {0, 2, -1}) {
        EXPECT_EQ(model_export(model.get(), format, dir.file("bad.mod").c_str()), 0);
    }
    EXPECT_FALSE(dir.exists("bad..obj"));
    EXPECT_EQ(model_export(model.get(), EXPORT_FORMAT_OBJ, dir.file("good.mod").c_str()), 1);
    EXPECT_TRUE(dir.exists("good..obj"));
}

// Intended: a layer is counted by its name, and one of 32 bytes or more is never found, so that it counts nothing.
TEST_F(ObjWriter, AGroupNameOfThirtyOneBytesIsWholeAndALayerOfALongerNameHasNoGroup) {
    const std::string longest(31, 'n');
    const std::string line = " 1 2 3 singlesided\nlines\n2 1 1\n";
    const OwnedModel model = read("points\n1 0 0 0\nlayer " + longest + line + "layer b" + line + "layer c" + line);
    ASSERT_EQ(model_rename_layer(model.get(), "b", (longest + "nn").c_str()), 1);
    const ObjFile file = test::read_obj(text_of(model));
    ASSERT_EQ(file.groups.size(), 2u);
    EXPECT_EQ(file.groups[0].name, longest);
    EXPECT_EQ(file.groups[1].name, "c");
}

TEST_F(ObjWriter, LongLinesAreNeverCut) {
    std::string ids;
    std::string points = "points\n";
    std::vector<int> polygon, line;
    for (int id = 10001; id <= 10150; ++id) {
        points += std::to_string(id) + " 0 0 0\n";
        ids += " " + std::to_string(id);
        polygon.push_back(id);
        line.push_back(id - 10000);
    }
    const ObjFile file = exported(points + "layer a 1 2 3 singlesided\ntriangles\n2" + ids + "\nlines\n2" + ids + "\n");
    ASSERT_EQ(file.groups.size(), 1u);
    EXPECT_EQ(file.groups[0].faces, (Numbers{polygon})) << "900 bytes in one line";
    EXPECT_EQ(file.groups[0].lines, (Numbers{line}));
}

TEST_F(ObjWriter, EachLineIsALineOfItsOwn) {
    const ObjFile file = exported(
        "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\n"
        "layer a 1 2 3 singlesided\nlines\n2 1 2\n2 2 3\n");
    EXPECT_EQ(file.groups.at(0).lines, (Numbers{{1, 2}, {2, 3}}));
}

TEST_F(ObjWriter, AModelOfNearlyAllPossiblePointsIsExportedWhole) {
    constexpr int SIDE = 180;
    std::string text = "points\n";
    std::string faces = "layer a 1 2 3 singlesided\ntriangles\n";
    for (int y = 0; y < SIDE; ++y) {
        for (int x = 0; x < SIDE; ++x) {
            const int id = y * SIDE + x + 1;
            text += std::to_string(id) + " " + std::to_string(x) + " " + std::to_string(y) + " 0\n";
            if (x > 0 && y > 0) {
                faces += "1 " + std::to_string(id - SIDE - 1) + " " + std::to_string(id - SIDE) + " " +
                         std::to_string(id - 1) + " " + std::to_string(id) + "\n";
            }
        }
    }
    const OwnedModel model = read(text + faces);
    const ObjFile file = test::read_obj(text_of(model));
    EXPECT_EQ(file.vertices.size(), size_t{SIDE} * SIDE);
    EXPECT_EQ(file.groups[0].faces.size(), size_t{2} * (SIDE - 1) * (SIDE - 1));
    EXPECT_EQ(file.groups[0].faces.back(), (std::vector<int>{SIDE * SIDE - 1, SIDE * SIDE - SIDE, SIDE * SIDE}));
}

}  // namespace
}  // namespace pelt
