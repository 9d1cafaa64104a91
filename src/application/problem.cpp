// The last failure that scripts may ask for.
#include "application/problem.h"

namespace pelt {

namespace {

constexpr const char* UNKNOWN_FAILURE = "it could not be read";

// Never destroyed: scripts may still run while the process ends.
Problem& last() {
    static Problem& problem = *new Problem;
    return problem;
}

}  // namespace

const Problem& problem_last() { return last(); }

void problem_set(const char* kind, const LoadFailure& what) { last() = Problem{kind, what}; }

const char* problem_kind(const LoadFailure& what) { return what.line > 0 ? PROBLEM_FORMAT : PROBLEM_FILE; }

void problem_set_load(const char* file) {
    LoadFailure what = load_failure();
    if (what.text.empty()) { what.text = UNKNOWN_FAILURE; }
    if (what.file.empty()) { what.file = file; }
    problem_set(problem_kind(what), what);
}

}  // namespace pelt
