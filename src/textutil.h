// Small tests and clean-ups of text that several units need, spelled once.
#ifndef ZET_TEXTUTIL_H
#define ZET_TEXTUTIL_H

#include <string>
#include <string_view>
#include <vector>

#include "textvector.h"

bool startsWith(std::string_view text, std::string_view head);
bool endsWith(std::string_view text, std::string_view tail);
// Removes every blank, then every tab, from each line: dependency and build lines are
// read that way, so that the halves of a name with a blank in it join.
void stripBlanks(TextVector& lines);
void dropEmptyLines(TextVector& lines);
// The lines as strings of their own.
std::vector<std::string> stringsOf(const TextVector& lines);
// The lines of `text` without their line feeds; a line feed at the end starts no line.
std::vector<std::string> splitLines(std::string_view text);

#endif
