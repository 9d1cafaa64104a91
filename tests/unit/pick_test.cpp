// Picking, held against rays and triangles by another formula: rays out of the inverse of the matrices, met by the test
// of Moeller and Trumbore in the world. In parallel views and in perspective.
#include "edit/pick.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>

#include "application/session_lifecycle.h"
#include "edit/seen_scene.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/vertex.h"
#include "surfaces/patch.h"

namespace pelt {
namespace {

constexpr int32_t WIDTH = 400, HEIGHT = 300;

struct Double3 {
    double x, y, z;
};
Double3 operator-(const Double3& a, const Double3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Double3 operator+(const Double3& a, const Double3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Double3 operator*(const Double3& a, double f) { return {a.x * f, a.y * f, a.z * f}; }
double dot(const Double3& a, const Double3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Double3 cross(const Double3& a, const Double3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

using Square4 = std::array<std::array<double, 4>, 4>;

Square4 product(const Mat4& left, const Mat4& right) {
    Square4 out{};
    for (size_t r = 0; r < 4; ++r) {
        for (size_t c = 0; c < 4; ++c) {
            for (size_t k = 0; k < 4; ++k) { out[r][c] += double{left.m[4 * r + k]} * double{right.m[4 * k + c]}; }
        }
    }
    return out;
}

// Gauss and Jordan, with the greatest pivot.
Square4 inverse(Square4 a) {
    Square4 b{};
    for (size_t i = 0; i < 4; ++i) { b[i][i] = 1.0; }
    for (size_t column = 0; column < 4; ++column) {
        size_t pivot = column;
        for (size_t r = column; r < 4; ++r) {
            if (std::fabs(a[r][column]) > std::fabs(a[pivot][column])) { pivot = r; }
        }
        std::swap(a[pivot], a[column]);
        std::swap(b[pivot], b[column]);
        const double scale = a[column][column];
        for (size_t c = 0; c < 4; ++c) {
            a[column][c] /= scale;
            b[column][c] /= scale;
        }
        for (size_t r = 0; r < 4; ++r) {
            const double factor = r == column ? 0.0 : a[r][column];
            for (size_t c = 0; c < 4; ++c) {
                a[r][c] -= factor * a[column][c];
                b[r][c] -= factor * b[column][c];
            }
        }
    }
    return b;
}

Double3 transformed(const Square4& m, double x, double y, double z) {
    double out[4];
    for (size_t r = 0; r < 4; ++r) { out[r] = m[r][0] * x + m[r][1] * y + m[r][2] * z + m[r][3]; }
    return {out[0] / out[3], out[1] / out[3], out[2] / out[3]};
}

struct Ray {
    Double3 from, along;  // 0 at near, 1 at far
};

Ray ray_through(const PickView& view, double x, double y) {
    const Square4 back = inverse(product(view.projection, view.modelview));
    const Double3 near = transformed(back, x, y, -1.0);
    return {near, transformed(back, x, y, 1.0) - near};
}

Ray ray_of_pixel(const PickView& view, int x, int y) {
    return ray_through(view, (x + 0.5) / WIDTH * 2 - 1, 1 - (y + 0.5) / HEIGHT * 2);
}

// Where along the ray, or a negative number. Edge is how near to an edge, as a share; below 0 outside.
double meet(const Ray& ray, const Double3 (&t)[3], double* edge) {
    const Double3 e1 = t[1] - t[0], e2 = t[2] - t[0];
    const Double3 p = cross(ray.along, e2);
    const double det = dot(e1, p);
    *edge = -1.0;
    if (det == 0.0) { return -1.0; }
    const Double3 s = ray.from - t[0];
    const double u = dot(s, p) / det;
    const Double3 q = cross(s, e1);
    const double v = dot(ray.along, q) / det;
    *edge = std::min({u, v, 1.0 - u - v});
    return dot(e2, q) / det;
}

struct WorldTriangle {
    Double3 corners[3];
    int32_t id;
};

// The nearest triangle; unclear where another formula may say something else with as much right.
struct Truth {
    int32_t id = 0;
    double at = 2.0;
    bool unclear = false;
};

Truth look(const Ray& ray, const std::vector<WorldTriangle>& triangles, double limit = 1.0) {
    constexpr double HAIR = 1e-6;
    Truth truth;
    std::vector<std::pair<double, int32_t>> hits;
    for (const WorldTriangle& triangle : triangles) {
        double edge = 0.0;
        const double at = meet(ray, triangle.corners, &edge);
        if (at < 0.0 || at > limit) { continue; }
        if (std::fabs(edge) < HAIR) { truth.unclear = true; }
        if (edge >= 0.0) { hits.emplace_back(at, triangle.id); }
    }
    std::sort(hits.begin(), hits.end());
    if (hits.empty()) { return truth; }
    truth.at = hits[0].first;
    truth.id = hits[0].second;
    truth.unclear |= hits.size() > 1 && hits[1].second != truth.id && hits[1].first - truth.at < HAIR;
    return truth;
}

class PickTest : public testing::Test {
protected:
    PickTest() {
        session_init(&session);
        model = model_create("soup.mod", nullptr);
        model_add_layer(model, "soup", 127, 127, 127, 0, 0, 0);
        session_add_root(&session, model, nullptr);
    }
    ~PickTest() override {
        session_close_all(&session);
        for (KeyedList* list : {&session.model_states, &session.point_states, &session.triangle_caches,
                                &session.joint_states, &session.child_states, &session.root_models}) {
            list_free(list);
        }
    }
    PickTest(const PickTest&) = delete;
    PickTest& operator=(const PickTest&) = delete;

    float random(float from, float to) { return std::uniform_real_distribution<float>(from, to)(generator); }

    int32_t add_point(const Vec3& place, const Vec3& normal = {0, 0, 1}) {
        const int32_t id = ++points;
        model_set_point(model, id, 0, 0, 0, 1.0f);
        Point* point = model_find_point(model, id);
        point->position = place;
        point->normal = normal;
        return id;
    }
    Vec3 random_place(const Vec3& middle, float size) {
        return {middle.x + random(-size, size), middle.y + random(-size, size), middle.z + random(-size, size)};
    }
    Vec3 random_normal() {
        Vec3 normal{random(-1, 1), random(-1, 1), random(0.2f, 1)};
        return *vec_normalise(&normal);
    }
    void add_soup(int count, float size, int curve_type) {
        for (int i = 0; i < count; ++i) {
            const int quad = curve_type == 0 || curve_type == 2 ? i % 2 : curve_type == 4 ? 1 : 0;
            const Vec3 middle = random_place({0, 0, 0}, 80);
            int32_t ids[4], controls[8];
            for (int32_t& id : ids) { id = add_point(random_place(middle, size), random_normal()); }
            for (int32_t& id : controls) { id = add_point({500, 500, 500}, random_normal()); }
            ASSERT_EQ(model_add_triangle(model, "soup", quad, ids, nullptr, controls, curve_type), 1);
        }
    }
    void place_model() {
        ModelState* state = model_state(&session, model);
        state->translate = {random(-10, 10), random(-10, 10), random(-10, 10)};
        state->scale = {random(0.5f, 1.5f), -random(0.5f, 1.5f), random(0.5f, 1.5f)};
        mat_rotate_text(&state->rotation, "20", "-35", "50");
        model_state_rebuild(state);
    }
    Double3 world(const Vec3& p) {
        const float* m = model_state(&session, model)->matrix.m;
        const auto row = [&](int r) {
            return double{m[4 * r]} * double{p.x} + double{m[4 * r + 1]} * double{p.y} +
                   double{m[4 * r + 2]} * double{p.z} + double{m[4 * r + 3]};
        };
        return {row(0), row(1), row(2)};
    }
    PickView view(bool perspective) {
        PickView out{};
        out.width = WIDTH;
        out.height = HEIGHT;
        mat_identity(&out.modelview);
        mat_identity(&out.projection);
        if (perspective) {
            // The frustum of OpenGL's books: 50 degrees, 20 to 700.
            const float f = 1.0f / std::tan(25.0f * 3.14159265f / 180.0f), near = 20.0f, far = 700.0f;
            const float rows[16] = {f * HEIGHT / WIDTH,
                                    0,
                                    0,
                                    0,
                                    0,
                                    f,
                                    0,
                                    0,
                                    0,
                                    0,
                                    (far + near) / (near - far),
                                    2 * far * near / (near - far),
                                    0,
                                    0,
                                    -1,
                                    0};
            std::copy(rows, rows + 16, out.projection.m);
            mat_translate(&out.modelview, 5.0f, -8.0f, -70.0f);  // near enough that some of it is behind the eye
        } else {
            mat_scale(&out.projection, 1.0f / 120, 1.0f / 90, -1.0f / 300);
        }
        mat_rotate(&out.modelview, 15.0f, 40.0f, 5.0f);
        return out;
    }
    std::vector<WorldTriangle> flat_triangles() {
        std::vector<WorldTriangle> out;
        for (const Triangle& triangle : list_elements<Triangle>(model_find_layer(model, "soup")->triangles)) {
            Double3 c[4];
            for (int i = 0; i < triangle_corners(&triangle); ++i) {
                c[i] = world(model_find_point(model, triangle.points[i])->position);
            }
            out.push_back({{c[0], c[1], c[2]}, triangle.id});
            if (triangle.quad != 0) { out.push_back({{c[2], c[1], c[3]}, triangle.id}); }
        }
        return out;
    }
    std::vector<WorldTriangle> curved_triangles(int level) {
        std::vector<WorldTriangle> out;
        for (const Triangle& triangle : list_elements<Triangle>(model_find_layer(model, "soup")->triangles)) {
            PatchCorners corners{};
            corners.count = triangle_corners(&triangle);
            for (int i = 0; i < corners.count; ++i) {
                corners.positions[i] = model_find_point(model, triangle.points[i])->position;
                corners.normals[i] = model_find_point(model, triangle.normals[i])->normal;
            }
            for (int i = 0; i < 2 * corners.count; ++i) {
                corners.normals[PATCH_EDGE_NORMALS + i] = model_find_point(model, triangle.controls[i])->normal;
            }
            PatchSurface surface;
            patch_surface(corners, triangle.curve_type, level, &surface);
            for (int i = 0; i < surface.triangle_count; ++i) {
                const int16_t* v = surface.triangles[i];
                out.push_back(
                    {{world(surface.positions[v[0]]), world(surface.positions[v[1]]), world(surface.positions[v[2]])},
                     triangle.id});
            }
        }
        return out;
    }
    void expect_picks(const PickView& seen, const std::vector<WorldTriangle>& triangles, int places, int least) {
        int hits = 0, clear = 0;
        for (int i = 0; i < places; ++i) {
            const int x = static_cast<int>(random(0, WIDTH - 0.01f)), y = static_cast<int>(random(0, HEIGHT - 0.01f));
            const Ray ray = ray_of_pixel(seen, x, y);
            const Truth truth = look(ray, triangles);
            if (truth.unclear) { continue; }
            ++clear;
            const PickHit hit = scene_pick(&session, seen, x, y, PickWhat::FACE, 0);
            ASSERT_EQ(hit.kind != PickKind::NONE, truth.id != 0) << x << " " << y;
            if (truth.id == 0) { continue; }
            ++hits;
            ASSERT_EQ(hit.primitive, truth.id) << x << " " << y;
            const Double3 place = ray.from + ray.along * truth.at;
            EXPECT_NEAR(hit.place.x, place.x, 1e-3);
            EXPECT_NEAR(hit.place.y, place.y, 1e-3);
            EXPECT_NEAR(hit.place.z, place.z, 1e-3);
        }
        EXPECT_GT(clear, places * 9 / 10);
        EXPECT_GT(hits, least);
    }

    Session session{};
    Model* model = nullptr;
    int32_t points = 0;
    std::mt19937 generator{20261122};
};

TEST_F(PickTest, FlatFacesAgreeWithRaysInAParallelView) {
    add_soup(60, 30, 0);
    place_model();
    expect_picks(view(false), flat_triangles(), 500, 130);
}

TEST_F(PickTest, FlatFacesAgreeWithRaysInPerspectiveAndBehindTheEye) {
    add_soup(60, 40, 0);
    place_model();
    const PickView seen = view(true);
    expect_picks(seen, flat_triangles(), 500, 130);
    // Some corner lies behind the eye, so that a division by w would have gone wrong.
    const Square4 all = product(seen.projection, seen.modelview);
    bool behind = false;
    for (const WorldTriangle& triangle : flat_triangles()) {
        for (const Double3& c : triangle.corners) {
            behind |= all[3][0] * c.x + all[3][1] * c.y + all[3][2] * c.z + all[3][3] < 0.0;
        }
    }
    EXPECT_TRUE(behind);
}

TEST_F(PickTest, CurvedFacesAgreeWithRaysAtEachLevelAndType) {
    for (const int curve_type : {1, 2, 3, 4}) {
        for (const int level : {1, 3, 6}) {
            session_forget_model(&session, model);
            Layer* layer = model_find_layer(model, "soup");
            list_clear(&layer->triangles);
            add_soup(30, 25, curve_type);
            place_model();
            session.display_lod = level;
            expect_picks(view(level == 3), curved_triangles(level), 150, 4);
        }
    }
}

TEST_F(PickTest, PosesCountAndNotTheFile) {
    const int32_t ids[4] = {add_point({-10, -10, 0}), add_point({10, -10, 0}), add_point({0, 10, 0}), 0};
    model_add_triangle(model, "soup", 0, ids, nullptr, nullptr, 0);
    PickView seen = view(false);
    mat_identity(&seen.modelview);
    EXPECT_EQ(scene_pick(&session, seen, 199, 149, PickWhat::FACE, 0).kind, PickKind::TRIANGLE);
    for (int i = 0; i < 3; ++i) {
        PointState* state = point_state(&session, model_find_point(model, ids[i]));
        state->position = model_find_point(model, ids[i])->position;
        state->position.x += 60;
    }
    EXPECT_EQ(scene_pick(&session, seen, 199, 149, PickWhat::FACE, 0).kind, PickKind::NONE);
    const PickHit hit = scene_pick(&session, seen, 299, 149, PickWhat::FACE, 0);
    ASSERT_EQ(hit.kind, PickKind::TRIANGLE);
    EXPECT_NEAR(hit.place.x, (299.5 / WIDTH * 2 - 1) * 120, 1e-3);
    EXPECT_NEAR(hit.depth, 0.0f, 1e-4f);
}

TEST_F(PickTest, APlaceThatIsFlatIsPickedToo) {
    add_soup(1, 40, 0);
    ModelState* state = model_state(&session, model);
    state->scale = {1, 1, 0};
    model_state_rebuild(state);
    PickView seen = view(false);
    mat_identity(&seen.modelview);
    int hits = 0;
    for (int x = 0; x < WIDTH; x += 4) {
        for (int y = 0; y < HEIGHT; y += 4) {
            hits += scene_pick(&session, seen, x, y, PickWhat::FACE, 0).kind != PickKind::NONE;
        }
    }
    EXPECT_GT(hits, 5);
}

// A point is hidden when a ray to it meets a triangle well before it.
TEST_F(PickTest, PointsInARectangleAgreeWithRays) {
    for (const bool perspective : {false, true}) {
        session_forget_model(&session, model);
        list_clear(&model_find_layer(model, "soup")->triangles);
        add_soup(80, 35, 0);
        place_model();
        const PickView seen = view(perspective);
        const std::vector<WorldTriangle> triangles = flat_triangles();
        std::set<int32_t> used;
        for (const Triangle& triangle : list_elements<Triangle>(model_find_layer(model, "soup")->triangles)) {
            for (int i = 0; i < triangle_corners(&triangle); ++i) { used.insert(triangle.points[i]); }
        }
        const Square4 all = product(seen.projection, seen.modelview);
        const int box[4] = {90, 40, 310, 230};
        std::set<int32_t> inside, shown, unclear;
        for (const int32_t id : used) {
            const Double3 p = world(model_find_point(model, id)->position);
            const double w = all[3][0] * p.x + all[3][1] * p.y + all[3][2] * p.z + all[3][3];
            const Double3 at = transformed(all, p.x, p.y, p.z);
            const double x = (at.x + 1) / 2 * WIDTH, y = (1 - at.y) / 2 * HEIGHT;
            if (!(w > 0) || std::fabs(at.z) > 1 || x < box[0] || x > box[2] + 1 || y < box[1] || y > box[3] + 1) {
                continue;
            }
            inside.insert(id);
            const Ray ray = ray_through(seen, at.x, at.y);
            const double here = dot(p - ray.from, ray.along) / dot(ray.along, ray.along);
            const Truth truth = look(ray, triangles, here - 1e-4);
            const Truth close = look(ray, triangles, here - 1e-9);
            if (truth.unclear || (truth.id == 0 && close.id != 0 && here - close.at > 1e-7)) { unclear.insert(id); }
            if (truth.id == 0) { shown.insert(id); }
        }
        const auto told = [&](bool through) {
            std::set<int32_t> ids;
            for (const PointsInside& each :
                 scene_points_inside(&session, seen, box[2], box[3], box[0], box[1], through)) {
                EXPECT_EQ(each.model, model);
                ids.insert(each.points.begin(), each.points.end());
            }
            return ids;
        };
        EXPECT_EQ(told(true), inside);
        std::set<int32_t> seen_ids = told(false);
        for (const int32_t id : unclear) {
            seen_ids.erase(id);
            shown.erase(id);
        }
        EXPECT_EQ(seen_ids, shown);
        EXPECT_LT(unclear.size(), 6u);
        EXPECT_GT(shown.size(), 15u);
        EXPECT_GT(inside.size(), shown.size() + 5);
    }
}

TEST_F(PickTest, ALineInPerspectiveIsMetWhereItIsSeen) {
    const Vec3 ends[2] = {{-60, -20, -200}, {50, 30, 60}};
    const int32_t ids[2] = {add_point(ends[0]), add_point(ends[1])};
    model_add_line(model, "soup", 2, ids);
    PickView seen = view(true);
    mat_identity(&seen.modelview);
    mat_translate(&seen.modelview, 0, 0, -160);
    const Square4 all = product(seen.projection, seen.modelview);
    for (const double share : {0.1, 0.35, 0.6, 0.9}) {
        const Double3 a{ends[0].x, ends[0].y, ends[0].z}, b{ends[1].x, ends[1].y, ends[1].z};
        const Double3 on = a + (b - a) * share;
        const Double3 at = transformed(all, on.x, on.y, on.z);
        const double x = (at.x + 1) / 2 * WIDTH - 0.5, y = (1 - at.y) / 2 * HEIGHT - 0.5;
        const PickHit hit = scene_pick(&session, seen, x, y, PickWhat::LAYER, 2);
        ASSERT_EQ(hit.kind, PickKind::LINE) << share;
        EXPECT_NEAR(hit.place.x, on.x, 1e-2);
        EXPECT_NEAR(hit.place.y, on.y, 1e-2);
        EXPECT_NEAR(hit.place.z, on.z, 1e-2);
        double distances[2];
        for (int i = 0; i < 2; ++i) {
            const Double3 end = transformed(all, ends[i].x, ends[i].y, ends[i].z);
            distances[i] = std::hypot((end.x - at.x) * WIDTH, (end.y - at.y) * HEIGHT);
        }
        EXPECT_EQ(hit.point, ids[distances[1] < distances[0] ? 1 : 0]);
    }
    EXPECT_EQ(scene_pick(&session, seen, 5, 290, PickWhat::LAYER, 2).kind, PickKind::NONE);
}

TEST_F(PickTest, ALineThatPassesTheEyeIsMetInFrontOfIt) {
    const int32_t ids[2] = {add_point({0, -5, -100}), add_point({0, -5, 400})};
    model_add_line(model, "soup", 2, ids);
    PickView seen = view(true);
    mat_identity(&seen.modelview);
    const PickHit hit = scene_pick(&session, seen, WIDTH / 2 - 0.5, HEIGHT * 0.75, PickWhat::MODEL, 3);
    ASSERT_EQ(hit.kind, PickKind::LINE);
    EXPECT_LT(hit.place.z, -20.0f);
}

// No view, however odd, is more than nothing found.
TEST_F(PickTest, NumbersThatAreNoneFindNothing) {
    add_soup(5, 40, 0);
    PickView seen = view(false);
    for (const float odd : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        PickView broken = seen;
        broken.modelview.m[0] = odd;
        EXPECT_EQ(scene_pick(&session, broken, 200, 150, PickWhat::MODEL, 5).kind, PickKind::NONE);
        EXPECT_TRUE(scene_points_inside(&session, broken, 0, 0, 399, 299, false).empty());
        EXPECT_EQ(scene_pick(&session, seen, odd, 150, PickWhat::MODEL, 5).kind, PickKind::NONE);
    }
    for (Point& point : list_elements<Point>(model->points)) {
        point.position.y = std::numeric_limits<float>::quiet_NaN();
    }
    EXPECT_EQ(scene_pick(&session, seen, 200, 150, PickWhat::POINT, 500).kind, PickKind::NONE);
    EXPECT_TRUE(scene_points_inside(&session, seen, 0, 0, 399, 299, true).empty());
}

TEST(PatchBulge, NoVertexLiesFartherFromTheBoxOfTheCorners) {
    std::mt19937 generator(5);
    const auto random = [&](float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(generator);
    };
    for (int round = 0; round < 2000; ++round) {
        PatchCorners corners{};
        corners.count = 3 + round % 2;
        const float offset = round % 3 == 0 ? 20000.0f : 0.0f;
        for (Vec3& p : corners.positions) { p = {offset + random(-9, 9), random(-9, 9), random(-9, 9)}; }
        for (Vec3& n : corners.normals) {
            n = {random(-1, 1), random(-1, 1), random(-1, 1)};
            vec_normalise(&n);
        }
        Vec3 low = corners.positions[0], high = low;
        for (int i = 0; i < corners.count; ++i) { box_take_in(corners.positions[i], &low, &high); }
        PatchSurface surface;
        patch_surface(corners, corners.count == 4 ? (round % 4 == 1 ? 2 : 4) : 1 + round % 3, 1 + round % 6, &surface);
        const float bulge = patch_bulge(corners);
        for (int i = 0; i < surface.vertex_count; ++i) {
            const Vec3& p = surface.positions[i];
            const float beyond =
                std::max({low.x - p.x, p.x - high.x, low.y - p.y, p.y - high.y, low.z - p.z, p.z - high.z});
            ASSERT_LE(beyond, bulge) << round;
        }
    }
}

}  // namespace
}  // namespace pelt
