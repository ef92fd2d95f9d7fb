#include "filelist.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

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

TEST_F(FileListTest, FailuresLeaveTheListAsItWasAndAnEmptyArchiveEmptiesIt) {
  list.push_back("kept");
  EXPECT_FALSE(list.loadFromArchive(scratch.write("plain.tgz", "just text\n").c_str()));
  EXPECT_FALSE(list.loadFromArchive((scratch.path() + "/missing.tgz").c_str()));
  EXPECT_EQ(linesOf(list), Lines{"kept"});
  const std::string empty = scratch.path() + "/empty.tgz";
  ASSERT_EQ(system(("tar -czf " + empty + " -T /dev/null").c_str()), 0);
  ASSERT_TRUE(list.loadFromArchive(empty.c_str()));
  EXPECT_EQ(list.size(), 0u);
}

TEST(FileListRemoveTest, RemovesFilesAndEmptyDirectoriesInOrderIgnoringFailures) {
  ScratchFolder scratch;
  FileList list;
  for (const char* path : {"d/file", "d", "missing", "kept"})
    list.push_back((scratch.path() + "/" + path).c_str());
  scratch.write("d/file", "x");
  scratch.write("kept/inside", "y");
  list.removeFiles();
  EXPECT_FALSE(FileSystem::instance().exists(scratch.path() + "/d", false));
  EXPECT_TRUE(FileSystem::instance().exists(scratch.path() + "/kept/inside", false));
}

}  // namespace
