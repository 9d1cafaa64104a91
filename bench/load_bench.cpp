// Speed of loading a model, as ratios within one run: against a floor that does no more than read the same lines, cut
// the words and convert the numbers, and against a model of half the size.
//
// The model is a ring of quads cut in two: every point has a normal, every triangle names its corners, one layer, one
// texture. Each time is processor time, the best of several rounds in which the candidates take turns, so that a busy
// machine disturbs them little and alike.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "formats/model_reader.h"
#include "scene/model.h"
#include "support/temp_dir.h"

namespace {

constexpr int POINTS = 32000;
constexpr int RING = 160;  // points around the tube; POINTS and half of them are multiples of it
constexpr int ROUNDS = 30;
constexpr double FLOOR_GOAL = 3.0;
constexpr double HALF_GOAL = 2.5;
constexpr double TUBE = 3000.0;
constexpr double TORUS = 10000.0;

enum class Corners { BARE, WITH_NORMALS };

void append(std::string& text, const char* format, auto... values) {
    char line[128];
    std::snprintf(line, sizeof line, format, values...);
    text += line;
}

// A torus of the given count of points and twice as many triangles.
std::string model_text(int points, Corners corners) {
    constexpr double TURN = 6.283185307179586;
    const int rings = points / RING;
    std::string places = "points\n";
    std::string normals = "normals\n";
    std::string faces = "layer skin 127 100 80 singlesided\ntriangles\n";
    for (int i = 0; i < points; ++i) {
        const double a = TURN * (i / RING) / rings;
        const double b = TURN * (i % RING) / RING;
        const double reach = TORUS + TUBE * std::cos(b);
        append(places, "%d %d %d %d\n", i + 1, static_cast<int>(reach * std::cos(a)),
               static_cast<int>(reach * std::sin(a)), static_cast<int>(TUBE * std::sin(b)));
        append(normals, "%d %.6f %.6f %.6f\n", i + 1, std::cos(a) * std::cos(b), std::sin(a) * std::cos(b),
               std::sin(b));
        const int next = i / RING * RING + (i + 1) % RING;
        const int quad[4] = {i, next, (i + RING) % points, (next + RING) % points};
        for (int half = 0; half < 2; ++half) {
            const int p = quad[0 + half] + 1;
            const int q = quad[1 + half] + 1;
            const int r = quad[2 + half] + 1;
            if (corners == Corners::WITH_NORMALS) {
                append(faces, "0 %d %d %d %d %d %d\n", p, q, r, p, q, r);
            } else {
                append(faces, "0 %d %d %d\n", p, q, r);
            }
        }
    }
    return places + normals + faces + "image skin.tga x y repeat 4 4\n";
}

std::string texture_bytes() {
    constexpr int SIDE = 16;
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = bytes[14] = SIDE;
    bytes[16] = 24;
    return bytes + std::string(SIDE * SIDE * 3, '\x55');
}

// Reads, cuts and converts, and sums so that nothing is left out. Words are separated by blanks.
double floor_pass(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    char line[1024];
    double sum = 0.0;
    while (std::fgets(line, sizeof line, file) != nullptr) {
        const char* at = line;
        while (*at != '\0') {
            const char* end = at;
            bool number = true;
            bool whole = true;
            for (; *end != ' ' && *end != '\n' && *end != '\0'; ++end) {
                whole = whole && *end != '.';
                number = number && (*end == '.' || *end == '-' || (*end >= '0' && *end <= '9'));
            }
            if (number && whole) {
                int value = 0;
                std::from_chars(at, end, value);
                sum += value;
            } else if (number) {
                double value = 0.0;
                std::from_chars(at, end, value);
                sum += value;
            }
            at = *end == '\0' ? end : end + 1;
        }
    }
    std::fclose(file);
    return sum;
}

double seconds_since(std::clock_t start) {
    return static_cast<double>(std::clock() - start) / static_cast<double>(CLOCKS_PER_SEC);
}

// The load alone is timed; the release of the model is not.
double time_load(const std::string& path) {
    const std::clock_t start = std::clock();
    pelt::Model* model = pelt::model_load(path.c_str());
    const double seconds = seconds_since(start);
    if (model == nullptr) {
        std::fprintf(stderr, "the generated model does not load\n");
        std::exit(2);
    }
    pelt::model_release(model);
    return seconds;
}

double time_floor(const std::string& path) {
    const std::clock_t start = std::clock();
    volatile double sum = floor_pass(path);
    static_cast<void>(sum);
    return seconds_since(start);
}

void report(const char* what, double measured, double base, double goal) {
    const double ratio = measured / base;
    std::printf("%-58s %8.2f ms / %8.2f ms = %5.2f (goal at most %.1f)%s\n", what, measured * 1e3, base * 1e3, ratio,
                goal, ratio <= goal ? "" : "  MISSED");
}

void measure(const pelt::test::TempDir& dir, const char* name, Corners corners) {
    const std::string whole = dir.write("whole.mod", model_text(POINTS, corners));
    const std::string half = dir.write("half.mod", model_text(POINTS / 2, corners));
    double load = 1e9;
    double load_half = 1e9;
    double base = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        load = std::min(load, time_load(whole));
        load_half = std::min(load_half, time_load(half));
        base = std::min(base, time_floor(whole));
    }
    std::printf("%s: %d points, %d triangles\n", name, POINTS, 2 * POINTS);
    report("  load / (read, cut, convert the same text)", load, base, FLOOR_GOAL);
    report("  load / load of half the model", load, load_half, HALF_GOAL);
}

}  // namespace

int main() {
    const pelt::test::TempDir dir;
    dir.write("skin.tga", texture_bytes());
    measure(dir, "corners alone", Corners::BARE);
    measure(dir, "corners with normals", Corners::WITH_NORMALS);
}
