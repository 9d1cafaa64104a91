// The file side of a save.
#include "application/save_file.h"

#include <cstring>
#include <filesystem>
#include <system_error>

#include "application/problem.h"
#include "foundation/file_replace.h"

namespace pelt {

bool save_refuse(const char* kind, const std::string& text, const std::string& file) {
    problem_set(kind, LoadFailure{text, file, 0, {}});
    return false;
}

bool save_target_is_good(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(fs::path(std::u8string(path.begin(), path.end())), error);
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
