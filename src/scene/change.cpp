// Who hears of changes, and the lists by the words under which they are told.
#include "scene/change.h"

#include <unordered_map>

namespace pelt {

const ChangeListener* change_listener = nullptr;
uint64_t change_versions = 0;

namespace {

// Never destroyed: scripts may still run while the process ends.
std::unordered_map<uint64_t, Model*>& watched_models() {
    static auto& models = *new std::unordered_map<uint64_t, Model*>;
    return models;
}

}  // namespace

void change_watch(Model* model, WatchState state) {
    // One that is watched like this already is so with all below it; and a link can lead in a circle.
    if (model == nullptr || (model->watched == state && change_watched_model(model->serial) == model)) { return; }
    model->watched = state;
    watched_models()[model->serial] = model;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { change_watch(link.model, state); }
    }
}

Model* change_watched_model(uint64_t serial) {
    const auto found = watched_models().find(serial);
    return found != watched_models().end() ? found->second : nullptr;
}

void change_unwatch(Model* model) {
    if (model->watched == WATCH_NONE) { return; }
    watched_models().erase(model->serial);
    model->watched = WATCH_NONE;
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

}  // namespace pelt
