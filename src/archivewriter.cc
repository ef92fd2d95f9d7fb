#include "archivewriter.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

extern char** environ;

namespace {

constexpr size_t BLOCK = 512;
// GNU tar ends an archive on a whole record of twenty blocks.
constexpr size_t RECORD = 20 * BLOCK;
constexpr size_t BUFFER = 64 * 1024;

// Where the fields of a header block lie, and how long they are.
constexpr size_t NAME_AT = 0, NAME_SIZE = 100;
constexpr size_t MODE_AT = 100, OWNER_AT = 108, GROUP_AT = 116, ID_SIZE = 8;
constexpr size_t SIZE_AT = 124, TIME_AT = 136, NUMBER_SIZE = 12;
constexpr size_t CHECKSUM_AT = 148, CHECKSUM_SIZE = 8, CHECKSUM_DIGITS = 6;
constexpr size_t TYPE_AT = 156, MAGIC_AT = 257, OWNER_NAME_AT = 265, GROUP_NAME_AT = 297;

// The magic of GNU tar's own format, with its version, ends in a NUL: eight bytes.
constexpr char MAGIC[] = "ustar  ";
constexpr const char* ROOT = "root";
constexpr char FILE_TYPE = '0';
constexpr char DIRECTORY_TYPE = '5';
// A name longer than its field goes ahead of its member in a record of its own.
constexpr char LONG_NAME_TYPE = 'L';
constexpr const char* LONG_NAME_HEADER = "././@LongLink";
constexpr unsigned LONG_NAME_MODE = 0644;

constexpr const char* GZIP_PROGRAM = "gzip";

// Octal digits, zero-filled, with the last byte of the field left NUL; a value too large for
// them takes the base-256 form that GNU tar reads, flagged by the top bit of the first byte.
void putNumber(char* field, size_t size, uint64_t value) {
  const size_t digits = size - 1;
  if (value >> (digits * 3) != 0) {
    for (size_t i = size; i-- > 1; value >>= 8) field[i] = static_cast<char>(value & 0xff);
    field[0] = static_cast<char>(0x80);
    return;
  }
  for (size_t i = digits; i-- > 0; value >>= 3) field[i] = static_cast<char>('0' + (value & 7));
}

std::string header(const std::string& name, char type, unsigned mode, uint64_t size,
                   uint64_t time) {
  std::string block(BLOCK, '\0');
  name.copy(&block[NAME_AT], NAME_SIZE);
  putNumber(&block[MODE_AT], ID_SIZE, mode);
  putNumber(&block[OWNER_AT], ID_SIZE, 0);
  putNumber(&block[GROUP_AT], ID_SIZE, 0);
  putNumber(&block[SIZE_AT], NUMBER_SIZE, size);
  putNumber(&block[TIME_AT], NUMBER_SIZE, time);
  block[TYPE_AT] = type;
  std::memcpy(&block[MAGIC_AT], MAGIC, sizeof MAGIC);
  std::memcpy(&block[OWNER_NAME_AT], ROOT, std::strlen(ROOT));
  std::memcpy(&block[GROUP_NAME_AT], ROOT, std::strlen(ROOT));
  // The sum is taken with blanks in the checksum field, then stands there as six octal
  // digits, a NUL and a blank.
  block.replace(CHECKSUM_AT, CHECKSUM_SIZE, CHECKSUM_SIZE, ' ');
  unsigned sum = 0;
  for (const char byte : block) sum += static_cast<unsigned char>(byte);
  putNumber(&block[CHECKSUM_AT], CHECKSUM_DIGITS + 1, sum);
  block[CHECKSUM_AT + CHECKSUM_DIGITS] = '\0';
  return block;
}

// The tar stream on its way into the pipe to gzip, written in blocks of BUFFER bytes. No call
// here comes back interrupted: the only signals that makezet catches end it.
class Stream {
 public:
  explicit Stream(int pipe) : pipe(pipe) { buffer.reserve(BUFFER); }

  // False once a write has failed, as it does when gzip has gone.
  bool put(const char* data, size_t size) {
    buffer.append(data, size);
    position += size;
    return buffer.size() < BUFFER || flush();
  }
  bool put(const std::string& data) { return put(data.data(), data.size()); }
  // Zeros up to the next multiple of `unit` bytes of the stream.
  bool pad(size_t unit) { return put(std::string((unit - position % unit) % unit, '\0')); }
  bool flush() {
    for (size_t done = 0; done < buffer.size();) {
      const ssize_t count = ::write(pipe, buffer.data() + done, buffer.size() - done);
      if (count <= 0) return false;
      done += static_cast<size_t>(count);
    }
    buffer.clear();
    return true;
  }

 private:
  int pipe;
  std::string buffer;
  uint64_t position = 0;
};

// How far the writing of a member got.
enum class Step { Done, Unreadable, Broken };

// Copies exactly `size` bytes of the file at `path`: Unreadable when it holds more or fewer
// than when the tree was read, or cannot be read at all.
Step copyFile(Stream& stream, const std::string& path, uint64_t size) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return Step::Unreadable;
  char chunk[BUFFER];
  uint64_t left = size;
  Step step = Step::Done;
  for (;;) {
    const ssize_t count = read(file, chunk, left > 0 && left < BUFFER ? left : BUFFER);
    // Past the size, one more byte read means that the file has grown.
    if (count <= 0 || left == 0) {
      if (count != 0 || left != 0) step = Step::Unreadable;
      break;
    }
    left -= static_cast<uint64_t>(count);
    if (!stream.put(chunk, static_cast<size_t>(count))) {
      step = Step::Broken;
      break;
    }
  }
  close(file);
  return step;
}

Step writeMember(Stream& stream, const ArchiveMember& member, uint64_t time) {
  const std::string& name = member.name;
  if (name.size() > NAME_SIZE &&
      !(stream.put(
            header(LONG_NAME_HEADER, LONG_NAME_TYPE, LONG_NAME_MODE, name.size() + 1, time)) &&
        stream.put(name.c_str(), name.size() + 1) && stream.pad(BLOCK))) {
    return Step::Broken;
  }
  const char type = member.directory ? DIRECTORY_TYPE : FILE_TYPE;
  if (!stream.put(header(name, type, member.mode, member.size, time))) return Step::Broken;
  if (!member.source.empty()) {
    const Step copied = copyFile(stream, member.source, member.size);
    if (copied != Step::Done) return copied;
  } else if (!stream.put(member.content)) {
    return Step::Broken;
  }
  return stream.pad(BLOCK) ? Step::Done : Step::Broken;
}

// Starts gzip reading `input` and writing `output`; 0 when it could not be started.
pid_t startGzip(int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  // No shell: the arguments reach gzip as they are.
  char* const argv[] = {const_cast<char*>(GZIP_PROGRAM), const_cast<char*>("-n"), nullptr};
  pid_t gzip = 0;
  const int failed = posix_spawnp(&gzip, GZIP_PROGRAM, &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  return failed ? 0 : gzip;
}

}  // namespace

ArchiveWriter::Result ArchiveWriter::write(const std::vector<ArchiveMember>& members, int output,
                                           uint64_t time) {
  failedSource.clear();
  int pipe[2];
  // Close-on-exec, so that gzip holds no end of the pipe but its input and sees its end.
  if (pipe2(pipe, O_CLOEXEC) != 0) return GzipFailed;
  const pid_t gzip = startGzip(pipe[0], output);
  close(pipe[0]);
  if (gzip == 0) {
    close(pipe[1]);
    return GzipFailed;
  }

  Stream stream(pipe[1]);
  Step step = Step::Done;
  for (const ArchiveMember& member : members) {
    step = writeMember(stream, member, time);
    if (step == Step::Unreadable) failedSource = member.source;
    if (step != Step::Done) break;
  }
  // The end of an archive is two zero blocks, then the rest of the record.
  if (step == Step::Done &&
      !(stream.put(std::string(2 * BLOCK, '\0')) && stream.pad(RECORD) && stream.flush())) {
    step = Step::Broken;
  }
  close(pipe[1]);
  int status = 0;
  waitpid(gzip, &status, 0);
  if (step == Step::Unreadable) return SourceUnreadable;
  const bool gzipDone = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return step == Step::Done && gzipDone ? Written : GzipFailed;
}
