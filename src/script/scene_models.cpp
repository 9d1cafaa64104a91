// The forms of "scene" that ask about models.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "application/application.h"
#include "application/scene_load.h"
#include "formats/model_writer.h"
#include "foundation/file_access.h"
#include "motion/placement_text.h"
#include "motion/scene_walk.h"
#include "motion/transform_state.h"
#include "render/view_matrices.h"
#include "scene/layer_points.h"
#include "scene/vertex.h"
#include "script/scene_call.h"
#include "script/scene_reply.h"

namespace pelt {

namespace {

constexpr float GOURAUD_MOST = 255.0f;
constexpr float FAR = std::numeric_limits<float>::infinity();
constexpr Vec3 NOWHERE_LOW{FAR, FAR, FAR};
constexpr Vec3 NOWHERE_HIGH{-FAR, -FAR, -FAR};
constexpr const char* SLOT_WORDS[LAYER_IMAGE_SLOTS] = {"base", "mirror", "reflection"};

Session* session() { return &application()->session; }

Tcl_Obj* reply_count(int32_t count) { return reply_int(count); }

// ---- the tree ----

struct LayerCounts {
    int64_t triangles = 0;  // of the flat surface: a quad counts two
    int64_t faces = 0;      // triangles and quads, one each
};

LayerCounts count_layer(const Layer& layer) {
    LayerCounts counts;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        counts.triangles += triangle.quad ? 2 : 1;
        ++counts.faces;
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
        counts.triangles += std::max(polygon.vertex_count - 2, 0);
    }
    return counts;
}

ReplyList& add_layer_counts(const Layer& layer, ReplyList& to) {
    const LayerCounts counts = count_layer(layer);
    return to.add("triangles", reply_int(counts.triangles))
        .add("faces", reply_int(counts.faces))
        .add("polygons", reply_count(list_count(&layer.polygons)))
        .add("lines", reply_count(list_count(&layer.lines)))
        .add("uvees", reply_count(list_count(&layer.uvees)));
}

Tcl_Obj* tree_layers(const Model* model) {
    ReplyList layers;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        ReplyList entry;
        entry.add("name", reply_text(layer.name)).add("hidden", reply_flag(layer.hidden != 0));
        layers.add(add_layer_counts(layer, entry).value());
    }
    return layers.value();
}

Tcl_Obj* tree_children(Model* model, int depth);

void add_model(Model* model, int depth, ReplyList* entry) {
    entry->add("points", reply_count(list_count(&model->points)))
        .add("joints", reply_count(list_count(&model->joints)))
        .add("layers", tree_layers(model))
        .add("children", tree_children(model, depth));
}

Tcl_Obj* tree_children(Model* model, int depth) {
    ReplyList children;
    if (depth >= MODEL_TREE_DEPTH_LIMIT) { return children.value(); }
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        const ChildState* state = child_state(session(), &link);
        ReplyList entry;
        entry.add("id", reply_text(scene_child_name(state != nullptr ? state->id : 0)))
            .add("name", reply_text(link.name))
            .add("file", reply_text(link.model != nullptr ? model_file(link.model) : std::string()))
            .add("lent", reply_flag(link.borrowed != 0));
        // What is lent stands as a model of its own, with all that is in it.
        if (link.model != nullptr && !link.borrowed) { add_model(link.model, depth + 1, &entry); }
        children.add(entry.value());
    }
    return children.value();
}

Tcl_Obj* ask_tree(const SceneWords&) {
    ReplyList roots;
    for (const RootModel& root : list_elements<RootModel>(session()->root_models)) {
        const ModelState* state = model_state(session(), root.model);
        ReplyList entry;
        entry.add("id", reply_int(state != nullptr ? state->id : 0))
            .add("name", reply_text(root.model->name))
            .add("file", reply_text(model_file(root.model)))
            .add("row", reply_int(root.row))
            .add("changes", reply_int(model_tree_changes(root.model)));
        add_model(root.model, 0, &entry);
        roots.add(entry.value());
    }
    return roots.value();
}

// ---- layers and their images ----

Tcl_Obj* axis_text(int code) { return reply_text(code != 0 ? axis_word(code) : ""); }

Tcl_Obj* image_entry(const Model* model, const LayerImage* image, int slot, const char* layer) {
    const std::string file = model_directory(model) + image->names[slot];
    ReplyList entry;
    if (layer != nullptr) { entry.add("layer", reply_text(layer)); }
    return entry.add("slot", reply_text(SLOT_WORDS[slot]))
        .add("name", reply_text(image->names[slot]))
        .add("file", reply_text(file))
        .add("there", reply_flag(file_exists(file.c_str()) != 0))
        .add("width", reply_int(image->width[slot]))
        .add("height", reply_int(image->height[slot]))
        .value();
}

void add_images(const Model* model, const Layer& layer, bool name_layer, ReplyList* images) {
    const LayerImage* image = layer_first_image(&layer);
    for (int slot = 0; image != nullptr && slot < LAYER_IMAGE_SLOTS; ++slot) {
        if (image->names[slot][0] == '\0') { continue; }
        images->add(image_entry(model, image, slot, name_layer ? layer.name : nullptr));
    }
}

Tcl_Obj* ints(const int32_t* values, int count) {
    ReplyList list;
    for (int i = 0; i < count; ++i) { list.add(reply_int(values[i])); }
    return list.value();
}

Tcl_Obj* layer_value(const Model* model, const Layer& layer) {
    const LayerImage* image = layer_first_image(&layer);
    ReplyList images;
    add_images(model, layer, false, &images);
    ReplyList repeat;
    if (layer.image_repeat != 0) { repeat.add(reply_real(layer.repeat_u)).add(reply_real(layer.repeat_v)); }
    ReplyList axes;
    if (image != nullptr) { axes.add(axis_text(layer.image_axis_u)).add(axis_text(layer.image_axis_v)); }
    ReplyList result;
    result.add("name", reply_text(layer.name))
        .add("hidden", reply_flag(layer.hidden != 0))
        .add("colour", ints(layer.colour, 3))
        .add("sides", reply_int(layer.singlesided != 0 ? 1 : 2))
        .add("mirror", axis_text(layer.mirror != 0 ? layer.mirror_axis : 0))
        .add("transparency", reply_real(layer.transparency))
        // Blending is set up where a texture is.
        .add("seen", reply_flag(image != nullptr && image->pixels[IMAGE_SLOT_BASE] != nullptr))
        .add("key", ints(layer.invisible_colour, layer.invisible != 0 ? 3 : 0))
        .add("images", images.value())
        .add("axes", axes.value())
        .add("repeat", repeat.value())
        .add("reflection", reply_real(image != nullptr ? image->reflection : 0.0f));
    return add_layer_counts(layer, result).value();
}

Tcl_Obj* ask_layer(const SceneWords& words) {
    SceneModel found{};
    const Layer* layer = nullptr;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_layer(found.model, words, 1, &layer)) { return nullptr; }
    return layer_value(found.model, *layer);
}

Tcl_Obj* ask_images(const SceneWords& words) {
    SceneModel found{};
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    ReplyList images;
    for (const Layer& layer : list_elements<Layer>(found.model->layers)) {
        add_images(found.model, layer, true, &images);
    }
    return images.value();
}

// ---- points ----

bool uses_point(const Layer& layer, int32_t id) {
    bool used = false;
    for_each_corner(layer, [&](int32_t corner) { used |= corner == id; });
    return used;
}

Tcl_Obj* colour_value(const Point* point) {
    float colour[4];
    point_get_colour(colour, point);
    ReplyList list;
    for (int i = 0; i < 3; ++i) { list.add(reply_int(std::lround(colour[i]))); }
    return list.value();
}

Tcl_Obj* point_value(const Model* model, int32_t id, const Point* point) {
    ReplyList joints;
    for (const Joint* joint : {point->joint_a, point->joint_b}) {
        if (joint != nullptr) { joints.add(reply_text(joint->name)); }
    }
    ReplyList layers;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (uses_point(layer, id)) { layers.add(reply_text(layer.name)); }
    }
    float colour[4];
    point_get_colour(colour, point);
    return ReplyList()
        .add("id", reply_int(id))
        .add("place", reply_vec(point->position))
        .add("posed", reply_vec(*point_posed_position(session(), point)))
        .add("normal", reply_vec(point->normal))
        .add("posednormal", reply_vec(*point_posed_normal(session(), point)))
        .add("colour", colour_value(point))
        .add("transparency", reply_real(colour[3] / GOURAUD_MOST))
        .add("weight", reply_real(point->weight))
        .add("joints", joints.value())
        .add("layers", layers.value())
        .value();
}

Tcl_Obj* ask_point(const SceneWords& words) {
    SceneModel found{};
    int32_t id = 0;
    if (!scene_read_model(words.raw(0), &found) || !scene_read_int("point", words.raw(1), 1, INT32_MAX, &id)) {
        return nullptr;
    }
    const Point* point = list_find<const Point>(&found.model->points, id);
    if (point == nullptr) { return scene_refuse_argument("point", words.raw(1), "the id of a point of this model"); }
    return point_value(found.model, id, point);
}

Tcl_Obj* ask_points(const SceneWords& words) {
    SceneModel found{};
    const Layer* layer = nullptr;
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    if (words.has(1)) {
        if (std::strcmp(words.raw(1), "-layer") != 0) {
            return scene_refuse_argument("option", words.raw(1), "-layer");
        }
        if (!words.has(2)) { return scene_refuse_argument("option", words.raw(1), "followed by the name of a layer"); }
        if (!scene_read_layer(found.model, words, 2, &layer)) { return nullptr; }
    }
    std::vector<int32_t> ids;
    if (layer == nullptr) {
        const auto points = list_elements<Point>(found.model->points);
        for (auto point = points.begin(); point != points.end(); ++point) { ids.push_back(point.int_key()); }
    } else {
        for_each_corner(*layer, [&](int32_t id) { ids.push_back(id); });
    }
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return ints(ids.data(), static_cast<int>(ids.size()));
}

// ---- placement and joints ----

Tcl_Obj* placement_value(const Vec3& translation, const Vec3& scale, Tcl_Obj* rotation, const Mat4& matrix) {
    return ReplyList()
        .add("translation", reply_vec(translation))
        .add("scale", reply_vec(scale))
        .add("rotation", rotation)
        .add("pivot", reply_vec(session()->selection.centre))
        .add("matrix", reply_matrix(matrix))
        .value();
}

Tcl_Obj* ask_placement(const SceneWords& words) {
    SceneModel found{};
    if (!scene_read_place(words.raw(0), &found)) { return nullptr; }
    ReplyList rotation;
    if (found.link != nullptr) {
        for (const char* text : found.link->rotate) { rotation.add(reply_text(text)); }
        const ChildState* state = child_state(session(), found.link);
        return placement_value(found.link->position, found.link->scale, rotation.value(), state->matrix);
    }
    const ModelState* state = model_state(session(), found.model);
    for (const std::string& text : rotation_texts(state->rotation)) { rotation.add(reply_text(text)); }
    return placement_value(state->translate, state->scale, rotation.value(), state->matrix);
}

Tcl_Obj* joint_value(Model* model, Joint* joint) {
    const JointState* state = joint_state(session(), model, joint);
    const Mat4& world = state->world;
    const bool evaluated = state->time != TIME_NEVER;
    const Vec3 posed = evaluated ? Vec3{world.m[3], world.m[7], world.m[11]} : joint->position;
    return ReplyList()
        .add("name", reply_text(joint->name))
        .add("parent", reply_text(joint->parent_name))
        .add("place", reply_vec(joint->position))
        .add("posed", reply_vec(posed))
        .add("points", reply_int(joint->point_count))
        .value();
}

Tcl_Obj* ask_joints(const SceneWords& words) {
    SceneModel found{};
    if (!scene_read_model(words.raw(0), &found)) { return nullptr; }
    ReplyList joints;
    for (Joint& joint : list_elements<Joint>(found.model->joints)) { joints.add(joint_value(found.model, &joint)); }
    return joints.value();
}

// ---- what is shown ----

// The box around what a frame shows, in the world and as the view is turned.
class ShownBox {
public:
    explicit ShownBox(Session* session) : session_(session) { view_get_matrix(&application()->view, &turn_); }

    void add_model(const ScenePlace& at);
    Tcl_Obj* value() const;

private:
    void add_point(const Vec3& point, const Mat4& place);
    void add_mirrored(const Model* model, const Layer& layer, const Mat4& place);

    Session* session_;
    Mat4 turn_{};
    Vec3 low_ = NOWHERE_LOW, high_ = NOWHERE_HIGH;
    Vec3 seen_low_ = NOWHERE_LOW, seen_high_ = NOWHERE_HIGH;
};

void ShownBox::add_point(const Vec3& point, const Mat4& place) {
    Vec3 world;
    mat_transform_point(&place, &point, &world);
    if (!std::isfinite(world.x) || !std::isfinite(world.y) || !std::isfinite(world.z)) { return; }
    box_take_in(world, &low_, &high_);
    const Vec3& focus = application()->view.focus;
    const Vec3 from_focus{world.x - focus.x, world.y - focus.y, world.z - focus.z};
    Vec3 seen;
    mat_transform_point(&turn_, &from_focus, &seen);
    box_take_in(seen, &seen_low_, &seen_high_);
}

void ShownBox::add_mirrored(const Model* model, const Layer& layer, const Mat4& place) {
    Mat4 mirrored = place;
    mat_scale(&mirrored, layer.mirror_axis == AXIS_X ? -1.0f : 1.0f, layer.mirror_axis == AXIS_Y ? -1.0f : 1.0f,
              layer.mirror_axis == AXIS_Z ? -1.0f : 1.0f);
    for_each_corner(layer, [&](int32_t id) {
        const Point* point = list_find<const Point>(&model->points, id);
        if (point != nullptr) { add_point(*point_posed_position(session_, point), mirrored); }
    });
}

void ShownBox::add_model(const ScenePlace& at) {
    const std::vector<bool> hidden = model_hidden_points(at.model);
    const auto points = list_elements<Point>(at.model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (!hidden.empty() && hidden[static_cast<size_t>(point.slot())]) { continue; }
        add_point(*point_posed_position(session_, &*point), at.place);
    }
    for (const Layer& layer : list_elements<Layer>(at.model->layers)) {
        if (layer.hidden == 0 && layer.mirror != 0 && session_->display_mirror != 0) {
            add_mirrored(at.model, layer, at.place);
        }
    }
}

Tcl_Obj* ShownBox::value() const {
    ReplyList low, high, seen;
    if (low_.x <= high_.x) {
        for (const float value : {low_.x, low_.y, low_.z}) { low.add(reply_real(value)); }
        for (const float value : {high_.x, high_.y, high_.z}) { high.add(reply_real(value)); }
        for (const float value : {seen_low_.x, seen_low_.y, seen_high_.x, seen_high_.y}) {
            seen.add(reply_real(value));
        }
    }
    return ReplyList().add("low", low.value()).add("high", high.value()).add("seen", seen.value()).value();
}

Tcl_Obj* ask_bounds(const SceneWords&) {
    ShownBox box(session());
    scene_walk(session(), [&](const ScenePlace& at) { box.add_model(at); });
    return box.value();
}

constexpr SceneForm FORMS[] = {
    {"tree", "", 0, 0, "the models of the scene with their layers and children", ask_tree},
    {"points", "ID ?-layer NAME?", 1, 3, "the ids of all points, or of those that a layer uses", ask_points},
    {"placement", "ID", 1, 1, "where a model or a child stands", ask_placement},
    {"joints", "ID", 1, 1, "the joints of a model", ask_joints},
    {"images", "ID", 1, 1, "the images of a model's layers", ask_images},
    {"bounds", "", 0, 0, "the box around all that is shown", ask_bounds},
};

}  // namespace

std::span<const SceneForm> scene_model_forms() { return FORMS; }

Tcl_Obj* scene_ask_point(const SceneWords& words) { return ask_point(words); }

Tcl_Obj* scene_ask_layer(const SceneWords& words) { return ask_layer(words); }

Tcl_Obj* scene_joint_value(Model* model, Joint* joint) { return joint_value(model, joint); }

}  // namespace pelt
