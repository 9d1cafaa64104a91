// "set layer": the settings of the selected layer of the current model. What surprises: a renamed layer is not
// followed. The selection keeps the old name, so that later forms find no layer until the script selects it again.
#include "application/application.h"
#include "edit/selection.h"
#include "foundation/text.h"
#include "scene/layer.h"
#include "scene/session.h"
#include "script/commands.h"
#include "script/messages.h"

namespace pelt {

namespace {

constexpr int MIRROR_IGNORED = -1;  // a code that the model drops

// Each setter gets the words behind its own and returns 0 when they are not what it wants.
using LayerSetter = int (*)(Model* model, const char* layer, Words words);

int set_name(Model* model, const char* layer, Words words) {
    const char* name = nullptr;
    if (!arg_read(&name, words[0], ARG_TEXT)) { return 0; }
    session_rename_layer(&application()->session, model, layer, name);
    return 1;
}

int set_sides(Model* model, const char* layer, Words words) {
    int32_t sides = 0;
    if (!arg_read(&sides, words[0], ARG_INT)) { return 0; }
    model_set_layer_sides(model, layer, sides);
    return 1;
}

int mirror_code(const char* word) {
    constexpr const char* WORDS[] = {"none", "x", "y", "z"};
    for (int code = 0; code <= AXIS_Z; ++code) {
        if (str_equal(WORDS[code], word)) { return code; }
    }
    return MIRROR_IGNORED;
}

int set_mirror(Model* model, const char* layer, Words words) {
    const char* word = nullptr;
    if (!arg_read(&word, words[0], ARG_TEXT)) { return 0; }
    model_set_layer_mirror(model, layer, mirror_code(word));
    return 1;
}

int set_lighting(Model*, const char*, Words) { return 1; }  // accepted; no setting belongs to it

int set_color(Model* model, const char* layer, Words words) {
    int32_t colour[3] = {};
    if (!args_read_ints(words, colour, 3)) { return 0; }
    model_set_layer_colour(model, layer, colour[0], colour[1], colour[2]);
    return 1;
}

int set_transparency(Model* model, const char* layer, Words words) {
    float value = 0.0f;
    if (!arg_read(&value, words[0], ARG_FLOAT)) { return 0; }
    model_set_layer_transparency(model, layer, value);
    return 1;
}

struct LayerForm {
    const char* word;
    LayerSetter set;
    const char* usage;
};

constexpr char USAGE[] = "sorvel: usage: sorvel set layer <args>";
constexpr LayerForm FORMS[] = {
    {"name", set_name, USAGE},
    {"sides", set_sides, "sorvel: usage: sorvel set layer sides 1|2"},
    {"mirror", set_mirror, "sorvel: usage: sorvel set layer mirror none|x|y|z"},
    {"lighting", set_lighting, nullptr},
    {"color", set_color, "sorvel: usage: sorvel set layer color <r> <g> <b>"},
    {"transparency", set_transparency, "sorvel: usage: sorvel set layer transparency <f>"},
};

}  // namespace

void layer_set_run(Words words) {
    Model* model = command_current_model();
    const char* selected = application()->selected_layer;
    const char* what = nullptr;
    if (model == nullptr) { return; }
    if (selected[0] == '\0') {
        msg_info("sorvel: no layer selected");
        return;
    }
    if (!arg_read(&what, words[1], ARG_TEXT)) {
        msg_info(USAGE);
        return;
    }
    for (const LayerForm& form : FORMS) {
        if (!str_equal(form.word, what)) { continue; }
        if (!form.set(model, selected, words + 2)) { msg_info(form.usage); }
        return;
    }
    msg_info_format("sorvel: unknown layer argument: %s", what);
}

}  // namespace pelt
