// Child models: placement, the matrix stack in deep trees, circles.
#include <algorithm>
#include <string>
#include <vector>

#include "support/layer_scene.h"

namespace pelt {
namespace {

class ChildModels : public LayerScene {};

// A model with one triangle whose first corner, sent first, is (0, 0, mark).
Model* make_marked_model(int32_t mark) {
    Model* made = model_create("marked.mod", nullptr);
    model_add_layer(made, "body", 127, 127, 127, 0, 0, 0);
    const int32_t points[4] = {1, 2, 3, 0};
    for (int id = 1; id <= 3; ++id) { model_set_point(made, id, id == 2, id == 3, mark, 1.0f); }
    model_add_triangle(made, "body", 0, points, nullptr, nullptr, 0);
    return made;
}

ChildLink* link_child(Model* parent, Model* child, float x) {
    return model_add_child(parent, child, "child", x, 0, 0, 1, 1, 1, "0", "0", "0");
}

// Where each marked triangle was drawn: mark and the x of the matrix, followed through the calls. Every matrix of these
// tests is a translation along x.
std::vector<std::pair<int, float>> drawn_places() {
    std::vector<std::pair<int, float>> out;
    std::vector<float> stack = {0};
    bool first = false;
    for (const recording_gl::Call& call : recording_gl::calls()) {
        const std::string name = recording_gl::function_name(call.function);
        if (name == "glPushMatrix") { stack.push_back(float(stack.back())); }
        if (name == "glPopMatrix") { stack.pop_back(); }
        if (name == "glMultMatrixf") { stack.back() += static_cast<float>(call.arguments[12]); }
        if (name == "glLoadMatrixf") { stack.back() = static_cast<float>(call.arguments[12]); }
        if (name == "glBegin") { first = true; }
        if (name == "glVertex3f" && first) {
            first = false;
            out.emplace_back(static_cast<int>(call.arguments[2]), stack.back());
        }
    }
    return out;
}

TEST_F(ChildModels, AChildIsDrawnUnderItsLinkAndSetsAllStateAgain) {
    Model* child = make_marked_model(5);
    ChildLink* link = model_add_child(model, child, "child", 1, 2, 3, 1, 1, 1, "0", "0", "0");
    layer->mirror = 1;
    session->display_triangles = 0;
    session->display_lines = 0;
    EXPECT_EQ(link->state_index, -1);
    draw();
    EXPECT_NE(link->state_index, -1);  // made on first use
    const Lines expected =
        model_lines({"glPushMatrix", "glMultMatrixf 1 0 0 0 0 1 0 0 0 0 1 0 1 2 3 1", "glMatrixMode GL_MODELVIEW",
                     "glPushMatrix", "glDisable GL_TEXTURE_2D", "glDisable GL_NORMALIZE", "glShadeModel GL_SMOOTH",
                     "glEnable GL_LIGHTING", "glPopMatrix", "glPopMatrix"});
    EXPECT_EQ(lines(), expected);
    session->display_triangles = 1;
    EXPECT_EQ(draw(), 3);  // nothing of the parent's mirror
}

TEST_F(ChildModels, ALinkWithoutAModelDrawsNothing) {
    link_child(model, nullptr, 5);
    EXPECT_EQ(draw(), 1);
}

TEST_F(ChildModels, SiblingsStayInPlace) {
    link_child(model, make_marked_model(7), 10);
    link_child(model, make_marked_model(8), 20);
    draw();
    const std::vector<std::pair<int, float>> expected = {{0, 0}, {7, 10}, {8, 20}};
    EXPECT_EQ(drawn_places(), expected);
}

// At every level a child that goes on and behind it one that does not.
TEST_F(ChildModels, DeepTreesNeverPassTheStackAndSiblingsStayInPlace) {
    layer->mirror = 1;  // the deepest use of the stack in a level
    Model* parent = model;
    std::vector<std::pair<int, float>> down, up;
    for (int level = 1; level < MODEL_TREE_DEPTH_LIMIT; ++level) {
        const auto x = static_cast<float>(level);
        Model* chain = make_marked_model(level);
        list_elements<Layer>(chain->layers).begin()->mirror = 1;
        link_child(parent, chain, 1);
        link_child(parent, make_marked_model(100 + level), 1000);
        for (int copy = 0; copy < 2; ++copy) { down.emplace_back(level, x); }
        up.insert(up.begin(), {100 + level, 1000 + x - 1});
        parent = chain;
    }
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();  // that of a frame
    recording_gl::clear();
    EXPECT_EQ(model_draw(session, model), 2 + 31 * 3);
    std::vector<std::pair<int, float>> expected = {{0, 0}, {0, 0}};
    expected.insert(expected.end(), down.begin(), down.end());
    expected.insert(expected.end(), up.begin(), up.end());
    EXPECT_EQ(drawn_places(), expected);
    EXPECT_LE(recording_gl::deepest_modelview(), 32);
    EXPECT_EQ(recording_gl::modelview_depth(), 2);
    EXPECT_EQ(recording_gl::modelview()[12], 0.0f);
}

TEST_F(ChildModels, TheStackIsUsedForThirteenLevelsAndNotBelow) {
    Model* parent = model;
    for (int level = 1; level <= 14; ++level) {
        Model* child = make_marked_model(level);
        link_child(parent, child, 1);
        parent = child;
        draw();
        EXPECT_EQ(recording_gl::count_calls("glLoadMatrixf"), level <= 13 ? 0 : 2) << level;
        EXPECT_EQ(recording_gl::count_calls("glPushMatrix"), 1 + 2 * std::min(level, 13)) << level;
    }
}

TEST_F(ChildModels, AModelThatIsItsOwnDescendantIsDrawnOnce) {
    Model* child = make_marked_model(3);
    link_child(model, child, 1);
    link_child(child, model, 1)->borrowed = 1;
    link_child(child, child, 1)->borrowed = 1;
    EXPECT_EQ(draw(), 2);
}

TEST_F(ChildModels, ATreeTooDeepIsDrawnToItsLimit) {
    Model* parent = model;
    for (int level = 1; level <= 60; ++level) {
        Model* child = make_marked_model(level);
        link_child(parent, child, 1);
        parent = child;
    }
    EXPECT_EQ(draw(), MODEL_TREE_DEPTH_LIMIT + 1);
}

}  // namespace
}  // namespace pelt
