// A model file is read, changed by chance and saved, again and again. What is written must read back as the model, a
// model that was not changed must give the bytes that were read, and a change that is taken back must give them too.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "formats/model_compare.h"
#include "formats/model_read_back.h"
#include "formats/model_reader.h"
#include "formats/model_save.h"
#include "fuzz/fixed_files.h"
#include "fuzz/stage.h"
#include "scene/model.h"

namespace pelt::fuzz {

namespace {

// The input: bytes that choose the changes, up to the first line end, then the file.
struct Choices {
    const uint8_t* data;
    size_t size;
    size_t at;
    uint8_t next() { return size > 0 ? data[at++ % size] : 0; }
};

template <typename Element>
Element* any(KeyedList& list, Choices& choices) {
    const int32_t count = list_count(&list);
    return count > 0 ? list_at<Element>(&list, choices.next() % count, 1) : nullptr;
}

int32_t any_id(Model* model, Choices& choices) {
    const Point* point = any<Point>(model->points, choices);
    const auto points = list_elements<Point>(model->points);
    for (auto each = points.begin(); each != points.end(); ++each) {
        if (&*each == point) { return each.int_key(); }
    }
    return 0;
}

void change_points(Model* model, Choices& choices) {
    const int32_t id = any_id(model, choices);
    const float value = static_cast<float>(choices.next());
    if (id == 0) { return; }
    switch (choices.next() % 6) {
        case 0: model_set_point(model, id, choices.next(), -choices.next(), 3, value / 200.0f); break;
        case 1: model_set_normal(model, id, value, 1.0f, static_cast<float>(choices.next())); break;
        case 2: model_set_gouraud(model, id, choices.next(), 1, 2, 3); break;
        case 3: model_remove_point(model, id); break;
        case 4: model_set_point(model, 1 + choices.next(), 1, 2, 3, 1.0f); break;
        default: {
            const Joint* joint = any<Joint>(model->joints, choices);
            model_set_point_joints(model, id, joint != nullptr ? joint->name : "world", "world");
        }
    }
}

void change_layers(Model* model, Choices& choices) {
    Layer* layer = any<Layer>(model->layers, choices);
    if (layer == nullptr) { return; }
    const std::string name = layer->name;
    const int32_t ids[] = {any_id(model, choices), any_id(model, choices), any_id(model, choices), 0};
    switch (choices.next() % 9) {
        case 0: layer->colour[choices.next() % 3] = choices.next(); break;
        case 1: layer->singlesided = choices.next() & 1; break;
        case 2: model_set_layer_mirror(model, name.c_str(), choices.next() % 4); break;
        case 3: model_set_layer_transparency(model, name.c_str(), static_cast<float>(choices.next()) / 200.0f); break;
        case 4: model_delete_layer(model, name.c_str()); break;
        case 5: model_rename_layer(model, name.c_str(), choices.next() & 1 ? "a b" : "roof"); break;
        case 6: model_add_triangle(model, name.c_str(), 0, ids, nullptr, nullptr, choices.next() % 5); break;
        case 7: model_add_uvee(model, name.c_str(), ids[0], 0.5f, static_cast<float>(choices.next())); break;
        default:
            if (list_count(&layer->triangles) > 0) {
                list_remove_slot(&layer->triangles, list_next_slot(&layer->triangles, 0));
            }
    }
}

void change_others(Model* model, Choices& choices) {
    switch (choices.next() % 3) {
        case 0: model_add_joint(model, choices.next() & 1 ? "bone" : "bone two", 1, 2, 3, "world", 0); break;
        case 1: model_add_layer(model, choices.next() & 1 ? "new" : "newer", 1, 2, 3, 1, 0, 1); break;
        default: model_add_child(model, nullptr, "hat", 1, 2, 3, 1, 1, choices.next(), "0", "x9", "0"); break;
    }
}

void try_save(const Model* model, std::string_view loaded) {
    const ModelSave save = model_save(model, loaded);
    if (!save.refused.empty()) { return; }
    std::string refused;
    Model* again = model_read_back(save.text, model, &refused);
    if (again == nullptr) { finding(("what was saved does not read back: " + refused).c_str()); }
    const std::string difference = model_difference(model, again, false);
    if (!difference.empty()) { finding(("what was saved reads back as another: " + difference).c_str()); }
    model_release(again);
}

void read_change_and_save(Choices choices, const std::string& path, std::string_view loaded) {
    Model* model = model_load(path.c_str());
    if (model == nullptr) { return; }
    const ModelSave same = model_save(model, loaded);
    if (!same.refused.empty()) { finding(("a model that was read is refused: " + same.refused).c_str()); }
    if (same.text != loaded) { finding("a model that was not changed is saved as other bytes"); }
    constexpr int CHANGES = 6;
    for (int i = 0; i < CHANGES; ++i) {
        switch (choices.next() % 3) {
            case 0: change_points(model, choices); break;
            case 1: change_layers(model, choices); break;
            default: change_others(model, choices); break;
        }
        try_save(model, loaded);
    }
    model_release(model);
}

}  // namespace

}  // namespace pelt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace pelt::fuzz;
    const uint8_t* end = std::find(data, data + size, static_cast<uint8_t>('\n'));
    const size_t chosen = static_cast<size_t>(end - data);
    const size_t begin = std::min(chosen + 1, size);
    const std::string text(reinterpret_cast<const char*>(data) + begin, size - begin);
    std::vector<File> files = fixed_files();
    files.push_back({"main.mod", text});
    stage_files(files);
    read_change_and_save({data, chosen, 0}, "main.mod", text);
    return 0;
}
