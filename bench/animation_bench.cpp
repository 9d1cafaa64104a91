// Speed of everything that moves, as ratios within one run.
//
// A step of the clock, for a scene of figures whose points all follow a joint, against a plain loop over arrays that
// calls the same transform function as often; the same with points shared by two joints; its growth with the number of
// points; a step at the end of the clips against one at their beginning; and the reading of a clip against two scans
// of its text. Each time is the best of several rounds in which the candidates take turns, so that a busy machine
// disturbs them little. A ratio over its goal makes the exit code 1.
//
// With an argument, "begin" or "end", it makes steps there in one clip of 10,000 frames and measures nothing, so that
// the instructions of scene_evaluate can be counted.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench/report.h"
#include "formats/clip_reader.h"
#include "motion/root_models.h"
#include "motion/transform_state.h"
#include "support/animation_fixture.h"
#include "support/temp_dir.h"

namespace {

using namespace pelt;

constexpr int FIGURES = 24;
constexpr int POINTS = 1000;  // of a figure
constexpr int JOINTS = 20;    // of a figure
constexpr int FRAMES = 300;   // of a clip
constexpr float FRAME_SECONDS = 0.1f;
constexpr int LOADED_TRACKS = 60;
constexpr int ROUNDS = 25;
constexpr int STEPS = 10;  // in a round
constexpr int LONG_FRAMES = 10000;
constexpr double STEP_GOAL = 2.0;
constexpr double GROWTH_GOAL = 2.5;
constexpr double PLACE_GOAL = 1.1;
constexpr double LOAD_GOAL = 3.0;

enum class Skin { ONE_JOINT, TWO_JOINTS };

std::string joint_name(int number) { return "joint" + std::to_string(number); }

Model* make_skeleton(int joints) {
    Model* model = model_create("figure.mod", nullptr);
    for (int i = 0; i < joints; ++i) {
        const std::string parent = i % 5 == 0 ? "world" : joint_name(i - 1);
        model_add_joint(model, joint_name(i).c_str(), 10 * i, 5 * i, 0, parent.c_str(), 0);
    }
    return model;
}

// Points of one joint follow each other, as a reader deals them out.
Model* make_figure(int points, Skin skin) {
    Model* model = make_skeleton(JOINTS);
    for (int i = 0; i < points; ++i) {
        const int joint = i * JOINTS / points;
        model_set_point(model, i + 1, i, 2 * i, 3 * i, skin == Skin::ONE_JOINT ? 1.0f : 0.5f);
        model_set_normal(model, i + 1, 1.0f, static_cast<float>(i % 7), 2.0f);
        model_set_point_joints(model, i + 1, joint_name(joint).c_str(), joint_name((joint + 1) % JOINTS).c_str());
    }
    return model;
}

// A translation, and two turns for each joint, in every frame.
std::string clip_text(int joints, int frames) {
    std::string text = "names translate";
    for (int i = 0; i < joints; ++i) { text.append(" ").append(joint_name(i)); }
    for (int frame = 0; frame < frames; ++frame) {
        char words[64];
        std::snprintf(words, sizeof words, "\n%.1f %d 0 -%d", static_cast<double>(frame) * 0.1, frame, frame % 50);
        text += words;
        for (int i = 0; i < joints; ++i) {
            std::snprintf(words, sizeof words, " %d z%d 0", (frame + i) % 90, (frame * 3 + i) % 90);
            text += words;
        }
    }
    return text + "\n";
}

struct Scene {
    Scene(const test::TempDir& dir, int points, Skin skin, int figures = FIGURES, int frames = FRAMES) {
        dir.write("clip", clip_text(JOINTS, frames));
        test::set_up_lists(&session);
        for (int i = 0; i < figures; ++i) {
            Model* model = make_figure(points, skin);
            ModelAnimation* animation = animation_create(model);
            session.anim_end =
                animation_read_clip(model, &animation->clip, dir.path().c_str(), "clip", 0.0f, HOLD_NONE);
            session_add_root(&session, model, animation);
        }
        if (session.anim_end <= 0.0f) {
            std::fprintf(stderr, "the generated clip does not load: %s\n", animation_error());
            std::exit(2);
        }
    }
    ~Scene() {
        session_release_roots(&session);
        test::free_lists(&session);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // Each step at a time of its own, between two frames from this one on.
    void step(int frame) {
        place = (place + 1) % 7;
        session.anim_time = (static_cast<float>(frame) + 0.1f * static_cast<float>(place + 1)) * FRAME_SECONDS;
        scene_evaluate(&session);
    }

    Session session{};
    int place = 0;
};

// The floor: arrays, and nothing but the transforms of places and normals.
struct Arrays {
    explicit Arrays(int points)
        : skins(JOINTS),
          normal_matrices(JOINTS),
          joints(static_cast<size_t>(points)),
          places(static_cast<size_t>(points)),
          normals(static_cast<size_t>(points)),
          posed_places(static_cast<size_t>(points)),
          posed_normals(static_cast<size_t>(points)) {
        for (size_t i = 0; i < JOINTS; ++i) {
            mat_identity(&skins[i]);
            mat_rotate(&skins[i], static_cast<float>(i), 10.0f, 20.0f);
            normal_matrices[i] = skins[i];
        }
        for (size_t i = 0; i < joints.size(); ++i) {
            joints[i] = i * JOINTS / joints.size();
            places[i] = normals[i] = {static_cast<float>(i), 2.0f, 3.0f};
        }
    }
    void pose(Skin skin) {
        for (size_t i = 0; i < joints.size(); ++i) {
            mat_transform_point(&skins[joints[i]], &places[i], &posed_places[i]);
            mat_transform_point(&normal_matrices[joints[i]], &normals[i], &posed_normals[i]);
            if (skin == Skin::ONE_JOINT) { continue; }
            const size_t other = (joints[i] + 1) % JOINTS;
            Vec3 place, normal;
            mat_transform_point(&skins[other], &places[i], &place);
            mat_transform_point(&normal_matrices[other], &normals[i], &normal);
            blend(place, &posed_places[i]);
            blend(normal, &posed_normals[i]);
        }
    }
    static void blend(const Vec3& other, Vec3* v) {
        *v = {v->x * 0.5f + other.x * 0.5f, v->y * 0.5f + other.y * 0.5f, v->z * 0.5f + other.z * 0.5f};
    }

    std::vector<Mat4> skins;
    std::vector<Mat4> normal_matrices;
    std::vector<size_t> joints;
    std::vector<Vec3> places;
    std::vector<Vec3> normals;
    std::vector<Vec3> posed_places;
    std::vector<Vec3> posed_normals;
};

double seconds_since(double start) { return bench::processor_seconds() - start; }

// Seconds of one step.
double time_steps(Scene* scene, int frame) {
    const double start = bench::processor_seconds();
    for (int i = 0; i < STEPS; ++i) { scene->step(frame); }
    return seconds_since(start) / STEPS;
}

double time_floor(std::vector<Arrays>* figures, Skin skin) {
    const double start = bench::processor_seconds();
    for (int i = 0; i < STEPS; ++i) {
        for (Arrays& figure : *figures) { figure.pose(skin); }
    }
    return seconds_since(start) / STEPS;
}

bool report(const char* work, const char* against, double seconds, double base, double goal) {
    return bench::row(work, against, seconds * 1e3, base * 1e3, "ms", goal);
}

bool measure_step(const test::TempDir& dir, const char* what, Skin skin) {
    Scene scene(dir, POINTS, skin);
    std::vector<Arrays> figures(FIGURES, Arrays(POINTS));
    double step = 1e9;
    double base = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        step = std::min(step, time_steps(&scene, FRAMES / 2));
        base = std::min(base, time_floor(&figures, skin));
    }
    return report(what, "transforms over arrays", step, base, STEP_GOAL);
}

bool measure_growth(const test::TempDir& dir) {
    Scene whole(dir, POINTS, Skin::ONE_JOINT);
    Scene twice(dir, 2 * POINTS, Skin::ONE_JOINT);
    double small = 1e9;
    double large = 1e9;
    double end = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        small = std::min(small, time_steps(&whole, 0));
        large = std::min(large, time_steps(&twice, 0));
        end = std::min(end, time_steps(&whole, FRAMES - 3));
    }
    const bool linear = report("clock step of 24 figures, 2,000 points", "half the points", large, small, GROWTH_GOAL);
    const bool flat =
        report("clock step at the end of clips of 300 frames", "at their beginning", end, small, PLACE_GOAL);
    return linear && flat;
}

// Reads the lines, cuts the words and converts what is a number.
double scan(const std::string& path) {
    double sum = 0.0;
    char line[1024];
    FILE* file = std::fopen(path.c_str(), "rb");
    while (std::fgets(line, sizeof line, file) != nullptr) {
        for (char* word = std::strtok(line, " \n"); word != nullptr; word = std::strtok(nullptr, " \n")) {
            double value = 0.0;
            std::from_chars(word, word + std::strlen(word), value);
            sum += value;
        }
    }
    std::fclose(file);
    return sum;
}

bool measure_load(const test::TempDir& dir) {
    Model* model = make_skeleton(LOADED_TRACKS - 1);
    const std::string path = dir.write("loaded", clip_text(LOADED_TRACKS - 1, FRAMES));
    double load = 1e9;
    double scans = 1e9;
    for (int round = 0; round < ROUNDS; ++round) {
        ModelAnimation* animation = animation_create(model);
        const double start = bench::processor_seconds();
        const float length =
            animation_read_clip(model, &animation->clip, dir.path().c_str(), "loaded", 0.0f, HOLD_NONE);
        load = std::min(load, seconds_since(start));
        if (length <= 0.0f || animation->clip.frame_count != FRAMES) { std::exit(2); }
        animation_release(animation);
        const double scan_start = bench::processor_seconds();
        volatile double sum = scan(path) + scan(path);
        static_cast<void>(sum);
        scans = std::min(scans, seconds_since(scan_start));
    }
    model_release(model);
    return report("read a clip of 300 frames, 60 tracks", "two scans of it", load, scans, LOAD_GOAL);
}

}  // namespace

int main(int argc, char** argv) {
    const test::TempDir dir;
    if (argc > 1) {
        Scene scene(dir, 1, Skin::ONE_JOINT, 1, LONG_FRAMES);  // hardly any points, so that the keys count
        const int first = std::strcmp(argv[1], "end") == 0 ? LONG_FRAMES - 3 : 0;
        for (int i = 0; i < 200; ++i) { scene.step(first); }
        // The figure moves by one in each frame: it is where that part of the clip puts it.
        for (const ModelState& state : list_elements<ModelState>(scene.session.model_states)) {
            const float x = state.matrix.m[3];
            if (x > static_cast<float>(first) && x < static_cast<float>(first + 1)) { return 0; }
            std::fprintf(stderr, "the figure stands at %g\n", static_cast<double>(x));
        }
        return 2;
    }
    const bool one = measure_step(dir, "clock step of 24 figures, 1,000 points, 20 joints", Skin::ONE_JOINT);
    const bool two = measure_step(dir, "the same, every point of two joints", Skin::TWO_JOINTS);
    const bool growth = measure_growth(dir);
    const bool load = measure_load(dir);
    return one && two && growth && load ? 0 : 1;
}
