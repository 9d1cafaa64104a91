// The curved surfaces of primitives as they are drawn now: with posed corners, at the level of detail that is shown.
#pragma once

#include "scene/session.h"
#include "surfaces/patch.h"

namespace pelt {

// How a triangle or a quad is drawn: flat, as one patch by its curve type, or as a patch (a quad: two) by the filter.
enum class SurfaceForm { FLAT, CURVED, FILTERED };

inline SurfaceForm surface_form(const Session* session, const Triangle* triangle) {
    if (session->display_curves == 0 || session->display_lod == 0) { return SurfaceForm::FLAT; }
    if (session->display_pnfilter != 0) { return SurfaceForm::FILTERED; }
    return triangle->curve_type == 0 ? SurfaceForm::FLAT : SurfaceForm::CURVED;
}

inline constexpr int FILTERED_CURVE_TYPE = 3;
int patch_level(const Session* session);

// What the patch of a curved primitive is made of. False, as below, when a reference leads nowhere: such a primitive is
// not drawn.
bool curved_corners(Session* session, Model* model, Triangle* triangle, PatchCorners* out);

// The same of the filter, for the whole primitive, and of that one half of a quad (half 0 of a triangle is all).
bool filtered_corners(Session* session, Model* model, Triangle* triangle, PatchCorners* out);
PatchCorners filtered_half(const PatchCorners& all, int half);

// The alternative path: the patch is made at rest, and its vertices are moved by two joints. No word reaches it.
bool skinned_surface(Session* session, Model* model, Triangle* triangle, PatchCorners* corners, PatchSurface* surface);

}  // namespace pelt
