// The program's ways of a system with signals and descriptors.
#include "system.h"

#include <unistd.h>

#include <csignal>

namespace pelt::tool {

std::vector<std::string> prepare_system(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);
    return {argv, argv + argc};
}

bool goes_to_a_terminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

std::FILE* open_file(const std::filesystem::path& path, const char* mode) { return std::fopen(path.c_str(), mode); }

}  // namespace pelt::tool
