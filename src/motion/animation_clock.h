// The clock of the animation. It moves only here; every movement evaluates the scene.
#pragma once

#include <cstdint>

namespace pelt {

struct Session;

void animate_next(Session* session);
void animate_prev(Session* session);
void animate_seek(Session* session, float time);     // held in 0 to the end; a non-number is 0
void animate_set_rate(Session* session, int32_t n);  // steps per second, 1 to 60; anything else does nothing

}  // namespace pelt
