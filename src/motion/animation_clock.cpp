// The animation clock and the three commands that move it.
//
// What surprises: the clock wraps once and by the length of the animation, so that a remainder carries over, and a step
// longer than the animation leaves it outside of 0 to anim_end; intended.
#include "motion/animation_clock.h"

#include <algorithm>
#include <cmath>

#include "motion/transform_state.h"
#include "scene/session.h"

namespace pelt {

namespace {

inline constexpr int32_t LOWEST_RATE = 1;  // steps per second
inline constexpr int32_t HIGHEST_RATE = 60;

}  // namespace

void animate_next(Session* session) {
    if (session == nullptr) { return; }
    if (session->anim_end > 0.0f) {
        session->anim_time += session->anim_step;
        if (session->anim_time > session->anim_end) { session->anim_time -= session->anim_end; }
    }
    scene_evaluate(session);
}

void animate_prev(Session* session) {
    if (session == nullptr) { return; }
    if (session->anim_end > 0.0f) {
        session->anim_time -= session->anim_step;
        if (session->anim_time < 0.0f) { session->anim_time += session->anim_end; }
    }
    scene_evaluate(session);
}

void animate_seek(Session* session, float time) {
    if (session == nullptr) { return; }
    session->anim_time = time > 0.0f ? std::min(time, session->anim_end) : 0.0f;
    scene_evaluate(session);
}

void animate_set_rate(Session* session, int32_t n) {
    if (session == nullptr || n < LOWEST_RATE || n > HIGHEST_RATE) { return; }
    session->anim_step = 1.0f / static_cast<float>(n);
    session->anim_rate = n;
    // The quotient is rounded to 32 bits before it is cut: at ten steps a second the time 1.0 stays 1.0. It is cut as a
    // float, since an enormous time has more steps than an integer can count.
    const float steps = session->anim_time / session->anim_step;
    session->anim_time = std::trunc(steps) * session->anim_step;
    if (session->anim_time > session->anim_end) { session->anim_time = session->anim_end; }
    if (!(session->anim_time > 0.0f)) {
        session->anim_time = 0.0f;  // also in place of a non-number and a negative zero
    }
    scene_evaluate(session);
}

}  // namespace pelt
