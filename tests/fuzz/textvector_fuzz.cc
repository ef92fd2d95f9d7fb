// The line container: the first byte of the input is the delimiter that splits the rest,
// and the whole input is loaded again as a text file of lines.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "scratchfile.h"
#include "textvector.h"

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
  lines.load(fuzz::writeScratch(data, size).c_str());
  TextVector copy(lines);
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (lines.length(i) > 1023 || copy.find(lines[i]) < 0) __builtin_trap();
    copy.removeChar(delimiter, i);
  }
  TextVector::difference(lines, tokens);
  if (lines.size() > 0) lines.erase(static_cast<int>(lines.size()) - 1);
  return 0;
}
