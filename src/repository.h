// What a client keeps of its repositories under a root: the configuration and keys under
// /etc/zet, the last good index of each repository under /var/lib/zet/repos and the
// downloaded packages in /var/cache/zet, a directory of root's that no one else may enter.
// It updates the kept indexes from the mirrors, checking each before it replaces the old
// one, and fetches packages into the cache, checking each before it takes its name there.
#ifndef ZET_REPOSITORY_H
#define ZET_REPOSITORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "descriptor.h"
#include "download.h"
#include "repoconfig.h"
#include "repoindex.h"
#include "signature.h"

// The repositories of one root and the files kept for them.
class Repositories {
 public:
  // Why a mirror, a repository or a package failed; `where` names the URL or the file.
  struct Failure {
    enum Kind {
      NoKey,          // the repository's key is missing or unreadable
      Transfer,       // the network, the protocol or the server's status
      TooLarge,       // the server sent more than the index or the package may hold
      Unsigned,       // the index came without its signature
      UnknownKey,     // the signature is by another key
      Forged,         // the signature does not fit the index or is unreadable
      Hostile,        // the index breaks its format or names a file it may not
      Replayed,       // the index is older than the kept one
      WrongSize,      // the package has not the size of its stanza
      WrongChecksum,  // the package has not the checksum of its stanza
      Disk,           // a file could not be written, or the cache is not root's own
    };
    Kind kind;
    std::string where;
    std::string detail;
    RepoIndex::Problem problem = RepoIndex::NoFormat;  // what a hostile index broke
  };
  struct Kept {
    RepoConfig::Repo repo;
    std::optional<RepoIndex> index;  // none when the repository was never updated
  };
  // A package found in a kept index, and its repository.
  struct Offer {
    const Kept* kept;
    const IndexEntry* entry;
  };

  // `root` is put in front of every path as it stands: "" leaves them as they are.
  explicit Repositories(std::string root) : root(std::move(root)) {}

  std::string configPath() const;
  std::string keyPath(const std::string& name) const;
  std::string keptIndexPath(const std::string& name) const;
  std::string cacheDir() const;
  // The lock that one run at a time holds while it changes what is kept or installed.
  std::string lockPath() const;

  // Fetches, checks and keeps `repo`'s index from the first mirror that gives a good one;
  // every mirror that failed leaves a Failure. True when the index was replaced.
  bool update(const RepoConfig::Repo& repo, std::vector<Failure>& failures);
  // The kept indexes of `repos`; a kept index that no longer reads gives a Failure.
  std::vector<Kept> kept(const std::vector<RepoConfig::Repo>& repos,
                         std::vector<Failure>& failures) const;
  // The package that `name` (short name, full name or file name) stands for: the first that
  // the repositories offer under it, in their order and that of their indexes.
  static std::optional<Offer> find(const std::vector<Kept>& kept, const std::string& name);

  // Makes sure the package is in the cache, whole and checked, downloading it from the first
  // mirror that gives it whole; gives its path, or nothing with a Failure for every try.
  std::optional<std::string> fetch(const Offer& offer, const Download::Progress& progress,
                                   std::vector<Failure>& failures);
  // Removes every file from the cache; false when the cache could not be read or a file
  // stayed.
  bool clean();

 private:
  // An index and its signature as a mirror gave them, once they passed every check.
  struct Fetched {
    std::string text;
    std::string signature;
    std::optional<RepoIndex> index;
  };

  // The cache directory, opened without following a link, made when missing, and put back to
  // mode 0700; not valid when it is not a directory of this user's.
  Descriptor openCache() const;
  // The index of one mirror, if it is signed by `key` and not older than `keptSerial`.
  std::optional<Fetched> verified(const std::string& mirror, const Signature::PublicKey& key,
                                  uint64_t keptSerial, std::vector<Failure>& failures);

  std::string root;
};

#endif
