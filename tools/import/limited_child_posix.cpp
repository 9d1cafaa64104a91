// Forks, limits, waits.
//
// What surprises: a request for memory that the limit forbids ends the child at once, with a status that says so. What
// reads strange files takes such a failure for anything, most often for a broken file.
#include "limited_child.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define PELT_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PELT_ADDRESS_SANITIZER 1
#endif
#endif

namespace pelt::tool {

namespace {

using Clock = std::chrono::steady_clock;

enum ChildStatus : int { CHILD_GOOD = 0, CHILD_OUT_OF_MEMORY = 77, CHILD_EXCEPTION = 78, CHILD_UNHEARD = 79 };

constexpr int64_t BYTES_OF_A_MEGABYTE = int64_t{1} << 20;

void set_limit(int resource, int64_t value) {
    const rlimit limit{static_cast<rlim_t>(value), static_cast<rlim_t>(value)};
    setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

void limit_child(const ChildLimits& limits) {
    set_limit(RLIMIT_CORE, 0);
    set_limit(RLIMIT_FSIZE, 0);
    set_limit(RLIMIT_CPU, limits.seconds + 1);
#if !defined(PELT_ADDRESS_SANITIZER)
    // The sanitizer reserves more than any limit for what it knows of each byte.
    set_limit(RLIMIT_AS, limits.megabytes * BYTES_OF_A_MEGABYTE);
#endif
    std::set_new_handler([] { _exit(CHILD_OUT_OF_MEMORY); });
}

bool write_all(int out, const std::string& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t taken = write(out, bytes.data() + done, bytes.size() - done);
        if (taken < 0 && errno != EINTR) { return false; }
        done += taken > 0 ? static_cast<size_t>(taken) : 0;
    }
    return true;
}

[[noreturn]] void be_the_child(const ChildLimits& limits, const std::function<std::string()>& work, int out) {
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) { dup2(nowhere, stream); }
    limit_child(limits);
    try {
        _exit(write_all(out, work()) ? CHILD_GOOD : CHILD_UNHEARD);
    } catch (const std::bad_alloc&) { _exit(CHILD_OUT_OF_MEMORY); } catch (...) {
        _exit(CHILD_EXCEPTION);
    }
}

// Reads until the child closes its end. False when the time is over.
bool read_until(int in, Clock::time_point end, std::string* output) {
    char buffer[65536];
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) { return false; }
        pollfd waited{in, POLLIN, 0};
        const int ready = poll(&waited, 1, static_cast<int>(left));
        if (ready < 0 && errno != EINTR) { return true; }
        if (ready <= 0) { continue; }
        const ssize_t size = read(in, buffer, sizeof buffer);
        if (size == 0 || (size < 0 && errno != EINTR)) { return true; }
        if (size > 0) { output->append(buffer, static_cast<size_t>(size)); }
    }
}

std::string end_of(int status, const ChildLimits& limits) {
    const std::string memory = "it needs more memory than " + std::to_string(limits.megabytes) + " MB (--memory)";
    const std::string time = "it takes longer than " + std::to_string(limits.seconds) + " seconds (--seconds)";
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        if (number == SIGXCPU || number == SIGKILL) { return time; }
        return "it is broken: its reader fell over it (" + std::string(strsignal(number)) + ")";
    }
    switch (WEXITSTATUS(status)) {
        case CHILD_GOOD: return {};
        case CHILD_OUT_OF_MEMORY: return memory;
        default: return "it is broken: its reader gave up";
    }
}

}  // namespace

ChildResult run_in_child(const ChildLimits& limits, const std::function<std::string()>& work) {
    int ends[2];
    if (pipe(ends) != 0) { return {std::string("cannot begin: ") + std::strerror(errno), {}}; }
    const Clock::time_point end = Clock::now() + std::chrono::seconds(limits.seconds);
    const pid_t child = fork();
    if (child < 0) {
        const int reason = errno;
        close(ends[0]);
        close(ends[1]);
        return {std::string("cannot begin: ") + std::strerror(reason), {}};
    }
    if (child == 0) {
        close(ends[0]);
        be_the_child(limits, work, ends[1]);
    }
    close(ends[1]);
    ChildResult result;
    const bool in_time = read_until(ends[0], end, &result.output);
    close(ends[0]);
    if (!in_time) { kill(child, SIGKILL); }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    result.error = end_of(status, limits);
    return result;
}

}  // namespace pelt::tool
