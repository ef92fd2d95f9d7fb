#include "packagerecord.h"

#include "scratch.h"

using PackageRecordTest = Scratch;

TEST_F(PackageRecordTest, WriteGivesTheDefaultDescriptionThenTheOthersInOrder) {
  PackageRecord record;
  record.name = "foo-1.2-i486-1";
  record.compressedSizeK = 4294967295u;
  record.location = "x.tgz";
  record.descriptions["pl"].push_back("foo: pl");
  record.descriptions["de"].push_back("foo: de");
  record.descriptions["C"].push_back("");
  record.files.push_back("usr/");
  EXPECT_FALSE(record.write(root + "/r"));
  EXPECT_EQ(
      read(root + "/r"),
      "PACKAGE NAME:     foo-1.2-i486-1\nCOMPRESSED PACKAGE SIZE:     4294967295 K\n"
      "UNCOMPRESSED PACKAGE SIZE:     0 K\nPACKAGE LOCATION:     x.tgz\nPACKAGE DESCRIPTION:\n\n"
      "LANGUAGE:     de\nfoo: de\nLANGUAGE:     pl\nfoo: pl\nFILE LIST:\nusr/\n");
  PackageRecord polish;
  polish.descriptions["pl"].push_back("x: y");
  EXPECT_TRUE(polish.write(root + "/no/r"));
  polish.write(root + "/r");
  EXPECT_NE(read(root + "/r").find("\nPACKAGE DESCRIPTION:\nLANGUAGE:     pl\nx: y\nFILE LIST:\n"),
            std::string::npos);
  EXPECT_FALSE(record.read(root + "/none"));
  EXPECT_EQ(record.descriptions.size() + record.files.size() + record.name.size(), 0u);
}

// Labels are prefixes, blocks stop at a language label or any leading part of "FILE LIST:",
// and every line is looked at again as a label after its block was copied.
TEST_F(PackageRecordTest, ReadKeepsItsOddRules) {
  const Lines late = {"FILE", "LANGUAGE: pl", "p: one", "LANGUAGE:", "p: two", "FILE LIST:", "f1"};
  const struct {
    const char* text;
    Lines fields;  // name, location, sizes
    Lines files;
    std::map<std::string, Lines> descriptions;
  } rows[] = {
      {"PACKAGE NAME: a b\nPACKAGE NAME:\nPACKAGE LOCATION:  x  y\nCOMPRESSED PACKAGE SIZE:     "
       "120\n"
       "UNCOMPRESSED PACKAGE SIZE: 9K x\n",
       {"a", "x", "120 9"},
       {},
       {}},
      {"COMPRESSED PACKAGE SIZE: 12K 7\nUNCOMPRESSED PACKAGE SIZE: x\nFILE LIST:",
       {"", "", "12 0"},
       {},
       {}},
      {"PACKAGE DESCRIPTION:\nd: one\nPACKAGE NAME: n m\nFILE LIST:x\nFILE\nLANGUAGE: pl\np: one\n"
       "LANGUAGE:\np: two\nFILE LIST:\nf1\n",
       {"n", "", "0 0"},
       {"FILE", "LANGUAGE: pl", "p: one", "LANGUAGE:", "p: two", "FILE LIST:", "f1", "f1"},
       {{"C", {"d: one", "PACKAGE NAME: n m", "FILE LIST:x"}}, {"pl", {"p: one", "p: two"}}}},
      {"LANGUAGE: pl\nx\n\ny\nPACKAGE DESCRIPTION:\nz\nF\nLANGUAGE: pl\nw\n",
       {"", "", "0 0"},
       {},
       {{"pl", {"x", "w"}}, {"C", {"z"}}}},
      {"PACKAGE DESCRIPTION:\nLANGUAGE: pl\nx\n", {"", "", "0 0"}, {}, {{"pl", {"x"}}}},
  };
  for (const auto& row : rows) {
    PackageRecord record;
    EXPECT_TRUE(record.read(write("r", row.text)));
    const std::string sizes =
        std::to_string(record.compressedSizeK) + " " + std::to_string(record.uncompressedSizeK);
    EXPECT_EQ((Lines{record.name, record.location, sizes}), row.fields) << row.text;
    EXPECT_EQ(linesOf(record.files), row.files) << row.text;
    std::map<std::string, Lines> descriptions;
    for (const auto& [language, lines] : record.descriptions)
      descriptions[language] = linesOf(lines);
    EXPECT_EQ(descriptions, row.descriptions) << row.text;
    // Each line once: a second label does not list the rest again.
    Lines listed;
    EXPECT_EQ(PackageRecord::forEachListedFile(
                  root + "/r", [&listed](std::string_view path) { listed.emplace_back(path); }),
              std::string(row.text).find("FILE LIST:") == std::string::npos
                  ? PackageRecord::Listing::Missing
                  : PackageRecord::Listing::Found);
    EXPECT_EQ(listed, row.files.empty() ? Lines{} : late) << row.text;
  }
  EXPECT_EQ(PackageRecord::forEachListedFile(root + "/none", [](std::string_view) {}),
            PackageRecord::Listing::Unreadable);
}
