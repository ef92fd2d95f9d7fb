#include "args.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Words;

// "root" takes a value, the others don't.
struct Declared : Args {
  Declared() {
    addOption("root", true);
    addOption("force", false);
    addOption("i", false);
    addOption("install", false);
  }
  bool parse(Words words) {
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(&word[0]);
    return Args::parse(static_cast<int>(argv.size()), argv.data());
  }
};

TEST(ArgsTest, OneRowPerCommandLine) {
  const struct {
    Words argv;
    bool accepted;
    Words arguments;
    std::string root;
  } cases[] = {
      {{"zet"}, true, {}, ""},
      {{"zet", "-root", "/mnt"}, true, {}, "/mnt"},
      {{"zet", "--root", "/mnt"}, true, {}, "/mnt"},
      {{"zet", "--root=/mnt"}, false, {}, ""},
      {{"zet", "--root"}, false, {}, ""},
      {{"zet", "--root", "--force"}, false, {}, ""},
      {{"zet", "--root", "-5"}, false, {}, ""},
      {{"zet", "--root", "---x"}, true, {}, "---x"},
      {{"zet", "--root", "-"}, true, {}, "-"},
      {{"zet", "---x"}, true, {"---x"}, ""},
      {{"zet", "-"}, true, {"-"}, ""},
      {{"zet", "", "x-"}, true, {"", "x-"}, ""},
      {{"zet", "--"}, false, {}, ""},
      {{"zet", "---"}, false, {}, ""},
      {{"zet", "-iu"}, false, {}, ""},
      {{"zet", "--bogus"}, false, {}, ""},
      {{"zet", "a", "b", "--force"}, true, {"a", "b"}, ""},
      {{"zet", "--force", "a", "b"}, true, {"a", "b"}, ""},
      {{"zet", "a", "--force", "b"}, false, {"a"}, ""},
      {{"zet", "a", "--root", "/mnt"}, true, {"a"}, "/mnt"},
      {{"zet", "a", "--root", "/mnt", "b"}, false, {"a"}, "/mnt"},
      {{"zet", "--root", "/a", "x", "--root", "/b"}, true, {"x"}, "/b"},
  };
  for (const auto& row : cases) {
    std::string line;
    for (const std::string& word : row.argv) line += word + " ";
    SCOPED_TRACE(line);
    Declared args;
    EXPECT_EQ(args.parse(row.argv), row.accepted);
    EXPECT_EQ(args.getArguments(), row.arguments);
    EXPECT_EQ(args.getOption("root").value, row.root);
    EXPECT_EQ(args.getProgramName(), row.accepted ? "zet" : "");
  }
}

TEST(ArgsTest, ProgramNameIsTheBaseNameOfArgvZero) {
  for (const auto& row : std::vector<std::pair<std::string, std::string>>{
           {"/sbin/installzet", "installzet"}, {"installzet", "installzet"}, {"dir/", ""}}) {
    Declared args;
    ASSERT_TRUE(args.parse({row.first}));
    EXPECT_EQ(args.getProgramName(), row.second) << row.first;
  }
  Declared refused;
  EXPECT_FALSE(refused.parse({"/sbin/zet", "--force", "--bogus"}));
  EXPECT_TRUE(refused.optionExists("force", true));
  EXPECT_EQ(refused.getProgramName(), "");
}

TEST(ArgsTest, QueriesAfterAParse) {
  Declared args;
  ASSERT_TRUE(args.parse({"zet", "-i", "--force", "-force", "a", "b", "c"}));
  EXPECT_TRUE(args.optionExists("force", true));
  EXPECT_TRUE(args.optionExists("root", false));
  EXPECT_FALSE(args.optionExists("root", true));
  EXPECT_FALSE(args.optionExists("bogus", false));
  EXPECT_FALSE(args.optionExists("forc", false));
  EXPECT_EQ(args.getValue("root"), "");
  EXPECT_EQ(args.getValue("bogus"), "");
  // Only given rows count, and names match whole.
  EXPECT_TRUE(args.onlyAllowed({"i", "force"}));
  EXPECT_FALSE(args.onlyAllowed({"install", "force", "root"}));
  EXPECT_FALSE(args.onlyAllowed({}));
  args.removeArgument(3);
  EXPECT_EQ(args.getArguments(), (Words{"a", "b", "c"}));
  args.removeArgument(1);
  EXPECT_EQ(args.getArguments(), (Words{"a", "c"}));

  Declared duplicate;  // only the first row of a name is ever found
  duplicate.addOption("force", true);
  ASSERT_TRUE(duplicate.parse({"zet", "--force", "a"}));
  EXPECT_EQ(duplicate.getArguments(), Words{"a"});
}

TEST(ArgsDeathTest, GetOptionOfAnUndeclaredNameStops) {
  Args args;
  EXPECT_DEATH(args.getOption("nothing"),
               "Can't find option. Try optionExists\\(\\) before using this function.");
}

}  // namespace
