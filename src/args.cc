#include "args.h"

#include <cstring>

#include "constants.h"

namespace {

// Set once an option follows a plain word; a further plain word is then refused. parse()
// resets it before it reads anything, so it needs no first value.
bool optionsAfterArgument;

}  // namespace

Args& Args::instance() {
  static Args args;
  return args;
}

void Args::clear() {
  options.clear();
  arguments.clear();
  programName.clear();
}

void Args::addOption(const std::string& name, bool takesValue) {
  Option option;
  option.name = name;
  option.takesValue = takesValue;
  options.push_back(option);
}

bool Args::parse(int argc, char** argv) {
  optionsAfterArgument = false;
  Option* pending = nullptr;
  for (int i = 1; i < argc; ++i) {
    const char* word = argv[i];
    const bool option = isOption(word);
    if (option && !pending) {
      if (!arguments.empty()) optionsAfterArgument = true;
      const std::string name = optionName(word);
      if (!optionExists(name, false)) return false;
      Option& row = getOption(name);
      row.given = true;
      if (row.takesValue) pending = &row;
    } else if (!option && pending) {
      pending->value = word;
      pending = nullptr;
    } else if (option && pending) {
      return false;
    } else if (!option && !pending && optionsAfterArgument) {
      return false;
    } else if (!option && !pending && !optionsAfterArgument) {
      arguments.push_back(word);
    } else {
      ZET_ASSERT(0 && "This code should'n be executed!", "bool Args::parse(int, char**)");
    }
  }
  if (pending) return false;

  if (argc > 0) {
    const char* slash = strrchr(argv[0], '/');
    programName += slash ? slash + 1 : argv[0];
  }
  return true;
}

bool Args::optionExists(const std::string& name, bool onlyIfGiven) const {
  for (const Option& option : options) {
    if (option.name == name) return onlyIfGiven ? option.given : true;
  }
  return false;
}

Args::Option& Args::getOption(std::string name) {
  for (Option& option : options) {
    if (option.name == name) return option;
  }
  ZET_ASSERT(0 && "Can't find option. Try optionExists() before using this function.",
             "Args::Option& Args::getOption(std::basic_string<char, std::char_traits<char>, "
             "std::allocator<char> >)");
}

std::string Args::getValue(const std::string& name) {
  return optionExists(name, true) ? getOption(name).value : std::string();
}

void Args::removeArgument(unsigned index) {
  if (index >= arguments.size()) return;
  arguments.erase(arguments.begin() + index);
}

bool Args::onlyAllowed(const std::vector<std::string>& allowed) const {
  for (const Option& option : options) {
    if (!option.given) continue;
    bool permitted = false;
    for (const std::string& name : allowed) {
      if (name == option.name) permitted = true;
    }
    if (!permitted) return false;
  }
  return true;
}

bool Args::isOption(const char* word) {
  const size_t length = strlen(word);
  if (length > 3 && strncmp(word, "---", 3) == 0) return false;
  return length > 1 && word[0] == '-';
}

std::string Args::optionName(const char* word) {
  if (strncmp(word, "--", 2) == 0) return word + 2;
  if (word[0] == '-') return word + 1;
  return std::string();
}
