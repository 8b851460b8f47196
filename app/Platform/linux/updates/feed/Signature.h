#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank::updates {

using PublicKey = std::array<unsigned char, 32>;
using SignatureBytes = std::array<unsigned char, 64>;

/// Base64 with padding, white space allowed around it and nowhere else; none unless it is exactly of the
/// right size. Pure.
[[nodiscard]] std::optional<PublicKey> decodePublicKey(std::string_view base64);
[[nodiscard]] std::optional<SignatureBytes> decodeSignature(std::string_view base64);

/// The keys this copy trusts: the current one, and the spare that is kept offline. Plain value.
class TrustedKeys {
public:
    TrustedKeys() = default;

    /// Throws UpdateFailure (Off) when a key is malformed: a typing error must not silently leave fewer keys.
    explicit TrustedKeys(const std::vector<std::string>& base64Keys);

    [[nodiscard]] bool empty() const { return _keys.empty(); }

    /// How many different keys these are.
    [[nodiscard]] std::size_t distinct() const;

    /// Ed25519 over all the bytes. True when any trusted key made the signature, or one of several with white
    /// space between them: while one key replaces another, both sign. False for empty or undecodable ones and
    /// for more than four.
    [[nodiscard]] bool haveSigned(std::span<const std::byte> bytes, std::string_view base64Signatures) const;

private:
    std::vector<PublicKey> _keys;
};

} // namespace ferrobank::updates
