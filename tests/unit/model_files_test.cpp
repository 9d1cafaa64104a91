// Models that are one file.
#include "edit/model_files.h"

#include <gtest/gtest.h>

#include "application/session_lifecycle.h"
#include "formats/model_reader.h"
#include "motion/root_models.h"
#include "scene/change.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

constexpr const char* WHEEL = "points\n1 0 0 0\n2 9 0 0\n3 0 9 0\nlayer rim 127 0 0 doublesided\ntriangles\n0 1 2 3\n";
constexpr const char* CART = "points\n1 0 0 0\nchild wheel 1 0 0 1 1 1 0 0 0\nchild wheel 2 0 0 1 1 1 0 0 0\n";

class ModelFilesTest : public ::testing::Test {
protected:
    ModelFilesTest() {
        session_init(&session);
        dir.write("wheel.mod", WHEEL);
        cart = add(dir.write("cart.mod", CART));
        first = child(0);
        second = child(1);
    }
    ~ModelFilesTest() override { session_reset(&session, 1); }

    Model* add(const std::string& path) {
        Model* model = model_load(path.c_str());
        EXPECT_NE(model, nullptr) << path;
        session_add_root(&session, model, nullptr);
        return model;
    }
    Model* child(int rank) { return list_at<ChildLink>(&cart->children, rank, 1)->model; }

    std::vector<Model*> found(Model* model) { return models_of_file(&session, model, &refused); }

    test::TempDir dir;
    Session session{};
    Model* cart = nullptr;
    Model* first = nullptr;
    Model* second = nullptr;
    std::string refused;
};

TEST_F(ModelFilesTest, AModelReadOnceIsAlone) {
    EXPECT_EQ(found(cart), (std::vector<Model*>{cart}));
    EXPECT_EQ(refused, "");
}

TEST_F(ModelFilesTest, TwoLinksToAWheelAreOneFileAndTheAskedOneComesFirst) {
    EXPECT_EQ(found(second), (std::vector<Model*>{second, first}));
    EXPECT_EQ(found(first), (std::vector<Model*>{first, second}));
}

TEST_F(ModelFilesTest, ARootReadFromTheSameFileBelongsToIt) {
    Model* root = add(dir.file("wheel.mod"));
    EXPECT_EQ(found(first), (std::vector<Model*>{first, second, root}));
    EXPECT_EQ(found(root), (std::vector<Model*>{root, first, second}));
}

#ifndef _WIN32
TEST_F(ModelFilesTest, NamesThatDifferInCaseAreOneFile) {
    Model* root = add(dir.file("WHEEL.MOD"));
    EXPECT_EQ(found(root), (std::vector<Model*>{root, first, second}));
}
#endif

TEST_F(ModelFilesTest, AFileOfTheSameNameElsewhereIsAnotherOne) {
    const test::TempDir other;
    Model* root = add(other.write("wheel.mod", WHEEL));
    EXPECT_EQ(found(root), (std::vector<Model*>{root}));
}

TEST_F(ModelFilesTest, AModelWithoutAFileIsAlone) {
    Model* made = model_create("wheel.mod", nullptr);
    session_add_root(&session, made, nullptr);
    EXPECT_EQ(found(made), (std::vector<Model*>{made}));
}

TEST_F(ModelFilesTest, ALentModelIsMetOnce) {
    ChildLink* link = model_add_child(cart, first, "wheel", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    link->borrowed = 1;
    EXPECT_EQ(found(first), (std::vector<Model*>{first, second}));
    link->model = nullptr;
}

TEST_F(ModelFilesTest, CopiesThatHaveComeApartAreRefusedByFileAndDifference) {
    model_set_layer_colour(second, "rim", 1, 2, 3);
    EXPECT_TRUE(found(first).empty());
    EXPECT_NE(refused.find("wheel.mod"), std::string::npos) << refused;
    EXPECT_NE(refused.find("rim"), std::string::npos) << refused;
    model_set_layer_colour(first, "rim", 1, 2, 3);
    EXPECT_EQ(found(first).size(), 2u);
    EXPECT_EQ(refused, "");
}

TEST_F(ModelFilesTest, ChangedAlikeIsNotComparedAgain) {
    ASSERT_EQ(found(first).size(), 2u);
    // Against the promise, so that a comparison would show.
    model_set_layer_colour(second, "rim", 1, 2, 3);
    models_changed_alike({first, second});
    EXPECT_EQ(found(first).size(), 2u);
    model_set_layer_colour(second, "rim", 1, 2, 4);
    EXPECT_TRUE(found(first).empty());
}

}  // namespace
}  // namespace pelt
