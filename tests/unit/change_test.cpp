// What is told of changes: a walk over every operation of scene/ that changes content, and over those of the folders
// above it that write to records. Each is run on a scene whose every record is photographed whenever a place is told:
// what differs behind the operation must have been told while it was as before.
#include "scene/change.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/pancake.h"
#include "edit/selection.h"
#include "formats/layer_image.h"
#include "formats/model_reader.h"
#include "formats/texture_map.h"
#include "foundation/load_error.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "render/uvee_inset.h"
#include "scene/append.h"
#include "scene/layer_settings.h"
#include "scene/measure.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

// A place as a test names it: model, layer, list, slot; the fields of a model are list -1, what the session says -2.
using Place = std::tuple<uint64_t, uint64_t, int, int>;
using Photo = std::map<Place, std::string>;

constexpr int FIELDS = -1;
constexpr int SCENE_FIELDS_LIST = -2;
constexpr int SCENE_LISTS = 100;

std::string bytes_of(const void* bytes, size_t size) { return {static_cast<const char*>(bytes), size}; }

// An element with its key and, of what has vertices, these; without the number of its run-time record.
std::string element_text(const KeyedList& list, int kind, int32_t slot) {
    std::string text = bytes_of(list_at(&list, slot, 0), static_cast<size_t>(list.element_size));
    const char* key = list_text_key(&list, slot);
    const auto drop = [&text](size_t at, size_t size) { text.replace(at, size, size, '\0'); };
    switch (kind) {
        case CONTENT_POINTS: drop(offsetof(Point, state_index), sizeof(int32_t)); break;
        case CONTENT_JOINTS: drop(offsetof(Joint, state_index), sizeof(int32_t)); break;
        case CONTENT_CHILDREN: drop(offsetof(ChildLink, state_index), sizeof(int32_t)); break;
        case CONTENT_TRIANGLES: drop(offsetof(Triangle, state_index), sizeof(int32_t)); break;
        case CONTENT_LAYERS: text.resize(offsetof(Layer, triangles)); break;
        case CONTENT_POLYGONS: {
            const auto& polygon = *static_cast<const Polygon*>(list_at(&list, slot, 0));
            drop(offsetof(Polygon, vertices), sizeof(KeyedList));
            for (const auto& v : list_elements<PolygonVertex>(polygon.vertices)) { text += bytes_of(&v, sizeof v); }
            break;
        }
        case CONTENT_LINES: drop(offsetof(Line, vertices), sizeof(KeyedList)); break;
        default: break;
    }
    return (key != nullptr ? key : std::to_string(list_int_key(&list, slot))) + '\n' + text;
}

void photograph_list(const KeyedList& list, uint64_t model, uint64_t layer, int kind, Photo* photo) {
    for (int32_t slot = list_next_slot(&list, 0); slot < list.capacity; slot = list_next_slot(&list, slot + 1)) {
        (*photo)[{model, layer, kind, slot}] = element_text(list, kind, slot);
    }
}

void photograph_model(Model* model, Photo* photo) {
    if (model == nullptr) { return; }
    const uint64_t serial = model->serial;
    std::string fields = bytes_of(model->path, sizeof model->path) + bytes_of(model->name, sizeof model->name);
    for (const int32_t value : {model->tag, model->has_gouraud, model->has_normals}) {
        fields += std::to_string(value) + ' ';
    }
    fields += bytes_of(&model->bounds_min, sizeof(Vec3)) + bytes_of(&model->bounds_max, sizeof(Vec3));
    fields += std::to_string(model->changes) + (model->opened_path != nullptr ? model->opened_path : "-");
    (*photo)[{serial, 0, FIELDS, 0}] = fields;
    for (int kind = CONTENT_POINTS; kind <= CONTENT_CHILDREN; ++kind) {
        photograph_list(*content_list(model, nullptr, static_cast<ContentList>(kind)), serial, 0, kind, photo);
    }
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (int kind = CONTENT_TRIANGLES; kind <= CONTENT_IMAGES; ++kind) {
            photograph_list(*content_list(model, &layer, static_cast<ContentList>(kind)), serial, layer.serial, kind,
                            photo);
        }
    }
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (!link.borrowed) { photograph_model(link.model, photo); }
    }
}

Photo photograph(Session* session) {
    Photo photo;
    photograph_list(session->root_models, 0, 0, SCENE_LISTS + SCENE_ROOTS, &photo);
    photograph_list(session->model_states, 0, 0, SCENE_LISTS + SCENE_MODEL_STATES, &photo);
    const char* path = session->animation_path;
    photo[{0, 0, SCENE_FIELDS_LIST, 0}] =
        std::to_string(session->radius) + ' ' + std::to_string(session->anim_end) + (path != nullptr ? path : "-");
    for (const RootModel& root : list_elements<RootModel>(session->root_models)) {
        photograph_model(root.model, &photo);
    }
    return photo;
}

// Hears what is told, and photographs the place at that moment. What is offered it lets go.
struct Ears {
    Session* session;
    Photo told;
    std::set<std::string> offered;
    bool replaced = false;

    void hear(const Place& place) {
        const Photo now = photograph(session);
        const auto found = now.find(place);
        told.emplace(place, found != now.end() ? found->second : "(free)");
    }
    static Ears& of(void* context) { return *static_cast<Ears*>(context); }
};

const ChangeListener EARS_FORM{
    nullptr,
    [](void* context, Model* model) {
        Ears::of(context).hear({model->serial, 0, FIELDS, 0});
    },
    [](void* context, Model* model, Layer* layer, ContentList list, int32_t slot) {
        Ears::of(context).hear({model->serial, layer != nullptr ? layer->serial : 0, list, slot});
    },
    [](void* context, Session*) {
        Ears::of(context).hear({0, 0, SCENE_FIELDS_LIST, 0});
    },
    [](void* context, Session*, SceneList list, int32_t slot) {
        Ears::of(context).hear({0, 0, SCENE_LISTS + list, slot});
    },
    [](void* context, Model*, Layer* layer) {
        Ears::of(context).offered.insert(std::string("layer ") + layer->name);
        return false;
    },
    [](void* context, Model* model) {
        Ears::of(context).offered.insert(std::string("model ") + model->name);
        return false;
    },
    [](void* context, Session*, const RootModel& root) {
        Ears::of(context).offered.insert(std::string("root ") + root.model->name);
        return false;
    },
    [](void* context, Session*) { Ears::of(context).replaced = true; },
};

class ChangeTest : public testing::Test {
protected:
    ChangeTest() {
        test::TgaForm form;
        dir.write("red.tga", test::tga_bytes(form, "abc"));
        dir.write("bolt.mod",
                  "points\n21 1 2 3\n22 4 5 6\n23 7 8 0\nlayer nut 1 2 3 doublesided\ntriangles\n0 21 22 23\n");
        const std::string path = dir.write("ship.mod", text());
        session_init(&session);
        load_error_set(nullptr);
        model = model_load(path.c_str());
        EXPECT_NE(model, nullptr) << load_error_get();
        id = session_add_root(&session, model, nullptr);
        other = model_create(dir.file("other.mod").c_str(), nullptr);
        model_set_point(other, 1, 1, 1, 1, 1.0f);
        other_id = session_add_root(&session, other, nullptr);
        selection_add_model(&session, id);
        for (ChildLink& link : list_elements<ChildLink>(model->children)) { child_state(&session, &link); }
    }
    ~ChangeTest() override {
        change_listener = nullptr;
        session_reset(&session, 0);
        for (KeyedList* list : {&session.selection.models, &session.clipboard.models}) { list_free(list); }
    }
    static std::string text() {
        return "joint hip 1 2 3 world 2\npoints\n1 0 0 0\n2 9 0 1\n3 0 9 2\n4 9 9 3\nnormals\n1 0 0 1\n"
               "layer body 10 20 30 doublesided\ntriangles\n1 1 2 3 4\n0 1 2 3\n2 1 2 3 4\nlines\n2 1 2 3\nuvees\n"
               "1 0.5 0.5\nimage red.tga x y\nlayer wing 1 1 1 singlesided\nchild bolt 1 2 3 1 1 1 0 0 0\n";
    }

    // Runs the operation; every place that differs behind it was told, and told while it was as before.
    void expect_told(const char* what, const std::function<void()>& operation, bool changes = true) {
        Ears ears{&session, {}, {}};
        ChangeListener listener = EARS_FORM;
        listener.context = &ears;
        const Photo before = photograph(&session);
        change_listener = &listener;
        operation();
        change_listener = nullptr;
        const Photo after = photograph(&session);
        size_t differences = 0;
        std::set<Place> places;
        for (const Photo* photo : {&before, &after}) {
            for (const auto& [place, content] : *photo) { places.insert(place); }
        }
        for (const Place& place : places) {
            const std::string was = before.count(place) != 0 ? before.at(place) : "(free)";
            const std::string is = after.count(place) != 0 ? after.at(place) : "(free)";
            const uint64_t model_serial = std::get<0>(place);
            const bool came_whole = model_serial != 0 && before.count({model_serial, 0, FIELDS, 0}) == 0;
            if (was == is || came_whole || goes_with_its_owner(ears, place, is)) { continue; }
            ++differences;
            const auto told = ears.told.find(place);
            const auto [owner, layer, list, slot] = place;
            ASSERT_NE(told, ears.told.end()) << what << " changed list " << list << ", slot " << slot << " of " << owner
                                             << " and " << layer << " untold";
            EXPECT_EQ(told->second, was) << what << " told list " << list << ", slot " << slot << " too late";
        }
        EXPECT_EQ(differences > 0, changes) << what;
        offered = ears.offered;
        replaced = ears.replaced;
    }
    // What is in a layer or a model that went out whole needs not be told one by one.
    static bool goes_with_its_owner(const Ears& ears, const Place& place, const std::string& is) {
        const auto [owner, layer, list, slot] = place;
        if (is != "(free)" || ears.offered.empty()) { return false; }
        const bool whole_model = ears.offered.begin()->rfind("layer ", 0) != 0;
        return layer != 0 || (whole_model && owner != 0);
    }

    test::TempDir dir;
    Session session{};
    Model* model = nullptr;
    Model* other = nullptr;
    int32_t id = 0;
    int32_t other_id = 0;
    std::set<std::string> offered;
    bool replaced = false;
};

Layer* layer_of(Model* model, const char* name) { return list_find<Layer>(&model->layers, name); }
Joint* hip_of(Model* model) { return list_find<Joint>(&model->joints, "hip"); }

constexpr std::array<int32_t, 3> COLOUR{4, 5, 6};
constexpr int32_t CORNERS[8] = {1, 2, 3, 4, 1, 2, 3, 4};

// Every operation of scene/ that changes content of a model.
#define MODEL_OPERATION(...)                                             \
    {                                                                    \
        #__VA_ARGS__, [](Session* session, Model* model, Model* other) { \
            (void)session;                                               \
            (void)other;                                                 \
            (void)model;                                                 \
            __VA_ARGS__;                                                 \
        }                                                                \
    }
struct ModelOperation {
    const char* name;
    void (*run)(Session* session, Model* model, Model* other);
};
const ModelOperation MODEL_OPERATIONS[] = {
    MODEL_OPERATION(model_set_point(model, 1, 50, 60, 70, 1.0f)),
    MODEL_OPERATION(model_set_point(model, 90, 50, 60, 70, 1.0f)),
    MODEL_OPERATION(model_set_normal(model, 2, 1, 0, 0)),
    MODEL_OPERATION(model_set_point_joints(model, 4, "hip", "hip")),
    MODEL_OPERATION(model_set_gouraud(model, 2, 1, 2, 3, 4)),
    MODEL_OPERATION(model_set_gouraud(model, 22, 1, 2, 3, 4)),
    MODEL_OPERATION(model_remove_point(model, 3)),
    MODEL_OPERATION(model_grow_bounds(model, 500, 500, 500)),
    MODEL_OPERATION(model_add_triangle(model, "body", 1, CORNERS, nullptr, nullptr, 2)),
    MODEL_OPERATION(model_add_polygon(model, "body", 5, CORNERS, nullptr)),
    MODEL_OPERATION(model_add_line(model, "body", 5, CORNERS)),
    MODEL_OPERATION(model_add_uvee(model, "body", 1, 0.25f, 0.25f)),
    MODEL_OPERATION(model_add_uvee(model, "body", 2, 0.25f, 0.25f)),
    MODEL_OPERATION(model_add_layer(model, "new", 1, 2, 3, 1, 0, 0)),
    MODEL_OPERATION(model_delete_layer(model, "body")),
    MODEL_OPERATION(model_delete_layer_slot(model, 0)),
    MODEL_OPERATION(model_rename_layer(model, "body", "hull")),
    MODEL_OPERATION(model_rename_layer(model, "body", "wing")),
    MODEL_OPERATION(session_delete_layer(session, model, "body")),
    MODEL_OPERATION(session_rename_layer(session, model, "wing", "body")),
    MODEL_OPERATION(model_set_layer_colour(model, "body", 4, 5, 6)),
    MODEL_OPERATION(model_set_layer_sides(model, "body", 1)),
    MODEL_OPERATION(model_set_layer_mirror(model, "body", AXIS_Y)),
    MODEL_OPERATION(model_set_layer_transparency(model, "body", 0.5f)),
    MODEL_OPERATION(model_set_transparency(model, "body", 0.25f)),
    MODEL_OPERATION(model_set_invisible(model, "body", 0.25f, 0.25f, 0.25f)),
    MODEL_OPERATION(model_set_reflection(model, "body", 0.5f)),
    MODEL_OPERATION(model_add_joint(model, "knee", 1, 1, 1, "hip", 0)),
    MODEL_OPERATION(model_add_blend(model, "hip", "hip", 1)),
    MODEL_OPERATION(model_add_child(model, nullptr, "x", 1, 1, 1, 1, 1, 1, "0", "0", "0")),
    MODEL_OPERATION(model_rename(model, "elsewhere.mod")),
    MODEL_OPERATION(model_set_tag(model, 9)),
    MODEL_OPERATION(model_scale(model, 2, 3, 4)),
    MODEL_OPERATION(session_set_animation_path(session, "a.scene", "b")),
    MODEL_OPERATION(change_model(model); model_append_point(model, 91, *model_find_point(model, 1))),
    MODEL_OPERATION(change_model(model); layer_append_triangle(model, model_find_layer(model, "body"), Triangle{})),
    MODEL_OPERATION(change_model(model); layer_append_polygon(model, model_find_layer(model, "body"), {{1, 1, 0, 0}})),
    MODEL_OPERATION(change_model(model); layer_append_line(model, model_find_layer(model, "body"), {1, 2})),
    MODEL_OPERATION(change_model(model); layer_append_uvee(model, model_find_layer(model, "body"), {1, 0.75f, 0})),
    MODEL_OPERATION(change_model(model); layer_remove_triangle(model, model_find_layer(model, "body"), 0)),
    MODEL_OPERATION(change_model(model); layer_remove_polygon(model, model_find_layer(model, "body"), 0)),
    MODEL_OPERATION(change_model(model); layer_remove_line(model, model_find_layer(model, "body"), 0)),
    MODEL_OPERATION(change_model(model); layer_remove_uvee(model, model_find_layer(model, "body"), 0)),
    MODEL_OPERATION(model_remove_point(model, 3); model_remove_point(model, 4); model_measure(model)),
    MODEL_OPERATION(session_clear_bounds(session)),
    MODEL_OPERATION(model_append_layer(model, "new")),
    MODEL_OPERATION(model_rename_layer_in_place(model, layer_of(model, "wing"), "tail")),
    MODEL_OPERATION(layer_change_settings(model, layer_of(model, "body"), {COLOUR, 1, AXIS_Z, 0.5f, 0.5f})),
    MODEL_OPERATION(model_append_joint(model, "knee", {1, 1, 1}, "hip")),
    MODEL_OPERATION(model_rename_joint(model, hip_of(model), "waist")),
    MODEL_OPERATION(model_move_joint(model, hip_of(model), {7, 8, 9})),
    MODEL_OPERATION(model_set_joint_parent(model, hip_of(model), "nobody")),
    MODEL_OPERATION(model_remove_joint(model, hip_of(model))),
    MODEL_OPERATION(model_bind_point(model, list_find<Point>(&model->points, 4), hip_of(model), nullptr, 0.5f)),
    MODEL_OPERATION(model_append_child(model, ChildLink{})),
    // Those above scene/ that write to records.
    MODEL_OPERATION(layer_put_image(model, layer_of(model, "body"), IMAGE_SLOT_BASE, "", {})),
    MODEL_OPERATION(layer_put_image(model, layer_of(model, "body"), IMAGE_SLOT_REFLECTION, "red.tga", {})),
    MODEL_OPERATION(layer_lay_image(model, layer_of(model, "body"), {AXIS_Z, AXIS_MINUS_X, true, 2, 3})),
    MODEL_OPERATION(layer_change_key(model, layer_of(model, "body"), COLOUR)),
    MODEL_OPERATION(layer_unmap(model, layer_of(model, "body"))),
    MODEL_OPERATION(session_remove_child(session, model, list_at<ChildLink>(&model->children, 0, 1))),
    MODEL_OPERATION(model_add_image(model, "wing", IMAGE_SLOT_MIRROR, "red.tga", 0, 0)),
    MODEL_OPERATION(model_add_image(model, "body", IMAGE_SLOT_BASE, "red.tga", AXIS_Z, AXIS_X)),
    MODEL_OPERATION(model_set_image_repeat(model, "body", 1, 2, 3)),
    MODEL_OPERATION(model_pancake(model)),
    MODEL_OPERATION(model_inset_uvees(model, 0.25f, 0.5f)),
    MODEL_OPERATION(model_read_data(model, "points\n1 7 7 7\n70 1 1 1\nlayer more 1 1 1 doublesided\n")),
    MODEL_OPERATION(selection_translate(session, 100, 2, 3, 1)),
    MODEL_OPERATION(selection_scale(session, 2, 2, 3, 1)),
    MODEL_OPERATION(selection_rotate(session, "30", "0", "0", 1)),
    MODEL_OPERATION(selection_delete(session)),
    MODEL_OPERATION(session_add_root(session, model_create("new.mod", nullptr), nullptr)),
};

TEST_F(ChangeTest, every_operation_tells_before_it_changes) {
    for (const ModelOperation& operation : MODEL_OPERATIONS) {
        // Each on a scene of its own.
        session_reset(&session, 0);
        load_error_set(nullptr);
        model = model_load(dir.file("ship.mod").c_str());
        id = session_add_root(&session, model, nullptr);
        other = model_create(dir.file("other.mod").c_str(), nullptr);
        other_id = session_add_root(&session, other, nullptr);
        selection_add_model(&session, id);
        session.radius = 50.0f;
        expect_told(operation.name, [&] { operation.run(&session, model, other); });
        if (HasFatalFailure()) { return; }
    }
}
TEST_F(ChangeTest, a_mapped_layer_is_told_where_it_changes) {
    model_find_layer(model, "body")->image_axis_u = AXIS_Z;
    expect_told("layer_map_uvees", [&] { layer_map_uvees(model, "body"); });
    expect_told(
        "layer_map_uvees again", [&] { layer_map_uvees(model, "body"); }, false);
}
TEST_F(ChangeTest, a_removed_root_is_told_and_offered_with_what_points_at_it) {
    selection_clear(&session);
    selection_add_model(&session, other_id);
    expect_told("selection_add_child_model", [&] { selection_add_child_model(&session, id); });
    const int32_t key = list_int_key(&session.root_models, 0);
    expect_told("session_remove_root", [&] { session_remove_root(&session, key); });
    EXPECT_EQ(offered, std::set<std::string>{"root ship"});
}
TEST_F(ChangeTest, a_removed_child_is_offered) {
    expect_told("session_remove_child",
                [&] { session_remove_child(&session, model, list_at<ChildLink>(&model->children, 0, 1)); });
    EXPECT_EQ(offered, std::set<std::string>{"model bolt"});
}
TEST_F(ChangeTest, a_deleted_layer_is_offered) {
    expect_told("model_delete_layer", [&] { model_delete_layer(model, "body"); });
    EXPECT_EQ(offered, std::set<std::string>{"layer body"});
}
TEST_F(ChangeTest, a_layer_that_loses_its_name_to_another_is_offered) {
    expect_told("model_rename_layer", [&] { model_rename_layer(model, "body", "wing"); });
    EXPECT_EQ(offered, std::set<std::string>{"layer wing"});
}
TEST_F(ChangeTest, a_closed_scene_is_told_as_a_whole) {
    Ears ears{&session, {}, {}};
    ChangeListener listener = EARS_FORM;
    listener.context = &ears;
    change_listener = &listener;
    session_release_roots(&session);
    change_listener = nullptr;
    EXPECT_TRUE(ears.replaced);
}
TEST_F(ChangeTest, refused_operations_tell_nothing_of_lists) {
    expect_told(
        "model_add_triangle without its points",
        [&] {
            const int32_t missing[4] = {1, 2, 777, 4};
            EXPECT_EQ(model_add_triangle(model, "body", 0, missing, nullptr, nullptr, 0), 0);
        },
        false);
}
TEST_F(ChangeTest, a_model_beside_the_scene_is_told_of_by_nobody) {
    Ears ears{&session, {}, {}};
    ChangeListener listener = EARS_FORM;
    listener.context = &ears;
    change_listener = &listener;
    Model* beside = model_load(dir.file("ship.mod").c_str());
    model_set_point(beside, 1, 5, 5, 5, 1.0f);
    model_delete_layer(beside, "body");
    model_release(beside);
    change_listener = nullptr;
    EXPECT_TRUE(ears.told.empty());
    EXPECT_TRUE(ears.offered.empty());
}
TEST_F(ChangeTest, watched_models_are_found_by_their_serial_until_they_go) {
    const uint64_t serial = model->serial;
    Model* child = list_elements<ChildLink>(model->children).begin()->model;
    const uint64_t child_serial = child->serial;
    EXPECT_EQ(change_watched_model(serial), model);
    EXPECT_EQ(change_watched_model(child_serial), child);
    session_release_roots(&session);
    EXPECT_EQ(change_watched_model(serial), nullptr);
    EXPECT_EQ(change_watched_model(child_serial), nullptr);
}
TEST_F(ChangeTest, the_version_tells_whether_the_content_is_that_of_the_file) {
    EXPECT_EQ(model_unsaved_changes(model), 0);
    model_set_tag(model, 3);
    EXPECT_EQ(model_unsaved_changes(model), 0) << "no file has it";
    model_set_point(model, 1, 5, 5, 5, 1.0f);
    model_set_point(model, 1, 5, 5, 5, 1.0f);
    EXPECT_EQ(model_unsaved_changes(model), 2);
    model_mark_saved(model);
    EXPECT_EQ(model_unsaved_changes(model), 0);
    model->version = 1;
    model->changes = 0;
    EXPECT_EQ(model_unsaved_changes(model), 2) << "what was taken back counts too";
    model->changes = model->saved_changes;
    EXPECT_EQ(model_unsaved_changes(model), 1) << "never 0 for other content";
}

}  // namespace
}  // namespace pelt
