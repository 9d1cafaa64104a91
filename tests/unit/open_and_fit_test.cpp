// The orders of view and scene around a load.
#include "application/open_and_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "application/session_lifecycle.h"
#include "edit/selection.h"
#include "motion/root_models.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

// A box of 100 x 50 x 10 with its centre at (50, 25, 5): radius 200.
constexpr const char* MODEL = "points\n1 0 0 0\n2 100 50 10\n";
constexpr const char* LARGE_MODEL = "points\n1 0 0 0\n2 1000 50 10\n";
constexpr float FIT = 1.05f;

std::string nested_path;
int nested_limit = 0;

void open_from_inside(const char*) {
    if (nested_limit > 0) {
        --nested_limit;
        file_open_model(application(), nested_path.c_str());
    }
}

void reset_from_inside(const char*) {
    if (nested_limit > 0) {
        --nested_limit;
        application_reset(application());
    }
}

class OpenAndFitTest : public ::testing::Test {
protected:
    OpenAndFitTest() : app(application()), session(&app->session), view(&app->view) {
        *app = Application{};
        nested_limit = 0;
        session_init(session);
        view->width = 200;
        view->height = 100;
        view->zoom = 2.0f;
        view_reset(view);
    }
    ~OpenAndFitTest() override {
        session->status_callback = nullptr;
        session_reset(session, 1);
    }

    void disturb_view() {
        view->pan_x = 1.0f;
        view->pan_y = 2.0f;
        view->angle = 3.0f;
        view->pitch = 4.0f;
        view->focus = Vec3{7, 8, 9};
    }

    void expect_extents(float radius) {
        const float r = radius * FIT;
        EXPECT_FLOAT_EQ(2.0f * r, view->extent_x);  // the view is twice as wide as high
        EXPECT_FLOAT_EQ(r, view->extent_y);
        EXPECT_FLOAT_EQ(r + r, view->extent_z);
    }

    void expect_focus(float x, float y, float z) {
        EXPECT_FLOAT_EQ(x, view->focus.x);
        EXPECT_FLOAT_EQ(y, view->focus.y);
        EXPECT_FLOAT_EQ(z, view->focus.z);
    }

    std::string write_animation() {
        dir.write("body.mod", MODEL);
        dir.write("walk.clip", "names translate\n0.0 0 0 0\n3.0 0 0 0\n");
        return dir.write("scene.txt", dir.path() + " body.mod " + dir.path() + " walk.clip world\n");
    }

    test::TempDir dir;
    Application* app;
    Session* session;
    ViewState* view;
};

TEST_F(OpenAndFitTest, OpenFitsAndCentresTheViewAndKeepsTheZoom) {
    disturb_view();
    const int32_t id = file_open_model(app, dir.write("a.mod", MODEL).c_str());
    EXPECT_GE(id, 1);
    EXPECT_EQ(view->pan_x, 0.0f);
    EXPECT_EQ(view->pan_y, 0.0f);
    EXPECT_EQ(view->angle, 0.0f);
    EXPECT_EQ(view->pitch, 0.0f);
    EXPECT_EQ(view->zoom, 2.0f);
    expect_extents(200.0f);
    expect_focus(50, 25, 5);
}

TEST_F(OpenAndFitTest, APathThatNoModelCanKeepLeavesTheSceneAndTheViewOpen) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    disturb_view();
    for (const std::string& path : {std::string(255, 'd') + "\\b.mod", std::string(512, 'n')}) {
        EXPECT_EQ(file_open_model(app, path.c_str()), 0);
        EXPECT_EQ(file_add(app, path.c_str()), 0);
        EXPECT_EQ(list_count(&session->root_models), 1);
        EXPECT_EQ(view->angle, 3.0f);
        expect_focus(7, 8, 9);
    }
    file_reload(app);
    EXPECT_EQ(list_count(&session->root_models), 1);
}

TEST_F(OpenAndFitTest, OpenReplacesTheSceneAndIdsGrow) {
    const std::string file = dir.write("a.mod", MODEL);
    const int32_t first = file_open_model(app, file.c_str());
    const int32_t second = file_open_model(app, file.c_str());
    EXPECT_GE(first, 1);
    EXPECT_GT(second, first);
    EXPECT_EQ(list_count(&session->root_models), 1);
}

TEST_F(OpenAndFitTest, OpenLeavesTheSelectionAlone) {
    const std::string file = dir.write("a.mod", MODEL);
    selection_add_model(session, file_open_model(app, file.c_str()));
    file_open_model(app, file.c_str());
    EXPECT_EQ(list_count(&session->selection.models), 1);
    EXPECT_EQ(selection_current_model(session), nullptr);
}

TEST_F(OpenAndFitTest, AFailedOpenLeavesAnEmptySceneAndTheViewReset) {
    file_open_model(app, dir.write("a.mod", LARGE_MODEL).c_str());
    disturb_view();
    EXPECT_EQ(file_open_model(app, dir.file("none.mod").c_str()), 0);
    EXPECT_EQ(list_count(&session->root_models), 0);
    EXPECT_EQ(view->angle, 0.0f);
    expect_extents(10.0f);
    expect_focus(0, 0, 0);
}

TEST_F(OpenAndFitTest, AddKeepsTheSceneAndGrowsTheExtentsUnderTheZoom) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    disturb_view();
    EXPECT_GE(file_add(app, dir.write("b.mod", LARGE_MODEL).c_str()), 1);
    EXPECT_EQ(list_count(&session->root_models), 2);
    expect_extents(2000.0f);
    EXPECT_FLOAT_EQ(view->zoom, 0.2f);  // 2.0 times the old extent over the new: the picture keeps its scale
    EXPECT_EQ(view->angle, 3.0f);
    expect_focus(7, 8, 9);
}

TEST_F(OpenAndFitTest, AddOfASmallerModelLeavesExtentsAndZoom) {
    file_open_model(app, dir.write("a.mod", LARGE_MODEL).c_str());
    EXPECT_GE(file_add(app, dir.write("b.mod", MODEL).c_str()), 1);
    expect_extents(2000.0f);
    EXPECT_EQ(view->zoom, 2.0f);
}

TEST_F(OpenAndFitTest, AFailedAddChangesNothing) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    disturb_view();
    EXPECT_EQ(file_add(app, dir.file("none.mod").c_str()), 0);
    EXPECT_EQ(list_count(&session->root_models), 1);
    expect_extents(200.0f);
    expect_focus(7, 8, 9);
}

TEST_F(OpenAndFitTest, ReloadKeepsZoomAndFocusAndFitsTheExtents) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    disturb_view();
    view->zoom = 0.5f;
    dir.write("a.mod", LARGE_MODEL);
    file_reload(app);
    EXPECT_EQ(view->zoom, 0.5f);
    expect_focus(7, 8, 9);
    expect_extents(2000.0f);
    EXPECT_EQ(view->pan_x, 1.0f);
    EXPECT_EQ(view->angle, 3.0f);
}

TEST_F(OpenAndFitTest, AFailedReloadStillKeepsZoomAndFocus) {
    const std::string file = dir.write("a.mod", MODEL);
    file_open_model(app, file.c_str());
    disturb_view();
    std::filesystem::remove(file);
    file_reload(app);
    EXPECT_EQ(list_count(&session->root_models), 0);
    EXPECT_EQ(view->zoom, 2.0f);
    expect_focus(7, 8, 9);
    expect_extents(10.0f);
    dir.write("a.mod", MODEL);
    file_reload(app);
    EXPECT_EQ(list_count(&session->root_models), 1) << "the failed files are tried again";
}

TEST_F(OpenAndFitTest, OpenOfAnAnimationAnswersOne) {
    disturb_view();
    EXPECT_EQ(animate_open(app, write_animation().c_str()), 1);
    EXPECT_EQ(view->angle, 0.0f);
    EXPECT_EQ(view->zoom, 2.0f);
    expect_extents(200.0f);
    expect_focus(50, 25, 5);
    EXPECT_EQ(session->anim_end, 3.0f);
}

TEST_F(OpenAndFitTest, AFailedOpenOfAnAnimationAnswersZero) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    EXPECT_EQ(animate_open(app, dir.file("none.txt").c_str()), 0);
    EXPECT_EQ(list_count(&session->root_models), 0);
    expect_extents(10.0f);
}

TEST_F(OpenAndFitTest, ReloadOfAnAnimationShowsTheRadiusOfAnEmptyScene) {
    ASSERT_EQ(animate_open(app, write_animation().c_str()), 1);
    file_reload(app);
    EXPECT_EQ(list_count(&session->root_models), 1);
    expect_extents(10.0f);
}

TEST_F(OpenAndFitTest, ResetEmptiesTheSceneAndKeepsZoomAndAngles) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    disturb_view();
    session->display_wireframe = 1;
    application_reset(app);
    application_reset(app);
    EXPECT_EQ(list_count(&session->root_models), 0);
    EXPECT_EQ(session->display_wireframe, 1);
    expect_extents(10.0f);
    expect_focus(0, 0, 0);
    EXPECT_EQ(view->zoom, 2.0f);
    EXPECT_EQ(view->pan_x, 1.0f);
    EXPECT_EQ(view->pitch, 4.0f);
}

TEST_F(OpenAndFitTest, BeforeAWindowExistsTheExtentsStayFinite) {
    view->width = view->height = 0;
    EXPECT_GE(file_open_model(app, dir.write("a.mod", MODEL).c_str()), 1);
    EXPECT_TRUE(std::isfinite(view->extent_x));
    EXPECT_TRUE(std::isfinite(view->extent_y));
}

TEST_F(OpenAndFitTest, AStatusProcedureMayOpenInTheMiddleOfAnOpen) {
    const std::string file = dir.write("a.mod", MODEL);
    nested_path = dir.write("b.mod", LARGE_MODEL);
    for (int depth = 1; depth <= 6; ++depth) {
        nested_limit = depth;
        session_set_status_callback(session, open_from_inside);
        EXPECT_GE(file_open_model(app, file.c_str()), 1);
        session_set_status_callback(session, nullptr);
        EXPECT_TRUE(std::isfinite(view->extent_x));
    }
}

TEST_F(OpenAndFitTest, AStatusProcedureMayResetInTheMiddleOfAnOpenOrAReload) {
    const std::string file = dir.write("a.mod", MODEL);
    for (int depth = 1; depth <= 6; ++depth) {
        nested_limit = depth;
        session_set_status_callback(session, reset_from_inside);
        EXPECT_GE(file_open_model(app, file.c_str()), 1);
        nested_limit = depth;
        file_reload(app);
        session_set_status_callback(session, nullptr);
    }
}

TEST_F(OpenAndFitTest, NullsDoNothing) {
    file_open_model(app, dir.write("a.mod", MODEL).c_str());
    EXPECT_EQ(file_open_model(app, nullptr), 0);
    EXPECT_EQ(file_add(app, nullptr), 0);
    EXPECT_EQ(animate_open(app, nullptr), 0);
    EXPECT_EQ(file_open_model(nullptr, "a.mod"), 0);
    EXPECT_EQ(file_add(nullptr, "a.mod"), 0);
    file_reload(nullptr);
    application_reset(nullptr);
    EXPECT_EQ(list_count(&session->root_models), 1);
}

}  // namespace
}  // namespace pelt
