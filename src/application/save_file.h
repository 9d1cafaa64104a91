// What saves have in common.
#pragma once

#include <string>

namespace pelt {

// Leaves the reason in problem_last; always false.
bool save_refuse(const char* kind, const std::string& text, const std::string& file = {});

// Whether both names lead to one file, however they are spelled and through whatever links. A file that is not there is
// the same as one of the same name alone.
bool save_same_file(const std::string& path, const std::string& other);

// Whether a file can be put under this name: there is none, or a regular one. Refuses a directory or a device.
bool save_target_is_good(const std::string& path);

// Writes the whole content, beside the file first. False after a refusal, with the file as it was.
bool save_write(const std::string& path, const std::string& content);

}  // namespace pelt
