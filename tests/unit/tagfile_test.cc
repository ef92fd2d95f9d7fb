#include "tagfile.h"

#include "scratch.h"

using TagFileTest = Scratch;

TEST_F(TagFileTest, OnlyNameColonAndOneOfTheFourTagsCount) {
  TagFile tags;
  EXPECT_TRUE(tags.load(write("t", "").c_str()));
  EXPECT_TRUE(
      tags.load(write("t",
                      "a: ADD\nb:  OPT\n  c: SKP\nd: REC\ne:\tADD\nf ADD\ng: add\nh: ADD x\n"
                      "i:j: OPT\n: SKP\na: SKP\n# k: ADD\n")
                    .c_str()));
  EXPECT_FALSE(tags.load((root + "/none").c_str()));
  const struct {
    const char* name;
    int tag;
  } rows[] = {{"a", TagSkip},  {"b", TagOpt},  {"c", TagSkip}, {"d", TagRec},
              {"e", TagNone},  {"f", TagNone}, {"g", TagNone}, {"h", TagNone},
              {"i:j", TagOpt}, {"", TagSkip},  {"k", TagNone}, {"a:", TagNone}};
  for (const auto& row : rows) {
    EXPECT_EQ(tags.priority(row.name), row.tag) << row.name;
    EXPECT_EQ(tags.contains(row.name), row.tag != TagNone) << row.name;
  }
  tags.clear();
  EXPECT_FALSE(tags.contains("a"));
}
