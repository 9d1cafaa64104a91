// Layers and models that are out of the scene and may come back: the history's own. What is here has no run-time
// records, and holds its images instead of referring to them.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "scene/session.h"

namespace pelt {

struct ModelAnimation;

// A layer or a model is kept for as long as something names it, by its serial.
class Parked {
public:
    Parked() = default;
    Parked(const Parked&) = delete;
    Parked& operator=(const Parked&) = delete;

    void name_layer(uint64_t serial) { ++layer_names_[serial]; }
    void name_model(uint64_t serial) { ++model_names_[serial]; }
    bool is_named_layer(uint64_t serial) const { return layer_names_.count(serial) != 0; }
    bool is_named_model(uint64_t serial) const { return model_names_.count(serial) != 0; }

    // Of what is here, the last of these releases it.
    void unname_layer(uint64_t serial);
    void unname_model(uint64_t serial);

    // Takes over the lists of the record; a model with all that it owns below itself, and its animation or null. Their
    // run-time records are forgotten already.
    void put_layer(const Layer& layer);
    void put_model(Model* model, ModelAnimation* animation = nullptr);

    // Gives back what is here, with the images still held: see layer_hold_images. False or null for what is not.
    bool take_layer(uint64_t serial, Layer* layer);
    Model* take_model(uint64_t serial);

    Layer* find_layer(uint64_t serial);
    template <typename Visit>
    void for_each_model(Visit visit) {
        for (auto& [serial, entry] : models_) { visit(entry.model); }
    }

    // Of all that is here, as it was when it came.
    int64_t bytes() const { return bytes_; }

private:
    struct ParkedLayer {
        Layer layer;
        int64_t bytes;
    };
    struct ParkedModel {
        Model* model;
        ModelAnimation* animation;
        int64_t bytes;
    };

    std::unordered_map<uint64_t, int64_t> layer_names_;
    std::unordered_map<uint64_t, int64_t> model_names_;
    std::unordered_map<uint64_t, ParkedLayer> layers_;
    std::unordered_map<uint64_t, ParkedModel> models_;
    int64_t bytes_ = 0;
};

// From references to holds, or back; nothing where it is so already.
void layer_hold_images(Layer* layer, bool hold);
void model_hold_images(Model* model, bool hold);  // of all that it owns below itself too

}  // namespace pelt
