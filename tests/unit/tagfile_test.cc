#include "tagfile.h"

#include <gtest/gtest.h>

#include <string>

#include "scratch.h"

namespace {

TEST(TagFileTest, ReadsTheFourTagsAndPassesOverLinesThatDoNotFit) {
  ScratchFolder scratch;
  TagFile tags;
  const std::string path = scratch.write("tags",
                                         "a: ADD\nb: OPT\nc: SKP\nd: REC\n"
                                         "tab:\tADD\n"         // a tab is no separator
                                         "nocolon ADD\n"       // name without its colon
                                         "lower: add\n"        // tags are capitals
                                         "three: ADD extra\n"  // a third token
                                         "   lead:  SKP\n"     // leading, doubled blanks are fine
                                         "a:b: OPT\n"          // the last colon ends the name
                                         ": REC\n"             // the empty name is accepted
                                         "foo: ADD\nfoo: SKP\nfoo: bad\n");  // last valid wins
  ASSERT_TRUE(tags.load(path.c_str()));
  const std::pair<const char*, int> rows[] = {
      {"a", TagAdd},      {"b", TagOpt},     {"c", TagSkip},    {"d", TagRec},
      {"lead", TagSkip},  {"a:b", TagOpt},   {"", TagRec},      {"foo", TagSkip},
      {"e", TagNone},     {"tab", TagNone},  {"tab:", TagNone}, {"nocolon", TagNone},
      {"lower", TagNone}, {"three", TagNone}};
  for (const auto& row : rows) {
    EXPECT_EQ(tags.priority(row.first), row.second) << row.first;
    EXPECT_EQ(tags.contains(row.first), row.second != TagNone) << row.first;
  }
  ASSERT_TRUE(tags.load(scratch.write("empty", "").c_str()));
  EXPECT_FALSE(tags.load((scratch.path() + "/missing").c_str()));
  EXPECT_EQ(tags.priority("a"), TagAdd);
}

}  // namespace
