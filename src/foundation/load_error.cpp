// The load-error record: the latest reason why a load failed.
//
// What surprises: the place in the text is that of the read in progress when the error is set, not a parameter. The
// reader says where it stands beforehand, so this file need not know the reader.
#include "foundation/load_error.h"

#include <cstring>
#include <string>
#include <utility>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t RECORD_SIZE = 256;

struct LoadError {
    const char* file_name;  // place of the read in progress, owned by the reader; null when none
    const int32_t* line_number;
    const char* line;
    bool is_set;
    char text[RECORD_SIZE];
};

LoadError load_error;

// Never destroyed: scripts may still run while the process ends.
LoadFailure& failure() {
    static LoadFailure& record = *new LoadFailure;
    return record;
}

bool gathering = false;

std::vector<LoadFailure>& problems() {
    static std::vector<LoadFailure>& gathered = *new std::vector<LoadFailure>;
    return gathered;
}

LoadFailure failure_here(const char* text) {
    LoadFailure record;
    record.text = text != nullptr ? text : "";
    if (load_error.file_name != nullptr) { record.file = load_error.file_name; }
    if (load_error.line_number != nullptr) { record.line = *load_error.line_number; }
    if (load_error.line != nullptr) { record.source = load_error.line; }
    return record;
}

void gather(const LoadFailure& problem) {
    std::vector<LoadFailure>& all = problems();
    if (!all.empty() && all.back().line == problem.line && all.back().file == problem.file) {
        all.back() = problem;
    } else if (all.size() < LOAD_PROBLEM_LIMIT) {
        all.push_back(problem);
    }
}

}  // namespace

void load_error_watch(const char* file_name, const int32_t* line_number, const char* line) {
    load_error.file_name = file_name;
    load_error.line_number = line_number;
    load_error.line = line;
}

void load_error_set(const char* text) {
    if (text == nullptr) {
        load_error.is_set = false;
        load_failure_clear();
        return;
    }
    load_failure_set(text);
    std::string record = text;  // the text may lie in the record itself
    char line[12];
    const int32_t line_number = load_error.line_number != nullptr ? *load_error.line_number : 0;
    int_to_text(line_number, line);
    if (load_error.file_name != nullptr) {
        record.append(" (file: ").append(load_error.file_name).append(", line: ").append(line).append(")");
    } else if (line_number != 0) {
        record.append(" (line: ").append(line).append(")");
    }
    str_copy(record.c_str(), load_error.text);
    load_error.is_set = true;
}

void load_error_set_format(const char* format, const char* parameter) {
    if (format == nullptr) {
        load_error_set(nullptr);
        return;
    }
    std::string text = format;
    const size_t place = text.find("%s");
    if (place != std::string::npos) { text.replace(place, 2, parameter != nullptr ? parameter : ""); }
    load_error_set(text.c_str());
}

const LoadFailure& load_failure() { return failure(); }

void load_failure_clear() { failure() = LoadFailure{}; }

void load_problems_begin() {
    problems().clear();
    gathering = true;
}

std::vector<LoadFailure> load_problems_end() {
    gathering = false;
    return std::exchange(problems(), {});
}

void load_problem_note(const char* text) {
    if (gathering && load_error.line_number != nullptr) { gather(failure_here(text)); }
}

void load_failure_set(const char* text) {
    LoadFailure record = failure_here(text);
    if (gathering && record.line > 0) { gather(record); }
    failure() = std::move(record);
}

void load_failure_in(const char* file, int32_t line, const char* source) {
    if (file == nullptr || !failure().file.empty()) { return; }
    failure().file = file;
    failure().line = line;
    failure().source = source;
}

const char* load_error_get() { return load_error.is_set ? load_error.text : nullptr; }

}  // namespace pelt
