// Reads a text that was just written as the reader of files would.
//
// What surprises: an image that the original has and that is not there is passed over. That is told elsewhere, and the
// file may well be on its way to where its images are.
#include "formats/model_read_back.h"

#include <set>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "scene/model.h"

namespace pelt {

namespace {

struct ReadBack {
    ModelFileContext context;
    std::set<std::string> missing_images;
    int32_t line;  // the last one that was carried out
};

std::set<std::string> missing_images_of(const Model* model) {
    std::set<std::string> missing;
    for (const Layer& layer : list_elements<Layer>(model->layers)) {
        const LayerImage* image = layer_first_image(&layer);
        for (int slot = 0; image != nullptr && slot < LAYER_IMAGE_SLOTS; ++slot) {
            const char* name = image->names[slot];
            if (!file_exists(model_file_path(model, name).c_str())) { missing.insert(name); }
        }
    }
    return missing;
}

bool names_missing_image(const ReadBack& read) {
    struct Statement {
        const char* word;
        int32_t tokens;  // at least
    };
    static constexpr Statement STATEMENTS[] = {{"image", 4}, {"mirrorimage", 2}, {"reflect", 3}};
    for (const Statement& statement : STATEMENTS) {
        if (reader_token_equals(statement.word, 0) && reader_token_count() >= statement.tokens) {
            return read.missing_images.count(reader_text(1)) != 0;
        }
    }
    return false;
}

void carry_out_line(void* context) {
    ReadBack& read = *static_cast<ReadBack*>(context);
    read.line = reader_line_number();
    load_error_watch(nullptr, nullptr);  // the text alone: the place in it would be that of no file
    model_parse_line(&read.context);
    if (names_missing_image(read) && reader_take_abort_back()) { load_error_set(nullptr); }
}

Model* model_in_the_place_of(const Model* original) {
    Model* model = model_create("", nullptr);
    str_copy(original->path, model->path);
    str_copy(original->name, model->name);
    model->long_directory = str_dup(original->long_directory);
    model->long_paths = original->long_paths;
    return model;
}

}  // namespace

Model* model_read_back(const std::string& text, const Model* original, std::string* refused) {
    if (original == nullptr) { return nullptr; }
    ReadBack read{};
    read.context.model = model_in_the_place_of(original);
    read.missing_images = missing_images_of(original);
    load_error_set(nullptr);
    std::string place;
    if (!reader_run_text(text, "#", 1, carry_out_line, &read)) {
        place = "line " + std::to_string(read.line) + ": ";
    } else {
        model_bind_points(read.context.model);
        if (model_test_normals(read.context.model)) {
            if (refused != nullptr) { refused->clear(); }
            return read.context.model;
        }
    }
    if (refused != nullptr) {
        *refused = place + (load_error_get() != nullptr ? load_error_get() : "the line is refused");
    }
    model_release(read.context.model);
    return nullptr;
}

}  // namespace pelt
