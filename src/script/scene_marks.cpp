// The forms of "scene" about the hand in the view: what is marked in the picture, and what the mouse does. What
// surprises: a call of "mark" is read whole into a copy before anything of it counts.
#include <algorithm>
#include <charconv>
#include <cstring>
#include <unordered_set>

#include "application/application.h"
#include "motion/scene_walk.h"
#include "render/marks.h"
#include "scene/layer.h"
#include "scene/model.h"
#include "script/pointer_events.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

#include <tcl.h>

namespace pelt {

namespace {

constexpr int MARK_WORDS = 64;
constexpr float GRID_STEP_MOST = 1e9f;
constexpr float PLACE_MOST = 1e9f;
constexpr const char* AXIS_WORDS[] = {"", "x", "y", "z"};
constexpr char POLYGON_LETTER = 'p';
constexpr char LINE_LETTER = 'l';

Session* session() { return &application()->session; }

// ---- lists of words ----

// The elements of a list, or of none after a refusal.
class Elements {
public:
    Elements(const char* what, const char* word) {
        ok_ = Tcl_SplitList(nullptr, word, &count_, &elements_) == TCL_OK;
        if (!ok_) { scene_refuse_argument(what, word, "a list"); }
    }
    ~Elements() {
        if (ok_) { Tcl_Free(reinterpret_cast<char*>(elements_)); }
    }
    Elements(const Elements&) = delete;
    Elements& operator=(const Elements&) = delete;

    bool ok() const { return ok_; }
    int count() const { return ok_ ? count_ : 0; }
    const char* at(int index) const { return elements_[index]; }

private:
    bool ok_ = false;
    int count_ = 0;
    const char** elements_ = nullptr;
};

// ---- reading what is to be marked ----

// The call's own model, and what of it is marked.
struct MarkCall {
    Marks wanted;
    SceneModel found;
    ModelMarks own;
    bool has_own;
};

bool read_points(const char* word, MarkCall* call) {
    const Elements ids("points", word);
    for (int i = 0; i < ids.count(); ++i) {
        int32_t id = 0;
        if (!scene_read_int("point", ids.at(i), 1, INT32_MAX, &id)) { return false; }
        if (list_find(&call->found.model->points, id) == nullptr) {
            scene_refuse_argument("point", ids.at(i), "the id of a point of this model");
            return false;
        }
        call->own.points.push_back(id);
    }
    return ids.ok();
}

// The ids that the model's primitives have, each kind in its order.
struct PrimitiveIds {
    std::vector<int32_t> faces, polygons, lines;
};

PrimitiveIds primitive_ids(const Model* model) {
    PrimitiveIds ids;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Triangle& each : list_elements<Triangle>(layer.triangles)) { ids.faces.push_back(each.id); }
        for (const Polygon& each : list_elements<Polygon>(layer.polygons)) { ids.polygons.push_back(each.id); }
        for (const Line& each : list_elements<Line>(layer.lines)) { ids.lines.push_back(each.id); }
    }
    for (std::vector<int32_t>* each : {&ids.faces, &ids.polygons, &ids.lines}) {
        std::sort(each->begin(), each->end());
    }
    return ids;
}

bool read_face(const char* word, const PrimitiveIds& there, ModelMarks* own) {
    const bool polygon = word[0] == POLYGON_LETTER, line = word[0] == LINE_LETTER;
    const char* digits = word + (polygon || line ? 1 : 0);
    const char* end = digits + std::strlen(digits);
    int32_t id = 0;
    const auto read = std::from_chars(digits, end, id);
    const std::vector<int32_t>& known = polygon ? there.polygons : line ? there.lines : there.faces;
    if (read.ec != std::errc{} || read.ptr != end || digits == end ||
        !std::binary_search(known.begin(), known.end(), id)) {
        scene_refuse_argument("face", word, "the primitive of a model as \"pick\" tells it");
        return false;
    }
    (polygon ? own->polygons : line ? own->lines : own->faces).push_back(id);
    return true;
}

bool read_faces(const char* word, MarkCall* call) {
    const PrimitiveIds there = primitive_ids(call->found.model);
    const Elements faces("faces", word);
    for (int i = 0; i < faces.count(); ++i) {
        if (!read_face(faces.at(i), there, &call->own)) { return false; }
    }
    return faces.ok();
}

bool read_mark_layer(const SceneWords& words, int index, MarkCall* call) {
    const Layer* layer = nullptr;
    if (!scene_read_layer(call->found.model, words, index, &layer)) { return false; }
    call->own.layers.emplace_back(layer->name);
    return true;
}

bool read_grid(const char* word, Marks* wanted) {
    return scene_read_real("step", word, 0.0f, GRID_STEP_MOST, &wanted->grid_step);
}

// An empty place takes the handle away.
bool read_handle(const char* place, const char* axis, Marks* wanted) {
    const Elements numbers("place", place);
    if (!numbers.ok()) { return false; }
    const auto* word = std::find_if(std::begin(AXIS_WORDS), std::end(AXIS_WORDS),
                                    [&](const char* each) { return std::strcmp(each, axis) == 0; });
    if (word == std::end(AXIS_WORDS)) {
        scene_refuse_argument("axis", axis, "x, y, z, or empty where none is held");
        return false;
    }
    wanted->handle = numbers.count() != 0;
    wanted->handle_axis = static_cast<MarkAxis>(word - std::begin(AXIS_WORDS));
    if (!wanted->handle) { return true; }
    if (numbers.count() != 3) {
        scene_refuse_argument("place", place, "three numbers, or empty");
        return false;
    }
    float* const values[] = {&wanted->handle_place.x, &wanted->handle_place.y, &wanted->handle_place.z};
    for (int i = 0; i < 3; ++i) {
        if (!scene_read_real("place", numbers.at(i), -PLACE_MOST, PLACE_MOST, values[i])) { return false; }
    }
    return true;
}

struct MarkOption {
    const char* word;
    int values;
    bool of_model;  // needs the id of one in front
};
constexpr MarkOption MARK_OPTIONS[] = {{"-layer", 1, true},    {"-faces", 1, true},  {"-grid", 1, false},
                                       {"-handle", 2, false},  {"-edges", 1, false}, {"-xray", 1, false},
                                       {"-pictures", 1, false}};

const MarkOption* find_option(const SceneWords& words, int index) {
    std::string allowed;
    for (const MarkOption& option : MARK_OPTIONS) {
        if (std::strcmp(option.word, words.raw(index)) == 0) { return &option; }
        allowed += (allowed.empty() ? "" : ", ") + std::string(option.word);
    }
    scene_refuse_argument("option", words.raw(index), allowed);
    return nullptr;
}

bool read_option(const SceneWords& words, int index, MarkCall* call) {
    const std::string option = words.raw(index);
    const char* value = words.raw(index + 1);
    Marks* wanted = &call->wanted;
    if (option == "-layer") { return read_mark_layer(words, index + 1, call); }
    if (option == "-faces") { return read_faces(value, call); }
    if (option == "-grid") { return read_grid(value, wanted); }
    if (option == "-handle") { return read_handle(value, words.raw(index + 2), wanted); }
    bool* flag = option == "-edges" ? &wanted->edges : option == "-xray" ? &wanted->xray : &wanted->in_pictures;
    return scene_read_flag(option.c_str(), value, flag);
}

bool read_options(const SceneWords& words, int first, MarkCall* call) {
    for (int i = first; i < words.count;) {
        const MarkOption* option = find_option(words, i);
        if (option == nullptr) { return false; }
        if (i + option->values >= words.count) {
            scene_refuse_argument("option", words.raw(i),
                                  option->values == 1 ? "followed by its value" : "followed by PLACE and AXIS");
            return false;
        }
        if (option->of_model && !call->has_own) {
            scene_refuse_argument("option", words.raw(i), "behind the ID of a model and its POINTS");
            return false;
        }
        if (!read_option(words, i, call)) { return false; }
        i += 1 + option->values;
    }
    return true;
}

bool read_own(const SceneWords& words, MarkCall* call) {
    if (!scene_read_model(words.raw(0), &call->found)) { return false; }
    if (!words.has(1)) {
        scene_refuse_argument("id", words.raw(0), "followed by a list of points, which may be empty");
        return false;
    }
    call->has_own = true;
    call->own.model = call->found.model;
    call->own.serial = call->found.model->serial;
    return read_points(words.raw(1), call);
}

// What the call says of its model takes the place of what was said before.
void keep_own(MarkCall* call) {
    std::vector<ModelMarks>& models = call->wanted.models;
    std::erase_if(models, [&](const ModelMarks& each) { return each.serial == call->own.serial; });
    const ModelMarks& own = call->own;
    const bool any =
        !own.points.empty() || !own.layers.empty() || !own.faces.empty() || !own.polygons.empty() || !own.lines.empty();
    if (any) { models.push_back(std::move(call->own)); }
}

// ---- telling what is marked ----

Tcl_Obj* ids_value(const std::vector<int32_t>& ids) {
    ReplyList list;
    for (const int32_t id : ids) { list.add(reply_int(id)); }
    return list.value();
}

Tcl_Obj* faces_value(const ModelMarks& marked) {
    ReplyList list;
    for (const int32_t id : marked.faces) { list.add(reply_int(id)); }
    for (const int32_t id : marked.polygons) { list.add(reply_text(POLYGON_LETTER + std::to_string(id))); }
    for (const int32_t id : marked.lines) { list.add(reply_text(LINE_LETTER + std::to_string(id))); }
    return list.value();
}

Tcl_Obj* model_value(const ScenePlace& at, const ModelMarks& marked) {
    ReplyList layers;
    for (const std::string& name : marked.layers) { layers.add(reply_text(name)); }
    return ReplyList()
        .add("id", scene_reply_id(at.model, at.link))
        .add("points", ids_value(marked.points))
        .add("layers", layers.value())
        .add("faces", faces_value(marked))
        .value();
}

// Each by the first place in which it stands.
Tcl_Obj* models_value(const Marks& all) {
    ReplyList models;
    std::unordered_set<uint64_t> told;
    scene_walk(session(), [&](const ScenePlace& at) {
        for (const ModelMarks& each : all.models) {
            if (each.serial == at.model->serial && told.insert(each.serial).second) {
                models.add(model_value(at, each));
            }
        }
    });
    return models.value();
}

Tcl_Obj* marks_value() {
    const Marks& all = *marks();
    ReplyList handle;
    if (all.handle) { handle.add(reply_vec(all.handle_place)).add(reply_text(AXIS_WORDS[all.handle_axis])); }
    return ReplyList()
        .add("models", models_value(all))
        .add("grid", reply_real(all.grid_step))
        .add("handle", handle.value())
        .add("edges", reply_flag(all.edges))
        .add("xray", reply_flag(all.xray))
        .add("pictures", reply_flag(all.in_pictures))
        .value();
}

Tcl_Obj* run_mark(const SceneWords& words) {
    marks_forget_gone(session());
    if (!words.has(0)) { return marks_value(); }
    if (std::strcmp(words.raw(0), "clear") == 0) {
        if (words.has(1)) { return scene_refuse_argument("word", words.raw(1), "nothing behind clear"); }
        *marks() = Marks{};
        return reply_text("");
    }
    MarkCall call{*marks(), {}, {}, false};
    const bool names_model = words.raw(0)[0] != '-';
    if (names_model && !read_own(words, &call)) { return nullptr; }
    if (!read_options(words, names_model ? 2 : 0, &call)) { return nullptr; }
    if (call.has_own) { keep_own(&call); }
    *marks() = std::move(call.wanted);
    return reply_text("");
}

// ---- the mouse ----

Tcl_Obj* run_events(const SceneWords& words) {
    if (words.has(0)) { pointer_events_to(words.raw(0)); }
    return Tcl_NewStringObj(pointer_events_procedure().c_str(), -1);  // it never was in the system's encoding
}

constexpr SceneForm FORMS[] = {
    {"mark", "?clear? ?ID POINTS? ?-option value ...?", 0, MARK_WORDS,
     "marks parts of the scene in the picture; without a word, what is marked", run_mark},
    {"events", "?PROC?", 0, 1, "the procedure that hears of every event of the mouse; an empty one ends it",
     run_events},
};

}  // namespace

std::span<const SceneForm> scene_mark_forms() { return FORMS; }

}  // namespace pelt
