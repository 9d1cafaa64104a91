// The verb "set": the view, the cursor, and the current model's layer and vertices. What surprises: only the word
// behind the verb is searched for; the words of "set view", "set layer" and "set vertex" are compared where they stand.
#include "application/application.h"
#include "edit/bounds.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "render/frame.h"
#include "render/overlays.h"
#include "render/view_matrices.h"
#include "scene/layer.h"
#include "script/commands.h"
#include "script/messages.h"
#include "window/cursor.h"

namespace pelt {

namespace {

ViewState* view() { return &application()->view; }

void cmd_set_background(Words words) {
    float colour[3] = {};
    if (args_or_usage(args_read_floats(words + 1, colour, 3),
                      "sorvel: usage: sorvel set background <red> <green> <blue>")) {
        view_set_background(view(), colour[0], colour[1], colour[2]);
    }
}

void cmd_set_cursor(Words words) {
    int32_t id = 0;
    if (args_or_usage(arg_read(&id, words[1], ARG_INT), "sorvel: usage: sorvel set cursor <id>")) { cursor_apply(id); }
}

void cmd_set_focus(Words words) {
    float place[3] = {};
    if (args_or_usage(args_read_floats(words + 1, place, 3), "sorvel: usage: sorvel set focus <x> <y> <z>")) {
        view_set_focus(view(), place[0], place[1], place[2]);
    }
}

void cmd_set_freerotate(Words words) {
    int32_t on = 0;
    if (args_or_usage(arg_read(&on, words[1], ARG_FLAG), "sorvel: usage: sorvel set freerotate <on>")) {
        view_set_freerotate(view(), on);
    }
}

void cmd_set_pan(Words words) {
    float pan[2] = {};
    // Intended: the text of the other form.
    if (args_or_usage(args_read_floats(words + 1, pan, 2), "sorvel: usage: sorvel set view pan <angle> <pitch>")) {
        view()->pan_x = pan[0];
        view()->pan_y = pan[1];
    }
}

void cmd_set_pointer(Words words) {
    int32_t place[2] = {};
    if (args_or_usage(args_read_ints(words + 1, place, 2), "sorvel: usage: sorvel set pointer <x> <y>")) {
        pointer_set(place[0], place[1]);
    }
}

void cmd_set_points_color_index(Words words) {
    int32_t index = 0;
    if (args_or_usage(arg_read(&index, words[1], ARG_INT), "sorvel: usage: sorvel set points_color_index <n>")) {
        session_set_points_color(&application()->session, index);
    }
}

void cmd_set_matrix(Words words) {
    constexpr char USAGE[] = "sorvel: usage: sorvel set matrix <type> <n1> <n2> .. <n16>";
    constexpr int ELEMENTS = 16;
    const char* type = nullptr;
    if (!args_or_usage(arg_read(&type, words[1], ARG_TEXT), USAGE)) { return; }
    if (!str_equal(type, "view")) {
        msg_info_format("sorvel: unknown matrix type: %s", type);
        return;
    }
    Mat4 matrix{};
    if (args_or_usage(args_read_floats(words + 2, matrix.m, ELEMENTS), USAGE)) { view_set_matrix(view(), &matrix); }
}

// The view.

struct NamedView {
    const char* word;
    float angle;
    float pitch;
};

constexpr NamedView NAMED_VIEWS[] = {
    {"down", 0.0f, 0.0f},    {"up", 0.0f, 180.0f},    {"south", 180.0f, -90.0f},
    {"north", 0.0f, -90.0f}, {"east", 90.0f, -90.0f}, {"west", -90.0f, -90.0f},
};

void cmd_set_view_rotate(const float* values) { view_rotate(view(), values[0], values[1]); }
void cmd_set_view_ortho(const float* values) { view_set_angles(view(), values[0], values[1]); }
void cmd_set_view_pan(const float* values) { view_pan_pixels(view(), values[0], values[1], 1); }
void cmd_set_view_zoom(const float* values) { view_set_zoom(view(), values[0]); }

void cmd_set_view_centre(const float*) {
    const Vec3 centre = scene_centre(&application()->session);
    view_set_focus(view(), centre.x, centre.y, centre.z);
}

struct ViewForm {
    const char* word;
    int count;  // of numbers
    void (*run)(const float* values);
    const char* usage;
};

constexpr int VIEW_NUMBERS = 2;  // the most that a form takes
constexpr ViewForm VIEW_FORMS[] = {
    {"rotate", 2, cmd_set_view_rotate, "sorvel: usage: sorvel set view rotate <xangle> <yangle>"},
    {"ortho", 2, cmd_set_view_ortho, "sorvel: usage: sorvel set view ortho <angle> <pitch>"},
    {"pan", 2, cmd_set_view_pan, "sorvel: usage: sorvel set view pan <angle> <pitch>"},
    {"zoom", 1, cmd_set_view_zoom, "sorvel: usage: sorvel set view zoom <factor>"},
    {"centre", 0, cmd_set_view_centre, nullptr},
};

void cmd_set_view_size(Words words) {
    int32_t size[2] = {};
    if (args_or_usage(args_read_ints(words, size, 2), "sorvel: usage: sorvel set view size <width> <height>")) {
        view_set_size(size[0], size[1]);
    }
}

void cmd_set_view(Words words) {
    const char* name = nullptr;
    float values[VIEW_NUMBERS] = {};
    if (!args_or_usage(arg_read(&name, words[1], ARG_TEXT), "sorvel: usage: sorvel set view <name>")) { return; }
    if (const NamedView* named = command_find(NAMED_VIEWS, name)) {
        view_set_angles(view(), named->angle, named->pitch);
    } else if (const ViewForm* form = command_find(VIEW_FORMS, name)) {
        if (args_or_usage(args_read_floats(words + 2, values, form->count), form->usage)) { form->run(values); }
    } else if (str_equal(name, "size")) {
        cmd_set_view_size(words + 2);
    } else {
        msg_info_format("sorvel: unknown view name: %s", name);
    }
}

constexpr VertexTexts SET_VERTEX_TEXTS = {
    "sorvel: usage: sorvel set vertex <args>",    "sorvel: unknown vertex argument: %s",
    "sorvel: usage: sorvel set vertex point <n>", "sorvel: usage: sorvel set vertex normal <n>",
    "sorvel: usage: sorvel set vertex color <n>", "sorvel: usage: sorvel set vertex transparency <n>",
};

void cmd_set_vertex(Words words) { cmd_vertex(words, SET_VERTEX_TEXTS); }

constexpr Command FORMS[] = {
    {"background", cmd_set_background},
    {"cursor", cmd_set_cursor},
    {"focus", cmd_set_focus},
    {"freerotate", cmd_set_freerotate},
    {"layer", cmd_set_layer},
    {"matrix", cmd_set_matrix},
    {"pan", cmd_set_pan},
    {"pointer", cmd_set_pointer},
    {"points_color_index", cmd_set_points_color_index},
    {"vertex", cmd_set_vertex},
    {"view", cmd_set_view},
};

}  // namespace

void cmd_set(Words words) { command_run_sub(words, "set", UNKNOWN_ATTRIBUTE, FORMS); }

}  // namespace pelt
