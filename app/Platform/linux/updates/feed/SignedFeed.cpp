#include "Platform/linux/updates/feed/SignedFeed.h"

#include "Platform/linux/updates/UpdateFailure.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <utility>

namespace ferrobank::updates {
namespace {

constexpr std::string_view kBlockStart = "<!-- sparkle-signatures:\n";
constexpr std::string_view kBlockEnd = "-->";
constexpr std::string_view kWhite = " \t\r\n";

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(kWhite);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

UpdateFailure notSigned()
{
    return {Problem::Signature, "The list of updates carries no valid signature."};
}

std::string_view takeLine(std::string_view& text)
{
    const auto end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return trimmed(line);
}

} // namespace

SignedFeed splitSignedFeed(std::string_view file)
{
    const auto start = file.rfind(kBlockStart);
    if (start == std::string_view::npos)
        throw notSigned();
    std::string_view block = file.substr(start + kBlockStart.size());
    const auto end = block.find(kBlockEnd);
    if (end == std::string_view::npos || !trimmed(block.substr(end + kBlockEnd.size())).empty())
        throw notSigned();
    block = block.substr(0, end);

    constexpr std::size_t kMostSignatures = 4;
    std::vector<std::string_view> signatures;
    std::optional<std::string_view> length;
    while (!block.empty()) {
        const std::string_view line = takeLine(block);
        if (line.empty())
            continue;
        const auto colon = line.find(':');
        const std::string_view name = line.substr(0, colon);
        const bool isSignature = name == "edSignature" && signatures.size() < kMostSignatures;
        const bool isLength = name == "length" && !length;
        if (colon == std::string_view::npos || (!isSignature && !isLength))
            throw notSigned();
        const std::string_view value = trimmed(line.substr(colon + 1));
        if (isSignature)
            signatures.push_back(value);
        else
            length = value;
    }
    if (signatures.empty() || !length)
        throw notSigned();

    std::size_t announced = 0;
    const char* const last = length->data() + length->size();
    // NOLINTNEXTLINE(bugprone-suspicious-stringview-data-usage): its end is the other argument
    const auto [parsedTo, error] = std::from_chars(length->data(), last, announced);
    if (error != std::errc() || parsedTo != last || announced != start)
        throw notSigned();
    return {file.substr(0, start), std::move(signatures)};
}

std::string_view verifiedFeedContent(std::string_view file, const TrustedKeys& keys)
{
    const SignedFeed feed = splitSignedFeed(file);
    const auto isGood = [&](std::string_view signature) {
        return keys.haveSigned(std::as_bytes(std::span(feed.content)), signature);
    };
    if (std::ranges::none_of(feed.signatures, isGood))
        throw notSigned();
    return feed.content;
}

} // namespace ferrobank::updates
