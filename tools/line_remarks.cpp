// Remarks on lines that are read and do less than they say.
//
// What surprises: the lines that come in pieces are found by a read of their own. That a piece is not the whole line
// shows only in the one behind it, and of that the reader says nothing where it holds no token.
#include "line_remarks.h"

#include <cstring>
#include <string>

#include "formats/model_lines.h"
#include "foundation/file_access.h"
#include "scene/model.h"

namespace pelt::tool {

namespace {

constexpr int32_t ID_LIMIT = 32767;
constexpr int32_t POLYLINE = 2;
constexpr const char* NO_JOINT = "world";

void note_high(HighIds& high, int32_t line, int32_t id) {
    if (id > ID_LIMIT && high.count++ == 0) {
        high.line = line;
        high.id = id;
    }
}

void note_high_ids(LineRemarks& remarks, LineMode mode, int32_t line) {
    if (mode == LINE_MODE_POINTS || mode == LINE_MODE_NORMALS) {
        note_high(remarks.points, line, reader_int(0));
    } else if (mode == LINE_MODE_TRIANGLES || mode == LINE_MODE_LINES) {
        for (int32_t token = 1; token < reader_token_count(); ++token) {
            note_high(remarks.references, line, reader_int(token));
        }
    }
}

void tell_high_ids(const LineRemarks& remarks, const HighIds& high, const char* text) {
    if (high.count > 0) {
        remarks.remark(high.line, std::string(text) + ": " + std::to_string(high.id) +
                                      (high.count > 1 ? " and " + std::to_string(high.count - 1) + " more" : ""));
    }
}

// Integers that are written as something else read as 0.
void remark_no_integers(const LineRemarks& remarks, int32_t first, int32_t count, const char* text) {
    for (int32_t token = first; token < first + count && token < reader_token_count(); ++token) {
        if (!reader_is_int(token)) { remarks.remark(reader_line_number(), text + std::string(reader_text(token))); }
    }
}

void remark_layer(const LineRemarks& remarks) {
    constexpr int32_t SIDES = 5;
    constexpr int32_t MIRROR = 6;
    constexpr int32_t MIRRORED_COUNT = 8;
    remark_no_integers(remarks, 2, 3, "a colour that is no whole number is read as 0: ");
    const bool sided = reader_token_equals("singlesided", SIDES) || reader_token_equals("doublesided", SIDES);
    const bool mirrored = reader_token_count() == MIRRORED_COUNT && reader_token_equals("mirror", MIRROR);
    std::string words;
    for (int32_t token = sided ? MIRROR : SIDES; token < reader_token_count(); ++token) {
        if (token < MIRROR || !mirrored) { words += std::string(" ") + reader_text(token); }
    }
    if (!words.empty()) { remarks.remark(reader_line_number(), "ignored in a layer line:" + words); }
}

// A joint is looked up on the spot: one whose own line comes later is none yet.
void remark_unknown_joints(const LineRemarks& remarks, int32_t first, const char* text) {
    for (int32_t token = first; token < first + 2 && token < reader_token_count(); ++token) {
        const std::string name = reader_text(token);
        if (name != NO_JOINT && remarks.joint_lines.count(name) == 0) {
            remarks.remark(reader_line_number(), text + name);
        }
    }
}

void remark_joint(LineRemarks& remarks) {
    constexpr int32_t NAME = 1;
    constexpr int32_t PARENT = 5;
    remark_no_integers(remarks, 2, 3, "a coordinate that is no whole number is read as 0: ");
    if (reader_token_count() <= PARENT) { return; }
    remarks.joint_lines.insert({reader_text(NAME), reader_line_number()});
    remarks.joint_parents.push_back({reader_line_number(), reader_text(PARENT)});
}

void remark_statement(LineRemarks& remarks) {
    if (reader_token_equals("layer", 0)) {
        remark_layer(remarks);
    } else if (reader_token_equals("joint", 0)) {
        remark_joint(remarks);
    } else if (reader_token_equals("blend", 0)) {
        remark_unknown_joints(remarks, 1, "a blend group that follows a joint without a line before it: ");
    } else if (!model_knows_keyword(reader_text(0))) {
        remarks.remark(reader_line_number(), std::string("ignored: ") + reader_line());
    }
}

void remark_point(LineRemarks& remarks) {
    remark_no_integers(remarks, 1, 3, "a coordinate that is no whole number is read as 0: ");
    if (!remarks.point_ids.insert(reader_int(0)).second) {
        remarks.remark(reader_line_number(), "a point that is defined already: " + std::to_string(reader_int(0)));
    }
    constexpr int32_t BOUND_COUNT = 7;
    if (reader_token_count() >= BOUND_COUNT) {
        remark_unknown_joints(remarks, 5, "a point that follows a joint without a line before it: ");
    }
}

// How many corners a primitive of the type in hand names, from token 1 on.
int32_t corner_count() {
    switch (reader_int(0)) {
        case 0:
        case 3: return 3;
        case 1:
        case 4: return 4;
        case 2: return reader_token_count() - 1;
        default: return 0;
    }
}

void remark_primitive(const LineRemarks& remarks) {
    std::unordered_set<int32_t, KeyHash> named;
    for (int32_t token = 1; token <= corner_count(); ++token) {
        const int32_t id = reader_int(token);
        if (id != 0 && !named.insert(id).second) {
            remarks.remark(reader_line_number(), "a primitive that names a point twice: " + std::to_string(id));
            return;
        }
    }
}

void remark_data(LineRemarks& remarks, LineMode mode) {
    if (mode == LINE_MODE_POINTS) {
        remark_point(remarks);
    } else if (mode == LINE_MODE_TRIANGLES) {
        remark_primitive(remarks);
    } else if (mode == LINE_MODE_LINES && reader_int(0) != POLYLINE) {
        remarks.remark(reader_line_number(), "ignored: a line of this type");
    }
}

}  // namespace

void remark_line(LineRemarks& remarks, LineMode mode) {
    const bool is_data = reader_is_int(0);
    if (is_data) { note_high_ids(remarks, mode, reader_line_number()); }
    if (is_data && mode == LINE_MODE_NORMALS) { remarks.normal_lines[reader_int(0)] = reader_line_number(); }
    if (!remarks.strict) { return; }
    if (reader_has_more_tokens()) { remarks.remark(reader_line_number(), "fields behind the 256th are ignored"); }
    if (is_data) {
        remark_data(remarks, mode);
    } else {
        remark_statement(remarks);
    }
}

void remark_file(LineRemarks& remarks, const Model* model) {
    tell_high_ids(remarks, remarks.points, "a point id above 32767, which no primitive can name");
    tell_high_ids(remarks, remarks.references, "a primitive names an id above 32767, which is cut to 16 bits");
    for (const NamedParent& parent : remarks.joint_parents) {
        if (parent.name != NO_JOINT && remarks.joint_lines.count(parent.name) == 0) {
            remarks.remark(parent.line, "a joint that hangs on one that has no line: " + parent.name);
        }
    }
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); remarks.strict && point != points.end(); ++point) {
        if (remarks.point_ids.count(point.int_key()) == 0) {
            remarks.remark(remarks.normal_lines[point.int_key()],
                           "a point that only a normal made: " + std::to_string(point.int_key()));
        }
    }
}

void remark_cut_lines(const LineRemarks& remarks, const std::string& path) {
    const int file = file_open(path.c_str(), "r");
    char piece[READER_LINE_SIZE];
    bool full = false;
    bool told = false;
    for (int32_t line = 1; file_gets(piece, sizeof piece, file) != nullptr; ++line) {
        const bool goes_on = full && piece[0] != '\0';
        if (goes_on && !told) { remarks.remark(line - 1, "a line of more than 1023 bytes is read in pieces"); }
        told = goes_on;
        full = std::strlen(piece) == sizeof piece - 1;
    }
    file_close(file);
}

}  // namespace pelt::tool
