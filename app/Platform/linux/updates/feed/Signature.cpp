#include "Platform/linux/updates/feed/Signature.h"

#include "Platform/linux/updates/UpdateFailure.h"

#include <sodium.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace ferrobank::updates {
namespace {

template <std::size_t Size>
std::optional<std::array<unsigned char, Size>> decodeExactly(std::string_view base64)
{
    constexpr std::string_view kWhite = " \t\r\n";
    const auto first = base64.find_first_not_of(kWhite);
    if (first == std::string_view::npos)
        return std::nullopt;
    base64 = base64.substr(first, base64.find_last_not_of(kWhite) - first + 1);

    std::array<unsigned char, Size> bytes{};
    std::size_t length = 0;
    const char* end = nullptr;
    const int status = sodium_base642bin(bytes.data(), bytes.size(), base64.data(), base64.size(), nullptr,
                                         &length, &end, sodium_base64_VARIANT_ORIGINAL);
    if (status != 0 || length != Size || end != base64.data() + base64.size())
        return std::nullopt;
    return bytes;
}

} // namespace

std::optional<PublicKey> decodePublicKey(std::string_view base64)
{
    return decodeExactly<std::tuple_size_v<PublicKey>>(base64);
}

std::optional<SignatureBytes> decodeSignature(std::string_view base64)
{
    return decodeExactly<std::tuple_size_v<SignatureBytes>>(base64);
}

TrustedKeys::TrustedKeys(const std::vector<std::string>& base64Keys)
{
    for (const std::string& text : base64Keys) {
        const auto key = decodePublicKey(text);
        if (!key)
            throw UpdateFailure(Problem::Off, "This copy carries a damaged key for checking updates.");
        _keys.push_back(*key);
    }
}

std::size_t TrustedKeys::distinct() const
{
    return std::set<PublicKey>(_keys.begin(), _keys.end()).size();
}

bool TrustedKeys::haveSigned(std::span<const std::byte> bytes, std::string_view base64Signatures) const
{
    constexpr std::size_t kMostSignatures = 4; // each costs a pass over all the bytes for each key
    std::vector<SignatureBytes> signatures;
    std::istringstream words{std::string(base64Signatures)};
    for (std::string word; words >> word;) {
        const auto signature = decodeSignature(word);
        if (!signature || signatures.size() == kMostSignatures)
            return false;
        signatures.push_back(*signature);
    }
    if (sodium_init() < 0)
        return false;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    return std::ranges::any_of(signatures, [&](const SignatureBytes& signature) {
        return std::ranges::any_of(_keys, [&](const PublicKey& key) {
            return crypto_sign_verify_detached(signature.data(), data, bytes.size(), key.data()) == 0;
        });
    });
}

} // namespace ferrobank::updates
