// pelt-model check beside a load: both read a file in the same way, and walk the same tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>

#include "formats/line_reader.h"
#include "formats/model_lines.h"
#include "formats/model_reader.h"
#include "foundation/load_error.h"
#include "scene/model.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

using test::pelt_model;
using test::RunResult;
using Lines = std::vector<std::string>;

constexpr const char* HEAD = "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\n4 1 1 0\nlayer a 1 2 3 singlesided\n";

Lines lines_of(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) { lines.push_back(line); }
    return lines;
}

class CheckAndLoad : public testing::Test {
protected:
    Lines check(const std::string& text, bool strict = false) {
        dir.write("m.mod", text);
        const RunResult run = pelt_model({"check", "m.mod", strict ? "--strict" : "-q"}, {dir.path()});
        EXPECT_EQ(run.status, run.err.empty() ? 0 : 1);
        return lines_of(run.err);
    }
    Lines strict(const std::string& text) { return check(text, true); }

    test::TempDir dir;
};

// ---- one way of reading ----

// The line behind which a load reads no further, 0 when it reads all.
struct LoadWatch {
    ModelFileContext file;
    int32_t line;
};

int32_t line_that_ends_a_load(const std::string& path) {
    Model* model = model_create(path.c_str(), nullptr);
    LoadWatch watch{};
    watch.file.model = model;
    const auto carry_out = [](void* context) {
        auto* at = static_cast<LoadWatch*>(context);
        at->line = reader_line_number();
        model_parse_line(&at->file);
    };
    const bool complete = reader_run_file(path.c_str(), "#", 1, carry_out, &watch) != 0;
    model_release(model);
    return complete ? 0 : watch.line;
}

TEST_F(CheckAndLoad, ABareCarriageReturnIsPartOfItsLine) {
    // One point line of nine fields, whose fifth is a weight and the sixth and seventh joints; no second point.
    EXPECT_EQ(check("points\n1 0 0 0\r2 0 0 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 1\n"),
              Lines{"m.mod:5: point does not exist"});
    EXPECT_EQ(check("joint a 0 0 0 world 1\rjoint b 0 0 0 world 1\n"), Lines{"m.mod:1: Bad joint definition"});
}

TEST_F(CheckAndLoad, AByteOrderMarkCountsAtTheStartOfTheFileAlone) {
    EXPECT_EQ(check("\xEF\xBB\xBFpoints\n1 0 0 0\n"), Lines{});
    EXPECT_EQ(check("#\n\xEF\xBB\xBFpoints\n1 0 0 0\n"), Lines{"m.mod:3: Bad point or triangle data"});
}

// Puts in what readers disagree on.
std::string mutated(std::string text, std::mt19937& random) {
    static const std::string PIECES[] = {"\r",   "\r\n", "\n", "\xEF\xBB\xBF", "\"", "\"\"",   "\t",
                                         " ",    "#",    "-",  "1.5",          "99", "points", "none",
                                         "\x80", ".",    "0",  "\n1",          "\n#"};
    const auto below = [&](size_t limit) { return limit == 0 ? 0 : random() % limit; };
    for (size_t change = 1 + below(4); change > 0; --change) {
        const size_t place = below(text.size() + 1);
        switch (below(4)) {
            case 0: text.erase(place, below(12)); break;
            case 1: text.insert(place, 900 + below(300), ' '); break;
            case 2: text.insert(place, text.substr(below(text.size()), below(60))); break;
            default: text.insert(place, PIECES[below(std::size(PIECES))]);
        }
    }
    return text;
}

TEST_F(CheckAndLoad, BothNameTheSameFirstLineOfAnyFile) {
    constexpr int COUNT = 400;
    const std::string text =
        std::string("\xEF\xBB\xBFjoint hip 1 2 3 world 2\njoint knee 1 2 3 hip 1\nblend hip knee 1\n") + HEAD +
        "transparency 0.5\ninvisible 1.0 0.5 0\ntriangles\n0 1 2 3\n1 1 2 3 4\n2 1 2 3 4\n3 1 2 3 1\n4 1 2 3 4\n"
        "uvees\n1 0.5 0.5\nlines\n2 1 2 3\nnormals\n1 0 0 1\n2 90 0\n3 1.0 0 0\ngouraud\n1 1 2 3 4\n";
    std::mt19937 random(14);
    std::vector<std::string> words{"check", "--max", "1"};
    for (int i = 0; i < COUNT; ++i) {
        words.push_back("f" + std::to_string(i) + ".mod");
        dir.write(words.back(), mutated(text, random));
    }
    const RunResult run = pelt_model(words, {dir.path()});
    const Lines said = lines_of("\n" + run.err);
    int ended_by_a_line = 0;
    for (int i = 0; i < COUNT; ++i) {
        const std::string& name = words[static_cast<size_t>(i) + 3];
        Model* model = model_load(dir.file(name).c_str());
        const std::string reason = load_error_get() != nullptr ? load_error_get() : "";
        const int32_t line = line_that_ends_a_load(dir.file(name));
        ended_by_a_line += line > 0;
        const std::string start = name + ":" + (line > 0 ? std::to_string(line) + ":" : "");
        const auto found = std::find_if(said.begin(), said.end(),
                                        [&](const std::string& one) { return one.rfind(name + ":", 0) == 0; });
        const std::string first = found != said.end() ? *found : "";
        EXPECT_EQ(model == nullptr, !first.empty()) << name << " " << first << " " << reason << "\n" << dir.read(name);
        EXPECT_TRUE(model != nullptr || first.rfind(start, 0) == 0) << first << ", and not in line " << line;
        model_release(model);
    }
    EXPECT_GT(ended_by_a_line, COUNT / 4);
    EXPECT_LT(ended_by_a_line, COUNT);
}

TEST_F(CheckAndLoad, WhatEndsTheLoadComesFirst) {
    // The id, the normal and the missing child stand before the line that ends the load, and are no reason for it.
    const std::string text =
        std::string("child gone 0 0 0 1 1 1 0 0 0\nnormals\n1 0 0 0\npoints\n40000 0 0 0\n") + "points\n1 2\n";
    EXPECT_EQ(check(text),
              (Lines{"m.mod:7: Bad point definition", "m.mod:1: Cannot find child model: gone.mod",
                     "m.mod:3: bad normal: 1", "m.mod:5: a point id above 32767, which no primitive can name: 40000"}));
    EXPECT_EQ(pelt_model({"info", "m.mod"}, {dir.path()}).err, "m.mod:7: Bad point definition\n");
}

TEST_F(CheckAndLoad, AChildIsReadBeforeTheLinkBehindIt) {
    dir.write("wing.mod", "points\n1 2\n");
    EXPECT_EQ(check("child wing 0 0 0 1 1 1 0 0 0\nchild gone 0 0 0 1 1 1 0 0 0\n"),
              (Lines{"wing.mod:2: Bad point definition", "m.mod:2: Cannot find child model: gone.mod"}));
    EXPECT_EQ(pelt_model({"info", "m.mod"}, {dir.path()}).err, "wing.mod:2: Bad point definition\n");
}

// ---- trees that go round ----

TEST_F(CheckAndLoad, AModelThatNamesItselfInTwoSpellingsIsToldAndLeft) {
    dir.make_dir("d");
    const std::string twice = "child " + test::native_path("d/../m") + " 0 0 0 1 1 1 0 0 0\nchild " +
                              test::native_path("./m") + " 0 0 0 1 1 1 0 0 0\n";
    const Lines found = check(twice);
    ASSERT_FALSE(found.empty());
    EXPECT_LE(found.size(), 5u) << "a link is told once for each thing that is wrong with it";
    EXPECT_EQ(found[0].rfind("m.mod:1: child model", 0), 0u) << found[0];
    const RunResult info = pelt_model({"info", "m.mod"}, {dir.path()});
    EXPECT_EQ(info.status, 1);
    EXPECT_EQ(info.err, found[0] + "\n");
}

TEST_F(CheckAndLoad, AFileIsReadOnceWhateverItsSpelling) {
    dir.make_dir("d");
    dir.write("wing.mod", "points\n1 2\n");
    EXPECT_EQ(check("child wing 0 0 0 1 1 1 0 0 0\nchild " + test::native_path("d/../wing") +
                    " 0 0 0 1 1 1 0 0 0\nchild " + test::native_path("./wing") + " 0 0 0 1 1 1 0 0 0\n"),
              Lines{"wing.mod:2: Bad point definition"});
}

// ---- what the reader passes over ----

TEST_F(CheckAndLoad, StrictTakesALineOf1023BytesAsWhole) {
    const std::string layer = "layer a 1 2 3 singlesided";
    const auto line_of = [&](size_t size, const std::string& end) {
        return layer + std::string(size - layer.size(), ' ') + end;
    };
    const Lines cut{"m.mod:1: a line of more than 1023 bytes is read in pieces"};
    for (const char* end : {"", "\n", "\r\n"}) {
        EXPECT_EQ(strict(line_of(1022, end)), Lines{});
        EXPECT_EQ(strict(line_of(1023, end)), Lines{});
        EXPECT_EQ(strict(line_of(1024, end)), cut);
        EXPECT_EQ(strict(line_of(5000, end)), cut) << "told once";
    }
    // What stands behind it begins a line, though the reader counts an empty one between them.
    EXPECT_EQ(strict(line_of(1023, "\n") + "autor\n"), Lines{"m.mod:3: ignored: autor"});
}

TEST_F(CheckAndLoad, StrictTakes256FieldsAsGood) {
    const auto fields = [](int count, const std::string& end) {
        std::string text = "points";
        for (int i = 1; i < count; ++i) { text += " x"; }
        return text + end + "\n";
    };
    const Lines more{"m.mod:1: fields behind the 256th are ignored"};
    for (const char* end : {"", " ", "\t ", " \"\"", " \""}) { EXPECT_EQ(strict(fields(256, end)), Lines{}) << end; }
    EXPECT_EQ(strict(fields(257, "")), more);
    EXPECT_EQ(strict(fields(256, "  \"a b\"")), more);
    EXPECT_EQ(strict(fields(300, "")), more);
}

TEST_F(CheckAndLoad, StrictReportsCoordinatesThatAreNoWholeNumbers) {
    const std::string text =
        "joint a 0 1.5 0 world 0\npoints\n1 0 2.5 0\n2 1e3 0 x\n3 1 2 3 0.5\n"
        "layer a 1 red 3 singlesided\nchild wing 1.5 0 0 1 1 1 0 0 0\n";
    dir.write("wing.mod", "");
    EXPECT_EQ(check(text), Lines{});
    EXPECT_EQ(strict(text), (Lines{"m.mod:1: a coordinate that is no whole number is read as 0: 1.5",
                                   "m.mod:3: a coordinate that is no whole number is read as 0: 2.5",
                                   "m.mod:4: a coordinate that is no whole number is read as 0: 1e3",
                                   "m.mod:4: a coordinate that is no whole number is read as 0: x",
                                   "m.mod:6: a colour that is no whole number is read as 0: red"}));
}

TEST_F(CheckAndLoad, StrictReportsPointsThatAreDefinedTwice) {
    const std::string text = "points\n1 0 0 0\n2 0 0 0\nnormals\n1 0 0 1\n1 0 0 1\npoints\n3 0 0 0\n1 5 0 0\n";
    EXPECT_EQ(check(text), Lines{});
    EXPECT_EQ(strict(text), Lines{"m.mod:9: a point that is defined already: 1"});
}

TEST_F(CheckAndLoad, StrictReportsPointsThatOnlyANormalMade) {
    const std::string text = "normals\n7 0 0 1\n8 0 0 1\n9 1 0 0\npoints\n8 0 0 0\n";
    EXPECT_EQ(check(text), Lines{});
    EXPECT_EQ(strict(text),
              (Lines{"m.mod:2: a point that only a normal made: 7", "m.mod:4: a point that only a normal made: 9"}));
}

TEST_F(CheckAndLoad, StrictReportsPrimitivesThatNameAPointTwice) {
    // Normals and control points may be named as often as one likes, and a line may come back to where it began.
    const std::string good =
        "triangles\n0 1 2 3 1 1 1\n3 1 2 3 3 1 1 1 1 1 1 1 1 1\n1 1 2 3 4\n2 1 2 3 4\n"
        "lines\n2 1 2 1\n";
    EXPECT_EQ(strict(HEAD + good), Lines{});
    const std::string text = std::string(HEAD) + "triangles\n0 1 2 1\n1 1 2 3 3\n2 4 2 3 4\n3 2 2 1\n4 1 2 1 4\n";
    EXPECT_EQ(check(text), Lines{});
    EXPECT_EQ(
        strict(text),
        (Lines{"m.mod:8: a primitive that names a point twice: 1", "m.mod:9: a primitive that names a point twice: 3",
               "m.mod:10: a primitive that names a point twice: 4", "m.mod:11: a primitive that names a point twice: 2",
               "m.mod:12: a primitive that names a point twice: 1"}));
}

TEST_F(CheckAndLoad, StrictReportsWhatBindsToNothing) {
    const std::string good = "joint a 0 0 0 world 0\njoint b 0 0 0 a 0\npoints\n1 0 0 0 0.5 a b\n2 0 0 0 1.0 b world\n";
    EXPECT_EQ(strict(good), Lines{});
    // A joint is looked up where it is named, so that one whose line comes later is none; a parent may come later.
    const std::string text =
        "joint b 0 0 0 a 0\npoints\n1 0 0 0 0.5 a b\njoint a 0 0 0 world 0\njoint c 0 0 0 nobody 0\n"
        "points\n2 0 0 0 1.0 nowhere a\nblend a z 1\n";
    EXPECT_EQ(check(text), Lines{});
    EXPECT_EQ(strict(text), (Lines{"m.mod:3: a point that follows a joint without a line before it: a",
                                   "m.mod:5: a joint that hangs on one that has no line: nobody",
                                   "m.mod:7: a point that follows a joint without a line before it: nowhere",
                                   "m.mod:8: a blend group that follows a joint without a line before it: z"}));
}

TEST_F(CheckAndLoad, StrictReportsWordsOfALayerLineThatMeanNothing) {
    EXPECT_EQ(strict("layer a 1 2 3 singlesided\nlayer b 1 2 3 doublesided mirror -z\n"), Lines{});
    const std::string text =
        "layer a 1 2 3 onesided\nlayer b 1 2 3 singlesided mirrored x\n"
        "layer c 1 2 3 singlesided mirror\nlayer d 1 2 3 doublesided mirror x y\n"
        "layer e 1 2 3 both mirror y\n";
    EXPECT_EQ(check(text), Lines{});
    EXPECT_EQ(strict(text),
              (Lines{"m.mod:1: ignored in a layer line: onesided", "m.mod:2: ignored in a layer line: mirrored x",
                     "m.mod:3: ignored in a layer line: mirror", "m.mod:4: ignored in a layer line: mirror x y",
                     "m.mod:5: ignored in a layer line: both"}));
}

// ---- what is no file ----

TEST_F(CheckAndLoad, ModelsWithOddNamesAreTaken) {
    for (const char* name : {"-x.mod", "-.mod", "--help.mod", "[a,b].mod", "a b.mod", "%s%n.mod", "-"}) {
        dir.write(name, HEAD);
        EXPECT_EQ(pelt_model({"check", "--", name}, {dir.path()}).out, std::string(name) + ": good\n");
        EXPECT_EQ(pelt_model({"write", std::string("--output=") + "out-" + name, "--", name}, {dir.path()}).status, 0)
            << name;
        EXPECT_TRUE(dir.exists(std::string("out-") + name)) << name;
    }
}

}  // namespace
}  // namespace pelt
