// Test helpers for units that touch the disk. ScratchFolder is a fresh folder under /tmp for
// one test: FileSystem's root points at it and the run's temporary area is made inside it,
// the way main makes it; the object puts the root back and removes the whole folder.
#ifndef ZET_TESTS_SCRATCH_H
#define ZET_TESTS_SCRATCH_H

#include <dirent.h>
#include <ftw.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "constants.h"
#include "filesystem.h"
#include "temparea.h"

// A scratch folder that is also the installation root and holds the temporary area.
class ScratchFolder {
 public:
  ScratchFolder() {
    char pattern[] = "/tmp/zet-test-XXXXXX";
    if (mkdtemp(pattern) == nullptr) abort();
    folder = pattern;
    FileSystem::instance().setRoot(folder);
    TempArea::instance().create(folder.c_str(), zet::TEMP_PREFIX);
    mkdir(TempArea::instance().getPath().c_str(), 0755);
  }
  ~ScratchFolder() {
    FileSystem::instance().setRoot("/");
    nftw(folder.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return folder; }
  std::string temp() const { return TempArea::instance().getPath(); }

  // Writes `content` to `relative` inside the folder, making its parents; returns the path.
  std::string write(const std::string& relative, const std::string& content) const {
    const std::string full = folder + "/" + relative;
    makeParents(full);
    std::ofstream(full, std::ios::binary) << content;
    return full;
  }
  // Makes `relative` and its parents inside the folder; returns the path.
  std::string makeDirs(const std::string& relative) const {
    const std::string full = folder + "/" + relative;
    makeParents(full + "/");
    return full;
  }
  // Builds a package file at `relative` with the fixture builder; returns its path.
  std::string makePackage(const std::string& relative,
                          const std::vector<std::string>& members) const {
    const std::string full = folder + "/" + relative;
    makeParents(full);
    std::string command = shellQuoted(ZET_MKPKG) + " " + shellQuoted(full);
    for (const std::string& member : members) command += " " + shellQuoted(member);
    if (system(command.c_str()) != 0) ADD_FAILURE() << "mkpkg failed: " << command;
    return full;
  }

 private:
  static int removeEntry(const char* path, const struct stat*, int, struct FTW*) {
    return remove(path);
  }
  static void makeParents(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
      mkdir(path.substr(0, slash).c_str(), 0755);
    }
  }
  static std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
  }

  std::string folder;
};

// Sets an environment variable for one scope and puts the old value back.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : variable(name) {
    const char* old = getenv(name);
    hadValue = old != nullptr;
    if (hadValue) oldValue = old;
    if (value != nullptr) {
      setenv(name, value, 1);
    } else {
      unsetenv(name);
    }
  }
  ~ScopedVariable() {
    if (hadValue) {
      setenv(variable.c_str(), oldValue.c_str(), 1);
    } else {
      unsetenv(variable.c_str());
    }
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  std::string variable;
  std::string oldValue;
  bool hadValue;
};

// The whole content of a file, or the empty string.
inline std::string readWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

// The names of a directory in the order the system lists them, "." and ".." left out.
inline std::vector<std::string> directoryOrder(const std::string& path) {
  std::vector<std::string> names;
  DIR* dir = opendir(path.c_str());
  if (dir == nullptr) return names;
  while (dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  closedir(dir);
  return names;
}

// The elements of a TextVector as strings, for readable comparisons.
inline std::vector<std::string> linesOf(const TextVector& lines) {
  std::vector<std::string> result;
  for (unsigned i = 0; i < lines.size(); ++i) result.push_back(lines[i]);
  return result;
}

// Tests that run the archive tools need the links under /lib/zetutils, which the install step
// makes. Continuous integration must have them; elsewhere the test is skipped.
#define ZET_REQUIRE_ARCHIVE_TOOLS()                                                           \
  do {                                                                                        \
    if (access(zet::TAR_TOOL, X_OK) != 0 || access(zet::GZIP_TOOL, X_OK) != 0) {              \
      const char* ci = getenv("CI");                                                          \
      if (ci != nullptr && std::string(ci) == "true") {                                       \
        FAIL() << "the tools under /lib/zetutils are missing: run cmake --install first";     \
      }                                                                                       \
      GTEST_SKIP() << "the tools under /lib/zetutils are missing: run cmake --install first"; \
    }                                                                                         \
  } while (0)

#endif
