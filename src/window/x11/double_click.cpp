// Double clicks. What surprises: a press of another button in between breaks the pair, and three quick presses are one
// double click and one single.
#include "window/x11/double_click.h"

namespace pelt {

namespace {

bool near_by(int32_t a, int32_t b) {
    const int64_t distance = static_cast<int64_t>(a) - b;
    return distance >= -DOUBLE_CLICK_PIXELS && distance <= DOUBLE_CLICK_PIXELS;
}

}  // namespace

bool click_is_double(ClickRecord* last, uint32_t button, uint32_t time, int32_t x, int32_t y) {
    const bool second = last->button == button && button != 0 && time - last->time <= DOUBLE_CLICK_MILLISECONDS &&
                        near_by(x, last->x) && near_by(y, last->y);
    *last = second ? ClickRecord{} : ClickRecord{button, time, x, y};
    return second;
}

}  // namespace pelt
