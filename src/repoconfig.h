// The list of repositories, /etc/zet/repos: a line per repository, its name and the URLs of
// its mirrors, tried in order; "#" starts a comment. A name is a plain word that becomes a
// file name (its key, its kept index), and a URL uses http, https or file.
#ifndef ZET_REPOCONFIG_H
#define ZET_REPOCONFIG_H

#include <string>
#include <vector>

// The repositories of the configuration file, and the lines it could not read.
class RepoConfig {
 public:
  struct Repo {
    std::string name;
    std::vector<std::string> urls;
  };
  struct BadLine {
    unsigned line;
    std::string text;
  };

  // Adds the repositories of the file; false when it cannot be read. A bad line, or a name
  // given a second time, is left out and listed in `badLines`.
  bool read(const std::string& path);
  static bool plainName(const std::string& name);
  static bool knownScheme(const std::string& url);

  std::vector<Repo> repos;
  std::vector<BadLine> badLines;
};

#endif
