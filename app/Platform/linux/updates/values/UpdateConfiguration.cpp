#include "Platform/linux/updates/values/UpdateConfiguration.h"

#include <algorithm>

namespace ferrobank::updates {
namespace {

constexpr std::chrono::seconds kShortestInterval{3600};
constexpr std::uint64_t kLongestInterval = 365ULL * 86'400; ///< seconds

QString text(const PropertyList& list, const char* key)
{
    return QString::fromStdString(list.text(key).value_or(std::string()));
}

} // namespace

UpdateConfiguration readConfiguration(const PropertyList& list)
{
    UpdateConfiguration configuration;
    configuration.product = text(list, "CFBundleIdentifier");
    configuration.version = text(list, "CFBundleVersion");
    configuration.feed = QUrl(text(list, "SUFeedURL"), QUrl::StrictMode);
    configuration.keys = list.texts("SUPublicEDKeys").value_or(std::vector<std::string>());
    if (const auto key = list.text("SUPublicEDKey"))
        configuration.keys.insert(configuration.keys.begin(), *key);
    std::erase(configuration.keys, std::string());
    configuration.automaticChecks = list.flag("SUEnableAutomaticChecks");
    configuration.automaticDownload = list.flag("SUAutomaticallyUpdate").value_or(false);
    configuration.allowsAutomaticDownload = list.flag("SUAllowsAutomaticUpdates").value_or(true);
    for (const std::string& channel : list.texts("FBUpdateChannels").value_or(std::vector<std::string>()))
        configuration.channels.append(QString::fromStdString(channel));
    if (const auto asked = list.number("SUScheduledCheckInterval")) {
        const auto seconds = static_cast<std::int64_t>(std::min(*asked, kLongestInterval));
        configuration.interval = seconds == 0 ? std::chrono::seconds(0)
                                              : std::max(std::chrono::seconds(seconds), kShortestInterval);
    }
    return configuration;
}

} // namespace ferrobank::updates
