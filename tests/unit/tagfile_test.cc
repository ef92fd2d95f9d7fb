#include "tagfile.h"

#include "scratch.h"

using TagFileTest = Scratch;

// The runs tell ADD and SKP apart; OPT and REC, which both ask, only here.
TEST_F(TagFileTest, OptAndRecCountAndAMissingFileIsNone) {
  TagFile tags;
  EXPECT_FALSE(tags.load((root + "/none").c_str()));
  EXPECT_TRUE(tags.load(write("t", "b: OPT\nd: REC\n").c_str()));
  EXPECT_EQ(tags.priority("b"), TagOpt);
  EXPECT_EQ(tags.priority("d"), TagRec);
}
