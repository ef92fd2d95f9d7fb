#include "configfile.h"

#include <cstring>

#include "textvector.h"

namespace {

bool isSectionHeader(const char* line) {
  const size_t length = strlen(line);
  return length >= 2 && line[0] == '[' && line[length - 1] == ']';
}

}  // namespace

// One token list serves the whole file and is never emptied, so once a line has pushed
// the count past 2 no later assignment is taken.
bool ConfigFile::read(const std::string& path) {
  TextFile lines;
  TextVector tokens;
  std::string section;
  if (!lines.load(path.c_str())) return false;
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (isSectionHeader(lines[i])) {
      section.assign(lines[i] + 1, lines.length(i) - 2);
      sections[section] = {};
      continue;
    }
    tokens.split('=', lines[i]);
    if (tokens.size() == 2) sections[section][tokens[0]] = tokens[1];
  }
  return true;
}

std::string ConfigFile::get(const std::string& section, const std::string& key) const {
  const auto foundSection = sections.find(section);
  if (foundSection == sections.end()) return "";
  const auto foundKey = foundSection->second.find(key);
  return foundKey == foundSection->second.end() ? "" : foundKey->second;
}

void ConfigFile::set(const std::string& section, const std::string& key, const std::string& value) {
  sections[section][key] = value;
}

void ConfigFile::write(const std::string& path) const {
  TextFile lines;
  for (const auto& [name, keys] : sections) {
    lines.push_back(("[" + name + "]").c_str());
    for (const auto& [key, value] : keys) lines.push_back((key + "=" + value).c_str());
  }
  lines.save(path.c_str(), true);
}
