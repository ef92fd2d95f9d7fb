// The full-screen questions of an install, put to an external tool through the shell: one
// command text per dialog, and the answer read back from the tool's standard error.
#ifndef ZET_DIALOG_H
#define ZET_DIALOG_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "textvector.h"

// What every dialog shares: the title and the pieces of command line of the next run.
class Dialog {
 public:
  Dialog() = default;

  void setTitle(const std::string& newTitle) { title = newTitle; }
  // Only double quotes are escaped, so that "$" and backquotes still reach the shell.
  static std::string escapeQuotes(const std::string& text);
  // Runs the tool with the title and the pending pieces, then forgets the pieces.
  void run();

  std::string title;
  std::vector<std::string> arguments;
};

// A box that shows a package's text and leaves it on the screen while the work goes on.
class InfoBox : public Dialog {
 public:
  InfoBox() = default;

  void setText(const TextVector& lines);
  void show();

  std::string text;
};

// A menu of tagged choices; the tag that the user picks comes back through a file in the
// run's temporary area.
class MenuDialog : public Dialog {
 public:
  MenuDialog() = default;

  void setText(const TextVector& lines);
  void addItem(const std::string& tag, const std::string& itemText);
  void clearItems() { items.clear(); }
  void setHeight(int32_t newHeight) { height = newHeight; }
  // Blocks until the user has chosen.
  void show();
  std::string getResult() const { return result; }

  std::vector<std::pair<std::string, std::string>> items;
  std::string text;
  std::string result;
  int32_t height = 3;
};

#endif
