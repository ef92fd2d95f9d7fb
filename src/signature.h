// Keys and signatures in the two-line text formats of the minisign tool, made and checked with
// libsodium: Ed25519 keys, and "ED" signatures over the BLAKE2b-512 of a file, with a trusted
// comment signed along. Also the SHA-256 of a file, which the repository index names.
#ifndef ZET_SIGNATURE_H
#define ZET_SIGNATURE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>

// A key pair's identity and halves, and the reading, writing, signing and verifying with them.
class Signature {
 public:
  using KeyId = std::array<uint8_t, 8>;
  struct PublicKey {
    KeyId id{};
    std::array<uint8_t, 32> key{};
  };
  struct SecretKey {
    KeyId id{};
    std::array<uint8_t, 64> key{};
  };
  enum Verdict { Valid, Unreadable, UnknownKey, Forged };

  // A fresh pair with a random identity.
  static void newPair(PublicKey& publicKey, SecretKey& secretKey);
  // The files' texts: an untrusted comment line, then the base64 line.
  static std::string publicKeyText(const PublicKey& key);
  // Unencrypted, as the tool writes a key that has no password.
  static std::string secretKeyText(const SecretKey& key);
  static std::optional<PublicKey> readPublicKey(const std::string& text);
  // Only an unencrypted key whose public half belongs to its secret half.
  static std::optional<SecretKey> readSecretKey(const std::string& text);

  // The four-line signature file of `data`, with `trustedComment` on its third line.
  static std::string sign(const std::string& data, const SecretKey& key,
                          const std::string& trustedComment);
  // Whether `signatureText` is `key`'s signature of `data`, its trusted comment included;
  // both the prehashed "ED" and the plain "Ed" kind are accepted.
  static Verdict verify(const std::string& data, const std::string& signatureText,
                        const PublicKey& key);

  // The SHA-256 of what the open file holds, read from its start, in lower-case hex; empty
  // when it cannot be read.
  static std::string sha256OfFile(int file);
  static std::string hex(const uint8_t* bytes, size_t size);
};

#endif
