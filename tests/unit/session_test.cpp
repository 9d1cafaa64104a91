// The session record: reports, display flags, glyphs, and the forgetting of run-time records.
#include "scene/session.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "scene/vertex.h"

namespace pelt {
namespace {

std::vector<std::string> reports;
Session* reported = nullptr;

void record_status(const char* text) { reports.push_back(std::string("status:") + text); }

void record_message(const char* text) { reports.push_back(std::string("message:") + text); }

void report_again_and_reset(const char*) {
    reported->message_callback = nullptr;
    session_message(reported, "inner");
    session_reset(reported, 0);
}

class SessionTest : public ::testing::Test {
protected:
    SessionTest() {
        reports.clear();
        reported = &session;
        session_init(&session);
    }
    ~SessionTest() override {
        session.status_callback = nullptr;
        session.message_callback = nullptr;
        session_reset(&session, 1);
    }

    void listen() {
        session_set_status_callback(&session, record_status);
        session_set_message_callback(&session, record_message);
    }

    // A root with a triangle, a joint and a point, all of which have their records.
    Model* add_model(const char* name, const char* layer = "skin") {
        Model* model = model_create(name, nullptr);
        fill(model, layer);
        session_add_root(&session, model, nullptr);
        return model;
    }

    void fill(Model* model, const char* layer) {
        for (int id = 1; id <= 3; ++id) {
            model_set_point(model, id, id, id, id, 1.0f);
            point_state(&session, model_find_point(model, id));
        }
        model_add_joint(model, "hip", 0, 0, 0, "world", 0);
        joint_state(&session, model, model_find_joint(model, "hip"));
        add_layer(model, layer);
        model_state(&session, model);
    }

    void add_layer(Model* model, const char* layer) {
        model_add_layer(model, layer, 1, 2, 3, 0, 0, 0);
        const int32_t ids[] = {1, 2, 3, 0};
        model_add_triangle(model, layer, 0, ids, nullptr, nullptr, 0);
        for (Layer& each : list_elements<Layer>(model->layers)) {
            for (Triangle& triangle : list_elements<Triangle>(each.triangles)) {
                triangle_cache_get(&session, model, &triangle);
            }
        }
    }

    ChildLink* link(Model* parent, Model* child, bool borrowed = false) {
        ChildLink* made = model_add_child(parent, child, "link", 0, 0, 0, 1, 1, 1, "0", "0", "0");
        made->borrowed = borrowed ? 1 : 0;
        child_state(&session, made);
        return made;
    }

    int32_t records() const {
        return list_count(&session.model_states) + list_count(&session.point_states) +
               list_count(&session.triangle_caches) + list_count(&session.joint_states) +
               list_count(&session.child_states);
    }

    Session session{};
};

constexpr int32_t RECORDS_OF_A_MODEL = 1 + 3 + 1 + 1;  // its own, three points, a joint, a triangle

TEST_F(SessionTest, StatusHasTimeAndTrianglesBeforeTheText) {
    listen();
    session.anim_time = 1.256f;
    session.anim_end = 3.0f;
    session.triangles_drawn = 42;
    session_status(&session, "Ready");
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], "status:Time: 1.26 of 3.00, Triangles: 42, Ready");
}

TEST_F(SessionTest, CurvenetHasAPlainSetterAndGetter) {
    session_set_curvenet(&session, 5);
    EXPECT_EQ(session_curvenet(&session), 5);
    EXPECT_EQ(session.display_curvenet, 5);
    EXPECT_EQ(session_curvenet(nullptr), 0);
}

TEST_F(SessionTest, StatusOfANonNumberHasNoSign) {
    listen();
    session.anim_time = -std::numeric_limits<float>::quiet_NaN();
    session_status(&session, "x");
    EXPECT_EQ(reports[0], "status:Time: nan of 0.00, Triangles: 0, x");
}

TEST_F(SessionTest, StatusIsCutToItsBuffer) {
    listen();
    session.anim_time = std::numeric_limits<float>::max();
    session_status(&session, std::string(5000, 'x').c_str());
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(std::strlen("status:") + STATUS_TEXT_SIZE - 1, reports[0].size());
}

TEST_F(SessionTest, StatusWithoutCallbackOrArgumentsDoesNothing) {
    session_status(&session, "text");
    listen();
    session_status(&session, nullptr);
    session_status(nullptr, "text");
    EXPECT_TRUE(reports.empty());
}

TEST_F(SessionTest, MessageGoesToTheMessageCallbackFirstAndToTheStatusBare) {
    listen();
    session_message(&session, "Load failed");
    EXPECT_EQ((std::vector<std::string>{"message:Load failed", "status:Load failed"}), reports);
}

TEST_F(SessionTest, MessageOfAnyLengthGoesOnWhole) {
    listen();
    const std::string text(100000, 'm');
    session_message(&session, text.c_str());
    EXPECT_EQ("message:" + text, reports[0]);
    EXPECT_EQ("status:" + text, reports[1]);
}

TEST_F(SessionTest, MessageNeedsNoCallbacks) {
    session_message(&session, "quiet");
    EXPECT_STREQ(session_last_message(&session), "quiet");
    listen();
    session_message(&session, nullptr);
    session_message(nullptr, "text");
    EXPECT_TRUE(reports.empty());
    EXPECT_STREQ(session_last_message(&session), "quiet");
}

TEST_F(SessionTest, LastMessageOutlivesTheTextThatWasGiven) {
    EXPECT_EQ(session_last_message(&session), nullptr);
    EXPECT_EQ(session_last_message(nullptr), nullptr);
    {
        std::string text(1000, 'q');
        session_message(&session, text.c_str());
        text.assign(1000, 'z');
    }
    EXPECT_EQ(std::string(1000, 'q'), session_last_message(&session));
    session_message(&session, session_last_message(&session));
    EXPECT_EQ(std::string(1000, 'q'), session_last_message(&session));
}

// A box shows each double quote as an apostrophe, and has changed the text itself: intended.
TEST_F(SessionTest, TheStatusGetsTheTextAsTheBoxChangedIt) {
    listen();
    session_message(&session, "a\"b\"");
    EXPECT_EQ((std::vector<std::string>{"message:a\"b\"", "status:a'b'"}), reports);
    EXPECT_STREQ(session_last_message(&session), "a'b'");
}

TEST_F(SessionTest, WithoutABoxTheStatusKeepsItsQuotes) {
    session_set_status_callback(&session, record_status);
    session_message(&session, "a\"b\"");
    EXPECT_EQ(std::vector<std::string>{"status:a\"b\""}, reports);
}

TEST_F(SessionTest, StatusIsCutBetweenCharacters) {
    listen();
    const std::string prefix = "Time: 0.00 of 0.00, Triangles: 0, ";
    const std::string fill(STATUS_TEXT_SIZE - 2 - prefix.size(), 'x');
    session_status(&session, (fill + "\u00e9").c_str());  // a byte of it would fit
    EXPECT_EQ(std::vector<std::string>{"status:" + prefix + fill}, reports);
}

TEST_F(SessionTest, AMessageCallbackMayReportAndResetAndTheStatusStillGetsTheOuterText) {
    session_set_message_callback(&session, report_again_and_reset);
    session_set_status_callback(&session, record_status);
    session_message(&session, "outer");
    ASSERT_FALSE(reports.empty());
    EXPECT_EQ(reports.front(), "status:inner");
    EXPECT_EQ(reports.back(), "status:outer");
    EXPECT_STREQ(session_last_message(&session), "inner");
}

TEST_F(SessionTest, RestoreDisplayGivesAllTwentyDefaults) {
    int32_t* flags = &session.display_wireframe;
    for (int i = 0; i < 20; ++i) { flags[i] = 77; }
    session_restore_display(&session);
    const int32_t expected[20] = {0, 0, 1, 1, 1, 0, 0, 1, 1, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 1};
    for (int i = 0; i < 20; ++i) { EXPECT_EQ(expected[i], flags[i]) << i; }
    EXPECT_EQ(&flags[19], &session.display_lines);
    session_restore_display(nullptr);
}

TEST_F(SessionTest, ClearBoundsGivesRadiusTenAndCentreZero) {
    session.radius = 99.0f;
    session.centre = Vec3{1, 2, 3};
    session_clear_bounds(&session);
    EXPECT_EQ(session.radius, 10.0f);
    EXPECT_EQ(session.centre.x, 0.0f);
    EXPECT_EQ(session.centre.z, 0.0f);
}

TEST_F(SessionTest, DigitGlyphsAreBuiltAndTheirTailsAreZero) {
    EXPECT_EQ(session.digit_bitmaps_ready, 1);
    const std::string expected[10] = {
        "003e4141414141414141413e", "000e04040404040404040c04", "003f2120100806012121211e", "001e210101010e010101211e",
        "0004040404047f4424140c04", "001e21010101be202020203f", "001e212121213e202020211e", "00101008080404020201013f",
        "001e212121211e212121211e", "001e210101011f212121211e",
    };
    for (int digit = 0; digit < 10; ++digit) {
        std::string text;
        for (int row = 0; row < 12; ++row) {
            char byte[3];
            std::snprintf(byte, sizeof byte, "%02x", session.digit_bitmaps[digit][row]);
            text += byte;
        }
        EXPECT_EQ(expected[digit], text) << digit;
        for (int row = 12; row < DIGIT_BITMAP_SIZE; ++row) { ASSERT_EQ(session.digit_bitmaps[digit][row], 0); }
    }
}

TEST_F(SessionTest, TheStrayBitOfTheFiveIsThere) { EXPECT_EQ(session.digit_bitmaps[5][6], 0xbe); }

TEST_F(SessionTest, AccessorsReadTheRecord) {
    session.triangles_drawn = 5;
    session.anim_time = 1.5f;
    session.anim_end = 2.5f;
    EXPECT_EQ(session_triangles_drawn(&session), 5);
    EXPECT_EQ(session_anim_time(&session), 1.5f);
    EXPECT_EQ(session_anim_end(&session), 2.5f);
    EXPECT_EQ(session_triangles_drawn(nullptr), 0);
    EXPECT_EQ(session_anim_time(nullptr), 0.0f);
    EXPECT_EQ(session_anim_end(nullptr), 0.0f);
}

TEST_F(SessionTest, ForgetTakesEveryRecordOfAModelAndItsChildren) {
    Model* parent = add_model("parent.mod");
    Model* child = model_create("child.mod", parent);
    fill(child, "skin");
    ChildLink* child_link = link(parent, child);
    Model* other = add_model("other.mod");
    ASSERT_EQ(3 * RECORDS_OF_A_MODEL + 1, records());
    EXPECT_EQ(session_forget_model(&session, parent), 1);
    EXPECT_EQ(records(), RECORDS_OF_A_MODEL);
    EXPECT_EQ(parent->state_index, -1);
    EXPECT_EQ(child->state_index, -1);
    EXPECT_EQ(child_link->state_index, -1);
    EXPECT_EQ(model_find_point(parent, 1)->state_index, -1);
    EXPECT_EQ(model_find_joint(parent, "hip")->state_index, -1);
    EXPECT_NE(other->state_index, -1);
}

TEST_F(SessionTest, ForgetGoesOnPastALinkWithoutAModelAndStillAnswersZero) {
    Model* parent = add_model("parent.mod");
    ChildLink* empty = link(parent, nullptr);
    Model* child = model_create("child.mod", parent);
    fill(child, "skin");
    link(parent, child);
    EXPECT_EQ(session_forget_model(&session, parent), 0);
    EXPECT_EQ(records(), 0);
    EXPECT_EQ(empty->state_index, -1);
    EXPECT_EQ(session_forget_model(&session, nullptr), 0);
    EXPECT_EQ(session_forget_model(nullptr, parent), 0);
}

TEST_F(SessionTest, ForgetHandsAZeroUpFromDeepDown) {
    Model* parent = add_model("parent.mod");
    Model* child = model_create("child.mod", parent);
    link(parent, child);
    link(child, nullptr);
    EXPECT_EQ(session_forget_model(&session, parent), 0);
    EXPECT_EQ(records(), 0);
}

TEST_F(SessionTest, ForgetNeverGoesThroughABorrowedLink) {
    Model* parent = add_model("parent.mod");
    Model* lent = add_model("lent.mod");
    ChildLink* borrowed = link(parent, lent, true);
    const int32_t id = model_state(&session, lent)->id;
    EXPECT_EQ(session_forget_model(&session, parent), 1);
    EXPECT_EQ(records(), RECORDS_OF_A_MODEL);
    EXPECT_EQ(id, model_state(&session, lent)->id);
    EXPECT_EQ(borrowed->state_index, -1);
}

TEST_F(SessionTest, ForgetReachesLayersWithNamesTooLongForAKey) {
    Model* model = add_model("long.mod", std::string(40, 'l').c_str());
    model_add_joint(model, std::string(60, 'j').c_str(), 0, 0, 0, "world", 0);
    joint_state(&session, model, list_at<Joint>(&model->joints, 1, 0));
    // No operation finds the layer by its name, so the triangle goes straight into its list.
    Layer* layer = list_at<Layer>(&model->layers, 0, 0);
    Triangle* triangle = list_add<Triangle>(&layer->triangles, 1);
    triangle->state_index = -1;
    triangle_cache_get(&session, model, triangle);
    ASSERT_EQ(RECORDS_OF_A_MODEL + 1, records());
    EXPECT_EQ(session_forget_model(&session, model), 1);
    EXPECT_EQ(records(), 0);
}

TEST_F(SessionTest, DeletingALayerForgetsItsCachesOnly) {
    Model* model = add_model("model.mod");
    add_layer(model, "other");
    ASSERT_EQ(list_count(&session.triangle_caches), 2);
    EXPECT_EQ(session_delete_layer(&session, model, "skin"), 1);
    EXPECT_EQ(list_count(&session.triangle_caches), 1);
    EXPECT_EQ(model_count_layers(model), 1);
    EXPECT_EQ(session_delete_layer(&session, model, "skin"), 0);
    EXPECT_EQ(session_delete_layer(&session, model, nullptr), 0);
    EXPECT_EQ(session_delete_layer(&session, nullptr, "other"), 0);
    EXPECT_EQ(session_delete_layer(nullptr, model, "other"), 0);
    EXPECT_EQ(list_count(&session.triangle_caches), 1);
}

TEST_F(SessionTest, RenamingALayerOntoAnotherForgetsTheCachesOfThatOne) {
    Model* model = add_model("model.mod");
    add_layer(model, "other");
    const int32_t kept = model_find_layer(model, "skin")->triangles.count;
    EXPECT_EQ(session_rename_layer(&session, model, "skin", "other"), 1);
    EXPECT_EQ(list_count(&session.triangle_caches), 1);
    Layer* layer = model_find_layer(model, "other");
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(kept, list_count(&layer->triangles));
    // The cache that stays still belongs to the triangle that stays.
    Triangle* triangle = list_at<Triangle>(&layer->triangles, 0, 0);
    EXPECT_EQ(triangle, triangle_cache_get(&session, model, triangle)->triangle);
    EXPECT_EQ(list_count(&session.triangle_caches), 1);
}

TEST_F(SessionTest, RenamingALayerToItsOwnNameOrFailingForgetsNothing) {
    Model* model = add_model("model.mod");
    add_layer(model, "other");
    EXPECT_EQ(session_rename_layer(&session, model, "skin", "skin"), 1);
    EXPECT_EQ(session_rename_layer(&session, model, "skin", ""), 0);
    EXPECT_EQ(session_rename_layer(&session, model, "none", "other"), 0);
    EXPECT_EQ(session_rename_layer(&session, model, "skin", nullptr), 0);
    EXPECT_EQ(list_count(&session.triangle_caches), 2);
}

TEST_F(SessionTest, ForgettingNothingLeavesEveryRecordWhereItIs) {
    Model* parent = add_model("parent.mod");
    ChildLink* child = link(parent, nullptr);
    Layer* layer = model_find_layer(parent, "skin");
    Joint* joint = model_find_joint(parent, "hip");
    const Triangle* triangle = list_at<Triangle>(&layer->triangles, 0, 0);
    session_forget_layer(&session, nullptr);
    session_forget_child(&session, nullptr);
    session_forget_joint(&session, nullptr);
    session_forget_layer(nullptr, layer);
    session_forget_child(nullptr, child);
    session_forget_joint(nullptr, joint);
    EXPECT_EQ(RECORDS_OF_A_MODEL + 1, records());
    EXPECT_EQ(triangle->state_index, 0);
    EXPECT_EQ(child->state_index, 0);
    EXPECT_EQ(joint->state_index, 0);
}

TEST_F(SessionTest, ForgettingALayerAChildOrAJointTakesItsRecordsAlone) {
    Model* parent = add_model("parent.mod");
    ChildLink* child = link(parent, nullptr);
    Layer* layer = model_find_layer(parent, "skin");
    Joint* joint = model_find_joint(parent, "hip");
    session_forget_layer(&session, layer);
    EXPECT_EQ(list_count(&session.triangle_caches), 0);
    EXPECT_EQ(list_at<Triangle>(&layer->triangles, 0, 0)->state_index, -1);
    EXPECT_EQ(records(), RECORDS_OF_A_MODEL);
    session_forget_child(&session, child);
    EXPECT_EQ(list_count(&session.child_states), 0);
    EXPECT_EQ(child->state_index, -1);
    session_forget_joint(&session, joint);
    EXPECT_EQ(list_count(&session.joint_states), 0);
    EXPECT_EQ(joint->state_index, -1);
    EXPECT_EQ(RECORDS_OF_A_MODEL - 2, records());
}

TEST_F(SessionTest, WithoutASessionNothingIsSet) {
    listen();
    session.radius = 3.0f;
    session_set_status_callback(nullptr, nullptr);
    session_set_message_callback(nullptr, nullptr);
    session_clear_bounds(nullptr);
    session_build_digits(nullptr);
    EXPECT_EQ(session.radius, 3.0f);
    session_status(&session, "Ready");
    EXPECT_EQ(reports.size(), 1u);
}

}  // namespace
}  // namespace pelt
