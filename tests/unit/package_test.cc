#include "package.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>

#include "lang.h"
#include "messages.h"
#include "scratch.h"

namespace {

template <typename Action>
std::string traceOf(Action action) {
  DebugLog::instance().enabled = true;
  testing::internal::CaptureStdout();
  action();
  DebugLog::instance().enabled = false;
  return testing::internal::GetCapturedStdout();
}

TEST(PackageNameTest, SplitsBaseNamesIntoTheirParts) {
  const std::pair<const char*, const char*> rows[] = {
      // name/version/architecture/build; "///" when the text does not parse
      {"foo-1.2-i486-1", "foo/1.2/i486/1"},
      {"foo-bar-1.2-i486-1", "foo-bar/1.2/i486/1"},
      {"foo-bar-2-i486-1", "foo-bar/2/i486/1"},
      {"foo-2-bar-i486-1", "foo-2/bar/i486/1"},
      {"foo-1.2-rc1-i486-1", "foo/1.2rc1/i486/1"},
      {"foo-1.2-pre-3-i486-1", "foo/1.2-pre3/i486/1"},
      {"foo--1.2-i486-1", "foo/1.2/i486/1"},
      {"foo-1.2-i486", "///"},
      {"-foo-1.2-i486-1", "foo/1.2/i486/1"},
      {"foo-bar-baz-1.2-i486-1", "foo-bar-baz/1.2/i486/1"},
      {"", "///"},
  };
  for (const auto& [text, parts] : rows) {
    SCOPED_TRACE(text);
    PackageName parsed;
    parsed.name = "stale";
    EXPECT_EQ(parsed.parse(text), std::string(parts) != "///");
    EXPECT_EQ(parsed.name + "/" + parsed.version + "/" + parsed.architecture + "/" + parsed.build,
              parts);
    EXPECT_EQ(Package::shortNameOf(text), parsed.name);
  }
  const std::pair<const char*, bool> versions[] = {
      {"1.2", true}, {"2.", true},    {"10.0.1", true}, {"2", false},
      {"1", false},  {"v1.2", false}, {".1", false},    {"", false},
  };
  for (const auto& [token, isVersion] : versions)
    EXPECT_EQ(PackageName::isVersion(token), isVersion) << token;
}

TEST(PackageTextTest, FilterDescriptionKeepsTheLinesOfTheName) {
  const TextVector lines = vectorOf({"# comment", "   |-----|", "foo: one", "foo-bar: other",
                                     "foo:two", "foo", " foo: three", ": empty"});
  EXPECT_EQ(linesOf(Package::filterDescription(lines, "foo")), (Lines{"foo: one", "foo:two"}));
  EXPECT_EQ(linesOf(Package::filterDescription(lines, "")), (Lines{": empty"}));
}

TEST(PackageTextTest, CuttingTheNameEmptiesShortLinesAndFallsBackToNothing) {
  ScopedVariable lang("LANG", "pl");
  Package package;
  package.name = "foo";
  package.descriptions["pl"] = vectorOf({"foo: jeden", "foo:", "fo"});
  EXPECT_EQ(linesOf(package.descriptionLines(true)), (Lines{" jeden", "", ""}));
  package.language = "de";
  package.descriptions["C"] = vectorOf({"foo: one"});
  EXPECT_EQ(package.descriptionLines(true).size(), 0u);
  EXPECT_EQ(package.descriptions.count("de"), 0u);
}

TEST(PackageResetDeathTest, AnUnsetLangEndsTheProgram) {
  ScopedVariable lang("LANG", nullptr);
  EXPECT_DEATH([]() noexcept { Package package; }(), "");
}

// Packages built by the fixture builder and loaded with the real archive tools; the language
// file's sentence names its key, so that the printed error can be checked.
class PackageFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZET_REQUIRE_ARCHIVE_TOOLS();
    Lang::instance().load(
        scratch.write("test.lang", "ErrorPackageNotComplete=ErrorPackageNotComplete [ARG]\n"));
  }
  std::string build(const std::string& fileName, const Lines& members) {
    return scratch.makePackage("packages/" + fileName, members);
  }
  bool load(const std::string& path) { return package.loadFromFile(path); }
  bool exists(const std::string& path) { return FileSystem::instance().exists(path, false); }

  ScopedVariable lang{"LANG", "pl"};
  ScratchFolder scratch;
  Package package;
};

TEST_F(PackageFileTest, LoadsEverythingTracesTheToolsAndLeavesOnlyTheSizeInfoBehind) {
  std::mt19937 random(7);
  std::string noise;  // compresses to more than 1 K, so that rounding up shows
  for (int i = 0; i < 6000; ++i) noise += "0123456789abcdef"[random() % 16];
  const std::string path = build(
      "foo-bar-1.2-i486-1.tgz",
      {"install/", "usr/", "install/preinst.sh=echo pre\\n", "install/doinst.sh=ln -s a b\\n",
       "install/postinst.sh=echo post\\n", "install/slack-desc=# about\\n |--|\\nfoo-bar: tool\\n",
       "install/deps= foo \\n\\t\\nbar baz\\n\\n q\\tux\\t\\n",
       "install/build= 2024 01 \\n\\n\\tx\\n", "usr/bin/", "usr/bin/foo=" + noise,
       "install/extra=y"});
  bool loaded = false;
  EXPECT_EQ(traceOf([&] { loaded = load(path); }),
            "loading from file\nexe: /lib/zetutils/tar xzf " + path + " -C " + scratch.temp() +
                " install\nexe: /lib/zetutils/gzip -l " + path + " 1>" + scratch.temp() +
                "/size-info");
  ASSERT_TRUE(loaded);
  EXPECT_TRUE(package.fromFile && !package.fromDatabase);
  EXPECT_EQ(package.location, path);
  EXPECT_EQ(package.fullName, "foo-bar-1.2-i486-1");
  EXPECT_EQ(package.name, "foo-bar");
  EXPECT_EQ(linesOf(package.files), (Lines{"usr/", "usr/bin/", "usr/bin/foo"}));
  EXPECT_EQ(linesOf(package.preinstScript), Lines{"echo pre"});
  EXPECT_EQ(linesOf(package.doinstScript), Lines{"ln -s a b"});
  EXPECT_EQ(linesOf(package.postinstScript), Lines{"echo post"});
  EXPECT_EQ(linesOf(package.deps), (Lines{"foo", "barbaz", "qux"}));
  EXPECT_EQ(linesOf(package.buildInfo), (Lines{"202401", "", "x"}));
  EXPECT_EQ(package.language, "C");
  EXPECT_EQ(linesOf(package.descriptions.at("C")), Lines{"foo-bar: tool"});
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_GE(package.compressedSizeK, 2u);
  EXPECT_EQ(package.compressedSizeK, static_cast<uint32_t>((status.st_size + 1023) / 1024));
  EXPECT_EQ(package.uncompressedSizeK, 20u);  // two tar records of 10240 bytes
  EXPECT_FALSE(exists(scratch.temp() + "/install"));
  EXPECT_FALSE(exists(scratch.temp() + "/filelist"));
  EXPECT_TRUE(exists(scratch.temp() + "/size-info"));
}

TEST_F(PackageFileTest, DescriptionsComeFromExactFileNamesAndFallBackOnlyToADefault) {
  const std::string both =
      build("both/foo-1.2-i486-1.tgz",
            {"install/", "install/slack-desc=foo: one",
             "install/slack-desc.pl=foo: a\\nfoo-bar: b\\nfoo: c", "install/slack-desc.=foo: dot",
             "install/slack-descr=foo: r",
             "install/slack-desc.fr=foo-1.2-i486-1: full name\\nfoo-bar: other",
             "install/other.pl=foo: x"});
  const std::string polish =
      build("pl/foo-1.2-i486-1.tgz", {"install/", "install/slack-desc.pl=foo: a"});
  const std::string none = build("none/foo-1.2-i486-1.tgz", {"install/"});
  struct Row {
    const std::string& path;
    const char* lang;
    const char* language;
    Lines shown;
    const char* lineCounts;
  };
  const Row rows[] = {
      {both, "pl", "pl", {" a", " c"}, "C:1 fr:0 pl:2 "},
      {both, "de", "C", {" one"}, "C:1 fr:0 pl:2 "},
      {both, "", "C", {" one"}, "C:1 fr:0 pl:2 "},
      {polish, "de", "de", {}, "pl:1 "},
      {none, "pl", "pl", {}, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path + " LANG=" + row.lang);
    ScopedVariable lang("LANG", row.lang);
    ASSERT_TRUE(load(row.path));
    EXPECT_EQ(package.language, row.language);
    EXPECT_EQ(linesOf(package.descriptionLines(true)), row.shown);
    std::string counts;
    for (const auto& [code, lines] : package.descriptions)
      counts += code + ":" + std::to_string(lines.size()) + " ";
    EXPECT_EQ(counts, row.lineCounts);
  }
}

TEST_F(PackageFileTest, ANameOfOnePartLoadsWithAnEmptyShortName) {
  ASSERT_TRUE(load(build("foo.tgz", {"install/", "install/slack-desc=: kept\\nfoo: dropped"})));
  EXPECT_EQ(package.fullName, "foo");
  EXPECT_EQ(package.name, "");
  EXPECT_EQ(linesOf(package.descriptions.at("C")), Lines{": kept"});
}

TEST_F(PackageFileTest, ExistenceIsTestedBeforeTheName) {
  const std::string missing = scratch.path() + "/foo.txt";
  EXPECT_FALSE(load(missing));
  EXPECT_EQ(package.lastError, LoadNoFile);
  EXPECT_EQ(package.location, missing);
  EXPECT_EQ(package.fullName, "foo");
  for (const char* name : {"foo.txt", "foo-1-i486-1.TGZ", "foo.tgz.bak"}) {
    EXPECT_FALSE(load(scratch.write(name, "x"))) << name;
    EXPECT_EQ(package.lastError, LoadBadName) << name;
  }
  // ".tgz" alone is too short; it exists here, relative to the current directory.
  scratch.write(".tgz", "x");
  const std::filesystem::path current = std::filesystem::current_path();
  std::filesystem::current_path(scratch.path());
  EXPECT_FALSE(load(".tgz"));
  std::filesystem::current_path(current);
  EXPECT_EQ(package.lastError, LoadBadName);
}

TEST_F(PackageFileTest, UnlistableAndIncompletePackagesFail) {
  EXPECT_FALSE(load(scratch.write("bad-1-i486-1.tgz", "not an archive\n")));
  EXPECT_EQ(package.lastError, LoadListFailed);
  // Nothing is quoted, so the tools see the path in two pieces.
  EXPECT_FALSE(load(scratch.makePackage("my packages/foo-1-i486-1.tgz", {"install/"})));
  EXPECT_EQ(package.lastError, LoadListFailed);

  // Only the exact line "install/" makes a package complete.
  for (const Lines& members : {Lines{"usr/", "usr/f=x"}, Lines{"./install/", "./install/deps=a"}}) {
    const std::string path = build("foo-1-i486-1.tgz", members);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load(path));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: ErrorPackageNotComplete " + path + "\n");
    EXPECT_EQ(package.lastError, LoadIncomplete);
  }
}

TEST_F(PackageFileTest, AFailedExtractionStopsTheLoad) {
  // A non-empty directory in the way of install/deps makes the tool fail.
  std::filesystem::create_directories(scratch.temp() + "/install/deps/in/the/way");
  EXPECT_FALSE(load(build("foo-1-i486-1.tgz", {"install/", "install/deps=a", "usr/"})));
  EXPECT_EQ(package.lastError, LoadExtractFailed);
  EXPECT_EQ(linesOf(package.files), Lines{"usr/"});
}

TEST_F(PackageFileTest, UnusableSizeInfoFailsAfterTheInstallCopyIsGone) {
  // gzip's output cannot be redirected into a directory.
  std::filesystem::create_directories(scratch.temp() + "/size-info");
  EXPECT_FALSE(load(build("foo-1-i486-1.tgz", {"install/", "install/deps=a"})));
  EXPECT_EQ(package.lastError, LoadSizeInfoBad);
  EXPECT_EQ(linesOf(package.deps), Lines{"a"});
  EXPECT_FALSE(exists(scratch.temp() + "/install"));
  EXPECT_FALSE(package.fromFile);
}

// An installed set under the scratch root, written the way install leaves it.
class PackageDatabaseTest : public ::testing::Test {
 protected:
  void SetUp() override {
    record("foo-1.2-i486-1",
           "PACKAGE NAME:     foo-1.2-i486-1\nCOMPRESSED PACKAGE SIZE:     3 K\n"
           "UNCOMPRESSED PACKAGE SIZE:     20 K\nPACKAGE LOCATION:     foo-1.2-i486-1.tgz\n"
           "PACKAGE DESCRIPTION:\nfoo: one\nLANGUAGE:     pl\nfoo: jeden\n"
           "FILE LIST:\nusr/\nusr/bin/foo\n");
    scratch.write("var/log/deps/foo-1.2-i486-1", " a \n\nb\tc\n");
    scratch.write("var/log/build/foo-1.2-i486-1", "2024 01\n");
    scratch.write("var/log/scripts/foo-1.2-i486-1", "ln -s a b\n");
    scratch.write("var/log/postinst/foo-1.2-i486-1", "echo post\n");
    for (const char* name : {"foo-bar-baz-1.2-i486-1", "three-1.0-i486", "rc-1.2-rc1-i486-1",
                             "two-1.0-i486-1", "two-2.0-i486-1"})
      record(name, std::string("PACKAGE NAME:     ") + name + "\n");
    // The name inside the record wins over the name of the file.
    record("renamed-1-i486-1", "PACKAGE NAME:     other-2-i486-1\n");
    scratch.write("var/log/build/other-2-i486-1", "7\n");
    ASSERT_EQ(symlink("nowhere", (scratch.path() + "/var/log/packages/broken-1-i486-1").c_str()),
              0);
  }
  void record(const std::string& entry, const std::string& content) {
    scratch.write("var/log/packages/" + entry, content);
  }

  ScopedVariable lang{"LANG", "de"};
  ScratchFolder scratch;
  Package package;
};

TEST_F(PackageDatabaseTest, FindsPackagesByEveryFormOfName) {
  struct Row {
    const char* argument;
    const char* fullName;  // empty: not found
    int error = LoadNotInstalled;
  };
  const Row rows[] = {
      {"foo", "foo-1.2-i486-1"},
      {"foo-1.2-i486-1", "foo-1.2-i486-1"},
      {"foo-1.2-i486-1.tgz", "foo-1.2-i486-1"},
      {"/mnt/foo-1.2-i486-1.tgz", "foo-1.2-i486-1"},
      {"foo-9-x86_64-3", "foo-1.2-i486-1"},  // the last three parts are only dropped
      {"foo-bar-baz", "foo-bar-baz-1.2-i486-1"},
      {"foo-bar", ""},
      {"three-1.0-i486", "three-1.0-i486"},
      {"three", ""},
      {"rc", "rc-1.2-rc1-i486-1"},
      {"rc-1.2-rc1-i486-1", ""},  // looked up as "rc-1.2"
      {"renamed", "other-2-i486-1"},
      {"fo", ""},
      {".tgz", ""},
      {"", ""},
      {"broken", "", LoadRecordUnreadable},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.argument);
    const bool found = *row.fullName != '\0';
    EXPECT_EQ(package.loadFromDatabase(row.argument), found);
    EXPECT_EQ(package.fromDatabase, found);
    EXPECT_EQ(found ? package.fullName : std::to_string(package.lastError),
              found ? row.fullName : std::to_string(row.error));
  }
  std::string first;  // of the "two" packages, in directory order
  for (const std::string& entry : directoryOrder(scratch.path() + "/var/log/packages"))
    if (first.empty() && entry.compare(0, 4, "two-") == 0) first = entry;
  ASSERT_TRUE(package.loadFromDatabase("two-2.0-i486-1.tgz"));
  EXPECT_EQ(package.fullName, first);
}

TEST_F(PackageDatabaseTest, FillsThePackageFromTheRecordAndTheOtherFilesAndResetEmptiesIt) {
  EXPECT_FALSE(package.warnOnly);
  EXPECT_EQ(package.language, "de");
  ASSERT_TRUE(package.loadFromDatabase("foo"));
  EXPECT_FALSE(package.fromFile);
  EXPECT_EQ(package.name, "foo");
  EXPECT_EQ(package.location, "foo-1.2-i486-1.tgz");
  EXPECT_EQ(package.compressedSizeK, 3u);
  EXPECT_EQ(package.uncompressedSizeK, 20u);
  EXPECT_EQ(linesOf(package.files), (Lines{"usr/", "usr/bin/foo"}));
  EXPECT_EQ(package.language, "C");
  EXPECT_EQ(linesOf(package.descriptions.at("pl")), Lines{"foo: jeden"});
  EXPECT_EQ(linesOf(package.descriptionLines(false)), Lines{"foo: one"});
  // Empty lines stay: what install writes has none.
  EXPECT_EQ(linesOf(package.deps), (Lines{"a", "", "bc"}));
  EXPECT_EQ(linesOf(package.buildInfo), Lines{"202401"});
  EXPECT_EQ(linesOf(package.doinstScript), Lines{"ln -s a b"});
  EXPECT_EQ(linesOf(package.postinstScript), Lines{"echo post"});
  EXPECT_FALSE(package.preinstScript.hasLines());

  package.warnOnly = package.fromFile = true;
  package.lastError = LoadNoFile;
  package.preinstScript.push_back("x");
  ScopedVariable empty("LANG", "");
  package.reset();
  EXPECT_TRUE(package.warnOnly);
  EXPECT_EQ(package.lastError, LoadNoFile);
  EXPECT_EQ(package.language + package.name + package.fullName + package.location, "");
  EXPECT_EQ(package.files.size() + package.deps.size() + package.buildInfo.size() +
                package.preinstScript.size() + package.doinstScript.size() +
                package.postinstScript.size() + package.descriptions.size(),
            0u);
  EXPECT_EQ(package.compressedSizeK + package.uncompressedSizeK, 0u);
  EXPECT_FALSE(package.fromFile || package.fromDatabase);

  ASSERT_TRUE(package.loadFromDatabase("renamed"));
  EXPECT_EQ(package.name, "other");
  EXPECT_EQ(linesOf(package.buildInfo), Lines{"7"});
  EXPECT_EQ(package.deps.size(), 0u);
}

TEST_F(PackageDatabaseTest, TracesTheLookUpNameOfLongNamesOnly) {
  EXPECT_EQ(traceOf([&] {
              package.loadFromDatabase("/mnt/foo-bar-baz-1.2-i486-1.tgz");
              package.loadFromDatabase("foo");
            }),
            "loading package: foo-bar-baz\n");
}

TEST(PackageScriptTest, SymlinkLinesAreScannedWithinFixedFieldLimits) {
  const std::string field1023(1023, 'l'), field1024(1024, 'l'), field1025(1025, 'd');
  const std::pair<std::string, std::string> rows[] = {
      // line, link found ("" for none)
      {"( cd usr/lib ; rm -rf libfoo.so )", "usr/lib/libfoo.so"},
      {"( cd a ; rm -rf b)", "a/b)"},
      {"(cd a; rm -rf b)", ""},
      {"( cd a ; ln -sf c b )", ""},
      {"(\tcd  a\t;rm  -rf\t\tb trailing words", "a/b"},
      {" ( cd a ; rm -rf b )", ""},
      {"( cd a ; rm -rf )", "a/)"},
      {"( cd a ; rm -rf " + field1023 + " )", "a/" + field1023},
      {"( cd a ; rm -rf " + field1024 + " )", ""},
      {"( cd a ; rm -rf " + field1024 + "x )", ""},
      {"( cd " + field1024 + " ; rm -rf b )", field1024 + "/b"},
      {"( cd " + field1025 + " ; rm -rf b )", ""},
  };
  for (const auto& [line, link] : rows) {
    SCOPED_TRACE(line.substr(0, 40));
    const FileList links = Package::scriptSymlinks(vectorOf({line}));
    EXPECT_EQ(linesOf(links), link.empty() ? Lines{} : Lines{link});
  }
  const TextVector script = vectorOf({"( cd a ; rm -rf b )", "echo", "( cd c ; rm -rf d )"});
  EXPECT_EQ(linesOf(Package::scriptSymlinks(script)), (Lines{"a/b", "c/d"}));
}

// A package installed and removed under the scratch root with the real archive tools. Each
// sentence names its key, and each script logs its argument count, argument and directory.
class PackageOperationTest : public PackageFileTest {
 protected:
  void SetUp() override {
    PackageFileTest::SetUp();
    std::string sentences;
    for (const char* key : {"MessageShowWarnDirs", "MessageShowWarnOverwrite"})
      sentences += std::string(key) + "=" + key + "\n";
    for (const char* key : {"MessageDeletingEmptyDirectory", "MessageDeletingFile",
                            "MessageDeletingSymlink", "MessageSymlinkNoLongerExists",
                            "MessageFileWouldBeDeleted", "MessageSymlinkFoundInAnotherPackage",
                            "MessageFileNoLongerExists", "MessageSymlinkWouldBeDeleted",
                            "MessageFileFoundInAnotherPackage", "WarningDirectoryContainsNewFiles"})
      sentences += std::string(key) + "=" + key + " [ARG]\n";
    Lang::instance().load(scratch.write("operations.lang", sentences));
    for (const char* dir : {zet::PACKAGES_DIR, zet::SCRIPTS_DIR, zet::POSTINST_DIR, zet::BUILD_DIR,
                            zet::DEPS_DIR, zet::PRESERVED_DIR})
      scratch.makeDirs(dir + 1);
    const std::string log = " >> " + scratch.path() + "/log\\n";
    path = build("foo-1.2-i486-1.tgz",
                 {"install/", "install/preinst.sh=echo pre $# [$1] $(pwd)" + log,
                  "install/doinst.sh=( cd usr/lib ; rm -rf libfoo.so )\\nln -s libfoo.so.1 "
                  "usr/lib/libfoo.so\\n( cd usr/lib ; rm -rf libfoo.so.0 )\\nln -s libfoo.so.1 "
                  "usr/lib/libfoo.so.0\\n( cd usr/lib ; rm -rf gone )\\necho doinst $# $1 $(pwd)" +
                      log,
                  "install/postinst.sh=echo post $1 $(pwd)" + log, "install/deps=bar\\n",
                  "install/build=2024\\n", "install/slack-desc=foo: a tool\\n", "usr/", "usr/lib/",
                  "usr/lib/libfoo.so.1=x", "usr/share/", "usr/share/foo/", "usr/share/foo/data=d",
                  "usr/share/foo/notes=n", ".profile=p"});
    ASSERT_TRUE(load(path));
  }
  std::string rooted(const std::string& relative) { return scratch.path() + "/" + relative; }
  std::string database(const char* dir) { return rooted(dir) + "/foo-1.2-i486-1"; }

  std::string path;
};

TEST_F(PackageOperationTest, InstallsPreservesAndRemovesSparingWhatOthersList) {
  const std::string root = scratch.path();
  EXPECT_EQ(traceOf([&] { package.install(); }), "installation\nexe: /lib/zetutils/tar -xzlUpf " +
                                                     path + " -C " + root + " 1>/dev/null\n");
  EXPECT_EQ(readWholeFile(database(zet::PACKAGES_DIR)),
            "PACKAGE NAME:     foo-1.2-i486-1\nCOMPRESSED PACKAGE SIZE:     " +
                std::to_string(package.compressedSizeK) +
                " K\nUNCOMPRESSED PACKAGE SIZE:     " + std::to_string(package.uncompressedSizeK) +
                " K\nPACKAGE LOCATION:     foo-1.2-i486-1.tgz\nPACKAGE DESCRIPTION:\nfoo: a "
                "tool\nFILE LIST:\nusr/\nusr/lib/\nusr/lib/libfoo.so.1\nusr/share/\n"
                "usr/share/foo/\nusr/share/foo/data\nusr/share/foo/notes\n.profile\n");
  EXPECT_EQ(readWholeFile(rooted("usr/lib/libfoo.so")), "x");
  EXPECT_FALSE(exists(rooted("install")));
  EXPECT_EQ(readWholeFile(database(zet::SCRIPTS_DIR)),
            "( cd usr/lib ; rm -rf libfoo.so )\nln -s libfoo.so.1 usr/lib/libfoo.so\n"
            "( cd usr/lib ; rm -rf libfoo.so.0 )\nln -s libfoo.so.1 usr/lib/libfoo.so.0\n"
            "( cd usr/lib ; rm -rf gone )\necho doinst $# $1 $(pwd) >> " +
                root + "/log\n");
  EXPECT_EQ(readWholeFile(database(zet::POSTINST_DIR)),
            "echo post $1 $(pwd) >> " + root + "/log\n");
  EXPECT_EQ(readWholeFile(database(zet::BUILD_DIR)) + readWholeFile(database(zet::DEPS_DIR)),
            "2024\nbar\n");

  package.preserve();
  const std::string preserved = rooted(zet::PRESERVED_DIR) + "/foo-1.2-i486-1/";
  EXPECT_EQ(readWholeFile(preserved + "usr/share/foo/data") + readWholeFile(preserved + ".profile"),
            "dp");
  EXPECT_EQ(readWholeFile(preserved + "install/build"), "2024\n");
  EXPECT_EQ(readWholeFile(preserved + "install/doinst.sh"),
            readWholeFile(database(zet::SCRIPTS_DIR)));

  // Another package lists the library and usr/, and its script names one of the links.
  scratch.write("var/log/packages/bar-1-i486-1", "FILE LIST:\nusr/\nusr/lib/libfoo.so.1\n");
  scratch.write("var/log/scripts/bar-1-i486-1", "( cd usr/lib ; rm -rf libfoo.so.0 )\n");
  std::filesystem::remove(rooted("usr/share/foo/notes"));
  scratch.write("foo-1.2-i486-1", "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(traceOf([&] { package.remove(); }),
            "MessageDeletingSymlink " + root + "/usr/lib/libfoo.so\n" +
                "MessageSymlinkFoundInAnotherPackage " + root + "/usr/lib/libfoo.so.0\n" +
                "MessageSymlinkNoLongerExists " + root + "/usr/lib/gone\n" +
                "MessageFileNoLongerExists " + root + "/usr/share/foo/notes\n" +
                "MessageDeletingFile " + root + "/usr/share/foo/data\n" +
                "MessageDeletingEmptyDirectory " + root + "/usr/share/foo/\n" +
                "MessageDeletingEmptyDirectory " + root + "/usr/share/\n" +
                "MessageFileFoundInAnotherPackage " + root + "/usr/lib/libfoo.so.1\n" +
                "MessageFileFoundInAnotherPackage " + root + "/usr/\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "WARNING: WarningDirectoryContainsNewFiles " + root + "/usr/lib/\n");
  EXPECT_EQ(readWholeFile(rooted("log")), "pre 0 [] " + root + "\ndoinst 1 -install " + root +
                                              "\npost --afterinstall " + root +
                                              "\npost --beforeremove " + root + "\n");
  EXPECT_TRUE(std::filesystem::is_symlink(rooted("usr/lib/libfoo.so.0")));
  EXPECT_TRUE(exists(rooted(".profile")));
  EXPECT_FALSE(exists(rooted("foo-1.2-i486-1")));
  for (const char* dir :
       {zet::PACKAGES_DIR, zet::SCRIPTS_DIR, zet::POSTINST_DIR, zet::BUILD_DIR, zet::DEPS_DIR})
    EXPECT_FALSE(exists(database(dir))) << dir;
  EXPECT_TRUE(exists(rooted("var/log/packages/bar-1-i486-1")));
}

TEST_F(PackageOperationTest, WarnModeOnlyListsAndPreserveAlwaysWritesTheControlFiles) {
  const std::string root = scratch.path();
  scratch.write("usr/lib/libfoo.so.1", "old");
  scratch.makeDirs("usr/share");
  package.warnOnly = true;
  EXPECT_EQ(traceOf([&] { package.install(); }),
            "installation\nMessageShowWarnDirs\n" + root + "/usr/lib/libfoo.so\n" + root +
                "/usr/lib/libfoo.so.0\n" + root + "/usr/lib/gone\nMessageShowWarnOverwrite\n" +
                root + "/usr/lib/libfoo.so.1\n");
  for (const char* name : {"./", ".", ""}) package.files.push_back(name);
  std::string listed;
  for (const char* link : {"usr/lib/libfoo.so", "usr/lib/libfoo.so.0", "usr/lib/gone"})
    listed += std::string("MessageSymlinkWouldBeDeleted ") + link + "\n";
  for (const char* file :
       {"usr/", "usr/lib/", "usr/lib/libfoo.so.1", "usr/share/", "usr/share/foo/",
        "usr/share/foo/data", "usr/share/foo/notes", ".profile"})
    listed += std::string("MessageFileWouldBeDeleted ") + file + "\n";
  testing::internal::CaptureStdout();
  package.remove();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), listed);
  EXPECT_EQ(readWholeFile(rooted("usr/lib/libfoo.so.1")), "old");
  EXPECT_FALSE(exists(rooted("log")) || exists(database(zet::PACKAGES_DIR)));

  Package bare;
  bare.fullName = "bare-1-i486-1";
  bare.preserve();
  const std::string install = rooted(zet::PRESERVED_DIR) + "/bare-1-i486-1/install/";
  for (const char* name : {"doinst.sh", "postinst.sh", "build"}) {
    EXPECT_TRUE(exists(install + name)) << name;
    EXPECT_EQ(readWholeFile(install + name), "") << name;
  }
}

}  // namespace
