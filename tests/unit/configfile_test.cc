#include "configfile.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// Reads and writes configuration files in a fresh scratch folder.
class ConfigFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zet-configfile-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    path = dir + "/zet.conf";
  }
  void TearDown() override { std::filesystem::remove_all(dir); }

  void writeFile(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
  std::string readFile() {
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
  }
  // The whole map, as the writer lays it out.
  std::string mapOf(const ConfigFile& config) {
    config.write(path);
    return readFile();
  }

  std::string dir;
  std::string path;
};

TEST_F(ConfigFileTest, ReadKeepsOneTokenListForTheWholeFile) {
  const struct {
    const char* file;
    const char* map;
  } rows[] = {
      {"[zet]\ndeps=yes\n", "[zet]\ndeps=yes\n"},
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
      {"", ""},
  };
  for (const auto& row : rows) {
    writeFile(row.file);
    ConfigFile config;
    EXPECT_TRUE(config.read(path));
    EXPECT_EQ(mapOf(config), row.map) << "file: " << row.file;
  }
}

TEST_F(ConfigFileTest, GetTakesNamesExactly) {
  writeFile("[zet]\ndeps = no\n");
  ConfigFile config;
  ASSERT_TRUE(config.read(path));
  EXPECT_EQ(config.get("zet", "deps"), "");
  EXPECT_EQ(config.get("zet", "deps "), " no");
  EXPECT_EQ(config.get("ZET", "deps "), "");
}

TEST_F(ConfigFileTest, ReadAddsToTheMapAndAHeaderWipesItsSection) {
  ConfigFile config;
  config.set("kept", "k", "v");
  config.set("zet", "other", "1");
  EXPECT_FALSE(config.read(dir + "/missing"));
  EXPECT_EQ(config.get("zet", "other"), "1");
  writeFile("[zet]\ndeps=yes\n");
  ASSERT_TRUE(config.read(path));
  EXPECT_EQ(config.get("kept", "k"), "v");
  EXPECT_EQ(config.get("zet", "deps"), "yes");
  EXPECT_EQ(config.get("zet", "other"), "");
}

TEST_F(ConfigFileTest, WriteReplacesTheFileAndOnlyASingleKeyReadsBack) {
  writeFile("stale\nlines\nthat=go\n");
  ConfigFile written;
  written.set("zet", "deps", "no");
  written.write(path);
  EXPECT_EQ(readFile(), "[zet]\ndeps=no\n");
  ConfigFile single;
  ASSERT_TRUE(single.read(path));
  EXPECT_EQ(single.get("zet", "deps"), "no");

  written.set("zet", "more", "x");
  written.write(path);
  ConfigFile pair;
  ASSERT_TRUE(pair.read(path));
  EXPECT_EQ(pair.get("zet", "deps"), "no");
  EXPECT_EQ(pair.get("zet", "more"), "");
  written.write(dir + "/no/such/dir");
}

}  // namespace
