// A table of five open files known by small numbers.
//
// What surprises: a file that is read has a buffer of this layer, and its stream has none, because cutting lines out
// of a large block is most of what the readers wait for. The marks for the end and for errors are therefore kept here
// too: they are set when a read wanted more, as those of a stream are.
#include "foundation/file_access.h"

#include <cstdlib>
#include <cstring>

#include "foundation/file_find.h"
#include "foundation/file_replace.h"
#include "foundation/text.h"

namespace pelt {

namespace {

constexpr size_t BUFFER_SIZE = 65536;

struct FileEntry {
    bool in_use;
    bool reading;
    bool at_end;        // a read met the end of the file
    bool failed;        // a read met an error
    std::FILE* stream;  // owned by the slot, as is the buffer
    char* buffer;       // what was read ahead, or the stream's own buffer for writing
    size_t position;    // next byte of the buffer to hand out
    size_t size;        // bytes of the buffer that were filled
};

FileEntry file_table[FILE_TABLE_SIZE];
int file_count;
bool file_table_ready;

FileEntry* open_entry(int slot) {
    return slot >= 0 && slot < FILE_TABLE_SIZE && file_table[slot].in_use ? &file_table[slot] : nullptr;
}

FileEntry* read_entry(int slot) {
    FileEntry* entry = open_entry(slot);
    return entry != nullptr && entry->reading ? entry : nullptr;
}

// Reads a block from the stream straight to where it is wanted.
size_t read_block(FileEntry* entry, char* destination, size_t size) {
    if (entry->at_end || entry->failed) { return 0; }
    const size_t count = std::fread(destination, 1, size, entry->stream);
    if (count == 0) {
        entry->failed = std::ferror(entry->stream) != 0;
        entry->at_end = !entry->failed;
    }
    return count;
}

// Whether there is a byte to take, after a further block was read where that was necessary.
bool has_bytes(FileEntry* entry) {
    if (entry->position == entry->size) {
        entry->position = 0;
        entry->size = read_block(entry, entry->buffer, BUFFER_SIZE);
    }
    return entry->position < entry->size;
}

// Takes up to limit bytes of a line; true when its newline was met, which is passed over and not stored.
bool take_line(FileEntry* entry, char* line, size_t limit, size_t* length) {
    *length = 0;
    while (*length < limit && has_bytes(entry)) {
        const char* start = entry->buffer + entry->position;
        const size_t available = entry->size - entry->position;
        const size_t wanted = limit - *length;
        const size_t searched = available < wanted ? available : wanted;
        const void* newline = std::memchr(start, '\n', searched);
        const size_t taken =
            newline != nullptr ? static_cast<size_t>(static_cast<const char*>(newline) - start) : searched;
        std::memcpy(line + *length, start, taken);
        *length += taken;
        entry->position += taken;
        if (newline != nullptr) {
            ++entry->position;
            return true;
        }
    }
    return false;
}

FileEntry make_entry(const char* path, bool reading) {
    FileEntry entry{};
    entry.buffer = static_cast<char*>(std::malloc(BUFFER_SIZE));
    entry.stream = entry.buffer == nullptr ? nullptr : reading ? file_stream_read(path) : file_stream_write(path);
    if (entry.stream == nullptr) {
        std::free(entry.buffer);
        return entry;
    }
    std::setvbuf(entry.stream, reading ? nullptr : entry.buffer, reading ? _IONBF : _IOFBF, reading ? 0 : BUFFER_SIZE);
    entry.reading = reading;
    entry.in_use = true;
    return entry;
}

}  // namespace

int file_table_init() {
    if (!file_table_ready) {
        file_count = 0;
        for (FileEntry& entry : file_table) { entry = FileEntry{}; }
        file_table_ready = true;
    }
    return 1;
}

int file_open(const char* path, const char* mode) {
    const bool reading = str_equal(mode, "r");
    if (path == nullptr || (!reading && !str_equal(mode, "w"))) { return -1; }
    file_table_init();
    if (file_count == FILE_TABLE_SIZE) { return -1; }
    const FileEntry entry = make_entry(path, reading);
    if (!entry.in_use) { return -1; }
    int slot = 0;
    while (file_table[slot].in_use) { ++slot; }
    file_table[slot] = entry;
    ++file_count;
    return slot;
}

int file_close(int slot) {
    FileEntry* entry = open_entry(slot);
    if (entry == nullptr) { return 0; }
    std::fclose(entry->stream);
    std::free(entry->buffer);
    *entry = FileEntry{};
    --file_count;
    return 1;
}

size_t file_read(int slot, void* buffer, size_t size, size_t count) {
    FileEntry* entry = read_entry(slot);
    if (entry == nullptr || buffer == nullptr || size == 0 || count == 0 || count > SIZE_MAX / size) { return 0; }
    const size_t wanted = size * count;
    size_t done = entry->size - entry->position;
    done = done < wanted ? done : wanted;
    std::memcpy(buffer, entry->buffer + entry->position, done);
    entry->position += done;
    while (done < wanted) {
        const size_t block = read_block(entry, static_cast<char*>(buffer) + done, wanted - done);
        if (block == 0) { break; }
        done += block;
    }
    return done / size;
}

size_t file_write(int slot, const void* buffer, size_t size, size_t count) {
    const FileEntry* entry = open_entry(slot);
    if (entry == nullptr || entry->reading || buffer == nullptr || size == 0 || count == 0) { return 0; }
    return std::fwrite(buffer, size, count, entry->stream);
}

char* file_gets(char* buffer, int size, int slot) {
    FileEntry* entry = read_entry(slot);
    if (entry == nullptr || buffer == nullptr || size < 2) { return nullptr; }
    size_t length = 0;
    const auto limit = static_cast<size_t>(size) - 1;
    bool ended = take_line(entry, buffer, limit, &length);
    if (!ended && (length == 0 || entry->failed)) { return nullptr; }
    // A CR that the limit parted from its LF goes with it as well.
    if (!ended && length == limit && buffer[length - 1] == '\r' && has_bytes(entry) &&
        entry->buffer[entry->position] == '\n') {
        ++entry->position;
        ended = true;
    }
    if (ended && length > 0 && buffer[length - 1] == '\r') { --length; }
    buffer[length] = '\0';
    return buffer;
}

int file_eof(int slot) {
    const FileEntry* entry = open_entry(slot);
    return entry != nullptr && entry->at_end ? 1 : 0;
}

int file_error(int slot) {
    const FileEntry* entry = open_entry(slot);
    return entry != nullptr && (entry->failed || std::ferror(entry->stream) != 0) ? 1 : 0;
}

int file_exists(const char* path) {
    const int slot = file_open(path, "r");
    return slot < 0 ? 0 : file_close(slot);
}

int file_write_all(const char* path, const void* data, size_t size) {
    file_table_init();
    // A full table refuses it, though no slot is taken for long.
    if (path == nullptr || (data == nullptr && size > 0) || file_count == FILE_TABLE_SIZE) { return 0; }
    return file_replace(path, data, size).opened ? 1 : 0;
}

char* file_read_all(const char* path, size_t* size) {
    if (size != nullptr) { *size = 0; }
    const int slot = file_open(path, "r");
    if (slot < 0) { return nullptr; }
    char* content = nullptr;
    size_t total = 0;
    for (size_t capacity = BUFFER_SIZE;; capacity *= 2) {
        auto* larger = static_cast<char*>(std::realloc(content, capacity));
        if (larger == nullptr) {
            total = 0;
            break;
        }
        content = larger;
        total += file_read(slot, content + total, 1, capacity - 1 - total);
        if (total < capacity - 1) { break; }
    }
    file_close(slot);
    if (total == 0) {
        std::free(content);
        return nullptr;
    }
    content[total] = '\0';
    auto* fitted = static_cast<char*>(std::realloc(content, total + 1));
    if (size != nullptr) { *size = total; }
    return fitted != nullptr ? fitted : content;
}

}  // namespace pelt
