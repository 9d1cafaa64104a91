// Speed of loading a scene of many models, as a ratio within one run: 1,000 models of 500 triangles against the same
// number of triangles in 16 models, each model added to a scene that stands, as the script does it. Each time
// is the best of several rounds in which the two take turns.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "bench/report.h"
#include "motion/root_models.h"
#include "support/temp_dir.h"

namespace {

constexpr int TRIANGLES = 500000;  // in each scene
constexpr int MANY = 1000;
constexpr int FEW = 16;
constexpr int COLUMNS = 25;  // points of a row; a model has as many points as half its triangles, cut to whole rows
constexpr int ROUNDS = 7;
constexpr double GOAL = 1.5;

void append(std::string& text, const char* format, auto... values) {
    char line[128];
    std::snprintf(line, sizeof line, format, values...);
    text += line;
}

// A band closed in both directions: two triangles for each point.
std::string model_text(int triangles) {
    const int points = triangles / 2;
    std::string text = "points\n";
    for (int i = 0; i < points; ++i) {
        append(text, "%d %d %d %d\n", i + 1, i % COLUMNS * 10, i / COLUMNS * 10, i % 7);
    }
    text += "normals\n";
    for (int i = 0; i < points; ++i) { append(text, "%d 0.6 0.0 0.8\n", i + 1); }
    text += "layer skin 127 100 80 singlesided\ntriangles\n";
    for (int i = 0; i < points; ++i) {
        const int corners[4] = {i, (i + 1) % points, (i + COLUMNS) % points, (i + COLUMNS + 1) % points};
        append(text, "0 %d %d %d\n", corners[0] + 1, corners[1] + 1, corners[2] + 1);
        append(text, "0 %d %d %d\n", corners[1] + 1, corners[2] + 1, corners[3] + 1);
    }
    return text;
}

std::vector<std::string> write_models(const pelt::test::TempDir& dir, int models) {
    std::vector<std::string> paths;
    const std::string text = model_text(TRIANGLES / models / 2 * 2);
    for (int i = 0; i < models; ++i) {
        paths.push_back(dir.write("m" + std::to_string(models) + "_" + std::to_string(i) + ".mod", text));
    }
    return paths;
}

double time_scene(const std::vector<std::string>& paths) {
    static pelt::Session session;
    pelt::session_init(&session);
    const double start = bench::processor_seconds();
    for (const std::string& path : paths) {
        if (pelt::session_load_model(&session, path.c_str()) == 0) {
            std::fprintf(stderr, "a generated model does not load\n");
            std::exit(2);
        }
    }
    const double milliseconds = 1e3 * (bench::processor_seconds() - start);
    pelt::session_close_all(&session);
    return milliseconds;
}

}  // namespace

int main() {
    const pelt::test::TempDir dir;
    const std::vector<std::string> many = write_models(dir, MANY);
    const std::vector<std::string> few = write_models(dir, FEW);
    double time_many = 1e9, time_few = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        time_many = std::min(time_many, time_scene(many));
        time_few = std::min(time_few, time_scene(few));
    }
    return bench::row("load 1,000 models of 500 triangles", "as many triangles in 16 models", time_many, time_few, "ms",
                      GOAL)
               ? 0
               : 1;
}
