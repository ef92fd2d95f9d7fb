#include "dialog.h"

#include <cstdlib>
#include <sstream>

#include "constants.h"
#include "filesystem.h"
#include "temparea.h"

namespace {

// The tool turns the two characters backslash and n into line breaks, so that the whole
// text travels as one word of the command line. Leading empty lines vanish.
std::string joinLines(const TextVector& lines) {
  std::string joined;
  for (unsigned i = 0; i < lines.size(); ++i) {
    if (!joined.empty()) joined += "\\n";
    joined += lines[i];
  }
  return joined;
}

}  // namespace

std::string Dialog::escapeQuotes(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '"') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

void Dialog::run() {
  std::string command = zet::DIALOG_TOOL;
  command += " --title \"" + title + "\"";
  for (const std::string& argument : arguments) command += " " + argument;
  // The exit status tells nothing: a menu's answer comes back through its result file.
  [[maybe_unused]] const int status = std::system(command.c_str());
  arguments.clear();
}

void InfoBox::setText(const TextVector& lines) {
  text = joinLines(lines);
}

void InfoBox::show() {
  arguments.push_back("--infobox \"" + escapeQuotes(text) + "\" 0 0");
  run();
}

void MenuDialog::setText(const TextVector& lines) {
  text = joinLines(lines);
}

void MenuDialog::addItem(const std::string& tag, const std::string& itemText) {
  items.emplace_back(tag, itemText);
}

void MenuDialog::show() {
  const std::string resultPath = TempArea::instance().getPath() + "/" + zet::TEMP_MENU_RESULT;
  std::ostringstream piece;
  piece << "--menu \"" << escapeQuotes(text) << "\" 0 0 " << height;
  for (const auto& item : items) piece << " \"" << item.first << "\" \"" << item.second << "\"";
  piece << " 2>" << resultPath;
  arguments.push_back(piece.str());
  run();
  // A cancelled menu leaves the file empty, and more than one line is not a tag: either
  // way the earlier answer stands.
  TextFile answer;
  if (answer.load(resultPath.c_str()) && answer.size() == 1) result = answer[0];
  FileSystem::instance().remove(resultPath, false);
}
