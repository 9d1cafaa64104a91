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

void set_background(Words words) {
    float colour[3] = {};
    if (!args_read_floats(words + 1, colour, 3)) {
        msg_info("sorvel: usage: sorvel set background <red> <green> <blue>");
        return;
    }
    view_set_background(view(), colour[0], colour[1], colour[2]);
}

void set_cursor(Words words) {
    int32_t id = 0;
    if (!arg_read(&id, words[1], ARG_INT)) {
        msg_info("sorvel: usage: sorvel set cursor <id>");
        return;
    }
    cursor_apply(id);
}

void set_focus(Words words) {
    float place[3] = {};
    if (!args_read_floats(words + 1, place, 3)) {
        msg_info("sorvel: usage: sorvel set focus <x> <y> <z>");
        return;
    }
    view_set_focus(view(), place[0], place[1], place[2]);
}

void set_freerotate(Words words) {
    int32_t on = 0;
    if (!arg_read(&on, words[1], ARG_FLAG)) {
        msg_info("sorvel: usage: sorvel set freerotate <on>");
        return;
    }
    view_set_freerotate(view(), on);
}

void set_pan(Words words) {
    float pan[2] = {};
    if (!args_read_floats(words + 1, pan, 2)) {
        msg_info("sorvel: usage: sorvel set view pan <angle> <pitch>");  // intended: the text of the other form
        return;
    }
    view()->pan_x = pan[0];
    view()->pan_y = pan[1];
}

void set_pointer(Words words) {
    int32_t place[2] = {};
    if (!args_read_ints(words + 1, place, 2)) {
        msg_info("sorvel: usage: sorvel set pointer <x> <y>");
        return;
    }
    pointer_set(place[0], place[1]);
}

void set_points_color_index(Words words) {
    int32_t index = 0;
    if (!arg_read(&index, words[1], ARG_INT)) {
        msg_info("sorvel: usage: sorvel set points_color_index <n>");
        return;
    }
    session_set_points_color(&application()->session, index);
}

void set_matrix(Words words) {
    constexpr char USAGE[] = "sorvel: usage: sorvel set matrix <type> <n1> <n2> .. <n16>";
    constexpr int ELEMENTS = 16;
    const char* type = nullptr;
    if (!arg_read(&type, words[1], ARG_TEXT)) {
        msg_info(USAGE);
        return;
    }
    if (!str_equal(type, "view")) {
        msg_info_format("sorvel: unknown matrix type: %s", type);
        return;
    }
    Mat4 matrix{};
    if (!args_read_floats(words + 2, matrix.m, ELEMENTS)) {
        msg_info(USAGE);
        return;
    }
    view_set_matrix(view(), &matrix);
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

void view_word_rotate(const float* values) { view_rotate(view(), values[0], values[1]); }
void view_word_ortho(const float* values) { view_set_angles(view(), values[0], values[1]); }
void view_word_pan(const float* values) { view_pan_pixels(view(), values[0], values[1], 1); }
void view_word_zoom(const float* values) { view_set_zoom(view(), values[0]); }

void view_word_centre(const float*) {
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
    {"rotate", 2, view_word_rotate, "sorvel: usage: sorvel set view rotate <xangle> <yangle>"},
    {"ortho", 2, view_word_ortho, "sorvel: usage: sorvel set view ortho <angle> <pitch>"},
    {"pan", 2, view_word_pan, "sorvel: usage: sorvel set view pan <angle> <pitch>"},
    {"zoom", 1, view_word_zoom, "sorvel: usage: sorvel set view zoom <factor>"},
    {"centre", 0, view_word_centre, nullptr},
};

void set_view_size(Words words) {
    int32_t size[2] = {};
    if (!args_read_ints(words, size, 2)) {
        msg_info("sorvel: usage: sorvel set view size <width> <height>");
        return;
    }
    view_set_size(size[0], size[1]);
}

void set_view(Words words) {
    const char* name = nullptr;
    if (!arg_read(&name, words[1], ARG_TEXT)) {
        msg_info("sorvel: usage: sorvel set view <name>");
        return;
    }
    for (const NamedView& named : NAMED_VIEWS) {
        if (!str_equal(named.word, name)) { continue; }
        view_set_angles(view(), named.angle, named.pitch);
        return;
    }
    for (const ViewForm& form : VIEW_FORMS) {
        if (!str_equal(form.word, name)) { continue; }
        float values[VIEW_NUMBERS] = {};
        if (args_read_floats(words + 2, values, form.count)) {
            form.run(values);
        } else {
            msg_info(form.usage);
        }
        return;
    }
    if (str_equal(name, "size")) {
        set_view_size(words + 2);
        return;
    }
    msg_info_format("sorvel: unknown view name: %s", name);
}

constexpr VertexTexts SET_VERTEX_TEXTS = {
    "sorvel: usage: sorvel set vertex <args>",    "sorvel: unknown vertex argument: %s",
    "sorvel: usage: sorvel set vertex point <n>", "sorvel: usage: sorvel set vertex normal <n>",
    "sorvel: usage: sorvel set vertex color <n>", "sorvel: usage: sorvel set vertex transparency <n>",
};

void set_vertex(Words words) { vertex_run(words, SET_VERTEX_TEXTS); }

constexpr Command FORMS[] = {
    {"background", set_background},
    {"cursor", set_cursor},
    {"focus", set_focus},
    {"freerotate", set_freerotate},
    {"layer", layer_set_run},
    {"matrix", set_matrix},
    {"pan", set_pan},
    {"pointer", set_pointer},
    {"points_color_index", set_points_color_index},
    {"vertex", set_vertex},
    {"view", set_view},
};

}  // namespace

void cmd_set(Words words) { command_run_sub(words, "set", UNKNOWN_ATTRIBUTE, FORMS); }

}  // namespace pelt
