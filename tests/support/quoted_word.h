// Words of a command line for Windows, where a program gets one text and its run-time library cuts it.
#pragma once

#include <string>

namespace pelt::test {

// Quoted so that the program's run-time library finds the word again.
inline std::string quoted_word(const std::string& word) {
    std::string text = "\"";
    size_t backslashes = 0;
    for (const char c : word) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        text.append(c == '"' ? 2 * backslashes + 1 : backslashes, '\\');
        backslashes = 0;
        text += c;
    }
    return text.append(2 * backslashes, '\\') + '"';
}

}  // namespace pelt::test
