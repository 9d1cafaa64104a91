// Builds models, writes them, and reads what was written again before anyone sees it.
//
// What surprises: opaque layers come before transparent ones, because layers are drawn in their order and never sorted.
#include "interchange/model_making.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "formats/whole_writer.h"
#include "foundation/text.h"
#include "interchange/planar_fit.h"
#include "scene/model.h"
#include "scene/model_tree.h"

namespace pelt {

namespace {

struct ModelReleaser {
    void operator()(Model* model) const { model_release(model); }
};
using ModelOwner = std::unique_ptr<Model, ModelReleaser>;

// Images that lie about by chance have no say in whether the model reads back: no directory has this name.
ModelOwner new_model(const std::string& file_name) {
    ModelOwner model(model_create(file_name.c_str(), nullptr));
    str_copy("*/", model->path);
    return model;
}

struct ModelMaking {
    const SoupPart& part;
    const LookBook& book;
    const MadeSkeleton& skeleton;
    const PointPool& pool;
    const std::vector<std::optional<PlanarFit>>& fits;  // by look
    Model* model;
};

int32_t id_of(uint32_t point) { return static_cast<int32_t>(point) + 1; }

const char* joint_name(const MadeSkeleton& skeleton, int32_t joint) {
    return joint < 0 ? "world" : skeleton.joints[static_cast<size_t>(joint)].name.c_str();
}

void add_joints(const ModelMaking& making) {
    for (const MadeJoint& joint : making.skeleton.joints) {
        model_add_joint(making.model, joint.name.c_str(), joint.place[0], joint.place[1], joint.place[2],
                        joint.parent.c_str(), 0);
    }
}

void add_point(const ModelMaking& making, int32_t id, const PoolPoint& point) {
    const bool is_bound = point.skin != NO_SKIN;
    const SkinShare share = is_bound ? making.skeleton.skins[static_cast<size_t>(point.skin)] : SkinShare{-1, -1, 1.0f};
    model_set_point(making.model, id, point.place[0], point.place[1], point.place[2], share.weight);
    if (is_bound) {
        model_set_point_joints(making.model, id, joint_name(making.skeleton, share.joint_a),
                               joint_name(making.skeleton, share.joint_b));
    }
    if (making.pool.has_normals) {
        std::array<float, 3> n{0.0f, 0.0f, SOUP_NORMAL_SCALE};
        if (point.normal != std::array<int16_t, 3>{0, 0, 0}) { std::copy_n(point.normal.begin(), n.size(), n.begin()); }
        model_set_normal(making.model, id, n[0] / SOUP_NORMAL_SCALE, n[1] / SOUP_NORMAL_SCALE,
                         n[2] / SOUP_NORMAL_SCALE);
    }
    if (making.part.coloured) {
        const auto& colour = point.colour;
        model_set_gouraud(making.model, id, colour[0], colour[1], colour[2], colour[3]);
    }
}

// The source's corners run counter-clockwise, those of a primitive clockwise. A quad stands in strip order, and is cut
// where the source cut it: between the first and the third.
void add_face(const ModelMaking& making, const char* layer, const PoolFace& face) {
    static constexpr std::array<size_t, 4> TRIANGLE_ORDER = {0, 2, 1, 1};
    static constexpr std::array<size_t, 4> QUAD_ORDER = {1, 0, 2, 3};
    const auto& order = face.count == 4 ? QUAD_ORDER : TRIANGLE_ORDER;
    int32_t points[4];
    int32_t normals[4];
    for (size_t i = 0; i < order.size(); ++i) {
        points[i] = id_of(face.points[order[i]]);
        normals[i] = id_of(face.normals[order[i]]);
    }
    model_add_triangle(making.model, layer, face.count == 4 ? 1 : 0, points, normals, nullptr, 0);
}

void add_image(const ModelMaking& making, int32_t number, Layer& layer) {
    const SurfaceLook& look = making.book.looks[static_cast<size_t>(number)];
    const MadeImage& made = making.book.images[static_cast<size_t>(look.image)];
    const std::optional<PlanarFit>& found = making.fits[static_cast<size_t>(number)];
    const PlanarFit fit = found                  ? *found
                          : look.has_coordinates ? PlanarFit{AXIS_X, AXIS_Z}
                                                 : any_planar(making.part, number);
    LayerImage* image = list_add<LayerImage>(&layer.images, 1);
    str_copy(made.name.c_str(), image->names[IMAGE_SLOT_BASE]);
    layer.image_axis_u = fit.axis_u;
    layer.image_axis_v = fit.axis_v;
    if (fit.repeat_u != 1.0f || fit.repeat_v != 1.0f) {
        layer.image_repeat = 1;
        layer.repeat_u = fit.repeat_u;
        layer.repeat_v = fit.repeat_v;
    }
    layer.invisible = made.has_key ? 1 : 0;
    std::copy(made.key.begin(), made.key.end(), layer.invisible_colour);
}

void add_layer(const ModelMaking& making, int32_t number, const std::vector<const PoolFace*>& faces) {
    const SurfaceLook& look = making.book.looks[static_cast<size_t>(number)];
    const char* name = look.name.c_str();
    model_add_layer(making.model, name, look.colour[0], look.colour[1], look.colour[2], look.singlesided ? 1 : 0, 0,
                    AXIS_X);
    for (const PoolFace* face : faces) {
        if (face->count == 2) {
            const int32_t ends[] = {id_of(face->points[0]), id_of(face->points[1])};
            model_add_line(making.model, name, 2, ends);
        } else {
            add_face(making, name, *face);
        }
    }
    Layer* layer = model_find_layer(making.model, name);
    layer->transparency = look.transparency;
    if (look.image < 0 || !layer_has_surface(*layer)) { return; }
    add_image(making, number, *layer);
    const auto uvees = making.pool.uvees.find(number);
    if (uvees == making.pool.uvees.end()) { return; }
    for (const auto& [point, uv] : uvees->second) { model_add_uvee(making.model, name, id_of(point), uv[0], uv[1]); }
}

void add_layers(const ModelMaking& making) {
    std::vector<std::vector<const PoolFace*>> faces(making.book.looks.size());
    for (const PoolFace& face : making.pool.faces) {
        if (face.count >= 2) { faces[static_cast<size_t>(face.look)].push_back(&face); }
    }
    for (const bool transparent : {false, true}) {
        for (size_t look = 0; look < faces.size(); ++look) {
            const bool is_transparent = making.book.looks[look].transparency > 0.0f;
            if (is_transparent == transparent && !faces[look].empty()) {
                add_layer(making, static_cast<int32_t>(look), faces[look]);
            }
        }
    }
}

MadeModel written(const Model* model, const std::string& file_name) {
    MadeModel made;
    made.text = model_write_whole(model, file_name.c_str(), &made.error);
    if (!made.error.empty()) { return made; }
    const ModelOwner again(model_read_back(made.text, model, &made.error));
    if (again != nullptr) { made.error = model_difference(model, again.get()); }
    if (!made.error.empty()) { made.error = file_name + " does not read back: " + made.error; }
    made.bytes = model_record_bytes(model);
    return made;
}

}  // namespace

MadeModel make_model(const SoupPart& part, const LookBook& book, const MadeSkeleton& skeleton,
                     const std::string& file_name) {
    std::vector<std::optional<PlanarFit>> fits(book.looks.size());
    std::vector<bool> has_uvees(book.looks.size(), false);
    for (size_t look = 0; look < fits.size(); ++look) {
        if (!book.looks[look].has_coordinates) { continue; }
        fits[look] = fit_planar(part, static_cast<int32_t>(look));
        has_uvees[look] = !fits[look].has_value();
    }
    const PointPool pool = make_pool(part, has_uvees);
    MadeModel made;
    made.is_too_large = pool.points.size() > POOL_POINT_LIMIT;
    if (made.is_too_large) { return made; }
    const ModelOwner model = new_model(file_name);
    const ModelMaking making{part, book, skeleton, pool, fits, model.get()};
    add_joints(making);
    for (size_t i = 0; i < pool.points.size(); ++i) {
        add_point(making, id_of(static_cast<uint32_t>(i)), pool.points[i]);
    }
    add_layers(making);
    return written(model.get(), file_name);
}

MadeModel make_parent_model(const std::vector<std::string>& children, const std::string& file_name) {
    const ModelOwner model = new_model(file_name);
    for (const std::string& child : children) {
        model_add_child(model.get(), nullptr, child.c_str(), 0.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f, "0", "0", "0");
    }
    return written(model.get(), file_name);
}

}  // namespace pelt
