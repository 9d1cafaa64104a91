// Speed of baking mirrors and of rebuilding normals, as ratios within one run: against loading the same model, and
// against a model of half the points. Both operations are told as a search through all points for each corner; these
// ratios show that they are not done that way.
//
// The model has two halves that mirror each other exactly. Two layers hold the right half and are mirrored; the first
// takes its normals from other points, so that places and normals are both looked for, and the second has its own. In
// the first form all mirrored points are there already; in the second they have to be made, and both layers have their
// own normals.
//
// Each time is the best of several rounds in which the candidates take turns, so that a busy machine disturbs them
// alike. A ratio over its goal makes the exit code 1.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/report.h"
#include "formats/model_reader.h"
#include "reduce/bake_mirror.h"
#include "reduce/normals.h"
#include "scene/model.h"
#include "support/temp_dir.h"

namespace {

constexpr int POINTS = 30000;
constexpr int COLUMNS = 75;  // POINTS, its half and its quarter are multiples of it
constexpr int ROUNDS = 9;
constexpr double LOAD_GOAL = 10.0;
constexpr double HALF_GOAL = 2.5;

enum class Mirrored { THERE, MISSING };

void append(std::string& text, const char* format, auto... values) {
    char line[128];
    std::snprintf(line, sizeof line, format, values...);
    text += line;
}

// A bumpy sheet; id runs from 1 over all its points.
void append_sheet(std::string& places, std::string& normals, int first_id, int count, int side) {
    for (int i = 0; i < count; ++i) {
        const int column = i % COLUMNS;
        const int row = i / COLUMNS;
        const int depth = 1000 + (column * column + 3 * row) % 97;
        append(places, "%d %d %d %d\n", first_id + i, side * depth, 10 * column, 10 * row);
        append(normals, "%d %.6f %.6f %.6f\n", first_id + i, side * 1.0, std::sin(i * 0.01), std::cos(i * 0.013));
    }
}

// Triangles of a sheet, one in each of its cells.
std::string face_lines(int sheet, bool own_normals) {
    std::string faces = "triangles\n";
    for (int i = 0; i + COLUMNS + 1 < sheet; ++i) {
        if (i % COLUMNS == COLUMNS - 1) { continue; }
        if (own_normals) {
            append(faces, "0 %d %d %d\n", i + COLUMNS + 1, i + 2, i + COLUMNS + 2);
        } else {
            append(faces, "0 %d %d %d %d %d %d\n", i + 1, i + 2, i + COLUMNS + 1, i + 2, i + COLUMNS + 1, i + 1);
        }
    }
    return faces;
}

std::string model_text(int points, Mirrored mirrored) {
    const int sheet = points / 2;
    std::string places = "points\n";
    std::string normals = "normals\n";
    append_sheet(places, normals, 1, sheet, 1);
    if (mirrored == Mirrored::THERE) { append_sheet(places, normals, 1 + sheet, sheet, -1); }
    return places + normals + "layer skin 127 100 80 singlesided mirror x\n" +
           face_lines(sheet, mirrored == Mirrored::MISSING) + "layer shirt 127 100 80 singlesided mirror x\n" +
           face_lines(sheet, true);
}

template <typename Work>
double seconds(Work work) {
    const double start = bench::processor_seconds();
    work();
    return bench::processor_seconds() - start;
}

struct Times {
    double load = 1e9;
    double bake = 1e9;
    double rebuild = 1e9;
};

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(2);
    }
}

void run_round(const std::string& path, int points, Times* best) {
    pelt::Model* model = nullptr;
    best->load = std::min(best->load, seconds([&] { model = pelt::model_load(path.c_str()); }));
    require(model != nullptr, "the generated model does not load");
    int done = 0;
    best->bake = std::min(best->bake, seconds([&] { done = pelt::model_bake_mirror(model); }));
    require(done == 1, "the mirror was not baked");
    const int32_t found = pelt::model_count_points(model);
    require(found >= points - COLUMNS && found <= points + points / 10, "the baked model has another number of points");
    best->rebuild = std::min(best->rebuild, seconds([&] { done = pelt::model_rebuild_normals(model); }));
    require(done == 1, "the normals were not rebuilt");
    pelt::model_release(model);
}

bool measure(const pelt::test::TempDir& dir, const char* name, Mirrored mirrored) {
    const std::string whole_path = dir.write("whole.mod", model_text(POINTS, mirrored));
    const std::string half_path = dir.write("half.mod", model_text(POINTS / 2, mirrored));
    Times whole;
    Times half;
    for (int round = 0; round < ROUNDS; ++round) {
        run_round(whole_path, POINTS, &whole);
        run_round(half_path, POINTS / 2, &half);
    }
    const std::string bake = std::string("bake a mirror of 30,000 points, ") + name;
    const std::string rebuild = std::string("rebuild their normals, ") + name;
    const auto row = [](const std::string& work, const char* against, double time, double base, double goal) {
        return bench::row(work.c_str(), against, time * 1e3, base * 1e3, "ms", goal);
    };
    bool good = row(bake, "load", whole.bake, whole.load, LOAD_GOAL);
    good &= row(bake, "half the points", whole.bake, half.bake, HALF_GOAL);
    good &= row(rebuild, "load", whole.rebuild, whole.load, LOAD_GOAL);
    good &= row(rebuild, "half the points", whole.rebuild, half.rebuild, HALF_GOAL);
    return good;
}

}  // namespace

int main() {
    const pelt::test::TempDir dir;
    const bool there = measure(dir, "mirrored points there", Mirrored::THERE);
    const bool missing = measure(dir, "mirrored points made", Mirrored::MISSING);
    return there && missing ? 0 : 1;
}
