// The records of an animation, and the text of the last failure of those that read them.
#include "formats/animation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "foundation/load_error.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

char* error_text = nullptr;

void release_clip(AnimationClip* clip) {
    for (int32_t i = 0; i < clip->subclip_count; ++i) { release_clip(&clip->subclips[i]); }
    std::free(clip->subclips);
    str_free(clip->name);
    str_free(clip->unread_path);
    for (int32_t i = 0; i < clip->frame_count && !clip->shares_keys; ++i) { std::free(clip->frames[i].keys); }
    std::free(clip->frames);
    delete[] clip->tracks;
}

// A frame has a table of its keys, and each key at most once.
int64_t clip_bytes(const AnimationClip& clip) {
    constexpr int64_t COLUMN = sizeof(AnimationKey*) + sizeof(AnimationKey);
    const int64_t keys = clip.shares_keys ? 0 : clip.track_count * COLUMN;
    int64_t bytes =
        static_cast<int64_t>(sizeof clip) + clip.frame_count * (static_cast<int64_t>(sizeof(AnimationFrame)) + keys);
    for (int32_t i = 0; i < clip.subclip_count; ++i) { bytes += clip_bytes(clip.subclips[i]); }
    return bytes;
}

}  // namespace

int32_t animation_slot_count(const Model* model) {
    return model_count_joints(model) + model_count_children(model) + ANIMATION_FIRST_JOINT_SLOT;
}

ModelAnimation* animation_create(const Model* model) {
    if (model == nullptr) { return nullptr; }
    ModelAnimation* animation = new ModelAnimation{};
    animation->enabled = 1;
    animation->joint_count = model_count_joints(model);
    animation->child_count = model_count_children(model);
    animation->slot_count = animation_slot_count(model);
    return animation;
}

int animation_release(ModelAnimation* animation) {
    if (animation == nullptr) { return 1; }
    release_clip(&animation->clip);
    delete animation;
    return 1;
}

int64_t animation_bytes(const ModelAnimation* animation) {
    return animation != nullptr ? static_cast<int64_t>(sizeof *animation) + clip_bytes(animation->clip) : 0;
}

AnimationClip* animation_clip(ModelAnimation* animation) { return animation == nullptr ? nullptr : &animation->clip; }

const char* animation_clip_file(const AnimationClip* clip) {
    if (clip == nullptr) { return nullptr; }
    return clip->name != nullptr ? clip->name : clip->unread_path;
}

int32_t animation_track(const AnimationClip* clip, int32_t slot) {
    if (clip == nullptr || slot < 0) { return -1; }
    // Most files have their columns in the order of the slots and leave none out.
    if (slot < clip->track_count && clip->tracks[slot] == slot) { return slot; }
    const int32_t* end = clip->tracks + clip->track_count;
    const int32_t* found = std::lower_bound(static_cast<const int32_t*>(clip->tracks), end, slot);
    return found != end && *found == slot ? static_cast<int32_t>(found - clip->tracks) : -1;
}

// A time that is no number stops a walk over the frames, as one behind all others does.
void animation_index_frames(AnimationClip* clip) {
    if (clip == nullptr) { return; }
    float latest = -std::numeric_limits<float>::infinity();
    for (int32_t i = 0; i < clip->frame_count; ++i) {
        const float time = clip->frames[i].time;
        latest = std::isnan(time) ? std::numeric_limits<float>::infinity() : std::max(latest, time);
        clip->frames[i].latest = latest;
    }
}

const char* animation_error() { return error_text; }

void animation_set_error(const char* text) {
    if (text != nullptr) {
        load_failure_set(text);
    } else {
        load_failure_clear();
    }
    animation_reword_error(text);
}

void animation_reword_error(const char* text) {
    char* copy = str_dup(text);  // first, because the text may be the one that is stored
    str_free(error_text);
    error_text = copy;
}

}  // namespace pelt
