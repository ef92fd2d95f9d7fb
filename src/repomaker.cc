#include "repomaker.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <vector>

#include "constants.h"
#include "descriptor.h"
#include "packagename.h"
#include "repoindex.h"
#include "signature.h"
#include "smallfile.h"
#include "textutil.h"

extern char** environ;

namespace {

const std::string CONTROL_FILES[] = {std::string(zet::INSTALL_DIR_MEMBER) + zet::BUILD_FILE,
                                     std::string(zet::INSTALL_DIR_MEMBER) + zet::DEPS_FILE,
                                     std::string(zet::INSTALL_DIR_MEMBER) + zet::DESCRIPTION_FILE};

std::string trimmed(const std::string& text) {
  const size_t start = text.find_first_not_of(" \t");
  if (start == std::string::npos) return "";
  return text.substr(start, text.find_last_not_of(" \t\r") + 1 - start);
}

// A control file as it was unpacked. A link is not followed, so that a package cannot make the
// index show a file of this machine; one that cannot be opened reads as empty.
std::string control(const std::string& dir, const std::string& name) {
  const Descriptor file(open((dir + "/" + name).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  std::string text;
  SmallFile::readFrom(file.get(), zet::CONTROL_LIMIT, text);
  return text;
}

// The build stamp, dependencies and first description line, from the control files that
// tar unpacks into a scratch directory; false when tar cannot be started. tar ends with 2
// when a package lacks one of them, which leaves that field empty.
bool readControl(const std::string& package, IndexEntry& entry) {
  char scratch[] = "/tmp/zet-index-XXXXXX";
  if (mkdtemp(scratch) == nullptr) return false;
  // Owners and modes as the archive gives them change nothing for files read once and removed.
  std::vector<const char*> argv = {"tar", "-xzf", package.c_str(), "-C", scratch};
  for (const std::string& name : CONTROL_FILES) argv.push_back(name.c_str());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // tar names each control file that a package lacks; what it unpacks it does not list.
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t child;
  const bool ran = posix_spawnp(&child, argv[0], &actions, nullptr,
                                const_cast<char* const*>(argv.data()), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  if (ran) waitpid(child, nullptr, 0);

  const std::string dir = scratch;
  const std::string build = control(dir, CONTROL_FILES[0]);
  for (const char c : build.substr(0, build.find('\n'))) {
    if (c != ' ' && c != '\t' && c != '\r') entry.build += c;
  }
  for (const std::string& line : splitLines(control(dir, CONTROL_FILES[1]))) {
    const std::string dep = trimmed(line);
    if (!dep.empty()) entry.deps.push_back(dep);
  }
  const std::string prefix = entry.name + ":";
  // The first line of the package's own that says something.
  for (const std::string& line : splitLines(control(dir, CONTROL_FILES[2]))) {
    if (startsWith(line, prefix)) entry.description = trimmed(line.substr(prefix.size()));
    if (!entry.description.empty()) break;
  }
  for (const std::string& name : CONTROL_FILES) unlink((dir + "/" + name).c_str());
  rmdir((dir + "/install").c_str());
  rmdir(scratch);
  return ran;
}

// The package files of the directory, in byte order of their names.
bool packageFiles(const std::string& dir, std::vector<std::string>& files) {
  std::error_code failed;
  // Stepped with an error code: a listing that breaks off is a failure, not an exception.
  for (std::filesystem::directory_iterator entry(dir, failed), end; !failed && entry != end;
       entry.increment(failed)) {
    std::string name = entry->path().filename();
    // ".tgz" alone names no package; it is passed over.
    if (endsWith(name, zet::PACKAGE_EXTENSION) && name != zet::PACKAGE_EXTENSION) {
      files.push_back(name);
    }
  }
  std::sort(files.begin(), files.end());
  return !failed;
}

}  // namespace

RepoOutcome RepoMaker::newKey(const std::string& prefix) {
  const std::string publicPath = prefix + ".pub";
  const std::string secretPath = prefix + ".key";
  struct stat status;
  for (const std::string& path : {publicPath, secretPath}) {
    if (lstat(path.c_str(), &status) == 0) return {RepoOutcome::KeyExists, path};
  }
  Signature::PublicKey publicKey;
  Signature::SecretKey secretKey;
  Signature::newPair(publicKey, secretKey);
  if (!SmallFile::write(secretPath, Signature::secretKeyText(secretKey), 0600)) {
    return {RepoOutcome::CannotWrite, secretPath};
  }
  if (!SmallFile::write(publicPath, Signature::publicKeyText(publicKey), 0644)) {
    unlink(secretPath.c_str());
    return {RepoOutcome::CannotWrite, publicPath};
  }
  return {RepoOutcome::KeysWritten, prefix};
}

RepoOutcome RepoMaker::index(const std::string& dir, const std::string& keyPath, uint64_t date) {
  std::optional<Signature::SecretKey> key;
  std::string text;
  if (!keyPath.empty()) {
    if (SmallFile::read(keyPath, zet::KEY_LIMIT, text)) key = Signature::readSecretKey(text);
    if (!key) return {RepoOutcome::BadKey, keyPath};
  }
  RepoIndex index;
  index.date = date;
  index.serial = 1;
  const std::string indexPath = dir + "/" + zet::INDEX_FILE;
  if (SmallFile::read(indexPath, zet::INDEX_LIMIT, text)) {
    RepoIndex::Finding finding;
    const std::optional<RepoIndex> old = RepoIndex::read(text, finding);
    if (!old) return {RepoOutcome::BadOldIndex, indexPath};
    index.serial = old->serial + 1;
  }
  std::vector<std::string> files;
  if (!packageFiles(dir, files)) return {RepoOutcome::CannotRead, dir};
  for (const std::string& file : files) {
    if (!RepoIndex::plainPackageFile(file)) {
      return {RepoOutcome::BadName, dir + "/" + file};
    }
    IndexEntry entry;
    entry.file = file;
    entry.name = shortNameOf(entry.fullName());
    const std::string path = dir + "/" + file;
    const Descriptor package(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status;
    if (package.valid() && fstat(package.get(), &status) == 0) {
      entry.size = static_cast<uint64_t>(status.st_size);
      entry.sha256 = Signature::sha256OfFile(package.get());
    }
    if (entry.sha256.empty()) return {RepoOutcome::CannotRead, path};
    if (!readControl(path, entry)) return {RepoOutcome::NoTar, ""};
    index.entries.push_back(entry);
  }
  const std::string signaturePath = indexPath + zet::SIGNATURE_EXTENSION;
  const std::string indexText = index.text();
  // A build stamp or dependency that clients would refuse is refused here already.
  RepoIndex::Finding finding;
  if (!RepoIndex::read(indexText, finding)) {
    return {RepoOutcome::BadIndexEntry, finding.detail};
  }
  if (!SmallFile::write(indexPath, indexText, 0644)) {
    return {RepoOutcome::CannotWrite, indexPath};
  }
  // An old signature would not fit the new index.
  const std::string signature =
      key ? Signature::sign(indexText, *key, "serial:" + std::to_string(index.serial)) : "";
  struct stat old;
  if (key ? !SmallFile::write(signaturePath, signature, 0644)
          : lstat(signaturePath.c_str(), &old) == 0 && unlink(signaturePath.c_str()) != 0) {
    return {RepoOutcome::CannotWrite, signaturePath};
  }
  return {RepoOutcome::IndexWritten, indexPath, index.serial, index.entries.size()};
}
