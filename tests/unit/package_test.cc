#include "package.h"

#include "linklines.h"
#include "messages.h"
#include "packagename.h"
#include "scratch.h"

using PackageTest = Scratch;

TEST(PackageName, ParseSplitsNameVersionArchitectureAndBuild) {
  const struct {
    const char* text;
    bool parsed;
    Lines fields;  // name, version, architecture, build
  } rows[] = {
      {"foo-1.2-i486-1", true, {"foo", "1.2", "i486", "1"}},
      {"foo-bar-1.2-i486-1", true, {"foo-bar", "1.2", "i486", "1"}},
      {"foo-2-bar-i486-1", true, {"foo-2", "bar", "i486", "1"}},
      {"foo-1.2-rc1-i486-1", true, {"foo", "1.2rc1", "i486", "1"}},
      {"foo-1.2-pre-3-i486-1", true, {"foo", "1.2-pre3", "i486", "1"}},
      {"-foo--1.2-i486-1", true, {"foo", "1.2", "i486", "1"}},
      {"foo-v1.2-2.-x-1", true, {"foo-v1.2", "2.", "x", "1"}},
      {"foo-1.2-i486", false, {"", "", "", ""}},
  };
  PackageName name;
  for (const auto& row : rows) {
    EXPECT_EQ(name.parse(row.text), row.parsed) << row.text;
    EXPECT_EQ((Lines{name.name, name.version, name.architecture, name.build}), row.fields);
  }
}

// Only "( cd DIR ; rm -rf LINK )" lines name links, as a scanner of two fields of at most 1024
// characters reads them, with a link of 1024 characters or more emptying the directory.
TEST(Package, ScriptSymlinksReadTheRemovalLinesToTheirLimits) {
  const std::string d1024(1024, 'd'), l1023(1023, 'l');
  const struct {
    std::string line;
    Lines links;
  } rows[] = {
      {"( cd usr/lib ; rm -rf libfoo.so )", {"usr/lib/libfoo.so"}},
      {"(cd a;rm -rf b)x y", {}},
      {"(  cd a ;rm -rf   b", {"a/b"}},
      {"( cd a ; rm -rf b)", {"a/b)"}},
      {"( cd a ; ln -sf c b )", {}},
      {" ( cd a ; rm -rf b )", {}},
      {"( cd " + d1024 + " ; rm -rf b )", {d1024 + "/b"}},
      {"( cd " + d1024 + "d ; rm -rf b )", {}},
      {"( cd a ; rm -rf " + l1023 + " )", {"a/" + l1023}},
      {"( cd a ; rm -rf " + l1023 + "l )", {}},
  };
  for (const auto& row : rows) {
    TextVector script;
    script.push_back(row.line.c_str());
    EXPECT_EQ(linesOf(LinkLines::read(script)), row.links) << row.line.substr(0, 40);
  }
}

TEST_F(PackageTest, ALoadStartsFromNothing) {
  write("var/log/packages/a-1-x-1",
        "PACKAGE NAME: a-1-x-1\nPACKAGE LOCATION: l\n"
        "COMPRESSED PACKAGE SIZE: 1\nPACKAGE DESCRIPTION:\na: d\nFILE LIST:\nf\n");
  for (const char* dir : {"scripts", "postinst", "deps", "build"})
    write(std::string("var/log/") + dir + "/a-1-x-1", "x\n");
  Package package;
  EXPECT_TRUE(package.loadFromDatabase("a"));
  EXPECT_FALSE(package.loadFromDatabase("b"));
  EXPECT_EQ(package.name, "");
  EXPECT_EQ(package.fullName, "");
  EXPECT_EQ(package.location, "");
  EXPECT_EQ(package.compressedSizeK, 0u);
  EXPECT_EQ(package.files.size(), 0u);
  EXPECT_EQ(package.descriptions.size(), 0u);
  EXPECT_EQ(package.doinstScript.size(), 0u);
  EXPECT_EQ(package.postinstScript.size(), 0u);
  EXPECT_EQ(package.deps.size(), 0u);
  EXPECT_EQ(package.buildInfo.size(), 0u);
  EXPECT_FALSE(package.fromDatabase);
}

// Only traces tell the name a load looks up (three tokens dropped) and the unpacking.
TEST_F(PackageTest, TracesTellTheLookedUpNameAndTheUnpacking) {
  DebugLog::instance().enabled = true;
  testing::internal::CaptureStdout();
  Package().loadFromDatabase("a-b-1-x-1");
  Package().loadFromFile("/none");
  Package package;
  package.location = "p.tgz";
  package.install();
  DebugLog::instance().enabled = false;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "loading package: a-b\nloading from file\ninstallation\n"
            "exe: /lib/zetutils/tar -xzlUpf p.tgz -C " +
                root + " 1>/dev/null\n");
}

// Under another root as under "/", the paths that a removal forms hold the root already.
TEST_F(PackageTest, RemovalsTakeTheirRootOnce) {
  write("d/f", "");
  std::filesystem::create_symlink("f", root + "/l");
  TextVector files, links;
  files.split(' ', "d/ d/f");
  links.split(' ', "l");
  Package::removeSymlinks(links, TextVector(), root);
  Package::removeFiles(files, TextVector(), root);
  EXPECT_FALSE(std::filesystem::exists(root + "/d"));
  EXPECT_FALSE(std::filesystem::is_symlink(root + "/l"));
}
