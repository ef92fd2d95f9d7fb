#include "args.h"

#include <gtest/gtest.h>

using Words = std::vector<std::string>;

// Parses argv against a table of "root" with a value, then "f" and "i", and "f" again.
bool parse(Args& args, Words argv) {
  for (auto [name, takesValue] :
       {std::pair{"root", true}, {"f", false}, {"i", false}, {"f", true}}) {
    args.addOption(name, takesValue);
  }
  std::vector<char*> words;
  for (std::string& word : argv) words.push_back(word.data());
  return args.parse(static_cast<int>(words.size()), words.data());
}

TEST(Args, ParseTellsOptionsFromOneRunOfWords) {
  const struct {
    Words argv;
    bool ok;
    Words arguments;
    std::string root, program;
  } rows[] = {
      {{"/sbin/installzet"}, true, {}, "", "installzet"},
      {{"dir/"}, true, {}, "", ""},
      {{"zet", "-root", "/mnt", "a", "b", "--f"}, true, {"a", "b"}, "/mnt", "zet"},
      {{"z", "--root", "---x", "---y", "-", "-i", "-root", "-", "-root", "/b"},
       true,
       {"---y", "-"},
       "/b",
       "z"},
      {{"zet", "a", "--root", "/m", "b"}, false, {"a"}, "/m", ""},
      {{"zet", "a", "-f", "b"}, false, {"a"}, "", ""},
      {{"zet", "--root"}, false, {}, "", ""},
      {{"zet", "--root", "-5"}, false, {}, "", ""},
      {{"zet", "--root=/mnt"}, false, {}, "", ""},
      {{"zet", "-fi"}, false, {}, "", ""},
      {{"zet", "x", "--"}, false, {"x"}, "", ""},
      {{"zet", "---"}, false, {}, "", ""},
  };
  for (const auto& row : rows) {
    Args args;
    EXPECT_EQ(parse(args, row.argv), row.ok) << row.argv.back();
    EXPECT_EQ(args.getValue("root"), row.root) << row.argv.back();
    EXPECT_EQ(args.getProgramName(), row.program) << row.argv.back();
    EXPECT_EQ(args.getArguments(), row.arguments) << row.argv.back();
  }
}

TEST(Args, TheTableAnswersWhatWasGivenAndWhatIsAllowed) {
  Args args;
  parse(args, {"zet", "-f", "w1", "w2", "w3"});
  EXPECT_TRUE(args.optionExists("f", true));
  EXPECT_TRUE(args.optionExists("i", false));
  EXPECT_FALSE(args.optionExists("i", true));
  EXPECT_FALSE(args.optionExists("x", false));
  EXPECT_FALSE(args.getOption("f").takesValue);
  EXPECT_TRUE(args.onlyAllowed({"i", "f"}));
  EXPECT_FALSE(args.onlyAllowed({"i", "root"}));
  args.removeArgument(3);
  args.removeArgument(1);
  EXPECT_EQ(args.getArguments(), (Words{"w1", "w3"}));
  EXPECT_EQ(Args::optionName("--ab"), "ab");
  EXPECT_EQ(Args::optionName("-c"), "c");
  EXPECT_EQ(Args::optionName("d"), "");
  args.clear();
  EXPECT_FALSE(args.optionExists("f", false));
  EXPECT_EQ(args.getProgramName(), "");
  EXPECT_EQ(args.getArguments(), Words{});
}
