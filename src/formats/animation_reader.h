// Scene lists and clip files: the records of an animation, their reading and release.
#pragma once

#include <cstdint>

namespace pelt {

struct Joint;
struct Model;

inline constexpr int ANIMATION_ROW_LIMIT = 24;
inline constexpr int ANIMATION_NAME_LIMIT = 128;
inline constexpr float HOLD_NONE = -1.0f;

// Slot 0: x, y, z of a translation and 1.0. Any other slot: a quaternion.
struct AnimationKey {
    float x, y, z, w;
};

struct AnimationFrame {
    float time;           // seconds, the shift of its file included
    AnimationKey** keys;  // slot_count pointers; null for a track without a key
};

struct AnimationClip {
    char* name;
    float hold_time;
    float start_time;
    float end_time;
    int32_t frame_count;
    AnimationFrame* frames;
    int32_t subclip_count;
    AnimationClip* subclips;
};

struct ModelAnimation {
    int32_t enabled;
    Model* parent_model;                // not owned; emptied when that model goes
    ModelAnimation* parent_animation;   // not owned
    Joint* parent_joint;                // not owned
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

// New set (std::free; its models and animations go to the caller), or null with animation_error set.
AnimationSet* animation_load(const char* path);
ModelAnimation* animation_create(const Model* model);
int animation_release(ModelAnimation* animation);  // always 1
float animation_read_clip(Model* model, AnimationClip* clip, const char* directory, const char* file, float start,
                          float hold);
AnimationClip* animation_clip(ModelAnimation* animation);
const char* animation_error();
void animation_set_error(const char* text);  // copied

}  // namespace pelt
