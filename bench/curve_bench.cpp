// Speed of curved surfaces, as a ratio within one run: one frame of 2,000 curved triangles at the finest level of
// detail against the sum of two floors, the patch sums alone in a plain loop and the replay of the frame's own OpenGL
// calls. OpenGL is one whose functions return at once.
//
// Each time is the best of several rounds in which the candidates take turns, so that a busy machine disturbs them
// alike. A ratio over its goal makes the exit code 1.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "bench/report.h"
#include "render/scene_draw.h"
#include "support/drawing_scene.h"
#include "surfaces/patch.h"

namespace {

using namespace pelt;

constexpr int TRIANGLES = 2000;
constexpr int COLUMNS = 50;  // of a bumpy sheet, two triangles in each cell
constexpr int ROUNDS = 30;
constexpr double GOAL = 1.4;

// Control points and control normals of one patch, and the weights of a vertex for both.
struct Net {
    Vec3 slots[16];
};

struct Weights {
    float slots[16];
};

float height(int x, int y) { return 2.0f * std::sin(static_cast<float>(x)) * std::cos(static_cast<float>(y)); }

void add_sheet(drawing_scene::Scene& scene) {
    const int rows = TRIANGLES / 2 / COLUMNS;
    const auto id = [](int x, int y) { return 1 + y * (COLUMNS + 1) + x; };
    for (int y = 0; y <= rows; ++y) {
        for (int x = 0; x <= COLUMNS; ++x) {
            const Vec3 normal =
                drawing_scene::unit(height(x - 1, y) - height(x + 1, y), height(x, y - 1) - height(x, y + 1), 2.0f);
            Point* point =
                scene.add_point(id(x, y), {static_cast<float>(x), static_cast<float>(y), height(x, y)}, normal);
            for (int i = 0; i < 3; ++i) { point->gouraud[i] = static_cast<unsigned char>((x + y + i) % 256); }
        }
    }
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < COLUMNS; ++x) {
            const int32_t a = id(x, y), b = id(x + 1, y), c = id(x, y + 1), d = id(x + 1, y + 1);
            const int32_t first[3] = {a, b, c}, first_controls[6] = {a, b, b, c, c, a};
            const int32_t second[3] = {c, b, d}, second_controls[6] = {c, b, b, d, d, c};
            model_add_triangle(scene.model, "body", 0, first, nullptr, first_controls, 3);
            model_add_triangle(scene.model, "body", 0, second, nullptr, second_controls, 3);
        }
    }
}

std::vector<Net> nets_of(const drawing_scene::Scene& scene) {
    std::vector<Net> nets;
    for (const Triangle& triangle : list_elements<Triangle>(scene.layer->triangles)) {
        Vec3 corners[3], normals[PATCH_NORMAL_PLACES] = {};
        for (int i = 0; i < 3; ++i) {
            const Point* point = model_find_point(scene.model, triangle.points[i]);
            corners[i] = point->position;
            normals[i] = point->normal;
        }
        for (int i = 0; i < 6; ++i) { normals[4 + i] = normals[(i + 1) / 2 % 3]; }
        TrianglePatch patch;
        patch_build_triangle(corners, normals, &patch);
        nets.emplace_back();
        std::copy(std::begin(patch.slots), std::end(patch.slots), nets.back().slots);
    }
    return nets;
}

std::vector<Weights> weights_of_grid() {
    std::vector<Weights> out;
    const float step = 1.0f / (PATCH_LOD_LIMIT + 1);
    for (int row = 0; row <= PATCH_LOD_LIMIT + 1; ++row) {
        for (int i = 0; i <= PATCH_LOD_LIMIT + 1 - row; ++i) {
            const float u = static_cast<float>(i) * step, v = static_cast<float>(row) * step, w = 1.0f - u - v;
            out.push_back(
                {{w * w * w, 3 * w * w * v, 3 * w * w * u, 3 * w * v * v, 6 * w * u * v, 3 * w * u * u, v * v * v,
                  3 * u * v * v, 3 * u * u * v, u * u * u, w * w, u * u, v * v, w * u, u * v, w * v}});
        }
    }
    return out;
}

// The sums of all patches and nothing else: nets and weights stand ready, the result lands in one array.
void patch_sums(const std::vector<Net>& nets, const std::vector<Weights>& grid, Vec3 (*out)[2]) {
    for (const Net& net : nets) {
        for (size_t vertex = 0; vertex < grid.size(); ++vertex) {
            const float* weight = grid[vertex].slots;
            Vec3 position{0, 0, 0}, normal{0, 0, 0};
            for (int i = 0; i < 10; ++i) {
                position.x += net.slots[i].x * weight[i];
                position.y += net.slots[i].y * weight[i];
                position.z += net.slots[i].z * weight[i];
            }
            for (int i = 10; i < 16; ++i) {
                normal.x += net.slots[i].x * weight[i];
                normal.y += net.slots[i].y * weight[i];
                normal.z += net.slots[i].z * weight[i];
            }
            const double x = normal.x, y = normal.y, z = normal.z;
            const auto scale = static_cast<float>(1.0 / std::sqrt(x * x + y * y + z * z));
            out[vertex][0] = position;
            out[vertex][1] = {normal.x * scale, normal.y * scale, normal.z * scale};
        }
        asm volatile("" : : "r"(out) : "memory");  // each patch is wanted
    }
}

template <typename Work>
double seconds(Work work) {
    const double start = bench::processor_seconds();
    work();
    return bench::processor_seconds() - start;
}

bool measure(const char* name, bool gouraud, bool filter) {
    drawing_scene::Scene scene;
    add_sheet(scene);
    scene.model->has_gouraud = gouraud;
    scene.session.display_lod = PATCH_LOD_LIMIT;
    scene.session.display_pnfilter = filter;
    const std::vector<Net> nets = nets_of(scene);
    const std::vector<Weights> grid = weights_of_grid();

    recording_gl::set_mode(recording_gl::Mode::pack);
    const int32_t drawn = model_draw(&scene.session, scene.model);
    if (drawn != TRIANGLES * 49) {
        std::fprintf(stderr, "the frame has %d triangles\n", static_cast<int>(drawn));
        return false;
    }
    const recording_gl::Packed calls = recording_gl::packed();
    recording_gl::set_mode(recording_gl::Mode::silent);

    static Vec3 vertices[PATCH_VERTEX_LIMIT][2];
    double frame = 1e9, sums = 1e9, replay = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        frame = std::min(frame, seconds([&] { model_draw(&scene.session, scene.model); }));
        sums = std::min(sums, seconds([&] { patch_sums(nets, grid, vertices); }));
        replay = std::min(replay, seconds([&] { recording_gl::replay(calls); }));
    }
    return bench::row(name, "patch sums, replay of its calls", frame * 1e3, (sums + replay) * 1e3, "ms", GOAL);
}

}  // namespace

int main() {
    const bool plain = measure("frame of 2,000 curved triangles at lod 6", false, false);
    const bool coloured = measure("the same curved with vertex colours", true, false);
    const bool filtered = measure("the same curved through the filter", false, true);
    return plain && coloured && filtered ? 0 : 1;
}
