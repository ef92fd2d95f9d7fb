#include <regex>

#include "dependencystore.h"
#include "package.h"
#include "packagegroup.h"
#include "scratch.h"
#include "scriptrunner.h"
#include "smallfile.h"

using ServicesTest = Scratch;

TEST(TempArea, TheGeneratorStepsWrapsAndRotatesOverThirtyOneBits) {
  EXPECT_EQ(TempArea::nextSeed(1), 16807u);
  EXPECT_EQ(TempArea::mix(16807), 1400897601u);
  EXPECT_EQ(TempArea::nextSeed(127773), 4294964460u);
  EXPECT_EQ(TempArea::nextSeed(2147483647u), 2147483647u);
  EXPECT_EQ(TempArea::nextSeed(0), 2147483647u);
  EXPECT_EQ(TempArea::random(0), 0u);
  TempArea::instance().create("/base", "p-");
  EXPECT_TRUE(
      std::regex_match(TempArea::instance().getPath(), std::regex("/base/p-(0|[1-9]\\d{0,5})")));
}

TEST(PackageGroup, BuildStampsReadAsYearMonthDay) {
  const struct {
    const char* stamp;
    int number;
  } rows[] = {{"15022020", 20200215},
              {"29121999", 19991229},
              {"01032020x", 20200301},
              {"0103202a", 202},
              {"x1032020", 202003},
              {"0000", 0},
              {"", 0},
              {"1234567", 567}};
  for (const auto& row : rows)
    EXPECT_EQ(PackageGroup::buildNumber(row.stamp), row.number) << row.stamp;

  PackageGroup group;
  EXPECT_EQ(group.checkDeps(PackageGroup::OperationInstall, false).size(), 0u);
  EXPECT_DEATH(group.checkDeps(PackageGroup::OperationNone, false), "Unhandled operation type");
  Package a, b;
  group.add(&a).add(&b).remove(&b);
  EXPECT_EQ(group.packages.size(), 1u);
  EXPECT_EQ(group.packages.front().first, &a);
}

TEST_F(ServicesTest, TheStoreFindsInstalledNamesWhole) {
  write("var/log/packages/foo-bar-1.2-x-1", "");
  write("var/log/packages/odd", "");
  DependencyStore store;
  store.loadInstalled();
  EXPECT_EQ(store.installedPath("odd"), "//var/log/packages/odd");
  EXPECT_EQ(store.fullNameOf("odd"), "");
  EXPECT_EQ(store.fullNameOf("foo-bar"), "foo-bar-1.2-x-1");
  EXPECT_FALSE(store.isInstalled("foo"));
  EXPECT_FALSE(store.isInstalled("foo-bar-1.2-x-1x"));
  EXPECT_EQ(store.resolve(2).size(), 0u);
}

// A stale copy is replaced, then removed; only a failed copy gives false.
TEST_F(ServicesTest, AScriptRunsFromAFreshCopy) {
  const std::string temp = TempArea::instance().getPath();
  std::ofstream(temp + "/script") << "exit";
  ScriptRunner script;
  script.push_back("echo $1 >out");
  EXPECT_TRUE(script.run("x", root));
  EXPECT_EQ(read(root + "/out"), "x\n");
  EXPECT_FALSE(std::filesystem::exists(temp + "/script"));
  std::filesystem::remove(temp);
  EXPECT_FALSE(script.run("x", root));
}

TEST_F(ServicesTest, SmallFileKeepsItsLimitAndCleansUp) {
  std::string text;
  EXPECT_TRUE(SmallFile::read(write("f", "a"), 1, text));
  write("d/e/x", "");
  EXPECT_FALSE(SmallFile::write(root + "/d/e", "", 0644));
  EXPECT_FALSE(SmallFile::write(root + "/none/f", "", 0644));
  EXPECT_EQ(std::filesystem::remove_all(root + "/d"), 3u);
  EXPECT_EQ(SmallFile::temporaryBeside("d/f"), "d/.f.XXXXXX");
}
