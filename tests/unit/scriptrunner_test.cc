#include "scriptrunner.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

// Scripts that report what they saw into a file of the scratch folder.
class ScriptRunnerTest : public ::testing::Test {
 protected:
  ScriptRunner reporting(const std::string& what) {
    ScriptRunner script;
    script.push_back(("echo \"" + what + "\" >> " + output()).c_str());
    return script;
  }
  std::string output() const { return scratch.path() + "/output"; }

  ScratchFolder scratch;
};

TEST_F(ScriptRunnerTest, RunsInTheDirectoryWithTheArgumentAndRemovesTheScriptFile) {
  const std::string directory = scratch.makeDirs("root");
  const ScriptRunner script = reporting("$(pwd) $# [$1]");
  ASSERT_TRUE(script.run("-install", directory));
  EXPECT_FALSE(FileSystem::instance().exists(scratch.temp() + "/script", false));
  ASSERT_TRUE(script.run("--afterinstall", directory));  // the lines stay for another run
  // The argument passes through the shell unquoted, and an empty one adds none.
  ASSERT_TRUE(reporting("$#").run("", scratch.path()));
  ASSERT_TRUE(reporting("$#").run("two words", scratch.path()));
  EXPECT_EQ(readWholeFile(output()),
            directory + " 1 [-install]\n" + directory + " 1 [--afterinstall]\n0\n2\n");
}

TEST_F(ScriptRunnerTest, FailuresOfTheScriptOrOfTheDirectoryStopNothing) {
  ScriptRunner failing = reporting("ran");
  failing.push_back("exit 1");
  EXPECT_TRUE(failing.run("", scratch.path()));
  EXPECT_TRUE(ScriptRunner().run("", scratch.path()));
  EXPECT_TRUE(reporting("$(pwd)").run("", scratch.path() + "/missing"));
  EXPECT_EQ(readWholeFile(output()), "ran\n" + std::filesystem::current_path().string() + "\n");
}

TEST_F(ScriptRunnerTest, AScriptThatCannotBeWrittenDoesNotRun) {
  TempArea::instance().create((scratch.path() + "/missing").c_str(), zet::TEMP_PREFIX);
  EXPECT_FALSE(reporting("ran").run("", scratch.path()));
  EXPECT_FALSE(FileSystem::instance().exists(output(), false));
}

}  // namespace
