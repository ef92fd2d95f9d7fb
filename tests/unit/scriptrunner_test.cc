#include "scriptrunner.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

// Scripts that report what they saw into a file of the scratch folder.
class ScriptRunnerTest : public ::testing::Test {
 protected:
  ScriptRunner scriptReporting(const std::string& what) {
    ScriptRunner script;
    script.push_back(("echo \"" + what + "\" >> " + output()).c_str());
    return script;
  }
  std::string output() const { return scratch.path() + "/output"; }

  ScratchFolder scratch;
};

TEST_F(ScriptRunnerTest, RunsInTheDirectoryWithTheArgumentAndRemovesTheScriptFile) {
  const std::string directory = scratch.makeDirs("root");
  ScriptRunner script = scriptReporting("$(pwd) $# [$1]");
  ASSERT_TRUE(script.run("-install", directory));
  EXPECT_EQ(readWholeFile(output()), directory + " 1 [-install]\n");
  EXPECT_FALSE(FileSystem::instance().exists(scratch.temp() + "/script", false));
  // The lines stay, so the script can run again.
  ASSERT_TRUE(script.run("--afterinstall", directory));
  EXPECT_EQ(readWholeFile(output()),
            directory + " 1 [-install]\n" + directory + " 1 [--afterinstall]\n");
}

TEST_F(ScriptRunnerTest, TheArgumentPassesThroughTheShellUnquoted) {
  ASSERT_TRUE(scriptReporting("$#").run("", scratch.path()));
  ASSERT_TRUE(scriptReporting("$#").run("two words", scratch.path()));
  EXPECT_EQ(readWholeFile(output()), "0\n2\n");
}

TEST_F(ScriptRunnerTest, FailuresOfTheScriptOrOfTheDirectoryStopNothing) {
  ScriptRunner failing = scriptReporting("ran");
  failing.push_back("exit 1");
  EXPECT_TRUE(failing.run("", scratch.path()));

  char current[4096];
  ASSERT_NE(getcwd(current, sizeof current), nullptr);
  EXPECT_TRUE(scriptReporting("$(pwd)").run("", scratch.path() + "/missing"));
  EXPECT_EQ(readWholeFile(output()), "ran\n" + std::string(current) + "\n");
}

TEST_F(ScriptRunnerTest, AnEmptyScriptHasNoLinesButRuns) {
  ScriptRunner empty;
  EXPECT_FALSE(empty.hasLines());
  EXPECT_TRUE(empty.run("", scratch.path()));
  EXPECT_TRUE(scriptReporting("x").hasLines());
}

TEST_F(ScriptRunnerTest, AScriptThatCannotBeWrittenDoesNotRun) {
  TempArea::instance().create((scratch.path() + "/missing").c_str(), zet::TEMP_PREFIX);
  EXPECT_FALSE(scriptReporting("ran").run("", scratch.path()));
  EXPECT_FALSE(FileSystem::instance().exists(output(), false));
}

}  // namespace
