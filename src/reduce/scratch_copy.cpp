// Copies a model for work that must leave the model alone: trying whether a merge goes through, and merging a model
// that belongs to somebody else. A copied list holds the same lists inside as its source, so each inner list is copied
// over itself. The copy's child links are all borrowed, so that nothing below is copied before it is needed, nor
// released with the copy.
#include "reduce/scratch_copy.h"

#include <cstring>

#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

// The list is a byte-wise copy of a record and shares its storage.
void unshare(KeyedList* list) {
    const KeyedList shared = *list;
    list_copy(&shared, list);
}

void drop_lines(Layer* layer) { list_init(&layer->lines, sizeof(Line), KEY_INT); }

void drop_pixels(Layer* layer) {
    for (LayerImage& image : list_elements<LayerImage>(layer->images)) {
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
            image.pixels[slot] = nullptr;
            image.image_id[slot] = 0;
            image.bytes_per_pixel[slot] = 0;
        }
    }
}

void copy_layers(const Model* source, Model* copy) {
    list_copy(&source->layers, &copy->layers);
    for (Layer& layer : list_elements<Layer>(copy->layers)) {
        for (KeyedList* list : {&layer.triangles, &layer.polygons, &layer.uvees, &layer.images}) { unshare(list); }
        for (Polygon& polygon : list_elements<Polygon>(layer.polygons)) { unshare(&polygon.vertices); }
        drop_lines(&layer);
        drop_pixels(&layer);
    }
}

void copy_points(const Model* source, Model* copy) {
    list_copy(&source->points, &copy->points);
    for (Point& point : list_elements<Point>(copy->points)) {
        point.joint_a = nullptr;
        point.joint_b = nullptr;
        point.state_index = -1;
    }
}

void copy_links(const Model* source, Model* copy) {
    list_copy(&source->children, &copy->children);
    for (ChildLink& link : list_elements<ChildLink>(copy->children)) {
        link.borrowed = 1;
        link.state_index = -1;
    }
}

}  // namespace

Model* model_scratch_copy(const Model* source) {
    if (source == nullptr) { return nullptr; }
    Model* copy = model_create("", nullptr);
    std::memcpy(copy->path, source->path, sizeof copy->path);
    std::memcpy(copy->name, source->name, sizeof copy->name);
    copy->long_directory = str_dup(source->long_directory);
    copy->has_gouraud = source->has_gouraud;
    copy->has_normals = source->has_normals;
    copy->bounds_min = source->bounds_min;
    copy->bounds_max = source->bounds_max;
    copy_points(source, copy);
    copy_layers(source, copy);
    copy_links(source, copy);
    return copy;
}

}  // namespace pelt
