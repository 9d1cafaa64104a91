// The Session: the one record of everything in the scene, its reports to the script, and the forgetting of caches.
#pragma once

#include <cstdint>

#include "foundation/keyed_list.h"
#include "scene/model.h"
#include "scene/states.h"

namespace pelt {

inline constexpr size_t STATUS_TEXT_SIZE = 512;
inline constexpr float EMPTY_SCENE_RADIUS = 10.0f;
inline constexpr int DIGIT_BITMAP_SIZE = 96;  // bytes of a glyph slot, of which 12 are used

struct SelectedModel {
    Model* model;     // to be used only while the key still names it: see selection_entry_model
    uint64_t serial;  // of the model
};

struct SelectedChild {
    ChildLink* link;
};

// What is selected. The six unnamed lists are set up, cleared and copied; nothing fills them.
struct SelectionSet {
    KeyedList models;  // SelectedModel, KEY_INT: ModelState id or ChildState id
    KeyedList unused[6];
    KeyedList children;  // SelectedChild, KEY_INT: ChildState id
    Vec3 centre;
    Vec3 axis;
};

struct Session {
    KeyedList model_states;     // ModelState, KEY_INT
    KeyedList point_states;     // PointState, KEY_INT
    KeyedList triangle_caches;  // TriangleCache, KEY_INT
    KeyedList joint_states;     // JointState, KEY_INT
    KeyedList child_states;     // ChildState, KEY_INT
    KeyedList root_models;      // RootModel, KEY_INT
    char* animation_path;       // heap text or null
    char* animation_base;       // heap text: where that list's rows begin and may have long paths; null without a base
    float anim_time;            // seconds
    float anim_step;
    int32_t anim_rate;
    float anim_end;
    int64_t evaluations;  // times that models were evaluated, for whoever wants to know whether one was since
    SelectionSet selection;
    SelectionSet clipboard;
    KeyedList file_list;  // never set up, so that it stays empty
    int32_t clipboard_cut;
    int32_t display_wireframe;
    int32_t display_points;
    int32_t display_triangles;
    int32_t display_mirror;
    int32_t display_textures;
    int32_t display_smooth;
    int32_t display_normals;
    int32_t display_transparency;
    int32_t display_backfaces;
    int32_t display_lighting;
    int32_t display_curves;
    int32_t display_curvenet;
    int32_t display_skeleton;
    int32_t display_gouraud;
    int32_t display_quadlines;
    int32_t display_pnfilter;
    int32_t display_curvepath;
    int32_t display_lod;
    int32_t display_reflect;
    int32_t display_lines;
    int32_t triangles_drawn;
    float radius;
    int32_t points_color_index;
    Vec3 centre;
    unsigned char digit_bitmaps[10][DIGIT_BITMAP_SIZE];
    int32_t digit_bitmaps_ready;
    const char* last_message;  // owned by session_message
    void (*status_callback)(const char* text);
    void (*message_callback)(const char* text);
};

// Ids of run-time records: never reset, so that no id ever comes back.
extern int32_t next_model_state_id;
extern int32_t next_joint_state_id;
extern int32_t next_child_state_id;
extern int32_t next_point_state_id;
extern int32_t next_triangle_cache_id;
extern int32_t next_root_id;

void session_set_status_callback(Session* session, void (*callback)(const char* text));
void session_set_message_callback(Session* session, void (*callback)(const char* text));

// Reports the text behind the time and the count of triangles, cut to STATUS_TEXT_SIZE. Nothing without a callback.
void session_status(Session* session, const char* text);

// The bare text, to the status callback alone.
void session_say(Session* session, const char* text);

// Message callback first, status callback second, both with the bare text, which is copied before they run.
void session_message(Session* session, const char* text);
const char* session_last_message(const Session* session);

// Keeps copies of both, in place of what was kept; null for none. A scene list without a base has none.
void session_set_animation_path(Session* session, const char* path, const char* base);

void session_restore_display(Session* session);  // all display flags to their defaults
void session_clear_bounds(Session* session);     // radius 10, centre 0
void session_build_digits(Session* session);

// The control net of curved surfaces; no script command sets it.
void session_set_curvenet(Session* session, int32_t on);
int32_t session_curvenet(const Session* session);

int32_t session_triangles_drawn(const Session* session);
float session_anim_time(const Session* session);
float session_anim_end(const Session* session);

// Removes every run-time record that hangs on the model, children first. A model that has a root of its own (a
// borrowed link) is passed over. 0 for null or when a link without a model was met, which stops nothing; else 1.
int session_forget_model(Session* session, Model* model);

// The same for what hangs on one layer, one child link (its model is not walked), one joint, one triangle or one point.
void session_forget_layer(Session* session, Layer* layer);
void session_forget_child(Session* session, ChildLink* link);
void session_forget_joint(Session* session, Joint* joint);
void session_forget_triangle(Session* session, Triangle* triangle);
void session_forget_point(Session* session, Point* point);

// The same for the joints and points of one model: what they move by, and where they are in the animation.
void session_forget_poses(Session* session, Model* model);

// Deleting and renaming a layer of a model that stands in the scene: what the session holds for the layer that goes
// is forgotten first. Results as model_delete_layer and model_rename_layer.
int session_delete_layer(Session* session, Model* model, const char* name);
int session_rename_layer(Session* session, Model* model, const char* old_name, const char* new_name);

}  // namespace pelt
