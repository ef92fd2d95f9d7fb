#include "configfile.h"

#include <gtest/gtest.h>

#include <string>

#include "scratch.h"

namespace {

class ConfigFileTest : public ::testing::Test {
 protected:
  // The whole map, as the writer lays it out.
  std::string mapOf(const ConfigFile& config) {
    config.write(path);
    return readWholeFile(path);
  }

  ScratchFolder scratch;
  const std::string path = scratch.path() + "/zet.conf";
};

TEST_F(ConfigFileTest, ReadKeepsOneTokenListForTheWholeFile) {
  const struct {
    const char* file;
    const char* map;
  } rows[] = {{"[zet]\ndeps=yes\n", "[zet]\ndeps=yes\n"},
              {"deps=yes\n", "[]\ndeps=yes\n"},
              {"[a]\nx=1\n[a]\n", "[a]\n"},
              {"[a]\nx=1\ny=2\n", "[a]\nx=1\n"},
              {"[a]\nx=1\n\n[b]\n\n", "[a]\nx=1\n[b]\nx=1\n"},
              {"# comment\ndeps=no\n", ""},
              {"[zet]\ndeps = no\n", "[zet]\ndeps = no\n"},
              {"[\nx\n", "[]\n[=x\n"},
              {"[]\nk=v\n", "[]\nk=v\n"},
              {"first\nsecond\n", "[]\nfirst=second\n"},
              {"key=\n=value\n", "[]\nkey=value\n"},
              {"a=b=c\nk=v\n", ""},
              {"==\nk=v\n", "[]\nk=v\n"},
              {"[zet] \ndeps=yes\n", ""},
              {"[zet]\r\ndeps=yes\r\n", "[zet]\ndeps=yes\n"},
              {"[b]\n[a]\n", "[a]\n[b]\n"},
              {"", ""}};
  for (const auto& row : rows) {
    ConfigFile config;
    EXPECT_TRUE(config.read(scratch.write("zet.conf", row.file)));
    EXPECT_EQ(mapOf(config), row.map) << "file: " << row.file;
  }
}

TEST_F(ConfigFileTest, ReadAddsToTheMapAndAHeaderWipesItsSection) {
  ConfigFile config;
  config.set("kept", "k", "v");
  config.set("zet", "other", "1");
  EXPECT_FALSE(config.read(scratch.path() + "/missing"));
  EXPECT_EQ(config.get("zet", "other"), "1");
  ASSERT_TRUE(config.read(scratch.write("zet.conf", "[zet]\ndeps = no\n")));
  EXPECT_EQ(config.get("kept", "k"), "v");
  EXPECT_EQ(config.get("zet", "other"), "");
  EXPECT_EQ(config.get("zet", "deps"), "");
  EXPECT_EQ(config.get("zet", "deps "), " no");
  EXPECT_EQ(config.get("ZET", "deps "), "");
}

TEST_F(ConfigFileTest, WriteReplacesTheFileAndOnlyASingleKeyReadsBack) {
  scratch.write("zet.conf", "stale\nlines\nthat=go\n");
  ConfigFile written, single, pair;
  written.set("zet", "deps", "no");
  EXPECT_EQ(mapOf(written), "[zet]\ndeps=no\n");
  ASSERT_TRUE(single.read(path));
  EXPECT_EQ(single.get("zet", "deps"), "no");
  written.set("zet", "more", "x");
  written.write(path);
  ASSERT_TRUE(pair.read(path));
  EXPECT_EQ(pair.get("zet", "deps"), "no");
  EXPECT_EQ(pair.get("zet", "more"), "");
  written.write(scratch.path() + "/no/such/dir");
}

}  // namespace
