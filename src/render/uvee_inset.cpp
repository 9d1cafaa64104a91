// Pulls the texture coordinates of a model in from the borders of its images, so that nearest sampling at 0 and 1
// stays inside. They are told as a change, which is taken back like any other, and count as none: no file has them. The
// surprise: every call insets what is there once more, and an image of one texel divides by zero.
#include "render/uvee_inset.h"

#include <cstdint>

#include "scene/change.h"

namespace pelt {

namespace {

// u * scale_u + offset_u, and the same for v.
struct Inset {
    float scale_u, offset_u;
    float scale_v, offset_v;
};

float texel_step(int32_t size) { return 1.0f / static_cast<float>(static_cast<int64_t>(size) - 1); }

Inset inset_of(const LayerImage* image, float low, float high) {
    const float du = texel_step(image->width[IMAGE_SLOT_BASE]);
    const float dv = texel_step(image->height[IMAGE_SLOT_BASE]);
    const float u_min = low * du;
    const float v_min = low * dv;
    const float u_max = 1.0f - high * du;
    const float v_max = 1.0f - high * dv;
    return {u_max - u_min, u_min, v_max - v_min, v_min};
}

void inset_layer(Model* model, Layer* layer, const Inset& inset) {
    for (Triangle& triangle : list_elements<Triangle>(layer->triangles)) {
        change_element(model, layer, CONTENT_TRIANGLES, &triangle);
        for (float(&uv)[2] : triangle.uvs) {
            uv[0] = uv[0] * inset.scale_u + inset.offset_u;
            uv[1] = uv[1] * inset.scale_v + inset.offset_v;
        }
    }
    for (Polygon& polygon : list_elements<Polygon>(layer->polygons)) {
        change_element(model, layer, CONTENT_POLYGONS, &polygon);
        for (PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            vertex.u = vertex.u * inset.scale_u + inset.offset_u;
            vertex.v = vertex.v * inset.scale_v + inset.offset_v;
        }
    }
}

}  // namespace

int model_inset_uvees(Model* model, float low, float high) {
    if (model == nullptr) { return 0; }
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        const LayerImage* image = layer_first_image(&layer);
        // Intended: a layer of polygons alone is passed over.
        if (image == nullptr || list_count(&layer.triangles) == 0) { continue; }
        inset_layer(model, &layer, inset_of(image, low, high));
    }
    return 1;
}

}  // namespace pelt
