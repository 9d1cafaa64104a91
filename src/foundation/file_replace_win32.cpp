// Writing a whole file so that a full disk costs nothing of the one that was there, on Windows.
//
// What surprises: a new file in the place of the old one would part it from its other names, and from the link that
// leads to it. Such a file is written in place, as is one in a folder that takes no new files; it first gets its new
// length, because only that needs room on the disk.
#include "foundation/file_replace.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "foundation/file_find_win32.h"

namespace pelt {

namespace {

constexpr int NAME_ATTEMPTS = 100;
constexpr size_t BLOCK_SIZE = size_t{1} << 24;
constexpr DWORD KEPT_ATTRIBUTES = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

struct Content {
    const char* data;
    size_t size;
};

HANDLE open_file(const std::wstring& name, DWORD how) {
    const DWORD share = how == CREATE_NEW ? 0 : FILE_SHARE_READ | FILE_SHARE_WRITE;
    return CreateFileW(name.c_str(), GENERIC_WRITE, share, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool write_content(HANDLE file, Content content) {
    while (content.size > 0) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min(content.size, BLOCK_SIZE));
        if (WriteFile(file, content.data, wanted, &written, nullptr) == 0 || written == 0) {
            return false;
        }
        content.data += written;
        content.size -= written;
    }
    return true;
}

// Whether all of it went to the file, which is closed.
bool write_and_close(HANDLE file, Content content) {
    const bool complete = write_content(file, content);
    return CloseHandle(file) != 0 && complete;
}

bool set_length(HANDLE file, LONGLONG length) {
    LARGE_INTEGER end{};
    end.QuadPart = length;
    return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0;
}

// A file of that name that was not there before; a part of one does not stay.
int write_new(const std::wstring& name, Content content) {
    const HANDLE file = open_file(name, CREATE_NEW);
    if (file == INVALID_HANDLE_VALUE) {
        return 0;
    }
    if (!write_and_close(file, content)) {
        DeleteFileW(name.c_str());
    }
    return 1;
}

void write_in_place(HANDLE file, Content content) {
    LARGE_INTEGER old{};
    if (GetFileSizeEx(file, &old) == 0) {
        return;
    }
    const auto size = static_cast<LONGLONG>(content.size);
    const bool fits = size <= old.QuadPart || set_length(file, size);
    const bool written =
        fits && SetFilePointerEx(file, LARGE_INTEGER{}, nullptr, FILE_BEGIN) != 0 && write_content(file, content);
    set_length(file, written ? size : old.QuadPart);
}

// A new file in the folder of the target, and its name; INVALID_HANDLE_VALUE when none can be made.
HANDLE make_temporary(const std::wstring& target, std::wstring* name) {
    const size_t separator = target.find_last_of(L"\\/:");
    const std::wstring folder = separator == std::wstring::npos ? std::wstring() : target.substr(0, separator + 1);
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        *name = folder + L".pelt-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(attempt) + L".tmp";
        const HANDLE file = open_file(*name, CREATE_NEW);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) {
            return file;
        }
    }
    return INVALID_HANDLE_VALUE;
}

// False when no file beside the target can take its place; the target is untouched then, and when the disk is full.
bool write_beside(const std::wstring& target, Content content, DWORD attributes) {
    std::wstring name;
    const HANDLE file = make_temporary(target, &name);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool complete = write_and_close(file, content);
    SetFileAttributesW(name.c_str(), attributes & KEPT_ATTRIBUTES);
    const bool moved = complete && MoveFileExW(name.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    if (!moved) {
        DeleteFileW(name.c_str());
    }
    return moved || !complete;
}

// One name alone leads to the file, and it is no link.
bool may_be_replaced(HANDLE file, DWORD attributes) {
    BY_HANDLE_FILE_INFORMATION about{};
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 &&
           GetFileInformationByHandle(file, &about) != 0 && about.nNumberOfLinks == 1;
}

}  // namespace

int file_replace(const char* path, const void* data, size_t size) {
    const Content content{static_cast<const char*>(data), size};
    const std::wstring name = file_system_name(path);
    if (name.empty()) {
        return 0;
    }
    // Without emptying what is there.
    HANDLE file = open_file(name, OPEN_EXISTING);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_FILE_NOT_FOUND ? write_new(name, content) : 0;
    }
    const DWORD type = GetFileType(file);
    int result = type == FILE_TYPE_DISK || type == FILE_TYPE_CHAR ? 1 : 0;
    if (type == FILE_TYPE_CHAR) {
        write_content(file, content);
    } else if (type == FILE_TYPE_DISK) {
        const DWORD attributes = GetFileAttributesW(name.c_str());
        if (may_be_replaced(file, attributes)) {
            CloseHandle(file);  // nobody may have the file open whose place is taken
            if (write_beside(name, content, attributes)) {
                return 1;
            }
            file = open_file(name, OPEN_EXISTING);
            if (file == INVALID_HANDLE_VALUE) {
                return 0;
            }
        }
        write_in_place(file, content);
    }
    CloseHandle(file);
    return result;
}

}  // namespace pelt
