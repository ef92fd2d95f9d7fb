#include "query.h"

#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "constants.h"
#include "dependencystore.h"
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

}  // namespace

bool Query::Owner::operator<(const Owner& other) const {
  return std::tie(fullName, path) < std::tie(other.fullName, other.path);
}

bool Query::Owner::operator==(const Owner& other) const {
  return fullName == other.fullName && path == other.path;
}

Query::Query(const std::string& root, const std::string& language, ProblemVisitor problem)
    : database(Database::asShown(root)), language(language), problem(std::move(problem)) {}

bool Query::open() {
  return database.load();
}

std::vector<std::string> Query::find(const std::string& word) const {
  std::string name = FileSystem::baseName(word);
  if (endsWith(name, zet::PACKAGE_EXTENSION)) name = FileSystem::stripExtension(name);
  const std::vector<std::string>& packages = database.installed();
  if (std::binary_search(packages.begin(), packages.end(), name)) return {name};
  return database.withShortName(name);
}

std::vector<std::string> Query::match(const std::string& pattern) const {
  const std::vector<std::string>& packages = database.installed();
  const std::vector<std::string>& shortNames = database.shortNames();
  std::vector<std::string> found;
  // Names hold no slash and patterns keep their escapes, so fnmatch needs no flag.
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
  const std::string recordFile = database.path(zet::PACKAGES_DIR, fullName);
  if (!record.read(recordFile)) {
    problem({Problem::Unreadable, recordFile});
    return std::nullopt;
  }
  Info info = named(fullName);
  info.compressedSizeK = record.compressedSizeK;
  info.uncompressedSizeK = record.uncompressedSizeK;
  info.location = record.location;

  info.buildStamp = database.buildStamp(fullName);
  info.deps = database.deps(fullName);
  if (TextFile::fileExists(database.path(zet::SCRIPTS_DIR, fullName).c_str())) {
    info.scripts.push_back(zet::DOINST_SCRIPT);
  }
  if (TextFile::fileExists(database.path(zet::POSTINST_DIR, fullName).c_str())) {
    info.scripts.push_back(zet::POSTINST_SCRIPT);
  }
  listRecord(fullName, [&info](std::string_view) { ++info.files; });
  info.links = database.links(fullName).size();
  info.description = Database::description(record, language);
  return info;
}

Query::Info Query::named(const std::string& fullName) {
  Info info;
  info.fullName = fullName;
  PackageName parsed;
  parsed.parse(fullName);
  info.name = parsed.name;
  info.version = versionOf(fullName, parsed.name);
  info.architecture = parsed.architecture;
  info.build = parsed.build;
  return info;
}

Query::Info Query::info(const Package& package) {
  Info info = named(package.fullName);
  info.compressedSizeK = package.compressedSizeK;
  info.uncompressedSizeK = package.uncompressedSizeK;
  info.location = package.location;
  info.buildStamp = package.buildInfo.size() > 0 ? package.buildInfo[0] : "";
  info.deps = stringsOf(package.deps);
  const std::pair<const ScriptRunner*, const char*> scripts[] = {
      {&package.preinstScript, zet::PREINST_SCRIPT},
      {&package.doinstScript, zet::DOINST_SCRIPT},
      {&package.postinstScript, zet::POSTINST_SCRIPT}};
  for (const auto& script : scripts) {
    if (script.first->hasLines()) info.scripts.push_back(script.second);
  }
  info.files = package.files.size();
  info.links = LinkLines::read(package.doinstScript).size();
  info.description = stringsOf(package.descriptionLines(false));
  return info;
}

void Query::files(const std::string& fullName, const PathVisitor& visit) const {
  underRoot([&](const auto& entry) { forEachEntry(fullName, entry); }, visit);
}

void Query::files(const Package& package, const PathVisitor& visit) const {
  underRoot(
      [&package](const auto& entry) {
        for (const char* file : package.files) entry(file);
        for (const char* link : LinkLines::read(package.doinstScript)) entry(linkPath(link));
      },
      visit);
}

void Query::underRoot(
    const std::function<void(const std::function<void(std::string_view)>&)>& entries,
    const PathVisitor& visit) const {
  // One buffer for every path, so that a package of many files costs no allocation per path.
  std::string path = database.under("/");
  const size_t base = path.size();
  entries([&](std::string_view entry) {
    path.resize(base);
    path.append(entry);
    visit(path);
  });
}

std::vector<std::vector<Query::Owner>> Query::owners(const std::vector<std::string>& paths) const {
  // Each asked path is looked for as written and as resolved, each as a file or link and as
  // a directory, with its "/".
  std::vector<std::pair<std::string, size_t>> forms;
  for (size_t i = 0; i < paths.size(); ++i) {
    std::vector<std::string> asked = {recordPath(fromRoot(paths[i]))};
    std::string resolved = resolve(paths[i]);
    if (resolved != asked[0]) asked.push_back(std::move(resolved));
    for (const std::string& form : asked) {
      forms.emplace_back(form, i);
      forms.emplace_back(form + "/", i);
    }
  }
  std::unordered_multimap<std::string_view, size_t> wanted;
  // Most lines of the database are asked for by no one: the sketch turns them away first.
  std::vector<bool> sketched(size_t(1) << 16);
  for (const auto& form : forms) {
    wanted.emplace(form.first, form.second);
    sketched[sketch(form.first)] = true;
  }

  std::vector<std::vector<Owner>> owners(paths.size());
  const std::string root = database.under("/");
  for (const std::string& fullName : database.installed()) {
    forEachEntry(fullName, [&](std::string_view entry) {
      if (!sketched[sketch(entry)]) return;
      const auto found = wanted.equal_range(entry);
      for (auto it = found.first; it != found.second; ++it) {
        owners[it->second].push_back({fullName, root + std::string(entry)});
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
  return providersOf(database.deps(fullName));
}

std::vector<Query::Dependency> Query::depends(const Package& package) const {
  return providersOf(stringsOf(package.deps));
}

std::vector<Query::Dependency> Query::providersOf(const std::vector<std::string>& names) const {
  std::vector<Dependency> dependencies;
  // As the dependency check counts them: by short name, so a full name provides nothing.
  for (const std::string& name : names) {
    dependencies.push_back({name, database.withShortName(name)});
  }
  return dependencies;
}

std::vector<std::string> Query::rdepends(const std::string& fullName) const {
  DependencyStore store(database);
  TextVector outgoing;
  outgoing.push_back(shortNameOf(fullName).c_str());
  std::vector<std::string> dependants = stringsOf(store.withDependents(outgoing));
  dependants.erase(dependants.begin());
  std::sort(dependants.begin(), dependants.end());
  return dependants;
}

std::vector<std::string> Query::orphans() const {
  std::unordered_set<std::string> needed;
  const std::vector<std::string>& packages = database.installed();
  const std::vector<std::string>& shortNames = database.shortNames();
  for (size_t i = 0; i < packages.size(); ++i) {
    for (std::string& name : database.deps(packages[i])) {
      if (name != shortNames[i]) needed.insert(std::move(name));
    }
  }
  std::vector<std::string> found;
  for (size_t i = 0; i < packages.size(); ++i) {
    if (needed.count(shortNames[i]) == 0) found.push_back(packages[i]);
  }
  return found;
}

std::vector<std::string> Query::unowned(const std::vector<std::string>& directories) const {
  std::set<std::string> found;
  for (const std::string& directory : directories) walk(resolve(directory, true), found);
  for (const std::string& fullName : database.installed()) {
    forEachEntry(fullName, [&found](std::string_view entry) {
      if (!entry.empty() && entry.back() == '/') entry.remove_suffix(1);
      if (!found.empty()) found.erase(std::string(entry));
    });
  }
  std::vector<std::string> paths;
  for (const std::string& path : found) paths.push_back(database.under("/" + path));
  return paths;
}

void Query::walk(const std::string& directory, std::set<std::string>& found) const {
  const std::string path = database.under("/" + directory);
  DIR* listing = opendir(path.c_str());
  if (!listing) {
    problem({Problem::Unreadable, path});
    return;
  }
  std::vector<std::string> below;
  while (const dirent* entry = readdir(listing)) {
    if (FileSystem::isDotEntry(entry->d_name)) continue;
    const std::string relative =
        directory.empty() ? entry->d_name : directory + "/" + entry->d_name;
    struct stat status;
    if (lstat(database.under("/" + relative).c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
      below.push_back(relative);
    } else {
      found.insert(relative);
    }
  }
  closedir(listing);
  for (const std::string& next : below) walk(next, found);
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

std::string Query::fromRoot(const std::string& path) const {
  if (!path.empty() && path[0] == '/') return path;
  std::error_code failed;
  std::string directory = std::filesystem::current_path(failed);
  // A working directory that cannot be told counts as the top of the root.
  if (failed) return "/" + path;
  const std::string top = std::filesystem::canonical(database.under("/"), failed);
  if (!failed && (directory == top || startsWith(directory, top + "/"))) {
    directory.erase(0, top.size());
  }
  return directory + "/" + path;
}

std::string Query::resolve(const std::string& path, bool followLast) const {
  // The parts still to walk, the next one last.
  std::vector<std::string> ahead;
  const auto push = [&ahead](const std::string& text) {
    TextVector parts;
    parts.split('/', text.c_str());
    for (unsigned i = parts.size(); i-- > 0;) {
      if (std::strcmp(parts[i], ".") != 0) ahead.emplace_back(parts[i]);
    }
  };
  push(fromRoot(path));
  std::string walked;
  int links = zet::LINK_HOPS;
  std::string target;
  while (!ahead.empty()) {
    const std::string part = std::move(ahead.back());
    ahead.pop_back();
    if (part == "..") {
      const size_t slash = walked.rfind('/');
      walked.erase(slash == std::string::npos ? 0 : slash);
      continue;
    }
    const std::string next = walked.empty() ? part : walked + "/" + part;
    if ((followLast || !ahead.empty()) && links > 0 &&
        FileSystem::linkTarget(database.under("/" + next), target)) {
      --links;
      if (target[0] == '/') walked.clear();
      push(target);
    } else {
      walked = next;
    }
  }
  return walked;
}

void Query::listRecord(const std::string& fullName,
                       const std::function<void(std::string_view)>& visit) const {
  const std::string recordFile = database.path(zet::PACKAGES_DIR, fullName);
  const auto visitPath = [&visit](std::string_view line) {
    if (PackageRecord::namesPath(line)) visit(line);
  };
  switch (PackageRecord::forEachListedFile(recordFile, visitPath)) {
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
  const FileList linked = database.links(fullName);
  for (unsigned i = 0; i < linked.size(); ++i) visit(linkPath(linked[i]));
}

std::string_view Query::linkPath(std::string_view link) {
  // A link at the top of the tree is made from the directory ".", so it reads back as "./NAME".
  return link.substr(0, 2) == "./" ? link.substr(2) : link;
}
