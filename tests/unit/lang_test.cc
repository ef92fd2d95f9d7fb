#include "lang.h"

#include <fstream>

#include "messages.h"
#include "scratch.h"

using LangTest = Scratch;

TEST_F(LangTest, KeysAnyCaseContinuationsAndMarkers) {
  Lang& lang = Lang::instance();
  EXPECT_FALSE(lang.load(root + "/none"));
  EXPECT_TRUE(lang.load(write(
      "l", "t1=[ARG] and [ARG]\nT2 = x\nt3=a\\\nB=b\\\nc\nt4=a\nt4=b[ARG\nno sign\nt5=a\\\n")));
  EXPECT_EQ(lang.get("T1", "x", "y") + lang.get("t1", "[ARG]"), "x and y[ARG] and ");
  EXPECT_EQ(lang.get("T2 ") + "|" + lang.get("t3") + "|" + lang.get("t4"), " x|a\nB=b\nc|b[ARG");
  testing::internal::CaptureStdout();
  for (const char* missing : {"t2", "b", "t5"}) EXPECT_EQ(lang.get(missing), "");
  EXPECT_EQ(
      testing::internal::GetCapturedStdout(),
      "Lang::get(): sentence 't2' not found in lang file\nLang::get(): sentence 'b' not found in "
      "lang file\nLang::get(): sentence 't5' not found in lang file\n");
  EXPECT_TRUE(lang.load(write("l", "T1=later\n")));
  EXPECT_EQ(lang.get("t1") + lang.get("t4"), "laterb[ARG");
  EXPECT_EQ(Lang::split("[ARG]", "x[AR[ARG]G][ARG]"), (Lines{"x[AR", "G]", ""}));
  EXPECT_EQ(Lang::split("[ARG]", ""), (Lines{""}));
  EXPECT_EQ(Lang::substring("hello", 1, 3) + Lang::substring("hello", 3, 9) +
                Lang::substring("hello", 5, 1) + Lang::substring("hello", -1, 1),
            "elllo");
}

// Each shipped language has every key that the program asks for, with a marker for each
// argument that it passes, and no other key.
TEST(Lang, ShippedLanguagesHaveEveryKeyWithItsMarkers) {
  std::map<std::string, unsigned> wanted = {{"DIALOG_COMPRESSED_AND_UNCOMPRESSED", 2},
                                            {"DIALOG_INSTALLING_PACKAGE", 1},
                                            {"DIALOG_INSTALL_PACKAGE", 1},
                                            {"DIALOG_DO_NOT_INSTALL", 1},
                                            {"DIALOG_ABORT", 0},
                                            {"YES", 0},
                                            {"NO", 0},
                                            {"QUIT", 0},
                                            {"QUERYHELP", 1},
                                            {"QUERYINFO", 13},
                                            {"QUERYDEPENDSINSTALLED", 2},
                                            {"QUERYDEPENDSMISSING", 1},
                                            {"QUERYERRORNODATABASE", 1},
                                            {"QUERYERRORUNREADABLE", 1},
                                            {"QUERYERRORNOFILELIST", 1},
                                            {"QUERYERRORCANNOTCHECK", 1},
                                            {"QUERYERRORNOOWNER", 1},
                                            {"QUERYERRORNOMATCH", 1}};
  for (int i = 0; errorKey(ErrorType(i)); ++i)
    wanted[Lang::toUpper(errorKey(ErrorType(i)))] = errorArgCount(ErrorType(i));
  for (int i = 0; warningKey(WarningType(i)); ++i)
    wanted[Lang::toUpper(warningKey(WarningType(i)))] = 1;
  for (int i = 0; messageKey(MessageType(i)); ++i)
    wanted[Lang::toUpper(messageKey(MessageType(i)))] = messageArgCount(MessageType(i));
  for (int i = 0; helpKey(HelpType(i)); ++i) wanted[Lang::toUpper(helpKey(HelpType(i)))] = 1;
  EXPECT_EQ(wanted.size(), 68u);
  // makezet's sentences, by the number of markers that it fills.
  for (const char* key : {"MakeBadEpoch", "MakeBadName", "MakeBadStamp", "MakeBlankInPath",
                          "MakeCannotRead", "MakeCannotWrite", "MakeHelp", "MakeNoDescription",
                          "MakePathTooLong", "MakeSystemLinkDirectory", "MakeUnsupportedType"})
    wanted[Lang::toUpper(key)] = 1;
  for (const char* key : {"MakeBadDescription", "MakeLinkToDirectory", "MakeLinkUnusable"})
    wanted[Lang::toUpper(key)] = 2;
  wanted["MAKEGZIPFAILED"] = 0;
  for (const char* language : {"C", "pl", "de"}) {
    std::ifstream file(std::string(ZET_LANG_SOURCE_DIR) + "/" + language + ".lang");
    std::map<std::string, unsigned> found;
    for (std::string line, entry; std::getline(file, line);) {
      if (!(entry += line).empty() && entry.back() == '\\') continue;
      found[Lang::toUpper(entry.substr(0, entry.find('=')))] =
          Lang::split(ARG_MARKER, entry).size() - 1;
      entry.clear();
    }
    EXPECT_EQ(found, wanted) << language;
  }
}
