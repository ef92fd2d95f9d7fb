#include "runlock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <tuple>

#include "constants.h"
#include "smallfile.h"

bool RunLock::open() {
  if (file.valid()) return true;
  std::error_code ignored;
  std::filesystem::create_directories(path.substr(0, path.rfind('/')), ignored);
  file = Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644));
  return file.valid();
}

void RunLock::sign() {
  const std::string pid = std::to_string(getpid()) + "\n";
  // Only a help to whoever finds the lock taken: a write that fails changes nothing else.
  if (ftruncate(file.get(), 0) == 0) std::ignore = pwrite(file.get(), pid.data(), pid.size(), 0);
}

RunLock::Attempt RunLock::tryTake() {
  if (!open()) return Unopened;
  if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) return Busy;
  sign();
  return Taken;
}

bool RunLock::take() {
  if (!open() || flock(file.get(), LOCK_EX) != 0) return false;
  sign();
  return true;
}

std::string RunLock::holder() const {
  std::string text;
  if (!SmallFile::read(path, zet::HOLDER_LIMIT, text)) return "";
  return text.substr(0, text.find('\n'));
}
