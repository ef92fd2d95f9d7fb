#include "download.h"

#include <curl/curl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "constants.h"

namespace {

struct Transfer {
  const std::function<bool(const char*, size_t)>* sink;
  const Download::Progress* progress;
  uint64_t offset;
  uint64_t held;
  uint64_t limit;
  bool tooLarge = false;
  bool diskFailed = false;
};

size_t receive(char* data, size_t size, size_t count, void* user) {
  Transfer& transfer = *static_cast<Transfer*>(user);
  const size_t bytes = size * count;
  if (transfer.held + bytes > transfer.limit) {
    transfer.tooLarge = true;
    return CURL_WRITEFUNC_ERROR;
  }
  if (!(*transfer.sink)(data, bytes)) {
    transfer.diskFailed = true;
    return CURL_WRITEFUNC_ERROR;
  }
  transfer.held += bytes;
  return bytes;
}

int progressOf(void* user, curl_off_t total, curl_off_t now, curl_off_t, curl_off_t) {
  Transfer& transfer = *static_cast<Transfer*>(user);
  if (*transfer.progress) {
    (*transfer.progress)(transfer.offset + static_cast<uint64_t>(now),
                         total > 0 ? transfer.offset + static_cast<uint64_t>(total) : 0);
  }
  return 0;
}

// The options that every transfer shares: redirects followed, an HTTP error taken as a
// failure, no signals (transfers run in threads), progress reported, and the bounds on a
// connection that never comes or stalls.
const struct {
  CURLoption option;
  long value;
} SHARED_OPTIONS[] = {
    {CURLOPT_FOLLOWLOCATION, 1},
    {CURLOPT_FAILONERROR, 1},
    {CURLOPT_NOSIGNAL, 1},
    {CURLOPT_NOPROGRESS, 0},
    {CURLOPT_CONNECTTIMEOUT, zet::CONNECT_SECONDS},
    {CURLOPT_LOW_SPEED_LIMIT, zet::LOW_SPEED},
    {CURLOPT_LOW_SPEED_TIME, zet::LOW_SPEED_SECONDS},
};

// libcurl is set up once for the whole process, at start-up, before any transfer runs in a
// thread of its own.
[[maybe_unused]] const CURLcode curlStarted = curl_global_init(CURL_GLOBAL_DEFAULT);

}  // namespace

Download::Result Download::run(const std::string& url, uint64_t offset, uint64_t limit,
                               const std::function<bool(const char*, size_t)>& sink,
                               const Progress& progress) {
  // Declared before the handle, so that they outlive it.
  Transfer transfer{&sink, &progress, offset, offset, limit};
  char message[CURL_ERROR_SIZE] = "";
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                   curl_easy_cleanup);
  if (!handle) {
    error = curl_easy_strerror(CURLE_FAILED_INIT);
    return Failed;
  }
  CURL* const curl = handle.get();
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https,file");
  curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  for (const auto& shared : SHARED_OPTIONS) curl_easy_setopt(curl, shared.option, shared.value);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, message);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, receive);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, progressOf);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &transfer);
  // From 0, no range is asked.
  curl_easy_setopt(curl, CURLOPT_RESUME_FROM_LARGE, curl_off_t(offset));
  const CURLcode code = curl_easy_perform(curl);
  if (transfer.tooLarge) return TooLarge;
  if (transfer.diskFailed) return DiskFailed;
  if (code == CURLE_OK) return Done;
  error = message;
  // libcurl leaves its buffer empty where it has nothing to add to the code's own text.
  if (error.empty()) error = curl_easy_strerror(code);
  rangeIgnored = code == CURLE_RANGE_ERROR;
  return Failed;
}

Download::Result Download::toText(const std::string& url, uint64_t limit, std::string& text) {
  return run(
      url, 0, limit,
      [&text](const char* data, size_t size) {
        text.append(data, size);
        return true;
      },
      Progress());
}

Download::Result Download::toFile(const std::string& url, int file, uint64_t limit,
                                  const Progress& progress) {
  struct stat status;
  if (fstat(file, &status) != 0) return DiskFailed;
  // A regular file takes a whole write unless the disk is full.
  const auto sink = [file](const char* data, size_t size) {
    return write(file, data, size) == static_cast<ssize_t>(size);
  };
  const uint64_t held = static_cast<uint64_t>(status.st_size);
  // From an empty file no range is asked, so none can be ignored and one run decides.
  if (held < limit) {
    const Result result = run(url, held, limit, sink, progress);
    // A server that ignores the range sends the whole file again: start over.
    if (result != Failed || !rangeIgnored) return result;
  }
  if (ftruncate(file, 0) != 0) return DiskFailed;
  return run(url, 0, limit, sink, progress);
}
