// Random changes as the forms of scripts make them, taken back and done again, with the whole scene held against what
// it was at each place of the history; and what was changed is written and read back.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "edit/clipboard.h"
#include "edit/edit_children.h"
#include "edit/edit_joints.h"
#include "edit/edit_layers.h"
#include "edit/history.h"
#include "motion/transform_state.h"
#include "scene/model_tree.h"
#include "support/edited_scene.h"
#include "support/scene_dump.h"

namespace pelt {
namespace {

using test::EditedScene;
using test::SceneDump;

constexpr int EDITS = 100;
const std::string WHEEL =
    "joint hub 0 0 0 world 2\njoint rim 5 0 0 hub 1\nblend hub rim 1\npoints\n1 0 0 0\n2 10 0 0 0.5\n3 0 10 0\n4 9 9 "
    "4\n"
    "5 1 2 3\nnormals\n1 1 0 0\ngouraud\n2 1 2 3 4\nlayer body 1 2 3 doublesided mirror x\n"
    "triangles\n0 1 2 3\n1 1 2 3 4\n2 1 2 3 4 5\nuvees\n1 0.5 0.5\nimage a.tga x y\nlines\n2 1 5\n"
    "layer wing 4 5 6 singlesided\ninvisible 0.004 0.008 0.012\ntriangles\n3 1 2 3\n";

class EditProperty : public EditedScene, public testing::WithParamInterface<uint32_t> {
protected:
    EditProperty() : random(GetParam()) {
        dir.write("wheel.mod", WHEEL);
        dir.write("dot.mod", "points\n1 0 0 0\n");
        history_attach(&session);
        history_command_begin("open", true);
        open("child wheel 0 0 0 1 1 1 0 0 0\nchild wheel 9 0 0 1 1 1 0 0 0\n", "cart.mod");
        open(WHEEL, "wheel.mod");
        history_command_end();
        history_clear();
    }
    ~EditProperty() override {
        session_reset(&session, 0);
        history_detach();
        EXPECT_EQ(image_held_bytes(), 0);
    }

    int below(size_t count) { return count < 1 ? 0 : static_cast<int>(random() % count); }
    bool one_in(int count) { return below(static_cast<size_t>(count)) == 0; }
    float number() { return static_cast<float>(below(400) - 200) / 4.0f; }
    Vec3 place() { return Vec3{number(), number(), number()}; }
    std::string name() {
        static constexpr const char* NAMES[] = {"body", "wing", "hub", "rim", "a b", "fresh", ""};
        return NAMES[below(std::size(NAMES))];
    }
    std::string picture() {
        static constexpr const char* PICTURES[] = {"a.tga", "b.tga", "nowhere.tga", ""};
        return PICTURES[below(std::size(PICTURES))];
    }

    std::vector<Model*> models() {
        std::vector<Model*> all;
        for (const RootModel& root : list_elements<RootModel>(session.root_models)) { collect(root.model, &all); }
        return all;
    }
    static void collect(Model* model, std::vector<Model*>* all) {
        all->push_back(model);
        for (const ChildLink& link : list_elements<ChildLink>(model->children)) { collect(link.model, all); }
    }
    template <typename Element>
    Element* some(KeyedList& list) {
        return list_at<Element>(&list, below(static_cast<size_t>(list_count(&list))), 1);
    }
    std::vector<int32_t> some_points(const Model* model) {
        std::vector<int32_t> ids;
        const auto points = list_elements<Point>(model->points);
        for (auto point = points.begin(); point != points.end(); ++point) {
            if (one_in(2)) { ids.push_back(point.int_key()); }
        }
        return ids;
    }

    LayerEdit layer_edit() {
        LayerEdit edit;
        if (one_in(3)) { edit.settings.colour = {{below(99), 2, 3}}; }
        if (one_in(3)) { edit.settings.mirror = below(7); }
        if (one_in(3)) { edit.settings.transparency = 0.5f; }
        if (one_in(6)) { edit.settings.reflection = 0.25f; }
        if (one_in(3)) { edit.key = KeyChange{one_in(2), {below(2), 2, 3}}; }
        if (one_in(6)) { edit.axes = {{1 + below(6), 1 + below(6)}}; }
        if (one_in(6)) { edit.repeat = RepeatChange{one_in(2), 2.0f, -3.0f}; }
        if (one_in(4)) { edit.name = name(); }
        return edit;
    }
    bool change_layers(Model* model) {
        Layer* layer = some<Layer>(model->layers);
        if (layer == nullptr || one_in(8)) { return edit_new_layer(&session, model, name(), LayerEdit{}, &refused); }
        if (one_in(3)) {
            PictureEdit edit{below(3), picture(), {}, {}};
            if (edit.slot == IMAGE_SLOT_BASE && one_in(2)) { edit.axes = {{AXIS_Y, AXIS_MINUS_X}}; }
            return edit_picture(&session, model, layer, edit, &refused);
        }
        if (one_in(4)) {
            return edit_uvee(&session, model, layer, {1 + below(6), !one_in(3), number(), number()}, &refused);
        }
        return edit_layers(&session, model, {layer}, layer_edit(), &refused);
    }
    bool change_joints(Model* model) {
        const Joint* joint = some<Joint>(model->joints);
        JointEdit edit;
        if (joint == nullptr || one_in(5)) { return edit_new_joint(&session, model, name(), edit, &refused); }
        if (one_in(6)) { return edit_remove_joint(&session, model, joint, &refused); }
        if (one_in(3)) {
            const Binding binding{one_in(4) ? nullptr : joint, one_in(2) ? nullptr : some<Joint>(model->joints), 0.25f};
            return edit_bind(&session, model, some_points(model), binding, &refused);
        }
        if (one_in(4)) { return edit_weight(&session, model, some_points(model), 0.75f, &refused); }
        if (one_in(3)) { edit.name = name(); }
        if (one_in(3)) { edit.parent = one_in(2) ? "world" : name(); }
        if (one_in(2)) { edit.place = place(); }
        edit.follow = one_in(2);
        return edit_joint(&session, model, joint, edit, &refused);
    }
    bool change_children(Model* model) {
        ChildLink* link = some<ChildLink>(model->children);
        PlaceEdit edit;
        if (one_in(2)) { edit.translation = place(); }
        if (one_in(2)) { edit.rotation = {"z90", "x4.5", "0"}; }
        if (link != nullptr && one_in(2)) { return edit_place_child(&session, link, edit, &refused); }
        if (link != nullptr && one_in(3)) { return edit_remove_child(&session, link, &refused); }
        if (model_tree_size(model->parent != nullptr ? model->parent : model).nodes > 12) { return true; }
        return edit_add_child(&session, model, one_in(2) ? "dot" : one_in(4) ? "none" : "wheel", edit, &link, &refused);
    }
    bool change_scene(Model* model) {
        if (list_count(&session.root_models) < 5 && one_in(3)) {
            return edit_new_model(&session, name(), &refused) != 0;
        }
        if (model->parent != nullptr) { return true; }
        PlaceEdit edit;
        edit.translation = place();
        if (one_in(2)) { edit.rotation = {"10", "20", "30"}; }
        return edit_place_model(&session, model, edit, &refused);
    }
    bool carry(Model* model) {
        if (list_count(&model->points) > 60 || list_count(&model->layers) > 8) { return true; }
        if (one_in(2)) {
            CopyRequest wanted;
            wanted.points = some_points(model);
            for (const Layer& layer : list_elements<Layer>(model->layers)) {
                if (one_in(3)) { wanted.layers.push_back(&layer); }
                for (const Triangle& each : list_elements<Triangle>(layer.triangles)) {
                    if (one_in(3)) { wanted.primitives.push_back({PrimitiveKind::TRIANGLE, each.id}); }
                }
                for (const Polygon& each : list_elements<Polygon>(layer.polygons)) {
                    wanted.primitives.push_back({PrimitiveKind::POLYGON, each.id});
                }
                for (const Line& each : list_elements<Line>(layer.lines)) {
                    wanted.primitives.push_back({PrimitiveKind::LINE, each.id});
                }
            }
            return edit_copy(model, wanted, &clipboard, &refused);
        }
        Pasted pasted;
        const Layer* layer = one_in(3) ? some<Layer>(model->layers) : nullptr;
        const PasteRequest wanted{layer, one_in(2) ? place() : Vec3{0, 0, 0},
                                  [](const std::string& path) { return path; }};
        return edit_paste(&session, model, clipboard, wanted, &pasted, &refused);
    }
    bool change() {
        const std::vector<Model*> all = models();
        Model* model = all[static_cast<size_t>(below(all.size()))];
        switch (below(8)) {
            case 0:
            case 1:
            case 2: return change_layers(model);
            case 3:
            case 4: return change_joints(model);
            case 5: return change_children(model);
            case 6: return change_scene(model);
            default: return carry(model);
        }
    }

    // What questions leave behind, so that two dumps of one scene are equal.
    std::string dump() {
        for (Model* model : models()) {
            for (ChildLink& link : list_elements<ChildLink>(model->children)) { child_state(&session, &link); }
        }
        SceneDump dump(&session);
        std::string text = dump.text();
        EXPECT_EQ(dump.faults(), "");
        return text;
    }
    void command() {
        const int32_t before = history_state().position;
        history_command_begin("edit", true);
        const bool done = change();
        if (!done) {
            EXPECT_EQ(test::dump_difference(dumps.back(), dump()), "") << "refused and changed: " << refused.text;
        }
        history_command_end();
        if (history_state().position > before) {
            dumps.push_back(dump());
        } else {
            EXPECT_EQ(test::dump_difference(dumps.back(), dump()), "");
        }
        made += done ? 1 : 0;
    }

    std::mt19937 random;
    Clipboard clipboard{};
    std::vector<std::string> dumps;
    int made = 0;
};

TEST_P(EditProperty, every_form_is_taken_back_and_done_again_exactly) {
    dumps.push_back(dump());
    for (int i = 0; i < EDITS; ++i) {
        command();
        if (HasFailure()) { FAIL() << "edit " << i; }
    }
    EXPECT_GT(made, EDITS / 3);
    std::string name;
    for (size_t i = dumps.size(); i-- > 1;) {
        ASSERT_TRUE(history_undo(&name));
        ASSERT_EQ(test::dump_difference(dumps[i - 1], dump()), "") << "back to " << i - 1;
    }
    for (size_t i = 1; i < dumps.size(); ++i) {
        ASSERT_TRUE(history_redo(&name));
        ASSERT_EQ(test::dump_difference(dumps[i], dump()), "") << "forth to " << i;
    }
}

TEST_P(EditProperty, what_is_changed_can_be_written_and_read) {
    dumps.push_back(dump());
    for (int i = 0; i < EDITS; ++i) {
        command();
        for (const Model* model : models()) { expect_can_be_saved(model); }
        if (HasFailure()) { FAIL() << "edit " << i; }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, EditProperty, testing::Range(1U, 5U));

}  // namespace
}  // namespace pelt
