// Saving models of the scene: which file, which models, what is said of it afterwards, and what a failure costs.
#include "application/scene_save.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "application/application.h"
#include "application/name_beside.h"
#include "application/problem.h"
#include "application/scene_load.h"
#include "application/session_lifecycle.h"
#include "edit/history.h"
#include "foundation/file_text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/model.h"
#include "support/temp_dir.h"
#include "support/text_diff.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

const std::string SQUARE =
    "# by hand\npoints\n1 0 0 0\n2 9 0 0\n3 0 9 0\nlayer hull 127 0 0 doublesided\ntriangles\n0 1 2 3\n";

class SceneSaveTest : public testing::Test {
protected:
    SceneSaveTest() {
        session_init(&app->session);
        history_attach(&app->session);
    }
    ~SceneSaveTest() override {
        session_release_roots(&app->session);
        history_detach();
        session_reset(&app->session, 1);
    }
    Model* open(const std::string& path) {
        SceneLoad load;
        EXPECT_TRUE(scene_open(app, path.c_str(), &load)) << problem_last().what.text;
        return root(0);
    }
    Model* root(int rank) { return list_at<RootModel>(&app->session.root_models, rank, 1)->model; }
    // As a command of a script: what a failure leaves is put back.
    bool save(const SaveWish& wish) {
        done = SaveDone{};
        history_command_begin("save", true);
        const bool good = scene_save(app, wish, &done);
        if (!good) { history_put_back(); }
        history_command_end();
        return good;
    }
    bool save(Model* model, const std::string& file = {}) { return save(SaveWish{model, file, false, false, false}); }
    std::string refusal(const SaveWish& wish) {
        EXPECT_FALSE(save(wish));
        return problem_last().kind + ": " + problem_last().what.text;
    }
    void paint(Model* model, int red) { model_set_layer_colour(model, "hull", red, 0, 0); }

    Application* app = application();
    test::TempDir dir;
    SaveDone done;
};

TEST_F(SceneSaveTest, AModelIsSavedFromTheBytesThatWereLoaded) {
    const std::string path = dir.write("a.mod", SQUARE);
    Model* model = open(path);
    paint(model, 1);
    EXPECT_TRUE(save(model));
    EXPECT_EQ(test::text_diff(SQUARE, dir.read("a.mod")),
              "-layer hull 127 0 0 doublesided\n+layer hull 1   0 0 doublesided\n");
    EXPECT_EQ(history_changes(&app->session), 0);
    paint(model, 127);
    EXPECT_EQ(history_changes(&app->session), 1);
    EXPECT_TRUE(save(model));
    EXPECT_EQ(dir.read("a.mod"), SQUARE);
}

TEST_F(SceneSaveTest, CopiesAreOneFileAndOneText) {
    dir.write("wheel.mod", SQUARE);
    Model* car = open(dir.write("car.mod", "child wheel 0 0 0 1 1 1 0 0 0\nchild wheel 9 0 0 1 1 1 0 0 0\n"));
    Model* first = list_at<ChildLink>(&car->children, 0, 0)->model;
    Model* second = list_at<ChildLink>(&car->children, 1, 0)->model;
    EXPECT_EQ(first->text, second->text);
    EXPECT_EQ(first->text.use_count(), 2);
    paint(first, 5);
    EXPECT_EQ(refusal({second, {}, false, false, false}),
              "STATE: wheel was read 2 times, and what was read no longer says the same: layer hull: red 127 and 5");
    EXPECT_EQ(dir.read("wheel.mod"), SQUARE);
    paint(second, 5);
    EXPECT_TRUE(save(second));
    EXPECT_EQ(history_changes(&app->session), 0);
}

TEST_F(SceneSaveTest, AFileThatChangedOnDiskNeedsForce) {
    const std::string path = dir.write("a.mod", SQUARE);
    Model* model = open(path);
    dir.write("a.mod", SQUARE + "# more\n");
    paint(model, 1);
    EXPECT_EQ(refusal({model, {}, false, false, false}),
              "UNSAVED: the file changed on disk since it was read: say -force");
    EXPECT_EQ(dir.read("a.mod"), SQUARE + "# more\n");
    EXPECT_TRUE(save({model, {}, true, false, false}));
    EXPECT_TRUE(save(model));
    std::filesystem::remove(test::path_of(path));
    EXPECT_TRUE(save(model));
    EXPECT_EQ(dir.read("a.mod").size(), SQUARE.size());
}

TEST_F(SceneSaveTest, ARefusedSaveElsewhereLeavesTheModelWhereItWas) {
    dir.write("skin.tga", test::solid_tga(1, 1, 1, 2, 3));
    Model* model = open(dir.write("a.mod", SQUARE + "image skin.tga x y\n"));
    const std::string file = model_file(model);
    model_set_layer_transparency(model, "hull", 7.0f);
    EXPECT_EQ(refusal({model, dir.make_dir("deep") + "/b.mod", false, false, false}),
              "STATE: layer hull: a transparency outside 0 to 1");
    EXPECT_EQ(model_file(model), file);
    EXPECT_STREQ(layer_first_image(model_find_layer(model, "hull"))->names[0], "skin.tga");
    EXPECT_FALSE(dir.exists("deep/b.mod"));
}

TEST_F(SceneSaveTest, ARefusedRoundingIsTakenBack) {
    Model* model = open(dir.write("a.mod", SQUARE));
    model_find_point(model, 2)->position.x = 1.25f;
    model_set_layer_transparency(model, "hull", 7.0f);
    EXPECT_EQ(refusal({model, {}, false, false, true}), "STATE: layer hull: a transparency outside 0 to 1");
    EXPECT_EQ(model_find_point(model, 2)->position.x, 1.25f);
    model_set_layer_transparency(model, "hull", 0.0f);
    EXPECT_TRUE(save({model, {}, false, false, true}));
    EXPECT_EQ(done.shift, 0.25f);
    EXPECT_EQ(model_find_point(model, 2)->position.x, 1.0f);
}

TEST_F(SceneSaveTest, AMadeModelIsLaidOutWholeAndThenKeepsItsLines) {
    Model* model = model_create("", nullptr);
    model_add_layer(model, "hull", 1, 2, 3, 1, 0, 1);
    session_add_root(&app->session, model, nullptr);
    EXPECT_EQ(refusal({model, {}, false, false, false}), "STATE:  has no file yet: name one");
    EXPECT_TRUE(save(model, dir.file("made.mod")));
    const std::string first = dir.read("made.mod");
    paint(model, 9);
    EXPECT_TRUE(save(model));
    EXPECT_EQ(test::text_diff(first, dir.read("made.mod")),
              "-layer hull 1 2 3 singlesided\n+layer hull 9 0 0 singlesided\n");
}

TEST_F(SceneSaveTest, AFileOfAnotherModelIsNotWrittenOver) {
    open(dir.write("a.mod", SQUARE));
    SceneLoad load;
    ASSERT_TRUE(scene_add(app, dir.write("b.mod", SQUARE).c_str(), &load));
    EXPECT_EQ(refusal({root(0), dir.file("b.mod"), false, false, false}), "STATE: this is the file of the model b");
}

TEST_F(SceneSaveTest, ALinkStaysALinkAndADirectoryIsRefused) {
#ifdef _WIN32
    GTEST_SKIP() << "links need a right here";
#endif
    Model* model = open(dir.write("a.mod", SQUARE));
    dir.write("kept.mod", "old");
    std::filesystem::create_symlink("kept.mod", test::path_of(dir.file("link.mod")));
    EXPECT_TRUE(save(model, dir.file("link.mod")));
    EXPECT_TRUE(std::filesystem::is_symlink(test::path_of(dir.file("link.mod"))));
    EXPECT_EQ(dir.read("kept.mod"), SQUARE);
    EXPECT_EQ(refusal({model, dir.make_dir("folder"), false, false, false}),
              "FILE: cannot be written: it is a directory");
    EXPECT_EQ(refusal({model, "/dev/null", false, false, false}),
              "FILE: cannot be written: it is no file that keeps what is written to it");
}

TEST_F(SceneSaveTest, NamesAreFoundFromBesideAnotherFile) {
    const std::string file = dir.write("one/skin.tga", "");
    EXPECT_EQ(name_beside(dir.file("one/new.mod"), file), "skin.tga");
    EXPECT_EQ(name_beside(dir.file("two/deep/new.mod"), file), test::native_path("../../one/skin.tga"));
    EXPECT_EQ(name_beside(dir.file("new.mod"), file), test::native_path("one/skin.tga"));
    EXPECT_EQ(child_name_of("../a.MOD"), "../a");
    EXPECT_EQ(child_name_of("a.txt"), "");
    EXPECT_EQ(child_name_of(".mod"), "");
}

// ---- the scene as a model ----

TEST_F(SceneSaveTest, PlacementsComeBack) {
    const std::string path = dir.write("a.mod", SQUARE);
    uint32_t seed = 5;
    const auto next = [&] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<float>(seed >> 8) / 16777216.0f;
    };
    for (int i = 0; i < 60; ++i) {
        Model* model = open(path);
        ModelState* state = model_state(&app->session, model);
        const float scale = i % 3 == 0 ? 1.0f : 0.1f + 9.0f * next();
        state->translate = {900.0f * next(), -900.0f * next(), next()};
        state->scale = {i % 5 == 0 ? -scale : scale, scale, scale};
        mat_identity(&state->rotation);
        mat_rotate(&state->rotation, 360.0f * next(), i % 7 == 0 ? 90.0f : 360.0f * next(), 360.0f * next());
        model_state_rebuild(state);
        const Mat4 wanted = state->matrix;
        ASSERT_TRUE(scene_save_as_model(app, dir.file("scene.mod"), &done)) << problem_last().what.text;
        Model* scene = open(dir.file("scene.mod"));
        const Mat4 got = child_placement(list_at<ChildLink>(&scene->children, 0, 0));
        for (int at = 0; at < 16; ++at) {
            EXPECT_NEAR(got.m[at], wanted.m[at], 1e-4f * 9.0f * scale) << i << " " << at;
        }
    }
}

}  // namespace
}  // namespace pelt
