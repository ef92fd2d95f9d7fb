#include "database.h"

#include <sys/stat.h>

#include <algorithm>

#include "constants.h"
#include "filesystem.h"
#include "linklines.h"
#include "packagename.h"
#include "packagerecord.h"
#include "textutil.h"

Database Database::ofRoot(const std::string& root) {
  // The packages are listed from "/" "/var/log/packages" "/" under the root: one slash more
  // in front than the files in that directory have.
  return Database(root + "/", root + "/" + "/" + zet::PACKAGES_DIR + "/");
}

Database Database::asShown(const std::string& root) {
  std::string base = root;
  // "/" adds nothing: the database of the root "/" is "/var/log/packages".
  while (!base.empty() && base.back() == '/') base.pop_back();
  return Database(base, base + zet::PACKAGES_DIR);
}

bool Database::load() {
  FileSystem& fileSystem = FileSystem::instance();
  const bool listed = fileSystem.list(packagesListing, false);
  entries = fileSystem.entries();
  sorted.reset();
  return listed;
}

const std::vector<std::string>& Database::installed() const {
  return records().fullNames;
}

const std::vector<std::string>& Database::shortNames() const {
  return records().names;
}

const Database::Records& Database::records() const {
  if (sorted) return *sorted;
  Records found;
  for (const char* entry : entries) {
    if (isRecordName(entry)) found.fullNames.emplace_back(entry);
  }
  std::sort(found.fullNames.begin(), found.fullNames.end());
  for (const std::string& fullName : found.fullNames) found.names.push_back(shortNameOf(fullName));
  return *(sorted = std::move(found));
}

bool Database::isRecordName(const std::string& entry) const {
  if (entry.empty() || entry[0] == '.' || shortNameOf(entry).empty()) return false;
  // A record that cannot be read is still an installed package; a directory is none.
  struct stat status;
  return stat(path(zet::PACKAGES_DIR, entry).c_str(), &status) != 0 || !S_ISDIR(status.st_mode);
}

std::vector<std::string> Database::withShortName(const std::string& name) const {
  const Records& all = records();
  std::vector<std::string> found;
  for (size_t i = 0; i < all.fullNames.size(); ++i) {
    if (all.names[i] == name) found.push_back(all.fullNames[i]);
  }
  return found;
}

std::string Database::path(const char* directory, const std::string& fullName) const {
  return base + entry(directory, fullName);
}

std::string Database::entry(const char* directory, const std::string& fullName) {
  return std::string(directory) + "/" + fullName;
}

std::vector<std::string> Database::deps(const std::string& fullName) const {
  TextFile lines(path(zet::DEPS_DIR, fullName).c_str());
  stripBlanks(lines);
  dropEmptyLines(lines);
  return stringsOf(lines);
}

std::string Database::buildStamp(const std::string& fullName) const {
  TextFile lines(path(zet::BUILD_DIR, fullName).c_str());
  stripBlanks(lines);
  return lines.size() > 0 ? lines[0] : "";
}

std::vector<std::string> Database::description(const PackageRecord& record,
                                               const std::string& language) {
  auto found = record.descriptions.find(language);
  if (found == record.descriptions.end()) found = record.descriptions.find(zet::FALLBACK_LANG);
  return found == record.descriptions.end() ? std::vector<std::string>() : stringsOf(found->second);
}

FileList Database::links(const std::string& fullName) const {
  return LinkLines::read(TextFile(path(zet::SCRIPTS_DIR, fullName).c_str()));
}
