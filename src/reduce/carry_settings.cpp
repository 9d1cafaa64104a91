// Carries settings from a layer to another. The colour key goes through numbers from 0 to 1, as the setter of a model
// file takes it, and comes back as the same bytes.
#include "reduce/carry_settings.h"

#include "scene/model.h"

namespace pelt {

namespace {

constexpr float COLOUR_KEY_SCALE = 255.0f;

}  // namespace

void carry_settings(Model* model, const char* target, const Layer& source) {
    model_set_transparency(model, target, source.transparency);
    if (source.invisible) {
        const int32_t* key = source.invisible_colour;
        model_set_invisible(model, target, static_cast<float>(key[0]) / COLOUR_KEY_SCALE,
                            static_cast<float>(key[1]) / COLOUR_KEY_SCALE,
                            static_cast<float>(key[2]) / COLOUR_KEY_SCALE);
    }
}

}  // namespace pelt
