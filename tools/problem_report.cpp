// Problems of models in the formats that other programs read.
//
// What surprises: a name or a text of a file can hold whatever it likes, and each format has a way of its own to say
// it.
#include "problem_report.h"

#include <nlohmann/json.hpp>

#include "console.h"

#ifndef PELT_VERSION
#define PELT_VERSION "unknown"
#endif

namespace pelt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int INDENT = 2;
constexpr const char* SARIF_SCHEMA = "https://json.schemastore.org/sarif-2.1.0.json";
constexpr const char* RULE = "model";

// What is no UTF-8 must not stop the output; and in ASCII no character is a command to a terminal.
std::string dumped(const Json& json) { return json.dump(INDENT, ' ', true, Json::error_handler_t::replace) + "\n"; }

std::string percent(unsigned char byte) {
    static constexpr const char* DIGITS = "0123456789ABCDEF";
    return {'%', DIGITS[byte >> 4], DIGITS[byte & 0x0F]};
}

// A path as the reference of a URI: every byte that has a meaning there, or none at all, by its number.
std::string uri_of(const std::string& path) {
    static const std::string PLAIN = "/-._~";
    std::string uri;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool is_word = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        uri += c == '\\' ? "/" : is_word || PLAIN.find(c) != std::string::npos ? std::string(1, c) : percent(byte);
    }
    return uri;
}

Json json_report(const std::vector<CheckedFile>& files) {
    Json all = Json::array();
    for (const CheckedFile& checked : files) {
        Json problems = Json::array();
        for (const Problem& problem : checked.problems) {
            problems.push_back({{"file", problem.file},
                                {"line", problem.line > 0 ? Json(problem.line) : Json(nullptr)},
                                {"text", problem.text}});
        }
        all.push_back({{"file", checked.file}, {"problems", problems}, {"left_out", checked.left_out}});
    }
    return all;
}

Json sarif_result(const Problem& problem) {
    Json place{{"artifactLocation", {{"uri", uri_of(problem.file)}}}};
    if (problem.line > 0) { place["region"] = {{"startLine", problem.line}}; }
    return {{"ruleId", RULE},
            {"level", "error"},
            {"message", {{"text", problem.text}}},
            {"locations", Json::array({Json{{"physicalLocation", place}}})}};
}

Json sarif_report(const std::vector<CheckedFile>& files) {
    Json results = Json::array();
    for (const CheckedFile& checked : files) {
        for (const Problem& problem : checked.problems) { results.push_back(sarif_result(problem)); }
    }
    const Json rule{{"id", RULE}, {"shortDescription", {{"text", "Something is wrong with a model file"}}}};
    const Json driver{{"name", "pelt-model"}, {"version", PELT_VERSION}, {"rules", Json::array({rule})}};
    return {{"$schema", SARIF_SCHEMA},
            {"version", "2.1.0"},
            {"runs", Json::array({Json{{"tool", {{"driver", driver}}}, {"results", results}}})}};
}

// A workflow command ends with its line, and its properties at a colon or a comma.
std::string github_text(const std::string& text, bool is_property) {
    static const std::string ALWAYS = "%\r\n";
    static const std::string IN_PROPERTY = ":,";
    std::string result;
    for (const char c : shown(text)) {
        const bool is_taken =
            ALWAYS.find(c) != std::string::npos || (is_property && IN_PROPERTY.find(c) != std::string::npos);
        result += is_taken ? percent(static_cast<unsigned char>(c)) : std::string(1, c);
    }
    return result;
}

std::string github_report(const std::vector<CheckedFile>& files) {
    std::string report;
    for (const CheckedFile& checked : files) {
        for (const Problem& problem : checked.problems) {
            report += "::error file=" + github_text(problem.file, true) +
                      (problem.line > 0 ? ",line=" + std::to_string(problem.line) : "") +
                      "::" + github_text(problem.text, false) + "\n";
        }
    }
    return report;
}

}  // namespace

std::string problem_report(const std::string& format, const std::vector<CheckedFile>& files) {
    if (format == JSON) { return dumped(json_report(files)); }
    if (format == SARIF) { return dumped(sarif_report(files)); }
    return format == GITHUB ? github_report(files) : std::string();
}

}  // namespace pelt::tool
