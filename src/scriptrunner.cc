#include "scriptrunner.h"

#include <cstdlib>

#include "constants.h"
#include "filesystem.h"
#include "temparea.h"

bool ScriptRunner::run(const std::string& argument, const std::string& directory) const {
  const std::string temp = TempArea::instance().getPath();
  const std::string scriptPath = temp + "/" + zet::TEMP_SCRIPT;
  if (!save(scriptPath.c_str(), true)) return false;

  // The two steps are joined by ";", so the script runs even where the cd failed, and an
  // empty argument leaves a trailing blank.
  const std::string command =
      "cd " + directory + "; sh " + temp + "/" + zet::TEMP_SCRIPT + " " + argument;
  // A failing script stops nothing: its status is not looked at.
  [[maybe_unused]] const int status = std::system(command.c_str());

  FileSystem::instance().remove(scriptPath, false);
  return true;
}
