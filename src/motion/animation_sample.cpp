// What a clip and its sub-clips say about one track at one time.
//
// What surprises: sampling is no read-only operation. A blend of two rotation keys may turn the sign of the first one
// in its own storage, which leaves the rotation as it is.
#include "motion/animation_sample.h"

#include <cmath>

#include "formats/animation.h"
#include "foundation/quat.h"

namespace pelt {

namespace {

inline constexpr float SHORTEST_INTERVAL = 0.0001f;  // seconds; closer keys are not blended

// The keys around a time, and how far the time lies between them. Without a first key the second holds alone.
struct KeyPair {
    AnimationKey* first;
    AnimationKey* second;
    float share;
};

AnimationKey* frame_key(const AnimationFrame* frame, int32_t track) {
    return frame->keys == nullptr ? nullptr : frame->keys[track];
}

// Place of a slot among the tracks that the clip moves, else -1. Only the first frame tells whether a file moves one.
int32_t moved_track(const AnimationClip* clip, int32_t slot) {
    if (slot < 0 || slot >= clip->slot_count || clip->frame_count < 1) { return -1; }
    const int32_t track = animation_track(clip, slot);
    return track >= 0 && frame_key(&clip->frames[0], track) != nullptr ? track : -1;
}

bool clip_moves(const AnimationClip* clip, int32_t slot) { return moved_track(clip, slot) >= 0; }

// Number of frames from the front that all lie before the time, which is never behind the end of the clip: where a walk
// from the first frame would stop, also when the times of the file are out of order.
int32_t frames_before(float time, const AnimationClip* clip) {
    int32_t low = 0;
    int32_t high = clip->frame_count;
    while (low < high) {
        const int32_t middle = low + (high - low) / 2;
        if (clip->frames[middle].latest < time) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

KeyPair find_keys(float time, const AnimationClip* clip, int32_t track) {
    const int32_t before = frames_before(time, clip);
    if (before == clip->frame_count) { return {nullptr, frame_key(&clip->frames[before - 1], track), 0.0f}; }
    const AnimationFrame* frame = &clip->frames[before];
    const AnimationFrame* previous = &clip->frames[before == 0 ? 0 : before - 1];
    AnimationKey* key = frame_key(frame, track);
    if (frame->time == time) { return {nullptr, key, 0.0f}; }
    const float interval = frame->time - previous->time;
    if (std::fabs(interval) < SHORTEST_INTERVAL) { return {nullptr, key, 0.0f}; }
    AnimationKey* first = frame_key(previous, track);
    if (first == nullptr) { return {nullptr, nullptr, 0.0f}; }
    return {first, key, (time - previous->time) / interval};
}

void write_translation(const KeyPair& keys, Mat4* out) {
    const AnimationKey* key = keys.second;
    Vec3 place{key->x, key->y, key->z};
    if (keys.first != nullptr) {
        const AnimationKey* first = keys.first;
        place = {first->x + (key->x - first->x) * keys.share, first->y + (key->y - first->y) * keys.share,
                 first->z + (key->z - first->z) * keys.share};
    }
    mat_identity(out);
    mat_translate(out, place.x, place.y, place.z);
}

Quat key_rotation(const AnimationKey* key) { return {key->x, key->y, key->z, key->w}; }

void store_rotation(const Quat& q, AnimationKey* key) { *key = {q.x, q.y, q.z, q.w}; }

void write_rotation(const KeyPair& keys, Mat4* out) {
    Quat rotation = key_rotation(keys.second);
    if (keys.first != nullptr) {
        Quat first = key_rotation(keys.first);
        Quat second = rotation;
        quat_slerp(&first, &second, &rotation, keys.share);
        store_rotation(first, keys.first);  // the sign may have been turned, and is to stay so
        store_rotation(second, keys.second);
    }
    quat_to_matrix(out, rotation.x, rotation.y, rotation.z, rotation.w);
}

// What the frames of the clip itself say; 0 for a track without keys, and where a key is missing because the reading
// of the file broke off.
int sample_frames(float time, const AnimationClip* clip, int32_t slot, Mat4* out) {
    const int32_t track = moved_track(clip, slot);
    if (track < 0) { return 0; }
    const KeyPair keys = find_keys(time, clip, track);
    if (keys.second == nullptr) { return 0; }
    if (slot == ANIMATION_TRANSLATE_SLOT) {
        write_translation(keys, out);
    } else {
        write_rotation(keys, out);
    }
    return 1;
}

}  // namespace

int animation_sample(float time, AnimationClip* clip, int32_t slot, Mat4* out) {
    if (clip == nullptr || out == nullptr) { return 0; }
    // A held time is what the sub-clips see too, and it can lie before the clip's own start: then nothing ever moves.
    const float t = clip->hold_time == HOLD_NONE ? time : clip->hold_time;
    if (t < clip->start_time || t > clip->end_time) { return 0; }
    int moved = sample_frames(t, clip, slot, out);
    for (int32_t i = 0; i < clip->subclip_count; ++i) {
        if (moved == 0) {
            moved = animation_sample(t, &clip->subclips[i], slot, out);
            continue;
        }
        Mat4 added;
        if (animation_sample(t, &clip->subclips[i], slot, &added) != 0) { mat_multiply(out, &added, out); }
    }
    return moved;
}

int32_t clip_key_count(const ModelAnimation* animation, const AnimationClip* clip) {
    if (animation == nullptr || clip == nullptr) { return 0; }
    int32_t count = 0;
    for (int32_t slot = 0; slot < clip->slot_count; ++slot) { count += clip_moves(clip, slot) ? 1 : 0; }
    return count;
}

int32_t clip_key_slot(const ModelAnimation* animation, const AnimationClip* clip, int32_t index) {
    if (animation == nullptr || clip == nullptr || index < 0) { return 0; }
    int32_t left = index;
    for (int32_t slot = 0; slot < clip->slot_count; ++slot) {
        if (clip_moves(clip, slot) && left-- == 0) { return slot; }
    }
    return 0;
}

}  // namespace pelt
