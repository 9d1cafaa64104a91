// Files: a table of five open streams known by small numbers, and the rules by which a path is cut and found.
//
// Paths are texts in the form of the system. A file is looked for by its exact name and then, on systems whose file
// names differ by case, ignoring case, component by component, because models come from systems that ignore it; a
// backslash separates as a slash does. Only regular files can be opened for reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace pelt {

inline constexpr int FILE_TABLE_SIZE = 5;
inline constexpr size_t PATH_BUFFER_SIZE = 512;
inline constexpr size_t DIRECTORY_BUFFER_SIZE = 256;  // what a model has for its own
inline constexpr const char* PATH_TOO_LONG = "path too long: %s";

int file_table_init();  // always 1; later calls do nothing

// Slot number 0 to 4, or -1. The mode is "r" or "w"; bytes pass as they are in both.
int file_open(const char* path, const char* mode);
int file_close(int slot);  // 1; 0 for a slot that is not open
size_t file_read(int slot, void* buffer, size_t size, size_t count);
size_t file_write(int slot, const void* buffer, size_t size, size_t count);

// A line of at most size - 1 bytes, without its LF (and the CR before it); null at the end or on a bad slot.
char* file_gets(char* buffer, int size, int slot);
int file_eof(int slot);
int file_error(int slot);
int file_exists(const char* path);

// Makes or replaces a whole file. 1, also when the disk is full: a file that was there is then what it was. 0 when the
// file cannot be opened.
int file_write_all(const char* path, const void* data, size_t size);

// The whole file as a new heap block (std::free), or null; an empty file gives null. size may be null. A zero byte
// that size does not count stands behind the content.
char* file_read_all(const char* path, size_t* size);

// The name under which the file exists on disk, found as told above; empty when there is no regular file.
std::string file_resolve(const char* path);

// Directory and name joined by the separator of the system.
std::string path_join(const char* directory, const char* file);

// How paths are cut. Here both separators count and a directory keeps its case; on Win32 only the backslash
// separates and a directory is lower case.
struct PathRules {
    bool slash_separates;
    bool lower_directory;
};
inline constexpr PathRules PATH_RULES_POSIX{true, false};
inline constexpr PathRules PATH_RULES_WIN32{false, true};
#ifdef _WIN32
inline constexpr PathRules PATH_RULES = PATH_RULES_WIN32;
inline constexpr char PATH_SEPARATOR = '\\';
inline constexpr bool SYSTEM_TEXT_IS_UTF8 = true;  // texts of this library are UTF-8, whatever the code page is
#else
inline constexpr PathRules PATH_RULES = PATH_RULES_POSIX;
inline constexpr char PATH_SEPARATOR = '/';
inline constexpr bool SYSTEM_TEXT_IS_UTF8 = false;  // they are in the encoding of the locale
#endif

// Lower-case name without directory and without an extension of three characters; null for null, an empty text, one
// of four characters or fewer, or of 512 and more. The result lies in a buffer shared with path_directory.
const char* path_base_name(const char* path, PathRules rules = PATH_RULES);

// Directory with its trailing separator, or the empty text; null for null, an empty text or one of 512 and more.
const char* path_directory(const char* path, PathRules rules = PATH_RULES);

// Whether a model can keep this path: a longer one would be cut, and lead elsewhere. False for null.
bool path_fits(const char* path, PathRules rules = PATH_RULES);

// How much of a path, whatever its length, is its directory: up to and with the last separator.
size_t path_directory_length(const char* path, PathRules rules = PATH_RULES);

// The path with separators that count: each slash becomes a backslash where only that separates.
std::string path_with_separators(const char* path, PathRules rules = PATH_RULES);

// A path as it is found from a base directory: joined to it when it is relative and there is a base (null or empty for
// none), else as it stands. A path that begins with a separator, or on Win32 with a drive, is not relative.
std::string path_from(const char* base, const char* path, PathRules rules = PATH_RULES);

// The path with the extension, given without its dot, in place of what stands behind the last dot that is followed by
// three characters or more; without such a dot it is appended as it is. In a static text, cut to 511 bytes.
const char* path_set_extension(const char* path, const char* extension);

// Older forms without tests of length; path_file_dir drops the separator.
const char* path_file_name(const char* path, PathRules rules = PATH_RULES);
const char* path_file_dir(const char* path, PathRules rules = PATH_RULES);

}  // namespace pelt
