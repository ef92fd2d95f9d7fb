#include "dependencystore.h"

#include <cstring>
#include <string_view>
#include <unordered_set>

#include "constants.h"
#include "filesystem.h"
#include "packagename.h"
#include "packagerecord.h"

namespace {

// Where installedPath() finds a record: the directory as the installed set is listed from
// it, "/" "/var/log/packages" "/", without the root.
std::string packagesListing() {
  return std::string("/") + zet::PACKAGES_DIR + "/";
}

// The short names of the installed packages, then the incoming ones not yet among them.
TextVector providedNames(const TextVector& installed, const TextVector& incoming) {
  TextVector provided;
  for (const char* entry : installed) {
    PackageName parsed;
    if (!FileSystem::isDotEntry(entry) && parsed.parse(entry))
      provided.push_back(parsed.name.c_str());
  }
  for (unsigned i = 0; i < incoming.size(); ++i) {
    if (provided.find(incoming[i]) < 0) provided.push_back(incoming[i]);
  }
  return provided;
}

TextVector missingNames(const TextVector& required, const TextVector& provided) {
  TextVector missing(required);
  for (unsigned i = 0; i < missing.size();) {
    if (provided.find(missing[i]) >= 0) {
      missing.erase(static_cast<int>(i));
    } else {
      ++i;
    }
  }
  return missing;
}

// The entries of the deps directory, without those of the outgoing packages themselves.
TextVector dependentCandidates(const Database& database, const TextVector& outgoing) {
  FileSystem& fileSystem = FileSystem::instance();
  // Under zet's root this is root "/" "/var/log/deps/": one slash fewer than the packages.
  fileSystem.list(database.under(zet::DEPS_DIR) + "/", false);
  TextVector candidates(fileSystem.entries());
  for (int i = 0; i < static_cast<int>(candidates.size()); ++i) {
    // A name twice in `outgoing` steps the index back twice, even below the first entry.
    if (i < 0) continue;
    PackageName parsed;
    if (!parsed.parse(candidates[i])) continue;
    for (unsigned j = 0; j < outgoing.size(); ++j) {
      // The index steps back at every equality, so a name twice in `outgoing` also erases the
      // entry before this one; that is accepted.
      if (parsed.name == outgoing[j]) DependencyStore::eraseAt(candidates, i--);
    }
  }
  return candidates;
}

// The candidates whose deps file names an outgoing package, each once.
TextVector namingOutgoing(const Database& database, const TextVector& candidates,
                          const TextVector& outgoing) {
  TextVector found;
  for (const char* candidate : candidates) {
    PackageName parsed;
    if (!parsed.parse(candidate)) continue;
    const TextFile lines(database.path(zet::DEPS_DIR, candidate).c_str());
    for (const char* name : outgoing) {
      if (lines.find(name) >= 0) {
        found.push_back(candidate);
        break;
      }
    }
  }
  return found;
}

// The short name of each entry, each once, in the order of the entries.
TextVector shortNamesOnce(const TextVector& entries) {
  TextVector names;
  for (unsigned i = 0; i < entries.size(); ++i) {
    const std::string name = shortNameOf(entries[i]);
    if (names.find(name.c_str()) < 0) names.push_back(name.c_str());
  }
  return names;
}

}  // namespace

DependencyStore::DependencyStore() : database(Database::ofRoot(FileSystem::instance().getRoot())) {}

void DependencyStore::addRequired(const char* name) {
  if (required.find(name) < 0) required.push_back(name);
}

TextVector DependencyStore::resolve(int mode) {
  if (mode == ResolveMissing) {
    return missingNames(required, providedNames(database.listing(), incoming));
  }
  if (mode == ResolveDependents) return shortNamesOnce(dependents());
  return TextVector();
}

// Each pass yields only packages not yet outgoing, so the closure ends.
TextVector DependencyStore::withDependents(TextVector names) {
  TextVector found;
  do {
    clearOutgoing();
    for (unsigned i = 0; i < names.size(); ++i) addOutgoing(names[i]);
    found = resolve(ResolveDependents);
    for (unsigned i = 0; i < found.size(); ++i) names.push_back(found[i]);
  } while (found.size() > 0);
  return names;
}

TextVector DependencyStore::dependents() const {
  return namingOutgoing(database, dependentCandidates(database, outgoing), outgoing);
}

void DependencyStore::eraseAt(TextVector& vector, int index) {
  vector.erase(index);
}

// One set of the paths that no other record has listed yet, so each line of the database costs
// one look-up; the set views the strings of `files` and the records' lines are only viewed, so
// nothing is copied per line. Every record is still read on each call: nothing is cached.
TextVector DependencyStore::sharedFiles(TextVector files, const char* ownName) {
  std::unordered_set<std::string_view> unclaimed;
  for (unsigned i = 0; i < files.size(); ++i) unclaimed.insert(files[i]);

  for (const char* entry : database.listing()) {
    if (std::strcmp(entry, ownName) == 0) continue;
    // "." and ".." and unreadable records simply list nothing.
    PackageRecord::forEachListedFile(
        database.path(zet::PACKAGES_DIR, entry),
        [&unclaimed](std::string_view path) { unclaimed.erase(path); });
  }

  TextVector shared;
  for (unsigned i = 0; i < files.size(); ++i) {
    if (unclaimed.count(files[i]) == 0) shared.push_back(files[i]);
  }
  return shared;
}

std::string DependencyStore::installedPath(const char* name) {
  const std::string prefix = packagesListing();
  for (const char* entry : database.listing()) {
    PackageName parsed;
    if (std::strcmp(entry, name) == 0 || (parsed.parse(entry) && parsed.name == name)) {
      return prefix + entry;
    }
  }
  return std::string();
}

std::string DependencyStore::fullNameOf(const std::string& name) {
  for (const char* entry : database.listing()) {
    PackageName parsed;
    if (parsed.parse(entry) && parsed.name == name) return entry;
  }
  return std::string();
}
