#include "repoindex.h"

#include <cctype>
#include <map>

#include "constants.h"
#include "filesystem.h"
#include "linklines.h"
#include "packagename.h"
#include "textutil.h"

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

// Hands each stanza of the text to `take` in turn, holding one at a time, so that a large
// index is never held twice; false, with the line in `finding`, on a line that is not a key,
// a colon and a value, or when `take` refuses a stanza. Of a key given twice in a stanza the
// first counts.
template <typename Take>
bool eachStanza(const std::string& text, RepoIndex::Finding& finding, Take take) {
  Stanza stanza;
  bool open = false;
  unsigned number = 0;
  for (const std::string& line : splitLines(text)) {
    ++number;
    if (line.empty()) {
      if (open && !take(stanza)) return false;
      open = false;
      continue;
    }
    const size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0 || line.find(' ') < colon) {
      finding = {RepoIndex::BadLine, number, line};
      return false;
    }
    if (!open) stanza = {number, {}};
    open = true;
    const size_t value = line.find_first_not_of(' ', colon + 1);
    stanza.fields.emplace(line.substr(0, colon),
                          value == std::string::npos ? "" : line.substr(value));
  }
  return !open || take(stanza);
}

bool readHeader(const Stanza& stanza, RepoIndex& index, RepoIndex::Finding& finding) {
  const std::string* format = stanza.get("Format");
  if (!format || *format != FORMAT) {
    finding = {RepoIndex::NoFormat, stanza.line, format ? *format : ""};
    return false;
  }
  const std::optional<uint64_t> serial = numberOf(stanza.get("Serial"));
  const std::optional<uint64_t> date = numberOf(stanza.get("Date"));
  if (!serial || !date) {
    finding = {RepoIndex::BadSerial, stanza.line, ""};
    return false;
  }
  index.serial = *serial;
  index.date = *date;
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
  const std::string* sizeText = stanza.get("Size");
  const std::optional<uint64_t> size = numberOf(sizeText);
  if (!size) return fail(RepoIndex::NoSize, sizeText);
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
  return FileSystem::stripExtension(file);
}

bool RepoIndex::plainPackageFile(const std::string& file) {
  PackageName name;
  // A leading dot also turns away ".tgz" alone.
  return endsWith(file, zet::PACKAGE_EXTENSION) && file[0] != '.' &&
         file.find('/') == std::string::npos && LinkLines::plainWord(file) &&
         name.parse(FileSystem::stripExtension(file)) && !name.name.empty();
}

std::optional<RepoIndex> RepoIndex::read(const std::string& text, Finding& finding) {
  RepoIndex index;
  bool headed = false;
  const bool good = eachStanza(text, finding, [&](const Stanza& stanza) {
    if (!headed) return headed = readHeader(stanza, index, finding);
    index.entries.emplace_back();
    return readEntry(stanza, index.entries.back(), finding);
  });
  if (good && !headed) finding = {NoFormat, 1, ""};
  if (!good || !headed) return std::nullopt;
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
