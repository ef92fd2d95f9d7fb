// The lock that lets one getzet at a time change a root: an flock(2) on a file that holds the
// process id of its holder, so that a run that finds it taken can say whom it waits for.
#ifndef ZET_RUNLOCK_H
#define ZET_RUNLOCK_H

#include <string>

#include "descriptor.h"

// One lock file, held until the object goes.
class RunLock {
 public:
  explicit RunLock(std::string path) : path(std::move(path)) {}
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;

  enum Attempt { Taken, Busy, Unopened };
  // Takes the lock if no one holds it, making the file and its directory when missing.
  Attempt tryTake();
  // Waits for the lock; false when the file cannot be opened or locked.
  bool take();
  // What the holder wrote in the file: its process id.
  std::string holder() const;

 private:
  bool open();
  // Writes this process's id into the file for the runs that wait.
  void sign();

  std::string path;
  Descriptor file{-1};
};

#endif
