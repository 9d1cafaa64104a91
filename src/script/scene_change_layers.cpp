// The forms of "scene" that change layers: their settings, new ones, their images, texture coordinates of their own.
#include <cstring>
#include <limits>

#include "application/application.h"
#include "edit/edit_layers.h"
#include "edit/history.h"
#include "formats/model_writer.h"
#include "foundation/file_access.h"
#include "scene/layer.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr const char* SLOT_WORDS[LAYER_IMAGE_SLOTS] = {"base", "mirror", "reflection"};

Session* session() { return &application()->session; }

// ---- settings ----

bool read_repeat(const char* word, RepeatChange* repeat) {
    constexpr const char* ALLOWED = "empty, or a list of two factors";
    std::vector<std::string> parts;
    if (!scene_read_list("repeat", word, ALLOWED, &parts)) { return false; }
    *repeat = RepeatChange{!parts.empty(), 0.0f, 0.0f};
    if (parts.empty()) { return true; }
    if (parts.size() != 2) {
        scene_refuse_argument("repeat", word, ALLOWED);
        return false;
    }
    const auto read = [](const std::string& part, float* factor) {
        return scene_read_real("repeat", part.c_str(), -IMAGE_REPEAT_MOST, IMAGE_REPEAT_MOST, factor);
    };
    return read(parts[0], &repeat->u) && read(parts[1], &repeat->v);
}

bool read_key(const char* word, KeyChange* key) {
    *key = KeyChange{word[0] != '\0', {}};
    return !key->on || scene_read_colour("key", word, 0, 255, &key->colour);
}

bool read_mirror(const char* word, int32_t* axis) {
    *axis = 0;
    return word[0] == '\0' || scene_read_axis("mirror", word, axis);
}

bool read_layer_edit(const SceneWords& words, int first, LayerEdit* edit) {
    LayerSettings& settings = edit->settings;
    constexpr int32_t LEAST = std::numeric_limits<int32_t>::min();
    constexpr int32_t MOST = std::numeric_limits<int32_t>::max();
    return scene_read_options(
        words, first,
        {
            {"name",
             [&](const char* word) {
                 edit->name = scene_text(word);
                 return true;
             }},
            {"colour",
             [&](const char* word) {
                 return scene_read_colour("colour", word, LEAST, MOST, &settings.colour.emplace());
             }},
            {"sides", [&](const char* word) { return scene_read_int("sides", word, 1, 2, &settings.sides.emplace()); }},
            {"mirror", [&](const char* word) { return read_mirror(word, &settings.mirror.emplace()); }},
            {"transparency",
             [&](const char* word) {
                 return scene_read_real("transparency", word, 0.0f, 1.0f, &settings.transparency.emplace());
             }},
            {"key", [&](const char* word) { return read_key(word, &edit->key.emplace()); }},
            {"axes", [&](const char* word) { return scene_read_axes("axes", word, &edit->axes.emplace()); }},
            {"repeat", [&](const char* word) { return read_repeat(word, &edit->repeat.emplace()); }},
            {"reflection",
             [&](const char* word) {
                 return scene_read_real("reflection", word, 0.0f, 1.0f, &settings.reflection.emplace());
             }},
        });
}

Tcl_Obj* new_layer(const SceneWords& words, Model* model) {
    LayerEdit edit;
    EditRefusal refused;
    if (!read_layer_edit(words, 3, &edit)) { return nullptr; }
    history_command_name("new layer");
    const std::string name = words.text(1);
    if (!edit_new_layer(session(), model, name, edit, &refused)) { return scene_refuse_edit(refused); }
    return reply_text(name);
}

Tcl_Obj* change_layer(const SceneWords& words) {
    if (words.count == 2) { return scene_ask_layer(words); }
    SceneModel found{};
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    if (std::strcmp(words.raw(2), "-new") == 0) { return new_layer(words, found.model); }
    std::vector<const Layer*> layers;
    LayerEdit edit;
    EditRefusal refused;
    if (!scene_read_layers(found.model, words.raw(1), &layers) || !read_layer_edit(words, 2, &edit)) { return nullptr; }
    history_command_name(edit.name ? "rename layer" : "layer settings");
    if (!edit_layers(session(), found.model, layers, edit, &refused)) { return scene_refuse_edit(refused); }
    return reply_nothing();
}

// ---- images ----

Tcl_Obj* image_value(const Model* model, const Layer& layer, int slot) {
    static constexpr LayerImage NO_IMAGE{};
    const LayerImage* first = layer_first_image(&layer);
    const LayerImage& image = first != nullptr ? *first : NO_IMAGE;
    const bool named = image.names[slot][0] != '\0';
    const std::string file = named ? model_file_path(model, image.names[slot]) : std::string();
    ReplyList axes, repeat;
    if (named && slot == IMAGE_SLOT_BASE) {
        axes.add(reply_text(axis_word(layer.image_axis_u))).add(reply_text(axis_word(layer.image_axis_v)));
        if (layer.image_repeat != 0) { repeat.add(reply_real(layer.repeat_u)).add(reply_real(layer.repeat_v)); }
    }
    return ReplyList()
        .add("slot", reply_text(SLOT_WORDS[slot]))
        .add("name", reply_text(image.names[slot]))
        .add("axes", axes.value())
        .add("repeat", repeat.value())
        .add("file", reply_text(file))
        .add("there", reply_flag(named && file_exists(file.c_str()) != 0))
        .add("width", reply_int(image.width[slot]))
        .add("height", reply_int(image.height[slot]))
        .value();
}

bool read_slot(const char* word, int* slot) {
    for (*slot = 0; *slot < LAYER_IMAGE_SLOTS; ++*slot) {
        if (std::strcmp(word, SLOT_WORDS[*slot]) == 0) { return true; }
    }
    scene_refuse_argument("slot", word, "base, mirror or reflection");
    return false;
}

// The index of the name, behind the layer and the slot where that is given.
bool read_slot_option(const SceneWords& words, int* slot, int* next) {
    *slot = IMAGE_SLOT_BASE;
    *next = 2;
    if (!words.has(2) || std::strcmp(words.raw(2), "-slot") != 0) { return true; }
    *next = 4;
    if (words.has(3)) { return read_slot(words.raw(3), slot); }
    scene_refuse_argument("option", words.raw(2), "followed by base, mirror or reflection");
    return false;
}

Tcl_Obj* change_image(const SceneWords& words) {
    SceneModel found{};
    const Layer* layer = nullptr;
    PictureEdit edit{};
    int next = 0;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_layer(found.model, words, 1, &layer) ||
        !read_slot_option(words, &edit.slot, &next)) {
        return nullptr;
    }
    if (!words.has(next)) { return image_value(found.model, *layer, edit.slot); }
    if (words.has(next + 1) && edit.slot != IMAGE_SLOT_BASE) {
        return scene_refuse(PROBLEM_ARGUMENT, "axes and repeat belong to the base image alone");
    }
    if (words.has(next + 3)) {
        return scene_refuse_argument("word", words.raw(next + 3), "the last: a list of repeat factors");
    }
    edit.name = words.text(next);
    if (words.has(next + 1) && !scene_read_axes("axes", words.raw(next + 1), &edit.axes.emplace())) { return nullptr; }
    if (words.has(next + 2) && !read_repeat(words.raw(next + 2), &edit.repeat.emplace())) { return nullptr; }
    EditRefusal refused;
    history_command_name(edit.name.empty() ? "remove image" : "layer image");
    if (!edit_picture(session(), found.model, layer, edit, &refused)) { return scene_refuse_edit(refused); }
    return reply_nothing();
}

// ---- texture coordinates ----

Tcl_Obj* change_uvee(const SceneWords& words) {
    SceneModel found{};
    const Layer* layer = nullptr;
    UveeEdit edit{0, true, 0.0f, 0.0f};
    if (!scene_read_model(words.raw(0), &found) || !scene_read_layer(found.model, words, 1, &layer) ||
        !scene_read_int("point", words.raw(2), 1, std::numeric_limits<int32_t>::max(), &edit.point)) {
        return nullptr;
    }
    if (words.count == 3) {
        const Uvee* uvee = list_find<const Uvee>(&layer->uvees, edit.point);
        return uvee != nullptr ? ReplyList().add(reply_real(uvee->u)).add(reply_real(uvee->v)).value()
                               : ReplyList().value();
    }
    if (words.count == 4) {
        if (std::strcmp(words.raw(3), "-remove") != 0) {
            return scene_refuse_argument("word", words.raw(3), "-remove, or u and v");
        }
        edit.on = false;
    } else if (!scene_read_finite("u", words.raw(3), &edit.u) || !scene_read_finite("v", words.raw(4), &edit.v)) {
        return nullptr;
    }
    EditRefusal refused;
    history_command_name("texture coordinate");
    if (!edit_uvee(session(), found.model, layer, edit, &refused)) { return scene_refuse_edit(refused); }
    return reply_nothing();
}

constexpr int LAYER_MOST = 21;  // -new and all nine keys

constexpr SceneForm FORMS[] = {
    {"layer", "ID NAMES ?-new? ?key value ...?", 2, LAYER_MOST,
     "everything known of a layer; with keys, sets them for one or many; -new makes one", change_layer},
    {"image", "ID LAYER ?-slot SLOT? ?NAME ?AXES? ?REPEAT??", 2, 7,
     "the image of a layer and how it lies; with a name puts that there, with an empty one takes it away",
     change_image},
    {"uvee", "ID LAYER POINT ?U V?", 3, 5,
     "the texture coordinate that a point has for itself in a layer; sets it, or takes it away with -remove",
     change_uvee},
};

}  // namespace

std::span<const SceneForm> scene_layer_change_forms() { return FORMS; }

}  // namespace pelt
