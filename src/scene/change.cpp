// Who hears of changes, and the lists by the words under which they are told.
#include "scene/change.h"

namespace pelt {

const ChangeListener* change_listener = nullptr;

namespace {

uint64_t versions_made = 0;

}  // namespace

void change_watch(Model* model) {
    if (model == nullptr) { return; }
    model->watched = 1;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { change_watch(link.model); }
    }
}

KeyedList* content_list(Model* model, Layer* layer, ContentList list) {
    switch (list) {
        case CONTENT_POINTS: return &model->points;
        case CONTENT_JOINTS: return &model->joints;
        case CONTENT_BLENDS: return &model->blends;
        case CONTENT_LAYERS: return &model->layers;
        case CONTENT_CHILDREN: return &model->children;
        default: break;
    }
    if (layer == nullptr) { return nullptr; }
    switch (list) {
        case CONTENT_TRIANGLES: return &layer->triangles;
        case CONTENT_POLYGONS: return &layer->polygons;
        case CONTENT_LINES: return &layer->lines;
        case CONTENT_UVEES: return &layer->uvees;
        default: return &layer->images;
    }
}

void change_model(Model* model) {
    change_fields(model);
    ++model->changes;
    model->version = ++versions_made;
}

}  // namespace pelt
