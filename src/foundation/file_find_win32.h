// File names as Windows wants them.
#pragma once

#include <string>

namespace pelt {

// The UTF-8 name as a wide one; empty for null, an empty name and one that no file can have.
std::wstring file_system_name(const char* path);

// The same for a file that is to be opened: a name too long for the functions that take one comes in the form in which
// the system bounds nothing but the whole, which is absolute.
std::wstring file_system_path(const char* path);

}  // namespace pelt
