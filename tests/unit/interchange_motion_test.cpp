// Skinned and moving scenes: the model, its joints and clips, played by the system itself and held against what the
// source says.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>

#include "application/application.h"
#include "application/problem.h"
#include "application/scene_load.h"
#include "application/session_lifecycle.h"
#include "motion/animation_clock.h"
#include "motion/transform_state.h"
#include "support/scene_maker.h"

namespace pelt {
namespace {

using test::add_box;
using test::at_scale;
using test::Imported;
using test::OwnedModel;
using test::SceneMaker;
using test::Triple;

aiMatrix4x4 moved_by(float x, float y, float z) { return aiMatrix4x4(1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1); }

aiQuaternion about(const Triple& axis, double degrees) {
    return aiQuaternion(aiVector3D(axis[0], axis[1], axis[2]), static_cast<float>(degrees / 180.0 * std::numbers::pi));
}

// A bar of two bones along y in the source, which is up here: "lower" at the origin, "upper" at 100 above it.
struct Bar {
    Bar() {
        lower = maker.add_node("lower");
        upper = maker.add_node("upper", moved_by(0, 100, 0), lower);
        mesh = maker.add_mesh({{0, 0, 0}, {20, 0, 0}, {0, 100, 0}, {20, 100, 0}, {0, 200, 0}, {20, 200, 0}},
                              {{0, 1, 3}, {0, 3, 2}, {2, 3, 5}, {2, 5, 4}});
        SceneMaker::set_normals(mesh, std::vector<Triple>(6, Triple{0, 0, 1}));
    }
    void bind(const SceneMaker::Shares& of_lower, const SceneMaker::Shares& of_upper) {
        SceneMaker::add_bone(mesh, "lower", aiMatrix4x4(), of_lower);
        SceneMaker::add_bone(mesh, "upper", moved_by(0, -100, 0), of_upper);
    }
    SceneMaker maker;
    aiNode* lower;
    aiNode* upper;
    aiMesh* mesh;
};

// A scene list opened as the viewer opens it.
class ImportMotion : public ::testing::Test {
protected:
    ImportMotion() {
        *app = Application{};
        session_init(&app->session);
    }
    ~ImportMotion() override { session_reset(&app->session, 1); }

    void open(const Imported& made, const std::string& name = "made.scene") {
        ASSERT_EQ(made.result.error, "");
        ASSERT_TRUE(scene_open(app, made.dir.file(name).c_str(), &load)) << problem_last().what.text;
        ASSERT_TRUE(load.problems.empty()) << load.problems[0].text;
    }
    Model* root(int32_t row) { return static_cast<RootModel*>(list_at(&app->session.root_models, row, 1))->model; }
    // Where the point that rests there is now, its model's own movement included.
    Vec3 now(int32_t row, float x, float y, float z) {
        const int32_t id = model_point_at(root(row), x, y, z);
        EXPECT_GT(id, 0) << x << " " << y << " " << z;
        Point* point = model_find_point(root(row), id);
        if (point == nullptr) { return {}; }
        const Vec3 posed = point->state_index >= 0 ? point_state(&app->session, point)->position : point->position;
        Vec3 placed{};
        mat_transform_point(&model_state(&app->session, root(row))->matrix, &posed, &placed);
        return placed;
    }
    void expect_at(const Vec3& place, double x, double y, double z, double within = 0.6) {
        EXPECT_NEAR(place.x, x, within);
        EXPECT_NEAR(place.y, y, within);
        EXPECT_NEAR(place.z, z, within);
    }

    Application* app = application();
    SceneLoad load;
};

TEST_F(ImportMotion, ABoneTurnsWhatItMoves) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    aiAnimation* animation = bar.maker.add_animation("bend", 2.0);
    SceneMaker::add_channel(animation, "upper", {{0, {0, 100, 0}}},
                            {{0, about({0, 0, 1}, 0)}, {2, about({0, 0, 1}, 90)}});
    const Imported made(bar.maker.scene, at_scale(1));
    open(made);
    EXPECT_EQ(made.losses(), "");
    // The source turns about its z, towards the viewer: from its y, here z, towards its -x.
    for (const double seconds : {0.0, 0.5, 1.3, 2.0}) {
        animate_seek(&app->session, static_cast<float>(seconds));
        const double angle = seconds * 45.0 / 180.0 * std::numbers::pi;
        expect_at(now(0, 0, 0, 0), 0, 0, 0);
        expect_at(now(0, 20, 0, 100), 20, 0, 100);
        expect_at(now(0, 0, 0, 200), -100 * std::sin(angle), 0, 100 + 100 * std::cos(angle), 1.0);
        expect_at(now(0, 20, 0, 200), 20 * std::cos(angle) - 100 * std::sin(angle), 0,
                  100 + 100 * std::cos(angle) + 20 * std::sin(angle), 1.0);
    }
}

TEST_F(ImportMotion, TurnsInAllDirectionsArriveAsTheyWere) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    const aiQuaternion first = about({1, 0, 0}, 40);
    const aiQuaternion second = about({0, 1, 0}, -120);
    aiAnimation* animation = bar.maker.add_animation("bend", 1.0);
    SceneMaker::add_channel(animation, "lower", {{0, {0, 0, 0}}}, {{0, first}, {1, first}});
    SceneMaker::add_channel(animation, "upper", {{0, {0, 100, 0}}}, {{0, second}, {1, second}});
    const Imported made(bar.maker.scene, at_scale(1));
    open(made);
    animate_seek(&app->session, 0.5f);
    // v goes to first * ((0, 100, 0) + second * (v - (0, 100, 0))), computed by the library's own quaternions.
    const aiVector3D tip(20, 200, 0);
    const aiVector3D elbow(0, 100, 0);
    const aiVector3D expected = first.Rotate(elbow + second.Rotate(tip - elbow));
    expect_at(now(0, 20, 0, 200), double{expected.x}, -double{expected.z}, double{expected.y});
}

TEST_F(ImportMotion, TwoJointsShareAPoint) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 0.25f}, {3, 1}}, {{2, 0.75f}, {4, 1}, {5, 1}});
    aiAnimation* animation = bar.maker.add_animation("bend", 1.0);
    const aiQuaternion turn = about({0, 0, 1}, 90);
    SceneMaker::add_channel(animation, "lower", {{0, {0, 0, 0}}}, {{0, turn}, {1, turn}});
    SceneMaker::add_channel(animation, "upper", {{0, {0, 100, 0}}}, {{0, turn}, {1, turn}});
    const Imported made(bar.maker.scene, at_scale(1));
    open(made);
    animate_seek(&app->session, 0.5f);
    // Both joints have the elbow where the lower one takes it: (0, 100) turned by 90 degrees is (-100, 0).
    expect_at(now(0, 0, 0, 100), -100, 0, 0);
    const OwnedModel model = made.load();
    const Point* shared = model_find_point(model.get(), model_point_at(model.get(), 0, 0, 100));
    EXPECT_STREQ(shared->joint_a->name, "upper");
    EXPECT_STREQ(shared->joint_b->name, "lower");
    EXPECT_FLOAT_EQ(shared->weight, 0.75f);
}

TEST_F(ImportMotion, TheStrongestTwoOfThreeAreKeptAndTheCostIsTold) {
    Bar bar;
    bar.maker.add_node("third", moved_by(0, 100, 0), bar.lower);
    bar.bind({{0, 1}, {1, 1}, {2, 0.5f}, {3, 1}, {4, 0.1f}}, {{2, 0.3f}, {4, 0.6f}, {5, 1}});
    SceneMaker::add_bone(bar.mesh, "third", moved_by(0, -100, 0), {{2, 0.2f}, {4, 0.3f}});
    aiAnimation* animation = bar.maker.add_animation("bend", 1.0);
    const aiQuaternion turn = about({0, 0, 1}, 90);
    SceneMaker::add_channel(animation, "third", {{0, {0, 100, 0}}}, {{0, turn}, {1, turn}});
    const Imported made(bar.maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    const Point* point = model_find_point(model.get(), model_point_at(model.get(), 0, 0, 200));
    EXPECT_STREQ(point->joint_a->name, "upper");
    EXPECT_STREQ(point->joint_b->name, "third");
    EXPECT_NEAR(point->weight, 0.6 / 0.9, 0.001);
    // The tip stays with "lower" and "upper"; "third" takes it from (0, 200) to (-100, 100). Of three joints it goes
    // 0.3 of the way, of the two kept 1/3, in thousandths. The other point is the elbow, which no turn moves.
    const double off = (0.333 - 0.3) * std::sqrt(2.0) * 100.0;
    char text[64];
    std::snprintf(text, sizeof text, "strongest two: 2, at most %.2f units off", off);
    EXPECT_TRUE(made.has_loss(text)) << made.losses() << text;
}

TEST_F(ImportMotion, TheRootMovesTheWholeModel) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    aiAnimation* animation = bar.maker.add_animation("walk", 1.0);
    SceneMaker::add_channel(animation, "lower", {{0, {0, 0, 0}}, {1, {30, 40, 50}}}, {{0, about({0, 0, 1}, 0)}});
    const Imported made(bar.maker.scene, at_scale(2));
    open(made);
    animate_seek(&app->session, 0.5f);
    expect_at(now(0, 40, 0, 400), 40 + 30, -50, 400 + 40);
    EXPECT_EQ(made.losses(), "");
}

TEST_F(ImportMotion, WhatAJointCannotDoIsMeasured) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    aiAnimation* animation = bar.maker.add_animation("grow", 1.0);
    SceneMaker::add_channel(animation, "upper", {{0, {0, 100, 0}}, {1, {0, 160, 0}}}, {{0, about({0, 0, 1}, 0)}});
    const Imported made(bar.maker.scene, at_scale(1));
    EXPECT_TRUE(
        made.has_loss("joints only turn, and what else moves or scales them is left out: points are at most 60.00"))
        << made.losses();
}

TEST_F(ImportMotion, ABoneInTheMiddleThatMovesNothingItselfStillTurnsWhatIsBelow) {
    SceneMaker maker;
    aiNode* hip = maker.add_node("hip");
    aiNode* knee = maker.add_node("knee", moved_by(0, 100, 0), hip);
    maker.add_node("foot", moved_by(0, 100, 0), knee);
    aiMesh* mesh = maker.add_mesh({{0, 0, 0}, {10, 0, 0}, {0, 200, 0}, {0, 300, 0}}, {{0, 1, 2}, {1, 2, 3}});
    SceneMaker::add_bone(mesh, "hip", aiMatrix4x4(), {{0, 1}, {1, 1}});
    SceneMaker::add_bone(mesh, "foot", moved_by(0, -200, 0), {{2, 1}, {3, 1}});
    aiAnimation* animation = maker.add_animation("kick", 1.0);
    const aiQuaternion turn = about({0, 0, 1}, 90);
    SceneMaker::add_channel(animation, "knee", {{0, {0, 100, 0}}}, {{0, turn}, {1, turn}});
    const Imported made(maker.scene, at_scale(1));
    open(made);
    EXPECT_EQ(made.losses(), "");
    animate_seek(&app->session, 0.5f);
    expect_at(now(0, 0, 0, 300), -200, 0, 100);
}

TEST_F(ImportMotion, TheRestPoseIsTheOneInWhichItWasBound) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    aiMatrix4x4 turned;
    aiMatrix4x4::RotationZ(1.0f, turned);
    bar.upper->mTransformation = moved_by(0, 100, 0) * turned;  // as it stands in the file; the bones say otherwise
    const Imported made(bar.maker.scene, at_scale(1));
    EXPECT_GT(model_point_at(made.load().get(), 20, 0, 200), 0);
}

// ---- rows ----

TEST_F(ImportMotion, WhatGlidesApartIsARowOfItsOwn) {
    SceneMaker maker;
    add_box(maker, 10);  // of the root: stands still
    aiNode* car = maker.add_node("car", moved_by(100, 0, 0));
    add_box(maker, 10, car);
    aiNode* wheel = maker.add_node("wheel", moved_by(20, 0, 0), car);
    add_box(maker, 4, wheel);
    aiNode* ball = maker.add_node("ball", moved_by(0, 50, 0), car);
    add_box(maker, 4, ball);
    aiAnimation* animation = maker.add_animation("drive", 1.0);
    const aiQuaternion still;
    SceneMaker::add_channel(animation, "car", {{0, {100, 0, 0}}, {1, {200, 0, 0}}}, {{0, still}});
    SceneMaker::add_channel(animation, "wheel", {{0, {20, 0, 0}}}, {{0, still}, {1, about({0, 0, 1}, 90)}});
    SceneMaker::add_channel(animation, "ball", {{0, {0, 50, 0}}, {1, {0, 90, 0}}}, {{0, still}});
    const Imported made(maker.scene, at_scale(1));
    open(made);
    EXPECT_EQ(list_count(&app->session.root_models), 3);
    EXPECT_EQ(made.losses(), "");
    animate_seek(&app->session, 1.0f);
    expect_at(now(0, 110, -10, 10), 210, -10, 10);     // the car
    expect_at(now(0, 124, 0, 0), 220, 0, 4);           // the wheel, a joint of it, turned about its place
    expect_at(now(1, 104, -4, 54), 204, -4, 54 + 40);  // the ball
    expect_at(now(2, 10, 0, 10), 10, 0, 10);           // what stands still
    EXPECT_EQ(list_count(&root(0)->joints), 2);
    EXPECT_EQ(list_count(&root(2)->joints), 0);
}

TEST_F(ImportMotion, MoreRowsThanASceneListHasAreRefusedWithTheirCount) {
    for (const int count : {24, 25}) {
        SceneMaker maker;
        aiAnimation* animation = maker.add_animation("all", 1.0);
        for (int i = 0; i < count; ++i) {
            const auto x = static_cast<float>(i) * 20.0f;
            const std::string name = "part" + std::to_string(i);
            add_box(maker, 10, maker.add_node(name, moved_by(x, 0, 0)));
            SceneMaker::add_channel(animation, name, {{0, {x, 0, 0}}, {1, {x, 10, 0}}}, {{0, aiQuaternion()}});
        }
        const Imported made(maker.scene, at_scale(1));
        if (count == 24) {
            open(made);
            EXPECT_EQ(list_count(&app->session.root_models), 24);
        } else {
            EXPECT_NE(made.result.error.find("it moves in 25 parts"), std::string::npos) << made.result.error;
        }
    }
}

TEST_F(ImportMotion, APartTooLargeForOneModelHasItsJointsInEach) {
    SceneMaker maker;
    std::vector<Triple> places;
    std::vector<std::vector<unsigned>> faces;
    SceneMaker::Shares all;
    for (unsigned i = 0; i < 11000; ++i) {
        const auto x = static_cast<float>(i) * 4.0f;
        for (const Triple& place : {Triple{x, 0, 0}, Triple{x + 2, 0, 0}, Triple{x, 2, 0}}) {
            all.push_back({static_cast<unsigned>(places.size()), 1.0f});
            places.push_back(place);
        }
        faces.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    maker.add_node("spin");
    SceneMaker::add_bone(maker.add_mesh(places, faces), "spin", aiMatrix4x4(), all);
    aiAnimation* animation = maker.add_animation("spin", 1.0);
    SceneMaker::add_channel(animation, "spin", {}, {{0, aiQuaternion()}, {1, about({0, 0, 1}, 90)}});
    const Imported made(maker.scene, at_scale(1));
    open(made);
    ASSERT_EQ(list_count(&app->session.root_models), 2);
    for (const int32_t row : {0, 1}) { EXPECT_NE(model_find_joint(root(row), "spin"), nullptr); }
    animate_seek(&app->session, 1.0f);
    expect_at(now(1, 4.0f * 10999, 0, 0), 0, 0, 4.0 * 10999, 1.0);
}

// ---- files ----

TEST_F(ImportMotion, JointsComeFirstAndPointsNameThem) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    const Imported made(bar.maker.scene, at_scale(1));
    std::istringstream lines(made.dir.read("made.mod"));
    std::vector<std::string> firsts;
    bool in_points = false;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::vector<std::string> tokens;
        for (std::string word; words >> word;) { tokens.push_back(word); }
        if (tokens.empty() || tokens[0][0] == '#') { continue; }
        if (tokens[0] == "joint") {
            EXPECT_FALSE(in_points);
            EXPECT_EQ(tokens.back(), "0");
        }
        if (in_points && std::isdigit(tokens[0][0]) == 0) { break; }
        if (in_points) { EXPECT_EQ(tokens.size(), 7u) << line; }
        in_points = in_points || tokens[0] == "points";
    }
    EXPECT_TRUE(in_points);
}

TEST_F(ImportMotion, NamesOfJointsAreWordsOfTheirOwn) {
    SceneMaker maker;
    std::vector<Triple> places;
    std::vector<std::vector<unsigned>> faces;
    const std::vector<std::string> names = {
        "translate", "rotate", "world", "a b", "a b", "a name that is much longer than any key of a list may be"};
    aiNode* above = nullptr;
    aiMesh* mesh = nullptr;
    for (unsigned i = 0; i < names.size(); ++i) {
        for (const Triple& place : {Triple{0, 0, 0}, Triple{9, 0, 0}, Triple{0, 9, 0}}) {
            places.push_back({place[0] + 10.0f * static_cast<float>(i), place[1], place[2]});
        }
        faces.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    mesh = maker.add_mesh(places, faces);
    for (unsigned i = 0; i < names.size(); ++i) {
        above = maker.add_node(names[i], aiMatrix4x4(), above);
        SceneMaker::add_bone(mesh, names[i], aiMatrix4x4(), {{3 * i, 1}, {3 * i + 1, 1}, {3 * i + 2, 1}});
    }
    const Imported made(maker.scene, at_scale(1));
    const OwnedModel model = made.load();
    ASSERT_NE(model, nullptr) << made.result.error;
    std::vector<std::string> joints;
    for (const Joint& joint : list_elements<Joint>(model->joints)) { joints.push_back(joint.name); }
    // The second "a b" is a node of the same name: the library finds the first alone.
    EXPECT_EQ(joints, (std::vector<std::string>{"translate_2", "rotate_2", "world_2", "a_b",
                                                "a_name_that_is_much_longer_than"}));
}

TEST_F(ImportMotion, ManyTracksAreSharedOutOverFiles) {
    SceneMaker maker;
    std::vector<Triple> places;
    std::vector<std::vector<unsigned>> faces;
    constexpr unsigned COUNT = 90;
    for (unsigned i = 0; i < COUNT; ++i) {
        for (const Triple& place : {Triple{0, 0, 0}, Triple{9, 0, 0}, Triple{0, 9, 0}}) {
            places.push_back({place[0], place[1] + 10.0f * static_cast<float>(i), place[2]});
        }
        faces.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    aiMesh* mesh = maker.add_mesh(places, faces);
    aiAnimation* animation = maker.add_animation("wave", 1.0);
    aiNode* above = nullptr;
    for (unsigned i = 0; i < COUNT; ++i) {
        const auto y = static_cast<float>(i) * 10.0f;
        const std::string name = "a_rather_long_joint_name_" + std::to_string(i);
        above = maker.add_node(name, moved_by(0, i == 0 ? 0.0f : 10.0f, 0), above);
        SceneMaker::add_bone(mesh, name, moved_by(0, -y, 0), {{3 * i, 1}, {3 * i + 1, 1}, {3 * i + 2, 1}});
        SceneMaker::add_channel(animation, name, {{0, {0, i == 0 ? 0.0f : 10.0f, 0}}},
                                {{0, aiQuaternion()}, {1, about({0, 0, 1}, 1.0)}});
    }
    const Imported made(maker.scene, at_scale(1));
    int clips = 0;
    for (const ImportedFile& file : made.result.files) {
        if (file.name.find(".clip") == std::string::npos) { continue; }
        ++clips;
        std::istringstream lines(file.content);
        for (std::string line; std::getline(lines, line);) { EXPECT_LE(line.size(), 1023u); }
        EXPECT_LE(std::count(file.content.begin(), std::find(file.content.begin(), file.content.end(), '\n'), ' '), 40);
    }
    EXPECT_GE(clips, 3);
    open(made);
    animate_seek(&app->session, 1.0f);
    // Each joint turns by one degree against the one below it: their places run along an arc.
    double x = 0.0;
    double z = 0.0;
    for (unsigned i = 1; i < COUNT; ++i) {
        x -= 10.0 * std::sin(i / 180.0 * std::numbers::pi);
        z += 10.0 * std::cos(i / 180.0 * std::numbers::pi);
    }
    expect_at(now(0, 0, 0, 10.0f * (COUNT - 1)), x, 0, z, 2.0);
}

TEST_F(ImportMotion, EachAnimationHasASceneListOfItsOwn) {
    Bar bar;
    bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
    for (const auto& [name, degrees] : {std::pair{"walk", 90.0}, {"run", -90.0}, {"walk", 45.0}}) {
        aiAnimation* animation = bar.maker.add_animation(name, 1.0);
        SceneMaker::add_channel(animation, "upper", {{0, {0, 100, 0}}},
                                {{0, aiQuaternion()}, {1, about({0, 0, 1}, degrees)}});
    }
    const Imported made(bar.maker.scene, at_scale(1));
    for (const auto& [list, x] : {std::pair{"made_walk.scene", -100.0},
                                  {"made_run.scene", 100.0},
                                  {"made_walk_2.scene", -100.0 * std::sqrt(0.5)}}) {
        open(made, list);
        animate_seek(&app->session, 1.0f);
        EXPECT_NEAR(now(0, 0, 0, 200).x, x, 1.0) << list;
    }
}

TEST_F(ImportMotion, TheRateFollowsTheFastestTurn) {
    const auto note_for = [](double degrees) {
        Bar bar;
        bar.bind({{0, 1}, {1, 1}, {2, 1}, {3, 1}}, {{4, 1}, {5, 1}});
        aiAnimation* animation = bar.maker.add_animation("shake", 2.0);
        std::vector<aiQuatKey> keys;
        for (int i = 0; i <= 20; ++i) { keys.push_back({i * 0.1, about({0, 0, 1}, i % 2 == 0 ? 0.0 : degrees)}); }
        SceneMaker::add_channel(animation, "upper", {{0, {0, 100, 0}}}, keys);
        return Imported(bar.maker.scene, at_scale(1)).result.notes.back();
    };
    EXPECT_NE(note_for(0.2).find(" 5 frames a second"), std::string::npos) << note_for(0.2);
    EXPECT_NE(note_for(30.0).find(" 10 frames a second"), std::string::npos) << note_for(30.0);
}

TEST_F(ImportMotion, BonesOfNonsenseAreNone) {
    Bar bar;
    bar.bind({{0, 1}, {99, 1}, {1, -1}, {2, std::nanf("")}}, {});
    SceneMaker::add_bone(bar.mesh, "nowhere", aiMatrix4x4(), {{0, 1}});
    SceneMaker::add_bone(bar.mesh, "upper", aiMatrix4x4(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), {{0, 1}});
    aiAnimation* animation = bar.maker.add_animation("x", std::nan(""));
    SceneMaker::add_channel(animation, "lower", {}, {{0, aiQuaternion(0, 0, 0, 0)}, {-1, about({0, 1, 0}, 50)}});
    SceneMaker::add_channel(animation, "nowhere", {}, {});
    const Imported made(bar.maker.scene, at_scale(1));
    EXPECT_NE(made.load(), nullptr) << made.result.error;
}

}  // namespace
}  // namespace pelt
