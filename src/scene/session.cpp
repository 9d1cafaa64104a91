// The session record: its reports to the script, its display flags, and the forgetting of run-time records. What
// surprises: a report runs script code that may load, reset or report again before it returns, so every text is
// copied before a callback sees it.
#include "scene/session.h"

#include <cstring>
#include <string>

#include "foundation/text.h"
#include "scene/change.h"

namespace pelt {

int32_t next_model_state_id = 1;
int32_t next_joint_state_id = 1;
int32_t next_child_state_id = 1;
int32_t next_point_state_id = 1;
int32_t next_triangle_cache_id = 1;
int32_t next_root_id = 1;

namespace {

constexpr int DIGIT_ROWS = 12;
constexpr size_t NUMBER_TEXT_SIZE = 64;

struct DisplayDefault {
    int32_t Session::*flag;
    int32_t value;
};

constexpr DisplayDefault DISPLAY_DEFAULTS[] = {
    {&Session::display_wireframe, 0}, {&Session::display_points, 0},       {&Session::display_triangles, 1},
    {&Session::display_mirror, 1},    {&Session::display_textures, 1},     {&Session::display_smooth, 0},
    {&Session::display_normals, 0},   {&Session::display_transparency, 1}, {&Session::display_backfaces, 1},
    {&Session::display_lighting, 1},  {&Session::display_curves, 1},       {&Session::display_curvenet, 0},
    {&Session::display_skeleton, 0},  {&Session::display_gouraud, 1},      {&Session::display_quadlines, 0},
    {&Session::display_pnfilter, 0},  {&Session::display_curvepath, 0},    {&Session::display_lod, 1},
    {&Session::display_reflect, 1},   {&Session::display_lines, 1},
};

// Glyphs of the point numbers: 8 x 12 pixels, a byte a row, leftmost pixel in the highest bit, bottom row first. The
// stray highest bit in the middle of the 5 is intended.
constexpr unsigned char DIGIT_GLYPHS[10][DIGIT_ROWS] = {
    {0x00, 0x3e, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x3e},
    {0x00, 0x0e, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0c, 0x04},
    {0x00, 0x3f, 0x21, 0x20, 0x10, 0x08, 0x06, 0x01, 0x21, 0x21, 0x21, 0x1e},
    {0x00, 0x1e, 0x21, 0x01, 0x01, 0x01, 0x0e, 0x01, 0x01, 0x01, 0x21, 0x1e},
    {0x00, 0x04, 0x04, 0x04, 0x04, 0x04, 0x7f, 0x44, 0x24, 0x14, 0x0c, 0x04},
    {0x00, 0x1e, 0x21, 0x01, 0x01, 0x01, 0xbe, 0x20, 0x20, 0x20, 0x20, 0x3f},
    {0x00, 0x1e, 0x21, 0x21, 0x21, 0x21, 0x3e, 0x20, 0x20, 0x20, 0x21, 0x1e},
    {0x00, 0x10, 0x10, 0x08, 0x08, 0x04, 0x04, 0x02, 0x02, 0x01, 0x01, 0x3f},
    {0x00, 0x1e, 0x21, 0x21, 0x21, 0x21, 0x1e, 0x21, 0x21, 0x21, 0x21, 0x1e},
    {0x00, 0x1e, 0x21, 0x01, 0x01, 0x01, 0x1f, 0x21, 0x21, 0x21, 0x21, 0x1e},
};

// Removes the record that an owner's slot number names, and the number.
void forget_record(KeyedList* records, int32_t* state_index) {
    if (*state_index >= 0) { list_remove_slot(records, *state_index); }
    *state_index = -1;
}

}  // namespace

void session_set_status_callback(Session* session, void (*callback)(const char* text)) {
    if (session != nullptr) { session->status_callback = callback; }
}

void session_set_message_callback(Session* session, void (*callback)(const char* text)) {
    if (session != nullptr) { session->message_callback = callback; }
}

void session_status(Session* session, const char* text) {
    if (session == nullptr || text == nullptr || session->status_callback == nullptr) { return; }
    char time[NUMBER_TEXT_SIZE];
    char end[NUMBER_TEXT_SIZE];
    float_to_text(session->anim_time, 2, time, sizeof time);
    float_to_text(session->anim_end, 2, end, sizeof end);
    char report[STATUS_TEXT_SIZE];
    text_format(report, sizeof report, "Time: %s of %s, Triangles: %d, %s", time, end, session->triangles_drawn, text);
    session->status_callback(report);
}

void session_say(Session* session, const char* text) {
    if (session == nullptr || text == nullptr || session->status_callback == nullptr) { return; }
    const std::string copy = text;
    session->status_callback(copy.c_str());
}

void session_message(Session* session, const char* text) {
    static char* idle = nullptr;  // what last_message points at while no message is being shown
    if (session == nullptr || text == nullptr) { return; }
    char* message = str_dup(text);  // before the release: it may be the same text
    str_free(idle);
    idle = nullptr;
    session->last_message = message;
    if (session->message_callback != nullptr) {
        session->message_callback(message);
        str_replace_char(message, '"', '\'');  // as the box showed it, so does the status: intended
    }
    if (session->status_callback != nullptr) { session->status_callback(message); }
    if (session->last_message != message) {
        str_free(message);  // a callback has given another one, which stays
        return;
    }
    idle = message;
}

const char* session_last_message(const Session* session) {
    return session != nullptr ? session->last_message : nullptr;
}

void session_set_animation_path(Session* session, const char* path, const char* base) {
    if (session == nullptr) { return; }
    char* new_path = str_dup(path);  // first, because a text may be the one that is kept
    char* new_base = str_dup(base);
    change_scene_fields(session);
    str_free(session->animation_path);
    str_free(session->animation_base);
    session->animation_path = new_path;
    session->animation_base = new_base;
}

void session_restore_display(Session* session) {
    if (session == nullptr) { return; }
    for (const DisplayDefault& each : DISPLAY_DEFAULTS) { session->*each.flag = each.value; }
}

void session_clear_bounds(Session* session) {
    if (session != nullptr) {
        change_scene_fields(session);
        session->radius = EMPTY_SCENE_RADIUS;
        session->centre = Vec3{0.0f, 0.0f, 0.0f};
    }
}

void session_build_digits(Session* session) {
    if (session == nullptr) { return; }
    std::memset(session->digit_bitmaps, 0, sizeof session->digit_bitmaps);
    for (int digit = 0; digit < 10; ++digit) {
        std::memcpy(session->digit_bitmaps[digit], DIGIT_GLYPHS[digit], DIGIT_ROWS);
    }
    session->digit_bitmaps_ready = 1;
}

void session_set_curvenet(Session* session, int32_t on) {
    if (session != nullptr) { session->display_curvenet = on; }
}

int32_t session_curvenet(const Session* session) { return session != nullptr ? session->display_curvenet : 0; }

int32_t session_triangles_drawn(const Session* session) { return session != nullptr ? session->triangles_drawn : 0; }

float session_anim_time(const Session* session) { return session != nullptr ? session->anim_time : 0.0f; }

float session_anim_end(const Session* session) { return session != nullptr ? session->anim_end : 0.0f; }

int session_forget_model(Session* session, Model* model) {
    if (session == nullptr || model == nullptr) { return 0; }
    int result = 1;
    for (ChildLink& link : list_elements<ChildLink>(model->children)) {
        // A borrowed model keeps its records, which belong to its own root. A link without a model shows in the
        // result and stops nothing.
        const bool passed_over = link.model != nullptr && link.borrowed;
        change_element(model, nullptr, CONTENT_CHILDREN, &link);
        if (!passed_over && !session_forget_model(session, link.model)) { result = 0; }
        forget_record(&session->child_states, &link.state_index);
    }
    for (Layer& layer : list_elements<Layer>(model->layers)) { session_forget_layer(session, &layer); }
    session_forget_poses(session, model);
    if (model->state_index >= 0) { change_scene_slot(session, SCENE_MODEL_STATES, model->state_index); }
    forget_record(&session->model_states, &model->state_index);
    return result;
}

void session_forget_layer(Session* session, Layer* layer) {
    if (session == nullptr || layer == nullptr) { return; }
    for (Triangle& triangle : list_elements<Triangle>(layer->triangles)) {
        forget_record(&session->triangle_caches, &triangle.state_index);
    }
}

void session_forget_child(Session* session, ChildLink* link) {
    if (session != nullptr && link != nullptr) { forget_record(&session->child_states, &link->state_index); }
}

void session_forget_joint(Session* session, Joint* joint) {
    if (session != nullptr && joint != nullptr) { forget_record(&session->joint_states, &joint->state_index); }
}

void session_forget_triangle(Session* session, Triangle* triangle) {
    if (session != nullptr && triangle != nullptr) { forget_record(&session->triangle_caches, &triangle->state_index); }
}

void session_forget_point(Session* session, Point* point) {
    if (session != nullptr && point != nullptr) { forget_record(&session->point_states, &point->state_index); }
}

void session_forget_poses(Session* session, Model* model) {
    if (session == nullptr || model == nullptr) { return; }
    for (Point& point : list_elements<Point>(model->points)) {
        forget_record(&session->point_states, &point.state_index);
    }
    for (Joint& joint : list_elements<Joint>(model->joints)) { session_forget_joint(session, &joint); }
}

int session_delete_layer(Session* session, Model* model, const char* name) {
    if (session == nullptr || model == nullptr || name == nullptr) { return 0; }
    session_forget_layer(session, list_find<Layer>(&model->layers, name));
    return model_delete_layer(model, name);
}

int session_rename_layer(Session* session, Model* model, const char* old_name, const char* new_name) {
    if (session == nullptr || model == nullptr || old_name == nullptr || new_name == nullptr) { return 0; }
    Layer* layer = list_find<Layer>(&model->layers, old_name);
    Layer* replaced = list_find<Layer>(&model->layers, new_name);
    if (layer != nullptr && replaced != layer) { session_forget_layer(session, replaced); }
    return model_rename_layer(model, old_name, new_name);
}

}  // namespace pelt
