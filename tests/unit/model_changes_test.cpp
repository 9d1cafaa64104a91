// What became of a model, told as a person would: each kind of change by itself, and together.
#include "formats/model_changes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/load_error.h"
#include "support/model_text.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;
using Lines = std::vector<std::string>;

const std::string HEAD = "joint hip 1 2 3 world 1\njoint knee 4 5 6 hip 1\n";
const std::string POINTS = "points\n1 0 0 0\n2 100 0 0\n3 0 100 50\n4 7 8 9\n5 1 1 1\n";
const std::string NORMALS = "normals\n1 0 0 1\n2 1 0 0\n3 0 1 0\n4 0 0 1\n5 0 0 1\n";
const std::string ROOF = "layer roof 127 0 0 singlesided\ntriangles\n0 1 2 3\n0 2 3 4\n";
const std::string WALL = "layer wall 1 2 3 doublesided\nlines\n2 1 2\n";
const std::string CHILD = "child wing 1 2 3 1 1 1 0 0 90\n";

// The same text with one part of it, which must be there once, in other words.
std::string with(std::string text, const std::string& part, const std::string& other) {
    const size_t place = text.find(part);
    EXPECT_NE(place, std::string::npos) << part;
    return place != std::string::npos ? text.replace(place, part.size(), other) : text;
}

class ModelChanges : public testing::Test {
protected:
    ModelChanges() {
        for (const char* name : {"a.tga", "b.tga"}) { dir.write(name, test::solid_tga(2, 2, 1, 2, 3)); }
        for (const char* name : {"wing.mod", "tail.mod"}) { dir.write(name, ""); }
    }
    OwnedModel read(const std::string& text) {
        OwnedModel model = test::read_model(dir, "model.mod", text);
        EXPECT_NE(model, nullptr) << load_error_get();
        return model;
    }
    Lines changes(const std::string& from, const std::string& to) {
        Lines lines;
        for (const ModelChange& change : model_changes(read(from).get(), read(to).get())) {
            lines.push_back(model_change_text(change));
        }
        return lines;
    }
    Lines after(const std::string& part, const std::string& other) { return changes(TEXT, with(TEXT, part, other)); }

    const std::string TEXT = HEAD + POINTS + NORMALS + ROOF + WALL + CHILD;
    test::TempDir dir;
};

TEST_F(ModelChanges, AModelAndItselfHaveNone) {
    EXPECT_EQ(changes(TEXT, TEXT), Lines{});
    EXPECT_EQ(changes(TEXT, "# a remark\n" + TEXT + "\n"), Lines{});
    EXPECT_TRUE(model_changes(nullptr, nullptr).empty());
}

TEST_F(ModelChanges, MovedPointsAreToldByTheirLayersWithTheLongestWay) {
    // By 3 and by 12: the second is the longest. Points 1 and 2 are the ends of the wall's line too.
    const std::string moved = with(with(TEXT, "2 100 0 0", "2 103 0 0"), "4 7 8 9", "4 7 8 21");
    EXPECT_EQ(changes(TEXT, moved),
              (Lines{"layer roof: 2 points moved by up to 12", "layer wall: 1 point moved by 3"}));
    // Three sides of a box of 2, 3 and 6 have the diagonal 7.
    EXPECT_EQ(after("3 0 100 50", "3 2 103 56"), Lines{"layer roof: 1 point moved by 7"});
    EXPECT_EQ(after("5 1 1 1", "5 1 1 3"), Lines{"points: 1 unused point moved by 2"});
}

TEST_F(ModelChanges, FacesAndColoursOfALayer) {
    const std::string other = with(with(TEXT, "127 0 0", "100 0 0"), "0 2 3 4\n", "0 1 2 4\n1 1 2 3 4\n0 2 3 4\n");
    EXPECT_EQ(changes(TEXT, other), Lines{"layer roof: 2 faces added, colour 127 0 0 to 100 0 0"});
    EXPECT_EQ(changes(other, TEXT), Lines{"layer roof: 2 faces removed, colour 100 0 0 to 127 0 0"});
    EXPECT_EQ(after("0 1 2 3\n0 2 3 4\n", "0 2 3 4\n0 1 2 3\n"), Lines{"layer roof: faces in another order"});
    EXPECT_EQ(after("0 1 2 3\n", "0 1 2 3 3 2 1\n"), Lines{"layer roof: 1 face changed"});
    EXPECT_EQ(after("0 1 2 3\n", "3 1 2 3\n"), Lines{"layer roof: 1 face changed"});
    EXPECT_EQ(after("0 1 2 3\n", "0 1 2 5\n"), Lines{"layer roof: 1 face added, 1 face removed"});
    EXPECT_EQ(after("2 1 2\n", "2 1 2 3\n2 4 5\n"), Lines{"layer wall: 2 lines added, 1 line removed"});
}

TEST_F(ModelChanges, SettingsOfALayer) {
    EXPECT_EQ(after("singlesided", "doublesided mirror y"), Lines{"layer roof: sides 1 to 2, mirror none to y"});
    EXPECT_EQ(after("singlesided\n", "singlesided\ntransparency 0.5\ninvisible 1 0 0\n"),
              Lines{"layer roof: transparency 0 to 0.5, colour key none to 255 0 0"});
}

TEST_F(ModelChanges, ImagesOfALayer) {
    const std::string with_image = with(TEXT, "0 2 3 4\n", "0 2 3 4\nimage a.tga x -z\nreflect a.tga 0.25\n");
    EXPECT_EQ(changes(TEXT, with_image), Lines{"layer roof: image none to a.tga, reflection map none to a.tga"});
    EXPECT_EQ(changes(with_image, with(with_image, "image a.tga x -z", "image b.tga x y repeat 2 3")),
              Lines{"layer roof: image a.tga to b.tga, axes x -z to x y, repeat none to 2 3"});
    EXPECT_EQ(changes(with_image, with(with_image, "0.25", "0.5")), Lines{"layer roof: reflection 0.25 to 0.5"});
    EXPECT_EQ(changes(with_image, with(with_image, "0 2 3 4\n", "0 2 3 4\nuvees\n1 0 0\n2 1 1\n")),
              Lines{"layer roof: 2 texture coordinates added"});
}

TEST_F(ModelChanges, LayersComeGoAndGetOtherNames) {
    EXPECT_EQ(after(WALL, ""), Lines{"layer wall: removed, 1 line removed"});
    EXPECT_EQ(after(WALL, WALL + "layer door 1 1 1 singlesided\ntriangles\n0 1 2 4\n"),
              Lines{"layer door: added, 1 face added"});
    EXPECT_EQ(after("layer roof 127 0 0", "layer dach 127 0 9"),
              Lines{"layer dach: name roof to dach, colour 127 0 0 to 127 0 9"});
    EXPECT_EQ(after(ROOF + WALL, WALL + ROOF), Lines{"model: layers in another order"});
}

TEST_F(ModelChanges, PointsComeAndGoAndAreChanged) {
    EXPECT_EQ(changes(TEXT, with(with(TEXT, "5 1 1 1\n", "6 1 1 1\n7 1 1 1\n"), "5 0 0 1\n", "6 0 0 1\n7 0 0 1\n")),
              Lines{"points: 2 points added, 1 point removed"});
    EXPECT_EQ(after("2 1 0 0\n3 0 1 0\n", "2 0 1 0\n3 1 0 0\n"), Lines{"points: 2 normals changed"});
    EXPECT_EQ(after("1 0 0 0\n", "1 0 0 0 0.5\n"), Lines{"points: 1 binding changed"});
    const Lines coloured = changes(TEXT + "gouraud\n1 1 2 3 4\n", TEXT + "gouraud\n1 1 2 3 5\n");
    EXPECT_EQ(coloured, Lines{"points: 1 colour changed"});
}

TEST_F(ModelChanges, JointsAndChildren) {
    EXPECT_EQ(after("knee 4 5 6", "knee 4 5 8"), Lines{"joint knee: moved by 2"});
    // The point of the knee hung on the hip too.
    EXPECT_EQ(after("knee 4 5 6 hip", "knee 4 5 6 world"),
              (Lines{"joint knee: parent hip to world", "points: 1 binding changed"}));
    EXPECT_EQ(after("child wing 1 2 3 1 1 1 0 0 90", "child wing 1 2 5 1 2 1 0 0 45"),
              Lines{"child wing: moved by 2, scale 1 1 1 to 1 2 1, rotation 0 0 90 to 0 0 45"});
    EXPECT_EQ(after(CHILD, "child tail 1 2 3 1 1 1 0 0 90\n"), (Lines{"child wing: removed", "child tail: added"}));
    EXPECT_EQ(after(CHILD, CHILD + CHILD), Lines{"child wing: added"});
}

TEST_F(ModelChanges, AWholeModelComesAndGoes) {
    const OwnedModel model = read("points\n1 0 0 0\n2 1 0 0\n3 0 1 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n");
    Lines lines;
    for (const ModelChange& change : model_changes(nullptr, model.get())) {
        lines.push_back(model_change_text(change));
    }
    EXPECT_EQ(lines, (Lines{"points: 3 points added", "layer a: added, 1 face added"}));
}

// A difference that has no word of its own is told all the same.
TEST_F(ModelChanges, NoDifferenceIsKeptQuiet) {
    const OwnedModel from = read(TEXT);
    const OwnedModel to = read(TEXT);
    model_find_joint(to.get(), "hip")->point_count = 7;
    const std::vector<ModelChange> changes = model_changes(from.get(), to.get());
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(model_change_text(changes[0]), "model: joint hip: points 1 and 7");
}

}  // namespace
}  // namespace pelt
