// The recording OpenGL: every function notes its call and then follows up the state that can be asked back. The
// surprise: matrices are kept in double precision, so that what tests compare against is not the rounding of this file.
#include "support/recording_gl.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <map>
#include <numbers>

#include "support/recording_gl_functions.h"

namespace recording_gl {
namespace {

using Matrix = std::array<double, 16>;  // column-major

constexpr Matrix IDENTITY = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// What glPushAttrib puts aside.
struct Attributes {
    GLenum matrix_mode = GL_MODELVIEW;
    std::map<GLenum, bool> enabled;
    std::array<float, 4> colour{1, 1, 1, 1};
    std::array<float, 4> clear_colour{0, 0, 0, 0};
    std::array<int, 4> viewport{0, 0, 0, 0};
    std::array<GLenum, 2> polygon_modes{GL_FILL, GL_FILL};
    std::array<GLenum, 2> blend_factors{GL_ONE, GL_ZERO};
    bool depth_mask = true;
    float line_width = 1, point_size = 1;
};

struct State : Attributes {
    std::vector<Matrix> modelview{IDENTITY};
    std::vector<Matrix> projection{IDENTITY};
    int deepest_modelview = 1;
    bool in_primitive = false;
    std::vector<Attributes> attributes;
    std::map<GLenum, int> pixel_store{{GL_UNPACK_ALIGNMENT, 4}, {GL_PACK_ALIGNMENT, 4}};
    Pattern pattern;
    std::vector<std::string> errors;
};

Mode current_mode = Mode::record;
State state;
std::vector<Call> recorded;
Packed packed_words;

// One argument: its value for the record, its bits for the packed form.
struct Argument {
    double value;
    uint32_t bits;
    Argument(float v) : value(v), bits(std::bit_cast<uint32_t>(v)) {}
    Argument(int v) : value(v), bits(static_cast<uint32_t>(v)) {}
    Argument(unsigned v) : value(v), bits(v) {}
    Argument(unsigned char v) : value(v), bits(v) {}
};

void error(Function function, const char* reason) {
    state.errors.push_back(std::string(function_name(function)) + ": " + reason);
}

void pack_pointer(const void* pointer) {
    const auto bits = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pointer));
    packed_words.push_back(static_cast<uint32_t>(bits));
    packed_words.push_back(static_cast<uint32_t>(bits >> 32));
}

void note(Function function, const Argument* arguments, int count, const void* data = nullptr, std::string bytes = {}) {
    if (current_mode == Mode::pack) {
        packed_words.push_back(static_cast<uint32_t>(function));
        for (int i = 0; i < count; ++i) { packed_words.push_back(arguments[i].bits); }
        if (function == TEX_IMAGE2D || function == BITMAP) { pack_pointer(data); }
        return;
    }
    Call call{function, count, {}, function == BITMAP ? nullptr : data, std::move(bytes)};
    for (int i = 0; i < count; ++i) { call.arguments[static_cast<size_t>(i)] = arguments[i].value; }
    recorded.push_back(std::move(call));
}

template <typename... Values>
void note_values(Function function, Values... values) {
    const Argument arguments[] = {Argument(values)...};
    note(function, arguments, static_cast<int>(sizeof...(values)));
}

void note_bare(Function function) { note(function, nullptr, 0); }

// Numbers behind up to two constants; a packed form always holds all of them.
void note_vector(Function function, const Argument* head, int head_count, const float* values, int count) {
    std::vector<Argument> arguments(head, head + head_count);
    for (int i = 0; i < count; ++i) { arguments.emplace_back(values[i]); }
    if (current_mode == Mode::pack) {
        while (arguments.size() < static_cast<size_t>(head_count) + 4) { arguments.emplace_back(0.0f); }
    }
    note(function, arguments.data(), static_cast<int>(arguments.size()));
}

// State calls between glBegin and glEnd are mistakes.
bool outside(Function function) {
    if (!state.in_primitive) { return true; }
    error(function, "between glBegin and glEnd");
    return false;
}

void inside(Function function) {
    if (!state.in_primitive) { error(function, "outside glBegin and glEnd"); }
}

std::vector<Matrix>& current_stack() { return state.matrix_mode == GL_PROJECTION ? state.projection : state.modelview; }

Matrix product(const Matrix& left, const Matrix& right) {
    Matrix out{};
    for (size_t column = 0; column < 4; ++column) {
        for (size_t row = 0; row < 4; ++row) {
            for (size_t k = 0; k < 4; ++k) { out[column * 4 + row] += left[k * 4 + row] * right[column * 4 + k]; }
        }
    }
    return out;
}

void multiply(const Matrix& factor) { current_stack().back() = product(current_stack().back(), factor); }

Matrix matrix_of(const float* values) {
    Matrix out;
    for (size_t i = 0; i < 16; ++i) { out[i] = static_cast<double>(values[i]); }
    return out;
}

Matrix rotation(double degrees, double x, double y, double z) {
    const double length = std::sqrt(x * x + y * y + z * z);
    x /= length;
    y /= length;
    z /= length;
    const double radians = degrees * std::numbers::pi / 180.0;
    const double c = std::cos(radians), s = std::sin(radians), d = 1.0 - c;
    return {x * x * d + c,
            y * x * d + z * s,
            z * x * d - y * s,
            0,
            x * y * d - z * s,
            y * y * d + c,
            z * y * d + x * s,
            0,
            x * z * d + y * s,
            y * z * d - x * s,
            z * z * d + c,
            0,
            0,
            0,
            0,
            1};
}

std::array<float, 16> floats_of(const Matrix& matrix) {
    std::array<float, 16> out;
    for (size_t i = 0; i < 16; ++i) { out[i] = static_cast<float>(matrix[i]); }
    return out;
}

// The values of a state variable as numbers, and how many; a switch that was never set is off. Allocates nothing.
struct Answer {
    std::array<double, 16> values{};
    size_t count = 1;

    Answer(double value) { values[0] = value; }
    template <typename Value, size_t Size>
    Answer(const std::array<Value, Size>& source) : count(Size) {
        for (size_t i = 0; i < Size; ++i) { values[i] = static_cast<double>(source[i]); }
    }
};

Answer query(GLenum name) {
    switch (name) {
        case GL_MODELVIEW_MATRIX: return state.modelview.back();
        case GL_PROJECTION_MATRIX: return state.projection.back();
        case GL_CURRENT_COLOR: return state.colour;
        case GL_COLOR_CLEAR_VALUE: return state.clear_colour;
        case GL_VIEWPORT: return state.viewport;
        case GL_MAX_VIEWPORT_DIMS: return std::array<int, 2>{VIEWPORT_LIMIT, VIEWPORT_LIMIT};
        case GL_POLYGON_MODE: return state.polygon_modes;
        case GL_BLEND_SRC: return static_cast<double>(state.blend_factors[0]);
        case GL_BLEND_DST: return static_cast<double>(state.blend_factors[1]);
        case GL_DEPTH_WRITEMASK: return state.depth_mask ? 1.0 : 0.0;
        case GL_MATRIX_MODE: return static_cast<double>(state.matrix_mode);
        case GL_MODELVIEW_STACK_DEPTH: return static_cast<double>(state.modelview.size());
        case GL_PROJECTION_STACK_DEPTH: return static_cast<double>(state.projection.size());
        case GL_MAX_MODELVIEW_STACK_DEPTH: return static_cast<double>(MODELVIEW_STACK_LIMIT);
        case GL_UNPACK_ALIGNMENT:
        case GL_PACK_ALIGNMENT: return static_cast<double>(state.pixel_store[name]);
        default: {
            const auto found = state.enabled.find(name);
            return found != state.enabled.end() && found->second ? 1.0 : 0.0;
        }
    }
}

template <typename Value>
void answer(Function function, GLenum name, Value* values) {
    if (current_mode != Mode::silent) {
        note_values(function, name);
        outside(function);
    }
    const Answer found = query(name);
    for (size_t i = 0; i < found.count; ++i) { values[i] = static_cast<Value>(found.values[i]); }
}

std::string bitmap_hex(const unsigned char* bitmap, int width, int height) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    const int count = bitmap == nullptr ? 0 : (width + 7) / 8 * height;
    for (int i = 0; i < count; ++i) {
        out += digits[bitmap[i] >> 4];
        out += digits[bitmap[i] & 15];
    }
    return out;
}

}  // namespace

void reset() {
    static const State FRESH;
    state = FRESH;
    recorded.clear();
    packed_words.clear();
    forget_names();
    current_mode = Mode::record;
}

void set_mode(Mode mode) {
    current_mode = mode;
    if (mode == Mode::pack) { packed_words.clear(); }
}

const std::vector<Call>& calls() { return recorded; }

void clear() { recorded.clear(); }

std::vector<std::string> lines(size_t from) {
    std::vector<std::string> out;
    for (size_t i = from; i < recorded.size(); ++i) { out.push_back(call_text(recorded[i])); }
    return out;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string out;
    for (const std::string& text : texts) { out += text + '\n'; }
    return out;
}

int count_calls(const std::string& name, size_t from) {
    int count = 0;
    for (size_t i = from; i < recorded.size(); ++i) { count += name == function_name(recorded[i].function) ? 1 : 0; }
    return count;
}

int count_lines(const std::string& text, size_t from) {
    int count = 0;
    for (size_t i = from; i < recorded.size(); ++i) { count += call_text(recorded[i]) == text ? 1 : 0; }
    return count;
}

const std::vector<std::string>& errors() { return state.errors; }

const Packed& packed() { return packed_words; }

bool enabled(GLenum capability) { return query(capability).values[0] != 0.0; }
std::array<float, 16> modelview() { return floats_of(state.modelview.back()); }
std::array<float, 16> projection() { return floats_of(state.projection.back()); }
float line_width() { return state.line_width; }
float point_size() { return state.point_size; }
int attribute_depth() { return static_cast<int>(state.attributes.size()); }
int modelview_depth() { return static_cast<int>(state.modelview.size()); }
int deepest_modelview() { return state.deepest_modelview; }
GLenum matrix_mode() { return state.matrix_mode; }
std::array<float, 4> current_colour() { return state.colour; }
std::array<int, 4> viewport() { return state.viewport; }
std::array<GLenum, 2> polygon_modes() { return state.polygon_modes; }
std::array<GLenum, 2> blend_factors() { return state.blend_factors; }
bool depth_mask() { return state.depth_mask; }
void set_read_pattern(Pattern pattern) { state.pattern = std::move(pattern); }

}  // namespace recording_gl

using namespace recording_gl;

#define RETURN_IF_SILENT() \
    if (current_mode == Mode::silent) return

extern "C" {

// Inside primitives.

void glBegin(GLenum mode) {
    RETURN_IF_SILENT();
    note_values(BEGIN, mode);
    if (outside(BEGIN)) { state.in_primitive = true; }
}

void glEnd() {
    RETURN_IF_SILENT();
    note_bare(END);
    inside(END);
    state.in_primitive = false;
}

void glVertex2f(GLfloat x, GLfloat y) {
    RETURN_IF_SILENT();
    note_values(VERTEX2F, x, y);
    inside(VERTEX2F);
}

void glVertex3f(GLfloat x, GLfloat y, GLfloat z) {
    RETURN_IF_SILENT();
    note_values(VERTEX3F, x, y, z);
    inside(VERTEX3F);
}

void glNormal3f(GLfloat x, GLfloat y, GLfloat z) {
    RETURN_IF_SILENT();
    note_values(NORMAL3F, x, y, z);
}

void glTexCoord2f(GLfloat u, GLfloat v) {
    RETURN_IF_SILENT();
    note_values(TEX_COORD2F, u, v);
}

void glColor3f(GLfloat red, GLfloat green, GLfloat blue) {
    RETURN_IF_SILENT();
    note_values(COLOR3F, red, green, blue);
    state.colour = {red, green, blue, 1.0f};
}

void glColor4f(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) {
    RETURN_IF_SILENT();
    note_values(COLOR4F, red, green, blue, alpha);
    state.colour = {red, green, blue, alpha};
}

void glEdgeFlag(GLboolean flag) {
    RETURN_IF_SILENT();
    note_values(EDGE_FLAG, flag);
}

// Matrices.

void glMatrixMode(GLenum mode) {
    RETURN_IF_SILENT();
    note_values(MATRIX_MODE, mode);
    if (outside(MATRIX_MODE)) { state.matrix_mode = mode; }
}

void glLoadIdentity() {
    RETURN_IF_SILENT();
    note_bare(LOAD_IDENTITY);
    if (outside(LOAD_IDENTITY)) { current_stack().back() = IDENTITY; }
}

void glLoadMatrixf(const GLfloat* matrix) {
    RETURN_IF_SILENT();
    std::vector<Argument> arguments(matrix, matrix + 16);
    note(LOAD_MATRIXF, arguments.data(), 16);
    if (outside(LOAD_MATRIXF)) { current_stack().back() = matrix_of(matrix); }
}

void glMultMatrixf(const GLfloat* matrix) {
    RETURN_IF_SILENT();
    std::vector<Argument> arguments(matrix, matrix + 16);
    note(MULT_MATRIXF, arguments.data(), 16);
    if (outside(MULT_MATRIXF)) { multiply(matrix_of(matrix)); }
}

void glPushMatrix() {
    RETURN_IF_SILENT();
    note_bare(PUSH_MATRIX);
    if (!outside(PUSH_MATRIX)) { return; }
    std::vector<Matrix>& stack = current_stack();
    const int limit = &stack == &state.projection ? PROJECTION_STACK_LIMIT : MODELVIEW_STACK_LIMIT;
    if (static_cast<int>(stack.size()) >= limit) {
        error(PUSH_MATRIX, "stack overflow");
        return;
    }
    stack.push_back(Matrix(stack.back()));
    state.deepest_modelview = std::max(state.deepest_modelview, static_cast<int>(state.modelview.size()));
}

void glPopMatrix() {
    RETURN_IF_SILENT();
    note_bare(POP_MATRIX);
    if (!outside(POP_MATRIX)) { return; }
    if (current_stack().size() == 1) {
        error(POP_MATRIX, "stack underflow");
        return;
    }
    current_stack().pop_back();
}

void glTranslatef(GLfloat x, GLfloat y, GLfloat z) {
    RETURN_IF_SILENT();
    note_values(TRANSLATEF, x, y, z);
    if (outside(TRANSLATEF)) { multiply({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}); }
}

void glRotatef(GLfloat degrees, GLfloat x, GLfloat y, GLfloat z) {
    RETURN_IF_SILENT();
    note_values(ROTATEF, degrees, x, y, z);
    if (outside(ROTATEF)) { multiply(rotation(degrees, x, y, z)); }
}

void glScalef(GLfloat x, GLfloat y, GLfloat z) {
    RETURN_IF_SILENT();
    note_values(SCALEF, x, y, z);
    if (outside(SCALEF)) { multiply({x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}); }
}

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    RETURN_IF_SILENT();
    note_values(VIEWPORT, x, y, width, height);
    if (!outside(VIEWPORT)) { return; }
    if (width < 0 || height < 0) {
        error(VIEWPORT, "negative size");
    } else {
        state.viewport = {x, y, width, height};
    }
}

// Buffers and state.

void glClear(GLbitfield mask) {
    RETURN_IF_SILENT();
    note_values(CLEAR, mask);
    outside(CLEAR);
}

void glClearColor(GLclampf red, GLclampf green, GLclampf blue, GLclampf alpha) {
    RETURN_IF_SILENT();
    note_values(CLEAR_COLOR, red, green, blue, alpha);
    if (outside(CLEAR_COLOR)) { state.clear_colour = {red, green, blue, alpha}; }
}

void glFlush() {
    RETURN_IF_SILENT();
    note_bare(FLUSH);
    outside(FLUSH);
}

void glEnable(GLenum capability) {
    RETURN_IF_SILENT();
    note_values(ENABLE, capability);
    if (outside(ENABLE)) { state.enabled[capability] = true; }
}

void glDisable(GLenum capability) {
    RETURN_IF_SILENT();
    note_values(DISABLE, capability);
    if (outside(DISABLE)) { state.enabled[capability] = false; }
}

void glShadeModel(GLenum mode) {
    RETURN_IF_SILENT();
    note_values(SHADE_MODEL, mode);
    outside(SHADE_MODEL);
}

void glDepthFunc(GLenum function) {
    RETURN_IF_SILENT();
    note_values(DEPTH_FUNC, function);
    outside(DEPTH_FUNC);
}

void glDepthMask(GLboolean flag) {
    RETURN_IF_SILENT();
    note_values(DEPTH_MASK, flag);
    if (outside(DEPTH_MASK)) { state.depth_mask = flag != 0; }
}

void glBlendFunc(GLenum source, GLenum destination) {
    RETURN_IF_SILENT();
    note_values(BLEND_FUNC, source, destination);
    if (outside(BLEND_FUNC)) { state.blend_factors = {source, destination}; }
}

void glPolygonMode(GLenum face, GLenum mode) {
    RETURN_IF_SILENT();
    note_values(POLYGON_MODE, face, mode);
    if (!outside(POLYGON_MODE)) { return; }
    if (face != GL_BACK) { state.polygon_modes[0] = mode; }
    if (face != GL_FRONT) { state.polygon_modes[1] = mode; }
}

void glMaterialfv(GLenum face, GLenum name, const GLfloat* values) {
    RETURN_IF_SILENT();
    const Argument head[] = {face, name};
    note_vector(MATERIALFV, head, 2, values, name == GL_SHININESS ? 1 : 4);
}

void glLightfv(GLenum light, GLenum name, const GLfloat* values) {
    RETURN_IF_SILENT();
    const Argument head[] = {light, name};
    note_vector(LIGHTFV, head, 2, values, 4);
    outside(LIGHTFV);
}

void glLightModelf(GLenum name, GLfloat value) {
    RETURN_IF_SILENT();
    note_values(LIGHT_MODELF, name, value);
    outside(LIGHT_MODELF);
}

void glColorMaterial(GLenum face, GLenum mode) {
    RETURN_IF_SILENT();
    note_values(COLOR_MATERIAL, face, mode);
    outside(COLOR_MATERIAL);
}

void glTexEnvf(GLenum target, GLenum name, GLfloat value) {
    RETURN_IF_SILENT();
    note_values(TEX_ENVF, target, name, value);
    outside(TEX_ENVF);
}

void glTexParameterf(GLenum target, GLenum name, GLfloat value) {
    RETURN_IF_SILENT();
    note_values(TEX_PARAMETERF, target, name, value);
    outside(TEX_PARAMETERF);
}

void glPushAttrib(GLbitfield mask) {
    RETURN_IF_SILENT();
    note_values(PUSH_ATTRIB, mask);
    if (!outside(PUSH_ATTRIB)) { return; }
    if (mask != GL_ALL_ATTRIB_BITS) { error(PUSH_ATTRIB, "not all attributes: this stand-in keeps them together"); }
    if (state.attributes.size() >= ATTRIBUTE_STACK_LIMIT) {
        error(PUSH_ATTRIB, "stack overflow");
    } else {
        state.attributes.push_back(state);
    }
}

void glPopAttrib() {
    RETURN_IF_SILENT();
    note_bare(POP_ATTRIB);
    if (!outside(POP_ATTRIB)) { return; }
    if (state.attributes.empty()) {
        error(POP_ATTRIB, "stack underflow");
        return;
    }
    static_cast<Attributes&>(state) = state.attributes.back();
    state.attributes.pop_back();
}

void glLineWidth(GLfloat width) {
    RETURN_IF_SILENT();
    note_values(LINE_WIDTH, width);
    if (outside(LINE_WIDTH)) { state.line_width = width; }
}

void glPointSize(GLfloat size) {
    RETURN_IF_SILENT();
    note_values(POINT_SIZE, size);
    if (outside(POINT_SIZE)) { state.point_size = size; }
}

void glLineStipple(GLint factor, GLushort pattern) {
    RETURN_IF_SILENT();
    note_values(LINE_STIPPLE, factor, static_cast<unsigned>(pattern));
    outside(LINE_STIPPLE);
}

void glPolygonOffset(GLfloat factor, GLfloat units) {
    RETURN_IF_SILENT();
    note_values(POLYGON_OFFSET, factor, units);
    outside(POLYGON_OFFSET);
}

// Pictures.

void glTexImage2D(GLenum target, GLint level, GLint internal_format, GLsizei width, GLsizei height, GLint border,
                  GLenum format, GLenum type, const GLvoid* pixels) {
    RETURN_IF_SILENT();
    const Argument arguments[] = {target, level, internal_format, width, height, border, format, type};
    note(TEX_IMAGE2D, arguments, 8, pixels);
    outside(TEX_IMAGE2D);
}

void glPixelStorei(GLenum name, GLint value) {
    RETURN_IF_SILENT();
    note_values(PIXEL_STOREI, name, value);
    if (outside(PIXEL_STOREI)) { state.pixel_store[name] = value; }
}

void glRasterPos3f(GLfloat x, GLfloat y, GLfloat z) {
    RETURN_IF_SILENT();
    note_values(RASTER_POS3F, x, y, z);
    outside(RASTER_POS3F);
}

void glBitmap(GLsizei width, GLsizei height, GLfloat x_origin, GLfloat y_origin, GLfloat x_move, GLfloat y_move,
              const GLubyte* bitmap) {
    RETURN_IF_SILENT();
    const Argument arguments[] = {width, height, x_origin, y_origin, x_move, y_move};
    note(BITMAP, arguments, 6, bitmap, bitmap_hex(bitmap, width, height));
    outside(BITMAP);
}

void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, GLvoid* pixels) {
    RETURN_IF_SILENT();
    note_values(READ_PIXELS, x, y, width, height, format, type);
    if (!outside(READ_PIXELS)) { return; }
    const auto alignment = static_cast<size_t>(state.pixel_store[GL_PACK_ALIGNMENT]);
    const size_t channels = format == GL_RGBA ? 4 : 3;
    const size_t row_bytes = (static_cast<size_t>(width) * channels + alignment - 1) / alignment * alignment;
    for (int row = 0; row < height; ++row) {
        unsigned char* out = static_cast<unsigned char*>(pixels) + static_cast<size_t>(row) * row_bytes;
        for (int column = 0; column < width; ++column, out += channels) {
            std::array<unsigned char, 3> colour{};
            if (state.pattern) { colour = state.pattern(x + column, y + row); }
            std::memcpy(out, colour.data(), 3);
            if (channels == 4) { out[3] = 0; }
        }
    }
}

// Only a buffer with several samples a pixel is read through a texture, and this one has none.
void glGenTextures(GLsizei, GLuint*) {}
void glDeleteTextures(GLsizei, const GLuint*) {}
void glBindTexture(GLenum, GLuint) {}
void glCopyTexSubImage2D(GLenum, GLint, GLint, GLint, GLint, GLint, GLsizei, GLsizei) {}
void glGetTexImage(GLenum, GLint, GLenum, GLenum, GLvoid*) {}

// Queries.

void glGetFloatv(GLenum name, GLfloat* values) { answer(GET_FLOATV, name, values); }
void glGetIntegerv(GLenum name, GLint* values) { answer(GET_INTEGERV, name, values); }
void glGetBooleanv(GLenum name, GLboolean* values) { answer(GET_BOOLEANV, name, values); }
const GLubyte* glGetString(GLenum) { return reinterpret_cast<const GLubyte*>("recording"); }

}  // extern "C"
