#include "filesystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "scratch.h"

namespace {

// The scratch folder is the installation root.
class FileSystemTest : public ::testing::Test {
 protected:
  std::string at(const std::string& relative) const { return scratch.path() + "/" + relative; }
  std::string read(const std::string& relative) const { return readWholeFile(at(relative)); }
  void link(const std::string& target, const std::string& relative) {
    ASSERT_EQ(symlink(target.c_str(), at(relative).c_str()), 0);
  }
  bool present(const std::string& relative) const {
    struct stat status;
    return lstat(at(relative).c_str(), &status) == 0;
  }
  bool isDirectory(const std::string& relative) const {
    return std::filesystem::is_directory(at(relative));
  }
  std::vector<std::string> listed() {
    std::vector<std::string> names = linesOf(fs.entries());
    std::sort(names.begin(), names.end());
    return names;
  }

  ScratchFolder scratch;
  FileSystem& fs = FileSystem::instance();
  const std::string top = scratch.path().substr(1);  // the root, spelled relative to "/"
};

TEST_F(FileSystemTest, ExistsOpensForReadingAndRemoveSparesLinksToDirectories) {
  scratch.makeDirs("dir");
  scratch.makeDirs("full/inside");
  scratch.write("file", "x");
  link("nowhere", "dangling");
  link(at("dir"), "dirlink");
  EXPECT_TRUE(fs.exists("dir", true));
  EXPECT_TRUE(fs.exists("/file", true));
  EXPECT_FALSE(fs.exists("dangling", true));
  EXPECT_FALSE(fs.exists("absent", true));
  EXPECT_TRUE(fs.exists(at("file"), false));
  EXPECT_TRUE(FileSystem::isDirectory(at("dirlink")));
  EXPECT_FALSE(FileSystem::isDirectory(at("file")));

  EXPECT_EQ(fs.remove("dirlink", true), -1);
  EXPECT_TRUE(present("dirlink"));
  EXPECT_EQ(fs.remove("full", true), -1);
  EXPECT_EQ(fs.remove("dir", true), 0);
  EXPECT_EQ(fs.remove("file", true), 0);
  EXPECT_EQ(fs.remove("file", true), -1);
  EXPECT_FALSE(present("dir"));
  EXPECT_FALSE(present("file"));
}

// exists, remove and list take a relative path from the working directory; makeDir, makePath
// and copy put "/" in front, so there the same spelling means the top.
TEST_F(FileSystemTest, RelativePathsWithoutRootFollowTwoRules) {
  char oldCwd[4096];
  ASSERT_NE(getcwd(oldCwd, sizeof oldCwd), nullptr);
  scratch.write("work/here", "x");
  ASSERT_EQ(chdir(at("work").c_str()), 0);
  EXPECT_TRUE(fs.exists("here", false));
  EXPECT_TRUE(fs.makeDir(top + "/work/made", false));
  EXPECT_TRUE(isDirectory("work/made"));
  EXPECT_TRUE(fs.copy(top + "/work/copied", top + "/work/here", true, false));
  EXPECT_EQ(read("work/copied"), "x");
  EXPECT_EQ(fs.remove("here", false), 0);
  EXPECT_FALSE(present("work/here"));
  ASSERT_EQ(chdir(oldCwd), 0);
}

TEST_F(FileSystemTest, ListReadsEveryNameAndKeepsTheOldListOnFailure) {
  scratch.makeDirs("dir/sub");
  scratch.write("dir/.hidden", "");
  ASSERT_TRUE(fs.list("dir", true));
  const std::vector<std::string> expected = {".", "..", ".hidden", "sub"};
  EXPECT_EQ(listed(), expected);
  EXPECT_FALSE(fs.list("absent", true));
  EXPECT_FALSE(fs.list("dir/.hidden", true));
  EXPECT_EQ(listed(), expected);
}

TEST_F(FileSystemTest, RemoveTreeGoesThroughLinksAndSparesTheLinksThemselves) {
  scratch.makeDirs("tree/a/b");
  scratch.write("tree/.hidden", "");
  scratch.write("tree/a/b/file", "x");
  scratch.write("elsewhere/deep/victim", "x");
  scratch.write("target", "x");
  link(at("elsewhere"), "tree/a/dirlink");
  link(at("target"), "tree/filelink");
  link("nowhere", "tree/dangling");

  fs.removeTree("tree/a", true);
  // The link to a directory cannot be removed, so its parent stays with it.
  EXPECT_TRUE(present("tree/a/dirlink"));
  EXPECT_FALSE(present("tree/a/b"));
  EXPECT_TRUE(present("elsewhere"));
  EXPECT_FALSE(present("elsewhere/deep"));

  ASSERT_EQ(unlink(at("tree/a/dirlink").c_str()), 0);
  fs.removeTree(at("tree"), false);
  EXPECT_FALSE(present("tree"));
  EXPECT_TRUE(present("target"));
  fs.removeTree("absent", true);
}

TEST_F(FileSystemTest, CopyCarriesContentModeAndOwnerAndFollowsLinksAtBothEnds) {
  std::string big(25000, '\0');
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7);
  scratch.write("big", big);
  scratch.write("empty", "");
  ASSERT_EQ(chmod(at("empty").c_str(), 0640), 0);
  const bool asRoot = geteuid() == 0;
  if (asRoot) {
    ASSERT_EQ(chown(at("empty").c_str(), 1234, 5678), 0);
  }

  EXPECT_TRUE(fs.copy("big-copy", "big", true, true));
  EXPECT_EQ(read("big-copy"), big);
  EXPECT_TRUE(fs.copy("empty-copy", "empty", true, true));
  EXPECT_EQ(read("empty-copy"), "");
  struct stat status;
  ASSERT_EQ(stat(at("empty-copy").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  if (asRoot) {
    EXPECT_EQ(std::make_pair(status.st_uid, status.st_gid), std::make_pair(1234u, 5678u));
  }
  EXPECT_FALSE(fs.copy("x", "absent", true, true));
  EXPECT_FALSE(fs.copy("no/dir/x", "big", true, true));

  scratch.write("written", "old");
  link(at("big"), "source-link");
  link(at("written"), "destination-link");
  EXPECT_TRUE(fs.copy("destination-link", "source-link", true, true));
  EXPECT_EQ(read("written"), big);
}

TEST_F(FileSystemTest, CopyWithoutOverwriteAlwaysLooksUnderTheRoot) {
  scratch.write("source", "new");
  scratch.write("taken", "old");
  EXPECT_FALSE(fs.copy("taken", "source", false, true));
  EXPECT_EQ(read("taken"), "old");
  // Not under the root, the destination is "/" + path, but the test still looks under root.
  EXPECT_FALSE(fs.copy("taken", top + "/source", false, false));
  EXPECT_TRUE(fs.copy(top + "/taken", top + "/source", false, false));
  EXPECT_EQ(read("taken"), "new");
}

TEST_F(FileSystemTest, MakeDirAndMakePathAlsoUnderARootWithATrailingSlash) {
  EXPECT_TRUE(fs.makeDir("one", true));
  EXPECT_FALSE(fs.makeDir("one", true));
  EXPECT_FALSE(fs.makeDir("no/parent", true));
  EXPECT_TRUE(fs.makePath("/a/b/c/", true));
  EXPECT_TRUE(isDirectory("a/b/c"));
  EXPECT_TRUE(fs.makePath("a/b/c", true));
  EXPECT_TRUE(fs.makePath(top + "/x/y", false));
  EXPECT_TRUE(isDirectory("x/y"));

  fs.setRoot(scratch.path() + "/");
  EXPECT_TRUE(fs.makeDir("var", true));
  EXPECT_TRUE(fs.exists("/var", true));
  EXPECT_TRUE(isDirectory("var"));
}

TEST(FileSystemNamesTest, BaseNameAndStripExtension) {
  const std::pair<const char*, const char*> bases[] = {
      {"/mnt/foo-1.2-i486-1.tgz", "foo-1.2-i486-1.tgz"},
      {"foo.tgz", "foo.tgz"},
      {"dir/", ""},
      {"/", ""},
      {"", ""},
      {"a//b", "b"}};
  for (const auto& row : bases) EXPECT_EQ(FileSystem::baseName(row.first), row.second) << row.first;
  const std::pair<const char*, const char*> stripped[] = {{"foo-1.2-i486-1.tgz", "foo-1.2-i486-1"},
                                                          {"plain", ""},
                                                          {".hidden", ""},
                                                          {"ends.", "ends"},
                                                          {"a", ""},
                                                          {"", ""},
                                                          {"..", "."},
                                                          {"dir.d/file", "dir"}};
  for (const auto& row : stripped) {
    EXPECT_EQ(FileSystem::stripExtension(row.first), row.second) << row.first;
  }
}

}  // namespace
