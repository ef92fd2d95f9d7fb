// Checks every shipped language file against the keys the program asks for: no key missing,
// none unknown, and each sentence with as many "[ARG]" markers as its callers pass.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "constants.h"
#include "lang.h"
#include "messages.h"
#include "scratch.h"
#include "textvector.h"

namespace {

typedef std::map<std::string, unsigned> MarkerCounts;

// Upper-cased key to marker count, for every key the program can ask for.
MarkerCounts expectedKeys() {
  MarkerCounts keys = {{"DIALOG_COMPRESSED_AND_UNCOMPRESSED", 2}};
  auto add = [&keys](const char* key, unsigned markers) { keys[Lang::toUpper(key)] = markers; };
  for (const char* key :
       {"DIALOG_INSTALLING_PACKAGE", "DIALOG_INSTALL_PACKAGE", "DIALOG_DO_NOT_INSTALL"})
    add(key, 1);
  for (const char* key : {"DIALOG_ABORT", "YES", "NO", "QUIT"}) add(key, 0);
  for (int i = 0; errorKey(ErrorType(i)); ++i)
    add(errorKey(ErrorType(i)), errorArgCount(ErrorType(i)));
  for (int i = 0; warningKey(WarningType(i)); ++i) add(warningKey(WarningType(i)), 1);
  for (int i = 0; messageKey(MessageType(i)); ++i)
    add(messageKey(MessageType(i)), messageArgCount(MessageType(i)));
  for (int i = 0; helpKey(HelpType(i)); ++i) add(helpKey(HelpType(i)), 1);
  return keys;
}

// The entries of one file as the loader sees them. The catalogue itself can't serve here:
// it layers every file on the ones before, which would hide a missing key. A blank line
// shows up as the empty key and an entry left open at the end of the file as missing.
MarkerCounts entriesOf(const std::string& path) {
  TextFile lines;
  EXPECT_TRUE(lines.load(path.c_str())) << path;
  MarkerCounts entries;
  std::string key, value;
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

TEST(LangFileTest, EveryShippedLanguageHasExactlyTheKeysAndMarkersNeeded) {
  const std::string extension = zet::LANG_EXTENSION;
  bool english = false;
  for (const std::string& name : directoryOrder(ZET_LANG_SOURCE_DIR)) {
    if (name.size() <= extension.size() ||
        name.compare(name.size() - extension.size(), extension.size(), extension) != 0) {
      continue;
    }
    english = english || name == "C" + extension;
    EXPECT_EQ(problemsOf(ZET_LANG_SOURCE_DIR "/" + name), std::vector<std::string>()) << name;
  }
  EXPECT_TRUE(english) << "no C.lang in " << ZET_LANG_SOURCE_DIR;
}

TEST(LangFileTest, TheCheckFindsEachKindOfFault) {
  ScratchFolder scratch;
  std::ifstream english(ZET_LANG_SOURCE_DIR "/C.lang");
  std::string broken, line;
  while (std::getline(english, line)) {
    if (line.rfind("yes=", 0) == 0 || line.rfind("quit=", 0) == 0) continue;
    broken += (line.rfind("no=", 0) == 0 ? "no=No [ARG]" : line) + "\n";
  }
  EXPECT_EQ(problemsOf(scratch.write("broken.lang", broken + "\nBogusKey=x\nQuit=Quit\\\n")),
            (std::vector<std::string>{"markers NO", "missing QUIT", "missing YES", "unknown ''",
                                      "unknown 'BOGUSKEY'"}));
}

}  // namespace
