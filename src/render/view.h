// The one view: its record and its arithmetic. No OpenGL here; see view_matrices.h for what reaches it.
#pragma once

#include <cstdint>

#include "foundation/math3d.h"
#include "window/gl_window.h"

namespace pelt {

struct Session;

// Half of the visible world, as a share of the extent.
inline constexpr float VIEW_HALF_EXTENT = 0.25f;

struct ViewState {
    int32_t freerotate;   // the modelview matrix of the context is the state
    WindowHandle window;  // 0 until one is created; never cleared
    float zoom;           // larger shows more
    float pan_x, pan_y;   // world units
    float angle, pitch;   // degrees about y and x
    float extent_x, extent_y, extent_z;
    int32_t width, height;  // pixels
    Vec3 focus;
    int32_t fixed_size;
    float background[3];
    float unsized_radius;  // of a fit made while the view had no size to speak of, margin included; 0 for none
    int32_t resize_due;    // a new size of the window was stored, and neither viewport nor picture has it yet
    Mat4 turn;             // the rotation that the context holds, so that nobody has to ask it; row-major
};

void view_set_freerotate(ViewState* view, int32_t on);
void view_set_focus(ViewState* view, float x, float y, float z);
void view_set_zoom(ViewState* view, float factor);  // held in 0.001 to 100.0; a non-number gives 0.001
void view_pan_pixels(ViewState* view, float x, float y, int relative);

// The rotation of a view that is turned by its two angles.
void view_turn_angles(float angle, float pitch, Mat4* out);

// What a frame puts a place of the world through, row-major: the modelview matrix with the focus, and the projection.
// OpenGL is not asked, and there need be no window.
void view_transforms(const ViewState* view, Mat4* modelview, Mat4* projection);

// World units that a pixel shows.
float view_unit_per_pixel(const ViewState* view);

// Extents that show a sphere of this radius. With keep they only grow, and the zoom makes up for it.
void view_fit(ViewState* view, float radius, bool keep);

// The extents that the view has after a resize to this size: the world size of a pixel stays, except after a fit that
// was made while the view had no size (a frame not mapped yet), which is made good.
struct ViewExtents {
    float x, y;
};
ViewExtents view_resized_extents(const ViewState* view, int32_t width, int32_t height);

// Stores a size and the extents that belong to it. With the first real size a fit made without one is made good; a
// frame that collapses later changes the scale no more than any other.
void view_take_size(ViewState* view, int32_t width, int32_t height, ViewExtents extents);

void view_reset(ViewState* view);
void view_fit_scene(ViewState* view, const Session* session);

// The ratio of two sizes in pixels, each counted as at least 1: a frame that is not mapped yet has less.
float view_size_ratio(int32_t size, int32_t other);

// The extent in the given ratio; unchanged when the product would not be finite.
float view_scaled_extent(float extent, float ratio);

}  // namespace pelt
