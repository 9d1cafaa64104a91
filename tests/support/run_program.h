// Runs a program as a user would, and tells how it ended and what it said.
#pragma once

#include <string>
#include <vector>

namespace pelt::test {

struct RunOptions {
    std::string directory = {};  // where it runs; empty for here
    long file_size_limit = -1;   // bytes that a file may grow to
    bool errors_to_terminal = false;
};

struct RunResult {
    int status;  // exit status, or 1000 + the signal that ended it
    std::string out;
    std::string err;
};

// Whether this system has what the last two options ask for.
bool run_options_are_served();

// The words are in UTF-8 on Windows. A program that cannot be started has the status 127.
RunResult run_program(const std::vector<std::string>& words, const RunOptions& options = {});

// The tool with these words behind its name.
inline RunResult pelt_model(std::vector<std::string> words, const RunOptions& options = {}) {
    words.insert(words.begin(), PELT_MODEL_TOOL);
    return run_program(words, options);
}

}  // namespace pelt::test
