// Loading beside the scene: what a refused load leaves alone besides the scene.
#include "application/scene_load.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "application/application.h"
#include "application/problem.h"
#include "application/session_lifecycle.h"
#include "images/image_registry.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

constexpr const char* MODEL =
    "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\nnormals\n1 0 0 1\n2 0 0 1\n3 0 0 1\n"
    "layer face 1 2 3 doublesided\ntriangles\n0 1 2 3\nimage skin.tga x y\n";

class SceneLoadTest : public ::testing::Test {
protected:
    SceneLoadTest() {
        *app = Application{};
        session_init(&app->session);
        // One pixel of three bytes.
        std::string picture(18, '\0');
        picture[2] = 2;
        picture[12] = picture[14] = 1;
        picture[16] = 24;
        dir.write("skin.tga", picture + "abc");
        one = dir.write("one.mod", MODEL);
    }
    ~SceneLoadTest() override { session_reset(&app->session, 1); }

    // The id of the image that is found by the path of the first one; 0 for none.
    static int32_t found_image() {
        const auto images = list_elements<ImageData>(*image_registry());
        const auto first = images.begin();
        const ImageData* found = first != std::default_sentinel ? image_find(first->path) : nullptr;
        return found != nullptr ? found->id : 0;
    }

    test::TempDir dir;
    std::string one;
    Application* app = application();
    SceneLoad result;
};

TEST_F(SceneLoadTest, ASecondSceneListLeavesTheImagesAlone) {
    const std::string list = dir.write("list.txt", ". one.mod\n");
    ASSERT_TRUE(scene_open(app, list.c_str(), &result)) << problem_last().what.text;
    const int32_t before = found_image();
    ASSERT_GT(before, 0);
    EXPECT_FALSE(scene_add(app, list.c_str(), &result));
    EXPECT_EQ(problem_last().kind, PROBLEM_STATE);
    EXPECT_EQ(found_image(), before);
    EXPECT_EQ(list_count(image_registry()), 1);
}

TEST_F(SceneLoadTest, AFailureBehindAnImageLeavesTheImagesAlone) {
    ASSERT_TRUE(scene_open(app, one.c_str(), &result)) << problem_last().what.text;
    const int32_t before = found_image();
    ASSERT_GT(before, 0);
    const std::string bad = dir.write("bad.mod", std::string(MODEL) + "points\n1 2\n");
    EXPECT_FALSE(scene_open(app, bad.c_str(), &result));
    EXPECT_FALSE(scene_add(app, bad.c_str(), &result));
    dir.write("one.mod", std::string(MODEL) + "points\n1 2\n");
    EXPECT_FALSE(scene_reload(app, 0, true, &result));
    EXPECT_EQ(found_image(), before);
    EXPECT_EQ(list_count(image_registry()), 1);
}

}  // namespace
}  // namespace pelt
