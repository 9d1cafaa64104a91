// Where flattening ends: the numbers of points and the names of layers that can be referred to.
#pragma once

#include <cstdint>

namespace pelt {

struct Layer;
struct Model;

// Primitives store point ids in 16 bits.
inline constexpr int32_t POINT_ID_LIMIT = 32767;

// Whether new points up to this id can be referred to. If not, the load error says so.
bool point_id_fits(int64_t highest_id);

// Whether a layer of this name can be found again: a key holds no longer one. If not, the load error says so.
bool layer_name_fits(const char* name);

// Whether the model finds this very layer by its name. Layers with longer names are left as they are by everything
// that works by name.
bool layer_can_be_found(const Model* model, const Layer* layer);

}  // namespace pelt
