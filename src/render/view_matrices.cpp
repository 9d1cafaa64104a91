// What of the view reaches OpenGL: the projection, the rotation, the clear colour and the lights. The surprise: in
// free rotation the modelview matrix of the context is itself the state of the view, and nothing here rebuilds it.
#include "render/view_matrices.h"

#include <GL/gl.h>

namespace pelt {

namespace {

bool has_context(const ViewState* view) { return gl_context_current(view->window); }

}  // namespace

void view_load_projection(const ViewState* view) {
    if (!has_context(view)) { return; }
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // The negative depth scale lets a nearer point have the smaller depth value.
    glScalef(1.0f / (view->extent_x * VIEW_HALF_EXTENT * view->zoom),
             1.0f / (view->extent_y * VIEW_HALF_EXTENT * view->zoom), -(1.0f / view->extent_z));
    glTranslatef(-view->pan_x, -view->pan_y, 0.0f);
}

void view_load_rotation(ViewState* view) {
    if (!has_context(view)) { return; }
    glMatrixMode(GL_MODELVIEW);
    if (view->freerotate != 0) { return; }
    view_turn_angles(view->angle, view->pitch, &view->turn);
    glLoadIdentity();
    glRotatef(view->angle, 0.0f, 1.0f, 0.0f);
    glRotatef(view->pitch, 1.0f, 0.0f, 0.0f);
}

void view_set_angles(ViewState* view, float angle, float pitch) {
    // The flag is lifted meanwhile, so that a named view replaces the matrix of a free rotation too.
    const int32_t freerotate = view->freerotate;
    if (freerotate != 0) { view_set_freerotate(view, 0); }
    view->angle = angle;
    view->pitch = pitch;
    view_load_rotation(view);
    if (freerotate != 0) { view_set_freerotate(view, freerotate); }
}

void view_rotate(ViewState* view, float x_angle, float y_angle) {
    if (view->freerotate == 0) {
        view->angle += x_angle;
        view->pitch += y_angle;
        return;
    }
    if (!has_context(view)) { return; }
    float before[16];
    glMatrixMode(GL_MODELVIEW);
    glGetFloatv(GL_MODELVIEW_MATRIX, before);
    glLoadIdentity();
    if (x_angle != 0.0f) { glRotatef(x_angle, 0.0f, 1.0f, 0.0f); }
    if (y_angle != 0.0f) { glRotatef(y_angle, 1.0f, 0.0f, 0.0f); }
    glMultMatrixf(before);
    // From what the context had just now: the copy never drifts further than one turn.
    Mat4 columns, held, turned;
    mat_copy_words(before, columns.m);
    mat_transpose(&columns, &held);
    view_turn_angles(x_angle, y_angle, &turned);
    mat_multiply(&held, &turned, &view->turn);
}

void view_set_background(ViewState* view, float red, float green, float blue) {
    view->background[0] = red;
    view->background[1] = green;
    view->background[2] = blue;
    if (has_context(view)) { glClearColor(red, green, blue, 0.0f); }
}

void view_get_matrix(const ViewState* view, Mat4* out) {
    if (!has_context(view)) {
        mat_identity(out);
        return;
    }
    Mat4 columns;
    glMatrixMode(GL_MODELVIEW);
    glGetFloatv(GL_MODELVIEW_MATRIX, columns.m);
    mat_transpose(&columns, out);
}

void view_set_matrix(ViewState* view, const Mat4* matrix) {
    if (!has_context(view)) { return; }
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(mat_to_gl(matrix)->m);
    view->turn = *matrix;
}

const char* view_renderer(const ViewState* view) {
    return has_context(view) ? reinterpret_cast<const char*>(glGetString(GL_RENDERER)) : nullptr;
}

void view_init_lighting() {
    static constexpr float DIFFUSE[] = {0.5f, 0.5f, 0.5f, 1.0f};
    static constexpr float AMBIENT[] = {0.35f, 0.35f, 0.35f, 1.0f};
    static constexpr float SPECULAR[] = {0.05f, 0.05f, 0.05f, 1.0f};
    static constexpr float SHININESS[] = {0.2f};
    static constexpr float LIGHT_0_AMBIENT[] = {0.8f, 0.8f, 0.8f, 0.0f};
    static constexpr float LIGHT_1_POSITION[] = {0.0f, 0.0f, 1.0f, 0.0f};
    static constexpr float LIGHT_2_POSITION[] = {0.0f, 0.0f, -1.0f, 0.0f};

    glMaterialfv(GL_FRONT, GL_DIFFUSE, DIFFUSE);
    glMaterialfv(GL_FRONT, GL_AMBIENT, AMBIENT);
    glMaterialfv(GL_FRONT, GL_SPECULAR, SPECULAR);
    glMaterialfv(GL_FRONT, GL_SHININESS, SHININESS);
    glLightfv(GL_LIGHT0, GL_AMBIENT, LIGHT_0_AMBIENT);
    glLightModelf(GL_LIGHT_MODEL_LOCAL_VIEWER, 1.0f);
    glLightfv(GL_LIGHT1, GL_POSITION, LIGHT_1_POSITION);
    glLightfv(GL_LIGHT2, GL_POSITION, LIGHT_2_POSITION);  // intended: it has a place and is never enabled
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_LIGHT1);
    glDepthFunc(GL_LEQUAL);
}

}  // namespace pelt
