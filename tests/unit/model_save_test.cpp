// A model that was changed is saved into the text that it was read from: what a diff of the two files shows is what was
// done, and nothing else.
#include "formats/model_save.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "formats/layer_image.h"
#include "formats/model_compare.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "support/model_text.h"
#include "support/random_model_text.h"
#include "support/text_diff.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;
using test::TempDir;
using test::text_diff;

constexpr const char* HOUSE =
    "# a house by Ann\n"
    "points\n"
    "# the floor\n"
    "  1     0     0     0\n"
    "  2   100     0     0\n"
    "  3     0   100     0\n"
    "  4   100   100     0   0.5\n"
    "\n"
    "normals\n"
    "  1    0.0  0.0 -1.0\n"
    "  2  90 0\n"
    "gouraud\n"
    "  1   255 220  60  0\n"
    "\n"
    "layer   floor   127 127 127   singlesided   # not a remark\n"
    "layer walls 10 20 30 doublesided\n"
    "transparency 0.25\n"
    "triangles\n"
    "0   1   2   3   #hall\n"
    "1 1 2 3 4\n"
    "\tuvees\n"
    "uvees\n"
    "1   0.5   0.5\n"
    "image a.tga x y\n"
    "lines\n"
    "2 1 2 4\n"
    "3 1 2\n"
    "layer roof 1 2 3 doublesided mirror x\n"
    "triangles\n"
    "0 1 2 4\n"
    "child wing 1 2 3 1 1 1 0 z30 0\n";

class ModelSaveTest : public testing::Test {
protected:
    ModelSaveTest() {
        for (const char* name : {"a.tga", "b.tga"}) { dir.write(name, test::solid_tga(2, 2, 1, 2, 3)); }
        dir.write("wing.mod", "");
    }
    Model* load(const std::string& lines) {
        text = lines;
        model = test::read_model(dir, "model.mod", text);
        EXPECT_NE(model, nullptr) << load_error_get() << "\n" << text;
        return model.get();
    }
    // The file of it, read again, is the model.
    std::string saved() {
        const ModelSave save = model_save(model.get(), text);
        EXPECT_EQ(save.refused, "");
        const OwnedModel again = test::read_model(dir, "again.mod", save.text);
        EXPECT_NE(again, nullptr) << load_error_get() << "\n" << save.text;
        if (again != nullptr) { EXPECT_EQ(model_difference(model.get(), again.get(), false), "") << save.text; }
        return save.text;
    }
    std::string diff() { return text_diff(text, saved()); }
    std::string refusal(bool by_layout) {
        const ModelSave save = model_save(model.get(), text);
        EXPECT_EQ(save.text, "");
        EXPECT_EQ(save.by_layout, by_layout) << save.refused;
        return save.refused;
    }
    Point* point(int32_t id) { return list_find<Point>(&model->points, id); }
    Layer* layer(const char* name) { return list_find<Layer>(&model->layers, name); }
    void add_triangle(const char* name, std::vector<int32_t> ids) {
        ids.resize(4);
        ASSERT_TRUE(model_add_triangle(model.get(), name, ids[3] != 0, ids.data(), nullptr, nullptr, 0))
            << load_error_get();
    }
    void delete_triangle(const char* name, int rank) {
        KeyedList* list = &layer(name)->triangles;
        int32_t slot = list_next_slot(list, 0);
        for (; rank > 0; --rank) { slot = list_next_slot(list, slot + 1); }
        list_remove_slot(list, slot);
    }

    TempDir dir;
    OwnedModel model;
    std::string text;
};

// ---- what was not changed ----

TEST_F(ModelSaveTest, NothingChangedIsTheSameText) {
    load(HOUSE);
    EXPECT_EQ(saved(), text);
}

TEST_F(ModelSaveTest, BytesOfEveryKindStay) {
    load(std::string("\xEF\xBB\xBF") + "#\xE4 \xFF\x01\r\npoints \x80 \r\n\t1\t0  0 0\r\n\r\n;end" +
         std::string(1, '\0') + "x\n" + std::string(3000, 'y') + "\n2 0 0 0");
    point(2)->position.x = 7;
    EXPECT_EQ(diff(), "-2 0 0 0<no end>\n+2 7 0 0<no end>\n");
}

TEST_F(ModelSaveTest, UndoneIsTheFirstBytesAgain) {
    load(HOUSE);
    model_set_layer_colour(model.get(), "walls", 1, 2, 3);
    EXPECT_NE(saved(), text);
    model_set_layer_colour(model.get(), "walls", 10, 20, 30);
    EXPECT_EQ(saved(), text);
}

// ---- points ----

TEST_F(ModelSaveTest, AMovedPointChangesItsTokensAndKeepsTheColumns) {
    load(HOUSE);
    point(2)->position = {5, 0, -100};
    point(4)->position = {100, 12345, 1000};
    EXPECT_EQ(diff(),
              "-  2   100     0     0\n"
              "+  2     5     0  -100\n"
              "-  4   100   100     0   0.5\n"
              "+  4   100 12345  1000   0.5\n");
}

TEST_F(ModelSaveTest, TabsAndQuotesStay) {
    load("points\n1\t0\t0\t0\tx\nlayer \"a\"10  20\t30 singlesided\n");
    point(1)->position = {1000, 0, -1};
    model_rename_layer(model.get(), "a", "roof");
    model_set_layer_colour(model.get(), "roof", 1, 2000, 30);
    EXPECT_EQ(diff(),
              "-1<09>0<09>0<09>0<09>x\n-layer \"a\"10  20<09>30 singlesided\n"
              "+1<09>1000<09>0<09>-1<09>x\n+layer \"roof\"1 2000<09>30 singlesided\n");
}

TEST_F(ModelSaveTest, SingleBlanksLeaveNoRoom) {
    load("points\n1 0 0 0\n2 100 5 0 0.5\n");
    point(1)->position = {100, 0, 0};
    point(2)->position = {1, 5, 7};
    EXPECT_EQ(diff(), "-1 0 0 0\n-2 100 5 0 0.5\n+1 100 0 0\n+2 1   5 7 0.5\n");
}

TEST_F(ModelSaveTest, AWeightIsChangedOrPutBehind) {
    load(HOUSE);
    point(1)->weight = 0.25f;
    point(4)->weight = 1.0f;
    EXPECT_EQ(diff(),
              "-  1     0     0     0\n"
              "+  1     0     0     0 0.25\n"
              "-  4   100   100     0   0.5\n"
              "+  4   100   100     0     1\n");
}

TEST_F(ModelSaveTest, ARemarkBehindAPointStaysWhatItIs) {
    load("points\n1 0 0 0 # top\n2 0 0 0 1 # top of it\n3 0 0 0 1 #\n");
    for (const int32_t id : {1, 2, 3}) { point(id)->position.x = 9; }
    point(1)->weight = 0.5f;
    EXPECT_EQ(diff(),
              "-1 0 0 0 # top\n-2 0 0 0 1 # top of it\n-3 0 0 0 1 #\n"
              "+1 9 0 0 0.5 # top\n+2 9 0 0 1 # top of it\n+3 9 0 0 1 #\n");
}

TEST_F(ModelSaveTest, OfAPointGivenTwiceTheLastLineChanges) {
    load("points\n1 0 0 0\n2 0 0 0\n1 5 5 5\nnormals\n1 0 0 1\n1 0 1 0\ngouraud\n1 1 1 1 1\n1 2 2 2 2\n");
    point(1)->position.y = 6;
    model_set_normal(model.get(), 1, 1, 0, 0);
    model_set_gouraud(model.get(), 1, 2, 3, 2, 2);
    EXPECT_EQ(diff(), "-1 5 5 5\n+1 5 6 5\n-1 0 1 0\n+1 1 0 0\n-1 2 2 2 2\n+1 2 3 2 2\n");
}

TEST_F(ModelSaveTest, APointKnownByItsNormalAloneGetsALineWithWeightZero) {
    load("points\n1 0 0 0\nnormals\n7 0 0 1\n");
    point(7)->position = {1, 2, 3};
    EXPECT_EQ(diff(), "+7         1     2     3   0\n");
}

TEST_F(ModelSaveTest, ANormalChangesInTheFormItHas) {
    load(HOUSE);
    model_set_normal(model.get(), 1, 0, 1, 0);
    model_set_normal(model.get(), 2, 0, 0, 1);
    model_set_normal(model.get(), 3, 0, -1, 0);
    EXPECT_EQ(diff(),
              "-  1    0.0  0.0 -1.0\n"
              "-  2  90 0\n"
              "+  1    0.0    1 0\n"
              "+  2   0 0 1\n"
              "+3          0     -1      0\n");
}

TEST_F(ModelSaveTest, AColourComesIntoASectionOfItsOwn) {
    load("points\n1 0 0 0\n2 0 0 0\nlayer a 1 2 3 x\n");
    model_set_gouraud(model.get(), 2, 1, 2, 3, 4);
    EXPECT_EQ(diff(), "+gouraud\n+2     1   2   3    4  \n");
}

TEST_F(ModelSaveTest, WorldPointsNameTheirJoints) {
    load(
        "joint hip 0 0 0 world 0\njoint knee 0 0 0 hip 0\npoints\n1 0 0 0\n2 0 0 0 0.5 hip knee and more\n3 0 0 0 1 "
        "#\n");
    model_set_point_joints(model.get(), 1, "knee", "world");
    model_set_point_joints(model.get(), 2, "knee", "hip");
    model_set_point_joints(model.get(), 3, "hip", "knee");
    EXPECT_EQ(diff(),
              "-1 0 0 0\n-2 0 0 0 0.5 hip knee and more\n-3 0 0 0 1 #\n"
              "+1 0 0 0 1 knee world\n+2 0 0 0 0.5 knee hip and more\n+3 0 0 0 1 hip knee #\n");
}

// ---- layers ----

TEST_F(ModelSaveTest, SettingsChangeTheLayerLine) {
    load(HOUSE);
    model_set_layer_colour(model.get(), "floor", 5, 127, 1270);
    model_set_layer_sides(model.get(), "floor", 2);
    model_set_layer_sides(model.get(), "roof", 1);
    model_set_layer_mirror(model.get(), "roof", AXIS_Z);
    model_set_layer_mirror(model.get(), "walls", AXIS_Y);
    EXPECT_EQ(diff(),
              "-layer   floor   127 127 127   singlesided   # not a remark\n"
              "-layer walls 10 20 30 doublesided\n"
              "+layer   floor     5 127 1270  doublesided   # not a remark\n"
              "+layer walls 10 20 30 doublesided mirror y\n"
              "-layer roof 1 2 3 doublesided mirror x\n"
              "+layer roof 1 2 3 singlesided mirror z\n");
}

TEST_F(ModelSaveTest, AMirrorGoesWithItsWords) {
    load(HOUSE);
    model_set_layer_mirror(model.get(), "roof", 0);
    EXPECT_EQ(diff(), "-layer roof 1 2 3 doublesided mirror x\n+layer roof 1 2 3 doublesided\n");
}

TEST_F(ModelSaveTest, AMirrorHasNoRoomBesideARemark) {
    load(HOUSE);
    model_set_layer_mirror(model.get(), "floor", AXIS_X);
    EXPECT_EQ(refusal(true), "layer floor: a remark stands where its mirror would have to");
}

TEST_F(ModelSaveTest, ARenamedLayerKeepsItsLines) {
    load(HOUSE);
    model_rename_layer(model.get(), "walls", "outer walls");
    EXPECT_EQ(diff(), "-layer walls 10 20 30 doublesided\n+layer \"outer walls\" 10 20 30 doublesided\n");
}

TEST_F(ModelSaveTest, StatementsChangeOrCome) {
    load(HOUSE);
    model_set_layer_transparency(model.get(), "walls", 0.0f);
    model_set_layer_transparency(model.get(), "roof", 0.1f);
    model_set_invisible(model.get(), "roof", 0.5f, 0, 1);
    EXPECT_EQ(diff(),
              "-transparency 0.25\n"
              "+transparency 0\n"
              "+transparency 0.1\n"
              "+invisible 0.5 0.0 1.0\n");
}

TEST_F(ModelSaveTest, ATransparencyOutsideItsRangeIsRefusedByName) {
    load(HOUSE);
    model_set_layer_transparency(model.get(), "walls", 2.0f);
    EXPECT_EQ(refusal(false), "layer walls: a transparency outside 0 to 1");
}

TEST_F(ModelSaveTest, ImagesChangeAndGoAndCome) {
    load(HOUSE);
    model_add_image(model.get(), "walls", IMAGE_SLOT_BASE, "b.tga", AXIS_X, AXIS_MINUS_Z);
    model_set_image_repeat(model.get(), "walls", 1, 2, -0.5f);
    model_add_image(model.get(), "walls", IMAGE_SLOT_REFLECTION, "a.tga", 0, 0);
    model_set_reflection(model.get(), "walls", 0.5f);
    model_add_image(model.get(), "roof", IMAGE_SLOT_BASE, "a.tga", AXIS_Y, AXIS_Z);
    EXPECT_EQ(diff(),
              "-image a.tga x y\n"
              "+image b.tga x -z repeat 2 -0.5\n"
              "+reflect  a.tga  0.5\n"
              "+image  a.tga  y z\n");
}

TEST_F(ModelSaveTest, RepeatFactorsGo) {
    load("points\n1 0 0 0\nlayer a 1 2 3 x\ntriangles\n0 1 1 1\nimage a.tga x y repeat 2 3\n");
    model_set_image_repeat(model.get(), "a", 0, 0, 0);
    EXPECT_EQ(diff(), "-image a.tga x y repeat 2 3\n+image a.tga x y\n");
}

TEST_F(ModelSaveTest, TextureCoordinatesChangeComeAndGo) {
    load(HOUSE);
    model_add_uvee(model.get(), "walls", 1, 0.5f, 0.25f);
    model_add_uvee(model.get(), "walls", 2, 0.125f, 1);
    model_add_uvee(model.get(), "roof", 1, 1, 1);
    EXPECT_EQ(diff(),
              "-1   0.5   0.5\n"
              "+1   0.5  0.25\n"
              "+2  0.125  1\n"
              "+uvees\n"
              "+1  1  1\n");
    list_remove(&layer("walls")->uvees, 1);
    list_remove(&layer("walls")->uvees, 2);
    list_remove(&layer("roof")->uvees, 1);
    EXPECT_EQ(diff(), "-1   0.5   0.5\n");
}

TEST_F(ModelSaveTest, UveesComeBeforeTheImageOfTheirLayer) {
    load("points\n1 0 0 0\nlayer a 1 2 3 x\ntriangles\n0 1 1 1\n# the skin\nimage a.tga x y\n");
    model_add_uvee(model.get(), "a", 1, 1, 0);
    const std::string text_now = saved();
    EXPECT_EQ(text_diff(text, text_now), "+uvees\n+1  1  0\n");
    EXPECT_LT(text_now.find("uvees"), text_now.find("image"));
}

// ---- primitives ----

TEST_F(ModelSaveTest, APrimitiveChangesItsTokens) {
    load(HOUSE);
    Triangle* first = list_at<Triangle>(&layer("walls")->triangles, 0, 0);
    std::swap(first->points[1], first->points[2]);
    std::swap(first->normals[1], first->normals[2]);
    EXPECT_EQ(diff(), "-0   1   2   3   #hall\n+0   1   3   2   #hall\n");
}

TEST_F(ModelSaveTest, NormalsOfItsOwnComeBeforeARemark) {
    load("points\n1 0 0 0\n2 0 0 0\n3 0 0 0\nlayer a 1 2 3 x\ntriangles\n0 1 2 3 #\n0 1 2 3 1 2 3 # a b\n3 1 2 3\n");
    for (Triangle& triangle : list_elements<Triangle>(layer("a")->triangles)) { triangle.normals[2] = 1; }
    EXPECT_EQ(diff(),
              "-0 1 2 3 #\n-0 1 2 3 1 2 3 # a b\n-3 1 2 3\n"
              "+0 1 2 3 1 2 1 #\n+0 1 2 3 1 2 1 # a b\n+3 1 2 3 3 1 2 1\n");
}

TEST_F(ModelSaveTest, AStripGrowsAndShrinks) {
    load("points\n1 0 0 0\n2 0 0 0\n3 0 0 0\nlayer a 1 2 3 x\nlines\n2 1 2\n2 1 2 3\n");
    Line* shorter = list_at<Line>(&layer("a")->lines, 0, 0);
    *list_add<int32_t>(&shorter->vertices, 3) = 3;
    ++shorter->vertex_count;
    EXPECT_EQ(diff(), "-2 1 2\n+2 1 2 3\n");
}

TEST_F(ModelSaveTest, ADeletedPrimitiveGoesAlone) {
    load(HOUSE);
    delete_triangle("walls", 0);
    EXPECT_EQ(diff(), "-0   1   2   3   #hall\n");
}

TEST_F(ModelSaveTest, ANewPrimitiveJoinsTheLastSectionBeforeTheImage) {
    load(HOUSE);
    add_triangle("walls", {4, 3, 2});
    const int32_t strip[] = {1, 2, 3, 4};
    model_add_polygon(model.get(), "walls", 4, strip, nullptr);
    model_add_line(model.get(), "walls", 2, strip);
    model_add_line(model.get(), "roof", 3, strip);
    EXPECT_EQ(diff(), "+0     4    3    2\n+2 1 2 3 4\n+2 1 2\n+lines\n+2 1 2 3\n");
}

TEST_F(ModelSaveTest, WhatOrderForbidsIsRefusedByName) {
    load(
        "points\n1 0 0 0\nlayer a 1 2 3 x\ntriangles\n0 1 1 1\nimage a.tga x y\npoints\n2 0 0 0\n"
        "layer b 1 2 3 x\ntriangles\n0 2 2 2\npoints\n3 0 0 0\n");
    add_triangle("a", {1, 2, 2});
    EXPECT_EQ(refusal(true), "layer a: points that it would name stand behind its image");
    delete_triangle("a", 1);
    list_at<Triangle>(&layer("b")->triangles, 0, 0)->points[0] = 3;
    EXPECT_EQ(refusal(true), "layer b: a point that it would name stands behind the line that names it");
}

TEST_F(ModelSaveTest, APrimitiveStandsBehindItsPoints) {
    load("layer a 1 2 3 x\npoints\n1 0 0 0\n2 0 0 0\n# and more\ngouraud\n1 1 2 3 4\n");
    add_triangle("a", {1, 2, 2});
    const std::string now = saved();
    EXPECT_EQ(text_diff(text, now), "+triangles\n+0     1    2    2\n");
    EXPECT_LT(now.find("2 0 0 0"), now.find("triangles"));
}

TEST_F(ModelSaveTest, WhatALineNoLongerSaysGoes) {
    load("points\n1 0 0 0\n2 0 0 0\n3 0 0 0\nlayer a 1 2 3 x\ntriangles\n3 1 2 3 3 1 2 3 1 2 2 3 3 1  # x\n2 1 2 3\n");
    list_at<Triangle>(&layer("a")->triangles, 0, 0)->curve_type = 0;
    EXPECT_EQ(diff(), "-3 1 2 3 3 1 2 3 1 2 2 3 3 1  # x\n+0 1 2 3 1 2 3                # x\n");
}

// ---- deleting ----

TEST_F(ModelSaveTest, ADeletedPointTakesItsLinesAndItsCountAlong) {
    load(
        "joint hip 0 0 0 world    3\njoint knee 0 0 0 hip 1\nblend hip knee 1\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\n"
        "4 0 0 0\n5 0 0 0\n6 0 0 0\nnormals\n2 0 0 1\n5 0 0 1\n6 0 0 1\ngouraud\n2 1 1 1 1\n6 1 1 1 1\n");
    model_remove_point(model.get(), 2);
    model_remove_point(model.get(), 5);
    EXPECT_EQ(
        diff(),
        "-joint hip 0 0 0 world    3\n+joint hip 0 0 0 world    2\n-blend hip knee 1\n-2 0 0 0\n-5 0 0 0\n-2 0 0 1\n"
        "-5 0 0 1\n-2 1 1 1 1\n");
}

TEST_F(ModelSaveTest, ADeletedLayerLeavesWhatIsNoneOfIt) {
    load(
        "layer a 1 2 3 x\ntransparency 0.5\n# points, for all\npoints\n1 0 0 0\ntriangles\n0 1 1 1\nimage a.tga x y\n"
        "joint hip 0 0 0 world 0\nlines\n2 1 1\nnormals\n1 0 0 1\ngouraud\n1 1 2 3 4\nuvees\n1 0 0\n"
        "child wing 0 0 0 1 1 1 0 0 0\nlines\n7 stays nowhere\nlayer b 1 2 3 x\ntriangles\n0 1 1 1\n");
    model_delete_layer(model.get(), "a");
    EXPECT_EQ(diff(),
              "-layer a 1 2 3 x\n-transparency 0.5\n-triangles\n-0 1 1 1\n-image a.tga x y\n-lines\n-2 1 1\n-uvees\n"
              "-1 0 0\n-lines\n-7 stays nowhere\n");
}

TEST_F(ModelSaveTest, ADeletedChildGoesWithItsLine) {
    load(HOUSE);
    ChildLink* link = list_at<ChildLink>(&model->children, 0, 0);
    model_release(link->model);
    list_remove_slot(&model->children, 0);
    EXPECT_EQ(diff(), "-child wing 1 2 3 1 1 1 0 z30 0\n");
}

TEST_F(ModelSaveTest, TheLastNormalLeavesAnotherToSayThatThereAreSome) {
    load("points\n1 0 0 0\n2 0 0 0\nnormals\n2 0 1 0\n");
    model_remove_point(model.get(), 2);
    EXPECT_EQ(diff(), "-2 0 0 0\n-2 0 1 0\n+1          0      0      1\n");
}

TEST_F(ModelSaveTest, AnImageThatNothingIsLeftForIsRefused) {
    load("points\n1 0 0 0\nlayer a 1 2 3 x\ntriangles\n0 1 1 1\nimage a.tga x y\n");
    delete_triangle("a", 0);
    EXPECT_NE(refusal(true), "");
}

// ---- adding ----

TEST_F(ModelSaveTest, ANewPointFollowsTheLastOfItsJoint) {
    load(
        "joint hip 0 0 0 world 2\njoint knee 0 0 0 hip 0\njoint foot 0 0 0 knee 1\npoints\n1 0 0 0\n2 0 0 0\n"
        "# the foot\n3 0 0 0\n# the world\n4 0 0 0\n# the end\n");
    const auto put = [&](int32_t id, const char* a, const char* b) {
        model_set_point(model.get(), id, id, 0, 0, 1.0f);
        model_set_point_joints(model.get(), id, a, b);
    };
    put(5, "hip", "world");
    put(6, "knee", "hip");
    put(7, "foot", "knee");
    put(8, "world", "world");
    put(9, "foot", "hip");
    const std::string now = saved();
    EXPECT_EQ(now,
              "joint hip 0 0 0 world 3\njoint knee 0 0 0 hip 1\njoint foot 0 0 0 knee 2\npoints\n1 0 0 0\n2 0 0 0\n"
              "5         5     0     0\n6         6     0     0\n"
              "# the foot\n3 0 0 0\n7         7     0     0\n# the world\n4 0 0 0\n8         8     0     0\n"
              "9         9     0     0   1  foot hip\n# the end\n");
}

TEST_F(ModelSaveTest, APointThatChangesItsJointMovesBehindTheOthers) {
    load("joint hip 0 0 0 world 2\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\nnormals\n1 0 1 0\n");
    model_set_point_joints(model.get(), 1, "world", "world");
    EXPECT_EQ(diff(), "-joint hip 0 0 0 world 2\n+joint hip 0 0 0 world 1\n-1 0 0 0\n+1         0     0     0\n");
}

TEST_F(ModelSaveTest, ACountBeyondThePointsIsSettledWhenPointsComeBehind) {
    load("joint hip 0 0 0 world 9\npoints\n1 0 0 0\n");
    model_set_gouraud(model.get(), 1, 1, 2, 3, 4);
    EXPECT_EQ(diff(), "+gouraud\n+1     1   2   3    4  \n");
    model_set_point(model.get(), 2, 0, 0, 0, 1.0f);
    EXPECT_EQ(diff(),
              "-joint hip 0 0 0 world 9\n+joint hip 0 0 0 world 1\n+2         0     0     0\n+gouraud\n"
              "+1     1   2   3    4  \n");
}

TEST_F(ModelSaveTest, JointsComeChangeAndGo) {
    load("# bones\njoint hip   0 0 0 world 1\njoint knee  0 0 0 hip   1\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\n");
    model_find_joint(model.get(), "hip")->position = {1, 2, 3};
    model_add_joint(model.get(), "foot", 4, 5, 6, "knee", 0);
    model_set_point(model.get(), 4, 0, 0, 0, 1.0f);
    model_set_point_joints(model.get(), 4, "foot", "knee");
    model_add_blend(model.get(), "foot", "hip", 1);
    model_set_point(model.get(), 5, 0, 0, 0, 0.5f);
    model_set_point_joints(model.get(), 5, "foot", "hip");
    EXPECT_EQ(diff(),
              "-joint hip   0 0 0 world 1\n+joint hip   1 2 3 world 1\n"
              "+joint  foot          4     5     6  knee       1\n+blend  foot     hip        1\n"
              "+4         0     0     0\n+5         0     0     0   0.5\n");
}

TEST_F(ModelSaveTest, NewLayersComeWhole) {
    load(HOUSE);
    model_add_layer(model.get(), "door", 1, 2, 3, 0, 0, 1);
    model_set_point(model.get(), 9, 1, 1, 1, 1.0f);
    add_triangle("door", {1, 2, 9});
    model_set_layer_transparency(model.get(), "door", 0.5f);
    EXPECT_EQ(diff(),
              "+9         1     1     1\n+\n+layer door 1 2 3 doublesided\n+transparency 0.5\n+triangles\n"
              "+0     1    2    9\n");
}

TEST_F(ModelSaveTest, ANewLayerStandsBehindItsPoints) {
    load("layer a 1 2 3 x\npoints\n1 0 0 0\n2 0 0 0\n");
    model_add_layer(model.get(), "b", 1, 2, 3, 0, 0, 1);
    add_triangle("b", {1, 2, 2});
    const std::string now = saved();
    EXPECT_LT(now.find("2 0 0 0"), now.find("layer b"));
}

TEST_F(ModelSaveTest, NewChildrenFollowTheOthers) {
    load(std::string(HOUSE) + "# end");
    model_add_child(model.get(), nullptr, "wing", 1.5f, 0, 0, 1, 1, 2, "0", "0", "z-5.25");
    list_at<ChildLink>(&model->children, 0, 0)->position.x = 22;
    EXPECT_EQ(diff(),
              "-child wing 1 2 3 1 1 1 0 z30 0\n+child wing 22 2 3 1 1 1 0 z30 0\n"
              "+child  wing        1.5     0     0      1     1     2      0     0 z-5.25\n");
}

TEST_F(ModelSaveTest, AnEmptyFileTakesEverything) {
    for (const char* start : {"", "# nothing yet", "# nothing yet\r\n"}) {
        load(start);
        model_add_joint(model.get(), "hip", 0, 0, 0, "world", 0);
        model_set_point(model.get(), 1, 0, 0, 0, 1.0f);
        model_set_point(model.get(), 2, 0, 0, 0, 1.0f);
        model_set_point_joints(model.get(), 2, "hip", "world");
        model_set_normal(model.get(), 2, 0, 1, 0);
        model_set_gouraud(model.get(), 1, 1, 2, 3, 4);
        model_add_layer(model.get(), "a", 1, 2, 3, 0, 0, 1);
        add_triangle("a", {1, 2, 2});
        model_add_image(model.get(), "a", IMAGE_SLOT_BASE, "a.tga", AXIS_X, AXIS_Y);
        model_add_child(model.get(), nullptr, "wing", 0, 0, 0, 1, 1, 1, "0", "0", "0");
        saved();
    }
}

TEST_F(ModelSaveTest, LineEndsAreThoseOfTheFile) {
    load("points\r\n1 0 0 0\r\nlayer a 1 2 3 x\r\ntriangles\r\n0 1 1 1");
    add_triangle("a", {1, 1, 1});
    model_set_point(model.get(), 2, 0, 0, 0, 1.0f);
    EXPECT_EQ(diff(), "+2         0     0     0<0D>\n-0 1 1 1<no end>\n+0 1 1 1<0D>\n+0     1    1    1<no end>\n");
}

// ---- what the format cannot hold ----

TEST_F(ModelSaveTest, PlacesBetweenWholeNumbersAreRefusedByName) {
    load(HOUSE);
    point(3)->position.x = 1.5f;
    EXPECT_EQ(refusal(false), "point 3: its place lies between whole numbers, or beyond them: 1.500");
}

TEST_F(ModelSaveTest, IdsAbove32767AreRefusedOnlyWhereTheyAreNew) {
    load("points\n1 0 0 0\n40000 0 0 0\nlayer a 1 2 3 x\ntriangles\n0 1 1 40000\n");
    point(40000)->position.x = 1;
    list_at<Triangle>(&layer("a")->triangles, 0, 0)->points[1] = static_cast<int16_t>(40000 - 65536);
    EXPECT_EQ(diff(), "-40000 0 0 0\n+40000 1 0 0\n-0 1 1 40000\n+0 1 40000 40000 1 1 40000\n");
    model_set_point(model.get(), 32768, 0, 0, 0, 1.0f);
    EXPECT_EQ(refusal(false), "point 32768: its id is above 32767");
    model_remove_point(model.get(), 32768);
    add_triangle("a", {1, 1, 40000});
    EXPECT_EQ(refusal(false), "layer a: names a point above 32767");
}

TEST_F(ModelSaveTest, LinesTooLongOrOfTooManyTokensAreRefusedOnlyWhereTheyAreNew) {
    std::string strip = "2";
    for (int i = 0; i < 300; ++i) { strip += " 1"; }
    load("points\n1 0 0 0\n2 0 0 0\nlayer a 1 2 3 x\nlines\n" + strip + "\n2 2 1\n");
    model_set_layer_colour(model.get(), "a", 9, 2, 3);
    EXPECT_EQ(diff(), "-layer a 1 2 3 x\n+layer a 9 2 3 x\n");
    Line* line = list_at<Line>(&layer("a")->lines, 1, 0);
    for (int i = 0; i < 260; ++i) { *list_add<int32_t>(&line->vertices, i) = 1; }
    line->vertex_count = 262;
    EXPECT_EQ(refusal(false), "layer a: 262 corners, where a line of the file takes 1 to 255");
    load("points\n1 0 0 0\nlayer a 1 2 3 x " + std::string(990, 'r') + "\n");
    model_rename_layer(model.get(), "a", "a_name_of_thirty_one_bytes_here");
    EXPECT_EQ(
        refusal(false),
        "layer a_name_of_thirty_one_bytes_here: a line of the file holds 1023 bytes, and its own would have 1036");
}

// ---- laid out anew ----

TEST_F(ModelSaveTest, TheWholeWriterProvesItselfToo) {
    load(HOUSE);
    point(1)->position.x = 3;
    const ModelSave save = model_save_whole(model.get(), "model.mod");
    EXPECT_EQ(save.refused, "");
    const OwnedModel again = test::read_model(dir, "again.mod", save.text);
    EXPECT_EQ(model_difference(model.get(), again.get()), "");
    point(1)->position.x = 3.5f;
    EXPECT_EQ(model_save_whole(model.get(), "model.mod").refused,
              "point 1: its place lies between whole numbers, or beyond them: 3.500");
}

// ---- by chance ----

// Changes to models as scripts make them.
class RandomEdits {
public:
    RandomEdits(Model* model, uint32_t seed) : model_(model), random_(seed) {}
    void next() {
        static constexpr void (RandomEdits::*EDITS[])() = {
            &RandomEdits::move_point,    &RandomEdits::turn_normal,   &RandomEdits::colour_point,
            &RandomEdits::bind_point,    &RandomEdits::add_point,     &RandomEdits::delete_point,
            &RandomEdits::add_primitive, &RandomEdits::flip,          &RandomEdits::delete_primitive,
            &RandomEdits::set_layer,     &RandomEdits::set_image,     &RandomEdits::set_uvee,
            &RandomEdits::change_layers, &RandomEdits::change_joints, &RandomEdits::change_children};
        (this->*EDITS[random_() % std::size(EDITS)])();
    }

private:
    int pick(int below) { return static_cast<int>(random_() % static_cast<uint32_t>(below)); }
    template <typename Element>
    Element* any(KeyedList& list) {
        const int32_t count = list_count(&list);
        return count > 0 ? list_at<Element>(&list, pick(count), 1) : nullptr;
    }
    int32_t any_id() {
        std::vector<int32_t> ids;
        const auto points = list_elements<Point>(model_->points);
        for (auto point = points.begin(); point != points.end(); ++point) { ids.push_back(point.int_key()); }
        return ids.empty() ? 0 : ids[static_cast<size_t>(pick(static_cast<int>(ids.size())))];
    }
    std::string any_joint() {
        const Joint* joint = any<Joint>(model_->joints);
        return joint == nullptr || pick(3) == 0 ? "world" : joint->name;
    }
    float share() { return static_cast<float>(pick(1000)) / 1000.0f; }
    void move_point() {
        if (Point* point = any<Point>(model_->points)) {
            point->position = {static_cast<float>(pick(2000) - 1000), point->position.y, static_cast<float>(pick(9))};
            if (pick(2) == 0) { point->weight = share(); }
        }
    }
    void turn_normal() { model_set_normal(model_, any_id(), share() - 0.5f, share(), 0.1f); }
    void colour_point() { model_set_gouraud(model_, any_id(), pick(256), pick(256), 3, pick(256)); }
    void bind_point() {
        if (const int32_t id = any_id()) {
            model_set_point_joints(model_, id, any_joint().c_str(), any_joint().c_str());
        }
    }
    void add_point() {
        int32_t id = 100;
        while (list_find(&model_->points, id) != nullptr) { ++id; }
        model_set_point(model_, id, pick(99), pick(99), pick(99), pick(2) == 0 ? 1.0f : share());
        if (pick(2) == 0) { model_set_point_joints(model_, id, any_joint().c_str(), any_joint().c_str()); }
        if (pick(3) == 0) { model_set_normal(model_, id, 1, 0, 0); }
    }
    bool is_named(int32_t id) {
        for (Layer& layer : list_elements<Layer>(model_->layers)) {
            for (const Triangle& each : list_elements<Triangle>(layer.triangles)) {
                for (const int16_t* ids : {each.points, each.normals, each.controls, each.controls + 4}) {
                    if (std::find(ids, ids + 4, static_cast<int16_t>(id)) != ids + 4) { return true; }
                }
            }
            for (const Polygon& each : list_elements<Polygon>(layer.polygons)) {
                for (const PolygonVertex& vertex : polygon_strip(each)) {
                    if (vertex.point == static_cast<int16_t>(id)) { return true; }
                }
            }
            for (const Line& each : list_elements<Line>(layer.lines)) {
                for (const int32_t& stored : list_elements<int32_t>(each.vertices)) {
                    if (line_point_id(stored) == static_cast<int16_t>(id)) { return true; }
                }
            }
        }
        return false;
    }
    void delete_point() {
        const int32_t id = any_id();
        if (id == 0 || is_named(id) || list_count(&model_->points) < 2) { return; }
        model_remove_point(model_, id);
        for (Layer& layer : list_elements<Layer>(model_->layers)) { list_remove(&layer.uvees, id); }
    }
    void add_primitive() {
        const Layer* layer = any<Layer>(model_->layers);
        if (layer == nullptr) { return; }
        const int32_t ids[] = {any_id(), any_id(), any_id(), any_id(), any_id(), any_id(), any_id(), any_id()};
        if (*std::max_element(ids, ids + 8) > INT16_MAX) { return; }
        switch (pick(4)) {
            case 0: model_add_polygon(model_, layer->name, 3 + pick(5), ids, nullptr); break;
            case 1: model_add_line(model_, layer->name, 1 + pick(7), ids); break;
            case 2: model_add_triangle(model_, layer->name, pick(2), ids, ids + 4, nullptr, 0); break;
            default: model_add_triangle(model_, layer->name, 0, ids, nullptr, nullptr, pick(5)); break;
        }
    }
    void flip() {
        Layer* layer = any<Layer>(model_->layers);
        Triangle* triangle = layer != nullptr ? any<Triangle>(layer->triangles) : nullptr;
        if (triangle == nullptr) { return; }
        std::swap(triangle->points[0], triangle->points[1]);
        if (pick(2) == 0) { std::swap(triangle->normals[0], triangle->normals[1]); }
    }
    void delete_primitive() {
        Layer* layer = any<Layer>(model_->layers);
        if (layer == nullptr) { return; }
        const int32_t surface = list_count(&layer->triangles) + list_count(&layer->polygons);
        KeyedList* list = pick(3) == 0 ? &layer->lines : pick(2) == 0 ? &layer->polygons : &layer->triangles;
        if (list_count(list) == 0 || (list != &layer->lines && surface < 2 && list_count(&layer->images) > 0)) {
            return;
        }
        int32_t slot = list_next_slot(list, 0);
        for (int rank = pick(list_count(list)); rank > 0; --rank) { slot = list_next_slot(list, slot + 1); }
        if (list == &layer->lines) { list_free(&list_at<Line>(list, slot, 0)->vertices); }
        if (list == &layer->polygons) { list_free(&list_at<Polygon>(list, slot, 0)->vertices); }
        list_remove_slot(list, slot);
    }
    void set_layer() {
        Layer* layer = any<Layer>(model_->layers);
        if (layer == nullptr) { return; }
        switch (pick(5)) {
            case 0: layer->colour[pick(3)] = pick(300) - 9; break;
            case 1: layer->singlesided = pick(2); break;
            case 2:
                layer->mirror = pick(2);
                layer->mirror_axis = 1 + pick(6);
                break;
            case 3: layer->transparency = share(); break;
            default: model_set_invisible(model_, layer->name, share(), share(), 1); break;
        }
    }
    void set_image() {
        Layer* layer = any<Layer>(model_->layers);
        if (layer == nullptr || (list_count(&layer->triangles) == 0 && list_count(&layer->polygons) == 0)) { return; }
        switch (pick(4)) {
            case 0:
                model_add_image(model_, layer->name, 0, pick(2) ? "a.tga" : "a b.tga", 1 + pick(6), 1 + pick(6));
                break;
            case 1: model_add_image(model_, layer->name, 1, "b.tga", 0, 0); break;
            case 2:
                model_add_image(model_, layer->name, 2, "b.tga", 0, 0);
                model_set_reflection(model_, layer->name, share());
                break;
            default: model_set_image_repeat(model_, layer->name, pick(2), share() * 9, share() - 5); break;
        }
    }
    void set_uvee() {
        Layer* layer = any<Layer>(model_->layers);
        const int32_t id = any_id();
        if (layer == nullptr || id == 0) { return; }
        if (pick(3) == 0) {
            list_remove(&layer->uvees, id);
        } else {
            model_add_uvee(model_, layer->name, id, share(), share() - 1);
        }
    }
    void change_layers() {
        const Layer* layer = any<Layer>(model_->layers);
        const std::string name = "new " + std::to_string(pick(9));
        switch (pick(3)) {
            case 0: model_add_layer(model_, name.c_str(), 1, 2, 3, 0, 1, AXIS_Y); break;
            case 1:
                if (layer != nullptr) { model_rename_layer(model_, std::string(layer->name).c_str(), name.c_str()); }
                break;
            default:
                if (layer != nullptr) { model_delete_layer(model_, std::string(layer->name).c_str()); }
        }
    }
    void change_joints() {
        if (pick(2) == 0) {
            model_add_joint(model_, ("bone" + std::to_string(pick(9))).c_str(), 1, 2, 3, any_joint().c_str(), 0);
        } else if (Joint* joint = any<Joint>(model_->joints)) {
            joint->position.y = static_cast<float>(pick(99));
        }
    }
    void change_children() {
        ChildLink* link = any<ChildLink>(model_->children);
        switch (pick(3)) {
            case 0: model_add_child(model_, nullptr, "wing", share(), 2, 3, 1, 1, share(), "0", "y5", "-7"); break;
            case 1:
                if (link != nullptr) { link->position.z = share(); }
                break;
            default:
                if (link != nullptr) {
                    model_release(link->model);
                    list_remove(&model_->children, link->id);
                }
        }
    }

    Model* model_;
    std::mt19937 random_;
};

TEST_F(ModelSaveTest, RandomModelsAndEditsAreSavedAndRead) {
    dir.write("a b.tga", test::solid_tga(2, 2, 1, 2, 3));
    constexpr int COUNT = 600;
    std::mt19937 random(18);
    test::RandomModelText texts(19);
    int loaded = 0;
    int saves = 0;
    int refused = 0;
    for (int i = 0; i < COUNT && !HasFailure(); ++i) {
        text = test::by_hand(texts.next(), random);
        model = test::read_model(dir, "model.mod", text);
        if (model == nullptr) { continue; }
        ++loaded;
        const ModelSave untouched = model_save(model.get(), text);
        EXPECT_EQ(untouched.refused, "");
        EXPECT_EQ(untouched.text, text);
        RandomEdits edits(model.get(), static_cast<uint32_t>(i));
        for (int edit = 0; edit < 5 && !HasFailure(); ++edit) {
            edits.next();
            ++saves;
            const ModelSave save = model_save(model.get(), text);
            if (!save.refused.empty()) {
                ++refused;
                continue;
            }
            const OwnedModel again = test::read_model(dir, "again.mod", save.text);
            EXPECT_NE(again, nullptr) << load_error_get();
            EXPECT_EQ(model_difference(model.get(), again.get(), false), "");
        }
        if (HasFailure()) { ADD_FAILURE() << "of model " << i << "\n" << text; }
    }
    EXPECT_GT(loaded, COUNT / 4) << "most are refused by the reader, and nothing is tried";
    EXPECT_LT(refused, saves / 10);
}

}  // namespace
}  // namespace pelt
