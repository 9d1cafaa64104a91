// Reads a model's own file alone.
#include "lone_model.h"

#include "console.h"
#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/model_reader.h"
#include "foundation/file_access.h"
#include "foundation/load_error.h"
#include "model_check.h"

namespace pelt::tool {

namespace {

struct LoneRead {
    ModelFileContext context;
    int32_t line;  // the last one that was carried out
};

void carry_out_line(void* context) {
    LoneRead& read = *static_cast<LoneRead*>(context);
    read.line = reader_line_number();
    model_parse_line(&read.context);
}

// Why the model is no good; empty when it is.
std::string refusal_of(LoneRead& read, const std::string& path) {
    load_error_set(nullptr);
    const auto reason = [](const char* otherwise) {
        return load_error_get() != nullptr ? std::string(load_error_get()) : std::string(otherwise);
    };
    if (!file_exists(path.c_str())) { return problem_text({path, 0, "no such file"}); }
    if (!reader_run_file(path.c_str(), "#", 1, carry_out_line, &read)) {
        return problem_text({path, read.line, reason("the line is refused")});
    }
    model_bind_points(read.context.model);
    return model_test_normals(read.context.model) ? std::string() : problem_text({path, 0, reason("a bad normal")});
}

}  // namespace

ModelOwner load_lone_model(const std::string& path) {
    LoneRead read{};
    ModelOwner model(model_create(path.c_str(), nullptr));
    read.context.model = model.get();
    read.context.names_only = true;
    const std::string refusal = refusal_of(read, path);
    load_error_set(nullptr);
    if (refusal.empty()) { return model; }
    print_report(refusal);
    return nullptr;
}

}  // namespace pelt::tool
