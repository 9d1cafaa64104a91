// How a file name leads to a file, on Windows. File names are UTF-8 in this library and wide to the system, so that a
// name needs no code page. The system itself ignores case and takes both separators, which leaves nothing to search
// for.
#include "foundation/file_find_win32.h"

#include <io.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <windows.h>

#include <algorithm>
#include <cstring>

#include "foundation/file_access.h"
#include "foundation/file_find.h"

namespace pelt {

namespace {

constexpr wchar_t LONG_NAME[] = L"\\\\?\\";
constexpr wchar_t DEVICE_NAME[] = L"\\\\.\\";

bool is_regular(const std::wstring& name) {
    if (name.starts_with(LONG_NAME)) {
        // Such a name is that of no device; and the other function refuses the question mark in it.
        const DWORD attributes = GetFileAttributesW(name.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }
    struct _stat64 status;
    return _wstat64(name.c_str(), &status) == 0 && (status.st_mode & _S_IFMT) == _S_IFREG;
}

// Absolute, with backslashes alone; empty when the system cannot tell.
std::wstring full_name(const std::wstring& name) {
    const DWORD needed = GetFullPathNameW(name.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = needed != 0 ? GetFullPathNameW(name.c_str(), needed, full.data(), nullptr) : 0;
    full.resize(length < needed ? length : 0);
    return full;
}

bool widen(UINT code_page, DWORD flags, const char* text, std::wstring* wide) {
    const int length = static_cast<int>(std::strlen(text));
    const int needed = MultiByteToWideChar(code_page, flags, text, length, nullptr, 0);
    if (needed <= 0) { return false; }
    wide->resize(static_cast<size_t>(needed));
    return MultiByteToWideChar(code_page, flags, text, length, wide->data(), needed) == needed;
}

// The stream when it is what may be used, else null. A stream has to be open before it can be told from a device.
std::FILE* usable(std::FILE* stream, bool devices_too) {
    if (stream == nullptr) { return nullptr; }
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    const DWORD type = GetFileType(handle);
    if (type == FILE_TYPE_DISK || (devices_too && type == FILE_TYPE_CHAR)) { return stream; }
    std::fclose(stream);
    return nullptr;
}

}  // namespace

std::wstring file_system_name(const char* path) {
    constexpr size_t LENGTH_LIMIT = 32767;  // no path of the system is longer
    std::wstring name;
    if (path == nullptr || *path == '\0' || std::strlen(path) > LENGTH_LIMIT) { return name; }
    if (!widen(CP_UTF8, MB_ERR_INVALID_CHARS, path, &name)) {
        widen(CP_ACP, 0, path, &name);  // text of an old file that is not UTF-8
    }
    return name;
}

std::wstring file_system_path(const char* path) {
    const std::wstring name = file_system_name(path);
    if (name.empty() || name.starts_with(LONG_NAME) || name.starts_with(DEVICE_NAME)) { return name; }
    const std::wstring full = full_name(name);
    if (full.size() < MAX_PATH) { return name; }
    return full.starts_with(L"\\\\") ? std::wstring(LONG_NAME) + L"UNC" + full.substr(1) : LONG_NAME + full;
}

std::string file_resolve(const char* path) {
    const std::wstring name = file_system_path(path);
    return !name.empty() && is_regular(name) ? std::string(path) : std::string();
}

std::FILE* file_stream_read(const char* path) {
    const std::wstring name = file_system_path(path);
    return !name.empty() && is_regular(name) ? usable(_wfopen(name.c_str(), L"rbN"), false) : nullptr;
}

bool file_stream_identity(std::FILE* stream, FileIdentity* identity) {
    constexpr int64_t LONGEST_STEP = 20000000;  // two seconds in the units of these times
    const auto joined = [](DWORD high, DWORD low) { return static_cast<int64_t>(uint64_t{high} << 32 | low); };
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    BY_HANDLE_FILE_INFORMATION about{};
    FILE_BASIC_INFO times{};
    if (GetFileInformationByHandle(handle, &about) == 0 ||
        GetFileInformationByHandleEx(handle, FileBasicInfo, &times, sizeof times) == 0) {
        return false;
    }
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    const int64_t modified = times.LastWriteTime.QuadPart;
    const int64_t changed = times.ChangeTime.QuadPart;
    const bool settled = std::max(modified, changed) < joined(time.dwHighDateTime, time.dwLowDateTime) - LONGEST_STEP;
    const auto file = static_cast<uint64_t>(joined(about.nFileIndexHigh, about.nFileIndexLow));
    *identity = FileIdentity{
        about.dwVolumeSerialNumber, file, joined(about.nFileSizeHigh, about.nFileSizeLow), modified, changed, settled};
    return file != 0;  // some file systems number nothing
}

std::FILE* file_stream_write(const char* path) {
    const std::wstring name = file_system_path(path);
    return name.empty() ? nullptr : usable(_wfopen(name.c_str(), L"wbN"), true);
}

}  // namespace pelt
