// Setting what points hold.
#include "edit/point_settings.h"

#include <algorithm>
#include <cmath>

#include "edit/settle.h"
#include "scene/change.h"

namespace pelt {

namespace {

constexpr double WHOLE_MOST = 2147483520.0;  // the last float that fits the whole numbers of a file
constexpr float CHANNEL_MOST = 255.0f;

// Of length 1, as the reader of a file would store it and accept it again.
bool direction_of(Vec3 v, Vec3* out) {
    const float largest = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
    if (!(largest > 0.0f) || !std::isfinite(largest)) { return false; }
    *out = {v.x / largest, v.y / largest, v.z / largest};
    vec_normalise(out);
    return vec_is_finite(*out);
}

void store(Point* point, const PointSettings& settings) {
    if (settings.place) {
        const Vec3& place = *settings.place;
        point->position = {whole_number(place.x), whole_number(place.y), whole_number(place.z)};
    }
    if (settings.normal) { point->normal = *settings.normal; }
    for (size_t channel = 0; settings.colour && channel < settings.colour->size(); ++channel) {
        point->gouraud[channel] = static_cast<unsigned char>((*settings.colour)[channel]);
    }
    if (settings.transparency) {
        point->gouraud[3] = static_cast<unsigned char>(std::lround(*settings.transparency * CHANNEL_MOST));
    }
    if (settings.weight) { point->weight = *settings.weight; }
}

void change_points(Session* session, Model* model, const std::vector<int32_t>& ids, const PointSettings& settings) {
    change_model(model);
    if (settings.normal) { model->has_normals = 1; }
    if (settings.colour || settings.transparency) { model->has_gouraud = 1; }
    for (const int32_t id : ids) {
        Point* point = list_find<Point>(&model->points, id);
        change_point(model, point);
        store(point, settings);
    }
    settle_model(session, model, {ids, {}});
}

}  // namespace

float whole_number(double value) {
    return static_cast<float>(std::clamp(std::round(value), -WHOLE_MOST, WHOLE_MOST)) + 0.0f;
}

bool edit_points(Session* session, Model* model, const std::vector<int32_t>& ids, const PointSettings& settings,
                 EditRefusal* refused) {
    PointSettings good = settings;
    if (settings.normal && !direction_of(*settings.normal, &*good.normal)) {
        return edit_refuse(refused, EDIT_ARGUMENT, "a normal needs a direction");
    }
    std::vector<Model*> targets;
    if (!edit_targets(session, model, &targets, refused)) { return false; }
    for (const int32_t id : ids) {
        if (list_find(&model->points, id) == nullptr) {
            return edit_refuse(refused, EDIT_ARGUMENT, "there is no point " + std::to_string(id));
        }
    }
    for (Model* target : targets) { change_points(session, target, ids, good); }
    models_changed_alike(targets);
    return true;
}

}  // namespace pelt
