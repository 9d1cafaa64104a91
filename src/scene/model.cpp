// Models: making, naming, counting and releasing them. What surprises: a child link can be borrowed, that is, name a
// model that some root of its own owns. Such a model is counted and walked like any other, but never released here.
#include "scene/model.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "foundation/file_access.h"
#include "foundation/text.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr size_t FULL_PATH_SIZE = 1024;

uint64_t models_made = 0;

void model_init_lists(Model* model) {
    list_init(&model->points, sizeof(Point), KEY_INT);
    list_init(&model->layers, sizeof(Layer), KEY_STRING);
    list_init(&model->joints, sizeof(Joint), KEY_STRING);
    list_init(&model->blends, sizeof(BlendWeight), KEY_INT);
    list_init(&model->children, sizeof(ChildLink), KEY_INT);
}

void scale_place(Vec3* place, float x, float y, float z) {
    place->x *= x;
    place->y *= y;
    place->z *= z;
}

int32_t layer_count_triangles(const Layer* layer) {
    int32_t total = 0;
    for (const Triangle& triangle : list_elements<Triangle>(layer->triangles)) { total += triangle.quad ? 2 : 1; }
    for (const Polygon& polygon : list_elements<Polygon>(layer->polygons)) { total += polygon.vertex_count - 2; }
    return total;
}

int32_t layer_count_lines(const Layer* layer) {
    int32_t total = 0;
    for (const Line& line : list_elements<Line>(layer->lines)) { total += line.vertex_count - 1; }
    return total;
}

}  // namespace

Model* model_create(const char* path, Model* parent) {
    if (path == nullptr) { return nullptr; }
    Model* model = new Model{};
    model->parent = parent;
    // Name and directory share one static buffer, so each is copied before the next is asked for.
    str_copy(path_base_name(path), model->name);
    str_copy(path_directory(path), model->path);
    model_init_lists(model);
    model->state_index = -1;
    model->serial = ++models_made;
    return model;
}

Model* model_create_long(const char* path, Model* parent) {
    if (path == nullptr || path_fits(path)) { return model_create(path, parent); }
    const std::string directory(path, path_directory_length(path));
    const char* file = path + directory.size();
    Model* model = model_create(file, parent);
    model->long_directory = str_dup(directory.c_str());
    if (model->name[0] == '\0') {
        str_copy(file, model->name);  // too short, or too long, for a base name
        str_lower(model->name);
    }
    return model;
}

int model_release(Model* model) {
    if (model == nullptr) { return 0; }
    change_unwatch(model);  // what goes for good is told to nobody
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { model_release(link.model); }
    }
    // By slot: a layer with a long name cannot be found by it.
    for (int32_t slot = 0; slot < model->layers.capacity; ++slot) { model_delete_layer_slot(model, slot); }
    list_free(&model->children);
    list_free(&model->layers);
    list_free(&model->joints);
    list_free(&model->blends);
    list_free(&model->points);
    str_free(model->opened_path);
    str_free(model->long_directory);
    delete model;
    return 1;
}

int model_rename(Model* model, const char* path) {
    if (model == nullptr || path == nullptr) { return 0; }
    change_fields(model);
    const char* name = path_base_name(path);
    if (name != nullptr) { str_copy(name, model->name); }
    const char* directory = path_directory(path);
    const bool moved = directory != nullptr && directory[0] != '\0';
    if (moved) {
        str_copy(directory, model->path);
        str_free(model->long_directory);
        model->long_directory = nullptr;
    }
    if (name != nullptr || moved) {
        str_free(model->opened_path);
        model->opened_path = nullptr;
    }
    return 1;
}

void model_set_file(Model* model, const char* path) {
    if (model == nullptr || path == nullptr) { return; }
    change_fields(model);
    Model* named = model_create_long(path, nullptr);
    str_copy(named->path, model->path);
    str_copy(named->name, model->name);
    std::swap(named->long_directory, model->long_directory);
    model_release(named);
    str_free(model->opened_path);
    model->opened_path = str_dup(path);
    if (!path_fits(path)) { model->long_paths = 1; }
}

const char* model_name(const Model* model) { return model != nullptr ? model->name : nullptr; }

const char* model_full_path(const Model* model) {
    static char text[FULL_PATH_SIZE];
    if (model == nullptr) { return nullptr; }
    std::snprintf(text, sizeof text, "%s%s", model->path, model->name);
    return text;
}

void model_set_tag(Model* model, int32_t tag) {
    if (model == nullptr) { return; }
    change_fields(model);
    model->tag = tag;
}

int32_t model_tag(const Model* model) { return model != nullptr ? model->tag : 0; }

int model_scale(Model* model, float x, float y, float z) {
    if (model == nullptr || x == 0.0f || y == 0.0f || z == 0.0f) { return 0; }
    change_model(model);
    for (Point& point : list_elements<Point>(model->points)) {
        change_point(model, &point);
        scale_place(&point.position, x, y, z);
    }
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        change_element(model, nullptr, CONTENT_JOINTS, &joint);
        scale_place(&joint.position, x, y, z);
    }
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        change_element(model, nullptr, CONTENT_CHILDREN, &link);
        scale_place(&link.position, x, y, z);
    }
    return 1;
}

int32_t model_count_points(const Model* model) { return model != nullptr ? list_count(&model->points) : 0; }

int32_t model_count_joints(const Model* model) { return model != nullptr ? list_count(&model->joints) : 0; }

int32_t model_count_layers(const Model* model) { return model != nullptr ? list_count(&model->layers) : 0; }

int32_t model_count_children(const Model* model) {
    if (model == nullptr) { return 0; }
    int32_t total = 0;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        total += 1 + model_count_children(link.model);
    }
    return total;
}

int32_t model_count_triangles(const Model* model, const char* layer) {
    if (model == nullptr) { return 0; }
    if (layer != nullptr) {
        const Layer* found = model_find_layer(model, layer);
        return found != nullptr ? layer_count_triangles(found) : 0;
    }
    // Intended: over all layers the records are counted, a quad once and polygons not at all.
    int32_t total = 0;
    for (const Layer& each : list_elements<Layer>(model->layers)) { total += list_count(&each.triangles); }
    return total;
}

int32_t model_count_lines(const Model* model, const char* layer) {
    if (model == nullptr) { return 0; }
    if (layer != nullptr) {
        const Layer* found = model_find_layer(model, layer);
        return found != nullptr ? layer_count_lines(found) : 0;
    }
    int32_t total = 0;
    for (const Layer& each : list_elements<Layer>(model->layers)) { total += layer_count_lines(&each); }
    return total;
}

int64_t model_unsaved_changes(const Model* model) {
    if (model == nullptr || model->version == model->saved_version) { return 0; }
    const int64_t apart = model->changes - model->saved_changes;
    return apart == 0 ? 1 : std::abs(apart);
}

void model_mark_read(Model* model) {
    if (model == nullptr) { return; }
    model->changes = 0;
    model_mark_saved(model);
}

void model_mark_saved(Model* model) {
    if (model == nullptr) { return; }
    model->saved_version = model->version;
    model->saved_changes = model->changes;
}

std::string model_directory(const Model* model) {
    if (model == nullptr) { return {}; }
    if (model->long_directory != nullptr) { return model->long_directory; }
    // With the letters that the reader was given, where path has them all lower.
    if (model->long_paths && model->opened_path != nullptr) {
        return std::string(model->opened_path, path_directory_length(model->opened_path));
    }
    return model->path;
}

std::string model_file(const Model* model) {
    return model != nullptr && model->opened_path != nullptr ? model->opened_path : std::string();
}

std::string model_file_path(const Model* model, const char* file) {
    return model_directory(model) + (file != nullptr ? file : "");
}

}  // namespace pelt
