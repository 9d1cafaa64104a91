// Marks over a frame, in the state of OpenGL that they find and put back. What surprises: edges are the surfaces
// themselves drawn once more as lines, so that they follow poses, curves and mirrors like these; an offset keeps them
// in front of what they belong to.
#include "render/marks.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "motion/scene_walk.h"
#include "render/overlays.h"
#include "render/scene_draw.h"
#include "render/triangle_draw.h"
#include "scene/layer_points.h"
#include "scene/vertex.h"

namespace pelt {

namespace {

Marks kept;

struct Tone {
    float red, green, blue;
};
constexpr Tone DARK{0.0f, 0.0f, 0.0f};
constexpr Tone LIGHT{1.0f, 0.85f, 0.2f};
constexpr Tone PALE{0.9f, 0.9f, 0.9f};
constexpr Tone GRID_DARK{0.25f, 0.25f, 0.25f};
constexpr Tone GRID_LIGHT{0.75f, 0.75f, 0.75f};
constexpr Tone AXIS_TONES[] = {{1.0f, 0.2f, 0.2f}, {0.4f, 0.8f, 0.4f}, {0.4f, 0.6f, 1.0f}};

constexpr GLushort SHORT_DASHES = 0x3333;
constexpr GLushort LONG_DASHES = 0x00FF;
constexpr GLushort DOTS = 0x1111;

constexpr float POINT_OUTSIDE = 8.0f, POINT_INSIDE = 5.0f;  // pixels
constexpr float HANDLE_LENGTH = 60.0f;
constexpr int GRID_LINES = 100;  // at each side of the middle
constexpr int GRID_HEAVY = 10;   // every so many lines one stands out

bool any_marks() { return !kept.models.empty() || kept.grid_step > 0.0f || kept.handle || kept.edges || kept.xray; }

void send_tone(const Tone& tone) { glColor3f(tone.red, tone.green, tone.blue); }
void send_place(const Vec3& p) { glVertex3f(p.x, p.y, p.z); }

// The matrix of a model, or of its mirrored half, for as long as it lives.
class Placed {
public:
    explicit Placed(const Mat4& place) {
        Mat4 columns;
        mat_transpose(&place, &columns);
        glPushMatrix();
        glMultMatrixf(columns.m);
    }
    explicit Placed(int axis_code) {
        const Vec3 scale = mirrored_along({1.0f, 1.0f, 1.0f}, axis_code);
        glPushMatrix();
        glScalef(scale.x, scale.y, scale.z);
    }
    ~Placed() { glPopMatrix(); }
    Placed(const Placed&) = delete;
    Placed& operator=(const Placed&) = delete;
};

// Surfaces without what a frame may add to them, for as long as it lives.
class BareSurfaces {
public:
    explicit BareSurfaces(Session* session) : session_(session) {
        for (size_t i = 0; i < std::size(FLAGS); ++i) {
            before_[i] = session->*FLAGS[i];
            session->*FLAGS[i] = 0;
        }
    }
    ~BareSurfaces() {
        for (size_t i = 0; i < std::size(FLAGS); ++i) { session_->*FLAGS[i] = before_[i]; }
    }
    BareSurfaces(const BareSurfaces&) = delete;
    BareSurfaces& operator=(const BareSurfaces&) = delete;

private:
    static constexpr int32_t Session::*FLAGS[] = {&Session::display_gouraud, &Session::display_normals,
                                                  &Session::display_curvenet, &Session::display_quadlines};
    Session* session_;
    int32_t before_[std::size(FLAGS)];
};

bool is_mirrored(const Session* session, const Layer& layer) {
    return session->display_mirror != 0 && layer.mirror != 0;
}

// ---- edges ----

// Which surfaces of a layer: all, or those with these ids.
struct Chosen {
    bool all;
    const std::unordered_set<int32_t>* faces;
    const std::unordered_set<int32_t>* polygons;
};

void draw_chosen(Session* session, Model* model, const Layer& layer, const Chosen& chosen, bool mirrored) {
    for (Triangle& triangle : list_elements<Triangle>(const_cast<KeyedList&>(layer.triangles))) {
        if (chosen.all || chosen.faces->contains(triangle.id)) {
            surface_draw(session, model, &triangle, false, mirrored, false);
        }
    }
    for (Polygon& polygon : list_elements<Polygon>(const_cast<KeyedList&>(layer.polygons))) {
        if (chosen.all || chosen.polygons->contains(polygon.id)) {
            polygon_draw(session, model, &polygon, false, mirrored, false);
        }
    }
}

// Lines twice, the light ones over the dark ones. Drawing is a function that sends them.
template <typename Draw>
void two_tones(const Tone& dark, float dark_width, const Tone& light, GLushort dashes, Draw draw) {
    glLineWidth(dark_width);
    glPolygonOffset(-1.0f, -1.0f);
    send_tone(dark);
    draw();
    glLineWidth(1.0f);
    glPolygonOffset(-2.0f, -2.0f);
    glLineStipple(1, dashes);
    glEnable(GL_LINE_STIPPLE);
    send_tone(light);
    draw();
    glDisable(GL_LINE_STIPPLE);
}

void draw_edges(Session* session, Model* model, const Layer& layer, const Chosen& chosen, bool heavy) {
    if (layer.hidden != 0) { return; }
    two_tones(DARK, heavy ? 3.0f : 1.0f, heavy ? LIGHT : PALE, heavy ? 0xFFFF : SHORT_DASHES, [&] {
        draw_chosen(session, model, layer, chosen, false);
        if (!is_mirrored(session, layer)) { return; }
        const Placed half(layer.mirror_axis);
        draw_chosen(session, model, layer, chosen, true);
    });
}

void draw_all_edges(Session* session, Model* model) {
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        draw_edges(session, model, layer, {true, nullptr, nullptr}, false);
    }
}

void draw_lines(Session* session, Model* model, const Layer& layer, const std::unordered_set<int32_t>& ids) {
    const auto send = [&] {
        for (Line& line : list_elements<Line>(const_cast<KeyedList&>(layer.lines))) {
            if (ids.contains(line.id)) { line_draw(session, model, &line); }
        }
    };
    two_tones(DARK, 3.0f, LIGHT, 0xFFFF, [&] {
        send();
        if (!is_mirrored(session, layer)) { return; }
        const Placed half(layer.mirror_axis);
        send();
    });
}

void draw_marked_edges(Session* session, Model* model, const ModelMarks& marked) {
    const std::unordered_set<int32_t> faces(marked.faces.begin(), marked.faces.end());
    const std::unordered_set<int32_t> polygons(marked.polygons.begin(), marked.polygons.end());
    const std::unordered_set<int32_t> lines(marked.lines.begin(), marked.lines.end());
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        const bool all = std::find(marked.layers.begin(), marked.layers.end(), layer.name) != marked.layers.end();
        if (all || !faces.empty() || !polygons.empty()) {
            draw_edges(session, model, layer, {all, &faces, &polygons}, true);
        }
        if (!lines.empty() && layer.hidden == 0) { draw_lines(session, model, layer, lines); }
    }
}

// ---- points ----

void send_squares(const std::vector<Vec3>& places) {
    const auto send = [&](float size, const Tone& tone) {
        glPointSize(size);
        send_tone(tone);
        glBegin(GL_POINTS);
        for (const Vec3& place : places) { send_place(place); }
        glEnd();
    };
    send(POINT_OUTSIDE, DARK);
    send(POINT_INSIDE, LIGHT);
}

// The marked points of a mirrored half: those that its layers use.
std::vector<Vec3> mirrored_places(const Session* session, const Model* model, const ModelMarks& marked, int axis_code) {
    std::unordered_set<int32_t> left(marked.points.begin(), marked.points.end());
    std::vector<Vec3> places;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (layer.hidden != 0 || !is_mirrored(session, layer) || layer.mirror_axis != axis_code) { continue; }
        for_each_corner(layer, [&](int32_t id) {
            const auto* point = left.erase(id) != 0 ? list_find<const Point>(&model->points, id) : nullptr;
            if (point != nullptr) {
                places.push_back(mirrored_along(*point_posed_position(session, point), axis_code));
            }
        });
    }
    return places;
}

void draw_points(const Session* session, const Model* model, const ModelMarks& marked) {
    std::vector<Vec3> places;
    for (const int32_t id : marked.points) {
        const auto* point = list_find<const Point>(&model->points, id);
        if (point != nullptr) { places.push_back(*point_posed_position(session, point)); }
    }
    for (const int axis : {AXIS_X, AXIS_Y, AXIS_Z}) {
        const std::vector<Vec3> more = mirrored_places(session, model, marked, axis);
        places.insert(places.end(), more.begin(), more.end());
    }
    if (!places.empty()) { send_squares(places); }
}

// ---- what belongs to no model ----

// World units that so many pixels take at a place.
float units_of_pixels(const ViewState* view, const Vec3& place, float pixels) {
    Mat4 modelview, projection, both;
    view_transforms(view, &modelview, &projection);
    mat_multiply(&modelview, &projection, &both);
    const float* m = both.m;
    const float w = m[12] * place.x + m[13] * place.y + m[14] * place.z + m[15];
    const float scale = std::hypot(m[0], m[1], m[2]) * static_cast<float>(std::max(view->width, 1)) * 0.5f;
    return pixels * std::fabs(w) / scale;
}

// The ground is the plane z = 0. The step that covers what is seen with not too many lines, and the lines from the
// middle to each side.
struct GridPlan {
    float step;
    int lines;
    float x, y;  // middle, on a heavy line
};

GridPlan plan_grid(const ViewState* view, float step) {
    const float reach = 2.0f * VIEW_HALF_EXTENT * view->zoom * std::hypot(view->extent_x, view->extent_y);
    const auto lines_for = [&](float width) { return std::ceil(reach / width); };
    while (lines_for(step) > static_cast<float>(GRID_LINES)) { step *= static_cast<float>(GRID_HEAVY); }
    const float heavy = step * static_cast<float>(GRID_HEAVY);
    const int lines = std::max(static_cast<int>(lines_for(step)), 1);
    return {step, lines, std::round(view->focus.x / heavy) * heavy, std::round(view->focus.y / heavy) * heavy};
}

void send_grid(const GridPlan& plan, bool heavy) {
    const float reach = static_cast<float>(plan.lines) * plan.step;
    glBegin(GL_LINES);
    for (int i = -plan.lines; i <= plan.lines; ++i) {
        if ((i % GRID_HEAVY == 0) != heavy) { continue; }
        const float at = static_cast<float>(i) * plan.step;
        send_place({plan.x + at, plan.y - reach, 0.0f});
        send_place({plan.x + at, plan.y + reach, 0.0f});
        send_place({plan.x - reach, plan.y + at, 0.0f});
        send_place({plan.x + reach, plan.y + at, 0.0f});
    }
    glEnd();
}

void draw_grid(const ViewState* view) {
    const GridPlan plan = plan_grid(view, kept.grid_step);
    if (!std::isfinite(plan.step) || !std::isfinite(plan.x) || !std::isfinite(plan.y)) { return; }
    two_tones(GRID_DARK, 1.0f, GRID_LIGHT, DOTS, [&] { send_grid(plan, false); });
    two_tones(GRID_DARK, 1.0f, GRID_LIGHT, LONG_DASHES, [&] { send_grid(plan, true); });
}

void draw_handle(const ViewState* view) {
    const float length = units_of_pixels(view, kept.handle_place, HANDLE_LENGTH);
    const Vec3& from = kept.handle_place;
    const Vec3 ends[] = {
        {from.x + length, from.y, from.z}, {from.x, from.y + length, from.z}, {from.x, from.y, from.z + length}};
    for (int axis = 0; axis < 3; ++axis) {
        const float width = kept.handle_axis == axis + 1 ? 5.0f : 2.0f;
        for (const bool inner : {false, true}) {
            glLineWidth(inner ? width : width + 3.0f);
            glPointSize(inner ? width + 4.0f : width + 7.0f);
            send_tone(inner ? AXIS_TONES[axis] : DARK);
            glBegin(GL_LINES);
            send_place(from);
            send_place(ends[axis]);
            glEnd();
            glBegin(GL_POINTS);
            send_place(ends[axis]);
            glEnd();
        }
    }
}

// ---- all of them ----

// The strokes of the skeleton have colours of their own: multiplied by nothing they are a dark rim for themselves.
void draw_skeleton(Session* session, Model* model) {
    glLineWidth(4.0f);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ZERO, GL_ZERO);
    skeleton_draw(session, model);
    glDisable(GL_BLEND);
    glLineWidth(2.0f);
    skeleton_draw(session, model);
    glDisable(GL_LIGHTING);
}

const ModelMarks* marks_of(const Model* model) {
    for (const ModelMarks& each : kept.models) {
        if (each.model == model && each.serial == model->serial) { return &each; }
    }
    return nullptr;
}

template <typename Draw>
void for_each_placed(Session* session, Draw draw) {
    scene_walk(session, [&](const ScenePlace& at) {
        const Placed placed(at.place);
        draw(at.model, marks_of(at.model));
    });
}

// What the surface may hide.
void draw_on_surface(Session* session, const ViewState* view) {
    if (kept.grid_step > 0.0f) { draw_grid(view); }
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glEnable(GL_POLYGON_OFFSET_LINE);
    const BareSurfaces bare(session);
    if (kept.edges) {
        for_each_placed(session, [&](Model* model, const ModelMarks*) { draw_all_edges(session, model); });
    }
    for_each_placed(session, [&](Model* model, const ModelMarks* marked) {
        if (marked != nullptr) { draw_marked_edges(session, model, *marked); }
    });
}

// What shows through.
void draw_through(Session* session, const ViewState* view) {
    glDisable(GL_DEPTH_TEST);
    for_each_placed(session, [&](Model* model, const ModelMarks* marked) {
        if (kept.xray) { draw_skeleton(session, model); }
        if (marked != nullptr) { draw_points(session, model, *marked); }
    });
    if (kept.handle) { draw_handle(view); }
}

}  // namespace

Marks* marks() { return &kept; }

void marks_forget_gone(Session* session) {
    if (kept.models.empty()) { return; }
    std::unordered_set<uint64_t> there;
    scene_walk(session, [&](const ScenePlace& at) { there.insert(at.model->serial); });
    std::erase_if(kept.models, [&](const ModelMarks& each) { return !there.contains(each.serial); });
}

bool marks_stay_out_of_pictures() { return any_marks() && !kept.in_pictures; }

void marks_draw(Session* session, const ViewState* view) {
    marks_forget_gone(session);
    if (!any_marks()) { return; }
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glMatrixMode(GL_MODELVIEW);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    glDepthMask(GL_FALSE);
    draw_on_surface(session, view);
    draw_through(session, view);
    glPopAttrib();
}

}  // namespace pelt
