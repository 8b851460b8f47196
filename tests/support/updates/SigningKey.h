#pragma once

#include <QtCore/QByteArray>

#include <array>
#include <string>

namespace ferrobank {

/// A throw-away ed25519 key pair, made anew for each test run.
class SigningKey {
public:
    SigningKey();

    [[nodiscard]] std::string publicBase64() const;
    [[nodiscard]] std::string sign(const QByteArray& bytes) const; ///< base64

    /// The seed as release tools keep it in a file, base64.
    [[nodiscard]] QByteArray seedBase64() const;

private:
    std::array<unsigned char, 32> _public{};
    std::array<unsigned char, 64> _secret{};
};

/// A feed file: the content, and the block that signs it.
[[nodiscard]] QByteArray signedFeed(const QByteArray& content, const SigningKey& key);

} // namespace ferrobank
