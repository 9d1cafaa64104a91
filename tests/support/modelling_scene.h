// A scene of one model for the tests of what scripts do to models, with a history; after each change the model is to be
// one that a file can say, and taking the change back is to leave nothing of it.
#pragma once

#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "edit/faces.h"
#include "edit/history.h"
#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "formats/whole_writer.h"
#include "motion/root_models.h"
#include "support/edit_model.h"
#include "support/saved_text.h"

namespace pelt::edit_model {

class ModellingTest : public ::testing::Test {
protected:
    ModellingTest() : model(model_create("made.mod", nullptr)) {
        session_init(&session);
        history_attach(&session);
        session_add_root(&session, model, nullptr);
    }
    ~ModellingTest() override {
        history_detach();
        session_reset(&session, 1);
    }

    // The whole writer's text of the model, read again, is the model.
    void expect_reads_back() {
        std::string why;
        const std::string text = model_write_whole(model, "made.mod", &why);
        EXPECT_EQ(why, "");
        Model* read = model_read_back(text, model, &why);
        EXPECT_EQ(why, "") << text;
        if (read == nullptr) { return; }
        EXPECT_EQ(model_difference(model, read), "");
        model_release(read);
    }

    // Runs the change as a command, reads it back, undoes and redoes it; what was there before is to be there between.
    template <typename Change>
    void expect_step(Change change) {
        const std::string before = model_text(model);
        std::string why;
        const std::string loaded = model_write_whole(model, "made.mod", &why);
        history_command_begin("change", true);
        ASSERT_TRUE(change()) << refused.text;
        history_command_end();
        const std::string after = model_text(model);
        expect_reads_back();
        test::expect_saves_into(loaded, model);
        std::string name;
        ASSERT_TRUE(history_undo(&name));
        EXPECT_EQ(model_text(model), before);
        ASSERT_TRUE(history_redo(&name));
        EXPECT_EQ(model_text(model), after);
    }
    template <typename Change>
    void expect_refused(Change change, const char* text) {
        const std::string before = model_text(model);
        EXPECT_FALSE(change());
        EXPECT_NE(refused.text.find(text), std::string::npos) << refused.text;
        EXPECT_EQ(model_text(model), before);
    }

    // The name of the last triangle or quad, polygon or line of a layer.
    PrimitiveName last(const char* layer, PrimitiveKind kind = PrimitiveKind::TRIANGLE) {
        PrimitiveName name{kind, 0};
        Layer* in = layer_of(model, layer);
        for (const Triangle& each : list_elements<Triangle>(in->triangles)) {
            if (kind == PrimitiveKind::TRIANGLE) { name.id = each.id; }
        }
        for (const Polygon& each : list_elements<Polygon>(in->polygons)) {
            if (kind == PrimitiveKind::POLYGON) { name.id = each.id; }
        }
        for (const Line& each : list_elements<Line>(in->lines)) {
            if (kind == PrimitiveKind::LINE) { name.id = each.id; }
        }
        return name;
    }

    std::vector<Ids> lines_of(const char* layer) {
        std::vector<Ids> out;
        for (const Line& line : list_elements<Line>(layer_of(model, layer)->lines)) {
            out.emplace_back();
            for (const int32_t& id : list_elements<int32_t>(line.vertices)) { out.back().push_back(id); }
            EXPECT_EQ(static_cast<size_t>(line.vertex_count), out.back().size());
        }
        return out;
    }
    void put_line(const char* layer, const Ids& ids) {
        EXPECT_EQ(model_add_line(model, layer, static_cast<int>(ids.size()), ids.data()), 1);
    }

    Session session{};
    Model* model;
    EditRefusal refused;
};

}  // namespace pelt::edit_model
