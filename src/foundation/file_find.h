// Streams of the system, by name. The half of file_access that asks the operating system.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace pelt {

// Opens a regular file, found as file_resolve finds it; null when there is none. Never waits.
std::FILE* file_stream_read(const char* path);

// Which file a stream leads to, and the state that it is in.
struct FileIdentity {
    uint64_t device;
    uint64_t file;  // its number there, whatever its names
    int64_t size;
    int64_t modified;  // when its content and anything about it changed last, in the units of the system
    int64_t changed;
    bool settled;  // both so long ago that a further change will show in them
};

// False when the system does not tell.
bool file_stream_identity(std::FILE* stream, FileIdentity* identity);

// Makes or empties a file; null when that cannot be done, also for a name of a directory or a pipe. A path that holds
// backslashes has them as separators when no file and no directory carries them in its name.
std::FILE* file_stream_write(const char* path);

// The name under which that is done. Not on Win32, where it is the path itself.
std::string file_name_to_write(const char* path);

}  // namespace pelt
