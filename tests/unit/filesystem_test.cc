#include "filesystem.h"

#include <sys/stat.h>
#include <unistd.h>

#include "filelist.h"
#include "scratch.h"

using FileSystemTest = Scratch;

TEST(FileSystem, ANameWithoutADotStripsToNothing) {
  EXPECT_EQ(FileSystem::stripExtension("name"), "");
}

// exists, list and remove take a path as it stands unless it is under the root; makeDir,
// makePath and copy put "/" in front of it.
TEST_F(FileSystemTest, PathsFollowTheirRule) {
  FileSystem& fs = FileSystem::instance();
  const std::string relative = root.substr(1);
  EXPECT_TRUE(fs.makeDir(relative + "/d", false));
  EXPECT_FALSE(fs.makeDir("d", true));
  EXPECT_TRUE(fs.makePath("/p/q/", true));
  EXPECT_TRUE(fs.makePath("/pp/qq", true));
  EXPECT_TRUE(fs.exists("d", true));
  EXPECT_TRUE(fs.exists(root + "/p/q", false));
  EXPECT_TRUE(fs.exists("pp/qq", true));
  EXPECT_FALSE(fs.exists("pp/q", true));
  EXPECT_FALSE(fs.exists("d", false));
  write("d/f", "data");
  chmod((root + "/d/f").c_str(), 0640);
  symlink("f", (root + "/d/link").c_str());
  write("ext/file", "x");
  symlink((root + "/ext").c_str(), (root + "/p/up").c_str());
  symlink("nowhere", (root + "/dangling").c_str());
  EXPECT_FALSE(fs.exists("dangling", true));
  EXPECT_TRUE(FileSystem::isDirectory(root + "/p/up"));
  EXPECT_FALSE(FileSystem::isDirectory(root + "/d/f"));

  EXPECT_TRUE(fs.copy("d/copy", "d/link", false, true));
  EXPECT_FALSE(fs.copy("d/copy", "d/f", false, true));
  EXPECT_FALSE(fs.copy(relative + "/d/c2", relative + "/none", true, false));
  EXPECT_FALSE(fs.copy("d/copy", relative + "/d/f", false, false));
  EXPECT_FALSE(fs.copy("none/copy", "d/f", true, true));
  EXPECT_EQ(read(root + "/d/copy"), "data");
  struct stat status;
  stat((root + "/d/copy").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  const std::string big(25000, 'b');
  write("big", big);
  EXPECT_TRUE(fs.copy("d/big", "big", true, true));
  EXPECT_EQ(read(root + "/d/big"), big);

  EXPECT_TRUE(fs.list("d", true));
  Lines names = linesOf(fs.entries());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (Lines{".", "..", "big", "copy", "f", "link"}));
  EXPECT_FALSE(fs.list("none", true));
  EXPECT_EQ(fs.entries().size(), 6u);
  EXPECT_EQ(fs.remove(root + "/p/up", false), -1);
  EXPECT_EQ(fs.remove("d/link", true), 0);
  EXPECT_EQ(fs.remove("d/link", true), -1);
  FileList list;
  list.push_back((root + "/d/copy").c_str());
  list.push_back((root + "/none").c_str());
  list.removeFiles();
  EXPECT_FALSE(fs.exists("d/copy", true));
}

TEST_F(FileSystemTest, RemoveTreeNeverFollowsLinksNorTakesARoot) {
  FileSystem& fs = FileSystem::instance();
  struct stat status;
  write("ext/sub/file", "x");
  write("p/q/.hidden", "h");
  write("p/file", "f");
  symlink((root + "/ext").c_str(), (root + "/p/up").c_str());
  symlink((root + "/p/file").c_str(), (root + "/p/to-file").c_str());
  symlink("nowhere", (root + "/p/dangling").c_str());
  fs.removeTree("p", true);
  EXPECT_NE(lstat((root + "/p").c_str(), &status), 0);
  EXPECT_TRUE(fs.exists("ext/sub/file", true));
  symlink((root + "/ext").c_str(), (root + "/top").c_str());
  fs.removeTree(root + "/top", false);
  EXPECT_NE(lstat((root + "/top").c_str(), &status), 0);
  EXPECT_TRUE(fs.exists("ext/sub/file", true));
  fs.removeTree("none", true);
  for (const char* spelling : {"", "/", "//", "/."}) fs.removeTree(spelling, true);
  fs.removeTree(root + "/", false);
  EXPECT_TRUE(fs.exists("ext/sub/file", true));
  EXPECT_TRUE(fs.isProtected("//"));
  EXPECT_TRUE(fs.isProtected("/."));
  EXPECT_TRUE(fs.isProtected(root + "//"));
  EXPECT_FALSE(fs.isProtected(root + "/ext"));
  EXPECT_FALSE(fs.isProtected(root + "/none"));
  fs.removeTree(root + "/ext", false);
  EXPECT_FALSE(fs.exists("ext", true));
  fs.setRoot(root + "/none");
  EXPECT_TRUE(fs.isProtected("/"));
}
