// The form of "scene" that writes models and the scene to files.
#include <cstring>

#include "application/application.h"
#include "application/scene_save.h"
#include "foundation/text.h"
#include "scene/session.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

bool read_option(const char* word, SaveWish* wish) {
    struct Option {
        const char* word;
        bool SaveWish::*flag;
    };
    static constexpr Option OPTIONS[] = {
        {"-force", &SaveWish::force}, {"-whole", &SaveWish::whole}, {"-round", &SaveWish::round}};
    for (const Option& option : OPTIONS) {
        if (std::strcmp(option.word, word) == 0) {
            wish->*option.flag = true;
            return true;
        }
    }
    return false;
}

// Told when all is done: the procedure may do anything.
void tell_shift(float shift) {
    if (shift > 0.0f) { session_say(&application()->session, ("Rounded by up to " + real_text(shift)).c_str()); }
}

Tcl_Obj* save_scene(const SceneWords& words) {
    if (!words.has(1) || words.raw(1)[0] == '\0' || words.has(2)) {
        return scene_refuse(PROBLEM_ARGUMENT, "wrong # args: should be \"sorvel scene save scene FILE\"");
    }
    SaveDone done;
    return scene_save_as_model(application(), words.text(1), &done) ? reply_text(done.path) : scene_refuse_load();
}

Tcl_Obj* save(const SceneWords& words) {
    if (std::strcmp(words.raw(0), "scene") == 0) { return save_scene(words); }
    SaveWish wish;
    SceneModel found{};
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    wish.model = found.model;
    for (int i = 1; i < words.count; ++i) {
        const char* word = words.raw(i);
        if (read_option(word, &wish)) { continue; }
        if (word[0] == '-') { return scene_refuse_argument("option", word, "-force, -whole or -round"); }
        if (i > 1 || word[0] == '\0') { return scene_refuse_argument("file", word, "one name, before the options"); }
        wish.file = words.text(i);
    }
    SaveDone done;
    if (!scene_save(application(), wish, &done)) { return scene_refuse_load(); }
    tell_shift(done.shift);
    return reply_text(done.path);
}

constexpr SceneForm FORMS[] = {
    {"save", "ID ?FILE? ?-force? ?-whole? ?-round?", 1, 5,
     "writes a model to its file, or to another one; scene FILE: the scene as a model of children", save},
};

}  // namespace

std::span<const SceneForm> scene_save_forms() { return FORMS; }

}  // namespace pelt
