// Scenes that stand still, made into models: places, winding, points and what they share, limits.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "support/scene_maker.h"

namespace pelt {
namespace {

using test::add_box;
using test::at_scale;
using test::Imported;
using test::only_layer;
using test::OwnedModel;
using test::SceneMaker;
using test::triangles_of;
using test::Triple;

const std::vector<Triple> CORNER = {{0, 0, 0}, {10, 0, 0}, {0, 20, 0}};

Vec3 place_of(const OwnedModel& model, int16_t id) { return model_find_point(model.get(), id)->position; }

Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// The direction from which the corners of a primitive run clockwise: where its front is.
Vec3 front_of(const OwnedModel& model, const Triangle& triangle) {
    const Vec3 a = place_of(model, triangle.points[0]);
    const Vec3 b = place_of(model, triangle.points[1]);
    const Vec3 c = place_of(model, triangle.points[2]);
    return cross(vec_subtract(c, a), vec_subtract(b, a));
}

TEST(ImportStatic, YUpBecomesZUp) {
    SceneMaker maker;
    maker.add_mesh({{1, 2, 3}, {100, 0, 0}, {0, 0, 70}}, {{0, 1, 2}});
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    EXPECT_GT(model_point_at(model.get(), 1, -3, 2), 0);
    EXPECT_GT(model_point_at(model.get(), 100, 0, 0), 0);
    EXPECT_GT(model_point_at(model.get(), 0, -70, 0), 0);
}

TEST(ImportStatic, ZUpStaysWhereItSaysSo) {
    SceneMaker maker;
    maker.add_mesh({{1, 2, 3}, {100, 0, 0}, {0, 0, 70}}, {{0, 1, 2}});
    for (const bool by_option : {false, true}) {
        ImportOptions options = at_scale(1);
        options.up = by_option ? UP_Z : UP_OF_FORMAT;
        const Imported made(maker.scene, options, by_option ? "obj" : "stl");
        const OwnedModel model = made.load();
        ASSERT_NE(model, nullptr) << made.result.error;
        EXPECT_GT(model_point_at(model.get(), 1, 2, 3), 0);
    }
}

TEST(ImportStatic, TheFrontOfAFaceStaysItsFront) {
    SceneMaker maker;
    maker.add_mesh(CORNER, {{0, 1, 2}});  // counter-clockwise as seen from +z, which comes to lie at -y
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    const auto triangles = triangles_of(only_layer(model));
    ASSERT_EQ(triangles.size(), 1u);
    const Vec3 front = front_of(model, triangles[0]);
    EXPECT_LT(front.y, 0.0f);
    EXPECT_EQ(front.x, 0.0f);
    EXPECT_EQ(front.z, 0.0f);
}

TEST(ImportStatic, TheFrontOfAMirroredFaceStaysItsFront) {
    SceneMaker maker;
    aiMatrix4x4 mirror;
    mirror.a1 = -1.0f;
    aiNode* node = maker.add_node("mirrored", mirror);
    maker.add_mesh(CORNER, {{0, 1, 2}}, node);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    const auto triangles = triangles_of(only_layer(model));
    ASSERT_EQ(triangles.size(), 1u);
    EXPECT_LT(front_of(model, triangles[0]).y, 0.0f);
    EXPECT_GT(model_point_at(model.get(), -10, 0, 0), 0);
}

TEST(ImportStatic, PlacementsOfNodesAreBakedIntoThePoints) {
    SceneMaker maker;
    // Above: moved; below: sheared and stretched, which no child's line could say.
    aiNode* above = maker.add_node("above", aiMatrix4x4(1, 0, 0, 5, 0, 1, 0, 6, 0, 0, 1, 7, 0, 0, 0, 1));
    aiNode* below = maker.add_node("below", aiMatrix4x4(2, 1, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1), above);
    maker.add_mesh({{1, 1, 1}, {2, 0, 0}, {0, 0, 2}}, {{0, 1, 2}}, below);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    EXPECT_GT(model_point_at(model.get(), 2 + 1 + 5, -(4 + 7), 3 + 6), 0);
    EXPECT_EQ(list_count(&model->children), 0);
}

TEST(ImportStatic, NormalsGoWithAStretchedPlacement) {
    SceneMaker maker;
    aiMatrix4x4 stretch;
    stretch.a1 = 2.0f;
    aiNode* node = maker.add_node("stretched", stretch);
    aiMesh* mesh = maker.add_mesh(CORNER, {{0, 1, 2}}, node);
    const float half = std::sqrt(0.5f);
    SceneMaker::set_normals(mesh, {{half, half, 0}, {half, half, 0}, {half, half, 0}});
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr);
    // A surface stretched along x turns away from x: (1/2, 1, 0) before it is made of length 1 and brought upright.
    const Vec3 normal = model_find_point(model.get(), 1)->normal;
    EXPECT_NEAR(normal.x, 1.0 / std::sqrt(5.0), 0.001);
    EXPECT_NEAR(normal.y, 0.0, 0.001);
    EXPECT_NEAR(normal.z, 2.0 / std::sqrt(5.0), 0.001);
}

// ---- points ----

TEST(ImportStatic, ABoxHasEightPointsThatHoldItsSixNormals) {
    SceneMaker maker;
    add_box(maker, 10);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model_count_points(model.get()), 8);
    const auto triangles = triangles_of(only_layer(model));
    ASSERT_EQ(triangles.size(), 12u);
    for (const Triangle& triangle : triangles) {
        Vec3 front = front_of(model, triangle);
        vec_normalise(&front);
        for (int corner = 0; corner < 3; ++corner) {
            const Vec3 normal = model_find_point(model.get(), triangle.normals[corner])->normal;
            EXPECT_NEAR(vec_dot(normal, front), 1.0f, 0.001f);
        }
    }
}

TEST(ImportStatic, ANormalThatNoPointHasFreeTakesAnIdForItself) {
    // Six corners, eight faces that each have a normal of their own.
    const std::vector<Triple> tips = {{10, 0, 0}, {-10, 0, 0}, {0, 10, 0}, {0, -10, 0}, {0, 0, 10}, {0, 0, -10}};
    std::vector<Triple> places;
    std::vector<Triple> normals;
    std::vector<std::vector<unsigned>> faces;
    for (unsigned x = 0; x < 2; ++x) {
        for (unsigned y = 2; y < 4; ++y) {
            for (unsigned z = 4; z < 6; ++z) {
                const auto first = static_cast<unsigned>(places.size());
                for (const unsigned tip : {x, y, z}) {
                    places.push_back(tips[tip]);
                    normals.push_back({tips[x][0], tips[y][1], tips[z][2]});
                }
                faces.push_back({first, first + 1, first + 2});
            }
        }
    }
    SceneMaker maker;
    SceneMaker::set_normals(maker.add_mesh(places, faces), normals);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model_count_points(model.get()), 8);
    for (const Triangle& triangle : triangles_of(only_layer(model))) {
        std::set<int16_t> held;
        for (int corner = 0; corner < 3; ++corner) {
            const Vec3 middle =
                vec_add(vec_add(place_of(model, triangle.points[0]), place_of(model, triangle.points[1])),
                        place_of(model, triangle.points[2]));
            const Vec3 normal = model_find_point(model.get(), triangle.normals[corner])->normal;
            EXPECT_NEAR(vec_dot(normal, middle), 10.0f * std::sqrt(3.0f), 0.1f);
            held.insert(triangle.normals[corner]);
        }
        EXPECT_EQ(held.size(), 1u);
    }
}

TEST(ImportStatic, TwoTrianglesThatWereAQuadAreOneAgainCutAsBefore) {
    SceneMaker maker;
    aiMesh* mesh = maker.add_mesh({{0, 0, 0}, {10, 0, 0}, {10, 10, 3}, {0, 10, 0}}, {{0, 1, 2}, {0, 2, 3}});
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE | aiPrimitiveType_NGONEncodingFlag;
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    const auto triangles = triangles_of(only_layer(model));
    ASSERT_EQ(triangles.size(), 1u);
    EXPECT_EQ(triangles[0].quad, 1);
    // The diagonal of a quad joins its corners 1 and 2: here (0, 0, 0) and (10, 10, 3).
    std::set<float> heights;
    for (const int corner : {1, 2}) { heights.insert(place_of(model, triangles[0].points[corner]).x); }
    EXPECT_EQ(heights, (std::set<float>{0.0f, 10.0f}));
    EXPECT_LT(front_of(model, triangles[0]).y, 0.0f);
    const Vec3 b = place_of(model, triangles[0].points[1]);
    const Vec3 c = place_of(model, triangles[0].points[2]);
    EXPECT_EQ(std::fabs(b.z - c.z), 10.0f);
    EXPECT_EQ(std::fabs(b.y - c.y), 3.0f);
}

TEST(ImportStatic, TrianglesThatNobodyMarkedStayTwo) {
    SceneMaker maker;
    maker.add_mesh({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}, {{0, 1, 2}, {0, 2, 3}});
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    EXPECT_EQ(triangles_of(only_layer(model)).size(), 2u);
}

TEST(ImportStatic, LinesAndLonePointsAreKept) {
    SceneMaker maker;
    maker.add_mesh({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}}, {{0, 1}, {2}});
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(only_layer(model), nullptr);
    EXPECT_EQ(list_count(&only_layer(model)->lines), 1);
    EXPECT_EQ(model_count_points(model.get()), 3);
    EXPECT_TRUE(made.has_loss("points without a face")) << made.losses();
}

TEST(ImportStatic, ACloudOfPointsIsAModelOfPoints) {
    SceneMaker maker;
    maker.add_mesh({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}}, {});
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    EXPECT_EQ(model_count_points(model.get()), 3);
}

// ---- scale ----

TEST(ImportScale, WholePlacesStayAsTheyAre) {
    SceneMaker maker;
    maker.add_mesh({{0, 0, 0}, {400, 0, 0}, {0, 250, 7}}, {{0, 1, 2}});
    const Imported made(maker.scene);
    EXPECT_TRUE(made.has_note("scale 1: all places are whole"));
    EXPECT_GT(model_point_at(made.load().get(), 400, 0, 0), 0);
}

TEST(ImportScale, ASmallWholeModelIsMadeLargeEnoughToBeSeen) {
    SceneMaker maker;
    add_box(maker, 2);
    const Imported made(maker.scene);
    EXPECT_TRUE(made.has_note("scale 100:"));
    EXPECT_GT(model_point_at(made.load().get(), 200, -200, 200), 0);
}

TEST(ImportScale, PlacesStayWithinAThousandthOfTheSize) {
    SceneMaker maker;
    std::vector<Triple> places;
    std::vector<std::vector<unsigned>> faces;
    for (unsigned i = 0; i < 90; i += 3) {
        for (unsigned k = i; k < i + 3; ++k) {
            const auto angle = static_cast<float>(k);
            places.push_back({std::sin(angle) * 0.37f, std::cos(angle) * 0.37f, 0.001f * angle});
        }
        faces.push_back({i, i + 1, i + 2});
    }
    maker.add_mesh(places, faces);
    const Imported made(maker.scene);
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr);
    constexpr double SCALE = 100000.0;  // the smallest power of ten that makes 0.74 more than 10000
    EXPECT_TRUE(made.has_note("scale 100000:"));
    for (const Triple& place : places) {
        double nearest = 1e9;
        for (const Point& point : list_elements<Point>(model->points)) {
            nearest = std::min(nearest, std::hypot(point.position.x / SCALE - double{place[0]},
                                                   point.position.y / SCALE + double{place[2]},
                                                   point.position.z / SCALE - double{place[1]}));
        }
        EXPECT_LT(nearest, 0.74 / 1000.0);
    }
}

TEST(ImportScale, AScaleThatLeavesTheWholeNumbersIsRefused) {
    SceneMaker maker;
    add_box(maker, 10);
    const Imported made(maker.scene, at_scale(1e7));
    EXPECT_NE(made.result.error.find("at a scale of 10000000 its places go beyond 16777216"), std::string::npos)
        << made.result.error;
    EXPECT_TRUE(made.result.files.empty());
}

TEST(ImportScale, FacesThatRoundingTakesAwayAreTold) {
    SceneMaker maker;
    maker.add_mesh({{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0.1f, 0, 0}, {0, 0.1f, 0}}, {{0, 1, 2}, {0, 3, 4}});
    const Imported made(maker.scene, at_scale(1));
    EXPECT_TRUE(made.has_loss("faces smaller than a unit left out (a larger --scale keeps them): 1")) << made.losses();
}

// ---- limits ----

// A node with a strip of so many triangles that share no corner.
void add_far_triangles(SceneMaker& maker, const std::string& node, unsigned count, float z) {
    std::vector<Triple> places;
    std::vector<std::vector<unsigned>> faces;
    for (unsigned i = 0; i < count; ++i) {
        const auto x = static_cast<float>(i) * 4.0f;
        for (const Triple& place : {Triple{x, 0, z}, Triple{x + 2, 0, z}, Triple{x, 2, z}}) { places.push_back(place); }
        faces.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    maker.add_mesh(places, faces, maker.add_node(node));
}

TEST(ImportLimits, ManyPointsBecomeChildrenByNode) {
    SceneMaker maker;
    add_far_triangles(maker, "left wing", 6000, 0);
    add_far_triangles(maker, "right wing", 6000, 10);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    ASSERT_EQ(list_count(&model->children), 2);
    std::vector<std::string> names;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        names.push_back(link.name);
        ASSERT_NE(link.model, nullptr);
        EXPECT_EQ(model_count_triangles(link.model, nullptr), 6000);
        EXPECT_EQ(link.position.x, 0.0f);
        EXPECT_EQ(link.scale.x, 1.0f);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"made_left_wing", "made_right_wing"}));
    EXPECT_TRUE(made.has_note("child models: 2"));
}

TEST(ImportLimits, ANodeThatIsTooLargeIsCut) {
    SceneMaker maker;
    add_far_triangles(maker, "all", 12000, 0);
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    int32_t triangles = 0;
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        triangles += model_count_triangles(link.model, nullptr);
        EXPECT_LE(model_highest_point(link.model), 32767);
    }
    EXPECT_EQ(triangles, 12000);
}

TEST(ImportLimits, AThousandNodesShareChildren) {
    SceneMaker maker;
    for (int i = 0; i < 1000; ++i) { add_far_triangles(maker, "n", 12, static_cast<float>(i)); }
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    EXPECT_EQ(list_count(&model->children), 3);
    EXPECT_EQ(model_count_points(model.get()), 0);
}

// ---- nonsense ----

TEST(ImportNonsense, CornersThatDoNotExistAreLeftOut) {
    SceneMaker maker;
    maker.add_mesh(CORNER, {{0, 1, 2}, {0, 1, 3}, {}});
    const Imported made(maker.scene, at_scale(1));
    EXPECT_EQ(triangles_of(only_layer(made.load())).size(), 1u);
    EXPECT_TRUE(made.has_loss("faces with corners that do not exist left out: 2")) << made.losses();
}

TEST(ImportNonsense, PlacesThatAreNoNumbersAreLeftOut) {
    SceneMaker maker;
    std::vector<Triple> places = CORNER;
    places.push_back({std::numeric_limits<float>::quiet_NaN(), 0, 0});
    places.push_back({std::numeric_limits<float>::infinity(), 0, 0});
    aiMesh* mesh = maker.add_mesh(places, {{0, 1, 2}, {0, 1, 3}, {1, 2, 4}});
    const float none = std::numeric_limits<float>::quiet_NaN();
    SceneMaker::set_normals(mesh, {{none, 0, 0}, {0, 0, 0}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
    const Imported made(maker.scene);
    EXPECT_EQ(triangles_of(only_layer(made.load())).size(), 1u) << made.result.error;
    EXPECT_TRUE(made.has_loss("faces with places that are no numbers left out: 2")) << made.losses();
}

TEST(ImportNonsense, MeshesAndMaterialsThatDoNotExistAreNone) {
    SceneMaker maker;
    aiMesh* mesh = maker.add_mesh(CORNER, {{0, 1, 2}});
    mesh->mMaterialIndex = 77;
    SceneMaker::append(maker.scene.mRootNode->mMeshes, maker.scene.mRootNode->mNumMeshes, 99u);
    const Imported made(maker.scene, at_scale(1));
    EXPECT_EQ(triangles_of(only_layer(made.load())).size(), 1u) << made.result.error;
}

TEST(ImportNonsense, ANodeBelowItselfIsMetOnce) {
    SceneMaker maker;
    maker.add_mesh(CORNER, {{0, 1, 2}});
    aiNode* root = maker.scene.mRootNode;
    root->mChildren = new aiNode* [1] { root };
    root->mNumChildren = 1;
    const Imported made(maker.scene, at_scale(1));
    EXPECT_EQ(triangles_of(only_layer(made.load())).size(), 1u) << made.result.error;
    delete[] root->mChildren;
    root->mChildren = nullptr;
    root->mNumChildren = 0;
}

TEST(ImportNonsense, ASceneWithoutAnythingIsAnError) {
    SceneMaker empty;
    EXPECT_EQ(Imported(empty.scene).result.error, "there is nothing to be seen in it");
    SceneMaker hollow;
    hollow.add_mesh(CORNER, {{0, 0, 0}});
    EXPECT_EQ(Imported(hollow.scene).result.error, "there is nothing to be seen in it");
}

TEST(ImportStatic, TheSameSceneGivesTheSameBytes) {
    const auto made = [] {
        SceneMaker maker;
        add_box(maker, 3.3f);
        add_far_triangles(maker, "x", 300, 1.7f);
        const Imported once(maker.scene);
        std::string all;
        for (const ImportedFile& file : once.result.files) { all += file.name + "\n" + file.content; }
        return all;
    };
    EXPECT_EQ(made(), made());
}

TEST(ImportStatic, WhatIsNotBroughtOverIsTold) {
    SceneMaker maker;
    aiMesh* mesh = maker.add_mesh(CORNER, {{0, 1, 2}});
    SceneMaker::append(maker.scene.mCameras, maker.scene.mNumCameras, new aiCamera);
    SceneMaker::append(mesh->mAnimMeshes, mesh->mNumAnimMeshes, new aiAnimMesh);
    maker.add_animation("nothing", 1.0);
    const Imported made(maker.scene, at_scale(1));
    EXPECT_TRUE(made.has_loss("cameras left out: 1"));
    EXPECT_TRUE(made.has_loss("meshes that lose the shapes they can blend to: 1"));
    EXPECT_TRUE(made.has_loss("animations that move nothing that is seen left out: 1"));
}

}  // namespace
}  // namespace pelt
