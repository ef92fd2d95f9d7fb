#include "filelist.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

using Lines = std::vector<std::string>;

class FileListTest : public ::testing::Test {
 protected:
  void SetUp() override { ZET_REQUIRE_ARCHIVE_TOOLS(); }

  ScratchFolder scratch;
  FileList list;
};

TEST_F(FileListTest, ListsMembersInArchiveOrderAndDropsTheListingFile) {
  const std::string archive = scratch.makePackage(
      "p.tgz", {"usr/", "usr/bin/", "usr/bin/tool=x", "install/", "etc/conf=a=b", "usr/lib->bin"});
  ASSERT_TRUE(list.loadFromArchive(archive.c_str()));
  EXPECT_EQ(linesOf(list),
            (Lines{"usr/", "usr/bin/", "usr/bin/tool", "install/", "etc/conf", "usr/lib"}));
  EXPECT_FALSE(FileSystem::instance().exists(scratch.temp() + "/filelist", false));
}

TEST_F(FileListTest, FailuresLeaveTheListAsItWas) {
  const std::string notAnArchive = scratch.write("plain.tgz", "just text\n");
  const std::string blank = scratch.makePackage("with blank/p.tgz", {"usr/"});
  list.push_back("kept");
  EXPECT_FALSE(list.loadFromArchive(notAnArchive.c_str()));
  // Nothing is quoted, so the tool gets two arguments.
  EXPECT_FALSE(list.loadFromArchive(blank.c_str()));
  EXPECT_FALSE(list.loadFromArchive((scratch.path() + "/missing.tgz").c_str()));
  EXPECT_EQ(linesOf(list), Lines{"kept"});
}

TEST_F(FileListTest, AnEmptyArchiveListsNothing) {
  const std::string archive = scratch.path() + "/empty.tgz";
  ASSERT_EQ(system(("tar -czf " + archive + " -T /dev/null").c_str()), 0);
  list.push_back("old");
  ASSERT_TRUE(list.loadFromArchive(archive.c_str()));
  EXPECT_EQ(list.size(), 0u);
}

TEST(FileListRemoveTest, RemovesFilesAndEmptyDirectoriesInOrderIgnoringFailures) {
  ScratchFolder scratch;
  const std::string file = scratch.write("d/file", "x");
  const std::string keptDir = scratch.makeDirs("kept");
  scratch.write("kept/inside", "y");
  FileList list;
  list.push_back(file.c_str());
  list.push_back((scratch.path() + "/d").c_str());
  list.push_back((scratch.path() + "/missing").c_str());
  list.push_back(keptDir.c_str());
  list.removeFiles();
  EXPECT_FALSE(FileSystem::instance().exists(file, false));
  EXPECT_FALSE(FileSystem::instance().exists(scratch.path() + "/d", false));
  EXPECT_TRUE(FileSystem::instance().exists(keptDir + "/inside", false));
}

}  // namespace
