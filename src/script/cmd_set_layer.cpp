// "set layer": the settings of the selected layer of the current model. What surprises: a renamed layer is not
// followed. The selection keeps the old name, so that later forms find no layer until the script selects it again.
#include "application/application.h"
#include "edit/history.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "scene/layer.h"
#include "scene/session.h"
#include "script/commands.h"
#include "script/messages.h"

namespace pelt {

namespace {

// Each setter gets the words behind its own and returns 0 when they are not what it wants.
using LayerSetter = int (*)(Model* model, const char* layer, Words words);

int cmd_set_layer_name(Model* model, const char* layer, Words words) {
    const char* name = nullptr;
    if (!arg_read(&name, words[0], ARG_TEXT)) { return 0; }
    session_rename_layer(&application()->session, model, layer, name);
    return 1;
}

int cmd_set_layer_sides(Model* model, const char* layer, Words words) {
    int32_t sides = 0;
    if (!arg_read(&sides, words[0], ARG_INT)) { return 0; }
    model_set_layer_sides(model, layer, sides);
    return 1;
}

int cmd_set_layer_mirror(Model* model, const char* layer, Words words) {
    const char* word = nullptr;
    if (!arg_read(&word, words[0], ARG_TEXT)) { return 0; }
    int code = 0;
    while (code <= AXIS_Z && !str_equal(MIRROR_WORDS[code], word)) { ++code; }
    model_set_layer_mirror(model, layer, code);  // the code behind the last word is one that the model drops
    return 1;
}

int cmd_set_layer_lighting(Model*, const char*, Words) { return 1; }  // accepted; no setting belongs to it

int cmd_set_layer_color(Model* model, const char* layer, Words words) {
    int32_t colour[3] = {};
    if (!args_read_ints(words, colour, 3)) { return 0; }
    model_set_layer_colour(model, layer, colour[0], colour[1], colour[2]);
    return 1;
}

int cmd_set_layer_transparency(Model* model, const char* layer, Words words) {
    float value = 0.0f;
    if (!arg_read(&value, words[0], ARG_FLOAT)) { return 0; }
    model_set_layer_transparency(model, layer, value);
    return 1;
}

struct LayerForm {
    const char* word;
    const char* step;  // what a person reads of it
    LayerSetter set;
    const char* usage;
};

constexpr char USAGE[] = "sorvel: usage: sorvel set layer <args>";
constexpr LayerForm FORMS[] = {
    {"name", "rename layer", cmd_set_layer_name, USAGE},
    {"sides", "layer sides", cmd_set_layer_sides, "sorvel: usage: sorvel set layer sides 1|2"},
    {"mirror", "layer mirror", cmd_set_layer_mirror, "sorvel: usage: sorvel set layer mirror none|x|y|z"},
    {"lighting", "layer lighting", cmd_set_layer_lighting, nullptr},
    {"color", "layer colour", cmd_set_layer_color, "sorvel: usage: sorvel set layer color <r> <g> <b>"},
    {"transparency", "layer transparency", cmd_set_layer_transparency,
     "sorvel: usage: sorvel set layer transparency <f>"},
};

}  // namespace

void cmd_set_layer(Words words) {
    Model* model = command_current_model();
    const char* selected = model != nullptr ? command_selected_layer() : nullptr;
    const char* what = nullptr;
    if (selected == nullptr || !args_or_usage(arg_read(&what, words[1], ARG_TEXT), USAGE)) { return; }
    if (const LayerForm* form = command_find(FORMS, what)) {
        history_command_name(form->step);
        args_or_usage(form->set(model, selected, words + 2), form->usage);
    } else {
        msg_info_format("sorvel: unknown layer argument: %s", what);
    }
}

}  // namespace pelt
