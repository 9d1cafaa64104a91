// The fixed orders of view and scene around a load. What surprises: opening a file closes the old scene before it
// looks at the new one (though not before it looks at the name), and neither opening nor reloading resets the zoom.
#include "application/open_and_fit.h"

#include "application/session_lifecycle.h"
#include "edit/bounds.h"
#include "foundation/file_access.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"

namespace pelt {

namespace {

using Loader = int32_t (*)(Session* session, const char* path);

int32_t load_animation(Session* session, const char* path) { return session_load_animation(session, path, 0); }

int32_t open_and_fit(Application* app, const char* path, Loader load) {
    if (app == nullptr || path == nullptr) { return 0; }
    Session* session = &app->session;
    ViewState* view = &app->view;
    session_close_all(session);
    view->pan_x = view->pan_y = 0.0f;
    view->angle = view->pitch = 0.0f;
    view_reset(view);
    const int32_t result = load(session, path);
    if (result > 0) {
        scene_evaluate(session);
        view_fit(view, session->radius, false);
        view->focus = scene_centre(session);
    }
    return result;
}

}  // namespace

int32_t file_open_model(Application* app, const char* path) {
    // A path that no model can have is known before there is anything to close for it.
    if (app != nullptr && path != nullptr && !path_fits(path)) { return session_load_model(&app->session, path); }
    return open_and_fit(app, path, session_load_model);
}

int32_t animate_open(Application* app, const char* path) { return open_and_fit(app, path, load_animation); }

int32_t file_add(Application* app, const char* path) {
    if (app == nullptr || path == nullptr) { return 0; }
    const int32_t id = session_load_model(&app->session, path);
    if (id > 0) { view_fit_scene(&app->view, &app->session); }
    return id;
}

void file_reload(Application* app) {
    if (app == nullptr) { return; }
    ViewState* view = &app->view;
    const Vec3 focus = view->focus;
    const float zoom = view->zoom;
    view_reset(view);
    session_reload(&app->session);
    view_fit_scene(view, &app->session);
    view->zoom = zoom;
    view->focus = focus;
}

void application_reset(Application* app) {
    if (app != nullptr) {
        session_reset(&app->session, 0);
        view_reset(&app->view);
    }
}

}  // namespace pelt
