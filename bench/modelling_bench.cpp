// Speed of a drag: 1,000 points of a model of 32,000 points and 64,000 triangles are moved, with a history that keeps
// where they were and with all that follows (the model's box, and the run-time records of the triangles around, which
// are found among all), against a plain loop over the points of the model that finds each by its id and adds to its
// place, and nothing else. Each time is the best of several rounds in which the two take turns.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "application/session_lifecycle.h"
#include "bench/report.h"
#include "edit/history.h"
#include "edit/move_points.h"
#include "formats/model_reader.h"
#include "motion/root_models.h"
#include "scene/vertex.h"
#include "support/temp_dir.h"

namespace {

using pelt::Model;
using pelt::Point;

constexpr int POINTS = 32000;
constexpr int MOVED = 1000;
constexpr int COLUMNS = 200;
constexpr int ROUNDS = 60;
constexpr double GOAL = 12.0;

void append(std::string& text, const char* format, auto... values) {
    char line[128];
    std::snprintf(line, sizeof line, format, values...);
    text += line;
}

// A band closed in both directions: two triangles for each point.
std::string model_text() {
    std::string text = "points\n";
    for (int i = 0; i < POINTS; ++i) {
        append(text, "%d %d %d %d\n", i + 1, i % COLUMNS * 10, i / COLUMNS * 10, i % 7);
    }
    text += "layer skin 127 100 80 singlesided\ntriangles\n";
    for (int i = 0; i < POINTS; ++i) {
        const int corners[4] = {i, (i + 1) % POINTS, (i + COLUMNS) % POINTS, (i + COLUMNS + 1) % POINTS};
        append(text, "0 %d %d %d\n", corners[0] + 1, corners[1] + 1, corners[2] + 1);
        append(text, "0 %d %d %d\n", corners[1] + 1, corners[2] + 1, corners[3] + 1);
    }
    return text;
}

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(2);
    }
}

// What a frame leaves behind.
void draw(pelt::Session* session, Model* model) {
    for (pelt::Layer& layer : pelt::list_elements<pelt::Layer>(model->layers)) {
        for (pelt::Triangle& triangle : pelt::list_elements<pelt::Triangle>(layer.triangles)) {
            pelt::triangle_cache_get(session, model, &triangle);
        }
    }
}

double time_move(pelt::Session* session, Model* model, const std::vector<int32_t>& ids) {
    pelt::EditRefusal refused;
    const double start = bench::processor_seconds();
    pelt::history_command_begin("move points", true);
    const bool done = pelt::edit_point_places(session, model, ids, pelt::moved_by({1, 2, 3}), {}, &refused);
    pelt::history_command_end();
    const double time = bench::processor_seconds() - start;
    require(done, "the points were not moved");
    return time;
}

double time_loop(Model* model) {
    const double start = bench::processor_seconds();
    for (int32_t id = 1; id <= POINTS; ++id) {
        Point* point = pelt::list_find<Point>(&model->points, id);
        point->position.x += 1.0f;
        point->position.y += 2.0f;
        point->position.z += 3.0f;
    }
    return bench::processor_seconds() - start;
}

}  // namespace

int main() {
    const pelt::test::TempDir dir;
    static pelt::Session session;
    pelt::session_init(&session);
    pelt::history_attach(&session);
    Model* model = pelt::model_load(dir.write("band.mod", model_text()).c_str());
    require(model != nullptr, "the generated model does not load");
    pelt::session_add_root(&session, model, nullptr);
    std::vector<int32_t> ids;
    for (int i = 0; i < MOVED; ++i) { ids.push_back(POINTS / 2 + i); }
    double move = 1e9, loop = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        draw(&session, model);
        move = std::min(move, time_move(&session, model, ids));
        loop = std::min(loop, time_loop(model));
    }
    require(pelt::history_state().position == ROUNDS, "a move is not a step");
    const bool good =
        bench::row("move 1,000 points of 32,000", "a loop over the points", move * 1e3, loop * 1e3, "ms", GOAL);
    pelt::history_detach();
    pelt::session_reset(&session, 0);
    return good ? 0 : 1;
}
