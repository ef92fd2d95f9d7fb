#ifndef ZET_ARGS_H
#define ZET_ARGS_H

#include <string>
#include <vector>

// A small general option parser: the caller declares a table of options, parse() walks argv
// once, and the caller asks what was given. One dash and two dashes lead to the same table,
// and plain words must form one unbroken run. It prints nothing.
class Args {
 public:
  // One declared option.
  struct Option {
    std::string name;
    std::string value;
    bool takesValue = false;
    bool given = false;
  };

  static Args& instance();
  Args() = default;
  ~Args() { clear(); }

  void clear();
  // Appends a row; a name declared twice gives two rows, and only the first is ever found.
  void addOption(const std::string& name, bool takesValue);
  // False on an unknown option, a missing value, an option where a value belongs, or a
  // plain word behind an option that itself follows a plain word.
  bool parse(int argc, char** argv);
  // Whether a row bears the name; with `onlyIfGiven`, whether it stood on the command line.
  bool optionExists(const std::string& name, bool onlyIfGiven) const;
  // The first row of that name; a missing name stops the program.
  Option& getOption(std::string name);
  // The value of a given option, else the empty string.
  std::string getValue(const std::string& name);
  std::string getProgramName() const { return programName; }
  std::vector<std::string>& getArguments() { return arguments; }
  // Drops the word at `index`; an index past the end changes nothing.
  void removeArgument(unsigned index);
  // False when a given option is not in `allowed`.
  bool onlyAllowed(const std::vector<std::string>& allowed) const;

  // "-x" and "--x" are options; "-" is a word, and "---x" is the escape for a word that
  // begins with a dash.
  static bool isOption(const char* word);
  // The word without its one or two leading dashes; empty for a word without a dash.
  static std::string optionName(const char* word);

 private:
  std::string programName;
  std::vector<Option> options;
  std::vector<std::string> arguments;
};

#endif
