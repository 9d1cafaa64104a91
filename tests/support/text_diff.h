// What a diff of two texts shows: the lines that are gone, each behind a '-', and those that came, each behind a '+',
// in their order; a byte that no screen shows stands as its number.
#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace pelt::test {

// With their ends.
inline std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t newline = text.find('\n', at);
        const size_t end = newline == std::string::npos ? text.size() : newline + 1;
        lines.push_back(text.substr(at, end - at));
        at = end;
    }
    return lines;
}

inline std::string shown_line(const std::string& line) {
    std::string shown;
    const bool ended = !line.empty() && line.back() == '\n';
    for (const char c : line.substr(0, line.size() - (ended ? 1 : 0))) {
        const auto byte = static_cast<unsigned char>(c);
        char number[8];
        std::snprintf(number, sizeof number, "<%02X>", static_cast<unsigned>(byte));
        shown += byte >= 0x20 && byte < 0x7F ? std::string(1, c) : std::string(number);
    }
    return shown + (ended ? "\n" : "<no end>\n");
}

inline std::string text_diff(const std::string& before, const std::string& after) {
    const std::vector<std::string> a = lines_of(before);
    const std::vector<std::string> b = lines_of(after);
    // The longest common sequence of what is left of both.
    std::vector<std::vector<int>> common(a.size() + 1, std::vector<int>(b.size() + 1, 0));
    for (size_t i = a.size(); i-- > 0;) {
        for (size_t j = b.size(); j-- > 0;) {
            common[i][j] = a[i] == b[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
        }
    }
    std::string diff;
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() || j < b.size()) {
        if (i < a.size() && j < b.size() && a[i] == b[j]) {
            ++i;
            ++j;
        } else if (i < a.size() && (j == b.size() || common[i + 1][j] >= common[i][j + 1])) {
            diff += "-" + shown_line(a[i++]);
        } else {
            diff += "+" + shown_line(b[j++]);
        }
    }
    return diff;
}

}  // namespace pelt::test
