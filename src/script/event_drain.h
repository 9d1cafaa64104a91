// Serving of the events that wait, at the start of each call of the command.
#pragma once

namespace pelt {

// Serves everything that waits at this moment (Tcl's queue, the display, timers that are due, idle work), however much
// it is, and then for at most 250 milliseconds what has arrived meanwhile. Never waits for anything. Scripts run in
// it, which may call the command or end the interpreter. What they leave as the interpreter's result stays there.
void drain_events();

}  // namespace pelt
