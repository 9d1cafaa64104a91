// Random edits of a scene, each made as a command makes it: by the operations that scripts reach, and by those of
// scene/ that only forms of later days will. Half of them are about things that are there.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "edit/history.h"
#include "edit/pancake.h"
#include "edit/selection.h"
#include "formats/layer_image.h"
#include "formats/texture_map.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/change.h"
#include "scene/vertex.h"

namespace pelt::test {

class RandomEdits {
public:
    // The pictures are names of files in the directory, which ends with its separator.
    RandomEdits(Session* session, uint32_t seed, std::string directory, std::vector<std::string> pictures)
        : session_(session), random_(seed), directory_(std::move(directory)), pictures_(std::move(pictures)) {}

    int below(int count) { return count < 1 ? 0 : static_cast<int>(random_() % static_cast<uint32_t>(count)); }

    // One change of something, or the attempt.
    void change() {
        Model* model = some_model();
        if (model == nullptr || below(40) == 0) {
            add_root();
            return;
        }
        constexpr int KINDS = 8;
        switch (below(KINDS)) {
            case 0: change_point(model); break;
            case 1: add_primitive(model); break;
            case 2: change_layer(model); break;
            case 3: change_layers(model); break;
            case 4: change_images(model); break;
            case 5: change_skeleton(model); break;
            case 6: change_scene(); break;
            default: change_model_whole(model); break;
        }
    }

    // What a frame, a question or the clock leaves behind.
    void use_scene() {
        Model* model = some_model();
        if (model == nullptr) { return; }
        for (Layer& layer : list_elements<Layer>(model->layers)) {
            for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
                if (triangle.state_index == -1 && below(2) == 0) { triangle_cache_make(session_, model, &triangle); }
            }
        }
        for (Joint& joint : list_elements<Joint>(model->joints)) {
            if (below(2) == 0) { joint_state(session_, model, &joint); }
        }
        for (Point& point : list_elements<Point>(model->points)) {
            if (below(3) == 0) { point_state(session_, &point); }
        }
        if (below(4) == 0) { scene_evaluate(session_); }
    }

    // Makes known by an id what scripts would ask for, so that two dumps of one scene are equal.
    void know_children() {
        for (Model* model : models()) {
            for (ChildLink& link : list_elements<ChildLink>(model->children)) { child_state(session_, &link); }
        }
    }

    std::vector<Model*> models() {
        std::vector<Model*> all;
        for (const RootModel& root : list_elements<RootModel>(session_->root_models)) { collect(root.model, &all); }
        return all;
    }

    Model* make_model(int points) {
        std::string name = directory_ + "made" + std::to_string(below(5)) + ".mod";
        Model* model = model_create(name.c_str(), nullptr);
        for (int id = 1; id <= points; ++id) { model_set_point(model, id, below(50), below(50), below(50), 1.0f); }
        model_add_layer(model, "body", 1, 2, 3, 1, 0, 0);
        const int32_t corners[4] = {1, 2, 3, 4};
        if (points >= 4) { model_add_triangle(model, "body", 1, corners, nullptr, nullptr, 0); }
        return model;
    }

private:
    void collect(Model* model, std::vector<Model*>* all) {
        if (model == nullptr || all->size() > 60) { return; }
        all->push_back(model);
        for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
            if (!link.borrowed) { collect(link.model, all); }
        }
    }
    Model* some_model() {
        const std::vector<Model*> all = models();
        return all.empty() ? nullptr : all[static_cast<size_t>(below(static_cast<int>(all.size())))];
    }
    float number() { return static_cast<float>(below(2000) - 1000) / 8.0f; }
    float share() { return static_cast<float>(below(9)) / 8.0f; }
    int32_t some_id() { return 1 + below(14); }
    std::string some_layer(const Model* model) {
        const int32_t count = list_count(&model->layers);
        const auto* layer = static_cast<const Layer*>(list_at_rank(&model->layers, below(count)));
        return layer != nullptr && below(10) != 0 ? layer->name : new_layer();
    }
    std::string new_layer() {
        constexpr const char* NAMES[] = {"body", "wing", "glass", "a layer whose name is too long for any key", "x"};
        return NAMES[below(5)];
    }

    void change_point(Model* model) {
        const int32_t id = some_id();
        switch (below(6)) {
            case 0:
            case 1: model_set_point(model, id, below(99), below(99), below(99), number()); break;
            case 2: model_set_normal(model, id, number(), number(), 1.0f); break;
            case 3: model_set_gouraud(model, id, below(256), below(256), below(256), below(256)); break;
            case 4: model_set_point_joints(model, id, "hip", "knee"); break;
            default: remove_point(model, id); break;
        }
    }
    void remove_point(Model* model, int32_t id) {
        Point* point = list_find<Point>(&model->points, id);
        if (point == nullptr || below(3) != 0) { return; }
        if (point->state_index >= 0) { list_remove_slot(&session_->point_states, point->state_index); }
        point->state_index = -1;
        model_remove_point(model, id);
    }

    void add_primitive(Model* model) {
        const std::string layer = some_layer(model);
        int32_t ids[8];
        for (int32_t& id : ids) { id = some_id(); }
        switch (below(4)) {
            case 0: model_add_triangle(model, layer.c_str(), below(2), ids, nullptr, nullptr, below(3)); break;
            case 1: model_add_polygon(model, layer.c_str(), 3 + below(5), ids, nullptr); break;
            case 2: model_add_line(model, layer.c_str(), 1 + below(5), ids); break;
            default: model_add_uvee(model, layer.c_str(), ids[0], share(), share()); break;
        }
    }

    void change_layer(Model* model) {
        const std::string name = some_layer(model);
        const char* layer = name.c_str();
        switch (below(7)) {
            case 0: model_set_layer_colour(model, layer, below(128), below(128), below(128)); break;
            case 1: model_set_layer_sides(model, layer, 1 + below(2)); break;
            case 2: model_set_layer_mirror(model, layer, below(5)); break;
            case 3: model_set_layer_transparency(model, layer, share()); break;
            case 4: model_set_invisible(model, layer, share(), share(), share()); break;
            case 5: model_set_reflection(model, layer, share()); break;
            default: model_set_transparency(model, layer, number()); break;
        }
    }

    void change_layers(Model* model) {
        const std::string name = some_layer(model);
        const int what = below(4);
        if (what < 2) {
            const std::string fresh = new_layer();
            model_add_layer(model, fresh.c_str(), below(128), 0, 0, below(2), below(2), 1 + below(6));
        } else if (what == 2) {
            session_delete_layer(session_, model, name.c_str());
        } else {
            const std::string fresh = below(2) == 0 ? new_layer() : some_layer(model);
            session_rename_layer(session_, model, name.c_str(), fresh.c_str());
        }
    }

    void change_images(Model* model) {
        const std::string layer = some_layer(model);
        if (below(3) == 0) {
            model_set_image_repeat(model, layer.c_str(), below(2), share(), number());
        } else if (below(3) == 0) {
            layer_map_uvees(model, layer.c_str());
        } else {
            const std::string& picture = pictures_[static_cast<size_t>(below(static_cast<int>(pictures_.size())))];
            model_add_image(model, layer.c_str(), below(3), picture.c_str(), 1 + below(6), 1 + below(6));
        }
    }

    void change_skeleton(Model* model) {
        constexpr const char* JOINTS[] = {"hip", "knee", "foot", "world"};
        const char* joint = JOINTS[below(4)];
        switch (below(4)) {
            case 0:
                // As "select add data" does: a joint of this name may be written anew.
                session_forget_joint(session_, list_find<Joint>(&model->joints, "world"));
                model_add_joint(model, joint, below(20), below(20), below(20), JOINTS[below(4)], below(3));
                break;
            case 1: model_add_blend(model, joint, JOINTS[below(4)], below(4)); break;
            case 2: add_child(model); break;
            default: remove_child(model); break;
        }
    }
    void add_child(Model* model) {
        if (models().size() > 20) { return; }
        Model* child = make_model(3);
        child->parent = model;
        model_add_child(model, child, child->name, number(), number(), number(), 1, 1, 1, "0", "x30", "0");
    }
    void remove_child(Model* model) {
        const auto* link =
            static_cast<const ChildLink*>(list_at_rank(&model->children, below(list_count(&model->children))));
        if (link == nullptr || link->borrowed) { return; }
        const int32_t id = link->id;
        Model* child = link->model;
        change_model(model);
        change_key(model, nullptr, CONTENT_CHILDREN, id);
        session_forget_model(session_, child);
        session_forget_child(session_, list_find<ChildLink>(&model->children, id));
        list_remove(&model->children, id);
        if (!change_keeps_model(child)) { model_release(child); }
    }

    void change_model_whole(Model* model) {
        switch (below(4)) {
            case 0: model_scale(model, 1.0f + share(), 2.0f, 0.5f); break;
            case 1: model_set_tag(model, below(9)); break;
            case 2: model_rename(model, below(2) == 0 ? "other/place.mod" : "named.mod"); break;
            default: model_grow_bounds(model, number(), number(), number()); break;
        }
    }

    void select_some() {
        selection_clear(session_);
        for (const ModelState& state : list_elements<ModelState>(session_->model_states)) {
            if (below(2) == 0) { selection_add_model(session_, state.id); }
        }
    }
    void change_scene() {
        select_some();
        const int32_t slots = list_count(&session_->model_states);
        const auto* state = static_cast<const ModelState*>(list_at_rank(&session_->model_states, below(slots)));
        switch (below(8)) {
            case 0: selection_translate(session_, number(), number(), number(), below(2)); break;
            case 1: selection_scale(session_, share(), 1.0f, 2.0f, below(2)); break;
            case 2: selection_rotate(session_, "x30", "20", "0", below(2)); break;
            case 3: selection_pancake(session_); break;
            case 4:
                selection_add_data(session_, "points\n3 4 5 6\n9 1 1 1\nlayer glass 1 2 3 doublesided\nlines\n2 3 9\n");
                break;
            case 5:
                if (state != nullptr) { selection_add_child_model(session_, state->id); }
                break;
            case 6:
                if (below(2) == 0) { selection_delete(session_); }
                break;
            default: add_root(); break;
        }
        selection_clear(session_);
    }
    void add_root() {
        if (list_count(&session_->root_models) < 6) { session_add_root(session_, make_model(below(6)), nullptr); }
    }

    Session* session_;
    std::mt19937 random_;
    std::string directory_;
    std::vector<std::string> pictures_;
};

}  // namespace pelt::test
