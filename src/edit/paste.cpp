// Pasting into a model. What surprises: names and images are looked at before anything is changed; an image that is to
// be had is held until its layer has it.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "edit/bounds.h"
#include "edit/clipboard.h"
#include "edit/edit_joints.h"
#include "edit/ranks.h"
#include "formats/layer_image.h"
#include "formats/name_rules.h"
#include "formats/texture_map.h"
#include "foundation/file_access.h"
#include "foundation/path_relative.h"
#include "foundation/text.h"
#include "images/image_registry.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/append.h"
#include "scene/change.h"
#include "scene/measure.h"

namespace pelt {

namespace {

constexpr const char* UNNAMED_LAYER = "layer";

// What one layer of the clipboard becomes, known before anything is changed.
struct LayerPlan {
    const CopiedLayer* from;
    int32_t rank;                                       // of the layer that takes the faces; -1 for a new one
    std::string name;                                   // of a new one
    std::array<std::string, LAYER_IMAGE_SLOTS> images;  // names from the directory of the model
};

struct PastePlan {
    int32_t first_point;
    std::vector<LayerPlan> layers;
};

// Images that were read for the plan, given back with it.
class HeldImages {
public:
    HeldImages() = default;
    HeldImages(const HeldImages&) = delete;
    HeldImages& operator=(const HeldImages&) = delete;
    ~HeldImages() {
        for (const int32_t id : ids_) { image_release_id(id); }
    }

    bool read(const std::string& path) {
        int32_t width = 0;
        int32_t height = 0;
        if (image_load(path.c_str(), &width, &height) == nullptr) { return false; }
        ids_.push_back(image_find(path.c_str())->id);
        return true;
    }

private:
    std::vector<int32_t> ids_;
};

// ---- the plan ----

// The name, or the name with the first number behind it that makes it free.
std::string free_name(const std::set<std::string>& taken, const std::string& wanted) {
    const auto cut = [](const std::string& name, size_t most) {
        return name.size() <= most ? name : name.substr(0, text_cut_length(name.c_str(), most));
    };
    std::string base = cut(wanted, KEY_NAME_MOST);
    if (!name_fits_line(base, KEY_NAME_MOST)) { base = UNNAMED_LAYER; }
    std::string name = base;
    for (int number = 2; taken.count(name) != 0; ++number) {
        const std::string behind = " " + std::to_string(number);
        name = cut(base, KEY_NAME_MOST - behind.size()) + behind;
    }
    return name;
}

bool plan_image(const Model* model, const PasteRequest& wanted, const std::string& path, std::string* name,
                HeldImages* held, EditRefusal* refused) {
    const std::string directory = model_directory(model);
    const bool beside = !directory.empty() && path.compare(0, directory.size(), directory) == 0;
    *name =
        beside
            ? path.substr(directory.size())
            : path_with_separators(path_relative(wanted.absolute_path(directory), wanted.absolute_path(path)).c_str());
    if (!name_fits_line(*name, FILE_NAME_MOST)) {
        return edit_refuse(refused, EDIT_STATE,
                           "no name of at most " + std::to_string(FILE_NAME_MOST) +
                               " bytes leads from the model to the image " + path);
    }
    const std::string file = model_file_path(model, name->c_str());
    return held->read(file) || edit_refuse(refused, EDIT_FILE, "the image cannot be read", file);
}

bool plan_layer(const Model* model, const CopiedLayer& from, const PasteRequest& wanted, std::set<std::string>* taken,
                LayerPlan* plan, HeldImages* held, EditRefusal* refused) {
    const Layer* takes = wanted.layer;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (takes == nullptr && !from.whole && str_equal(layer.name, from.settings.name)) { takes = &layer; }
    }
    *plan = LayerPlan{&from, takes != nullptr ? rank_in(model->layers, takes) : -1, {}, {}};
    if (takes != nullptr) { return true; }
    plan->name = free_name(*taken, from.settings.name);
    taken->insert(plan->name);
    const bool has_surface = !from.triangles.empty() || !from.polygons.empty();
    for (size_t slot = 0; slot < from.images.size(); ++slot) {
        // A base image wants something to lie on, and a file could not say it otherwise.
        if (from.images[slot].empty() || (slot == IMAGE_SLOT_BASE && !has_surface)) { continue; }
        if (!plan_image(model, wanted, from.images[slot], &plan->images[slot], held, refused)) { return false; }
    }
    return true;
}

bool make_plan(const Model* model, const Clipboard& clipboard, const PasteRequest& wanted, PastePlan* plan,
               HeldImages* held, EditRefusal* refused) {
    if (clipboard.points.empty() && clipboard.layers.empty()) {
        return edit_refuse(refused, EDIT_STATE, "nothing was copied");
    }
    plan->first_point = model_next_point(model);
    if (plan->first_point + static_cast<int64_t>(clipboard.points.size()) - 1 > POINT_ID_MOST) {
        return edit_refuse(refused, EDIT_STATE,
                           "no ids up to " + std::to_string(POINT_ID_MOST) + " are left for " +
                               std::to_string(clipboard.points.size()) + " points");
    }
    std::set<std::string> taken;
    for (const Layer& layer : list_elements<Layer>(model->layers)) { taken.insert(layer.name); }
    for (const CopiedLayer& from : clipboard.layers) {
        plan->layers.emplace_back();
        if (!plan_layer(model, from, wanted, &taken, &plan->layers.back(), held, refused)) { return false; }
    }
    return true;
}

// ---- the change ----

struct Paster {
    Session* session;
    Model* model;
    const Clipboard* clipboard;
    Vec3 move;
    std::map<int32_t, int32_t> ids;  // new ones by those in the clipboard
    Pasted* pasted;                  // null for a model that nobody asks about
};

int16_t new_id(const Paster& paster, int32_t id) {
    const auto found = paster.ids.find(id);
    return found != paster.ids.end() ? static_cast<int16_t>(found->second) : int16_t{0};
}

void paste_joints(const Paster& paster) {
    for (const CopiedJoint& joint : paster.clipboard->joints) {
        const bool can_be = name_fits_line(joint.name, KEY_NAME_MOST);
        if (!can_be || joint_named(paster.model, joint.name) != nullptr) { continue; }
        const bool hangs = !joint_would_hang_on_itself(paster.model, joint.name, joint.parent);
        model_append_joint(paster.model, joint.name.c_str(), joint.place, hangs ? joint.parent.c_str() : "world");
    }
}

float moved(float place, float way) {
    return way == 0.0f ? place : static_cast<float>(float_to_int(std::round(double{place} + double{way})));
}

void paste_points(Paster* paster, int32_t first) {
    int32_t id = first;
    for (const CopiedPoint& copied : paster->clipboard->points) {
        Point point = copied.record;
        const Vec3& place = point.position;
        const Vec3& way = paster->move;
        point.position = Vec3{moved(place.x, way.x), moved(place.y, way.y), moved(place.z, way.z)};
        point.joint_a = model_find_joint(paster->model, copied.joint_a.c_str());
        point.joint_b = model_find_joint(paster->model, copied.joint_b.c_str());
        model_append_point(paster->model, id, point);
        paster->ids[copied.id] = id;
        if (paster->pasted != nullptr) { paster->pasted->points.push_back(id); }
        ++id;
    }
    if (paster->clipboard->points.empty()) { return; }
    change_fields(paster->model);
    if (paster->clipboard->has_normals) { paster->model->has_normals = 1; }
    if (paster->clipboard->has_gouraud) { paster->model->has_gouraud = 1; }
}

template <typename Primitive>
void note_made(const Paster& paster, PrimitiveKind kind, const Primitive* made) {
    if (paster.pasted != nullptr && made != nullptr) { paster.pasted->primitives.push_back({kind, made->id}); }
}

void paste_surface(const Paster& paster, const CopiedLayer& from, Layer* layer) {
    for (Triangle triangle : from.triangles) {
        for (int i = 0; i < triangle_corners(&triangle); ++i) {
            triangle.points[i] = new_id(paster, triangle.points[i]);
            triangle.normals[i] = new_id(paster, triangle.normals[i]);
            triangle.uvs[i][0] = triangle.uvs[i][1] = 0.0f;
        }
        for (int i = 0; triangle.curve_type != 0 && i < 2 * triangle_corners(&triangle); ++i) {
            triangle.controls[i] = new_id(paster, triangle.controls[i]);
        }
        const Triangle* added = layer_append_triangle(paster.model, layer, triangle);
        note_made(paster, PrimitiveKind::TRIANGLE, added);
    }
    for (std::vector<PolygonVertex> vertices : from.polygons) {
        for (PolygonVertex& vertex : vertices) {
            vertex = PolygonVertex{new_id(paster, vertex.point), new_id(paster, vertex.normal), 0.0f, 0.0f};
        }
        const Polygon* added = layer_append_polygon(paster.model, layer, vertices);
        note_made(paster, PrimitiveKind::POLYGON, added);
    }
}

void paste_lines(const Paster& paster, const CopiedLayer& from, Layer* layer) {
    for (std::vector<int32_t> ids : from.lines) {
        for (int32_t& id : ids) { id = new_id(paster, id); }
        const Line* added = layer_append_line(paster.model, layer, ids);
        note_made(paster, PrimitiveKind::LINE, added);
    }
}

Layer* make_layer(const Paster& paster, const LayerPlan& plan) {
    Layer* layer = model_append_layer(paster.model, plan.name.c_str());
    if (layer == nullptr) { return nullptr; }
    const Layer& from = plan.from->settings;
    std::copy(std::begin(from.colour), std::end(from.colour), layer->colour);
    std::copy(std::begin(from.invisible_colour), std::end(from.invisible_colour), layer->invisible_colour);
    layer->singlesided = from.singlesided;
    layer->transparency = from.transparency;
    layer->mirror = from.mirror;
    layer->mirror_axis = from.mirror_axis;
    layer->invisible = from.invisible;
    return layer;
}

bool put_images(const Paster& paster, const LayerPlan& plan, Layer* layer, EditRefusal* refused) {
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
        const std::string& name = plan.images[static_cast<size_t>(slot)];
        if (name.empty()) { continue; }
        if (!layer_put_image(paster.model, layer, slot, name, layer_image_lay(&plan.from->settings))) {
            return edit_refuse(refused, EDIT_FILE, "the image cannot be read", name);
        }
    }
    if (LayerImage* image = layer_first_image(layer)) { image->reflection = plan.from->reflection; }
    return true;
}

bool paste_layer(const Paster& paster, const LayerPlan& plan, Layer* layer, EditRefusal* refused) {
    if (layer == nullptr) { return edit_refuse(refused, EDIT_STATE, "the model has no room for another layer"); }
    paste_surface(paster, *plan.from, layer);
    paste_lines(paster, *plan.from, layer);
    for (const Uvee& uvee : plan.from->uvees) {
        layer_append_uvee(paster.model, layer, Uvee{new_id(paster, uvee.point), uvee.u, uvee.v});
    }
    if (paster.pasted != nullptr) {
        std::vector<std::string>& names = paster.pasted->layers;
        if (std::find(names.begin(), names.end(), layer->name) == names.end()) { names.emplace_back(layer->name); }
    }
    if (plan.rank < 0) { return put_images(paster, plan, layer, refused); }
    const LayerImage* image = layer_first_image(layer);
    if (image != nullptr && image->names[IMAGE_SLOT_BASE][0] != '\0') { layer_map(paster.model, layer); }
    return true;
}

bool paste_into(Paster* paster, const PastePlan& plan, EditRefusal* refused) {
    Model* model = paster->model;
    change_model(model);
    paste_joints(*paster);
    paste_points(paster, plan.first_point);
    // Those that are there come first: a new one has a rank of its own.
    std::vector<Layer*> layers;
    for (const LayerPlan& each : plan.layers) {
        layers.push_back(each.rank >= 0 ? at_rank<Layer>(model->layers, each.rank) : nullptr);
    }
    for (size_t i = 0; i < layers.size(); ++i) {
        Layer* layer = layers[i] != nullptr ? layers[i] : make_layer(*paster, plan.layers[i]);
        if (!paste_layer(*paster, plan.layers[i], layer, refused)) { return false; }
    }
    settle_counts(model);
    model_measure(model);
    if (const RootModel* root = session_root_of(paster->session, model)) {
        session_grow_radius(paster->session, root->model);
    }
    return true;
}

}  // namespace

bool edit_paste(Session* session, Model* model, const Clipboard& clipboard, const PasteRequest& wanted, Pasted* pasted,
                EditRefusal* refused) {
    PastePlan plan;
    HeldImages held;
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused) ||
        !make_plan(model, clipboard, wanted, &plan, &held, refused)) {
        return false;
    }
    for (Model* target : targets) {
        Paster paster{session, target, &clipboard, wanted.move, {}, target == model ? pasted : nullptr};
        if (!paste_into(&paster, plan, refused)) { return false; }
    }
    scene_evaluate(session);
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
