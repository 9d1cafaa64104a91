// What is wrong with models, for the programs that show it to people.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "model_check.h"

namespace pelt::tool {

// The formats besides that for people.
inline constexpr const char* JSON = "json";      // an array with an object for each file
inline constexpr const char* SARIF = "sarif";    // version 2.1.0, one run
inline constexpr const char* GITHUB = "github";  // a workflow command for each problem

struct CheckedFile {
    std::string file;
    std::vector<Problem> problems;
    size_t left_out;  // problems behind those
};

// The whole report, with its line ends; empty for a format that is none of these. JSON and SARIF are plain ASCII.
std::string problem_report(const std::string& format, const std::vector<CheckedFile>& files);

}  // namespace pelt::tool
