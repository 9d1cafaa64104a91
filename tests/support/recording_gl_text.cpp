// Recorded calls as lines of text. One table lists the functions and how each argument is printed.
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>

#include "support/recording_gl.h"
#include "support/recording_gl_functions.h"

namespace recording_gl {
namespace {

// Argument forms: n number, e constant, p primitive, b truth value, f blend factor, c buffers. Arguments behind the
// form are numbers.
struct FunctionInfo {
    const char* name;
    const char* form;
};

constexpr FunctionInfo FUNCTIONS[FUNCTION_COUNT] = {
    {"glBegin", "p"},          {"glEnd", ""},          {"glVertex2f", ""},         {"glVertex3f", ""},
    {"glNormal3f", ""},        {"glTexCoord2f", ""},   {"glColor3f", ""},          {"glColor4f", ""},
    {"glEdgeFlag", "b"},       {"glMatrixMode", "e"},  {"glLoadIdentity", ""},     {"glLoadMatrixf", ""},
    {"glMultMatrixf", ""},     {"glPushMatrix", ""},   {"glPopMatrix", ""},        {"glTranslatef", ""},
    {"glRotatef", ""},         {"glScalef", ""},       {"glViewport", ""},         {"glClear", "c"},
    {"glClearColor", ""},      {"glFlush", ""},        {"glEnable", "e"},          {"glDisable", "e"},
    {"glShadeModel", "e"},     {"glDepthFunc", "e"},   {"glDepthMask", "b"},       {"glBlendFunc", "ff"},
    {"glPolygonMode", "ee"},   {"glMaterialfv", "ee"}, {"glLightfv", "ee"},        {"glLightModelf", "en"},
    {"glColorMaterial", "ee"}, {"glTexEnvf", "eee"},   {"glTexParameterf", "eee"}, {"glTexImage2D", "ennnnnee"},
    {"glPixelStorei", "en"},   {"glRasterPos3f", ""},  {"glBitmap", ""},           {"glReadPixels", "nnnnee"},
    {"glGetFloatv", "e"},      {"glGetIntegerv", "e"}, {"glGetBooleanv", "e"},     {"glPushAttrib", ""},
    {"glPopAttrib", ""},       {"glLineWidth", ""},    {"glLineStipple", ""},      {"glPointSize", ""},
    {"glPolygonOffset", ""}};

struct ConstantName {
    GLenum value;
    const char* name;
};

#define NAMED(constant) \
    { constant, #constant }
constexpr ConstantName CONSTANTS[] = {NAMED(GL_NEVER),
                                      NAMED(GL_LESS),
                                      NAMED(GL_EQUAL),
                                      NAMED(GL_LEQUAL),
                                      NAMED(GL_ALWAYS),
                                      NAMED(GL_FRONT),
                                      NAMED(GL_BACK),
                                      NAMED(GL_FRONT_AND_BACK),
                                      NAMED(GL_CURRENT_COLOR),
                                      NAMED(GL_POLYGON_MODE),
                                      NAMED(GL_CULL_FACE),
                                      NAMED(GL_LIGHTING),
                                      NAMED(GL_LINE_STIPPLE),
                                      NAMED(GL_POLYGON_OFFSET_LINE),
                                      NAMED(GL_COLOR_MATERIAL),
                                      NAMED(GL_DEPTH_TEST),
                                      NAMED(GL_DEPTH_WRITEMASK),
                                      NAMED(GL_MATRIX_MODE),
                                      NAMED(GL_NORMALIZE),
                                      NAMED(GL_VIEWPORT),
                                      NAMED(GL_MODELVIEW_STACK_DEPTH),
                                      NAMED(GL_PROJECTION_STACK_DEPTH),
                                      NAMED(GL_MODELVIEW_MATRIX),
                                      NAMED(GL_PROJECTION_MATRIX),
                                      NAMED(GL_BLEND_DST),
                                      NAMED(GL_BLEND_SRC),
                                      NAMED(GL_BLEND),
                                      NAMED(GL_COLOR_CLEAR_VALUE),
                                      NAMED(GL_MAX_MODELVIEW_STACK_DEPTH),
                                      NAMED(GL_UNPACK_ALIGNMENT),
                                      NAMED(GL_PACK_ALIGNMENT),
                                      NAMED(GL_TEXTURE_2D),
                                      NAMED(GL_AMBIENT),
                                      NAMED(GL_DIFFUSE),
                                      NAMED(GL_SPECULAR),
                                      NAMED(GL_POSITION),
                                      NAMED(GL_SHININESS),
                                      NAMED(GL_EMISSION),
                                      NAMED(GL_AMBIENT_AND_DIFFUSE),
                                      NAMED(GL_MODELVIEW),
                                      NAMED(GL_PROJECTION),
                                      NAMED(GL_TEXTURE),
                                      NAMED(GL_RGB),
                                      NAMED(GL_RGBA),
                                      NAMED(GL_UNSIGNED_BYTE),
                                      NAMED(GL_POINT),
                                      NAMED(GL_LINE),
                                      NAMED(GL_FILL),
                                      NAMED(GL_FLAT),
                                      NAMED(GL_SMOOTH),
                                      NAMED(GL_MODULATE),
                                      NAMED(GL_DECAL),
                                      NAMED(GL_REPLACE),
                                      NAMED(GL_TEXTURE_ENV_MODE),
                                      NAMED(GL_TEXTURE_ENV),
                                      NAMED(GL_NEAREST),
                                      NAMED(GL_LINEAR),
                                      NAMED(GL_TEXTURE_MAG_FILTER),
                                      NAMED(GL_TEXTURE_MIN_FILTER),
                                      NAMED(GL_TEXTURE_WRAP_S),
                                      NAMED(GL_TEXTURE_WRAP_T),
                                      NAMED(GL_LIGHT0),
                                      NAMED(GL_LIGHT1),
                                      NAMED(GL_LIGHT2),
                                      NAMED(GL_LIGHT_MODEL_LOCAL_VIEWER),
                                      NAMED(GL_LIGHT_MODEL_TWO_SIDE)};
constexpr ConstantName PRIMITIVES[] = {
    NAMED(GL_POINTS),         NAMED(GL_LINES),        NAMED(GL_LINE_LOOP), NAMED(GL_LINE_STRIP), NAMED(GL_TRIANGLES),
    NAMED(GL_TRIANGLE_STRIP), NAMED(GL_TRIANGLE_FAN), NAMED(GL_QUADS),     NAMED(GL_QUAD_STRIP), NAMED(GL_POLYGON)};
constexpr ConstantName BLEND_FACTORS[] = {NAMED(GL_ZERO), NAMED(GL_ONE), NAMED(GL_SRC_ALPHA),
                                          NAMED(GL_ONE_MINUS_SRC_ALPHA)};
#undef NAMED

std::map<const void*, std::string> data_names;

template <size_t Size>
bool find_name(const ConstantName (&table)[Size], double value, std::string* out) {
    for (const ConstantName& entry : table) {
        if (static_cast<double>(entry.value) == value) {
            *out = entry.name;
            return true;
        }
    }
    return false;
}

std::string number_text(double value) {
    if (std::isnan(value)) { return "nan"; }
    if (value == 0.0) { return "0"; }
    char buffer[64];
    std::to_chars_result end{};
    if (value == std::floor(value) && std::fabs(value) < 1e15) {
        end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<long long>(value));
    } else {
        end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(value));
    }
    return std::string(buffer, end.ptr);
}

std::string buffers_text(double value) {
    const auto mask = static_cast<GLbitfield>(value);
    std::string out;
    if ((mask & GL_COLOR_BUFFER_BIT) != 0) { out = "GL_COLOR_BUFFER_BIT"; }
    if ((mask & GL_DEPTH_BUFFER_BIT) != 0) { out += out.empty() ? "GL_DEPTH_BUFFER_BIT" : "|GL_DEPTH_BUFFER_BIT"; }
    return out.empty() ? "0" : out;
}

std::string argument_text(char form, double value) {
    std::string out;
    switch (form) {
        case 'e': return find_name(CONSTANTS, value, &out) ? out : number_text(value);
        case 'p': return find_name(PRIMITIVES, value, &out) ? out : number_text(value);
        case 'f': return find_name(BLEND_FACTORS, value, &out) ? out : number_text(value);
        case 'b': return value != 0.0 ? "GL_TRUE" : "GL_FALSE";
        case 'c': return buffers_text(value);
        default: return number_text(value);
    }
}

std::string data_text(const void* data) {
    if (data == nullptr) { return "null"; }
    const auto found = data_names.find(data);
    return found == data_names.end() ? "data" : found->second;
}

}  // namespace

const char* function_name(int function) {
    return function >= 0 && function < FUNCTION_COUNT ? FUNCTIONS[function].name : "";
}

std::string call_text(const Call& call) {
    const FunctionInfo& info = FUNCTIONS[call.function];
    const int formed = static_cast<int>(std::strlen(info.form));
    std::string out = info.name;
    for (int i = 0; i < call.count; ++i) {
        out += ' ' + argument_text(i < formed ? info.form[i] : 'n', call.arguments[static_cast<size_t>(i)]);
    }
    if (call.function == TEX_IMAGE2D) { out += ' ' + data_text(call.data); }
    if (call.function == BITMAP) { out += ' ' + call.bytes; }
    return out;
}

void name_data(const void* data, const std::string& name) { data_names[data] = name; }

void forget_names() { data_names.clear(); }

}  // namespace recording_gl
