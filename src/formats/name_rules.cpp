// Names on lines: a blank wants quotes around it, and inside quotes there can be no other one.
#include "formats/name_rules.h"

namespace pelt {

bool name_fits_line(const std::string& name, size_t most) {
    if (name.empty() || name.size() > most || name.find_first_of("\r\n") != std::string::npos) { return false; }
    const bool has_quote = name.find('"') != std::string::npos;
    return !has_quote || (name[0] != '"' && name.find_first_of(" \t") == std::string::npos);
}

std::string name_rule(size_t most) {
    return "1 to " + std::to_string(most) +
           " bytes that a line can hold: no line end, no quote at its start or beside a blank";
}

}  // namespace pelt
