// A test rooted in a fresh folder that holds the temporary area too; it must end with no more
// descriptors open than it found.
#ifndef ZET_TESTS_SCRATCH_H
#define ZET_TESTS_SCRATCH_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "filesystem.h"
#include "temparea.h"

using Lines = std::vector<std::string>;

inline size_t openDescriptors() {
  auto entries = std::filesystem::directory_iterator("/proc/self/fd");
  return std::distance(begin(entries), end(entries));
}

inline Lines linesOf(const TextVector& vector) {
  Lines lines;
  for (unsigned i = 0; i < vector.size(); ++i) lines.push_back(vector[i]);
  return lines;
}

class Scratch : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zet-unit-XXXXXX";
    close(STDIN_FILENO);  // a service opening descriptor 0 must take it for a file
    FileSystem::instance().setRoot(root = mkdtemp(pattern));
    TempArea::instance().create(pattern, "zet-");
    std::filesystem::create_directory(TempArea::instance().getPath());
    descriptors = openDescriptors();
  }
  void TearDown() override {
    EXPECT_EQ(openDescriptors(), descriptors);
    FileSystem::instance().setRoot("/");
    std::filesystem::remove_all(root);
  }
  // Writes a file under the root, with its parents, and gives its full path.
  std::string write(const std::string& relative, const std::string& content) {
    const std::filesystem::path path = root + "/" + relative;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
  }
  static std::string read(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }

  std::string root;
  size_t descriptors;
};

#endif
