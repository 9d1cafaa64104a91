// File names as Windows wants them.
#pragma once

#include <string>

namespace pelt {

// The UTF-8 name as a wide one; empty for null, an empty name and one that no file can have.
std::wstring file_system_name(const char* path);

}  // namespace pelt
