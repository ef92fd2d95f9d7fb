// One fuzz target for the parsers of outside input: the first byte picks the parser, the rest
// is its input, also as a file. Beyond crashes and undefined behaviour it checks that lines
// are cut as fgets into 1024 bytes cuts them, that a record lists the files a full read
// lists, and that an index writes itself back as it reads.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "args.h"
#include "configfile.h"
#include "lang.h"
#include "linklines.h"
#include "packagename.h"
#include "packagerecord.h"
#include "repoindex.h"
#include "signature.h"
#include "tagfile.h"

namespace {

void check(bool holds) {
  if (!holds) __builtin_trap();
}

void linesAsFgetsCutsThem(const char* path, const TextFile& lines) {
  FILE* file = fopen(path, "r");
  char buffer[1024];
  unsigned index = 0, count;
  while (fgets(buffer, sizeof buffer, file) != nullptr) {
    for (count = 0; buffer[count] != '\n' && buffer[count] != '\0' &&
                    !(buffer[count] == '\r' && buffer[count + 1] == '\n');)
      ++count;
    check(index < lines.size() && std::string(buffer, count) == lines[index++]);
  }
  fclose(file);
  check(index == lines.size());
}

void recordListsItsFiles(const std::string& path) {
  PackageRecord record;
  record.read(path);
  unsigned index = 0;
  PackageRecord::forEachListedFile(path, [&](std::string_view line) {
    check(index < record.files.size() && line == record.files[index++]);
  });
}

void indexReadsBack(const std::string& text) {
  RepoIndex::Finding finding;
  const std::optional<RepoIndex> index = RepoIndex::read(text, finding);
  if (index) check(RepoIndex::read(index->text(), finding)->text() == index->text());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  static const std::string path = "/tmp/zet-fuzz-" + std::to_string(getpid());
  FILE* file = fopen(path.c_str(), "wb");
  fwrite(text.data(), 1, text.size(), file);
  fclose(file);
  TextFile lines(path.c_str());
  PackageName name;
  TagFile tags;
  ConfigFile config;
  Args args;
  std::vector<char*> words;
  switch (data[0] % 7) {
    case 0:
      linesAsFgetsCutsThem(path.c_str(), lines);
      break;
    case 1:
      recordListsItsFiles(path);
      break;
    case 2:
      tags.load(path.c_str());
      config.read(path);
      break;
    case 3:
      LinkLines::read(lines);
      name.parse(text.c_str());
      break;
    case 4:
      indexReadsBack(text);
      Signature::readSecretKey(text);
      if (const auto key = Signature::readPublicKey(text)) Signature::verify(text, text, *key);
      Signature::verify(text, text, Signature::PublicKey());
      break;
    case 5:
      Lang::instance().load(path);
      Lang::instance().get(text.substr(0, text.find('=')).c_str(), "a");
      break;
    case 6:
      args.addOption("root", true);
      args.addOption("i", false);
      for (unsigned i = 0; i < lines.size(); ++i) words.push_back(lines[i]);
      if (args.parse(static_cast<int>(words.size()), words.data())) args.getValue("root");
      break;
  }
  unlink(path.c_str());
  return 0;
}
