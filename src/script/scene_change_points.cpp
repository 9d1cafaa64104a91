// The forms of "scene" that change points: where they are and what they hold.
#include <algorithm>
#include <cstring>

#include "application/application.h"
#include "edit/history.h"
#include "edit/move_points.h"
#include "edit/point_settings.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr int32_t CHANNEL_MOST = 255;
constexpr float TURN_MOST = 1e6f;  // degrees

Session* session() { return &application()->session; }

// ---- places ----

struct PlaceCall {
    SceneModel found;
    std::vector<int32_t> ids;
    DragSpace space;
};

bool read_space(const SceneWords& words, int first, PlaceCall* call) {
    call->space.link = call->found.link;
    for (int i = first; i < words.count; ++i) {
        if (std::strcmp(words.raw(i), "-scene") == 0) {
            call->space.in_scene = true;
        } else if (std::strcmp(words.raw(i), "-mirrored") == 0) {
            if (!words.has(i + 1)) {
                scene_refuse_argument("option", words.raw(i), "followed by the name of a layer");
                return false;
            }
            if (!scene_read_layer(call->found.model, words, ++i, &call->space.mirror)) { return false; }
            if (call->space.mirror->mirror == 0) {
                scene_refuse(PROBLEM_STATE, "the layer " + std::string(call->space.mirror->name) + " has no mirror");
                return false;
            }
        } else {
            scene_refuse_argument("option", words.raw(i), "-scene, -mirrored LAYER");
            return false;
        }
    }
    return true;
}

bool read_place_call(const SceneWords& words, int options, PlaceCall* call) {
    *call = PlaceCall{};
    return scene_read_model(words.raw(0), &call->found) &&
           scene_read_points(call->found.model, words.raw(1), &call->ids) && read_space(words, options, call);
}

Tcl_Obj* change_places(const PlaceCall& call, const PlaceChange& change, const char* name) {
    history_command_name(name);
    EditRefusal refused;
    if (!edit_point_places(session(), call.found.model, call.ids, change, call.space, &refused)) {
        return scene_refuse_edit(refused);
    }
    return reply_nothing();
}

Tcl_Obj* run_move(const SceneWords& words) {
    PlaceCall call;
    Vec3 by{};
    if (!read_place_call(words, 5, &call) || !scene_read_finite("dx", words.raw(2), &by.x) ||
        !scene_read_finite("dy", words.raw(3), &by.y) || !scene_read_finite("dz", words.raw(4), &by.z)) {
        return nullptr;
    }
    return change_places(call, moved_by(by), "move points");
}

// One factor for all directions, or three.
bool read_factors(const char* word, Vec3* factors) {
    std::vector<std::string> words;
    if (!scene_read_list("factor", word, "one number or three", &words)) { return false; }
    if (words.size() != 1) { return scene_read_vec("factors", word, factors); }
    if (!scene_read_finite("factor", words[0].c_str(), &factors->x)) { return false; }
    factors->y = factors->z = factors->x;
    return true;
}

Tcl_Obj* run_scale(const SceneWords& words) {
    PlaceCall call;
    Vec3 factors{}, centre{};
    if (!read_place_call(words, 4, &call) || !read_factors(words.raw(2), &factors) ||
        !scene_read_vec("place", words.raw(3), &centre)) {
        return nullptr;
    }
    return change_places(call, scaled_about(centre, factors), "scale points");
}

bool read_axis(const char* word, Vec3* axis) {
    constexpr const char* AXES = "xyz";
    const char* letter = word[0] != '\0' && word[1] == '\0' ? std::strchr(AXES, word[0]) : nullptr;
    if (letter == nullptr) { return scene_read_vec("axis", word, axis); }
    *axis = {letter - AXES == 0 ? 1.0f : 0.0f, letter - AXES == 1 ? 1.0f : 0.0f, letter - AXES == 2 ? 1.0f : 0.0f};
    return true;
}

Tcl_Obj* run_rotate(const SceneWords& words) {
    PlaceCall call;
    float degrees = 0.0f;
    Vec3 axis{}, centre{};
    if (!read_place_call(words, 5, &call) ||
        !scene_read_real("degrees", words.raw(2), -TURN_MOST, TURN_MOST, &degrees) || !read_axis(words.raw(3), &axis) ||
        !scene_read_vec("place", words.raw(4), &centre)) {
        return nullptr;
    }
    PlaceChange change;
    if (!turned_about(centre, axis, degrees, &change)) {
        return scene_refuse_argument("axis", words.raw(3), "x, y, z or a direction");
    }
    return change_places(call, change, "turn points");
}

// ---- what a point holds ----

SceneOption direction(const char* key, std::optional<Vec3>* value) {
    return {key, [=](const char* word) { return scene_read_vec(key, word, &value->emplace()); }};
}

SceneOption number(const char* key, float least, float most, std::optional<float>* value) {
    return {key, [=](const char* word) { return scene_read_real(key, word, least, most, &value->emplace()); }};
}

bool read_settings(const SceneWords& words, PointSettings* settings) {
    return scene_read_options(words, 2,
                              {direction("place", &settings->place),
                               direction("normal", &settings->normal),
                               {"colour",
                                [=](const char* word) {
                                    return scene_read_colour("colour", word, 0, CHANNEL_MOST,
                                                             &settings->colour.emplace());
                                }},
                               number("transparency", 0.0f, 1.0f, &settings->transparency),
                               number("weight", -1.0f, 2.0f, &settings->weight)});
}

Tcl_Obj* run_point(const SceneWords& words) {
    if (!words.has(2)) { return scene_ask_point(words); }
    SceneModel found{};
    std::vector<int32_t> ids;
    PointSettings settings;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_points(found.model, words.raw(1), &ids) ||
        !read_settings(words, &settings)) {
        return nullptr;
    }
    history_command_name("point settings");
    EditRefusal refused;
    if (!edit_points(session(), found.model, ids, settings, &refused)) { return scene_refuse_edit(refused); }
    return reply_nothing();
}

constexpr SceneForm FORMS[] = {
    {"move", "ID POINTS DX DY DZ ?-scene? ?-mirrored LAYER?", 5, 8, "moves points", run_move},
    {"scale", "ID POINTS FACTORS PLACE ?-scene? ?-mirrored LAYER?", 4, 7, "scales points about a place", run_scale},
    {"rotate", "ID POINTS DEGREES AXIS PLACE ?-scene? ?-mirrored LAYER?", 5, 8, "turns points about a place",
     run_rotate},
    {"point", "ID NS ?key value ...?", 2, 2 + 2 * 32,
     "everything known of a point; with keys and values it is set, for one point or a list of them", run_point},
};

}  // namespace

std::span<const SceneForm> scene_point_change_forms() { return FORMS; }

}  // namespace pelt
