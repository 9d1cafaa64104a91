// The program's ways of a system with processes, signals and descriptors.
#include "system.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace pelt::tool {

std::vector<std::string> prepare_system(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);
    return {argv, argv + argc};
}

int process_id() { return getpid(); }

bool errors_go_to_a_terminal() { return isatty(STDERR_FILENO) != 0; }

std::FILE* open_file(const std::filesystem::path& path, const char* mode) { return std::fopen(path.c_str(), mode); }

bool reach_disk(std::FILE* stream) { return fsync(fileno(stream)) == 0; }

void directory_reaches_disk(const std::filesystem::path& directory) {
    const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace pelt::tool
