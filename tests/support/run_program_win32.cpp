// Runs a program on Windows.
//
// What surprises: what it says is gathered in files, because two pipes cannot be waited for at once there. Limits and
// terminals are not to be had: a test that needs one is not for this system.
#include "support/run_program.h"

#include <windows.h>

#include <cstdio>

#include "foundation/file_find_win32.h"
#include "support/quoted_word.h"
#include "support/temp_dir.h"

namespace pelt::test {

namespace {

HANDLE open_inherited(const std::string& path) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

std::string content(const std::string& path) {
    std::string text;
    if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
        char buffer[65536];
        for (size_t size; (size = std::fread(buffer, 1, sizeof buffer, file)) > 0;) { text.append(buffer, size); }
        std::fclose(file);
    }
    return text;
}

}  // namespace

bool run_options_are_served() { return false; }

RunResult run_program(const std::vector<std::string>& words, const RunOptions& options) {
    const TempDir work;
    std::string line;
    for (const std::string& word : words) { line += quoted_word(word) + ' '; }
    std::wstring wide_line = file_system_name(line.c_str());
    const std::wstring directory = file_system_name(options.directory.c_str());
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = open_inherited(work.file("out"));
    start.hStdError = open_inherited(work.file("err"));
    PROCESS_INFORMATION process{};
    RunResult result{127, {}, {}};
    if (CreateProcessW(nullptr, wide_line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                       directory.empty() ? nullptr : directory.c_str(), &start, &process) != 0) {
        WaitForSingleObject(process.hProcess, INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(process.hProcess, &code);
        result.status = static_cast<int>(code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
    result.out = content(work.file("out"));
    result.err = content(work.file("err"));
    return result;
}

}  // namespace pelt::test
