// The verb "display": reads and changes the drawing options. What surprises: a flag keeps the number it was given, and
// "smooth" never becomes on: setting it pulls in the texture coordinates of all models once more instead.
#include <algorithm>

#include "application/application.h"
#include "edit/history.h"
#include "render/frame.h"
#include "script/commands.h"
#include "script/tcl_glue.h"

namespace pelt {

namespace {

constexpr int32_t LOD_LIMIT = 6;

struct DisplayOption {
    const char* word;
    int32_t Session::*flag;
};

// One row for each option that a script can name. "lod" and "smooth" are more than plain flags.
// No row for the control net and the curve path: no word reaches them, and both stay 0.
constexpr DisplayOption OPTIONS[] = {
    {"backfaces", &Session::display_backfaces}, {"curves", &Session::display_curves},
    {"gouraud", &Session::display_gouraud},     {"lighting", &Session::display_lighting},
    {"lines", &Session::display_lines},         {"lod", &Session::display_lod},
    {"mirror", &Session::display_mirror},       {"normals", &Session::display_normals},
    {"pnfilter", &Session::display_pnfilter},   {"points", &Session::display_points},
    {"quadlines", &Session::display_quadlines}, {"reflect", &Session::display_reflect},
    {"skeleton", &Session::display_skeleton},   {"smooth", &Session::display_smooth},
    {"textures", &Session::display_textures},   {"transparency", &Session::display_transparency},
    {"triangles", &Session::display_triangles}, {"wireframe", &Session::display_wireframe},
};

void set_lod(Session* session, const char* word) {
    int32_t level = 0;
    if (args_or_usage(arg_read(&level, word, ARG_INT), "sorvel: usage: sorvel display lod <n>")) {
        session->display_lod = std::clamp<int32_t>(level, 0, LOD_LIMIT);
    }
}

void set_flag(Session* session, const DisplayOption& option, const char* word) {
    int32_t value = 0;
    if (!args_or_usage(arg_read(&value, word, ARG_FLAG), "sorvel: usage: sorvel display <option> <on>")) { return; }
    if (option.flag == &Session::display_smooth) {
        history_command_name("smooth textures");
        session_set_smooth(session, value);
    } else {
        session->*option.flag = value;
    }
}

void tell_or_set(const DisplayOption& option, const char* value) {
    Session* session = &application()->session;
    const bool is_lod = option.flag == &Session::display_lod;
    if (value == nullptr) {
        tcl_result_text(is_lod ? fmt_int(session->display_lod) : fmt_on_off(session->*option.flag));
    } else if (is_lod) {
        set_lod(session, value);
    } else {
        set_flag(session, option, value);
    }
}

}  // namespace

void cmd_display(Words words) {
    const char* last = "";
    if (const DisplayOption* option = command_search(OPTIONS, &words, &last)) {
        tell_or_set(*option, words[1]);
    } else {
        command_unknown(UNKNOWN_ATTRIBUTE, "display", last);
    }
}

}  // namespace pelt
