// pelt-model run as a program: its command line, info, check and ps2-check.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#ifndef _WIN32
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#endif

#include <nlohmann/json.hpp>

#include "support/run_program.h"
#include "support/temp_dir.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

using test::pelt_model;
using test::RunResult;
using Json = nlohmann::json;

const std::vector<std::string> COMMANDS = {"info", "check", "write", "export", "flatten", "normals", "ps2-check"};

constexpr const char* GOOD_MODEL = "points\n1 0 0 0\n2 1 0 0\n3 0 1 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n";

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) { lines.push_back(line); }
    return lines;
}

class Tool : public testing::Test {
protected:
    // What check says of a model called m.mod in its own directory, one line a problem.
    std::vector<std::string> problems(const std::string& text, const std::vector<std::string>& options = {}) {
        dir.write("m.mod", text);
        std::vector<std::string> words{"check", "m.mod"};
        words.insert(words.end(), options.begin(), options.end());
        const RunResult run = pelt_model(words, {dir.path()});
        EXPECT_EQ(run.status, run.err.empty() ? 0 : 1);
        EXPECT_EQ(run.out, run.err.empty() ? "m.mod: good\n" : "");
        return lines_of(run.err);
    }
    using Lines = std::vector<std::string>;

    test::TempDir dir;
};

// ---- the command line ----

TEST_F(Tool, HelpNamesEveryCommandAndTheExitStatus) {
    const RunResult run = pelt_model({"--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    for (const std::string& command : COMMANDS) { EXPECT_TRUE(holds(run.out, "\n  " + command + " ")) << command; }
    EXPECT_TRUE(holds(run.out, "Exit status: 0"));
}

TEST_F(Tool, EveryCommandHasHelpWithAnExample) {
    for (const std::string& command : COMMANDS) {
        const RunResult run = pelt_model({command, "--help"});
        EXPECT_EQ(run.status, 0) << command;
        EXPECT_EQ(run.err, "");
        EXPECT_TRUE(holds(run.out, "  pelt-model " + command) || holds(run.out, "Example: pelt-model " + command))
            << run.out;
    }
}

TEST_F(Tool, VersionPrintsItsNumber) {
    const RunResult run = pelt_model({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.substr(0, 11), "pelt-model ");
}

TEST_F(Tool, WrongUseIsStatusTwoAndSaysWhereHelpIs) {
    const std::vector<std::vector<std::string>> wrong = {{},
                                                         {"paint"},
                                                         {"--paint"},
                                                         {"info"},
                                                         {"write", "a.mod"},
                                                         {"write", "a.mod", "b.mod", "-o", "c.mod"},
                                                         {"export", "-o", "c.obj"},
                                                         {"flatten", "a.mod", "-o", "b.mod", "--only", "paint"},
                                                         {"check", "--max", "many", "a.mod"},
                                                         {"check", "--max", "-1", "a.mod"},
                                                         {"check", "--max", "99999999999999999999", "a.mod"}};
    for (const auto& words : wrong) {
        const RunResult run = pelt_model(words, {dir.path()});
        EXPECT_EQ(run.status, 2) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err.substr(0, 12), "pelt-model: ");
        EXPECT_TRUE(holds(run.err, "--help' for more information.\n")) << run.err;
    }
    EXPECT_TRUE(holds(pelt_model({"paint"}).err, "paint"));
}

// ---- info ----

TEST_F(Tool, InfoTellsWhatIsInAModelAndItsChildren) {
    dir.write("a.tga", test::solid_tga(2, 3, 1, 2, 3));
    dir.write("wing.mod", "points\n1 5 6 7\n");
    dir.write("m.mod",
              "joint hip 1 2 3 world 2\nblend hip world 1\npoints\n1 -10 0 0\n2 10 0 0\n3 0 20 0\n4 0 0 30\n"
              "layer skin 1 2 3 singlesided mirror y\ntriangles\n0 1 2 3\n1 1 2 3 4\n2 1 2 3\n3 1 2 3 1\n4 1 2 3 4\n"
              "uvees\n1 0 0\nimage a.tga x y\nlines\n2 1 2\nchild wing 1.5 0 0 1 1 1 0 0 90\n");
    const RunResult run = pelt_model({"info", "m.mod"}, {dir.path()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(holds(run.out, "points 4  joints 1  blends 1  layers 1  children 1  normals no  colours no"));
    EXPECT_TRUE(holds(run.out, "box from -10 -20 0 to 10 20 30")) << run.out;
    EXPECT_TRUE(holds(run.out, "child wing at 1.5 0 0, scale 1 1 1, rotation 0 0 90")) << run.out;
    EXPECT_TRUE(holds(run.out, "1*type1 1*type4")) << run.out;
    EXPECT_TRUE(holds(run.out, "    points 1 ")) << run.out;
}

TEST_F(Tool, InfoGivesJsonToPrograms) {
    dir.write("a.tga", test::solid_tga(2, 3, 1, 2, 3));
    dir.write("wing.mod", "points\n1 5 6 7\n");
    dir.write("m.mod",
              "joint hip 1 2 3 world 2\npoints\n1 -10 0 0\n2 10 0 0\n3 0 20 0\nnormals\n1 0 0 1\n"
              "layer caf\xE9 1 2 3 singlesided mirror y\ntriangles\n0 1 2 3\n3 1 2 3 1\nuvees\n1 0 0\n"
              "image a.tga x y\nchild wing 1.5 0 0 1 1 1 0 0 90\n");
    dir.write("empty.mod", "");
    const RunResult run = pelt_model({"info", "--json", "m.mod", "empty.mod"}, {dir.path()});
    EXPECT_EQ(run.status, 0) << run.err;
    const Json all = Json::parse(run.out);
    ASSERT_EQ(all.size(), 2u);
    const Json& model = all[0];
    EXPECT_EQ(model["file"], "m.mod");
    EXPECT_EQ(model["points"], 3);
    EXPECT_EQ(model["joints"][0]["name"], "hip");
    EXPECT_EQ(model["has_normals"], true);
    EXPECT_EQ(model["box"]["min"], (Json::array({-10.0, -20.0, 0.0})));
    EXPECT_EQ(model["layers"][0]["name"], "caf\xEF\xBF\xBD") << "what is no UTF-8 has a sign in its place";
    EXPECT_EQ(model["layers"][0]["mirror"], "y");
    EXPECT_EQ(model["layers"][0]["triangles"], 2);
    EXPECT_EQ(model["layers"][0]["curved"], (Json{{"1", 1}}));
    EXPECT_EQ(model["layers"][0]["image"], (Json{{"file", "a.tga"}, {"width", 2}, {"height", 3}}));
    EXPECT_EQ(model["children"][0]["model"]["points"], 1);
    EXPECT_EQ(all[1]["layers"], Json::array());
}

TEST_F(Tool, ABadFileDoesNotStopTheOthers) {
    dir.write("good.mod", GOOD_MODEL);
    dir.write("bad.mod", "points\n1 2\n");
    for (const char* command : {"info", "check", "ps2-check"}) {
        const RunResult run = pelt_model({command, "none.mod", "bad.mod", "good.mod"}, {dir.path()});
        EXPECT_EQ(run.status, 1) << command;
        EXPECT_TRUE(holds(run.out, "good.mod")) << command;
        EXPECT_EQ(run.err, "none.mod: could not find the file\nbad.mod:2: Bad point definition\n") << command;
    }
}

// ---- check ----

TEST_F(Tool, CheckSaysGoodOnceAndNothingWhenQuiet) {
    EXPECT_EQ(problems(GOOD_MODEL), Lines{});
    const RunResult run = pelt_model({"check", "-q", "m.mod"}, {dir.path()});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
}

TEST_F(Tool, CheckReportsEveryBadLine) {
    EXPECT_EQ(problems("points\n1 0 0\n2 0 0 0\n\n# comment\nlayer a 1 2 3\nlayer b 1 2 3 singlesided\n"
                       "triangles\n0 2 2 9\n0 2 2 2\n7 1\n2 2\n"),
              (Lines{"m.mod:2: Bad point definition", "m.mod:6: Bad layer definition", "m.mod:9: point does not exist",
                     "m.mod:11: Bad triangle definition", "m.mod:12: Bad triangle definition"}));
}

TEST_F(Tool, CheckHasATextForEveryLineThatFailsWithoutOne) {
    const Lines found = problems(
        "points\n0 1 2 3\n1 0 0 0\n2 0 0 0\n3 0 0 0\n4 0 0 0\nlayer a 1 2 3 singlesided\ntransparency 2.0\n"
        "image none x y\nimage a.tga x y\nreflect a.tga 2.0\nblend a b 0\n"
        "triangles\n4 1 2 3 4 3\n3 1 2 3 9\nlayer b 1 2 3 singlesided mirror w\n");
    ASSERT_EQ(found.size(), 9u);
    EXPECT_EQ(found[0], "m.mod:2: a point id must be at least 1");
    EXPECT_EQ(found[1], "m.mod:8: a transparency must lie in 0.0 to 1.0, behind a layer line");
    EXPECT_EQ(found[2], "m.mod:9: an image needs a file name and must stand behind the triangles of its layer");
    EXPECT_EQ(found[3], "m.mod:10: cannot open TGA file: a.tga");
    EXPECT_EQ(found[4], "m.mod:11: cannot open TGA file: a.tga");
    EXPECT_EQ(found[5], "m.mod:12: the point count of a blend must be above 0");
    EXPECT_EQ(found[6], "m.mod:14: a curve type must be 0 to 4, and for a quad 0, 2 or 4");
    EXPECT_EQ(found[7], "m.mod:15: a curve type must be 0 to 4, and for a quad 0, 2 or 4");
    EXPECT_EQ(found[8], "m.mod:16: the mirror axis of a layer must be x, y, z, -x, -y or -z");
}

TEST_F(Tool, CheckReportsAllImagesAndChildrenThatAreMissing) {
    dir.write("wing.mod", "points\n1 0 0 0\nlayer w 1 2 3 singlesided\ntriangles\n0 1 1 1\nimage three.tga x y\n");
    dir.write("broken.tga", "no picture");
    EXPECT_EQ(problems("points\n1 0 0 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 1 1\nimage one.tga x y\n"
                       "mirrorimage two.tga\nreflect broken.tga 0.5\nchild gone 0 0 0 1 1 1 0 0 0\n"
                       "child wing 0 0 0 1 1 1 0 0 0\nchild wing 9 0 0 1 1 1 0 0 0\nchild lost 0 0 0 1 1 1 0 0 0\n"),
              (Lines{"m.mod:6: cannot open TGA file: one.tga", "m.mod:7: cannot open TGA file: two.tga",
                     "m.mod:8: TGA read failed: broken.tga", "m.mod:9: Cannot find child model: gone.mod",
                     "m.mod:12: Cannot find child model: lost.mod", "wing.mod:6: cannot open TGA file: three.tga"}));
}

TEST_F(Tool, CheckFindsCirclesOfChildren) {
    dir.write("b.mod", "\nchild m 0 0 0 1 1 1 0 0 0\n");
    EXPECT_EQ(problems("child b 0 0 0 1 1 1 0 0 0\nchild m 0 0 0 1 1 1 0 0 0\n"),
              (Lines{"b.mod:2: child model names itself or a model above it: m.mod",
                     "m.mod:2: child model names itself or a model above it: m.mod"}));
}

TEST_F(Tool, CheckFindsATreeThatIsTooDeep) {
    for (int level = 0; level < 40; ++level) {
        dir.write("lev" + std::to_string(level) + ".mod",
                  "child lev" + std::to_string(level + 1) + " 0 0 0 1 1 1 0 0 0\n");
    }
    dir.write("lev40.mod", "");
    const RunResult run = pelt_model({"check", "lev0.mod"}, {dir.path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "lev32.mod:1: child models nested too deeply: lev33.mod\n");
}

TEST_F(Tool, CheckFindsATreeThatIsTooLarge) {
    std::string children;
    for (int i = 0; i < 70; ++i) { children += "child leaf 0 0 0 1 1 1 0 0 0\n"; }
    dir.write("leaf.mod", "");
    dir.write("twig.mod", children);
    std::string twigs;
    for (int i = 0; i < 70; ++i) { twigs += "child twig 0 0 0 1 1 1 0 0 0\n"; }
    const Lines found = problems(twigs);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(holds(found[0], "m.mod: too many child models")) << found[0];
}

TEST_F(Tool, CheckFindsBadNormalsWithTheLineThatGaveThem) {
    EXPECT_EQ(problems("points\n1 0 0 0\n2 0 0 0\nnormals\n1 0 0 0\n2 0 0 1\n3 0.0 0 0\n"),
              (Lines{"m.mod:5: bad normal: 1", "m.mod:7: bad normal: 3"}));
}

TEST_F(Tool, CheckFindsIdsThat16BitsDoNotHold) {
    EXPECT_EQ(problems("points\n1 0 0 0\n32767 0 0 0\n32768 0 0 0\n40000 0 0 0\n"
                       "layer a 1 2 3 singlesided\ntriangles\n0 1 1 32767\n0 1 1 40000\nlines\n2 1 32768\n"),
              (Lines{"m.mod:4: a point id above 32767, which no primitive can name: 32768 and 1 more",
                     "m.mod:9: a primitive names an id above 32767, which is cut to 16 bits: 40000 and 1 more"}));
}

TEST_F(Tool, WhatAFileSaysIsNoCommandToTheTerminal) {
    EXPECT_EQ(problems("a\x1b[2J\x07\x7f b\tc \xc3\xa9\n", {"--strict"}),
              Lines{"m.mod:1: ignored: a?[2J?? b\tc \xc3\xa9"});
}

// Controls of one byte and of two in UTF-8, and bytes that are no UTF-8, which terminals of eight bits obey too.
const std::string HOSTILE =
    "e\x1b[2J\x07\x7f\x9b"
    "1m\xc2\x9b"
    "2m\xff\xc0\x9b\xed\xa0\x80\xf4\x90\x80\x80\xc3";

// Whether a terminal could take a part of the text for a command.
bool is_harmless(const std::string& text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool control = (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\xFF');
        const bool two_byte_control = byte == 0xC2 && next < 0xA0;
        const bool no_utf8 = byte == 0x9B || byte == 0xFF || byte == 0xC0 || byte == 0xED || byte == 0xF4;
        if (control || two_byte_control || no_utf8) { return false; }
    }
    return true;
}

TEST_F(Tool, NoControlByteOfAFileReachesATerminal) {
    const std::string name = "n\u00e9" + HOSTILE;
    const std::string start = "joint " + name + " 1 2 3 world 1\njoint b 1 2 3 " + name +
                              " 0\npoints\n1 0 0 0\nlayer " + name + " 1 2 3 singlesided\n";
    dir.write("m.mod", start + "triangles\n0 1 1 1\n");
    const RunResult info = pelt_model({"info", "m.mod"}, {dir.path()});
    EXPECT_EQ(info.status, 0) << info.err;
    EXPECT_TRUE(is_harmless(info.out)) << info.out;
    EXPECT_TRUE(holds(info.out, "n\u00e9e?[2J???1m?2m?")) << info.out;

    const RunResult json = pelt_model({"info", "--json", "m.mod"}, {dir.path()});
    EXPECT_TRUE(is_harmless(json.out)) << json.out;
    const std::string kept = Json::parse(json.out)[0]["joints"][0]["name"];
    EXPECT_EQ(kept.substr(0, 10), "n\u00e9e\x1b[2J\x07\x7f") << "programs get what stands in the file";

    dir.write("bad.mod", start + "child " + name + " 0 0 0 1 1 1 0 0 0\nimage " + name + " x y\n" + name + "\n");
    for (const Lines& words : {Lines{"check", "--strict"}, {"info"}, {"ps2-check"}, {"write", "-o", "out.mod"}}) {
        Lines all = words;
        all.push_back("bad.mod");
        const RunResult run = pelt_model(all, {dir.path()});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(is_harmless(run.out + run.err)) << words[0] << " " << run.err;
    }
    dir.write("lossy.mod", start + "triangles\n0 1 1 1\ninvisible 1 0 0\n");
    const RunResult lossy = pelt_model({"write", "--lay-out", "described", "-o", "out.mod", "lossy.mod"}, {dir.path()});
    EXPECT_TRUE(is_harmless(lossy.err)) << lossy.err;
    EXPECT_TRUE(holds(lossy.err, "n\u00e9e?[2J")) << lossy.err;
}

#ifndef _WIN32
TEST_F(Tool, AModelWrittenToATerminalHasNoControlBytesThere) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const std::string name = ptsname(terminal);
    const int open_end = open(name.c_str(), O_RDWR | O_NOCTTY);  // so that what is written stays to be read
    dir.write("m.mod", "joint a" + HOSTILE + " 1 2 3 world 1\npoints\n1 0 0 0\n");
    const RunResult run = pelt_model({"write", "m.mod", "-o", name}, {dir.path()});
    EXPECT_EQ(run.status, 0) << run.err;
    char bytes[4096];
    const ssize_t size = read(terminal, bytes, sizeof bytes);
    ASSERT_GT(size, 0);
    std::string seen(bytes, static_cast<size_t>(size));
    seen.erase(std::remove(seen.begin(), seen.end(), '\r'), seen.end());  // the terminal's own
    EXPECT_TRUE(is_harmless(seen)) << seen;
    EXPECT_TRUE(holds(seen, "ae?[2J???1m?2m?")) << seen;
    close(open_end);
    close(terminal);
}
#endif

TEST_F(Tool, NoControlByteOfANameReachesATerminal) {
    if (!test::run_options_are_served()) { GTEST_SKIP() << "no such names are to be had here"; }
    const std::string name = "n\u00e9" + HOSTILE + "\n.mod";
    dir.write(name, GOOD_MODEL);
    for (const Lines& words : {Lines{"check", name},
                               {"info", name},
                               {"info", "--json", name},
                               {"ps2-check", name},
                               {"check", name + "x"},
                               {"info", name + "x"},
                               {"write", name, "-o", "none/" + name},
                               {"write", name, "-o", "x/../" + name},
                               {"flatten", "a", "-o", "b", "--only", name},
                               {name},
                               {"-" + name}}) {
        const RunResult run = pelt_model(words, {dir.path()});
        EXPECT_TRUE(is_harmless(run.out + run.err)) << words[0] << " " << run.out << run.err;
    }
    dir.write("b.mod", GOOD_MODEL);
    const RunResult terminal = pelt_model({"check", "-q", name, "b.mod"}, {dir.path(), -1, true});
    EXPECT_TRUE(holds(terminal.err, "[1/2] n\u00e9e?[2J")) << terminal.err;
}

TEST_F(Tool, WhatIsNoRegularFileIsNoFile) {
    if (!test::run_options_are_served()) { GTEST_SKIP() << "no pipes and devices with names to be had here"; }
    ASSERT_EQ(test::run_program({"mkfifo", dir.file("pipe.mod")}).status, 0);
    dir.make_dir("d.mod");
    for (const char* name : {"pipe.mod", "d.mod", "/dev/zero", "/dev/null", "/dev/stdin", "", "m.mod/x.mod"}) {
        for (const char* command : {"info", "check", "ps2-check"}) {
            const RunResult run = pelt_model({command, name}, {dir.path()});
            EXPECT_EQ(run.status, 1) << command << " " << name;
            EXPECT_EQ(run.err, std::string(name) + ": could not find the file\n") << command;
        }
    }
    EXPECT_EQ(problems("child pipe 0 0 0 1 1 1 0 0 0\nchild d 0 0 0 1 1 1 0 0 0\n"),
              (Lines{"m.mod:1: Cannot find child model: pipe.mod", "m.mod:2: Cannot find child model: d.mod"}));
}

TEST_F(Tool, StrictReportsLinesThatAreIgnored) {
    const std::string long_line = "2" + std::string(1030, ' ') + "1 2";
    const std::string text =
        "autor nobody\npoints\n1 0 0 0\n1.5 0 0 0\n # no comment\nlayer a 1 2 3 singlesided\n"
        "lines\n3 1 1\n2 1 1\n";
    EXPECT_EQ(problems(text), Lines{});
    EXPECT_EQ(problems(text, {"--strict"}),
              (Lines{"m.mod:1: ignored: autor nobody", "m.mod:4: ignored: 1.5 0 0 0", "m.mod:5: ignored:  # no comment",
                     "m.mod:8: ignored: a line of this type"}));
    EXPECT_EQ(problems("layer a 1 2 3 singlesided" + std::string(1030, ' ') + "\n", {"--strict"}),
              Lines{"m.mod:1: a line of more than 1023 bytes is read in pieces"});
    std::string fields = "points";
    for (int i = 0; i < 256; ++i) { fields += " x"; }
    EXPECT_EQ(problems(fields + "\n", {"--strict"}), Lines{"m.mod:1: fields behind the 256th are ignored"});
}

TEST_F(Tool, MaxEndsTheListOfAFile) {
    EXPECT_EQ(problems("points\n1\n2\n3\n4\n", {"--max", "2"}),
              (Lines{"m.mod:2: Bad point definition", "m.mod:3: Bad point definition", "m.mod: 2 more problems"}));
}

TEST_F(Tool, CheckTakesWhatIsNoModelAtAll) {
    EXPECT_EQ(problems(""), Lines{});
    dir.make_dir("d.mod");
    const RunResult directory = pelt_model({"check", "d.mod"}, {dir.path()});
    EXPECT_EQ(directory.status, 1);
    EXPECT_EQ(directory.err, "d.mod: could not find the file\n");
    std::string bytes;
    for (int i = 0; i < 100000; ++i) { bytes += static_cast<char>(i * 7919 >> 3); }
    dir.write("noise.mod", bytes);
    EXPECT_LE(pelt_model({"check", "--strict", "--max", "5", "noise.mod"}, {dir.path()}).status, 1);
}

TEST_F(Tool, PlacesOfErrorsAreWholeHoweverLongThePath) {
    const std::string deep = "d" + std::string(120, 'e') + "/f" + std::string(100, 'g');
    dir.write(deep + "/m.mod", "points\n1\n");
    const RunResult run = pelt_model({"info", deep + "/m.mod"}, {dir.path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, deep + "/m.mod:2: Bad point definition\n");
}

// ---- large files ----

TEST_F(Tool, LargeFilesAreTakenAsSmallOnes) {
    std::string text = "points\n";
    for (int id = 1; id <= 32767; ++id) { text += std::to_string(id) + " " + std::to_string(id) + " 0 0\n"; }
    text += "layer a 1 2 3 singlesided\ntriangles\n";
    for (int id = 1; id + 2 <= 32767; ++id) {
        text += "0 " + std::to_string(id) + " " + std::to_string(id + 1) + " " + std::to_string(id + 2) + "\n";
    }
    EXPECT_EQ(problems(text), Lines{});
    const RunResult run = pelt_model({"info", "--json", "m.mod"}, {dir.path()});
    EXPECT_EQ(Json::parse(run.out)[0]["layers"][0]["triangles"], 32765);

    std::string noise;
    for (int i = 0; i < 200000; ++i) { noise += "0 1 2 3\n"; }
    EXPECT_EQ(problems(noise).size(), 200000u);
}

// ---- progress ----

TEST_F(Tool, ProgressStandsOnATerminalAloneAndOnlyForSeveralFiles) {
    if (!test::run_options_are_served()) { GTEST_SKIP() << "no terminal to be had here"; }
    dir.write("a.mod", GOOD_MODEL);
    dir.write("b.mod", GOOD_MODEL);
    const RunResult terminal = pelt_model({"check", "a.mod", "b.mod"}, {dir.path(), -1, true});
    EXPECT_EQ(terminal.status, 0);
    EXPECT_TRUE(holds(terminal.err, "[1/2] a.mod")) << terminal.err;
    EXPECT_TRUE(holds(terminal.err, "[2/2] b.mod")) << terminal.err;
    EXPECT_EQ(terminal.out, "a.mod: good\nb.mod: good\n");
    EXPECT_EQ(pelt_model({"check", "a.mod", "b.mod"}, {dir.path()}).err, "");
    EXPECT_EQ(pelt_model({"check", "a.mod"}, {dir.path(), -1, true}).err, "");
}

// ---- ps2-check ----

TEST_F(Tool, Ps2CheckReportsEveryImageThatLacksItsFiles) {
    for (const char* name : {"a.tga", "b.tga", "c.tga"}) { dir.write(name, test::solid_tga(1, 1, 1, 2, 3)); }
    std::string header(32, '\0');
    header[4] = 8;
    header.replace(16, 4, "wood");
    dir.write("a.p2i", header);
    dir.write("wing.mod", "points\n1 0 0 0\nlayer w 1 2 3 singlesided\ntriangles\n0 1 1 1\nimage c.tga x y\n");
    dir.write("m.mod",
              "points\n1 0 0 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 1 1\nimage a.tga x y\n"
              "reflect b.tga 0.5\nchild wing 0 0 0 1 1 1 0 0 0\n");
    const RunResult bad = pelt_model({"ps2-check", "m.mod"}, {dir.path()});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.err,
              "m.mod: cannot find PS2 colormap file: wood\nm.mod: cannot find PS2 image file: b.p2i\n"
              "m.mod: cannot find PS2 image file: c.p2i\n");
    dir.write("wood.p2c", "");
    header[4] = 24;
    dir.write("b.p2i", header);
    dir.write("c.p2i", header);
    const RunResult good = pelt_model({"ps2-check", "m.mod"}, {dir.path()});
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_EQ(good.out, "m.mod: good (3 images)\n");
}

}  // namespace
}  // namespace pelt
