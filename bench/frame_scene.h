// The scene of the frame benchmarks: one ring of 32,000 points and 64,000 flat triangles with a texture, in a session
// and a view of its own. There may be one at a time: the renderer is bound to it.
#pragma once

#include <cmath>

#include "application/session_lifecycle.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "render/frame.h"
#include "support/native_null.h"

namespace bench {

enum class Kind { PLAIN, GOURAUD, POSED, REFLECTING };

inline constexpr int POINTS = 32000;
inline constexpr int RING = 160;  // points around the tube
inline constexpr int RINGS = POINTS / RING;
inline constexpr float FIT_RADIUS = 52000.0f;  // four times the ring: a fit shows a quarter of what it is told
inline constexpr int TRIANGLES = 2 * POINTS;
inline constexpr int TEXTURE_SIDE = 64;
inline constexpr int TEXTURE_BYTES = TEXTURE_SIDE * TEXTURE_SIDE * 3;

inline void add_points(pelt::Model* model) {
    constexpr double TURN = 6.283185307179586;
    for (int i = 0; i < POINTS; ++i) {
        const double a = TURN * (i / RING) / RINGS, b = TURN * (i % RING) / RING;
        const double reach = 10000.0 + 3000.0 * std::cos(b);
        pelt::model_set_point(model, i + 1, static_cast<int>(reach * std::cos(a)),
                              static_cast<int>(reach * std::sin(a)), static_cast<int>(3000.0 * std::sin(b)), 1.0f);
        pelt::model_set_normal(model, i + 1, static_cast<float>(std::cos(a) * std::cos(b)),
                               static_cast<float>(std::sin(a) * std::cos(b)), static_cast<float>(std::sin(b)));
    }
}

inline void add_triangles(pelt::Model* model) {
    for (int i = 0; i < POINTS; ++i) {
        const int next = i / RING * RING + (i + 1) % RING;
        const int quad[4] = {i, next, (i + RING) % POINTS, (next + RING) % POINTS};
        for (int half = 0; half < 2; ++half) {
            const int32_t points[4] = {quad[half] + 1, quad[half + 1] + 1, quad[half + 2] + 1, 0};
            pelt::model_add_triangle(model, "skin", 0, points, nullptr, nullptr, 0);
        }
    }
}

// The texels stay the caller's.
inline pelt::Model* make_model(pelt::Session* session, Kind kind, unsigned char* texels) {
    pelt::Model* model = pelt::model_create("ring.mod", nullptr);
    add_points(model);
    if (kind == Kind::GOURAUD) {
        for (int i = 1; i <= POINTS; ++i) { pelt::model_set_gouraud(model, i, i & 255, 100, 200, 0); }
    }
    if (kind == Kind::POSED) {
        for (pelt::Point& point : pelt::list_elements<pelt::Point>(model->points)) {
            pelt::point_state(session, &point);
        }
    }
    pelt::model_add_layer(model, "skin", 127, 100, 80, 1, 0, 0);
    pelt::Layer* layer = pelt::model_find_layer(model, "skin");
    auto* image = static_cast<pelt::LayerImage*>(pelt::list_add(&layer->images, 1));
    *image = pelt::LayerImage{};
    for (const int slot : {pelt::IMAGE_SLOT_BASE, pelt::IMAGE_SLOT_REFLECTION}) {
        if (slot == pelt::IMAGE_SLOT_REFLECTION && kind != Kind::REFLECTING) { continue; }
        image->width[slot] = image->height[slot] = TEXTURE_SIDE;
        image->bytes_per_pixel[slot] = 3;
        image->pixels[slot] = texels;
    }
    image->reflection = kind == Kind::REFLECTING ? 0.5f : 0.0f;
    add_triangles(model);
    return model;
}

// A window of the null window system; whoever draws for real brings a context of the same size.
inline constexpr int WIDTH = 800;
inline constexpr int HEIGHT = 600;

struct FrameScene {
    FrameScene(Kind kind, unsigned char* texels) {
        pelt::null_reset();
        pelt::session_init(&session);
        pelt::frame_bind(&session, &view);
        pelt::session_add_root(&session, make_model(&session, kind, texels), nullptr);
        session.display_reflect = kind == Kind::REFLECTING ? 1 : 0;
        const pelt::WindowHandle parent = pelt::null_add_window(WIDTH + 2, HEIGHT + 2);
        pelt::gl_window_create("view", parent, pelt::view_init, nullptr, pelt::view_resize, nullptr, 0);
        pelt::frame_draw();  // the first one also follows the size of the window
        pelt::view_fit(&view, FIT_RADIUS, false);
    }
    ~FrameScene() {
        for (pelt::RootModel& root : pelt::list_elements<pelt::RootModel>(session.root_models)) {
            for (pelt::Layer& layer : pelt::list_elements<pelt::Layer>(root.model->layers)) {
                pelt::list_clear(&layer.images);  // the texels are none of the registry's
            }
        }
        pelt::session_close_all(&session);
    }
    FrameScene(const FrameScene&) = delete;
    FrameScene& operator=(const FrameScene&) = delete;

    pelt::Session session{};
    pelt::ViewState view{};
};

}  // namespace bench
