// The forms of "scene" that tell what lies under the pointer, and those that choose which layers are in sight at all.
#include <cmath>
#include <cstring>

#include "application/application.h"
#include "edit/pick.h"
#include "motion/scene_walk.h"
#include "scene/layer.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr float PIXEL_LIMIT = 1e6f;
constexpr float REACH_LIMIT = 1000.0f;
constexpr float REACH = 4.0f;  // where none is given

struct WhatWord {
    const char* word;
    PickWhat what;
};
constexpr WhatWord WHAT_WORDS[] = {
    {"point", PickWhat::POINT}, {"face", PickWhat::FACE}, {"layer", PickWhat::LAYER}, {"model", PickWhat::MODEL}};
constexpr const char* KIND_WORDS[] = {"", "triangle", "quad", "polygon", "line", "point"};

Session* session() { return &application()->session; }

bool is_option(const SceneWords& words, int index, const char* option) {
    return std::strcmp(words.raw(index), option) == 0;
}

// ---- what lies under the pointer ----

// False after a refusal.
bool read_view(PickView* out) {
    const ViewState& view = application()->view;
    view_transforms(&view, &out->modelview, &out->projection);
    const float* scale = out->projection.m;
    if (view.width < 1 || view.height < 1 || !std::isfinite(scale[0]) || !std::isfinite(scale[5])) {
        scene_refuse(PROBLEM_STATE, "the view has no size: there is no window");
        return false;
    }
    out->width = view.width;
    out->height = view.height;
    // A picture of a size of its own begins at the lower left of the window.
    int32_t x = 0, y = 0, width = 0, height = 0;
    gl_window_geometry(view.window, &x, &y, &width, &height);
    out->top = height > 0 ? height - view.height : 0;
    return true;
}

bool read_pixel(const char* what, const char* word, float* value) {
    return scene_read_real(what, word, -PIXEL_LIMIT, PIXEL_LIMIT, value);
}

bool read_what(const char* word, PickWhat* what) {
    for (const WhatWord& each : WHAT_WORDS) {
        if (std::strcmp(each.word, word) == 0) {
            *what = each.what;
            return true;
        }
    }
    scene_refuse_argument("-what", word, "point, face, layer, model");
    return false;
}

bool read_pick_options(const SceneWords& words, PickWhat* what, float* within) {
    for (int i = 2; i < words.count; i += 2) {
        const bool is_what = is_option(words, i, "-what");
        if (!is_what && !is_option(words, i, "-within")) {
            scene_refuse_argument("option", words.raw(i), "-what, -within");
            return false;
        }
        if (!words.has(i + 1)) {
            scene_refuse_argument("option", words.raw(i), "followed by its value");
            return false;
        }
        const char* value = words.raw(i + 1);
        if (is_what ? !read_what(value, what) : !scene_read_real("-within", value, 0.0f, REACH_LIMIT, within)) {
            return false;
        }
    }
    return true;
}

// A number that does not repeat among the faces and lines of a model: those of polygons and lines are counts of
// their own.
std::string primitive_name(const PickHit& hit) {
    switch (hit.kind) {
        case PickKind::POINT: return "";
        case PickKind::POLYGON: return "p" + std::to_string(hit.primitive);
        case PickKind::LINE: return "l" + std::to_string(hit.primitive);
        default: return std::to_string(hit.primitive);
    }
}

Tcl_Obj* run_pick(const SceneWords& words) {
    float x = 0.0f, y = 0.0f, within = REACH;
    PickWhat what = PickWhat::MODEL;
    PickView view{};
    if (!read_pixel("x", words.raw(0), &x) || !read_pixel("y", words.raw(1), &y)) { return nullptr; }
    if (!read_pick_options(words, &what, &within) || !read_view(&view)) { return nullptr; }
    const PickHit hit = scene_pick(session(), view, x, y, what, within);
    ReplyList result;
    if (hit.kind == PickKind::NONE) { return result.value(); }
    return result.add("model", scene_reply_id(hit.model, hit.link))
        .add("layer", reply_text(hit.layer != nullptr ? hit.layer->name : ""))
        .add("kind", reply_text(KIND_WORDS[static_cast<int>(hit.kind)]))
        .add("primitive", reply_text(primitive_name(hit)))
        .add("point", reply_int(hit.point))
        .add("place", reply_vec(hit.place))
        .add("depth", reply_real(hit.depth))
        .add("mirrored", reply_flag(hit.mirrored))
        .value();
}

Tcl_Obj* run_inside(const SceneWords& words) {
    constexpr const char* NAMES[] = {"x0", "y0", "x1", "y1"};
    float corners[4];
    for (int i = 0; i < 4; ++i) {
        if (!read_pixel(NAMES[i], words.raw(i), &corners[i])) { return nullptr; }
    }
    const bool through = words.has(4);
    if (through && !is_option(words, 4, "-through")) {
        return scene_refuse_argument("option", words.raw(4), "-through");
    }
    PickView view{};
    if (!read_view(&view)) { return nullptr; }
    ReplyList result;
    for (const PointsInside& each :
         scene_points_inside(session(), view, corners[0], corners[1], corners[2], corners[3], through)) {
        ReplyList ids;
        for (const int32_t id : each.points) { ids.add(reply_int(id)); }
        result.add(scene_reply_id(each.model, each.link)).add(ids.value());
    }
    return result.value();
}

// ---- which layers are in sight ----

bool read_own_layer(const SceneWords& words, Layer** layer) {
    SceneModel found{};
    const Layer* named = nullptr;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_layer(found.model, words, 1, &named)) { return false; }
    *layer = const_cast<Layer*>(named);
    return true;
}

// Of every model of the scene.
template <typename Change>
void for_each_layer(Change change) {
    scene_walk(session(), [&](const ScenePlace& at) {
        for (Layer& layer : list_elements<Layer>(at.model->layers)) { change(&layer); }
    });
}

Tcl_Obj* run_hide(const SceneWords& words) {
    Layer* layer = nullptr;
    bool hidden = false;
    if (!read_own_layer(words, &layer) || !scene_read_flag("flag", words.raw(2), &hidden)) { return nullptr; }
    layer->hidden = hidden ? 1 : 0;
    return reply_text("");
}

Tcl_Obj* run_isolate(const SceneWords& words) {
    Layer* alone = nullptr;
    if (!read_own_layer(words, &alone)) { return nullptr; }
    for_each_layer([&](Layer* layer) { layer->hidden = layer != alone ? 1 : 0; });
    return reply_text("");
}

Tcl_Obj* run_show(const SceneWords& words) {
    if (!is_option(words, 0, "all")) { return scene_refuse_argument("word", words.raw(0), "all"); }
    for_each_layer([](Layer* layer) { layer->hidden = 0; });
    return reply_text("");
}

constexpr SceneForm FORMS[] = {
    {"pick", "X Y ?-what WHAT? ?-within PIXELS?", 2, 6, "what is seen at a pixel", run_pick},
    {"inside", "X0 Y0 X1 Y1 ?-through?", 4, 5, "the points that are seen in a rectangle of pixels", run_inside},
    {"hide", "ID NAME FLAG", 3, 3, "takes a layer out of sight, or back into it", run_hide},
    {"isolate", "ID NAME", 2, 2, "takes all layers of the scene but one out of sight", run_isolate},
    {"show", "all", 1, 1, "brings all layers back into sight", run_show},
};

}  // namespace

std::span<const SceneForm> scene_pick_forms() { return FORMS; }

}  // namespace pelt
