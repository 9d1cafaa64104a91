// How a file name leads to a file, on systems whose file names differ by case.
//
// What surprises: a name is tried three ways. As it stands; with backslashes as separators; and ignoring case,
// component by component, because models and the names inside them come from systems that ignore it. Of several
// matches the one lowest in byte order is taken, so that the same tree always gives the same file.
#include "foundation/file_find.h"

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "foundation/file_access.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t COMPONENT_LIMIT = PATH_MAX / 2;  // no path of the system has more
constexpr int LISTING_LIMIT = 256;                // directories that one search may list, beside one for each component

mode_t format_of(const char* path) {
    struct stat status;
    return stat(path, &status) == 0 ? (status.st_mode & S_IFMT) : mode_t{0};
}

bool is_regular(const char* path) { return format_of(path) == S_IFREG; }

bool is_separator(char c) { return c == '/' || c == '\\'; }

// Cuts a path at both separators; those that follow each other count as one.
std::vector<std::string> split_path(const char* path) {
    std::vector<std::string> components;
    for (const char* start = path; *start != '\0';) {
        const char* end = start;
        while (*end != '\0' && !is_separator(*end)) { ++end; }
        if (end != start) { components.emplace_back(start, end); }
        start = *end == '\0' ? end : end + 1;
    }
    return components;
}

// Names in a directory that differ from this one by case only, in byte order.
std::vector<std::string> names_ignoring_case(const std::string& directory, const std::string& name) {
    std::vector<std::string> names;
    DIR* listing = opendir(directory.empty() ? "." : directory.c_str());
    if (listing == nullptr) { return names; }
    while (const dirent* entry = readdir(listing)) {
        if (str_equal_ignoring_case(entry->d_name, name.c_str()) && name != entry->d_name) {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(listing);
    std::sort(names.begin(), names.end());
    return names;
}

struct Search {
    std::vector<std::string> components;
    int listings;  // how many directories may still be listed
};

// Completes found, which ends in a separator or is empty, by the components from this one on. The exact name comes
// first; a directory in which the rest is not found is given up for the next.
bool complete(Search& search, size_t component, std::string& found) {
    const size_t length = found.size();
    const std::string& name = search.components[component];
    const bool is_last = component + 1 == search.components.size();
    const auto leads_on = [&](const std::string& candidate) {
        found.resize(length);
        found += candidate;
        if (format_of(found.c_str()) != (is_last ? S_IFREG : S_IFDIR)) { return false; }
        if (is_last) { return true; }
        found += '/';
        return complete(search, component + 1, found);
    };
    if (leads_on(name)) { return true; }
    if (search.listings <= 0) { return false; }
    --search.listings;
    found.resize(length);
    for (const std::string& candidate : names_ignoring_case(found, name)) {
        if (leads_on(candidate)) { return true; }
    }
    return false;
}

std::string find_ignoring_case(const char* path) {
    Search search{split_path(path), LISTING_LIMIT};
    search.listings += static_cast<int>(std::min(search.components.size(), COMPONENT_LIMIT));
    std::string found = is_separator(*path) ? "/" : "";
    const bool names_file = !search.components.empty() && search.components.size() <= COMPONENT_LIMIT &&
                            !is_separator(path[std::char_traits<char>::length(path) - 1]);
    return names_file && complete(search, 0, found) ? found : std::string();
}

// The descriptor as a stream when it is what may be used, else null.
std::FILE* stream_of(int descriptor, const char* mode) {
    if (descriptor < 0) { return nullptr; }
    struct stat status;
    const bool reading = *mode == 'r';
    const bool usable =
        fstat(descriptor, &status) == 0 && (S_ISREG(status.st_mode) || (!reading && S_ISCHR(status.st_mode)));
    std::FILE* stream = usable ? fdopen(descriptor, mode) : nullptr;
    if (stream == nullptr) { close(descriptor); }
    return stream;
}

}  // namespace

std::string file_resolve(const char* path) {
    if (path == nullptr || *path == '\0') { return {}; }
    return is_regular(path) ? std::string(path) : find_ignoring_case(path);
}

std::FILE* file_stream_read(const char* path) {
    const std::string name = file_resolve(path);
    // Without waiting, in case the name became that of a pipe since it was looked at.
    return name.empty() ? nullptr : stream_of(open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC), "rb");
}

bool file_stream_identity(std::FILE* stream, FileIdentity* identity) {
    constexpr int64_t SECOND = 1000000000;
    constexpr int64_t LONGEST_STEP = 2 * SECOND;  // of the times of any file system
    const auto in_nanoseconds = [](const timespec& time) { return int64_t{time.tv_sec} * SECOND + time.tv_nsec; };
    struct stat status;
    timespec now;
    if (fstat(fileno(stream), &status) != 0 || clock_gettime(CLOCK_REALTIME, &now) != 0) { return false; }
    const int64_t modified = in_nanoseconds(status.st_mtim);
    const int64_t changed = in_nanoseconds(status.st_ctim);
    const bool settled = std::max(modified, changed) < in_nanoseconds(now) - LONGEST_STEP;
    *identity = FileIdentity{status.st_dev, status.st_ino, int64_t{status.st_size}, modified, changed, settled};
    return true;
}

std::string file_name_to_write(const char* path) {
    std::string name = path;
    const size_t backslash = name.rfind('\\');
    if (backslash == std::string::npos || is_regular(path)) { return name; }
    const size_t slash = name.rfind('/');
    const bool in_directory_only = slash != std::string::npos && slash > backslash;
    if (in_directory_only && format_of(name.substr(0, slash).c_str()) == S_IFDIR) { return name; }
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

std::FILE* file_stream_write(const char* path) {
    constexpr mode_t PERMISSIONS = 0666;
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC;
    return stream_of(open(file_name_to_write(path).c_str(), flags, PERMISSIONS), "wb");
}

}  // namespace pelt
