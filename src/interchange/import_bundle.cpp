// Texts with their lengths before them, in lists with their lengths before them.
#include "interchange/import_bundle.h"

#include <cstdint>

namespace pelt {

namespace {

constexpr int LENGTH_BYTES = 8;
constexpr int BITS = 8;

void put_number(std::string& bytes, uint64_t number) {
    for (int i = 0; i < LENGTH_BYTES; ++i) { bytes += static_cast<char>(number >> (BITS * i) & 0xFF); }
}

void put_text(std::string& bytes, const std::string& text) {
    put_number(bytes, text.size());
    bytes += text;
}

void put_texts(std::string& bytes, const std::vector<std::string>& texts) {
    put_number(bytes, texts.size());
    for (const std::string& text : texts) { put_text(bytes, text); }
}

struct Unbundling {
    const std::string& bytes;
    size_t at = 0;
    bool failed = false;
};

// No more than there are bytes behind it.
uint64_t take_number(Unbundling& from) {
    uint64_t number = 0;
    if (from.bytes.size() - from.at < LENGTH_BYTES) {
        from.failed = true;
        return 0;
    }
    for (int i = 0; i < LENGTH_BYTES; ++i) {
        number |= uint64_t{static_cast<unsigned char>(from.bytes[from.at++])} << (BITS * i);
    }
    from.failed = from.failed || number > from.bytes.size() - from.at;
    return from.failed ? 0 : number;
}

std::string take_text(Unbundling& from) {
    const auto size = static_cast<size_t>(take_number(from));
    from.at += size;
    return from.failed ? std::string() : from.bytes.substr(from.at - size, size);
}

std::vector<std::string> take_texts(Unbundling& from) {
    std::vector<std::string> texts;
    for (uint64_t left = take_number(from); left > 0 && !from.failed; --left) { texts.push_back(take_text(from)); }
    return texts;
}

bool is_plain_file_name(const std::string& name) {
    return !name.empty() && name[0] != '.' && name.find_first_of(std::string("/\\:\0", 4)) == std::string::npos;
}

}  // namespace

std::string import_bundle(const ImportResult& result) {
    std::string bytes;
    put_text(bytes, result.error);
    put_texts(bytes, result.notes);
    put_texts(bytes, result.losses);
    put_texts(bytes, result.sources);
    put_text(bytes, result.main);
    put_number(bytes, result.files.size());
    for (const ImportedFile& file : result.files) {
        put_text(bytes, file.name);
        put_text(bytes, file.content);
    }
    return bytes;
}

bool import_unbundle(const std::string& bytes, ImportResult* result) {
    Unbundling from{bytes};
    result->error = take_text(from);
    result->notes = take_texts(from);
    result->losses = take_texts(from);
    result->sources = take_texts(from);
    result->main = take_text(from);
    for (uint64_t left = take_number(from); left > 0 && !from.failed; --left) {
        const std::string name = take_text(from);
        from.failed = from.failed || !is_plain_file_name(name);
        result->files.push_back({name, take_text(from)});
    }
    return !from.failed && from.at == bytes.size();
}

}  // namespace pelt
