#include "linklines.h"

#include <cstdio>
#include <string_view>

#include "textvector.h"

namespace {

// What sh reads as something other than a plain character in an unquoted word: blanks and
// line ends split it, the rest quote, expand, glob or end the command. Braces count too,
// since bash, which may stand behind sh, expands them.
constexpr std::string_view SHELL_CHARACTERS = " \t\r\n\"#$&'()*;<>?[\\]`{|}~!";

// Longest field that a removal line is scanned for.
constexpr size_t SCRIPT_FIELD_SIZE = 1024;

std::string removalLine(const std::string& directory, const std::string& name) {
  return "( cd " + directory + " ; rm -rf " + name + " )";
}

std::string creationLine(const std::string& directory, const std::string& name,
                         const std::string& target) {
  return "( cd " + directory + " ; ln -sf " + target + " " + name + " )";
}

}  // namespace

std::string LinkLines::directoryOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string LinkLines::nameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string LinkLines::of(const std::string& path, const std::string& target) {
  const std::string directory = directoryOf(path);
  const std::string name = nameOf(path);
  return removalLine(directory, name) + "\n" + creationLine(directory, name, target) + "\n";
}

bool LinkLines::usable(const std::string& path, const std::string& target) {
  const std::string directory = directoryOf(path);
  const std::string name = nameOf(path);
  if (!plainWord(directory) || !plainWord(name) || !plainWord(target)) return false;
  // Installing reads doinst.sh with the reader of every text file, which cuts long lines.
  TextVector lines;
  TextFile::forEachLineOf(of(path, target), [&lines](std::string_view line) {
    lines.push_back(std::string(line).c_str());
  });
  if (lines.size() != 2 || removalLine(directory, name) != lines[0] ||
      creationLine(directory, name, target) != lines[1]) {
    return false;
  }
  const FileList named = read(lines);
  return named.size() == 1 && directory + "/" + name == named[0];
}

bool LinkLines::plainWord(const std::string& word) {
  return !word.empty() && word[0] != '-' &&
         word.find_first_of(SHELL_CHARACTERS) == std::string::npos;
}

FileList LinkLines::read(const TextVector& script) {
  // The link field lies directly in front of the directory field, so that the terminator of
  // a link of the full field size lands on the first byte of the directory and empties it:
  // old scripts depend on such a line naming no link.
  char fields[2 * SCRIPT_FIELD_SIZE + 1];
  char* link = fields;
  char* directory = fields + SCRIPT_FIELD_SIZE;
  FileList links;
  for (unsigned i = 0; i < script.size(); ++i) {
    link[0] = '\0';
    directory[0] = '\0';
    // A partial match still fills what it reached; the fields decide, not the count.
    [[maybe_unused]] const int matched =
        std::sscanf(script[i], "( cd %1024s ; rm -rf %1024s )", directory, link);
    if (directory[0] != '\0' && link[0] != '\0') {
      links.push_back((std::string(directory) + "/" + link).c_str());
    }
  }
  return links;
}
