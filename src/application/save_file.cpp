// The file side of a save.
#include "application/save_file.h"

#include <cstring>
#include <filesystem>
#include <system_error>

#include "application/problem.h"
#include "foundation/file_access.h"
#include "foundation/file_replace.h"

namespace pelt {

bool save_refuse(const char* kind, const std::string& text, const std::string& file) {
    problem_set(kind, LoadFailure{text, file, 0, {}});
    return false;
}

namespace {

namespace fs = std::filesystem;

fs::path path_of(const std::string& name) { return {std::u8string(name.begin(), name.end())}; }

}  // namespace

bool save_same_file(const std::string& path, const std::string& other) {
    if (path.empty() || other.empty()) { return false; }
    if (path == other) { return true; }
    const std::string file = file_resolve(path.c_str());
    const std::string second = file_resolve(other.c_str());
    std::error_code error;
    return !file.empty() && !second.empty() &&
           (file == second || fs::equivalent(path_of(file), path_of(second), error));
}

bool save_target_is_good(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path_of(path), error);
    if (!fs::exists(status) || fs::is_regular_file(status)) { return true; }
    return save_refuse(PROBLEM_FILE,
                       fs::is_directory(status) ? "cannot be written: it is a directory"
                                                : "cannot be written: it is no file that keeps what is written to it",
                       path);
}

bool save_write(const std::string& path, const std::string& content) {
    const FileReplacement written = file_replace(path.c_str(), content.data(), content.size());
    if (written.opened && written.error == 0) { return true; }
    std::string text = std::string("cannot be written: ") + std::strerror(written.error);
    if (!written.former.empty()) { text += "; what it held lies in " + written.former; }
    return save_refuse(PROBLEM_FILE, text, path);
}

}  // namespace pelt
