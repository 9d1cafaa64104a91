// pelt-model flatten run as a program: the pipeline, single steps, and its refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>

#include "formats/model_reader.h"
#include "scene/model.h"
#include "support/model_text.h"
#include "support/run_program.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::OwnedModel;
using test::pelt_model;
using test::RunResult;

using Place = std::array<float, 3>;
using Face = std::array<Place, 3>;  // corners in rising order: a face has no first corner
using Faces = std::set<Face>;

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

Face face(Place a, Place b, Place c) {
    Face sorted{a, b, c};
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

Place place_of(const Model* model, int32_t id) {
    const Point* point = model_find_point(model, id);
    return point != nullptr ? Place{point->position.x, point->position.y, point->position.z} : Place{-1e9f, 0, 0};
}

// Where the triangles of a layer lie, whatever their points are called; a triangle that stands twice counts once.
Faces faces_of(const Model* model, const std::string& layer_name) {
    Faces faces;
    const Layer* layer = model_find_layer(model, layer_name.c_str());
    if (layer == nullptr) { return faces; }
    EXPECT_EQ(list_count(&layer->polygons), 0);
    for (const Triangle& triangle : list_elements<Triangle>(layer->triangles)) {
        EXPECT_EQ(triangle.quad, 0);
        EXPECT_EQ(triangle.curve_type, 0);
        const int16_t* p = triangle.points;
        faces.insert(face(place_of(model, p[0]), place_of(model, p[1]), place_of(model, p[2])));
    }
    return faces;
}

std::vector<std::string> layer_names(const Model* model) {
    std::vector<std::string> names;
    for (const Layer& layer : list_elements<Layer>(model->layers)) { names.emplace_back(layer.name); }
    return names;
}

class Flatten : public testing::Test {
protected:
    Flatten() { dir.write("a.tga", test::solid_tga(1, 1, 1, 2, 3)); }

    RunResult flatten(const std::string& text, const std::vector<std::string>& options = {}) {
        dir.write("m.mod", text);
        std::vector<std::string> words{"flatten", "m.mod", "-o", "flat.mod"};
        words.insert(words.end(), options.begin(), options.end());
        RunResult run = pelt_model(words, {dir.path()});
        EXPECT_EQ(dir.read("m.mod"), text) << "the input is left alone";
        return run;
    }
    OwnedModel flattened(const std::string& text, const std::vector<std::string>& options = {}) {
        const RunResult run = flatten(text, options);
        EXPECT_EQ(run.status, 0) << run.err;
        OwnedModel model(model_load(dir.file("flat.mod").c_str()));
        EXPECT_NE(model, nullptr) << run.err << dir.read("flat.mod");
        return model;
    }

    test::TempDir dir;
};

constexpr const char* SQUARE =
    "points\n1 0 0 0\n2 20 0 0\n3 0 20 0\n4 20 20 0\nnormals\n1 0 0 1\n"
    "layer a 1 2 3 singlesided\ntriangles\n1 1 2 3 4\n";

TEST_F(Flatten, AQuadBecomesTwoTriangles) {
    const OwnedModel model = flattened(SQUARE);
    const Layer* layer = model_find_layer(model.get(), "a");
    ASSERT_EQ(list_count(&layer->triangles), 2);
    auto triangle = list_elements<Triangle>(layer->triangles).begin();
    EXPECT_TRUE(std::equal(triangle->points, triangle->points + 3, std::array<int, 3>{1, 2, 3}.begin()));
    ++triangle;
    EXPECT_TRUE(std::equal(triangle->points, triangle->points + 3, std::array<int, 3>{3, 2, 4}.begin()));
}

TEST_F(Flatten, APolygonBecomesTheTrianglesOfItsStrip) {
    const OwnedModel model = flattened(
        "points\n1 0 0 0\n2 0 10 0\n3 10 0 0\n4 10 10 0\n5 20 0 0\nnormals\n1 0 0 1\n"
        "layer a 1 2 3 singlesided\ntriangles\n2 1 2 3 4 5\n");
    EXPECT_EQ(faces_of(model.get(), "a"),
              (Faces{face({0, 0, 0}, {0, 10, 0}, {10, 0, 0}), face({10, 0, 0}, {0, 10, 0}, {10, 10, 0}),
                     face({10, 0, 0}, {10, 10, 0}, {20, 0, 0})}));
}

TEST_F(Flatten, ChildrenAreMergedInUnderNumberedNames) {
    dir.write("wing.mod",
              "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n"
              "child tip 0 0 5 1 1 1 0 0 0\n");
    dir.write("tip.mod", "points\n1 1 0 0\n2 2 0 0\n3 1 2 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n");
    const OwnedModel model = flattened(std::string(SQUARE) + "child wing 100 0 0 2 1 1 0 0 90\n");
    EXPECT_EQ(list_count(&model->children), 0);
    EXPECT_EQ(layer_names(model.get()), (std::vector<std::string>{"a", "2_a", "2_1_a"}));
    // Twice as wide, turned a quarter about z, moved by 100: (10, 0) comes to (20, 0), to (0, 20), to (100, 20).
    EXPECT_EQ(faces_of(model.get(), "2_a"), (Faces{face({100, 0, 0}, {100, 20, 0}, {90, 0, 0})}));
    // The tip of the wing: moved up by 5 within it, then as the wing is.
    EXPECT_EQ(faces_of(model.get(), "2_1_a"), (Faces{face({100, 2, 5}, {100, 4, 5}, {98, 2, 5})}));
}

TEST_F(Flatten, AMirroredLayerBecomesTwo) {
    const OwnedModel model = flattened(
        "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\nnormals\n1 0 0 1\n"
        "layer a 1 2 3 singlesided mirror x\ntriangles\n0 1 2 3\n");
    EXPECT_EQ(layer_names(model.get()), (std::vector<std::string>{"a", "a_mirror"}));
    EXPECT_EQ(list_count(&model->points), 4) << "the points on the plane serve both";
    EXPECT_EQ(faces_of(model.get(), "a"), (Faces{face({0, 0, 0}, {10, 0, 0}, {0, 10, 0})}));
    EXPECT_EQ(faces_of(model.get(), "a_mirror"), (Faces{face({0, 0, 0}, {-10, 0, 0}, {0, 10, 0})}));
    EXPECT_EQ(model_find_layer(model.get(), "a")->mirror, 0);
}

// Halfway lies at 20.5, which is cut towards zero.
const Faces QUARTERS{face({0, 0, 0}, {20, 0, 0}, {0, 20, 0}), face({20, 0, 0}, {41, 0, 0}, {20, 20, 0}),
                     face({0, 20, 0}, {20, 20, 0}, {0, 41, 0}), face({20, 0, 0}, {20, 20, 0}, {0, 20, 0})};

TEST_F(Flatten, ACurvedTriangleBecomesFourWhateverJointsItsPointsHave) {
    constexpr const char* POINTS =
        "points\n10 0 0 0\n20 41 0 0\n30 0 41 0\n40 7 7 7\nnormals\n10 0 0 1\n"
        "layer a 1 2 3 singlesided\ntriangles\n3 10 20 30\n";
    EXPECT_EQ(faces_of(flattened(POINTS).get(), "a"), QUARTERS);
    // The new points of joints come behind those of other joints and of none, which they must not put out of order.
    EXPECT_EQ(faces_of(flattened(std::string("joint hip 0 0 0 world 1\njoint knee 0 0 0 hip 1\n") + POINTS).get(), "a"),
              QUARTERS);
    const OwnedModel model = flattened(std::string("joint hip 0 0 0 world 2\njoint knee 0 0 0 world 1\n") + POINTS);
    EXPECT_EQ(faces_of(model.get(), "a"), QUARTERS);
    int32_t number = 0;
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        EXPECT_EQ(point.int_key(), ++number) << "numbered from 1 in joint order";
    }
    EXPECT_EQ(place_of(model.get(), number), (Place{7, 7, 7})) << "world points come last";
    EXPECT_EQ(model_find_point(model.get(), number)->joint_a, nullptr);
    EXPECT_STREQ(model_find_point(model.get(), 1)->joint_a->name, "hip");
}

TEST_F(Flatten, LinesKeepTheirPointsWhenThoseAreRenumbered) {
    const OwnedModel model = flattened(
        "joint hip 0 0 0 world 1\npoints\n10 1 0 0\n30 3 0 0\n20 2 0 0\n"
        "normals\n10 0 0 1\nlayer a 1 2 3 singlesided\nlines\n2 20 10 30\n");
    const Layer* layer = model_find_layer(model.get(), "a");
    ASSERT_EQ(list_count(&layer->lines), 1);
    std::vector<float> xs;
    for (const int32_t& id : list_elements<int32_t>(list_elements<Line>(layer->lines).begin()->vertices)) {
        xs.push_back(place_of(model.get(), id)[0]);
    }
    EXPECT_EQ(xs, (std::vector<float>{2, 1, 3}));
}

TEST_F(Flatten, TextureCoordinatesStayWithTheirCorners) {
    // The second corner has the normal of another point, and so gets a point of its own; the ids have gaps.
    const OwnedModel model = flattened(
        "joint hip 0 0 0 world 4\npoints\n10 0 0 0\n20 8 0 0\n30 0 8 0\n40 1 2 3\nnormals\n40 1 0 0\n"
        "layer a 1 2 3 singlesided\ntriangles\n0 20 10 30 40 10 30\nuvees\n10 0.25 0.5\n20 0.75 0.125\n30 -1.0 2.0\n"
        "image a.tga x y\n");
    const Layer* layer = model_find_layer(model.get(), "a");
    ASSERT_EQ(list_count(&layer->triangles), 1);
    const Triangle& triangle = *list_elements<Triangle>(layer->triangles).begin();
    for (int corner = 0; corner < 3; ++corner) {
        const Place place = place_of(model.get(), triangle.points[corner]);
        const std::array<float, 2> expected = place[0] == 8   ? std::array<float, 2>{0.75f, 0.125f}
                                              : place[1] == 8 ? std::array<float, 2>{-1.0f, 2.0f}
                                                              : std::array<float, 2>{0.25f, 0.5f};
        EXPECT_EQ(triangle.uvs[corner][0], expected[0]);
        EXPECT_EQ(triangle.uvs[corner][1], expected[1]);
        EXPECT_EQ(triangle.normals[corner], triangle.points[corner]) << "every corner has its normal in its own point";
    }
    EXPECT_EQ(list_count(&model->points), 5);
}

TEST_F(Flatten, TextureCoordinatesOfChildrenComeAlong) {
    dir.write("wing.mod",
              "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\nlayer b 1 2 3 singlesided\ntriangles\n0 1 2 3\n"
              "uvees\n1 0.125 0.25\n2 0.5 0.75\n3 1.0 1.5\nimage a.tga x y\n");
    const OwnedModel model =
        flattened(std::string("joint hip 0 0 0 world 4\n") + SQUARE + "child wing 0 0 0 1 1 1 0 0 0\n");
    const Layer* layer = model_find_layer(model.get(), "1_b");
    ASSERT_NE(layer, nullptr);
    const Triangle& triangle = *list_elements<Triangle>(layer->triangles).begin();
    for (int corner = 0; corner < 3; ++corner) {
        const float u = triangle.uvs[corner][0];
        const Place place = place_of(model.get(), triangle.points[corner]);
        EXPECT_EQ(u, place[0] == 10 ? 0.5f : place[1] == 10 ? 1.0f : 0.125f);
    }
}

TEST_F(Flatten, NoCurveIsLeftAlsoInMergedChildren) {
    constexpr const char* CURVED = "points\n1 0 0 0\n2 41 0 0\n3 0 41 0\n4 41 41 0\nnormals\n1 0 0 1\n";
    dir.write("wing.mod", std::string(CURVED) +
                              "layer a 1 2 3 singlesided\ntriangles\n3 1 2 3\n"
                              "layer b 1 2 3 singlesided mirror x\ntriangles\n3 1 2 3 1\n4 1 2 3 4\n"
                              "child tip 0 0 7 1 1 1 0 0 0\n");
    dir.write("tip.mod", std::string(CURVED) + "layer a 1 2 3 singlesided\ntriangles\n3 1 2 3\n");
    const OwnedModel model = flattened(std::string(CURVED) +
                                       "layer a 1 2 3 singlesided\ntriangles\n4 1 2 3 4 2\n"
                                       "child wing 100 0 0 1 1 1 0 0 0\n");
    Faces wing;
    Faces tip;
    for (const Face& quarter : QUARTERS) {
        const auto moved = [&](int i, float x, float z) { return Place{quarter[i][0] + x, quarter[i][1], z}; };
        wing.insert(face(moved(0, 100, 0), moved(1, 100, 0), moved(2, 100, 0)));
        tip.insert(face(moved(0, 100, 7), moved(1, 100, 7), moved(2, 100, 7)));
    }
    EXPECT_EQ(faces_of(model.get(), "2_a"), wing);
    EXPECT_EQ(faces_of(model.get(), "2_1_a"), tip);
    for (const std::string& layer : layer_names(model.get())) {
        EXPECT_GT(faces_of(model.get(), layer).size(), 1u) << layer;  // which looks for curves, too
    }
    EXPECT_EQ(faces_of(model.get(), "2_b").size(), faces_of(model.get(), "2_b_mirror").size());
}

TEST_F(Flatten, EachJointCountsThePointsThatNameIt) {
    const OwnedModel model = flattened(
        "joint hip 0 0 0 world 9\njoint knee 0 0 0 hip 0\npoints\n1 0 0 0\n2 41 0 0\n3 0 41 0\n"
        "normals\n1 0 0 1\nlayer a 1 2 3 singlesided\ntriangles\n3 1 2 3\n");
    EXPECT_EQ(faces_of(model.get(), "a"), QUARTERS);
    EXPECT_EQ(list_count(&model->points), 6);
    EXPECT_EQ(model_find_joint(model.get(), "hip")->point_count, 6);
    EXPECT_EQ(model_find_joint(model.get(), "knee")->point_count, 0);
}

// ---- single steps ----

TEST_F(Flatten, OnlyRunsTheStepsThatAreNamed) {
    const std::string text =
        "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\n4 10 10 0\nnormals\n1 0 0 1\n"
        "layer a 1 2 3 singlesided mirror x\ntriangles\n1 1 2 3 4\n3 1 2 3\n";
    const OwnedModel mirrored = flattened(text, {"--only", "mirror"});
    ASSERT_EQ(layer_names(mirrored.get()).size(), 2u);
    EXPECT_EQ(list_elements<Triangle>(model_find_layer(mirrored.get(), "a")->triangles).begin()->quad, 1);

    const OwnedModel split = flattened(text, {"--only", "triangulate"});
    EXPECT_EQ(list_count(&model_find_layer(split.get(), "a")->triangles), 3) << "the curved one stays";
    EXPECT_EQ(model_find_layer(split.get(), "a")->mirror, 1);

    const OwnedModel both = flattened(text, {"--only", "tessellate,mirror"});
    EXPECT_EQ(layer_names(both.get()).size(), 2u);
    for (const char* layer : {"a", "a_mirror"}) {
        for (const Triangle& triangle : list_elements<Triangle>(model_find_layer(both.get(), layer)->triangles)) {
            EXPECT_EQ(triangle.curve_type, 0);
        }
    }
}

TEST_F(Flatten, TheWordBehindTheStepsIsTheModel) {
    test::TempDir files;
    files.write("m.mod",
                "points\n1 0 0 0\n2 10 0 0\n3 0 10 0\n"
                "layer a 1 2 3 singlesided mirror x\ntriangles\n0 1 2 3\n");
    const auto run = test::pelt_model({"flatten", "--only", "mirror", "m.mod", "-o", "out.mod"}, {files.path()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(files.read("out.mod").find("layer a_mirror"), std::string::npos);
}

TEST_F(Flatten, ModelsWithoutJointsOrLayersPassThroughEveryStep) {
    for (const char* step : {"mirror", "tessellate", "triangulate", "flatten", "split-normals", "uvees", "renumber"}) {
        EXPECT_EQ(list_count(&flattened("points\n5 1 2 3\nnormals\n5 0 0 1\n", {"--only", step})->points), 1) << step;
        EXPECT_EQ(list_count(&flattened("", {"--only", step})->points), 0) << step;
    }
}

// ---- refusals and warnings ----

class AtTheLimit : public Flatten {
protected:
    // Points up to the last id, of which three make a triangle.
    static std::string model(const std::string& layer, const std::string& primitive) {
        return "points\n1 1 0 0\n2 41 0 0\n3 1 40 0\n32767 9 9 9\nnormals\n1 0 0 1\n" + layer + "\ntriangles\n" +
               primitive + "\n";
    }
    void expect_refused(const std::string& text, const std::string& step) {
        dir.write("flat.mod", "as it was");
        const RunResult run = flatten(text);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err.substr(0, 7 + step.size()), "m.mod: " + step) << run.err;
        EXPECT_TRUE(holds(run.err, "; nothing is written\n")) << run.err;
        EXPECT_EQ(dir.read("flat.mod"), "as it was");
    }
};

TEST_F(AtTheLimit, IdsThatWouldPassIt) {
    expect_refused(model("layer a 1 2 3 singlesided mirror x", "0 1 2 3"), "mirror: ");
    expect_refused(model("layer a 1 2 3 singlesided", "3 1 2 3"), "tessellate: ");
    expect_refused(model("layer a 1 2 3 singlesided", "0 1 2 3 2 3 1"), "split-normals: ");
    dir.write("wing.mod", "points\n1 0 0 0\n");
    expect_refused(model("layer a 1 2 3 singlesided", "0 1 2 3") + "child wing 0 0 0 1 1 1 0 0 0\n", "flatten: ");
}

TEST_F(AtTheLimit, WithoutNewPointsThereIsNothingToRefuse) {
    EXPECT_EQ(list_count(&flattened(model("layer a 1 2 3 singlesided", "0 1 2 3"))->points), 4);
}

TEST_F(AtTheLimit, AModelThatIsBeyondItAlready) { expect_refused("points\n32768 0 0 0\n", "point ids above 32767"); }

TEST_F(Flatten, WhatChildrenLoseIsNamed) {
    dir.write("wing.mod",
              "joint hip 0 0 0 world 1\npoints\n1 0 0 0\n2 1 0 0\n"
              "layer w 1 2 3 singlesided\nlines\n2 1 2\n");
    const RunResult run = flatten(std::string(SQUARE) + "child wing 0 0 0 1 1 1 0 0 0\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err,
              "m.mod: warning: child wing: its joints are not carried over\n"
              "m.mod: warning: child wing: its lines are not carried over\n");
}

TEST_F(Flatten, TheInputIsReplacedOnlyWhenItIsTheOutput) {
    dir.write("m.mod", SQUARE);
    EXPECT_EQ(pelt_model({"flatten", "m.mod"}, {dir.path()}).status, 2);
    EXPECT_EQ(dir.read("m.mod"), SQUARE);
    EXPECT_EQ(pelt_model({"flatten", "m.mod", "-o", "m.mod"}, {dir.path()}).status, 0);
    EXPECT_TRUE(holds(dir.read("m.mod"), "\n0     1    2    3\n0     3    2    4\n"));
}

TEST_F(Flatten, PlacesThatAreNoNumbersEndAsZero) {
    // Only huge angles and scales are left to a file; the point of the child is cut to what an integer holds.
    dir.write("wing.mod",
              "points\n1 2147483647 0 0\n2 1 0 0\n3 0 1 0\n"
              "layer w 1 2 3 singlesided\ntriangles\n0 1 2 3\n");
    const OwnedModel model =
        flattened(std::string(SQUARE) + "child wing 0 0 0 99999999999999999999999999999999999999999.0 1 1 0 0 45\n");
    EXPECT_EQ(list_count(&model->points), 7);
    // The scale is infinite. Turned by 45 degrees, points 1 and 2 lie infinitely far along x and y, and infinity times
    // nothing is their z; point 3 has nothing of the infinite scale along x, and so no place on any axis.
    const Place far{2147483648.0f, 2147483648.0f, 0.0f};  // the nearest to the highest integer
    EXPECT_EQ(faces_of(model.get(), "1_w"), (Faces{face(far, far, {0, 0, 0})}));
}

}  // namespace
}  // namespace pelt
