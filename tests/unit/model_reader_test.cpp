#include "formats/model_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/file_access.h"
#include "scene/model_tree.h"
#include "support/long_path.h"
#include "support/model_file_fixture.h"

namespace pelt {
namespace {

using namespace test;

class ModelReader : public test::ModelFileTest {};

// ---- whole files ----

TEST_F(ModelReader, AnEmptyFileIsAModelWithoutPoints) {
    const ModelPtr model = load_good("");
    EXPECT_EQ(model_count_points(model.get()), 0);
    EXPECT_STREQ(model->name, "ship");
    EXPECT_EQ(model->path, test::native_path(dir.path() + "/"));
    EXPECT_EQ(model->parent, nullptr);
}

TEST_F(ModelReader, TheRootRemembersTheFileItWasReadFrom) {
    const ModelPtr model = load_good("");
    EXPECT_EQ(model->opened_path, path);
    EXPECT_EQ(model_file(model.get()), path);
    const ModelPtr read(model_read(path.c_str(), nullptr));
    EXPECT_EQ(read->opened_path, path);
    EXPECT_EQ(model->long_directory, nullptr);
    EXPECT_EQ(model->long_paths, 0);
}

TEST_F(ModelReader, AMissingFileIsReportedWithoutAPlace) {
    const std::string missing = dir.file("none.mod");
    EXPECT_EQ(model_load(missing.c_str()), nullptr);
    EXPECT_EQ(error(), "could not find: " + missing);
}

TEST_F(ModelReader, ADirectoryIsNoFile) {
    const std::string folder = dir.make_dir("folder.mod");
    EXPECT_EQ(model_load(folder.c_str()), nullptr);
    EXPECT_EQ(error(), "could not find: " + folder);
}

TEST_F(ModelReader, ADirectoryThatAModelCannotKeepIsRefused) {
    const std::string fits = test::directory_of_length(dir, 255);
    dir.write(fits + "ship.mod", "child wing 0 0 0 1 1 1 0 0 0\n");
    dir.write(fits + "wing.mod", "points\n1 0 0 0\n");
    EXPECT_NE(ModelPtr(model_load(dir.file(fits + "ship.mod").c_str())), nullptr) << error();
    const std::string too_long = dir.write(test::directory_of_length(dir, 256) + "ship.mod", "points\n1 0 0 0\n");
    EXPECT_EQ(model_load(too_long.c_str()), nullptr);
    EXPECT_EQ(error().substr(0, 80), ("path too long: " + too_long).substr(0, 80));
    EXPECT_EQ(model_load((std::string(508, 'n') + ".mod").c_str()), nullptr);
    EXPECT_EQ(error().substr(0, 80), ("path too long: " + std::string(508, 'n')).substr(0, 80));
}

TEST_F(ModelReader, AChildWhosePathAModelCannotKeepFailsTheLoad) {
    const std::string upper = test::directory_of_length(dir, 200);
    const std::string room(55, 'r');
    dir.write(upper + room + "/wing.mod", "");
    dir.write(upper + "ship.mod", "child " + room + PATH_SEPARATOR + "wing 0 0 0 1 1 1 0 0 0\n");
    EXPECT_EQ(model_load(dir.file(upper + "ship.mod").c_str()), nullptr);
    EXPECT_EQ(error().substr(0, 15), "path too long: ");
}

TEST_F(ModelReader, NullsFailQuietly) {
    load_error_set("stale");
    EXPECT_EQ(model_load(nullptr), nullptr);
    EXPECT_EQ(error(), "(none)");
    EXPECT_EQ(model_read_file(nullptr, "x"), 0);
    EXPECT_EQ(model_read_data(nullptr, "x"), 0);
    const ModelPtr model(model_create("m.mod", nullptr));
    EXPECT_EQ(model_read_data(model.get(), nullptr), 0);
    EXPECT_EQ(model_read_file(model.get(), nullptr), 0);
}

TEST_F(ModelReader, EachReadClearsTheLoadError) {
    load_good("points\n1 0 0 0\n");
    const ModelPtr model(model_create("m.mod", nullptr));
    load_error_set("stale");
    EXPECT_EQ(model_read_data(model.get(), ""), 1);
    EXPECT_EQ(error(), "(none)");
    load_error_set("stale");
    EXPECT_EQ(model_read_file(model.get(), dir.file("none.mod").c_str()), 0);
    EXPECT_EQ(error(), "(none)");
}

TEST_F(ModelReader, AFileWrittenOnWindowsLoads) {
    const ModelPtr model = load_good(
        "\xEF\xBB\xBFpoints\r\n1 0 0 0\r\n2 9 0 0\r\n3 0 9 0\r\n"
        "layer a 1 2 3 singlesided\r\ntriangles\r\n0 1 2 3\r\nimage a.tga x y\r\n");
    EXPECT_EQ(layer(model).singlesided, 1);
    EXPECT_STREQ(layer_first_image(&layer(model))->names[0], "a.tga");
}

TEST_F(ModelReader, AFailedLoadGivesItsImagesBack) {
    expect_error(TRIANGLE + "image a.tga x y\nmirrorimage a.tga\nreflect a.tga 1\n2 2 2\n",
                 "Bad point or triangle data", lines_in(TRIANGLE) + 4);
    EXPECT_EQ(list_count(image_registry()), 0);
}

TEST_F(ModelReader, AFullTableOfFilesFindsNoModel) {
    path = dir.write("ship.mod", "");
    int slots[FILE_TABLE_SIZE];
    for (int& slot : slots) { slot = file_open(path.c_str(), "r"); }
    EXPECT_EQ(model_load(path.c_str()), nullptr);
    EXPECT_EQ(error(), "could not find: " + path);
    for (const int slot : slots) { file_close(slot); }
    EXPECT_NE(ModelPtr(model_load(path.c_str())), nullptr) << "and no slot was lost";
}

// ---- the test of normals ----

TEST_F(ModelReader, AZeroNormalFailsTheTestAtTheEnd) {
    EXPECT_EQ(load("points\n1 0 0 0\nnormals\n5 0 0 0\n"), nullptr);
    EXPECT_EQ(error(), "(ship.mod) bad normal: 5");
}

TEST_F(ModelReader, TheFirstBadNormalInListOrderIsNamed) {
    EXPECT_EQ(load("points\n1 0 0 0\n9 0 0 0\n4 0 0 0\nnormals\n4 0 0 0\n9 0 0 0\n"), nullptr);
    EXPECT_EQ(error(), "(ship.mod) bad normal: 9");
}

TEST_F(ModelReader, AnInfiniteNormalFailsTheTest) {
    EXPECT_EQ(load("normals\n3 " + std::string(60, '9') + ".0 0 0\n"), nullptr);
    EXPECT_EQ(error(), "(ship.mod) bad normal: 3");
    EXPECT_EQ(load("normals\n3 " + std::string(60, '9') + ".0 0\n"), nullptr);
    EXPECT_EQ(error(), "(ship.mod) bad normal: 3");
}

// ---- binding of points ----

TEST_F(ModelReader, PointsAreDealtToTheJointsInTheOrderOfTheirFirstMention) {
    const ModelPtr model = load_good(
        "points\n6 0 0 0\n1 0 0 0\n2 0 0 0\n9 0 0 0\n4 0 0 0\n5 0 0 0\n1 7 7 7\n"
        "joint hip 0 0 0 world 2\njoint knee 0 0 0 hip 3\n");
    Joint* hip = model_find_joint(model.get(), "hip");
    Joint* knee = model_find_joint(model.get(), "knee");
    for (const int32_t id : {6, 1}) {
        EXPECT_EQ(point(model, id).joint_a, hip);
        EXPECT_EQ(point(model, id).joint_b, nullptr);
    }
    for (const int32_t id : {2, 9, 4}) {
        EXPECT_EQ(point(model, id).joint_a, knee);
        EXPECT_EQ(point(model, id).joint_b, hip);
    }
    EXPECT_EQ(point(model, 5).joint_a, nullptr) << "two joints of 2 and 3 leave the sixth a world point";
    EXPECT_EQ(hip->parent_index, -1);
    EXPECT_EQ(knee->parent_index, 0);
}

TEST_F(ModelReader, BlendGroupsFollowTheJoints) {
    const ModelPtr model = load_good(
        "joint hip 0 0 0 world 1\njoint knee 0 0 0 hip 1\nblend knee hip 2\n"
        "blend unknown knee 1\npoints\n1 0 0 0\n2 0 0 0\n3 0 0 0\n4 0 0 0\n5 0 0 0\n"
        "6 0 0 0 0.5 knee knee\n");
    Joint* hip = model_find_joint(model.get(), "hip");
    Joint* knee = model_find_joint(model.get(), "knee");
    for (const int32_t id : {3, 4}) {
        EXPECT_EQ(point(model, id).joint_a, knee);
        EXPECT_EQ(point(model, id).joint_b, hip);
    }
    EXPECT_EQ(point(model, 5).joint_a, nullptr);
    EXPECT_EQ(point(model, 5).joint_b, knee);
    EXPECT_EQ(point(model, 6).joint_a, knee) << "a world point keeps what its own line gave it";
}

TEST_F(ModelReader, ABlendBeforeItsJointsFindsNone) {
    const ModelPtr model = load_good("blend hip hip 1\njoint hip 0 0 0 world 0\npoints\n1 0 0 0\n");
    EXPECT_EQ(point(model, 1).joint_a, nullptr);
}

TEST_F(ModelReader, AJointMayComeBeforeItsParent) {
    const ModelPtr model = load_good(
        "joint knee 0 0 0 hip 1\njoint hip 0 0 0 world 1\njoint toe 0 0 0 nowhere 1\n"
        "points\n1 0 0 0\n2 0 0 0\n3 0 0 0\n");
    EXPECT_EQ(model_find_joint(model.get(), "knee")->parent_index, 1);
    EXPECT_EQ(point(model, 1).joint_b, model_find_joint(model.get(), "hip"));
    EXPECT_EQ(model_find_joint(model.get(), "toe")->parent_index, -1);
}

TEST_F(ModelReader, JointsWithoutPointsLeftKeepTheIndexTheyWereAddedWith) {
    const ModelPtr model = load_good("joint hip 0 0 0 world 1\njoint knee 0 0 0 hip 1\npoints\n1 0 0 0\n");
    EXPECT_EQ(model_find_joint(model.get(), "knee")->parent_index, 1) << "its own rank";
    const ModelPtr bare = load_good("joint hip 0 0 0 world 1\njoint knee 0 0 0 hip 1\n");
    EXPECT_EQ(model_find_joint(bare.get(), "knee")->parent_index, 1);
}

TEST_F(ModelReader, EnormousAndNegativePointCountsEnd) {
    const ModelPtr model = load_good(
        "joint a 0 0 0 world -5\njoint b 0 0 0 world 99999999999\njoint c 0 0 0 world 1\n"
        "points\n1 0 0 0\n2 0 0 0\n");
    EXPECT_EQ(point(model, 1).joint_a, model_find_joint(model.get(), "b"));
    EXPECT_EQ(point(model, 2).joint_a, model_find_joint(model.get(), "b"));
}

TEST_F(ModelReader, ManyJointsBindInReasonableTime) {
    std::string text = "points\n";
    for (int i = 1; i <= 10000; ++i) { text += std::to_string(i) + " 0 0 0\n"; }
    for (int i = 1; i <= 10000; ++i) {
        const std::string parent = i == 1 ? "world" : std::string("j").append(std::to_string(i - 1));
        text += "joint j" + std::to_string(i) + " 0 0 0 " + parent + " 1\n";
    }
    const ModelPtr model = load_good(text);
    EXPECT_EQ(model_find_joint(model.get(), "j10000")->parent_index, 9998);
    EXPECT_EQ(point(model, 10000).joint_b, model_find_joint(model.get(), "j9999"));
}

// ---- children ----

class ModelChildren : public ModelReader {
protected:
    static std::string child(const std::string& name) { return "child " + name + " 0 0 0 1 1 1 0 0 0\n"; }
};

TEST_F(ModelChildren, AChildIsLoadedFromTheDirectoryOfItsParent) {
    dir.write("wing.mod", "points\n1 0 0 0\n");
    const ModelPtr model = load_good("child wing 1 2.5 3 4 5 6 10 y20 -30\n");
    const ChildLink& wing = link(model);
    ASSERT_NE(wing.model, nullptr);
    EXPECT_EQ(wing.position.y, 2.5f);
    EXPECT_EQ(wing.scale.z, 6.0f);
    EXPECT_STREQ(wing.rotate[1], "y20");
    EXPECT_EQ(wing.borrowed, 0);
    EXPECT_STREQ(wing.model->name, "wing");
    EXPECT_EQ(wing.model->parent, model.get());
    EXPECT_EQ(model_file(wing.model), dir.file("wing.mod"));
    EXPECT_EQ(model_count_points(wing.model), 1);
}

TEST_F(ModelChildren, ChildrenLoadInOrderAndGrandchildrenFromTheirOwnDirectory) {
    dir.write("parts/wing.mod", child("flap") + "points\n1 0 0 0\n2 0 0 0\n");
    dir.write("parts/flap.mod", TRIANGLE + "image flap.tga x y\n");
    dir.write("parts/flap.tga", test::solid_tga(1, 1, 0, 0, 0));
    dir.write("tail.mod", "points\n1 0 0 0\n");
    const ModelPtr model = load_good(child(test::native_path("parts/wing")) + child("tail"));
    EXPECT_STREQ(link(model, 0).model->name, "wing");
    EXPECT_EQ(link(model, 0).model->path, test::native_path(dir.path() + "/parts/"));
    EXPECT_STREQ(link(model, 1).model->name, "tail");
    EXPECT_EQ(model_count_children(model.get()), 3);
}

#ifndef _WIN32
TEST_F(ModelChildren, ABackslashInANameSeparatesAndCaseIsIgnored) {
    dir.write("Parts/WING.MOD", child("Flap"));
    dir.write("Parts/flap.mod", "points\n1 0 0 0\n");
    const ModelPtr model = load_good(child("parts\\wing"));
    EXPECT_EQ(model_count_children(model.get()), 2);
    EXPECT_STREQ(link(model).model->name, "wing");
}
#endif

TEST_F(ModelChildren, TheSameChildMayStandBesideItself) {
    dir.write("wheel.mod", "points\n1 0 0 0\n");
    const ModelPtr model = load_good(child("wheel") + child("wheel"));
    EXPECT_NE(link(model, 0).model, link(model, 1).model);
}

TEST_F(ModelChildren, TheNormalsAreTestedBeforeAnyChildIsLookedFor) {
    EXPECT_EQ(load(child("none") + "normals\n5 0 0 0\n"), nullptr);
    EXPECT_EQ(error(), "(ship.mod) bad normal: 5");
}

TEST_F(ModelChildren, AMissingChildFailsTheWholeLoad) {
    dir.write("wing.mod", TRIANGLE + "image a.tga x y\n");
    EXPECT_EQ(load(child("wing") + child("none")), nullptr);
    EXPECT_EQ(error(), "Cannot find child model: " + dir.file("none.mod"));
}

TEST_F(ModelChildren, AFailureInsideAChildNamesTheChildsFile) {
    dir.write("parts/wing.mod", child("flap"));
    const std::string flap = dir.write("parts/flap.mod", "points\n1 2\n");
    EXPECT_EQ(load(TRIANGLE + "image a.tga x y\n" + child(test::native_path("parts/wing"))), nullptr);
    EXPECT_EQ(error(), "Bad point definition (file: " + flap + ", line: 2)");
}

TEST_F(ModelChildren, ABadNormalOfAChildNamesTheChild) {
    dir.write("wing.mod", "normals\n8 0 0 0\n");
    EXPECT_EQ(load(child("wing")), nullptr);
    EXPECT_EQ(error(), "(wing.mod) bad normal: 8");
}

TEST_F(ModelChildren, DataFromMemoryLoadsNoChildrenAndBindsNothing) {
    dir.write("wing.mod", "");
    const ModelPtr model(model_create(dir.file("m.mod").c_str(), nullptr));
    const std::string text = child("wing") + "joint hip 0 0 0 world 5\npoints\n1 0 0 0\nnormals\n1 0 0 0\n";
    EXPECT_EQ(model_read_data(model.get(), text.c_str()), 1);
    EXPECT_EQ(link(model).model, nullptr);
    EXPECT_EQ(point(model, 1).joint_a, nullptr);
}

TEST_F(ModelChildren, AChildThatNamesItselfFails) {
    EXPECT_EQ(load(TRIANGLE + "image a.tga x y\n" + child("ship")), nullptr);
    EXPECT_EQ(error(), "child model names itself or a model above it: " + path);
}

TEST_F(ModelChildren, AChildThatNamesAnAncestorFails) {
    dir.write("b.mod", child("c"));
    dir.write("c.mod", TRIANGLE + "image a.tga x y\n" + child("ship"));
    EXPECT_EQ(load(child("b")), nullptr);
    EXPECT_EQ(error(), "child model names itself or a model above it: " + path);
}

#ifndef _WIN32
TEST_F(ModelChildren, AnotherCaseOfTheOwnNameIsTheSameFile) {
    EXPECT_EQ(load(child("SHIP")), nullptr);
    EXPECT_EQ(error(), "child model names itself or a model above it: " + dir.file("SHIP.mod"));
}
#endif

// ---- long paths ----

class LongPaths : public ModelChildren {
protected:
    ModelPtr load_long(const std::string& file) {
        path = file;
        load_error_set("stale");
        return ModelPtr(model_load(path.c_str(), nullptr, true));
    }
    const std::string deep = test::directory_of_length(dir, test::LONG_DIRECTORY);
    const std::string deep_path = dir.path() + PATH_SEPARATOR + test::native_path(deep);
};

TEST_F(LongPaths, AModelIsReadWithItsChildrenAndTheImagesBesideThem) {
    dir.write(deep + "skin.tga", test::solid_tga(2, 2, 1, 2, 3));
    dir.write(deep + "parts/flap.tga", test::solid_tga(1, 1, 4, 5, 6));
    dir.write(deep + "parts/wing.mod", child("flap"));
    dir.write(deep + "parts/flap.mod", TRIANGLE + "image flap.tga x y\n");
    const std::string file =
        dir.write(deep + "Ship.mod", TRIANGLE + "image skin.tga x y\n" + child(test::native_path("parts/wing")));
    const ModelPtr model = load_long(file);
    ASSERT_NE(model, nullptr) << error();
    EXPECT_EQ(model_count_children(model.get()), 2);
    EXPECT_STREQ(model->name, "ship");
    EXPECT_STREQ(model->path, "") << "a part of it would lead elsewhere";
    EXPECT_EQ(model_directory(model.get()), deep_path);
    EXPECT_EQ(model_file(model.get()), file);
    EXPECT_EQ(layer_first_image(&layer(model))->pixels[0][0], 1);
    const Model* wing = link(model).model;
    EXPECT_EQ(wing->long_paths, 1);
    EXPECT_EQ(model_file(wing), dir.file(deep + "parts/wing.mod"));
    const Model* flap = list_at<const ChildLink>(&wing->children, 0, 0)->model;
    EXPECT_EQ(model_directory(flap), deep_path + test::native_path("parts/"));
    EXPECT_EQ(layer_first_image(model_find_layer(const_cast<Model*>(flap), "a"))->width[0], 1);
}

TEST_F(LongPaths, TheSameFileIsRefusedWhereModelsKeepTheirPaths) {
    const std::string file = dir.write(deep + "ship.mod", TRIANGLE);
    EXPECT_EQ(model_load(file.c_str()), nullptr);
    EXPECT_EQ(error().substr(0, 80), ("path too long: " + file).substr(0, 80));
    EXPECT_EQ(model_read(file.c_str(), nullptr), nullptr);
    EXPECT_EQ(error().substr(0, 15), "path too long: ");
}

TEST_F(LongPaths, AChildMayLieDeeperThanItsParentCanSay) {
    dir.write(deep + "wing.mod", "points\n1 0 0 0\n");
    const std::string upper = test::directory_of_length(dir, 200);
    const std::string room = std::string(60, 'r') + "/" + std::string(50, 's');
    dir.write(upper + room + "/wing.mod", "points\n1 0 0 0\n");
    const ModelPtr model = load_long(dir.write(upper + "ship.mod", child(test::native_path(room + "/wing"))));
    ASSERT_NE(model, nullptr) << error();
    EXPECT_EQ(model->long_directory, nullptr);
    EXPECT_STREQ(link(model).model->path, "");
    EXPECT_STREQ(link(model).model->name, "wing");
    EXPECT_EQ(model_directory(link(model).model), dir.path() + PATH_SEPARATOR + test::native_path(upper + room + "/"));
}

TEST_F(LongPaths, AModelWhosePathFitsIsKeptAsEver) {
    dir.write("wing.mod", "");
    const ModelPtr kept = load_good(child("wing"));
    const ModelPtr model = load_long(path);
    ASSERT_NE(model, nullptr) << error();
    EXPECT_STREQ(model->path, kept->path);
    EXPECT_STREQ(model->name, kept->name);
    EXPECT_EQ(model->long_directory, nullptr);
    EXPECT_EQ(model_directory(model.get()), kept->path);
}

TEST_F(LongPaths, ASlashSeparatesOnEverySystem) {
    dir.write("parts/wing.mod", "");
    dir.write("ship.mod", child("parts/wing"));
    std::string slashed = dir.file("ship.mod");
    for (char& c : slashed) { c = c == '\\' ? '/' : c; }
    const ModelPtr model = load_long(slashed);
    ASSERT_NE(model, nullptr) << error();
    EXPECT_STREQ(model->name, "ship");
    EXPECT_EQ(model_directory(model.get()), test::native_path(dir.path() + "/"));
    EXPECT_EQ(model_directory(link(model).model), test::native_path(dir.path() + "/parts/"));
}

TEST_F(LongPaths, WhatIsMissingIsNamed) {
    const std::string missing = dir.file(deep + "none.mod");
    EXPECT_EQ(load_long(missing), nullptr);
    EXPECT_EQ(error().substr(0, 100), ("could not find: " + missing).substr(0, 100));
    EXPECT_EQ(load_long(dir.write(deep + "ship.mod", child("none"))), nullptr);
    EXPECT_EQ(error().substr(0, 100), ("Cannot find child model: " + missing).substr(0, 100));
    EXPECT_EQ(load_long(dir.write(deep + "ship.mod", TRIANGLE + "image none.tga x y\n")), nullptr);
    EXPECT_EQ(error().find("(none)"), std::string::npos) << "there is a text";
}

TEST_F(LongPaths, MoreThanTheSystemTakesIsNotFound) {
    std::string endless = dir.path();
    while (endless.size() < 40000) { endless += PATH_SEPARATOR + std::string(100, 'e'); }
    EXPECT_EQ(load_long(endless + PATH_SEPARATOR + "ship.mod"), nullptr);
    EXPECT_EQ(error().substr(0, 80), ("could not find: " + endless).substr(0, 80));
    EXPECT_EQ(load_long(dir.file(std::string(600, 'n') + ".mod")), nullptr);
    EXPECT_EQ(error().substr(0, 16), "could not find: ");
}

TEST_F(LongPaths, AModelThatNamesItselfIsStillFound) {
    EXPECT_EQ(load_long(dir.write(deep + "ship.mod", child("ship"))), nullptr);
    EXPECT_EQ(error().substr(0, 43), "child model names itself or a model above i");
}

TEST_F(LongPaths, AReadBelowSuchAModelKnowsTheTreeAbove) {
    dir.write("near.mod", "");
    const ModelPtr parent = load_long(dir.write(deep + "ship.mod", ""));
    ASSERT_NE(parent, nullptr) << error();
    const ModelPtr below(model_read(dir.file("near.mod").c_str(), parent.get()));
    ASSERT_NE(below, nullptr) << error();
    EXPECT_EQ(model_read(below->opened_path, below.get()), nullptr);
    EXPECT_EQ(error(), "child model names itself or a model above it: " + dir.file("near.mod"));
}

#ifndef _WIN32
TEST_F(LongPaths, CaseAndBackslashesAreNothingToThemEither) {
    dir.write(deep + "Parts/WING.MOD", "points\n1 0 0 0\n");
    dir.write(deep + "SHIP.mod", child("parts\\wing"));
    std::string file = dir.file(deep + "ship.mod");
    for (size_t i = dir.path().size(); i < file.size(); ++i) { file[i] = file[i] == 'd' ? 'D' : file[i]; }
    const ModelPtr model = load_long(file);
    ASSERT_NE(model, nullptr) << error();
    EXPECT_EQ(model_count_children(model.get()), 1);
}
#endif

// What the tree has left is said by a budget that is nearly spent: a real one takes half a gigabyte.
class ChildBudgetTest : public test::ModelFileTest {
protected:
    ModelPtr load_with(int64_t left) {
        ChildBudget budget{MODEL_CHILD_BYTES_LIMIT - left};
        return ModelPtr(model_load(path.c_str(), &budget));
    }
    static int64_t bytes_of(const std::string& file) {
        const ModelPtr model(model_load(file.c_str()));
        return model_record_bytes(model.get());
    }
};

TEST_F(ChildBudgetTest, EachLinkTakesThePointsAndPrimitivesOfItsModelOnceMore) {
    const std::string leaf = dir.write("leaf.mod", TRIANGLE);
    const std::string branch = dir.write("branch.mod", "child leaf 0 0 0 1 1 1 0 0 0\n");
    path = dir.write("root.mod", TRIANGLE +
                                     "child leaf 0 0 0 1 1 1 0 0 0\nchild leaf 0 0 0 1 1 1 0 0 0\n"
                                     "child branch 0 0 0 1 1 1 0 0 0\n");
    const int64_t branch_alone = bytes_of(branch);
    const int64_t needed = 3 * bytes_of(leaf) + branch_alone;
    EXPECT_NE(load_with(needed), nullptr) << error();
    EXPECT_EQ(load_with(needed - 1), nullptr);
    EXPECT_EQ(error(), "too many points and primitives in child models: " + leaf);
    EXPECT_NE(load_with(needed), nullptr) << "a refused load left something behind";
}

TEST_F(ChildBudgetTest, TheRootItselfTakesNothing) {
    path = dir.write("root.mod", TRIANGLE);
    EXPECT_NE(load_with(0), nullptr) << error();
}

TEST_F(ChildBudgetTest, ModelsThatAreLoadedTogetherShareIt) {
    const std::string leaf = dir.write("leaf.mod", TRIANGLE);
    path = dir.write("root.mod", "child leaf 0 0 0 1 1 1 0 0 0\n");
    ChildBudget budget{MODEL_CHILD_BYTES_LIMIT - bytes_of(leaf)};
    EXPECT_NE(ModelPtr(model_load(path.c_str(), &budget)), nullptr);
    EXPECT_EQ(ModelPtr(model_load(path.c_str(), &budget)), nullptr);
}

TEST_F(ChildBudgetTest, AnHonestTreeIsFarFromIt) {
    // Thirty models with as many points as primitives can name, and twice as many triangles.
    const auto large = static_cast<int64_t>(32767 * sizeof(Point) + 2 * 32767 * sizeof(Triangle));
    EXPECT_GT(MODEL_CHILD_BYTES_LIMIT, 30 * large);
}

TEST_F(ChildBudgetTest, EveryKindOfRecordCounts) {
    const ModelPtr bare = load_good(FOUR_POINTS + LAYER);
    const int64_t least = model_record_bytes(bare.get());
    const std::string lines[] = {"joint j 0 0 0 world 0\n", "child k 0 0 0 1 1 1 0 0 0\n",
                                 "layer b 1 2 3 d\n",       "triangles\n0 1 2 3\n",
                                 "triangles\n2 1 2 3 4\n",  "lines\n2 1 2\n",
                                 "uvees\n1 0.5 0.5\n",      "blend a b 1\n"};
    for (const std::string& line : lines) {
        std::string many;
        for (int i = 0; i < 40; ++i) {
            // A name of its own for what is refused twice.
            const size_t name = line.find_first_of("jb", line.find(' '));
            const bool named = line[0] == 'j' || line.compare(0, 5, "layer") == 0;
            many += named ? line.substr(0, name) + "n" + std::to_string(i) + line.substr(name + 1) : line;
        }
        const ModelPtr model(model_create("ship.mod", nullptr));
        ASSERT_EQ(model_read_data(model.get(), (FOUR_POINTS + LAYER + many).c_str()), 1) << line << error();
        EXPECT_GT(model_record_bytes(model.get()), least) << line;
    }
}

TEST_F(ModelChildren, ACircleThroughAnotherSpellingEndsAtTheDepthLimit) {
    EXPECT_EQ(load(child(test::native_path("./ship"))), nullptr);
    EXPECT_EQ(error().substr(0, 32), "child models nested too deeply: ");
}

TEST_F(ModelChildren, ATreeOfTheGreatestDepthLoadsAndADeeperOneFails) {
    const auto name = [](int level) { return std::string("m").append(std::to_string(level)); };
    for (int level = 1; level <= MODEL_TREE_DEPTH_LIMIT; ++level) {
        dir.write(name(level) + ".mod", level < MODEL_TREE_DEPTH_LIMIT ? child(name(level + 1)) : TRIANGLE);
    }
    const ModelPtr deepest = load_good(child("m1"));
    EXPECT_EQ(model_count_children(deepest.get()), MODEL_TREE_DEPTH_LIMIT);
    EXPECT_TRUE(model_tree_fits(deepest.get())) << "the bounds of a tree that is put together in the scene";
    dir.write(name(MODEL_TREE_DEPTH_LIMIT) + ".mod", TRIANGLE + "image a.tga x y\n" + child("end"));
    dir.write("end.mod", "");
    EXPECT_EQ(load(child("m1")), nullptr);
    EXPECT_EQ(error(), "child models nested too deeply: " + dir.file("end.mod"));
}

TEST_F(ModelChildren, ATreeOfTheGreatestSizeLoadsAndALargerOneFails) {
    dir.write("leaf.mod", "");
    std::string branch;
    for (int i = 0; i < 63; ++i) { branch += child("leaf"); }
    dir.write("branch.mod", branch);  // 64 models
    std::string root;
    for (int i = 0; i < 63; ++i) { root += child("branch"); }
    for (int i = 0; i < 63; ++i) { root += child("leaf"); }
    EXPECT_EQ(model_count_children(load_good(root).get()), MODEL_TREE_NODE_LIMIT - 1);
    EXPECT_EQ(load(root + child("leaf")), nullptr);
    EXPECT_EQ(error(), "too many child models: " + dir.file("leaf.mod"));
}

TEST_F(ModelChildren, AReadBelowAParentKnowsTheTreeAbove) {
    const ModelPtr parent = load_good("");
    EXPECT_EQ(model_read(path.c_str(), parent.get()), nullptr);
    EXPECT_EQ(error(), "child model names itself or a model above it: " + path);
    const std::string wing = dir.write("wing.mod", "");
    const ModelPtr below(model_read(wing.c_str(), parent.get()));
    ASSERT_NE(below, nullptr);
    EXPECT_EQ(below->parent, parent.get());
}

}  // namespace
}  // namespace pelt
