// Speed of loading a model, as ratios within one run: against a floor that does no more than read the same lines, cut
// the words, convert the numbers and read the bytes of the texture, and against a model of half the size, with half the
// texture; and the memory that the loaded model holds, against the bytes of its records and of the
// file, which is kept for a save.
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
#include <vector>

#include <malloc.h>

#include "bench/report.h"
#include "formats/model_reader.h"
#include "scene/model.h"
#include "support/temp_dir.h"

namespace {

constexpr int POINTS = 32000;
constexpr int RING = 160;  // points around the tube; POINTS and half of them are multiples of it
constexpr int ROUNDS = 30;
constexpr int TEXTURE_SIDE = 256;
constexpr size_t FLOOR_BLOCK = 65536;
constexpr double FLOOR_GOAL = 2.0;
constexpr double HALF_GOAL = 2.2;
constexpr double MEMORY_GOAL = 1.6;
constexpr double TUBE = 3000.0;
constexpr double TORUS = 10000.0;

enum class Corners { BARE, WITH_NORMALS };

void append(std::string& text, const char* format, auto... values) {
    char line[128];
    std::snprintf(line, sizeof line, format, values...);
    text += line;
}

// A torus of the given count of points and twice as many triangles.
std::string model_text(int points, Corners corners, const char* texture) {
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
    return places + normals + faces + "image " + texture + " x y repeat 4 4\n";
}

// An uncompressed TGA of true colour.
std::string texture_bytes(int rows) {
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = static_cast<char>(TEXTURE_SIDE & 255);
    bytes[13] = static_cast<char>(TEXTURE_SIDE >> 8);
    bytes[14] = static_cast<char>(rows & 255);
    bytes[15] = static_cast<char>(rows >> 8);
    bytes[16] = 24;
    return bytes + std::string(static_cast<size_t>(TEXTURE_SIDE * rows * 3), '\x55');
}

// Reads, cuts and converts, and sums so that nothing is left out. Words are separated by blanks; one that begins like a
// number is one. The file comes in blocks of the size that the library reads.
double floor_pass(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    static char block[FLOOR_BLOCK];
    std::setvbuf(file, block, _IOFBF, sizeof block);
    char line[1024];
    double sum = 0.0;
    while (std::fgets(line, sizeof line, file) != nullptr) {
        const char* at = line;
        while (*at != '\0') {
            const char* end = at;
            const bool number = *at == '-' || (*at >= '0' && *at <= '9');
            bool whole = true;
            for (; *end != ' ' && *end != '\n' && *end != '\0'; ++end) { whole = whole && *end != '.'; }
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

// Reads the bytes and takes them all in.
double floor_texture(const std::string& path) {
    static std::vector<unsigned char> bytes(18 + TEXTURE_SIDE * TEXTURE_SIDE * 3);
    FILE* file = std::fopen(path.c_str(), "rb");
    const size_t count = std::fread(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    return static_cast<double>(count) + bytes[count - 1];
}

pelt::Model* load(const std::string& path) {
    pelt::Model* model = pelt::model_load(path.c_str());
    if (model == nullptr) {
        std::fprintf(stderr, "the generated model does not load\n");
        std::exit(2);
    }
    return model;
}

// The load alone is timed; the release of the model is not.
double time_load(const std::string& path) {
    const std::clock_t start = std::clock();
    pelt::Model* model = load(path);
    const double seconds = seconds_since(start);
    pelt::model_release(model);
    return seconds;
}

double time_floor(const std::string& path, const std::string& texture) {
    const std::clock_t start = std::clock();
    volatile double sum = floor_pass(path) + floor_texture(texture);
    static_cast<void>(sum);
    return seconds_since(start);
}

struct Names {
    const char* floor;
    const char* half;
};

bool measure(const pelt::test::TempDir& dir, const Names& names, Corners corners) {
    const std::string texture = dir.write("whole.tga", texture_bytes(TEXTURE_SIDE));
    dir.write("half.tga", texture_bytes(TEXTURE_SIDE / 2));
    const std::string whole = dir.write("whole.mod", model_text(POINTS, corners, "whole.tga"));
    const std::string half = dir.write("half.mod", model_text(POINTS / 2, corners, "half.tga"));
    double time = 1e9;
    double time_half = 1e9;
    double base = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        time = std::min(time, time_load(whole));
        time_half = std::min(time_half, time_load(half));
        base = std::min(base, time_floor(whole, texture));
    }
    const bool near_floor =
        bench::row(names.floor, "read, cut, convert; texture bytes", time * 1e3, base * 1e3, "ms", FLOOR_GOAL);
    return bench::row(names.half, "half the size", time * 1e3, time_half * 1e3, "ms", HALF_GOAL) && near_floor;
}

// Bytes that the allocator has handed out, also in blocks of their own.
double bytes_in_use() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

bool measure_memory(const pelt::test::TempDir& dir, int points, const char* what, double goal) {
    dir.write("held.tga", texture_bytes(TEXTURE_SIDE));
    const std::string path = dir.write("held.mod", model_text(points, Corners::WITH_NORMALS, "held.tga"));
    pelt::model_release(load(path));
    const double before = bytes_in_use();
    pelt::Model* model = load(path);
    const double held = bytes_in_use() - before;
    pelt::model_release(model);
    const double records = static_cast<double>(sizeof(pelt::Model) + sizeof(pelt::Layer) + sizeof(pelt::LayerImage)) +
                           points * static_cast<double>(sizeof(pelt::Point)) +
                           2.0 * points * static_cast<double>(sizeof(pelt::Triangle)) +
                           TEXTURE_SIDE * TEXTURE_SIDE * 3.0 + static_cast<double>(dir.read("held.mod").size());
    return bench::row(what, "bytes of its records and its file", held / 1e6, records / 1e6, "MB", goal);
}

}  // namespace

int main() {
    const pelt::test::TempDir dir;
    constexpr Names BARE{"load 32,000 points, 64,000 triangles", "the same load"};
    constexpr Names FULL{"load the same with corner normals", "the same load with corner normals"};
    bool met = measure(dir, BARE, Corners::BARE);
    met = measure(dir, FULL, Corners::WITH_NORMALS) && met;
    met = measure_memory(dir, POINTS, "memory: 32,000 points, 64,000 triangles", MEMORY_GOAL) && met;
    // Just over a power of two, where half of the room is empty: no goal, but it should be known.
    measure_memory(dir, 16640, "memory: 16,640 points, 33,280 triangles", 0.0);
    return met ? 0 : 1;
}
