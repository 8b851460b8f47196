#pragma once

#include "Platform/linux/updates/feed/Signature.h"

#include <string>
#include <string_view>
#include <vector>

namespace ferrobank::updates {

/// A feed file taken apart: what was signed, and the block that says by what. Views into the file's bytes.
struct SignedFeed {
    std::string_view content;
    std::vector<std::string_view> signatures; ///< base64, not yet checked; at least one
};

/// Takes a feed file apart. The block is the file's last comment that begins with "<!-- sparkle-signatures:"
/// and a line feed; everything before it is the content. There may be a line for each of several signatures,
/// one of which has to be good. Throws UpdateFailure (Signature) when there is no block, a line of it is
/// missing or unknown, there are more than four signatures or two lengths, its length is not the content's,
/// or anything but white space follows it.
[[nodiscard]] SignedFeed splitSignedFeed(std::string_view file);

/// The content of a feed file that one of the keys has signed. Throws UpdateFailure (Signature). Nothing may
/// be read from a feed but what this returns.
[[nodiscard]] std::string_view verifiedFeedContent(std::string_view file, const TrustedKeys& keys);

} // namespace ferrobank::updates
