// Settings among the words of a call.
#include "script/scene_options.h"

#include <algorithm>
#include <cstring>

#include "edit/edit_placement.h"
#include "formats/model_writer.h"
#include "foundation/text.h"
#include "scene/layer.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_reply.h"
#include "script/tcl_glue.h"

#include <tcl.h>

namespace pelt {

namespace {

constexpr const char* AXES = "x, y, z, -x, -y or -z";

bool is_axis_word(const std::string& word, int32_t* code) {
    for (int32_t each = AXIS_X; each <= AXIS_MINUS_Z; ++each) {
        if (word == axis_word(each)) {
            *code = each;
            return true;
        }
    }
    return false;
}

}  // namespace

bool scene_read_options(const SceneWords& words, int first, std::initializer_list<SceneOption> options) {
    std::string keys;
    for (const SceneOption& option : options) { keys += (keys.empty() ? "" : ", ") + std::string(option.key); }
    for (int i = first; i < words.count; i += 2) {
        const auto* option = std::find_if(options.begin(), options.end(), [&](const SceneOption& each) {
            return std::strcmp(each.key, words.raw(i)) == 0;
        });
        if (option == options.end()) {
            scene_refuse_argument("key", words.raw(i), keys);
            return false;
        }
        if (!words.has(i + 1)) {
            scene_refuse_argument("key", words.raw(i), "followed by its value");
            return false;
        }
        if (!option->read(words.raw(i + 1))) { return false; }
    }
    return true;
}

bool scene_read_ints(const char* what, const char* word, int32_t least, int32_t most, int32_t* values, int count) {
    const std::string allowed = "a list of " + std::to_string(count) + " whole numbers from " + std::to_string(least) +
                                " to " + std::to_string(most);
    std::vector<std::string> parts;
    if (!scene_read_list(what, word, allowed.c_str(), &parts)) { return false; }
    if (parts.size() != static_cast<size_t>(count)) {
        scene_refuse_argument(what, word, allowed);
        return false;
    }
    for (int i = 0; i < count; ++i) {
        if (!scene_read_int(what, parts[static_cast<size_t>(i)].c_str(), least, most, &values[i])) { return false; }
    }
    return true;
}

bool scene_read_colour(const char* what, const char* word, int32_t least, int32_t most,
                       std::array<int32_t, 3>* colour) {
    return scene_read_ints(what, word, least, most, colour->data(), 3);
}

bool scene_read_axis(const char* what, const char* word, int32_t* code) {
    if (is_axis_word(word, code)) { return true; }
    scene_refuse_argument(what, word, AXES);
    return false;
}

bool scene_read_axes(const char* what, const char* word, std::array<int, 2>* axes) {
    std::vector<std::string> parts;
    const std::string allowed = std::string("a list of two of ") + AXES;
    if (!scene_read_list(what, word, allowed.c_str(), &parts)) { return false; }
    if (parts.size() == 2 && is_axis_word(parts[0], axes->data()) && is_axis_word(parts[1], axes->data() + 1)) {
        return true;
    }
    scene_refuse_argument(what, word, allowed);
    return false;
}

bool scene_read_layers(const Model* model, const char* word, std::vector<const Layer*>* layers) {
    std::vector<std::string> names;
    layers->clear();
    if (!scene_read_list("layers", word, "a list of names of layers", &names)) { return false; }
    if (names.empty()) {
        scene_refuse_argument("layers", word, "one or more names of layers");
        return false;
    }
    std::vector<const char*> texts;
    for (const std::string& name : names) { texts.push_back(name.c_str()); }
    const SceneWords words{static_cast<int>(texts.size()), texts.data()};
    for (int i = 0; i < words.count; ++i) {
        const Layer* layer = nullptr;
        if (!scene_read_layer(model, words, i, &layer)) { return false; }
        if (std::find(layers->begin(), layers->end(), layer) == layers->end()) { layers->push_back(layer); }
    }
    return true;
}

bool scene_read_place_options(const SceneWords& words, int first, PlaceEdit* edit) {
    const auto read_rotation = [&](const char* word) {
        constexpr const char* ALLOWED = "a list of three angles";
        std::vector<std::string> texts;
        if (!scene_read_list("rotation", word, ALLOWED, &texts)) { return false; }
        if (texts.size() != 3) {
            scene_refuse_argument("rotation", word, ALLOWED);
            return false;
        }
        edit->rotation = {texts[0], texts[1], texts[2]};
        return true;
    };
    return scene_read_options(
        words, first,
        {
            {"translation",
             [&](const char* word) { return scene_read_vec("translation", word, &edit->translation.emplace()); }},
            {"scale", [&](const char* word) { return scene_read_vec("scale", word, &edit->scale.emplace()); }},
            {"rotation", read_rotation},
        });
}

std::string scene_absolute_path(const std::string& path) {
    Tcl_Obj* given = reply_text(path.empty() ? "." : path);
    Tcl_IncrRefCount(given);
    Tcl_Obj* found = Tcl_FSGetNormalizedPath(nullptr, given);
    const std::string text = found != nullptr ? scene_text(Tcl_GetString(found)) : path;
    Tcl_DecrRefCount(given);
    return text;
}

std::string scene_text(const char* word) {
    std::string text;
    tcl_to_system(word, std::strlen(word), &text);
    return text;
}

Tcl_Obj* scene_refuse_edit(const EditRefusal& refused) {
    if (refused.kind == EDIT_FILE) {
        problem_set_load(refused.file.c_str());
        return scene_refuse_load();
    }
    return scene_refuse(refused.kind == EDIT_ARGUMENT ? PROBLEM_ARGUMENT : PROBLEM_STATE, refused.text);
}

Tcl_Obj* reply_nothing() { return reply_text({}); }

}  // namespace pelt
