#include "repoconfig.h"

#include <fstream>
#include <sstream>

#include "textutil.h"

bool RepoConfig::plainName(const std::string& name) {
  if (name.empty() || name[0] == '.' || name[0] == '-') return false;
  for (const char c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '_' && c != '-') {
      return false;
    }
  }
  return true;
}

bool RepoConfig::knownScheme(const std::string& url) {
  for (const char* scheme : {"http://", "https://", "file://"}) {
    if (startsWith(url, scheme) && url.size() > std::string(scheme).size()) return true;
  }
  return false;
}

bool RepoConfig::read(const std::string& path) {
  std::ifstream file(path);
  if (!file) return false;
  unsigned number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    std::istringstream words(line.substr(0, line.find('#')));
    Repo repo;
    if (!(words >> repo.name)) continue;
    for (std::string url; words >> url;) repo.urls.push_back(url);
    bool good = plainName(repo.name) && !repo.urls.empty();
    for (const std::string& url : repo.urls) good = good && knownScheme(url);
    for (const Repo& earlier : repos) good = good && earlier.name != repo.name;
    if (good) {
      repos.push_back(repo);
    } else {
      badLines.push_back({number, line});
    }
  }
  return !file.bad();
}
