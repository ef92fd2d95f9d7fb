#include "packagename.h"

#include <cctype>

#include "textvector.h"

bool PackageName::parse(const std::string& text) {
  clear();
  TextVector tokens;
  tokens.split('-', text.c_str());
  const unsigned count = tokens.size();
  if (count < 4) return false;

  build = tokens[count - 1];
  architecture = tokens[count - 2];
  name = tokens[0];
  bool versionStarted = false;
  for (unsigned i = 1; i < count - 3; ++i) {
    if (versionStarted) {
      version += "-";
      version += tokens[i];
    } else if (isVersion(tokens[i])) {
      version = tokens[i];
      versionStarted = true;
    } else {
      name += "-";
      name += tokens[i];
    }
  }
  // Joined without a dash: a multi-token version comes out with its last two tokens fused.
  version += tokens[count - 3];
  return true;
}

void PackageName::clear() {
  name.clear();
  version.clear();
  build.clear();
  architecture.clear();
}

bool PackageName::isVersion(const std::string& token) {
  // An empty token reads as '\0', which is no digit.
  return std::isdigit(static_cast<unsigned char>(token[0])) && token.find('.') != std::string::npos;
}

std::string shortNameOf(const std::string& fullName) {
  PackageName parsed;
  return parsed.parse(fullName) ? parsed.name : std::string();
}
