// pelt-model diff, run as a program and by the version control system that it serves; and check's reports for programs.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/run_program.h"
#include "support/temp_dir.h"

namespace pelt {
namespace {

using test::pelt_model;
using test::run_program;
using test::RunResult;
using Json = nlohmann::json;

const std::string OLD =
    "points\n1 0 0 0\n2 9 0 0\n3 0 9 0\n4 5 5 5\nlayer roof 127 0 0 singlesided\ntriangles\n0 1 2 3\n"
    "image no-such.tga x y\nchild no-such 0 0 0 1 1 1 0 0 0\n";
// Point 3 has gone up by 12, a face has come, and the colour is another.
const std::string NEW =
    "points\n1 0 0 0\n2 9 0 0\n3 0 9 12\n4 5 5 5\nlayer roof 100 0 0 singlesided\ntriangles\n0 1 2 3\n0 2 3 4\n"
    "image no-such.tga x y\nchild no-such 0 0 0 1 1 1 0 0 0\n";
const std::string CHANGES = "layer roof: 1 point moved by 12, 1 face added, colour 127 0 0 to 100 0 0\n";

class Diff : public testing::Test {
protected:
    Diff() {
        dir.write("old.mod", OLD);
        dir.write("new.mod", NEW);
    }
    RunResult run(const std::vector<std::string>& words) { return pelt_model(words, {dir.path()}); }

    test::TempDir dir;
};

TEST_F(Diff, TellsWhatChangedAndNeedsNothingBesideTheFiles) {
    const RunResult result = run({"diff", "old.mod", "new.mod"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, CHANGES);
    EXPECT_EQ(result.err, "");
}

TEST_F(Diff, TheSameIsStatusZeroWithoutAWord) {
    dir.write("same.mod", "# spaced otherwise\n" + OLD + "\n\n");
    const RunResult result = run({"diff", "old.mod", "same.mod"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST_F(Diff, WhatCannotBeComparedIsStatusTwo) {
    dir.write("bad.mod", "points\n1 0 0 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 2 9\n");
    const RunResult bad = run({"diff", "old.mod", "bad.mod"});
    EXPECT_EQ(bad.status, 2);
    EXPECT_EQ(bad.out, "");
    EXPECT_EQ(bad.err.substr(0, 10), "bad.mod:5:");
    EXPECT_EQ(run({"diff", "old.mod", "none.mod"}).status, 2);
    EXPECT_EQ(run({"diff", "old.mod"}).status, 2);
    EXPECT_EQ(run({"diff", "old.mod", "new.mod", "old.mod"}).status, 2);
}

TEST_F(Diff, JsonHoldsTheSame) {
    const RunResult result = run({"diff", "--json", "old.mod", "new.mod"});
    EXPECT_EQ(result.status, 1);
    const Json expected = Json::parse(
        R"([{"subject": "layer", "name": "roof", "changes": [
             {"change": "moved", "what": "point", "count": 1, "distance": 12.0},
             {"change": "added", "what": "face", "count": 1},
             {"change": "set", "what": "colour", "from": "127 0 0", "to": "100 0 0"}]}])");
    EXPECT_EQ(Json::parse(result.out), expected);
    EXPECT_EQ(Json::parse(run({"diff", "--json", "old.mod", "old.mod"}).out), Json::array());
}

TEST_F(Diff, ExternalProgramOfGit) {
    const std::vector<std::string> words = {"diff",   "--git",   "a/roof.mod", "old.mod", "1",
                                            "100644", "new.mod", "2",          "100644"};
    EXPECT_EQ(run(words).status, 0);
    EXPECT_EQ(run(words).out, "model a/roof.mod\n" + CHANGES);
    const RunResult added = run({"diff", "--git", "a.mod", "/dev/null", ".", ".", "new.mod", "2", "100644"});
    EXPECT_EQ(added.status, 0);
    EXPECT_EQ(added.out,
              "model a.mod\npoints: 4 points added\nlayer roof: added, 2 faces added\nchild no-such: added\n");
    EXPECT_EQ(run({"diff", "--git", "a.mod", "old.mod"}).status, 2);
}

#ifndef _WIN32
// Both ways in which git can be told of a kind of file, as docs/tool.md gives them.
TEST_F(Diff, GitShowsModelsInOurTerms) {
    const auto git = [&](std::vector<std::string> words) {
        const std::vector<std::string> identity = {"git", "-c", "user.name=a", "-c", "user.email=a@example.org"};
        words.insert(words.begin(), identity.begin(), identity.end());
        return run_program(words, {dir.path()});
    };
    ASSERT_EQ(git({"init", "-q"}).status, 0);
    dir.write(".gitattributes", "*.mod diff=pelt\n");
    ASSERT_EQ(git({"add", ".gitattributes", "old.mod"}).status, 0);
    ASSERT_EQ(git({"commit", "-qm", "one"}).status, 0);
    dir.write("old.mod", NEW);
    const std::string tool = PELT_MODEL_TOOL;
    const RunResult external = git({"-c", "diff.pelt.command='" + tool + "' diff --git", "diff"});
    EXPECT_EQ(external.out, "model old.mod\n" + CHANGES) << external.err;
    const RunResult as_text = git({"-c", "diff.pelt.textconv='" + tool + "' info --alone", "diff"});
    EXPECT_NE(as_text.out.find("\n+  box from 0 0 0 to 9 9 12"), std::string::npos) << as_text.out << as_text.err;
}
#endif

// ---- check for programs ----

class CheckFormat : public testing::Test {
protected:
    CheckFormat() {
        dir.write("a b,c%.mod", "points\n1 0 0 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 1 9\n");
        dir.write("good.mod", "points\n1 0 0 0\n");
    }
    std::string report(const std::string& format) {
        const RunResult result = pelt_model({"check", "--format", format, "good.mod", "a b,c%.mod"}, {dir.path()});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
    test::TempDir dir;
};

TEST_F(CheckFormat, Json) {
    const Json expected = Json::parse(
        R"([{"file": "good.mod", "problems": [], "left_out": 0},
            {"file": "a b,c%.mod", "left_out": 0,
             "problems": [{"file": "a b,c%.mod", "line": 5, "text": "point does not exist"}]}])");
    EXPECT_EQ(Json::parse(report("json")), expected);
}

TEST_F(CheckFormat, GithubEscapesWhatItsCommandsEndAt) {
    EXPECT_EQ(report("github"), "::error file=a b%2Cc%25.mod,line=5::point does not exist\n");
}

TEST_F(CheckFormat, SarifNamesFileLineAndText) {
    const Json sarif = Json::parse(report("sarif"));
    EXPECT_EQ(sarif["version"], "2.1.0");
    ASSERT_EQ(sarif["runs"].size(), 1u);
    EXPECT_EQ(sarif["runs"][0]["tool"]["driver"]["name"], "pelt-model");
    ASSERT_EQ(sarif["runs"][0]["results"].size(), 1u);
    const Json& result = sarif["runs"][0]["results"][0];
    EXPECT_EQ(result["message"]["text"], "point does not exist");
    EXPECT_EQ(result["ruleId"], sarif["runs"][0]["tool"]["driver"]["rules"][0]["id"]);
    const Json& place = result["locations"][0]["physicalLocation"];
    EXPECT_EQ(place["artifactLocation"]["uri"], "a%20b%2Cc%25.mod");
    EXPECT_EQ(place["region"]["startLine"], 5);
}

TEST_F(CheckFormat, TheMostOfAFileHoldsForAll) {
    dir.write("two.mod", "points\n1 0 0 0\nlayer a 1 2 3 singlesided\ntriangles\n0 1 1 9\n0 1 1 8\n");
    const RunResult result = pelt_model({"check", "--format", "json", "--max", "1", "two.mod"}, {dir.path()});
    const Json json = Json::parse(result.out);
    EXPECT_EQ(json[0]["problems"].size(), 1u);
    EXPECT_EQ(json[0]["left_out"], 1);
}

TEST_F(CheckFormat, GoodModelsAreStatusZero) {
    for (const std::string format : {"json", "sarif", "github"}) {
        const RunResult result = pelt_model({"check", "--format", format, "good.mod"}, {dir.path()});
        EXPECT_EQ(result.status, 0) << format;
    }
    EXPECT_EQ(pelt_model({"check", "--format", "paper", "good.mod"}, {dir.path()}).status, 2);
}

}  // namespace
}  // namespace pelt
