// What of the view reaches OpenGL. Without a context these store their values and make no call.
#pragma once

#include "render/view.h"

namespace pelt {

void view_load_projection(const ViewState* view);  // leaves the matrix mode at GL_PROJECTION
void view_load_rotation(ViewState* view);          // leaves it at GL_MODELVIEW
void view_set_angles(ViewState* view, float angle, float pitch);
void view_rotate(ViewState* view, float x_angle, float y_angle);
void view_set_background(ViewState* view, float red, float green, float blue);
void view_get_matrix(const ViewState* view, Mat4* out);     // row-major; the identity without a context
void view_set_matrix(ViewState* view, const Mat4* matrix);  // row-major
const char* view_renderer(const ViewState* view);           // what draws, in its own words; null without a context
void view_init_lighting();

}  // namespace pelt
