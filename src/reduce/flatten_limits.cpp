// The limits of flattening. Both come from how things are stored elsewhere, 16-bit references in primitives and 32
// bytes of a key in a list, and neither is tested where it is stored: a longer id or name is cut.
#include "reduce/flatten_limits.h"

#include <cstring>

#include "foundation/load_error.h"
#include "scene/model.h"

namespace pelt {

bool point_id_fits(int64_t highest_id) {
    if (highest_id > POINT_ID_LIMIT) {
        load_error_set("new point ids would pass 32767");
        return false;
    }
    return true;
}

bool layer_name_fits(const char* name) {
    if (std::strlen(name) >= KEY_TEXT_SIZE) {
        load_error_set_format("layer name too long: %s", name);
        return false;
    }
    return true;
}

bool layer_can_be_found(const Model* model, const Layer* layer) {
    return list_find(&model->layers, layer->name) == layer;
}

}  // namespace pelt
