#include "packagerecord.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "constants.h"
#include "textutil.h"

namespace {

constexpr const char* NAME_LABEL = "PACKAGE NAME:";
constexpr const char* COMPRESSED_LABEL = "COMPRESSED PACKAGE SIZE:";
constexpr const char* UNCOMPRESSED_LABEL = "UNCOMPRESSED PACKAGE SIZE:";
constexpr const char* LOCATION_LABEL = "PACKAGE LOCATION:";
constexpr const char* DESCRIPTION_LABEL = "PACKAGE DESCRIPTION:";
constexpr const char* LANGUAGE_LABEL = "LANGUAGE:";
constexpr const char* FILE_LIST_LABEL = "FILE LIST:";
// Written between a label and its value.
constexpr const char* VALUE_GAP = "     ";
constexpr const char* SIZE_UNIT = " K";

// Ends a description block: a language label, or "FILE LIST:" or any leading part of it,
// the empty line included.
bool isStopLine(const char* line) {
  if (startsWith(line, LANGUAGE_LABEL)) return true;
  // Up to the label's closing NUL, so a line with anything behind the label does not stop.
  const size_t length = std::min(std::strlen(line), std::strlen(FILE_LIST_LABEL) + 1);
  return std::strncmp(line, FILE_LIST_LABEL, length) == 0;
}

// The blank-separated token at `index` of `line`, or nothing when the line has fewer.
bool tokenAt(const char* line, unsigned index, std::string& token) {
  TextVector tokens;
  tokens.split(' ', line);
  if (tokens.size() <= index) return false;
  token = tokens[index];
  return true;
}

void readSize(const char* line, uint32_t& size) {
  std::string token;
  // Converted up to the first non-digit, so "120K" reads as 120; the unit is not looked at.
  if (tokenAt(line, 3, token))
    size = static_cast<uint32_t>(std::strtol(token.c_str(), nullptr, 10));
}

// Appends the lines from `first` up to the next stop line to the description in `language`,
// which only comes into being with its first line.
void copyBlock(const TextVector& lines, unsigned first,
               std::map<std::string, TextFile>& descriptions, const std::string& language) {
  for (unsigned i = first; i < lines.size() && !isStopLine(lines[i]); ++i) {
    descriptions[language].push_back(lines[i]);
  }
}

}  // namespace

void PackageRecord::clear() {
  name.clear();
  location.clear();
  compressedSizeK = 0;
  uncompressedSizeK = 0;
  files.clear();
  descriptions.clear();
}

// Labels match as prefixes, and the lines of a block are looked at again as labels after it
// has been copied: records written by every earlier version read this way.
bool PackageRecord::read(const std::string& path) {
  clear();
  TextFile lines;
  if (!lines.load(path.c_str())) return false;

  std::string language = zet::FALLBACK_LANG;
  for (unsigned i = 0; i < lines.size(); ++i) {
    const char* line = lines[i];
    if (startsWith(line, NAME_LABEL)) {
      tokenAt(line, 2, name);
    } else if (startsWith(line, COMPRESSED_LABEL)) {
      readSize(line, compressedSizeK);
    } else if (startsWith(line, UNCOMPRESSED_LABEL)) {
      readSize(line, uncompressedSizeK);
    } else if (startsWith(line, LOCATION_LABEL)) {
      tokenAt(line, 2, location);
    } else if (startsWith(line, DESCRIPTION_LABEL)) {
      copyBlock(lines, i + 1, descriptions, zet::FALLBACK_LANG);
    } else if (startsWith(line, LANGUAGE_LABEL)) {
      tokenAt(line, 1, language);
      copyBlock(lines, i + 1, descriptions, language);
    } else if (startsWith(line, FILE_LIST_LABEL)) {
      for (unsigned j = i + 1; j < lines.size(); ++j) files.push_back(lines[j]);
    }
  }
  return true;
}

PackageRecord::Listing PackageRecord::forEachListedFile(
    const std::string& path, const std::function<void(std::string_view)>& visit) {
  const std::string_view label = FILE_LIST_LABEL;
  bool listing = false;
  const bool opened = TextFile::forEachLine(path.c_str(), [&](std::string_view line) {
    if (listing) {
      visit(line);
    } else {
      listing = line.substr(0, label.size()) == label;
    }
  });
  if (!opened) return Listing::Unreadable;
  return listing ? Listing::Found : Listing::Missing;
}

bool PackageRecord::namesPath(std::string_view line) {
  const std::string_view label = FILE_LIST_LABEL;
  return !line.empty() && line.substr(0, label.size()) != label;
}

bool PackageRecord::write(const std::string& path) {
  TextFile lines;
  lines.push_back((std::string(NAME_LABEL) + VALUE_GAP + name).c_str());
  lines.push_back(
      (std::string(COMPRESSED_LABEL) + VALUE_GAP + std::to_string(compressedSizeK) + SIZE_UNIT)
          .c_str());
  lines.push_back(
      (std::string(UNCOMPRESSED_LABEL) + VALUE_GAP + std::to_string(uncompressedSizeK) + SIZE_UNIT)
          .c_str());
  lines.push_back((std::string(LOCATION_LABEL) + VALUE_GAP + location).c_str());
  lines.push_back(DESCRIPTION_LABEL);
  // Creates an empty default entry when there is none; it leaves no trace in the file.
  const TextFile& defaultDescription = descriptions[zet::FALLBACK_LANG];
  for (unsigned i = 0; i < defaultDescription.size(); ++i) lines.push_back(defaultDescription[i]);
  for (descriptionCursor = descriptions.begin(); descriptionCursor != descriptions.end();
       ++descriptionCursor) {
    if (descriptionCursor->first == zet::FALLBACK_LANG) continue;
    lines.push_back((std::string(LANGUAGE_LABEL) + VALUE_GAP + descriptionCursor->first).c_str());
    const TextFile& block = descriptionCursor->second;
    for (unsigned i = 0; i < block.size(); ++i) lines.push_back(block[i]);
  }
  lines.push_back(FILE_LIST_LABEL);
  for (unsigned i = 0; i < files.size(); ++i) lines.push_back(files[i]);
  return !lines.save(path.c_str(), true);
}
