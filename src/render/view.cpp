// The arithmetic of the one view: extents, zoom, pan and focus. The surprise: a window may be smaller than a pixel
// before it is mapped, so a size counts as at least 1 wherever it stands in a ratio, and extents stay finite.
#include "render/view.h"

#include <cmath>

#include "scene/session.h"

namespace pelt {

namespace {

constexpr float FIT_MARGIN = 1.05f;
constexpr float RESET_RADIUS = 10.0f;
constexpr float ZOOM_MIN = 0.001f;
constexpr float ZOOM_MAX = 100.0f;

// Half of the visible world is a quarter of the extent, so that a pixel is the extent's half over the size.
constexpr float PIXEL_FACTOR = 0.5f;

bool is_unsized(const ViewState* view) { return view->width <= 1 && view->height <= 1; }

// The longer side shows more than the radius, the shorter one just that.
ViewExtents fitted_extents(float radius, int32_t width, int32_t height) {
    if (width > height) { return {radius * view_size_ratio(width, height), radius}; }
    return {radius, radius * view_size_ratio(height, width)};
}

}  // namespace

float view_size_ratio(int32_t size, int32_t other) {
    const int32_t above = size > 1 ? size : 1;
    const int32_t below = other > 1 ? other : 1;
    return static_cast<float>(above) / static_cast<float>(below);
}

float view_scaled_extent(float extent, float ratio) {
    const float scaled = extent * ratio;
    return std::isfinite(scaled) ? scaled : extent;
}

void view_set_freerotate(ViewState* view, int32_t on) { view->freerotate = on; }

void view_set_focus(ViewState* view, float x, float y, float z) { view->focus = {x, y, z}; }

void view_set_zoom(ViewState* view, float factor) {
    if (!(factor >= ZOOM_MIN)) { factor = ZOOM_MIN; }
    view->zoom = factor > ZOOM_MAX ? ZOOM_MAX : factor;
}

void view_pan_pixels(ViewState* view, float x, float y, int relative) {
    if (x == 0.0f && y == 0.0f) {
        // Intended: no movement recentres the picture.
        view->pan_x = 0.0f;
        view->pan_y = 0.0f;
        return;
    }
    const float width = static_cast<float>(view->width > 1 ? view->width : 1);
    const float height = static_cast<float>(view->height > 1 ? view->height : 1);
    const float dx = x / width * view->extent_x * PIXEL_FACTOR * view->zoom;
    const float dy = y / height * view->extent_y * PIXEL_FACTOR * view->zoom;
    if (relative != 0) {
        view->pan_x -= dx;
        view->pan_y += dy;  // pixels count downward
    } else {
        view->pan_x = dx;
        view->pan_y = dy;
    }
}

void view_turn_angles(float angle, float pitch, Mat4* out) {
    mat_identity(out);
    mat_rotate(out, 0.0f, angle, 0.0f);
    mat_rotate(out, pitch, 0.0f, 0.0f);
}

void view_transforms(const ViewState* view, Mat4* modelview, Mat4* projection) {
    if (view->freerotate != 0 && view->window != 0) {
        *modelview = view->turn;
    } else {
        view_turn_angles(view->angle, view->pitch, modelview);
    }
    mat_translate(modelview, -view->focus.x, -view->focus.y, -view->focus.z);
    mat_identity(projection);
    mat_scale(projection, 1.0f / (view->extent_x * VIEW_HALF_EXTENT * view->zoom),
              1.0f / (view->extent_y * VIEW_HALF_EXTENT * view->zoom), -(1.0f / view->extent_z));
    mat_translate(projection, -view->pan_x, -view->pan_y, 0.0f);
}

float view_unit_per_pixel(const ViewState* view) {
    const float width = static_cast<float>(view->width > 1 ? view->width : 1);
    return view->extent_x * PIXEL_FACTOR * view->zoom / width;
}

void view_fit(ViewState* view, float radius, bool keep) {
    const float r = radius * FIT_MARGIN;
    const ViewExtents extents = fitted_extents(r, view->width, view->height);
    const float z = r + r;
    if (!std::isfinite(extents.x) || !std::isfinite(extents.y) || !std::isfinite(z)) { return; }
    if (keep) {
        if (extents.x <= view->extent_x && extents.y <= view->extent_y && z <= view->extent_z) { return; }
        view->zoom = (view->extent_z / z) * view->zoom;  // with the depth of before
    }
    view->extent_x = extents.x;
    view->extent_y = extents.y;
    view->extent_z = z;
    view->unsized_radius = is_unsized(view) ? r : 0.0f;
}

ViewExtents view_resized_extents(const ViewState* view, int32_t width, int32_t height) {
    if (is_unsized(view) && view->unsized_radius > 0.0f) { return fitted_extents(view->unsized_radius, width, height); }
    return {view_scaled_extent(view->extent_x, view_size_ratio(width, view->width)),
            view_scaled_extent(view->extent_y, view_size_ratio(height, view->height))};
}

void view_take_size(ViewState* view, int32_t width, int32_t height, ViewExtents extents) {
    view->width = width;
    view->height = height;
    view->extent_x = extents.x;
    view->extent_y = extents.y;
    if (!is_unsized(view)) { view->unsized_radius = 0.0f; }
}

void view_reset(ViewState* view) {
    view_fit(view, RESET_RADIUS, false);
    view->focus = {0.0f, 0.0f, 0.0f};
}

void view_fit_scene(ViewState* view, const Session* session) { view_fit(view, session->radius, true); }

}  // namespace pelt
