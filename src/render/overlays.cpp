// Lines and markers over the surface, each its own small pass. What surprises is what they leave behind: points and
// skeleton end with lighting on whatever it was, the skeleton leaves texturing off, and neither gives the colour back,
// since whoever calls them sets all three next. The others put back exactly what they found.
#include "render/overlays.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "foundation/text.h"
#include "motion/transform_state.h"
#include "scene/layer_points.h"
#include "scene/vertex.h"

namespace pelt {
namespace {

constexpr int POINT_COLOURS = 6;
constexpr int CYCLE_LENGTH = 5;  // a cycle never reaches the last row
constexpr float POINT_COLOUR_TABLE[POINT_COLOURS][4] = {
    {1.0f, 1.0f, 1.0f, 1.0f},  // white
    {1.0f, 1.0f, 0.0f, 1.0f},  // yellow
    {0.0f, 1.0f, 0.0f, 1.0f},  // green
    {1.0f, 0.0f, 1.0f, 1.0f},  // magenta
    {0.0f, 1.0f, 1.0f, 1.0f},  // cyan
    {1.0f, 1.0f, 1.0f, 1.0f},  // white
};

constexpr float JOINT_MARK_SIZE = 0.025f;  // of the scene's radius
constexpr float CORNER_STROKE = 0.5f;      // of the mean edge
constexpr float PATCH_STROKE = 0.25f;

constexpr GLsizei GLYPH_WIDTH = 8;
constexpr GLsizei GLYPH_HEIGHT = 12;
constexpr GLfloat GLYPH_ORIGIN = -2.0f;
constexpr GLfloat GLYPH_ADVANCE = 8.0f;

void send_vertex(const Vec3& p) { glVertex3f(p.x, p.y, p.z); }

// The colour of the point in hand: one row for all, or a row further with each point.
struct PointColours {
    bool cycling;
    int row;

    void send() const {
        const float* colour = POINT_COLOUR_TABLE[row];
        glColor4f(colour[0], colour[1], colour[2], colour[3]);
    }
    void next() { row = cycling ? (row + 1) % CYCLE_LENGTH : row; }
};

void draw_glyph(const Session* session, int digit) {
    glBitmap(GLYPH_WIDTH, GLYPH_HEIGHT, GLYPH_ORIGIN, 0.0f, GLYPH_ADVANCE, 0.0f, session->digit_bitmaps[digit]);
}

void draw_number(const Session* session, int32_t number) {
    char text[16];
    int_to_text(number, text);
    for (const char* c = text; *c; ++c) {
        if (*c >= '0' && *c <= '9') { draw_glyph(session, *c - '0'); }
    }
}

// Calls send(point, id) for each point that is in sight, with its colour in a cycle sent.
template <typename Send>
void for_each_dot(Model* model, PointColours colours, Send send) {
    const std::vector<bool> hidden = model_hidden_points(model);
    const auto points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (!hidden.empty() && hidden[static_cast<size_t>(point.slot())]) { continue; }
        if (colours.cycling) { colours.send(); }
        send(*point, point.int_key());
        colours.next();
    }
}

void draw_dots(Session* session, Model* model, PointColours colours) {
    glBegin(GL_POINTS);
    glVertex3f(0.0f, 0.0f, 0.0f);
    for_each_dot(model, colours,
                 [&](const Point& point, int32_t) { send_vertex(*point_posed_position(session, &point)); });
    glEnd();
}

void draw_numbers(Session* session, Model* model, PointColours colours) {
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    // No colour is sent for the digit of the origin: after a cycle it has that of the last point. This is intended.
    glRasterPos3f(0.0f, 0.0f, 0.0f);
    draw_glyph(session, 0);
    for_each_dot(model, colours, [&](const Point& point, int32_t id) {
        const Vec3* position = point_posed_position(session, &point);
        glRasterPos3f(position->x, position->y, position->z);
        draw_number(session, id);
    });
}

void draw_joint_mark(const Vec3& place, float s) {
    glPushMatrix();
    glTranslatef(place.x, place.y, place.z);
    glBegin(GL_LINES);
    glColor3f(1.0f, 0.0f, 1.0f);
    glVertex3f(-s, 0.0f, 0.0f);
    glVertex3f(s, 0.0f, 0.0f);
    glVertex3f(0.0f, -s, 0.0f);
    glVertex3f(0.0f, s, 0.0f);
    glVertex3f(0.0f, 0.0f, -s);
    glVertex3f(0.0f, 0.0f, s);
    glEnd();
    glPopMatrix();
}

void draw_bone(const Vec3& from, const Vec3& to) {
    glBegin(GL_LINES);
    glColor3f(1.0f, 0.5f, 0.5f);
    send_vertex(from);
    send_vertex(to);
    glEnd();
}

// What an overlay finds and puts back.
struct Switches {
    GLint lighting;
    GLint texture;
};

Switches read_switches() {
    Switches found{};
    glGetIntegerv(GL_LIGHTING, &found.lighting);
    glGetIntegerv(GL_TEXTURE_2D, &found.texture);
    return found;
}

void switches_off() {
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
}

void put_back(const Switches& found) {
    if (found.lighting) { glEnable(GL_LIGHTING); }
    if (found.texture) { glEnable(GL_TEXTURE_2D); }
}

// The normals overlays find and put back more.
struct SavedState {
    Switches switches;
    GLfloat colour[4];
    GLboolean blend;
};

SavedState begin_strokes(float red, float green, float blue) {
    SavedState saved{read_switches(), {}, 0};
    glGetFloatv(GL_CURRENT_COLOR, saved.colour);
    glGetBooleanv(GL_BLEND, &saved.blend);
    switches_off();
    glDisable(GL_BLEND);
    glColor3f(red, green, blue);
    glBegin(GL_LINES);
    return saved;
}

void end_strokes(const SavedState& saved) {
    glEnd();
    put_back(saved.switches);
    if (saved.blend) { glEnable(GL_BLEND); }
    glColor4f(saved.colour[0], saved.colour[1], saved.colour[2], saved.colour[3]);
}

void send_stroke(const Vec3& p, const Vec3& n, float length) {
    send_vertex(p);
    glVertex3f(p.x + length * n.x, p.y + length * n.y, p.z + length * n.z);
}

// Yellow strokes for the vertices of a primitive, half as long as the mean edge of its first three.
void draw_corner_strokes(const Vec3* const* positions, const Vec3* const* normals, int count) {
    const float length = triangle_mean_edge(positions[0], positions[1], positions[2]) * CORNER_STROKE;
    const SavedState saved = begin_strokes(1.0f, 1.0f, 0.0f);
    for (int i = 0; i < count; ++i) { send_stroke(*positions[i], *normals[i], length); }
    end_strokes(saved);
}

// Vertices to draw of a list that says one count and holds another.
int vertices_at_hand(int16_t said, const KeyedList& list) {
    return std::min({static_cast<int32_t>(said), list_count(&list), static_cast<int32_t>(POLYGON_VERTEX_LIMIT)});
}

float edge_length(const Vec3* a, const Vec3* b) {
    const float x = std::fabs(b->x - a->x);
    const float y = std::fabs(b->y - a->y);
    const float z = std::fabs(b->z - a->z);
    return std::sqrt(x * x + y * y + z * z);
}

}  // namespace

void session_set_points_color(Session* session, int32_t index) {
    if (!session || index < -1 || index >= POINT_COLOURS) { return; }
    session->points_color_index = index;
}

void points_draw(Session* session, Model* model) {
    if (!session || !model) { return; }
    const int32_t index = session->points_color_index;
    const PointColours colours{index < 0, std::clamp(index, 0, POINT_COLOURS - 1)};
    glDisable(GL_LIGHTING);
    colours.send();
    draw_dots(session, model, colours);
    draw_numbers(session, model, colours);  // a cycle starts anew, so that a number has the colour of its dot
    glEnable(GL_LIGHTING);
}

void skeleton_draw(Session* session, Model* model) {
    if (!session || !model) { return; }
    const float s = session->radius * JOINT_MARK_SIZE;
    switches_off();
    for (Joint& joint : list_elements<Joint>(model->joints)) {
        const JointState* state = joint_state(session, model, &joint);
        if (!state) { continue; }
        draw_joint_mark(state->position, s);
        if (!state->parent) { continue; }
        const JointState* parent = joint_state(session, model, state->parent);
        if (parent) { draw_bone(state->position, parent->position); }
    }
    glEnable(GL_LIGHTING);
}

void line_draw(Session* session, Model* model, Line* line) {
    if (!session || !model || !line) { return; }
    const int count = vertices_at_hand(line->vertex_count, line->vertices);
    const Vec3* positions[POLYGON_VERTEX_LIMIT];
    int found = 0;
    for (const int32_t& stored : list_elements<int32_t>(line->vertices)) {
        if (found >= count) { break; }
        positions[found] = point_position(session, model, line_point_id(stored), false);
        if (!positions[found++]) { return; }
    }
    if (found < 1) { return; }

    const Switches switches = read_switches();
    switches_off();
    glBegin(GL_LINE_STRIP);
    for (int i = 0; i < found; ++i) { send_vertex(*positions[i]); }
    glEnd();
    put_back(switches);
}

void triangle_normals_draw(Session* session, Model* model, Triangle* triangle) {
    if (!session || !model || !triangle) { return; }
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    if (!cache) { return; }
    const int count = triangle_corners(triangle);
    const Vec3* positions[4];
    const Vec3* normals[4];
    for (int i = 0; i < count; ++i) {
        positions[i] = point_position(session, model, cache->point_slots[i], true);
        normals[i] = point_normal(session, model, cache->normal_slots[i], true);
        if (!positions[i] || !normals[i]) { return; }
    }
    draw_corner_strokes(positions, normals, count);
}

void polygon_normals_draw(Session* session, Model* model, Polygon* polygon) {
    if (!session || !model || !polygon) { return; }
    const int count = vertices_at_hand(polygon->vertex_count, polygon->vertices);
    if (count < 3) { return; }
    const Vec3* positions[POLYGON_VERTEX_LIMIT];
    const Vec3* normals[POLYGON_VERTEX_LIMIT];
    int found = 0;
    for (const PolygonVertex& vertex : list_elements<PolygonVertex>(polygon->vertices)) {
        if (found >= count) { break; }
        positions[found] = point_position(session, model, vertex.point, false);
        normals[found] = point_normal(session, model, vertex.normal, false);
        if (!positions[found] || !normals[found]) { return; }
        ++found;
    }
    draw_corner_strokes(positions, normals, found);
}

void patch_normals_draw(Session* session, Model* model, Triangle* triangle, int count, const Vec3* positions,
                        const Vec3* normals) {
    if (!session || !model || !triangle || !positions || !normals) { return; }
    const TriangleCache* cache = triangle_cache_get(session, model, triangle);
    if (!cache) { return; }
    const Vec3* corners[3];
    for (int i = 0; i < 3; ++i) {
        corners[i] = point_position(session, model, cache->point_slots[i], true);
        if (!corners[i]) { return; }
    }
    const float length = triangle_mean_edge(corners[0], corners[1], corners[2]) * PATCH_STROKE;
    const SavedState saved = begin_strokes(0.0f, 1.0f, 1.0f);
    for (int i = 0; i < count; ++i) { send_stroke(positions[i], normals[i], length); }
    end_strokes(saved);
}

void patch_net_draw(const Vec3* slots, bool quad) {
    using Pair = unsigned char[2];
    static constexpr Pair TRIANGLE_PAIRS[] = {{0, 1}, {1, 3}, {3, 6}, {2, 4}, {4, 7}, {0, 2}, {1, 2}, {1, 4}, {4, 5},
                                              {2, 5}, {3, 4}, {3, 7}, {6, 7}, {7, 8}, {4, 8}, {8, 9}, {5, 9}};
    // 1-4 is a diagonal and the pairs 4-8 and 8-12 come twice. This is intended.
    static constexpr Pair QUAD_PAIRS[] = {{0, 1},  {1, 2},   {2, 3},   {4, 5},   {5, 6},   {6, 7},  {8, 9},
                                          {9, 10}, {10, 11}, {12, 13}, {13, 14}, {14, 15}, {1, 4},  {4, 8},
                                          {8, 12}, {0, 4},   {4, 8},   {8, 12},  {1, 5},   {5, 9},  {9, 13},
                                          {2, 6},  {6, 10},  {10, 14}, {3, 7},   {7, 11},  {11, 15}};
    if (!slots) { return; }
    GLfloat colour[4] = {};
    const Switches switches = read_switches();
    glGetFloatv(GL_CURRENT_COLOR, colour);
    switches_off();
    glColor3f(1.0f, 0.0f, 0.0f);
    const Pair* pairs = quad ? QUAD_PAIRS : TRIANGLE_PAIRS;
    const size_t count = quad ? std::size(QUAD_PAIRS) : std::size(TRIANGLE_PAIRS);
    glBegin(GL_LINES);
    for (size_t i = 0; i < count; ++i) {
        for (unsigned char slot : pairs[i]) { send_vertex(slots[slot]); }
    }
    glEnd();
    put_back(switches);
    glColor3f(colour[0], colour[1], colour[2]);
}

float triangle_mean_edge(const Vec3* a, const Vec3* b, const Vec3* c) {
    if (!a || !b || !c) { return 0.0f; }
    return (edge_length(a, b) + edge_length(b, c) + edge_length(c, a)) / 3.0f;
}

}  // namespace pelt
