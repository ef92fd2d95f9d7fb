#include "packagerecord.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

const char* const EXAMPLE_RECORD =
    "PACKAGE NAME:     foo-bar-1.2-i486-1\nCOMPRESSED PACKAGE SIZE:     120 K\n"
    "UNCOMPRESSED PACKAGE SIZE:     480 K\nPACKAGE LOCATION:     foo-bar-1.2-i486-1.tgz\n"
    "PACKAGE DESCRIPTION:\nfoo-bar: a tool\nLANGUAGE:     pl\nfoo-bar: narzedzie\n"
    "FILE LIST:\nusr/\nusr/bin/foo\n";

class PackageRecordTest : public ::testing::Test {
 protected:
  PackageRecord readBack(const std::string& content) {
    PackageRecord record;
    EXPECT_TRUE(record.read(scratch.write("record", content)));
    return record;
  }
  std::string written(PackageRecord& record) {
    const std::string path = scratch.path() + "/written";
    EXPECT_FALSE(record.write(path));
    return readWholeFile(path);
  }

  ScratchFolder scratch;
};

TEST_F(PackageRecordTest, WritesTheExampleByteForByteAndReadsItBack) {
  PackageRecord record;
  record.name = "foo-bar-1.2-i486-1";
  record.compressedSizeK = 120;
  record.uncompressedSizeK = 480;
  record.location = "foo-bar-1.2-i486-1.tgz";
  record.descriptions["pl"].push_back("foo-bar: narzedzie");
  record.descriptions["C"].push_back("foo-bar: a tool");
  record.files = vectorOf({"usr/", "usr/bin/foo"});
  EXPECT_EQ(written(record), EXAMPLE_RECORD);
  // Any field read wrongly, or any extra language, would change what is written again.
  PackageRecord back = readBack(EXAMPLE_RECORD);
  EXPECT_EQ(back.descriptions.size(), 2u);
  EXPECT_EQ(written(back), EXAMPLE_RECORD);

  EXPECT_TRUE(record.write(scratch.path() + "/missing/record"));
  EXPECT_FALSE(back.read(scratch.path() + "/missing"));
  EXPECT_EQ(back.name + back.location, "");
  EXPECT_EQ(back.compressedSizeK + back.uncompressedSizeK + back.files.size(), 0u);
  EXPECT_TRUE(back.descriptions.empty());
}

TEST_F(PackageRecordTest, WritesLanguagesInKeyOrderAndADefaultOnlyInMemory) {
  PackageRecord record;
  record.name = "x";
  record.descriptions["pl"].push_back("x: p");
  record.descriptions["de"] = vectorOf({"x: d", ""});
  EXPECT_EQ(written(record),
            "PACKAGE NAME:     x\nCOMPRESSED PACKAGE SIZE:     0 K\n"
            "UNCOMPRESSED PACKAGE SIZE:     0 K\nPACKAGE LOCATION:     \nPACKAGE DESCRIPTION:\n"
            "LANGUAGE:     de\nx: d\n\nLANGUAGE:     pl\nx: p\nFILE LIST:\n");
  EXPECT_EQ(record.descriptions.count("C"), 1u);
  // The empty description line cuts "de" on reading; "pl" needs its label, and no "C" appears.
  const PackageRecord back = readBack(readWholeFile(scratch.path() + "/written"));
  EXPECT_EQ(back.descriptions.count("C"), 0u);
  EXPECT_EQ(linesOf(back.descriptions.at("de")), Lines{"x: d"});
  EXPECT_EQ(linesOf(back.descriptions.at("pl")), Lines{"x: p"});
}

TEST_F(PackageRecordTest, ValueLinesAreReadAsPrefixesAndTokens) {
  const std::pair<const char*, const char*> rows[] = {
      // the line behind a compressed size of 7, and then name|location|compressed|uncompressed
      {"COMPRESSED PACKAGE SIZE:     120", "||120|0"},
      {"COMPRESSED PACKAGE SIZE: 120K", "||120|0"},
      {"COMPRESSED PACKAGE SIZE: big K", "||0|0"},
      {"COMPRESSED PACKAGE SIZE:", "||7|0"},  // too few tokens: the value stays
      {"UNCOMPRESSED PACKAGE SIZE:     480 K", "||7|480"},
      {"PACKAGE NAME:     a b", "a||7|0"},
      {"PACKAGE NAME:x y z", "y||7|0"},  // anything may follow the label
      {"PACKAGE NAME:", "||7|0"},
      {"PACKAGE LOCATION:     /mnt/my dir/a.tgz", "|/mnt/my|7|0"},
      {"package name:     lower", "||7|0"},
      {"  PACKAGE NAME:     indented", "||7|0"},
  };
  for (const auto& [line, fields] : rows) {
    SCOPED_TRACE(line);
    const PackageRecord record =
        readBack(std::string("COMPRESSED PACKAGE SIZE:     7 K\n") + line + "\n");
    EXPECT_EQ(record.name + "|" + record.location + "|" + std::to_string(record.compressedSizeK) +
                  "|" + std::to_string(record.uncompressedSizeK),
              fields);
  }
}

TEST_F(PackageRecordTest, DescriptionBlocksEndAtStopLines) {
  const std::pair<const char*, Lines> rows[] = {
      // the line behind "a: one", and the description read
      {"FILE LIST:", {"a: one"}},
      {"FILE LIST", {"a: one"}},
      {"FILE", {"a: one"}},
      {"F", {"a: one"}},
      {"", {"a: one"}},
      {"LANGUAGE:x", {"a: one"}},
      {"FILE LIST: x", {"a: one", "FILE LIST: x"}},
      {"FILE LIST:x", {"a: one", "FILE LIST:x"}},
      {"FILES", {"a: one", "FILES"}},
      {"a: two", {"a: one", "a: two"}},
  };
  for (const auto& [after, description] : rows) {
    SCOPED_TRACE(after);
    const PackageRecord record =
        readBack(std::string("PACKAGE DESCRIPTION:\na: one\n") + after + "\n");
    EXPECT_EQ(linesOf(record.descriptions.at("C")), description);
  }
}

TEST_F(PackageRecordTest, LanguageBlocksFollowTheCurrentLanguage) {
  const PackageRecord record = readBack(
      "LANGUAGE:     pl\n"
      "a: jeden\n"
      "PACKAGE DESCRIPTION:\n"  // no stop line; its block is always "C"
      "a: one\n"
      "LANGUAGE:\n"  // no code: the current language stays
      "a: dwa\n"
      "LANGUAGE:     de\n"  // no lines: no key
      "LANGUAGE:     pl\n"
      "a: trzy\n");
  EXPECT_EQ(record.descriptions.size(), 2u);
  EXPECT_EQ(linesOf(record.descriptions.at("C")), Lines{"a: one"});
  EXPECT_EQ(linesOf(record.descriptions.at("pl")),
            (Lines{"a: jeden", "PACKAGE DESCRIPTION:", "a: one", "a: dwa", "a: trzy"}));
}

TEST_F(PackageRecordTest, LinesInsideBlocksAreLookedAtAgainAsLabels) {
  const PackageRecord record = readBack(
      "PACKAGE NAME:     right-1-i486-1\nPACKAGE DESCRIPTION:\nPACKAGE NAME:     wrong-1-i486-1\n"
      "FILE LIST:\nusr/\nFILE LIST:\nusr/bin/\n");
  EXPECT_EQ(record.name, "wrong-1-i486-1");
  EXPECT_EQ(linesOf(record.descriptions.at("C")), Lines{"PACKAGE NAME:     wrong-1-i486-1"});
  EXPECT_EQ(linesOf(record.files), (Lines{"usr/", "FILE LIST:", "usr/bin/", "usr/bin/"}));
}

TEST_F(PackageRecordTest, EdgesOfTheFileList) {
  EXPECT_EQ(readBack("FILE LIST:\n").files.size(), 0u);
  const PackageRecord empty = readBack("no label\nat all\n");
  EXPECT_TRUE(empty.name.empty() && empty.descriptions.empty() && empty.files.size() == 0);
  // A path over the loader's line length comes out in pieces.
  const std::string longPath(1500, 'p');
  EXPECT_EQ(linesOf(readBack("FILE LIST:\nusr/\n" + longPath + "\n").files),
            (Lines{"usr/", longPath.substr(0, 1023), longPath.substr(1023)}));
}

}  // namespace
