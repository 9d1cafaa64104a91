// Running numbers of the records of a model. Shared by all models, starting at 1, never reset.
#pragma once

#include <cstdint>
#include <limits>

namespace pelt {

extern int32_t next_child_id;
extern int32_t next_joint_id;
extern int32_t next_blend_id;
extern int32_t next_triangle_id;
extern int32_t next_polygon_id;
extern int32_t next_line_id;

// The number to use now; the counter goes on. It begins again at 1 when 32 bits are used up.
inline int32_t take_id(int32_t* counter) {
    const int32_t id = *counter;
    *counter = id < std::numeric_limits<int32_t>::max() ? id + 1 : 1;
    return id;
}

}  // namespace pelt
