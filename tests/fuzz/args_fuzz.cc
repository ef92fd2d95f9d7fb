// A command line: the input is cut into argv words at NUL and newline bytes, the first
// being the program name, and parsed against a table declared as the program declares its
// own. Only declared names are asked for, as the program does.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "args.h"

namespace {

const struct {
  const char* name;
  bool takesValue;
} table[] = {
    {"install", false},   {"i", false},     {"remove", false},    {"r", false},
    {"upgrade", false},   {"u", false},     {"root", true},       {"tagfile", true},
    {"priority", true},   {"force", false}, {"nodeps", false},    {"deps", false},
    {"infobox", false},   {"ask", false},   {"menu", false},      {"warn", false},
    {"preserve", false},  {"copy", false},  {"debug", false},     {"install-new", false},
    {"reinstall", false}, {"help", false},  {"h", false},         {"no-colors", false},
    {"with-deps", false}, {"lang", true},   {"show-deps", false},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> words(1);
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == '\0' || data[i] == '\n') {
      words.emplace_back();
    } else {
      words.back() += static_cast<char>(data[i]);
    }
  }
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);

  Args args;
  for (const auto& row : table) args.addOption(row.name, row.takesValue);
  if (!args.parse(static_cast<int>(words.size()), argv.data())) return 0;
  for (const auto& row : table) {
    if (args.optionExists(row.name, true)) args.getOption(row.name);
    args.getValue(row.name);
  }
  args.onlyAllowed({"install", "root", "tagfile", "priority"});
  args.getProgramName();
  while (!args.getArguments().empty()) args.removeArgument(0);
  args.removeArgument(7);
  return 0;
}
