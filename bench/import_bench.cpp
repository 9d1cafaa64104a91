// Speed of importing an OBJ, against the library of formats reading the same file with the two steps that an import
// cannot do without, faces cut to triangles and equal corners joined. The import goes on to the bytes of the model,
// which it has read again.
//
// Each time is processor time, the best of several rounds in which the two take turns.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include "bench/report.h"
#include "interchange/import.h"
#include "support/temp_dir.h"

namespace {

constexpr int RING = 180;  // corners round the tube, and round the ring: 64,800 triangles
constexpr int ROUNDS = 9;
constexpr double GOAL = 2.0;

void append(std::string& text, const char* format, auto... values) {
    char line[160];
    std::snprintf(line, sizeof line, format, values...);
    text += line;
}

// A torus with normals and texture coordinates.
std::string torus() {
    constexpr double STEP = 6.283185307179586 / RING;
    std::string text;
    for (int i = 0; i < RING * RING; ++i) {
        const double a = STEP * (i / RING);
        const double b = STEP * (i % RING);
        append(text, "v %.6f %.6f %.6f\n", (3 + std::cos(b)) * std::cos(a), std::sin(b),
               (3 + std::cos(b)) * std::sin(a));
        append(text, "vn %.4f %.4f %.4f\n", std::cos(b) * std::cos(a), std::sin(b), std::cos(b) * std::sin(a));
        append(text, "vt %.6f %.6f\n", static_cast<double>(i / RING) / RING, static_cast<double>(i % RING) / RING);
    }
    for (int i = 0; i < RING * RING; ++i) {
        const int right = i / RING * RING + (i + 1) % RING;
        const int down = (i + RING) % (RING * RING);
        const int both = (right + RING) % (RING * RING);
        for (const auto& [a, b, c] : {std::tuple{i, right, both}, {i, both, down}}) {
            append(text, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a + 1, a + 1, a + 1, b + 1, b + 1, b + 1, c + 1, c + 1,
                   c + 1);
        }
    }
    return text;
}

template <typename Work>
double milliseconds_of(const Work& work) {
    const double start = bench::processor_seconds();
    work();
    return (bench::processor_seconds() - start) * 1e3;
}

}  // namespace

int main() {
    const pelt::test::TempDir dir;
    const std::string path = dir.write("torus.obj", torus());
    double import = 1e9;
    double floor = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        floor = std::min(
            floor, milliseconds_of([&] {
                Assimp::Importer importer;
                if (importer.ReadFile(path, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices) == nullptr) {
                    std::exit(2);
                }
            }));
        import = std::min(import, milliseconds_of([&] {
                              if (!pelt::import_model_file(path, "torus.mod", {}).error.empty()) { std::exit(2); }
                          }));
    }
    const bool is_met =
        bench::row("import of an OBJ of 64,800 triangles", "assimp reads, cuts, joins", import, floor, "ms", GOAL);
    return is_met ? 0 : 1;
}
