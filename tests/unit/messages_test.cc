#include "messages.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>

#include "lang.h"

namespace {

const std::string ESC = "\033";

// Loads a language whose sentences name their key and arguments, and puts the process-wide
// colour state back after each test.
class MessagesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    saved = {colorsEnabled, errorColor, warningColor, messageColor};
    char pattern[] = "/tmp/zet-messages-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    path = dir + "/test.lang";
    std::ofstream(path)
        << "ErrorNotRoot=ErrorNotRoot\n"
           "ErrorFileDoNotExist=ErrorFileDoNotExist [ARG]\n"
           "ErrorDepsNotMet=ErrorDepsNotMet\n"
           "WarningDirectoryContainsNewFiles=WarningDirectoryContainsNewFiles [ARG]\n"
           "MessageRemovingFiles=MessageRemovingFiles\n"
           "MessageDeletingFile=MessageDeletingFile [ARG]\n"
           "MessageUpgrading=MessageUpgrading [ARG] [ARG]\n"
           "MessagePackageDescription=MessagePackageDescription\n"
           "HelpRemovezet=HelpRemovezet\\\n[ARG]\n";
    ASSERT_TRUE(Lang::instance().load(path));
  }
  void TearDown() override {
    colorsEnabled = saved.enabled;
    errorColor = saved.error;
    warningColor = saved.warning;
    messageColor = saved.message;
    DebugLog::instance().enabled = false;
    unlink(path.c_str());
    rmdir(dir.c_str());
  }
  void colorsOn() {
    setColors(1, 14, 3);
    colorsEnabled = true;
  }
  static std::string stdoutOf(const std::function<void()>& print) {
    testing::internal::CaptureStdout();
    print();
    return testing::internal::GetCapturedStdout();
  }
  static std::string stderrOf(const std::function<void()>& print) {
    testing::internal::CaptureStderr();
    print();
    return testing::internal::GetCapturedStderr();
  }

  struct {
    bool enabled;
    std::string error, warning, message;
  } saved;
  std::string dir;
  std::string path;
};

struct PrintCase {
  const char* name;
  std::function<void()> print;
  std::string output;
};

TEST_F(MessagesTest, ErrorsAndWarningsOnStandardError) {
  const PrintCase cases[] = {
      {"text", [] { printError("plain"); }, "ERROR: plain\n"},
      {"no arg", [] { printError(ErrorNotRoot); }, "ERROR: ErrorNotRoot\n"},
      {"one arg", [] { printError(ErrorFileDoNotExist, "/p"); }, "ERROR: ErrorFileDoNotExist /p\n"},
      {"arg missing", [] { printError(ErrorFileDoNotExist); },
       "This Error message should not be here\n"},
      {"arg too many", [] { printError(ErrorDepsNotMet, "x"); },
       "This Error message should not be here, maybe you forgot about arg ?\n"},
      {"two args", [] { printError(ErrorFileDoNotExist, "a", "b"); },
       "This Error message should not be here, maybe you forgot about arg1 or arg2 ?\n"},
      {"outside", [] { printError(static_cast<ErrorType>(18)); },
       "This Error message should not be here\n"},
      {"warning text", [] { printWarning("w"); }, "WARNING: w\n"},
      {"warning", [] { printWarning(WarningDirectoryContainsNewFiles, "/d"); },
       "WARNING: WarningDirectoryContainsNewFiles /d\n"},
      {"warning no arg", [] { printWarning(WarningDirectoryContainsNewFiles); },
       "This Warning message should not be here\n"},
      {"warning outside", [] { printWarning(static_cast<WarningType>(6), "x"); },
       "This Warning message should not be here, maybe you forgot about arg.\n"},
      {"warning two args", [] { printWarning(WarningFileChanged, "a", "b"); }, ""},
  };
  for (const PrintCase& row : cases) {
    EXPECT_EQ(stdoutOf([&] { EXPECT_EQ(stderrOf(row.print), row.output) << row.name; }), "");
  }
}

TEST_F(MessagesTest, MessagesAndHelpOnStandardOutput) {
  const PrintCase cases[] = {
      {"text", [] { printMessage("/root/link"); }, "/root/link\n"},
      {"no arg", [] { printMessage(MessageRemovingFiles); }, "MessageRemovingFiles\n"},
      {"one arg", [] { printMessage(MessageDeletingFile, "f"); }, "MessageDeletingFile f\n"},
      {"two args", [] { printMessage(MessageUpgrading, "a", "b"); }, "MessageUpgrading a b\n"},
      {"arg missing", [] { printMessage(MessageDeletingFile); },
       "This Message should not be here\n"},
      {"one short", [] { printMessage(MessageUpgrading, "x"); },
       "This Message should not be here, maybe you forgot about arg.\n"},
      {"one over", [] { printMessage(MessageDeletingFile, "a", "b"); },
       "This Message should not be here, maybe you forgot about arg1 or arg2.\n"},
      {"help", [] { printHelp(HelpRemovezet, "1.0rc1"); }, "HelpRemovezet\n1.0rc1\n"},
      {"help outside", [] { printHelp(static_cast<HelpType>(4), "1.0rc1"); }, ""},
  };
  for (const PrintCase& row : cases) {
    EXPECT_EQ(stderrOf([&] { EXPECT_EQ(stdoutOf(row.print), row.output) << row.name; }), "");
  }
}

TEST_F(MessagesTest, ColourFramesTheLineAndTheResetFollowsTheLineEnd) {
  colorsOn();
  EXPECT_EQ(stderrOf([] { printError(ErrorNotRoot); }),
            ESC + "[1;31mERROR: ErrorNotRoot\n" + ESC + "[1;0m");
  EXPECT_EQ(stderrOf([] { printWarning(WarningDirectoryContainsNewFiles, "/d"); }),
            ESC + "[1;33mWARNING: WarningDirectoryContainsNewFiles /d\n" + ESC + "[1;0m");
  EXPECT_EQ(
      stdoutOf([] { printMessage(MessageUpgrading, "x"); }),
      ESC + "[1;32mThis Message should not be here, maybe you forgot about arg.\n" + ESC + "[1;0m");
  EXPECT_EQ(stderrOf([] { printWarning(WarningFileChanged, "a", "b"); }),
            ESC + "[1;33m" + ESC + "[1;0m");
  EXPECT_EQ(stdoutOf([] { printHelp(static_cast<HelpType>(4), "v"); }),
            ESC + "[1;32m" + ESC + "[1;0m");
}

TEST_F(MessagesTest, WithoutColoursNoEscapeIsWritten) {
  setColors(1, 14, 15);
  colorsEnabled = false;
  const std::string out = stdoutOf([] {
    printMessage(MessageRemovingFiles);
    printHelp(HelpRemovezet, "v");
    printDescription(TextVector());
  });
  const std::string err = stderrOf([] {
    printError(ErrorNotRoot);
    printWarning(WarningFileChanged, "a", "b");
  });
  EXPECT_EQ((out + err).find(ESC), std::string::npos);
}

TEST_F(MessagesTest, DescriptionHasItsHeadingAndATrailingEmptyLine) {
  TextVector lines;
  lines.push_back("foo: a package");
  lines.push_back("");
  EXPECT_EQ(stdoutOf([&] { printDescription(lines); }),
            "MessagePackageDescription\nfoo: a package\n\n\n");
  EXPECT_EQ(stdoutOf([] { printDescription(TextVector()); }), "MessagePackageDescription\n\n");
  colorsOn();
  EXPECT_EQ(
      stdoutOf([] { printDescription(TextVector()); }),
      ESC + "[1;32m" + ESC + "[1;32mMessagePackageDescription\n\n" + ESC + "[1;0m" + ESC + "[1;0m");
}

TEST_F(MessagesTest, AMissingSentenceStillPrintsTheFrame) {
  std::string err;
  const std::string out = stdoutOf([&] { err = stderrOf([] { printError(ErrorUnknownGzip); }); });
  EXPECT_EQ(out, "Lang::get(): sentence 'ErrorUnknownGzip' not found in lang file\n");
  EXPECT_EQ(err, "ERROR: \n");
}

TEST_F(MessagesTest, SetColorsReplacesOnlyIndexesBelowSixteen) {
  setColors(2, 4, 6);
  setColors(16, 16, 16);
  EXPECT_EQ(errorColor, ESC + "[0;31m");
  EXPECT_EQ(warningColor, ESC + "[0;34m");
  EXPECT_EQ(messageColor, ESC + "[0;36m");
  setColors(16, 0, 100);
  EXPECT_EQ(errorColor, ESC + "[0;31m");
  EXPECT_EQ(warningColor, ESC + "[1;37m");
  EXPECT_EQ(messageColor, ESC + "[0;36m");
}

TEST(ColorTableTest, SixteenEscapesEndingInTheReset) {
  EXPECT_EQ(colorEscape(0), ESC + "[1;37m");
  EXPECT_EQ(colorEscape(10), ESC + "[1;30m");
  EXPECT_EQ(colorEscape(15), resetColor);
  EXPECT_EQ(resetColor, ESC + "[1;0m");
  EXPECT_EQ(colorEscape(16), "");
}

TEST_F(MessagesTest, DebugLogWritesOnlyWhileEnabled) {
  EXPECT_EQ(stdoutOf([] { DebugLog::instance() << "hidden " << 1L << std::string("!"); }), "");
  DebugLog::instance().enabled = true;
  EXPECT_EQ(stdoutOf([] { DebugLog::instance() << "shown " << -42L << std::string("!"); }),
            "shown -42!");
}

}  // namespace
