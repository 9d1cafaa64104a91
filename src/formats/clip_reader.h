// Reader of clip files: the keys that move one model.
#pragma once

#include <cstdint>

#include "formats/animation.h"

namespace pelt {

inline constexpr int ANIMATION_NAME_LIMIT = 128;
inline constexpr int ANIMATION_SUBCLIP_LIMIT = 4096;  // in a whole tree of clips

// Keys of all rows of a scene list: the columns of each frame line, counted once for each file and row, and one more
// for each frame of each clip that is made of the file.
inline constexpr int64_t ANIMATION_KEY_LIMIT = int64_t{1} << 24;
// Reads a clip file and all its sub-clips into a zeroed clip. Times are seconds; hold is HOLD_NONE for none. Returns
// the end time of the clip, 0.0 on failure; what was read up to then stays in the clip, for animation_release. keys
// counts the keys of the whole animation against their limit, and goes beyond it when that is the failure; null for
// this clip alone.
float animation_read_clip(Model* model, AnimationClip* clip, const char* directory, const char* file, float start,
                          float hold, int64_t* keys = nullptr);

}  // namespace pelt
