// Replaces files whole.
#include "output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "console.h"
#include "foundation/file_replace.h"
#include "system.h"

namespace pelt::tool {

namespace {

namespace fs = std::filesystem;

bool refuse(const std::string& path, const std::string& reason) {
    print_error("cannot write " + path + ": " + reason);
    return false;
}

// The lines of the content as they may be shown.
std::string shown_lines(const std::string& content) {
    std::string result;
    for (size_t start = 0; start < content.size();) {
        const size_t end = std::min(content.find('\n', start), content.size());
        result += shown(content.substr(start, end - start)) + (end < content.size() ? "\n" : "");
        start = end + 1;
    }
    return result;
}

bool write_directly(const std::string& path, std::FILE* stream, const std::string& content) {
    // A terminal takes control bytes for commands, whoever sends them there.
    const std::string bytes = goes_to_a_terminal(stream) ? shown_lines(content) : content;
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), stream) != bytes.size() || std::fflush(stream) != 0) {
        return refuse(path, std::strerror(errno != 0 ? errno : EIO));
    }
    return true;
}

bool write_to_device(const std::string& path, const std::string& content) {
    std::FILE* stream = open_file(path_of(path), "wb");
    if (stream == nullptr) { return refuse(path, std::strerror(errno)); }
    const bool written = write_directly(path, stream, content);
    return std::fclose(stream) == 0 && written;
}

}  // namespace

bool write_replacing(const std::string& path, const std::string& content) {
    if (path == "-") { return write_directly("standard output", stdout, content); }
    std::error_code unimportant;
    const fs::file_status status = fs::status(path_of(path), unimportant);
    if (fs::is_directory(status)) { return refuse(path, "it is a directory"); }
    if (fs::exists(status) && !fs::is_regular_file(status)) { return write_to_device(path, content); }
    const FileReplacement result = file_replace(path.c_str(), content.data(), content.size());
    if (result.error == 0) { return true; }
    const std::string former = result.former.empty() ? "" : "; what it held is in " + result.former;
    return refuse(path, std::strerror(result.error) + former);
}

}  // namespace pelt::tool
