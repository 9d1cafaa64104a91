// Several settings of one layer as one change.
#include "scene/layer_settings.h"

#include <algorithm>

#include "scene/change.h"

namespace pelt {

void layer_change_settings(Model* model, Layer* layer, const LayerSettings& settings) {
    if (model == nullptr || layer == nullptr || settings == LayerSettings{}) { return; }
    change_model(model);
    change_element(model, nullptr, CONTENT_LAYERS, layer);
    if (settings.colour) { std::copy(settings.colour->begin(), settings.colour->end(), layer->colour); }
    if (settings.sides) { layer->singlesided = *settings.sides == 1 ? 1 : 0; }
    if (settings.mirror) {
        layer->mirror = *settings.mirror != 0 ? 1 : 0;
        if (layer->mirror != 0) { layer->mirror_axis = *settings.mirror; }
    }
    if (settings.transparency) { layer->transparency = *settings.transparency; }
    LayerImage* image = layer_first_image(layer);
    if (settings.reflection && image != nullptr) {
        change_element(model, layer, CONTENT_IMAGES, image);
        image->reflection = *settings.reflection;
    }
}

}  // namespace pelt
