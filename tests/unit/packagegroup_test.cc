#include "packagegroup.h"

#include <gtest/gtest.h>

#include <list>

#include "lang.h"
#include "package.h"
#include "scratch.h"

namespace {

// An installed package: its record, and its deps file when it has dependencies.
void installed(const ScratchFolder& scratch, const std::string& fullName, const Lines& deps) {
  scratch.write(std::string("var/log/packages/") + fullName, "");
  std::string lines;
  for (const std::string& dep : deps) lines += dep + "\n";
  if (!deps.empty()) scratch.write(std::string("var/log/deps/") + fullName, lines);
}

class PackageGroupDepsTest : public testing::Test {
 protected:
  void SetUp() override { scratch.makeDirs("var/log/deps"); }
  // A package filled by hand with a short name and dependency lines; the test owns it.
  Package* made(const std::string& name, const Lines& deps) {
    Package& package = owned.emplace_back();
    package.name = name;
    package.fullName = name + "-1.0-i486-1";
    for (const std::string& dep : deps) package.deps.push_back(dep.c_str());
    return &package;
  }
  Lines check(PackageGroup::OperationType operation) {
    return linesOf(group.checkDeps(operation, false));
  }
  ScopedVariable lang{"LANG", "C"};
  ScratchFolder scratch;
  std::list<Package> owned;
  PackageGroup group;
};

TEST(PackageGroupTest, KeepsCommandLineOrderAndRemovesByIdentityNotByName) {
  ScopedVariable lang("LANG", "C");
  Package a, b, twinOfA;
  a.name = twinOfA.name = "a";
  PackageGroup group;
  group.add(&a).add(&b, &a).add(&a);
  ASSERT_EQ(group.packages.size(), 3u);
  EXPECT_EQ(group.packages.front().second, nullptr);
  EXPECT_EQ(std::next(group.packages.begin())->second, &a);

  group.remove(&twinOfA);
  EXPECT_EQ(group.packages.size(), 3u);
  group.remove(&a);
  ASSERT_EQ(group.packages.size(), 2u);
  EXPECT_EQ(group.packages.front().first, &b);
  EXPECT_EQ(group.packages.back().first, &a);
}

TEST(PackageGroupTest, LoadingATagFileReplacesTheTable) {
  ScratchFolder scratch;
  PackageGroup group;
  EXPECT_EQ(group.priority, TagNone);
  ASSERT_TRUE(group.loadTagFile(scratch.write("first", "a: ADD\n")));
  ASSERT_TRUE(group.loadTagFile(scratch.write("second", "b: SKP\n")));
  EXPECT_FALSE(group.tagFile.contains("a"));
  EXPECT_EQ(group.tagFile.priority("b"), TagSkip);
  EXPECT_FALSE(group.loadTagFile(scratch.path() + "/missing"));
  EXPECT_FALSE(group.tagFile.contains("b"));
}

TEST(PackageGroupTest, BuildNumberReadsTheStampAsYearMonthDay) {
  EXPECT_EQ(PackageGroup::buildNumber("31122019"), 20191231);
  EXPECT_GT(PackageGroup::buildNumber("01012020"), PackageGroup::buildNumber("31122019"));
  EXPECT_EQ(PackageGroup::buildNumber("01022020 and more"), 20200201);
  EXPECT_EQ(PackageGroup::buildNumber("0102202x"), 202);
  EXPECT_EQ(PackageGroup::buildNumber("01x22020"), 2020);
  EXPECT_EQ(PackageGroup::buildNumber("-1022020"), 202002);
  EXPECT_EQ(PackageGroup::buildNumber("0102-020"), 0);
  EXPECT_EQ(PackageGroup::buildNumber("010220"), 20);
  EXPECT_EQ(PackageGroup::buildNumber("0102"), 0);
  EXPECT_EQ(PackageGroup::buildNumber(""), 0);
}

TEST_F(PackageGroupDepsTest, InstallListsWhatNeitherTheDatabaseNorTheGroupProvides) {
  installed(scratch, "libc-2.3-i486-1", {});
  installed(scratch, "short-1", {});
  group.add(made("a", {"b", "libc", "a", "x", "short", "libc-2.3-i486-1"}));
  group.add(made("b", {"a", "y", "x"}));
  EXPECT_EQ(check(PackageGroup::OperationInstall), (Lines{"x", "short", "libc-2.3-i486-1", "y"}));
  EXPECT_EQ(check(PackageGroup::OperationInstall), (Lines{"x", "short", "libc-2.3-i486-1", "y"}));
}

TEST_F(PackageGroupDepsTest, UpgradeTestsAsManyNewLinesAsTheOldPackageHad) {
  installed(scratch, "a-1.0-i486-1", {"libc"});
  installed(scratch, "libc-1.0-i486-1", {});
  group.add(made("a", {"one", "two"}), made("a", {"libc", "b", "c"}));
  group.add(made("b", {"p", "q", "r"}), made("b", {"d"}));
  group.add(made("", {}), made("n", {"e"}));
  EXPECT_EQ(check(PackageGroup::OperationUpgrade), (Lines{"b", "d"}));
}

TEST_F(PackageGroupDepsTest, RemoveListsDependentsLevelByLevelWithoutTheGroup) {
  installed(scratch, "a-1.0-i486-1", {});
  installed(scratch, "b-1.0-i486-1", {"a"});
  installed(scratch, "c-1.0-i486-1", {"b"});
  installed(scratch, "x-1.0-i486-1", {"y"});
  installed(scratch, "y-1.0-i486-1", {"x"});
  group.add(made("a", {}));
  EXPECT_EQ(check(PackageGroup::OperationRemove), (Lines{"b", "c"}));

  PackageGroup pair;
  pair.add(made("b", {"a"})).add(made("a", {}));
  EXPECT_EQ(linesOf(pair.checkDeps(PackageGroup::OperationRemove, true)), (Lines{"c"}));
  PackageGroup cycle;
  cycle.add(made("x", {"y"}));
  EXPECT_EQ(linesOf(cycle.checkDeps(PackageGroup::OperationRemove, false)), (Lines{"y"}));
  EXPECT_DEATH(cycle.checkDeps(PackageGroup::OperationNone, false), "Unhandled operation type");
}

TEST_F(PackageGroupDepsTest, ProceedSkipsTaggedPackagesAndRefusesOlderBuilds) {
  group.add(made("a", {})).priority = TagSkip;
  testing::internal::CaptureStdout();
  group.proceed(PackageGroup::OperationInstall);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  PackageGroup().proceed(PackageGroup::OperationNone);

  ASSERT_TRUE(Lang::instance().load(scratch.write(
      "t.lang", "ErrorPackageMustBeNewer=newer [ARG]\nErrorPackageNotInstalled=absent [ARG]\n")));
  Package* old = made("a", {});
  Package* fresh = made("b", {});
  old->fromDatabase = true;
  old->buildInfo.push_back("02012020");
  fresh->buildInfo.push_back("01012020");
  PackageGroup upgrade;
  upgrade.add(old, fresh).reinstall = true;
  EXPECT_EXIT(upgrade.proceed(PackageGroup::OperationUpgrade), testing::ExitedWithCode(255),
              "^ERROR: newer b\n$");
  old->fromDatabase = false;
  EXPECT_EXIT(upgrade.proceed(PackageGroup::OperationUpgrade), testing::ExitedWithCode(255),
              "^ERROR: absent a\n$");
}

}  // namespace
