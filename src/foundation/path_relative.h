// A path as it is told from another place.
#pragma once

#include <string>

namespace pelt {

// How the file is named from the directory, with slashes, and "../" for each step up. Both are absolute, without "."
// and ".." and with slashes; the directory may end in one. Empty where no name leads there, as from one drive to
// another.
std::string path_relative(const std::string& directory, const std::string& file);

}  // namespace pelt
