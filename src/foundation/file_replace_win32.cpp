// Writing a whole file so that neither a full disk nor a crash costs anything of the one that was there, on Windows.
//
// What surprises: a new file in the place of the old one would part it from its other names, and from the link that
// leads to it, and would belong to whoever made it. Such a file is written in place, as is one in a folder that takes
// no new files; what it held lies in a copy for as long as that takes.
#include "foundation/file_replace.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "foundation/file_find_win32.h"

namespace pelt {

namespace {

constexpr int NAME_ATTEMPTS = 100;
constexpr size_t BLOCK_SIZE = size_t{1} << 24;
constexpr size_t COPY_BLOCK_SIZE = 65536;
constexpr DWORD KEPT_ATTRIBUTES = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

struct Content {
    const char* data;
    size_t size;
};

// The functions below return 0 or an error number, unless they say otherwise.

// What the system says went wrong, in the numbers that the C library has words for.
int last_error() {
    switch (GetLastError()) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_BAD_NETPATH: return ENOENT;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION: return EACCES;
        case ERROR_WRITE_PROTECT: return EROFS;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL: return ENOSPC;
        default: return EIO;
    }
}

HANDLE open_file(const std::wstring& name, DWORD access, DWORD how) {
    const DWORD share = how == CREATE_NEW ? 0 : FILE_SHARE_READ | FILE_SHARE_WRITE;
    return CreateFileW(name.c_str(), access, share, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr);
}

int write_content(HANDLE file, Content content) {
    while (content.size > 0) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min(content.size, BLOCK_SIZE));
        if (WriteFile(file, content.data, wanted, &written, nullptr) == 0) { return last_error(); }
        if (written == 0) { return ENOSPC; }
        content.data += written;
        content.size -= written;
    }
    return 0;
}

int bring_to_disk(HANDLE file) { return FlushFileBuffers(file) != 0 ? 0 : last_error(); }

int write_and_close(HANDLE file, Content content) {
    int error = write_content(file, content);
    if (error == 0) { error = bring_to_disk(file); }
    return CloseHandle(file) != 0 || error != 0 ? error : last_error();
}

int go_to_start(HANDLE file) {
    return SetFilePointerEx(file, LARGE_INTEGER{}, nullptr, FILE_BEGIN) != 0 ? 0 : last_error();
}

int set_length(HANDLE file, LONGLONG length) {
    LARGE_INTEGER end{};
    end.QuadPart = length;
    return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0 ? 0 : last_error();
}

// With its separator; empty for the current one.
std::wstring folder_of(const std::wstring& name) {
    const size_t separator = name.find_last_of(L"\\/:");
    return separator == std::wstring::npos ? std::wstring() : name.substr(0, separator + 1);
}

// A new file in the folder, and its name; INVALID_HANDLE_VALUE when none can be made.
HANDLE make_temporary(const std::wstring& folder, std::wstring* name) {
    for (int attempt = 0; attempt < NAME_ATTEMPTS; ++attempt) {
        *name = folder + L".pelt-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(attempt) + L".tmp";
        const HANDLE file = open_file(*name, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) { return file; }
    }
    return INVALID_HANDLE_VALUE;
}

FileReplacement not_opened() { return {false, last_error(), {}}; }

// ---- a new file that takes the name ----

FileReplacement make_file(const std::wstring& name, Content content) {
    std::wstring temporary;
    const HANDLE file = make_temporary(folder_of(name), &temporary);
    if (file == INVALID_HANDLE_VALUE) { return not_opened(); }
    const int error = write_and_close(file, content);
    if (error != 0) {
        DeleteFileW(temporary.c_str());
        return {true, error, {}};
    }
    if (MoveFileExW(temporary.c_str(), name.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        const FileReplacement result = not_opened();
        DeleteFileW(temporary.c_str());
        return result;
    }
    return {true, 0, {}};
}

// Who owns a file, as the system's record of it; empty when that cannot be told.
std::vector<unsigned char> owner_of(const std::wstring& name) {
    DWORD size = 0;
    GetFileSecurityW(name.c_str(), OWNER_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<unsigned char> record(size);
    if (size == 0 || GetFileSecurityW(name.c_str(), OWNER_SECURITY_INFORMATION, record.data(), size, &size) == 0) {
        record.clear();
    }
    return record;
}

// A file system without owners gives none to either.
bool same_owner(const std::wstring& a, const std::wstring& b) {
    std::vector<unsigned char> record_a = owner_of(a);
    std::vector<unsigned char> record_b = owner_of(b);
    if (record_a.empty() || record_b.empty()) { return record_a.empty() == record_b.empty(); }
    PSID owner_a = nullptr, owner_b = nullptr;
    BOOL unused = FALSE;
    return GetSecurityDescriptorOwner(record_a.data(), &owner_a, &unused) != 0 &&
           GetSecurityDescriptorOwner(record_b.data(), &owner_b, &unused) != 0 && owner_a != nullptr &&
           owner_b != nullptr && EqualSid(owner_a, owner_b) != 0;
}

// Whether nobody has the file open who would not let it go.
bool may_be_moved(const std::wstring& name) {
    constexpr DWORD SHARE = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file =
        CreateFileW(name.c_str(), DELETE, SHARE, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) { return GetLastError() == ERROR_FILE_NOT_FOUND; }
    CloseHandle(file);
    return true;
}

// The access list and named streams of the old file go over to the new one in this. It is not tried in vain, because a
// system may leave a file of its own behind then.
bool take_place(const std::wstring& temporary, const std::wstring& target) {
    if (!may_be_moved(target)) { return false; }
    if (ReplaceFileW(target.c_str(), temporary.c_str(), nullptr, 0, nullptr, nullptr) != 0) { return true; }
    // It can fail when the old file is gone already.
    return GetFileAttributesW(target.c_str()) == INVALID_FILE_ATTRIBUTES &&
           MoveFileExW(temporary.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
}

// False when no file beside the target can take its place, which is untouched then. True with an error number when the
// content could not be written.
bool write_beside(const std::wstring& target, Content content, DWORD attributes, int* error) {
    std::wstring temporary;
    const HANDLE file = make_temporary(folder_of(target), &temporary);
    if (file == INVALID_HANDLE_VALUE) { return false; }
    *error = write_and_close(file, content);
    SetFileAttributesW(temporary.c_str(), attributes & KEPT_ATTRIBUTES);
    const bool taken = *error == 0 && same_owner(temporary, target) && take_place(temporary, target);
    if (!taken) { DeleteFileW(temporary.c_str()); }
    return taken || *error != 0;
}

// ---- writing in place ----

// What a file held before it is written in place; closed and removed by drop_copy.
struct Copy {
    HANDLE file;
    std::wstring name;
};

// From here to the end, to the place where the other one stands.
int copy_bytes(HANDLE from, HANDLE to) {
    std::vector<char> block(COPY_BLOCK_SIZE);
    for (;;) {
        DWORD size = 0;
        if (ReadFile(from, block.data(), static_cast<DWORD>(block.size()), &size, nullptr) == 0) {
            return last_error();
        }
        const int error = write_content(to, Content{block.data(), size});
        if (size == 0 || error != 0) { return error; }
    }
}

int copy_whole(HANDLE from, HANDLE to) {
    int error = go_to_start(from);
    if (error == 0) { error = go_to_start(to); }
    return error == 0 ? copy_bytes(from, to) : error;
}

void drop_copy(const Copy& copy) {
    CloseHandle(copy.file);
    DeleteFileW(copy.name.c_str());
}

int make_copy_in(const std::wstring& folder, HANDLE file, Copy* copy) {
    copy->file = make_temporary(folder, &copy->name);
    if (copy->file == INVALID_HANDLE_VALUE) { return last_error(); }
    int error = copy_whole(file, copy->file);
    if (error == 0) { error = bring_to_disk(copy->file); }
    if (error != 0) { drop_copy(*copy); }
    return error;
}

// Beside the file, or in the folder for such files.
int make_copy(const std::wstring& target, HANDLE file, Copy* copy) {
    const int error = make_copy_in(folder_of(target), file, copy);
    if (error == 0) { return 0; }
    wchar_t folder[MAX_PATH + 2];
    const DWORD length = GetTempPathW(MAX_PATH + 2, folder);
    return length > 0 && length <= MAX_PATH + 1 ? make_copy_in(folder, file, copy) : error;
}

int put_back(const Copy& copy, HANDLE file, LONGLONG old_size) {
    int error = copy_whole(copy.file, file);
    if (error == 0) { error = set_length(file, old_size); }
    return error == 0 ? bring_to_disk(file) : error;
}

int overwrite(HANDLE file, Content content) {
    int error = go_to_start(file);
    if (error == 0) { error = write_content(file, content); }
    if (error == 0) { error = set_length(file, static_cast<LONGLONG>(content.size)); }
    return error == 0 ? bring_to_disk(file) : error;
}

std::string narrow(const std::wstring& name) {
    const int length = static_cast<int>(name.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, name.c_str(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, name.c_str(), length, text.data(), size, nullptr, nullptr);
    return text;
}

FileReplacement write_in_place(const std::wstring& target, HANDLE file, Content content) {
    LARGE_INTEGER old{};
    if (GetFileSizeEx(file, &old) == 0) { return {true, last_error(), {}}; }
    Copy copy{};
    int error = make_copy(target, file, &copy);
    if (error != 0) { return {true, error, {}}; }
    // The new length first, because only that needs room: where there is none, what was there is not touched at all.
    const auto size = static_cast<LONGLONG>(content.size);
    bool is_whole = true;
    error = size > old.QuadPart ? set_length(file, size) : 0;
    if (error != 0) {
        is_whole = set_length(file, old.QuadPart) == 0;
    } else {
        error = overwrite(file, content);
        is_whole = error == 0;
    }
    if (is_whole || put_back(copy, file, old.QuadPart) == 0) {
        drop_copy(copy);
        return {true, error, {}};
    }
    CloseHandle(copy.file);
    return {true, error, narrow(copy.name)};
}

// ---- finding out which ----

// One name alone leads to the file, and it is no link.
bool may_be_replaced(HANDLE file, DWORD attributes) {
    BY_HANDLE_FILE_INFORMATION about{};
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 &&
           GetFileInformationByHandle(file, &about) != 0 && about.nNumberOfLinks == 1;
}

// Without emptying what is there, and readable where that is allowed, for the copy.
HANDLE open_old(const std::wstring& name) {
    const HANDLE file = open_file(name, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    return file != INVALID_HANDLE_VALUE ? file : open_file(name, GENERIC_WRITE, OPEN_EXISTING);
}

FileReplacement write_over_disk_file(HANDLE file, const std::wstring& name, Content content) {
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (may_be_replaced(file, attributes)) {
        int error = 0;
        CloseHandle(file);  // nobody may have the file open whose place is taken
        if (write_beside(name, content, attributes, &error)) { return {true, error, {}}; }
        file = open_old(name);
        if (file == INVALID_HANDLE_VALUE) { return not_opened(); }
    }
    FileReplacement result = write_in_place(name, file, content);
    CloseHandle(file);
    return result;
}

}  // namespace

FileReplacement file_replace(const char* path, const void* data, size_t size) {
    const Content content{static_cast<const char*>(data), size};
    const std::wstring name = file_system_path(path);
    if (name.empty()) { return {false, ENOENT, {}}; }
    const HANDLE file = open_old(name);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_FILE_NOT_FOUND ? make_file(name, content) : not_opened();
    }
    const DWORD type = GetFileType(file);
    if (type == FILE_TYPE_DISK) { return write_over_disk_file(file, name, content); }
    const bool is_device = type == FILE_TYPE_CHAR;
    const int error = is_device ? write_content(file, content) : EINVAL;
    CloseHandle(file);
    return {is_device, error, {}};
}

}  // namespace pelt
