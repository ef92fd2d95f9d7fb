#include "filesystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Points the installation root at a fresh scratch folder and puts "/" back afterwards.
class FileSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zet-filesystem-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    root = pattern;
    fs.setRoot(root);
    ASSERT_NE(getcwd(oldCwd, sizeof oldCwd), nullptr);
  }
  void TearDown() override {
    ASSERT_EQ(chdir(oldCwd), 0);
    fs.setRoot("/");
    std::filesystem::remove_all(root);
  }

  std::string at(const std::string& relative) const { return root + "/" + relative; }
  void writeFile(const std::string& relative, const std::string& bytes) {
    std::ofstream(at(relative), std::ios::binary) << bytes;
  }
  std::string readFile(const std::string& relative) {
    std::ifstream in(at(relative), std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
  }
  void makeDirs(const std::string& relative) { std::filesystem::create_directories(at(relative)); }
  void link(const std::string& target, const std::string& relative) {
    ASSERT_EQ(symlink(target.c_str(), at(relative).c_str()), 0);
  }
  bool present(const std::string& relative) const {
    return std::filesystem::symlink_status(at(relative)).type() !=
           std::filesystem::file_type::not_found;
  }
  std::vector<std::string> listed() {
    std::vector<std::string> names;
    for (unsigned i = 0; i < fs.entries().size(); ++i) names.push_back(fs.entries()[i]);
    std::sort(names.begin(), names.end());
    return names;
  }

  FileSystem& fs = FileSystem::instance();
  std::string root;
  char oldCwd[4096];
};

TEST_F(FileSystemTest, ExistsOpensForReading) {
  makeDirs("dir");
  writeFile("file", "x");
  link("nowhere", "dangling");
  EXPECT_TRUE(fs.exists("dir", true));
  EXPECT_TRUE(fs.exists("/file", true));
  EXPECT_FALSE(fs.exists("dangling", true));
  EXPECT_FALSE(fs.exists("absent", true));
  EXPECT_TRUE(fs.exists(at("file"), false));
}

TEST_F(FileSystemTest, RelativePathsWithoutRootFollowTwoRules) {
  makeDirs("work");
  ASSERT_EQ(chdir(at("work").c_str()), 0);
  writeFile("work/here", "x");
  EXPECT_TRUE(fs.exists("here", false));
  // makeDir, makePath and copy put "/" in front, so the same relative path means the top.
  const std::string fromTop = root.substr(1) + "/work";
  EXPECT_TRUE(fs.makeDir(fromTop + "/made", false));
  EXPECT_TRUE(std::filesystem::is_directory(at("work/made")));
  EXPECT_TRUE(fs.copy(fromTop + "/copied", fromTop + "/here", true, false));
  EXPECT_EQ(readFile("work/copied"), "x");
  EXPECT_EQ(fs.remove("here", false), 0);
  EXPECT_FALSE(present("work/here"));
}

TEST_F(FileSystemTest, ARootWithATrailingSlashStillWorks) {
  fs.setRoot(root + "/");
  EXPECT_TRUE(fs.makeDir("var", true));
  EXPECT_TRUE(fs.exists("/var", true));
  EXPECT_EQ(fs.getRoot(), root + "/");
}

TEST_F(FileSystemTest, RemoveTakesDirectoriesAndFilesButNotLinksToDirectories) {
  makeDirs("dir");
  makeDirs("full/inside");
  writeFile("file", "x");
  link(at("dir"), "dirlink");
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

TEST_F(FileSystemTest, ListReadsEveryNameAndKeepsTheOldListOnFailure) {
  makeDirs("dir/sub");
  writeFile("dir/.hidden", "");
  ASSERT_TRUE(fs.list("dir", true));
  const std::vector<std::string> expected = {".", "..", ".hidden", "sub"};
  EXPECT_EQ(listed(), expected);
  EXPECT_FALSE(fs.list("absent", true));
  EXPECT_FALSE(fs.list("dir/.hidden", true));
  EXPECT_EQ(listed(), expected);
}

TEST_F(FileSystemTest, RemoveTreeGoesThroughLinksAndSparesTheLinksThemselves) {
  makeDirs("tree/a/b");
  makeDirs("elsewhere/deep");
  writeFile("tree/.hidden", "");
  writeFile("tree/a/b/file", "x");
  writeFile("elsewhere/deep/victim", "x");
  writeFile("target", "x");
  link(at("elsewhere"), "tree/a/dirlink");
  link(at("target"), "tree/filelink");
  link("nowhere", "tree/dangling");

  fs.removeTree("tree/a", true);
  // The link to a directory cannot be removed, so its parent stays with it.
  EXPECT_TRUE(present("tree/a/dirlink"));
  EXPECT_FALSE(present("tree/a/b"));
  EXPECT_TRUE(present("elsewhere"));
  EXPECT_FALSE(present("elsewhere/deep"));

  std::filesystem::remove(at("tree/a/dirlink"));
  fs.removeTree(at("tree"), false);
  EXPECT_FALSE(present("tree"));
  EXPECT_TRUE(present("target"));
  fs.removeTree("absent", true);
}

TEST_F(FileSystemTest, CopyCarriesContentModeAndOwner) {
  std::string big(25000, '\0');
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7);
  writeFile("big", big);
  writeFile("empty", "");
  ASSERT_EQ(chmod(at("empty").c_str(), 0640), 0);
  const bool asRoot = geteuid() == 0;
  if (asRoot) {
    ASSERT_EQ(chown(at("empty").c_str(), 1234, 5678), 0);
  }

  EXPECT_TRUE(fs.copy("big-copy", "big", true, true));
  EXPECT_EQ(readFile("big-copy"), big);
  EXPECT_TRUE(fs.copy("empty-copy", "empty", true, true));
  EXPECT_EQ(readFile("empty-copy"), "");
  struct stat status;
  ASSERT_EQ(stat(at("empty-copy").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  if (asRoot) {
    EXPECT_EQ(status.st_uid, 1234u);
    EXPECT_EQ(status.st_gid, 5678u);
  }
  EXPECT_FALSE(fs.copy("x", "absent", true, true));
  EXPECT_FALSE(fs.copy("no/dir/x", "big", true, true));
}

TEST_F(FileSystemTest, CopyFollowsLinksAtBothEnds) {
  writeFile("real", "content");
  writeFile("written", "old");
  link(at("real"), "source-link");
  link(at("written"), "destination-link");
  EXPECT_TRUE(fs.copy("destination-link", "source-link", true, true));
  EXPECT_EQ(readFile("written"), "content");
}

TEST_F(FileSystemTest, CopyWithoutOverwriteAlwaysLooksUnderTheRoot) {
  writeFile("source", "new");
  writeFile("taken", "old");
  EXPECT_FALSE(fs.copy("taken", "source", false, true));
  EXPECT_EQ(readFile("taken"), "old");

  // Not under the root, the destination is "/" + path, but the test still looks under root.
  const std::string top = root.substr(1);
  EXPECT_FALSE(fs.copy("taken", top + "/source", false, false));
  EXPECT_TRUE(fs.copy(top + "/taken", top + "/source", false, false));
  EXPECT_EQ(readFile("taken"), "new");
}

TEST_F(FileSystemTest, MakeDirAndMakePath) {
  EXPECT_TRUE(fs.makeDir("one", true));
  EXPECT_FALSE(fs.makeDir("one", true));
  EXPECT_FALSE(fs.makeDir("no/parent", true));

  EXPECT_TRUE(fs.makePath("/a/b/c/", true));
  EXPECT_TRUE(std::filesystem::is_directory(at("a/b/c")));
  EXPECT_TRUE(fs.makePath("a/b/c", true));
  EXPECT_TRUE(fs.makePath(root.substr(1) + "/x/y", false));
  EXPECT_TRUE(std::filesystem::is_directory(at("x/y")));
}

TEST(FileSystemNamesTest, BaseName) {
  const struct {
    const char* path;
    const char* base;
  } rows[] = {
      {"/mnt/foo-1.2-i486-1.tgz", "foo-1.2-i486-1.tgz"},
      {"foo.tgz", "foo.tgz"},
      {"dir/", ""},
      {"/", ""},
      {"", ""},
      {"a//b", "b"},
  };
  for (const auto& row : rows) EXPECT_EQ(FileSystem::baseName(row.path), row.base) << row.path;
}

TEST(FileSystemNamesTest, StripExtension) {
  const struct {
    const char* name;
    const char* stripped;
  } rows[] = {
      {"foo-1.2-i486-1.tgz", "foo-1.2-i486-1"},
      {"plain", ""},
      {".hidden", ""},
      {"ends.", "ends"},
      {"a", ""},
      {"", ""},
      {"..", "."},
      {"dir.d/file", "dir"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FileSystem::stripExtension(row.name), row.stripped) << row.name;
  }
}

}  // namespace
