// The forms of "scene" that ask about the clock, the view and the last frame.
#include "application/application.h"
#include "motion/animation_clock.h"
#include "render/view_matrices.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

Tcl_Obj* ask_clock(const SceneWords& words) {
    Session* session = &application()->session;
    if (words.has(0)) {
        float time = 0.0f;
        if (!scene_read_real("time", words.raw(0), 0.0f, session->anim_end, &time)) { return nullptr; }
        animate_seek(session, time);
    }
    return ReplyList()
        .add("time", reply_real(session->anim_time))
        .add("end", reply_real(session->anim_end))
        .add("step", reply_real(session->anim_step))
        .add("rate", reply_int(session->anim_rate))
        .value();
}

Tcl_Obj* ask_view(const SceneWords&) {
    const ViewState& view = application()->view;
    Mat4 matrix;
    view_get_matrix(&view, &matrix);
    const char* renderer = view_renderer(&view);
    return ReplyList()
        .add("angle", reply_real(view.angle))
        .add("pitch", reply_real(view.pitch))
        .add("zoom", reply_real(view.zoom))
        .add("pan", ReplyList().add(reply_real(view.pan_x)).add(reply_real(view.pan_y)).value())
        .add("focus", reply_vec(view.focus))
        .add("matrix", reply_matrix(matrix))
        .add("unit", reply_real(view_unit_per_pixel(&view)))
        .add("size", ReplyList().add(reply_int(view.width)).add(reply_int(view.height)).value())
        .add("fixed", reply_flag(view.fixed_size != 0))
        .add("free", reply_flag(view.freerotate != 0))
        .add("renderer", reply_text(renderer != nullptr ? renderer : ""))
        .value();
}

Tcl_Obj* ask_triangles(const SceneWords&) { return reply_int(application()->session.triangles_drawn); }

constexpr SceneForm FORMS[] = {
    {"clock", "?TIME?", 0, 1, "the time of the animation in seconds; with a time it goes there at once", ask_clock},
    {"view", "", 0, 0, "how the scene is looked at", ask_view},
    {"triangles", "", 0, 0, "how many triangles the last frame drew", ask_triangles},
};

}  // namespace

std::span<const SceneForm> scene_view_forms() { return FORMS; }

}  // namespace pelt
