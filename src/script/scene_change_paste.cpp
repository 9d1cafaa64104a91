// The forms of "scene" that carry points, faces and layers from one model to another. What was copied belongs to the
// library: it lasts when its model is gone.
#include "application/application.h"
#include "edit/clipboard.h"
#include "edit/history.h"
#include "scene/model.h"
#include "script/scene_call.h"
#include "script/scene_lists.h"
#include "script/scene_options.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

Session* session() { return &application()->session; }

// Never destroyed: scripts may still run while the process ends.
Clipboard& clipboard() {
    static auto& copied = *new Clipboard{};
    return copied;
}

Tcl_Obj* copy_parts(const SceneWords& words) {
    SceneModel found{};
    CopyRequest wanted;
    EditRefusal refused;
    if (!scene_read_model(words.raw(0), &found) ||
        !scene_read_options(
            words, 1,
            {
                {"-points", [&](const char* word) { return scene_read_points(found.model, word, &wanted.points); }},
                {"-faces",
                 [&](const char* word) { return scene_read_primitives("face", word, false, &wanted.primitives); }},
                {"-lines",
                 [&](const char* word) { return scene_read_primitives("line", word, true, &wanted.primitives); }},
                {"-layers", [&](const char* word) { return scene_read_layers(found.model, word, &wanted.layers); }},
            })) {
        return nullptr;
    }
    if (!edit_copy(found.model, wanted, &clipboard(), &refused)) { return scene_refuse_edit(refused); }
    size_t faces = 0;
    size_t lines = 0;
    for (const CopiedLayer& layer : clipboard().layers) {
        faces += layer.triangles.size() + layer.polygons.size();
        lines += layer.lines.size();
    }
    return ReplyList()
        .add("points", reply_int(static_cast<int64_t>(clipboard().points.size())))
        .add("faces", reply_int(static_cast<int64_t>(faces)))
        .add("lines", reply_int(static_cast<int64_t>(lines)))
        .add("layers", reply_int(static_cast<int64_t>(clipboard().layers.size())))
        .value();
}

Tcl_Obj* pasted_value(const Pasted& pasted) {
    ReplyList points, faces, lines, layers;
    for (const int32_t id : pasted.points) { points.add(reply_int(id)); }
    for (const PrimitiveName& name : pasted.primitives) {
        (name.kind == PrimitiveKind::LINE ? lines : faces).add(reply_text(primitive_text(name)));
    }
    for (const std::string& name : pasted.layers) { layers.add(reply_text(name)); }
    return ReplyList()
        .add("points", points.value())
        .add("faces", faces.value())
        .add("lines", lines.value())
        .add("layers", layers.value())
        .value();
}

Tcl_Obj* paste_parts(const SceneWords& words) {
    SceneModel found{};
    PasteRequest wanted{nullptr, {0.0f, 0.0f, 0.0f}, scene_absolute_path};
    Pasted pasted;
    EditRefusal refused;
    const auto read_layer = [&](const char* word) {
        const SceneWords name{1, &word};
        return scene_read_layer(found.model, name, 0, &wanted.layer);
    };
    if (!scene_read_model(words.raw(0), &found) ||
        !scene_read_options(words, 1,
                            {
                                {"-layer", read_layer},
                                {"-move", [&](const char* word) { return scene_read_vec("move", word, &wanted.move); }},
                            })) {
        return nullptr;
    }
    history_command_name("paste");
    if (!edit_paste(session(), found.model, clipboard(), wanted, &pasted, &refused)) {
        return scene_refuse_edit(refused);
    }
    return pasted_value(pasted);
}

constexpr SceneForm FORMS[] = {
    {"copy", "ID ?-points LIST? ?-faces LIST? ?-lines LIST? ?-layers NAMES?", 3, 9,
     "keeps points, faces, lines and layers of a model with what they need, to be pasted", copy_parts},
    {"paste", "ID ?-layer NAME? ?-move VECTOR?", 1, 5, "puts into a model what was copied last", paste_parts},
};

}  // namespace

std::span<const SceneForm> scene_paste_forms() { return FORMS; }

}  // namespace pelt
