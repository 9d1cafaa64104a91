// The writer of model files: its exact lay-out, what survives it, and what does not.
#include "formats/model_writer.h"

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <limits>
#include <string>

#include "foundation/load_error.h"
#include "images/image_registry.h"
#include "support/model_text.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;
using test::TempDir;
using test::told;
using test::write_model;

constexpr const char* FOUR_POINTS =
    "points\n1 0 0 0\n2 100 0 0\n3 0 100 50\n4 100 100 50\n"
    "normals\n1 0 0 1\n2 1 0 0\n3 0 1 0\n4 0 0 -1\n";

class ModelWriter : public testing::Test {
protected:
    ModelWriter() {
        for (const char* name : {"a.tga", "b.tga", "r.tga"}) { dir.write(name, test::solid_tga(1, 1, 1, 2, 3)); }
    }
    ~ModelWriter() override { EXPECT_EQ(list_count(image_registry()), 0); }

    OwnedModel read(const std::string& text) { return test::read_model(dir, "model.mod", text); }
    OwnedModel again(const OwnedModel& model) { return test::write_and_read(dir, model.get()); }

    // The model behind four points and these lines, which must load.
    OwnedModel with_points(const std::string& lines) {
        OwnedModel model = read(FOUR_POINTS + lines);
        EXPECT_NE(model, nullptr) << load_error_get();
        return model;
    }
    void expect_survives(const std::string& lines) {
        const OwnedModel model = with_points(lines);
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(told(again(model).get()), told(model.get())) << write_model(model.get());
    }
    // The model comes back with one text of its description changed, and in nothing else.
    void expect_only_loss(const std::string& lines, const std::string& before, const std::string& after) {
        const OwnedModel model = with_points(lines);
        ASSERT_NE(model, nullptr);
        expect_changed(model, before, after);
    }
    void expect_changed(const OwnedModel& model, const std::string& before, const std::string& after) {
        std::string expected = told(model.get());
        const size_t place = expected.find(before);
        ASSERT_NE(place, std::string::npos) << expected;
        expected.replace(place, before.size(), after);
        EXPECT_EQ(told(again(model).get()), expected) << write_model(model.get());
    }
    void expect_unreadable(const std::string& lines, const std::string& error) {
        const OwnedModel model = with_points(lines);
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(again(model), nullptr);
        ASSERT_NE(load_error_get(), nullptr);
        EXPECT_EQ(std::string(load_error_get()).substr(0, error.size()), error);
    }

    TempDir dir;
};

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// ---- the lay-out ----

TEST_F(ModelWriter, EverySectionStandsInItsOrderAndItsColumns) {
    dir.write("wing.mod", "");
    const OwnedModel model = read(
        "joint hip 0 0 10 world 2\njoint knee 1 -2 5 hip 1\n"
        "points\n1 0 0 0\n2 10 20 -30 0.5\n3 1 2 3 0.25\n4 7 8 9 0.75\n"
        "normals\n4 1 0 0\ngouraud\n2 255 0 10 20\n"
        "layer skin 10 20 30 singlesided mirror -y\ntransparency 0.5\n"
        "triangles\n0 1 2 3\n1 1 2 3 4\n2 1 2 3 4\nuvees\n4 0.5 0.25\n2 1.0 -1.0\n"
        "image a.tga x -z\nmirrorimage b.tga\nlines\n2 1 4\n"
        "child wing 1.0 2.0 3.0 1.0 0.5 2.0 90 x30 0\n");
    ASSERT_NE(model, nullptr) << load_error_get();
    EXPECT_EQ(write_model(model.get()),
              "#\n# model: written.mod\n#\n"
              "joint  "
              "hip     "
              "  "
              "    0"
              " "
              "    0"
              " "
              "   10"
              "  "
              "world   "
              " "
              "  2"
              "\n"
              "joint  "
              "knee    "
              "  "
              "    1"
              " "
              "   -2"
              " "
              "    5"
              "  "
              "hip     "
              " "
              "  1"
              "\n"
              "points\n"
              "#\n# 2 points for joint: hip\n#\n"
              "1  "
              "   "
              "    0"
              " "
              "    0"
              " "
              "    0"
              "\n"
              "2  "
              "   "
              "   10"
              " "
              "   20"
              " "
              "  -30"
              "   "
              "0.500"
              "\n"
              "#\n# 1 points for joint: knee\n#\n"
              "3  "
              "   "
              "    1"
              " "
              "    2"
              " "
              "    3"
              "   "
              "0.250"
              "\n"
              "#\n# world points\n#\n"
              "4  "
              "   "
              "    7"
              " "
              "    8"
              " "
              "    9"
              "\n"
              "\nnormals\n"
              "1  "
              "   "
              " 0.000"
              " "
              " 0.000"
              " "
              " 1.000"
              "\n"
              "2  "
              "   "
              " 0.000"
              " "
              " 0.000"
              " "
              " 1.000"
              "\n"
              "3  "
              "   "
              " 0.000"
              " "
              " 0.000"
              " "
              " 1.000"
              "\n"
              "4  "
              "   "
              " 1.000"
              " "
              " 0.000"
              " "
              " 0.000"
              "\n"
              "\ngouraud\n"
              "1  "
              "   "
              "127"
              " "
              "127"
              " "
              "127"
              "  "
              "0  "
              "\n"
              "2  "
              "   "
              "255"
              " "
              "0  "
              " "
              "10 "
              "  "
              "20 "
              "\n"
              "3  "
              "   "
              "127"
              " "
              "127"
              " "
              "127"
              "  "
              "0  "
              "\n"
              "4  "
              "   "
              "127"
              " "
              "127"
              " "
              "127"
              "  "
              "0  "
              "\n"
              "\nlayer skin 10 20 30 singlesided mirror -y\n"
              "transparency 0.5000\n"
              "triangles\n"
              "0  "
              "   1"
              " "
              "   2"
              " "
              "   3"
              "\n"
              "1  "
              "   1"
              " "
              "   2"
              " "
              "   3"
              " "
              "   4"
              "\n"
              "2 1 2 3 4 \n"
              "uvees\n2  1.0000  -1.0000\n4  0.5000  0.2500\n"
              "image  a.tga  x -z\nmirrorimage  b.tga\n"
              "lines\n2 1 4 \n"
              "child  "
              "wing    "
              "  "
              "    1"
              " "
              "    2"
              " "
              "    3"
              "  "
              " 1.000"
              " "
              " 0.500"
              " "
              " 2.000"
              "  "
              "   90"
              " "
              "  x30"
              " "
              "    0"
              "\n");
}

TEST_F(ModelWriter, AModelWithoutJointsHasTheWorldPointsCommentAlone) {
    const OwnedModel model = read("points\n12345 1 2 3\n");
    EXPECT_EQ(write_model(model.get()),
              "#\n# model: written.mod\n#\npoints\n#\n# world points\n#\n12345       1     2     3\n"
              "\nnormals\n12345    0.000  0.000  1.000\n");
}

TEST_F(ModelWriter, AnEmptyModelStillHasItsSections) {
    EXPECT_EQ(write_model(read("").get()), "#\n# model: written.mod\n#\npoints\n#\n# world points\n#\n\nnormals\n");
}

TEST_F(ModelWriter, ALayerWithOnlyLinesHasNoTriangles) {
    const std::string text = write_model(with_points("layer wire 1 2 3 doublesided\nlines\n2 1 2\n2 3 4 1\n").get());
    EXPECT_TRUE(holds(text, "\nlayer wire 1 2 3 doublesided\nlines\n2 1 2 \n2 3 4 1 \n")) << text;
    EXPECT_FALSE(holds(text, "triangles")) << text;
}

TEST_F(ModelWriter, AFlatQuadWithItsOwnCornersAsNormalsIsFourIds) {
    const std::string text =
        write_model(with_points("layer a 1 2 3 doublesided\ntriangles\n1 1 2 3 4 1 2 3 4\n").get());
    EXPECT_TRUE(holds(text, "triangles\n1     1    2    3    4\n")) << text;
}

TEST_F(ModelWriter, ACurvedTriangleOfTypeTwoHasItsTypeAsFifthToken) {
    const std::string text = write_model(with_points("layer a 1 2 3 doublesided\ntriangles\n3 1 2 3 2\n").get());
    EXPECT_TRUE(holds(text, "triangles\n3     1    2    3  2\n")) << text;
}

TEST_F(ModelWriter, ACurvedTriangleOfTypeThreeNamesItsTypeOnlyBeforeNormals) {
    const std::string text =
        write_model(with_points("layer a 1 2 3 doublesided\ntriangles\n3 1 2 3\n3 1 2 3 3 2 2 3\n").get());
    EXPECT_TRUE(holds(text, "triangles\n3     1    2    3\n3     1    2    3  3     2    2    3\n")) << text;
}

TEST_F(ModelWriter, OwnControlsBringTheNormalsAlong) {
    const std::string text =
        write_model(with_points("layer a 1 2 3 doublesided\ntriangles\n3 1 2 3 1 1 2 3 4 2 2 3 3 1\n").get());
    EXPECT_TRUE(holds(text, "triangles\n3     1    2    3  1     1    2    3     4    2    2    3    3    1\n"));
}

TEST_F(ModelWriter, AnImageWithoutAnAxisIsWrittenWithX) {
    const OwnedModel model = with_points("layer a 1 2 3 doublesided\ntriangles\n0 1 2 3\nimage a.tga y z\n");
    Layer* layer = model_find_layer(model.get(), "a");
    layer->image_axis_u = 0;
    layer->image_axis_v = 7;
    EXPECT_TRUE(holds(write_model(model.get()), "image  a.tga  x x\n"));
}

TEST_F(ModelWriter, EveryAxisCodeHasItsWord) {
    const char* words[] = {"x", "x", "y", "z", "-x", "-y", "-z", "x"};
    for (int code = 0; code < 8; ++code) { EXPECT_STREQ(axis_word(code), words[code]); }
    EXPECT_STREQ(axis_word(-1), "x");
    EXPECT_STREQ(axis_word(std::numeric_limits<int>::max()), "x");
}

TEST_F(ModelWriter, LongTextsAreNeverCut) {
    std::string points = "points\n";
    std::string polygon = "2";
    for (int id = 10001; id <= 10120; ++id) {
        points += std::to_string(id) + " 0 0 0\n";
        polygon += " " + std::to_string(id);
    }
    const std::string joint(120, 'j');
    const std::string parent(125, 'p');
    const OwnedModel model = read("joint " + joint + " 1 2 3 " + parent + " 0\n" + points +
                                  "layer a 1 2 3 doublesided\ntriangles\n" + polygon + "\n");
    ASSERT_NE(model, nullptr) << load_error_get();
    const std::string text = write_model(model.get());
    EXPECT_TRUE(holds(text, "triangles\n" + polygon + " \n")) << "722 bytes in one line";
    EXPECT_TRUE(holds(text, "joint  " + joint + "      1     2     3  " + parent + "   0\n"));
}

TEST_F(ModelWriter, NumbersAreWrittenWithAPointInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    bool found = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
        found = found || std::setlocale(LC_NUMERIC, name) != nullptr;
    }
    const std::string text =
        write_model(with_points("layer a 1 2 3 doublesided\ntransparency 0.25\ntriangles\n0 1 2 3\n").get());
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_TRUE(holds(text, "transparency 0.2500\n")) << text;
    if (!found) { GTEST_SKIP() << "no locale with a decimal comma is installed"; }
}

TEST_F(ModelWriter, PlacesThatAreNoNumbersOrTooLargeStaySafe) {
    const OwnedModel model = read("points\n1 0 0 0\n");
    Point* point = model_find_point(model.get(), 1);
    point->position = Vec3{std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), -1e30f};
    point->normal = Vec3{std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 0.0f};
    const std::string text = write_model(model.get());
    EXPECT_TRUE(holds(text, "1         0 2147483647 -2147483648\n")) << text;
    EXPECT_TRUE(holds(text, "1        nan    inf  0.000\n")) << text;
}

TEST_F(ModelWriter, AFileNameWithALineEndStaysInItsComment) {
    const OwnedModel model = read("");
    const std::string text = model_write_text(model.get(), "a\nlayer b\r.mod");
    EXPECT_EQ(text.substr(0, text.find("points")), "#\n# model: a?layer b?.mod\n#\n");
}

// ---- where it goes ----

class InDirectory : public ModelWriter {
protected:
    InDirectory() : before(std::filesystem::current_path()) {
        dir.make_dir("here");
        std::filesystem::current_path(dir.file("here"));
    }
    ~InDirectory() override { std::filesystem::current_path(before); }
    const std::filesystem::path before;
};

TEST_F(InDirectory, TheFileIsNamedAfterTheModelInTheCurrentDirectory) {
    const OwnedModel model(model_create(test::native_path(dir.path() + "/elsewhere/Tree.mod").c_str(), nullptr));
    model_write(model.get());
    EXPECT_EQ(dir.read("here/tree.mod").substr(0, 21), "#\n# model: tree.mod\n#");
    EXPECT_FALSE(dir.exists("elsewhere"));
}

TEST_F(InDirectory, AnExtensionOfThreeCharactersIsKept) {
    const OwnedModel model(model_create("tree.abc.mod", nullptr));
    ASSERT_STREQ(model->name, "tree.abc");
    model_write(model.get());
    EXPECT_TRUE(dir.exists("here/tree.abc"));
    EXPECT_FALSE(dir.exists("here/tree.abc.mod"));
}

TEST_F(InDirectory, AModelWithoutANameHasAFileAllTheSame) {
    const OwnedModel model(model_create("", nullptr));
    model_write(model.get());
    EXPECT_TRUE(dir.exists("here/noname.mod"));
}

TEST_F(InDirectory, ShortNamesHaveNoExtensionToFind) {
    const OwnedModel model(model_create("ab.mod", nullptr));
    EXPECT_EQ(model_file_name(model.get()), "ab.mod");
    const OwnedModel dotted(model_create("x.yz.mod", nullptr));
    EXPECT_EQ(model_file_name(dotted.get()), "x.yz.mod") << "the dot stands at the third place from the end";
}

TEST_F(InDirectory, NoModelAndNoFileAreNoTrouble) {
    load_error_set(nullptr);
    model_write(nullptr);
    const OwnedModel model(model_create("wall.mod", nullptr));
    dir.make_dir("here/wall.mod");
    model_write(model.get());
    EXPECT_EQ(load_error_get(), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(dir.file("here/wall.mod")));
}

TEST_F(ModelWriter, NoModelHasNoText) { EXPECT_EQ(model_write_text(nullptr, "a.mod"), ""); }

// ---- what survives ----

TEST_F(ModelWriter, FlatTrianglesAndQuadsSurvive) {
    expect_survives(
        "layer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n0 1 2 3 4 3 2\n1 1 2 3 4\n1 1 2 3 4 2 2 3 1\n"
        "1 1 2 3 4 1 2 3 1\n");
}

TEST_F(ModelWriter, PolygonsAndLinesSurvive) {
    expect_survives("layer a 1 2 3 doublesided\ntriangles\n2 1 2 3 4\n2 4 3 2\nlines\n2 1 2 3 4 1\n2 4 2\n");
}

TEST_F(ModelWriter, CurvedTrianglesOfTypesOneToThreeSurvive) {
    expect_survives(
        "layer a 1 2 3 doublesided\ntriangles\n3 1 2 3 1\n3 1 2 3 2\n3 1 2 3\n"
        "3 1 2 3 1 4 2 3\n3 1 2 3 2 4 2 3\n3 1 2 3 3 4 2 3\n"
        "3 1 2 3 1 1 2 3 4 2 2 3 3 1\n3 1 2 3 2 4 2 3 4 2 2 3 3 1\n3 1 2 3 3 1 2 3 1 2 2 3 3 4\n");
}

TEST_F(ModelWriter, ACurvedQuadOfTypeFourWithoutNormalsOfItsOwnSurvives) {
    expect_survives("layer a 1 2 3 doublesided\ntriangles\n4 1 2 3 4\n");
}

TEST_F(ModelWriter, ImagesMirrorsAndUveesSurvive) {
    expect_survives(
        "layer a 1 2 3 doublesided mirror x\ntransparency 0.25\ntriangles\n0 1 2 3\n1 1 2 3 4\n"
        "uvees\n3 0.25 0.75\n1 -1.5 2.0\nimage a.tga x -y\nmirrorimage b.tga\n"
        "layer b 127 127 127 singlesided mirror -z\ntriangles\n2 1 2 3 4\nimage b.tga -x z\n");
}

TEST_F(ModelWriter, JointsAndWorldPointsSurvive) {
    const OwnedModel model = read(
        "joint hip 1 2 3 world 2\njoint knee 4 5 6 hip 1\n"
        "points\n10 1 2 3\n30 4 5 6 0.5\n20 -7 8 9 0.125\n5 10 11 12\n7 13 14 15\nnormals\n10 0 1 0\n");
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(told(again(model).get()), told(model.get()));
    EXPECT_STREQ(model_find_point(model.get(), 20)->joint_a->name, "knee");
}

TEST_F(ModelWriter, ColoursAndChildrenSurvive) {
    dir.write("wing.mod", "");
    expect_survives("gouraud\n2 255 1 0 20\nchild wing 10.0 -20.0 30.0 1.5 0.25 -1.0 90 y-30 0\n");
}

TEST_F(ModelWriter, ABlackColourKeySurvives) {
    expect_survives("layer a 1 2 3 doublesided\ninvisible 0.0 0 0\ntriangles\n0 1 2 3\nimage a.tga x y\n");
}

// ---- what does not: one test for each place where writer and reader disagree ----

TEST_F(ModelWriter, AColourKeyComesOutInBytesAndDoesNotReadBack) {
    const std::string error = "invisible color out of range (should be 0.0 to 1.0)";
    expect_unreadable("layer a 1 2 3 doublesided\ninvisible 1.0 0 0\ntriangles\n0 1 2 3\n", error);
    expect_unreadable("layer a 1 2 3 doublesided\ninvisible 0 0.01 0\ntriangles\n0 1 2 3\n", error);
}

TEST_F(ModelWriter, AColourKeyOfOneReadsBackAsFull) {
    expect_only_loss("layer a 1 2 3 doublesided\ninvisible 0.005 0 0\ntriangles\n0 1 2 3\n", "invisible=1,0,0",
                     "invisible=255,0,0");
}

TEST_F(ModelWriter, ACurvedQuadLosesItsType) {
    expect_only_loss("layer a 1 2 3 doublesided\ntriangles\n4 1 2 3 4 2\n", "quad 1 curve 2", "quad 1 curve 4");
}

TEST_F(ModelWriter, ACurvedQuadWithNormalsOrControlsDoesNotReadBack) {
    expect_unreadable("layer a 1 2 3 doublesided\ntriangles\n4 1 2 3 4 4 2 1 3 4\n", "normal does not exist");
    expect_unreadable("layer a 1 2 3 doublesided\ntriangles\n4 1 2 3 4 4 1 2 3 4 2 2 2 4 4 3 3 1\n",
                      "normal does not exist");
}

TEST_F(ModelWriter, ACurvedTriangleOfTypeFourComesBackAsThree) {
    expect_only_loss("layer a 1 2 3 doublesided\ntriangles\n3 1 2 3 4\n", "quad 0 curve 4", "quad 0 curve 3");
}

TEST_F(ModelWriter, ACurvedTriangleOfTypeFourWithNormalsDoesNotReadBack) {
    expect_unreadable("layer a 1 2 3 doublesided\ntriangles\n3 1 2 3 4 2 1 3\n", "normal does not exist");
}

TEST_F(ModelWriter, BlendGroupsAreLostAndTheirPointsBindToOtherJoints) {
    const OwnedModel model = read(
        "joint a 0 0 0 world 1\njoint b 0 0 0 a 1\nblend a b 1\n"
        "points\n1 0 0 0\n2 0 0 0\n3 0 0 0\n4 0 0 0\nnormals\n1 0 0 1\n");
    ASSERT_NE(model, nullptr);
    const OwnedModel back = again(model);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(list_count(&back->blends), 0);
    // Point 3 follows point 1 in the section of joint a, so it is the one that b counts; b's own has none left.
    EXPECT_STREQ(model_find_point(back.get(), 3)->joint_a->name, "b");
    EXPECT_EQ(model_find_point(back.get(), 2)->joint_a, nullptr);
    EXPECT_STREQ(model_find_point(back.get(), 1)->joint_a->name, "a");
}

TEST_F(ModelWriter, TheSecondJointOfAPointLineIsLost) {
    const OwnedModel model = read("joint b 0 0 0 world 0\npoints\n1 1 2 3 1.0 world b\nnormals\n1 0 0 1\n");
    ASSERT_NE(model, nullptr);
    expect_changed(model, "joints none/b", "joints none/none");
}

TEST_F(ModelWriter, TheWeightOfAWorldPointIsLost) {
    const OwnedModel model = read("points\n1 1 2 3 0.5\nnormals\n1 0 0 1\n");
    expect_changed(model, "weight 0.5", "weight 1");
}

TEST_F(ModelWriter, TheReflectionMapIsLost) {
    expect_only_loss("layer a 1 2 3 doublesided\ntriangles\n0 1 2 3\nimage a.tga x y\nreflect r.tga 0.5\n",
                     "image a.tga||r.tga axes 1/2 repeat 0 reflection 0.5",
                     "image a.tga|| axes 1/2 repeat 0 reflection 0");
}

TEST_F(ModelWriter, TheRepeatFactorsAreLost) {
    // Every corner has a uvee, on which the factors do not act, so that nothing else changes.
    expect_only_loss(
        "layer a 1 2 3 doublesided\ntriangles\n0 1 2 3\nuvees\n1 0 0\n2 1 0\n3 0 1\n"
        "image a.tga x y repeat 2 3\n",
        "repeat 1", "repeat 0");
}

TEST_F(ModelWriter, AModelWithoutNormalsGainsTheDefaultOnes) {
    const OwnedModel model = read("points\n1 1 2 3\nlayer a 1 2 3 doublesided\ntriangles\n0 1 1 1\n");
    expect_changed(model, "normals 0", "normals 1");
}

TEST_F(ModelWriter, FractionsOfPositionsAreCutTowardsZero) {
    const OwnedModel model = read("points\n1 0 0 0\n2 100 100 100\n3 -100 -100 -100\nnormals\n1 0 0 1\n");
    ASSERT_NE(model, nullptr);
    model_find_point(model.get(), 1)->position = Vec3{1.9f, 0.0f, -1.9f};
    expect_changed(model, "point 1 (1.9,0,-1.9)", "point 1 (1,0,-1)");
}

TEST_F(ModelWriter, AnEmptyLayerIsLeftOut) {
    const OwnedModel model =
        with_points("layer none 1 2 3 singlesided\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n");
    const OwnedModel back = again(model);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(list_count(&back->layers), 1);
    EXPECT_STREQ(list_elements<Layer>(back->layers).begin()->name, "a");
}

TEST_F(ModelWriter, PolygonsLoseNormalsOfTheirOwn) {
    const OwnedModel model = with_points("layer a 1 2 3 singlesided\n");
    const int32_t points[] = {1, 2, 3};
    const int32_t normals[] = {1, 4, 3};
    ASSERT_EQ(model_add_polygon(model.get(), "a", 3, points, normals), 1);
    expect_changed(model, "2/4/0/0", "2/2/0/0");
}

TEST_F(ModelWriter, PointsBindByTheStoredCountWhateverNamesTheJoint) {
    const OwnedModel model = read("joint a 0 0 0 world 2\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\nnormals\n1 0 0 1\n");
    ASSERT_NE(model, nullptr);
    model_find_joint(model.get(), "a")->point_count = 1;
    expect_changed(model, "point 2 (0,0,0) weight 1 normal (0,0,1) joints a/none",
                   "point 2 (0,0,0) weight 1 normal (0,0,1) joints none/none");
}

TEST_F(ModelWriter, OnlyTheFirstCornerOfATriangleTellsThatNormalsDiffer) {
    expect_only_loss("layer a 1 2 3 singlesided\ntriangles\n0 1 2 3 1 4 4\n", "normals=1,4,4", "normals=1,2,3");
}

TEST_F(ModelWriter, OnlyTheFirstAndLastCornerOfAQuadTellThatNormalsDiffer) {
    expect_only_loss("layer a 1 2 3 singlesided\ntriangles\n1 1 2 3 4 1 4 4 4\n", "normals=1,4,4,4", "normals=1,2,3,4");
}

TEST_F(ModelWriter, NamesWithBlanksComeOutWithoutQuotes) {
    const OwnedModel model = with_points("layer \"two words\" 1 2 3 singlesided\ntriangles\n0 1 2 3\n");
    EXPECT_TRUE(holds(write_model(model.get()), "\nlayer two words 1 2 3 singlesided\n"));
    const OwnedModel back = again(model);
    ASSERT_NE(back, nullptr);
    EXPECT_STREQ(list_elements<Layer>(back->layers).begin()->name, "two");
}

}  // namespace
}  // namespace pelt
