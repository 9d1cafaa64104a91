// Normals from faces, against plain expectations and against the walk for each point that the one walk stands for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "reduce/normals.h"
#include "support/edit_model.h"

namespace {

using namespace pelt;
using namespace pelt::edit_model;

Vec3 unit(float x, float y, float z) {
    const float length = std::sqrt(x * x + y * y + z * z);
    return {x / length, y / length, z / length};
}

Vec3 normal_at(Model* model, int32_t id) { return point_of(model, id)->normal; }

class Normals : public EditTest {
protected:
    Normals() { put_layer(model.get()); }

    // A face around point 1 whose normal looks along direction: its other two points are made for it.
    void face_towards(const Vec3& direction) {
        const Vec3 across = std::fabs(direction.x) < 0.5f ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
        const Vec3 a = cross(direction, across);
        const Vec3 b = cross(direction, a);
        put_point(model.get(), ++next_id, scaled(b));
        put_point(model.get(), ++next_id, scaled(a));
        put_triangle(model.get(), "body", {1, next_id - 1, next_id});
    }
    static Vec3 cross(const Vec3& a, const Vec3& b) {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
    static Vec3 scaled(const Vec3& v) { return {100 * v.x, 100 * v.y, 100 * v.z}; }

    // Six sides, each with (cells + 1) squared points of the lattice, looking outwards.
    void cube(int cells) {
        const auto at = [&](int x, int y, int z) {
            const int32_t id = 1 + x + 10 * y + 100 * z;
            if (point_of(model.get(), id) == nullptr) {
                const auto place = [cells](int i) { return static_cast<float>(2 * i - cells); };
                put_point(model.get(), id, {place(x), place(y), place(z)});
            }
            return id;
        };
        for (int side = 0; side < 6; ++side) {
            for (int i = 0; i < cells; ++i) {
                for (int j = 0; j < cells; ++j) { cube_cell(side, i, j, cells, at); }
            }
        }
    }
    template <typename At>
    void cube_cell(int side, int i, int j, int cells, At at) {
        const int depth = side % 2 ? cells : 0;
        const auto corner = [&](int u, int v) {
            return side / 2 == 0 ? at(depth, u, v) : side / 2 == 1 ? at(v, depth, u) : at(u, v, depth);
        };
        // Seen from outside, clockwise corners look at the viewer; the quad's strip runs 0, 1, 2, 3.
        Ids quad{corner(i, j), corner(i, j + 1), corner(i + 1, j), corner(i + 1, j + 1)};
        if (side % 2 == 0) { std::swap(quad[1], quad[2]); }
        put_triangle(model.get(), "body", quad);
    }

    Owned model = empty_model();
    int32_t next_id = 1;
};

TEST_F(Normals, corner_of_a_cube_looks_along_its_three_sides) {
    cube(1);
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    ASSERT_EQ(list_count(&model->points), 8);
    for (const Point& point : list_elements<Point>(model->points)) {
        expect_vector(point.normal, unit(point.position.x, point.position.y, point.position.z), 1e-6f);
    }
    EXPECT_EQ(model->has_normals, 1);
}

TEST_F(Normals, a_divided_cube_has_the_same_corners_and_flat_sides) {
    cube(2);
    model_rebuild_normals(model.get());
    ASSERT_EQ(list_count(&model->points), 26);
    for (const Point& point : list_elements<Point>(model->points)) {
        // Corners at (+-2, +-2, +-2), edges and middles with zeros.
        const Vec3& p = point.position;
        expect_vector(point.normal, unit(p.x, p.y, p.z), 1e-6f);
    }
}

TEST_F(Normals, a_point_without_faces_gets_the_default) {
    put_point(model.get(), 1, {5, 5, 5}, {1, 0, 0});
    model_rebuild_normals(model.get());
    expect_vector(normal_at(model.get(), 1), {0, 0, 1});
    EXPECT_EQ(model->has_normals, 1);
}

TEST_F(Normals, each_direction_counts_once) {
    put_point(model.get(), 1, {0, 0, 0});
    for (int i = 0; i < 5; ++i) { face_towards({0, 0, 1}); }
    face_towards({1, 0, 0});
    model_rebuild_normals(model.get());
    expect_vector(normal_at(model.get(), 1), unit(1, 0, 1), 1e-6f);
}

TEST_F(Normals, of_eight_directions_the_first_six_count) {
    put_point(model.get(), 1, {0, 0, 0});
    const Vec3 directions[] = {{1, 0, 0},       {0, 1, 0},       {0, 0, 1},  {0, 0.6f, 0.8f},
                               {0.6f, 0, 0.8f}, {0.8f, 0.6f, 0}, {-1, 0, 0}, {0, -1, 0}};
    Vec3 sum{0, 0, 0};
    for (int i = 0; i < 8; ++i) {
        face_towards(directions[i]);
        if (i < 6) { sum = {sum.x + directions[i].x, sum.y + directions[i].y, sum.z + directions[i].z}; }
    }
    model_rebuild_normals(model.get());
    expect_vector(normal_at(model.get(), 1), unit(sum.x, sum.y, sum.z), 1e-5f);
}

TEST_F(Normals, directions_closer_than_a_ten_thousandth_are_one) {
    put_point(model.get(), 1, {0, 0, 0});
    face_towards({0, 0, 1});
    face_towards(unit(0.00009f, 0, 1));
    model_rebuild_normals(model.get());
    expect_vector(normal_at(model.get(), 1), {0, 0, 1}, 1e-7f);  // the second was not heard
    face_towards(unit(0.00015f, 0, 1));
    model_rebuild_normals(model.get());
    EXPECT_NEAR(normal_at(model.get(), 1).x, 0.000075f, 1e-6f);
}

TEST_F(Normals, faces_of_all_layers_count_together) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}});
    put_layer(model.get(), "other");
    put_triangle(model.get(), "body", {1, 2, 3});   // clockwise seen from +z
    put_triangle(model.get(), "other", {1, 4, 2});  // clockwise seen from +x
    model_rebuild_normals(model.get());
    expect_vector(normal_at(model.get(), 1), unit(1, 0, 1), 1e-6f);
    expect_vector(normal_at(model.get(), 3), {0, 0, 1}, 1e-6f);
}

TEST_F(Normals, second_face_of_a_quad_is_heard_by_its_three_corners) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, -1}});
    put_triangle(model.get(), "body", {1, 2, 3, 4});
    model_rebuild_normals(model.get());
    const Vec3 first{0, 0, 1};
    const Vec3 second = unit(1, 1, 1);  // of the plane x + y + z = 1
    const Vec3 both = unit(first.x + second.x, first.y + second.y, first.z + second.z);
    expect_vector(normal_at(model.get(), 1), first, 1e-6f);
    expect_vector(normal_at(model.get(), 2), both, 1e-6f);
    expect_vector(normal_at(model.get(), 3), both, 1e-6f);
    expect_vector(normal_at(model.get(), 4), second, 1e-6f);
}

TEST_F(Normals, polygon_of_three_has_one_face_for_each_vertex) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}});
    put_polygon(model.get(), "body", {1, 2, 3});
    model_rebuild_normals(model.get());
    for (int id = 1; id <= 3; ++id) { expect_vector(normal_at(model.get(), id), {0, 0, 1}, 1e-6f); }
}

TEST_F(Normals, first_two_vertices_of_a_strip_hear_the_same_two_faces) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, -1}});
    put_polygon(model.get(), "body", {1, 2, 3, 4});
    model_rebuild_normals(model.get());
    const Vec3 second = unit(1, 1, 1);
    const Vec3 both = unit(second.x, second.y, second.z + 1);
    for (int id = 1; id <= 3; ++id) { expect_vector(normal_at(model.get(), id), both, 1e-6f); }
    expect_vector(normal_at(model.get(), 4), second, 1e-6f);
}

TEST_F(Normals, polygon_of_fewer_than_three_is_not_heard) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}});
    put_polygon(model.get(), "body", {});
    put_polygon(model.get(), "body", {1});
    put_polygon(model.get(), "body", {1, 2});
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    expect_vector(normal_at(model.get(), 1), {0, 0, 1});
}

TEST_F(Normals, a_polygon_of_more_than_512_vertices_is_walked_to_its_end) {
    Ids strip;
    for (int id = 1; id <= 600; ++id) {
        put_point(model.get(), id, {static_cast<float>(id / 2), static_cast<float>(id % 2), 0});
        strip.push_back(id);
    }
    put_polygon(model.get(), "body", strip);
    model_rebuild_normals(model.get());
    EXPECT_NEAR(std::fabs(normal_at(model.get(), 600).z), 1.0f, 1e-6f);
    EXPECT_EQ(normal_at(model.get(), 600).z, normal_at(model.get(), 3).z);
}

TEST_F(Normals, lines_are_not_heard) {
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}});
    const int32_t ids[] = {1, 2, 3};
    model_add_line(model.get(), "body", 3, ids);
    model_rebuild_normals(model.get());
    expect_vector(normal_at(model.get(), 2), {0, 0, 1});
}

TEST_F(Normals, a_face_with_a_missing_point_is_not_heard) {
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}});
    put_triangle(model.get(), "body", {1, 2, 3});
    put_polygon(model.get(), "body", {1, 2, 3});
    model_remove_point(model.get(), 3);
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    expect_vector(normal_at(model.get(), 1), {0, 0, 1});
    EXPECT_EQ(error_text(), "point does not exist");
}

TEST_F(Normals, collinear_points_poison_the_average) {
    put_points(model.get(), {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}});
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    EXPECT_TRUE(std::isnan(normal_at(model.get(), 1).x));
}

TEST_F(Normals, finite_normals_pass_over_faces_without_a_direction) {
    put_points(model.get(), {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {0, 1, 0}, {1, 0, 0}});
    put_triangle(model.get(), "body", {1, 2, 3});
    put_triangle(model.get(), "body", {1, 4, 5});
    EXPECT_EQ(model_rebuild_finite_normals(model.get()), 1);
    expect_vector(normal_at(model.get(), 2), {0, 0, 1});
    const Vec3 own = normal_at(model.get(), 4);
    EXPECT_EQ(std::abs(own.z), 1.0f);
    expect_vector(normal_at(model.get(), 1), own);
    EXPECT_EQ(model_rebuild_finite_normals(nullptr), 1);
}

TEST_F(Normals, of_directions_that_cancel_each_other_finite_normals_take_the_first) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}});
    put_triangle(model.get(), "body", {1, 2, 3});
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    const Vec3 front = normal_at(model.get(), 1);
    put_triangle(model.get(), "body", {1, 3, 2});
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    EXPECT_TRUE(std::isnan(normal_at(model.get(), 1).z)) << "as the other operation leaves it";
    EXPECT_EQ(model_rebuild_finite_normals(model.get()), 1);
    expect_vector(normal_at(model.get(), 1), front);
}

TEST_F(Normals, ids_that_16_bits_cut_are_taken_as_they_read_back) {
    put_points(model.get(), {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}});
    put_point(model.get(), 40000, {0, 0, 9});
    put_triangle(model.get(), "body", {1, 2, 40000});
    EXPECT_EQ(model_rebuild_normals(model.get()), 1);
    expect_vector(normal_at(model.get(), 40000), {0, 0, 1});
}

TEST_F(Normals, null_and_empty_models) {
    EXPECT_EQ(model_rebuild_normals(nullptr), 1);
    EXPECT_EQ(model_rebuild_normals(empty_model().get()), 1);
    EXPECT_EQ(model_make_curved(nullptr), 0);
    EXPECT_EQ(model_make_curved(empty_model().get()), 1);
}

// ---- against the walk for each point ----

struct LiteralPoint {
    Model* model;
    Vec3 found[6];
    int count = 0;

    void note(int a, int b, int c) {
        if (!point_of(model, a) || !point_of(model, b) || !point_of(model, c)) { return; }
        Vec3 normal = model_face_normal(model, a, b, c);
        vec_normalise(&normal);
        if (count == 6) { return; }
        for (int i = 0; i < count; ++i) {
            if (vec_near(&found[i], &normal, 0.0001f)) { return; }
        }
        found[count++] = normal;
    }

    void walk_triangle(const Triangle& t, int k) {
        const int16_t* p = t.points;
        if (k == p[0] || k == p[1] || k == p[2]) { note(p[0], p[1], p[2]); }
        if (t.quad && (k == p[1] || k == p[2] || k == p[3])) { note(p[2], p[1], p[3]); }
    }

    void walk_polygon(const Polygon& polygon, int k) {
        Ids s;
        for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon.vertices)) {
            s.push_back(vertex.point);
        }
        const size_t n = s.size();
        if (n < 3) { return; }
        for (size_t i = 0; i < n; ++i) {
            if (s[i] != k) { continue; }
            if (i < 2) {
                note(s[0], s[1], s[2]);
                if (n >= 4) { note(s[2], s[1], s[3]); }
            } else if (i % 2 == 0) {
                note(s[i - 2], s[i - 1], s[i]);
                if (n > i + 1) { note(s[i], s[i - 1], s[i + 1]); }
                if (n > i + 2) { note(s[i], s[i + 1], s[i + 2]); }
            } else {
                note(s[i - 1], s[i - 2], s[i]);
                if (n > i + 1) { note(s[i - 1], s[i], s[i + 1]); }
                if (n > i + 2) { note(s[i + 1], s[i], s[i + 2]); }
            }
        }
    }
};

void rebuild_literally(Model* model) {
    for (const int k : point_ids(model)) {
        LiteralPoint point{model, {}, 0};
        for (const Layer& layer : list_elements<Layer>(model->layers)) {
            for (const Triangle& t : list_elements<Triangle>(layer.triangles)) { point.walk_triangle(t, k); }
            for (const Polygon& p : list_elements<Polygon>(layer.polygons)) { point.walk_polygon(p, k); }
        }
        Vec3 normal{0, 0, 1};
        if (point.count > 0) {
            normal = vec_average(point.found, point.count);
            vec_normalise(&normal);
        }
        model_set_normal(model, k, normal.x, normal.y, normal.z);
    }
}

TEST_F(Normals, random_models_come_out_as_by_a_walk_for_each_point) {
    for (unsigned seed = 1; seed <= 150; ++seed) {
        Owned model_once = RandomModel(seed).make(30, 4);
        Owned model_each = RandomModel(seed).make(30, 4);
        // Points that go missing behind their primitives.
        for (Model* each : {model_once.get(), model_each.get()}) { model_remove_point(each, point_ids(each)[3]); }
        model_rebuild_normals(model_once.get());
        rebuild_literally(model_each.get());
        ASSERT_EQ(model_text(model_once.get()), model_text(model_each.get())) << "seed " << seed;
    }
}

// ---- the others ----

TEST_F(Normals, make_curved_turns_flat_primitives_and_leaves_curved_ones) {
    put_points(model.get(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    Triangle* triangle = put_triangle(model.get(), "body", {1, 2, 3}, {4, 4, 4});
    triangle->controls[6] = 11;
    triangle->controls[7] = 12;
    const Triangle* quad = put_triangle(model.get(), "body", {1, 2, 3, 4});
    Triangle* curved = put_triangle(model.get(), "body", {1, 2, 3}, {}, 1);
    curved->controls[0] = 4;
    const std::string before = triangle_text(*curved);
    put_polygon(model.get(), "body", {1, 2, 3, 4});
    EXPECT_EQ(model_make_curved(model.get()), 1);
    EXPECT_EQ(triangle->curve_type, 3);
    EXPECT_EQ(Ids(triangle->controls, triangle->controls + 8), (Ids{1, 2, 2, 3, 3, 1, 11, 12}));
    EXPECT_EQ(Ids(triangle->normals, triangle->normals + 3), (Ids{4, 4, 4}));
    EXPECT_EQ(quad->curve_type, 4);
    EXPECT_EQ(Ids(quad->controls, quad->controls + 8), (Ids{1, 2, 2, 4, 4, 3, 3, 1}));
    EXPECT_EQ(triangle_text(*curved), before);
    EXPECT_EQ(strips_of(model.get(), "body").size(), 1u);
}

TEST_F(Normals, face_normal_is_not_of_unit_length) {
    put_points(model.get(), {{0, 0, 0}, {1, 1, 0}, {1, 0, 1}});
    const Vec3 normal = model_face_normal(model.get(), 1, 2, 3);
    // (C - A) cross (B - A) = (-1, 1, 1), its largest component already 1.
    expect_vector(normal, {-1, 1, 1}, 1e-6f);
}

TEST_F(Normals, face_normal_of_a_missing_point_is_the_default) {
    put_points(model.get(), {{0, 0, 0}, {1, 1, 0}});
    expect_vector(model_face_normal(model.get(), 1, 2, 3), {0, 0, 1});
    EXPECT_EQ(error_text(), "point does not exist");
    expect_vector(model_face_normal(nullptr, 1, 2, 3), {0, 0, 1});
}

TEST_F(Normals, planar_coordinates_of_a_triangle) {
    const Vec3 points[3] = {{0, 0, 0}, {10, 5, 2}, {5, 20, 4}};
    const float box[6] = {0, 0, 0, 10, 20, 4};
    const UvPair* uvs = triangle_planar_uvs(points, box, AXIS_X, AXIS_MINUS_Y);
    ASSERT_NE(uvs, nullptr);
    // u = 1 - x / 10, v = 1 - y / 20.
    EXPECT_EQ(uvs[0].u, 1.0f);
    EXPECT_EQ(uvs[0].v, 1.0f);
    EXPECT_EQ(uvs[1].u, 0.0f);
    EXPECT_EQ(uvs[1].v, 0.75f);
    EXPECT_EQ(uvs[2].u, 0.5f);
    EXPECT_EQ(uvs[2].v, 0.0f);
    EXPECT_EQ(triangle_planar_uvs(nullptr, box, 1, 2), nullptr);
    EXPECT_EQ(triangle_planar_uvs(points, nullptr, 1, 2), nullptr);
}

}  // namespace
