// The bytes of a file as they were read, kept for as long as something made of them is there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace pelt {

// A larger file is not kept.
inline constexpr size_t FILE_TEXT_LIMIT = size_t{512} << 20;

struct FileText {
    struct Free {
        void operator()(char* held) const { std::free(held); }
    };
    std::unique_ptr<char, Free> bytes;
    size_t size = 0;
    std::string file;  // resolved; empty for a text that was read from none
    std::map<std::string, uint64_t>
        written;  // what was put into files since, by resolved name: hashes of their content

    std::string_view view() const { return {bytes.get(), size}; }
};

// The content of a file, shared with whoever keeps the same of it. Null when it cannot be read as a whole, is beyond
// the limit, or finds no memory.
std::shared_ptr<FileText> file_text_read(const char* path);

// A text that was read from no file.
std::shared_ptr<FileText> file_text_of(std::string_view content);

void file_text_note_written(FileText& text, const std::string& file, std::string_view content);

// How a file stands to what was read from it or written to it last.
enum class FileState { AS_KNOWN, CHANGED, GONE };
FileState file_text_state(const FileText& text, const std::string& path);

}  // namespace pelt
