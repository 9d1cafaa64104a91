// pelt-model run as a program: write, export and normals, and how files are replaced.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>

#include "formats/model_compare.h"
#include "formats/model_reader.h"
#include "scene/model.h"
#include "support/model_text.h"
#include "support/obj_reader.h"
#include "support/run_program.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

namespace fs = std::filesystem;
using test::OwnedModel;
using test::pelt_model;
using test::run_program;
using test::RunResult;
using test::told;

constexpr const char* MODEL =
    "joint hip 1 2 3 world 2\npoints\n1 0 0 0\n2 10 0 0 0.5\n3 0 10 0\n4 10 10 5\nnormals\n1 0 0 1\n"
    "layer a 1 2 3 singlesided mirror x\ntriangles\n0 1 2 3\n1 1 2 3 4\nuvees\n1 0.5 0.25\nimage a.tga x y\n"
    "lines\n2 1 4\n";

// Eight corners, six quads whose corners run clockwise as seen from outside.
constexpr const char* CUBE =
    "points\n1 -10 -10 -10\n2 10 -10 -10\n3 -10 10 -10\n4 10 10 -10\n"
    "5 -10 -10 10\n6 10 -10 10\n7 -10 10 10\n8 10 10 10\n"
    "layer cube 127 127 127 singlesided\ntriangles\n"
    "1 1 2 3 4\n1 5 7 6 8\n1 1 5 2 6\n1 3 4 7 8\n1 1 3 5 7\n1 2 6 4 8\n";

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ToolFiles : public testing::Test {
protected:
    ToolFiles() {
        dir.write("a.tga", test::solid_tga(1, 1, 1, 2, 3));
        dir.write("m.mod", MODEL);
    }
    RunResult tool(const std::vector<std::string>& words, long file_size_limit = -1) {
        return pelt_model(words, {dir.path(), file_size_limit});
    }
    OwnedModel load(const std::string& name) { return OwnedModel(model_load(dir.file(name).c_str())); }
    std::vector<std::string> names_in_directory() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir.path())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    test::TempDir dir;
};

// ---- write ----

TEST_F(ToolFiles, WriteMakesAFileThatReadsBack) {
    const RunResult run = tool({"write", "m.mod", "-o", "new.mod"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(dir.read("new.mod").substr(0, 22), "#\n# model: new.mod\n#\nj");
    EXPECT_EQ(told(load("new.mod").get()), told(load("m.mod").get()));
    EXPECT_EQ(dir.read("m.mod"), MODEL) << "the input is left alone";
}

TEST_F(ToolFiles, WriteReplacesItsInputOnlyWhenTold) {
    EXPECT_EQ(tool({"write", "m.mod"}).status, 2);
    EXPECT_EQ(dir.read("m.mod"), MODEL);
    const std::string before = told(load("m.mod").get());
    EXPECT_EQ(tool({"write", "m.mod", "-o", "m.mod"}).status, 0);
    EXPECT_NE(dir.read("m.mod"), MODEL);
    EXPECT_EQ(told(load("m.mod").get()), before);
    EXPECT_EQ(names_in_directory(), (std::vector<std::string>{"a.tga", "m.mod"}));
}

TEST_F(ToolFiles, StandardOutputIsADash) {
    const RunResult run = tool({"write", "m.mod", "-o", "-"});
    EXPECT_EQ(run.status, 0);
    tool({"write", "m.mod", "-o", "new.mod"});
    const std::string head = "#\n# model: -\n";
    EXPECT_EQ(run.out.substr(0, head.size()), head);
    EXPECT_EQ(run.out.substr(head.size()), dir.read("new.mod").substr(std::string("#\n# model: new.mod\n").size()));
}

TEST_F(ToolFiles, OutputThatDoesNotArriveIsAnError) {
    if (!fs::exists("/dev/full")) { GTEST_SKIP() << "no device that is always full"; }
    const char* commands[] = {"--help",      "info m.mod",          "info --json m.mod",
                              "check m.mod", "ps2-check plain.mod", "write m.mod -o -"};
    dir.write("plain.mod", "points\n1 0 0 0\n");
    for (const char* command : commands) {
        const std::string line = std::string("exec ") + PELT_MODEL_TOOL + " " + command + " > /dev/full";
        const RunResult run = run_program({"sh", "-c", line}, {dir.path()});
        EXPECT_EQ(run.status, 1) << command;
        const size_t first = run.err.find("pelt-model: cannot write standard output: No space left on device\n");
        EXPECT_NE(first, std::string::npos) << command;
        EXPECT_EQ(run.err.rfind("pelt-model: cannot write"), first) << command << " says it more than once";
    }
}

TEST_F(ToolFiles, WriteWarnsOfWhatIsLostAndStillWrites) {
    dir.write("l.mod",
              "points\n1 0 0 0 0.5\nlayer \"two words\" 1 2 3 singlesided\ninvisible 0 0 0\n"
              "triangles\n0 1 1 1\nimage a.tga x y repeat 2 2\n");
    const RunResult run = tool({"write", "--lay-out", "described", "l.mod", "-o", "new.mod"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(holds(run.err, "l.mod: warning: weight lost, it reads back as 1: 1 world point (first: 1)\n"));
    EXPECT_TRUE(holds(run.err, "l.mod: warning: layer \"two words\": a name that is empty or holds blanks")) << run.err;
    EXPECT_TRUE(holds(run.err, "repeat factors")) << run.err;
    EXPECT_FALSE(holds(run.err, "will not read back")) << "it does: the layer is called two\n" << run.err;
    EXPECT_NE(load("new.mod"), nullptr);
    EXPECT_TRUE(holds(dir.read("new.mod"), "\nlayer two words 1 2 3 singlesided\n"));
}

// ---- what the file holds ----

TEST_F(ToolFiles, WhatIsWrittenIsTheSameModel) {
    dir.write("a b.tga", test::solid_tga(1, 1, 1, 2, 3));
    dir.write("wing.mod", "");
    dir.write("all.mod",
              "joint hip 1 2 3 world 1\njoint knee 0 0 0 hip 1\nblend hip knee 1\n"
              "points\n1 0 0 0 0.123456\n2 10 0 0\n3 0 10 0 0.5\n4 10 10 5 0.5 knee hip\n5 1 1 1 0.25\n"
              "layer \"two words\" 1 2 3 singlesided mirror x\ninvisible 0.5 1 0\ntransparency 0.123456\n"
              "triangles\n4 1 2 3 4 2 4 3 2 1\n2 1 2 3\nuvees\n1 0.123456 0.25\n"
              "image \"a b.tga\" x y repeat 2 2\nreflect a.tga 0.5\n"
              "layer empty 1 2 3 doublesided\nchild wing 0.5 0 0 1 1 1 0 0 z30\n");
    const RunResult run = tool({"write", "all.mod", "-o", "new.mod"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(model_difference(load("all.mod").get(), load("new.mod").get()), "");
    EXPECT_EQ(told(load("all.mod").get()), told(load("new.mod").get()));
    EXPECT_EQ(tool({"write", "new.mod", "-o", "new.mod"}).status, 0);
    EXPECT_EQ(model_difference(load("all.mod").get(), load("new.mod").get()), "");
}

TEST_F(ToolFiles, ColourKeysAndBlendGroupsComeOutOfEveryCommand) {
    dir.write("key.mod",
              "joint hip 0 0 0 world 0\njoint knee 0 0 0 hip 0\nblend knee hip 3\n"
              "points\n1 0 0 0\n2 9 0 0\n3 0 9 0\nlayer a 1 2 3 singlesided\ninvisible 1 0 0\ntriangles\n0 1 2 3\n");
    for (const char* command : {"write", "flatten", "normals"}) {
        const RunResult run = tool({command, "key.mod", "-o", "new.mod"});
        EXPECT_EQ(run.status, 0) << command;
        EXPECT_EQ(run.err, "") << command;
        const OwnedModel model = load("new.mod");
        ASSERT_NE(model, nullptr) << command;
        EXPECT_EQ(model_find_layer(model.get(), "a")->invisible_colour[0], 255) << command;
        ASSERT_EQ(list_count(&model->blends), 1) << command;
        for (const Point& point : list_elements<Point>(model->points)) {
            EXPECT_EQ(point.joint_a, model_find_joint(model.get(), "knee")) << command;
            EXPECT_EQ(point.joint_b, model_find_joint(model.get(), "hip")) << command;
        }
        EXPECT_EQ(model->has_normals != 0, std::string(command) == "normals") << command;
    }
}

TEST_F(ToolFiles, WhatNoFileCanHoldIsRefusedByName) {
    // The box has no extent along x, and so the map that becomes texture coordinates has no value there.
    dir.write("flat.mod",
              "points\n1 0 0 0\n2 0 9 0\n3 0 0 9\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 3\nimage a.tga x y\n");
    dir.write("old.mod", "as it was");
    for (const bool force : {false, true}) {
        std::vector<std::string> words{"flatten", "flat.mod", "-o", "old.mod"};
        if (force) { words.emplace_back("--force"); }
        const RunResult run = tool(words);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err,
                  "old.mod: no file can hold the model: layer a: texture coordinates of point 1: not a number; nothing "
                  "is written (--lay-out described writes it with its losses)\n");
        EXPECT_EQ(dir.read("old.mod"), "as it was");
    }
    EXPECT_EQ(tool({"flatten", "flat.mod", "-o", "old.mod", "--lay-out", "described"}).status, 0);
    EXPECT_NE(load("old.mod"), nullptr);
    EXPECT_EQ(tool({"write", "m.mod", "-o", "new.mod", "--lay-out", "other"}).status, 2);
}

TEST_F(ToolFiles, AReflectionMapThatIsNotBesideTheNewFileIsNamed) {
    dir.make_dir("sub");
    dir.write("r.tga", test::solid_tga(1, 1, 1, 2, 3));
    dir.write("r.mod", "layer a 1 2 3 singlesided\nreflect r.tga 0.5\n");
    EXPECT_EQ(tool({"write", "r.mod", "-o", "sub/new.mod"}).err,
              "r.mod: warning: r.tga is not in the directory of sub/new.mod, where it will be looked for\n");
}

// ---- what the reader refuses ----

constexpr const char* WITH_A_KEY =
    "points\n1 0 0 0\n2 9 0 0\n3 0 9 0\nlayer a 1 2 3 singlesided\ninvisible 1 0 0\ntriangles\n0 1 2 3\n";

TEST_F(ToolFiles, WhatTheReaderRefusesIsNotWritten) {
    dir.write("key.mod", WITH_A_KEY);
    dir.write("old.mod", "as it was");
    const std::vector<std::string> before = names_in_directory();
    for (const char* command : {"write", "flatten", "normals"}) {
        const RunResult run = tool({command, "--lay-out", "described", "key.mod", "-o", "old.mod"});
        EXPECT_EQ(run.status, 1) << command;
        EXPECT_TRUE(holds(run.err,
                          "comes out in bytes, where the reader wants 0.0 to 1.0 (the new file will not read "
                          "back)\n"))
            << run.err;
        EXPECT_TRUE(holds(run.err, "old.mod: the new file does not read back: line ")) << run.err;
        EXPECT_TRUE(holds(run.err,
                          ": invisible color out of range (should be 0.0 to 1.0); nothing is written "
                          "(--force writes it)\n"))
            << run.err;
        EXPECT_EQ(dir.read("old.mod"), "as it was") << command;
        EXPECT_EQ(tool({command, "--lay-out", "described", "key.mod", "-o", "new.mod"}).status, 1);
        EXPECT_EQ(names_in_directory(), before) << command;
        const RunResult printed = tool({command, "--lay-out", "described", "key.mod", "-o", "-"});
        EXPECT_EQ(printed.status, 1) << command;
        EXPECT_EQ(printed.out, "") << command;
    }
}

TEST_F(ToolFiles, ForceWritesWhatTheReaderRefuses) {
    dir.write("key.mod", WITH_A_KEY);
    for (const char* command : {"write", "flatten", "normals"}) {
        dir.write("old.mod", "as it was");
        const RunResult run = tool({command, "--lay-out", "described", "--force", "key.mod", "-o", "old.mod"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(holds(run.err, "old.mod: the new file does not read back: line ")) << run.err;
        EXPECT_FALSE(holds(run.err, "nothing is written")) << run.err;
        EXPECT_TRUE(holds(dir.read("old.mod"), "invisible 255 0 0\n")) << dir.read("old.mod");
        EXPECT_EQ(load("old.mod"), nullptr);
    }
}

TEST_F(ToolFiles, TheRefusalNamesTheLineOfTheNewFile) {
    dir.write("key.mod", WITH_A_KEY);
    const std::string err = tool({"write", "--lay-out", "described", "--force", "key.mod", "-o", "new.mod"}).err;
    const std::string mark = "does not read back: line ";
    const int line = std::stoi(err.substr(err.find(mark) + mark.size()));
    const std::string text = dir.read("new.mod");
    const auto place = text.begin() + static_cast<std::ptrdiff_t>(text.find("invisible"));
    EXPECT_EQ(line, 1 + std::count(text.begin(), place, '\n'));
}

TEST_F(ToolFiles, LayersThatReadBackUnderOneNameAreRefused) {
    dir.write("two.mod",
              "points\n1 0 0 0\nlayer \"two words\" 1 2 3 singlesided\ntriangles\n0 1 1 1\n"
              "layer \"two more\" 1 2 3 singlesided\ntriangles\n0 1 1 1\n");
    const RunResult run = tool({"write", "--lay-out", "described", "two.mod", "-o", "new.mod"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(holds(run.err, ": duplicate layer name not allowed; nothing is written")) << run.err;
    EXPECT_FALSE(dir.exists("new.mod"));
}

TEST_F(ToolFiles, EachJointIsWrittenWithTheCountOfThePointsThatNameIt) {
    // Hip owns the first point, knee the second; the blend gives hip the third; the fourth says itself that it is
    // knee's; the last is nobody's.
    dir.write("j.mod",
              "joint hip 0 0 0 world 1\njoint knee 0 0 0 hip 1\nblend hip knee 1\n"
              "points\n10 1 0 0\n20 2 0 0\n30 3 0 0\n40 4 0 0 0.5 knee hip\n50 5 0 0\nnormals\n10 0 0 1\n");
    dir.write("k.mod", "joint hip 0 0 0 world 7\njoint knee 0 0 0 hip 7\npoints\n10 1 0 0\n");
    for (const char* command : {"write", "flatten", "normals"}) {
        const RunResult run = tool({command, "--lay-out", "described", "j.mod", "-o", "new.mod"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_FALSE(holds(run.err, "counts")) << command << " " << run.err;
        EXPECT_TRUE(holds(run.err, "their points keep the first joint alone: 1 blend group")) << run.err;
        const OwnedModel model = load("new.mod");
        ASSERT_NE(model, nullptr) << command;
        EXPECT_EQ(model_find_joint(model.get(), "hip")->point_count, 2);
        EXPECT_EQ(model_find_joint(model.get(), "knee")->point_count, 2);
        const char* const owners[] = {"", "hip", "knee", "hip", "knee", ""};  // by x
        for (const Point& point : list_elements<Point>(model->points)) {
            const char* owner = point.joint_a != nullptr ? point.joint_a->name : "";
            EXPECT_STREQ(owner, owners[static_cast<int>(point.position.x)]) << command << " " << point.position.x;
        }
        EXPECT_EQ(tool({command, "--lay-out", "described", "k.mod", "-o", "new.mod"}).status, 0);
        EXPECT_TRUE(holds(dir.read("new.mod"), "# 1 points for joint: hip\n")) << dir.read("new.mod");
        EXPECT_TRUE(holds(dir.read("new.mod"), "# 0 points for joint: knee\n")) << dir.read("new.mod");
    }
}

TEST_F(ToolFiles, FilesThatDoNotLieBesideTheNewOneAreNamed) {
    dir.make_dir("sub");
    dir.write("wing.mod", "");
    dir.write("c.mod", std::string(MODEL) + "child wing 0 0 0 1 1 1 0 0 0\n");
    const RunResult run = tool({"write", "c.mod", "-o", "sub/new.mod"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err,
              "c.mod: warning: a.tga is not in the directory of sub/new.mod, where it will be looked for\n"
              "c.mod: warning: wing.mod is not in the directory of sub/new.mod, where it will be looked for\n");
}

TEST_F(ToolFiles, ABadModelMakesNoFile) {
    dir.write("bad.mod", "points\n1 2 3 4\nlayer a 1 2 3 singlesided\ntriangles\n0 1 1 7\n");
    const std::vector<std::string> before = names_in_directory();
    for (const char* command : {"write", "export", "flatten", "normals"}) {
        const RunResult run = tool({command, "bad.mod", "-o", "new.mod"});
        EXPECT_EQ(run.status, 1) << command;
        EXPECT_EQ(run.err, "bad.mod:5: point does not exist\n") << command;
        EXPECT_EQ(names_in_directory(), before) << command;
    }
}

TEST_F(ToolFiles, AReturnInANameEndsNoLineOfTheNewFile) {
    dir.write("cr.mod", "points\n1 0 0 0\nlayer a\rb 1 2 3 singlesided\ntriangles\n0 1 1 1\n");
    ASSERT_NE(load("cr.mod"), nullptr);
    const RunResult run = tool({"write", "cr.mod", "-o", "new.mod"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(load("new.mod"), nullptr);
}

// ---- how a file is replaced ----

TEST_F(ToolFiles, AFailureInTheMiddleLeavesTheOldFileAndNothingElse) {
    if (!test::run_options_are_served()) { GTEST_SKIP() << "no limit on the size of a file here"; }
    std::string text = "points\n";
    for (int id = 1; id <= 5000; ++id) { text += std::to_string(id) + " 1 2 3\n"; }
    dir.write("large.mod", text);
    for (const char* command : {"write", "export", "flatten", "normals"}) {
        dir.write("old.mod", "as it was");
        const std::vector<std::string> before = names_in_directory();
        const RunResult run = tool({command, "large.mod", "-o", "old.mod"}, 20000);
        EXPECT_EQ(run.status, 1) << command;
        EXPECT_TRUE(holds(run.err, "pelt-model: cannot write old.mod: File too large\n")) << run.err;
        EXPECT_EQ(dir.read("old.mod"), "as it was") << command;
        EXPECT_EQ(names_in_directory(), before) << command;
    }
}

TEST_F(ToolFiles, NamesOutsideAnyCodePageAreReadWrittenAndTold) {
    dir.write("\u6a21\u578b \u00e9.mod", "points\n1 0 0 0\n2 x\n");
    const RunResult bad = tool({"info", "\u6a21\u578b \u00e9.mod"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_TRUE(holds(bad.err, "\u6a21\u578b \u00e9.mod:3: ")) << bad.err;
    EXPECT_EQ(tool({"write", "m.mod", "-o", "\u6a21\u578b \u00e9.mod"}).status, 0);
    EXPECT_TRUE(holds(dir.read("\u6a21\u578b \u00e9.mod"), "# model: \u6a21\u578b \u00e9.mod\n"));
}

TEST_F(ToolFiles, PlacesThatCannotBeWrittenToAreNamed) {
    dir.make_dir("sub");
    EXPECT_EQ(tool({"write", "m.mod", "-o", "sub"}).err, "pelt-model: cannot write sub: it is a directory\n");
    const RunResult nowhere = tool({"write", "m.mod", "-o", "none/new.mod"});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_TRUE(holds(nowhere.err, "pelt-model: cannot write none/new.mod: No such file or directory\n"));
    if (fs::exists("/dev/full")) {
        const RunResult full = tool({"export", "m.mod", "-o", "/dev/full"});
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.err, "pelt-model: cannot write /dev/full: No space left on device\n");
    }
}

TEST_F(ToolFiles, ASymbolicLinkIsFollowedAndPermissionsStay) {
    dir.make_dir("sub");
    dir.write("sub/real.mod", "old");
    dir.write("sub/a.tga", test::solid_tga(1, 1, 1, 2, 3));
    fs::permissions(dir.file("sub/real.mod"), fs::perms::owner_read | fs::perms::owner_write);
    std::error_code no_links;
    fs::create_symlink("sub/real.mod", dir.file("link.mod"), no_links);
    if (no_links) { GTEST_SKIP() << "no symbolic links can be made here"; }
    EXPECT_EQ(tool({"write", "m.mod", "-o", "link.mod"}).status, 0);
    EXPECT_TRUE(fs::is_symlink(dir.file("link.mod")));
    EXPECT_TRUE(holds(dir.read("sub/real.mod"), "# model: link.mod"));
    EXPECT_EQ(fs::status(dir.file("sub/real.mod")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(ToolFiles, OtherNamesOfAReplacedFileStayItsNames) {
    dir.write("one.mod", "old");
    std::error_code no_links;
    fs::create_hard_link(dir.file("one.mod"), dir.file("other.mod"), no_links);
    if (no_links) { GTEST_SKIP() << "no hard links can be made here"; }
    EXPECT_EQ(tool({"write", "m.mod", "-o", "one.mod"}).status, 0);
    EXPECT_TRUE(holds(dir.read("other.mod"), "# model: one.mod"));
    EXPECT_EQ(names_in_directory(), (std::vector<std::string>{"a.tga", "m.mod", "one.mod", "other.mod"}));
}

// ---- export ----

TEST_F(ToolFiles, ExportWritesToTheVeryNameAndReadsBackElsewhere) {
    const RunResult run = tool({"export", "m.mod", "-o", "out.obj"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_FALSE(dir.exists("out..obj"));
    const test::ObjFile obj = test::read_obj(dir.read("out.obj"));
    ASSERT_EQ(obj.vertices.size(), 4u);
    EXPECT_EQ(obj.vertices[3], (std::array<double, 3>{10, 5, 10}));
    ASSERT_EQ(obj.groups.size(), 1u);
    EXPECT_EQ(obj.groups[0].faces, (std::vector<std::vector<int>>{{1, 2, 3}, {1, 2, 3}, {3, 2, 4}}));
    EXPECT_EQ(obj.groups[0].lines, (std::vector<std::vector<int>>{{1, 4}}));
}

TEST_F(ToolFiles, ExportWarnsOfChildrenAndOfPolygonsThatNameIds) {
    dir.write("wing.mod", "");
    dir.write("p.mod",
              "points\n10 0 0 0\n20 1 0 0\n30 0 1 0\nlayer a 1 2 3 singlesided\ntriangles\n2 10 20 30\n"
              "child wing 0 0 0 1 1 1 0 0 0\n");
    const RunResult run = tool({"export", "p.mod", "-o", "p.obj"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(holds(run.err, "p.mod: warning: child models are not exported")) << run.err;
    EXPECT_TRUE(holds(run.err, "p.mod: warning: polygons name points by their ids")) << run.err;
}

TEST_F(ToolFiles, AssimpReadsTheExport) {
    if (run_program({"assimp", "version"}).status == 127) { GTEST_SKIP() << "assimp is not installed"; }
    dir.write("cube.mod", CUBE);
    ASSERT_EQ(tool({"export", "cube.mod", "-o", "cube.obj"}).status, 0);
    const RunResult run = run_program({"assimp", "info", dir.file("cube.obj")});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    const auto number_behind = [&](const std::string& word) {
        const size_t place = run.out.find("\n" + word + ":");
        return place == std::string::npos ? -1 : std::stoi(run.out.substr(place + word.size() + 2));
    };
    EXPECT_EQ(number_behind("Meshes"), 1);
    EXPECT_EQ(number_behind("Faces"), 12);
}

// ---- normals ----

TEST_F(ToolFiles, NormalsOfACubePointAwayFromItsCorners) {
    dir.write("cube.mod", CUBE);
    const RunResult run = tool({"normals", "cube.mod", "-o", "new.mod"});
    EXPECT_EQ(run.status, 0);
    const OwnedModel model = load("new.mod");
    ASSERT_NE(model, nullptr);
    const float third = 1.0f / std::sqrt(3.0f);
    int sign = 0;
    for (const Point& point : list_elements<Point>(model->points)) {
        const int own = point.normal.x * point.position.x > 0 ? 1 : -1;
        EXPECT_TRUE(sign == 0 || sign == own) << "all to the outside, or all to the inside";
        sign = own;
        EXPECT_NEAR(point.normal.x, static_cast<float>(sign) * third * point.position.x / 10, 1e-5);
        EXPECT_NEAR(point.normal.y, static_cast<float>(sign) * third * point.position.y / 10, 1e-5);
        EXPECT_NEAR(point.normal.z, static_cast<float>(sign) * third * point.position.z / 10, 1e-5);
    }
    for (const Triangle& triangle : list_elements<Triangle>(model_find_layer(model.get(), "cube")->triangles)) {
        EXPECT_EQ(triangle.curve_type, 0);
    }
}

TEST_F(ToolFiles, NormalsAreNumbersWhateverTheFaces) {
    // A face on a line, one of a single place, two that lie back to back, and one that shares points with the first.
    dir.write("odd.mod",
              "points\n1 0 0 0\n2 1 2 3\n3 2 4 6\n4 9 9 9\n5 0 0 0\n6 5 0 0\n7 0 5 0\n8 2 9 6\n"
              "layer a 1 2 3 singlesided\ntriangles\n0 1 2 3\n0 4 4 4\n0 5 6 7\n0 5 7 6\n0 1 3 8\n"
              "1 4 4 4 4\n2 1 2 3 2 1\n");
    for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--curved"}}) {
        std::vector<std::string> words{"normals", "odd.mod", "-o", "new.mod"};
        words.insert(words.end(), more.begin(), more.end());
        EXPECT_EQ(tool(words).status, 0);
        const OwnedModel model = load("new.mod");
        ASSERT_NE(model, nullptr) << dir.read("new.mod");
        for (const Point& point : list_elements<Point>(model->points)) {
            EXPECT_NEAR(std::hypot(point.normal.x, point.normal.y, point.normal.z), 1.0f, 1e-3);
        }
        // In the plane of (0, 0, 0), (2, 4, 6) and (2, 9, 6): across (2, 4, 6) and (0, 5, 0).
        const Vec3& across = model_find_point(model.get(), 1)->normal;
        EXPECT_NEAR(std::abs(across.x * -3 + across.z), std::sqrt(10.0f), 1e-2);
        EXPECT_NEAR(std::abs(model_find_point(model.get(), 6)->normal.z), 1.0f, 1e-3);
    }
}

TEST_F(ToolFiles, CurvedMakesEveryFlatPrimitiveCurved) {
    EXPECT_EQ(tool({"normals", "m.mod", "-o", "new.mod", "--curved"}).status, 0);
    const OwnedModel model = load("new.mod");
    ASSERT_NE(model, nullptr);
    int count = 0;
    for (const Triangle& triangle : list_elements<Triangle>(model_find_layer(model.get(), "a")->triangles)) {
        EXPECT_EQ(triangle.curve_type, triangle.quad ? 4 : 3);
        ++count;
    }
    EXPECT_EQ(count, 2);
}

}  // namespace
}  // namespace pelt
