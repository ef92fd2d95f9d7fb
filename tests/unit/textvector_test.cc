#include "textvector.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> contentOf(const TextVector& vector) {
  std::vector<std::string> content;
  for (unsigned i = 0; i < vector.size(); ++i) content.push_back(vector[i]);
  return content;
}

TextVector vectorOf(const std::vector<std::string>& content) {
  TextVector vector;
  for (const std::string& item : content) vector.push_back(item.c_str());
  return vector;
}

// Gives each test a fresh scratch folder for the files it loads and saves.
class TextFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zet-textfile-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    path = dir + "/lines";
  }
  void TearDown() override { std::filesystem::remove_all(dir); }

  void writeFile(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
  std::string readFile() {
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
  }

  std::string dir;
  std::string path;
};

TEST_F(TextFileTest, LoadCutsLinesAtTheirEnds) {
  const std::string longLine(2500, 'x');
  const struct {
    std::string bytes;
    std::vector<std::string> lines;
  } rows[] = {
      {"", {}},
      {"\n", {""}},
      {"one\n\ntwo", {"one", "", "two"}},
      {"a\r\nb\rc\n", {"a", "b\rc"}},
      {"\r\r\n", {"\r"}},
      {"trailing\r", {"trailing\r"}},
      {std::string("ab\0cd\nnext\n", 11), {"ab", "next"}},
      {longLine + "\n",
       {longLine.substr(0, 1023), longLine.substr(1023, 1023), longLine.substr(2046)}},
  };
  for (const auto& row : rows) {
    writeFile(row.bytes);
    TextFile file;
    EXPECT_TRUE(file.load(path.c_str()));
    EXPECT_EQ(contentOf(file), row.lines) << "bytes: " << row.bytes.substr(0, 40);
  }
}

TEST_F(TextFileTest, FailedLoadLeavesTheVectorEmpty) {
  TextFile file;
  file.push_back("old");
  EXPECT_FALSE(file.load((dir + "/missing").c_str()));
  EXPECT_EQ(file.size(), 0u);
  EXPECT_EQ(TextFile((dir + "/missing").c_str()).size(), 0u);
}

TEST_F(TextFileTest, SaveEndsEveryLineWithALineFeedAndDropsCarriageReturns) {
  writeFile("a\r\n\r\nb");
  TextFile file(path.c_str());
  ASSERT_TRUE(file.save(path.c_str(), true));
  EXPECT_EQ(readFile(), "a\n\nb\n");

  writeFile("\n");
  ASSERT_TRUE(file.load(path.c_str()));
  ASSERT_TRUE(file.save(path.c_str(), true));
  EXPECT_EQ(readFile(), "\n");

  ASSERT_TRUE(TextFile().save(path.c_str(), true));
  EXPECT_EQ(readFile(), "");
}

TEST_F(TextFileTest, SaveWithoutOverwriteLeavesAnExistingFile) {
  writeFile("kept\n");
  TextFile file(vectorOf({"new"}));
  EXPECT_FALSE(file.save(path.c_str(), false));
  EXPECT_EQ(readFile(), "kept\n");
  EXPECT_FALSE(file.save((dir + "/no/such/dir").c_str(), true));
}

TEST_F(TextFileTest, ExistenceIsAnOpenForReading) {
  EXPECT_TRUE(TextFile::fileExists(dir.c_str()));
  EXPECT_FALSE(TextFile::fileExists(path.c_str()));
}

TEST(TextVectorTest, SplitAppendsOnlyNonEmptyTokens) {
  const struct {
    const char* text;
    std::vector<std::string> tokens;
  } rows[] = {
      {"a==b=", {"a", "b"}}, {"=", {}},           {"", {}},
      {"==x", {"x"}},        {"k=v", {"k", "v"}}, {" a = b ", {" a ", " b "}},
  };
  for (const auto& row : rows) {
    TextVector tokens;
    tokens.split('=', row.text);
    EXPECT_EQ(contentOf(tokens), row.tokens) << "text: " << row.text;
  }
  TextVector accumulated = vectorOf({"kept"});
  accumulated.split(' ', "a b");
  EXPECT_EQ(contentOf(accumulated), (std::vector<std::string>{"kept", "a", "b"}));
}

TEST(TextVectorTest, PushBackWithLengthCutsOrPads) {
  TextVector vector;
  vector.push_back("abcdef", 3);
  vector.push_back("ab", 5);
  EXPECT_STREQ(vector[0], "abc");
  EXPECT_STREQ(vector[1], "ab");
  EXPECT_EQ(0, memcmp(vector[1], "ab\0\0\0\0", 6));
}

TEST(TextVectorTest, FindMatchesWholeStringsOnly) {
  const TextVector vector = vectorOf({"abc", "ab", "Ab", "ab"});
  EXPECT_EQ(vector.find("ab"), 1);
  EXPECT_EQ(vector.find("abcd"), -1);
  EXPECT_EQ(vectorOf({"abc"}).find("ab"), -1);
  EXPECT_EQ(vector.find("AB"), -1);
}

TEST(TextVectorTest, EraseRebuildsAndIgnoresIndicesOutside) {
  TextVector vector = vectorOf({"a", "b", "c"});
  vector.erase(-1);
  vector.erase(3);
  EXPECT_EQ(contentOf(vector), (std::vector<std::string>{"a", "b", "c"}));
  vector.erase(1);
  EXPECT_EQ(contentOf(vector), (std::vector<std::string>{"a", "c"}));
  vector.pop_back();
  EXPECT_EQ(contentOf(vector), (std::vector<std::string>{"a"}));
}

TEST(TextVectorTest, RemoveCharReplacesTheOneElement) {
  TextVector vector = vectorOf({"a b c", "   ", "x y"});
  vector.removeChar(' ', 0);
  vector.removeChar(' ', 1);
  EXPECT_EQ(contentOf(vector), (std::vector<std::string>{"abc", "", "x y"}));
}

TEST(TextVectorTest, DifferenceKeepsOrderAndDuplicates) {
  const TextVector a = vectorOf({"x", "y", "x", "z", "yy"});
  const TextVector b = vectorOf({"y", "z", "q"});
  EXPECT_EQ(contentOf(TextVector::difference(a, b)), (std::vector<std::string>{"x", "x", "yy"}));
  EXPECT_EQ(a.size(), 5u);
}

TEST(TextVectorTest, RemoveAllKeepsTheRestAndAbandonsTheRemoved) {
  TextVector vector = vectorOf({"a", "b", "a", "c", "ab"});
  char* kept = vector[3];
  std::vector<char*> removed = {vector[0], vector[2]};
  EXPECT_TRUE(vector.removeAll(vectorOf({"a", "x"})));
  EXPECT_EQ(contentOf(vector), (std::vector<std::string>{"b", "c", "ab"}));
  EXPECT_EQ(vector[1], kept);
  // The removed strings must still be ours to free: freeing them twice would be caught.
  for (char* text : removed) free(text);
}

TEST(TextVectorTest, CopiesAreDeepAndSelfAssignmentEmpties) {
  TextVector original = vectorOf({"a", "", "b"});
  TextVector copy(original);
  EXPECT_EQ(contentOf(copy), contentOf(original));
  EXPECT_NE(copy[0], original[0]);
  TextVector assigned = vectorOf({"old"});
  EXPECT_TRUE(assigned = original);
  EXPECT_EQ(contentOf(assigned), contentOf(original));
  TextVector& same = original;
  EXPECT_TRUE(original = same);
  EXPECT_EQ(original.size(), 0u);
}

#if !defined(__SANITIZE_ADDRESS__)
void pushBackWithLittleMemory() {
  rlimit small;
  small.rlim_cur = small.rlim_max = 64 << 20;
  setrlimit(RLIMIT_AS, &small);
  TextVector vector;
  vector.push_back("", 1u << 30);
}

TEST(TextVectorDeathTest, ExhaustedMemoryStopsTheProgram) {
  EXPECT_DEATH(pushBackWithLittleMemory(), "Low memory");
}
#endif

}  // namespace
