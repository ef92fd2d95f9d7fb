#include "dependencystore.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

// A database under the scratch root, filled file by file.
class DependencyStoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    scratch.makeDirs("var/log/packages");
    scratch.makeDirs("var/log/deps");
  }
  void install(const std::string& fullName, const std::string& fileList = "") {
    scratch.write("var/log/packages/" + fullName,
                  "PACKAGE NAME:     " + fullName + "\nFILE LIST:\n" + fileList);
  }
  void writeDeps(const std::string& fullName, const std::string& lines) {
    scratch.write("var/log/deps/" + fullName, lines);
  }
  Lines resolve(int mode) {
    store.loadInstalled();
    return linesOf(store.resolve(mode));
  }

  ScratchFolder scratch;
  DependencyStore store;
};

TEST_F(DependencyStoreTest, MissingAreTheRequiredNamesThatNothingProvides) {
  install("foo-1.2-i486-1");
  install("bar-baz-2-i486-1");
  install("short");  // too few parts: provides nothing, not even "short"
  for (const char* name : {"foo", "short", "qux", "zap", "foo-1.2-i486-1", "bar-baz", "foo"})
    store.addRequired(name);
  store.addIncoming("qux");
  store.addIncoming("qux");
  EXPECT_EQ(resolve(DependencyStore::ResolveMissing), (Lines{"short", "zap", "foo-1.2-i486-1"}));
  store.clearIncoming();
  EXPECT_EQ(resolve(DependencyStore::ResolveMissing),
            (Lines{"short", "qux", "zap", "foo-1.2-i486-1"}));
  EXPECT_EQ(resolve(2), Lines{});
  EXPECT_EQ(resolve(-1), Lines{});
  store.clearRequired();
  EXPECT_EQ(resolve(DependencyStore::ResolveMissing), Lines{});
  store.addOutgoing("foo");  // with no deps files at all
  EXPECT_EQ(resolve(DependencyStore::ResolveDependents), Lines{});
}

TEST_F(DependencyStoreTest, DependentsAreTheInstalledPackagesWhoseDepsNameAnOutgoingOne) {
  writeDeps("a-1-i486-1", "foo\n");
  writeDeps("b-1-i486-1", "other\nbar\nfoo\n");
  writeDeps("c-1-i486-1", "foobar\n foo\n");  // whole lines only, and not cleaned
  writeDeps("short", "foo\n");                // too few parts: never a dependent
  writeDeps("foo-1-i486-1", "bar\n");         // an outgoing package is no candidate
  store.addOutgoing("foo");
  store.addOutgoing("bar");
  Lines expected;
  for (const std::string& entry : directoryOrder(scratch.path() + "/var/log/deps"))
    if (entry == "a-1-i486-1" || entry == "b-1-i486-1") expected.push_back(entry.substr(0, 1));
  EXPECT_EQ(resolve(DependencyStore::ResolveDependents), expected);
}

TEST_F(DependencyStoreTest, ANameTwiceInOutgoingAlsoErasesTheCandidateBefore) {
  writeDeps("foo-1-i486-1", "x\n");
  writeDeps("bar-1-i486-1", "foo\n");
  store.addOutgoing("foo");
  store.addOutgoing("foo");
  // The listing holds "." and ".." too, so the entry before foo's may be one of those.
  FileSystem::instance().list(scratch.path() + "/var/log/deps", false);
  const TextVector listing(FileSystem::instance().entries());
  const int fooIndex = listing.find("foo-1-i486-1");
  const bool barBefore = fooIndex > 0 && std::string(listing[fooIndex - 1]) == "bar-1-i486-1";
  EXPECT_EQ(resolve(DependencyStore::ResolveDependents), barBefore ? Lines{} : Lines{"bar"});
}

TEST_F(DependencyStoreTest, SharedFilesAreThoseAnotherRecordLists) {
  install("own-1-i486-1", "a\nb\nc\nd\n");
  install("bar-1-i486-1", "b\nd\nd\nc/\n");
  install("baz-1-i486-1", "c\n");
  // A description line that begins with the label opens the file list, as for any reader.
  scratch.write("var/log/packages/qux-1-i486-1", "PACKAGE DESCRIPTION:\nFILE LIST: of e\ne\n");
  store.loadInstalled();
  const TextVector files = vectorOf({"a", "b", "c", "d", "b", "e", "f"});
  EXPECT_EQ(linesOf(store.sharedFiles(files, "own-1-i486-1")), (Lines{"b", "c", "d", "b", "e"}));
  // Only the whole own name is passed over.
  EXPECT_EQ(linesOf(store.sharedFiles(files, "own")), (Lines{"a", "b", "c", "d", "b", "e"}));
  EXPECT_EQ(store.sharedFiles(TextVector(), "own-1-i486-1").size(), 0u);
}

TEST_F(DependencyStoreTest, InstalledPathTakesTheFirstEntryByWholeOrShortName) {
  for (const char* name : {"foo-1.2-i486-1", "foo-bar-baz-1.2-i486-1", "three-1.0-i486",
                           "two-1.0-i486-1", "two-2.0-i486-1"})
    install(name);
  store.loadInstalled();
  const std::string prefix = "//var/log/packages/";
  EXPECT_EQ(store.installedPath("foo"), prefix + "foo-1.2-i486-1");
  EXPECT_EQ(store.installedPath("foo-1.2-i486-1"), prefix + "foo-1.2-i486-1");
  EXPECT_EQ(store.installedPath("foo-bar-baz"), prefix + "foo-bar-baz-1.2-i486-1");
  EXPECT_EQ(store.installedPath("three-1.0-i486"), prefix + "three-1.0-i486");
  for (const char* absent : {"foo-bar", "three", "FOO"}) EXPECT_EQ(store.installedPath(absent), "");
  EXPECT_TRUE(store.isInstalled("foo"));
  EXPECT_FALSE(store.isInstalled("three"));
  std::string firstTwo;
  for (const std::string& entry : directoryOrder(scratch.path() + "/var/log/packages"))
    if (firstTwo.empty() && entry.compare(0, 4, "two-") == 0) firstTwo = entry;
  EXPECT_EQ(store.installedPath("two"), prefix + firstTwo);
  EXPECT_EQ(store.fullNameOf("two"), firstTwo);
  EXPECT_EQ(store.fullNameOf("foo"), "foo-1.2-i486-1");
  EXPECT_EQ(store.fullNameOf("foo-1.2-i486-1"), "");
  EXPECT_EQ(store.fullNameOf("three-1.0-i486"), "");
}

TEST(DependencyStoreEraseTest, ErasesOneIndexAndIgnoresIndicesOutside) {
  TextVector vector = vectorOf({"a", "b", "c"});
  DependencyStore::eraseAt(vector, -1);
  DependencyStore::eraseAt(vector, 3);
  EXPECT_EQ(linesOf(vector), (Lines{"a", "b", "c"}));
  DependencyStore::eraseAt(vector, 1);
  EXPECT_EQ(linesOf(vector), (Lines{"a", "c"}));
}

}  // namespace
