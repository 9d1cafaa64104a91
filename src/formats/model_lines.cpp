// The lines of the .mod format, one procedure for each form. A line that begins with an integer is data, read as the
// last section keyword said; any other first word is looked up among the keywords, and an unknown one is passed over.
//
// What surprises: several failures do not end their line. It is carried out with what is there, so that a later,
// more particular text can take the place of the first in the load-error record. That is intended, and noted where it
// happens.
#include "formats/model_lines.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "formats/layer_image.h"
#include "formats/model_writer.h"
#include "foundation/load_error.h"
#include "foundation/math3d.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

constexpr const char* BAD_TRIANGLE = "Bad triangle definition";
constexpr const char* BAD_IMAGE = "Bad image definition";
constexpr const char* BAD_CHILD = "Bad child data";

constexpr double TURN_DEGREES = 360.0;
constexpr double TURN_RADIANS = 6.2831854;
constexpr float POLE_SINE = 0.999999f;  // from here on a normal given by angles points straight along z
constexpr float REPEAT_MAX = 128.0f;
constexpr size_t ROTATION_TEXT_SIZE = 8;

void fail(const char* text) {
    load_error_set(text);
    reader_abort();
}

// For operations that set their own text, or none.
void require(bool done) {
    if (!done) { reader_abort(); }
}

// The code of an axis word; anything else fails and gives 0, and the line goes on.
int axis_code(int32_t index) {
    for (int code = AXIS_X; code <= AXIS_MINUS_Z; ++code) {
        if (reader_token_equals(axis_word(code), index)) { return code; }
    }
    fail("Bad image axis definition");
    return 0;
}

bool has_tokens(bool enough, const char* error) {
    if (!enough) { fail(error); }
    return enough;
}

// ---- statement lines ----

void parse_layer(ModelFileContext& file) {
    const int32_t count = reader_token_count();
    if (!has_tokens(count >= 6, "Bad layer definition")) { return; }
    str_copy(reader_text(1), file.layer);  // the current layer from here on, whether or not the rest succeeds
    int mirror = 0;
    int mirror_axis = AXIS_X;
    if (count == 8 && reader_token_equals("mirror", 6)) {
        mirror = 1;
        mirror_axis = axis_code(7);
    }
    // A new layer clears the load error, so that a bad axis word fails the load without a text: intended.
    require(model_add_layer(file.model, file.layer, reader_int(2), reader_int(3), reader_int(4),
                            reader_token_equals("singlesided", 5), mirror, mirror_axis));
}

void parse_transparency(ModelFileContext& file) {
    if (has_tokens(reader_token_count() == 2, "Bad transparency data")) {
        require(model_set_transparency(file.model, file.layer, reader_float(1)));
    }
}

int add_image(ModelFileContext& file, int slot, const char* name, int axis_u, int axis_v) {
    const auto add = file.names_only ? model_name_image : model_add_image;
    return add(file.model, file.layer, slot, name, axis_u, axis_v);
}

void parse_reflect(ModelFileContext& file) {
    if (has_tokens(reader_token_count() >= 3, "Bad reflection map definition")) {
        require(add_image(file, IMAGE_SLOT_REFLECTION, reader_text(1), 0, 0) &&
                model_set_reflection(file.model, file.layer, reader_float(2)));
    }
}

void parse_invisible(ModelFileContext& file) {
    if (has_tokens(reader_token_count() == 4, "Bad invisible data")) {
        require(model_set_invisible(file.model, file.layer, reader_float(1), reader_float(2), reader_float(3)));
    }
}

void parse_joint(ModelFileContext& file) {
    if (has_tokens(reader_token_count() == 7, "Bad joint definition")) {
        require(model_add_joint(file.model, reader_text(1), reader_int(2), reader_int(3), reader_int(4), reader_text(5),
                                reader_int(6)));
    }
}

void parse_blend(ModelFileContext& file) {
    if (has_tokens(reader_token_count() == 4, "Bad blend definition")) {
        require(model_add_blend(file.model, reader_text(1), reader_text(2), reader_int(3)) != nullptr);
    }
}

// The word "none" is no name at all, which then fails without a text: intended.
const char* image_name() { return reader_token_equals("none", 1) ? nullptr : reader_text(1); }

// Neither factor may be a non-number or lie further from 0 than the limit.
bool is_repeat_factor(float factor) { return factor >= -REPEAT_MAX && factor <= REPEAT_MAX; }

void parse_image(ModelFileContext& file) {
    const int32_t count = reader_token_count();
    if (!has_tokens(count >= 4, BAD_IMAGE)) { return; }
    const int axis_u = axis_code(2);
    const int axis_v = axis_code(3);
    const bool repeated = count > 4;
    const float repeat_u = reader_float(5);
    const float repeat_v = reader_float(6);
    if (repeated && !has_tokens(count >= 7 && reader_token_equals("repeat", 4) && is_repeat_factor(repeat_u) &&
                                    is_repeat_factor(repeat_v),
                                BAD_IMAGE)) {
        return;
    }
    require(add_image(file, IMAGE_SLOT_BASE, image_name(), axis_u, axis_v));
    if (repeated) {
        model_set_image_repeat(file.model, file.layer, 1, repeat_u, repeat_v);  // also behind a failure: intended
    }
}

void parse_mirror_image(ModelFileContext& file) {
    if (has_tokens(reader_token_count() >= 2, BAD_IMAGE)) {
        require(add_image(file, IMAGE_SLOT_MIRROR, image_name(), 0, 0));
    }
}

void parse_child(ModelFileContext& file) {
    bool numbers = reader_token_count() == 11;
    for (int32_t token = 2; numbers && token <= 7; ++token) { numbers = !reader_is_text(token); }
    if (!has_tokens(numbers, BAD_CHILD)) { return; }
    char rotate[3][ROTATION_TEXT_SIZE];
    for (int axis = 0; axis < 3; ++axis) { str_copy(reader_text(8 + axis), rotate[axis]); }
    Mat4 unused;
    if (!mat_rotate_text(&unused, rotate[0], rotate[1], rotate[2])) {
        fail(BAD_CHILD);  // the link is added all the same: intended
    }
    require(model_add_child(file.model, nullptr, reader_text(1), reader_float(2), reader_float(3), reader_float(4),
                            reader_float(5), reader_float(6), reader_float(7), rotate[0], rotate[1],
                            rotate[2]) != nullptr);
}

// ---- data lines ----

// The integers of the tokens from one index on; a token that is missing or no integer counts as 0.
void read_ints(int32_t* out, int32_t first, int32_t count) {
    for (int32_t i = 0; i < count; ++i) { out[i] = reader_int(first + i); }
}

void parse_point(ModelFileContext& file) {
    const int32_t count = reader_token_count();
    if (!has_tokens(count >= 4, "Bad point definition")) { return; }
    const int32_t id = reader_int(0);
    const float weight = count >= 5 ? reader_float(4) : 1.0f;
    bool done = model_set_point(file.model, id, reader_int(1), reader_int(2), reader_int(3), weight) != 0;
    if (done && count >= 7) { done = model_set_point_joints(file.model, id, reader_text(5), reader_text(6)) != 0; }
    require(done);
}

float radians(float degrees) { return to_float(double{degrees} / TURN_DEGREES * TURN_RADIANS); }

// Two angles: the first turns about z, the second lifts out of the plane.
Vec3 normal_of_angles(float a, float b) {
    const double ra = radians(a);
    const double rb = radians(b);
    Vec3 normal{to_float(std::cos(ra)), to_float(std::sin(ra)), to_float(std::sin(rb))};
    if (normal.z >= POLE_SINE || normal.z <= -POLE_SINE) {
        normal.x = 0.0f;
        normal.y = 0.0f;
    } else if (normal.z != 0.0f) {
        normal.x = to_float(normal.x * std::cos(rb));
        normal.y = to_float(normal.y * std::cos(rb));
    }
    return normal;
}

void parse_normal(ModelFileContext& file) {
    const int32_t count = reader_token_count();
    if (!has_tokens(count == 3 || count == 4, "Bad normal definition")) { return; }
    const Vec3 normal = count == 4 ? Vec3{reader_float(1), reader_float(2), reader_float(3)}
                                   : normal_of_angles(reader_float(1), reader_float(2));
    require(model_set_normal(file.model, reader_int(0), normal.x, normal.y, normal.z));
}

void parse_gouraud(ModelFileContext& file) {
    if (has_tokens(reader_token_count() == 5, "Bad gouraud RGB definition")) {
        // Each value is cut to one byte.
        require(model_set_gouraud(file.model, reader_int(0), reader_int(1) & 0xFF, reader_int(2) & 0xFF,
                                  reader_int(3) & 0xFF, reader_int(4) & 0xFF));
    }
}

void parse_uvee(ModelFileContext& file) {
    if (has_tokens(reader_token_count() == 3, "Bad uvee definition")) {
        require(model_add_uvee(file.model, file.layer, reader_int(0), reader_float(1), reader_float(2)));
    }
}

constexpr int32_t POLYLINE = 2;

void parse_line(ModelFileContext& file) {
    if (reader_int(0) != POLYLINE) {
        return;  // other types are passed over
    }
    const int32_t count = reader_token_count() - 1;
    if (has_tokens(count >= 1 && count <= POLYGON_VERTEX_LIMIT, "Bad line definition")) {
        int32_t points[READER_TOKEN_LIMIT];
        read_ints(points, 1, count);
        require(model_add_line(file.model, file.layer, count, points));
    }
}

void parse_polygon(ModelFileContext& file) {
    const int32_t count = reader_token_count() - 1;
    if (has_tokens(count >= 3 && count <= POLYGON_VERTEX_LIMIT, BAD_TRIANGLE)) {
        int32_t points[READER_TOKEN_LIMIT];
        read_ints(points, 1, count);
        require(model_add_polygon(file.model, file.layer, count, points, nullptr));
    }
}

constexpr int CORNER_LIMIT = 4;
constexpr int CONTROL_LIMIT = 2 * CORNER_LIMIT;

// Where a primitive's tokens stand. The points begin at token 1.
struct PrimitiveForm {
    int32_t type;
    int quad;
    int32_t corners;
    int32_t curve_token;  // 0 for a form that is always flat
    int32_t curve_type;   // when the line does not say
    int32_t normals_at;
    int32_t controls_at;                      // 0 for none
    int32_t default_controls[CONTROL_LIMIT];  // places among the corners: the ends of each edge
};

constexpr PrimitiveForm PRIMITIVE_FORMS[] = {
    {0, 0, 3, 0, 0, 4, 0, {}},
    {1, 1, 4, 0, 0, 5, 0, {}},
    {3, 0, 3, 4, 3, 5, 8, {0, 1, 1, 2, 2, 0}},
    {4, 1, 4, 5, 4, 6, 10, {0, 1, 1, 3, 3, 2, 2, 0}},
};

// What a line of so many tokens holds.
struct PrimitiveParts {
    bool well_formed;
    bool curve;
    bool normals;
    bool controls;
};

PrimitiveParts flat_parts(const PrimitiveForm& form, int32_t count) {
    const bool zero_behind = form.type == 0 && count == 5 && reader_int(4) == 0;
    const bool bare = count == form.corners + 1 || zero_behind;
    return {bare || count >= form.normals_at + form.corners, false, !bare, false};
}

PrimitiveParts curved_parts(const PrimitiveForm& form, int32_t count) {
    if (count == form.curve_token) { return {true, false, false, false}; }
    if (count == form.normals_at) { return {true, true, false, false}; }
    if (count == form.controls_at) { return {true, true, true, false}; }
    return {count >= form.controls_at + 2 * form.corners, true, true, true};
}

PrimitiveParts parts_of_line(const PrimitiveForm& form) {
    const int32_t count = reader_token_count();
    return form.curve_token != 0 ? curved_parts(form, count) : flat_parts(form, count);
}

// A wrong count is noted and the primitive is added from what is there, all parts taken to be present: the missing
// ids are 0, which no point has, so that the text of the failed add replaces this one. Intended; only where nothing
// looks at what is missing does the first text stay.
void parse_primitive(ModelFileContext& file, const PrimitiveForm& form) {
    const PrimitiveParts parts = parts_of_line(form);
    has_tokens(parts.well_formed, BAD_TRIANGLE);
    int32_t points[CORNER_LIMIT] = {};
    int32_t normals[CORNER_LIMIT] = {};
    int32_t controls[CONTROL_LIMIT] = {};
    read_ints(points, 1, form.corners);
    if (parts.normals) { read_ints(normals, form.normals_at, form.corners); }
    if (parts.controls) {
        read_ints(controls, form.controls_at, 2 * form.corners);
    } else {
        std::transform(std::begin(form.default_controls), std::end(form.default_controls), controls,
                       [&](int32_t corner) { return points[corner]; });
    }
    require(model_add_triangle(file.model, file.layer, form.quad, points, parts.normals ? normals : nullptr,
                               form.curve_token != 0 ? controls : nullptr,
                               parts.curve ? reader_int(form.curve_token) : form.curve_type));
}

constexpr int32_t POLYGON = 2;

const PrimitiveForm* find_form(int32_t type) {
    for (const PrimitiveForm& form : PRIMITIVE_FORMS) {
        if (form.type == type) { return &form; }
    }
    return nullptr;
}

void parse_surface(ModelFileContext& file) {
    if (reader_int(0) == POLYGON) {
        parse_polygon(file);
    } else if (const PrimitiveForm* form = find_form(reader_int(0))) {
        parse_primitive(file, *form);
    } else {
        fail(BAD_TRIANGLE);
    }
}

void parse_data(ModelFileContext& file) {
    switch (file.mode) {
        case LINE_MODE_POINTS: parse_point(file); break;
        case LINE_MODE_NORMALS: parse_normal(file); break;
        case LINE_MODE_TRIANGLES: parse_surface(file); break;
        case LINE_MODE_LINES: parse_line(file); break;
        case LINE_MODE_GOURAUD: parse_gouraud(file); break;
        case LINE_MODE_UVEES: parse_uvee(file); break;
        case LINE_MODE_NONE: fail("Bad point or triangle data"); break;
    }
}

// A section keyword sets the mode and has no statement; a statement's mode is none.
struct Keyword {
    const char* word;
    LineMode mode;
    void (*statement)(ModelFileContext&);
    ModelLineKind kind;
};

constexpr Keyword KEYWORDS[] = {
    {"points", LINE_MODE_POINTS, nullptr, LINE_IS_SECTION},
    {"normals", LINE_MODE_NORMALS, nullptr, LINE_IS_SECTION},
    {"layer", LINE_MODE_NONE, parse_layer, LINE_IS_LAYER},
    {"transparency", LINE_MODE_NONE, parse_transparency, LINE_IS_TRANSPARENCY},
    {"reflect", LINE_MODE_NONE, parse_reflect, LINE_IS_REFLECT},
    {"invisible", LINE_MODE_NONE, parse_invisible, LINE_IS_INVISIBLE},
    {"joint", LINE_MODE_NONE, parse_joint, LINE_IS_JOINT},
    {"blend", LINE_MODE_NONE, parse_blend, LINE_IS_BLEND},
    {"triangles", LINE_MODE_TRIANGLES, nullptr, LINE_IS_SECTION},
    {"lines", LINE_MODE_LINES, nullptr, LINE_IS_SECTION},
    {"goraud", LINE_MODE_GOURAUD, nullptr, LINE_IS_SECTION},  // both spellings occur in models
    {"gouraud", LINE_MODE_GOURAUD, nullptr, LINE_IS_SECTION},
    {"uvees", LINE_MODE_UVEES, nullptr, LINE_IS_SECTION},
    {"image", LINE_MODE_NONE, parse_image, LINE_IS_IMAGE},
    {"mirrorimage", LINE_MODE_NONE, parse_mirror_image, LINE_IS_MIRROR_IMAGE},
    {"child", LINE_MODE_NONE, parse_child, LINE_IS_CHILD},
};

const Keyword* find_keyword(const char* word) {
    for (const Keyword& keyword : KEYWORDS) {
        if (str_equal(keyword.word, word)) { return &keyword; }
    }
    return nullptr;
}

}  // namespace

void model_parse_line(ModelFileContext* file) {
    if (reader_is_int(0)) {
        parse_data(*file);
        return;
    }
    if (const Keyword* keyword = find_keyword(reader_text(0))) {
        file->mode = keyword->mode;
        if (keyword->statement != nullptr) { keyword->statement(*file); }
    } else {
        load_problem_note("no keyword: the line is passed over");
    }
}

ModelLine model_line_in_hand(const ModelFileContext& file) {
    if (reader_is_int(0)) { return {LINE_IS_DATA, file.mode}; }
    const Keyword* keyword = find_keyword(reader_text(0));
    return keyword != nullptr ? ModelLine{keyword->kind, keyword->mode} : ModelLine{LINE_IS_NOTHING, file.mode};
}

PrimitiveTokens model_primitive_tokens() {
    const PrimitiveForm* form = find_form(reader_int(0));
    if (form == nullptr) { return {reader_token_count(), 0, 0, 0}; }
    const PrimitiveParts parts = parts_of_line(*form);
    PrimitiveTokens tokens{form->corners + 1, 0, 0, 0};
    if (parts.curve) { tokens.count = (tokens.curve_at = form->curve_token) + 1; }
    if (parts.normals) { tokens.count = (tokens.normals_at = form->normals_at) + form->corners; }
    if (parts.controls) { tokens.count = (tokens.controls_at = form->controls_at) + 2 * form->corners; }
    return tokens;
}

bool model_knows_keyword(const char* word) { return find_keyword(word) != nullptr; }

}  // namespace pelt
