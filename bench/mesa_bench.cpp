// Speed of a frame on a real OpenGL, Mesa's software renderer as a rule, swap included, against the replay of the same
// calls on it: the medians of rounds in which the two take turns.
//   bench_mesa FILE          with the calls that "bench_frame --pack FILE" wrote, on a display
#include <cstdio>
#include <cstdlib>

#include "bench/frame_scene.h"
#include "bench/glx_window.h"
#include "bench/packed_calls.h"
#include "bench/report.h"

namespace {

constexpr int ROUNDS = 25;
constexpr double GOAL = 1.15;
constexpr size_t PIXELS_MIN = 100000;  // of a picture in which the model can be seen

// Pixels of the picture that are not background.
size_t drawn_pixels() {
    std::vector<unsigned char> bytes(size_t{bench::WIDTH} * bench::HEIGHT * 4);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, bench::WIDTH, bench::HEIGHT, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    size_t count = 0;
    for (size_t i = 0; i < bytes.size(); i += 4) { count += (bytes[i] | bytes[i + 1] | bytes[i + 2]) != 0 ? 1 : 0; }
    return count;
}

template <typename Draw>
double time_shown(const bench::GlxWindow& window, Draw draw) {
    const auto start = std::chrono::steady_clock::now();
    draw();
    glXSwapBuffers(window.display, window.window);
    glFinish();
    return bench::milliseconds_since(start);
}

}  // namespace

int main(int argc, char** argv) {
    const recording_gl::Packed calls = argc == 2 ? bench::read_calls(argv[1]) : recording_gl::Packed{};
    if (calls.empty()) {
        std::fprintf(stderr, "usage: bench_mesa FILE, written by bench_frame --pack FILE\n");
        return 2;
    }
    const bench::GlxWindow window = bench::open_glx_window(bench::WIDTH, bench::HEIGHT);
    if (window.display == nullptr) {
        std::fprintf(stderr, "no window with OpenGL\n");
        return 2;
    }
    std::printf("version\topengl\t%s, %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)),
                reinterpret_cast<const char*>(glGetString(GL_VERSION)));
    bench::FrameScene scene(bench::Kind::PLAIN, bench::texels_at_fixed_address(bench::TEXTURE_BYTES));
    glViewport(0, 0, bench::WIDTH, bench::HEIGHT);
    pelt::frame_draw();
    pelt::frame_draw();
    const size_t drawn = drawn_pixels();
    recording_gl::replay(calls);
    if (drawn < PIXELS_MIN || drawn_pixels() != drawn) {
        std::fprintf(stderr, "%zu pixels were drawn, and not as many by the replay\n", drawn);
        return 2;
    }
    std::vector<double> frames, replays;
    for (int round = 0; round < ROUNDS; ++round) {
        frames.push_back(time_shown(window, [] { pelt::frame_draw(); }));
        replays.push_back(time_shown(window, [&] { recording_gl::replay(calls); }));
    }
    if (scene.session.triangles_drawn != bench::TRIANGLES || glGetError() != GL_NO_ERROR) {
        std::fprintf(stderr, "the frame was not drawn\n");
        return 2;
    }
    const double frame = bench::median(frames), replay = bench::median(replays);
    return bench::row("the same frame on that renderer, swap included", "the replay on it", frame, replay, "ms", GOAL)
               ? 0
               : 1;
}
