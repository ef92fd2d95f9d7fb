#include "args.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// "root" takes a value, the others don't.
void declare(Args& args) {
  args.addOption("root", true);
  args.addOption("force", false);
  args.addOption("i", false);
  args.addOption("install", false);
}

bool parseWords(Args& args, std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  return args.parse(static_cast<int>(argv.size()), argv.data());
}

// Runs parse() on a freshly declared table.
class ArgsTest : public ::testing::Test {
 protected:
  void SetUp() override { declare(args); }
  bool parse(const std::vector<std::string>& words) { return parseWords(args, words); }

  Args args;
};

struct ParseCase {
  std::vector<std::string> argv;
  bool accepted;
  std::vector<std::string> arguments;
  std::string root;
};

TEST(ArgsParseTest, OneRowPerCommandLine) {
  const std::vector<ParseCase> cases = {
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
  for (const ParseCase& row : cases) {
    std::string line;
    for (const std::string& word : row.argv) line += word + " ";
    SCOPED_TRACE(line);
    Args fresh;
    declare(fresh);
    EXPECT_EQ(parseWords(fresh, row.argv), row.accepted);
    EXPECT_EQ(fresh.getArguments(), row.arguments);
    EXPECT_EQ(fresh.getOption("root").value, row.root);
  }
}

TEST_F(ArgsTest, ProgramNameIsTheBaseNameOfArgvZero) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"/sbin/installzet", "installzet"}, {"installzet", "installzet"}, {"dir/", ""}};
  for (const auto& row : cases) {
    Args fresh;
    ASSERT_TRUE(parseWords(fresh, {row.first}));
    EXPECT_EQ(fresh.getProgramName(), row.second) << row.first;
  }
}

TEST_F(ArgsTest, RefusalMarksReachedRowsAndLeavesNoProgramName) {
  EXPECT_FALSE(parse({"/sbin/zet", "--force", "--bogus"}));
  EXPECT_TRUE(args.optionExists("force", true));
  EXPECT_EQ(args.getProgramName(), "");
}

TEST_F(ArgsTest, GivenFlagsAndValues) {
  ASSERT_TRUE(parse({"zet", "--force", "-force", "a"}));
  EXPECT_TRUE(args.optionExists("force", true));
  EXPECT_TRUE(args.optionExists("root", false));
  EXPECT_FALSE(args.optionExists("root", true));
  EXPECT_FALSE(args.optionExists("bogus", false));
  EXPECT_FALSE(args.optionExists("forc", false));
  EXPECT_EQ(args.getValue("root"), "");
  EXPECT_EQ(args.getValue("bogus"), "");
}

TEST_F(ArgsTest, ADuplicateNameFindsOnlyTheFirstRow) {
  args.addOption("force", true);
  ASSERT_TRUE(parse({"zet", "--force", "a"}));
  EXPECT_EQ(args.getArguments(), std::vector<std::string>{"a"});
  EXPECT_EQ(args.getOption("force").value, "");
}

TEST_F(ArgsTest, RemoveArgumentKeepsTheOrderAndIgnoresIndexesPastTheEnd) {
  ASSERT_TRUE(parse({"zet", "a", "b", "c"}));
  args.removeArgument(3);
  EXPECT_EQ(args.getArguments(), (std::vector<std::string>{"a", "b", "c"}));
  args.removeArgument(1);
  EXPECT_EQ(args.getArguments(), (std::vector<std::string>{"a", "c"}));
}

TEST_F(ArgsTest, OnlyAllowedLooksAtGivenRowsAlone) {
  ASSERT_TRUE(parse({"zet", "-i", "a"}));
  EXPECT_TRUE(args.onlyAllowed({"i"}));
  EXPECT_FALSE(args.onlyAllowed({"install", "root"}));
  EXPECT_FALSE(args.onlyAllowed({}));
}

TEST(ArgsWordTest, IsOptionAndOptionName) {
  const struct {
    const char* word;
    bool option;
    const char* name;
  } cases[] = {
      {"", false, ""},       {"-", false, ""},    {"--", true, ""},       {"---", true, "-"},
      {"---x", false, "-x"}, {"-x", true, "x"},   {"--x", true, "x"},     {"x", false, ""},
      {"x-", false, ""},     {"-iu", true, "iu"}, {"--a=b", true, "a=b"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Args::isOption(row.word), row.option) << row.word;
    EXPECT_EQ(Args::optionName(row.word), row.name) << row.word;
  }
}

TEST(ArgsDeathTest, GetOptionOfAnUndeclaredNameStops) {
  Args args;
  EXPECT_DEATH(args.getOption("nothing"),
               "Can't find option. Try optionExists\\(\\) before using this function.");
}

}  // namespace
