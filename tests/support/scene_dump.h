// All content of a scene as a text: every field of every record, with slots, keys and what a free slot leaves to its
// next tenant. Pointers are written as what they point at. Run-time records are left out, but for the ids that scripts
// know and the placements of models.
#pragma once

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "formats/animation.h"
#include "images/image_registry.h"
#include "scene/change.h"
#include "scene/session.h"

namespace pelt::test {

class SceneDump {
public:
    explicit SceneDump(Session* session) : session_(session) {}

    std::string text() {
        write("scene end %a radius %a path %s base %s", static_cast<double>(session_->anim_end),
              static_cast<double>(session_->radius), shown(session_->animation_path), shown(session_->animation_base));
        number_models();
        const auto roots = list_elements<RootModel>(session_->root_models);
        for (auto root = roots.begin(); root != roots.end(); ++root) {
            write("root slot %d key %d row %d", root.slot(), root.int_key(), root->row);
            expect_found(session_->root_models, root.slot(), root.int_key());
            if (root->animation != nullptr) { dump_animation(*root->animation); }
            dump_model(root->model, 0);
        }
        dump_free(session_->root_models);
        dump_states();
        dump_images();
        return std::move(text_);
    }

    // What is wrong with the lists themselves; empty when nothing is.
    const std::string& faults() const { return faults_; }

private:
    template <typename... Values>
    void write(const char* format, Values... values) {
        char line[1024];
        std::snprintf(line, sizeof line, format, values...);
        text_ += line;
        text_ += '\n';
    }
    static const char* shown(const char* text) { return text != nullptr ? text : "(none)"; }
    static std::string vec(const Vec3& v) {
        char text[100];
        std::snprintf(text, sizeof text, "%a,%a,%a", static_cast<double>(v.x), static_cast<double>(v.y),
                      static_cast<double>(v.z));
        return text;
    }
    template <typename Key>
    void expect_found(const KeyedList& list, int32_t slot, Key key) {
        if (list_index_of(&list, key, 0) != slot) { faults_ += "a key leads to another slot; "; }
    }
    // The slot that the next element gets.
    void dump_free(const KeyedList& list) {
        int32_t free_slot = 0;
        while (free_slot < list.capacity && list_at(&list, free_slot, 0) != nullptr) { ++free_slot; }
        const int32_t told =
            list.kind == KEY_STRING ? list_slot_for(&list, "no key of these") : list_slot_for(&list, -77777);
        if (told != free_slot) { faults_ += "the next slot is not the lowest free one; "; }
        write("  next slot %d of %d", free_slot, list_count(&list));
    }
    void number(const Model* model) {
        if (model == nullptr) { return; }
        numbers_.emplace(model, static_cast<int>(numbers_.size()));
        for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
            if (!link.borrowed) { number(link.model); }
        }
    }
    void number_models() {
        for (const RootModel& root : list_elements<RootModel>(session_->root_models)) { number(root.model); }
    }
    int number_of(const Model* model) const {
        const auto found = numbers_.find(model);
        return model == nullptr ? -1 : found != numbers_.end() ? found->second : -99;
    }
    static int32_t joint_slot(const Model* model, const Joint* joint) {
        return joint != nullptr ? list_slot_of_element(&model->joints, joint) : -2;
    }
    void dump_animation(const ModelAnimation& animation) {
        const Joint* joint = animation.parent_joint;
        write(" animation enabled %d parent %d joint %s of %d tracks", animation.enabled,
              number_of(animation.parent_model), joint != nullptr ? joint->name : "(none)", animation.slot_count);
    }

    void dump_model(Model* model, int depth) {
        if (model == nullptr) { return; }
        write("model %d %s serial %llu under %d depth %d watched %d", number_of(model), model->name,
              static_cast<unsigned long long>(model->serial), number_of(model->parent), depth, model->watched);
        write(" path %s file %s directory %s long %d tag %d gouraud %d normals %d", model->path,
              shown(model->opened_path), shown(model->long_directory), model->long_paths, model->tag,
              model->has_gouraud, model->has_normals);
        write(" box %s %s unsaved %lld", vec(model->bounds_min).c_str(), vec(model->bounds_max).c_str(),
              static_cast<long long>(model_unsaved_changes(model)));
        dump_points(model);
        dump_joints(model);
        dump_layers(model);
        dump_children(model, depth);
    }
    void dump_points(Model* model) {
        const auto points = list_elements<Point>(model->points);
        for (auto point = points.begin(); point != points.end(); ++point) {
            write(" point %d slot %d at %s weight %a colour %d,%d,%d,%d normal %s joints %d %d", point.int_key(),
                  point.slot(), vec(point->position).c_str(), static_cast<double>(point->weight), point->gouraud[0],
                  point->gouraud[1], point->gouraud[2], point->gouraud[3], vec(point->normal).c_str(),
                  joint_slot(model, point->joint_a), joint_slot(model, point->joint_b));
            expect_found(model->points, point.slot(), point.int_key());
            expect_state(session_->point_states, point->state_index);
        }
        dump_free(model->points);
        for (int32_t slot = 0; slot < model->points.capacity; ++slot) {
            if (list_at(&model->points, slot, 0) != nullptr) { continue; }
            const auto* left = static_cast<const Point*>(list_slot_bytes(&model->points, slot));
            if (left->weight != 0.0f || left->joint_b != nullptr) {
                write(" left in slot %d: weight %a joint %d", slot, static_cast<double>(left->weight),
                      joint_slot(model, left->joint_b));
            }
        }
    }
    void expect_state(const KeyedList& states, int32_t slot) {
        if (slot >= 0 && list_at(&states, slot, 0) == nullptr) { faults_ += "a record names a state that is gone; "; }
    }
    void dump_joints(Model* model) {
        const auto joints = list_elements<Joint>(model->joints);
        for (auto joint = joints.begin(); joint != joints.end(); ++joint) {
            write(" joint %s slot %d key %s id %d parent %s %d at %s points %d", joint->name, joint.slot(),
                  joint.text_key(), joint->id, joint->parent_name, joint->parent_index, vec(joint->position).c_str(),
                  joint->point_count);
            expect_state(session_->joint_states, joint->state_index);
        }
        dump_free(model->joints);
        const auto blends = list_elements<BlendWeight>(model->blends);
        for (auto blend = blends.begin(); blend != blends.end(); ++blend) {
            write(" blend %d slot %d points %d joints %d %d", blend.int_key(), blend.slot(), blend->point_count,
                  joint_slot(model, blend->joint_a), joint_slot(model, blend->joint_b));
        }
        dump_free(model->blends);
    }
    void dump_settings(const char* what, const Layer& layer, int32_t slot) {
        write(" %s %s slot %d colour %d,%d,%d single %d transparency %a mirror %d %d key %d %d,%d,%d", what, layer.name,
              slot, layer.colour[0], layer.colour[1], layer.colour[2], layer.singlesided,
              static_cast<double>(layer.transparency), layer.mirror, layer.mirror_axis, layer.invisible,
              layer.invisible_colour[0], layer.invisible_colour[1], layer.invisible_colour[2]);
        write("  axes %d %d repeat %d %a %a box %s %s", layer.image_axis_u, layer.image_axis_v, layer.image_repeat,
              static_cast<double>(layer.repeat_u), static_cast<double>(layer.repeat_v), vec(layer.bounds_min).c_str(),
              vec(layer.bounds_max).c_str());
    }
    void dump_layers(Model* model) {
        const auto layers = list_elements<Layer>(model->layers);
        for (auto layer = layers.begin(); layer != layers.end(); ++layer) {
            dump_settings("layer", *layer, layer.slot());
            write("  key %s serial %llu", layer.text_key(), static_cast<unsigned long long>(layer->serial));
            if (layer->holds_images != 0) { faults_ += "a layer of the scene holds its images; "; }
            if (std::string(layer.text_key()).size() < KEY_TEXT_SIZE) {
                expect_found(model->layers, layer.slot(), layer.text_key());
            }
            dump_layer(*layer);
        }
        dump_free(model->layers);
        for (int32_t slot = 0; slot < model->layers.capacity; ++slot) {
            const auto* left = static_cast<const Layer*>(list_slot_bytes(&model->layers, slot));
            const bool seen = left->image_axis_u != 0 || left->image_axis_v != 0 || left->image_repeat != 0;
            if (list_at(&model->layers, slot, 0) == nullptr && seen) {
                write(" left in slot %d: axes %d %d repeat %d %a %a", slot, left->image_axis_u, left->image_axis_v,
                      left->image_repeat, static_cast<double>(left->repeat_u), static_cast<double>(left->repeat_v));
            }
        }
    }
    void dump_layer(const Layer& layer) {
        const auto triangles = list_elements<Triangle>(layer.triangles);
        for (auto each = triangles.begin(); each != triangles.end(); ++each) {
            std::string ids;
            for (const int16_t id : each->points) { ids += std::to_string(id) + ' '; }
            for (const int16_t id : each->normals) { ids += std::to_string(id) + ' '; }
            for (const int16_t id : each->controls) { ids += std::to_string(id) + ' '; }
            write("  triangle %d key %d slot %d quad %d curve %d ids %suv %a %a %a %a", each->id, each.int_key(),
                  each.slot(), each->quad, each->curve_type, ids.c_str(), static_cast<double>(each->uvs[0][0]),
                  static_cast<double>(each->uvs[1][1]), static_cast<double>(each->uvs[2][0]),
                  static_cast<double>(each->uvs[3][1]));
            expect_found(layer.triangles, each.slot(), each.int_key());
            expect_state(session_->triangle_caches, each->state_index);
        }
        dump_free(layer.triangles);
        const auto polygons = list_elements<Polygon>(layer.polygons);
        for (auto each = polygons.begin(); each != polygons.end(); ++each) {
            std::string corners;
            for (const PolygonVertex& v : list_elements<PolygonVertex>(each->vertices)) {
                char corner[100];
                std::snprintf(corner, sizeof corner, "%d/%d/%a/%a ", v.point, v.normal, static_cast<double>(v.u),
                              static_cast<double>(v.v));
                corners += corner;
            }
            write("  polygon %d key %d slot %d count %d %s", each->id, each.int_key(), each.slot(), each->vertex_count,
                  corners.c_str());
        }
        dump_free(layer.polygons);
        const auto lines = list_elements<Line>(layer.lines);
        for (auto each = lines.begin(); each != lines.end(); ++each) {
            std::string corners;
            for (const int32_t id : list_elements<int32_t>(each->vertices)) { corners += std::to_string(id) + ' '; }
            write("  line %d key %d slot %d count %d %s", each->id, each.int_key(), each.slot(), each->vertex_count,
                  corners.c_str());
        }
        dump_free(layer.lines);
        const auto uvees = list_elements<Uvee>(layer.uvees);
        for (auto each = uvees.begin(); each != uvees.end(); ++each) {
            write("  uvee %d slot %d point %d %a %a", each.int_key(), each.slot(), each->point,
                  static_cast<double>(each->u), static_cast<double>(each->v));
        }
        dump_free(layer.uvees);
        for (const LayerImage& image : list_elements<LayerImage>(layer.images)) { dump_image(image); }
    }
    void dump_image(const LayerImage& image) {
        for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
            write("  image %d %s %dx%d id %d bytes %d pixels %d reflection %a", slot, image.names[slot],
                  image.width[slot], image.height[slot], image.image_id[slot], image.bytes_per_pixel[slot],
                  image.pixels[slot] != nullptr, static_cast<double>(image.reflection));
            if (image.image_id[slot] == 0) { continue; }
            const ImageData* data = image_find_id(image.image_id[slot]);
            const bool known =
                data != nullptr && (image.pixels[slot] == data->pixels || image.pixels[slot] == data->keyed_pixels);
            if (!known) { faults_ += "a layer has pixels that the registry has not; "; }
        }
    }
    void dump_children(Model* model, int depth) {
        const auto links = list_elements<ChildLink>(model->children);
        for (auto link = links.begin(); link != links.end(); ++link) {
            const auto* state = list_at<const ChildState>(&session_->child_states, link->state_index, 0);
            write(" child %d key %d slot %d %s model %d at %s scale %s turn %s %s %s lent %d known as c%d", link->id,
                  link.int_key(), link.slot(), link->name, number_of(link->model), vec(link->position).c_str(),
                  vec(link->scale).c_str(), link->rotate[0], link->rotate[1], link->rotate[2], link->borrowed,
                  state != nullptr ? state->id : 0);
            if (state != nullptr && state->link != &*link) { faults_ += "a state belongs to another link; "; }
            if (!link->borrowed) { dump_model(link->model, depth + 1); }
        }
        dump_free(model->children);
    }
    bool moved_by_clip(const Model* model) const {
        for (const RootModel& root : list_elements<RootModel>(session_->root_models)) {
            if (root.model == model) { return root.animation != nullptr && root.animation->enabled != 0; }
        }
        return false;
    }
    void dump_states() {
        const auto states = list_elements<ModelState>(session_->model_states);
        for (auto state = states.begin(); state != states.end(); ++state) {
            write("state %d key %d slot %d of %d moved %s scaled %s", state->id, state.int_key(), state.slot(),
                  number_of(state->model), vec(state->translate).c_str(), vec(state->scale).c_str());
            std::string matrices;
            for (const Mat4* matrix : {&state->rotation, &state->matrix, &state->gl_matrix}) {
                // Where a clip moves the model, these two are of the clock, and every evaluation makes them anew.
                if (matrix != &state->rotation && moved_by_clip(state->model)) { break; }
                for (const float value : matrix->m) {
                    char text[40];
                    std::snprintf(text, sizeof text, "%a ", static_cast<double>(value));
                    matrices += text;
                }
            }
            text_ += matrices + '\n';
            if (state->model == nullptr || state->model->state_index != state.slot()) {
                faults_ += "a model does not know its state; ";
            }
        }
        dump_free(session_->model_states);
    }
    void dump_images() {
        std::map<int32_t, std::string> images;
        for (const ImageData& image : list_elements<ImageData>(*image_registry())) {
            images[image.id] = std::string(image.path) + " used " + std::to_string(image.ref_count);
        }
        for (const auto& [id, told] : images) { write("registered %d %s", id, told.c_str()); }
    }

    Session* session_;
    std::map<const Model*, int> numbers_;
    std::string text_;
    std::string faults_;
};

// The first line in which two dumps differ, with that of the other; empty when they are equal.
inline std::string dump_difference(const std::string& wanted, const std::string& found) {
    size_t a = 0;
    size_t b = 0;
    while (a < wanted.size() || b < found.size()) {
        const size_t end_a = std::min(wanted.find('\n', a), wanted.size());
        const size_t end_b = std::min(found.find('\n', b), found.size());
        const std::string line_a = a < wanted.size() ? wanted.substr(a, end_a - a) : "(end)";
        const std::string line_b = b < found.size() ? found.substr(b, end_b - b) : "(end)";
        if (line_a != line_b) { return "wanted: " + line_a + "\nfound:  " + line_b; }
        a = end_a + 1;
        b = end_b + 1;
    }
    return {};
}

}  // namespace pelt::test
