#include "support/updates/SigningKey.h"

#include <sodium.h>

namespace ferrobank {
namespace {

std::string base64(const unsigned char* bytes, std::size_t size)
{
    std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(), bytes, size, sodium_base64_VARIANT_ORIGINAL);
    text.resize(text.find('\0'));
    return text;
}

} // namespace

SigningKey::SigningKey()
{
    if (sodium_init() < 0 || crypto_sign_keypair(_public.data(), _secret.data()) != 0)
        qFatal("No key can be made.");
}

std::string SigningKey::publicBase64() const
{
    return base64(_public.data(), _public.size());
}

std::string SigningKey::sign(const QByteArray& bytes) const
{
    std::array<unsigned char, 64> signature{};
    crypto_sign_detached(signature.data(), nullptr, reinterpret_cast<const unsigned char*>(bytes.constData()),
                         static_cast<unsigned long long>(bytes.size()), _secret.data());
    return base64(signature.data(), signature.size());
}

QByteArray SigningKey::seedBase64() const
{
    return QByteArray::fromStdString(base64(_secret.data(), 32));
}

QByteArray signedFeed(const QByteArray& content, const SigningKey& key)
{
    return content +
           "<!-- sparkle-signatures:\nedSignature: " + QByteArray::fromStdString(key.sign(content)) +
           "\nlength: " + QByteArray::number(content.size()) + "\n-->\n";
}

} // namespace ferrobank
