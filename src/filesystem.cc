#include "filesystem.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <tuple>

#include "constants.h"

namespace {

// One buffer serves every copy, so copying allocates nothing per block.
char copyBuffer[zet::COPY_BLOCK];

}  // namespace

FileSystem& FileSystem::instance() {
  static FileSystem fileSystem;
  return fileSystem;
}

std::string FileSystem::plainPath(const std::string& path, bool underRoot) const {
  return underRoot ? root + "/" + path : path;
}

std::string FileSystem::rootedPath(const std::string& path, bool underRoot) const {
  return underRoot ? root + "/" + path : "/" + path;
}

bool FileSystem::exists(const std::string& path, bool underRoot) const {
  return TextFile::fileExists(plainPath(path, underRoot).c_str());
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

// Cleaning up never follows a symbolic link: a link is unlinked as itself, so that a link
// inside a package's install/ cannot lead the removal into what it points at. The root of
// the file system and the installation root are never removed, however the path spells them.
void FileSystem::removeTree(const std::string& path, bool underRoot) {
  std::string prefix;
  for (const std::string& step : descent) prefix += step + "/";
  const std::string real = plainPath(prefix + path, underRoot);
  struct stat status;
  if (lstat(real.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
    unlink(real.c_str());
    return;
  }
  if (descent.empty() && isProtected(real)) return;
  if (!list(prefix + path, underRoot)) {
    remove(prefix + path, underRoot);
    return;
  }
  descent.push_back(path);
  const TextVector names = entries();
  for (const char* name : names) {
    if (!isDotEntry(name)) removeTree(name, underRoot);
  }
  descent.pop_back();
  remove(prefix + path, underRoot);
}

// Compared by device and inode, so "//", "/./" or a root with a trailing slash all match.
bool FileSystem::isProtected(const std::string& real) const {
  struct stat target, system, installation;
  if (stat(real.c_str(), &target) != 0) return false;
  const auto same = [&target](const struct stat& other) {
    return target.st_dev == other.st_dev && target.st_ino == other.st_ino;
  };
  if (stat("/", &system) == 0 && same(system)) return true;
  return stat(root.c_str(), &installation) == 0 && same(installation);
}

bool FileSystem::list(const std::string& path, bool underRoot) {
  DIR* directory = opendir(plainPath(path, underRoot).c_str());
  if (directory == nullptr) return false;
  clear();
  while (const dirent* entry = readdir(directory)) push_back(entry->d_name);
  closedir(directory);
  return true;
}

bool FileSystem::linkTarget(const std::string& path, std::string& target) {
  std::error_code failed;
  target = std::filesystem::read_symlink(path, failed);
  return !failed;
}

bool FileSystem::isDotEntry(const char* name) {
  return strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
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
  for (long position = 0; position < size; position += zet::COPY_BLOCK) {
    std::ignore = fread(copyBuffer, 1, zet::COPY_BLOCK, in);
    fwrite(copyBuffer, 1, std::min(zet::COPY_BLOCK, size - position), out);
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
  const std::string::size_type dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? "" : name.substr(0, dot);
}
