// The scene as a frame draws it, without a frame. What surprises: the points of a model are placed once, into one byte
// each that says on which sides of the box they lie, and a primitive whose bytes have a side in common is passed over
// without another look; and mirrored halves keep the stored order of corners, as they do when they are drawn.
#include "edit/seen_scene.h"

#include <algorithm>
#include <cmath>

#include "motion/drawn_patch.h"
#include "motion/scene_walk.h"
#include "scene/layer_points.h"
#include "scene/vertex.h"

namespace pelt {

namespace {

constexpr int AXIS_NONE = 0;
constexpr int HALVES = 5;  // plain, mirrored along three axes, and along no axis at all
constexpr uint8_t OUTSIDE = 0xFF;
constexpr int SIDES = 6;

// A place p lies on the inner side where normal * p + offset is at least 0.
struct Side {
    double normal[3];
    double offset;
    double length;  // of the normal

    double reach(const Vec3& p) const { return normal[0] * p.x + normal[1] * p.y + normal[2] * p.z + offset; }
};

// The plain drawing of a model or a mirrored one.
struct Half {
    int32_t space = -1;
    Side sides[SIDES];
    std::vector<uint8_t> codes;        // by slot: a bit for each side that the point lies beyond
    std::vector<const Layer*> layers;  // by slot: the first that uses the point
};

// A corner on its way into a triangle.
struct Corner {
    Vec3 place;
    UvPair uv;
};

void set_sides(const ClipMatrix& clip, const PictureBox& box, Half* half) {
    const double* m = clip.m;
    // Each as a * x + b * y + c * z + d * w of the clip place.
    const double forms[SIDES][4] = {{1, 0, 0, -box.left}, {-1, 0, 0, box.right}, {0, 1, 0, -box.bottom},
                                    {0, -1, 0, box.top},  {0, 0, 1, 1},          {0, 0, -1, 1}};
    for (int side = 0; side < SIDES; ++side) {
        double sum[4] = {};
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column) { sum[column] += forms[side][row] * m[4 * row + column]; }
        }
        half->sides[side] = Side{{sum[0], sum[1], sum[2]}, sum[3], std::hypot(sum[0], sum[1], sum[2])};
    }
}

uint8_t side_code(const Half& half, const Vec3& p) {
    unsigned code = 0;
    for (unsigned side = 0; side < SIDES; ++side) { code |= (half.sides[side].reach(p) < 0.0 ? 1U : 0U) << side; }
    return static_cast<uint8_t>(code);
}

// Positive for a front face.
double facing(const ClipPlace* c) {
    return c[0].w * (c[1].x * c[2].y - c[2].x * c[1].y) + c[1].w * (c[2].x * c[0].y - c[0].x * c[2].y) +
           c[2].w * (c[0].x * c[1].y - c[1].x * c[0].y);
}

class Gathering {
public:
    Gathering(Session* session, const PickView& view, const PictureBox& box, bool points, bool lines)
        : session_(session), view_(view), box_(box), with_points_(points), with_lines_(lines) {}

    void add_model(const ScenePlace& at);
    SeenScene take() { return std::move(scene_); }

private:
    Half& half_of(int axis_code, bool mirrored);
    void add_layer(const Layer& layer, bool mirrored);
    void add_primitives(const Layer& layer);
    void add_flat(Triangle* triangle);
    void add_curved(Triangle* triangle, SurfaceForm form);
    void add_patch(Triangle* triangle, const PatchCorners& corners, PatchSurface* surface);
    bool beyond(const PatchCorners& corners) const;
    void add_polygon(const Polygon& polygon);
    bool add_triangle(const Triangle* triangle, const Polygon* polygon, const Corner& a, const Corner& b,
                      const Corner& c);
    void add_line(const Line& line);
    void add_lines(const Layer& layer);
    void use_slot(int32_t slot);
    void add_points();
    void add_point(const Half& half, int32_t slot, int32_t id, const Point& point, bool dot);
    void begin_surface(const Layer& layer, const unsigned char* texels, int32_t width, int32_t height);

    Session* session_;
    const PickView& view_;
    PictureBox box_;
    bool with_points_, with_lines_;
    SeenScene scene_;

    const ScenePlace* at_ = nullptr;
    Half halves_[HALVES];
    Half* half_ = nullptr;
    const Layer* layer_ = nullptr;
    bool mirrored_ = false;
    bool back_faces_ = true;
};

void Gathering::add_model(const ScenePlace& at) {
    at_ = &at;
    for (Half& half : halves_) { half.space = -1; }
    for (const Layer& layer : list_elements<Layer>(at.model->layers)) {
        if (layer.hidden != 0 || session_->display_triangles == 0) { continue; }
        add_layer(layer, false);
        if (session_->display_mirror != 0 && layer.mirror != 0) { add_layer(layer, true); }
    }
    for (const Layer& layer : list_elements<Layer>(at.model->layers)) {
        if (layer.hidden == 0 && session_->display_lines != 0 && (with_lines_ || with_points_)) { add_lines(layer); }
    }
    if (with_points_) { add_points(); }
}

Half& Gathering::half_of(int axis_code, bool mirrored) {
    // A code that is no axis mirrors nothing: drawn twice in the same place, as intended there.
    const bool is_axis = axis_code >= AXIS_X && axis_code <= AXIS_Z;
    Half& half = halves_[!mirrored ? AXIS_NONE : is_axis ? axis_code : HALVES - 1];
    if (half.space >= 0) { return half; }
    Mat4 place = at_->place;
    if (mirrored && is_axis) {
        const Vec3 scale = mirrored_along({1.0f, 1.0f, 1.0f}, axis_code);
        mat_scale(&place, scale.x, scale.y, scale.z);
    }
    half.space = static_cast<int32_t>(scene_.spaces.size());
    scene_.spaces.push_back({at_->model, at_->link, place, clip_matrix(view_, place), mirrored});
    set_sides(scene_.spaces.back().clip, box_, &half);
    half.codes.assign(static_cast<size_t>(at_->model->points.capacity), OUTSIDE);
    half.layers.assign(with_points_ ? half.codes.size() : 0, nullptr);
    const auto points = list_elements<Point>(at_->model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        half.codes[static_cast<size_t>(point.slot())] = side_code(half, *point_posed_position(session_, &*point));
    }
    return half;
}

void Gathering::begin_surface(const Layer& layer, const unsigned char* texels, int32_t width, int32_t height) {
    layer_ = &layer;
    scene_.surfaces.push_back({half_->space, &layer, texels, width, height});
}

// The rules of the passes of a layer, as far as they decide what is covered.
void Gathering::add_layer(const Layer& layer, bool mirrored) {
    if (!layer_has_surface(layer)) { return; }
    const LayerImage* image = layer_first_image(&layer);
    const bool reflecting = session_->display_reflect != 0 && image != nullptr;
    const bool has_reflection =
        reflecting && image->reflection > 0.0f && image->pixels[IMAGE_SLOT_REFLECTION] != nullptr;
    const bool has_base = !reflecting || image->reflection != 1.0f;
    if (!has_base && !has_reflection) { return; }

    half_ = &half_of(layer.mirror_axis, mirrored);
    mirrored_ = mirrored;
    back_faces_ = layer.singlesided == 0 || session_->display_backfaces != 0 || session_->display_wireframe != 0;
    const bool textured =
        image != nullptr && session_->display_textures != 0 && image->pixels[IMAGE_SLOT_BASE] != nullptr;
    const int slot =
        mirrored && textured && image->pixels[IMAGE_SLOT_MIRROR] != nullptr ? IMAGE_SLOT_MIRROR : IMAGE_SLOT_BASE;
    // A reflection covers what the key leaves out.
    const bool keyed = textured && !has_reflection && layer.invisible != 0 && session_->display_transparency != 0 &&
                       image->bytes_per_pixel[slot] == 4;
    if (keyed && image->width[slot] > 0 && image->height[slot] > 0) {
        begin_surface(layer, image->pixels[slot], image->width[slot], image->height[slot]);
    } else {
        begin_surface(layer, nullptr, 0, 0);
    }
    add_primitives(layer);
}

void Gathering::add_primitives(const Layer& layer) {
    for (Triangle& triangle : list_elements<Triangle>(const_cast<KeyedList&>(layer.triangles))) {
        const SurfaceForm form = surface_form(session_, &triangle);
        if (form == SurfaceForm::FLAT) {
            add_flat(&triangle);
        } else {
            add_curved(&triangle, form);
        }
    }
    for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) { add_polygon(polygon); }
}

void Gathering::use_slot(int32_t slot) {
    if (with_points_ && half_->layers[static_cast<size_t>(slot)] == nullptr) {
        half_->layers[static_cast<size_t>(slot)] = layer_;
    }
}

void Gathering::add_flat(Triangle* triangle) {
    const TriangleCache* cache = triangle_cache_get(session_, at_->model, triangle);
    if (cache == nullptr) { return; }
    const int count = triangle_corners(triangle);
    unsigned code = OUTSIDE;
    for (int i = 0; i < count; ++i) {
        const auto slot = static_cast<uint32_t>(cache->point_slots[i]);
        if (slot >= half_->codes.size()) { return; }
        code &= half_->codes[slot];
    }
    if (code != 0) { return; }

    Corner corners[4];
    for (int i = 0; i < count; ++i) {
        const auto* point = list_at<const Point>(&at_->model->points, cache->point_slots[i], 0);
        if (point == nullptr || list_at(&at_->model->points, cache->normal_slots[i], 0) == nullptr) { return; }
        corners[i] = {*point_posed_position(session_, point), {triangle->uvs[i][0], triangle->uvs[i][1]}};
    }
    if (!mirrored_) { std::swap(corners[1], corners[2]); }
    bool drawn = add_triangle(triangle, nullptr, corners[0], corners[1], corners[2]);
    if (count == 4) { drawn |= add_triangle(triangle, nullptr, corners[3], corners[2], corners[1]); }
    for (int i = 0; drawn && i < count; ++i) { use_slot(cache->point_slots[i]); }
}

// Whether all that a patch may become lies beyond one side.
bool Gathering::beyond(const PatchCorners& corners) const {
    const double bulge = patch_bulge(corners);
    for (const Side& side : half_->sides) {
        const double margin = bulge * side.length;
        bool all = true;
        for (int i = 0; i < corners.count && all; ++i) { all = side.reach(corners.positions[i]) + margin < 0.0; }
        if (all) { return true; }
    }
    return false;
}

void Gathering::add_patch(Triangle* triangle, const PatchCorners& corners, PatchSurface* surface) {
    const bool textured = scene_.surfaces.back().texels != nullptr;
    patch_surface_attributes(corners, textured, false, GOURAUD_SCALE, surface);
    const auto corner = [&](int vertex) {
        Corner out{surface->positions[vertex], {0.0f, 0.0f}};
        if (surface->uvs != nullptr) {
            const float* uv = surface->uvs + vertex * surface->attribute_count;
            out.uv = {uv[0], uv[1]};
        }
        return out;
    };
    bool drawn = false;
    for (int i = 0; i < surface->triangle_count; ++i) {
        const int16_t* vertices = surface->triangles[i];
        drawn |= add_triangle(triangle, nullptr, corner(vertices[0]), corner(vertices[mirrored_ ? 1 : 2]),
                              corner(vertices[mirrored_ ? 2 : 1]));
    }
    const TriangleCache* cache = triangle_cache_get(session_, at_->model, triangle);
    for (int i = 0; drawn && i < triangle_corners(triangle); ++i) { use_slot(cache->point_slots[i]); }
}

void Gathering::add_curved(Triangle* triangle, SurfaceForm form) {
    PatchCorners corners;
    PatchSurface surface;
    if (form == SurfaceForm::FILTERED) {
        if (!filtered_corners(session_, at_->model, triangle, &corners)) { return; }
        for (int half = 0; half < (triangle->quad != 0 ? 2 : 1); ++half) {
            const PatchCorners part = filtered_half(corners, half);
            if (beyond(part)) { continue; }
            patch_surface(part, FILTERED_CURVE_TYPE, patch_level(session_), &surface);
            add_patch(triangle, part, &surface);
        }
    } else if (session_->display_curvepath != 0) {
        if (skinned_surface(session_, at_->model, triangle, &corners, &surface)) {
            add_patch(triangle, corners, &surface);
        }
    } else if (curved_corners(session_, at_->model, triangle, &corners) && !beyond(corners)) {
        patch_surface(corners, triangle->curve_type, patch_level(session_), &surface);
        add_patch(triangle, corners, &surface);
    }
}

// A strip, of which the stored order is that of a mirrored drawing.
void Gathering::add_polygon(const Polygon& polygon) {
    Corner corners[POLYGON_VERTEX_LIMIT];
    int32_t slots[POLYGON_VERTEX_LIMIT];
    int count = 0;
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
        if (count == POLYGON_VERTEX_LIMIT) { break; }
        slots[count] = list_index_of(&at_->model->points, vertex.point, 0);
        const auto* point = list_at<const Point>(&at_->model->points, slots[count], 0);
        if (point == nullptr || list_find(&at_->model->points, vertex.normal) == nullptr) { return; }
        corners[count++] = {*point_posed_position(session_, point), {vertex.u, vertex.v}};
    }
    for (int i = 2; i < count; ++i) {
        const bool turned = (i % 2 == 0) != mirrored_;
        if (!add_triangle(nullptr, &polygon, corners[turned ? i : i - 2], corners[i - 1],
                          corners[turned ? i - 2 : i])) {
            continue;
        }
        for (int j = i - 2; j <= i; ++j) { use_slot(slots[j]); }
    }
}

bool Gathering::add_triangle(const Triangle* triangle, const Polygon* polygon, const Corner& a, const Corner& b,
                             const Corner& c) {
    if ((side_code(*half_, a.place) & side_code(*half_, b.place) & side_code(*half_, c.place)) != 0) { return false; }
    const ClipMatrix& clip = scene_.spaces[static_cast<size_t>(half_->space)].clip;
    const SeenTriangle seen{static_cast<int32_t>(scene_.surfaces.size()) - 1,
                            triangle,
                            polygon,
                            {clip_place(clip, a.place), clip_place(clip, b.place), clip_place(clip, c.place)},
                            {a.place, b.place, c.place},
                            {a.uv, b.uv, c.uv}};
    if (!back_faces_ && !(facing(seen.corners) > 0.0)) { return false; }
    scene_.triangles.push_back(seen);
    return true;
}

void Gathering::add_line(const Line& line) {
    const int said = std::min<int>({line.vertex_count, list_count(&line.vertices), POLYGON_VERTEX_LIMIT});
    std::vector<int32_t> ids;
    std::vector<const Point*> points;
    for (const int32_t& stored : list_elements<int32_t>(line.vertices)) {
        if (static_cast<int>(ids.size()) >= said) { break; }
        ids.push_back(line_point_id(stored));
        points.push_back(list_find<const Point>(&at_->model->points, ids.back()));
        if (points.back() == nullptr) { return; }
    }
    const ClipMatrix& clip = scene_.spaces[static_cast<size_t>(half_->space)].clip;
    for (size_t i = 0; i < ids.size(); ++i) {
        use_slot(list_index_of(&at_->model->points, ids[i], 0));
        if (!with_lines_ || i == 0) { continue; }
        const Vec3 from = *point_posed_position(session_, points[i - 1]);
        const Vec3 to = *point_posed_position(session_, points[i]);
        if ((side_code(*half_, from) & side_code(*half_, to)) != 0) { continue; }
        scene_.lines.push_back({static_cast<int32_t>(scene_.surfaces.size()) - 1,
                                &line,
                                {ids[i - 1], ids[i]},
                                {clip_place(clip, from), clip_place(clip, to)},
                                {from, to}});
    }
}

void Gathering::add_lines(const Layer& layer) {
    if (list_count(&layer.lines) == 0) { return; }
    const bool twice = session_->display_mirror != 0 && layer.mirror != 0;
    for (int drawing = 0; drawing < (twice ? 2 : 1); ++drawing) {
        half_ = &half_of(layer.mirror_axis, drawing == 1);
        begin_surface(layer, nullptr, 0, 0);
        for (const Line& line : list_elements<Line>(layer.lines)) { add_line(line); }
    }
}

void Gathering::add_points() {
    const bool dots = session_->display_points != 0;
    if (dots) { half_of(AXIS_NONE, false); }
    const std::vector<bool> hidden = dots ? model_hidden_points(at_->model) : std::vector<bool>{};
    for (const Half& half : halves_) {
        if (half.space < 0) { continue; }
        const bool plain = &half == halves_;
        const auto points = list_elements<Point>(at_->model->points);
        for (auto point = points.begin(); point != points.end(); ++point) {
            const auto slot = static_cast<size_t>(point.slot());
            const bool dot = dots && plain && (hidden.empty() || !hidden[slot]);
            if (half.codes[slot] == 0 && (dot || half.layers[slot] != nullptr)) {
                add_point(half, point.slot(), point.int_key(), *point, dot);
            }
        }
    }
}

void Gathering::add_point(const Half& half, int32_t slot, int32_t id, const Point& point, bool dot) {
    const SeenSpace& space = scene_.spaces[static_cast<size_t>(half.space)];
    const Vec3 place = *point_posed_position(session_, &point);
    const ClipPlace at = clip_place(space.clip, place);
    if (!(at.w > 0.0) || !std::isfinite(at.x) || !std::isfinite(at.y)) { return; }
    scene_.points.push_back({half.space, half.layers[static_cast<size_t>(slot)], id, dot, place, picture_place(at)});
}

// ---- lines of sight ----

// The texel at a place of a picture that repeats.
int32_t texel_index(float place, int32_t size) {
    const float part = (place - std::floor(place)) * static_cast<float>(size);
    return part < static_cast<float>(size) ? static_cast<int32_t>(part) : size - 1;
}

bool covers(const SeenSurface& surface, const SeenTriangle& triangle, const double* weights) {
    if (surface.texels == nullptr) { return true; }
    double u = 0.0, v = 0.0;
    for (int i = 0; i < 3; ++i) {
        u += weights[i] * static_cast<double>(triangle.uvs[i].u);
        v += weights[i] * static_cast<double>(triangle.uvs[i].v);
    }
    if (!std::isfinite(static_cast<float>(u)) || !std::isfinite(static_cast<float>(v))) { return true; }
    const auto column = static_cast<size_t>(texel_index(static_cast<float>(u), surface.width));
    const auto row = static_cast<size_t>(texel_index(static_cast<float>(v), surface.height));
    return surface.texels[(row * static_cast<size_t>(surface.width) + column) * 4 + 3] != 0;
}

}  // namespace

SeenScene scene_seen(Session* session, const PickView& view, const PictureBox& box, bool with_points, bool with_lines) {
    Gathering gathering(session, view, box, with_points, with_lines);
    scene_walk(session, [&](const ScenePlace& at) { gathering.add_model(at); });
    return gathering.take();
}

bool seen_triangle_hit(const SeenScene& scene, const SeenTriangle& triangle, double x, double y, SeenHit* hit) {
    // The weights that bring the corners onto the line of sight, on which x - x0 * w and y - y0 * w are 0. They hold
    // for corners behind the eye too, so that nothing has to be cut off first.
    double a[3], b[3];
    for (int i = 0; i < 3; ++i) {
        a[i] = triangle.corners[i].x - x * triangle.corners[i].w;
        b[i] = triangle.corners[i].y - y * triangle.corners[i].w;
    }
    double weights[3], sum = 0.0, size = 0.0;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        weights[i] = a[j] * b[k] - a[k] * b[j];
        sum += weights[i];
        size += std::fabs(a[j] * b[k]) + std::fabs(a[k] * b[j]);
    }
    constexpr double EDGE_ON = 1e-13;  // what is seen from the edge covers nothing, and its depth would be noise
    if (!(std::fabs(sum) > EDGE_ON * size)) { return false; }
    double z = 0.0, w = 0.0;
    for (int i = 0; i < 3; ++i) {
        weights[i] /= sum;
        if (!(weights[i] >= 0.0)) { return false; }
        z += weights[i] * triangle.corners[i].z;
        w += weights[i] * triangle.corners[i].w;
    }
    if (!(w > 0.0) || !(std::fabs(z) <= w)) { return false; }
    if (!covers(scene.surfaces[static_cast<size_t>(triangle.surface)], triangle, weights)) { return false; }
    *hit = SeenHit{&triangle, {weights[0], weights[1], weights[2]}, z / w};
    return true;
}

SeenHit seen_surface_at(const SeenScene& scene, double x, double y) {
    constexpr double SAME_DEPTH = 1e-7;  // a step of a depth buffer of 24 bits
    SeenHit nearest{nullptr, {}, 2.0};
    SeenHit hit;
    for (const SeenTriangle& triangle : scene.triangles) {
        if (seen_triangle_hit(scene, triangle, x, y, &hit) && hit.depth <= nearest.depth + SAME_DEPTH) {
            nearest = hit;
        }
    }
    return nearest;
}

bool seen_place(const SeenScene& scene, const PicturePlace& at) {
    SeenHit hit;
    for (const SeenTriangle& triangle : scene.triangles) {
        if (seen_triangle_hit(scene, triangle, at.x, at.y, &hit) && hit.depth < at.z - SEEN_TOUCH) { return false; }
    }
    return true;
}

}  // namespace pelt
