// Picking, as questions to what a frame draws near the pixels in question. What surprises: the points of a rectangle
// are each looked at along a line of sight of their own, so that the triangles are sorted into cells first.
#include "edit/pick.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "edit/seen_scene.h"
#include "scene/vertex.h"

namespace pelt {

namespace {

PictureBox box_around(const PickView& view, const PicturePlace& at, double pixels) {
    const double dx = 2.0 * pixels / view.width, dy = 2.0 * pixels / view.height;
    return {at.x - dx, at.y - dy, at.x + dx, at.y + dy};
}

// One question, with what is needed for its answer.
struct Question {
    const PickView& view;
    const SeenScene& scene;
    PicturePlace at;
    double within;
};

void set_place(const Question& question, const SeenSpace& space, const Vec3& place, PickHit* hit) {
    hit->model = space.model;
    hit->link = space.link;
    hit->mirrored = space.mirrored;
    hit->place = world_place(space.place, place);
    hit->depth = view_depth(question.view, hit->place);
}

// ---- surfaces ----

// Keeps whichever corner is nearest.
struct NearestCorner {
    const Question& question;
    const SeenSpace& space;
    const Session* session;
    double distance = std::numeric_limits<double>::infinity();
    int32_t id = 0;

    void take(int32_t corner) {
        const auto* point = list_find<const Point>(&space.model->points, corner);
        if (point == nullptr) { return; }
        const ClipPlace place = clip_place(space.clip, *point_posed_position(session, point));
        const double far = place.w > 0.0 ? pixel_distance(question.view, question.at, picture_place(place)) : INFINITY;
        if (id != 0 && !(far < distance)) { return; }
        distance = far;
        id = corner;
    }
};

PickHit pick_face(const Session* session, const Question& question) {
    PickHit hit{};
    const SeenHit seen = seen_surface_at(question.scene, question.at.x, question.at.y);
    if (seen.triangle == nullptr) { return hit; }
    const SeenTriangle& triangle = *seen.triangle;
    const SeenSurface& surface = question.scene.surfaces[static_cast<size_t>(triangle.surface)];
    const SeenSpace& space = question.scene.spaces[static_cast<size_t>(surface.space)];
    NearestCorner nearest{question, space, session};
    if (triangle.triangle != nullptr) {
        hit.kind = triangle.triangle->quad != 0 ? PickKind::QUAD : PickKind::TRIANGLE;
        hit.primitive = triangle.triangle->id;
        for (int i = 0; i < triangle_corners(triangle.triangle); ++i) { nearest.take(triangle.triangle->points[i]); }
    } else {
        hit.kind = PickKind::POLYGON;
        hit.primitive = triangle.polygon->id;
        for (const PolygonVertex& vertex : polygon_strip(*triangle.polygon)) { nearest.take(vertex.point); }
    }
    hit.layer = surface.layer;
    hit.point = nearest.id;
    const auto along = [&](float Vec3::*axis) {
        double sum = 0.0;
        for (int i = 0; i < 3; ++i) { sum += seen.weights[i] * static_cast<double>(triangle.places[i].*axis); }
        return static_cast<float>(sum);
    };
    set_place(question, space, {along(&Vec3::x), along(&Vec3::y), along(&Vec3::z)}, &hit);
    return hit;
}

// ---- what has no surface ----

// The candidates by their distance, of two alike the later one first, and of those the first that nothing hides.
struct Candidate {
    double distance;
    PicturePlace at;
    size_t index;
    float share;  // of a line, from its first end
};

const Candidate* nearest_seen(const Question& question, std::vector<Candidate>* candidates) {
    std::sort(candidates->begin(), candidates->end(), [](const Candidate& a, const Candidate& b) {
        if (a.distance != b.distance) { return a.distance < b.distance; }
        return a.at.z != b.at.z ? a.at.z < b.at.z : a.index > b.index;
    });
    for (const Candidate& each : *candidates) {
        if (seen_place(question.scene, each.at)) { return &each; }
    }
    return nullptr;
}

PickHit pick_point(const Question& question, bool dots_alone) {
    std::vector<Candidate> candidates;
    for (size_t i = 0; i < question.scene.points.size(); ++i) {
        const SeenPoint& point = question.scene.points[i];
        const double distance = pixel_distance(question.view, question.at, point.at);
        if (distance <= question.within && (point.dot || !dots_alone)) {
            candidates.push_back({distance, point.at, i, 0.0f});
        }
    }
    PickHit hit{};
    const Candidate* found = nearest_seen(question, &candidates);
    if (found == nullptr) { return hit; }
    const SeenPoint& point = question.scene.points[found->index];
    hit.kind = PickKind::POINT;
    hit.layer = point.layer;
    hit.point = point.id;
    set_place(question, question.scene.spaces[static_cast<size_t>(point.space)], point.place, &hit);
    return hit;
}

// The part of a line between near and far, as shares of it. False when nothing of it lies there.
bool cut_line(const ClipPlace (&ends)[2], double* from, double* to) {
    *from = 0.0;
    *to = 1.0;
    const double reach[2][2] = {{ends[0].w + ends[0].z, ends[1].w + ends[1].z},
                                {ends[0].w - ends[0].z, ends[1].w - ends[1].z}};
    for (const auto& [a, b] : reach) {
        if (a < 0.0 && b < 0.0) { return false; }
        if (a < 0.0) { *from = std::max(*from, a / (a - b)); }
        if (b < 0.0) { *to = std::min(*to, a / (a - b)); }
    }
    return *from <= *to;
}

ClipPlace between(const ClipPlace (&ends)[2], double share) {
    const auto mix = [share](double a, double b) { return a + (b - a) * share; };
    return {mix(ends[0].x, ends[1].x), mix(ends[0].y, ends[1].y), mix(ends[0].z, ends[1].z), mix(ends[0].w, ends[1].w)};
}

bool line_candidate(const Question& question, const SeenLine& line, Candidate* out) {
    double from = 0.0, to = 1.0;
    if (!cut_line(line.ends, &from, &to)) { return false; }
    const ClipPlace cut[2] = {between(line.ends, from), between(line.ends, to)};
    if (!(cut[0].w > 0.0) || !(cut[1].w > 0.0)) { return false; }
    const PicturePlace a = picture_place(cut[0]), b = picture_place(cut[1]);
    // In pixels, as a picture is seldom square.
    const double dx = (b.x - a.x) * question.view.width, dy = (b.y - a.y) * question.view.height;
    const double px = (question.at.x - a.x) * question.view.width, py = (question.at.y - a.y) * question.view.height;
    const double length = dx * dx + dy * dy;
    const double on_picture = length > 0.0 ? std::clamp((px * dx + py * dy) / length, 0.0, 1.0) : 0.0;
    // Steps that are even in the picture are not along the line where it leads away from the eye.
    const double share = on_picture * cut[0].w / ((1.0 - on_picture) * cut[1].w + on_picture * cut[0].w);
    out->at = picture_place(between(cut, share));
    out->distance = pixel_distance(question.view, question.at, out->at);
    out->share = static_cast<float>(from + (to - from) * share);
    return out->distance <= question.within;
}

PickHit pick_line(const Question& question) {
    std::vector<Candidate> candidates;
    for (size_t i = 0; i < question.scene.lines.size(); ++i) {
        Candidate candidate{0.0, {}, i, 0.0f};
        if (line_candidate(question, question.scene.lines[i], &candidate)) { candidates.push_back(candidate); }
    }
    PickHit hit{};
    const Candidate* found = nearest_seen(question, &candidates);
    if (found == nullptr) { return hit; }
    const SeenLine& line = question.scene.lines[found->index];
    const SeenSurface& surface = question.scene.surfaces[static_cast<size_t>(line.surface)];
    hit.kind = PickKind::LINE;
    hit.layer = surface.layer;
    hit.primitive = line.line->id;
    const auto end_distance = [&](const ClipPlace& end) {
        return end.w > 0.0 ? pixel_distance(question.view, question.at, picture_place(end)) : INFINITY;
    };
    hit.point = line.points[end_distance(line.ends[1]) < end_distance(line.ends[0]) ? 1 : 0];
    set_place(question, question.scene.spaces[static_cast<size_t>(surface.space)],
              vec_weighted(line.places[0], 1.0f - found->share, line.places[1], found->share), &hit);
    return hit;
}

// ---- rectangles ----

// The triangles by the cells of a grid over a box that they may touch; those that touch very many stand aside.
class Cells {
public:
    Cells(const SeenScene& scene, const PictureBox& box);
    bool sees(const PicturePlace& at) const;

private:
    int column(double x) const { return cell(x, box_.left, box_.right); }
    int row(double y) const { return cell(y, box_.bottom, box_.top); }
    int cell(double value, double low, double high) const {
        const double share = (value - low) / (high - low) * side_;
        return share > 0.0 ? static_cast<int>(std::min(share, side_ - 1.0)) : 0;
    }
    bool hides(size_t triangle, const PicturePlace& at) const;

    const SeenScene& scene_;
    PictureBox box_;
    int side_;
    std::vector<std::vector<uint32_t>> cells_;
    std::vector<uint32_t> wide_;
};

constexpr int CELLS_LIMIT = 256;  // of a side
constexpr int WIDE = 64;          // cells

Cells::Cells(const SeenScene& scene, const PictureBox& box) : scene_(scene), box_(box) {
    side_ = std::clamp(static_cast<int>(std::sqrt(static_cast<double>(scene.triangles.size()) / 2.0)), 1, CELLS_LIMIT);
    cells_.resize(static_cast<size_t>(side_) * static_cast<size_t>(side_));
    for (size_t i = 0; i < scene.triangles.size(); ++i) {
        double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY;
        bool whole = true;
        for (const ClipPlace& corner : scene.triangles[i].corners) {
            whole = whole && corner.w > 0.0;
            left = std::min(left, corner.x / corner.w);
            right = std::max(right, corner.x / corner.w);
            bottom = std::min(bottom, corner.y / corner.w);
            top = std::max(top, corner.y / corner.w);
        }
        const int c0 = column(left), c1 = column(right), r0 = row(bottom), r1 = row(top);
        if (!whole || (c1 - c0 + 1) * (r1 - r0 + 1) > WIDE) {
            wide_.push_back(static_cast<uint32_t>(i));
            continue;
        }
        for (int r = r0; r <= r1; ++r) {
            for (int c = c0; c <= c1; ++c) {
                cells_[static_cast<size_t>(r * side_ + c)].push_back(static_cast<uint32_t>(i));
            }
        }
    }
}

bool Cells::hides(size_t triangle, const PicturePlace& at) const {
    SeenHit hit;
    return seen_triangle_hit(scene_, scene_.triangles[triangle], at.x, at.y, &hit) && hit.depth < at.z - SEEN_TOUCH;
}

bool Cells::sees(const PicturePlace& at) const {
    const auto hide = [&](uint32_t triangle) { return hides(triangle, at); };
    const std::vector<uint32_t>& cell = cells_[static_cast<size_t>(row(at.y) * side_ + column(at.x))];
    return std::none_of(wide_.begin(), wide_.end(), hide) && std::none_of(cell.begin(), cell.end(), hide);
}

// From the outer edges of the pixels, as far as they lie in the picture.
PictureBox box_between(const PickView& view, double x0, double y0, double x1, double y1) {
    const PicturePlace low = pixel_place(view, std::min(x0, x1) - 0.5, std::max(y0, y1) + 0.5);
    const PicturePlace high = pixel_place(view, std::max(x0, x1) + 0.5, std::min(y0, y1) - 0.5);
    return {std::max(low.x, -1.0), std::max(low.y, -1.0), std::min(high.x, 1.0), std::min(high.y, 1.0)};
}

bool in_picture(const PictureBox& box) { return box.left < box.right && box.bottom < box.top; }

void sort_points(std::vector<PointsInside>* all) {
    for (PointsInside& each : *all) {
        std::sort(each.points.begin(), each.points.end());
        each.points.erase(std::unique(each.points.begin(), each.points.end()), each.points.end());
    }
}

}  // namespace

PickHit scene_pick(Session* session, const PickView& view, double x, double y, PickWhat what, double within) {
    const PicturePlace at = pixel_place(view, x, y);
    if (!(std::fabs(at.x) <= 1.0) || !(std::fabs(at.y) <= 1.0)) { return PickHit{}; }
    const bool points = what == PickWhat::POINT || (what == PickWhat::MODEL && session->display_points != 0);
    const bool lines = what == PickWhat::LAYER || what == PickWhat::MODEL;
    const PictureBox box = box_around(view, at, points || lines ? within : 0.0);
    const SeenScene scene = scene_seen(session, view, box, points, lines);
    const Question question{view, scene, at, within};
    if (what == PickWhat::POINT) { return pick_point(question, false); }
    PickHit hit{};
    if (points) { hit = pick_point(question, true); }
    if (lines && hit.kind == PickKind::NONE) { hit = pick_line(question); }
    return hit.kind == PickKind::NONE ? pick_face(session, question) : hit;
}

std::vector<PointsInside> scene_points_inside(Session* session, const PickView& view, double x0, double y0, double x1,
                                              double y1, bool through) {
    const PictureBox box = box_between(view, x0, y0, x1, y1);
    std::vector<PointsInside> all;
    if (!in_picture(box)) { return all; }
    const SeenScene scene = scene_seen(session, view, box, true, false);
    std::optional<Cells> cells;
    if (!through) { cells.emplace(scene, box); }
    for (const SeenPoint& point : scene.points) {
        if (cells && !cells->sees(point.at)) { continue; }
        const SeenSpace& space = scene.spaces[static_cast<size_t>(point.space)];
        if (all.empty() || all.back().model != space.model || all.back().link != space.link) {
            all.push_back({space.model, space.link, {}});
        }
        all.back().points.push_back(point.id);
    }
    sort_points(&all);
    return all;
}

}  // namespace pelt
