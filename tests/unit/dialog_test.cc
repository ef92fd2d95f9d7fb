#include "dialog.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

// The title reaches the shell unescaped, so a title that closes its own quote can send the
// tool's run to nowhere and hand the rest of the command line to a script of the test:
// the script sees the pieces after the title as its arguments, and its standard error is
// where the tool's answer would go. No dialog ever reaches the terminal.
class DialogTest : public ::testing::Test {
 protected:
  DialogTest() { answer(""); }

  // The title that runs `script` in place of the tool; the script must hold no single quote.
  static std::string bypass(const std::string& script) {
    return "\" </dev/null >/dev/null 2>&1; sh -c '" + script + "' \"sh";
  }
  // Logs the arguments, one a line, and answers with the content of the answer file.
  std::string recording() const {
    return bypass("for a do printf \"%s\\n\" \"$a\"; done >" + log() + "; cat " + answerFile() +
                  " >&2");
  }
  std::string log() const { return scratch.path() + "/arguments"; }
  std::string answerFile() const { return scratch.path() + "/answer"; }
  std::string resultFile() const { return scratch.temp() + "/menudialog-result"; }
  void answer(const std::string& content) const { scratch.write("answer", content); }

  ScratchFolder scratch;
};

TEST_F(DialogTest, TextIsJoinedWithBackslashNAndLosesLeadingEmptyLines) {
  InfoBox box;
  box.setText(vectorOf({"a", "", "b"}));
  EXPECT_EQ(box.text, "a\\n\\nb");
  box.setText(vectorOf({"", "a"}));
  EXPECT_EQ(box.text, "a");
  box.setText(TextVector());
  EXPECT_EQ(box.text, "");
  MenuDialog menu;
  menu.setText(vectorOf({"", "", "x \"y\"", "", "z"}));
  EXPECT_EQ(menu.text, "x \"y\"\\n\\nz");
}

TEST_F(DialogTest, EscapeQuotesTouchesNothingButDoubleQuotes) {
  EXPECT_EQ(Dialog::escapeQuotes("say \"hi\" \\n $HOME `x` 'q'"),
            "say \\\"hi\\\" \\n $HOME `x` 'q'");
  EXPECT_EQ(Dialog::escapeQuotes(""), "");
}

TEST_F(DialogTest, RunForgetsTheArgumentsAndKeepsTheTitle) {
  Dialog dialog;
  dialog.setTitle(recording());
  dialog.arguments = {"--one \"two words\"", "three"};
  dialog.run();
  EXPECT_EQ(readWholeFile(log()), "--one\ntwo words\nthree\n");
  EXPECT_TRUE(dialog.arguments.empty());
  EXPECT_EQ(dialog.title, recording());
  dialog.run();
  EXPECT_EQ(readWholeFile(log()), "");
}

TEST_F(DialogTest, InfoBoxPassesTheTextAsOneWordThroughTheShell) {
  const ScopedVariable word("ZET_DIALOG_WORD", "expanded");
  InfoBox box;
  box.setTitle(recording());
  box.setText(vectorOf({"a \"quoted\" line", "$ZET_DIALOG_WORD"}));
  box.show();
  EXPECT_EQ(readWholeFile(log()), "--infobox\na \"quoted\" line\\nexpanded\n0\n0\n");
  EXPECT_TRUE(box.arguments.empty());
}

TEST_F(DialogTest, MenuPassesHeightAndItemsAndTakesAOneLineAnswer) {
  MenuDialog menu;
  menu.setTitle(recording());
  menu.addItem("yes", "Install it");
  menu.addItem("no way", "Skip it");
  menu.setText(vectorOf({"first", "second"}));
  answer("no way\n");
  menu.show();
  EXPECT_EQ(readWholeFile(log()),
            "--menu\nfirst\\nsecond\n0\n0\n3\nyes\nInstall it\nno way\nSkip it\n");
  EXPECT_EQ(menu.getResult(), "no way");
  EXPECT_FALSE(TextFile::fileExists(resultFile().c_str()));

  // Shown again, the items are still there; a cleared menu runs with none.
  menu.setHeight(7);
  menu.show();
  EXPECT_EQ(readWholeFile(log()),
            "--menu\nfirst\\nsecond\n0\n0\n7\nyes\nInstall it\nno way\nSkip it\n");
  menu.clearItems();
  menu.show();
  EXPECT_EQ(readWholeFile(log()), "--menu\nfirst\\nsecond\n0\n0\n7\n");
}

TEST_F(DialogTest, AnAnswerOfOtherThanOneLineKeepsTheEarlierResult) {
  MenuDialog menu;
  menu.setTitle(recording());
  answer("");
  menu.show();
  EXPECT_EQ(menu.getResult(), "");
  answer("yes");
  menu.show();
  EXPECT_EQ(menu.getResult(), "yes");
  answer("no\nsecond line\n");
  menu.show();
  EXPECT_EQ(menu.getResult(), "yes");
  answer("");
  menu.show();
  EXPECT_EQ(menu.getResult(), "yes");
  EXPECT_FALSE(TextFile::fileExists(resultFile().c_str()));
}

TEST_F(DialogTest, AMissingResultFileKeepsTheEarlierResult) {
  MenuDialog menu;
  menu.result = "earlier";
  // The script takes its own result file away before the answer is read.
  menu.setTitle(bypass("rm -f " + resultFile()));
  menu.show();
  EXPECT_EQ(menu.getResult(), "earlier");
}

}  // namespace
