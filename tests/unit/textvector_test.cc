#include "textvector.h"

#include <cstdlib>

#include "scratch.h"
#include "textutil.h"

using TextVectorTest = Scratch;

TextFile vectorOf(const Lines& lines) {
  TextFile vector;
  for (const std::string& line : lines) vector.push_back(line.c_str());
  return vector;
}

// The runs cut long lines; only here: a failed load that empties, the CR rules, refused saves.
TEST_F(TextVectorTest, FilesLoadAsTheLineReaderCutsThemAndSaveOnlyWhereAllowed) {
  TextFile file = vectorOf({"old"});
  EXPECT_FALSE(file.load((root + "/none").c_str()));
  EXPECT_EQ(file.size(), 0u);
  EXPECT_TRUE(file.load(write("f", "a\r\nb\rc\n\r\r\nlast").c_str()));
  EXPECT_EQ(linesOf(file), (Lines{"a", "b\rc", "\r", "last"}));
  EXPECT_TRUE(file.load(write("f", "\r\n").c_str()));
  EXPECT_EQ(linesOf(file), (Lines{""}));
  EXPECT_FALSE(vectorOf({"new"}).save((root + "/f").c_str(), false));
  EXPECT_FALSE(TextFile().save("/no/f", true));
}

TEST(TextVector, SplittingAndEditingKeepOrderAndCompareWholeStrings) {
  TextVector tokens;
  for (const char* text : {"a==b=", "=", "", "-x--y-"})
    tokens.split(text[0] == '-' ? '-' : '=', text);
  EXPECT_EQ(linesOf(tokens), (Lines{"a", "b", "x", "y"}));
  EXPECT_EQ(splitLines("a\n\n"), (Lines{"a", ""}));
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
