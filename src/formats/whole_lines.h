// The lines of the .mod format as the whole writer words them, one function a line. What cannot be said is refused, and
// the line is put all the same.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/text_output.h"
#include "formats/whole_layout.h"
#include "scene/model.h"

namespace pelt::whole {

struct WholeWriter {
    const Model& model;
    std::string text;
    std::string line;
    TextOutput out;               // into the line
    std::string refusal;          // the first reason
    std::vector<int32_t> by_low;  // by the low 16 bits: the lowest id of a point that has them, 0 for none

    explicit WholeWriter(const Model& written);
    WholeWriter(const WholeWriter&) = delete;
    WholeWriter& operator=(const WholeWriter&) = delete;
};

void refuse(WholeWriter& writer, const std::string& reason);
void end_line(WholeWriter& writer, const std::string& of);

// Tokens. of stands before the reason of a refusal.
std::string name_token(WholeWriter& writer, const std::string& of, const std::string& name);
// The shortest text that the reader makes this float of. It takes no exponents.
std::string number_token(WholeWriter& writer, const std::string& of, float value);
// A coordinate that the format wants whole. The reader makes a float of what it reads.
int32_t whole(WholeWriter& writer, const std::string& of, float value);
std::string joint_token(WholeWriter& writer, const std::string& of, const Joint* joint);
std::string parent_token(WholeWriter& writer, const std::string& of, const Joint& joint);
std::string image_token(WholeWriter& writer, const std::string& of, const LayerImage& image, int slot);
// The shortest share of 1 that the reader cuts to this byte.
std::string key_token(WholeWriter& writer, const std::string& of, int32_t byte);

void put_joint(WholeWriter& writer, const Joint& joint, int32_t count);
void put_blend(WholeWriter& writer, const BlendWeight& blend, int32_t count);
void put_point(WholeWriter& writer, const LaidPoint& laid);
void put_normal(WholeWriter& writer, const LaidPoint& laid);
void put_colour(WholeWriter& writer, const LaidPoint& laid);

// What a line of a triangle or quad says beside its corners.
struct TriangleParts {
    bool curve;
    bool normals;
    bool controls;
};
TriangleParts needed_parts(const Triangle& triangle);  // without which the reader makes another of it
void put_triangle(WholeWriter& writer, const std::string& of, const Triangle& triangle, const TriangleParts& parts);
void put_polygon(WholeWriter& writer, const std::string& of, const Polygon& polygon);
void put_polyline(WholeWriter& writer, const std::string& of, const Line& line);
void put_uvee(WholeWriter& writer, const std::string& of, int32_t id, const Uvee& uvee);
void put_layer_line(WholeWriter& writer, const std::string& of, const Layer& layer);
void put_transparency(WholeWriter& writer, const std::string& of, const Layer& layer);
void put_image(WholeWriter& writer, const std::string& of, const Layer& layer, const LayerImage& image, int slot);
void put_key(WholeWriter& writer, const std::string& of, const Layer& layer);
void put_child(WholeWriter& writer, const ChildLink& link);

// A layer with all that belongs to it.
void put_layer(WholeWriter& writer, const Layer& layer);

bool is_axis(int code);

}  // namespace pelt::whole
