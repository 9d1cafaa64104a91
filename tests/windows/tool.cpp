// The programs that the script tests start beside the library, for a wish that runs under wine. One program under many
// names: env, timeout and mktemp do what those of a Unix do, for Windows programs; under every other name it starts the
// program of that name on the machine below wine. What surprises: wine starts such a program with its own output, so
// that what it prints takes the way over a file.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/quoted_word.h"

namespace {

using Words = std::vector<std::string>;

constexpr DWORD EXIT_TIMED_OUT = 124;
constexpr int EXIT_NOT_STARTED = 127;

int run_program(const Words& words, DWORD milliseconds) {
    std::string line;
    for (const std::string& word : words) { line += pelt::test::quoted_word(word) + ' '; }
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process) == 0) {
        std::fprintf(stderr, "cannot start %s\n", words[0].c_str());
        return EXIT_NOT_STARTED;
    }
    DWORD code = EXIT_TIMED_OUT;
    if (WaitForSingleObject(process.hProcess, milliseconds) == WAIT_TIMEOUT) {
        TerminateProcess(process.hProcess, EXIT_TIMED_OUT);
    } else {
        GetExitCodeProcess(process.hProcess, &code);
    }
    return static_cast<int>(code);
}

// env [-u NAME] [NAME=VALUE] PROGRAM ...; a program of the machine below is found by its name as well.
int run_env(Words words) {
    size_t at = 0;
    for (; at < words.size(); ++at) {
        const size_t equals = words[at].find('=');
        if (words[at] == "-u" && at + 1 < words.size()) {
            SetEnvironmentVariableA(words[++at].c_str(), nullptr);
        } else if (equals != std::string::npos) {
            SetEnvironmentVariableA(words[at].substr(0, equals).c_str(), words[at].substr(equals + 1).c_str());
        } else {
            break;
        }
    }
    words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(at));
    return words.empty() ? 0 : run_program(words, INFINITE);
}

int run_timeout(Words words) {
    if (words.size() < 2) { return EXIT_NOT_STARTED; }
    const auto seconds = static_cast<DWORD>(std::strtoul(words[0].c_str(), nullptr, 10));
    words.erase(words.begin());
    return run_program(words, seconds * 1000);
}

std::string temporary_name(const char* kind) {
    char folder[MAX_PATH] = "";
    GetTempPathA(sizeof folder, folder);
    // In lower case, as models keep their directories.
    for (char& c : folder) {
        if (c == '\\') { c = '/'; }
        if (c >= 'A' && c <= 'Z') { c = static_cast<char>(c - 'A' + 'a'); }
    }
    return folder + std::string(kind) + std::to_string(GetCurrentProcessId()) + '-' + std::to_string(GetTickCount64());
}

int make_temporary() {
    const std::string name = temporary_name("pelt");
    if (CreateDirectoryA(name.c_str(), nullptr) == 0) { return 1; }
    std::printf("%s\n", name.c_str());
    return 0;
}

int run_below(const std::string& program, const Words& words) {
    using Spawn = LONG(__cdecl*)(char* const*, int);
    using UnixName = char*(__cdecl*)(const wchar_t*);
    const auto spawn = reinterpret_cast<Spawn>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "__wine_unix_spawnvp")));
    const auto unix_name = reinterpret_cast<UnixName>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
    if (spawn == nullptr || unix_name == nullptr) { return EXIT_NOT_STARTED; }
    const std::string output = temporary_name("out");
    const std::wstring wide(output.begin(), output.end());
    Words all{"sh", "-c",    "program=$1 output=$2; shift 2; exec \"$program\" \"$@\" >\"$output\" 2>&1",
              "sh", program, unix_name(wide.c_str())};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char*> argv;
    for (std::string& word : all) { argv.push_back(word.data()); }
    argv.push_back(nullptr);
    const LONG status = spawn(argv.data(), 1);
    if (std::FILE* file = std::fopen(output.c_str(), "rb")) {
        char buffer[4096];
        for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, file)) > 0;) {
            std::fwrite(buffer, 1, count, stdout);
        }
        std::fclose(file);
        DeleteFileA(output.c_str());
    }
    return static_cast<int>(status);
}

}  // namespace

int main(int argc, char** argv) {
    std::string name = argv[0];
    name = name.substr(name.find_last_of("/\\") + 1);
    name = name.substr(0, name.rfind(".exe"));
    const Words words(argv + 1, argv + argc);
    if (name == "env") { return run_env(words); }
    if (name == "timeout") { return run_timeout(words); }
    if (name == "mktemp") { return make_temporary(); }
    return run_below(name, words);
}
