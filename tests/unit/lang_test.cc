#include "lang.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

// Loads small language files from a scratch folder into the process-wide catalogue. Every
// test uses keys of its own, since the catalogue only grows.
class LangTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zet-lang-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
  }
  void TearDown() override {
    for (const std::string& path : written) unlink(path.c_str());
    rmdir(dir.c_str());
  }
  bool load(const std::string& content) {
    const std::string path = dir + "/" + std::to_string(written.size()) + ".lang";
    std::ofstream(path) << content;
    written.push_back(path);
    return Lang::instance().load(path);
  }
  // The sentence and what get() printed on standard output while fetching it.
  template <typename... Args>
  std::pair<std::string, std::string> get(const char* key, const Args&... args) {
    testing::internal::CaptureStdout();
    std::string sentence = Lang::instance().get(key, args...);
    return {sentence, testing::internal::GetCapturedStdout()};
  }

  std::string dir;
  std::vector<std::string> written;
};

std::string notFound(const std::string& key) {
  return "Lang::get(): sentence '" + key + "' not found in lang file\n";
}

TEST_F(LangTest, AFileThatCannotBeOpenedGivesFalse) {
  EXPECT_FALSE(Lang::instance().load(dir + "/missing.lang"));
  EXPECT_TRUE(load(""));
  EXPECT_TRUE(load("no equals sign here\n\n"));
}

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
      {"junk line\nKeyAfterJunk=y\n", "KeyAfterJunk", "y"},
      {"KeyCrLf=z\r\n", "KeyCrLf", "z"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.content);
    ASSERT_TRUE(load(row.content));
    EXPECT_EQ(get(row.key), std::make_pair(std::string(row.sentence), std::string()));
  }
}

TEST_F(LangTest, BlanksAroundTheEqualsSignBelongToTheKey) {
  ASSERT_TRUE(load("SpacedKey = x\n"));
  EXPECT_EQ(get("SpacedKey"), std::make_pair(std::string(), notFound("SpacedKey")));
  EXPECT_EQ(get("SpacedKey ").first, " x");
}

TEST_F(LangTest, AnEntryStillOpenAtTheEndOfTheFileIsDropped) {
  ASSERT_TRUE(load("OpenKey=never\\\n"));
  EXPECT_EQ(get("OpenKey").second, notFound("OpenKey"));
}

TEST_F(LangTest, TheNotFoundLineNamesTheKeyAsTheCallerSpelledIt) {
  EXPECT_EQ(get("No_Such_key"), std::make_pair(std::string(), notFound("No_Such_key")));
}

TEST_F(LangTest, MarkersAreFilledInOrder) {
  ASSERT_TRUE(load("TwoMarkers=[ARG] and [ARG]\nBareMarker=[ARG]\nNoMarker=plain\n"));
  EXPECT_EQ(get("TwoMarkers", "x", "y").first, "x and y");
  EXPECT_EQ(get("TwoMarkers", std::string("[ARG]"), "y").first, "[ARG] and y");
  EXPECT_EQ(get("BareMarker", "only").first, "only");
  EXPECT_EQ(get("NoMarker", "unused").first, "plain");
  // A marker beyond the given arguments stays empty.
  EXPECT_EQ(get("TwoMarkers", "x").first, "x and ");
}

TEST_F(LangTest, LaterFilesLieOnTopKeyByKey) {
  ASSERT_TRUE(load("LayerOne=first\nLayerTwo=first\n"));
  ASSERT_TRUE(load("LayerTwo=second\n"));
  EXPECT_EQ(get("LayerOne").first, "first");
  EXPECT_EQ(get("LayerTwo").first, "second");
}

TEST(LangSplitTest, Table) {
  const struct {
    const char* text;
    std::vector<std::string> fragments;
  } cases[] = {
      {"", {""}},
      {"plain", {"plain"}},
      {"a[ARG]", {"a", ""}},
      {"[ARG]", {"", ""}},
      {"[ARG][ARG]", {"", "", ""}},
      {"x[ARG]y[ARG]z", {"x", "y", "z"}},
      {"[[ARG]", {"[", ""}},
      {"[AR", {"[AR"}},
      {"[arg]", {"[arg]"}},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Lang::split(ARG_MARKER, row.text), row.fragments) << row.text;
  }
}

TEST(LangSubstringTest, Table) {
  const struct {
    const char* text;
    int start;
    unsigned length;
    const char* part;
  } cases[] = {
      {"hello", 1, 3, "ell"}, {"hello", 3, 10, "lo"}, {"hello", 0, 0, ""},
      {"hello", 5, 1, ""},    {"hello", -1, 2, ""},   {"", 0, 1, ""},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Lang::substring(row.text, row.start, row.length), row.part)
        << row.text << " " << row.start << " " << row.length;
  }
}

}  // namespace
