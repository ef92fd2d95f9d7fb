#include "tagfile.h"

#include <cstring>

#include "textvector.h"

namespace {

bool tagOf(const char* literal, TagPriority& tag) {
  static const struct {
    const char* literal;
    TagPriority tag;
  } tags[] = {{"ADD", TagAdd}, {"OPT", TagOpt}, {"SKP", TagSkip}, {"REC", TagRec}};
  for (const auto& row : tags) {
    if (strcmp(literal, row.literal) == 0) {
      tag = row.tag;
      return true;
    }
  }
  return false;
}

}  // namespace

bool TagFile::load(const char* path) {
  TextFile lines;
  if (!lines.load(path)) return false;
  for (unsigned i = 0; i < lines.size(); ++i) {
    // Only the blank separates: a tab makes the line one token, and it is passed over.
    TextVector tokens;
    tokens.split(' ', lines[i]);
    if (tokens.size() != 2) continue;
    const std::string nameToken = tokens[0];
    if (nameToken.back() != ':') continue;
    TagPriority tag;
    if (!tagOf(tokens[1], tag)) continue;
    entries[nameToken.substr(0, nameToken.size() - 1)] = tag;
  }
  return true;
}

int TagFile::priority(const std::string& name) const {
  const auto found = entries.find(name);
  return found == entries.end() ? TagNone : found->second;
}
