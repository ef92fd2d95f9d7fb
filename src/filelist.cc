#include "filelist.h"

#include <cstdlib>
#include <string>

#include "constants.h"
#include "filesystem.h"
#include "temparea.h"

bool FileList::loadFromArchive(const char* archive) {
  const std::string listing = TempArea::instance().getPath() + "/" + zet::TEMP_FILELIST;
  // Paths come from root's own command line, so nothing is quoted.
  const std::string command = std::string(zet::TAR_TOOL) + " tzf " + archive + " 1>" + listing;
  if (std::system(command.c_str()) != 0) return false;

  FileSystem& fileSystem = FileSystem::instance();
  if (!fileSystem.exists(listing, false)) return false;
  load(listing.c_str());
  fileSystem.remove(listing, false);
  return true;
}

void FileList::removeFiles() const {
  FileSystem& fileSystem = FileSystem::instance();
  for (unsigned i = 0; i < size(); ++i) fileSystem.remove((*this)[i], false);
}
