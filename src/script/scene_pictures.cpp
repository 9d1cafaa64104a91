// The forms of "scene" that make pictures: a window that nobody sees.
#include "application/application.h"
#include "render/frame.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"
#include "script/script_events.h"

namespace pelt {

namespace {

constexpr int32_t SIZE_MAX_PIXELS = 32767;
constexpr int32_t SAMPLES_MAX = 64;

Tcl_Obj* make_offscreen(const SceneWords& words) {
    int32_t width = 0, height = 0, samples = 0;
    if (!scene_read_int("width", words.raw(0), 1, SIZE_MAX_PIXELS, &width) ||
        !scene_read_int("height", words.raw(1), 1, SIZE_MAX_PIXELS, &height) ||
        (words.has(2) && !scene_read_int("samples", words.raw(2), 0, SAMPLES_MAX, &samples))) {
        return nullptr;
    }
    Application* app = application();
    if (app->view.window != 0) { return scene_refuse(PROBLEM_STATE, "can only support 1 window at the moment"); }
    std::string failure;
    app->view.window =
        gl_window_create_offscreen(width, height, samples, view_init, nullptr, view_resize, view_input, &failure);
    if (app->view.window == 0) { return scene_refuse(PROBLEM_SYSTEM, failure); }
    return reply_text(view_renderer(&app->view));
}

constexpr SceneForm FORMS[] = {
    {"offscreen", "WIDTH HEIGHT ?SAMPLES?", 2, 3, "makes the window, without a display and where nobody sees it; what draws",
     make_offscreen},
};

}  // namespace

std::span<const SceneForm> scene_picture_forms() { return FORMS; }

}  // namespace pelt
