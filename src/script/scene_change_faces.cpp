// The forms of "scene" that make, change and take out faces, lines, points and layers, and those that tell which points
// belong together.
#include <charconv>
#include <cstring>

#include "application/application.h"
#include "edit/delete_parts.h"
#include "edit/duplicate.h"
#include "edit/history.h"
#include "edit/make_face.h"
#include "edit/point_sets.h"
#include "edit/rebuild_normals.h"
#include "edit/weld.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

Session* session() { return &application()->session; }

bool is(const char* word, const char* wanted) { return std::strcmp(word, wanted) == 0; }

// ---- names of faces and lines ----

bool read_name(const char* word, PrimitiveName* name) {
    *name = {PrimitiveKind::TRIANGLE, 0};
    if (word[0] == 'p') { name->kind = PrimitiveKind::POLYGON; }
    if (word[0] == 'l') { name->kind = PrimitiveKind::LINE; }
    const char* number = word + (name->kind == PrimitiveKind::TRIANGLE ? 0 : 1);
    const char* end = number + std::strlen(number);
    const auto read = std::from_chars(number, end, name->id);
    return read.ec == std::errc{} && read.ptr == end && number != end && name->id > 0;
}

// One or more faces, or lines.
bool read_primitives(const char* what, const char* word, bool lines, std::vector<PrimitiveName>* names) {
    const char* allowed = lines ? "one or more lines, such as l12" : "one or more faces, such as 12 or p12";
    std::vector<std::string> words;
    if (!scene_read_list(what, word, allowed, &words)) { return false; }
    for (const std::string& each : words) {
        PrimitiveName name{};
        if (!read_name(each.c_str(), &name) || (name.kind == PrimitiveKind::LINE) != lines) {
            scene_refuse_argument(what, each.c_str(), allowed);
            return false;
        }
        names->push_back(name);
    }
    if (names->empty()) { scene_refuse_argument(what, word, allowed); }
    return !names->empty();
}

Tcl_Obj* reply_ids(const std::vector<int32_t>& ids) {
    ReplyList list;
    for (const int32_t id : ids) { list.add(reply_int(id)); }
    return list.value();
}

Tcl_Obj* reply_made(const MadeParts& made) {
    ReplyList faces, lines;
    for (const PrimitiveName& name : made.primitives) {
        (name.kind == PrimitiveKind::LINE ? lines : faces).add(reply_text(primitive_text(name)));
    }
    return ReplyList()
        .add("points", reply_ids(made.points))
        .add("faces", faces.value())
        .add("lines", lines.value())
        .value();
}

// ---- face ----

bool read_form(const char* word, FaceForm* form) {
    static constexpr struct {
        const char* word;
        FaceForm form;
    } FORMS[] = {{"triangle", FaceForm::TRIANGLE},
                 {"quad", FaceForm::QUAD},
                 {"polygon", FaceForm::POLYGON},
                 {"curved", FaceForm::CURVED}};
    for (const auto& each : FORMS) {
        if (is(word, each.word)) {
            *form = each.form;
            return true;
        }
    }
    scene_refuse_argument("kind", word, "triangle, quad, polygon, curved");
    return false;
}

Tcl_Obj* run_face(const SceneWords& words) {
    SceneModel found{};
    const Layer* layer = nullptr;
    FaceWish wish{};
    if (!scene_read_model(words.raw(0), &found) || !scene_read_layer(found.model, words, 1, &layer) ||
        !read_form(words.raw(2), &wish.form)) {
        return nullptr;
    }
    const bool curved = wish.form == FaceForm::CURVED;
    if (words.has(4) != curved) {
        return scene_refuse_argument("kind", words.raw(2), curved ? "followed by its type" : "followed by its points");
    }
    if ((curved && !scene_read_int("type", words.raw(3), 1, 4, &wish.curve_type)) ||
        !scene_read_points(found.model, words.raw(words.count - 1), &wish.points, SCENE_POINTS_ALL)) {
        return nullptr;
    }
    history_command_name("new face");
    PrimitiveName made{};
    EditRefusal refused;
    if (!edit_add_face(session(), found.model, layer, wish, &made, &refused)) { return scene_refuse_edit(refused); }
    return reply_text(primitive_text(made));
}

// ---- delete and duplicate ----

enum class Parts { POINTS, FACES, LINES, LAYERS };

// With layers, where those can be meant.
bool read_parts(const char* word, bool layers, Parts* parts) {
    static constexpr const char* WORDS[] = {"-points", "-faces", "-lines", "-layers"};
    for (int i = 0; i < (layers ? 4 : 3); ++i) {
        if (is(word, WORDS[i])) {
            *parts = static_cast<Parts>(i);
            return true;
        }
    }
    scene_refuse_argument("option", word, layers ? "-points, -faces, -lines, -layers" : "-points, -faces, -lines");
    return false;
}

Tcl_Obj* reply_deleted(bool done, const DeletedParts& deleted, const EditRefusal& refused) {
    if (!done) { return scene_refuse_edit(refused); }
    return ReplyList()
        .add("points", reply_int(deleted.points))
        .add("faces", reply_int(deleted.faces))
        .add("lines", reply_int(deleted.lines))
        .add("layers", reply_int(deleted.layers))
        .value();
}

Tcl_Obj* delete_points(Model* model, const char* word) {
    std::vector<int32_t> ids;
    if (!scene_read_points(model, word, &ids)) { return nullptr; }
    history_command_name("delete points");
    DeletedParts deleted{};
    EditRefusal refused;
    const bool done = edit_delete_points(session(), model, ids, &deleted, &refused);
    return reply_deleted(done, deleted, refused);
}

Tcl_Obj* delete_layers(Model* model, const char* word) {
    std::vector<const Layer*> layers;
    if (!scene_read_layers(model, word, &layers)) { return nullptr; }
    history_command_name("delete layers");
    DeletedParts deleted{};
    EditRefusal refused;
    const bool done = edit_delete_layers(session(), model, layers, &deleted, &refused);
    return reply_deleted(done, deleted, refused);
}

Tcl_Obj* run_delete(const SceneWords& words) {
    SceneModel found{};
    Parts parts{};
    if (!scene_read_model(words.raw(0), &found) || !read_parts(words.raw(1), true, &parts)) { return nullptr; }
    if (parts == Parts::POINTS) { return delete_points(found.model, words.raw(2)); }
    if (parts == Parts::LAYERS) { return delete_layers(found.model, words.raw(2)); }
    const bool lines = parts == Parts::LINES;
    std::vector<PrimitiveName> names;
    if (!read_primitives(lines ? "line" : "face", words.raw(2), lines, &names)) { return nullptr; }
    history_command_name(lines ? "delete lines" : "delete faces");
    DeletedParts deleted{};
    EditRefusal refused;
    const bool done = edit_delete_primitives(session(), found.model, names, &deleted, &refused);
    return reply_deleted(done, deleted, refused);
}

Tcl_Obj* run_duplicate(const SceneWords& words) {
    SceneModel found{};
    Parts parts{};
    std::vector<int32_t> ids;
    std::vector<PrimitiveName> names;
    if (!scene_read_model(words.raw(0), &found) || !read_parts(words.raw(1), false, &parts)) { return nullptr; }
    const bool lines = parts == Parts::LINES;
    const bool read = parts == Parts::POINTS ? scene_read_points(found.model, words.raw(2), &ids)
                                             : read_primitives(lines ? "line" : "face", words.raw(2), lines, &names);
    if (!read) { return nullptr; }
    history_command_name("duplicate");
    MadeParts made;
    EditRefusal refused;
    const bool done = parts == Parts::POINTS
                          ? edit_duplicate_points(session(), found.model, ids, &made, &refused)
                          : edit_duplicate_primitives(session(), found.model, names, &made, &refused);
    return done ? reply_made(made) : scene_refuse_edit(refused);
}

// ---- flip, extrude, weld, normals ----

bool read_faces(const SceneWords& words, SceneModel* found, std::vector<PrimitiveName>* names) {
    return scene_read_model(words.raw(0), found) && read_primitives("face", words.raw(1), false, names);
}

Tcl_Obj* run_flip(const SceneWords& words) {
    SceneModel found{};
    std::vector<PrimitiveName> names;
    if (!read_faces(words, &found, &names)) { return nullptr; }
    history_command_name("flip faces");
    EditRefusal refused;
    return edit_flip(session(), found.model, names, &refused) ? reply_nothing() : scene_refuse_edit(refused);
}

Tcl_Obj* run_extrude(const SceneWords& words) {
    SceneModel found{};
    std::vector<PrimitiveName> names;
    Vec3 by{};
    if (!read_faces(words, &found, &names) || !scene_read_finite("dx", words.raw(2), &by.x) ||
        !scene_read_finite("dy", words.raw(3), &by.y) || !scene_read_finite("dz", words.raw(4), &by.z)) {
        return nullptr;
    }
    history_command_name("extrude faces");
    MadeParts made;
    EditRefusal refused;
    if (!edit_extrude(session(), found.model, names, by, &made, &refused)) { return scene_refuse_edit(refused); }
    return reply_made(made);
}

Tcl_Obj* run_weld(const SceneWords& words) {
    SceneModel found{};
    std::vector<int32_t> ids;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_points(found.model, words.raw(1), &ids)) {
        return nullptr;
    }
    history_command_name("weld points");
    EditRefusal refused;
    if (!edit_weld(session(), found.model, ids, &refused)) { return scene_refuse_edit(refused); }
    return reply_int(ids.front());
}

Tcl_Obj* run_normals(const SceneWords& words) {
    SceneModel found{};
    const Layer* layer = nullptr;
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    if (words.has(1)) {
        if (!is(words.raw(1), "-layer")) { return scene_refuse_argument("option", words.raw(1), "-layer"); }
        if (!words.has(2)) { return scene_refuse_argument("option", words.raw(1), "followed by the name of a layer"); }
        if (!scene_read_layer(found.model, words, 2, &layer)) { return nullptr; }
    }
    history_command_name("rebuild normals");
    EditRefusal refused;
    if (!edit_rebuild_normals(session(), found.model, layer, &refused)) { return scene_refuse_edit(refused); }
    return reply_nothing();
}

// ---- select ----

bool read_likeness(const char* word, PointLikeness* likeness) {
    static constexpr const char* WORDS[] = {"layer", "normal", "colour"};
    for (int i = 0; i < 3; ++i) {
        if (is(word, WORDS[i])) {
            *likeness = static_cast<PointLikeness>(i);
            return true;
        }
    }
    scene_refuse_argument("word", word, "layer, normal, colour");
    return false;
}

Tcl_Obj* run_select(const SceneWords& words) {
    const char* what = words.raw(0);
    const bool like = is(what, "like");
    if (!like && !is(what, "linked") && !is(what, "grow") && !is(what, "invert")) {
        return scene_refuse_argument("word", what, "linked, grow, invert, like");
    }
    if (words.has(3) != like) {
        return scene_refuse_argument(
            "word", what, like ? "followed by points and layer, normal or colour" : "followed by points alone");
    }
    SceneModel found{};
    std::vector<int32_t> ids;
    PointLikeness likeness{};
    if (!scene_read_model(words.raw(1), &found) ||
        !scene_read_points(found.model, words.raw(2), &ids, SCENE_POINTS_OR_NONE) ||
        (like && !read_likeness(words.raw(3), &likeness))) {
        return nullptr;
    }
    switch (what[0]) {
        case 'g': return reply_ids(points_grown(found.model, ids));
        case 'i': return reply_ids(points_inverted(found.model, ids));
        default: return reply_ids(like ? points_like(found.model, ids, likeness) : points_linked(found.model, ids));
    }
}

constexpr SceneForm FORMS[] = {
    {"face", "ID LAYER KIND ?TYPE? POINTS", 4, 5, "makes a triangle, quad, polygon or curved face: its name", run_face},
    {"delete", "ID WHAT LIST", 3, 3, "takes out points, faces, lines or layers: how many went", run_delete},
    {"flip", "ID FACES", 2, 2, "turns faces over", run_flip},
    {"duplicate", "ID WHAT LIST", 3, 3, "copies points, faces or lines in place: what was made", run_duplicate},
    {"weld", "ID POINTS", 2, 2, "makes points one, the first of them: its id", run_weld},
    {"extrude", "ID FACES DX DY DZ", 5, 5, "draws faces out of the surface: what was made", run_extrude},
    {"normals", "ID ?-layer NAME?", 1, 3, "makes the normals anew from the faces", run_normals},
    {"select", "WHAT ID POINTS ?BY?", 3, 4, "the points that are linked with points, around, beside or like them",
     run_select},
};

}  // namespace

std::span<const SceneForm> scene_face_change_forms() { return FORMS; }

bool scene_read_primitives(const char* what, const char* word, bool lines, std::vector<PrimitiveName>* names) {
    return read_primitives(what, word, lines, names);
}

}  // namespace pelt
