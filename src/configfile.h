#ifndef ZET_CONFIGFILE_H
#define ZET_CONFIGFILE_H

#include <map>
#include <string>

// A small store of strings by section and key, read from and written to a text file of
// "[section]" headers and "key=value" lines. The program keeps one: /etc/zet.conf.
class ConfigFile {
 public:
  // Adds the file's assignments to the map; false, with the map unchanged, when it won't open.
  // The reader keeps its tokens across lines, so in practice only the first assignment of a
  // file takes effect.
  bool read(const std::string& path);
  // The value, or the empty string when the section or key is absent.
  std::string get(const std::string& section, const std::string& key) const;
  void set(const std::string& section, const std::string& key, const std::string& value);
  // Replaces the file with the map; a failure goes unreported.
  void write(const std::string& path) const;

 private:
  std::map<std::string, std::map<std::string, std::string>> sections;
};

#endif
