// Reads a text that was just written as the reader of files would.
//
// What surprises: an image that the model has and that is not there is passed over. That is told elsewhere, and the
// file may well be on its way to where its images are.
#include "read_back.h"

#include <memory>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "foundation/text.h"
#include "model_files.h"

namespace pelt::tool {

namespace {

struct ReadBack {
    ModelFileContext context;
    std::set<std::string> missing_images;
    int32_t line;  // the last one that was carried out
};

std::set<std::string> missing_images_of(const Model* model) {
    std::set<std::string> missing = image_names(model);
    std::erase_if(missing,
                  [&](const std::string& name) { return file_exists((std::string(model->path) + name).c_str()) != 0; });
    return missing;
}

bool names_missing_image(const ReadBack& read) {
    constexpr int32_t IMAGE_TOKENS = 4;
    constexpr int32_t MIRROR_IMAGE_TOKENS = 2;
    const bool is_complete = (reader_token_equals("image", 0) && reader_token_count() >= IMAGE_TOKENS) ||
                             (reader_token_equals("mirrorimage", 0) && reader_token_count() >= MIRROR_IMAGE_TOKENS);
    return is_complete && read.missing_images.count(reader_text(1)) != 0;
}

// The text in a form that comes out of memory as it would out of a file: there a lone CR ends no line, and a line
// without a byte counts.
std::string as_in_a_file(const std::string& text) {
    constexpr char NO_SEPARATOR = '\x01';
    std::string data;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool is_line_end = text[i] == '\n';
        if (is_line_end && (i == 0 || text[i - 1] == '\n')) { data += ' '; }
        const bool is_lone_return = text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n');
        data += is_lone_return ? NO_SEPARATOR : text[i];
    }
    return data;
}

void carry_out_line(void* context) {
    ReadBack& read = *static_cast<ReadBack*>(context);
    read.line = reader_line_number();
    load_error_watch(nullptr, nullptr);  // the text alone: the place in it would be that of no file
    if (!names_missing_image(read)) { model_parse_line(&read.context); }
}

}  // namespace

std::string refusal_of_text(const std::string& text, const Model* model) {
    const ModelOwner scratch(model_create("", nullptr));
    str_copy(model->path, scratch->path);
    str_copy(model->name, scratch->name);
    ReadBack read{};
    read.context.model = scratch.get();
    read.missing_images = missing_images_of(model);
    load_error_set(nullptr);
    std::string place;
    if (!reader_run_data(as_in_a_file(text).c_str(), "#", 1, carry_out_line, &read)) {
        place = "line " + std::to_string(read.line) + ": ";
    } else if (model_test_normals(scratch.get())) {
        return {};
    }
    return place + (load_error_get() != nullptr ? load_error_get() : "the line is refused");
}

}  // namespace pelt::tool
