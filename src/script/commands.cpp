// The table of verbs, and what handlers share.
#include "script/commands.h"

#include "application/application.h"
#include "edit/history.h"
#include "edit/selection.h"
#include "foundation/math3d.h"
#include "script/messages.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

constexpr Command VERBS[] = {
    {"add", cmd_add},       {"animate", cmd_animate}, {"callback", cmd_callback}, {"create", cmd_create},
    {"delete", cmd_delete}, {"display", cmd_display}, {"draw", cmd_draw},         {"file", cmd_file},
    {"find", cmd_find},     {"get", cmd_get},         {"reload", cmd_reload},     {"reset", cmd_reset},
    {"set", cmd_set},       {"select", cmd_select},
};

}  // namespace

void command_unknown(UnknownKind kind, const char* verb, const char* last_word) {
    msg_info_format(kind == UNKNOWN_COMMAND ? "sorvel: unknown %s command: %s" : "sorvel: unknown %s attribute: %s",
                    verb, last_word);
}

void command_run_sub(Words words, const char* verb, UnknownKind kind, std::span<const Command> table) {
    const char* last = "";
    if (const Command* found = command_search(table, &words, &last)) {
        if (found->step != nullptr) { history_command_name(found->step); }
        found->run(words);
    } else {
        command_unknown(kind, verb, last);
    }
}

bool args_or_usage(bool read, const char* usage) {
    if (!read) { msg_info(usage); }
    return read;
}

Model* command_current_model() {
    Model* model = selection_current_model(&application()->session);
    if (model == nullptr) { msg_info("sorvel: no model selected"); }
    return model;
}

const char* command_selected_layer() {
    const char* name = application()->selected_layer;
    if (name[0] != '\0') { return name; }
    msg_info("sorvel: no layer selected");
    return nullptr;
}

void command_result_vector(const Vec3& vector) {
    const float values[3] = {vector.x, vector.y, vector.z};
    tcl_result_text(fmt_float_list(values, 3));
}

void command_result_id(int32_t id, const char* failure) {
    tcl_result_text(fmt_int(id));
    if (id == 0) { msg_info(failure); }
}

void cmd_dispatch(Words words) {
    const char* last = nullptr;
    if (const Command* found = command_search(VERBS, &words, &last)) {
        found->run(words);
    } else if (last != nullptr) {
        msg_info_format("sorvel: unknown command: %s", last);
    }
}

}  // namespace pelt
