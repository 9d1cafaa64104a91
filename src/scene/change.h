// The one place that hears of every change of the scene's content before it happens. Whoever writes to a record of a
// model that stands in the scene, or to what the session says of the scene, tells it here first; one listener may keep
// what was there. Nobody is asked for permission, and without a listener a call is a test of two words.
//
// Models that are being read, or worked on beside the scene, are told of by nobody: a model is watched from when it
// stands in the scene (change_watch). Run-time records (states of points, joints, links, triangles) are no content.
//
// An operation does three things, in this order: it makes all its checks; it calls change_model once; and it calls
// change_element, change_key or change_slot for each slot of each list that it will write to, fill or free, before it
// does. One slot may be told as often as is convenient.
#pragma once

#include <cstdint>

#include "scene/model.h"
#include "scene/session.h"

namespace pelt {

// The lists of a model, then those of a layer.
enum ContentList : int32_t {
    CONTENT_POINTS,
    CONTENT_JOINTS,
    CONTENT_BLENDS,
    CONTENT_LAYERS,
    CONTENT_CHILDREN,
    CONTENT_TRIANGLES,  // the first that needs a layer
    CONTENT_POLYGONS,   // with their vertices
    CONTENT_LINES,      // with their vertices
    CONTENT_UVEES,
    CONTENT_IMAGES,
};
inline constexpr int CONTENT_LIST_COUNT = CONTENT_IMAGES + 1;

// The lists of the session that hold content, by slot. That of animations has the slots of the roots: it stands for
// what the animation of a root hangs on.
enum SceneList : int32_t { SCENE_ROOTS, SCENE_MODEL_STATES, SCENE_ANIMATIONS };

// What hears of changes. Every function is called with the record's context.
struct ChangeListener {
    void* context;
    // The fields of the model, its lists left out, are about to change.
    void (*fields)(void* context, Model* model);
    // The slot of the list is about to be written to, filled or freed. The layer is null for a list of the model.
    void (*slot)(void* context, Model* model, Layer* layer, ContentList list, int32_t slot);
    // The same for what the session says of the scene: the animation's path and base, its end, the radius.
    void (*scene_fields)(void* context, Session* session);
    void (*scene_slot)(void* context, Session* session, SceneList list, int32_t slot);
    // These are out of the scene and about to be released. True for what the listener takes over: of a layer its lists
    // with all that they hold, of a root both its model and its animation.
    bool (*keep_layer)(void* context, Model* model, Layer* layer);
    bool (*keep_model)(void* context, Model* model);
    bool (*keep_root)(void* context, Session* session, const RootModel& root);
    // All roots are about to go, or to be replaced, for good.
    void (*scene_replaced)(void* context, Session* session);
};

extern const ChangeListener* change_listener;  // null when nobody listens
extern uint64_t change_versions;               // of the content of models, given so far

// How a model stands to the scene.
enum WatchState : int32_t { WATCH_NONE = 0, WATCH_IN_SCENE = 1, WATCH_KEPT_OUTSIDE = 2 };

// From now on changes of the model, and of those that it owns below itself, are told; or, of one that was taken over by
// the listener, it is noted that it stands outside. Null is accepted.
void change_watch(Model* model, WatchState state = WATCH_IN_SCENE);

// The watched model with this serial, or null when there is none any more.
Model* change_watched_model(uint64_t serial);

// A model that is about to be released is watched no more. For model_release.
void change_unwatch(Model* model);

inline bool change_is_told(const Model* model) {
    return change_listener != nullptr && model != nullptr && model->watched != 0;
}

// The list itself; null for a list of a layer without a layer.
KeyedList* content_list(Model* model, Layer* layer, ContentList list);

// The fields of the model alone, for what is no change that a save would write.
inline void change_fields(Model* model) {
    if (change_is_told(model)) { change_listener->fields(change_listener->context, model); }
}

// The content of the model is about to change: tells its fields, and counts the change. Inlined, because the reading of
// a model is made of such changes.
inline void change_model(Model* model) {
    change_fields(model);
    ++model->changes;
    model->version = ++change_versions;
}

// One slot of a list, by its number, by its element, or by the key under which the next list_add will be: for a new
// key that is the slot which it will take.
inline void change_slot(Model* model, Layer* layer, ContentList list, int32_t slot) {
    if (change_is_told(model)) { change_listener->slot(change_listener->context, model, layer, list, slot); }
}
inline void change_element(Model* model, Layer* layer, ContentList list, const void* element) {
    if (change_is_told(model)) {
        change_slot(model, layer, list, list_slot_of_element(content_list(model, layer, list), element));
    }
}
template <typename Key>
void change_key(Model* model, Layer* layer, ContentList list, Key key) {
    if (change_is_told(model)) {
        change_slot(model, layer, list, list_slot_for(content_list(model, layer, list), key));
    }
}

inline void change_point(Model* model, const Point* point) { change_element(model, nullptr, CONTENT_POINTS, point); }

inline void change_scene_fields(Session* session) {
    if (change_listener != nullptr) { change_listener->scene_fields(change_listener->context, session); }
}
inline void change_scene_slot(Session* session, SceneList list, int32_t slot) {
    if (change_listener != nullptr) { change_listener->scene_slot(change_listener->context, session, list, slot); }
}

// What goes out of the scene is offered to the listener, which then owns it; what it does not take is to be released by
// the caller.
inline bool change_keeps_layer(Model* model, Layer* layer) {
    return change_is_told(model) && change_listener->keep_layer(change_listener->context, model, layer);
}
inline bool change_keeps_model(Model* model) {
    return change_is_told(model) && change_listener->keep_model(change_listener->context, model);
}
inline bool change_keeps_root(Session* session, const RootModel& root) {
    return change_is_told(root.model) && change_listener->keep_root(change_listener->context, session, root);
}
inline void change_scene_replaced(Session* session) {
    if (change_listener != nullptr) { change_listener->scene_replaced(change_listener->context, session); }
}

}  // namespace pelt
