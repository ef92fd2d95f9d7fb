#include "smallfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "constants.h"
#include "descriptor.h"

bool SmallFile::read(const std::string& path, uint64_t limit, std::string& text) {
  text.clear();
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return file.valid() && readFrom(file.get(), limit, text);
}

bool SmallFile::readFrom(int file, uint64_t limit, std::string& text) {
  char block[zet::READ_BLOCK];
  ssize_t got;
  while ((got = ::read(file, block, sizeof block)) > 0 && text.size() <= limit) {
    text.append(block, static_cast<size_t>(got));
  }
  return got == 0 && text.size() <= limit;
}

bool SmallFile::write(const std::string& path, const std::string& text, mode_t mode) {
  std::string temporary = temporaryBeside(path);
  Descriptor file(mkstemp(&temporary[0]));
  if (!file.valid()) return false;
  // A regular file takes a whole write unless the disk is full.
  bool good = fchmod(file.get(), mode) == 0 &&
              ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  good = fsync(file.get()) == 0 && good;
  good = file.close() && good;
  good = good && rename(temporary.c_str(), path.c_str()) == 0;
  if (!good) unlink(temporary.c_str());
  return good;
}

std::string SmallFile::temporaryBeside(const std::string& path) {
  const size_t slash = path.rfind('/');
  const size_t start = slash == std::string::npos ? 0 : slash + 1;
  return path.substr(0, start) + "." + path.substr(start) + ".XXXXXX";
}
