// pelt-model flatten: reduces a model to the plainest form of the format.
//
// What surprises: before points are renumbered they are put in joint order here, because the operation gives right
// results for points in that order only, and the steps before it add points at the end. It leaves lines and texture
// coordinates with the old numbers, which are carried over here too.
#include <algorithm>
#include <memory>
#include <unordered_map>

#include "commands.h"
#include "console.h"
#include "formats/texture_map.h"
#include "foundation/key_hash.h"
#include "foundation/load_error.h"
#include "model_files.h"
#include "reduce/bake_mirror.h"
#include "reduce/flatten.h"
#include "reduce/flatten_limits.h"
#include "reduce/tessellate.h"

namespace pelt::tool {

namespace {

constexpr int TESSELLATION_LEVEL = 1;

// ---- renumbering ----

// Puts the list of points in joint order, those of no joint last; ids and everything else stay.
void order_points_by_joint(Model* model) {
    std::unordered_map<const Joint*, int32_t> ranks;
    for (const Joint& joint : list_elements<Joint>(model->joints)) {
        ranks.emplace(&joint, static_cast<int32_t>(ranks.size()));
    }
    struct Place {
        int32_t rank;
        int32_t id;
        const Point* point;
    };
    std::vector<Place> places;
    const ListElements<Point> points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) {
        const auto rank = ranks.find(point->joint_a);
        places.push_back({rank != ranks.end() ? rank->second : INT32_MAX, point.int_key(), &*point});
    }
    std::stable_sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.rank < b.rank; });
    KeyedList ordered{};
    list_init(&ordered, sizeof(Point), KEY_INT);
    for (const Place& place : places) { *list_add<Point>(&ordered, place.id) = *place.point; }
    list_free(&model->points);
    model->points = ordered;
}

using NewNumbers = std::unordered_map<int32_t, int32_t, KeyHash>;

NewNumbers new_numbers(const Model* model) {
    NewNumbers numbers;
    int32_t number = 0;
    const ListElements<Point> points = list_elements<Point>(model->points);
    for (auto point = points.begin(); point != points.end(); ++point) { numbers[point.int_key()] = ++number; }
    return numbers;
}

int32_t number_of(const NewNumbers& numbers, int32_t id) {
    const auto found = numbers.find(id);
    return found != numbers.end() ? found->second : 0;
}

void renumber_lines_and_uvees(Model* model, const NewNumbers& numbers) {
    for (Layer& layer : list_elements<Layer>(model->layers)) {
        for (const Line& line : list_elements<Line>(layer.lines)) {
            for (int32_t& stored : list_elements<int32_t>(line.vertices)) {
                stored = number_of(numbers, line_point_id(stored));
            }
        }
        KeyedList uvees;
        list_init(&uvees, sizeof(Uvee), KEY_INT);
        for (const Uvee& old : list_elements<Uvee>(layer.uvees)) {
            const int32_t number = number_of(numbers, old.point);
            if (number > 0) { *list_add<Uvee>(&uvees, number) = Uvee{number, old.u, old.v}; }
        }
        list_free(&layer.uvees);
        layer.uvees = uvees;
    }
}

int renumber(Model* model) {
    if (list_count(&model->joints) == 0) {
        return 1;  // nothing to do, which the operation calls a failure
    }
    order_points_by_joint(model);
    const NewNumbers numbers = new_numbers(model);
    if (!model_renumber_points(model)) { return 0; }
    renumber_lines_and_uvees(model, numbers);
    return 1;
}

// ---- the other steps ----

int tessellate(Model* model) { return model_tessellate(model, TESSELLATION_LEVEL); }

// What hangs below the model becomes flat before it is merged: its curves follow its own normals, not those that a
// placement turned. Mirrors come first, as they do in the model itself.
int bake_children(const Model* model) {
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model != nullptr &&
            !(bake_children(link.model) && model_bake_mirror(link.model) && tessellate(link.model))) {
            return 0;
        }
    }
    return 1;
}

// Merged layers bring their texture coordinates as uvees; the map takes them to the corners, where later steps look.
int flatten(Model* model) {
    if (!bake_children(model) || !model_flatten(model)) { return 0; }
    for (const Layer& layer : list_elements<Layer>(model->layers)) { layer_map_uvees(model, layer.name); }
    return 1;
}

struct Step {
    const char* name;
    int (*run)(Model* model);
    bool in_pipeline;
};

constexpr Step STEPS[] = {
    {"mirror", model_bake_mirror, true},
    {"tessellate", tessellate, true},
    {"triangulate", model_triangulate, false},
    {"flatten", flatten, true},
    {"split-normals", model_split_normals, true},
    {"uvees", model_store_uvees, true},
    {"renumber", renumber, true},
};

struct FlattenOptions {
    std::string input;
    ModelOutput output;
    std::vector<std::string> only;
};

std::vector<const Step*> chosen_steps(const FlattenOptions& options) {
    std::vector<const Step*> chosen;
    for (const Step& step : STEPS) {
        if (options.only.empty() && step.in_pipeline) { chosen.push_back(&step); }
    }
    for (const std::string& name : options.only) {
        for (const Step& step : STEPS) {
            if (name == step.name) { chosen.push_back(&step); }
        }
    }
    return chosen;
}

bool has_lines(const Model* model) {
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        if (list_count(&layer.lines) > 0) { return true; }
    }
    return false;
}

void warn_of_children(const Model* model, const std::string& input) {
    for (const ChildLink& link : list_elements<ChildLink>(model->children)) {
        if (link.model == nullptr) { continue; }
        const std::string name = std::string("child ") + link.name + ": ";
        if (list_count(&link.model->joints) > 0) { print_warning(input, name + "its joints are not carried over"); }
        if (has_lines(link.model)) { print_warning(input, name + "its lines are not carried over"); }
        warn_of_children(link.model, input);
    }
}

bool ids_fit(const Model* model) { return model_highest_point(model) <= POINT_ID_LIMIT; }

int run_flatten(const FlattenOptions& options) {
    const ModelOwner model = load_model(options.input);
    if (model == nullptr) { return STATUS_BAD_MODEL; }
    const bool has_children = list_count(&model->children) > 0;
    if (!ids_fit(model.get())) {
        print_report(options.input + ": point ids above " + std::to_string(POINT_ID_LIMIT) + "; nothing is written");
        return STATUS_BAD_MODEL;
    }
    for (const Step* step : chosen_steps(options)) {
        if (has_children && step->run == flatten) { warn_of_children(model.get(), options.input); }
        load_error_set(nullptr);
        if (!step->run(model.get()) || !ids_fit(model.get())) {
            const char* reason = load_error_get();
            print_report(options.input + ": " + step->name + ": " + (reason != nullptr ? reason : "the step failed") +
                         "; nothing is written");
            return STATUS_BAD_MODEL;
        }
    }
    return save_model(model.get(), options.input, options.output);
}

}  // namespace

void add_flatten(CLI::App& program, int* status) {
    auto options = std::make_shared<FlattenOptions>();
    CLI::App* command = program.add_subcommand("flatten", "Reduce a model to plain triangles, without children");
    command->add_option("IN", options->input, "model file (.mod)")->required();
    add_model_output(command, &options->output);
    std::vector<std::string> names;
    for (const Step& step : STEPS) { names.emplace_back(step.name); }
    command->add_option("--only", options->only, "run these steps alone, in the order given")
        ->delimiter(',')
        ->allow_extra_args(false)  // the word behind the steps is the model
        ->check(CLI::IsMember(names))
        ->type_name("STEP[,STEP...]");
    command->footer(
        "Runs all steps but triangulate, in this order:\n"
        "  mirror         mirrored layers become layers of their own, NAME_mirror\n"
        "  tessellate     curved primitives become flat ones, each curved edge cut in two\n"
        "  triangulate    quads and polygons become triangles (part of flatten)\n"
        "  flatten        triangulate, then the child models are merged in, their mirrors and curves baked\n"
        "                 as above, their layers as NUMBER_NAME\n"
        "  split-normals  a corner with the normal of another point gets a point of its own\n"
        "  uvees          texture coordinates are stored point by point\n"
        "  renumber       points are put in joint order and numbered from 1 (models with joints)\n"
        "New points have whole coordinates. A step that would need point ids above 32767 is refused, and nothing is\n"
        "written. What the format cannot hold is named in warnings, as by pelt-model write.\n\n"
        "Examples:\n"
        "  pelt-model flatten models/figure.mod -o models/flat.mod\n"
        "  pelt-model flatten models/duck.mod -o models/half.mod --only mirror,tessellate\n");
    command->callback([options, status] { *status = run_flatten(*options); });
}

}  // namespace pelt::tool
