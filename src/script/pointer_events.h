// Every event of the mouse over the window, to a procedure of the script. What the described mouse procedure gets is
// not touched by it.
#pragma once

#include <string>

namespace pelt {

// A command prefix in Tcl's form. It is called at global level with the words kind, button, x, y, modifiers, clicks and
// wheel behind it; an error of it goes to bgerror. The empty text ends the calls.
void pointer_events_to(const std::string& procedure);
const std::string& pointer_events_procedure();

}  // namespace pelt
