// Speed of a frame, as a ratio within one run: emitting one frame of a textured model of 64,000 flat triangles against
// making the same recorded calls out of an array, both on an OpenGL whose functions return at once.
//
// Each time is the best of several rounds in which the two take turns, so that a busy machine disturbs them alike. A
// ratio over its goal makes the exit code 1.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "application/session_lifecycle.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "render/frame.h"
#include "support/native_null.h"
#include "support/recording_gl.h"

namespace {

using namespace pelt;

constexpr int POINTS = 32000;
constexpr int RING = 160;  // points around the tube
constexpr int RINGS = POINTS / RING;
constexpr int ROUNDS = 60;
constexpr double GOAL = 2.0;

unsigned char texels[16 * 16 * 3];

void add_points(Model* model) {
    constexpr double TURN = 6.283185307179586;
    for (int i = 0; i < POINTS; ++i) {
        const double a = TURN * (i / RING) / RINGS, b = TURN * (i % RING) / RING;
        const double reach = 10000.0 + 3000.0 * std::cos(b);
        model_set_point(model, i + 1, static_cast<int>(reach * std::cos(a)), static_cast<int>(reach * std::sin(a)),
                        static_cast<int>(3000.0 * std::sin(b)), 1.0f);
        model_set_normal(model, i + 1, static_cast<float>(std::cos(a) * std::cos(b)),
                         static_cast<float>(std::sin(a) * std::cos(b)), static_cast<float>(std::sin(b)));
    }
}

void add_triangles(Model* model) {
    for (int i = 0; i < POINTS; ++i) {
        const int next = i / RING * RING + (i + 1) % RING;
        const int quad[4] = {i, next, (i + RING) % POINTS, (next + RING) % POINTS};
        for (int half = 0; half < 2; ++half) {
            const int32_t points[4] = {quad[half] + 1, quad[half + 1] + 1, quad[half + 2] + 1, 0};
            model_add_triangle(model, "skin", 0, points, nullptr, nullptr, 0);
        }
    }
}

enum class Kind { plain, gouraud, posed };

Model* make_model(Session* session, Kind kind) {
    Model* model = model_create("ring.mod", nullptr);
    add_points(model);
    if (kind == Kind::gouraud) {
        for (int i = 1; i <= POINTS; ++i) model_set_gouraud(model, i, i & 255, 100, 200, 0);
    }
    if (kind == Kind::posed) {
        for (Point& point : list_elements<Point>(model->points)) point_state(session, &point);
    }
    model_add_layer(model, "skin", 127, 100, 80, 1, 0, 0);
    Layer* layer = model_find_layer(model, "skin");
    auto* image = static_cast<LayerImage*>(list_add(&layer->images, 1));
    *image = LayerImage{};
    image->width[IMAGE_SLOT_BASE] = image->height[IMAGE_SLOT_BASE] = 16;
    image->bytes_per_pixel[IMAGE_SLOT_BASE] = 3;
    image->pixels[IMAGE_SLOT_BASE] = texels;
    add_triangles(model);
    return model;
}

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool measure(const char* what) {
    recording_gl::set_mode(recording_gl::Mode::pack);
    frame_draw();
    const recording_gl::Packed calls = recording_gl::packed();
    recording_gl::set_mode(recording_gl::Mode::silent);
    double frame = 1e9, replay = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        auto start = std::chrono::steady_clock::now();
        frame_draw();
        frame = std::min(frame, seconds_since(start));
        start = std::chrono::steady_clock::now();
        recording_gl::replay(calls);
        replay = std::min(replay, seconds_since(start));
    }
    const double ratio = frame / replay;
    std::printf("%-58s %8.2f ms / %8.2f ms = %5.2f (goal at most %.1f)%s\n", what, frame * 1e3, replay * 1e3, ratio,
                GOAL, ratio <= GOAL ? "" : "  MISSED");
    return ratio <= GOAL;
}

bool measure_model(const char* what, Kind kind) {
    static Session session;
    static ViewState view;
    null_reset();
    recording_gl::reset();
    session_init(&session);
    frame_bind(&session, &view);
    session_add_root(&session, make_model(&session, kind), nullptr);
    const WindowHandle parent = null_add_window(802, 602);
    recording_gl::set_mode(recording_gl::Mode::silent);
    gl_window_create("view", parent, view_init, nullptr, view_resize, nullptr, 0);
    const bool met = measure(what);
    if (session.triangles_drawn != 2 * POINTS) {
        std::fprintf(stderr, "%d triangles were drawn\n", session.triangles_drawn);
        std::exit(2);
    }
    for (RootModel& root : list_elements<RootModel>(session.root_models)) {
        for (Layer& layer : list_elements<Layer>(root.model->layers)) list_clear(&layer.images);
    }
    session_close_all(&session);
    return met;
}

}  // namespace

int main() {
    bool met = measure_model("frame, textured, against the replay of its calls", Kind::plain);
    met = measure_model("frame, textured and gouraud, against the same", Kind::gouraud) && met;
    met = measure_model("frame, textured and posed, against the same", Kind::posed) && met;
    return met ? 0 : 1;
}
