// A fresh directory for one test, removed with everything in it when the test ends.
//
//     TempDir dir;
//     std::string path = dir.write("ship.mod", "points\n1 0 0 0\n");  // also dir.write("sub/wing.mod", ...)
#pragma once

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pelt::test {

// A name in UTF-8 as a path and back, whatever the system would take for the encoding of a name.
inline std::filesystem::path path_of(std::string_view name) { return std::u8string(name.begin(), name.end()); }
inline std::string name_of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// A path written with slashes, with the separator of this system.
inline std::string native_path(std::string_view path) { return name_of(path_of(path).make_preferred()); }

class TempDir {
public:
    TempDir() {
        static std::atomic<unsigned> serial{0};
        std::random_device entropy;
        for (int attempt = 0; attempt < 100; ++attempt) {
            const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
            // Always of one length: what a test sees must not depend on the hour that it runs at.
            char name[64];
            std::snprintf(name, sizeof name, "pelt_test_%08x_%016llx_%06u", entropy(),
                          static_cast<unsigned long long>(ticks), ++serial);
            const std::filesystem::path candidate = as_models_keep_it(std::filesystem::temp_directory_path()) / name;
            if (std::filesystem::create_directory(candidate)) {
                root_ = candidate;
                return;
            }
        }
        throw std::runtime_error("no temporary directory could be made");
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    // The directory, without a trailing separator.
    std::string path() const { return name_of(root_); }

    // Full path of a name in the directory; nothing is made.
    std::string file(std::string_view name) const { return name_of((root_ / path_of(name)).make_preferred()); }

    // Makes a directory, and those above it; returns its full path.
    std::string make_dir(std::string_view name) const {
        std::filesystem::create_directories(root_ / path_of(name));
        return file(name);
    }

    // Writes the bytes as they are, making directories on the way; returns the full path.
    std::string write(std::string_view name, std::string_view content) const {
        const std::filesystem::path target = root_ / path_of(name);
        std::filesystem::create_directories(target.parent_path());
        std::ofstream stream(target, std::ios::binary | std::ios::trunc);
        stream.write(content.data(), static_cast<std::streamsize>(content.size()));
        stream.close();
        if (!stream) { throw std::runtime_error("cannot write " + name_of(target)); }
        return file(name);
    }

    // The bytes of a file; empty when there is none.
    std::string read(std::string_view name) const {
        std::ifstream stream(root_ / path_of(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    bool exists(std::string_view name) const { return std::filesystem::exists(root_ / path_of(name)); }

private:
    // Where a backslash separates, models keep their directories in lower case; the tests compare with what they keep.
    static std::filesystem::path as_models_keep_it(std::filesystem::path folder) {
        if (std::filesystem::path::preferred_separator == '/') { return folder; }
        std::string text = name_of(folder);
        for (char& c : text) {
            if (c >= 'A' && c <= 'Z') { c = static_cast<char>(c - 'A' + 'a'); }
        }
        return path_of(text);
    }

    std::filesystem::path root_;
};

}  // namespace pelt::test
