#include "filesystem.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <tuple>

namespace {

constexpr long COPY_BLOCK = 10240;
// One buffer serves every copy, so copying allocates nothing per block.
char copyBuffer[COPY_BLOCK];

}  // namespace

FileSystem& FileSystem::instance() {
  static FileSystem fileSystem;
  return fileSystem;
}

std::string FileSystem::databaseEntry(const char* directory, const std::string& name) {
  return std::string(directory) + "/" + name;
}

std::string FileSystem::databasePath(const std::string& root, const char* directory,
                                     const std::string& name) {
  return root + "/" + databaseEntry(directory, name);
}

std::string FileSystem::plainPath(const std::string& path, bool underRoot) const {
  return underRoot ? root + "/" + path : path;
}

std::string FileSystem::rootedPath(const std::string& path, bool underRoot) const {
  return underRoot ? root + "/" + path : "/" + path;
}

bool FileSystem::exists(const std::string& path, bool underRoot) const {
  FILE* file = fopen(plainPath(path, underRoot).c_str(), "r");
  if (file == nullptr) return false;
  fclose(file);
  return true;
}

bool FileSystem::isDirectory(const std::string& path) {
  DIR* directory = opendir(path.c_str());
  if (directory == nullptr) return false;
  closedir(directory);
  return true;
}

int FileSystem::remove(const std::string& path, bool underRoot) const {
  const std::string real = plainPath(path, underRoot);
  return isDirectory(real) ? rmdir(real.c_str()) : unlink(real.c_str());
}

// A link is removed, never followed: what it points to is not part of the tree.
void FileSystem::removeTree(const std::string& path, bool underRoot) {
  std::string prefix;
  for (const std::string& step : descent) prefix += step + "/";
  const std::string real = plainPath(prefix + path, underRoot);
  struct stat status;
  if (lstat(real.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
    unlink(real.c_str());
    return;
  }
  if (!list(prefix + path, underRoot)) {
    remove(prefix + path, underRoot);
    return;
  }
  descent.push_back(path);
  const TextVector names = entries();
  for (unsigned i = 0; i < names.size(); ++i) {
    if (strcmp(names[i], ".") == 0 || strcmp(names[i], "..") == 0) continue;
    removeTree(names[i], underRoot);
  }
  descent.pop_back();
  remove(prefix + path, underRoot);
}

bool FileSystem::list(const std::string& path, bool underRoot) {
  DIR* directory = opendir(plainPath(path, underRoot).c_str());
  if (directory == nullptr) return false;
  clear();
  while (const dirent* entry = readdir(directory)) push_back(entry->d_name);
  closedir(directory);
  return true;
}

// The overwrite test always looks under the root, whatever `underRoot` says.
bool FileSystem::copy(const std::string& destination, const std::string& source, bool overwrite,
                      bool underRoot) const {
  if (!overwrite && exists(destination, true)) return false;
  const std::string from = rootedPath(source, underRoot);
  const std::string to = rootedPath(destination, underRoot);
  FILE* in = fopen(from.c_str(), "r");
  if (in == nullptr) return false;
  FILE* out = fopen(to.c_str(), "w");
  if (out == nullptr) {
    fclose(in);
    return false;
  }
  fseek(in, 0, SEEK_END);
  const long size = ftell(in);
  rewind(in);
  for (long position = 0; position < size; position += COPY_BLOCK) {
    std::ignore = fread(copyBuffer, 1, COPY_BLOCK, in);
    fwrite(copyBuffer, 1, std::min(COPY_BLOCK, size - position), out);
  }
  fclose(in);
  fclose(out);
  struct stat status;
  if (stat(from.c_str(), &status) != 0) return true;
  chmod(to.c_str(), status.st_mode);
  std::ignore = chown(to.c_str(), status.st_uid, status.st_gid);
  return true;
}

bool FileSystem::makeDir(const std::string& path, bool underRoot) const {
  return mkdir(rootedPath(path, underRoot).c_str(), 0755) == 0;
}

// Every prefix is attempted, so the empty one of a leading slash and the repeat of a
// trailing slash fail harmlessly.
bool FileSystem::makePath(const std::string& path, bool underRoot) const {
  std::string prefix;
  for (char character : path) {
    if (character == '/') makeDir(prefix, underRoot);
    prefix += character;
  }
  makeDir(path, underRoot);
  return true;
}

std::string FileSystem::baseName(const std::string& path) {
  const std::string::size_type slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// A name without a dot past its first character yields nothing rather than itself.
std::string FileSystem::stripExtension(const std::string& name) {
  for (std::string::size_type index = name.size(); index-- > 1;) {
    if (name[index] == '.') return name.substr(0, index);
  }
  return "";
}
