// The records of an animation: what moves a model, its clips, their frames and keys. Made by clip_reader.h and
// scene_list.h.
#pragma once

#include <cstdint>

namespace pelt {

struct Joint;
struct Model;

// The tracks of a model: its own movement, its own turn, then one for each joint, then one for each child link.
inline constexpr int32_t ANIMATION_TRANSLATE_SLOT = 0;
inline constexpr int32_t ANIMATION_ROTATE_SLOT = 1;
inline constexpr int32_t ANIMATION_FIRST_JOINT_SLOT = 2;

inline constexpr float HOLD_NONE = -1.0f;

// Slot 0: x, y, z of a translation and 1.0. Any other slot: a quaternion.
struct AnimationKey {
    float x, y, z, w;
};

struct AnimationFrame {
    float time;           // seconds, the shift of its file included
    float latest;         // highest time up to this frame, so that a search may halve; set by animation_index_frames
    AnimationKey** keys;  // one for each of the clip's tracks, null without a key; null for a frame that was not read
};

// What one clip file becomes. A clip whose file could not be read is all zero, but for unread_path, and moves
// nothing.
struct AnimationClip {
    char* name;        // path of the file; heap text
    float hold_time;   // the one time that is shown, HOLD_NONE for a clip that runs
    float start_time;  // shift of the file's times
    float end_time;    // absolute seconds, sub-clips included
    int32_t frame_count;
    AnimationFrame* frames;  // in file order; null when there are none
    int32_t subclip_count;
    AnimationClip* subclips;  // in file order; null when there are none
    int32_t slot_count;       // tracks that a sample may ask for: 0 to slot_count - 1
    int32_t track_count;      // tracks that the file has columns for
    int32_t* tracks;          // their slots, rising, up to slot_count; null when there are none
    int32_t shares_keys;      // 1: the keys belong to another clip of the same tree, which was read from the same file
    char* unread_path;        // path of a file that could not be read; heap text, null for a clip that has a name
};

struct ModelAnimation {
    int32_t enabled;
    Model* parent_model;               // not owned; emptied when that model goes
    ModelAnimation* parent_animation;  // not owned
    Joint* parent_joint;               // not owned
    int32_t parent_slot;
    AnimationClip clip;
    int32_t slot_count;
    int32_t joint_count;
    int32_t child_count;
};

// The number of tracks that a model has.
int32_t animation_slot_count(const Model* model);

// Empty record for a model: enabled, on "world", its counts taken now. Null for a null model.
ModelAnimation* animation_create(const Model* model);
int animation_release(ModelAnimation* animation);  // with its clips; null is accepted; always 1

// Bytes that the record takes with its clips, keys included; 0 for null.
int64_t animation_bytes(const ModelAnimation* animation);

AnimationClip* animation_clip(ModelAnimation* animation);  // null for null

// Path of the file that a clip was read from or could not be read from; null when its line names none.
const char* animation_clip_file(const AnimationClip* clip);

// Place of a slot among the clip's tracks, and so in the keys of its frames; -1 for a slot without a column.
int32_t animation_track(const AnimationClip* clip, int32_t slot);

// To be called when the times of a clip's frames were changed; its sub-clips are left alone.
void animation_index_frames(AnimationClip* clip);

// The text of the last failure, null when the last read had none.
const char* animation_error();
void animation_set_error(const char* text);     // copied, and set as the load failure too; null clears both
void animation_reword_error(const char* text);  // another text for a failure that is known in parts already

}  // namespace pelt
