// Models: creation, names, counts, scaling, release; and the measuring of trees.
#include "scene/model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/text.h"
#include "scene/model_tree.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

struct OwnedModel {
    explicit OwnedModel(const char* path = "made.mod") : model(model_create(path, nullptr)) {}
    explicit OwnedModel(Model* made) : model(made) {}
    ~OwnedModel() { model_release(model); }
    OwnedModel(const OwnedModel&) = delete;
    OwnedModel& operator=(const OwnedModel&) = delete;
    Model* operator->() const { return model; }
    Model* const model;
};

ChildLink* add_link(Model* parent, Model* child, const char* name = "link", bool borrowed = false) {
    ChildLink* link = model_add_child(parent, child, name, 0, 0, 0, 1, 1, 1, "0", "0", "0");
    link->borrowed = borrowed ? 1 : 0;
    return link;
}

void add_layer(Model* model, const char* name) { ASSERT_EQ(model_add_layer(model, name, 1, 2, 3, 0, 0, 0), 1); }

void add_points(Model* model, int count) {
    for (int id = 1; id <= count; ++id) { ASSERT_EQ(model_set_point(model, id, id, 2 * id, 3 * id, 1.0f), 1); }
}

TEST(Model, CreatedFromAPathHasItsLowerCaseNameAndItsDirectory) {
    OwnedModel model(test::native_path("some/dir/Tree.mod").c_str());
    EXPECT_STREQ(model_name(model.model), "tree");
    EXPECT_EQ(test::native_path("some/dir/"), model->path);
    EXPECT_EQ(test::native_path("some/dir/tree"), model_full_path(model.model));
}

TEST(Model, CreatedWithoutAFileIsEmptyAndLowerCase) {
    OwnedModel model("Tree99");
    EXPECT_STREQ(model->name, "tree99");
    EXPECT_STREQ(model->path, "");
    EXPECT_EQ(model->parent, nullptr);
    EXPECT_EQ(model->tag, 0);
    EXPECT_EQ(model->state_index, -1);
    EXPECT_EQ(model->opened_path, nullptr);
    EXPECT_EQ(model_count_points(model.model), 0);
    EXPECT_EQ(model_count_joints(model.model), 0);
    EXPECT_EQ(model_count_layers(model.model), 0);
    EXPECT_EQ(model_count_children(model.model), 0);
}

TEST(Model, NullPathMakesNoModel) { EXPECT_EQ(model_create(nullptr, nullptr), nullptr); }

TEST(Model, NameOfFourBytesOrFewerBecomesEmpty) {
    OwnedModel model("Tree");
    EXPECT_STREQ(model->name, "");
}

TEST(Model, NameLongerThanItsFieldIsCutWithinBounds) {
    OwnedModel model((std::string(300, 'a') + ".mod").c_str());
    EXPECT_EQ(std::string(127, 'a'), model->name);
    EXPECT_STREQ(model->path, "");
}

TEST(Model, DirectoryLongerThanItsFieldIsCutWithinBounds) {
    OwnedModel model(test::native_path(std::string(300, 'd') + "/name.mod").c_str());
    EXPECT_EQ(std::string(model->path).size(), 255u);
    EXPECT_STREQ(model->name, "name");
}

TEST(Model, ALongPathIsKeptBesideTheRecordWhichLeadsNowhereElse) {
    const std::string directory = test::native_path(std::string(2000, 'd') + "/" + std::string(1000, 'E') + "/");
    OwnedModel model(model_create_long((directory + "Tree.mod").c_str(), nullptr));
    EXPECT_STREQ(model->path, "");
    EXPECT_STREQ(model->name, "tree");
    EXPECT_EQ(model_directory(model.model), directory);
    EXPECT_EQ(model_file_path(model.model, "skin.tga"), directory + "skin.tga");
    EXPECT_EQ(model_file(model.model), "") << "it was not read";
}

TEST(Model, ANameOfAnyLengthBehindALongPathIsCutToItsField) {
    const std::string directory = test::native_path(std::string(300, 'd') + "/");
    for (const char* shortest : {"X", "A.mo", "Ship"}) {
        std::string lower = shortest;
        str_lower(lower.data());
        OwnedModel model(model_create_long((directory + shortest).c_str(), nullptr));
        EXPECT_EQ(lower, model->name);
    }
    OwnedModel longest(model_create_long((directory + std::string(600, 'N') + ".mod").c_str(), nullptr));
    EXPECT_EQ(std::string(127, 'n'), longest->name);
    EXPECT_EQ(model_directory(longest.model), directory);
}

TEST(Model, APathThatFitsIsKeptTheOneWay) {
    for (const std::string& path : {test::native_path("some/dir/Tree.mod"), std::string("Tree99"), std::string()}) {
        OwnedModel kept(path.c_str());
        OwnedModel model(model_create_long(path.c_str(), nullptr));
        EXPECT_STREQ(model->path, kept->path);
        EXPECT_STREQ(model->name, kept->name);
        EXPECT_EQ(model->long_directory, nullptr);
        EXPECT_EQ(model_directory(model.model), kept->path);
    }
    EXPECT_EQ(model_create_long(nullptr, nullptr), nullptr);
}

TEST(Model, RenameWithoutADirectoryStaysInALongOneAndRenameWithOneLeavesIt) {
    const std::string directory = test::native_path(std::string(300, 'd') + "/");
    OwnedModel model(model_create_long((directory + "tree.mod").c_str(), nullptr));
    model->opened_path = str_dup((directory + "tree.mod").c_str());
    EXPECT_EQ(model_rename(model.model, "Other.mod"), 1);
    EXPECT_EQ(model_directory(model.model), directory);
    EXPECT_EQ(model_file(model.model), "");
    EXPECT_EQ(model_rename(model.model, test::native_path("there/").c_str()), 1);
    EXPECT_EQ(model->long_directory, nullptr);
    EXPECT_EQ(model_directory(model.model), test::native_path("there/"));
}

TEST(Model, RenameChangesTheNameAndKeepsTheDirectoryWhenNoneIsGiven) {
    OwnedModel model(test::native_path("here/tree.mod").c_str());
    EXPECT_EQ(model_rename(model.model, "Other.mod"), 1);
    EXPECT_STREQ(model->name, "other");
    EXPECT_EQ(test::native_path("here/"), model->path);
}

TEST(Model, RenameWithADirectoryChangesBoth) {
    OwnedModel model(test::native_path("here/tree.mod").c_str());
    EXPECT_EQ(model_rename(model.model, test::native_path("there/Other.mod").c_str()), 1);
    EXPECT_STREQ(model->name, "other");
    EXPECT_EQ(test::native_path("there/"), model->path);
}

TEST(Model, RenameToATextThatIsTooShortForANameKeepsTheOldOne) {
    OwnedModel model(test::native_path("here/tree.mod").c_str());
    model->opened_path = str_dup("here/TREE.MOD");
    for (const char* text : {"abc", "abcd", ""}) {
        EXPECT_EQ(model_rename(model.model, text), 1);
        EXPECT_STREQ(model->name, "tree") << text;
        EXPECT_EQ(test::native_path("here/"), model->path);
        EXPECT_STREQ(model->opened_path, "here/TREE.MOD") << "nothing was changed";
    }
    EXPECT_EQ(model_rename(model.model, test::native_path("a/b").c_str()), 1);
    EXPECT_STREQ(model->name, "tree");
    EXPECT_EQ(test::native_path("a/"), model->path) << "its directory counts all the same";
    EXPECT_EQ(model->opened_path, nullptr);
}

TEST(Model, EachModelHasASerialNumberOfItsOwn) {
    OwnedModel first("first.mod");
    OwnedModel second("first.mod");
    EXPECT_NE(first->serial, 0u);
    EXPECT_NE(first->serial, second->serial);
}

TEST(Model, RenameForgetsTheFileThatWasOpened) {
    OwnedModel model("tree.mod");
    model->opened_path = str_dup("TREE.MOD");
    EXPECT_EQ(model_rename(model.model, "other.mod"), 1);
    EXPECT_EQ(model->opened_path, nullptr);
}

TEST(Model, RenameToNothingFails) {
    OwnedModel model("tree.mod");
    EXPECT_EQ(model_rename(model.model, nullptr), 0);
    EXPECT_STREQ(model->name, "tree");
}

TEST(Model, TagIsKept) {
    OwnedModel model;
    model_set_tag(model.model, 42);
    EXPECT_EQ(model_tag(model.model), 42);
}

TEST(Model, NullModelIsASilentFailureEverywhere) {
    model_set_tag(nullptr, 1);
    EXPECT_EQ(model_tag(nullptr), 0);
    EXPECT_EQ(model_release(nullptr), 0);
    EXPECT_EQ(model_rename(nullptr, "a.mod"), 0);
    EXPECT_EQ(model_name(nullptr), nullptr);
    EXPECT_EQ(model_full_path(nullptr), nullptr);
    EXPECT_EQ(model_directory(nullptr), "");
    EXPECT_EQ(model_file(nullptr), "");
    EXPECT_EQ(model_scale(nullptr, 1, 1, 1), 0);
    EXPECT_EQ(model_count_points(nullptr), 0);
    EXPECT_EQ(model_count_joints(nullptr), 0);
    EXPECT_EQ(model_count_layers(nullptr), 0);
    EXPECT_EQ(model_count_children(nullptr), 0);
    EXPECT_EQ(model_count_triangles(nullptr, nullptr), 0);
    EXPECT_EQ(model_count_lines(nullptr, nullptr), 0);
}

TEST(Model, ScaleMovesPointsJointsAndChildren) {
    OwnedModel model;
    model_set_point(model.model, 1, 1, 2, 3, 1.0f);
    model_add_joint(model.model, "hip", 4, 5, 6, "world", 0);
    ChildLink* link = model_add_child(model.model, nullptr, "arm", 7, 8, 9, 1, 1, 1, "0", "0", "0");
    EXPECT_EQ(model_scale(model.model, 2.0f, 0.5f, -1.0f), 1);
    const Vec3 point = model_find_point(model.model, 1)->position;
    EXPECT_EQ(point.x, 2.0f);
    EXPECT_EQ(point.y, 1.0f);
    EXPECT_EQ(point.z, -3.0f);
    const Vec3 joint = model_find_joint(model.model, "hip")->position;
    EXPECT_EQ(joint.x, 8.0f);
    EXPECT_EQ(joint.y, 2.5f);
    EXPECT_EQ(joint.z, -6.0f);
    EXPECT_EQ(link->position.x, 14.0f);
    EXPECT_EQ(link->position.y, 4.0f);
    EXPECT_EQ(link->position.z, -9.0f);
}

TEST(Model, ScaleWithAZeroFactorChangesNothing) {
    OwnedModel model;
    model_set_point(model.model, 1, 1, 2, 3, 1.0f);
    EXPECT_EQ(model_scale(model.model, 0.0f, 2.0f, 2.0f), 0);
    EXPECT_EQ(model_scale(model.model, 2.0f, 0.0f, 2.0f), 0);
    EXPECT_EQ(model_scale(model.model, 2.0f, 2.0f, 0.0f), 0);
    const Vec3 point = model_find_point(model.model, 1)->position;
    EXPECT_EQ(point.x, 1.0f);
    EXPECT_EQ(point.y, 2.0f);
    EXPECT_EQ(point.z, 3.0f);
}

TEST(Model, CountOfChildrenGoesThroughAllDescendantsAndLinksWithoutAModel) {
    OwnedModel root;
    Model* child = model_create("child.mod", root.model);
    add_link(root.model, child);
    add_link(root.model, nullptr);
    add_link(child, model_create("leaf.mod", child));
    add_link(child, nullptr);
    EXPECT_EQ(model_count_children(root.model), 4);
}

TEST(Model, CountOfTrianglesByLayerCountsAQuadTwiceAndAPolygonAsItsTriangles) {
    OwnedModel model;
    add_points(model.model, 6);
    add_layer(model.model, "a");
    add_layer(model.model, "b");
    const int32_t ids[] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(model_add_triangle(model.model, "a", 0, ids, nullptr, nullptr, 0), 1);
    ASSERT_EQ(model_add_triangle(model.model, "a", 1, ids, nullptr, nullptr, 0), 1);
    ASSERT_EQ(model_add_polygon(model.model, "a", 6, ids, nullptr), 1);
    ASSERT_EQ(model_add_triangle(model.model, "b", 1, ids, nullptr, nullptr, 0), 1);
    EXPECT_EQ(1 + 2 + 4, model_count_triangles(model.model, "a"));
    EXPECT_EQ(model_count_triangles(model.model, "b"), 2);
    EXPECT_EQ(model_count_triangles(model.model, "none"), 0);
}

// Intended: one of a single point, or of none, takes away from the triangles of its layer.
TEST(Model, APolygonOfFewerThanThreePointsCountsItsPointsLessTwo) {
    const int32_t ids[] = {1, 2, 3};
    for (int points = 0; points < 3; ++points) {
        OwnedModel model;
        add_points(model.model, 3);
        add_layer(model.model, "a");
        ASSERT_EQ(model_add_triangle(model.model, "a", 0, ids, nullptr, nullptr, 0), 1);
        ASSERT_EQ(model_add_polygon(model.model, "a", points, ids, nullptr), 1);
        EXPECT_EQ(1 + points - 2, model_count_triangles(model.model, "a")) << points;
    }
}

TEST(Model, CountOfAllTrianglesCountsRecordsAndNoPolygons) {
    OwnedModel model;
    add_points(model.model, 6);
    add_layer(model.model, "a");
    add_layer(model.model, "b");
    const int32_t ids[] = {1, 2, 3, 4, 5, 6};
    model_add_triangle(model.model, "a", 1, ids, nullptr, nullptr, 0);
    model_add_triangle(model.model, "b", 0, ids, nullptr, nullptr, 0);
    model_add_polygon(model.model, "a", 6, ids, nullptr);
    EXPECT_EQ(model_count_triangles(model.model, nullptr), 2);
}

TEST(Model, CountOfLinesCountsThePiecesBetweenPoints) {
    OwnedModel model;
    add_points(model.model, 4);
    add_layer(model.model, "a");
    add_layer(model.model, "b");
    const int32_t ids[] = {1, 2, 3, 4};
    model_add_line(model.model, "a", 4, ids);
    model_add_line(model.model, "a", 2, ids);
    model_add_line(model.model, "b", 3, ids);
    EXPECT_EQ(3 + 1, model_count_lines(model.model, "a"));
    EXPECT_EQ(4 + 2, model_count_lines(model.model, nullptr));
    EXPECT_EQ(model_count_lines(model.model, "none"), 0);
}

TEST(Model, ReleaseTakesOwnedChildrenAndLeavesBorrowedOnes) {
    OwnedModel lender("lender.mod");
    Model* parent = model_create("parent.mod", nullptr);
    add_link(parent, model_create("owned.mod", parent));
    add_link(parent, nullptr);
    add_link(parent, lender.model, "lender", true);
    EXPECT_EQ(model_release(parent), 1);
    // The sanitizers see a second release and a leak; the lender must still be whole.
    EXPECT_STREQ(lender->name, "lender");
}

TEST(Model, ReleaseOfLayersWithNamesTooLongForAKeyEnds) {
    Model* model = model_create("long.mod", nullptr);
    add_points(model, 3);
    const std::string name(40, 'x');
    add_layer(model, name.c_str());
    add_layer(model, (name + "y").c_str());
    const std::string joint(50, 'j');
    model_add_joint(model, joint.c_str(), 0, 0, 0, "world", 0);
    EXPECT_EQ(model_count_layers(model), 2);
    EXPECT_EQ(model_release(model), 1);
}

TEST(Model, FilePathJoinsTheDirectoryAndTheNameWhole) {
    OwnedModel model(test::native_path("dir/tree.mod").c_str());
    EXPECT_EQ(model_file_path(model.model, "skin.tga"), test::native_path("dir/skin.tga"));
    EXPECT_EQ(model_file_path(model.model, std::string(5000, 'n').c_str()),
              test::native_path("dir/") + std::string(5000, 'n'));
    EXPECT_EQ(model_file_path(model.model, nullptr), test::native_path("dir/"));
    EXPECT_EQ(model_file_path(nullptr, "skin.tga"), "skin.tga");
}

TEST(ModelTree, CountsLevelsAndModels) {
    OwnedModel root;
    EXPECT_EQ(model_tree_size(root.model).depth, 0);
    EXPECT_EQ(model_tree_size(root.model).nodes, 1);
    Model* child = model_create("child.mod", root.model);
    add_link(root.model, child);
    add_link(child, model_create("leaf.mod", child));
    add_link(root.model, model_create("leaf.mod", root.model));
    EXPECT_EQ(model_tree_size(root.model).depth, 2);
    EXPECT_EQ(model_tree_size(root.model).nodes, 4);
    EXPECT_EQ(model_tree_size(nullptr).nodes, 0);
}

// Models that are owned one by one and lent to each other as the test says.
struct Lot {
    ~Lot() {
        for (Model* model : models) { model_release(model); }
    }
    Model* add() {
        models.push_back(model_create("lot.mod", nullptr));
        return models.back();
    }
    std::vector<Model*> models;
};

TEST(ModelTree, FitsUpToItsDepthLimitAndNotBeyond) {
    Lot lot;
    Model* top = lot.add();
    for (int level = 0; level < MODEL_TREE_DEPTH_LIMIT; ++level) {
        Model* above = lot.add();
        add_link(above, top, "link", true);
        top = above;
    }
    EXPECT_EQ(model_tree_size(top).depth, MODEL_TREE_DEPTH_LIMIT);
    EXPECT_TRUE(model_tree_fits(top));
    Model* above = lot.add();
    add_link(above, top, "link", true);
    EXPECT_FALSE(model_tree_fits(above));
}

TEST(ModelTree, CountsEachRepetitionOfALentModel) {
    Lot lot;
    Model* top = lot.add();
    // Each level holds the one below twice: 2^n - 1 models with n levels. 12 levels are 4095, 13 are 8191.
    for (int level = 1; level < 12; ++level) {
        Model* above = lot.add();
        add_link(above, top, "a", true);
        add_link(above, top, "b", true);
        top = above;
    }
    EXPECT_EQ(model_tree_size(top).nodes, 4095);
    EXPECT_TRUE(model_tree_fits(top));
    Model* above = lot.add();
    add_link(above, top, "a", true);
    add_link(above, top, "b", true);
    EXPECT_FALSE(model_tree_fits(above));
}

TEST(ModelTree, ACircleEndsAndDoesNotFit) {
    Lot lot;
    Model* a = lot.add();
    Model* b = lot.add();
    add_link(a, b, "b", true);
    add_link(a, b, "b", true);
    add_link(b, a, "a", true);
    EXPECT_FALSE(model_tree_fits(a));
    EXPECT_TRUE(model_tree_holds(a, a));
}

TEST(ModelTree, HoldsItselfAndAllBelowThroughLinksOfEveryKind) {
    Lot lot;
    Model* a = lot.add();
    Model* b = lot.add();
    Model* c = lot.add();
    Model* stranger = lot.add();
    add_link(a, nullptr);
    add_link(a, b, "b", true);
    add_link(b, c, "c", true);
    EXPECT_TRUE(model_tree_holds(a, a));
    EXPECT_TRUE(model_tree_holds(a, c));
    EXPECT_FALSE(model_tree_holds(c, a));
    EXPECT_FALSE(model_tree_holds(a, stranger));
    EXPECT_FALSE(model_tree_holds(a, nullptr));
}

}  // namespace
}  // namespace pelt
