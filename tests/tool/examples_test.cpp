// Every example that the program and its documents give is run, on the models that come along, to its end.
//
// The examples are found in the texts: lines that begin with "pelt-model", in the help alone or behind "Example:",
// in the documents between lines of "```". "# status N" behind one says that it ends so, else it ends with 0; && joins
// two.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/run_program.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

namespace fs = std::filesystem;
using test::pelt_model;
using test::RunResult;
using Texts = std::vector<std::string>;

struct Example {
    std::string where;
    std::string text;
    int status;
};
using Examples = std::vector<Example>;

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

void take_example(const std::string& where, std::string line, Examples& examples) {
    constexpr const char* LABEL = "Example: ";
    constexpr const char* STATUS = "# status ";
    line = trimmed(line);
    line = line.rfind(LABEL, 0) == 0 ? trimmed(line.substr(std::string(LABEL).size())) : line;
    if (line.rfind("pelt-model ", 0) != 0) { return; }
    const size_t status = line.find(STATUS);
    const int expected = status == std::string::npos ? 0 : std::stoi(line.substr(status + std::string(STATUS).size()));
    examples.push_back({where, trimmed(line.substr(0, line.find(" #"))), expected});
}

Examples examples_of_help(const Texts& words) {
    Examples examples;
    std::istringstream help(pelt_model(words).out);
    for (std::string line; std::getline(help, line);) { take_example(words.front(), line, examples); }
    return examples;
}

Examples examples_of_document(const fs::path& path) {
    Examples examples;
    std::ifstream document(path);
    bool is_code = false;
    for (std::string line; std::getline(document, line);) {
        if (line.rfind("```", 0) == 0) {
            is_code = !is_code;
        } else if (is_code) {
            take_example(test::name_of(path.filename()), line, examples);
        }
    }
    return examples;
}

Texts words_of(const std::string& text) {
    std::istringstream stream(text);
    Texts words;
    for (std::string word; stream >> word;) { words.push_back(word); }
    return words;
}

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ExamplesOfTheTool : public testing::Test {
protected:
    ExamplesOfTheTool() { fs::copy(fs::path(PELT_SOURCE_DIR) / "models", test::path_of(dir.file("models"))); }

    // As a shell does it: the names that end as the pattern does behind its star, in order.
    Texts expanded(const std::string& word) const {
        const size_t star = word.find('*');
        if (star == std::string::npos) { return {word}; }
        Texts names;
        for (const auto& entry : fs::directory_iterator(test::path_of(dir.file(word.substr(0, star))))) {
            const std::string name = word.substr(0, star) + test::name_of(entry.path().filename());
            const std::string end = word.substr(star + 1);
            if (name.size() >= word.size() && name.substr(name.size() - end.size()) == end) { names.push_back(name); }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    RunResult run_one(const std::string& command) const {
        Texts words;
        for (const std::string& word : words_of(command)) {
            for (const std::string& name : expanded(word)) { words.push_back(test::native_path(name)); }
        }
        EXPECT_EQ(words.front(), "pelt-model");
        words.erase(words.begin());
        return pelt_model(words, {dir.path()});
    }

    // A file that an example wrote is no example's end before it was read back.
    void expect_outputs_to_read_back(const std::string& command) const {
        const Texts words = words_of(command);
        const auto option = std::find(words.begin(), words.end(), "-o");
        if (option == words.end()) { return; }
        const std::string& output = *(option + 1);
        EXPECT_TRUE(dir.exists(output)) << command;
        if (output.size() > 4 && output.substr(output.size() - 4) == ".mod") {
            EXPECT_EQ(pelt_model({"info", test::native_path(output)}, {dir.path()}).err, "") << command;
        }
    }

    void expect_to_run(const Example& example) const {
        const std::string joined = example.text + " && ";
        int status = 0;
        for (size_t start = 0, end = 0; (end = joined.find(" && ", start)) != std::string::npos; start = end + 4) {
            ASSERT_EQ(status, 0) << example.where << ": " << example.text;
            const std::string command = joined.substr(start, end - start);
            const RunResult run = run_one(command);
            status = run.status;
            EXPECT_FALSE(holds(run.err, "Sanitizer")) << run.err;
            expect_outputs_to_read_back(command);
        }
        EXPECT_EQ(status, example.status) << example.where << ": " << example.text;
    }

    test::TempDir dir;
};

TEST_F(ExamplesOfTheTool, ThoseOfTheHelpRunToTheirEnd) {
    Texts commands;
    bool listed = false;
    std::istringstream help(pelt_model({"--help"}).out);
    for (std::string line; std::getline(help, line);) {
        listed = trimmed(line) == "Subcommands:" || (listed && !trimmed(line).empty());
        if (listed && line.rfind("  ", 0) == 0 && line[2] != ' ') { commands.push_back(words_of(line).front()); }
    }
    ASSERT_EQ(commands.size(), 9u) << "the list of the commands has another form";
    Examples all = examples_of_help({"--help"});
    EXPECT_GE(all.size(), 3u);
    for (const std::string& command : commands) {
        // The help of this one is that of another program, whose examples name files of other formats.
        if (command == "import") { continue; }
        const Examples own = examples_of_help({command, "--help"});
        EXPECT_FALSE(own.empty()) << command;
        all.insert(all.end(), own.begin(), own.end());
    }
    for (const Example& example : all) { expect_to_run(example); }
}

TEST_F(ExamplesOfTheTool, ThoseOfTheDocumentsRunToTheirEnd) {
    const fs::path root(PELT_SOURCE_DIR);
    std::vector<fs::path> documents{root / "README.md", root / "CONTRIBUTING.md"};
    for (const auto& entry : fs::directory_iterator(root / "docs")) {
        if (entry.path().extension() == ".md") { documents.push_back(entry.path()); }
    }
    size_t count = 0;
    for (const fs::path& document : documents) {
        for (const Example& example : examples_of_document(document)) {
            expect_to_run(example);
            ++count;
        }
    }
    EXPECT_GE(count, 8u) << "the documents have lost their examples";
}

}  // namespace
}  // namespace pelt
