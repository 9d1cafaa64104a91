// Everything that is wrong with a model file and the files of its children, with the lines where it stands.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pelt::tool {

struct Problem {
    std::string file;
    int32_t line;  // 0 where there is none
    std::string text;
};

// "file:line: text", or "file: text" without a line.
std::string problem_text(const Problem& problem);

// All problems: the one that ends a load first, where there is one, and the others in the order of the files and lines:
// each line that the reader refuses, missing images and child models, bad normals, and ids that 16 bits do not hold.
// With strict set, what the reader passes over too.
std::vector<Problem> check_model_file(const std::string& path, bool strict);

// What ended the load of the model, which failed right before; nothing behind that place is read.
Problem find_load_failure(const std::string& path);

}  // namespace pelt::tool
