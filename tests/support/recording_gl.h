// An OpenGL that records instead of drawing. It defines the functions of <GL/gl.h> that the renderer calls, keeps the
// matrix stacks and the state that the renderer asks back, and writes each call down. Tests link it in place of libGL.
//
// Every call becomes a line of text, "glVertex3f 1 2 3" or "glEnable GL_BLEND": the name, then the arguments, numbers
// as the shortest text of the 32-bit float, constants by name, matrices as their sixteen values in the order sent.
// Queries are calls too: "glGetFloatv GL_MODELVIEW_MATRIX". A picture appears under the name that name_data gave it,
// or as "null" or "data"; the bytes of a bitmap appear in hexadecimal.
//
// What real OpenGL would answer with an error (a stack passed at either end, a state call between glBegin and glEnd,
// a vertex outside) goes to errors() and, but for vertices, has no effect.
#pragma once

#include <GL/gl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace recording_gl {

inline constexpr int MODELVIEW_STACK_LIMIT = 32;
inline constexpr int PROJECTION_STACK_LIMIT = 2;  // what every OpenGL 1.1 has, and no more
inline constexpr size_t ATTRIBUTE_STACK_LIMIT = 16;
inline constexpr int ARGUMENT_LIMIT = 16;
inline constexpr int VIEWPORT_LIMIT = 1000;  // pixels each way

struct Call {
    int function;  // see function_name
    int count;
    std::array<double, ARGUMENT_LIMIT> arguments;  // matrices in the order sent
    const void* data;                              // picture of glTexImage2D, else null
    std::string bytes;                             // hexadecimal bitmap of glBitmap
};

enum class Mode {
    record,  // the list of calls below
    pack,    // words of a Packed, for a replay
    silent   // nothing is written and no state changes: calls return at once
};

// Calls as 32-bit words: the number of the function, then its arguments.
using Packed = std::vector<uint32_t>;

// Everything back to the state of a fresh context, in mode record, with no calls and no names.
void reset();

void set_mode(Mode mode);

// The calls, and forgetting them; the state stays.
const std::vector<Call>& calls();
void clear();
const char* function_name(int function);
std::string call_text(const Call& call);

// The calls from a number on, as texts.
std::vector<std::string> lines(size_t from = 0);

// The lines again as one text with a line end behind each, for messages.
std::string joined(const std::vector<std::string>& texts);

// How many calls have this name, or how many lines are exactly this text.
int count_calls(const std::string& name, size_t from = 0);
int count_lines(const std::string& text, size_t from = 0);

// Mistakes in the use of OpenGL so far; kept until reset.
const std::vector<std::string>& errors();

// A name for a picture in the lines of glTexImage2D.
void name_data(const void* data, const std::string& name);

// What is written in mode pack since set_mode(Mode::pack), and the making of the same calls out of an array.
const Packed& packed();
void replay(const Packed& words);

// State, without a call being recorded.
bool enabled(GLenum capability);
std::array<float, 16> modelview();  // column-major, as OpenGL keeps it
std::array<float, 16> projection();
int modelview_depth();    // entries on the stack, 1 in a fresh context
int deepest_modelview();  // greatest depth since reset
GLenum matrix_mode();
std::array<float, 4> current_colour();
std::array<int, 4> viewport();
std::array<GLenum, 2> polygon_modes();  // front, back
std::array<GLenum, 2> blend_factors();  // source, destination
bool depth_mask();
float line_width();
float point_size();
int attribute_depth();  // sets of attributes put aside, 0 in a fresh context

// Colour of the pixel at a place of the window, as glReadPixels finds it; black until one is set.
using Pattern = std::function<std::array<unsigned char, 3>(int x, int y)>;
void set_read_pattern(Pattern pattern);

}  // namespace recording_gl
