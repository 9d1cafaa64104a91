// The verb "get": values of the view, the scene and the current model. What surprises: unlike every other verb it looks
// at the one word behind it and skips nothing.
#include <string>
#include <vector>

#include "application/application.h"
#include "edit/bounds.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "render/view_matrices.h"
#include "scene/layer.h"
#include "scene/model.h"
#include "scene/point.h"
#include "scene/vertex.h"
#include "script/commands.h"
#include "script/messages.h"
#include "script/tcl_glue.h"
#include "window/cursor.h"

namespace pelt {

namespace {

constexpr float TRANSPARENCY_UNIT = 0.003921569f;  // 1 / 255

void result_colour(const float* colour) {
    const int32_t values[3] = {float_to_int(colour[0]), float_to_int(colour[1]), float_to_int(colour[2])};
    tcl_result_text(fmt_int_list(values, 3));
}

void cmd_get_centre(Words) { command_result_vector(scene_centre(&application()->session)); }

void cmd_get_pan(Words) {
    const ViewState& view = application()->view;
    const float values[2] = {view.pan_x, view.pan_y};
    tcl_result_text(fmt_float_list(values, 2));
}

void cmd_get_pointer(Words) {
    int32_t place[2] = {};
    pointer_get(&place[0], &place[1]);
    tcl_result_text(fmt_int_list(place, 2));
}

void cmd_get_zoom(Words) { tcl_result_text(fmt_float_list(&application()->view.zoom, 1)); }

void cmd_get_matrix(Words words) {
    const char* type = nullptr;
    if (!args_or_usage(arg_read(&type, words[1], ARG_TEXT), "sorvel: usage: sorvel get matrix <type>")) { return; }
    if (!str_equal(type, "view")) {
        msg_info_format("sorvel: unknown matrix type: %s", type);
        return;
    }
    Mat4 matrix;
    view_get_matrix(&application()->view, &matrix);
    tcl_result_text(fmt_matrix(matrix.m));
}

// Vertices.

void cmd_get_vertex_list(const Model* model) {
    std::vector<int32_t> ids;
    ids.reserve(static_cast<size_t>(model_count_points(model)));
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) { ids.push_back(point.int_key()); }
    if (!ids.empty()) { tcl_result_text(fmt_int_list(ids.data(), static_cast<int32_t>(ids.size()))); }
}

void cmd_get_vertex_point(const Point* point) {
    command_result_vector(*point_posed_position(&application()->session, point));
}

void cmd_get_vertex_normal(const Point* point) {
    command_result_vector(*point_posed_normal(&application()->session, point));
}

void cmd_get_vertex_color(const Point* point) {
    float colour[4];
    point_get_colour(colour, point);
    result_colour(colour);
}

void cmd_get_vertex_transparency(const Point* point) {
    float colour[4];
    point_get_colour(colour, point);
    const float value = colour[3] * TRANSPARENCY_UNIT;
    tcl_result_text(fmt_float_list(&value, 1));
}

struct VertexQuery {
    const char* word;
    void (*run)(const Point* point);
};

constexpr VertexQuery VERTEX_QUERIES[] = {
    {"point", cmd_get_vertex_point},
    {"normal", cmd_get_vertex_normal},
    {"color", cmd_get_vertex_color},
    {"transparency", cmd_get_vertex_transparency},
};

void cmd_get_vertex(Words words) {
    constexpr char USAGE[] = "sorvel: usage: sorvel get vertex <args>";
    const Model* model = command_current_model();
    const char* what = nullptr;
    int32_t id = 0;
    if (model == nullptr || !args_or_usage(arg_read(&what, words[1], ARG_TEXT), USAGE)) { return; }
    if (str_equal(what, "list")) {
        cmd_get_vertex_list(model);
        return;
    }
    if (!args_or_usage(arg_read(&id, words[2], ARG_INT), USAGE)) { return; }
    // The look-up comes before the word is compared: an absent point hides a wrong word.
    const Point* point = model_find_point(model, id);
    if (point == nullptr) {
        tcl_result_text("unknown");
    } else if (const VertexQuery* query = command_find(VERTEX_QUERIES, what)) {
        query->run(point);
    } else {
        msg_info_format("sorvel: unknown vertex argument: %s", what);
    }
}

// Layers.

void cmd_get_layer_names(const Model* model) {
    std::string names;
    const auto layers = list_elements<Layer>(model->layers);
    for (auto layer = layers.begin(); layer != layers.end(); ++layer) {
        names += layer.text_key();
        names += ' ';
    }
    tcl_result_text(names.c_str());
}

void cmd_get_layer_sides(const Model* model, const char* name) {
    tcl_result_text(model_layer_sides(model, name) == 2 ? "double" : "single");
}

void cmd_get_layer_mirror(const Model* model, const char* name) {
    const int code = model_layer_mirror(model, name);
    tcl_result_text(code >= 0 && code <= AXIS_Z ? MIRROR_WORDS[code] : "unknown");
}

void cmd_get_layer_lighting(const Model*, const char*) { tcl_result_text("unknown"); }

void cmd_get_layer_color(const Model* model, const char* name) {
    float colour[4];
    model_layer_colour(model, name, colour);
    result_colour(colour);
}

void cmd_get_layer_transparency(const Model* model, const char* name) {
    const float value = model_layer_transparency(model, name);
    tcl_result_text(fmt_float_list(&value, 1));
}

struct LayerQuery {
    const char* word;
    void (*run)(const Model* model, const char* layer);
};

constexpr LayerQuery LAYER_QUERIES[] = {
    {"sides", cmd_get_layer_sides},
    {"mirror", cmd_get_layer_mirror},
    {"lighting", cmd_get_layer_lighting},
    {"color", cmd_get_layer_color},
    {"transparency", cmd_get_layer_transparency},
};

void cmd_get_layer(Words words) {
    const Model* model = command_current_model();
    const char* what = nullptr;
    if (model == nullptr) { return; }
    if (!args_or_usage(arg_read(&what, words[1], ARG_TEXT), "sorvel: usage: sorvel get layer <args>")) { return; }
    if (str_equal(what, "names")) {
        cmd_get_layer_names(model);
        return;
    }
    const char* selected = command_selected_layer();
    if (selected == nullptr) { return; }
    if (const LayerQuery* query = command_find(LAYER_QUERIES, what)) {
        query->run(model, selected);
    } else {
        // Intended: the text names the selected layer, not the word that was refused.
        msg_info_data_format("sorvel: unknown layer argument: %s", selected);
    }
}

constexpr Command FORMS[] = {
    {"centre", cmd_get_centre},   {"layer", cmd_get_layer},   {"matrix", cmd_get_matrix}, {"pan", cmd_get_pan},
    {"pointer", cmd_get_pointer}, {"vertex", cmd_get_vertex}, {"zoom", cmd_get_zoom},
};

}  // namespace

void cmd_get(Words words) {
    const char* what = words[1];
    const Command* found = what != nullptr ? command_find(FORMS, what) : nullptr;
    if (found != nullptr) {
        found->run(words + 1);
    } else {
        command_unknown(UNKNOWN_ATTRIBUTE, "get", what != nullptr ? what : words[0]);
    }
}

}  // namespace pelt
