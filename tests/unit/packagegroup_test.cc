#include "packagegroup.h"

#include <gtest/gtest.h>

#include "package.h"
#include "scratch.h"

namespace {

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

}  // namespace
