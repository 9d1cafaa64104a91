#include "formats/model_lines.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/model_file_fixture.h"

namespace pelt {
namespace {

using namespace test;

class ModelLines : public test::ModelFileTest {};

// ---- sections ----

TEST_F(ModelLines, CommentsAndUnknownWordsArePassedOver) {
    const ModelPtr model = load_good("# comment\npoints\nsmoothing 1 2\n #5 5 5 5\n1 1 2 3\nPOINTS\n2 4 5 6\n");
    EXPECT_EQ(model_count_points(model.get()), 2) << "the mode stays behind an unknown word";
}

TEST_F(ModelLines, TheWordsThatBeginALineAreKnown) {
    for (const char* word : {"points", "normals", "layer", "transparency", "reflect", "invisible", "joint", "blend",
                             "triangles", "lines", "goraud", "gouraud", "uvees", "image", "mirrorimage", "child"}) {
        EXPECT_TRUE(model_knows_keyword(word)) << word;
    }
    for (const char* word : {"", "Points", "point", "pointss", "#"}) {
        EXPECT_FALSE(model_knows_keyword(word)) << word;
    }
    EXPECT_FALSE(model_knows_keyword(nullptr));
}

TEST_F(ModelLines, ReadingStopsBehindTheFirstFailure) {
    const ModelPtr model(model_create("m.mod", nullptr));
    EXPECT_EQ(model_read_data(model.get(), "points\n1 0 0 0\n2 0\n3 0 0 0\n"), 0);
    EXPECT_EQ(error(), "Bad point definition (file: (data), line: 3)");
    EXPECT_EQ(model_count_points(model.get()), 1);
}

TEST_F(ModelLines, ADataLineBeforeAnySectionFails) {
    expect_error("1 2 3 4\n", "Bad point or triangle data", 1);
    expect_error("-1 2 3 4\n", "Bad point or triangle data", 1);
}

TEST_F(ModelLines, ADataLineBehindALayerLineFails) {
    expect_error(FOUR_POINTS + LAYER + "0 1 2 3\n", "Bad point or triangle data", 7);
}

TEST_F(ModelLines, EveryStatementEndsTheSection) {
    const std::string statements[] = {"transparency 0.5", "joint j 0 0 0 world 0", "child c 0 0 0 1 1 1 0 0 0",
                                      "blend x y 1", "invisible 0 0 0"};
    for (const std::string& statement : statements) {
        const std::string text = LAYER + "points\n" + statement + "\n1 0 0 0\n";
        expect_error(text, "Bad point or triangle data", 4);
    }
}

TEST_F(ModelLines, ALineThatBeginsWithAFloatIsPassedOver) {
    EXPECT_EQ(model_count_points(load_good("points\n1.0 2 3 4\n").get()), 0);
}

TEST_F(ModelLines, SectionKeywordsIgnoreTheRestOfTheirLine) {
    EXPECT_EQ(model_count_points(load_good("points 5 x y\n1 0 0 0\n").get()), 1);
}

// ---- points ----

TEST_F(ModelLines, APointHasIntegerCoordinatesAndAWeight) {
    const ModelPtr model = load_good("points\n1 -5 6 7\n2 1 2 3 0.25\n3 1 2 3 9 extra\n4 1 2 3 word\n");
    EXPECT_EQ(point(model, 1).position.x, -5.0f);
    EXPECT_EQ(point(model, 1).position.z, 7.0f);
    EXPECT_EQ(point(model, 1).weight, 1.0f);
    EXPECT_EQ(point(model, 2).weight, 0.25f);
    EXPECT_EQ(point(model, 3).weight, 2.0f);
    EXPECT_EQ(point(model, 3).joint_a, nullptr);
    EXPECT_EQ(point(model, 4).weight, 0.0f);
}

TEST_F(ModelLines, AFloatInTheIntegerPlacesReadsAsZero) {
    const ModelPtr model = load_good("points\n1 1.5 2 3\n");
    EXPECT_EQ(point(model, 1).position.x, 0.0f);
    EXPECT_EQ(point(model, 1).position.y, 2.0f);
}

TEST_F(ModelLines, IntegersBeyond32BitsSaturate) {
    const ModelPtr model = load_good("points\n1 99999999999 -99999999999 0\n");
    EXPECT_EQ(point(model, 1).position.x, 2147483648.0f);
    EXPECT_EQ(point(model, 1).position.y, -2147483648.0f);
}

TEST_F(ModelLines, APointNeedsFourTokens) { expect_data_error("points", "1 2 3", "Bad point definition"); }

TEST_F(ModelLines, APointIdBelowOneFailsWithoutAText) {
    expect_silent_failure("points\n0 1 2 3\n");
    expect_silent_failure("points\n-4 1 2 3\n");
}

TEST_F(ModelLines, APointLineMayNameItsJoints) {
    const ModelPtr model = load_good(
        "joint hip 0 0 0 world 0\njoint knee 0 0 0 hip 0\n"
        "points\n1 0 0 0 0.5 hip knee\n2 0 0 0 0.5 hip unknown\n3 0 0 0 0.5 world knee\n");
    EXPECT_STREQ(point(model, 1).joint_a->name, "hip");
    EXPECT_STREQ(point(model, 1).joint_b->name, "knee");
    EXPECT_EQ(point(model, 2).joint_b, nullptr);
    EXPECT_EQ(point(model, 3).joint_a, nullptr);
}

TEST_F(ModelLines, APointLineOfSixTokensNamesNoJoint) {
    const ModelPtr model = load_good("joint hip 0 0 0 world 0\npoints\n1 0 0 0 0.5 hip\n");
    EXPECT_EQ(point(model, 1).joint_a, nullptr);
    EXPECT_EQ(point(model, 1).weight, 0.5f);
}

// ---- normals ----

void expect_near(const Vec3& v, double x, double y, double z) {
    EXPECT_NEAR(v.x, x, 2e-6);
    EXPECT_NEAR(v.y, y, 2e-6);
    EXPECT_NEAR(v.z, z, 2e-6);
}

TEST_F(ModelLines, ANormalIsStoredAtUnitLength) {
    const ModelPtr model = load_good("normals\n5 0 3.0 4\n");
    expect_near(point(model, 5).normal, 0.0, 0.6, 0.8);
    EXPECT_EQ(model->has_normals, 1);
    EXPECT_EQ(point(model, 5).weight, 0.0f) << "a point made by its normal alone";
}

TEST_F(ModelLines, ANormalMayBeGivenByTwoAngles) {
    const ModelPtr model = load_good("normals\n1 0 0\n2 90 0\n3 30 45\n4 123 90\n5 10 -90\n6 200 -20.5\n");
    const double degree = 3.14159265358979 / 180.0;
    expect_near(point(model, 1).normal, 1.0, 0.0, 0.0);
    expect_near(point(model, 2).normal, 0.0, 1.0, 0.0);
    expect_near(point(model, 3).normal, std::cos(30 * degree) * std::cos(45 * degree),
                std::sin(30 * degree) * std::cos(45 * degree), std::sin(45 * degree));
    EXPECT_EQ(point(model, 4).normal.x, 0.0f);
    EXPECT_EQ(point(model, 4).normal.y, 0.0f);
    EXPECT_EQ(point(model, 4).normal.z, 1.0f);
    EXPECT_EQ(point(model, 5).normal.z, -1.0f);
    expect_near(point(model, 6).normal, std::cos(200 * degree) * std::cos(20.5 * degree),
                std::sin(200 * degree) * std::cos(20.5 * degree), -std::sin(20.5 * degree));
}

TEST_F(ModelLines, ANormalHasThreeOrFourTokens) {
    for (const char* line : {"5", "5 1", "5 1 2 3 4"}) { expect_data_error("normals", line, "Bad normal definition"); }
}

TEST_F(ModelLines, ANormalOfAPointBelowOneFailsWithoutAText) { expect_silent_failure("normals\n0 0 0 1\n"); }

// ---- colours and uvees ----

TEST_F(ModelLines, BothSpellingsOfGouraudBehaveAlike) {
    for (const std::string section : {"goraud", "gouraud"}) {
        const ModelPtr model = load_good("points\n7 0 0 0\n" + section + "\n7 1 2 3 4\n");
        EXPECT_EQ(point(model, 7).gouraud[0], 1);
        EXPECT_EQ(point(model, 7).gouraud[1], 2);
        EXPECT_EQ(point(model, 7).gouraud[2], 3);
        EXPECT_EQ(point(model, 7).gouraud[3], 4);
        EXPECT_EQ(model->has_gouraud, 1);
    }
}

TEST_F(ModelLines, GouraudValuesAreCutToBytes) {
    const ModelPtr model = load_good("points\n7 0 0 0\ngouraud\n7 256 -1 511 0.9\n");
    EXPECT_EQ(point(model, 7).gouraud[0], 0);
    EXPECT_EQ(point(model, 7).gouraud[1], 255);
    EXPECT_EQ(point(model, 7).gouraud[2], 255);
    EXPECT_EQ(point(model, 7).gouraud[3], 0);
}

TEST_F(ModelLines, AGouraudLineHasFiveTokens) {
    expect_data_error("gouraud", "7 1 2 3", "Bad gouraud RGB definition");
    expect_data_error("gouraud", "7 1 2 3 4 5", "Bad gouraud RGB definition");
}

TEST_F(ModelLines, AGouraudColourOfAnUnknownPointFails) {
    expect_data_error("gouraud", "7 1 2 3 4", "gouraud colour defined for non existant point");
    expect_silent_failure("gouraud\n0 1 2 3 4\n");
}

TEST_F(ModelLines, UveesBelongToTheCurrentLayer) {
    const ModelPtr model = load_good(FOUR_POINTS + LAYER + "uvees\n2 0.5 -1\n");
    const auto* uvee = list_find<const Uvee>(&layer(model).uvees, 2);
    ASSERT_NE(uvee, nullptr);
    EXPECT_EQ(uvee->u, 0.5f);
    EXPECT_EQ(uvee->v, -1.0f);
}

TEST_F(ModelLines, BadUveesFail) {
    expect_data_error("uvees", "2 0.5", "Bad uvee definition");
    expect_data_error("uvees", "2 0.5 0.5 0.5", "Bad uvee definition");
    expect_data_error("uvees", "2 0.5 0.5", "layer does not exist");
    expect_error(LAYER + "uvees\n2 0.5 0.5\n", "uvee point not found in model", 3);
}

// ---- lines ----

TEST_F(ModelLines, ALineOfTypeTwoIsAPolyline) {
    const ModelPtr model = load_good(FOUR_POINTS + LAYER + "lines\n2 1 3 2\n2 4\n");
    ASSERT_EQ(list_count(&layer(model).lines), 2);
    const auto* line = list_at<const Line>(&layer(model).lines, 0, 0);
    EXPECT_EQ(line->vertex_count, 3);
    EXPECT_EQ(*list_at<int32_t>(&line->vertices, 1, 0), 3);
}

TEST_F(ModelLines, OtherTypesOfLinesAreIgnored) {
    const ModelPtr model = load_good(FOUR_POINTS + LAYER + "lines\n3 1 2\n0\n-2 99\n");
    EXPECT_EQ(list_count(&layer(model).lines), 0);
}

TEST_F(ModelLines, BadLinesFail) {
    expect_data_error("lines", "2", "Bad line definition");
    expect_data_error("lines", "2 1 2", "layer does not exist");
    expect_error(LAYER + "lines\n2 1 2\n", "point does not exist", 3);
}

// ---- primitives ----

TEST_F(ModelLines, TrianglesBeforeAnyLayerFail) {
    expect_error(FOUR_POINTS + "triangles\n0 1 2 3\n", "layer does not exist", 7);
}

TEST_F(ModelLines, ATriangleTakesItsPointsAsNormals) {
    const ModelPtr model = load_good(TRIANGLE);
    EXPECT_EQ(triangle(model).quad, 0);
    EXPECT_EQ(triangle(model).curve_type, 0);
    EXPECT_EQ(ids(triangle(model).points, 3), (Ids{1, 2, 3}));
    EXPECT_EQ(ids(triangle(model).normals, 3), (Ids{1, 2, 3}));
}

struct GoodPrimitive {
    const char* line;
    int quad;
    int curve_type;
    Ids points;
    Ids normals;
    Ids controls;
};

TEST_F(ModelLines, EveryGoodFormOfAPrimitive) {
    const Ids none(8, 0);
    const Ids edges3{1, 2, 2, 3, 3, 1, 0, 0};
    const Ids edges4{1, 2, 2, 4, 4, 3, 3, 1};
    const GoodPrimitive cases[] = {
        {"0 1 2 3", 0, 0, {1, 2, 3}, {1, 2, 3}, none},
        {"0 1 2 3 0", 0, 0, {1, 2, 3}, {1, 2, 3}, none},
        {"0 1 2 3 word", 0, 0, {1, 2, 3}, {1, 2, 3}, none},
        {"0 1 2 3 4 3 2", 0, 0, {1, 2, 3}, {4, 3, 2}, none},
        {"0 1 2 3 4 3 2 99", 0, 0, {1, 2, 3}, {4, 3, 2}, none},
        {"1 1 2 3 4", 1, 0, {1, 2, 3, 4}, {1, 2, 3, 4}, none},
        {"1 1 2 3 4 4 3 2 1", 1, 0, {1, 2, 3, 4}, {4, 3, 2, 1}, none},
        {"1 1 2 3 4 4 3 2 1 99 99", 1, 0, {1, 2, 3, 4}, {4, 3, 2, 1}, none},
        {"3 1 2 3", 0, 3, {1, 2, 3}, {1, 2, 3}, edges3},
        {"3 1 2 3 2", 0, 2, {1, 2, 3}, {1, 2, 3}, edges3},
        {"3 1 2 3 0", 0, 0, {1, 2, 3}, {1, 2, 3}, none},
        {"3 1 2 3 1 4 4 4", 0, 1, {1, 2, 3}, {4, 4, 4}, edges3},
        {"3 1 2 3 4 4 3 2 4 3 2 1 2 3", 0, 4, {1, 2, 3}, {4, 3, 2}, {4, 3, 2, 1, 2, 3, 0, 0}},
        {"3 1 2 3 4 4 3 2 4 3 2 1 2 3 99", 0, 4, {1, 2, 3}, {4, 3, 2}, {4, 3, 2, 1, 2, 3, 0, 0}},
        {"4 1 2 3 4", 1, 4, {1, 2, 3, 4}, {1, 2, 3, 4}, edges4},
        {"4 1 2 3 4 2", 1, 2, {1, 2, 3, 4}, {1, 2, 3, 4}, edges4},
        {"4 1 2 3 4 2 4 3 2 1", 1, 2, {1, 2, 3, 4}, {4, 3, 2, 1}, edges4},
        {"4 1 2 3 4 4 4 3 2 1 1 2 3 4 4 3 2 1", 1, 4, {1, 2, 3, 4}, {4, 3, 2, 1}, {1, 2, 3, 4, 4, 3, 2, 1}},
        {"4 1 2 3 4 4 4 3 2 1 1 2 3 4 4 3 2 1 99", 1, 4, {1, 2, 3, 4}, {4, 3, 2, 1}, {1, 2, 3, 4, 4, 3, 2, 1}},
    };
    for (const GoodPrimitive& expected : cases) {
        SCOPED_TRACE(expected.line);
        const ModelPtr model = load_good(FOUR_POINTS + LAYER + "triangles\n" + expected.line + "\n");
        ASSERT_NE(model, nullptr);
        const Triangle& read = triangle(model);
        const int corners = expected.quad ? 4 : 3;
        EXPECT_EQ(read.quad, expected.quad);
        EXPECT_EQ(read.curve_type, expected.curve_type);
        EXPECT_EQ(ids(read.points, corners), expected.points);
        EXPECT_EQ(ids(read.normals, corners), expected.normals);
        EXPECT_EQ(ids(read.controls, 8), expected.controls);
    }
}

// A wrong count goes on to the add, whose text is the one that remains: intended.
TEST_F(ModelLines, EveryBadFormOfAPrimitive) {
    struct {
        const char* line;
        const char* message;
    } const cases[] = {
        {"0", "point does not exist"},
        {"0 1 2", "point does not exist"},
        {"0 1 2 3 4", "normal does not exist"},
        {"0 1 2 3 4 4", "normal does not exist"},
        {"0 1 2 9", "point does not exist"},
        {"0 1 2 3 1 2 9", "normal does not exist"},
        {"0 1 2 0", "point does not exist"},
        {"0 1 2 3.0", "point does not exist"},
        {"1 1 2 3", "point does not exist"},
        {"1 1 2 3 4 1", "normal does not exist"},
        {"1 1 2 3 4 1 2 3", "normal does not exist"},
        {"3 1 2", "point does not exist"},
        {"3 1 2 3 2 1", "normal does not exist"},
        {"3 1 2 3 2 1 2", "normal does not exist"},
        {"3 1 2 3 2 1 2 3 1", "normal does not exist"},
        {"3 1 2 3 2 1 2 3 1 2 3 1 2", "normal does not exist"},
        {"3 1 2 3 0 1 2 3 1", "Bad triangle definition"},
        {"3 1 2 3 0 1 2 3 1 2 3 1 2", "Bad triangle definition"},
        {"4 1 2 3", "point does not exist"},
        {"4 1 2 3 4 2 1", "normal does not exist"},
        {"4 1 2 3 4 2 1 2 3", "normal does not exist"},
        {"4 1 2 3 4 2 1 2 3 4 1", "normal does not exist"},
        {"4 1 2 3 4 2 1 2 3 4 1 2 3 4 1 2 3", "normal does not exist"},
        {"2 1 2", "Bad triangle definition"},
        {"2", "Bad triangle definition"},
        {"2 1 2 9", "point does not exist"},
        {"5 1 2 3", "Bad triangle definition"},
        {"-1 1 2 3", "Bad triangle definition"},
    };
    const std::string before = FOUR_POINTS + LAYER + "triangles\n";
    for (const auto& each : cases) { expect_error(before + each.line + "\n", each.message, lines_in(before) + 1); }
}

TEST_F(ModelLines, CurveTypesThatDoNotFitFailWithoutAText) {
    for (const char* line : {"3 1 2 3 5", "3 1 2 3 -1", "4 1 2 3 4 1", "4 1 2 3 4 3"}) {
        expect_silent_failure(FOUR_POINTS + LAYER + "triangles\n" + line + "\n");
    }
}

TEST_F(ModelLines, APolygonKeepsTheOrderOfItsPoints) {
    const ModelPtr model = load_good(FOUR_POINTS + LAYER + "triangles\n2 4 2 3 1\n");
    const auto* polygon = list_at<const Polygon>(&layer(model).polygons, 0, 0);
    ASSERT_EQ(polygon->vertex_count, 4);
    const auto* vertex = list_at<const PolygonVertex>(&polygon->vertices, 1, 0);
    EXPECT_EQ(vertex->point, 2);
    EXPECT_EQ(vertex->normal, 2);
}

TEST_F(ModelLines, APolygonTakesAllTokensOfALine) {
    std::string line = "2";
    for (int i = 0; i < 300; ++i) { line += " 1"; }
    const ModelPtr model = load_good(FOUR_POINTS + LAYER + "triangles\n" + line + "\n");
    EXPECT_EQ(list_at<const Polygon>(&layer(model).polygons, 0, 0)->vertex_count, 255);
}

// ---- layers ----

TEST_F(ModelLines, ALayerMayBeMirrored) {
    const ModelPtr model = load_good("layer a 10 20 30 singlesided mirror x\n");
    EXPECT_EQ(layer(model).colour[0], 10);
    EXPECT_EQ(layer(model).colour[1], 20);
    EXPECT_EQ(layer(model).colour[2], 30);
    EXPECT_EQ(layer(model).singlesided, 1);
    EXPECT_EQ(layer(model).mirror, 1);
    EXPECT_EQ(layer(model).mirror_axis, AXIS_X);
}

TEST_F(ModelLines, ALayerWithoutAMirrorHasTheFirstAxis) {
    for (const char* line : {"layer a 10 20 30 doublesided", "layer a 1 2 3 SINGLESIDED mirror",
                             "layer a 1 2 3 x mirror z more", "layer a 1 2 3 x mirrored z"}) {
        const ModelPtr model = load_good(std::string(line) + "\n");
        EXPECT_EQ(layer(model).singlesided, 0) << line;
        EXPECT_EQ(layer(model).mirror, 0) << line;
        EXPECT_EQ(layer(model).mirror_axis, AXIS_X) << line;
    }
}

TEST_F(ModelLines, AllAxisWords) {
    const char* words[] = {"x", "y", "z", "-x", "-y", "-z"};
    for (int code = 1; code <= 6; ++code) {
        const ModelPtr model = load_good("layer a 1 2 3 x mirror " + std::string(words[code - 1]) + "\n");
        EXPECT_EQ(layer(model).mirror_axis, code);
    }
}

TEST_F(ModelLines, ALayerNameMayHoldBlanks) {
    const ModelPtr model = load_good("layer \"left arm\" 1 2 3 x\n" + FOUR_POINTS + "triangles\n0 1 2 3\n");
    EXPECT_EQ(list_count(&layer(model, "left arm").triangles), 1);
}

TEST_F(ModelLines, BadLayersFail) {
    expect_error("layer a 1 2 3\n", "Bad layer definition", 1);
    expect_error(LAYER + LAYER, "duplicate layer name not allowed", 2);
}

// Adding the layer clears the text of the bad axis word: intended.
TEST_F(ModelLines, ABadMirrorAxisFailsWithoutAText) { expect_silent_failure("layer a 1 2 3 x mirror q\n"); }

TEST_F(ModelLines, ALayerWithALongNameIsNotFoundAgain) {
    const std::string name(40, 'n');
    expect_error(FOUR_POINTS + "layer " + name + " 1 2 3 x\ntriangles\n0 1 2 3\n", "layer does not exist", 8);
    EXPECT_EQ(model_count_layers(load_good("layer " + name + " 1 2 3 x\n").get()), 1);
}

TEST_F(ModelLines, TransparencyAndInvisibleWorkOnTheCurrentLayer) {
    const ModelPtr model = load_good("layer b 1 2 3 x\n" + LAYER + "transparency 0.25\ninvisible 1.0 0 0.5\n");
    EXPECT_EQ(layer(model).transparency, 0.25f);
    EXPECT_EQ(layer(model).invisible, 1);
    EXPECT_EQ(layer(model).invisible_colour[0], 255);
    EXPECT_EQ(layer(model).invisible_colour[1], 0);
    EXPECT_EQ(layer(model).invisible_colour[2], 127);
    EXPECT_EQ(layer(model, "b").invisible, 0);
}

TEST_F(ModelLines, BadTransparencyFails) {
    expect_error(LAYER + "transparency\n", "Bad transparency data", 2);
    expect_error(LAYER + "transparency 0 0\n", "Bad transparency data", 2);
    expect_error("transparency 0\n", "layer does not exist", 1);
    expect_silent_failure(LAYER + "transparency 1.5\n");
    expect_silent_failure(LAYER + "transparency -0.1\n");
}

TEST_F(ModelLines, BadInvisibleFails) {
    expect_error(LAYER + "invisible 0 0\n", "Bad invisible data", 2);
    expect_error(LAYER + "invisible 0 0 0 0\n", "Bad invisible data", 2);
    expect_error(LAYER + "invisible 0 2 0\n", "invisible color out of range (should be 0.0 to 1.0)", 2);
    expect_error("invisible 0 0 0\n", "layer does not exist", 1);
}

// ---- images ----

TEST_F(ModelLines, AnImageLineAttachesAnImage) {
    const ModelPtr model =
        load_good(TRIANGLE + "image a.tga -x z\nmirrorimage a.tga ignored words\nreflect a.tga 0.5\n");
    const LayerImage& image = *layer_first_image(&layer(model));
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
        EXPECT_STREQ(image.names[slot], "a.tga");
        EXPECT_NE(image.pixels[slot], nullptr);
    }
    EXPECT_EQ(image.reflection, 0.5f);
    EXPECT_EQ(layer(model).image_axis_u, AXIS_MINUS_X);
    EXPECT_EQ(layer(model).image_axis_v, AXIS_Z);
    EXPECT_EQ(layer(model).image_repeat, 0);
    EXPECT_EQ(image_find(dir.file("a.tga").c_str())->ref_count, 3);
}

TEST_F(ModelLines, RepeatFactorsUpTo128AreTaken) {
    const ModelPtr model = load_good(TRIANGLE + "image a.tga x y repeat -128 128.0 more\n");
    EXPECT_EQ(layer(model).image_repeat, 1);
    EXPECT_EQ(layer(model).repeat_u, -128.0f);
    EXPECT_EQ(layer(model).repeat_v, 128.0f);
}

TEST_F(ModelLines, BadImageLinesFail) {
    const int line = lines_in(TRIANGLE) + 1;
    const char* const bad_lines[] = {"image",
                                     "image a.tga",
                                     "image a.tga x",
                                     "image a.tga x y repeat",
                                     "image a.tga x y repeat 1",
                                     "image a.tga x y again 1 1",
                                     "image a.tga x y repeat 1000 1",
                                     "image a.tga x y repeat 1 -128.1",
                                     "image a.tga x y 1 1",
                                     "mirrorimage"};
    for (const char* bad : bad_lines) { expect_error(TRIANGLE + bad + "\n", "Bad image definition", line); }
    expect_error(TRIANGLE + "image a.tga x y repeat " + std::string(60, '9') + ".0 1\n", "Bad image definition", line);
    expect_error(TRIANGLE + "image a.tga q y\n", "Bad image axis definition", line);
    expect_error(TRIANGLE + "image a.tga x X\n", "Bad image axis definition", line);
    expect_error(TRIANGLE + "reflect a.tga\n", "Bad reflection map definition", line);
    expect_error("image a.tga x y\n", "layer does not exist", 1);
}

// The line is carried out to its end, so that the later failure is the one that is told: intended.
TEST_F(ModelLines, ABadAxisOfAMissingImageLeavesTheTextOfTheImage) {
    expect_error(TRIANGLE + "image none.tga q y\n", "cannot open TGA file: " + dir.file("none.tga"),
                 lines_in(TRIANGLE) + 1);
}

TEST_F(ModelLines, AMissingImageFailsTheLoad) {
    for (const char* statement :
         {"image none.tga x y", "mirrorimage none.tga", "reflect none.tga 0.5", "image none.tga x y repeat 2 2"}) {
        expect_error(TRIANGLE + statement + "\n", "cannot open TGA file: " + dir.file("none.tga"),
                     lines_in(TRIANGLE) + 1);
    }
}

TEST_F(ModelLines, AnImageCalledNoneFailsWithoutAText) {
    expect_silent_failure(TRIANGLE + "image none x y\n");
    expect_silent_failure(TRIANGLE + "image none x y repeat 2 2\n");
    expect_silent_failure(TRIANGLE + "mirrorimage none\n");
}

TEST_F(ModelLines, AReflectionMapCalledNoneIsAFile) {
    expect_error(TRIANGLE + "reflect none 0.5\n", "cannot open TGA file: " + dir.file("none"), lines_in(TRIANGLE) + 1);
}

TEST_F(ModelLines, AReflectionStrengthOutsideZeroToOneFailsWithoutAText) {
    expect_silent_failure(TRIANGLE + "reflect a.tga 1.5\n");
    expect_silent_failure(TRIANGLE + "reflect a.tga -0.5\n");
}

TEST_F(ModelLines, AnImageBeforeTheTrianglesOfItsLayerFailsWithoutAText) {
    expect_silent_failure(LAYER + "image a.tga x y\n");
}

TEST_F(ModelLines, AnImageLineThatFailsStillScalesWithoutHanging) {
    const ModelPtr model(model_create(dir.file("m.mod").c_str(), nullptr));
    EXPECT_EQ(model_read_data(model.get(), (TRIANGLE + "image none.tga x y repeat -128 -128\n").c_str()), 0);
    EXPECT_EQ(model_read_data(model.get(), "image a.tga x y repeat -999999999 1\n"), 0);
    EXPECT_EQ(layer(model).repeat_u, -128.0f) << "kept behind the failed image";
}

// ---- joints and children ----

TEST_F(ModelLines, JointLines) {
    const ModelPtr model = load_good("joint hip 1 -2 3 world 4\njoint knee 4.5 5 6 hip 7\n");
    const Joint& knee = *model_find_joint(model.get(), "knee");
    EXPECT_EQ(knee.position.x, 0.0f);
    EXPECT_EQ(knee.position.y, 5.0f);
    EXPECT_STREQ(knee.parent_name, "hip");
    EXPECT_EQ(knee.point_count, 7);
    EXPECT_EQ(model_find_joint(model.get(), "hip")->position.y, -2.0f);
}

TEST_F(ModelLines, BadJointsFail) {
    expect_error("joint hip 1 2 3 world\n", "Bad joint definition", 1);
    expect_error("joint hip 1 2 3 world 4 5\n", "Bad joint definition", 1);
    expect_error("joint hip 1 2 3 world 0\njoint hip 1 2 3 world 0\n", "duplicate joint name not allowed", 2);
    expect_error("joint hip 1 2 3 hip 0\n", "Bad joint parent", 1);
    expect_error("blend a b\n", "Bad blend definition", 1);
    expect_error("blend a b 1 2\n", "Bad blend definition", 1);
    expect_silent_failure("blend a b 0\n");
    expect_silent_failure("blend a b -1\n");
}

TEST_F(ModelLines, BadChildLinesFail) {
    expect_error("child wing 0 0 0 1 1 1 0 0\n", "Bad child data", 1);
    expect_error("child wing 0 0 0 1 1 1 0 0 0 0\n", "Bad child data", 1);
    expect_error("child wing 0 0 0 1 one 1 0 0 0\n", "Bad child data", 1);
    expect_error("child wing 0 0 0 1 1 1 0 abc 0\n", "Bad child data", 1);
}

TEST_F(ModelLines, ABadRotationStillAddsTheLink) {
    const ModelPtr model(model_create("m.mod", nullptr));
    EXPECT_EQ(model_read_data(model.get(), "child wing 0 0 0 1 1 1 0 abc 0\n"), 0);
    ASSERT_EQ(list_count(&model->children), 1);
    EXPECT_EQ(link(model).model, nullptr);
    EXPECT_EQ(model_read_data(model.get(), "child wing 0 0 0 1 one 1 0 0 0\n"), 0);
    EXPECT_EQ(list_count(&model->children), 1);
}

TEST_F(ModelLines, ARotationTextIsCutToSevenCharacters) {
    const ModelPtr model(model_create("m.mod", nullptr));
    EXPECT_EQ(model_read_data(model.get(), "child wing 0 0 0 1 1 1 x123456789 1234567q 0\n"), 1) << error();
    EXPECT_STREQ(link(model).rotate[0], "x123456");
    EXPECT_STREQ(link(model).rotate[1], "1234567");
}

}  // namespace
}  // namespace pelt
