// The loaders under test take a path, so each input is written to one file in a private
// directory that lives as long as the fuzzer and is removed when it exits.
#ifndef ZET_FUZZ_SCRATCHFILE_H
#define ZET_FUZZ_SCRATCHFILE_H

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

inline const std::string& scratchPath() {
  static const std::string path = [] {
    static char dir[] = "/tmp/zet-fuzz-XXXXXX";
    if (mkdtemp(dir) == nullptr) {
      perror("mkdtemp");
      abort();
    }
    std::atexit([] {
      unlink((std::string(dir) + "/input").c_str());
      rmdir(dir);
    });
    return std::string(dir) + "/input";
  }();
  return path;
}

// Replaces the scratch file with the input and gives its path.
inline const std::string& writeScratch(const uint8_t* data, size_t size) {
  const std::string& path = scratchPath();
  FILE* file = fopen(path.c_str(), "wb");
  if (file == nullptr || fwrite(data, 1, size, file) != size || fclose(file) != 0) {
    perror(path.c_str());
    abort();
  }
  return path;
}

// The input as one NUL-terminated string, cut at its first NUL as a C caller would see it.
inline std::string asText(const uint8_t* data, size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size).c_str();
}

}  // namespace fuzz

#endif
