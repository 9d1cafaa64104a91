// What the reader of models takes without a word, though it hardly does what its author meant.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "formats/model_lines.h"
#include "foundation/key_hash.h"

namespace pelt::tool {

using Remark = std::function<void(int32_t line, const std::string& text)>;

// Ids that are too large are told once a file: how many, and where the first stands.
struct HighIds {
    int32_t count = 0;
    int32_t line = 0;
    int32_t id = 0;
};

// The joint that another one's line says it hangs on.
struct NamedParent {
    int32_t line;
    std::string name;
};

// What is gathered over the lines of one file.
struct LineRemarks {
    bool strict;  // otherwise ids alone are looked at
    Remark remark;
    HighIds points = {};
    HighIds references = {};
    std::unordered_set<int32_t, KeyHash> point_ids = {};                 // of point lines
    std::unordered_map<int32_t, int32_t, KeyHash> normal_lines = {};     // by point id, the last line that gave it
    std::unordered_map<std::string, int32_t, KeyHash> joint_lines = {};  // by name, those that were met
    std::vector<NamedParent> joint_parents = {};
};

// Looks at the line in hand of the read in progress, before it is carried out in this section of the file.
void remark_line(LineRemarks& remarks, LineMode mode);

// What shows only when all lines were read; model is what they made.
void remark_file(LineRemarks& remarks, const Model* model);

// Lines that are longer than the reader's own, which it takes in pieces.
void remark_cut_lines(const LineRemarks& remarks, const std::string& path);

}  // namespace pelt::tool
