#include "lang.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scratch.h"

namespace {

typedef std::pair<std::string, std::string> Fetched;  // the sentence, and what get() printed

std::string notFound(const std::string& key) {
  return "Lang::get(): sentence '" + key + "' not found in lang file\n";
}

template <typename... Args>
Fetched get(const char* key, const Args&... args) {
  testing::internal::CaptureStdout();
  std::string sentence = Lang::instance().get(key, args...);
  return {sentence, testing::internal::GetCapturedStdout()};
}

// Every test uses keys of its own, since the process-wide catalogue only grows.
class LangTest : public ::testing::Test {
 protected:
  bool load(const std::string& content) {
    return Lang::instance().load(scratch.write(std::to_string(++files) + ".lang", content));
  }

  ScratchFolder scratch;
  int files = 0;
};

// Rows load in order onto the one catalogue; a null sentence means the key is not found.
TEST_F(LangTest, FileFormatTable) {
  const struct {
    const char* content;
    const char* key;
    const char* sentence;
  } cases[] = {
      {"lowerkeyone=x\n", "LowerKeyOne", "x"},
      {"KeyWithEquals=a=b\n", "keywithequals", "a=b"},
      {"KeyContinued=one\\\nB=two\n", "KeyContinued", "one\nB=two"},
      {"KeyThreeLines=a\\\n\\\nb\n", "KeyThreeLines", "a\n\nb"},
      {"KeyTwice=first\nKeyTwice=second\n", "KeyTwice", "second"},
      {"KeyEmpty=\n", "KeyEmpty", ""},
      {"KeyBlanks= x \n", "KeyBlanks", " x "},
      {"junk line\n\nKeyAfterJunk=y\n", "KeyAfterJunk", "y"},
      {"KeyCrLf=z\r\n", "KeyCrLf", "z"},
      {"SpacedKey = x\n", "SpacedKey", nullptr},  // the blanks belong to the key
      {"", "SpacedKey ", " x"},
      {"OpenKey=never\\\n", "OpenKey", nullptr},  // still open at the end of the file
      {"", "No_Such_key", nullptr},               // named as the caller spelled it
      {"LayerOne=first\nLayerTwo=first\n", "LayerTwo", "first"},
      {"LayerTwo=second\n", "LayerTwo", "second"},  // later files lie on top key by key
      {"", "LayerOne", "first"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.content) + " / " + row.key);
    ASSERT_TRUE(load(row.content));
    EXPECT_EQ(get(row.key),
              row.sentence ? Fetched(row.sentence, "") : Fetched("", notFound(row.key)));
  }
  EXPECT_FALSE(Lang::instance().load(scratch.path() + "/missing.lang"));
}

TEST_F(LangTest, MarkersAreFilledInOrder) {
  ASSERT_TRUE(load("TwoMarkers=[ARG] and [ARG]\nBareMarker=[ARG]\nNoMarker=plain\n"));
  EXPECT_EQ(get("TwoMarkers", "x", "y").first, "x and y");
  EXPECT_EQ(get("TwoMarkers", std::string("[ARG]"), "y").first, "[ARG] and y");
  EXPECT_EQ(get("BareMarker", "only").first, "only");
  EXPECT_EQ(get("NoMarker", "unused").first, "plain");
  EXPECT_EQ(get("TwoMarkers", "x").first, "x and ");  // a marker past the arguments stays empty
}

TEST(LangTextTest, SplitAndSubstring) {
  const struct {
    const char* text;
    std::vector<std::string> fragments;
  } splits[] = {{"", {""}},
                {"plain", {"plain"}},
                {"a[ARG]", {"a", ""}},
                {"[ARG]", {"", ""}},
                {"[ARG][ARG]", {"", "", ""}},
                {"x[ARG]y[ARG]z", {"x", "y", "z"}},
                {"[[ARG]", {"[", ""}},
                {"[AR", {"[AR"}},
                {"[arg]", {"[arg]"}}};
  for (const auto& row : splits)
    EXPECT_EQ(Lang::split(ARG_MARKER, row.text), row.fragments) << row.text;
  const struct {
    const char* text;
    int start;
    unsigned length;
    const char* part;
  } parts[] = {{"hello", 1, 3, "ell"}, {"hello", 3, 10, "lo"}, {"hello", 0, 0, ""},
               {"hello", 5, 1, ""},    {"hello", -1, 2, ""},   {"", 0, 1, ""}};
  for (const auto& row : parts) {
    EXPECT_EQ(Lang::substring(row.text, row.start, row.length), row.part)
        << row.text << " " << row.start << " " << row.length;
  }
}

}  // namespace
