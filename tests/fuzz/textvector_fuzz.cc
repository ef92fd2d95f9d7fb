// The line container: the first byte of the input is the delimiter that splits the rest,
// and the whole input is loaded again as a text file of lines, which must be cut as fgets
// would cut them.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "scratchfile.h"
#include "textvector.h"

namespace {

// The lines as fgets into a 1024-byte buffer delivers them, which is how they are defined.
std::vector<std::string> linesByFgets(const char* path) {
  std::vector<std::string> lines;
  FILE* file = fopen(path, "r");
  if (file == nullptr) return lines;
  char buffer[1024];
  while (fgets(buffer, sizeof buffer, file) != nullptr) {
    unsigned count = 0;
    while (buffer[count] != '\n' && buffer[count] != '\0' &&
           !(buffer[count] == '\r' && buffer[count + 1] == '\n')) {
      ++count;
    }
    lines.emplace_back(buffer, count);
  }
  fclose(file);
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const char delimiter = static_cast<char>(data[0]);
  const std::string text = fuzz::asText(data + 1, size - 1);
  TextVector tokens;
  tokens.split(delimiter, text.c_str());
  for (unsigned i = 0; i < tokens.size(); ++i) {
    if (tokens[i][0] == '\0' || (delimiter != '\0' && strchr(tokens[i], delimiter) != nullptr))
      __builtin_trap();
  }

  TextFile lines;
  const std::string path = fuzz::writeScratch(data, size);
  lines.load(path.c_str());
  const std::vector<std::string> expected = linesByFgets(path.c_str());
  if (expected.size() != lines.size()) __builtin_trap();
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (expected[i] != lines[i]) __builtin_trap();
  }
  TextVector copy(lines);
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (lines.length(i) > 1023 || copy.find(lines[i]) < 0) __builtin_trap();
    copy.removeChar(delimiter, i);
  }
  TextVector::difference(lines, tokens);
  if (lines.size() > 0) lines.erase(static_cast<int>(lines.size()) - 1);
  return 0;
}
