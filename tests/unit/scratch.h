// Test helpers for units that touch the disk.
#ifndef ZET_TESTS_SCRATCH_H
#define ZET_TESTS_SCRATCH_H

#include <dirent.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "constants.h"
#include "filesystem.h"
#include "temparea.h"

using Lines = std::vector<std::string>;

// A fresh folder under /tmp that is the installation root for one test and holds the run's
// temporary area, made the way main makes it; the object puts the root back and removes it.
class ScratchFolder {
 public:
  ScratchFolder() {
    char pattern[] = "/tmp/zet-test-XXXXXX";
    if (mkdtemp(pattern) == nullptr) abort();
    folder = pattern;
    FileSystem::instance().setRoot(folder);
    TempArea::instance().create(folder.c_str(), zet::TEMP_PREFIX);
    std::filesystem::create_directory(TempArea::instance().getPath());
  }
  ~ScratchFolder() {
    FileSystem::instance().setRoot("/");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  const std::string& path() const { return folder; }
  std::string temp() const { return TempArea::instance().getPath(); }

  // Each returns the full path of what it made inside the folder, parents included.
  std::string write(const std::string& relative, const std::string& content) const {
    std::ofstream(makeParents(relative), std::ios::binary) << content;
    return folder + "/" + relative;
  }
  std::string makeDirs(const std::string& relative) const {
    std::filesystem::create_directories(folder + "/" + relative);
    return folder + "/" + relative;
  }
  // A package file built by the fixture builder.
  std::string makePackage(const std::string& relative, const Lines& members) const {
    const std::string full = makeParents(relative);
    std::string command = quoted(ZET_MKPKG) + " " + quoted(full);
    for (const std::string& member : members) command += " " + quoted(member);
    if (system(command.c_str()) != 0) ADD_FAILURE() << "mkpkg failed: " << command;
    return full;
  }

 private:
  std::string makeParents(const std::string& relative) const {
    const std::filesystem::path full = folder + "/" + relative;
    std::filesystem::create_directories(full.parent_path());
    return full.string();
  }
  static std::string quoted(const std::string& text) {
    std::string result = "'";
    for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
  }

  std::string folder;
};

// Sets an environment variable (unsets it for nullptr) for one scope and puts the old back.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name(name) {
    if (const char* old = getenv(name)) oldValue = old;
    set(name, value);
  }
  ~ScopedVariable() { set(name.c_str(), oldValue ? oldValue->c_str() : nullptr); }

 private:
  static void set(const char* name, const char* value) {
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  }
  std::string name;
  std::optional<std::string> oldValue;
};

// The whole content of a file, or the empty string.
inline std::string readWholeFile(const std::string& path) {
  std::stringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

// The names of a directory in the order the system lists them, "." and ".." left out.
inline Lines directoryOrder(const std::string& path) {
  Lines names;
  if (DIR* dir = opendir(path.c_str())) {
    while (dirent* entry = readdir(dir)) {
      if (std::string(".") != entry->d_name && std::string("..") != entry->d_name)
        names.push_back(entry->d_name);
    }
    closedir(dir);
  }
  return names;
}

inline Lines linesOf(const TextVector& lines) {
  Lines result;
  for (unsigned i = 0; i < lines.size(); ++i) result.push_back(lines[i]);
  return result;
}
inline TextVector vectorOf(const Lines& lines) {
  TextVector vector;
  for (const std::string& line : lines) vector.push_back(line.c_str());
  return vector;
}

// The archive tools are links under /lib/zetutils that the install step makes. Continuous
// integration must have them; elsewhere the test is skipped.
#define ZET_REQUIRE_ARCHIVE_TOOLS()                                                           \
  if (access(zet::TAR_TOOL, X_OK) != 0 || access(zet::GZIP_TOOL, X_OK) != 0) {                \
    const char* why = "the tools under /lib/zetutils are missing: run cmake --install first"; \
    if (getenv("CI") != nullptr && std::string(getenv("CI")) == "true") FAIL() << why;        \
    GTEST_SKIP() << why;                                                                      \
  }

#endif
