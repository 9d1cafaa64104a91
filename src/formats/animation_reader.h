// Scene lists and clip files: the records of an animation, their reading and release.
#pragma once

#include <cstdint>

namespace pelt {

struct Joint;
struct Model;

inline constexpr int ANIMATION_ROW_LIMIT = 24;
inline constexpr int ANIMATION_NAME_LIMIT = 128;
inline constexpr int ANIMATION_SUBCLIP_LIMIT = 4096;  // in a whole tree of clips

// Keys of all rows of a scene list: the columns of each frame line, counted once for each file and row, and one more
// for each frame of each clip that is made of the file.
inline constexpr int64_t ANIMATION_KEY_LIMIT = int64_t{1} << 24;
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

// What one clip file becomes. A clip whose file could not be read is all zero and moves nothing.
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

struct AnimationSet {
    Model* models[ANIMATION_ROW_LIMIT];
    ModelAnimation* animations[ANIMATION_ROW_LIMIT];
    int32_t count;
    float duration;
};

// New set (std::free; its models and animations go to the caller), or null with the reason in animation_error, where
// there is one.
AnimationSet* animation_load(const char* path);

// Empty record for a model: enabled, on "world", its counts taken now. Null for a null model.
ModelAnimation* animation_create(const Model* model);
int animation_release(ModelAnimation* animation);  // with its clips; null is accepted; always 1

// Reads a clip file and all its sub-clips into a zeroed clip. Times are seconds; hold is HOLD_NONE for none. Returns
// the end time of the clip, 0.0 on failure; what was read up to then stays in the clip, for animation_release.
float animation_read_clip(Model* model, AnimationClip* clip, const char* directory, const char* file, float start,
                          float hold);
AnimationClip* animation_clip(ModelAnimation* animation);  // null for null

// Place of a slot among the clip's tracks, and so in the keys of its frames; -1 for a slot without a column.
int32_t animation_track(const AnimationClip* clip, int32_t slot);

// To be called when the times of a clip's frames were changed; its sub-clips are left alone.
void animation_index_frames(AnimationClip* clip);

// The text of the last failure, null when the last read had none.
const char* animation_error();
void animation_set_error(const char* text);  // copied; null clears it

}  // namespace pelt
