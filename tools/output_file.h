// Writing a file so that whoever looks finds the old one or the complete new one, never half of it.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace pelt::tool {

// Hands a stream to the procedure, which returns whether it could write everything, and puts the result in the place
// of the path: through a temporary file in the same directory, which is on the disk before it takes the name. A
// symbolic link is followed, the permissions of a replaced file stay, a device is written to directly, and "-" is
// standard output. False with a message printed on failure; the path is then as it was.
bool write_replacing(const std::string& path, const std::function<bool(std::FILE*)>& write);

}  // namespace pelt::tool
