#include "messages.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "lang.h"
#include "scratch.h"

namespace {

const std::string ESC = "\033";
typedef std::pair<std::string, std::string> Output;  // standard error, standard output

// What print() wrote on standard error and on standard output.
Output outputOf(const std::function<void()>& print) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  print();
  const std::string out = testing::internal::GetCapturedStdout();
  return {testing::internal::GetCapturedStderr(), out};
}

struct PrintCase {
  std::function<void()> print;
  std::string err, out;
};

// Loads a language whose sentences name their key and arguments, and puts the process-wide
// colour state back after each test.
class MessagesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Lang::instance().load(
        scratch.write("test.lang",
                      "ErrorNotRoot=ErrorNotRoot\n"
                      "ErrorFileDoNotExist=ErrorFileDoNotExist [ARG]\n"
                      "ErrorDepsNotMet=ErrorDepsNotMet\n"
                      "WarningDirectoryContainsNewFiles=WarningDirectoryContainsNewFiles [ARG]\n"
                      "MessageRemovingFiles=MessageRemovingFiles\n"
                      "MessageDeletingFile=MessageDeletingFile [ARG]\n"
                      "MessageUpgrading=MessageUpgrading [ARG] [ARG]\n"
                      "MessagePackageDescription=MessagePackageDescription\n"
                      "HelpRemovezet=HelpRemovezet\\\n[ARG]\n")));
  }
  void TearDown() override {
    colorsEnabled = saved.enabled;
    errorColor = saved.error;
    warningColor = saved.warning;
    messageColor = saved.message;
    DebugLog::instance().enabled = false;
  }
  void colorsOn() {
    setColors(1, 14, 3);
    colorsEnabled = true;
  }
  void check(const std::vector<PrintCase>& cases) {
    for (size_t i = 0; i < cases.size(); ++i) {
      EXPECT_EQ(outputOf(cases[i].print), Output(cases[i].err, cases[i].out)) << "row " << i;
    }
  }

  ScratchFolder scratch;
  const struct {
    bool enabled;
    std::string error, warning, message;
  } saved = {colorsEnabled, errorColor, warningColor, messageColor};
};

TEST_F(MessagesTest, ExactLinesAndFixedComplaints) {
  const std::string deps = "This Error message should not be here, maybe you forgot about arg";
  check({
      {[] { printError("plain"); }, "ERROR: plain\n", ""},
      {[] { printError(ErrorNotRoot); }, "ERROR: ErrorNotRoot\n", ""},
      {[] { printError(ErrorFileDoNotExist, "/p"); }, "ERROR: ErrorFileDoNotExist /p\n", ""},
      {[] { printError(ErrorFileDoNotExist); }, "This Error message should not be here\n", ""},
      {[] { printError(ErrorDepsNotMet, "x"); }, deps + " ?\n", ""},
      {[] { printError(ErrorFileDoNotExist, "a", "b"); }, deps + "1 or arg2 ?\n", ""},
      {[] { printError(ErrorType(18)); }, "This Error message should not be here\n", ""},
      {[] { printError(ErrorUnknownGzip); }, "ERROR: \n",
       "Lang::get(): sentence 'ErrorUnknownGzip' not found in lang file\n"},
      {[] { printWarning("w"); }, "WARNING: w\n", ""},
      {[] { printWarning(WarningDirectoryContainsNewFiles, "/d"); },
       "WARNING: WarningDirectoryContainsNewFiles /d\n", ""},
      {[] { printWarning(WarningDirectoryContainsNewFiles); },
       "This Warning message should not be here\n", ""},
      {[] { printWarning(WarningType(6), "x"); },
       "This Warning message should not be here, maybe you forgot about arg.\n", ""},
      {[] { printWarning(WarningFileChanged, "a", "b"); }, "", ""},
      {[] { printMessage("/root/link"); }, "", "/root/link\n"},
      {[] { printMessage(MessageRemovingFiles); }, "", "MessageRemovingFiles\n"},
      {[] { printMessage(MessageDeletingFile, "f"); }, "", "MessageDeletingFile f\n"},
      {[] { printMessage(MessageUpgrading, "a", "b"); }, "", "MessageUpgrading a b\n"},
      {[] { printMessage(MessageDeletingFile); }, "", "This Message should not be here\n"},
      {[] { printMessage(MessageUpgrading, "x"); }, "",
       "This Message should not be here, maybe you forgot about arg.\n"},
      {[] { printMessage(MessageDeletingFile, "a", "b"); }, "",
       "This Message should not be here, maybe you forgot about arg1 or arg2.\n"},
      {[] { printHelp(HelpRemovezet, "1.0rc1"); }, "", "HelpRemovezet\n1.0rc1\n"},
      {[] { printHelp(HelpType(4), "1.0rc1"); }, "", ""},
  });
}

TEST_F(MessagesTest, ColourFramesTheLineAndTheResetFollowsTheLineEnd) {
  colorsOn();
  check({
      {[] { printError(ErrorNotRoot); }, ESC + "[1;31mERROR: ErrorNotRoot\n" + ESC + "[1;0m", ""},
      {[] { printWarning(WarningDirectoryContainsNewFiles, "/d"); },
       ESC + "[1;33mWARNING: WarningDirectoryContainsNewFiles /d\n" + ESC + "[1;0m", ""},
      {[] { printMessage(MessageUpgrading, "x"); }, "",
       ESC + "[1;32mThis Message should not be here, maybe you forgot about arg.\n" + ESC +
           "[1;0m"},
      {[] { printWarning(WarningFileChanged, "a", "b"); }, ESC + "[1;33m" + ESC + "[1;0m", ""},
      {[] { printHelp(HelpType(4), "v"); }, "", ESC + "[1;32m" + ESC + "[1;0m"},
      {[] { printDescription(TextVector()); }, "",
       ESC + "[1;32m" + ESC + "[1;32mMessagePackageDescription\n\n" + ESC + "[1;0m" + ESC +
           "[1;0m"},
  });
}

TEST_F(MessagesTest, DescriptionHasItsHeadingAndATrailingEmptyLineAndNoColourIsNoEscape) {
  TextVector lines;
  lines.push_back("foo: a package");
  lines.push_back("");
  check({{[&] { printDescription(lines); }, "", "MessagePackageDescription\nfoo: a package\n\n\n"},
         {[] { printDescription(TextVector()); }, "", "MessagePackageDescription\n\n"}});
  setColors(1, 14, 15);
  colorsEnabled = false;
  const Output output = outputOf([] {
    printError(ErrorNotRoot);
    printWarning(WarningFileChanged, "a", "b");
    printMessage(MessageRemovingFiles);
    printHelp(HelpRemovezet, "v");
    printDescription(TextVector());
  });
  EXPECT_EQ((output.first + output.second).find(ESC), std::string::npos);
}

TEST_F(MessagesTest, SetColorsReplacesOnlyIndexesBelowSixteen) {
  setColors(2, 4, 6);
  setColors(16, 16, 16);
  EXPECT_EQ(errorColor + warningColor + messageColor,
            ESC + "[0;31m" + ESC + "[0;34m" + ESC + "[0;36m");
  setColors(16, 0, 100);
  EXPECT_EQ(errorColor + warningColor + messageColor,
            ESC + "[0;31m" + ESC + "[1;37m" + ESC + "[0;36m");
  EXPECT_EQ(colorEscape(0), ESC + "[1;37m");
  EXPECT_EQ(colorEscape(10), ESC + "[1;30m");
  EXPECT_EQ(colorEscape(15), resetColor);
  EXPECT_EQ(resetColor, ESC + "[1;0m");
  EXPECT_EQ(colorEscape(16), "");
}

TEST_F(MessagesTest, DebugLogWritesOnlyWhileEnabled) {
  EXPECT_EQ(outputOf([] { DebugLog::instance() << "hidden " << 1L << std::string("!"); }),
            Output());
  DebugLog::instance().enabled = true;
  EXPECT_EQ(outputOf([] { DebugLog::instance() << "shown " << -42L << std::string("!"); }),
            Output("", "shown -42!"));
}

}  // namespace
