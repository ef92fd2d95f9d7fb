#include <gtest/gtest.h>

#include "repoconfig.h"
#include "repoindex.h"
#include "signature.h"

namespace {

const std::string HEAD = "Format: zet-index 1\nSerial: 9999999999999999999\nDate: 3\n\n";
const std::string SUM = "SHA256: " + std::string(64, 'a') + "\n";

std::string stanza(const std::string& name, const std::string& file) {
  return "Name: " + name + "\nFile: " + file + "\nSize: 5\n" + SUM;
}

}  // namespace

TEST(RepoIndex, RefusesEachBrokenStanzaWithItsLine) {
  const struct {
    std::string text;
    RepoIndex::Problem problem;
    unsigned line;
  } rows[] = {
      {"", RepoIndex::NoFormat, 1},
      {"Format: zet-index 2\n", RepoIndex::NoFormat, 1},
      {"Format: zet-index 1\nSerial: 1\n", RepoIndex::BadSerial, 1},
      {"Format: zet-index 1\nSerial: 99999999999999999999\nDate: 1\n", RepoIndex::BadSerial, 1},
      {HEAD + "no colon\n", RepoIndex::BadLine, 5},
      {HEAD + "a b: c\n", RepoIndex::BadLine, 5},
      {HEAD + ": c\n", RepoIndex::BadLine, 5},
      {HEAD + stanza("x", "d/x-1-a-1.tgz"), RepoIndex::BadFile, 5},
      {HEAD + stanza("x", "x-1-a-1.tgz;rm"), RepoIndex::BadFile, 5},
      {HEAD + stanza("x", ".x-1-a-1.tgz"), RepoIndex::BadFile, 5},
      {HEAD + stanza("x", "x-1-a.tgz"), RepoIndex::BadFile, 5},
      {HEAD + stanza("y", "x-1-a-1.tgz"), RepoIndex::NameMismatch, 5},
      {HEAD + stanza("x-2.0-b", "x-2.0-b-1-a-1.tgz"), RepoIndex::NameMismatch, 5},
      {HEAD + "Name: x\nFile: x-1-a-1.tgz\nSize:\n" + SUM, RepoIndex::NoSize, 5},
      {HEAD + "Name: x\nFile: x-1-a-1.tgz\nSize: 1k\n" + SUM, RepoIndex::NoSize, 5},
      {HEAD + "Name: x\nFile: x-1-a-1.tgz\nSize: 1\nSHA256: a\n", RepoIndex::NoChecksum, 5},
      {HEAD + "Name: x\nFile: x-1-a-1.tgz\nSize: 1\nSHA256: " + std::string(64, 'A'),
       RepoIndex::NoChecksum, 5},
      {HEAD + stanza("x", "x-1-a-1.tgz") + "Deps: a $(b)\n", RepoIndex::BadWord, 5},
      {HEAD + stanza("x", "x-1-a-1.tgz") + "Build: $b\n", RepoIndex::BadWord, 5},
      {HEAD + stanza("x", "x-1-a-1.tgz") + "\n" + stanza("x", "x") + "\n", RepoIndex::BadFile, 10},
  };
  for (const auto& row : rows) {
    RepoIndex::Finding finding;
    EXPECT_FALSE(RepoIndex::read(row.text, finding)) << row.text;
    EXPECT_EQ(finding.problem, row.problem) << row.text;
    EXPECT_EQ(finding.line, row.line) << row.text;
  }
}

TEST(Signature, SignsAndVerifiesInTheToolsFormats) {
  Signature::PublicKey publicKey, otherPublic;
  Signature::SecretKey secretKey, otherSecret;
  Signature::newPair(publicKey, secretKey);
  Signature::newPair(otherPublic, otherSecret);
  const auto readPublic = Signature::readPublicKey(Signature::publicKeyText(publicKey));
  const auto readSecret = Signature::readSecretKey(Signature::secretKeyText(secretKey));
  ASSERT_TRUE(readPublic && readSecret);
  EXPECT_EQ(readPublic->key, publicKey.key);
  const std::string signature = Signature::sign("data", *readSecret, "serial:1");
  EXPECT_EQ(Signature::verify("data", signature, *readPublic), Signature::Valid);
  EXPECT_EQ(Signature::verify("date", signature, publicKey), Signature::Forged);
  EXPECT_EQ(Signature::verify("data", signature, otherPublic), Signature::UnknownKey);
  std::string comment = signature;
  comment.replace(comment.find("serial:1"), 8, "serial:9");
  EXPECT_EQ(Signature::verify("data", comment, publicKey), Signature::Forged);
  EXPECT_EQ(Signature::verify("data", "x" + signature, publicKey), Signature::Unreadable);
  EXPECT_EQ(Signature::verify("data", signature + "x\n", publicKey), Signature::Unreadable);
  std::string mixed = Signature::secretKeyText(secretKey);
  const std::string otherText = Signature::secretKeyText(otherSecret);
  mixed.replace(mixed.size() - 60, 20, otherText.substr(otherText.size() - 60, 20));
  EXPECT_FALSE(Signature::readSecretKey(mixed));
  EXPECT_FALSE(Signature::readPublicKey("untrusted comment: x\nRWQ=\n"));
  publicKey.id = {1, 2, 3, 4, 5, 6, 7, 0xab};
  EXPECT_EQ(Signature::publicKeyText(publicKey).substr(0, 56),
            "untrusted comment: minisign public key AB07060504030201\n");
}

TEST(RepoConfig, KeepsGoodLinesAndListsTheOthers) {
  char path[] = "/tmp/zet-repos-XXXXXX";
  const int file = mkstemp(path);
  const std::string text =
      "# c\nmain http://h/a file:///r # m\n\nb\nc ftp://hh\nd/e http://h\nmain https://h\n"
      "-a http://h\n.b http://h\ne http://\n";
  ASSERT_EQ(write(file, text.data(), text.size()), ssize_t(text.size()));
  close(file);
  RepoConfig config;
  EXPECT_TRUE(config.read(path));
  unlink(path);
  ASSERT_EQ(config.repos.size(), 1u);
  EXPECT_EQ(config.repos[0].urls, (std::vector<std::string>{"http://h/a", "file:///r"}));
  ASSERT_EQ(config.badLines.size(), 7u);
  EXPECT_EQ(config.badLines[0].line, 4u);
  EXPECT_FALSE(config.read(path));
}
