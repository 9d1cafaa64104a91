// Writing a file so that whoever looks finds the old one or the complete new one, never half of it.
#pragma once

#include <string>

namespace pelt::tool {

// Puts the content in the place of the path, as file_replace does: a symbolic link is followed, and what a replaced
// file is but for its content stays. A device or a pipe is written to directly, and "-" is standard output. False with
// a message printed on failure; the path is then as it was, or the message says where its content is.
bool write_replacing(const std::string& path, const std::string& content);

}  // namespace pelt::tool
