// Speed of a frame, as ratios within one run: emitting one frame of a textured model of 64,000 flat triangles against
// making the same recorded calls out of an array, both on an OpenGL whose functions return at once; and the frame with
// a reflection map against the same frame without.
//
// Each time is the best of several rounds in which the two take turns, so that a busy machine disturbs them alike. A
// ratio over its goal makes the exit code 1.
//
// With "--pack FILE" it writes the calls of the plain frame to a file and measures nothing: bench/mesa_bench.cpp makes
// them again on a real OpenGL.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "bench/frame_scene.h"
#include "bench/packed_calls.h"
#include "bench/report.h"
#include "support/recording_gl.h"

namespace {

using bench::FrameScene;
using bench::Kind;

constexpr int ROUNDS = 60;
constexpr double REPLAY_GOAL = 1.5;
constexpr double POSED_GOAL = 2.0;  // a third record for each corner
constexpr double REFLECTION_GOAL = 4.0;
constexpr double QUERY_GOAL = 1.0;

double time_frame() {
    const double start = bench::processor_seconds();
    pelt::frame_draw();
    return (bench::processor_seconds() - start) * 1e3;
}

double time_replay(const recording_gl::Packed& calls) {
    const double start = bench::processor_seconds();
    recording_gl::replay(calls);
    return (bench::processor_seconds() - start) * 1e3;
}

// In the mode that takes the least room while the scene is set up.
void fresh_gl() {
    recording_gl::reset();
    recording_gl::set_mode(recording_gl::Mode::pack);
}

recording_gl::Packed packed_frame() {
    recording_gl::set_mode(recording_gl::Mode::pack);
    pelt::frame_draw();
    return recording_gl::packed();
}

void require_triangles(const FrameScene& scene) {
    if (scene.session.triangles_drawn != bench::TRIANGLES) {
        std::fprintf(stderr, "%d triangles were drawn\n", static_cast<int>(scene.session.triangles_drawn));
        std::exit(2);
    }
}

bool measure_replay(const char* work, Kind kind, double goal, unsigned char* texels) {
    fresh_gl();
    FrameScene scene(kind, texels);
    const recording_gl::Packed calls = packed_frame();
    require_triangles(scene);
    recording_gl::set_mode(recording_gl::Mode::silent);
    double frame = 1e9, replay = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        frame = std::min(frame, time_frame());
        replay = std::min(replay, time_replay(calls));
    }
    return bench::row(work, "replay of its calls", frame, replay, "ms", goal);
}

// Of all state variables, how often the one was asked for that was asked for most.
int most_frequent_query() {
    std::map<std::string, int> counts;
    int most = 0;
    for (const recording_gl::Call& call : recording_gl::calls()) {
        if (std::strncmp(recording_gl::function_name(call.function), "glGet", 5) != 0) { continue; }
        most = std::max(most, ++counts[recording_gl::call_text(call)]);
    }
    return most;
}

bool measure_reflection(unsigned char* texels) {
    fresh_gl();
    FrameScene scene(Kind::REFLECTING, texels);
    recording_gl::set_mode(recording_gl::Mode::record);
    pelt::frame_draw();
    const int queries = most_frequent_query();
    recording_gl::clear();
    recording_gl::set_mode(recording_gl::Mode::silent);
    double with = 1e9, without = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        scene.session.display_reflect = 1;
        with = std::min(with, time_frame());
        scene.session.display_reflect = 0;
        without = std::min(without, time_frame());
    }
    const bool fast =
        bench::row("frame with a reflection map", "the same without", with, without, "ms", REFLECTION_GOAL);
    return bench::row("queries of one state variable, reflecting", "primitives", queries, bench::TRIANGLES, "calls",
                      QUERY_GOAL) &&
           fast;
}

int pack(const char* path, unsigned char* texels) {
    fresh_gl();
    FrameScene scene(Kind::PLAIN, texels);
    const bool done = bench::write_calls(path, packed_frame());
    require_triangles(scene);
    return done ? 0 : 2;
}

}  // namespace

int main(int argc, char** argv) {
    unsigned char* texels = bench::texels_at_fixed_address(bench::TEXTURE_BYTES);
    if (argc == 3 && std::strcmp(argv[1], "--pack") == 0) { return pack(argv[2], texels); }
    bool met = measure_replay("frame of 64,000 textured triangles", Kind::PLAIN, REPLAY_GOAL, texels);
    met = measure_replay("the same with vertex colours", Kind::GOURAUD, REPLAY_GOAL, texels) && met;
    met = measure_replay("the same, every point posed", Kind::POSED, POSED_GOAL, texels) && met;
    met = measure_reflection(texels) && met;
    return met ? 0 : 1;
}
