#include "temparea.h"

#include <cstdlib>
#include <ctime>
#include <sstream>

#include "filesystem.h"

namespace {

// The generator's state for the whole run; 0 means not yet seeded.
uint32_t seed = 0;

}  // namespace

TempArea& TempArea::instance() {
  static TempArea tempArea;
  return tempArea;
}

void TempArea::create(const char* base, const char* prefix) {
  std::ostringstream text;
  text << base << "/" << prefix << random(999999);
  path = text.str();
}

// Seeded from the clock at one-second grain, so runs started in the same second share
// their numbers.
unsigned TempArea::random(unsigned limit) {
  if (seed == 0) seed = static_cast<uint32_t>(time(nullptr));
  seed = nextSeed(seed);
  return mix(seed) % (limit + 1);
}

// The subtraction wraps around and nothing is added back when it goes below zero.
uint32_t TempArea::nextSeed(uint32_t current) {
  const uint32_t quotient = current / 127773;
  const uint32_t remainder = current % 127773;
  const uint32_t next = remainder * 16807 - quotient * 2836;
  return next == 0 ? 2147483647 : next;
}

// The low byte goes to bits 23 to 30: a rotation over 31 bits, not 32.
uint32_t TempArea::mix(uint32_t value) {
  return (value >> 8) | ((value & 0xff) << 23);
}

void leaveRun(int status) {
  FileSystem::instance().removeTree(TempArea::instance().getPath(), false);
  exit(status);
}
