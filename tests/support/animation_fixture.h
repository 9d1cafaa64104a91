// Clips and sessions put together by hand, for tests of everything that moves.
#pragma once

#include <cmath>
#include <cstddef>
#include <deque>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

#include "formats/clip_reader.h"
#include "foundation/math3d.h"
#include "scene/session.h"

namespace pelt::test {

// A session with its lists set up and nothing else.
inline void set_up_lists(Session* session) {
    *session = Session{};
    list_init(&session->model_states, sizeof(ModelState), KEY_INT);
    list_init(&session->triangle_caches, sizeof(TriangleCache), KEY_INT);
    list_init(&session->point_states, sizeof(PointState), KEY_INT);
    list_init(&session->joint_states, sizeof(JointState), KEY_INT);
    list_init(&session->child_states, sizeof(ChildState), KEY_INT);
    list_init(&session->root_models, sizeof(RootModel), KEY_INT);
}

inline void free_lists(Session* session) {
    for (KeyedList* list : {&session->model_states, &session->triangle_caches, &session->point_states,
                            &session->joint_states, &session->child_states, &session->root_models}) {
        list_free(list);
    }
}

// The quaternion of a turn about an axis of length 1, from the textbook: sine and cosine of half the angle.
inline AnimationKey turn_key(float x, float y, float z, double degrees) {
    const double half = degrees / 360.0 * std::numbers::pi;
    const float s = static_cast<float>(std::sin(half));
    return {x * s, y * s, z * s, static_cast<float>(std::cos(half))};
}

inline AnimationKey place_key(float x, float y, float z) { return {x, y, z, 1.0f}; }

// Fills a clip that it does not own with frames that it owns. The clip must not outlive it, nor be released.
class ClipBuilder {
public:
    ClipBuilder(AnimationClip* clip, int32_t slot_count) : clip_(clip), slot_count_(slot_count) {
        *clip_ = AnimationClip{};
        clip_->hold_time = HOLD_NONE;
        clip_->slot_count = slot_count;
        for (int32_t slot = 0; slot <= slot_count; ++slot) { tracks_.push_back(slot); }
        clip_->tracks = tracks_.data();
        clip_->track_count = slot_count + 1;
    }
    ~ClipBuilder() { *clip_ = AnimationClip{}; }
    ClipBuilder(const ClipBuilder&) = delete;
    ClipBuilder& operator=(const ClipBuilder&) = delete;

    // A frame with these keys, by slot. The clip ends with its last frame until end() says otherwise.
    ClipBuilder& frame(float time, const std::vector<std::pair<int32_t, AnimationKey>>& keys) {
        tables_.emplace_back(static_cast<size_t>(slot_count_) + 1, nullptr);
        for (const auto& [slot, key] : keys) {
            keys_.push_back(key);
            tables_.back()[static_cast<size_t>(slot)] = &keys_.back();
        }
        frames_.push_back({time, 0.0f, tables_.back().data()});
        clip_->end_time = time;
        return publish();
    }
    // A frame as a broken read leaves it.
    ClipBuilder& empty_frame() {
        frames_.push_back({0.0f, 0.0f, nullptr});
        return publish();
    }
    ClipBuilder& subclips(std::vector<AnimationClip>* subclips) {
        clip_->subclips = subclips->data();
        clip_->subclip_count = static_cast<int32_t>(subclips->size());
        return *this;
    }
    ClipBuilder& start(float time) {
        clip_->start_time = time;
        return *this;
    }
    ClipBuilder& end(float time) {
        clip_->end_time = time;
        return *this;
    }
    ClipBuilder& hold(float time) {
        clip_->hold_time = time;
        clip_->end_time = time;
        return *this;
    }
    const AnimationKey* key(size_t frame, int32_t slot) const { return tables_[frame][static_cast<size_t>(slot)]; }

private:
    ClipBuilder& publish() {
        clip_->frames = frames_.data();
        clip_->frame_count = static_cast<int32_t>(frames_.size());
        animation_index_frames(clip_);
        return *this;
    }

    AnimationClip* clip_;
    int32_t slot_count_;
    std::vector<int32_t> tracks_;  // every slot has a place of its own
    std::deque<AnimationKey> keys_;
    std::deque<std::vector<AnimationKey*>> tables_;
    std::vector<AnimationFrame> frames_;
};

}  // namespace pelt::test
