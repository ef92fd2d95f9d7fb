#include "signature.h"

#include <sodium.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "textutil.h"

namespace {

constexpr const char* UNTRUSTED = "untrusted comment: ";
constexpr const char* TRUSTED = "trusted comment: ";
constexpr size_t PUBLIC_SIZE = 2 + 8 + 32;
// The algorithm, the kind of key derivation (none) and of checksum, then the derivation's salt
// and limits, unused without a password, the identity, the key and its checksum, which the tool
// leaves zero in a key without a password.
constexpr size_t SECRET_SIZE = 2 + 2 + 2 + 32 + 8 + 8 + 8 + 64 + 32;
constexpr size_t SECRET_ID_AT = 54;
constexpr size_t SIGNATURE_SIZE = 2 + 8 + 64;

// libsodium picks its implementations once, before the first use: here, at start-up, so
// that no entry point can forget it.
[[maybe_unused]] const int sodiumStarted = sodium_init();

std::string base64(const std::vector<uint8_t>& bytes) {
  std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(&text[0], text.size(), bytes.data(), bytes.size(),
                    sodium_base64_VARIANT_ORIGINAL);
  text.resize(std::strlen(text.c_str()));
  return text;
}

// Exactly `size` bytes, or nothing.
std::optional<std::vector<uint8_t>> unbase64(const std::string& text, size_t size) {
  std::vector<uint8_t> bytes(size + 1);
  size_t length = 0;
  const char* end = nullptr;
  if (sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &length,
                        &end, sodium_base64_VARIANT_ORIGINAL) != 0 ||
      end != text.data() + text.size() || length != size) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

// The lines of a key or signature file, without their line ends; `count` of them, each but
// the last untrusted comment line of the given kind, and nothing but blank lines behind them.
std::optional<std::vector<std::string>> linesOf(const std::string& text, size_t count) {
  std::vector<std::string> lines;
  for (std::string line : splitLines(text)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (lines.size() < count) {
      lines.push_back(line);
    } else if (!line.empty()) {
      return std::nullopt;
    }
  }
  if (lines.size() != count || !startsWith(lines[0], UNTRUSTED)) return std::nullopt;
  return lines;
}

std::array<uint8_t, crypto_generichash_BYTES_MAX> prehash(const std::string& data) {
  std::array<uint8_t, crypto_generichash_BYTES_MAX> hash;
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const uint8_t*>(data.data()),
                     data.size(), nullptr, 0);
  return hash;
}

std::string idText(const Signature::KeyId& id) {
  std::string text;
  for (size_t i = id.size(); i-- > 0;) text += Signature::hex(&id[i], 1);
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

}  // namespace

std::string Signature::hex(const uint8_t* bytes, size_t size) {
  std::string text(size * 2 + 1, '\0');
  sodium_bin2hex(&text[0], text.size(), bytes, size);
  text.pop_back();
  return text;
}

void Signature::newPair(PublicKey& publicKey, SecretKey& secretKey) {
  crypto_sign_keypair(publicKey.key.data(), secretKey.key.data());
  randombytes_buf(publicKey.id.data(), publicKey.id.size());
  secretKey.id = publicKey.id;
}

std::string Signature::publicKeyText(const PublicKey& key) {
  std::vector<uint8_t> bytes{'E', 'd'};
  bytes.insert(bytes.end(), key.id.begin(), key.id.end());
  bytes.insert(bytes.end(), key.key.begin(), key.key.end());
  return std::string(UNTRUSTED) + "minisign public key " + idText(key.id) + "\n" + base64(bytes) +
         "\n";
}

std::string Signature::secretKeyText(const SecretKey& key) {
  std::vector<uint8_t> bytes{'E', 'd', 0, 0, 'B', '2'};
  bytes.resize(SECRET_SIZE);
  std::memcpy(&bytes[SECRET_ID_AT], key.id.data(), key.id.size());
  std::memcpy(&bytes[SECRET_ID_AT + key.id.size()], key.key.data(), key.key.size());
  return std::string(UNTRUSTED) + "minisign encrypted secret key\n" + base64(bytes) + "\n";
}

std::optional<Signature::PublicKey> Signature::readPublicKey(const std::string& text) {
  const auto lines = linesOf(text, 2);
  if (!lines) return std::nullopt;
  const auto bytes = unbase64((*lines)[1], PUBLIC_SIZE);
  if (!bytes || std::memcmp(bytes->data(), "Ed", 2) != 0) return std::nullopt;
  PublicKey key;
  std::memcpy(key.id.data(), bytes->data() + 2, key.id.size());
  std::memcpy(key.key.data(), bytes->data() + 2 + key.id.size(), key.key.size());
  return key;
}

std::optional<Signature::SecretKey> Signature::readSecretKey(const std::string& text) {
  const auto lines = linesOf(text, 2);
  if (!lines) return std::nullopt;
  const auto bytes = unbase64((*lines)[1], SECRET_SIZE);
  if (!bytes || std::memcmp(bytes->data(), "Ed\0\0B2", 6) != 0) return std::nullopt;
  SecretKey key;
  std::memcpy(key.id.data(), &(*bytes)[SECRET_ID_AT], key.id.size());
  std::memcpy(key.key.data(), &(*bytes)[SECRET_ID_AT + key.id.size()], key.key.size());
  // The second half is the public key that the seed in the first half gives.
  std::array<uint8_t, crypto_sign_PUBLICKEYBYTES> derived;
  std::array<uint8_t, crypto_sign_SECRETKEYBYTES> again;
  if (crypto_sign_seed_keypair(derived.data(), again.data(), key.key.data()) != 0 ||
      again != key.key) {
    return std::nullopt;
  }
  return key;
}

std::string Signature::sign(const std::string& data, const SecretKey& key,
                            const std::string& trustedComment) {
  const auto hash = prehash(data);
  std::vector<uint8_t> bytes{'E', 'D'};
  bytes.insert(bytes.end(), key.id.begin(), key.id.end());
  bytes.resize(SIGNATURE_SIZE);
  crypto_sign_detached(&bytes[10], nullptr, hash.data(), hash.size(), key.key.data());
  std::vector<uint8_t> signedComment(bytes.begin() + 10, bytes.end());
  signedComment.insert(signedComment.end(), trustedComment.begin(), trustedComment.end());
  std::vector<uint8_t> global(crypto_sign_BYTES);
  crypto_sign_detached(global.data(), nullptr, signedComment.data(), signedComment.size(),
                       key.key.data());
  return std::string(UNTRUSTED) + "signature from minisign secret key\n" + base64(bytes) + "\n" +
         TRUSTED + trustedComment + "\n" + base64(global) + "\n";
}

Signature::Verdict Signature::verify(const std::string& data, const std::string& signatureText,
                                     const PublicKey& key) {
  const auto lines = linesOf(signatureText, 4);
  if (!lines || !startsWith((*lines)[2], TRUSTED)) return Unreadable;
  const auto bytes = unbase64((*lines)[1], SIGNATURE_SIZE);
  const auto global = unbase64((*lines)[3], crypto_sign_BYTES);
  if (!bytes || !global || (*bytes)[0] != 'E' || ((*bytes)[1] != 'D' && (*bytes)[1] != 'd')) {
    return Unreadable;
  }
  if (std::memcmp(bytes->data() + 2, key.id.data(), key.id.size()) != 0) return UnknownKey;
  const uint8_t* signature = bytes->data() + 10;
  const auto hash = prehash(data);
  const bool prehashed = (*bytes)[1] == 'D';
  const uint8_t* message = prehashed ? hash.data() : reinterpret_cast<const uint8_t*>(data.data());
  if (crypto_sign_verify_detached(signature, message, prehashed ? hash.size() : data.size(),
                                  key.key.data()) != 0) {
    return Forged;
  }
  std::vector<uint8_t> signedComment(signature, signature + crypto_sign_BYTES);
  const std::string comment = (*lines)[2].substr(std::strlen(TRUSTED));
  signedComment.insert(signedComment.end(), comment.begin(), comment.end());
  return crypto_sign_verify_detached(global->data(), signedComment.data(), signedComment.size(),
                                     key.key.data()) == 0
             ? Valid
             : Forged;
}

std::string Signature::sha256OfFile(int file) {
  crypto_hash_sha256_state state;
  crypto_hash_sha256_init(&state);
  std::vector<uint8_t> block(1 << 16);
  for (off_t at = 0;;) {
    const ssize_t got = pread(file, block.data(), block.size(), at);
    if (got < 0) return "";
    if (got == 0) break;
    crypto_hash_sha256_update(&state, block.data(), static_cast<size_t>(got));
    at += got;
  }
  std::array<uint8_t, crypto_hash_sha256_BYTES> digest;
  crypto_hash_sha256_final(&state, digest.data());
  return hex(digest.data(), digest.size());
}
