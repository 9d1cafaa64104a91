// A scene whose models are changed by a script's word: what comes out is held against a file that says the same, which
// a person wrote, and against what is read back of it when it is written.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/refusal.h"
#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "formats/whole_writer.h"
#include "motion/root_models.h"
#include "support/model_file_fixture.h"
#include "support/saved_text.h"

namespace pelt::test {

class EditedScene : public testing::Test {
protected:
    EditedScene() {
        session_init(&session);
        dir.write("a.tga", solid_tga(2, 2, 1, 2, 3));
        dir.write("b.tga", solid_tga(4, 4, 9, 8, 7));
    }
    ~EditedScene() override {
        session_close_all(&session);
        EXPECT_EQ(list_count(image_registry()), 0) << "an image was left behind";
        for (const KeyedList* list : {&session.model_states, &session.point_states, &session.triangle_caches,
                                      &session.joint_states, &session.child_states}) {
            EXPECT_EQ(list_count(list), 0) << "a record was left behind";
        }
        session_reset(&session, 1);  // gives the memory of the lists back
    }

    Model* open(const std::string& text, const std::string& name = "ship.mod") {
        const std::string path = dir.write(name, text);
        Model* model = model_load(path.c_str());
        EXPECT_NE(model, nullptr) << text << "\n" << (load_error_get() != nullptr ? load_error_get() : "");
        if (model != nullptr) { session_add_root(&session, model, nullptr); }
        return model;
    }

    // What a file of this text says, which the model must say now too; and so must what is written of it.
    void expect_says(const Model* model, const std::string& text) {
        const ModelPtr wanted(model_load(dir.write("wanted.mod", text).c_str()));
        ASSERT_NE(wanted, nullptr) << text << "\n" << (load_error_get() != nullptr ? load_error_get() : "");
        EXPECT_EQ(model_difference(model, wanted.get()), "");
        EXPECT_EQ(coordinates(model), coordinates(wanted.get()));
        EXPECT_EQ(box(model), box(wanted.get()));
        expect_can_be_saved(model);
    }
    void expect_can_be_saved(const Model* model) {
        std::string reason;
        const std::string written = model_write_whole(model, "x.mod", &reason);
        ASSERT_EQ(reason, "");
        const ModelPtr again(model_read_back(written, model, &reason));
        ASSERT_NE(again, nullptr) << reason << "\n" << written;
        EXPECT_EQ(model_difference(model, again.get()), "") << written;
        if (model->text != nullptr) { expect_saves_into(std::string(model->text->view()), model); }
    }

    static std::vector<float> coordinates(const Model* model) {
        std::vector<float> all;
        for (const Layer& layer : list_elements<Layer>(model->layers)) {
            for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
                for (int i = 0; i < triangle_corners(&triangle); ++i) {
                    all.push_back(triangle.uvs[i][0]);
                    all.push_back(triangle.uvs[i][1]);
                }
            }
            for (const Polygon& polygon : list_elements<Polygon>(layer.polygons)) {
                for (const PolygonVertex& vertex : polygon_strip(polygon)) {
                    all.push_back(vertex.u);
                    all.push_back(vertex.v);
                }
            }
        }
        return all;
    }
    static std::vector<float> box(const Model* model) {
        const Vec3& low = model->bounds_min;
        const Vec3& high = model->bounds_max;
        return {low.x, low.y, low.z, high.x, high.y, high.z};
    }
    static const Layer* layer_of(const Model* model, const char* name) {
        return list_find<Layer>(&model->layers, name);
    }

    // Slots of a list in their order: what a new record went to.
    template <typename Element>
    static std::vector<std::string> names_in_order(const KeyedList& list) {
        std::vector<std::string> names;
        for (const Element& element : list_elements<Element>(list)) { names.emplace_back(element.name); }
        return names;
    }

    TempDir dir;
    Session session;
    EditRefusal refused;
};

}  // namespace pelt::test
