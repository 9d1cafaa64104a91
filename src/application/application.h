// The one process-wide record.
#pragma once

#include <cstdint>

#include "render/view.h"
#include "scene/session.h"

namespace pelt {

struct Application {
    int32_t in_command;
    WindowHandle status_window;
    Session session;
    char* mouse_proc;     // heap texts or null
    char* keyboard_proc;  // stored and never run
    char* status_proc;
    ViewState view;
    char selected_layer[128];  // what "set layer" and "get layer" work on; empty for none
};

Application* application();  // static storage, zero-filled at load

}  // namespace pelt
