#include "linklines.h"

#include <gtest/gtest.h>

// A link is usable when the shell takes its words as they stand and both of its lines, the
// longer one being "( cd DIR ; ln -sf TARGET NAME )", fit the 1022 characters of a line.
TEST(LinkLines, UsableOnlyWithPlainWordsAndLinesThatComeBackWhole) {
  const std::string d1002(1002, 'd'), t1003(1003, 't');
  const struct {
    std::string path;
    std::string target;
    bool usable;
  } rows[] = {
      {"usr/lib/libfoo.so", "libfoo.so.1", true},
      {"top", "usr/bin/tool", true},
      {"a/-x", "y", false},
      {"a/x", "-y", false},
      {"a/x", "b c", false},
      {d1002 + "/n", "t", true},
      {d1002 + "d/n", "t", false},
      {"a/n", t1003.substr(1), true},
      {"a/n", t1003, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(LinkLines::usable(row.path, row.target), row.usable) << row.path.substr(0, 20);
  }
  EXPECT_EQ(LinkLines::of("top", "usr/bin/tool"),
            "( cd . ; rm -rf top )\n( cd . ; ln -sf usr/bin/tool top )\n");
}
