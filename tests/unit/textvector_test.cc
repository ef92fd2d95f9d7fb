#include "textvector.h"

#include <cstdlib>

#include "scratch.h"

using TextVectorTest = Scratch;

TextFile vectorOf(const Lines& lines) {
  TextFile vector;
  for (const std::string& line : lines) vector.push_back(line.c_str());
  return vector;
}

// Lines arrive as fgets into a 1024-byte buffer delivers them.
TEST_F(TextVectorTest, FilesLoadAsTheLineReaderCutsThemAndSaveWithALineFeedEach) {
  const std::string x(2500, 'x'), cr = std::string(1022, 'c') + "\r\n";
  const struct {
    std::string bytes;
    Lines lines;
  } rows[] = {{"", {}},
              {"\n", {""}},
              {"\r\n", {""}},
              {"a\r\nb\rc\n\r\r\nlast", {"a", "b\rc", "\r", "last"}},
              {std::string("x\0y\nz\n", 6), {"x", "z"}},
              {x + "\n", {x.substr(0, 1023), x.substr(1023, 1023), x.substr(2046)}},
              {cr, {cr.substr(0, 1023), ""}}};
  TextFile file = vectorOf({"old"});
  EXPECT_FALSE(file.load((root + "/none").c_str()));
  EXPECT_EQ(file.size(), 0u);
  EXPECT_FALSE(TextFile::fileExists("/none"));
  EXPECT_TRUE(TextFile::fileExists("/"));
  for (const auto& row : rows) {
    EXPECT_TRUE(file.load(write("f", row.bytes).c_str()));
    EXPECT_EQ(linesOf(file), row.lines) << row.bytes;
  }
  EXPECT_FALSE(vectorOf({"new"}).save((root + "/f").c_str(), false));
  EXPECT_FALSE(TextFile().save("/no/f", true));
  EXPECT_TRUE(vectorOf({"a", "", "b"}).save((root + "/f").c_str(), true));
  EXPECT_EQ(read(root + "/f"), "a\n\nb\n");
  EXPECT_TRUE(TextFile().save((root + "/empty").c_str(), false));
  EXPECT_EQ(read(root + "/empty"), "");
}

TEST(TextVector, SplittingAndEditingKeepOrderAndCompareWholeStrings) {
  TextVector tokens;
  for (const char* text : {"a==b=", "=", "", "-x--y-"})
    tokens.split(text[0] == '-' ? '-' : '=', text);
  EXPECT_EQ(linesOf(tokens), (Lines{"a", "b", "x", "y"}));
  TextVector vector = vectorOf({"ab", "abc", "ab", "  "});
  EXPECT_EQ(vector.find("abc"), 1);
  EXPECT_EQ(vector.find("a"), -1);
  EXPECT_EQ(linesOf(TextVector::difference(vector, tokens)), linesOf(vector));
  EXPECT_EQ(linesOf(TextVector::difference(vector, vectorOf({"ab"}))), (Lines{"abc", "  "}));
  vector.removeChar(' ', 3);
  vector.erase(-1);
  vector.erase(4);
  vector.erase(1);
  EXPECT_EQ(linesOf(vector), (Lines{"ab", "ab", ""}));
  char* const dropped = vector[2];
  EXPECT_TRUE(vector.removeAll(vectorOf({"", "x"})));
  EXPECT_EQ(linesOf(vector), (Lines{"ab", "ab"}));
  // A removed string is abandoned, not freed: a caller may still hold it.
  free(dropped);
  TextVector some = vectorOf({"c", "d", "c"});
  some.pop_back();
  some.push_back("xyz", 2);
  some.push_back("q", 3);
  EXPECT_EQ(linesOf(some), (Lines{"c", "d", "xy", "q"}));
  EXPECT_EQ(TextFile(some).length(2), 2u);
  const TextVector copy(some);
  some.clear();
  EXPECT_TRUE(some = copy);
  EXPECT_EQ(linesOf(some), (Lines{"c", "d", "xy", "q"}));
  const TextVector& same = some;
  some = same;
  EXPECT_EQ(some.size(), 0u);
  EXPECT_EQ(copy.size(), 4u);
}
