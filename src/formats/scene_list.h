// Reader of scene lists: the models of an animated scene, each with its clip and what it hangs on.
#pragma once

#include <cstdint>

#include "formats/animation.h"

namespace pelt {

inline constexpr int ANIMATION_ROW_LIMIT = 24;

struct AnimationSet {
    Model* models[ANIMATION_ROW_LIMIT];
    ModelAnimation* animations[ANIMATION_ROW_LIMIT];
    int32_t count;
    float duration;
};

// Where the directories of the rows begin when they are relative, null or empty for the current directory; and whether
// the models may have long paths (see model_load).
struct SceneListOptions {
    const char* base = nullptr;
    bool long_paths = false;
};

// New set (std::free; its models and animations go to the caller), or null with the reason in animation_error, where
// there is one.
AnimationSet* animation_load(const char* path, const SceneListOptions& options = {});

}  // namespace pelt
