#include "repoindex.h"

#include <cctype>
#include <map>

#include "constants.h"
#include "linklines.h"
#include "packagename.h"

namespace {

constexpr const char* FORMAT = "zet-index 1";
constexpr size_t SHA256_DIGITS = 64;
// Twenty digits may not fit 64 bits; nineteen always do.
constexpr size_t NUMBER_DIGITS = 19;

struct Stanza {
  unsigned line = 0;
  std::map<std::string, std::string> fields;

  const std::string* get(const char* key) const {
    const auto found = fields.find(key);
    return found == fields.end() ? nullptr : &found->second;
  }
};

std::optional<uint64_t> numberOf(const std::string* text) {
  if (text == nullptr || text->empty() || text->size() > NUMBER_DIGITS) return std::nullopt;
  for (const char c : *text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
  }
  return std::stoull(*text);
}

bool lowerHex(const std::string& text) {
  if (text.size() != SHA256_DIGITS) return false;
  for (const char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c)) && (c < 'a' || c > 'f')) return false;
  }
  return true;
}

std::vector<std::string> wordsOf(const std::string& text) {
  std::vector<std::string> words;
  size_t start = 0;
  while ((start = text.find_first_not_of(' ', start)) != std::string::npos) {
    const size_t end = text.find(' ', start);
    words.push_back(text.substr(start, end - start));
    start = end;
  }
  return words;
}

// Splits the text into stanzas; false, with the line in `finding`, on a line that is not
// a key, a colon and a value. Of a key given twice in a stanza the first counts.
bool stanzasOf(const std::string& text, std::vector<Stanza>& stanzas, RepoIndex::Finding& finding) {
  bool open = false;
  unsigned number = 0;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(start, end - start);
    start = end + 1;
    ++number;
    if (line.empty()) {
      open = false;
      continue;
    }
    const size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0 || line.find(' ') < colon) {
      finding = {RepoIndex::BadLine, number, line};
      return false;
    }
    if (!open) stanzas.push_back({number, {}});
    open = true;
    const size_t value = line.find_first_not_of(' ', colon + 1);
    stanzas.back().fields.emplace(line.substr(0, colon),
                                  value == std::string::npos ? "" : line.substr(value));
  }
  return true;
}

bool readEntry(const Stanza& stanza, IndexEntry& entry, RepoIndex::Finding& finding) {
  const auto fail = [&](RepoIndex::Problem problem, const std::string* detail) {
    finding = {problem, stanza.line, detail ? *detail : ""};
    return false;
  };
  const std::string* file = stanza.get("File");
  if (!file || !RepoIndex::plainPackageFile(*file)) return fail(RepoIndex::BadFile, file);
  entry.file = *file;
  const std::string* name = stanza.get("Name");
  if (!name || *name != shortNameOf(entry.fullName())) {
    return fail(RepoIndex::NameMismatch, name);
  }
  entry.name = *name;
  const std::optional<uint64_t> size = numberOf(stanza.get("Size"));
  if (!size) return fail(RepoIndex::NoSize, stanza.get("Size"));
  entry.size = *size;
  const std::string* sha256 = stanza.get("SHA256");
  if (!sha256 || !lowerHex(*sha256)) return fail(RepoIndex::NoChecksum, sha256);
  entry.sha256 = *sha256;
  if (const std::string* build = stanza.get("Build")) {
    if (!LinkLines::plainWord(*build)) return fail(RepoIndex::BadWord, build);
    entry.build = *build;
  }
  if (const std::string* deps = stanza.get("Deps")) entry.deps = wordsOf(*deps);
  for (const std::string& dep : entry.deps) {
    if (!LinkLines::plainWord(dep)) return fail(RepoIndex::BadWord, &dep);
  }
  if (const std::string* description = stanza.get("Description")) {
    entry.description = *description;
  }
  return true;
}

}  // namespace

std::string IndexEntry::fullName() const {
  return file.substr(0, file.size() - std::string(zet::PACKAGE_EXTENSION).size());
}

bool RepoIndex::plainPackageFile(const std::string& file) {
  const std::string extension = zet::PACKAGE_EXTENSION;
  PackageName name;
  return file.size() > extension.size() &&
         file.compare(file.size() - extension.size(), extension.size(), extension) == 0 &&
         file[0] != '.' && file.find('/') == std::string::npos && LinkLines::plainWord(file) &&
         name.parse(file.substr(0, file.size() - extension.size())) && !name.name.empty();
}

std::optional<RepoIndex> RepoIndex::read(const std::string& text, Finding& finding) {
  std::vector<Stanza> stanzas;
  if (!stanzasOf(text, stanzas, finding)) return std::nullopt;
  const std::string* format = stanzas.empty() ? nullptr : stanzas[0].get("Format");
  if (!format || *format != FORMAT) {
    finding = {NoFormat, stanzas.empty() ? 1 : stanzas[0].line, format ? *format : ""};
    return std::nullopt;
  }
  RepoIndex index;
  const std::optional<uint64_t> serial = numberOf(stanzas[0].get("Serial"));
  const std::optional<uint64_t> date = numberOf(stanzas[0].get("Date"));
  if (!serial || !date) {
    finding = {BadSerial, stanzas[0].line, ""};
    return std::nullopt;
  }
  index.serial = *serial;
  index.date = *date;
  index.entries.resize(stanzas.size() - 1);
  for (size_t i = 1; i < stanzas.size(); ++i) {
    if (!readEntry(stanzas[i], index.entries[i - 1], finding)) return std::nullopt;
  }
  return index;
}

std::string RepoIndex::text() const {
  std::string text = std::string("Format: ") + FORMAT + "\nSerial: " + std::to_string(serial) +
                     "\nDate: " + std::to_string(date) + "\n";
  for (const IndexEntry& entry : entries) {
    text += "\nName: " + entry.name + "\nFile: " + entry.file +
            "\nSize: " + std::to_string(entry.size) + "\nSHA256: " + entry.sha256 + "\n";
    if (!entry.build.empty()) text += "Build: " + entry.build + "\n";
    std::string deps;
    for (const std::string& dep : entry.deps) deps += (deps.empty() ? "" : " ") + dep;
    if (!deps.empty()) text += "Deps: " + deps + "\n";
    if (!entry.description.empty()) text += "Description: " + entry.description + "\n";
  }
  return text;
}
