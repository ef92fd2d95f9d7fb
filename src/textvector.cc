#include "textvector.h"

#include <fcntl.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>

#include "constants.h"
#include "descriptor.h"
#include "smallfile.h"

TextVector::TextVector(const TextVector& other) {
  for (unsigned i = 0; i < other.size(); ++i) push_back(other[i]);
}

TextVector::~TextVector() {
  clear();
}

bool TextVector::operator=(const TextVector& other) {
  clear();
  for (unsigned i = 0; i < other.size(); ++i) push_back(other[i]);
  return true;
}

void TextVector::push_back(const char* text, unsigned int length) {
  char* copy = static_cast<char*>(malloc(length + 1));
  if (copy == nullptr)
    ZET_ASSERT(0 && "Low memory", "void TextVector::push_back(const char*, unsigned int)");
  // Copies as strncpy does, filling a shorter text up with NUL, plus the terminator.
  const size_t copied = strnlen(text, length);
  memcpy(copy, text, copied);
  memset(copy + copied, '\0', length + 1 - copied);
  // The vector doubles a full array and starts at one, which is the growth this array keeps.
  items.push_back(copy);
}

void TextVector::push_back(const char* text) {
  push_back(text, static_cast<unsigned>(strlen(text)));
}

void TextVector::pop_back() {
  free(items.back());
  items.pop_back();
}

void TextVector::clear() {
  for (char* item : items) free(item);
  items.clear();
}

// Tokens are copied straight out of `text`, so even a very long token is taken whole.
void TextVector::split(char delimiter, const char* text) {
  const char* tokenStart = text;
  for (const char* cursor = text;; ++cursor) {
    if (*cursor != delimiter && *cursor != '\0') continue;
    const unsigned count = static_cast<unsigned>(cursor - tokenStart);
    if (count > 0) push_back(tokenStart, count);
    if (*cursor == '\0') return;
    tokenStart = cursor + 1;
  }
}

void TextVector::erase(int index) {
  TextVector rest;
  for (unsigned i = 0; i < size(); ++i) {
    if (static_cast<int>(i) != index) rest.push_back(items[i]);
  }
  *this = rest;
}

int TextVector::find(const char* text) const {
  for (unsigned i = 0; i < size(); ++i) {
    if (strcmp(items[i], text) == 0) return static_cast<int>(i);
  }
  return -1;
}

void TextVector::removeChar(char character, int index) {
  std::string stripped;
  for (const char* in = items[index]; *in != '\0'; ++in) {
    if (*in != character) stripped += *in;
  }
  // Allocate through push_back, the one place that deals with exhausted memory.
  push_back(stripped.c_str());
  free(items[index]);
  items[index] = items.back();
  items.pop_back();
}

TextVector TextVector::difference(const TextVector& a, const TextVector& b) {
  TextVector result;
  for (unsigned i = 0; i < a.size(); ++i) {
    if (b.find(a[i]) < 0) result.push_back(a[i]);
  }
  return result;
}

// The strings of removed elements are left allocated on purpose: callers may still hold
// them, and the process is too short-lived for the loss to matter.
bool TextVector::removeAll(const TextVector& other) {
  std::vector<char*> kept;
  for (char* item : items) {
    if (other.find(item) < 0) kept.push_back(item);
  }
  items.clear();
  for (char* item : kept) items.push_back(item);
  return true;
}

TextFile::TextFile(const char* path) {
  load(path);
}

bool TextFile::load(const char* path) {
  clear();
  return forEachLine(path, [this](std::string_view line) {
    push_back(line.data(), static_cast<unsigned>(line.size()));
  });
}

// The file is read whole, in large blocks, which spares a library call and a copy per line;
// that counts when a removal reads every record.
bool TextFile::forEachLine(const char* path, const std::function<void(std::string_view)>& visit) {
  const Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
  if (!file.valid()) return false;
  std::string content;
  // A read error ends the text where it stands, as it would end a loop over lines.
  std::ignore = SmallFile::readFrom(file.get(), UINT64_MAX, content);
  forEachLineOf(content, visit);
  return true;
}

void TextFile::forEachLineOf(std::string_view content,
                             const std::function<void(std::string_view)>& visit) {
  // Cut as fgets into a 1024-byte buffer would cut it: each delivery runs through the next line
  // feed or stops at 1023 characters.
  constexpr size_t DELIVERY = 1023;
  for (size_t start = 0; start < content.size();) {
    const std::string_view chunk = content.substr(start, DELIVERY);
    const char* const feed = static_cast<const char*>(memchr(chunk.data(), '\n', chunk.size()));
    // A NUL ends the line early; a CR counts as part of the line end only right before the
    // LF of the same delivery.
    const size_t text = feed != nullptr ? static_cast<size_t>(feed - chunk.data()) : chunk.size();
    size_t count = strnlen(chunk.data(), text);
    if (feed != nullptr && count == text && count > 0 && chunk[count - 1] == '\r') --count;
    visit(chunk.substr(0, count));
    start += feed != nullptr ? text + 1 : text;
  }
}

bool TextFile::save(const char* path, bool overwrite) const {
  if (!overwrite && fileExists(path)) return false;
  FILE* file = fopen(path, "w+");
  if (file == nullptr) return false;
  for (unsigned i = 0; i < size(); ++i) {
    fputs((*this)[i], file);
    fputc('\n', file);
  }
  fclose(file);
  return true;
}

bool TextFile::fileExists(const char* path) {
  FILE* file = fopen(path, "r");
  if (file == nullptr) return false;
  fclose(file);
  return true;
}

unsigned TextFile::length(int index) const {
  return static_cast<unsigned>(strlen((*this)[index]));
}
