// Layers by a script's word. What surprises: a layer is found again in another model of the same file by its rank,
// since names can be too long to be found by.
#include "edit/edit_layers.h"

#include "edit/model_files.h"
#include "edit/ranks.h"
#include "formats/name_rules.h"
#include "formats/texture_map.h"
#include "foundation/text.h"
#include "scene/append.h"
#include "scene/change.h"
#include "scene/measure.h"

namespace pelt {

namespace {

constexpr const char* NO_IMAGE_NAME = "none";  // what a file says where there is no image

bool has_picture(const Layer* layer, int slot) {
    const LayerImage* image = layer_first_image(layer);
    return image != nullptr && image->names[slot][0] != '\0';
}

bool lays(const LayerEdit& edit) { return edit.axes.has_value() || edit.repeat.has_value(); }

ImageLay lay_with(const Layer* layer, const std::optional<std::array<int, 2>>& axes,
                  const std::optional<RepeatChange>& repeat) {
    ImageLay lay = layer_image_lay(layer);
    if (lay.axis_u < AXIS_X || lay.axis_v < AXIS_X) {
        lay.axis_u = AXIS_X;
        lay.axis_v = AXIS_Y;
    }
    if (axes) {
        lay.axis_u = (*axes)[0];
        lay.axis_v = (*axes)[1];
    }
    if (repeat) {
        lay.repeated = repeat->on;
        lay.repeat_u = repeat->u;
        lay.repeat_v = repeat->v;
    }
    return lay;
}

// ---- checks ----

bool check_new_name(const Model* model, const std::string& name, EditRefusal* refused) {
    if (!name_fits_line(name, KEY_NAME_MOST)) {
        return edit_refuse(refused, EDIT_ARGUMENT,
                           "bad name of a layer \"" + name + "\": must be " + name_rule(KEY_NAME_MOST));
    }
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (name == layer.name) {
            return edit_refuse(refused, EDIT_STATE, "the model has a layer \"" + name + "\" already");
        }
    }
    return true;
}

bool check_layers(const Model* model, const std::vector<const Layer*>& layers, const LayerEdit& edit,
                  EditRefusal* refused) {
    if (edit.name && layers.size() != 1) {
        return edit_refuse(refused, EDIT_ARGUMENT, "a name is for one layer alone");
    }
    for (const Layer* layer : layers) {
        const std::string named = std::string("layer \"") + layer->name + "\" ";
        if (lays(edit) && !has_picture(layer, IMAGE_SLOT_BASE)) {
            return edit_refuse(refused, EDIT_STATE, named + "has no image, and so no axes and no repeat");
        }
        if (edit.settings.reflection && !has_picture(layer, IMAGE_SLOT_REFLECTION)) {
            return edit_refuse(refused, EDIT_STATE, named + "has no reflection map, and so no strength of one");
        }
    }
    return !edit.name || *edit.name == layers[0]->name || check_new_name(model, *edit.name, refused);
}

// ---- changes ----

// What can still fail, which is memory for keyed pixels, comes first in the first layer.
bool change_layer_by(Model* model, Layer* layer, const LayerEdit& edit, EditRefusal* refused) {
    if (edit.key) {
        const auto key = edit.key->on ? std::optional(edit.key->colour) : std::nullopt;
        if (!layer_change_key(model, layer, key)) { return edit_refuse(refused, EDIT_STATE, "out of memory"); }
    }
    layer_change_settings(model, layer, edit.settings);
    if (lays(edit)) { layer_lay_image(model, layer, lay_with(layer, edit.axes, edit.repeat)); }
    if (edit.name && *edit.name != layer->name) { model_rename_layer_in_place(model, layer, edit.name->c_str()); }
    return true;
}

}  // namespace

bool edit_layers(Session* session, Model* model, const std::vector<const Layer*>& layers, const LayerEdit& edit,
                 EditRefusal* refused) {
    std::vector<Model*> targets;
    if (!check_layers(model, layers, edit, refused) || !edit_targets(session, model, &targets, refused)) {
        return false;
    }
    std::vector<int32_t> ranks;
    for (const Layer* layer : layers) { ranks.push_back(rank_in(model->layers, layer)); }
    for (Model* target : targets) {
        for (const int32_t rank : ranks) {
            if (!change_layer_by(target, at_rank<Layer>(target->layers, rank), edit, refused)) { return false; }
        }
        if (edit.settings.mirror) { model_measure(target); }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_new_layer(Session* session, Model* model, const std::string& name, const LayerEdit& edit,
                    EditRefusal* refused) {
    std::vector<Model*> targets;
    if (edit.name || lays(edit) || edit.settings.reflection) {
        return edit_refuse(refused, EDIT_ARGUMENT, "a new layer has no image yet, and its name is given already");
    }
    if (!check_new_name(model, name, refused) || !edit_targets(session, model, &targets, refused)) { return false; }
    for (Model* target : targets) {
        Layer* layer = model_append_layer(target, name.c_str());
        if (layer == nullptr || !change_layer_by(target, layer, edit, refused)) {
            return edit_refuse(refused, EDIT_STATE, "the model has no room for another layer");
        }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_picture(Session* session, Model* model, const Layer* layer, const PictureEdit& edit, EditRefusal* refused) {
    const std::string named = std::string("layer \"") + layer->name + "\" ";
    const bool is_base = edit.slot == IMAGE_SLOT_BASE;
    if (!edit.name.empty()) {
        const bool none = edit.slot != IMAGE_SLOT_REFLECTION && edit.name == NO_IMAGE_NAME;
        if (none || !name_fits_line(edit.name, FILE_NAME_MOST)) {
            return edit_refuse(refused, EDIT_ARGUMENT,
                               "bad name of an image \"" + edit.name + "\": must be " + name_rule(FILE_NAME_MOST) +
                                   ", and not \"none\"");
        }
        if (is_base && !layer_has_surface(*layer)) {
            return edit_refuse(refused, EDIT_STATE, named + "has no faces that an image could lie on");
        }
    }
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    const int32_t rank = rank_in(model->layers, layer);
    const ImageLay lay = lay_with(layer, edit.axes, edit.repeat);
    for (Model* target : targets) {
        // Of all models of a file the first has read the image when the others ask for it.
        if (!layer_put_image(target, at_rank<Layer>(target->layers, rank), edit.slot, edit.name, lay)) {
            return edit_refuse(refused, EDIT_FILE, "the image cannot be read",
                               model_file_path(target, edit.name.c_str()));
        }
    }
    models_changed_alike(targets);
    return true;
}

bool edit_uvee(Session* session, Model* model, const Layer* layer, const UveeEdit& edit, EditRefusal* refused) {
    if (list_find<Point>(&model->points, edit.point) == nullptr) {
        return edit_refuse(refused, EDIT_ARGUMENT,
                           "bad point \"" + std::to_string(edit.point) + "\": must be the id of a point of this model");
    }
    if (!edit.on && list_find<Uvee>(&layer->uvees, edit.point) == nullptr) {
        return edit_refuse(
            refused, EDIT_STATE,
            std::string("layer \"") + layer->name + "\" has no uvee of point " + std::to_string(edit.point));
    }
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    const int32_t rank = rank_in(model->layers, layer);
    for (Model* target : targets) {
        Layer* changed = at_rank<Layer>(target->layers, rank);
        change_model(target);
        if (edit.on) {
            layer_append_uvee(target, changed, Uvee{edit.point, edit.u, edit.v});
        } else {
            layer_remove_uvee(target, changed, list_index_of(&changed->uvees, edit.point, 0));
        }
        if (has_picture(changed, IMAGE_SLOT_BASE)) { layer_map(target, changed); }
    }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
