// Checks every shipped language file against the keys the program asks for: no key missing,
// none unknown, and each sentence with as many "[ARG]" markers as its callers pass.
#include <dirent.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "constants.h"
#include "lang.h"
#include "messages.h"
#include "textvector.h"

namespace {

typedef std::map<std::string, unsigned> MarkerCounts;

// Upper-cased key to marker count, for every key the program can ask for.
MarkerCounts expectedKeys() {
  MarkerCounts keys;
  for (int i = 0; errorKey(ErrorType(i)); ++i) {
    keys[Lang::toUpper(errorKey(ErrorType(i)))] = errorArgCount(ErrorType(i));
  }
  for (int i = 0; warningKey(WarningType(i)); ++i)
    keys[Lang::toUpper(warningKey(WarningType(i)))] = 1;
  for (int i = 0; messageKey(MessageType(i)); ++i) {
    keys[Lang::toUpper(messageKey(MessageType(i)))] = messageArgCount(MessageType(i));
  }
  for (int i = 0; helpKey(HelpType(i)); ++i) keys[Lang::toUpper(helpKey(HelpType(i)))] = 1;
  keys["DIALOG_COMPRESSED_AND_UNCOMPRESSED"] = 2;
  keys["DIALOG_INSTALLING_PACKAGE"] = 1;
  keys["DIALOG_INSTALL_PACKAGE"] = 1;
  keys["DIALOG_DO_NOT_INSTALL"] = 1;
  keys["DIALOG_ABORT"] = 0;
  keys["YES"] = 0;
  keys["NO"] = 0;
  keys["QUIT"] = 0;
  return keys;
}

// The entries of one file as the loader sees them. The catalogue itself can't serve here:
// it layers every file on the ones before, which would hide a missing key. A blank line
// shows up as the empty key and an entry left open at the end of the file as missing.
MarkerCounts entriesOf(const std::string& path) {
  TextFile lines;
  EXPECT_TRUE(lines.load(path.c_str())) << path;
  MarkerCounts entries;
  std::string key;
  std::string value;
  for (unsigned i = 0; i < lines.size(); ++i) {
    const char* line = lines[i];
    const char* equals = strchr(line, '=');
    if (!key.empty()) {
      value += line;
    } else if (equals) {
      key = Lang::toUpper(std::string(line, equals));
      value = equals + 1;
    }
    if (!value.empty() && value.back() == '\\') continue;
    entries[key] = Lang::split(ARG_MARKER, value).size() - 1;
    key.clear();
    value.clear();
  }
  return entries;
}

std::vector<std::string> problemsOf(const std::string& path) {
  const MarkerCounts expected = expectedKeys();
  const MarkerCounts entries = entriesOf(path);
  std::vector<std::string> problems;
  for (const auto& entry : expected) {
    const auto found = entries.find(entry.first);
    if (found == entries.end()) {
      problems.push_back("missing " + entry.first);
    } else if (found->second != entry.second) {
      problems.push_back("markers " + entry.first);
    }
  }
  for (const auto& entry : entries) {
    if (!expected.count(entry.first)) problems.push_back("unknown '" + entry.first + "'");
  }
  return problems;
}

std::vector<std::string> shippedLanguageFiles() {
  std::vector<std::string> paths;
  DIR* dir = opendir(ZET_LANG_SOURCE_DIR);
  if (!dir) return paths;
  while (const dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    const std::string extension = zet::LANG_EXTENSION;
    if (name.size() > extension.size() &&
        name.compare(name.size() - extension.size(), extension.size(), extension) == 0) {
      paths.push_back(std::string(ZET_LANG_SOURCE_DIR) + "/" + name);
    }
  }
  closedir(dir);
  return paths;
}

TEST(LangFileTest, EveryShippedLanguageHasExactlyTheKeysAndMarkersNeeded) {
  const std::vector<std::string> paths = shippedLanguageFiles();
  bool english = false;
  for (const std::string& path : paths) {
    english = english || path == std::string(ZET_LANG_SOURCE_DIR) + "/C.lang";
    EXPECT_EQ(problemsOf(path), std::vector<std::string>()) << path;
  }
  EXPECT_TRUE(english) << "no C.lang in " << ZET_LANG_SOURCE_DIR;
}

TEST(LangFileTest, TheCheckFindsEachKindOfFault) {
  char pattern[] = "/tmp/zet-langfile-XXXXXX";
  ASSERT_NE(mkdtemp(pattern), nullptr);
  const std::string path = std::string(pattern) + "/broken.lang";
  {
    std::ifstream english(std::string(ZET_LANG_SOURCE_DIR) + "/C.lang");
    std::ofstream broken(path);
    std::string line;
    while (std::getline(english, line)) {
      if (line.rfind("yes=", 0) == 0 || line.rfind("quit=", 0) == 0) continue;
      if (line.rfind("no=", 0) == 0) line = "no=No [ARG]";
      broken << line << "\n";
    }
    broken << "\nBogusKey=x\nQuit=Quit\\\n";
  }
  EXPECT_EQ(problemsOf(path), (std::vector<std::string>{"markers NO", "missing QUIT", "missing YES",
                                                        "unknown ''", "unknown 'BOGUSKEY'"}));
  unlink(path.c_str());
  rmdir(pattern);
}

}  // namespace
