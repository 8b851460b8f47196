#pragma once

#include "Platform/linux/updates/feed/AppcastItem.h"

#include <string_view>

namespace ferrobank::updates {

/// Reads a feed: RSS 2.0 with the elements of the namespace that Sparkle's feeds use, plus two of our own for
/// the expiry and what an archive needs. `content` is the signed part of the file, `address` where this copy
/// looks for it, which is what relative addresses are resolved against: where a server has led on to is not
/// signed.
///
/// One item that cannot be understood makes the whole feed invalid: an attacker who may damage one item must
/// not choose which of the others is offered. So does a document type, which could define entities. Throws
/// UpdateFailure (Feed).
[[nodiscard]] Appcast readAppcast(std::string_view content, const QUrl& address);

} // namespace ferrobank::updates
