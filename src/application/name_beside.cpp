// Relative names. What surprises: links among the directories are followed before a way is looked for, because ".."
// leads out of what a link leads to.
#include "application/name_beside.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "foundation/text.h"

namespace pelt {

namespace {

namespace fs = std::filesystem;

constexpr const char* MODEL_EXTENSION = ".mod";

fs::path path_of(const std::string& text) { return fs::path(std::u8string(text.begin(), text.end())); }

std::string text_of(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path directory_of(const std::string& file) {
    std::error_code error;
    const fs::path whole = fs::absolute(path_of(file), error).parent_path();
    if (error) { return {}; }
    const fs::path found = fs::weakly_canonical(whole, error);
    return error ? whole.lexically_normal() : found;
}

}  // namespace

std::string name_beside(const std::string& other, const std::string& file) {
    const fs::path from = directory_of(other);
    const fs::path to = directory_of(file);
    if (from.empty() || to.empty() || from.root_name() != to.root_name()) { return {}; }
    const fs::path way = to.lexically_relative(from);
    const fs::path name = path_of(file).filename();
    fs::path found = way == "." ? name : way / name;
    return text_of(found.make_preferred());
}

bool lie_together(const std::string& file, const std::string& other) {
    return directory_of(file) == directory_of(other);
}

std::string child_name_of(const std::string& name) {
    const size_t length = std::char_traits<char>::length(MODEL_EXTENSION);
    if (name.size() <= length) { return {}; }
    const std::string end = name.substr(name.size() - length);
    return str_equal_ignoring_case(end.c_str(), MODEL_EXTENSION) ? name.substr(0, name.size() - length) : std::string();
}

}  // namespace pelt
