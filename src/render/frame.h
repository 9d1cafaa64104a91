// The frame: from "draw" to the swap, and what the window layer calls back.
#pragma once

#include "render/view_matrices.h"

namespace pelt {

struct Session;

// Binds the one session and the one view to the renderer; called once at start.
void frame_bind(Session* session, ViewState* view);
const ViewState* frame_view();  // the bound view, null before

void view_init(WindowHandle window, int32_t zero, const void* event);
void view_resize(WindowHandle window, int32_t zero, const void* event);
void view_set_size(int32_t width, int32_t height);  // 0, 0 follows the parent again; else 20 to 3000
void frame_draw();
void frame_draw_unswapped();                // the same, left in the back buffer; with marks where pictures have them
void frame_draw_as(const ViewState& view);  // the same as another view has it, into the viewport that is set
void frame_swap();

// Runs the half-texel inset of texture coordinates when the value differs from display_smooth; never stores it.
void session_set_smooth(Session* session, int32_t on);

}  // namespace pelt
