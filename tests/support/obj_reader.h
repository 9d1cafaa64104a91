// A reader of Wavefront text that knows nothing of the writer: lines by their first word, vertices by number.
#pragma once

#include <array>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace pelt::test {

struct ObjGroup {
    std::string name;
    std::vector<std::vector<int>> faces;  // numbers of vertices, from 1
    std::vector<std::vector<int>> lines;
};

struct ObjFile {
    std::vector<std::string> comments;
    std::vector<std::array<double, 3>> vertices;
    std::vector<ObjGroup> groups;
};

// Throws for a line it does not understand.
inline ObjFile read_obj(const std::string& text) {
    ObjFile file;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string kind;
        if (!(words >> kind)) { continue; }
        if (kind[0] == '#') {
            file.comments.push_back(line);
        } else if (kind == "v") {
            std::array<double, 3> vertex{};
            if (!(words >> vertex[0] >> vertex[1] >> vertex[2])) { throw std::runtime_error("bad vertex: " + line); }
            file.vertices.push_back(vertex);
        } else if (kind == "g") {
            ObjGroup group;
            words >> group.name;
            file.groups.push_back(group);
        } else if ((kind == "f" || kind == "l") && !file.groups.empty()) {
            std::vector<int> numbers;
            for (int number = 0; words >> number;) { numbers.push_back(number); }
            if (!words.eof()) { throw std::runtime_error("bad number: " + line); }
            (kind == "f" ? file.groups.back().faces : file.groups.back().lines).push_back(numbers);
        } else {
            throw std::runtime_error("unknown line: " + line);
        }
    }
    return file;
}

}  // namespace pelt::test
