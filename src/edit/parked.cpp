// What is out of the scene and may come back.
#include "edit/parked.h"

#include "formats/animation.h"
#include "images/image_registry.h"
#include "scene/change.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

// True when nothing names it any more.
bool unname(std::unordered_map<uint64_t, int64_t>* names, uint64_t serial) {
    const auto found = names->find(serial);
    if (found == names->end() || --found->second > 0) { return false; }
    names->erase(found);
    return true;
}

// Gives the holds back, and leaves no reference that a release would give back in their place.
void drop_holds(Layer* layer) {
    if (layer->holds_images == 0) { return; }
    for (LayerImage& image : list_elements<LayerImage>(layer->images)) {
        for (int32_t& id : image.image_id) {
            image_unhold(id);
            id = 0;
        }
    }
    layer->holds_images = 0;
}

template <typename Work>
void for_each_layer_below(Model* model, const Work& work) {
    if (model == nullptr) { return; }
    for (Layer& layer : list_elements<Layer>(model->layers)) { work(&layer); }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { for_each_layer_below(link.model, work); }
    }
}

}  // namespace

void Parked::unname_layer(uint64_t serial) {
    if (!unname(&layer_names_, serial)) { return; }
    const auto found = layers_.find(serial);
    if (found == layers_.end()) { return; }
    drop_holds(&found->second.layer);
    layer_release_content(&found->second.layer);
    bytes_ -= found->second.bytes;
    layers_.erase(found);
}

void Parked::unname_model(uint64_t serial) {
    if (!unname(&model_names_, serial)) { return; }
    const auto found = models_.find(serial);
    if (found == models_.end()) { return; }
    for_each_layer_below(found->second.model, drop_holds);
    model_release(found->second.model);
    animation_release(found->second.animation);
    bytes_ -= found->second.bytes;
    models_.erase(found);
}

void Parked::put_layer(const Layer& layer) {
    const int64_t bytes = static_cast<int64_t>(sizeof layer) + layer_record_bytes(layer);
    ParkedLayer& entry = layers_[layer.serial] = ParkedLayer{layer, bytes};
    bytes_ += bytes;
    layer_hold_images(&entry.layer, true);
}

void Parked::put_model(Model* model, ModelAnimation* animation) {
    if (model == nullptr) { return; }
    const int64_t bytes = model_record_bytes(model) + model_child_bytes(model) + animation_bytes(animation);
    models_[model->serial] = ParkedModel{model, animation, bytes};
    bytes_ += bytes;
    change_watch(model, WATCH_KEPT_OUTSIDE);
    model_hold_images(model, true);
}

bool Parked::take_layer(uint64_t serial, Layer* layer) {
    const auto found = layers_.find(serial);
    if (found == layers_.end()) { return false; }
    *layer = found->second.layer;
    bytes_ -= found->second.bytes;
    layers_.erase(found);
    return true;
}

Model* Parked::take_model(uint64_t serial) {
    const auto found = models_.find(serial);
    if (found == models_.end()) { return nullptr; }
    Model* model = found->second.model;
    bytes_ -= found->second.bytes;
    models_.erase(found);
    return model;
}

Layer* Parked::find_layer(uint64_t serial) {
    const auto found = layers_.find(serial);
    return found != layers_.end() ? &found->second.layer : nullptr;
}

void layer_hold_images(Layer* layer, bool hold) {
    if ((layer->holds_images != 0) == hold) { return; }
    for (LayerImage& image : list_elements<LayerImage>(layer->images)) {
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
            const int32_t id = image.image_id[slot];
            if (id <= 0) { continue; }
            if (hold) {
                image_hold(id);
                image_release_id(id);
            } else {
                image_restore(id);
                image_unhold(id);
            }
        }
    }
    layer->holds_images = hold ? 1 : 0;
}

void model_hold_images(Model* model, bool hold) {
    for_each_layer_below(model, [hold](Layer* layer) { layer_hold_images(layer, hold); });
}

}  // namespace pelt
