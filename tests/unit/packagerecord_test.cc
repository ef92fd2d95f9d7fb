#include "packagerecord.h"

#include <gtest/gtest.h>

#include "scratch.h"

namespace {

using Lines = std::vector<std::string>;

const char* const EXAMPLE_RECORD =
    "PACKAGE NAME:     foo-bar-1.2-i486-1\n"
    "COMPRESSED PACKAGE SIZE:     120 K\n"
    "UNCOMPRESSED PACKAGE SIZE:     480 K\n"
    "PACKAGE LOCATION:     foo-bar-1.2-i486-1.tgz\n"
    "PACKAGE DESCRIPTION:\n"
    "foo-bar: a tool\n"
    "LANGUAGE:     pl\n"
    "foo-bar: narzedzie\n"
    "FILE LIST:\n"
    "usr/\n"
    "usr/bin/foo\n";

class PackageRecordTest : public ::testing::Test {
 protected:
  // Reads a hand-written record.
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
  record.files.push_back("usr/");
  record.files.push_back("usr/bin/foo");
  EXPECT_EQ(written(record), EXAMPLE_RECORD);

  const PackageRecord back = readBack(EXAMPLE_RECORD);
  EXPECT_EQ(back.name, record.name);
  EXPECT_EQ(back.compressedSizeK, 120u);
  EXPECT_EQ(back.uncompressedSizeK, 480u);
  EXPECT_EQ(back.location, record.location);
  EXPECT_EQ(linesOf(back.files), linesOf(record.files));
  ASSERT_EQ(back.descriptions.size(), 2u);
  EXPECT_EQ(linesOf(back.descriptions.at("C")), Lines{"foo-bar: a tool"});
  EXPECT_EQ(linesOf(back.descriptions.at("pl")), Lines{"foo-bar: narzedzie"});
}

TEST_F(PackageRecordTest, WritesLanguagesInKeyOrderAndADefaultOnlyInMemory) {
  PackageRecord record;
  record.name = "x";
  record.descriptions["pl"].push_back("x: p");
  record.descriptions["de"].push_back("x: d");
  record.descriptions["de"].push_back("");
  EXPECT_EQ(written(record),
            "PACKAGE NAME:     x\n"
            "COMPRESSED PACKAGE SIZE:     0 K\n"
            "UNCOMPRESSED PACKAGE SIZE:     0 K\n"
            "PACKAGE LOCATION:     \n"
            "PACKAGE DESCRIPTION:\n"
            "LANGUAGE:     de\n"
            "x: d\n"
            "\n"
            "LANGUAGE:     pl\n"
            "x: p\n"
            "FILE LIST:\n");
  EXPECT_EQ(record.descriptions.count("C"), 1u);
  // The empty description line cuts "de" on reading; "pl" needs its label, and no "C" appears.
  const PackageRecord back = readBack(readWholeFile(scratch.path() + "/written"));
  EXPECT_EQ(back.descriptions.count("C"), 0u);
  EXPECT_EQ(linesOf(back.descriptions.at("de")), Lines{"x: d"});
  EXPECT_EQ(linesOf(back.descriptions.at("pl")), Lines{"x: p"});
}

TEST_F(PackageRecordTest, AnUnwritablePathGivesTrue) {
  PackageRecord record;
  EXPECT_TRUE(record.write(scratch.path() + "/missing/record"));
}

TEST_F(PackageRecordTest, AMissingFileGivesFalseAndAClearedRecord) {
  PackageRecord record = readBack(EXAMPLE_RECORD);
  EXPECT_FALSE(record.read(scratch.path() + "/missing"));
  EXPECT_EQ(record.name, "");
  EXPECT_EQ(record.location, "");
  EXPECT_EQ(record.compressedSizeK, 0u);
  EXPECT_EQ(record.files.size(), 0u);
  EXPECT_TRUE(record.descriptions.empty());
}

TEST_F(PackageRecordTest, ValueLinesAreReadAsPrefixesAndTokens) {
  struct Row {
    const char* line;
    const char* name;
    const char* location;
    uint32_t compressed;
    uint32_t uncompressed;
  };
  const Row rows[] = {
      {"COMPRESSED PACKAGE SIZE:     120", "", "", 120, 0},
      {"COMPRESSED PACKAGE SIZE: 120K", "", "", 120, 0},
      {"COMPRESSED PACKAGE SIZE: big K", "", "", 0, 0},
      {"COMPRESSED PACKAGE SIZE:", "", "", 7, 0},  // too few tokens: the value stays
      {"UNCOMPRESSED PACKAGE SIZE:     480 K", "", "", 7, 480},
      {"PACKAGE NAME:     a b", "a", "", 7, 0},
      {"PACKAGE NAME:x y z", "y", "", 7, 0},  // anything may follow the label
      {"PACKAGE NAME:", "", "", 7, 0},
      {"PACKAGE LOCATION:     /mnt/my dir/a.tgz", "", "/mnt/my", 7, 0},
      {"package name:     lower", "", "", 7, 0},
      {"  PACKAGE NAME:     indented", "", "", 7, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    const PackageRecord record =
        readBack(std::string("COMPRESSED PACKAGE SIZE:     7 K\n") + row.line + "\n");
    EXPECT_EQ(record.name, row.name);
    EXPECT_EQ(record.location, row.location);
    EXPECT_EQ(record.compressedSizeK, row.compressed);
    EXPECT_EQ(record.uncompressedSizeK, row.uncompressed);
  }
}

TEST_F(PackageRecordTest, DescriptionBlocksEndAtStopLines) {
  struct Row {
    const char* after;  // the line behind "a: one"
    Lines description;
  };
  const Row rows[] = {
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
  for (const Row& row : rows) {
    SCOPED_TRACE(row.after);
    const PackageRecord record =
        readBack(std::string("PACKAGE DESCRIPTION:\na: one\n") + row.after + "\n");
    EXPECT_EQ(linesOf(record.descriptions.at("C")), row.description);
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
  EXPECT_EQ(record.descriptions.count("de"), 0u);
  EXPECT_EQ(linesOf(record.descriptions.at("C")), Lines{"a: one"});
  EXPECT_EQ(linesOf(record.descriptions.at("pl")),
            (Lines{"a: jeden", "PACKAGE DESCRIPTION:", "a: one", "a: dwa", "a: trzy"}));
}

TEST_F(PackageRecordTest, LinesInsideBlocksAreLookedAtAgainAsLabels) {
  const PackageRecord record = readBack(
      "PACKAGE NAME:     right-1-i486-1\n"
      "PACKAGE DESCRIPTION:\n"
      "PACKAGE NAME:     wrong-1-i486-1\n"
      "FILE LIST:\n"
      "usr/\n"
      "FILE LIST:\n"
      "usr/bin/\n");
  EXPECT_EQ(record.name, "wrong-1-i486-1");
  EXPECT_EQ(linesOf(record.descriptions.at("C")), Lines{"PACKAGE NAME:     wrong-1-i486-1"});
  EXPECT_EQ(linesOf(record.files), (Lines{"usr/", "FILE LIST:", "usr/bin/", "usr/bin/"}));
}

TEST_F(PackageRecordTest, EdgesOfTheFileList) {
  EXPECT_EQ(readBack("FILE LIST:\n").files.size(), 0u);
  const PackageRecord empty = readBack("no label\nat all\n");
  EXPECT_EQ(empty.name, "");
  EXPECT_TRUE(empty.descriptions.empty());
  EXPECT_EQ(empty.files.size(), 0u);
  // A path over the loader's line length comes out in pieces.
  const std::string longPath(1500, 'p');
  const PackageRecord split = readBack("FILE LIST:\nusr/\n" + longPath + "\n");
  EXPECT_EQ(linesOf(split.files), (Lines{"usr/", longPath.substr(0, 1023), longPath.substr(1023)}));
}

}  // namespace
