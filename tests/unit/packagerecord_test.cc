#include "packagerecord.h"

#include "scratch.h"

using PackageRecordTest = Scratch;

// The record in one line: name|location|sizes|files|LANGUAGE=lines... with "," and ";".
std::string summary(const PackageRecord& record) {
  std::string text = record.name + "|" + record.location + "|" +
                     std::to_string(record.compressedSizeK) + " " +
                     std::to_string(record.uncompressedSizeK) + "|";
  for (unsigned i = 0; i < record.files.size(); ++i)
    text += (i ? "," : "") + linesOf(record.files)[i];
  for (const auto& [language, lines] : record.descriptions) {
    text += "|" + language + "=";
    for (unsigned i = 0; i < lines.size(); ++i) text += (i ? ";" : "") + linesOf(lines)[i];
  }
  return text;
}

// Labels are prefixes, blocks stop at a language label or a leading part of "FILE LIST:", and
// every line is looked at again as a label; the listing gives each line once from the first.
TEST_F(PackageRecordTest, ReadKeepsItsOddRules) {
  const struct {
    const char *text, *record, *listed;
  } rows[] = {
      {"PACKAGE NAME: a b\nPACKAGE NAME:\nPACKAGE LOCATION:  x  y\nCOMPRESSED PACKAGE SIZE:     "
       "120\n"
       "UNCOMPRESSED PACKAGE SIZE: 9K x\n",
       "a|x|120 9|", ""},
      {"COMPRESSED PACKAGE SIZE: 12K 7\nCOMPRESSED PACKAGE SIZE:\nUNCOMPRESSED PACKAGE SIZE: x\n"
       "FILE LIST:",
       "||12 0|", ""},
      {"PACKAGE DESCRIPTION:\nd: one\nPACKAGE NAME: n m\nFILE LIST:x\nFILE\nLANGUAGE: pl\np: one\n"
       "LANGUAGE:\np: two\nFILE LIST:\nf1\n",
       "n||0 0|FILE,LANGUAGE: pl,p: one,LANGUAGE:,p: two,FILE LIST:,f1,f1"
       "|C=d: one;PACKAGE NAME: n m;FILE LIST:x|pl=p: one;p: two",
       "FILE,LANGUAGE: pl,p: one,LANGUAGE:,p: two,FILE LIST:,f1"},
      {"LANGUAGE: pl\nx\n\ny\nPACKAGE DESCRIPTION:\nz\nF\nLANGUAGE: pl\nw\n", "||0 0||C=z|pl=x;w",
       ""},
      {"PACKAGE DESCRIPTION:\nLANGUAGE: pl\nx\n", "||0 0||pl=x", ""},
  };
  PackageRecord record;  // one for all rows: each read starts from nothing
  for (const auto& row : rows) {
    EXPECT_TRUE(record.read(write("r", row.text)));
    EXPECT_EQ(summary(record), row.record) << row.text;
    std::string listed;
    EXPECT_EQ(PackageRecord::forEachListedFile(root + "/r",
                                               [&listed](std::string_view path) {
                                                 listed += (listed.empty() ? "" : ",");
                                                 listed += path;
                                               }),
              strstr(row.text, "FILE LIST:") ? PackageRecord::Listing::Found
                                             : PackageRecord::Listing::Missing);
    EXPECT_EQ(listed, row.listed) << row.text;
  }
  EXPECT_EQ(PackageRecord::forEachListedFile(root + "/none", [](std::string_view) {}),
            PackageRecord::Listing::Unreadable);
  // Writing says true when it fails, and replaces a record.
  EXPECT_FALSE(record.write(root + "/r"));
  EXPECT_TRUE(record.write(root + "/no/r"));
}
