// The program's ways of a system with signals and descriptors.
#include "system.h"

#include <unistd.h>

#include <csignal>
#include <system_error>

namespace pelt::tool {

std::vector<std::string> prepare_system(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);
    return {argv, argv + argc};
}

bool goes_to_a_terminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

int run_program_beside(const std::string& program, const std::vector<std::string>& words) {
    std::error_code problem;
    const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", problem);
    if (problem) { return -1; }
    const std::string path = own.parent_path() / program;
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& word : words) { argv.push_back(const_cast<char*>(word.c_str())); }
    argv.push_back(nullptr);
    std::fflush(stdout);
    execv(path.c_str(), argv.data());
    return -1;
}

std::FILE* open_file(const std::filesystem::path& path, const char* mode) { return std::fopen(path.c_str(), mode); }

}  // namespace pelt::tool
