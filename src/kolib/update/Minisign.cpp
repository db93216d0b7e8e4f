#include "kolib/update/Minisign.h"

#include <sodium.h>

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <vector>

namespace corvane::Minisign {

namespace {

constexpr std::string_view UntrustedStart = "untrusted comment:";
constexpr std::string_view TrustedStart = "trusted comment: ";
constexpr std::string_view Legacy = "Ed";    // of the file itself; also that of a key
constexpr std::string_view Prehashed = "ED"; // of its hash
constexpr std::size_t HashLength = 64;

using Bytes = std::vector<std::uint8_t>;

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// Exactly so many bytes out of base64, or nothing.
std::optional<Bytes> decode(std::string_view text, std::size_t length) {
    Bytes bytes(length);
    std::size_t decoded = 0;
    if (sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &decoded,
                          nullptr, sodium_base64_VARIANT_ORIGINAL) != 0 ||
        decoded != length)
        return std::nullopt;
    return bytes;
}

template<std::size_t N>
Bytes::const_iterator copyTo(std::array<std::uint8_t, N>& target, Bytes::const_iterator from) {
    std::copy_n(from, N, target.begin());
    return from + static_cast<std::ptrdiff_t>(N);
}

bool starts(const Bytes& bytes, std::string_view algorithm) {
    return bytes[0] == static_cast<std::uint8_t>(algorithm[0]) &&
           bytes[1] == static_cast<std::uint8_t>(algorithm[1]);
}

bool isSigned(const PublicKey& key, const std::array<std::uint8_t, 64>& signature,
              const unsigned char* bytes, std::size_t length) {
    return crypto_sign_verify_detached(signature.data(), bytes, length, key.key.data()) == 0;
}

/// Whether the signature is this key's, and its comment too.
bool isWhole(const PublicKey& key, const Signature& signature) {
    Bytes covered(signature.signature.begin(), signature.signature.end());
    covered.insert(covered.end(), signature.trustedComment.begin(), signature.trustedComment.end());
    return signature.keyId == key.id &&
           isSigned(key, signature.globalSignature, covered.data(), covered.size());
}

const unsigned char* unsignedBytes(std::string_view bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

/// Hands over all of an open file piece by piece. False if it can't be read to its end.
template<class Take>
bool eachPiece(int descriptor, Take take) {
    std::vector<char> piece(1U << 16U);
    for (off_t at = 0;;) {
        const ssize_t count = ::pread(descriptor, piece.data(), piece.size(), at);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count == 0;
        take(std::string_view(piece.data(), static_cast<std::size_t>(count)));
        at += count;
    }
}

} // namespace

std::optional<PublicKey> readKey(std::string_view text) {
    std::string_view line = takeLine(text);
    if (line.starts_with(UntrustedStart))
        line = takeLine(text);
    PublicKey key;
    const auto bytes = decode(line, 2 + key.id.size() + key.key.size());
    if (!bytes || !starts(*bytes, Legacy) || sodium_init() < 0)
        return std::nullopt;
    copyTo(key.key, copyTo(key.id, bytes->begin() + 2));
    return key;
}

std::optional<Signature> readSignature(std::string_view text) {
    if (!takeLine(text).starts_with(UntrustedStart))
        return std::nullopt;
    Signature signature;
    const auto bytes =
        decode(takeLine(text), 2 + signature.keyId.size() + signature.signature.size());
    const std::string_view comment = takeLine(text);
    const auto global = decode(takeLine(text), signature.globalSignature.size());
    if (!bytes || !global || !comment.starts_with(TrustedStart) ||
        (!starts(*bytes, Legacy) && !starts(*bytes, Prehashed)))
        return std::nullopt;
    signature.prehashed = starts(*bytes, Prehashed);
    copyTo(signature.signature, copyTo(signature.keyId, bytes->begin() + 2));
    copyTo(signature.globalSignature, global->begin());
    signature.trustedComment = comment.substr(TrustedStart.size());
    return signature;
}

bool verify(const PublicKey& key, const Signature& signature, std::string_view bytes) {
    if (!isWhole(key, signature))
        return false;
    if (!signature.prehashed)
        return isSigned(key, signature.signature, unsignedBytes(bytes), bytes.size());
    std::array<std::uint8_t, HashLength> hash{};
    crypto_generichash(hash.data(), hash.size(), unsignedBytes(bytes), bytes.size(), nullptr, 0);
    return isSigned(key, signature.signature, hash.data(), hash.size());
}

bool verifyFile(const PublicKey& key, const Signature& signature, int descriptor) {
    if (!signature.prehashed) {
        std::string all;
        return eachPiece(descriptor, [&all](std::string_view piece) { all += piece; }) &&
               verify(key, signature, all);
    }
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, HashLength);
    std::array<std::uint8_t, HashLength> hash{};
    const bool read = eachPiece(descriptor, [&state](std::string_view piece) {
        crypto_generichash_update(&state, unsignedBytes(piece), piece.size());
    });
    crypto_generichash_final(&state, hash.data(), hash.size());
    return read && isWhole(key, signature) &&
           isSigned(key, signature.signature, hash.data(), hash.size());
}

std::string sha256Of(int descriptor) {
    crypto_hash_sha256_state state;
    crypto_hash_sha256_init(&state);
    std::array<std::uint8_t, crypto_hash_sha256_BYTES> hash{};
    const bool read = eachPiece(descriptor, [&state](std::string_view piece) {
        crypto_hash_sha256_update(&state, unsignedBytes(piece), piece.size());
    });
    crypto_hash_sha256_final(&state, hash.data());
    std::string digits(2 * hash.size() + 1, '\0');
    sodium_bin2hex(digits.data(), digits.size(), hash.data(), hash.size());
    digits.pop_back();
    return read ? digits : std::string();
}

} // namespace corvane::Minisign
