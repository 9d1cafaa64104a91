// What must not grow faster than its input: each row is held against the same work on half of it, or on harmless input
// of the same size. Each time is processor time, the best of several rounds in which the two sides take turns.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/report.h"
#include "formats/model_reader.h"
#include "motion/transform_state.h"
#include "scene/model.h"
#include "support/animation_fixture.h"
#include "support/temp_dir.h"
#include "tools/write_losses.h"

namespace {

using namespace pelt;

constexpr int JOINTS = 200000;
constexpr int BLENDS = 60000;
constexpr int BLENDED_JOINTS = 300;
constexpr int KEYS = 60000;
constexpr int ROUNDS = 9;
constexpr double HALF_GOAL = 2.5;
constexpr double CHANCE_GOAL = 2.0;

Model* load(const std::string& path) {
    Model* model = model_load(path.c_str());
    if (model == nullptr) {
        std::fprintf(stderr, "the generated model does not load\n");
        std::exit(2);
    }
    return model;
}

// A chain, each joint with a point.
std::string joints_text(int joints) {
    std::string text = "joint j0 0 0 0 world 1\n";
    for (int i = 1; i < joints; ++i) {
        text += "joint j" + std::to_string(i) + " 0 0 " + std::to_string(i) + " j" + std::to_string(i - 1) + " 1\n";
    }
    text += "points\n";
    for (int i = 1; i <= joints; ++i) { text += std::to_string(i) + " 0 0 0\n"; }
    return text;
}

std::string blends_text(int blends) {
    std::string text;
    for (int i = 0; i < BLENDED_JOINTS; ++i) { text += "joint j" + std::to_string(i) + " 0 0 0 world 0\n"; }
    for (int i = 0; i < blends; ++i) {
        const int a = i % BLENDED_JOINTS;
        const int b = (i / BLENDED_JOINTS + a + 1) % BLENDED_JOINTS;
        text += "blend j" + std::to_string(a) + " j" + std::to_string(b) + " 1\n";
    }
    text += "points\n";
    for (int i = 1; i <= blends; ++i) { text += std::to_string(i) + " 0 0 0\n"; }
    return text;
}

// The number that the bit mixing of MurmurHash3 turns into this one.
uint32_t unmixed(uint32_t mixed) {
    mixed ^= mixed >> 16;
    mixed *= 0x7ed1b41dU;
    mixed ^= mixed >> 13 ^ mixed >> 26;
    mixed *= 0xa5cb9243U;
    return mixed ^ mixed >> 16;
}

// Ids whose low bits are alike behind that mixing, or ids by chance.
std::string ids_text(bool chosen) {
    std::string text = "points\n";
    int count = 0;
    for (uint32_t i = 1; count < KEYS; ++i) {
        const uint32_t id = chosen ? unmixed(i << 15) : i * 2654435761U;
        if (id <= INT32_MAX) {
            text += std::to_string(id) + " 0 0 0\n";
            ++count;
        }
    }
    return text;
}

double time_load(const std::string& path) {
    const double start = bench::processor_seconds();
    Model* model = load(path);
    const double seconds = bench::processor_seconds() - start;
    model_release(model);
    return seconds;
}

// The load, and the first pose.
double time_pose(const std::string& path) {
    Session session;
    test::set_up_lists(&session);
    const double start = bench::processor_seconds();
    Model* model = load(path);
    joints_evaluate(&session, 0.0f, model, nullptr);
    const double seconds = bench::processor_seconds() - start;
    model_release(model);
    test::free_lists(&session);
    return seconds;
}

double time_losses(const std::string& path) {
    Model* model = load(path);
    const double start = bench::processor_seconds();
    const bool lossy = !model_write_losses(model).empty();
    const double seconds = bench::processor_seconds() - start;
    model_release(model);
    return lossy ? seconds : 0.0;
}

struct Sides {
    const char* work;
    const char* against;
    double goal;
};

bool measure(const Sides& sides, const std::string& full, const std::string& base, double (*time)(const std::string&)) {
    double best = 1e9;
    double best_base = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        best_base = std::min(best_base, time(base));
        best = std::min(best, time(full));
    }
    return bench::row(sides.work, sides.against, best * 1e3, best_base * 1e3, "ms", sides.goal);
}

}  // namespace

int main() {
    const test::TempDir dir;
    const std::string joints = dir.write("joints.mod", joints_text(JOINTS));
    const std::string half_joints = dir.write("half_joints.mod", joints_text(JOINTS / 2));
    bool met = measure({"load and pose 200,000 joints", "half of them", HALF_GOAL}, joints, half_joints, time_pose);
    const std::string blends = dir.write("blends.mod", blends_text(BLENDS));
    const std::string half_blends = dir.write("half_blends.mod", blends_text(BLENDS / 2));
    met =
        measure({"losses of a model of 60,000 blends", "half of them", HALF_GOAL}, blends, half_blends, time_losses) &&
        met;
    const std::string chosen = dir.write("chosen.mod", ids_text(true));
    const std::string chance = dir.write("chance.mod", ids_text(false));
    met = measure({"load 60,000 points whose ids were chosen to collide", "ids by chance", CHANCE_GOAL}, chosen, chance,
                  time_load) &&
          met;
    return met ? 0 : 1;
}
