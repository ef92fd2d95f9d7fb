#include "packagegroup.h"

PackageGroup& PackageGroup::add(Package* first, Package* second) {
  packages.push_back(Entry{first, second});
  return *this;
}

PackageGroup& PackageGroup::remove(Package* package) {
  for (auto entry = packages.begin(); entry != packages.end(); ++entry) {
    if (entry->first == package) {
      packages.erase(entry);
      break;
    }
  }
  return *this;
}

bool PackageGroup::loadTagFile(const std::string& path) {
  tagFile.clear();
  return tagFile.load(path.c_str());
}
