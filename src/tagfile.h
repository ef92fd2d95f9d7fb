#ifndef ZET_TAGFILE_H
#define ZET_TAGFILE_H

#include <map>
#include <string>

// The tag of a package in a tag file, and the value of the "priority" option. The numbers
// are no ranking: "OPT" is 1 and "REC" is 3.
enum TagPriority : int { TagAdd = 0, TagOpt = 1, TagSkip = 2, TagRec = 3, TagNone = 4 };

// Short package name to tag, read from a tag file of "name: TAG" lines. Lines that do not
// fit are passed over in silence; the last valid line for a name wins.
class TagFile {
 public:
  // Adds the file's entries; false, with the table unchanged, when it cannot be opened.
  bool load(const char* path);
  void clear() { entries.clear(); }
  bool contains(const std::string& name) const { return entries.count(name) > 0; }
  // The tag of the name, TagNone when it has none.
  int priority(const std::string& name) const;

 private:
  std::map<std::string, TagPriority> entries;
};

#endif
