// Names of files from a directory, by their texts alone.
#include "foundation/path_relative.h"

#include <algorithm>
#include <vector>

namespace pelt {

namespace {

// The parts between slashes. The first is empty, or a drive.
std::vector<std::string> parts_of(const std::string& path) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t end = 0; end != std::string::npos; start = end + 1) {
        end = path.find('/', start);
        std::string part = path.substr(start, end == std::string::npos ? end : end - start);
        if (!part.empty() || parts.empty()) { parts.push_back(std::move(part)); }
    }
    return parts;
}

}  // namespace

std::string path_relative(const std::string& directory, const std::string& file) {
    const std::vector<std::string> from = parts_of(directory);
    const std::vector<std::string> to = parts_of(file);
    if (from[0] != to[0] || to.size() < 2) { return {}; }
    const size_t most = std::min(from.size(), to.size() - 1);
    size_t shared = 0;
    while (shared < most && from[shared] == to[shared]) { ++shared; }
    std::string name;
    for (size_t i = shared; i < from.size(); ++i) { name += "../"; }
    for (size_t i = shared; i < to.size(); ++i) { name += (i > shared ? "/" : "") + to[i]; }
    return name;
}

}  // namespace pelt
