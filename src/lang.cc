#include "lang.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "constants.h"
#include "textvector.h"

namespace {

// The first line of a value is kept to this many bytes.
const unsigned MAX_VALUE_LENGTH = 65536;

}  // namespace

Lang& Lang::instance() {
  static Lang lang;
  return lang;
}

bool Lang::load(const std::string& path) {
  TextFile lines;
  if (!lines.load(path.c_str())) return false;
  std::string key;
  std::string value;
  for (unsigned i = 0; i < lines.size(); ++i) {
    const char* line = lines[i];
    if (!key.empty()) {
      value += line;
    } else if (const char* equals = strchr(line, '=')) {
      key = toUpper(std::string(line, equals));
      value = substring(equals + 1, 0, MAX_VALUE_LENGTH);
    }
    // A trailing backslash carries the sentence on to the next line.
    if (!value.empty() && value.back() == '\\') {
      value.back() = '\n';
      continue;
    }
    // A line that defines nothing lands here too and stores an empty sentence under "".
    sentences[key] = split(ARG_MARKER, value);
    key.clear();
    value.clear();
  }
  return true;
}

std::string Lang::fill(const char* key, const std::vector<std::string>& args) {
  const auto found = sentences.find(toUpper(key));
  if (found == sentences.end()) {
    fputs("Lang::get(): sentence '", stdout);
    fputs(key, stdout);
    fputs("' not found in lang file\n", stdout);
    fflush(stdout);
    return std::string();
  }
  const std::vector<std::string>& fragments = found->second;
  std::string result;
  for (size_t i = 0; i < fragments.size(); ++i) {
    result += fragments[i];
    if (i + 1 < fragments.size() && i < args.size()) result += args[i];
  }
  return result;
}

std::string Lang::toUpper(const std::string& text) {
  std::string upper = text;
  for (char& byte : upper) byte = static_cast<char>(toupper(static_cast<unsigned char>(byte)));
  return upper;
}

std::vector<std::string> Lang::split(const std::string& marker, const std::string& text) {
  std::vector<std::string> fragments;
  std::string current;
  size_t position = 0;
  while (position < text.size()) {
    if (!marker.empty() && text.compare(position, marker.size(), marker) == 0) {
      fragments.push_back(current);
      current.clear();
      position += marker.size();
    } else {
      current += text[position];
      ++position;
    }
  }
  fragments.push_back(current);
  return fragments;
}

// A start at the end or past it leaves nothing to take.
std::string Lang::substring(const char* text, int start, unsigned length) {
  if (start < 0) return std::string();
  const std::string_view whole(text);
  return std::string(whole.substr(std::min<size_t>(start, whole.size()), length));
}

void loadLanguage(const std::string& name) {
  const std::string dir = std::string(zet::LANG_DIR) + "/";
  if (Lang::instance().load(dir + name + zet::LANG_EXTENSION)) return;
  Lang::instance().load(dir + zet::FALLBACK_LANG + zet::LANG_EXTENSION);
}
