// The frame, from the wish to draw to the swap, and what the window calls back: once when its context exists, and at
// every size and paint. The surprise: a resize that is not yet known only stores the new size and moves the window;
// the paint that follows does the drawing, or a frame that the script asks for before that paint comes.
#include "render/frame.h"

#include <GL/gl.h>

#include <cstdio>

#include "render/marks.h"
#include "render/overlays.h"
#include "render/scene_draw.h"
#include "render/screen_capture.h"
#include "render/uvee_inset.h"
#include "scene/session.h"

namespace pelt {

namespace {

constexpr float PIXELS_TO_EXTENT = 2.0f;
constexpr double VIEW_SCALE = 300.0;  // so many pixels show the world from -1 to 1 before a model is loaded
constexpr float INIT_EXTENT_Z = 600.0f;
constexpr int32_t DEFAULT_WINDOW_SIZE = 300;
constexpr int32_t FIXED_SIZE_MIN = 20;
constexpr int32_t FIXED_SIZE_MAX = 3000;
constexpr float SMOOTH_INSET = 0.5f;  // texels
constexpr int RESIZE_ATTEMPTS = 2;    // the first may only take over yet another size

Session* bound_session = nullptr;
ViewState* bound_view = nullptr;

// A move may send a size message before it returns, which must not move the window once more.
bool moving_window = false;

// While the view goes back to the size of its parent, whose size the messages of the moves have nothing to add to.
bool following_parent = false;

struct Size {
    int32_t width;
    int32_t height;
};

Size window_size(WindowHandle window) {
    int32_t x = 0, y = 0;
    Size size{0, 0};
    gl_window_geometry(window, &x, &y, &size.width, &size.height);
    return size;
}

// As far as the window can take it.
Size parent_size(WindowHandle window) {
    Size size = window_size(gl_window_parent(window));
    gl_window_clamp_size(window, &size.width, &size.height);
    return size;
}

bool is_bound() { return bound_session != nullptr && bound_view != nullptr; }

float initial_extent(int32_t pixels) {
    return static_cast<float>(static_cast<double>(PIXELS_TO_EXTENT * static_cast<float>(pixels)) / VIEW_SCALE);
}

void report_size(const char* format, Size size) {
    if (bound_session->status_callback == nullptr) { return; }
    char text[STATUS_TEXT_SIZE];
    std::snprintf(text, sizeof text, format, size.width, size.height);
    bound_session->status_callback(text);
}

void move_window(WindowHandle window, Size size) {
    if (moving_window) { return; }
    moving_window = true;
    gl_window_move(window, 0, 0, size.width, size.height);
    moving_window = false;
}

// The background as a filled viewport on a window of the inverse colour.
void clear_fixed_size(const float background[3]) {
    glClearColor(1.0f - background[0], 1.0f - background[1], 1.0f - background[2], 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glColor4f(background[0], background[1], background[2], 0.0f);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_TEXTURE_2D);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glBegin(GL_TRIANGLE_STRIP);
    glVertex2f(-2.0f, -2.0f);
    glVertex2f(-2.0f, 2.0f);
    glVertex2f(2.0f, -2.0f);
    glVertex2f(2.0f, 2.0f);
    glEnd();
    glPopMatrix();
    glClearColor(background[0], background[1], background[2], 0.0f);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);  // also with textures off: every model disables it again
}

void draw_picture(Session* session, ViewState* view, bool with_marks) {
    if (view->fixed_size != 0) {
        clear_fixed_size(view->background);
    } else {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }
    view_load_projection(view);
    view_load_rotation(view);
    glPushMatrix();
    glTranslatef(-view->focus.x, -view->focus.y, -view->focus.z);
    scene_draw(session);
    if (with_marks) { marks_draw(session, view); }
    glPopMatrix();
}

void draw_frame() {
    const WindowHandle window = bound_view->window;
    gl_begin_paint(window);  // it may make the context current
    if (gl_context_current(window)) {
        draw_picture(bound_session, bound_view, true);
        frame_swap();
    }
    gl_end_paint(window);
}

void show_viewport(ViewState* view) {
    view->resize_due = 0;
    if (gl_context_current(view->window)) { glViewport(0, 0, view->width, view->height); }
    view_load_projection(view);
    if (view->window != 0) { draw_frame(); }
}

// Whatever sizes parent and window have, and whichever of the moves send messages: the view takes the size of the
// parent, and one paint is left to do the drawing and the report, or the next frame of the script does them.
void follow_parent(ViewState* view) {
    view->fixed_size = 0;
    following_parent = true;
    gl_window_move(view->window, 0, 0, DEFAULT_WINDOW_SIZE, DEFAULT_WINDOW_SIZE);
    const Size parent = parent_size(view->window);
    const bool has_size = parent.width > 0 && parent.height > 0;
    if (has_size) { gl_window_move(view->window, 0, 0, parent.width, parent.height); }
    following_parent = false;
    if (!has_size) { return; }
    view_take_size(view, parent.width, parent.height, view_resized_extents(view, parent.width, parent.height));
    view->resize_due = 1;
    gl_window_invalidate(view->window);
}

}  // namespace

void frame_bind(Session* session, ViewState* view) {
    bound_session = session;
    bound_view = view;
}

const ViewState* frame_view() { return bound_view; }

void view_init(WindowHandle window, int32_t, const void*) {
    if (!is_bound()) { return; }
    ViewState* view = bound_view;
    view->window = window;
    view->angle = view->pitch = 0.0f;
    view->pan_x = view->pan_y = 0.0f;
    view->zoom = 1.0f;
    view->background[0] = view->background[1] = view->background[2] = 0.0f;
    gl_make_current(window);
    const Size size = window_size(window);
    view->width = size.width > 1 ? size.width : 1;
    view->height = size.height > 1 ? size.height : 1;
    view->extent_x = initial_extent(view->width);
    view->extent_y = initial_extent(view->height);
    view->extent_z = INIT_EXTENT_Z;
    view->unsized_radius = 0.0f;
    view->resize_due = 0;
    view->focus = {0.0f, 0.0f, 0.0f};
    session_set_points_color(bound_session, 0);
    if (!gl_context_current(window)) { return; }
    view_load_projection(view);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glShadeModel(GL_SMOOTH);
    glEnable(GL_DEPTH_TEST);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    session_set_smooth(bound_session, 0);
    glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<float>(GL_MODULATE));
    glEnable(GL_COLOR_MATERIAL);
    glColorMaterial(GL_FRONT_AND_BACK, GL_DIFFUSE);
    view_init_lighting();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    mat_identity(&view->turn);
}

void view_resize(WindowHandle window, int32_t, const void*) {
    if (!is_bound()) { return; }
    ViewState* view = bound_view;
    if (following_parent) { return; }
    Size size = parent_size(window);
    if (size.width < 0 || size.height < 0 || (size.width == 0 && size.height == 0)) { return; }
    if (size.width != view->width || size.height != view->height) {
        const ViewExtents extents = view_resized_extents(view, size.width, size.height);
        move_window(window, size);
        if (view->fixed_size == 0) {
            view_take_size(view, size.width, size.height, extents);
            view->resize_due = 1;
            return;
        }
    }
    show_viewport(view);
    if (view->fixed_size == 0) {
        size.width = (size.width - CAPTURE_BORDERS) & CAPTURE_MASK;
        size.height = (size.height - CAPTURE_BORDERS) & CAPTURE_MASK;
    }
    report_size("%dx%d", size);
}

void view_set_size(int32_t width, int32_t height) {
    if (!is_bound()) { return; }
    ViewState* view = bound_view;
    if (width == 0 && height == 0) {
        follow_parent(view);
        return;
    }
    if (width < FIXED_SIZE_MIN || width > FIXED_SIZE_MAX || height < FIXED_SIZE_MIN || height > FIXED_SIZE_MAX) {
        return;
    }
    if (width == view->width && height == view->height) {
        return;  // intended: the size is not fixed then
    }
    view->fixed_size = 1;
    view_take_size(view, width, height, view_resized_extents(view, width, height));
    show_viewport(view);
    report_size("Window resize = %dx%d", {width, height});
}

void frame_draw() {
    if (!is_bound() || bound_view->window == 0) { return; }
    // A frame takes the place of the paint that a new size still waits for, so it does all that the paint would do.
    for (int attempt = 0; attempt < RESIZE_ATTEMPTS && bound_view->resize_due != 0; ++attempt) {
        view_resize(bound_view->window, 0, nullptr);
        if (bound_view->resize_due == 0) { return; }
    }
    draw_frame();
}

void frame_draw_unswapped() {
    // No paint is begun: nothing reaches the screen here, so a pending one has to stay pending.
    if (!is_bound() || !gl_context_current(bound_view->window)) { return; }
    draw_picture(bound_session, bound_view, !marks_stay_out_of_pictures());
}

void frame_draw_as(const ViewState& view) {
    if (!is_bound() || !gl_context_current(bound_view->window)) { return; }
    // Whoever asks for the view while it is drawn gets this one.
    const ViewState kept = *bound_view;
    *bound_view = view;
    draw_picture(bound_session, bound_view, !marks_stay_out_of_pictures());
    *bound_view = kept;
}

void frame_swap() {
    if (!is_bound() || !gl_context_current(bound_view->window)) { return; }
    glFlush();
    gl_swap_buffers(bound_view->window);
}

void session_set_smooth(Session* session, int32_t on) {
    // Intended: the flag is never stored. It stays 0, so that switching on insets once more each time.
    if (session == nullptr || on == session->display_smooth) { return; }
    const float inset = on != 0 ? SMOOTH_INSET : 0.0f;
    for (RootModel& root : list_elements<RootModel>(session->root_models)) {
        model_inset_uvees(root.model, inset, inset);
    }
}

}  // namespace pelt
