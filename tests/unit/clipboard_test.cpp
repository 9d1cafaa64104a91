// Copying and pasting: what becomes of the model is what a file says that a person wrote.
#include "edit/clipboard.h"

#include <algorithm>
#include <filesystem>

#include "foundation/file_access.h"
#include "support/edited_scene.h"

namespace pelt {
namespace {

using test::EditedScene;

const std::string HOUSE =
    "joint hip 0 0 0 world 1\njoint knee 0 -10 0 hip 1\npoints\n7 0 0 0 0.5\n3 10 0 0\n5 0 10 0\n9 10 10 4\n20 1 2 3\n"
    "normals\n7 1 0 0\n3 0 1 0\n5 0 0 1\n9 0 0 1\n20 0 -1 0\ngouraud\n7 1 2 3 4\n"
    "layer wall 9 8 7 doublesided mirror x\ntransparency 0.5\ntriangles\n0 7 3 5\n0 3 5 9 20 5 9\n"
    "4 7 3 5 9 2 7 3 5 9 20 3 3 9 9 5 5 7\n2 7 3 5 9\nuvees\n7 0.25 0.5\nimage a.tga x y repeat 2 2\n"
    "reflect b.tga 0.5\nlines\n2 7 9\n"
    "layer roof 1 2 3 singlesided\ntriangles\n0 5 9 20\n";
const std::string SHED = "points\n1 5 5 5\n30 6 6 6\nlayer wall 1 1 1 singlesided\ntriangles\n0 1 30 1\n";

class ClipboardTest : public EditedScene {
protected:
    bool copy(const Model* model, const CopyRequest& wanted) { return edit_copy(model, wanted, &clipboard, &refused); }
    bool paste(Model* model, const char* layer = nullptr, const Vec3& move = {0, 0, 0}) {
        pasted = Pasted{};
        const PasteRequest wanted{layer != nullptr ? layer_of(model, layer) : nullptr, move, [](std::string path) {
                                      std::replace(path.begin(), path.end(), '\\', '/');
                                      return path;
                                  }};
        return edit_paste(&session, model, clipboard, wanted, &pasted, &refused);
    }
    static PrimitiveName triangle(const Model* model, const char* layer, int32_t rank) {
        return {PrimitiveKind::TRIANGLE, list_at<const Triangle>(&layer_of(model, layer)->triangles, rank, 1)->id};
    }

    Clipboard clipboard{};
    Pasted pasted;
};

TEST_F(ClipboardTest, PointsKeepAllThatIsTheirs) {
    Model* house = open(HOUSE, "house.mod");
    Model* shed = open(SHED, "shed.mod");
    ASSERT_TRUE(copy(house, {{9, 7}, {}, {}}));
    ASSERT_TRUE(paste(shed, nullptr, {0.4f, 1.6f, -1.0f}));
    EXPECT_EQ(pasted.points, (std::vector<int32_t>{31, 32})) << "above all ids in use, in their order";
    expect_says(shed,
                "joint hip 0 0 0 world 1\npoints\n31 0 2 -1 0.5\n1 5 5 5\n30 6 6 6\n32 10 12 3\n"
                "normals\n31 1 0 0\ngouraud\n31 1 2 3 4\nlayer wall 1 1 1 singlesided\ntriangles\n0 1 30 1\n");
}

TEST_F(ClipboardTest, PlacesThatAreNotMovedStayWhereTheyAre) {
    Model* house = open(HOUSE, "house.mod");
    list_find<Point>(&house->points, 9)->position = Vec3{0.25f, 0.5f, 0.75f};  // as pancake leaves them
    ASSERT_TRUE(copy(house, {{9}, {}, {}}));
    ASSERT_TRUE(paste(house, nullptr, {1.0f, 0.0f, 0.0f}));
    const Vec3& place = list_find<Point>(&house->points, 21)->position;
    EXPECT_EQ(place.x, 1.0f);
    EXPECT_EQ(place.y, 0.5f);
}

TEST_F(ClipboardTest, AWholeLayerWithAllThatItNeeds) {
    Model* house = open(HOUSE, "house.mod");
    Model* empty = open("", "empty.mod");
    ASSERT_TRUE(copy(house, {{}, {}, {layer_of(house, "wall")}}));
    ASSERT_TRUE(paste(empty));
    EXPECT_EQ(pasted.layers, std::vector<std::string>{"wall"});
    // 3, 5, 7, 9 and 20 are 1, 2, 3, 4 and 5 here.
    expect_says(empty,
                "joint hip 0 0 0 world 1\njoint knee 0 -10 0 hip 1\npoints\n3 0 0 0 0.5\n1 10 0 0\n2 0 10 0\n"
                "4 10 10 4\n5 1 2 3\n"
                "normals\n3 1 0 0\n1 0 1 0\n2 0 0 1\n4 0 0 1\n5 0 -1 0\ngouraud\n3 1 2 3 4\n"
                "layer wall 9 8 7 doublesided mirror x\ntransparency 0.5\ntriangles\n0 3 1 2\n0 1 2 4 5 2 4\n"
                "4 3 1 2 4 2 3 1 2 4 5 1 1 4 4 2 2 3\n2 3 1 2 4\nuvees\n3 0.25 0.5\nimage a.tga x y repeat 2 2\n"
                "reflect b.tga 0.5\nlines\n2 3 4\n");
}

TEST_F(ClipboardTest, ACopiedLayerIsANewOne) {
    Model* house = open(HOUSE, "house.mod");
    ASSERT_TRUE(copy(house, {{}, {}, {layer_of(house, "roof")}}));
    ASSERT_TRUE(paste(house));
    ASSERT_TRUE(paste(house));
    EXPECT_EQ(pasted.layers, std::vector<std::string>{"roof 3"});
    EXPECT_EQ(names_in_order<Layer>(house->layers), (std::vector<std::string>{"wall", "roof", "roof 2", "roof 3"}));
    expect_can_be_saved(house);
}

TEST_F(ClipboardTest, CopiedFacesGoToTheLayerOfTheirName) {
    Model* house = open(HOUSE, "house.mod");
    Model* shed = open(SHED, "shed.mod");
    ASSERT_TRUE(copy(house, {{}, {triangle(house, "wall", 0), triangle(house, "roof", 0)}, {}}));
    ASSERT_TRUE(paste(shed));
    EXPECT_EQ(pasted.layers, (std::vector<std::string>{"wall", "roof"}));
    EXPECT_EQ(pasted.primitives.size(), 2U);
    // 3, 5, 7, 9 and 20 are 31, 32, 33, 34 and 35 here.
    expect_says(shed,
                "joint hip 0 0 0 world 1\njoint knee 0 -10 0 hip 1\npoints\n33 0 0 0 0.5\n31 10 0 0\n1 5 5 5\n"
                "30 6 6 6\n32 0 10 0\n34 10 10 4\n35 1 2 3\nnormals\n33 1 0 0\n31 0 1 0\n35 0 -1 0\n"
                "gouraud\n33 1 2 3 4\n"
                "layer wall 1 1 1 singlesided\ntriangles\n0 1 30 1\n0 33 31 32\nuvees\n33 0.25 0.5\n"
                "layer roof 1 2 3 singlesided\ntriangles\n0 32 34 35\n");
}

TEST_F(ClipboardTest, AllFacesCanGoToOneLayer) {
    Model* house = open(HOUSE, "house.mod");
    Model* shed = open(SHED + "image a.tga x y\n", "shed.mod");
    ASSERT_TRUE(copy(house, {{}, {triangle(house, "wall", 0), triangle(house, "roof", 0)}, {}}));
    ASSERT_TRUE(paste(shed, "wall"));
    EXPECT_EQ(names_in_order<Layer>(shed->layers), std::vector<std::string>{"wall"});
    EXPECT_EQ(pasted.layers, std::vector<std::string>{"wall"});
    expect_says(shed,
                "joint hip 0 0 0 world 1\njoint knee 0 -10 0 hip 1\npoints\n33 0 0 0 0.5\n31 10 0 0\n1 5 5 5\n"
                "30 6 6 6\n32 0 10 0\n34 10 10 4\n35 1 2 3\nnormals\n33 1 0 0\n31 0 1 0\n35 0 -1 0\n"
                "gouraud\n33 1 2 3 4\n"
                "layer wall 1 1 1 singlesided\ntriangles\n0 1 30 1\n0 33 31 32\n0 32 34 35\n"
                "uvees\n33 0.25 0.5\nimage a.tga x y\n");
}

TEST_F(ClipboardTest, WhatWasCopiedLastsWhenItsModelIsGone) {
    Model* house = open(HOUSE, "house.mod");
    ASSERT_TRUE(copy(house, {{}, {}, {layer_of(house, "wall"), layer_of(house, "roof")}}));
    session_close_all(&session);
    Model* empty = open("", "empty.mod");
    ASSERT_TRUE(paste(empty));
    EXPECT_EQ(pasted.layers, (std::vector<std::string>{"wall", "roof"}));
    expect_can_be_saved(empty);
}

TEST_F(ClipboardTest, ImagesAreNamedFromWhereTheModelLies) {
    Model* house = open(HOUSE, "house.mod");
    dir.write("far/empty.mod", "");
    Model* empty = open("", "far/empty.mod");
    ASSERT_TRUE(copy(house, {{}, {}, {layer_of(house, "wall")}}));
    ASSERT_TRUE(paste(empty)) << refused.text;
    EXPECT_EQ(layer_first_image(layer_of(empty, "wall"))->names[IMAGE_SLOT_BASE], path_with_separators("../a.tga"));
    EXPECT_NE(layer_first_image(layer_of(empty, "wall"))->pixels[IMAGE_SLOT_BASE], nullptr);
}

TEST_F(ClipboardTest, JointsThatAreThereAreTaken) {
    Model* house = open(HOUSE, "house.mod");
    Model* man = open("joint knee 5 5 5 world 0\n", "man.mod");
    ASSERT_TRUE(copy(house, {{7, 3}, {}, {}}));
    ASSERT_TRUE(paste(man));
    expect_says(man,
                "joint knee 5 5 5 world 0\njoint hip 0 0 0 world 1\npoints\n2 0 0 0 0.5\n1 10 0 0 1 knee hip\n"
                "normals\n2 1 0 0\n1 0 1 0\ngouraud\n2 1 2 3 4\n");
}

TEST_F(ClipboardTest, WhatCannotBeCopiedOrPastedIsRefused) {
    Model* house = open(HOUSE, "house.mod");
    EXPECT_FALSE(paste(house)) << "nothing was copied";
    EXPECT_EQ(refused.kind, EDIT_STATE);
    EXPECT_FALSE(copy(house, {{}, {triangle(house, "wall", 0), {PrimitiveKind::TRIANGLE, 999999}}, {}}));
    EXPECT_EQ(refused.kind, EDIT_ARGUMENT);
    EXPECT_FALSE(copy(house, {{}, {{PrimitiveKind::POLYGON, 999999}}, {}}));
    EXPECT_FALSE(copy(house, {{}, {{PrimitiveKind::LINE, 999999}}, {}}));
    ASSERT_TRUE(copy(house, {{7, 3}, {}, {}}));
    Model* full = open("points\n32766 0 0 0\n", "full.mod");
    const uint64_t version = full->version;
    EXPECT_FALSE(paste(full)) << "there is one id left, for two points";
    EXPECT_EQ(refused.kind, EDIT_STATE);
    EXPECT_EQ(full->version, version);
    ASSERT_TRUE(copy(house, {{}, {}, {layer_of(house, "wall")}}));
    session_close_all(&session);
    std::filesystem::remove(dir.file("b.tga"));
    Model* empty = open("", "empty.mod");
    EXPECT_FALSE(paste(empty));
    EXPECT_EQ(refused.kind, EDIT_FILE);
    EXPECT_EQ(model_count_layers(empty), 0);
    EXPECT_EQ(model_count_points(empty), 0);
}

TEST_F(ClipboardTest, AllModelsOfAFileGetIt) {
    Model* house = open(HOUSE, "house.mod");
    open(SHED, "shed.mod");
    Model* yard = open("child shed 0 0 0 1 1 1 0 0 0\n", "yard.mod");
    Model* shed = list_at<ChildLink>(&yard->children, 0, 1)->model;
    ASSERT_TRUE(copy(house, {{}, {}, {layer_of(house, "roof")}}));
    ASSERT_TRUE(paste(shed));
    EXPECT_EQ(model_difference(shed, list_at<RootModel>(&session.root_models, 1, 0)->model), "");
    EXPECT_NE(layer_of(list_at<RootModel>(&session.root_models, 1, 0)->model, "roof"), nullptr);
}

}  // namespace
}  // namespace pelt
