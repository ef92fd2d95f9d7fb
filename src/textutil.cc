#include "textutil.h"

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
