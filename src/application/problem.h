// The last failure that scripts may ask for.
#pragma once

#include "foundation/load_error.h"

namespace pelt {

struct Problem {
    std::string kind;  // one of the words below; empty when nothing has failed yet
    LoadFailure what;
};

inline constexpr const char* PROBLEM_ARGUMENT = "ARGUMENT";  // a word of a call is wrong
inline constexpr const char* PROBLEM_STATE = "STATE";        // the scene, as it stands, does not allow the call
inline constexpr const char* PROBLEM_UNSAVED = "UNSAVED";    // changes would be lost
inline constexpr const char* PROBLEM_FILE = "FILE";          // a file is missing or cannot be used
inline constexpr const char* PROBLEM_LAYOUT = "LAYOUT";      // the order of a file's lines does not allow a save
inline constexpr const char* PROBLEM_FORMAT = "FORMAT";      // a line of a file is wrong
inline constexpr const char* PROBLEM_SYSTEM = "SYSTEM";      // the machine does not give it: no driver, no memory

const Problem& problem_last();
void problem_set(const char* kind, const LoadFailure& what);

// Of a load failure: FORMAT or FILE.
const char* problem_kind(const LoadFailure& what);

// The load failure of this moment; a file that it does not name is the one given.
void problem_set_load(const char* file);

}  // namespace pelt
