// Replaces files whole.
//
// What surprises: the order. The content must be on the disk before the rename, and the rename before the directory,
// or a crash of the machine could leave an empty file under the old name.
#include "output_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "console.h"
#include "system.h"

namespace pelt::tool {

namespace {

namespace fs = std::filesystem;

constexpr int NAME_ATTEMPTS = 100;

bool refuse(const std::string& path, const std::string& reason) {
    print_error("cannot write " + path + ": " + reason);
    return false;
}

bool refuse_by_errno(const std::string& path, int number) { return refuse(path, std::strerror(number)); }

// Runs the procedure; 0, or the error number of what went wrong.
int fill(std::FILE* stream, const std::function<bool(std::FILE*)>& write) {
    errno = 0;
    if (!write(stream) || std::fflush(stream) != 0) {
        return errno != 0 ? errno : EIO;
    }
    return 0;
}

bool write_directly(const std::string& path, std::FILE* stream, const std::function<bool(std::FILE*)>& write) {
    const int error = fill(stream, write);
    return error == 0 || refuse_by_errno(path, error);
}

bool write_to_device(const std::string& path, const std::function<bool(std::FILE*)>& write) {
    std::FILE* stream = open_file(path_of(path), "wb");
    if (stream == nullptr) {
        return refuse_by_errno(path, errno);
    }
    const bool written = write_directly(path, stream, write);
    return std::fclose(stream) == 0 && written;
}

// A file of its own in the directory, open for writing; null with errno set.
std::FILE* make_temporary(const fs::path& directory, fs::path* name) {
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        *name = directory / (".pelt-model-" + std::to_string(process_id()) + "-" + std::to_string(attempt) + ".tmp");
        if (std::FILE* stream = open_file(*name, "wbx")) {
            return stream;
        }
        if (errno != EEXIST) {
            return nullptr;
        }
    }
    return nullptr;
}

bool write_and_rename(const std::string& path, const fs::path& target, const std::function<bool(std::FILE*)>& write) {
    const fs::path directory = target.has_parent_path() ? target.parent_path() : fs::path(".");
    fs::path temporary;
    std::FILE* stream = make_temporary(directory, &temporary);
    if (stream == nullptr) {
        return refuse_by_errno(path, errno);
    }
    int error = fill(stream, write);
    if (error == 0 && !reach_disk(stream)) {
        error = errno;
    }
    if (std::fclose(stream) != 0 && error == 0) {
        error = errno;
    }
    std::error_code problem(error, std::generic_category());
    std::error_code unimportant;
    if (!problem) {
        const fs::file_status old = fs::status(target, unimportant);
        if (fs::exists(old)) {
            fs::permissions(temporary, old.permissions(), unimportant);
        }
        fs::rename(temporary, target, problem);
    }
    if (problem) {
        fs::remove(temporary, unimportant);
        return refuse(path, problem.message());
    }
    directory_reaches_disk(directory);
    return true;
}

}  // namespace

bool write_replacing(const std::string& path, const std::function<bool(std::FILE*)>& write) {
    if (path == "-") {
        return write_directly("standard output", stdout, write);
    }
    std::error_code problem;
    const fs::path named = path_of(path);
    const fs::file_status status = fs::status(named, problem);
    if (fs::is_directory(status)) {
        return refuse(path, "it is a directory");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        return write_to_device(path, write);
    }
    // What a symbolic link leads to is replaced, not the link.
    const fs::path target = fs::exists(status) ? fs::canonical(named, problem) : named;
    return problem && fs::exists(status) ? refuse(path, problem.message()) : write_and_rename(path, target, write);
}

}  // namespace pelt::tool
