// Writing a whole file so that a full disk costs nothing of the one that was there, on Windows.
//
// What surprises: the content goes to a file of its own beside the target, and where none can be made it goes straight
// into the target, as it does for a device.
#include "foundation/file_replace.h"

#include <io.h>
#include <windows.h>

#include <cstdio>
#include <string>

#include "foundation/file_find.h"
#include "foundation/file_find_win32.h"

namespace pelt {

namespace {

constexpr int NAME_ATTEMPTS = 100;

// Whether all of it went to the stream, which is closed.
bool write_and_close(std::FILE* stream, const void* data, size_t size) {
    const bool complete = size == 0 || std::fwrite(data, size, 1, stream) == 1;
    return std::fclose(stream) == 0 && complete;
}

std::FILE* make_temporary(const std::wstring& target, std::wstring* name) {
    const size_t separator = target.find_last_of(L"\\/:");
    const std::wstring directory = separator == std::wstring::npos ? std::wstring() : target.substr(0, separator + 1);
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        *name = directory + L".pelt-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(attempt) +
                L".tmp";
        const HANDLE file = CreateFileW(name->c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            CloseHandle(file);
            return _wfopen(name->c_str(), L"wbN");
        }
        if (GetLastError() != ERROR_FILE_EXISTS) {
            return nullptr;
        }
    }
    return nullptr;
}

bool is_file(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Whether the name can be opened for writing, which leaves an existing file as it is.
bool is_writable(const std::wstring& name) {
    const HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool on_disk = GetFileType(file) == FILE_TYPE_DISK;
    CloseHandle(file);
    return on_disk;
}

}  // namespace

int file_replace(const char* path, const void* data, size_t size) {
    const std::wstring name = file_system_name(path);
    if (name.empty()) {
        return 0;
    }
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (is_file(attributes) && is_writable(name)) {
        std::wstring temporary;
        if (std::FILE* stream = make_temporary(name, &temporary)) {
            if (!write_and_close(stream, data, size) ||
                !MoveFileExW(temporary.c_str(), name.c_str(), MOVEFILE_REPLACE_EXISTING)) {
                DeleteFileW(temporary.c_str());
            }
            return 1;
        }
    }
    std::FILE* stream = file_stream_write(path);
    if (stream == nullptr) {
        return 0;
    }
    write_and_close(stream, data, size);
    return 1;
}

}  // namespace pelt
