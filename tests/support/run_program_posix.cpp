// Runs a program, on a system with fork.
#include "support/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace pelt::test {

namespace {

void become(const std::vector<std::string>& words, const RunOptions& options, int out, int err) {
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) { _exit(127); }
    if (options.file_size_limit >= 0) {
        const auto bytes = static_cast<rlim_t>(options.file_size_limit);
        const rlimit limit{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : words) { arguments.push_back(const_cast<char*>(word.c_str())); }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

// Takes what both ends say until both are closed.
void collect(int out, int err, RunResult& result) {
    pollfd ends[] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    std::string* texts[] = {&result.out, &result.err};
    for (int open_ends = 2; open_ends > 0;) {
        poll(ends, 2, -1);
        for (int end = 0; end < 2; ++end) {
            char buffer[65536];
            if (ends[end].fd < 0 || ends[end].revents == 0) { continue; }
            const ssize_t size = read(ends[end].fd, buffer, sizeof buffer);
            if (size <= 0) {
                ends[end].fd = -1;
                --open_ends;
            } else {
                texts[end]->append(buffer, static_cast<size_t>(size));
            }
        }
    }
}

}  // namespace

bool run_options_are_served() { return true; }

RunResult run_program(const std::vector<std::string>& words, const RunOptions& options) {
    RunResult result{-1, {}, {}};
    int out[2];
    int err[2];
    const auto open_errors = [&] {
        return options.errors_to_terminal ? openpty(&err[0], &err[1], nullptr, nullptr, nullptr) : pipe(err);
    };
    if (pipe(out) != 0 || open_errors() != 0) { return result; }
    const pid_t child = fork();
    if (child == 0) {
        close(out[0]);
        close(err[0]);
        become(words, options, out[1], err[1]);
    }
    close(out[1]);
    close(err[1]);
    collect(out[0], err[0], result);
    close(out[0]);
    close(err[0]);
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return result;
}

}  // namespace pelt::test
