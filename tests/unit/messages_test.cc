#include "messages.h"

#include "lang.h"
#include "scratch.h"

using MessagesTest = Scratch;

// A value used with the wrong number of arguments gets a fixed complaint in place of its
// sentence, still framed by the colour and its reset; the end-to-end cases see the rest.
TEST_F(MessagesTest, PrintersComplainAboutWrongCounts) {
  Lang::instance().load(write("l", "MessagePackageDescription=About:\n"));
  setColors(16, 16, 16);
  EXPECT_EQ(errorColor, "");
  EXPECT_EQ(warningColor, "");
  EXPECT_EQ(messageColor, "");
  setColors(1, 14, 15);
  colorsEnabled = true;
  testing::internal::CaptureStderr();
  printError(ErrorNotRoot, "x", "y");
  printError(ErrorFileDoNotExist);
  printError(ErrorNotRoot, "x");
  printWarning(WarningType(6), "x");
  printWarning(WarningFileChanged, "x", "y");
  printWarning(WarningFileChanged);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\033[1;31mThis Error message should not be here, maybe you forgot about arg1 or arg2 "
            "?\n\033[1;0m\033[1;31mThis Error message should not be here\n\033[1;0m"
            "\033[1;31mThis Error message should not be here, maybe you forgot about arg ?\n"
            "\033[1;0m\033[1;33mThis "
            "Warning message should not be here, maybe you forgot "
            "about arg.\n\033[1;0m\033[1;33m\033[1;0m"
            "\033[1;33mThis Warning message should not be here\n\033[1;0m");
  testing::internal::CaptureStdout();
  printMessage(MessageDeletingFile);
  printMessage(MessagePackageDescription, "x");
  printMessage(MessagePackageDescription, "x", "y");
  printHelp(HelpType(4), "v");
  TextVector lines;
  lines.push_back("a: one");
  printDescription(lines);
  colorsEnabled = false;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\033[1;0mThis Message should not be here\n\033[1;0m"
            "\033[1;0mThis Message should not be here, maybe you forgot about arg.\n\033[1;0m"
            "\033[1;0mThis Message should not be here, maybe you forgot about arg1 or arg2.\n"
            "\033[1;0m\033[1;0m\033[1;0m"
            "\033[1;0m\033[1;0mAbout:\na: one\n\n\033[1;0m\033[1;0m");
}

TEST(Messages, TheColourTableHoldsSixteenEscapes) {
  const char* const codes[] = {"1;37", "1;31", "0;31", "1;32", "0;34", "0;32", "0;36", "0;35",
                               "0;33", "0;37", "1;30", "1;34", "1;36", "1;35", "1;33", "1;0"};
  const std::string kept = errorColor;
  for (Color color = 0; color < 16; ++color) {
    setColors(color, 16, 16);
    EXPECT_EQ(errorColor, std::string("\033[") + codes[color] + "m") << color;
  }
  errorColor = kept;
}
