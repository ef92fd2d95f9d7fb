// Transfers through libcurl, over http, https and file only: a small file into memory, or a
// package into an open file that may already hold the start of it. A transfer that sends more
// than it may is cut off; a partial file is resumed where the server takes a range, and
// started over where it does not.
#ifndef ZET_DOWNLOAD_H
#define ZET_DOWNLOAD_H

#include <cstdint>
#include <functional>
#include <string>

// One transfer's outcome, with libcurl's explanation of a failure.
class Download {
 public:
  enum Result {
    Done,
    Failed,    // the connection, the protocol or the server's status
    TooLarge,  // the server sent more than the limit
    DiskFailed,
  };
  // Told the bytes held so far and the whole size, when the server names it.
  using Progress = std::function<void(uint64_t now, uint64_t total)>;

  // At most `limit` bytes of `url` onto the end of `text`.
  Result toText(const std::string& url, uint64_t limit, std::string& text);
  // `url` onto the end of `file`, open to append, up to `limit` bytes in all, resuming after
  // what the file holds.
  Result toFile(const std::string& url, int file, uint64_t limit, const Progress& progress);

  // Why the last transfer that ended in Failed failed.
  std::string error;

 private:
  // Whether a run failed because the server would not send a range.
  bool rangeIgnored = false;
  Result run(const std::string& url, uint64_t offset, uint64_t limit,
             const std::function<bool(const char*, size_t)>& sink, const Progress& progress);
};

#endif
