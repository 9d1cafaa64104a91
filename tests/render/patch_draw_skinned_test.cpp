// Curved primitives made in the rest pose and moved by two joints: which joints, with what share, and what is sent.
#include <gtest/gtest.h>

#include <cmath>

#include "render/patch_draw.h"
#include "support/curved_scene.h"

namespace pelt {
namespace {

using namespace curved_scene;

class SkinnedDraw : public CurvedDraw {
protected:
    SkinnedDraw() { scene.session.display_curvepath = 1; }

    Joint* add_joint(const char* name, const char* parent) {
        model_add_joint(scene.model, name, 0, 0, 0, parent, 0);
        return model_find_joint(scene.model, name);
    }

    // Moves what hangs on the joint by this vector and turns its normals by a quarter about z.
    void move(Joint* joint, const Vec3& by) {
        JointState* state = joint_state(&scene.session, scene.model, joint);
        mat_identity(&state->skin);
        mat_translate(&state->skin, by.x, by.y, by.z);
        mat_identity(&state->normal_matrix);
        mat_rotate(&state->normal_matrix, 0, 0, 90);
    }

    void bind(int id, Joint* joint, float weight) {
        scene.point(id)->joint_a = joint;
        scene.point(id)->weight = weight;
    }

    // The vertices of a draw, in the order in which they were sent first; all are on the grid of the patch.
    std::vector<Vec3> vertices(Triangle* triangle, const Expected& patch) {
        EXPECT_EQ(draw(triangle, false, true), patch.triangle_count);
        std::vector<Vec3> out(static_cast<size_t>(patch.vertex_count));
        size_t corner = 0;
        for (const recording_gl::Call& call : recording_gl::calls()) {
            if (std::string(recording_gl::function_name(call.function)) != "glVertex3f") { continue; }
            const int vertex = patch.triangles[corner / 3][corner % 3];
            out[static_cast<size_t>(vertex)] = {static_cast<float>(call.arguments[0]),
                                                static_cast<float>(call.arguments[1]),
                                                static_cast<float>(call.arguments[2])};
            ++corner;
        }
        return out;
    }

    // By how much each vertex moved along x.
    std::vector<float> shifts(Triangle* triangle, const Expected& patch) {
        std::vector<float> out;
        const std::vector<Vec3> moved = vertices(triangle, patch);
        for (size_t i = 0; i < moved.size(); ++i) { out.push_back(moved[i].x - patch.places[i].x); }
        return out;
    }
};

TEST_F(SkinnedDraw, WithoutJointsIsTheRestPose) {
    Triangle* quad = scene.add_primitive(1, 4);
    for (int id = 1; id <= 4; ++id) {
        scene.pose(id, {100, 100, 100}, {1, 0, 0});  // not looked at
    }
    EXPECT_EQ(draw(quad, true), 8);
    const Expected patch = curved(scene, true, 4, 1);
    const Extras extras = attribute_lines(patch, SCENE_UVS, nullptr);
    const Lines expected = sent(patch, extras, {.hide_diagonals = true});
    ASSERT_EQ(lines().size(), expected.size());
    // p * g + p * (1 - g) may differ from p in its last bit.
    for (size_t i = 0; i < expected.size(); ++i) {
        const recording_gl::Call& call = recording_gl::calls()[i];
        if (!lines()[i].starts_with("glVertex3f") && !lines()[i].starts_with("glNormal3f")) {
            EXPECT_EQ(lines()[i], expected[i]);
        } else {
            EXPECT_LT(std::fabs(call.arguments[0]), 3.0);
        }
    }
    const std::vector<Vec3> places = vertices(quad, patch);
    for (size_t i = 0; i < places.size(); ++i) { EXPECT_NEAR(places[i].x, patch.places[i].x, 1e-6); }
}

TEST_F(SkinnedDraw, AFullWeightOfOneJointMovesTheWholePatch) {
    Joint* arm = add_joint("arm", "world");
    move(arm, {10, 0, 0});
    for (int id = 1; id <= 4; ++id) { bind(id, arm, 1.0f); }
    for (int quad : {0, 1}) {
        const Expected patch = curved(scene, quad, quad ? 4 : 3, 1);
        for (float shift : shifts(scene.add_primitive(quad, quad ? 4 : 3), patch)) { EXPECT_NEAR(shift, 10.0f, 1e-5); }
    }
}

TEST_F(SkinnedDraw, EveryAxisOfThePlacesIsBlended) {
    Joint* root = add_joint("root", "world");
    Joint* arm = add_joint("arm", "root");
    arm->parent_index = 0;
    move(root, {-10, 40, 100});
    move(arm, {10, 20, 30});
    for (int id = 1; id <= 3; ++id) { bind(id, arm, 0.25f); }
    const Expected patch = curved(scene, false, 3, 1);
    const std::vector<Vec3> moved = vertices(scene.add_primitive(0, 3), patch);
    for (size_t i = 0; i < moved.size(); ++i) {  // a quarter of the arm's way, three quarters of the root's
        EXPECT_NEAR(moved[i].x - patch.places[i].x, -5.0, 1e-4);
        EXPECT_NEAR(moved[i].y - patch.places[i].y, 35.0, 1e-4);
        EXPECT_NEAR(moved[i].z - patch.places[i].z, 82.5, 1e-4);
    }
}

// Unlike for points, the weight is no choice between the two here: the second joint takes a negative share.
TEST_F(SkinnedDraw, AWeightBeyondOneGoesPastTheFirstJoint) {
    Joint* root = add_joint("root", "world");
    Joint* arm = add_joint("arm", "root");
    arm->parent_index = 0;
    move(root, {-10, 0, 0});
    move(arm, {10, 0, 0});
    for (int id = 1; id <= 3; ++id) { bind(id, arm, 1.5f); }
    const Expected patch = curved(scene, false, 3, 1);
    for (float shift : shifts(scene.add_primitive(0, 3), patch)) { EXPECT_NEAR(shift, 20.0f, 1e-4); }
}

TEST_F(SkinnedDraw, NormalsGoThroughTheNormalMatrixAndKeepTheirLength) {
    Joint* arm = add_joint("arm", "world");
    move(arm, {10, 0, 0});
    for (int id = 1; id <= 3; ++id) { bind(id, arm, 0.5f); }
    const Expected patch = curved(scene, false, 3, 1);
    draw(scene.add_primitive(0, 3), false, true);
    // Half of the normal as it was, half of it turned by a quarter: shorter than 1, and sent so.
    const Vec3& n = patch.directions[0];
    const auto& sent_normal = recording_gl::calls()[1].arguments;
    EXPECT_NEAR(sent_normal[0], 0.5 * (n.x - n.y), 1e-6);
    EXPECT_NEAR(sent_normal[1], 0.5 * (n.y + n.x), 1e-6);
    EXPECT_NEAR(sent_normal[2], n.z, 1e-6);
}

TEST_F(SkinnedDraw, ASingleJointBlendsWithItsParent) {
    Joint* root = add_joint("root", "world");
    Joint* arm = add_joint("arm", "root");
    arm->parent_index = 0;
    move(root, {-10, 0, 0});
    move(arm, {10, 0, 0});
    bind(1, arm, 1.0f);
    bind(2, arm, 0.75f);
    bind(3, arm, 0.0f);
    // At corner i: weight * 10 + (1 - weight) * -10; the middle of an edge lies half way.
    const Expected patch = curved(scene, false, 3, 1);
    const std::vector<float> shift = shifts(scene.add_primitive(0, 3), patch);
    const float expected[6] = {10, 7.5f, 5, 0, -2.5f, -10};
    for (size_t i = 0; i < 6; ++i) { EXPECT_NEAR(shift[i], expected[i], 1e-5); }
}

TEST_F(SkinnedDraw, ASingleJointWithoutAParentIndexBlendsWithTheRestPose) {
    Joint* root = add_joint("root", "world");
    Joint* arm = add_joint("arm", "root");
    arm->parent_index = -1;  // the name alone does not count
    move(root, {-10, 0, 0});
    move(arm, {10, 0, 0});
    for (int id = 1; id <= 3; ++id) { bind(id, arm, 0.25f); }
    const Expected patch = curved(scene, false, 3, 1);
    for (float shift : shifts(scene.add_primitive(0, 3), patch)) { EXPECT_NEAR(shift, 2.5f, 1e-5); }
}

TEST_F(SkinnedDraw, AParentNameThatNamesNothingBlendsWithTheRestPose) {
    Joint* arm = add_joint("arm", "gone");
    arm->parent_index = 3;
    move(arm, {10, 0, 0});
    for (int id = 1; id <= 3; ++id) { bind(id, arm, 0.5f); }
    const Expected patch = curved(scene, false, 3, 1);
    for (float shift : shifts(scene.add_primitive(0, 3), patch)) { EXPECT_NEAR(shift, 5.0f, 1e-5); }
}

TEST_F(SkinnedDraw, SecondJointIsTheLastCornersThatDiffers) {
    Joint* one = add_joint("one", "world");
    Joint* two = add_joint("two", "world");
    Joint* three = add_joint("three", "world");
    move(one, {10, 0, 0});
    move(two, {100, 0, 0});
    move(three, {-10, 0, 0});
    bind(1, one, 1.0f);
    bind(2, two, 0.25f);
    bind(3, three, 1.0f);
    bind(4, one, 0.5f);
    // Shares of joint one: 1, then 1 - 0.25 and 1 - 1 for the corners of other joints, then 0.5; the rest is three's.
    const Expected patch = curved(scene, true, 4, 1);
    const std::vector<float> shift = shifts(scene.add_primitive(1, 4), patch);
    const auto moved_by = [](float share) { return share * 10.0f + (1.0f - share) * -10.0f; };
    EXPECT_NEAR(shift[0], moved_by(1.0f), 1e-5);
    EXPECT_NEAR(shift[6], moved_by(0.75f), 1e-5);
    EXPECT_NEAR(shift[2], moved_by(0.0f), 1e-5);
    EXPECT_NEAR(shift[8], moved_by(0.5f), 1e-5);
    EXPECT_NEAR(shift[4], moved_by((1.0f + 0.75f + 0.0f + 0.5f) / 4.0f), 1e-5);
}

TEST_F(SkinnedDraw, ACornerWithoutAJointDiffersToo) {
    Joint* one = add_joint("one", "world");
    Joint* two = add_joint("two", "world");
    move(one, {10, 0, 0});
    move(two, {100, 0, 0});
    bind(1, one, 1.0f);
    bind(2, two, 1.0f);
    bind(3, nullptr, 1.0f);  // the last that differs: the second joint is none
    const Expected patch = curved(scene, false, 3, 1);
    const std::vector<float> shift = shifts(scene.add_primitive(0, 3), patch);
    EXPECT_NEAR(shift[0], 10.0f, 1e-5);
    EXPECT_NEAR(shift[2], 0.0f, 1e-5);
    EXPECT_NEAR(shift[5], 0.0f, 1e-5);
}

TEST_F(SkinnedDraw, FirstCornerWithoutAJointLeavesItsShareAtRest) {
    Joint* two = add_joint("two", "world");
    move(two, {100, 0, 0});
    bind(1, nullptr, 1.0f);
    bind(2, two, 1.0f);
    bind(3, two, 1.0f);
    const Expected patch = curved(scene, false, 3, 1);
    const std::vector<float> shift = shifts(scene.add_primitive(0, 3), patch);
    EXPECT_NEAR(shift[0], 0.0f, 1e-5);
    EXPECT_NEAR(shift[2], 100.0f, 1e-4);
    EXPECT_NEAR(shift[1], 50.0f, 1e-4);
}

TEST_F(SkinnedDraw, DropsTheReflectionAndDrawsNoNet) {
    scene.session.display_curvenet = 1;
    Triangle* quad = scene.add_primitive(1, 4);
    draw(quad, true, false, false);
    const Lines plain = lines();
    draw(quad, true, false, true);
    EXPECT_EQ(lines(), plain);
    EXPECT_EQ(recording_gl::count_calls("glGetFloatv"), 0);
    EXPECT_EQ(plain.front(), "glBegin GL_TRIANGLES");
}

TEST_F(SkinnedDraw, ShowsItsMovedNormals) {
    scene.session.display_normals = 1;
    Joint* arm = add_joint("arm", "world");
    move(arm, {10, 0, 0});
    for (int id = 1; id <= 3; ++id) { bind(id, arm, 1.0f); }
    draw(scene.add_primitive(0, 3));
    EXPECT_EQ(recording_gl::count_lines("glColor3f 0 1 1"), 1);
    const Expected patch = curved(scene, false, 3, 1);
    const Lines all = lines();
    size_t strokes = 0;
    while (all[strokes] != "glBegin GL_LINES") { ++strokes; }
    EXPECT_EQ(all[strokes + 1], gl("glVertex3f", patch.places[0].x + 10.0f, patch.places[0].y, patch.places[0].z));
}

}  // namespace
}  // namespace pelt
