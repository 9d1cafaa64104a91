// What the operating systems do each in their own way. Paths are in UTF-8 on Windows, and bytes elsewhere.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace pelt::tool {

// To be called before anything else: output is bytes as they stand, and a file that may grow no further is an error
// like any other. Returns the words of the command line, the program's name first.
std::vector<std::string> prepare_system(int argc, char** argv);

// A name as the standard library's paths take it, and back. Left to itself it would take a name of Windows for one in a
// code page; elsewhere the bytes stay as they are.
inline std::filesystem::path path_of(const std::string& name) { return std::u8string(name.begin(), name.end()); }
inline std::string name_of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

bool goes_to_a_terminal(std::FILE* stream);

// Has another program that lies beside this one do its work, with these words behind its name, and returns its status;
// -1 when it cannot be started. It may also take the place of this one, and nothing is returned.
int run_program_beside(const std::string& program, const std::vector<std::string>& words);

// As std::fopen, for any name that the system can have.
std::FILE* open_file(const std::filesystem::path& path, const char* mode);

}  // namespace pelt::tool
