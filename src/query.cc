#include "query.h"

#include <fnmatch.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <tuple>
#include <unordered_map>

#include "constants.h"
#include "filesystem.h"
#include "linklines.h"
#include "packagename.h"
#include "packagerecord.h"
#include "textutil.h"
#include "textvector.h"

namespace {

// The version as the name spells it: PackageName fuses the last two tokens of a version of
// several, which does for comparing names but not for showing one.
std::string versionOf(const std::string& fullName, const std::string& name) {
  TextVector tokens;
  TextVector nameTokens;
  tokens.split('-', fullName.c_str());
  nameTokens.split('-', name.c_str());
  std::string version;
  for (unsigned i = nameTokens.size(); i + 2 < tokens.size(); ++i) {
    if (!version.empty()) version += "-";
    version += tokens[i];
  }
  return version;
}

// A 16-bit digest of a path's length and its last eight bytes: far cheaper than a look-up in
// a hash table, and the same for equal paths, so it can rule a path out before one.
size_t sketch(std::string_view path) {
  uint64_t tail = 0;
  // A copy of constant size is one load.
  if (path.size() >= sizeof tail) {
    std::memcpy(&tail, path.data() + path.size() - sizeof tail, sizeof tail);
  } else {
    std::memcpy(&tail, path.data(), path.size());
  }
  return static_cast<size_t>(((tail ^ path.size()) * 0x9E3779B97F4A7C15ull) >> 48);
}

std::vector<std::string> linesOf(const TextVector& lines) {
  std::vector<std::string> copy;
  for (unsigned i = 0; i < lines.size(); ++i) copy.emplace_back(lines[i]);
  return copy;
}

}  // namespace

bool Query::Owner::operator<(const Owner& other) const {
  return std::tie(fullName, path) < std::tie(other.fullName, other.path);
}

bool Query::Owner::operator==(const Owner& other) const {
  return fullName == other.fullName && path == other.path;
}

Query::Query(const std::string& root, const std::string& language, ProblemVisitor problem)
    : prefix(root), language(language), problem(std::move(problem)) {
  // "/" adds nothing: the database of the root "/" is "/var/log/packages".
  while (!prefix.empty() && prefix.back() == '/') prefix.pop_back();
}

bool Query::open() {
  FileSystem& fileSystem = FileSystem::instance();
  if (!fileSystem.list(underRoot(zet::PACKAGES_DIR), false)) return false;
  const TextVector& entries = fileSystem.entries();
  for (unsigned i = 0; i < entries.size(); ++i) {
    if (std::strcmp(entries[i], ".") != 0 && std::strcmp(entries[i], "..") != 0) {
      packages.emplace_back(entries[i]);
    }
  }
  std::sort(packages.begin(), packages.end());
  for (const std::string& fullName : packages) shortNames.push_back(shortNameOf(fullName));
  return true;
}

std::vector<std::string> Query::find(const std::string& word) const {
  std::string name = FileSystem::baseName(word);
  if (endsWith(name, zet::PACKAGE_EXTENSION)) name = FileSystem::stripExtension(name);
  if (std::binary_search(packages.begin(), packages.end(), name)) return {name};
  std::vector<std::string> found;
  // An entry whose full name does not parse has no short name, and the empty word names none.
  for (size_t i = 0; i < packages.size() && !name.empty(); ++i) {
    if (shortNames[i] == name) found.push_back(packages[i]);
  }
  return found;
}

std::vector<std::string> Query::match(const std::string& pattern) const {
  std::vector<std::string> found;
  for (size_t i = 0; i < packages.size(); ++i) {
    if (fnmatch(pattern.c_str(), packages[i].c_str(), 0) == 0 ||
        fnmatch(pattern.c_str(), shortNames[i].c_str(), 0) == 0) {
      found.push_back(packages[i]);
    }
  }
  return found;
}

std::optional<Query::Info> Query::info(const std::string& fullName) const {
  PackageRecord record;
  const std::string recordFile = databasePath(zet::PACKAGES_DIR, fullName);
  if (!record.read(recordFile)) {
    problem({Problem::Unreadable, recordFile});
    return std::nullopt;
  }
  Info info;
  info.fullName = fullName;
  PackageName parsed;
  parsed.parse(fullName);
  info.name = parsed.name;
  info.version = versionOf(fullName, parsed.name);
  info.architecture = parsed.architecture;
  info.build = parsed.build;
  info.compressedSizeK = record.compressedSizeK;
  info.uncompressedSizeK = record.uncompressedSizeK;
  info.location = record.location;

  TextFile stamp(databasePath(zet::BUILD_DIR, fullName).c_str());
  stripBlanks(stamp);
  if (stamp.size() > 0) info.buildStamp = stamp[0];
  info.deps = readDeps(databasePath(zet::DEPS_DIR, fullName));
  if (TextFile::fileExists(databasePath(zet::SCRIPTS_DIR, fullName).c_str())) {
    info.scripts.push_back(zet::DOINST_SCRIPT);
  }
  if (TextFile::fileExists(databasePath(zet::POSTINST_DIR, fullName).c_str())) {
    info.scripts.push_back(zet::POSTINST_SCRIPT);
  }
  listRecord(fullName, [&info](std::string_view) { ++info.files; });
  info.links = links(fullName).size();

  // The description in the language asked for, else the default one, as an install shows it.
  auto description = record.descriptions.find(language);
  if (description == record.descriptions.end()) {
    description = record.descriptions.find(zet::FALLBACK_LANG);
  }
  if (description != record.descriptions.end()) info.description = linesOf(description->second);
  return info;
}

void Query::files(const std::string& fullName, const PathVisitor& visit) const {
  // One buffer for every path, so that a package of many files costs no allocation per path.
  std::string path = prefix + "/";
  const size_t base = path.size();
  forEachEntry(fullName, [&](std::string_view entry) {
    path.resize(base);
    path.append(entry);
    visit(path);
  });
}

std::vector<std::vector<Query::Owner>> Query::owners(const std::vector<std::string>& paths) const {
  // Each asked path is looked for as a file or link and as a directory, with its "/".
  std::vector<std::string> forms;
  for (const std::string& path : paths) {
    forms.push_back(recordPath(path));
    forms.push_back(forms.back() + "/");
  }
  std::unordered_multimap<std::string_view, size_t> wanted;
  // Most lines of the database are asked for by no one: the sketch turns them away first.
  std::vector<bool> sketched(size_t(1) << 16);
  for (size_t i = 0; i < forms.size(); ++i) {
    wanted.emplace(forms[i], i / 2);
    sketched[sketch(forms[i])] = true;
  }

  std::vector<std::vector<Owner>> owners(paths.size());
  for (const std::string& fullName : packages) {
    forEachEntry(fullName, [&](std::string_view entry) {
      if (!sketched[sketch(entry)]) return;
      const auto found = wanted.equal_range(entry);
      for (auto it = found.first; it != found.second; ++it) {
        owners[it->second].push_back({fullName, prefix + "/" + std::string(entry)});
      }
    });
  }
  // A package that lists a path twice owns it once.
  for (std::vector<Owner>& list : owners) {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
  }
  return owners;
}

void Query::verify(const std::string& fullName, const PathVisitor& missing) const {
  files(fullName, [&](const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) == 0) return;
    // A name too long for the file system cannot be there either.
    if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG) {
      missing(path);
    } else {
      problem({Problem::CannotCheck, path});
    }
  });
}

std::vector<Query::Dependency> Query::depends(const std::string& fullName) const {
  std::vector<Dependency> dependencies;
  for (const std::string& name : readDeps(databasePath(zet::DEPS_DIR, fullName))) {
    Dependency dependency{name, {}};
    // As the dependency check counts them: by short name, so a full name provides nothing.
    for (size_t i = 0; i < packages.size(); ++i) {
      if (shortNames[i] == name) dependency.providers.push_back(packages[i]);
    }
    dependencies.push_back(dependency);
  }
  return dependencies;
}

std::vector<std::string> Query::rdepends(const std::string& fullName) const {
  const std::string name = shortNameOf(fullName);
  std::vector<std::string> dependants;
  // Only installed packages count, whatever else lies in the deps directory.
  for (const std::string& candidate : packages) {
    const std::vector<std::string> deps = readDeps(databasePath(zet::DEPS_DIR, candidate));
    if (std::find(deps.begin(), deps.end(), name) != deps.end()) dependants.push_back(candidate);
  }
  return dependants;
}

std::string Query::recordPath(const std::string& path) {
  std::string form;
  for (char character : path) {
    if (character == '/' && (form.empty() || form.back() == '/')) continue;
    form += character;
  }
  if (!form.empty() && form.back() == '/') form.pop_back();
  return form;
}

std::string Query::databasePath(const char* directory, const std::string& fullName) const {
  return underRoot(directory) + "/" + fullName;
}

// Read as an install writes them: blanks and tabs dropped, empty lines skipped.
std::vector<std::string> Query::readDeps(const std::string& path) const {
  TextFile lines(path.c_str());
  stripBlanks(lines);
  dropEmptyLines(lines);
  return linesOf(lines);
}

FileList Query::links(const std::string& fullName) const {
  // A package without a stored doinst script has no links.
  const TextFile script(databasePath(zet::SCRIPTS_DIR, fullName).c_str());
  return LinkLines::read(script);
}

void Query::listRecord(const std::string& fullName,
                       const std::function<void(std::string_view)>& visit) const {
  const std::string recordFile = databasePath(zet::PACKAGES_DIR, fullName);
  switch (PackageRecord::forEachListedFile(recordFile, visit)) {
    case PackageRecord::Listing::Unreadable:
      problem({Problem::Unreadable, recordFile});
      break;
    case PackageRecord::Listing::Missing:
      problem({Problem::NoFileList, recordFile});
      break;
    case PackageRecord::Listing::Found:
      break;
  }
}

void Query::forEachEntry(const std::string& fullName,
                         const std::function<void(std::string_view)>& visit) const {
  listRecord(fullName, visit);
  const FileList linked = links(fullName);
  for (unsigned i = 0; i < linked.size(); ++i) visit(linked[i]);
}
