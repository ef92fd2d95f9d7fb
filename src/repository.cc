#include "repository.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "constants.h"
#include "smallfile.h"

namespace {

constexpr const char* PARTIAL_EXTENSION = ".part";

// Makes the directory that holds `path`, with its parents; a failure shows in the next step.
void makeParent(const std::string& path) {
  std::error_code ignored;
  std::filesystem::create_directories(path.substr(0, path.rfind('/')), ignored);
}

std::string urlOf(const std::string& mirror, const std::string& file) {
  return mirror + (!mirror.empty() && mirror.back() == '/' ? "" : "/") + file;
}

Repositories::Failure::Kind kindOf(Download::Result result) {
  if (result == Download::TooLarge) return Repositories::Failure::TooLarge;
  if (result == Download::DiskFailed) return Repositories::Failure::Disk;
  return Repositories::Failure::Transfer;
}

// Opens `name` in `dir` for reading and appending without following a link; nothing when
// anything other than a plain file stands there.
Descriptor openIfPlain(int dir, const std::string& name) {
  Descriptor file(
      openat(dir, name.c_str(), O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  struct stat status;
  if (file.valid() && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) return file;
  return Descriptor(-1);
}

// The same, with whatever other than a plain file stands there removed first.
Descriptor openPlain(int dir, const std::string& name) {
  Descriptor file = openIfPlain(dir, name);
  if (file.valid() || (unlinkat(dir, name.c_str(), 0) != 0 && errno != ENOENT)) return file;
  return openIfPlain(dir, name);
}

bool whole(int file, const IndexEntry& entry, Repositories::Failure::Kind& kind) {
  struct stat status;
  if (fstat(file, &status) != 0 || uint64_t(status.st_size) != entry.size) {
    kind = Repositories::Failure::WrongSize;
    return false;
  }
  kind = Repositories::Failure::WrongChecksum;
  return Signature::sha256OfFile(file) == entry.sha256;
}

}  // namespace

std::string Repositories::configPath() const {
  return root + zet::REPOS_FILE;
}

std::string Repositories::keyPath(const std::string& name) const {
  return root + zet::REPO_KEYS_DIR + "/" + name + ".pub";
}

std::string Repositories::keptIndexPath(const std::string& name) const {
  return root + zet::KEPT_INDEX_DIR + "/" + name + "/" + zet::INDEX_FILE;
}

std::string Repositories::cacheDir() const {
  return root + zet::PACKAGE_CACHE_DIR;
}

std::string Repositories::lockPath() const {
  return root + zet::RUN_LOCK_FILE;
}

std::optional<Repositories::Fetched> Repositories::verified(const std::string& mirror,
                                                            const Signature::PublicKey& key,
                                                            uint64_t keptSerial,
                                                            std::vector<Failure>& failures) {
  Download download;
  Fetched fetched;
  const std::string indexUrl = urlOf(mirror, zet::INDEX_FILE);
  const std::string signatureUrl =
      urlOf(mirror, std::string(zet::INDEX_FILE) + zet::SIGNATURE_EXTENSION);
  Download::Result result = download.toText(indexUrl, zet::INDEX_LIMIT, fetched.text);
  if (result != Download::Done) {
    failures.push_back({kindOf(result), indexUrl, download.error});
    return std::nullopt;
  }
  result = download.toText(signatureUrl, zet::SIGNATURE_LIMIT, fetched.signature);
  if (result != Download::Done) {
    const bool absent = result == Download::Failed;
    failures.push_back({absent ? Failure::Unsigned : kindOf(result), signatureUrl, download.error});
    return std::nullopt;
  }
  switch (Signature::verify(fetched.text, fetched.signature, key)) {
    case Signature::Valid:
      break;
    case Signature::UnknownKey:
      failures.push_back({Failure::UnknownKey, signatureUrl, ""});
      return std::nullopt;
    default:
      failures.push_back({Failure::Forged, signatureUrl, ""});
      return std::nullopt;
  }
  RepoIndex::Finding finding;
  fetched.index = RepoIndex::read(fetched.text, finding);
  if (!fetched.index) {
    failures.push_back({Failure::Hostile, indexUrl + ":" + std::to_string(finding.line),
                        finding.detail, finding.problem});
    return std::nullopt;
  }
  if (fetched.index->serial < keptSerial) {
    failures.push_back({Failure::Replayed, indexUrl, std::to_string(fetched.index->serial)});
    return std::nullopt;
  }
  return fetched;
}

bool Repositories::update(const RepoConfig::Repo& repo, std::vector<Failure>& failures) {
  std::string text;
  std::optional<Signature::PublicKey> key;
  if (SmallFile::read(keyPath(repo.name), zet::KEY_LIMIT, text))
    key = Signature::readPublicKey(text);
  if (!key) {
    failures.push_back({Failure::NoKey, keyPath(repo.name), ""});
    return false;
  }
  // The kept index goes again before the new one comes: only its serial is needed.
  const uint64_t keptSerial = [&]() {
    std::vector<Failure> ignored;
    const std::vector<Kept> before = kept({repo}, ignored);
    return before[0].index ? before[0].index->serial : 0;
  }();
  for (const std::string& mirror : repo.urls) {
    const std::optional<Fetched> fetched = verified(mirror, *key, keptSerial, failures);
    if (!fetched) continue;
    const std::string path = keptIndexPath(repo.name);
    makeParent(path);
    // The index is read alone; its signature is kept beside it for people to check again.
    if (!SmallFile::write(path + zet::SIGNATURE_EXTENSION, fetched->signature, 0644) ||
        !SmallFile::write(path, fetched->text, 0644)) {
      failures.push_back({Failure::Disk, path, ""});
      return false;
    }
    return true;
  }
  return false;
}

std::vector<Repositories::Kept> Repositories::kept(const std::vector<RepoConfig::Repo>& repos,
                                                   std::vector<Failure>& failures) const {
  std::vector<Kept> all;
  for (const RepoConfig::Repo& repo : repos) {
    all.push_back({repo, std::nullopt});
    std::string text;
    const std::string path = keptIndexPath(repo.name);
    if (!SmallFile::read(path, zet::INDEX_LIMIT, text)) continue;
    RepoIndex::Finding finding;
    all.back().index = RepoIndex::read(text, finding);
    if (!all.back().index) {
      failures.push_back({Failure::Hostile, path + ":" + std::to_string(finding.line),
                          finding.detail, finding.problem});
    }
  }
  return all;
}

std::optional<Repositories::Offer> Repositories::find(const std::vector<Kept>& kept,
                                                      const std::string& name) {
  for (const Kept& one : kept) {
    if (!one.index) continue;
    for (const IndexEntry& entry : one.index->entries) {
      if (name == entry.name || name == entry.fullName() || name == entry.file) {
        return Offer{&one, &entry};
      }
    }
  }
  return std::nullopt;
}

Descriptor Repositories::openCache() const {
  const std::string path = cacheDir();
  makeParent(path);
  mkdir(path.c_str(), 0700);
  Descriptor dir(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (dir.valid() && fstat(dir.get(), &status) == 0 && status.st_uid == geteuid() &&
      fchmod(dir.get(), 0700) == 0) {
    return dir;
  }
  return Descriptor(-1);
}

std::optional<std::string> Repositories::fetch(const Offer& offer,
                                               const Download::Progress& progress,
                                               std::vector<Failure>& failures) {
  const IndexEntry& entry = *offer.entry;
  const std::string path = cacheDir() + "/" + entry.file;
  const Descriptor cache = openCache();
  if (!cache.valid()) {
    failures.push_back({Failure::Disk, cacheDir(), ""});
    return std::nullopt;
  }
  const int dir = cache.get();
  Failure::Kind kind;
  const Descriptor cached(openat(dir, entry.file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (cached.valid() && whole(cached.get(), entry, kind)) return path;
  unlinkat(dir, entry.file.c_str(), 0);
  const std::string partial = entry.file + PARTIAL_EXTENSION;
  const Descriptor plain = openPlain(dir, partial);
  if (!plain.valid()) {
    failures.push_back({Failure::Disk, path + PARTIAL_EXTENSION, ""});
    return std::nullopt;
  }
  const int file = plain.get();
  bool done = false;
  for (size_t i = 0; !done && i < offer.kept->repo.urls.size(); ++i) {
    const std::string url = urlOf(offer.kept->repo.urls[i], entry.file);
    Download download;
    const Download::Result result = download.toFile(url, file, entry.size, progress);
    if (result != Download::Done) {
      failures.push_back(
          {kindOf(result), result == Download::DiskFailed ? path : url, download.error});
      // What came so far is kept for the next mirror to go on from, unless it was too much;
      // a full disk gets its room back and ends the tries.
      if (result == Download::Failed) continue;
      if (ftruncate(file, 0) != 0 || result == Download::DiskFailed) break;
      continue;
    }
    done = whole(file, entry, kind);
    if (!done) {
      failures.push_back({kind, url, ""});
      if (ftruncate(file, 0) != 0) break;
    }
  }
  done = done && renameat(dir, partial.c_str(), dir, entry.file.c_str()) == 0;
  struct stat status;
  if (!done && fstat(file, &status) == 0 && status.st_size == 0) {
    unlinkat(dir, partial.c_str(), 0);
  }
  if (done) return path;
  return std::nullopt;
}

bool Repositories::clean() {
  Descriptor dir = openCache();
  DIR* listing = dir.valid() ? fdopendir(dir.get()) : nullptr;
  if (listing == nullptr) return false;
  dir.release();
  bool good = true;
  while (const dirent* entry = readdir(listing)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    good = unlinkat(dirfd(listing), name.c_str(), 0) == 0 && good;
  }
  closedir(listing);
  return good;
}
