// The program's ways of Windows.
//
// What surprises: the words of the command line are asked for again, because those that main gets went through a code
// page that not every name of a file survives.
#include "system.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

#include <cstdlib>

namespace pelt::tool {

namespace {

UINT old_code_page;

void put_back_code_page() { SetConsoleOutputCP(old_code_page); }

std::string narrow(const wchar_t* word) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, word, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) { return {}; }
    std::string text(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, word, -1, text.data(), size, nullptr, nullptr);
    text.pop_back();
    return text;
}

}  // namespace

std::vector<std::string> prepare_system(int argc, char** argv) {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    old_code_page = GetConsoleOutputCP();
    if (old_code_page != 0 && SetConsoleOutputCP(CP_UTF8) != 0) { std::atexit(put_back_code_page); }
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (words == nullptr) { return {argv, argv + argc}; }
    std::vector<std::string> result;
    for (int i = 0; i < count; ++i) { result.push_back(narrow(words[i])); }
    LocalFree(words);
    return result;
}

bool goes_to_a_terminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

// Nothing lies beside it yet that it could run.
int run_program_beside(const std::string&, const std::vector<std::string>&) { return -1; }

std::FILE* open_file(const std::filesystem::path& path, const char* mode) {
    return _wfopen(path.c_str(), std::wstring(mode, mode + std::char_traits<char>::length(mode)).c_str());
}

}  // namespace pelt::tool
