#include "messages.h"

#include "lang.h"
#include "scratch.h"

using MessagesTest = Scratch;

// Every printer writes colour, prefix, sentence, line end and then the reset; a value used
// with the wrong number of arguments gets a fixed complaint in place of its sentence.
TEST_F(MessagesTest, PrintersFrameTheirSentencesAndComplainAboutWrongCounts) {
  Lang::instance().load(write("l",
                              "ErrorNotRoot=root\nErrorFileDoNotExist=no [ARG]\n"
                              "WarningFileChanged=changed [ARG]\nMessageUpgrading=[ARG] to [ARG]\n"
                              "MessageShowWarnDirs=links\nMessageDeletingFile=del [ARG]\n"
                              "HelpRemovezet=help [ARG]\nMessagePackageDescription=About:\n"));
  setColors(16, 16, 16);
  EXPECT_EQ(errorColor + warningColor + messageColor, "");
  setColors(1, 14, 15);
  EXPECT_EQ(colorEscape(2) + colorEscape(16), "\033[0;31m");
  colorsEnabled = true;
  testing::internal::CaptureStderr();
  printError(ErrorNotRoot);
  printError(ErrorFileDoNotExist);
  printError(ErrorFileDoNotExist, "x");
  printError(ErrorNotRoot, "x");
  printError(ErrorNotRoot, "x", "y");
  printError("text");
  printWarning(WarningFileChanged);
  printWarning(WarningFileChanged, "x");
  printWarning(WarningType(6), "x");
  printWarning(WarningFileChanged, "x", "y");
  printWarning("w");
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "\033[1;31mERROR: root\n\033[1;0m"
      "\033[1;31mThis Error message should not be here\n\033[1;0m"
      "\033[1;31mERROR: no x\n\033[1;0m"
      "\033[1;31mThis Error message should not be here, maybe you forgot about arg ?\n\033[1;0m"
      "\033[1;31mThis Error message should not be here, maybe you forgot about arg1 or arg2 "
      "?\n\033[1;0m"
      "\033[1;31mERROR: text\n\033[1;0m"
      "\033[1;33mThis Warning message should not be here\n\033[1;0m"
      "\033[1;33mWARNING: changed x\n\033[1;0m"
      "\033[1;33mThis Warning message should not be here, maybe you forgot about arg.\n\033[1;0m"
      "\033[1;33m\033[1;0m"
      "\033[1;33mWARNING: w\n\033[1;0m");
  colorsEnabled = false;
  testing::internal::CaptureStdout();
  printMessage(MessageShowWarnDirs);
  printMessage(MessageDeletingFile);
  printMessage(MessageDeletingFile, "f");
  printMessage(MessageShowWarnDirs, "f");
  printMessage(MessageUpgrading, "a", "b");
  printMessage(MessageDeletingFile, "a", "b");
  printMessage("plain");
  printHelp(HelpRemovezet, "1.0");
  printHelp(HelpType(4), "1.0");
  printDescription(TextVector());
  TextVector lines;
  lines.push_back("a: one");
  lines.push_back("a: two");
  colorsEnabled = true;
  printDescription(lines);
  colorsEnabled = false;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "links\nThis Message should not be here\ndel f\n"
            "This Message should not be here, maybe you forgot about arg.\na to b\n"
            "This Message should not be here, maybe you forgot about arg1 or arg2.\nplain\n"
            "help 1.0\nAbout:\n\n"
            "\033[1;0m\033[1;0mAbout:\na: one\na: two\n\n\033[1;0m\033[1;0m");
}
