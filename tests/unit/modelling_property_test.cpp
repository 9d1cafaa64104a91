// Random modelling, as scripts do it: each change is one step that can be taken back to the last field, leaves a model
// that a file can say, and what is derived (boxes, texture coordinates) is what a load of that file would make of it.
#include <gtest/gtest.h>

#include <random>

#include "application/session_lifecycle.h"
#include "edit/delete_parts.h"
#include "edit/duplicate.h"
#include "edit/history.h"
#include "edit/make_face.h"
#include "edit/move_points.h"
#include "edit/point_settings.h"
#include "edit/rebuild_normals.h"
#include "edit/weld.h"
#include "formats/layer_image.h"
#include "formats/model_compare.h"
#include "formats/model_reader.h"
#include "formats/whole_writer.h"
#include "motion/root_models.h"
#include "support/edit_model.h"
#include "support/scene_dump.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using namespace edit_model;

constexpr int CHANGES = 60;
constexpr int TRIES = 40;
constexpr const char* LAYERS[] = {"plain", "mirrored", "textured"};

class ModellingProperty : public testing::TestWithParam<uint32_t> {
protected:
    ModellingProperty() : random_(GetParam()) {
        dir.write("skin.tga", test::tga_bytes(test::TgaForm{}, "abc"));
        session_init(&session);
        history_attach(&session);
        model = model_load(dir.write("made.mod", first_text()).c_str());
        if (model == nullptr) { throw std::runtime_error("the first model does not load"); }
        session_add_root(&session, model, nullptr);
    }
    ~ModellingProperty() override {
        session_reset(&session, 0);
        history_detach();
        session_reset(&session, 0);
        EXPECT_EQ(list_count(image_registry()), 0);
    }

    // A sheet of points, with a few faces in each layer.
    static std::string first_text() {
        std::string text = "points\n";
        for (int i = 0; i < 20; ++i) {
            text += std::to_string(i + 1) + " " + std::to_string(i % 5 * 10) + " " + std::to_string(i / 5 * 10) + " " +
                    std::to_string(i * i % 7) + "\n";
        }
        text += "joint arm 0 0 0 world 6\njoint hand 10 0 0 arm 4\nblend hand world 3\n";
        text += "layer plain 1 2 3 doublesided\ntriangles\n1 1 2 6 7\n3 2 3 7\n2 6 7 11 12 16\nlines\n2 1 2 3\n";
        text += "layer mirrored 1 2 3 doublesided mirror x\ntriangles\n4 3 4 8 9 2\n0 8 9 13 1 2 3\n";
        text += "layer textured 1 2 3 doublesided\ntriangles\n1 11 12 16 17\n0 12 13 17\n3 13 14 18 1\n";
        text += "uvees\n12 0.25 0.5\nimage skin.tga -x y repeat 2 3\n";
        return text;
    }

    int below(int count) { return count < 1 ? 0 : static_cast<int>(random_() % static_cast<uint32_t>(count)); }
    float some() { return static_cast<float>(below(61) - 30); }
    Vec3 place() { return {some(), some(), some()}; }
    std::vector<int32_t> points(int most) {
        const Ids all = point_ids(model);
        std::set<int32_t> ids;
        for (int i = below(most); i >= 0 && !all.empty(); --i) {
            ids.insert(all[static_cast<size_t>(below(static_cast<int>(all.size())))]);
        }
        std::vector<int32_t> out(ids.begin(), ids.end());
        std::shuffle(out.begin(), out.end(), random_);
        return out;
    }
    Layer* layer() { return list_at<Layer>(&model->layers, below(list_count(&model->layers)), 1); }
    std::vector<PrimitiveName> faces(int most, bool lines) {
        std::vector<PrimitiveName> all, some_of_them;
        for (Layer& each : list_elements<Layer>(model->layers)) {
            for (const Triangle& t : list_elements<Triangle>(each.triangles)) {
                all.push_back({PrimitiveKind::TRIANGLE, t.id});
            }
            for (const Polygon& p : list_elements<Polygon>(each.polygons)) {
                all.push_back({PrimitiveKind::POLYGON, p.id});
            }
            for (const Line& l : list_elements<Line>(each.lines)) {
                if (lines) { all.push_back({PrimitiveKind::LINE, l.id}); }
            }
        }
        for (int i = below(most); i >= 0 && !all.empty(); --i) {
            some_of_them.push_back(all[static_cast<size_t>(below(static_cast<int>(all.size())))]);
        }
        return some_of_them;
    }

    // One random change, done or refused.
    bool change() {
        EditRefusal refused;
        MadeParts made;
        DeletedParts deleted{};
        PrimitiveName name{};
        switch (below(12)) {
            case 0: return edit_point_places(&session, model, points(6), moved_by(place()), {}, &refused);
            case 1:
                return edit_point_places(&session, model, points(6), scaled_about(place(), {0.5f, 2, -1}), {},
                                         &refused);
            case 2: {
                PointSettings settings;
                if (below(2) == 0) { settings.place = place(); }
                if (below(2) == 0) { settings.normal = place(); }
                if (below(2) == 0) { settings.colour = {below(256), below(256), below(256)}; }
                if (below(2) == 0) { settings.weight = 0.25f; }
                return edit_points(&session, model, points(4), settings, &refused);
            }
            case 3:
            case 4: {
                const FaceWish wish{static_cast<FaceForm>(below(4)), below(5), points(6)};
                return edit_add_face(&session, model, layer(), wish, &name, &refused);
            }
            case 5: return edit_delete_points(&session, model, points(2), &deleted, &refused);
            case 6: return edit_delete_primitives(&session, model, faces(2, true), &deleted, &refused);
            case 7: return edit_flip(&session, model, faces(4, false), &refused);
            case 8: return edit_weld(&session, model, points(3), &refused);
            case 9: return edit_duplicate_points(&session, model, points(8), &made, &refused);
            case 10: return edit_extrude(&session, model, faces(3, false), place(), &made, &refused);
            default: return edit_rebuild_normals(&session, model, below(2) == 0 ? layer() : nullptr, &refused);
        }
    }

    std::string dump() {
        test::SceneDump dump(&session);
        std::string text = dump.text();
        EXPECT_EQ(dump.faults(), "");
        return text;
    }

    static void expect_same_box(const Vec3& low, const Vec3& high, const Vec3& wanted_low, const Vec3& wanted_high) {
        expect_vector(low, wanted_low);
        expect_vector(high, wanted_high);
    }

    void expect_same_map(const Layer& layer, const Layer& read) {
        expect_same_box(layer.bounds_min, layer.bounds_max, read.bounds_min, read.bounds_max);
        auto other = list_elements<Triangle>(read.triangles).begin();
        for (const Triangle& t : list_elements<Triangle>(layer.triangles)) {
            for (int i = 0; i < triangle_corners(&t); ++i) {
                for (int k = 0; k < 2; ++k) {
                    EXPECT_TRUE(t.uvs[i][k] == other->uvs[i][k] ||
                                (t.uvs[i][k] != t.uvs[i][k] && other->uvs[i][k] != other->uvs[i][k]))
                        << t.uvs[i][k] << " " << other->uvs[i][k];
                }
            }
            ++other;
        }
    }

    // The model as a file, and what a load makes of it. A layer with an image and no face is a file that is refused.
    void expect_as_loaded() {
        std::string refused;
        const std::string text = model_write_whole(model, "made.mod", &refused);
        const Layer* textured = list_find<Layer>(&model->layers, "textured");
        if (textured != nullptr && !layer_has_surface(*textured)) { return; }
        ASSERT_EQ(refused, "");
        Model* read = model_load(dir.write("read.mod", text).c_str());
        ASSERT_NE(read, nullptr) << text;
        EXPECT_EQ(model_difference(model, read), "");
        if (list_count(&model->points) > 1) {
            expect_same_box(model->bounds_min, model->bounds_max, read->bounds_min, read->bounds_max);
        }
        ++loaded_;
        if (textured != nullptr) { expect_same_map(*textured, *list_find<Layer>(&read->layers, "textured")); }
        model_release(read);
    }

    std::mt19937 random_;
    int loaded_ = 0;
    test::TempDir dir;
    Session session{};
    Model* model;
};

TEST_P(ModellingProperty, each_change_is_a_step_and_leaves_what_a_file_can_say) {
    int done = 0;
    for (int i = 0; i < CHANGES * TRIES && done < CHANGES; ++i) {
        const std::string before = dump();
        history_command_begin("change", true);
        const bool good = change();
        if (!good) { ASSERT_EQ(test::dump_difference(before, dump()), "") << "a refusal has changed something"; }
        history_command_end();
        if (!good) { continue; }
        ++done;
        const std::string after = dump();
        ASSERT_NO_FATAL_FAILURE(expect_as_loaded());
        if (HasFailure()) { return; }
        if (before == after) { continue; }
        std::string name;
        ASSERT_TRUE(history_undo(&name));
        ASSERT_EQ(test::dump_difference(before, dump()), "");
        ASSERT_TRUE(history_redo(&name));
        ASSERT_EQ(test::dump_difference(after, dump()), "");
        // Neither ever more nor ever less.
        const bool bare = !layer_has_surface(*layer_of(model, "textured"));
        if (bare || list_count(&model->points) > 120) { ASSERT_TRUE(history_undo(&name)); }
    }
    EXPECT_GT(loaded_, CHANGES / 2);
}

// Places that are no numbers, faces with a corner twice, strips of one vertex, normals from anywhere, ids that no face
// can name: what no file says, but other verbs can make.
TEST_P(ModellingProperty, models_that_no_file_could_say_are_changed_and_taken_back_too) {
    Owned wild = RandomModel(GetParam()).make(60, 4);
    put_point(wild.get(), 40000, {1, 2, 3});
    put_point(wild.get(), 65537, {1, 2, 3});
    model = wild.release();
    session_add_root(&session, model, nullptr);
    for (int i = 0; i < CHANGES; ++i) {
        const std::string before = dump();
        history_command_begin("change", true);
        const bool good = change();
        history_command_end();
        const std::string after = dump();
        if (!good || before == after) {
            ASSERT_EQ(test::dump_difference(before, after), "") << "a refusal has changed something";
            continue;
        }
        std::string name;
        ASSERT_TRUE(history_undo(&name));
        ASSERT_EQ(test::dump_difference(before, dump()), "");
        ASSERT_TRUE(history_redo(&name));
        ASSERT_EQ(test::dump_difference(after, dump()), "");
        for (Layer& each : list_elements<Layer>(model->layers)) {
            for (const Triangle& t : list_elements<Triangle>(each.triangles)) {
                for (int corner = 0; corner < triangle_corners(&t); ++corner) {
                    ASSERT_NE(list_find(&model->points, int32_t{t.points[corner]}), nullptr);
                    ASSERT_NE(list_find(&model->points, int32_t{t.normals[corner]}), nullptr);
                }
            }
        }
        if (list_count(&model->points) > 120) { ASSERT_TRUE(history_undo(&name)); }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ModellingProperty, testing::Range(1u, 7u));

}  // namespace
}  // namespace pelt
