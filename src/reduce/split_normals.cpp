// Gives corners with a normal from elsewhere points of their own. What surprises: the new points have neither the
// colour nor the uvee of the corner's point, and where two joints meet in a corner only its normal moves to the new
// point. Both are intended.
#include "foundation/text.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "scene/model.h"

namespace pelt {

namespace {

// The two points of a corner; null unless it is to be split.
struct SplitCorner {
    const Point* place;
    const Point* normal;
};

SplitCorner split_corner(const Model* model, const Triangle& triangle, int corner) {
    const SplitCorner none{nullptr, nullptr};
    if (triangle.points[corner] == triangle.normals[corner]) { return none; }
    const SplitCorner found{list_find<const Point>(&model->points, triangle.points[corner]),
                            list_find<const Point>(&model->points, triangle.normals[corner])};
    return found.place != nullptr && found.normal != nullptr ? found : none;
}

int64_t count_split_corners(const Model* model) {
    int64_t count = 0;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            for (int corner = 0; corner < triangle_corners(&triangle); ++corner) {
                count += split_corner(model, triangle, corner).place != nullptr ? 1 : 0;
            }
        }
    }
    return count;
}

void add_point(Model* model, int32_t id, const SplitCorner& corner) {
    const Vec3& place = corner.place->position;
    const Vec3& normal = corner.normal->normal;
    model_set_point(model, id, float_to_int(place.x), float_to_int(place.y), float_to_int(place.z),
                    corner.normal->weight);
    model_set_normal(model, id, normal.x, normal.y, normal.z);
    if (Joint* joint = corner.normal->joint_a) {
        list_find<Point>(&model->points, id)->joint_a = joint;
        joint_gain_point(joint);
    }
}

// Splits the corners of one primitive and returns the next free id.
int32_t split_triangle(Model* model, Triangle* triangle, int32_t next_id) {
    for (int corner = 0; corner < triangle_corners(triangle); ++corner) {
        const SplitCorner split = split_corner(model, *triangle, corner);
        if (split.place == nullptr) { continue; }
        add_point(model, next_id, split);
        if (split.place->joint_a == split.normal->joint_a) { triangle->points[corner] = static_cast<int16_t>(next_id); }
        triangle->normals[corner] = static_cast<int16_t>(next_id);
        ++next_id;
    }
    return next_id;
}

}  // namespace

int model_split_normals(Model* model) {
    if (model == nullptr) { return 0; }
    const int64_t splits = count_split_corners(model);
    if (splits == 0) { return 1; }
    if (!point_id_fits(model_highest_point(model) + splits)) { return 0; }
    int32_t next_id = model_highest_point(model) + 1;
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
            next_id = split_triangle(model, &triangle, next_id);
        }
    }
    return 1;
}

}  // namespace pelt
