// Streams of the system, by name. The half of file_access that asks the operating system.
#pragma once

#include <cstdio>
#include <string>

namespace pelt {

// Opens a regular file, found as file_resolve finds it; null when there is none. Never waits.
std::FILE* file_stream_read(const char* path);

// Makes or empties a file; null when that cannot be done, also for a name of a directory or a pipe. A path that holds
// backslashes has them as separators when no file and no directory carries them in its name.
std::FILE* file_stream_write(const char* path);

// The name under which that is done. Not on Win32, where it is the path itself.
std::string file_name_to_write(const char* path);

}  // namespace pelt
