#include "configfile.h"

#include "scratch.h"

using ConfigFileTest = Scratch;

// The reader keeps its tokens across lines, so in practice only the first assignment counts.
TEST_F(ConfigFileTest, ReadTakesAssignmentsAsTheAccumulatingTokensAllow) {
  const struct {
    const char* text;
    const char* section;
    const char* key;
    const char* value;
  } rows[] = {
      {"deps=yes\n", "", "deps", "yes"},
      {"deps=yes\n", "zet", "deps", ""},
      {"[a]\nx=1\n[a]\n", "a", "x", ""},
      {"[a]\nx=1\ny=2\n", "a", "y", ""},
      {"[a]\nx=1\n\n[b]\n\n", "b", "x", "1"},
      {"# comment\ndeps=no\n", "", "deps", ""},
      {"[zet]\ndeps = no\n", "zet", "deps ", " no"},
      {"[zet]\nkey\nvalue\n", "zet", "key", "value"},
      {"[\n[]\nk=v\n", "", "", ""},
      {"[]\nk=v\n", "", "k", "v"},
      {"k=\n=v\n", "", "k", "v"},
      {"[s] \nk\n", "", "[s] ", "k"},
      {"a=b=c\n[s]\nk=v\n", "s", "k", ""},
      {"[s]\r\nk=v\r\n", "s", "k", "v"},
  };
  for (const auto& row : rows) {
    ConfigFile config;
    EXPECT_TRUE(config.read(write("conf", row.text)));
    EXPECT_EQ(config.get(row.section, row.key), row.value) << row.text;
  }
  ConfigFile config;
  EXPECT_FALSE(config.read(root + "/none"));
  config.set("zet", "deps", "no");
  config.set("a", "k", "v");
  EXPECT_TRUE(config.read(write("conf", "[a]\n")));
  EXPECT_EQ(config.get("a", "k"), "");
  EXPECT_EQ(config.get("zet", "deps"), "no");
}
