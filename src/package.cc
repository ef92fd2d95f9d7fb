#include "package.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_set>

#include "constants.h"
#include "database.h"
#include "dependencystore.h"
#include "filesystem.h"
#include "linklines.h"
#include "messages.h"
#include "packagename.h"
#include "packagerecord.h"
#include "temparea.h"
#include "textutil.h"

namespace {

const size_t DESCRIPTION_FILE_LENGTH = std::strlen(zet::DESCRIPTION_FILE);

// A byte count of gzip's listing in units of 1024 bytes, rounded up.
uint32_t kilobytesOf(const char* token) {
  const int32_t bytes = static_cast<int32_t>(std::strtol(token, nullptr, 10));
  // Through a signed 64-bit value so that a negative count wraps instead of being undefined.
  return static_cast<uint32_t>(static_cast<int64_t>(std::ceil(bytes * 0.0009765625)));
}

// Drops "install/" and everything under it: those members are the package's control files.
void dropInstallMembers(FileList& files) {
  const size_t length = std::strlen(zet::INSTALL_DIR_MEMBER);
  FileList kept;
  for (unsigned i = 0; i < files.size(); ++i) {
    if (std::strncmp(files[i], zet::INSTALL_DIR_MEMBER, length) != 0) kept.push_back(files[i]);
  }
  files = kept;
}

// "slack-desc" fills language "C" and "slack-desc.CODE" language CODE; "slack-desc." and
// other names that merely begin with "slack-desc" give nothing.
void readDescriptions(Package& package, const std::string& installDir) {
  FileSystem& fileSystem = FileSystem::instance();
  fileSystem.list(installDir, false);
  // Nothing in this walk may list a directory, as that would replace the entries.
  const TextVector& entries = fileSystem.entries();
  for (unsigned i = 0; i < entries.size(); ++i) {
    const char* entry = entries[i];
    if (std::strncmp(entry, zet::DESCRIPTION_FILE, DESCRIPTION_FILE_LENGTH) != 0) continue;
    TextFile lines;
    lines.load((installDir + "/" + entry).c_str());
    lines = Package::filterDescription(lines, package.name);

    const size_t length = std::strlen(entry);
    if (length >= DESCRIPTION_FILE_LENGTH + 2 && entry[DESCRIPTION_FILE_LENGTH] == '.') {
      package.descriptions[entry + DESCRIPTION_FILE_LENGTH + 1] = lines;
    } else if (length == DESCRIPTION_FILE_LENGTH) {
      package.descriptions[zet::FALLBACK_LANG] = lines;
    }
  }
}

// Shows the default description when there is none in the user's language.
void fallBackToDefaultLanguage(Package& package) {
  if (package.descriptions.count(package.language) == 0 &&
      package.descriptions.count(zet::FALLBACK_LANG) != 0) {
    package.language = zet::FALLBACK_LANG;
  }
}

// Scripts, descriptions, deps and build of an extracted install/ directory; each may be absent.
void readControlFiles(Package& package, const std::string& installDir) {
  package.preinstScript.load((installDir + "/" + zet::PREINST_SCRIPT).c_str());
  package.doinstScript.load((installDir + "/" + zet::DOINST_SCRIPT).c_str());
  package.postinstScript.load((installDir + "/" + zet::POSTINST_SCRIPT).c_str());
  readDescriptions(package, installDir);
  fallBackToDefaultLanguage(package);
  package.deps.load((installDir + "/" + zet::DEPS_FILE).c_str());
  stripBlanks(package.deps);
  dropEmptyLines(package.deps);
  // Empty build lines stay: the first line is the build stamp, whatever it holds.
  package.buildInfo.load((installDir + "/" + zet::BUILD_FILE).c_str());
  stripBlanks(package.buildInfo);
}

// The second line of gzip's listing: compressed, uncompressed, ratio and name. A name with a
// blank gives more tokens and is refused.
bool readSizes(Package& package, const std::string& sizeInfoPath) {
  TextFile sizeInfo;
  if (!sizeInfo.load(sizeInfoPath.c_str()) || sizeInfo.size() < 2) return false;
  TextVector tokens;
  tokens.split(' ', sizeInfo[1]);
  if (tokens.size() != 4) return false;
  package.compressedSizeK = kilobytesOf(tokens[0]);
  package.uncompressedSizeK = kilobytesOf(tokens[1]);
  return true;
}

std::unordered_set<std::string> setOf(const TextVector& lines) {
  std::unordered_set<std::string> set;
  for (unsigned i = 0; i < lines.size(); ++i) set.insert(lines[i]);
  return set;
}

}  // namespace

Package::Package() : warnOnly(false) {
  reset();
}

void Package::reset() {
  // Deliberately unchecked: an unset LANG must end the program here.
  language = std::string(std::getenv("LANG"));
  compressedSizeK = 0;
  uncompressedSizeK = 0;
  files.clear();
  descriptions.clear();
  preinstScript.clear();
  doinstScript.clear();
  postinstScript.clear();
  deps.clear();
  buildInfo.clear();
  name.clear();
  fullName.clear();
  location.clear();
  fromFile = false;
  fromDatabase = false;
}

TextVector Package::descriptionLines(bool stripPrefix) const {
  TextVector lines;
  const auto entry = descriptions.find(language);
  if (entry == descriptions.end()) return lines;
  if (!stripPrefix) return entry->second;

  const size_t prefixLength = name.size() + 1;
  const TextFile& source = entry->second;
  for (unsigned i = 0; i < source.size(); ++i) {
    // A line shorter than the prefix, which only a hand-edited record can hold, comes out empty.
    const size_t length = std::strlen(source[i]);
    lines.push_back(length > prefixLength ? source[i] + prefixLength : "");
  }
  return lines;
}

TextFile Package::filterDescription(const TextVector& lines, const std::string& name) {
  const std::string prefix = name + ":";
  TextFile kept;
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (std::strncmp(lines[i], prefix.c_str(), prefix.size()) == 0) kept.push_back(lines[i]);
  }
  return kept;
}

void Package::takeDescriptions(const PackageRecord& record) {
  for (const auto& entry : record.descriptions) descriptions[entry.first] = entry.second;
}

void Package::fillRecord(PackageRecord& record) const {
  for (const auto& entry : descriptions) record.descriptions[entry.first] = entry.second;
}

bool Package::loadFromFile(const std::string& path) {
  reset();
  DebugLog::instance() << "loading from file\n";
  location = path;
  fullName = FileSystem::stripExtension(FileSystem::baseName(path));
  name = shortNameOf(fullName);

  FileSystem& fileSystem = FileSystem::instance();
  if (!fileSystem.exists(path, false)) {
    lastError = LoadNoFile;
    return false;
  }
  if (path.size() <= 4 || !endsWith(path, zet::PACKAGE_EXTENSION)) {
    lastError = LoadBadName;
    return false;
  }
  if (!files.loadFromArchive(path.c_str())) {
    lastError = LoadListFailed;
    return false;
  }
  // Taken literally: an archive that lists "./install/" is not a package.
  if (files.find(zet::INSTALL_DIR_MEMBER) < 0) {
    printError(ErrorPackageNotComplete, path);
    lastError = LoadIncomplete;
    return false;
  }
  dropInstallMembers(files);

  const std::string temp = TempArea::instance().getPath();
  const std::string extract =
      std::string(zet::TAR_TOOL) + " xzf " + path + " -C " + temp + " " + zet::CONTROL_DIR;
  DebugLog::instance() << "exe: " << extract << "\n";
  if (std::system(extract.c_str()) != 0) {
    lastError = LoadExtractFailed;
    return false;
  }

  const std::string installDir = temp + "/" + zet::CONTROL_DIR;
  readControlFiles(*this, installDir);
  fileSystem.removeTree(installDir, false);

  const std::string sizeInfoPath = temp + "/" + zet::TEMP_SIZE_INFO;
  const std::string sizeQuery = std::string(zet::GZIP_TOOL) + " -l " + path + " 1>" + sizeInfoPath;
  // No line end here: the next trace text follows on the same line.
  DebugLog::instance() << "exe: " << sizeQuery;
  // The status tells nothing: the output file decides.
  [[maybe_unused]] const int status = std::system(sizeQuery.c_str());
  if (!readSizes(*this, sizeInfoPath)) {
    lastError = LoadSizeInfoBad;
    return false;
  }
  fromFile = true;
  return true;
}

bool Package::loadFromDatabase(std::string nameOrFile) {
  reset();
  nameOrFile = FileSystem::baseName(nameOrFile);
  if (endsWith(nameOrFile, zet::PACKAGE_EXTENSION)) {
    nameOrFile = FileSystem::stripExtension(nameOrFile);
  }

  // Drops version, architecture and build without parsing, so a version of several tokens
  // stays in the name; such a package can only be found by its short name.
  TextVector tokens;
  tokens.split('-', nameOrFile.c_str());
  std::string lookupName = nameOrFile;
  if (tokens.size() >= 4) {
    lookupName = tokens[0];
    for (unsigned i = 1; i < tokens.size() - 3; ++i) lookupName += std::string("-") + tokens[i];
    DebugLog::instance() << "loading package: " << lookupName << "\n";
  }

  DependencyStore store;
  store.loadInstalled();
  if (!store.isInstalled(lookupName.c_str())) {
    lastError = LoadNotInstalled;
    return false;
  }
  const std::string root = FileSystem::instance().getRoot();
  const Database database = Database::ofRoot(root);
  PackageRecord record;
  // The installed path begins with a slash of its own: root "/" "/var/log/packages/" entry.
  if (!record.read(root + "/" + store.installedPath(lookupName.c_str()))) {
    lastError = LoadRecordUnreadable;
    return false;
  }

  takeDescriptions(record);
  location = record.location;
  // The record's own name wins over the name of its file.
  fullName = record.name;
  name = shortNameOf(fullName);
  compressedSizeK = record.compressedSizeK;
  uncompressedSizeK = record.uncompressedSizeK;
  files = record.files;

  // What install wrote has no empty lines, so none are dropped here.
  deps.load(database.path(zet::DEPS_DIR, fullName).c_str());
  stripBlanks(deps);
  buildInfo.load(database.path(zet::BUILD_DIR, fullName).c_str());
  stripBlanks(buildInfo);
  fallBackToDefaultLanguage(*this);
  doinstScript.load(database.path(zet::SCRIPTS_DIR, fullName).c_str());
  postinstScript.load(database.path(zet::POSTINST_DIR, fullName).c_str());
  fromDatabase = true;
  return true;
}

void Package::install() {
  DebugLog::instance() << "installation\n";
  if (warnOnly) {
    warnInstallSymlinks();
    warnInstallOverwrites();
    return;
  }
  const std::string root = FileSystem::instance().getRoot();
  const Database database = Database::ofRoot(root);
  // The empty argument still leaves its blank at the end of the command.
  if (preinstScript.hasLines()) preinstScript.run("", root);

  PackageRecord record;
  record.name = fullName;
  record.compressedSizeK = compressedSizeK;
  record.uncompressedSizeK = uncompressedSizeK;
  // The bare file name, wherever the package came from.
  record.location = fullName + zet::PACKAGE_EXTENSION;
  record.files = files;
  fillRecord(record);
  // Written before the first file is unpacked, so that even a broken unpacking leaves the
  // package known to the database and removable.
  record.write(database.path(zet::PACKAGES_DIR, fullName));

  const std::string unpack =
      std::string(zet::TAR_TOOL) + " -xzlUpf " + location + " -C " + root + " 1>/dev/null";
  DebugLog::instance() << "exe: " << unpack << "\n";
  // Failures show only in what tar prints itself.
  [[maybe_unused]] const int status = std::system(unpack.c_str());
  // The control files came along with the archive and do not belong on the system, whatever
  // stood there before.
  FileSystem::instance().removeTree(std::string("/") + zet::CONTROL_DIR, true);

  if (doinstScript.hasLines()) {
    doinstScript.run("-install", root);
    doinstScript.save(database.path(zet::SCRIPTS_DIR, fullName).c_str(), true);
  }
  if (postinstScript.hasLines()) {
    postinstScript.run("--afterinstall", root);
    postinstScript.save(database.path(zet::POSTINST_DIR, fullName).c_str(), true);
  }
  // Only files with lines are written, so an older file of the same name may stay.
  if (buildInfo.size() > 0) {
    buildInfo.save(database.path(zet::BUILD_DIR, fullName).c_str(), true);
  }
  if (deps.size() > 0) deps.save(database.path(zet::DEPS_DIR, fullName).c_str(), true);
}

void Package::remove() {
  if (warnOnly) {
    warnRemove();
    return;
  }
  FileSystem& fileSystem = FileSystem::instance();
  const std::string root = fileSystem.getRoot();
  // There is no removal script: the postinst script is told with this argument instead.
  if (postinstScript.hasLines()) postinstScript.run("--beforeremove", root);

  DependencyStore store;
  store.loadInstalled();
  const FileList links = LinkLines::read(doinstScript);
  removeSymlinks(links, symlinksInOtherPackages(links, fullName, root), root);
  removeFiles(files, store.sharedFiles(files, fullName.c_str()), root);

  // Nothing is normally found here; an entry of exactly that name under the root goes too.
  fileSystem.remove(fullName, true);
  // The record goes last: while any other entry is left, the package can still be found.
  for (const char* directory :
       {zet::DEPS_DIR, zet::BUILD_DIR, zet::SCRIPTS_DIR, zet::POSTINST_DIR, zet::PACKAGES_DIR}) {
    fileSystem.remove(Database::entry(directory, fullName), true);
  }
}

void Package::preserve() {
  FileSystem& fileSystem = FileSystem::instance();
  const std::string root = fileSystem.getRoot();
  const std::string base = Database::entry(zet::PRESERVED_DIR, fullName);
  fileSystem.makeDir(base, true);
  // One level at a time: the listing names each directory ahead of what lies in it.
  for (unsigned i = 0; i < files.size(); ++i) {
    const std::string target = base + "/" + files[i];
    if (FileSystem::isDirectory(root + "/" + files[i])) {
      fileSystem.makeDir(target, true);
    } else {
      fileSystem.copy(target, files[i], true, true);
    }
  }
  fileSystem.makeDir(base + "/" + zet::CONTROL_DIR, true);
  // Always written, empty or not, so the tree has the layout of an unpacked package.
  const std::string installDir =
      Database::ofRoot(root).path(zet::PRESERVED_DIR, fullName) + "/" + zet::CONTROL_DIR + "/";
  doinstScript.save((installDir + zet::DOINST_SCRIPT).c_str(), true);
  postinstScript.save((installDir + zet::POSTINST_SCRIPT).c_str(), true);
  buildInfo.save((installDir + zet::BUILD_FILE).c_str(), true);
}

TextVector Package::symlinksInOtherPackages(const TextVector& links, const std::string& fullName,
                                            const std::string& root) {
  TextVector shared;
  if (links.size() == 0) return shared;
  Database database = Database::ofRoot(root);
  database.load();

  // One pass over the stored scripts; a package without one names nothing.
  std::unordered_set<std::string> named;
  for (const char* entry : database.listing()) {
    if (fullName == entry) continue;
    for (const char* link : database.links(entry)) named.insert(link);
  }
  for (const char* link : links) {
    if (named.count(link) != 0) shared.push_back(link);
  }
  return shared;
}

void Package::removeSymlinks(const TextVector& links, const TextVector& shared,
                             const std::string& root) {
  const std::unordered_set<std::string> sharedSet = setOf(shared);
  for (unsigned i = 0; i < links.size(); ++i) {
    // The root is in the path already, so the removals below take it as it stands.
    const std::string path = root + "/" + links[i];
    if (sharedSet.count(links[i]) != 0) {
      printMessage(MessageSymlinkFoundInAnotherPackage, path);
    } else if (FileSystem::instance().remove(path, false) == 0) {
      printMessage(MessageDeletingSymlink, path);
    } else {
      // Also a link to a directory: the removal follows it, tries rmdir and fails.
      printMessage(MessageSymlinkNoLongerExists, path);
    }
  }
}

void Package::removeFiles(const TextVector& files, const TextVector& shared,
                          const std::string& root) {
  const std::unordered_set<std::string> sharedSet = setOf(shared);
  FileSystem& fileSystem = FileSystem::instance();
  // Backwards, so that the contents of a directory go before the directory.
  for (unsigned i = files.size(); i-- > 0;) {
    // Drops "./" and, with it, every top-level name that begins with a dot.
    if (files[i][0] == '.') continue;
    // As for links: the path holds the root, and is removed as it stands.
    const std::string path = root + "/" + files[i];
    if (sharedSet.count(files[i]) != 0) {
      printMessage(MessageFileFoundInAnotherPackage, path);
    } else if (FileSystem::isDirectory(path)) {
      if (fileSystem.remove(path, false) == 0) {
        printMessage(MessageDeletingEmptyDirectory, path);
      } else {
        printWarning(WarningDirectoryContainsNewFiles, path);
      }
    } else if (fileSystem.remove(path, false) == 0) {
      printMessage(MessageDeletingFile, path);
    } else {
      printMessage(MessageFileNoLongerExists, path);
    }
  }
}

void Package::warnInstallSymlinks() {
  const FileList links = LinkLines::read(doinstScript);
  if (links.size() == 0) return;
  const std::string root = FileSystem::instance().getRoot();
  printMessage(MessageShowWarnDirs);
  for (unsigned i = 0; i < links.size(); ++i) printMessage(root + "/" + links[i]);
}

void Package::warnInstallOverwrites() {
  FileSystem& fileSystem = FileSystem::instance();
  const std::string root = fileSystem.getRoot();
  bool headed = false;
  for (unsigned i = 0; i < files.size(); ++i) {
    // Existing directories are merged into, not overwritten.
    if (!fileSystem.exists(files[i], true) || FileSystem::isDirectory(root + "/" + files[i])) {
      continue;
    }
    if (!headed) printMessage(MessageShowWarnOverwrite);
    headed = true;
    printMessage(root + "/" + files[i]);
  }
}

void Package::warnRemove() {
  // Neither other packages nor the disk are asked: this lists everything the package names.
  const FileList links = LinkLines::read(doinstScript);
  for (unsigned i = 0; i < links.size(); ++i) printMessage(MessageSymlinkWouldBeDeleted, links[i]);
  for (unsigned i = 0; i < files.size(); ++i) {
    // Unlike removeFiles, this passes over nothing else: ".profile" is listed.
    const std::string_view file = files[i];
    if (file.empty() || file == "." || file == "./") continue;
    printMessage(MessageFileWouldBeDeleted, files[i]);
  }
}
