#include "textvector.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "scratch.h"

namespace {

typedef std::vector<std::string> Lines;

TextVector vectorOf(const Lines& content) {
  TextVector vector;
  for (const std::string& item : content) vector.push_back(item.c_str());
  return vector;
}

class TextFileTest : public ::testing::Test {
 protected:
  ScratchFolder scratch;
  const std::string path = scratch.path() + "/lines";
  const std::string missing = scratch.path() + "/missing";
};

TEST_F(TextFileTest, LoadCutsLinesAtTheirEnds) {
  const std::string longLine(2500, 'x');
  const struct {
    std::string bytes;
    Lines lines;
  } rows[] = {{"", {}},
              {"\n", {""}},
              {"one\n\ntwo", {"one", "", "two"}},
              {"a\r\nb\rc\n", {"a", "b\rc"}},
              {"\r\r\n", {"\r"}},
              {"trailing\r", {"trailing\r"}},
              {std::string("ab\0cd\nnext\n", 11), {"ab", "next"}},
              {std::string("a\r\0\n", 4), {"a\r"}},
              {longLine + "\n",
               {longLine.substr(0, 1023), longLine.substr(1023, 1023), longLine.substr(2046)}},
              // A line end that falls just behind a full delivery comes as a line of its own,
              // and a CR that ends a full delivery is text.
              {longLine.substr(0, 1023) + "\n", {longLine.substr(0, 1023), ""}},
              {longLine.substr(0, 1022) + "\r\n", {longLine.substr(0, 1022) + "\r", ""}}};
  for (const auto& row : rows) {
    scratch.write("lines", row.bytes);
    TextFile file;
    EXPECT_TRUE(file.load(path.c_str()));
    EXPECT_EQ(linesOf(file), row.lines) << "bytes: " << row.bytes.substr(0, 40);
  }
  TextFile failed;
  failed.push_back("old");
  EXPECT_FALSE(failed.load(missing.c_str()));
  EXPECT_EQ(failed.size(), 0u);
  EXPECT_EQ(TextFile(missing.c_str()).size(), 0u);
  EXPECT_TRUE(TextFile::fileExists(scratch.path().c_str()));
  EXPECT_FALSE(TextFile::fileExists(missing.c_str()));
}

TEST_F(TextFileTest, SaveEndsEveryLineWithALineFeedAndDropsCarriageReturns) {
  scratch.write("lines", "a\r\n\r\nb");
  TextFile file(path.c_str());
  ASSERT_TRUE(file.save(path.c_str(), true));
  EXPECT_EQ(readWholeFile(path), "a\n\nb\n");
  scratch.write("lines", "\n");
  ASSERT_TRUE(file.load(path.c_str()));
  ASSERT_TRUE(file.save(path.c_str(), true));
  EXPECT_EQ(readWholeFile(path), "\n");
  ASSERT_TRUE(TextFile().save(path.c_str(), true));
  EXPECT_EQ(readWholeFile(path), "");

  scratch.write("lines", "kept\n");
  EXPECT_FALSE(TextFile(vectorOf({"new"})).save(path.c_str(), false));
  EXPECT_EQ(readWholeFile(path), "kept\n");
  EXPECT_FALSE(file.save((scratch.path() + "/no/such/dir").c_str(), true));
}

TEST(TextVectorTest, SplitAppendsOnlyNonEmptyTokens) {
  const struct {
    const char* text;
    Lines tokens;
  } rows[] = {{"a==b=", {"a", "b"}}, {"=", {}},           {"", {}},
              {"==x", {"x"}},        {"k=v", {"k", "v"}}, {" a = b ", {" a ", " b "}}};
  for (const auto& row : rows) {
    TextVector tokens;
    tokens.split('=', row.text);
    EXPECT_EQ(linesOf(tokens), row.tokens) << "text: " << row.text;
  }
  TextVector accumulated = vectorOf({"kept"});
  accumulated.split(' ', "a b");
  EXPECT_EQ(linesOf(accumulated), (Lines{"kept", "a", "b"}));
}

TEST(TextVectorTest, PushBackWithLengthCutsOrPadsAndFindMatchesWholeStrings) {
  TextVector vector;
  vector.push_back("abcdef", 3);
  vector.push_back("ab", 5);
  EXPECT_STREQ(vector[0], "abc");
  EXPECT_EQ(0, memcmp(vector[1], "ab\0\0\0\0", 6));

  const TextVector found = vectorOf({"abc", "ab", "Ab", "ab"});
  EXPECT_EQ(found.find("ab"), 1);
  EXPECT_EQ(found.find("abcd"), -1);
  EXPECT_EQ(vectorOf({"abc"}).find("ab"), -1);
  EXPECT_EQ(found.find("AB"), -1);
}

TEST(TextVectorTest, EraseRemoveCharAndDifference) {
  TextVector vector = vectorOf({"a", "b", "c"});
  vector.erase(-1);
  vector.erase(3);
  EXPECT_EQ(linesOf(vector), (Lines{"a", "b", "c"}));
  vector.erase(1);
  EXPECT_EQ(linesOf(vector), (Lines{"a", "c"}));
  vector.pop_back();
  EXPECT_EQ(linesOf(vector), Lines{"a"});

  TextVector spaced = vectorOf({"a b c", "   ", "x y"});
  spaced.removeChar(' ', 0);
  spaced.removeChar(' ', 1);
  EXPECT_EQ(linesOf(spaced), (Lines{"abc", "", "x y"}));

  const TextVector a = vectorOf({"x", "y", "x", "z", "yy"});
  EXPECT_EQ(linesOf(TextVector::difference(a, vectorOf({"y", "z", "q"}))), (Lines{"x", "x", "yy"}));
  EXPECT_EQ(a.size(), 5u);
}

TEST(TextVectorTest, RemoveAllKeepsTheRestAndAbandonsTheRemoved) {
  TextVector vector = vectorOf({"a", "b", "a", "c", "ab"});
  char* kept = vector[3];
  std::vector<char*> removed = {vector[0], vector[2]};
  EXPECT_TRUE(vector.removeAll(vectorOf({"a", "x"})));
  EXPECT_EQ(linesOf(vector), (Lines{"b", "c", "ab"}));
  EXPECT_EQ(vector[1], kept);
  // The removed strings must still be ours to free: freeing them twice would be caught.
  for (char* text : removed) free(text);
}

TEST(TextVectorTest, CopiesAreDeepAndSelfAssignmentEmpties) {
  TextVector original = vectorOf({"a", "", "b"});
  TextVector copy(original);
  EXPECT_EQ(linesOf(copy), linesOf(original));
  EXPECT_NE(copy[0], original[0]);
  TextVector assigned = vectorOf({"old"});
  EXPECT_TRUE(assigned = original);
  EXPECT_EQ(linesOf(assigned), linesOf(original));
  TextVector& same = original;
  EXPECT_TRUE(original = same);
  EXPECT_EQ(original.size(), 0u);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(TextVectorDeathTest, ExhaustedMemoryStopsTheProgram) {
  auto pushBackWithLittleMemory = [] {
    rlimit small;
    small.rlim_cur = small.rlim_max = 64 << 20;
    setrlimit(RLIMIT_AS, &small);
    TextVector().push_back("", 1u << 30);
  };
  EXPECT_DEATH(pushBackWithLittleMemory(), "Low memory");
}
#endif

}  // namespace
