// pelt-model info: what is in a model, as a table for people or as JSON for programs.
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "console.h"
#include "formats/model_writer.h"
#include "foundation/text.h"
#include "lone_model.h"

namespace pelt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int JSON_INDENT = 2;

struct LayerCounts {
    int32_t triangles = 0;
    int32_t quads = 0;
    std::map<int, int32_t> curved;  // by curve type
};

LayerCounts count_layer(const Layer& layer) {
    LayerCounts counts;
    for (const Triangle& triangle : list_elements<Triangle>(layer.triangles)) {
        ++(triangle.quad ? counts.quads : counts.triangles);
        if (triangle.curve_type != 0) { ++counts.curved[triangle.curve_type]; }
    }
    return counts;
}

const char* image_name(const Layer& layer, int slot) {
    const LayerImage* image = layer_first_image(&layer);
    return image != nullptr ? image->names[slot] : "";
}

// ---- JSON ----

Json json_of(const Vec3& place) { return Json::array({place.x, place.y, place.z}); }

Json json_of_image(const Layer& layer, int slot) {
    const char* name = image_name(layer, slot);
    if (name[0] == '\0') { return nullptr; }
    const LayerImage* image = layer_first_image(&layer);
    return Json{{"file", name}, {"width", image->width[slot]}, {"height", image->height[slot]}};
}

Json json_of(const Layer& layer) {
    const LayerCounts counts = count_layer(layer);
    Json curved = Json::object();
    for (const auto& [type, count] : counts.curved) { curved[std::to_string(type)] = count; }
    Json json;
    json["name"] = layer.name;
    json["colour"] = layer.colour;
    json["sides"] = layer.singlesided ? 1 : 2;
    json["transparency"] = layer.transparency;
    json["mirror"] = layer.mirror ? Json(axis_word(layer.mirror_axis)) : Json(nullptr);
    json["colour_key"] = layer.invisible ? Json(layer.invisible_colour) : Json(nullptr);
    json["triangles"] = counts.triangles;
    json["quads"] = counts.quads;
    json["polygons"] = list_count(&layer.polygons);
    json["lines"] = list_count(&layer.lines);
    json["uvees"] = list_count(&layer.uvees);
    json["curved"] = curved;
    json["image"] = json_of_image(layer, IMAGE_SLOT_BASE);
    json["mirror_image"] = json_of_image(layer, IMAGE_SLOT_MIRROR);
    json["reflection"] = json_of_image(layer, IMAGE_SLOT_REFLECTION);
    return json;
}

Json json_of(const Model& model);

Json json_of(const ChildLink& link) {
    Json json;
    json["name"] = link.name;
    json["position"] = json_of(link.position);
    json["scale"] = json_of(link.scale);
    json["rotation"] = Json::array({link.rotate[0], link.rotate[1], link.rotate[2]});
    json["model"] = link.model != nullptr ? json_of(*link.model) : Json(nullptr);
    return json;
}

Json json_of(const Model& model) {
    Json json;
    json["name"] = model.name;
    json["points"] = list_count(&model.points);
    json["joints"] = Json::array();
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        json["joints"].push_back({{"name", joint.name},
                                  {"parent", joint.parent_name},
                                  {"position", json_of(joint.position)},
                                  {"points", joint.point_count}});
    }
    json["blends"] = list_count(&model.blends);
    json["has_normals"] = model.has_normals != 0;
    json["has_colours"] = model.has_gouraud != 0;
    json["box"] = Json{{"min", json_of(model.bounds_min)}, {"max", json_of(model.bounds_max)}};
    json["layers"] = Json::array();
    for (const Layer& layer : list_elements<Layer>(model.layers)) { json["layers"].push_back(json_of(layer)); }
    json["children"] = Json::array();
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        json["children"].push_back(json_of(link));
    }
    return json;
}

// ---- tables ----

std::string number(double value) {
    std::string trimmed = float_to_text(value, 3);
    if (trimmed.find('.') != std::string::npos) {
        trimmed.erase(trimmed.find_last_not_of('0') + 1);
        trimmed.erase(trimmed.find_last_not_of('.') + 1);
    }
    return trimmed;
}

std::string number(const Vec3& place) { return number(place.x) + " " + number(place.y) + " " + number(place.z); }

using Row = std::vector<std::string>;

// Characters, of a text that is shown.
size_t width_of(const std::string& text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// The first column and those of texts stand to the left, numbers to the right.
void print_table(const std::string& indent, std::vector<Row> rows, size_t first_number, size_t last_number) {
    if (rows.size() < 2) { return; }
    std::vector<size_t> widths(rows.front().size(), 0);
    for (Row& row : rows) {
        for (size_t column = 0; column < row.size(); ++column) {
            row[column] = shown(row[column]);
            widths[column] = std::max(widths[column], width_of(row[column]));
        }
    }
    for (const Row& row : rows) {
        std::string line = indent;
        for (size_t column = 0; column < row.size(); ++column) {
            const std::string padding(widths[column] - width_of(row[column]), ' ');
            const bool is_number = column >= first_number && column <= last_number;
            line += (column > 0 ? "  " : "") + (is_number ? padding + row[column] : row[column] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        print_line(line);
    }
}

std::string curved_text(const LayerCounts& counts) {
    std::string text;
    for (const auto& [type, count] : counts.curved) {
        text += (text.empty() ? "" : " ") + std::to_string(count) + "*type" + std::to_string(type);
    }
    return text.empty() ? "-" : text;
}

std::string images_text(const Layer& layer) {
    static constexpr const char* PREFIXES[] = {"", "mirror:", "reflect:"};
    std::string text;
    for (int slot = 0; slot < LAYER_IMAGE_SLOTS; ++slot) {
        const char* name = image_name(layer, slot);
        if (name[0] != '\0') { text += (text.empty() ? "" : " ") + std::string(PREFIXES[slot]) + name; }
    }
    return text.empty() ? "-" : text;
}

void print_layers(const Model& model, const std::string& indent) {
    std::vector<Row> rows{{"layer", "triangles", "quads", "polygons", "lines", "uvees", "curved", "mirror", "images"}};
    for (const Layer& layer : list_elements<Layer>(model.layers)) {
        const LayerCounts counts = count_layer(layer);
        rows.push_back({layer.name, std::to_string(counts.triangles), std::to_string(counts.quads),
                        std::to_string(list_count(&layer.polygons)), std::to_string(list_count(&layer.lines)),
                        std::to_string(list_count(&layer.uvees)), curved_text(counts),
                        layer.mirror ? axis_word(layer.mirror_axis) : "-", images_text(layer)});
    }
    print_table(indent, rows, 1, 5);
}

void print_joints(const Model& model, const std::string& indent) {
    std::vector<Row> rows{{"joint", "points", "parent", "position"}};
    for (const Joint& joint : list_elements<Joint>(model.joints)) {
        rows.push_back({joint.name, std::to_string(joint.point_count), joint.parent_name, number(joint.position)});
    }
    print_table(indent, rows, 1, 1);
}

void print_model(const Model& model, const std::string& indent) {
    print_line(indent + "points " + std::to_string(list_count(&model.points)) + "  joints " +
               std::to_string(list_count(&model.joints)) + "  blends " + std::to_string(list_count(&model.blends)) +
               "  layers " + std::to_string(list_count(&model.layers)) + "  children " +
               std::to_string(list_count(&model.children)) + "  normals " + (model.has_normals ? "yes" : "no") +
               "  colours " + (model.has_gouraud ? "yes" : "no"));
    print_line(indent + "box from " + number(model.bounds_min) + " to " + number(model.bounds_max));
    print_joints(model, indent);
    print_layers(model, indent);
    for (const ChildLink& link : list_elements<ChildLink>(model.children)) {
        print_line(indent + "child " + link.name + " at " + number(link.position) + ", scale " + number(link.scale) +
                   ", rotation " + link.rotate[0] + " " + link.rotate[1] + " " + link.rotate[2]);
        if (link.model != nullptr) { print_model(*link.model, indent + "  "); }
    }
}

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    bool alone = false;
};

int run_info(const InfoOptions& options) {
    Json all = Json::array();
    const int status = for_each_file(options.files, [&](const std::string& file) {
        const ModelOwner model = options.alone ? load_lone_model(file) : load_model(file);
        if (model == nullptr) { return STATUS_BAD_MODEL; }
        if (options.json) {
            Json json{{"file", file}};
            json.update(json_of(*model));
            all.push_back(std::move(json));
        } else {
            print_line(file);
            print_model(*model, "  ");
        }
        return STATUS_GOOD;
    });
    if (options.json) {
        // What is no UTF-8 must not stop the output; and in ASCII no character is a command to a terminal.
        print_bytes(all.dump(JSON_INDENT, ' ', true, Json::error_handler_t::replace) + "\n");
    }
    return status;
}

}  // namespace

void add_info(CLI::App& program, int* status) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* command = program.add_subcommand("info", "Show what is in models");
    command->add_option("FILE", options->files, "model files (.mod)")->required();
    command->add_flag("--json", options->json, "print JSON: an array with an object for each model");
    command->add_flag("--alone", options->alone, "read the named files alone, without images and child models");
    command->footer(
        "Shows points, joints, blend groups, the box, the layers with their primitives, curve types and images, and\n"
        "the child models with all that is in them.\n\n"
        "Examples:\n"
        "  pelt-model info models/mill.mod\n"
        "  pelt-model info --json models/*.mod\n");
    command->callback([options, status] { *status = run_info(*options); });
}

}  // namespace pelt::tool
