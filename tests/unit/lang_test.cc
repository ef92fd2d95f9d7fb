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
  EXPECT_EQ(lang.get("T1", "x", "y"), "x and y");
  EXPECT_EQ(lang.get("t1", "[ARG]"), "[ARG] and ");
  EXPECT_EQ(lang.get("T2 "), " x");
  EXPECT_EQ(lang.get("t3"), "a\nB=b\nc");
  EXPECT_EQ(lang.get("t4"), "b[ARG");
  testing::internal::CaptureStdout();
  EXPECT_EQ(lang.get("t2"), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Lang::get(): sentence 't2' not found in lang file\n");
  EXPECT_EQ(lang.get("b"), "");
  EXPECT_EQ(lang.get("t5"), "");
  EXPECT_TRUE(lang.load(write("l", "T1=later\n")));
  EXPECT_EQ(lang.get("t1"), "later");
  EXPECT_EQ(lang.get("t4"), "b[ARG");
  EXPECT_EQ(Lang::split("[ARG]", "x[AR[ARG]G][ARG]"), (Lines{"x[AR", "G]", ""}));
  EXPECT_EQ(Lang::split("[ARG]", ""), (Lines{""}));
  EXPECT_EQ(Lang::substring("abcd", 1, 9), "bcd");
}

// Polish and German have the keys of C with as many markers each, and C those of the printers
// with a marker per argument; the other sentences are checked through the test language.
TEST(Lang, ShippedLanguagesHaveEveryKeyWithItsMarkers) {
  std::map<std::string, std::map<std::string, unsigned>> found;
  for (const char* language : {"C", "pl", "de"}) {
    std::ifstream file(std::string(ZET_LANG_SOURCE_DIR) + "/" + language + ".lang");
    for (std::string line, entry; std::getline(file, line);) {
      if (!(entry += line).empty() && entry.back() == '\\') continue;
      found[language][Lang::toUpper(entry.substr(0, entry.find('=')))] =
          Lang::split(ARG_MARKER, entry).size() - 1;
      entry.clear();
    }
  }
  EXPECT_EQ(found["pl"], found["C"]);
  EXPECT_EQ(found["de"], found["C"]);
  std::map<std::string, unsigned>& c = found["C"];
  for (int i = 0; errorKey(ErrorType(i)); ++i)
    EXPECT_EQ(c.at(Lang::toUpper(errorKey(ErrorType(i)))), errorArgCount(ErrorType(i)));
  for (int i = 0; warningKey(WarningType(i)); ++i)
    EXPECT_EQ(c.at(Lang::toUpper(warningKey(WarningType(i)))), 1u);
  for (int i = 0; messageKey(MessageType(i)); ++i)
    EXPECT_EQ(c.at(Lang::toUpper(messageKey(MessageType(i)))), messageArgCount(MessageType(i)));
  for (int i = 0; helpKey(HelpType(i)); ++i)
    EXPECT_EQ(c.at(Lang::toUpper(helpKey(HelpType(i)))), 1u);
}
