// Work on what strangers made, in a process of its own that may fall without anything else falling.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace pelt::tool {

struct ChildLimits {
    int64_t megabytes;  // that it may ask the system for
    int seconds;        // that it may take
};

struct ChildResult {
    std::string error;   // how it ended otherwise than by giving its result; else empty
    std::string output;  // the result
};

// What the work returns, done in a child process. That has no other way out: it can write no file, and what it prints
// goes nowhere.
ChildResult run_in_child(const ChildLimits& limits, const std::function<std::string()>& work);

}  // namespace pelt::tool
