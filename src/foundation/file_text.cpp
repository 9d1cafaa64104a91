// Texts of files, each in memory once however many models were made of it. What surprises: nothing here fails a load. A
// file that cannot be kept is read line by line as any other.
#include "foundation/file_text.h"

#include <cstdio>
#include <cstring>
#include <unordered_map>

#include "foundation/file_access.h"
#include "foundation/file_find.h"
#include "foundation/key_hash.h"

namespace pelt {

namespace {

struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, Closer>;

// Never destroyed: scripts may still run while the process ends.
using TextsByFile = std::unordered_map<std::string, std::weak_ptr<FileText>, KeyHash>;
TextsByFile& texts() {
    static auto& all = *new TextsByFile;
    return all;
}

using Bytes = std::unique_ptr<char, FileText::Free>;

Bytes read_all(std::FILE* stream, size_t expected, size_t* size) {
    size_t capacity = expected + 1;
    Bytes bytes(static_cast<char*>(std::malloc(capacity)));
    *size = 0;
    while (bytes != nullptr) {
        *size += std::fread(bytes.get() + *size, 1, capacity - *size, stream);
        if (*size < capacity) { return std::ferror(stream) == 0 ? std::move(bytes) : nullptr; }
        if (capacity > FILE_TEXT_LIMIT) { return nullptr; }
        capacity *= 2;
        auto* larger = static_cast<char*>(std::realloc(bytes.get(), capacity));
        if (larger == nullptr) { return nullptr; }
        bytes.release();  // NOLINT: realloc has it
        bytes.reset(larger);
    }
    return nullptr;
}

Bytes read_file(const std::string& file, size_t* size) {
    const Stream stream(file_stream_read(file.c_str()));
    FileIdentity identity;
    if (stream == nullptr || !file_stream_identity(stream.get(), &identity)) { return nullptr; }
    if (identity.size < 0 || static_cast<uint64_t>(identity.size) > FILE_TEXT_LIMIT) { return nullptr; }
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    return read_all(stream.get(), static_cast<size_t>(identity.size), size);
}

uint64_t hash_of(std::string_view content) { return key_hash(content.data(), content.size()); }

}  // namespace

std::shared_ptr<FileText> file_text_read(const char* path) {
    const std::string file = file_resolve(path);
    auto text = std::make_shared<FileText>();
    text->bytes = read_file(file, &text->size);
    if (text->bytes == nullptr) { return nullptr; }
    text->file = file;
    std::erase_if(texts(), [](const auto& each) { return each.second.expired(); });
    std::weak_ptr<FileText>& known = texts()[file];
    const std::shared_ptr<FileText> shared = known.lock();
    if (shared != nullptr && shared->view() == text->view() && shared->written.empty()) { return shared; }
    known = text;
    return text;
}

std::shared_ptr<FileText> file_text_of(std::string_view content) {
    auto text = std::make_shared<FileText>();
    text->bytes = Bytes(static_cast<char*>(std::malloc(content.size() + 1)));
    if (text->bytes == nullptr) { return nullptr; }
    std::memcpy(text->bytes.get(), content.data(), content.size());
    text->size = content.size();
    return text;
}

void file_text_note_written(FileText& text, const std::string& file, std::string_view content) {
    text.written[file] = hash_of(content);
}

FileState file_text_state(const FileText& text, const std::string& path) {
    const std::string file = file_resolve(path.c_str());
    if (file.empty()) { return FileState::GONE; }
    size_t size = 0;
    const Bytes bytes = read_file(file, &size);
    if (bytes == nullptr) { return FileState::CHANGED; }
    const std::string_view content(bytes.get(), size);
    const auto written = text.written.find(file);
    if (written != text.written.end()) {
        return written->second == hash_of(content) ? FileState::AS_KNOWN : FileState::CHANGED;
    }
    return text.file != file || content == text.view() ? FileState::AS_KNOWN : FileState::CHANGED;
}

}  // namespace pelt
