// Texture coordinates of corners as explicit uvees, and the shaking of uvees. A point has one uvee in a layer, so of
// corners that share a point the last one in the walk decides.
#include <bit>

#include "reduce/flatten.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr int ALL_CORNERS = 4;
constexpr uint32_t JITTER_SEED = 2021048;
constexpr uint32_t JITTER_FACTOR = 214013;
constexpr uint32_t JITTER_STEP = 2531011;
constexpr float JITTER_SCALE = std::bit_cast<float>(0x38000100U);  // about 1 / 32767

void store_corners(Model* model, const Layer& layer, const Triangle& triangle, int corners) {
    for (int corner = 0; corner < corners; ++corner) {
        model_add_uvee(model, layer.name, triangle.points[corner], triangle.uvs[corner][0], triangle.uvs[corner][1]);
    }
}

// 0 to 32767.
float jitter_random(uint32_t* state) {
    *state = *state * JITTER_FACTOR + JITTER_STEP;
    return static_cast<float>((*state >> 16) & 0x7FFFU);
}

}  // namespace

int model_triangulate_all(Model* model) {
    if (!model_triangulate(model)) { return 0; }
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            // Intended: four corners of a triangle too; the fourth is no point and fails with its text.
            store_corners(model, layer, triangle, ALL_CORNERS);
        }
    }
    return 1;
}

int model_store_uvees(Model* model) {
    if (model == nullptr) { return 0; }
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (layer_first_image(&layer) == nullptr) { continue; }
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            store_corners(model, layer, triangle, triangle_corners(&triangle));
        }
    }
    return 1;
}

int model_jitter_uvees(Model* model, float amount_u, float amount_v) {
    if (model == nullptr) { return 0; }
    uint32_t state = JITTER_SEED;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (Uvee& uvee : list_elements<Uvee>(layer.uvees)) {
            uvee.u += jitter_random(&state) * (amount_u * JITTER_SCALE);
            uvee.v += jitter_random(&state) * (amount_v * JITTER_SCALE);
        }
    }
    return 1;
}

}  // namespace pelt
