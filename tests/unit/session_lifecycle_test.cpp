// The life of the scene: set up, reset, load, reload, rename, find, on real files.
#include "application/session_lifecycle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "edit/selection.h"
#include "formats/model_reader.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "support/long_path.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

constexpr const char* SMALL_MODEL =
    "points\n1 0 0 0\n2 100 0 0\n3 0 50 0\nlayer skin 127 127 127 singlesided\n"
    "triangles\n0 1 2 3\n";
constexpr const char* CLIP = "names translate\n0.0 0 0 0\n3.0 0 10 0\n";

std::vector<std::string> reports;
Session* reported = nullptr;
std::string nested_path;
int nested_limit = 0;

void record_status(const char* text) { reports.push_back(std::string("status:") + text); }

void record_message(const char* text) { reports.push_back(std::string("message:") + text); }

template <void (*Action)()>
void nested(const char*) {
    if (nested_limit > 0) {
        --nested_limit;
        Action();
    }
}

// Runs the action at the next report that a closing or a load has ended.
template <void (*Action)()>
void nested_when_ready(const char* text) {
    if (std::string(text).ends_with("Ready")) { nested<Action>(text); }
}

void do_reload() { session_reload(reported); }
void do_reset() { session_reset(reported, 0); }
void do_load() { session_load_model(reported, nested_path.c_str()); }
void do_close_and_load() {
    session_close_all(reported);
    session_load_model(reported, nested_path.c_str());
}
void do_load_animation() { session_load_animation(reported, nested_path.c_str(), 0); }

class LifecycleTest : public ::testing::Test {
protected:
    LifecycleTest() {
        reports.clear();
        nested_limit = 0;
        reported = &session;
        session_init(&session);
        forget_failed_reloads();
    }
    ~LifecycleTest() override {
        session.status_callback = nullptr;
        session.message_callback = nullptr;
        session_reset(&session, 1);
        forget_failed_reloads();
    }

    // What failed before is tried again by a reload of an empty scene: let it succeed, then nothing is left.
    void forget_failed_reloads() {
        session_reset(&session, 0);
        const std::string file = dir.write("forget.mod", SMALL_MODEL);
        const std::string list = dir.write("forget.txt", row("forget.mod", "forget.clip", "world"));
        dir.write("forget.clip", CLIP);
        session_load_animation(&session, list.c_str(), 1);
        session_reload(&session);
        session_close_all(&session);
        session_load_model(&session, file.c_str());
        session_reload(&session);
        session_reset(&session, 0);
        session.anim_time = 0.0f;
    }

    void listen() {
        session_set_status_callback(&session, record_status);
        session_set_message_callback(&session, record_message);
    }

    std::string row(const std::string& model, const std::string& clip, const std::string& parent) const {
        return dir.path() + " " + model + " " + dir.path() + " " + clip + " " + parent + "\n";
    }

    std::string write_animation(const std::string& name = "scene.txt") {
        dir.write("body.mod", SMALL_MODEL);
        dir.write("walk.clip", CLIP);
        return dir.write(name, row("body.mod", "walk.clip", "world"));
    }

    int32_t load(const std::string& path) { return session_load_model(&session, path.c_str()); }
    int32_t roots() const { return list_count(&session.root_models); }
    Model* root(int32_t rank) const { return list_at<RootModel>(&session.root_models, rank, 1)->model; }

    int count_reports(const std::string& ending) const {
        return static_cast<int>(std::count_if(reports.begin(), reports.end(),
                                              [&](const std::string& text) { return text.ends_with(ending); }));
    }

    test::TempDir dir;
    Session session{};
};

// ---- set up and reset ----

TEST_F(LifecycleTest, InitSetsTheRecordUp) {
    Session fresh;
    std::fill_n(reinterpret_cast<unsigned char*>(&fresh), sizeof fresh, static_cast<unsigned char>(0xAB));
    session_init(&fresh);
    EXPECT_EQ(fresh.radius, 10.0f);
    EXPECT_EQ(fresh.anim_step, 1.0f);
    EXPECT_EQ(fresh.anim_time, 0.0f);
    EXPECT_EQ(fresh.display_triangles, 1);
    EXPECT_EQ(fresh.display_lines, 1);
    EXPECT_EQ(fresh.digit_bitmaps_ready, 1);
    EXPECT_EQ(fresh.file_list.element_size, 0);
    EXPECT_EQ(fresh.model_states.kind, KEY_INT);
    EXPECT_EQ(static_cast<int32_t>(sizeof(ModelState)), fresh.model_states.element_size);
    EXPECT_EQ(static_cast<int32_t>(sizeof(TriangleCache)), fresh.triangle_caches.element_size);
    EXPECT_EQ(static_cast<int32_t>(sizeof(PointState)), fresh.point_states.element_size);
    EXPECT_EQ(static_cast<int32_t>(sizeof(JointState)), fresh.joint_states.element_size);
    EXPECT_EQ(static_cast<int32_t>(sizeof(ChildState)), fresh.child_states.element_size);
    EXPECT_EQ(static_cast<int32_t>(sizeof(RootModel)), fresh.root_models.element_size);
    EXPECT_EQ(fresh.status_callback, nullptr);
    session_init(nullptr);
}

TEST_F(LifecycleTest, ResetKeepsTheDisplayFlagsUnlessAsked) {
    session.display_wireframe = 1;
    session_reset(&session, 0);
    EXPECT_EQ(session.display_wireframe, 1);
    session_reset(&session, 1);
    EXPECT_EQ(session.display_wireframe, 0);
}

TEST_F(LifecycleTest, ResetDropsTheSceneAndKeepsTheSettings) {
    listen();
    load(dir.write("a.mod", SMALL_MODEL));
    selection_all(&session);
    session.selection.centre.x = 3.0f;
    session.anim_time = 2.0f;
    session.anim_rate = 25;
    session.anim_step = 0.04f;
    session.anim_end = 9.0f;
    session.points_color_index = 4;
    session.animation_path = str_dup("scene.txt");
    selection_copy(&session);
    session.clipboard.centre = session.clipboard.axis = Vec3{1, 2, 3};
    session_reset(&session, 0);
    EXPECT_EQ(list_count(&session.clipboard.models), 0);
    EXPECT_EQ(session.clipboard.centre.y, 0.0f);
    EXPECT_EQ(session.clipboard.axis.y, 0.0f);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(list_count(&session.model_states), 0);
    EXPECT_EQ(list_count(&session.selection.models), 0);
    EXPECT_EQ(session.selection.centre.x, 0.0f);
    EXPECT_EQ(session.anim_step, 1.0f);
    EXPECT_EQ(session.anim_end, 0.0f);
    EXPECT_EQ(session.animation_path, nullptr);
    EXPECT_EQ(session.radius, 10.0f);
    EXPECT_EQ(session.anim_time, 2.0f);
    EXPECT_EQ(session.anim_rate, 25);
    EXPECT_EQ(session.points_color_index, 4);
    EXPECT_EQ(record_status, session.status_callback);
    EXPECT_EQ(session.digit_bitmaps_ready, 1);
    session_reset(&session, 0);
    session_reset(nullptr, 1);
}

TEST_F(LifecycleTest, ResetDropsWhatAStatusProcedureLoadsMeanwhile) {
    nested_path = dir.write("a.mod", SMALL_MODEL);
    load(nested_path);
    nested_limit = 1;
    session_set_status_callback(&session, nested_when_ready<do_load>);
    session_reset(&session, 0);
    EXPECT_EQ(nested_limit, 0);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(list_count(&session.model_states), 0);
    EXPECT_EQ(session.radius, 10.0f) << "of the model that came meanwhile nothing is left";
}

void leave_a_centre() { reported->centre = Vec3{1, 2, 3}; }

TEST_F(LifecycleTest, ResetEndsWithTheBoundsOfAnEmptyScene) {
    nested_limit = 1;
    session_set_status_callback(&session, nested_when_ready<leave_a_centre>);
    session_reset(&session, 0);
    EXPECT_EQ(nested_limit, 0);
    EXPECT_EQ(session.centre.x, 0.0f);
    EXPECT_EQ(session.centre.y, 0.0f);
    EXPECT_EQ(session.centre.z, 0.0f);
}

TEST_F(LifecycleTest, ResetDropsTheAnimationThatAStatusProcedureLoadsMeanwhile) {
    nested_path = write_animation("scene.txt");
    nested_limit = 1;
    session_set_status_callback(&session, nested_when_ready<do_load_animation>);
    session_reset(&session, 0);
    EXPECT_EQ(nested_limit, 0);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(session.animation_path, nullptr) << "a reload would bring it back in place of what is loaded next";
    EXPECT_EQ(session.anim_end, 0.0f);
}

// ---- loading ----

TEST_F(LifecycleTest, LoadGivesTheIdAndReports) {
    listen();
    const int32_t id = load(dir.write("Ship.mod", SMALL_MODEL));
    EXPECT_GE(id, 1);
    EXPECT_EQ((std::vector<std::string>{"status:Time: 0.00 of 0.00, Triangles: 0, Loading...",
                                        "status:Time: 0.00 of 0.00, Triangles: 0, Ready"}),
              reports);
    EXPECT_EQ(session.radius, 200.0f);  // twice the largest size
    EXPECT_STREQ(root(0)->name, "ship");
}

TEST_F(LifecycleTest, LoadingTheSameFileTwiceGivesTwoIdsAndTwoRoots) {
    const std::string file = dir.write("a.mod", SMALL_MODEL);
    const int32_t first = load(file);
    const int32_t second = load(file);
    EXPECT_GE(first, 1);
    EXPECT_GT(second, first);
    EXPECT_EQ(roots(), 2);
}

TEST_F(LifecycleTest, ClosingAndLoadingAgainGivesHigherIds) {
    const std::string file = dir.write("a.mod", SMALL_MODEL);
    const int32_t first = load(file);
    session_close_all(&session);
    EXPECT_GT(load(file), first);
}

TEST_F(LifecycleTest, AFailedLoadKeepsTheSceneAndDoesNotSayReady) {
    load(dir.write("a.mod", SMALL_MODEL));
    listen();
    const std::string missing = dir.file("none.mod");
    EXPECT_EQ(load(missing), 0);
    EXPECT_EQ(roots(), 1);
    EXPECT_EQ(count_reports("Ready"), 0);
    const std::vector<std::string> expected = {
        "status:Time: 0.00 of 0.00, Triangles: 0, Loading...", "message:could not find: " + missing,
        "status:could not find: " + missing, "message:Load failed", "status:Load failed"};
    EXPECT_EQ(expected, reports);
}

TEST_F(LifecycleTest, AFailureWithoutATextSaysLoadFailedAlone) {
    const std::string file = dir.write("bad.mod", "points\n0 1 2 3\n");
    load(dir.file("none.mod"));
    listen();
    EXPECT_EQ(load(file), 0);
    EXPECT_EQ(count_reports("message:Load failed"), 1);
    EXPECT_EQ(reports.size(), 3u) << "Loading, and the message to both callbacks; no stale text";
}

TEST_F(LifecycleTest, NullsFail) {
    EXPECT_EQ(session_load_model(&session, nullptr), 0);
    EXPECT_EQ(session_load_model(nullptr, "a.mod"), 0);
    EXPECT_EQ(session_add_model(&session, nullptr), 0);
    EXPECT_EQ(session_add_model(nullptr, nullptr), 0);
    EXPECT_EQ(session_load_animation(&session, nullptr, 0), 0);
    EXPECT_EQ(session_load_animation(nullptr, "a.txt", 0), 0);
    EXPECT_EQ(session_reload(nullptr), 0);
    EXPECT_EQ(session_rename_model(nullptr, 1, "a.mod"), 0);
    EXPECT_EQ(session_find_model(&session, nullptr), 0);
    EXPECT_EQ(session_find_model(nullptr, "a"), 0);
    EXPECT_EQ(session_find_images(nullptr, 1), nullptr);
    EXPECT_EQ(session_replace_model(&session, nullptr), 0);
    EXPECT_EQ(session_replace_model(nullptr, "name"), 0);
    session_save_model(nullptr);
}

TEST_F(LifecycleTest, AddModelEntersAMadeModel) {
    listen();
    Model* model = model_create("made.mod", nullptr);
    const int32_t id = session_add_model(&session, model);
    EXPECT_GE(id, 1);
    EXPECT_EQ(count_reports("Ready"), 1);
    EXPECT_EQ(id, session_find_model(&session, "made"));
}

TEST_F(LifecycleTest, ReplaceModelLeavesOneEmptyModelOfThatName) {
    load(dir.write("a.mod", SMALL_MODEL));
    load(dir.write("b.mod", SMALL_MODEL));
    // The name may lie in a model that goes.
    EXPECT_GE(session_replace_model(&session, "Fresh.mod"), 1);
    EXPECT_EQ(roots(), 1);
    EXPECT_STREQ(root(0)->name, "fresh");
    EXPECT_EQ(model_count_points(root(0)), 0);
}

TEST_F(LifecycleTest, AStatusProcedureMayResetInTheMiddleOfALoad) {
    const std::string file = dir.write("a.mod", SMALL_MODEL);
    nested_limit = 1;
    session_set_status_callback(&session, nested<do_reset>);
    EXPECT_GE(load(file), 1);
    EXPECT_EQ(roots(), 1);
}

TEST_F(LifecycleTest, AStatusProcedureMayOpenAnotherFileInTheMiddleOfALoad) {
    const std::string file = dir.write("a.mod", SMALL_MODEL);
    nested_path = dir.write("b.mod", SMALL_MODEL);
    nested_limit = 4;
    session_set_status_callback(&session, nested<do_close_and_load>);
    EXPECT_GE(load(file), 1);
    nested_limit = 0;
    EXPECT_GE(roots(), 1);
}

TEST_F(LifecycleTest, AMessageProcedureMayLoadInTheMiddleOfAFailure) {
    nested_path = dir.write("b.mod", SMALL_MODEL);
    nested_limit = 1;
    session_set_message_callback(&session, nested<do_close_and_load>);
    session_set_status_callback(&session, record_status);
    EXPECT_EQ(load(dir.file("none.mod")), 0);
    EXPECT_EQ(reports.back(), "status:Load failed");
    EXPECT_EQ(roots(), 1);
}

// ---- animations ----

TEST_F(LifecycleTest, AnAnimationReplacesTheScene) {
    load(dir.write("old.mod", SMALL_MODEL));
    const std::string list = write_animation();
    listen();
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    EXPECT_EQ(roots(), 1);
    EXPECT_STREQ(root(0)->name, "body");
    EXPECT_EQ(session.anim_end, 3.0f);
    EXPECT_EQ(list, session.animation_path);
    EXPECT_EQ(session.radius, 200.0f);
    EXPECT_EQ(count_reports("Triangles: 0, Loading..."), 1);
    EXPECT_EQ(reports.back(), "status:Time: 0.00 of 3.00, Triangles: 0, Ready");
}

TEST_F(LifecycleTest, AnAnimationOpensAtTheTimeOfTheLastOneWithinItsLength) {
    const std::string list = write_animation();
    session.anim_time = 5.0f;
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    EXPECT_EQ(session.anim_time, 3.0f);
    dir.write("walk.clip", "names translate\n0.0 0 0 0\n8.0 0 10 0\n");
    session.anim_time = 5.0f;
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    EXPECT_EQ(session.anim_time, 5.0f);
    EXPECT_EQ(session.anim_end, 8.0f);
}

TEST_F(LifecycleTest, AnAnimationIsEvaluatedWhenItIsLoaded) {
    const std::string list = write_animation();
    session.anim_time = 3.0f;
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    const ModelState* state = list_at<ModelState>(&session.model_states, 0, 1);
    ASSERT_NE(state, nullptr);
    EXPECT_FLOAT_EQ(state->matrix.m[7], 10.0f);
}

TEST_F(LifecycleTest, KeepRadiusSkipsTheGrowth) {
    const std::string list = write_animation();
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 1), 1);
    EXPECT_EQ(session.radius, 10.0f);
}

TEST_F(LifecycleTest, AFailedAnimationLeavesAnEmptyScene) {
    load(dir.write("old.mod", SMALL_MODEL));
    listen();
    const std::string missing = dir.file("none.txt");
    EXPECT_EQ(session_load_animation(&session, missing.c_str(), 0), 0);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(session.animation_path, nullptr);
    EXPECT_EQ("message:file does not exist: " + missing, reports[reports.size() - 2]);
    EXPECT_EQ("status:file does not exist: " + missing, reports.back());
}

TEST_F(LifecycleTest, AnAnimationIsLoadedFromItsOwnRememberedPath) {
    const std::string list = write_animation();
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    EXPECT_EQ(session_load_animation(&session, session.animation_path, 0), 1);
    EXPECT_EQ(list, session.animation_path);
}

TEST_F(LifecycleTest, AStatusProcedureMayLoadAnotherAnimationInTheMiddleOfOne) {
    const std::string list = write_animation();
    nested_path = write_animation("other.txt");
    nested_limit = 3;
    session_set_status_callback(&session, nested<do_load_animation>);
    EXPECT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    nested_limit = 0;
    EXPECT_NE(session.animation_path, nullptr);
}

// ---- reload ----

TEST_F(LifecycleTest, ReloadOfAnEmptySceneReportsTheClosingAlone) {
    listen();
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ((std::vector<std::string>{"status:Time: 0.00 of 0.00, Triangles: 0, Closing currently open Model file",
                                        "status:Time: 0.00 of 0.00, Triangles: 0, Ready"}),
              reports);
}

TEST_F(LifecycleTest, ReloadReadsEveryRootAgainUnderANewId) {
    const int32_t first = load(dir.write("a.mod", SMALL_MODEL));
    load(dir.write("b.mod", SMALL_MODEL));
    dir.write("a.mod", "points\n1 0 0 0\n");
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 2);
    EXPECT_STREQ(root(0)->name, "a");
    EXPECT_STREQ(root(1)->name, "b");
    EXPECT_EQ(model_count_points(root(0)), 1);
    EXPECT_EQ(list_find(&session.model_states, first), nullptr);
}

#ifndef _WIN32
TEST_F(LifecycleTest, ReloadOpensTheFileThatWasOpenedWhereNamesDifferByCase) {
    load(dir.write("Ship.MOD", SMALL_MODEL));
    dir.write("ship.mod", "points\n1 0 0 0\n");
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 1);
    EXPECT_EQ(model_count_points(root(0)), 3);
}

#endif

TEST_F(LifecycleTest, ReloadTakesSeparatorsOfBothFormsForTheSame) {
    dir.write("sub/Ship.mod", SMALL_MODEL);
    const std::string path = dir.path() + "\\sub\\Ship.mod";
    ASSERT_GE(load(path), 1);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(path, root(0)->opened_path);
}

TEST_F(LifecycleTest, ReloadFindsAFileWhoseNameAModelCannotKeepWhole) {
    ASSERT_GT(load(dir.write(std::string(150, 'n') + ".mod", SMALL_MODEL)), 0);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 1);
}

TEST_F(LifecycleTest, APathThatAModelCannotKeepIsRefusedAndTheSceneReloads) {
    load(dir.write("a.mod", SMALL_MODEL));
    listen();
    const std::string deep = dir.write(test::directory_of_length(dir, 256) + "b.mod", SMALL_MODEL);
    EXPECT_EQ(load(deep), 0);
    EXPECT_EQ(reports.at(1).substr(0, 23), "message:path too long: ");
    EXPECT_EQ(reports.at(3), "message:Load failed");
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 1);
}

TEST_F(LifecycleTest, ReloadFindsAModelThatWasReadWithLongPathsAgain) {
    const std::string deep = test::directory_of_length(dir, test::LONG_DIRECTORY);
    const std::string path = dir.write(deep + "ship.txt", SMALL_MODEL);
    Model* model = model_load(path.c_str(), nullptr, true);
    ASSERT_NE(model, nullptr) << load_error_get();
    session_add_model(&session, model);
    load(dir.write("a.mod", SMALL_MODEL));
    dir.write(deep + "ship.txt", "points\n1 0 0 0\n");
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 2);
    EXPECT_EQ(path, root(0)->opened_path);
    EXPECT_EQ(model_count_points(root(0)), 1);
    EXPECT_EQ(root(1)->long_paths, 0);
    EXPECT_EQ(session_reload(&session), 1) << "what is read again is still to be read so";
    EXPECT_EQ(roots(), 2);
}

TEST_F(LifecycleTest, AModelWithLongPathsThatWasRenamedIsReadUnderItsNewName) {
    const std::string deep = test::directory_of_length(dir, test::LONG_DIRECTORY);
    Model* model = model_load(dir.write(deep + "a.mod", SMALL_MODEL).c_str(), nullptr, true);
    const int32_t id = session_add_model(&session, model);
    dir.write(deep + "b.mod", "points\n1 0 0 0\n");
    ASSERT_EQ(session_rename_model(&session, id, "B.mod"), 1);
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 1);
    EXPECT_EQ(model_count_points(root(0)), 1);
}

TEST_F(LifecycleTest, ReloadOfASceneListWithABaseFindsItsRowsAgain) {
    const std::string deep = test::directory_of_length(dir, test::LONG_DIRECTORY);
    dir.write(deep + "models/body.mod", SMALL_MODEL);
    dir.write(deep + "clips/walk", CLIP);
    const std::string list = dir.write(deep + "scene.txt", "models body.mod clips walk world\n");
    const std::string base = dir.file(deep);
    EXPECT_EQ(session_load_animation(&session, list.c_str(), 0), 0) << "they are not looked for there by themselves";
    EXPECT_EQ(session.animation_base, nullptr);
    session_load_model(&session, dir.write("a.mod", SMALL_MODEL).c_str());
    session_set_animation_path(&session, list.c_str(), base.c_str());
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 1);
    EXPECT_STREQ(root(0)->name, "body");
    EXPECT_EQ(list, session.animation_path);
    EXPECT_EQ(base, session.animation_base);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 1);
    session_close_all(&session);
    EXPECT_EQ(session.animation_base, nullptr);
}

TEST_F(LifecycleTest, AFailedReloadOfASceneListRemembersItsBaseAndALaterListHasItsOwn) {
    dir.write("models/body.mod", SMALL_MODEL);
    dir.write("clips/walk", CLIP);
    const std::string list = dir.file("scene.txt");
    session_load_model(&session, dir.write("a.mod", SMALL_MODEL).c_str());
    session_set_animation_path(&session, list.c_str(), dir.path().c_str());
    EXPECT_EQ(session_reload(&session), 0);
    dir.write("scene.txt", "models body.mod clips walk world\n");
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(dir.path(), session.animation_base);
    ASSERT_EQ(session_load_animation(&session, write_animation("other.txt").c_str(), 0), 1);
    EXPECT_EQ(session.animation_base, nullptr);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(session.animation_base, nullptr);
}

TEST_F(LifecycleTest, RenameToAPathThatAModelCannotKeepIsRefused) {
    const int32_t id = load(dir.write("a.mod", SMALL_MODEL));
    listen();
    const std::string directory = root(0)->path;
    EXPECT_EQ(session_rename_model(&session, id, (std::string(255, 'd') + "\\b.mod").c_str()), 0);
    EXPECT_EQ(reports.at(0).substr(0, 23), "message:path too long: ");
    EXPECT_STREQ(root(0)->name, "a");
    EXPECT_EQ(directory, root(0)->path);
    reports.clear();
    EXPECT_EQ(session_rename_model(&session, 0, std::string(600, 'd').c_str()), 0);
    EXPECT_TRUE(reports.empty()) << "an unknown id shows nothing";
}

TEST_F(LifecycleTest, ReloadAfterARenameOpensTheNewName) {
    const int32_t id = load(dir.write("a.mod", SMALL_MODEL));
    dir.write("b.mod", "points\n1 0 0 0\n");
    ASSERT_EQ(session_rename_model(&session, id, "B.mod"), 1);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_STREQ(root(0)->name, "b");
    EXPECT_EQ(model_count_points(root(0)), 1);
}

TEST_F(LifecycleTest, ReloadOfAFileWithAnotherExtensionTriesTheModelExtension) {
    load(dir.write("odd.txt", SMALL_MODEL));
    dir.write("odd.mod", "points\n1 0 0 0\n");
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(model_count_points(root(0)), 1);
}

TEST_F(LifecycleTest, OneFailureOfAReloadClosesAllAndTheNextReloadTriesTheSameFiles) {
    const std::string a = dir.write("a.mod", SMALL_MODEL);
    load(a);
    load(dir.write("b.mod", SMALL_MODEL));
    std::filesystem::remove(a);
    listen();
    EXPECT_EQ(session_reload(&session), 0);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(count_reports("message:Load failed"), 1);
    EXPECT_EQ(count_reports("Loading..."), 2) << "the second file is tried all the same";
    EXPECT_EQ(session_reload(&session), 0) << "still missing, still remembered";
    dir.write("a.mod", SMALL_MODEL);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 2);
    session_close_all(&session);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 0) << "after a success nothing is left over";
}

TEST_F(LifecycleTest, ANewSceneReplacesTheFilesThatAFailedReloadLeft) {
    const std::string a = dir.write("a.mod", SMALL_MODEL);
    load(a);
    std::filesystem::remove(a);
    EXPECT_EQ(session_reload(&session), 0);
    load(dir.write("b.mod", SMALL_MODEL));
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 1);
    EXPECT_STREQ(root(0)->name, "b");
}

TEST_F(LifecycleTest, ReloadOfAnAnimationKeepsTheRadiusAtTen) {
    const std::string list = write_animation();
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    session.anim_time = 1.5f;
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(session.radius, 10.0f);
    EXPECT_EQ(list, session.animation_path);
    EXPECT_EQ(session.anim_time, 1.5f);
    EXPECT_EQ(roots(), 1);
}

TEST_F(LifecycleTest, ReloadOfAnAnimationDoesNotRememberItsModelsByThemselves) {
    ASSERT_EQ(session_load_animation(&session, write_animation().c_str(), 0), 1);
    EXPECT_EQ(session_reload(&session), 1);
    session_close_all(&session);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 0);
}

TEST_F(LifecycleTest, AFailedReloadOfAnAnimationIsTriedAgainAndWinsOverLaterModels) {
    const std::string list = write_animation();
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    std::filesystem::remove(list);
    listen();
    EXPECT_EQ(session_reload(&session), 0);
    EXPECT_EQ(roots(), 0);
    // By the reload, by the loading, and once more behind the failure.
    EXPECT_EQ(count_reports("Closing currently open Model file"), 3);
    EXPECT_EQ(reports.back(), "status:Time: 0.00 of 0.00, Triangles: 0, Ready");
    load(dir.write("b.mod", SMALL_MODEL));
    EXPECT_EQ(session_reload(&session), 0) << "the left-over animation goes first";
    write_animation();
    load(dir.write("b.mod", SMALL_MODEL));
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 1);
    EXPECT_STREQ(root(0)->name, "body");
    // The list of models that was made on the way is still there.
    session_close_all(&session);
    EXPECT_EQ(session_reload(&session), 1);
    ASSERT_EQ(roots(), 1);
    EXPECT_STREQ(root(0)->name, "b");
}

TEST_F(LifecycleTest, AFailedReloadOfAnAnimationClosesWhatAMessageProcedureLoadsMeanwhile) {
    const std::string list = write_animation();
    nested_path = dir.write("b.mod", SMALL_MODEL);
    ASSERT_EQ(session_load_animation(&session, list.c_str(), 0), 1);
    std::filesystem::remove(list);
    nested_limit = 1;
    session_set_message_callback(&session, nested<do_load>);
    EXPECT_EQ(session_reload(&session), 0);
    EXPECT_EQ(nested_limit, 0);
    EXPECT_EQ(roots(), 0);
    EXPECT_EQ(session.radius, 10.0f);
}

TEST_F(LifecycleTest, AStatusProcedureMayReloadInTheMiddleOfAReload) {
    load(dir.write("a.mod", SMALL_MODEL));
    load(dir.write("b.mod", SMALL_MODEL));
    nested_limit = 5;
    session_set_status_callback(&session, nested<do_reload>);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(nested_limit, 0);
    session.status_callback = nullptr;
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_GE(roots(), 2);
}

TEST_F(LifecycleTest, AStatusProcedureMayResetInTheMiddleOfAReload) {
    load(dir.write("a.mod", SMALL_MODEL));
    load(dir.write("b.mod", SMALL_MODEL));
    nested_limit = 6;
    session_set_status_callback(&session, nested<do_reset>);
    EXPECT_EQ(session_reload(&session), 1);
    nested_limit = 0;
}

TEST_F(LifecycleTest, AMessageProcedureMayReloadInTheMiddleOfAFailedReload) {
    const std::string a = dir.write("a.mod", SMALL_MODEL);
    load(a);
    load(dir.write("b.mod", SMALL_MODEL));
    std::filesystem::remove(a);
    nested_limit = 4;
    session_set_message_callback(&session, nested<do_reload>);
    EXPECT_EQ(session_reload(&session), 0);
    EXPECT_EQ(roots(), 0);
    session.message_callback = nullptr;
    dir.write("a.mod", SMALL_MODEL);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 2) << "the outer call put its files back";
}

TEST_F(LifecycleTest, ReloadReleasesALentModelOnceAndLoadsItAsItsOwnRoot) {
    const int32_t parent = load(dir.write("a.mod", SMALL_MODEL));
    const int32_t lent = load(dir.write("b.mod", SMALL_MODEL));
    selection_add_model(&session, parent);
    ASSERT_EQ(selection_add_child_model(&session, lent), 1);
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_EQ(roots(), 2);
    EXPECT_EQ(model_count_children(root(0)), 0);
}

// ---- names ----

TEST_F(LifecycleTest, RenameOfAnUnknownIdChangesNothing) {
    const int32_t id = load(dir.write("a.mod", SMALL_MODEL));
    listen();
    EXPECT_EQ(session_rename_model(&session, id + 100, "b.mod"), 0);
    EXPECT_EQ(session_rename_model(&session, id, nullptr), 0);
    EXPECT_EQ(session_rename_model(&session, 0, "b.mod"), 0);
    EXPECT_STREQ(root(0)->name, "a");
    EXPECT_TRUE(reports.empty());
}

TEST_F(LifecycleTest, RenameKeepsTheDirectoryWhenThePathHasNone) {
    const int32_t id = load(dir.write("a.mod", SMALL_MODEL));
    const std::string directory = root(0)->path;
    EXPECT_EQ(session_rename_model(&session, id, "b.mod"), 1);
    EXPECT_STREQ(root(0)->name, "b");
    EXPECT_EQ(directory, root(0)->path);
    EXPECT_EQ(session_rename_model(&session, id, test::native_path("x/c.mod").c_str()), 1);
    EXPECT_EQ(test::native_path("x/"), root(0)->path);
}

TEST_F(LifecycleTest, RenameToATextThatIsTooShortForANameKeepsTheModelAndItsFile) {
    const int32_t id = load(dir.write("Ship.mod", SMALL_MODEL));
    EXPECT_EQ(session_rename_model(&session, id, "abc"), 1);
    EXPECT_EQ(id, session_find_model(&session, "ship"));
    EXPECT_EQ(session_reload(&session), 1);
    EXPECT_STREQ(root(0)->name, "ship");
}

TEST_F(LifecycleTest, FindModelIsExactAndTakesTheFirstInListOrder) {
    const std::string file = dir.write("Ship.mod", SMALL_MODEL);
    const int32_t first = load(file);
    load(file);
    EXPECT_EQ(first, session_find_model(&session, "ship"));
    EXPECT_EQ(session_find_model(&session, "Ship"), 0);
    EXPECT_EQ(session_find_model(&session, "shi"), 0);
    EXPECT_EQ(session_find_model(&session, ""), 0);
}

TEST_F(LifecycleTest, FindModelSeesAChildOnlyAfterItsLinkHasAState) {
    dir.write("hand.mod", SMALL_MODEL);
    const int32_t id = load(dir.write("arm.mod", "points\n1 0 0 0\nchild hand 0 0 0 1 1 1 0 0 0\n"));
    ASSERT_GE(id, 1);
    EXPECT_EQ(session_find_model(&session, "hand"), 0);
    ChildLink* link = list_at<ChildLink>(&root(0)->children, 0, 0);
    const int32_t child_id = child_state(&session, link)->id;
    EXPECT_EQ(child_id, session_find_model(&session, "hand"));
}

TEST_F(LifecycleTest, FindModelPassesOverStatesAndLinksWithoutAModel) {
    load(dir.write("arm.mod", SMALL_MODEL));
    ChildLink* link = model_add_child(const_cast<Model*>(root(0)), nullptr, "ghost", 0, 0, 0, 1, 1, 1, "0", "0", "0");
    child_state(&session, link);
    ModelState* empty = list_add<ModelState>(&session.model_states, 1000000);
    *empty = ModelState{};
    EXPECT_EQ(session_find_model(&session, "ghost"), 0);
    EXPECT_EQ(session_find_model(&session, "nobody"), 0);
}

TEST_F(LifecycleTest, FindImagesOfAnUnknownIdOrAModelWithoutImagesIsNull) {
    const int32_t id = load(dir.write("a.mod", SMALL_MODEL));
    EXPECT_EQ(session_find_images(&session, id), nullptr);
    EXPECT_EQ(session_find_images(&session, id + 5), nullptr);
    EXPECT_EQ(session_find_images(&session, -1), nullptr);
}

TEST_F(LifecycleTest, FindImagesGivesTheNames) {
    std::string tga(18, '\0');
    tga[2] = 2;
    tga[12] = 2;
    tga[14] = 2;
    tga[16] = 24;
    dir.write("skin.tga", tga + std::string(12, 'x'));
    const int32_t id = load(dir.write("a.mod", std::string(SMALL_MODEL) + "image skin.tga x y\n"));
    ASSERT_GE(id, 1);
    EXPECT_STREQ(session_find_images(&session, id), " skin.tga ") << "the empty mirror image adds its blank";
}

TEST_F(LifecycleTest, SaveModelSaysThatItIsNotThere) {
    listen();
    session_save_model(&session);
    EXPECT_EQ((std::vector<std::string>{"message:Save not implemented", "status:Save not implemented"}), reports);
}

}  // namespace
}  // namespace pelt
