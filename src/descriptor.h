// An open file descriptor that closes itself: whichever way a function leaves, nothing leaks
// into the tools and scripts that the program starts later.
#ifndef ZET_DESCRIPTOR_H
#define ZET_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

class Descriptor {
 public:
  // Takes over `number`, as open and its kin return it: negative when they failed.
  explicit Descriptor(int number) : number(number) {}
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      close();
      number = std::exchange(other.number, -1);
    }
    return *this;
  }
  ~Descriptor() { close(); }

  bool valid() const { return number >= 0; }
  int get() const { return number; }
  // Gives the number up to a new owner, such as fdopendir.
  int release() { return std::exchange(number, -1); }
  // Closes it now, for a writer that must know whether the last bytes reached the file.
  bool close() {
    const int closing = std::exchange(number, -1);
    return closing >= 0 && ::close(closing) == 0;
  }

 private:
  int number;
};

#endif
