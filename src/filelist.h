#ifndef ZET_FILELIST_H
#define ZET_FILELIST_H

#include "textvector.h"

// The member paths of an archive as the tar tool lists them, in its order. A Package keeps
// its files in one, and FileSystem keeps its directory listings in one.
class FileList : public TextFile {
 public:
  FileList() = default;
  FileList(const TextVector& other) : TextFile(other) {}

  // Replaces the content with the member list of `archive`. False, with the list unchanged,
  // when the tool fails or leaves no output.
  bool loadFromArchive(const char* archive);
  // Removes each listed path, not under the root, ignoring failures.
  void removeFiles() const;
};

#endif
