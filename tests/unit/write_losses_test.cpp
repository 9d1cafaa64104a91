// What the writer loses on a model is told, kind by kind; and what survives is not.
#include "tools/write_losses.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/load_error.h"
#include "support/model_text.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;
using test::TempDir;

constexpr const char* FOUR_POINTS =
    "points\n1 0 0 0\n2 100 0 0\n3 0 100 50\n4 100 100 50\n"
    "normals\n1 0 0 1\n2 1 0 0\n3 0 1 0\n4 0 0 -1\n";

class WriteLosses : public testing::Test {
protected:
    WriteLosses() {
        for (const char* name : {"a.tga", "r.tga", "a b.tga"}) { dir.write(name, test::solid_tga(1, 1, 1, 2, 3)); }
        dir.write("wing.mod", "");
    }
    OwnedModel read(const std::string& text) {
        OwnedModel model = test::read_model(dir, "model.mod", text);
        EXPECT_NE(model, nullptr) << load_error_get();
        return model;
    }
    // The one loss of the model behind four points and these lines, whose file reads back or does not as is told.
    std::string only_loss(const std::string& lines) { return only_loss(read(FOUR_POINTS + lines)); }
    std::string only_loss(const OwnedModel& model) {
        const std::vector<WriteLoss> losses = model_write_losses(model.get());
        if (losses.size() != 1) {
            std::string all = std::to_string(losses.size()) + " losses:";
            for (const WriteLoss& loss : losses) { all += "\n" + loss.text; }
            return all;
        }
        const bool reads_back = test::write_and_read(dir, model.get()) != nullptr;
        EXPECT_EQ(reads_back, !losses[0].unreadable) << losses[0].text;
        return losses[0].text;
    }

    TempDir dir;
};

constexpr const char* LAYER = "layer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n";

TEST_F(WriteLosses, AModelThatSurvivesHasNone) {
    const OwnedModel model = read(std::string("joint j 1 2 3 world 2\njoint k 4 5 6 j 1\n") + FOUR_POINTS +
                                  "gouraud\n1 1 2 3 4\nlayer a 1 2 3 doublesided mirror x\ntransparency 0.25\n"
                                  "triangles\n0 1 2 3\n1 1 2 3 4 4 3 2 1\n2 1 2 3 4\n3 1 2 3 2 4 1 2\n4 1 2 3 4\n"
                                  "uvees\n1 0.5 0.25\nimage a.tga x y\nmirrorimage r.tga\nlines\n2 1 2\n"
                                  "child wing 1.0 2.0 3.0 1.5 1 1 0 0 90\n");
    EXPECT_EQ(model_write_losses(model.get()).size(), 0u) << model_write_losses(model.get())[0].text;
    EXPECT_TRUE(model_write_losses(nullptr).empty());
}

TEST_F(WriteLosses, ColourKeys) {
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ninvisible 1.0 0 0.5\ntriangles\n0 1 2 3\n"),
              "layer a: the colour key 255 0 127 comes out in bytes, where the reader wants 0.0 to 1.0");
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ninvisible 0.005 0 0\ntriangles\n0 1 2 3\n"),
              "layer a: the colour key 1 0 0 comes out in bytes and reads back as another colour");
}

TEST_F(WriteLosses, CurveTypes) {
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ntriangles\n4 1 2 3 4 2\n3 1 2 3 4\n"),
              "layer a: curve type lost: 2 curved primitives");
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ntriangles\n4 1 2 3 4 4 2 1 3 4\n"),
              "layer a: 1 curved primitive with normals or controls of their own come out without their curve type, "
              "which shifts what follows");
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ntriangles\n3 1 2 3 4 1 2 3 4 2 2 3 3 1\n").substr(0, 9),
              "layer a: ");
}

TEST_F(WriteLosses, BlendGroups) {
    const OwnedModel model = read(
        "joint a 0 0 0 world 1\njoint b 0 0 0 a 1\nblend a b 1\n"
        "points\n1 0 0 0\n2 0 0 0\n3 0 0 0\nnormals\n1 0 0 1\n");
    const std::vector<WriteLoss> losses = model_write_losses(model.get());
    ASSERT_EQ(losses.size(), 2u);
    EXPECT_EQ(losses[0].text, "not written, their points keep the first joint alone: 1 blend group");
    EXPECT_EQ(losses[1].text, "joint a counts 1 points and 2 name it: points are given to other joints");
}

TEST_F(WriteLosses, SecondJoints) {
    EXPECT_EQ(only_loss(read("joint b 0 0 0 world 0\npoints\n1 0 0 0\n5 1 2 3 1.0 world b\nnormals\n1 0 0 1\n")),
              "second joint of their own lost: 1 point (first: 5)");
}

TEST_F(WriteLosses, WeightsOfWorldPoints) {
    EXPECT_EQ(only_loss(read("points\n1 0 0 0\n7 0 0 0 0.5\n9 0 0 0 2.0\nnormals\n1 0 0 1\n")),
              "weight lost, it reads back as 1: 2 world points (first: 7)");
}

TEST_F(WriteLosses, ReflectionMapsAndRepeatFactors) {
    EXPECT_EQ(only_loss(std::string(LAYER) + "image a.tga x y\nreflect r.tga 0.5\n"),
              "layer a: the reflection map r.tga is not written");
    EXPECT_EQ(only_loss(std::string(LAYER) + "image a.tga x y repeat 2 2\n"),
              "layer a: the repeat factors of the image are not written");
    EXPECT_EQ(
        model_write_losses(
            read(FOUR_POINTS + std::string(LAYER) + "uvees\n1 0 0\n2 0 1\n3 1 1\nimage a.tga x y repeat 2 2\n").get())
            .size(),
        0u)
        << "where every corner has coordinates of its own, the factors act on nothing";
}

TEST_F(WriteLosses, AnImageRecordWithoutAnImage) {
    const OwnedModel model = read(FOUR_POINTS + std::string(LAYER) + "reflect r.tga 0.5\n");
    const std::vector<WriteLoss> losses = model_write_losses(model.get());
    ASSERT_EQ(losses.size(), 2u);
    EXPECT_EQ(losses[1].text, "layer a: its image line comes out without a file name");
    EXPECT_TRUE(losses[1].unreadable);
    EXPECT_EQ(test::write_and_read(dir, model.get()), nullptr);
}

TEST_F(WriteLosses, AModelWithoutNormals) {
    EXPECT_EQ(only_loss(read("points\n1 0 0 0\n")),
              "the model has no normals and gains the default one for every point");
}

TEST_F(WriteLosses, NormalsThatTheReaderRefuses) {
    const OwnedModel model = read(std::string(FOUR_POINTS) + LAYER);
    model_set_normal(model.get(), 3, 0, 0, 0);  // as of a face whose corners lie on one line
    EXPECT_EQ(only_loss(model), "a normal of no length or direction: 1 point (first: 3)");
    model_find_point(model.get(), 3)->normal = Vec3{0.0f, 0.0004f, 0.0f};
    EXPECT_EQ(only_loss(model), "a normal of no length or direction: 1 point (first: 3)");
    model_find_point(model.get(), 3)->normal = Vec3{0.0f, 0.0006f, 0.0f};
    EXPECT_EQ(only_loss(model), "rounded: 1 normal to 3 decimals");
}

TEST_F(WriteLosses, Fractions) {
    const OwnedModel model = read(FOUR_POINTS);
    model_find_point(model.get(), 3)->position.x = 0.5f;
    EXPECT_EQ(only_loss(model), "fractions of the position lost: 1 point (first: 3)");
    EXPECT_EQ(only_loss("child wing 1.5 0 0 1 1 1 0 0 0\n"), "child wing loses the fractions of its position");
}

TEST_F(WriteLosses, EmptyLayers) {
    EXPECT_EQ(only_loss("layer none 1 2 3 singlesided\n"), "layer none: has no triangle and no line and is left out");
}

TEST_F(WriteLosses, NormalsOfCorners) {
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ntriangles\n0 1 2 3 1 4 4\n"),
              "layer a: normals of their own lost, because the first corner has none: 1 triangle");
    const OwnedModel model = read(FOUR_POINTS + std::string("layer a 1 2 3 singlesided\n"));
    const int32_t points[] = {1, 2, 3};
    const int32_t normals[] = {4, 2, 4};
    model_add_polygon(model.get(), "a", 3, points, normals);
    EXPECT_EQ(only_loss(model), "layer a: normals of their own lost: 2 polygon corners");
}

TEST_F(WriteLosses, CountsOfJoints) {
    const OwnedModel model = read(std::string("joint j 0 0 0 world 2\n") + FOUR_POINTS);
    model_find_joint(model.get(), "j")->point_count = 1;
    EXPECT_EQ(only_loss(model), "joint j counts 1 points and 2 name it: points are given to other joints");
}

TEST_F(WriteLosses, NamesWithBlanks) {
    const std::string reason =
        ": a name that is empty or holds blanks comes out without quotes and is read as something else";
    const auto first_loss = [&](const std::string& lines) { return model_write_losses(read(lines).get()).at(0).text; };
    EXPECT_EQ(first_loss("joint \"left arm\" 0 0 0 world 0\n"), "joint \"left arm\"" + reason);
    EXPECT_EQ(first_loss("joint a 0 0 0 \"left arm\" 0\n"), "parent joint \"left arm\"" + reason);
    EXPECT_EQ(first_loss(FOUR_POINTS + std::string("layer \"a\tb\" 1 2 3 singlesided\ntriangles\n0 1 2 3\n")),
              "layer \"a\tb\"" + reason);
    EXPECT_EQ(first_loss(FOUR_POINTS + std::string(LAYER) + "image \"a b.tga\" x y\n"), "image \"a b.tga\"" + reason);
    dir.write("left wing.mod", "");
    EXPECT_EQ(first_loss("child \"left wing\" 0 0 0 1 1 1 0 0 0\n"), "child \"left wing\"" + reason);
}

TEST_F(WriteLosses, Rounding) {
    EXPECT_EQ(only_loss("child wing 0 0 0 1.0005 1 1 0 0 0\n"), "rounded: 1 child scale to 3 decimals");
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\ntransparency 0.12345\ntriangles\n0 1 2 3\nuvees\n1 0.33333 0\n"),
              "rounded: 1 uvee to 4 decimals, 1 transparency to 4 decimals");
    EXPECT_EQ(only_loss(read("joint j 0 0 0 world 1\npoints\n1 0 0 0 0.1234\nnormals\n1 0 0.6 0.8\n")),
              "rounded: 1 weight to 3 decimals")
        << "reading makes the normal one of unit length again";
}

TEST_F(WriteLosses, RowsThatTheReaderRefuses) {
    const OwnedModel model = read(FOUR_POINTS + std::string(LAYER));
    const int32_t points[] = {1, 2};
    model_add_polygon(model.get(), "a", 2, points, nullptr);
    EXPECT_EQ(only_loss(model), "layer a: 1 primitive with fewer corners than the reader accepts");
}

TEST_F(WriteLosses, RowsThatDoNotFitALine) {
    const OwnedModel model = read("points\n10001 0 0 0\nnormals\n10001 0 0 1\nlayer a 1 2 3 singlesided\n");
    const std::vector<int32_t> points(171, 10001);
    model_add_polygon(model.get(), "a", 170, points.data(), nullptr);
    EXPECT_TRUE(model_write_losses(model.get()).empty()) << "2 + 170 * 6 bytes, less the last blank: 1021";
    model_add_polygon(model.get(), "a", 171, points.data(), nullptr);
    EXPECT_EQ(only_loss(model), "layer a: 1 primitive with more corners than one line of the file can hold");
}

TEST_F(WriteLosses, IdsThatWereCutTo16Bits) {
    const OwnedModel model = read(
        "points\n1 0 0 0\n40000 0 0 0\nnormals\n1 0 0 1\n"
        "layer a 1 2 3 singlesided\ntriangles\n0 1 1 40000\n");
    EXPECT_EQ(only_loss(model),
              "layer a: 1 primitive with a corner that is no point of this model, or whose id is above 32767");
}

TEST_F(WriteLosses, UveesOfALayerWithoutASurface) {
    EXPECT_EQ(only_loss("layer a 1 2 3 singlesided\nuvees\n1 0 0\nlines\n2 1 2\n"), "layer a: not written: 1 uvee");
}

TEST_F(WriteLosses, ATransparencyThatOnlyAnEditCanMake) {
    const OwnedModel model = read(FOUR_POINTS + std::string(LAYER));
    model_set_layer_transparency(model.get(), "a", 1.5f);
    EXPECT_EQ(only_loss(model), "layer a: a transparency outside 0.0 to 1.0");
}

// Each point is looked for among the groups: one that is in the middle of thousands, and one that is in none.
TEST_F(WriteLosses, APointOfAGroupIsFoundAmongThousandsOfOthers) {
    std::string joints;
    for (int i = 0; i < 100; ++i) { joints += "joint j" + std::to_string(i) + " 0 0 0 world 0\n"; }
    std::string blends;
    std::string points = "points\n";
    for (int i = 0; i < 3000; ++i) {
        blends += "blend j" + std::to_string(i % 100) + " j" + std::to_string((i + 1 + i / 100) % 100) + " 1\n";
        points += std::to_string(i + 1) + " 0 0 0\n";
    }
    points += "3001 0 0 0 0.5 j7 j99\n3002 0 0 0 0.5 j7 j8\n";
    const OwnedModel model = read(joints + blends + points);
    std::string all;
    for (const WriteLoss& loss : model_write_losses(model.get())) { all += loss.text + "\n"; }
    EXPECT_NE(all.find("second joint of their own lost: 1 point (first: 3001)\n"), std::string::npos) << all;
}

}  // namespace
}  // namespace pelt
