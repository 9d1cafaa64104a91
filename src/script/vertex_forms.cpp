// The forms of "add vertex" and "set vertex", which are one operation under two names. What surprises: "normal" wants
// a word of any content before its last number, and "transparency" changes the colour too.
#include "application/application.h"
#include "edit/history.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "scene/point.h"
#include "script/commands.h"
#include "script/messages.h"

namespace pelt {

namespace {

constexpr int FULL_BYTE = 255;
constexpr double TRANSPARENCY_SCALE = 255.0;
constexpr float FULL_WEIGHT = 1.0f;

int low_byte(int32_t value) { return value & 0xFF; }

// Each form gets the words behind its own; model is null without a current model, when nothing but the words counts.
using VertexForm = void (*)(Model* model, Words words, const char* usage);

void cmd_vertex_point(Model* model, Words words, const char* usage) {
    int32_t id = 0;
    float place[3] = {};
    if (args_or_usage(arg_read(&id, words[0], ARG_INT) && args_read_floats(words + 1, place, 3), usage) &&
        model != nullptr) {
        model_set_point(model, id, float_to_int(place[0]), float_to_int(place[1]), float_to_int(place[2]), FULL_WEIGHT);
    }
}

void cmd_vertex_normal(Model* model, Words words, const char* usage) {
    int32_t id = 0;
    float normal[3] = {};
    if (!args_or_usage(arg_read(&id, words[0], ARG_INT) && args_read_floats(words + 1, normal, 2), usage)) { return; }
    // Intended: the word here is stepped over, whatever it is, and without one nothing happens and nothing is said.
    if (words[3] == nullptr) { return; }
    if (args_or_usage(arg_read(&normal[2], words[4], ARG_FLOAT), usage) && model != nullptr) {
        model_set_normal(model, id, normal[0], normal[1], normal[2]);
    }
}

void cmd_vertex_color(Model* model, Words words, const char* usage) {
    int32_t values[4] = {};  // id, red, green, blue
    if (!args_or_usage(args_read_ints(words, values, 4), usage) || model == nullptr) { return; }
    const unsigned char* colour = model_point_colour(model, values[0]);
    const int transparency = colour != nullptr ? colour[3] : 0;
    model_set_gouraud(model, values[0], low_byte(values[1]), low_byte(values[2]), low_byte(values[3]), transparency);
}

void cmd_vertex_transparency(Model* model, Words words, const char* usage) {
    int32_t id = 0;
    float value = 0.0f;
    if (!args_or_usage(arg_read(&id, words[0], ARG_INT) && arg_read(&value, words[1], ARG_FLOAT), usage)) { return; }
    if (model == nullptr) { return; }
    const int transparency = low_byte(float_to_int(static_cast<double>(value) * TRANSPARENCY_SCALE));
    // Intended: red ends up with the green value of the point, green and blue become full.
    const unsigned char* colour = model_point_colour(model, id);
    const int red = colour != nullptr ? colour[2] : FULL_BYTE;
    model_set_gouraud(model, id, red, FULL_BYTE, FULL_BYTE, transparency);
}

struct VertexRow {
    const char* word;
    const char* step;  // what a person reads of it
    VertexForm run;
    const char* VertexTexts::*usage;
};

constexpr VertexRow FORMS[] = {
    {"point", "point", cmd_vertex_point, &VertexTexts::point_usage},
    {"normal", "point normal", cmd_vertex_normal, &VertexTexts::normal_usage},
    {"color", "point colour", cmd_vertex_color, &VertexTexts::color_usage},
    {"transparency", "point transparency", cmd_vertex_transparency, &VertexTexts::transparency_usage},
};

}  // namespace

void cmd_vertex(Words words, const VertexTexts& texts) {
    Model* model = selection_current_model(&application()->session);
    const char* form = nullptr;
    if (!args_or_usage(arg_read(&form, words[1], ARG_TEXT), texts.usage)) { return; }
    if (const VertexRow* row = command_find(FORMS, form)) {
        history_command_name(row->step);
        row->run(model, words + 2, texts.*row->usage);
    } else {
        msg_info_format(texts.unknown, form);
    }
}

}  // namespace pelt
