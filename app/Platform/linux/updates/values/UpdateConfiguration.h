#pragma once

#include "Platform/linux/PropertyList.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::updates {

/// What the build decided about updates, from the bundle's property list. Plain value.
///
// clang-format off
/// | key                             | meaning                                         |
/// |---------------------------------|-------------------------------------------------|
/// | CFBundleIdentifier              | the product                                     |
/// | CFBundleVersion                 | the installed version                           |
/// | SUFeedURL                       | where the feed is; https                        |
/// | SUPublicEDKey, SUPublicEDKeys   | one trusted key, and a list of further ones     |
/// | SUEnableAutomaticChecks         | decided here, or absent: the user is asked      |
/// | SUAutomaticallyUpdate           | download and install without a question         |
/// | SUAllowsAutomaticUpdates        | false forbids that altogether                   |
/// | SUScheduledCheckInterval        | seconds; at least an hour, 0 for never          |
/// | FBUpdateChannels                | channels beside the default one                 |
// clang-format on
struct UpdateConfiguration {
    QString product;
    QString version;
    QUrl feed;
    std::vector<std::string> keys;
    std::optional<bool> automaticChecks;
    bool automaticDownload = false;
    bool allowsAutomaticDownload = true;
    std::chrono::seconds interval{86'400};
    QStringList channels;

    /// Both are needed, and a host to ask; without them the build cannot be updated by itself.
    [[nodiscard]] bool isOn() const
    {
        return feed.scheme() == QLatin1String("https") && !feed.host().isEmpty() && !keys.empty();
    }
};

/// What is missing or of the wrong kind keeps its default. Pure.
[[nodiscard]] UpdateConfiguration readConfiguration(const PropertyList& list);

} // namespace ferrobank::updates
