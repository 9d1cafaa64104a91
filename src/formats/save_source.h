// The text that a model was read from, with what each of its lines made of the model: what a save goes by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/whole_lines.h"
#include "foundation/key_hash.h"
#include "scene/model.h"

namespace pelt {

inline constexpr int NO_LINE = -1;
inline constexpr int WORLD_RUN = -1;

// A line that says something; comments and empty lines have none.
struct SourceLine {
    TextPlace place;  // in the text, without its end
    size_t next;      // where the line behind it begins
    ModelLine what;
    int32_t layer;   // rank of the layer that it stands behind, -1 for none
    int32_t record;  // id of the point or uvee, rank of anything else in its list; -1 where it made none
    bool in_pieces;  // the reader took the line in several
};

struct PointLines {
    int first = NO_LINE;  // that mentions the point, which decides its place among the points
    int point = NO_LINE;  // the last of each kind
    int normal = NO_LINE;
    int colour = NO_LINE;
    int point_lines = 0;
    int32_t run = WORLD_RUN;  // which joint, or behind all joints which blend group, its place deals it to
};

struct LayerLines {
    int head = NO_LINE;
    int last = NO_LINE;  // of all that belongs to the layer
    int transparency = NO_LINE;
    int key = NO_LINE;
    int images[LAYER_IMAGE_SLOTS] = {NO_LINE, NO_LINE, NO_LINE};
    std::vector<int> base_images;
    std::vector<int> triangles;  // of each, by rank
    std::vector<int> polygons;
    std::vector<int> polylines;
    std::unordered_map<int32_t, int, KeyHash> uvees;  // the last line of each point
};

struct ModelRelease {
    void operator()(Model* model) const { model_release(model); }
};
using ModelHandle = std::unique_ptr<Model, ModelRelease>;

struct SaveSource {
    std::string_view text;  // lives as long as whoever asked for the source keeps it
    ModelHandle model;      // what a load makes of the text, without children; images by their names
    std::vector<SourceLine> lines;
    std::unordered_map<int32_t, PointLines, KeyHash> points;
    std::vector<int32_t> point_order;
    std::vector<int> joints;  // lines by rank
    std::vector<int> blends;
    std::vector<int> children;
    std::vector<LayerLines> layers;
    std::vector<int32_t> run_counts;  // points that each joint, and behind them each blend group, is dealt
};

// False with the reason when the text is none of a model.
bool save_source_read(std::string_view text, SaveSource* source, std::string* refused);

// What of a layer a line belongs to: its statements, sections and data, without points, joints and children that stand
// between them.
bool belongs_to_layer(const SourceLine& line);

// A line on its own, cut as the reader cuts it.
struct LineToken {
    TextPlace place;  // in the line, with quotes
    std::string text;
    WordClass kind;
    int32_t number;  // as reader_int gives it
    float real;      // as reader_float does
    bool quoted;
};
struct CutLine {
    std::vector<LineToken> tokens;
    PrimitiveTokens primitive;  // of a line of data
};
CutLine cut_line(std::string_view line);

}  // namespace pelt
