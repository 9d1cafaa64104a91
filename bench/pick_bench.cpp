// Speed of picking, as a ratio within one run: what lies at a pixel of 64,000 triangles against a plain loop that tests
// the same triangles out of an array, each with one ray. Once they are those of 4,000 curved primitives, and once they
// are flat ones.
//
// Each time is the best of several rounds in which the candidates take turns. A ratio over its goal makes the exit code
// 1.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

#include "bench/frame_scene.h"
#include "bench/report.h"
#include "edit/pick.h"
#include "edit/seen_scene.h"

namespace {

using namespace pelt;

constexpr int CURVED = 4000;
constexpr int CURVED_COLUMNS = 50;  // of a bumpy sheet, two triangles in each cell
constexpr int CURVED_LEVEL = 3;     // 16 triangles each
constexpr int ROUNDS = 40;
constexpr int PICKS = 8;  // a round, at places of their own
constexpr double GOAL = 3.0;
constexpr double GOAL_FLAT = 10.0;  // the records alone are five times the bytes of the array

using Corners = std::array<Vec3, 3>;

float height(int x, int y) { return 200.0f * std::sin(static_cast<float>(x)) * std::cos(static_cast<float>(y)); }

Model* make_curved() {
    Model* model = model_create("sheet.mod", nullptr);
    model_add_layer(model, "skin", 127, 100, 80, 0, 0, 0);
    const int rows = CURVED / 2 / CURVED_COLUMNS;
    const auto id = [](int x, int y) { return 1 + y * (CURVED_COLUMNS + 1) + x; };
    for (int y = 0; y <= rows; ++y) {
        for (int x = 0; x <= CURVED_COLUMNS; ++x) {
            model_set_point(model, id(x, y), 400 * x - 10000, 500 * y - 10000, static_cast<int32_t>(height(x, y)),
                            1.0f);
            model_set_normal(model, id(x, y), height(x - 1, y) - height(x + 1, y), height(x, y - 1) - height(x, y + 1),
                             800.0f);
        }
    }
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < CURVED_COLUMNS; ++x) {
            const int32_t a = id(x, y), b = id(x + 1, y), c = id(x, y + 1), d = id(x + 1, y + 1);
            const int32_t first[4] = {a, b, c, 0}, second[4] = {c, b, d, 0};
            const int32_t first_controls[8] = {a, b, b, c, c, a}, second_controls[8] = {c, b, b, d, d, c};
            model_add_triangle(model, "skin", 0, first, nullptr, first_controls, 3);
            model_add_triangle(model, "skin", 0, second, nullptr, second_controls, 3);
        }
    }
    return model;
}

PickView make_view() {
    PickView view{};
    mat_identity(&view.modelview);
    mat_rotate(&view.modelview, 20.0f, 30.0f, 0.0f);
    mat_identity(&view.projection);
    mat_scale(&view.projection, 1.0f / 16000.0f, 1.0f / 12000.0f, -1.0f / 40000.0f);
    view.width = 800;
    view.height = 600;
    return view;
}

// All triangles as they are drawn, in the space of the view.
std::vector<Corners> triangles_of(Session* session, const PickView& view) {
    const SeenScene seen = scene_seen(session, view, {-100, -100, 100, 100}, false, false);
    std::vector<Corners> out;
    for (const SeenTriangle& triangle : seen.triangles) {
        Corners corners;
        for (size_t i = 0; i < 3; ++i) { corners[i] = world_place(view.modelview, triangle.places[i]); }
        out.push_back(corners);
    }
    return out;
}

// The nearest triangle that a ray along z meets: the loop that anybody would write first.
size_t loop(const std::vector<Corners>& triangles, float x, float y) {
    size_t nearest = triangles.size();
    float depth = -1e30f;
    for (size_t i = 0; i < triangles.size(); ++i) {
        const auto& [a, b, c] = triangles[i];
        const Vec3 e1 = vec_subtract(b, a), e2 = vec_subtract(c, a);
        const float det = e1.x * e2.y - e1.y * e2.x;
        if (det == 0.0f) { continue; }
        const float sx = x - a.x, sy = y - a.y;
        const float u = (sx * e2.y - sy * e2.x) / det;
        if (u < 0.0f || u > 1.0f) { continue; }
        const float v = (e1.x * sy - e1.y * sx) / det;
        if (v < 0.0f || u + v > 1.0f) { continue; }
        const float z = a.z + u * e1.z + v * e2.z;
        if (z > depth) {
            depth = z;
            nearest = i;
        }
    }
    return nearest;
}

template <typename Work>
double seconds(Work work) {
    const double start = bench::processor_seconds();
    work();
    return bench::processor_seconds() - start;
}

bool measure(const char* name, Model* model, double goal) {
    Session session{};
    session_init(&session);
    session.display_lod = CURVED_LEVEL;
    session_add_root(&session, model, nullptr);
    const PickView view = make_view();
    const std::vector<Corners> triangles = triangles_of(&session, view);
    if (triangles.size() != bench::TRIANGLES) {
        std::fprintf(stderr, "the scene has %zu triangles\n", triangles.size());
        return false;
    }
    const auto pixel = [](int i) { return std::pair{150 + 60 * i, 120 + 45 * i}; };
    int picked = 0, met = 0;
    double pick = 1e9, plain = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        pick = std::min(pick, seconds([&] {
                            for (int i = 0; i < PICKS; ++i) {
                                const auto [x, y] = pixel(i);
                                picked += scene_pick(&session, view, x, y, PickWhat::MODEL, 4).kind != PickKind::NONE;
                            }
                        }));
        plain = std::min(plain, seconds([&] {
                             for (int i = 0; i < PICKS; ++i) {
                                 const auto [x, y] = pixel(i);
                                 const PicturePlace at = pixel_place(view, x, y);
                                 met += loop(triangles, static_cast<float>(at.x) * 16000.0f,
                                             static_cast<float>(at.y) * 12000.0f) != triangles.size();
                             }
                         }));
    }
    if (picked != met || picked == 0) {
        std::fprintf(stderr, "%d picks against %d of the loop\n", picked, met);
        return false;
    }
    const bool kept =
        bench::row(name, "plain loop over the triangles", pick * 1e3 / PICKS, plain * 1e3 / PICKS, "ms", goal);
    for (Layer& layer : list_elements<Layer>(model->layers)) { list_clear(&layer.images); }
    session_close_all(&session);
    return kept;
}

}  // namespace

int main() {
    static unsigned char texels[bench::TEXTURE_BYTES];
    Session scratch{};
    session_init(&scratch);
    const bool curved = measure("pick in 4,000 curved triangles, 64,000 subdivided", make_curved(), GOAL);
    const bool flat =
        measure("pick in 64,000 flat triangles", bench::make_model(&scratch, bench::Kind::PLAIN, texels), GOAL_FLAT);
    return curved && flat ? 0 : 1;
}
