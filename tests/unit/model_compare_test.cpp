// Each field of a model by itself makes a difference, and what has no effect makes none.
#include "formats/model_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "foundation/load_error.h"
#include "foundation/text.h"
#include "support/model_text.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;

constexpr const char* TEXT =
    "joint hip 1 2 3 world 2\njoint knee 4 5 6 hip 1\nblend hip knee 1\n"
    "points\n1 0 0 0 0.5\n2 100 0 0\n3 0 100 50\n4 7 8 9\n5 1 1 1\nnormals\n1 0 0 1\n2 1 0 0\n3 0.5 0.25 -3\n"
    "gouraud\n1 1 2 3 4\n"
    "layer roof 10 20 30 singlesided mirror y\ntransparency 0.5\ninvisible 1 0 0\n"
    "triangles\n0 1 2 3 3 2 1\n4 1 2 3 4 2\n2 1 2 3 4\nuvees\n2 0.5 0.25\n4 1 2\n"
    "image a.tga x -z repeat 2 3\nmirrorimage b.tga\nreflect a.tga 0.25\nlines\n2 1 2 3\n"
    "layer wall 1 2 3 doublesided\n"
    "child wing 1 2 3 4 5 6 7 8 9\n";

class ModelCompare : public testing::Test {
protected:
    ModelCompare() {
        for (const char* name : {"a.tga", "b.tga"}) { dir.write(name, test::solid_tga(2, 2, 1, 2, 3)); }
        dir.write("wing.mod", "");
    }
    OwnedModel read() {
        OwnedModel model = test::read_model(dir, "model.mod", TEXT);
        EXPECT_NE(model, nullptr) << load_error_get();
        return model;
    }
    // The difference of the model and the model with this change; the other way round there is one too.
    template <typename Change>
    std::string after(const Change& change) {
        const OwnedModel model = read();
        const OwnedModel changed = read();
        change(changed.get());
        EXPECT_EQ(model_difference(model.get(), changed.get()).empty(),
                  model_difference(changed.get(), model.get()).empty());
        return model_difference(model.get(), changed.get());
    }
    template <typename Change>
    std::string after_point(const Change& change) {
        return after([&](Model* model) { change(model, *model_find_point(model, 1)); });
    }
    template <typename Change>
    std::string after_roof(const Change& change) {
        return after([&](Model* model) { change(*model_find_layer(model, "roof")); });
    }

    test::TempDir dir;
};

template <typename Element>
Element& nth(KeyedList& list, int rank) {
    return *list_at<Element>(&list, rank, 1);
}

TEST_F(ModelCompare, AModelReadTwiceIsTheSame) {
    EXPECT_EQ(after([](Model*) {}), "");
    EXPECT_EQ(model_difference(nullptr, nullptr), "");
    const OwnedModel model = read();
    EXPECT_EQ(model_difference(model.get(), model.get()), "");
    EXPECT_EQ(model_difference(model.get(), nullptr), "only the first is there");
    EXPECT_EQ(model_difference(nullptr, model.get()), "only the second is there");
}

TEST_F(ModelCompare, Flags) {
    EXPECT_EQ(after([](Model* model) { model->has_normals = 0; }), "normals on and off");
    EXPECT_EQ(after([](Model* model) { model->has_gouraud = 0; }), "gouraud colours on and off");
}

TEST_F(ModelCompare, Joints) {
    const auto after_knee = [&](auto change) {
        return after([&](Model* model) { change(nth<Joint>(model->joints, 1)); });
    };
    EXPECT_EQ(after_knee([](Joint& joint) { str_copy("foot", joint.name); }), "joint 2: name knee and foot");
    EXPECT_EQ(after_knee([](Joint& joint) { joint.position.z = 7; }), "joint knee: place 4 5 6 and 4 5 7");
    EXPECT_EQ(after_knee([](Joint& joint) { str_copy("world", joint.parent_name); }),
              "joint knee: parent hip and world");
    EXPECT_EQ(after_knee([](Joint& joint) { joint.point_count = 9; }), "joint knee: points 1 and 9");
    EXPECT_EQ(after([](Model* model) { model_add_joint(model, "toe", 0, 0, 0, "knee", 0); }), "joints 2 and 3");
}

TEST_F(ModelCompare, BlendGroups) {
    const auto after_blend = [&](auto change) {
        return after([&](Model* model) { change(model, nth<BlendWeight>(model->blends, 0)); });
    };
    EXPECT_EQ(after_blend([](Model*, BlendWeight& blend) { blend.point_count = 2; }), "blend 1: points 1 and 2");
    EXPECT_EQ(after_blend([](Model*, BlendWeight& blend) { blend.joint_a = nullptr; }),
              "blend 1: first joint hip and none");
    EXPECT_EQ(after_blend([](Model* model, BlendWeight& blend) { blend.joint_b = model_find_joint(model, "hip"); }),
              "blend 1: second joint knee and hip");
    EXPECT_EQ(after([](Model* model) { model_add_blend(model, "hip", "hip", 1); }), "blends 1 and 2");
}

TEST_F(ModelCompare, Points) {
    EXPECT_EQ(after_point([](Model*, Point& point) { point.position.x = 0.25f; }), "point 1: place 0 0 0 and 0.25 0 0");
    EXPECT_EQ(after_point([](Model*, Point& point) { point.position.y = 1; }), "point 1: place 0 0 0 and 0 1 0");
    EXPECT_EQ(after_point([](Model*, Point& point) { point.weight = 0.75f; }), "point 1: weight 0.5 and 0.75");
    const char* const channels[] = {"red 1", "green 2", "blue 3", "colour's transparency 4"};
    for (int channel = 0; channel < 4; ++channel) {
        EXPECT_EQ(after_point([&](Model*, Point& point) { point.gouraud[channel] = 99; }),
                  std::string("point 1: ") + channels[channel] + " and 99");
    }
    EXPECT_EQ(after_point([](Model*, Point& point) { point.joint_a = nullptr; }), "point 1: first joint hip and none");
    EXPECT_EQ(after_point([](Model* model, Point& point) { point.joint_b = model_find_joint(model, "knee"); }),
              "point 1: second joint none and knee");
    EXPECT_EQ(after([](Model* model) { model_set_point(model, 9, 0, 0, 0, 1.0f); }), "point 9: only the second has it");
    EXPECT_EQ(after([](Model* model) { model_remove_point(model, 5); }), "point 5: only the first has it");
}

TEST_F(ModelCompare, TheOrderOfPointsIsNone) {
    const OwnedModel a = test::read_model(dir, "a.mod", "points\n1 1 2 3\n2 4 5 6\n");
    const OwnedModel b = test::read_model(dir, "b.mod", "points\n2 4 5 6\n1 1 2 3\n");
    EXPECT_EQ(model_difference(a.get(), b.get()), "");
}

TEST_F(ModelCompare, NormalsMayBeOneLastPlaceApart) {
    const float next = std::nextafter(1.0f, 2.0f);
    const float one_more = std::nextafter(next, 2.0f);
    EXPECT_EQ(after_point([&](Model*, Point& point) { point.normal.z = next; }), "");
    EXPECT_NE(after_point([&](Model*, Point& point) { point.normal.z = one_more; }), "");
    EXPECT_EQ(after_point([](Model*, Point& point) { point.normal.x = 0.5f; }), "point 1: normal 0 0 1 and 0.5 0 1");
    EXPECT_NE(after_point([](Model*, Point& point) { point.normal.y = -0.5f; }), "");
    // Zero has a number next to it on either side.
    const float least = std::numeric_limits<float>::denorm_min();
    EXPECT_TRUE(normals_match(Vec3{0, 0, 1}, Vec3{-least, least, 1}));
    EXPECT_TRUE(normals_match(Vec3{-0.0f, 0, 1}, Vec3{least, -0.0f, 1}));
    EXPECT_FALSE(normals_match(Vec3{least, 0, 1}, Vec3{-least, 0, 1}));
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(normals_match(Vec3{none, 0, 1}, Vec3{none, 0, 1}));
    EXPECT_FALSE(normals_match(Vec3{none, 0, 1}, Vec3{0, 0, 1}));
}

TEST_F(ModelCompare, LayerSettings) {
    EXPECT_EQ(after_roof([](Layer& layer) { str_copy("sky", layer.name); }), "layer 1: name roof and sky");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.colour[0] = 1; }), "layer roof: red 10 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.colour[1] = 1; }), "layer roof: green 20 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.colour[2] = 1; }), "layer roof: blue 30 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.singlesided = 0; }), "layer roof: sides 1 and 2");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.transparency = 0.25f; }), "layer roof: transparency 0.5 and 0.25");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.mirror = 0; }), "layer roof: mirror on and off");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.mirror_axis = AXIS_Z; }), "layer roof: mirror axis 2 and 3");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.invisible = 0; }), "layer roof: colour key on and off");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.invisible_colour[0] = 1; }), "layer roof: key red 255 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.invisible_colour[1] = 1; }), "layer roof: key green 0 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.invisible_colour[2] = 1; }), "layer roof: key blue 0 and 1");
    EXPECT_EQ(after([](Model* model) { model_add_layer(model, "sky", 1, 2, 3, 1, 0, 1); }), "layers 2 and 3");
}

TEST_F(ModelCompare, Images) {
    EXPECT_EQ(after_roof([](Layer& layer) { str_copy("c", layer_first_image(&layer)->names[0]); }),
              "layer roof: image a.tga and c");
    EXPECT_EQ(after_roof([](Layer& layer) { str_copy("", layer_first_image(&layer)->names[1]); }),
              "layer roof: mirror image b.tga and none");
    EXPECT_EQ(after_roof([](Layer& layer) { str_copy("c", layer_first_image(&layer)->names[2]); }),
              "layer roof: reflection map a.tga and c");
    EXPECT_EQ(after_roof([](Layer& layer) { layer_first_image(&layer)->reflection = 1; }),
              "layer roof: reflection 0.25 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.image_axis_u = 2; }), "layer roof: image axis u 1 and 2");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.image_axis_v = 2; }), "layer roof: image axis v 6 and 2");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.image_repeat = 0; }), "layer roof: repeat on and off");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.repeat_u = 1; }), "layer roof: repeat u 2 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { layer.repeat_v = 1; }), "layer roof: repeat v 3 and 1");
}

TEST_F(ModelCompare, Primitives) {
    const auto after_triangle = [&](int rank, auto change) {
        return after_roof([&](Layer& layer) { change(nth<Triangle>(layer.triangles, rank)); });
    };
    EXPECT_EQ(after_triangle(0, [](Triangle& triangle) { triangle.points[2] = 4; }),
              "layer roof: triangle 1: corner 3: point 3 and 4");
    EXPECT_EQ(after_triangle(0, [](Triangle& triangle) { triangle.normals[1] = 4; }),
              "layer roof: triangle 1: normal 2: point 2 and 4");
    EXPECT_EQ(after_triangle(0, [](Triangle& triangle) { triangle.quad = 1; }),
              "layer roof: triangle 1: corners 3 and 4");
    EXPECT_EQ(after_triangle(1, [](Triangle& triangle) { triangle.curve_type = 4; }),
              "layer roof: triangle 2: curve type 2 and 4");
    EXPECT_EQ(after_triangle(1, [](Triangle& triangle) { triangle.points[3] = 1; }),
              "layer roof: triangle 2: corner 4: point 4 and 1");
    EXPECT_EQ(after_triangle(1, [](Triangle& triangle) { triangle.controls[7] = 3; }),
              "layer roof: triangle 2: control 8: point 1 and 3");
    EXPECT_EQ(after_roof([](Layer& layer) { list_clear(&layer.triangles); }),
              "layer roof: triangles and quads 2 and 0");
    const auto after_vertex = [&](auto change) {
        return after_roof(
            [&](Layer& layer) { change(nth<PolygonVertex>(nth<Polygon>(layer.polygons, 0).vertices, 3)); });
    };
    EXPECT_EQ(after_vertex([](PolygonVertex& vertex) { vertex.point = 1; }),
              "layer roof: polygon 1: corner 4: point 4 and 1");
    EXPECT_EQ(after_vertex([](PolygonVertex& vertex) { vertex.normal = 1; }),
              "layer roof: polygon 1: corner 4: normal 4 and 1");
    EXPECT_EQ(after_roof([](Layer& layer) { nth<Polygon>(layer.polygons, 0).vertex_count = 3; }),
              "layer roof: polygon 1: corners 4 and 3");
    EXPECT_EQ(after_roof([](Layer& layer) { nth<Line>(layer.lines, 0).vertex_count = 2; }),
              "layer roof: line 1: corners 3 and 2");
    EXPECT_EQ(after_roof([](Layer& layer) { nth<int32_t>(nth<Line>(layer.lines, 0).vertices, 1) = 3; }),
              "layer roof: line 1: corner 2: point 2 and 3");
    const int32_t ids[] = {1, 2, 3};
    EXPECT_EQ(after([&](Model* model) { model_add_polygon(model, "roof", 3, ids, nullptr); }),
              "layer roof: polygons 1 and 2");
    EXPECT_EQ(after([&](Model* model) { model_add_line(model, "roof", 3, ids); }), "layer roof: lines 1 and 2");
}

TEST_F(ModelCompare, TextureCoordinatesOfPoints) {
    const auto after_uvee = [&](auto change) {
        return after_roof([&](Layer& layer) { change(*list_find<Uvee>(&layer.uvees, 2)); });
    };
    EXPECT_EQ(after_uvee([](Uvee& uvee) { uvee.u = 1; }), "layer roof: uvee of point 2: u 0.5 and 1");
    EXPECT_EQ(after_uvee([](Uvee& uvee) { uvee.v = 1; }), "layer roof: uvee of point 2: v 0.25 and 1");
    EXPECT_EQ(after([](Model* model) { model_add_uvee(model, "roof", 1, 0, 0); }), "layer roof: uvees 2 and 3");
    EXPECT_EQ(after_roof([](Layer& layer) { list_remove(&layer.uvees, 4); }),
              "layer roof: uvee of point 4: only the first has it");
}

TEST_F(ModelCompare, Children) {
    const auto after_child = [&](auto change) {
        return after([&](Model* model) { change(nth<ChildLink>(model->children, 0)); });
    };
    EXPECT_EQ(after_child([](ChildLink& link) { str_copy("leg", link.name); }), "child 1: name wing and leg");
    EXPECT_EQ(after_child([](ChildLink& link) { link.position.x = 0; }), "child 1: place 1 2 3 and 0 2 3");
    EXPECT_EQ(after_child([](ChildLink& link) { link.scale.z = 0; }), "child 1: scale 4 5 6 and 4 5 0");
    EXPECT_EQ(after_child([](ChildLink& link) { str_copy("x7", link.rotate[0]); }), "child 1: first rotation 7 and x7");
    EXPECT_EQ(after_child([](ChildLink& link) { str_copy("", link.rotate[1]); }),
              "child 1: second rotation 8 and none");
    EXPECT_EQ(after_child([](ChildLink& link) { str_copy("1", link.rotate[2]); }), "child 1: third rotation 9 and 1");
    EXPECT_EQ(after([](Model* model) {
                  model_release(nth<ChildLink>(model->children, 0).model);
                  list_clear(&model->children);
              }),
              "children 1 and 0");
}

TEST_F(ModelCompare, WhatIsDerivedMakesNoDifference) {
    EXPECT_EQ(after([](Model* model) {
                  model->bounds_min.x = -9;
                  model->state_index = 3;
                  model->tag = 4;
                  Layer* roof = model_find_layer(model, "roof");
                  roof->bounds_max.y = 99;
                  Triangle& triangle = nth<Triangle>(roof->triangles, 0);
                  triangle.uvs[0][0] = 7;
                  triangle.id = 12345;
                  triangle.points[3] = 5;    // of three corners
                  triangle.controls[0] = 5;  // of a flat one
                  Layer* wall = model_find_layer(model, "wall");
                  wall->mirror_axis = 3;
                  wall->invisible_colour[1] = 3;
                  wall->image_axis_u = 3;
                  nth<Joint>(model->joints, 1).parent_index = 9;
                  nth<Line>(roof->lines, 0).id = 77;
                  nth<int32_t>(nth<Line>(roof->lines, 0).vertices, 1) += 65536;
                  model_release(nth<ChildLink>(model->children, 0).model);
                  nth<ChildLink>(model->children, 0).model = nullptr;
              }),
              "");
}

}  // namespace
}  // namespace pelt
