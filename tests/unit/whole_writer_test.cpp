// Every model that the reader makes is written so that it reads back as the same model; what no file can hold is
// refused by name.
#include "formats/whole_writer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "formats/layer_image.h"
#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "formats/spelled_normal.h"
#include "formats/whole_layout.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "support/model_text.h"
#include "support/random_model_text.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;
using test::TempDir;

constexpr const char* POINTS = "points\n1 0 0 0\n2 100 0 0\n3 0 100 50\n4 100 100 50\n";

class WholeWriter : public testing::Test {
protected:
    WholeWriter() {
        for (const char* name : {"a.tga", "b.tga", "a b.tga"}) { dir.write(name, test::solid_tga(2, 2, 1, 2, 3)); }
        dir.write("wing.mod", "");
    }
    OwnedModel read(const std::string& text) {
        OwnedModel model = test::read_model(dir, "model.mod", text);
        EXPECT_NE(model, nullptr) << load_error_get() << "\n" << text;
        return model;
    }
    std::string written(const Model* model) {
        std::string refused;
        const std::string text = model_write_whole(model, "again.mod", &refused);
        EXPECT_EQ(refused, "") << test::told(model);
        return text;
    }
    // The text of the model, which a file of it and the text in memory both read back to.
    std::string written_back(const Model* model) {
        const std::string text = written(model);
        const OwnedModel again = test::read_model(dir, "again.mod", text);
        EXPECT_NE(again, nullptr) << load_error_get() << "\n" << text;
        if (again != nullptr) { EXPECT_EQ(model_difference(model, again.get()), "") << text; }
        std::string refused;
        const OwnedModel in_memory(model_read_back(text, model, &refused));
        EXPECT_EQ(refused, "");
        if (in_memory != nullptr) { EXPECT_EQ(model_difference(model, in_memory.get()), "") << text; }
        return text;
    }
    std::string written_back(const std::string& lines) { return written_back(read(lines).get()); }
    std::string refusal(const Model* model) {
        std::string refused;
        EXPECT_EQ(model_write_whole(model, "again.mod", &refused), "");
        return refused;
    }

    TempDir dir;
};

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// ---- what comes back ----

TEST_F(WholeWriter, AnEmptyModelIsItsHeading) {
    EXPECT_EQ(written_back(""), "#\n# model: again.mod\n#\n");
    EXPECT_EQ(refusal(nullptr), "no model");
    EXPECT_EQ(model_write_whole(nullptr, "again.mod", nullptr), "");
}

TEST_F(WholeWriter, WhatTheOtherWriterLoses) {
    written_back(std::string("joint hip 0 0 1 world 1\njoint knee 0 0 2 hip 0\nblend hip knee 1\n") +
                 "points\n1 0 0 0 0.5\n2 1 0 0\n3 0 1 0 0.1 knee hip\n4 1 1 0 0.25\n"
                 "layer \"two words\" 1 2 3 singlesided mirror -y\ntransparency 0.123456\ninvisible 0.2 0.3 1\n"
                 "triangles\n0 1 2 3 1 2 4\n4 1 2 3 4 2\n4 1 2 3 4 2 4 3 2 1\n3 1 2 3 4\n3 1 2 3 1 3 2 1 1 2 3 4 1 2\n"
                 "image a.tga x -z repeat 2.5 -128\nmirrorimage \"a b.tga\"\nreflect b.tga 0.3\n"
                 "layer empty 1 2 3 doublesided\nlayer uvees 1 2 3 x\nuvees\n4 0.1 -1e5\n2 0.333333 7\n");
}

TEST_F(WholeWriter, AModelWithoutNormalsOrColoursGainsNone) {
    const std::string text = written_back(POINTS);
    EXPECT_FALSE(holds(text, "normals"));
    EXPECT_FALSE(holds(text, "gouraud"));
}

TEST_F(WholeWriter, APointThatANormalAloneMadeHasNoWeight) {
    const std::string text = written_back("normals\n7 1 2 3\n");
    EXPECT_TRUE(holds(text, "\n7         0     0     0   0\n")) << text;
}

TEST_F(WholeWriter, WeightsColoursAndPlacesAtTheirEnds) {
    written_back(
        "points\n1 2147483647 -2147483648 16777217 9\n2 0 0 0 -7\n2147483647 1 1 1 0.1\n5 1 1 1 -0.0\n"
        "gouraud\n1 300 -1 256 255\n");
}

TEST_F(WholeWriter, NumbersReadBackToTheSameFloat) {
    std::mt19937 random(20);
    std::string uvees = POINTS;
    uvees += "layer a 1 2 3 x\nuvees\n";
    std::vector<float> values{0.1f,
                              1e-45f,
                              std::numeric_limits<float>::max(),
                              std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(),
                              16777216.0f,
                              33554432.0f,
                              -0.0f};
    while (values.size() < 5000) {
        const float value = std::bit_cast<float>(static_cast<uint32_t>(random()));
        if (!std::isnan(value)) { values.push_back(value); }
    }
    const OwnedModel model = read("points\n1 0 0 0\nlayer a 1 2 3 x\n");
    for (size_t i = 0; i < values.size(); ++i) {
        const auto id = static_cast<int32_t>(i + 1);
        model_set_point(model.get(), id, 0, 0, 0, 1.0f);
        ASSERT_TRUE(model_add_uvee(model.get(), "a", id, values[i], -values[i]));
    }
    const OwnedModel again = test::read_model(dir, "again.mod", written(model.get()));
    const Layer* layer = model_find_layer(again.get(), "a");
    for (size_t i = 0; i < values.size(); ++i) {
        const Uvee* uvee = list_find<Uvee>(&layer->uvees, static_cast<int32_t>(i + 1));
        EXPECT_EQ(std::bit_cast<uint32_t>(uvee->u), std::bit_cast<uint32_t>(values[i])) << values[i];
        EXPECT_EQ(uvee->v, -values[i]);
    }
}

TEST_F(WholeWriter, NormalsComeBackToTheLastPlace) {
    std::mt19937 random(21);
    std::normal_distribution<float> spread;
    int exact = 0;
    constexpr int COUNT = 20000;
    for (int i = 0; i < COUNT; ++i) {
        // One in ten of a length so great that its inverse is no full float.
        const float size = i % 10 == 0 ? 1e38f : 1.0f;
        Vec3 normal{spread(random) * size, spread(random) * size, i % 3 == 0 ? 0.0f : spread(random) * size};
        vec_normalise(&normal);
        if (!is_good_normal(normal)) { continue; }
        const SpelledNormal spelled = spell_normal(normal);
        ASSERT_TRUE(spelled.found) << normal.x << " " << normal.y << " " << normal.z;
        Vec3 read = spelled.written;
        vec_normalise(&read);
        ASSERT_TRUE(normals_match(read, normal));
        exact += read.x == normal.x && read.y == normal.y && read.z == normal.z;
    }
    EXPECT_GT(exact, COUNT * 9 / 10);
    EXPECT_FALSE(spell_normal(Vec3{0.5f, 0.0f, 0.5f}).found);
    EXPECT_FALSE(spell_normal(Vec3{0.0f, 0.0f, 0.0f}).found);
}

TEST_F(WholeWriter, EveryByteOfAColourKey) {
    for (int byte = 0; byte <= 255; ++byte) {
        const OwnedModel model = read("layer a 1 2 3 x\ninvisible 0 0 1\n");
        model_find_layer(model.get(), "a")->invisible_colour[0] = byte;
        written_back(model.get());
    }
}

TEST_F(WholeWriter, IdsAboveSixteenBits) {
    // Cut to 1, to 2 which is a point as well, to -25536, and above: whatever they stand for, it comes back.
    const std::string text = written_back(
        "points\n65537 1 0 0\n2 2 0 0\n65538 3 0 0\n40000 4 0 0\n131073 5 0 0\n"
        "layer a 1 2 3 x\ntriangles\n0 65537 65538 40000\n2 131073 2 40000 40000\n3 2 2 2 1 40000 65538 65537\n"
        "lines\n2 65537 65538 40000\nuvees\n40000 1 2\n");
    EXPECT_TRUE(holds(text, "\n0  65537    2 40000\n")) << text;
}

TEST_F(WholeWriter, AnImageStandsBeforeWhatItCannotBeMappedTo) {
    const std::string text = written_back(
        "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\n40000 1 1 1\nlayer a 1 2 3 x\ntriangles\n2 3 2 1\n0 1 2 3\n"
        "image a.tga x y\ntriangles\n0 1 2 40000\n0 3 2 1\n2 1 2 40000\n");
    EXPECT_LT(text.find("image"), text.find("40000\n")) << text;
}

TEST_F(WholeWriter, ImagesThatWereLoadedBeforeTheirKey) {
    const OwnedModel model = read(std::string(POINTS) +
                                  "layer a 1 2 3 x\ntriangles\n0 1 2 3\nimage a.tga x y\ninvisible 0 1 0\n"
                                  "mirrorimage b.tga\n");
    const std::string text = written_back(model.get());
    EXPECT_LT(text.find("image  a.tga"), text.find("invisible"));
    EXPECT_LT(text.find("invisible"), text.find("mirrorimage"));
}

TEST_F(WholeWriter, RepeatFactorsOutliveTheImageThatBroughtThem) {
    const std::string text = written_back(std::string(POINTS) +
                                          "layer a 1 2 3 x\ntriangles\n0 1 2 3\nimage a.tga x y repeat 2 3\n"
                                          "image b.tga z -x\n");
    EXPECT_TRUE(holds(text, "image  b.tga  z -x repeat 2 3\n")) << text;
}

TEST_F(WholeWriter, AnImageNameThatTheRecordHasNoRoomFor) {
    std::string name;
    while (name.size() < 140) { name += "./"; }
    const std::string text =
        written_back(std::string(POINTS) + "layer a 1 2 3 x\ntriangles\n0 1 2 3\nimage " + name + "a.tga x y\n");
    EXPECT_TRUE(holds(text, name + "a.tga")) << text;
}

TEST_F(WholeWriter, NamesOfEveryKind) {
    const std::string long_name(31, 'l');
    const std::string longer(40, 'm');
    written_back("joint a\"b 0 0 0 \"c d\" 1\njoint \"c d\" 0 0 0 world 0\njoint " + longer + " 1 2 3 " + longer +
                 "x 1\njoint " + longer + " 4 5 6 a\"b 1\njoint world 0 0 0 c 1\nblend a\"b \"c d\" 1\n" +
                 "points\n1 0 0 0\n2 0 0 0\n3 0 0 0\n4 0 0 0\n5 0 0 0\n6 0 0 0 0.5 \"c d\" a\"b\n" +
                 "layer x\"y 1 2 3 x\nlayer \"tab\tin it\" 1 2 3 x\ntriangles\n0 1 2 3\nlayer " + long_name +
                 " 1 2 3 x\ntriangles\n0 1 2 3\nlayer " + longer + " 4 5 6 x mirror z\nlayer " + longer +
                 " 7 8 9 x\nlayer r\re\r 1 2 3 x\nlayer \xFF\xFE 1 2 3 x\nlayer \"\r\" 1 2 3 x\n");
}

TEST_F(WholeWriter, AnImageNameThatEndsInAReturn) {
#ifdef _WIN32
    GTEST_SKIP() << "no file can be called so here";
#endif
    dir.write("c.tga\r", test::solid_tga(1, 1, 1, 2, 3));
    written_back("layer a 1 2 3 x\nmirrorimage \"c.tga\r\" \n");
}

TEST_F(WholeWriter, AParentThatIsCutToItsChildsOwnName) {
    for (const char* end : {"", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        const size_t bytes = std::string(end).size();
        const std::string name = std::string(bytes == 0 ? 127 : 128 - bytes, 'n');
        written_back("joint " + name + " 1 2 3 " + name + (bytes == 0 ? "x" : end) + " 1\npoints\n1 0 0 0\n");
    }
}

TEST_F(WholeWriter, CountsThatNoPointsAreLeftFor) {
    const std::string text = written_back(
        "joint a 0 0 0 world 2\njoint b 0 0 0 a 70\njoint c 0 0 0 gone -3\n"
        "blend a b 5\nblend gone nothing 2\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\n");
    EXPECT_TRUE(holds(text, "a         70\n")) << text;
}

TEST_F(WholeWriter, PointsThatWereGivenToOtherJointsAreLaidOutAnew) {
    const OwnedModel model = read(
        "joint a 0 0 0 world 1\njoint b 0 0 0 a 1\nblend a b 1\nblend b a 1\n"
        "points\n1 0 0 0\n2 0 0 0\n3 0 0 0\n4 0 0 0\n5 0 0 0\n");
    // Each point to the joints of the next, the first to a pair that no group has.
    model_set_point_joints(model.get(), 1, "a", "a");
    model_set_point_joints(model.get(), 2, "a", "b");
    model_set_point_joints(model.get(), 3, "a", "b");
    model_set_point_joints(model.get(), 4, nullptr, nullptr);
    model_set_point_joints(model.get(), 5, "b", "a");
    model_settle_counts(model.get());
    EXPECT_EQ(model_find_joint(model.get(), "a")->point_count, 0);
    EXPECT_EQ(model_find_joint(model.get(), "b")->point_count, 1);
    EXPECT_EQ(list_count(&model->blends), 1) << "the second has the pair of joint b";
    EXPECT_EQ(list_elements<BlendWeight>(model->blends).begin()->point_count, 2);
    written_back(model.get());
}

TEST_F(WholeWriter, SettledCountsAreThoseOfThePoints) {
    const OwnedModel model = read(
        "joint a 0 0 0 world 1\njoint b 0 0 0 a -2\nblend a b 9\nblend b a 4\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\n");
    model_settle_counts(model.get());
    EXPECT_EQ(model_find_joint(model.get(), "a")->point_count, 1);
    EXPECT_EQ(model_find_joint(model.get(), "b")->point_count, 0);
    ASSERT_EQ(list_count(&model->blends), 1);
    EXPECT_EQ(list_elements<BlendWeight>(model->blends).begin()->point_count, 2);
    written_back(model.get());
    model_settle_counts(nullptr);
}

TEST_F(WholeWriter, ChildrenComeBackByTheirLinks) {
    written_back(
        "child wing 1.5 -2 0.1 1 0.333333 99999999999999999999999999999999999999999.0 x30 -5.5 180\n"
        "child wing 0 0 0 1 1 1 0 0 z12.345\n");
}

TEST_F(WholeWriter, AnImageThatWentMissingStopsNothing) {
    dir.write("gone.tga", test::solid_tga(1, 1, 1, 2, 3));
    const OwnedModel model = read(std::string(POINTS) +
                                  "layer a 1 2 3 x\ntriangles\n0 1 2 3\nimage gone.tga z y\nmirrorimage gone.tga\n"
                                  "reflect gone.tga 0.5\n");
    std::filesystem::remove(dir.file("gone.tga"));
    model_delete_layer(model.get(), "nothing");
    const std::string text = written(model.get());
    layer_image_release_slot(layer_first_image(model_find_layer(model.get(), "a")), IMAGE_SLOT_BASE);
    std::string refused;
    const OwnedModel again(model_read_back(text, model.get(), &refused));
    EXPECT_EQ(refused, "");
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(model_difference(model.get(), again.get()), "");
}

TEST_F(WholeWriter, ReadingBackTellsTheLineThatIsRefused) {
    const OwnedModel model = read(POINTS);
    std::string refused;
    EXPECT_EQ(model_read_back("points\n\n1 2\n", model.get(), &refused), nullptr);
    EXPECT_EQ(refused, "line 3: Bad point definition");
    EXPECT_EQ(model_read_back("normals\n3 0 0 0\n", model.get(), &refused), nullptr);
    EXPECT_EQ(refused, "(model.mod) bad normal: 3");
    EXPECT_EQ(model_read_back("", nullptr, &refused), nullptr);
}

// ---- what is refused ----

TEST_F(WholeWriter, RefusesWhatAPointCannotBe) {
    const OwnedModel model = read(POINTS);
    Point* point = model_find_point(model.get(), 3);
    point->position.y = 1.5f;
    EXPECT_EQ(refusal(model.get()), "point 3: its place lies between whole numbers, or beyond them: 1.500");
    point->position.y = 1.0f;
    point->weight = 2.5f;
    EXPECT_EQ(refusal(model.get()), "point 3: its weight lies outside -1 to 2");
    point->weight = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(refusal(model.get()), "point 3: its weight lies outside -1 to 2");
    point->weight = 1.0f;
    point->normal = Vec3{1.0f, 0.0f, 0.0f};
    EXPECT_EQ(refusal(model.get()), "point 3: is in normals, of which the model has none");
    model->has_normals = 1;
    written_back(model.get());
    point->normal = Vec3{0.5f, 0.0f, 0.0f};
    EXPECT_EQ(refusal(model.get()), "point 3: its normal is not of length 1");
    point->normal = Vec3{0.0f, 0.0f, 1.0f};
    point->gouraud[1] = 128;
    EXPECT_EQ(refusal(model.get()), "point 3: is in gouraud, of which the model has none");
}

TEST_F(WholeWriter, RefusesFlagsWithoutPoints) {
    const OwnedModel model = read("");
    model->has_gouraud = 1;
    EXPECT_EQ(refusal(model.get()), "the model has gouraud and no points");
}

TEST_F(WholeWriter, RefusesWhatALayerCannotBe) {
    const std::string text = std::string(POINTS) + "layer a 1 2 3 x\ntriangles\n0 1 2 3\nimage a.tga x y repeat 1 1\n";
    const auto refused_with = [&](auto change) {
        const OwnedModel model = read(text);
        change(*model_find_layer(model.get(), "a"));
        return refusal(model.get());
    };
    EXPECT_EQ(refused_with([](Layer& layer) { layer.transparency = 1.5f; }), "layer a: a transparency outside 0 to 1");
    EXPECT_EQ(refused_with([](Layer& layer) { layer.image_axis_v = 0; }), "layer a: an image without axes");
    EXPECT_EQ(refused_with([](Layer& layer) { layer.repeat_u = -129.0f; }),
              "layer a: a repeat factor outside -128 to 128");
    EXPECT_EQ(refused_with([](Layer& layer) {
                  layer.mirror = 1;
                  layer.mirror_axis = 7;
              }),
              "layer a: a mirror axis of none");
    EXPECT_EQ(refused_with([](Layer& layer) {
                  layer.invisible = 1;
                  layer.invisible_colour[2] = 256;
              }),
              "layer a: a colour key outside 0 to 255");
    EXPECT_EQ(refused_with([](Layer& layer) { list_clear(&layer.triangles); }),
              "layer a: an image and nothing that it could be mapped to");
    EXPECT_EQ(refused_with([](Layer& layer) { str_copy("none", layer_first_image(&layer)->names[1]); }),
              "layer a: an image called none");
    EXPECT_EQ(refused_with([](Layer& layer) { list_elements<Triangle>(layer.triangles).begin()->points[1] = 9; }),
              "layer a: names point 9, which is none of the model");
    EXPECT_EQ(refused_with([](Layer& layer) { list_elements<Triangle>(layer.triangles).begin()->curve_type = 5; }),
              "layer a: a curve type of 5");
}

TEST_F(WholeWriter, RefusesNamesThatReadAsSomethingElse) {
    const OwnedModel model = read("layer a 1 2 3 x\n");
    Layer* layer = model_find_layer(model.get(), "a");
    str_copy("", layer->name);
    EXPECT_EQ(refusal(model.get()), "layer : a name is empty");
    str_copy("a \"b", layer->name);
    EXPECT_EQ(refusal(model.get()), "layer a \"b: a name that needs quotes and has one in it: a \"b");
    str_copy("a\nb", layer->name);
    EXPECT_EQ(refusal(model.get()), "layer a\nb: a name with a line end in it");
    str_copy("32 bytes, which are one too many", layer->name);
    layer->transparency = 0.5f;
    EXPECT_EQ(refusal(model.get()), "layer 32 bytes, which are one too many: a name of more than 31 bytes");
    layer->transparency = 0.0f;
    written_back(model.get());
}

TEST_F(WholeWriter, RefusesMoreThanALineHolds) {
    const OwnedModel model = read(std::string(POINTS) + "layer a 1 2 3 x\n");
    std::vector<int32_t> ids(255, 1);
    ASSERT_TRUE(model_add_polygon(model.get(), "a", 255, ids.data(), nullptr));
    ASSERT_TRUE(model_add_line(model.get(), "a", 255, ids.data()));
    written_back(model.get());
    ids.push_back(1);
    ASSERT_TRUE(model_add_line(model.get(), "a", 256, ids.data()));
    EXPECT_EQ(refusal(model.get()), "layer a: 256 corners, where a line of the file takes 1 to 255");
    const OwnedModel wide = read("points\n30000 0 0 0\nlayer a 1 2 3 x\n");
    ids.assign(170, 30000);
    ASSERT_TRUE(model_add_polygon(wide.get(), "a", 170, ids.data(), nullptr));
    written_back(wide.get());
    ids.push_back(30000);
    ASSERT_TRUE(model_add_polygon(wide.get(), "a", 171, ids.data(), nullptr));
    EXPECT_EQ(refusal(wide.get()), "layer a: a line of the file holds 1023 bytes, and its own has 1027");
    const OwnedModel normals = read(std::string(POINTS) + "layer a 1 2 3 x\n");
    const int32_t corners[] = {1, 2, 3};
    const int32_t others[] = {1, 2, 4};
    ASSERT_TRUE(model_add_polygon(normals.get(), "a", 3, corners, others));
    EXPECT_EQ(refusal(normals.get()), "layer a: normals of their own at the corners of a polygon");
}

TEST_F(WholeWriter, RefusesTextureCoordinatesThatAreNoNumbers) {
    const OwnedModel model = read(std::string(POINTS) + "layer a 1 2 3 x\n");
    model_add_uvee(model.get(), "a", 2, std::numeric_limits<float>::quiet_NaN(), 0.0f);
    EXPECT_EQ(refusal(model.get()), "layer a: texture coordinates of point 2: not a number");
    const OwnedModel lost = read(std::string(POINTS) + "layer a 1 2 3 x\nuvees\n2 0 0\n");
    model_remove_point(lost.get(), 2);
    EXPECT_EQ(refusal(lost.get()), "layer a: texture coordinates of point 2: it is none of the model");
}

TEST_F(WholeWriter, RefusesPointsOfChildren) {
    dir.write("wing.mod", "points\n77 0 0 0\n");
    const OwnedModel model = read(std::string(POINTS) + "layer a 1 2 3 x\nchild wing 0 0 0 1 1 1 0 0 0\n");
    const int32_t ids[] = {1, 77};
    ASSERT_TRUE(model_add_line(model.get(), "a", 2, ids));
    EXPECT_EQ(refusal(model.get()), "layer a: names point 77, which is none of the model");
}

TEST_F(WholeWriter, RefusesJointsThatNoLineCanName) {
    const OwnedModel model = read("joint world 0 0 0 x 1\njoint b 0 0 0 world 1\npoints\n1 0 0 0\n2 0 0 0\n");
    Point* point = model_find_point(model.get(), 2);
    point->joint_b = model_find_point(model.get(), 1)->joint_a;
    EXPECT_EQ(refusal(model.get()), "point 2: follows joint world, which no line can name");
    const OwnedModel own = read("joint b 0 0 0 world 0\n");
    str_copy("b", model_find_joint(own.get(), "b")->parent_name);
    EXPECT_EQ(refusal(own.get()), "joint b: is its own parent");
    const OwnedModel child = read("child wing 0 0 0 1 1 1 0 0 0\n");
    str_copy("1e5", list_elements<ChildLink>(child->children).begin()->rotate[1]);
    EXPECT_EQ(refusal(child.get()), "child wing: a rotation that is none");
}

// ---- models by chance ----

TEST_F(WholeWriter, RandomModelsComeBack) {
    constexpr int COUNT = 2500;
    test::RandomModelText texts(18);
    int loaded = 0;
    for (int i = 0; i < COUNT && !HasFailure(); ++i) {
        const std::string text = texts.next();
        const OwnedModel model = test::read_model(dir, "model.mod", text);
        if (model == nullptr) { continue; }
        ++loaded;
        written_back(model.get());
        if (HasFailure()) { ADD_FAILURE() << "of model " << i << "\n" << text; }
    }
    EXPECT_GT(loaded, COUNT / 4) << "most are refused by the reader, and nothing is tried";
}

TEST_F(WholeWriter, TheSampleModelsComeBack) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(PELT_SOURCE_DIR "/models")) {
        if (entry.path().extension() != ".mod") { continue; }
        const OwnedModel model(model_load(test::name_of(entry.path()).c_str()));
        ASSERT_NE(model, nullptr) << entry.path();
        std::string refused;
        const OwnedModel again(model_read_back(written(model.get()), model.get(), &refused));
        EXPECT_EQ(refused, "") << entry.path();
        EXPECT_EQ(model_difference(model.get(), again.get()), "") << entry.path();
        ++count;
    }
    EXPECT_GE(count, 9);
}

}  // namespace
}  // namespace pelt
