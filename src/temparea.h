#ifndef ZET_TEMPAREA_H
#define ZET_TEMPAREA_H

#include <cstdint>
#include <string>

// Owns the name of the run's one scratch directory, /tmp/zet- and a number. It touches
// nothing on disk: main makes the directory and removes it on every way out.
class TempArea {
 public:
  static TempArea& instance();

  // path := base "/" prefix and random(999999) in decimal.
  void create(const char* base, const char* prefix);
  std::string getPath() const { return path; }
  // The next number of the run's generator, in 0 to `limit` inclusive. The first call seeds
  // the generator from the clock.
  static unsigned random(unsigned limit);

  // One step of the generator: the next seed after `seed`, never 0.
  static uint32_t nextSeed(uint32_t seed);
  // The number handed out for a seed: a 31-bit rotation of it.
  static uint32_t mix(uint32_t seed);

 private:
  TempArea() = default;
  std::string path = "/tmp";
};

// Removes the run's scratch directory with everything in it, then ends the process with
// `status`. Every way out of the program but an assertion goes through here.
[[noreturn]] void leaveRun(int status);

#endif
