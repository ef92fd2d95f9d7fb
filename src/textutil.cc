#include "textutil.h"

#include <algorithm>

bool startsWith(std::string_view text, std::string_view head) {
  return text.substr(0, head.size()) == head;
}

bool endsWith(std::string_view text, std::string_view tail) {
  return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

void stripBlanks(TextVector& lines) {
  for (unsigned i = 0; i < lines.size(); ++i) {
    lines.removeChar(' ', i);
    lines.removeChar('\t', i);
  }
}

void dropEmptyLines(TextVector& lines) {
  TextVector kept;
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (lines[i][0] != '\0') kept.push_back(lines[i]);
  }
  lines = kept;
}

std::vector<std::string> stringsOf(const TextVector& lines) {
  std::vector<std::string> copy;
  for (unsigned i = 0; i < lines.size(); ++i) copy.emplace_back(lines[i]);
  return copy;
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    lines.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}
