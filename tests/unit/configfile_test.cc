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
      {"[a]\nx=1\ny=2\n", "a", "y", ""},
      {"[\n[]\nk=v\n", "", "", ""},
      {"[]\nk=v\n", "", "k", "v"},
      {"[s]\r\nk=v\r\n", "s", "k", "v"},
  };
  for (const auto& row : rows) {
    ConfigFile config;
    EXPECT_TRUE(config.read(write("conf", row.text)));
    EXPECT_EQ(config.get(row.section, row.key), row.value) << row.text;
  }
}
