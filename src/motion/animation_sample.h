// The motion of one track at one time.
#pragma once

#include <cstdint>

#include "foundation/math3d.h"

namespace pelt {

struct AnimationClip;
struct ModelAnimation;

// 1 when out was written; 0, with out as it was, when the clip and its sub-clips have no motion for the slot then.
int animation_sample(float time, AnimationClip* clip, int32_t slot, Mat4* out);

// Tracks with a key in the first frame, and the slot of the one with that index (0 when there is none).
int32_t clip_key_count(const ModelAnimation* animation, const AnimationClip* clip);
int32_t clip_key_slot(const ModelAnimation* animation, const AnimationClip* clip, int32_t index);

}  // namespace pelt
