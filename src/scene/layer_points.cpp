// Which points go with the layers that are hidden.
#include "scene/layer_points.h"

namespace pelt {

std::vector<bool> model_hidden_points(const Model* model) {
    std::vector<bool> hidden;
    // What a shown layer uses is taken off again, so those come second.
    for (const bool of_hidden : {true, false}) {
        for (const Layer& layer : list_elements<Layer>(model->layers)) {
            if ((layer.hidden != 0) != of_hidden || (!of_hidden && hidden.empty())) { continue; }
            hidden.resize(static_cast<size_t>(model->points.capacity));
            for_each_corner(layer, [&](int32_t id) {
                const int32_t slot = list_index_of(&model->points, id, 0);
                if (slot >= 0) { hidden[static_cast<size_t>(slot)] = of_hidden; }
            });
        }
    }
    return hidden;
}

}  // namespace pelt
