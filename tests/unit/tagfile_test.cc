#include "tagfile.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace {

// Writes a tag file into a scratch folder and loads it into a fresh table.
class TagFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zet-tagfile-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    path = dir + "/tagfile";
  }
  void TearDown() override {
    unlink(path.c_str());
    rmdir(dir.c_str());
  }
  bool load(const std::string& content) {
    std::ofstream(path) << content;
    return tags.load(path.c_str());
  }

  std::string dir;
  std::string path;
  TagFile tags;
};

TEST_F(TagFileTest, ReadsTheFourTagsAndAnswersTagNoneForOthers) {
  ASSERT_TRUE(load("a: ADD\nb: OPT\nc: SKP\nd: REC\n"));
  EXPECT_EQ(tags.priority("a"), TagAdd);
  EXPECT_EQ(tags.priority("b"), TagOpt);
  EXPECT_EQ(tags.priority("c"), TagSkip);
  EXPECT_EQ(tags.priority("d"), TagRec);
  EXPECT_EQ(tags.priority("e"), TagNone);
  EXPECT_FALSE(tags.contains("e"));
}

TEST_F(TagFileTest, PassesOverLinesThatDoNotFit) {
  ASSERT_TRUE(
      load("tab:\tADD\n"         // a tab is no separator
           "nocolon ADD\n"       // name without its colon
           "lower: add\n"        // tags are capitals
           "three: ADD extra\n"  // a third token
           "# comment: ADD\n"    // three tokens too
           "   lead:  SKP\n"     // leading and doubled blanks are fine
           "a:b: OPT\n"          // all but the last colon stay in the name
           ": REC\n"));          // the empty name is accepted
  EXPECT_FALSE(tags.contains("tab"));
  EXPECT_FALSE(tags.contains("nocolon"));
  EXPECT_FALSE(tags.contains("lower"));
  EXPECT_FALSE(tags.contains("three"));
  EXPECT_EQ(tags.priority("lead"), TagSkip);
  EXPECT_EQ(tags.priority("a:b"), TagOpt);
  EXPECT_EQ(tags.priority(""), TagRec);
}

TEST_F(TagFileTest, TheLastValidLineForANameWins) {
  ASSERT_TRUE(load("foo: ADD\nfoo: SKP\nfoo: bad\n"));
  EXPECT_EQ(tags.priority("foo"), TagSkip);
}

TEST_F(TagFileTest, EmptyFileLoadsAndMissingFileKeepsTheTable) {
  ASSERT_TRUE(load(""));
  ASSERT_TRUE(load("kept: ADD\n"));
  EXPECT_FALSE(tags.load((dir + "/missing").c_str()));
  EXPECT_EQ(tags.priority("kept"), TagAdd);
}

}  // namespace
