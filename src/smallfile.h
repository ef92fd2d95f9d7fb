// Whole small files: read at once, and written so that a reader sees either the old file or
// the complete new one, never a part: the text goes into a temporary file beside the path,
// which is renamed onto it once it is complete and on disk.
#ifndef ZET_SMALLFILE_H
#define ZET_SMALLFILE_H

#include <sys/types.h>

#include <cstdint>
#include <string>

// Reading and writing a file of text in one piece.
class SmallFile {
 public:
  // False when the file cannot be read or holds more than `limit` bytes.
  static bool read(const std::string& path, uint64_t limit, std::string& text);
  // Appends what the open `file` holds from where it stands; false on a read error or when
  // `text` grows past `limit` bytes.
  static bool readFrom(int file, uint64_t limit, std::string& text);
  // False, with nothing left behind, when any step fails.
  static bool write(const std::string& path, const std::string& text, mode_t mode);
  // The mkstemp pattern of a hidden file beside `path`: ".NAME.XXXXXX" in its directory.
  static std::string temporaryBeside(const std::string& path);
};

#endif
