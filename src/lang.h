// Lang is the catalogue of every sentence the program can say: upper-cased key to the
// sentence cut at its "[ARG]" markers, so a sentence with n markers has n + 1 fragments.
// It only grows: a later file lies on top of an earlier one, key by key.
#ifndef ZET_LANG_H
#define ZET_LANG_H

#include <map>
#include <string>
#include <vector>

constexpr const char* ARG_MARKER = "[ARG]";

// The process-wide sentence catalogue, filled from language files.
class Lang {
 public:
  static Lang& instance();

  // Reads one language file into the catalogue; false only when it cannot be opened.
  bool load(const std::string& path);

  // The sentence of `key` (any case) with its markers filled by `args` in order. A missing
  // key prints the not-found line on standard output and gives the empty string.
  template <typename... Args>
  std::string get(const char* key, const Args&... args) {
    return fill(key, {std::string(args)...});
  }

  static std::string toUpper(const std::string& text);
  static std::vector<std::string> split(const std::string& marker, const std::string& text);
  // Up to `length` bytes of `text` from `start`; empty when `start` lies outside.
  static std::string substring(const char* text, int start, unsigned length);

 private:
  Lang() = default;
  // A marker beyond the given arguments is filled with the empty text, so a language file
  // with too many markers cannot make the program read past its arguments.
  std::string fill(const char* key, const std::vector<std::string>& args);

  std::map<std::string, std::vector<std::string>> sentences;
};

// Loads LANG_DIR/name.lang, or the fallback language when that file cannot be opened.
void loadLanguage(const std::string& name);

#endif
