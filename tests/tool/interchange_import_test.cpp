// pelt-import run as a program, on files that are written here.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "formats/model_reader.h"
#include "scene/model.h"
#include "support/model_text.h"
#include "support/run_program.h"
#include "support/tga_bytes.h"

namespace pelt {
namespace {

namespace fs = std::filesystem;
using test::OwnedModel;
using test::pelt_model;
using test::RunOptions;
using test::RunResult;

constexpr const char* CUBE =
    "mtllib cube.mtl\n"
    "v 0 0 0\nv 100 0 0\nv 0 100 0\nv 100 100 0\nv 0 0 100\nv 100 0 100\nv 0 100 100\nv 100 100 100\n"
    "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
    "usemtl wood\n"
    "f 1/1 3/2 4/3 2/4\nf 5/1 6/2 8/3 7/4\nf 1/1 2/2 6/3 5/4\nf 3/1 7/2 8/3 4/4\nf 1/1 5/2 7/3 3/4\nf 2/1 4/2 8/3 "
    "6/4\n";
constexpr const char* MATERIAL = "newmtl wood\nKd 1 1 1\nmap_Kd Wood.tga\n";

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ImportTool : public testing::Test {
protected:
    ImportTool() {
        dir.write("cube.obj", CUBE);
        dir.write("cube.mtl", MATERIAL);
        dir.write("wood.tga", test::solid_tga(4, 4, 200, 100, 50));
    }
    RunResult import(std::vector<std::string> words, const RunOptions& options) {
        words.insert(words.begin(), PELT_IMPORT_TOOL);
        return test::run_program(words, options);
    }
    RunResult import(const std::vector<std::string>& words) { return import(words, {dir.path()}); }
    std::vector<std::string> names(const std::string& folder = "") {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(dir.file(folder))) {
            all.push_back(entry.path().filename().string());
        }
        std::sort(all.begin(), all.end());
        return all;
    }
    test::TempDir dir;
};

TEST_F(ImportTool, AnObjBecomesAModelWithItsImage) {
    dir.make_dir("out");
    const RunResult result = import({"cube.obj", "-o", "out/box.mod"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(names("out"), (std::vector<std::string>{"box.mod", "box_Wood.tga"}));
    const OwnedModel model(model_load(dir.file("out/box.mod").c_str()));
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model_count_triangles(model.get(), "wood"), 12);
    EXPECT_EQ(list_count(&model_find_layer(model.get(), "wood")->triangles), 6) << "quads";
    const RunResult check = pelt_model({"check", "--strict", "out/box.mod"}, {dir.path()});
    EXPECT_EQ(check.status, 0) << check.err;
    EXPECT_TRUE(holds(result.out, "cube.obj: scale 1: all places are whole\n")) << result.out;
    EXPECT_TRUE(holds(result.out, "made out/box.mod\n")) << result.out;
}

TEST_F(ImportTool, IsReachedThroughPeltModelToo) {
    const RunResult result = pelt_model({"import", "cube.obj", "-o", "a.mod", "--scale", "2", "-q"}, {dir.path()});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    const OwnedModel model(model_load(dir.file("a.mod").c_str()));
    ASSERT_NE(model, nullptr);
    EXPECT_GT(model_point_at(model.get(), 200, -200, 200), 0);
    const RunResult help = pelt_model({"import", "--help"}, {dir.path()});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(holds(help.out, "--max-texture")) << help.out;
}

TEST_F(ImportTool, WithoutANameTheModelIsMadeHereAndReplacesNothing) {
    EXPECT_EQ(import({"cube.obj"}).status, 0);
    EXPECT_TRUE(dir.exists("cube.mod"));
    const RunResult again = import({"cube.obj"});
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(holds(again.err, "cube.mod is there already; -o names it if it is to be replaced")) << again.err;
    EXPECT_EQ(import({"cube.obj", "-o", "cube.mod"}).status, 0);
}

TEST_F(ImportTool, LossesAreWarningsAndWithStrictErrors) {
    dir.write("cube.mtl", "newmtl wood\nmap_Kd gone.png\n");
    const RunResult warned = import({"cube.obj", "-o", "a.mod"});
    EXPECT_EQ(warned.status, 0);
    EXPECT_TRUE(holds(warned.err, "cube.obj: warning: image is missing: gone.png\n")) << warned.err;
    const RunResult refused = import({"cube.obj", "-o", "b.mod", "--strict"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(holds(refused.err, "cube.obj: image is missing: gone.png\n")) << refused.err;
    EXPECT_FALSE(dir.exists("b.mod"));
}

TEST_F(ImportTool, WhatCannotBeReadIsToldAndNothingIsWritten) {
    dir.write("old.mod", "points\n");
    dir.write("broken.obj", "f 1 2 3\n");
    dir.write("strange.xyz1", "???");
    for (const char* file : {"missing.obj", "broken.obj", "strange.xyz1", "."}) {
        const RunResult result = import({file, "-o", "old.mod"});
        EXPECT_EQ(result.status, 1) << file;
        EXPECT_EQ(result.err.rfind(std::string(file) + ": ", 0), 0u) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(dir.read("old.mod"), "points\n");
}

TEST_F(ImportTool, AFileThatAsksForAllMemoryIsRefused) {
    dir.write("huge.off", "OFF\n2000000000 1000000000 0\n0 0 0\n");
    const RunResult result = import({"huge.off", "-o", "a.mod"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "huge.off: it needs more memory than 1024 MB (--memory)\n");
    EXPECT_FALSE(dir.exists("a.mod"));
}

TEST_F(ImportTool, ACommandLineThatIsWrongIsTold) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                  {"cube.obj", "--scale", "0"},
                                                  {"cube.obj", "--up", "x"},
                                                  {"cube.obj", "-o", "a.obj"},
                                                  {"cube.obj", "-o", ".mod"},
                                                  {"cube.obj", "--max-texture", "0"},
                                                  {"cube.obj", "more.obj"}}) {
        EXPECT_EQ(import(words).status, 2) << (words.empty() ? "" : words.back());
    }
}

TEST_F(ImportTool, NothingTakesThePlaceOfWhatItIsMadeFrom) {
    // The image of the second material would be made under the name of the first one's source.
    dir.write("cube.mtl", "newmtl wood\nmap_Kd a_wood.tga\nnewmtl other\nmap_Kd wood.tga\n");
    std::string text = CUBE;
    text.insert(text.rfind("f 2/1"), "usemtl other\n");
    dir.write("cube.obj", text);
    const std::string source = test::solid_tga(2, 2, 9, 9, 9);
    dir.write("a_wood.tga", source);
    const RunResult result = import({"cube.obj", "-o", "a.mod"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(holds(result.err, "a_wood.tga would take the place of what it is made from")) << result.err;
    EXPECT_EQ(dir.read("a_wood.tga"), source);
    EXPECT_FALSE(dir.exists("a.mod"));
}

TEST_F(ImportTool, ADiskThatIsFullLeavesNoHalfModel) {
    dir.write("a.mod", "points\n");
    const RunResult result = import({"cube.obj", "-o", "a.mod"}, {dir.path(), 300});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(holds(result.err, "cannot write")) << result.err;
    EXPECT_EQ(dir.read("a.mod"), "points\n");
}

TEST_F(ImportTool, TheSameFileGivesTheSameBytes) {
    for (const char* name : {"one", "two"}) {
        dir.make_dir(name);
        ASSERT_EQ(import({"cube.obj", "-q", "-o", std::string(name) + "/a.mod"}).status, 0);
    }
    EXPECT_EQ(dir.read("one/a.mod"), dir.read("two/a.mod"));
    EXPECT_EQ(dir.read("one/a_Wood.tga"), dir.read("two/a_Wood.tga"));
}

TEST_F(ImportTool, AMaterialThatNamesADeviceIsAMissingImage) {
    dir.write("cube.mtl", "newmtl wood\nmap_Kd /dev/zero\n");
    const RunResult result = import({"cube.obj", "-o", "a.mod"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(holds(result.err, "image is missing: /dev/zero")) << result.err;
}

// ---- other formats ----

TEST_F(ImportTool, AnStlStandsOnItsZ) {
    dir.write("t.stl",
              "solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 100 0 0\nvertex 0 100 50\nendloop\n"
              "endfacet\nendsolid t\n");
    ASSERT_EQ(import({"t.stl", "-o", "t.mod"}).status, 0);
    EXPECT_GT(model_point_at(OwnedModel(model_load(dir.file("t.mod").c_str())).get(), 0, 100, 50), 0);
    ASSERT_EQ(import({"t.stl", "-o", "t.mod", "--up", "y"}).status, 0);
    EXPECT_GT(model_point_at(OwnedModel(model_load(dir.file("t.mod").c_str())).get(), 0, -50, 100), 0);
}

TEST_F(ImportTool, APlyHasItsColours) {
    dir.write("t.ply",
              "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
              "property uchar red\nproperty uchar green\nproperty uchar blue\nelement face 1\n"
              "property list uchar int vertex_indices\nend_header\n"
              "0 0 0 255 0 0\n100 0 0 0 255 0\n0 100 0 0 0 255\n3 0 1 2\n");
    const RunResult result = import({"t.ply", "-o", "t.mod"});
    ASSERT_EQ(result.status, 0) << result.err;
    const OwnedModel model(model_load(dir.file("t.mod").c_str()));
    ASSERT_NE(model, nullptr);
    const Point* point = model_find_point(model.get(), model_point_at(model.get(), 100, 0, 0));
    ASSERT_NE(point, nullptr);
    EXPECT_EQ(point->gouraud[0], 0);
    EXPECT_EQ(point->gouraud[1], 255);
}

// A triangle whose three floats a corner stand in the file itself.
TEST_F(ImportTool, AGltfHasItsNodesAndItsSides) {
    dir.write("t.gltf",
              R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
"nodes":[{"name":"n","mesh":0,"translation":[10,20,30]}],
"materials":[{"name":"one","doubleSided":false}],
"meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[100,100,0]}],
"bufferViews":[{"buffer":0,"byteLength":36}],
"buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAADIQgAAAAAAAAAAAAAAAAAAyEIAAAAA"}]})");
    const RunResult result = import({"t.gltf", "-o", "t.mod", "--scale", "1"});
    ASSERT_EQ(result.status, 0) << result.err;
    const OwnedModel model(model_load(dir.file("t.mod").c_str()));
    ASSERT_NE(model, nullptr);
    EXPECT_GT(model_point_at(model.get(), 110, -30, 20), 0);
    ASSERT_NE(model_find_layer(model.get(), "one"), nullptr);
    EXPECT_EQ(model_find_layer(model.get(), "one")->singlesided, 1);
}

}  // namespace
}  // namespace pelt
