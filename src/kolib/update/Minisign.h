#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// Signatures in the format of minisign: Ed25519 over a file, or over its BLAKE2b hash.
namespace Minisign {

struct PublicKey {
    std::array<std::uint8_t, 8> id{};
    std::array<std::uint8_t, 32> key{};
};

struct Signature {
    bool prehashed = false; ///< Of the hash, and not of the file itself.
    std::array<std::uint8_t, 8> keyId{};
    std::array<std::uint8_t, 64> signature{};
    std::string trustedComment;
    std::array<std::uint8_t, 64> globalSignature{}; ///< Of signature and comment.
};

/// Reads the one line of base64 that a key is, or the whole file of a key.
[[nodiscard]] std::optional<PublicKey> readKey(std::string_view text);
/// Reads the four lines of a ".minisig" file.
[[nodiscard]] std::optional<Signature> readSignature(std::string_view text);

/// Whether these bytes carry this key's signature.
[[nodiscard]] bool verify(const PublicKey& key, const Signature& signature, std::string_view bytes);
/// The same for an open file from its beginning, whatever its size. False also for a file that
/// can't be read.
[[nodiscard]] bool verifyFile(const PublicKey& key, const Signature& signature, int descriptor);
/// The SHA-256 of an open file from its beginning, as 64 hexadecimal digits in lower case. Empty
/// for a file that can't be read.
[[nodiscard]] std::string sha256Of(int descriptor);

} // namespace Minisign

} // namespace corvane
