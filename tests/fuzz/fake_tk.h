// See fake_tk.cpp.
#pragma once

#include "window/gl_window.h"

namespace pelt::fuzz {

extern WindowHandle tk_frame;  // what the path ".f" names; 0 for no window

}  // namespace pelt::fuzz
