#pragma once

#include "Platform/linux/updates/feed/Signature.h"
#include "Platform/linux/updates/install/InstallPlace.h"
#include "Platform/linux/updates/values/UpdateConfiguration.h"
#include "Platform/linux/updates/worker/Download.h"

#include <QtCore/QJsonObject>

#include <functional>

namespace ferrobank::updates {

/// What every command of the worker works with: one request, and the bundle that it is about. The keys are
/// those of the installed bundle, never of the new one.
struct WorkerContext {
    QJsonObject request;
    InstallPlace place;
    PlaceVerdict verdict;
    UpdateConfiguration configuration;
    NetworkRules rules;
    std::function<void(const QJsonObject&)> tell; ///< one event to the application

    /// Reads the bundle named in the request. Throws UpdateFailure (Place) when it is no bundle.
    [[nodiscard]] static WorkerContext of(const QJsonObject& request,
                                          std::function<void(const QJsonObject&)> tell);

    /// The keys that are trusted. Throws UpdateFailure (Off) when this build has no feed or no usable key.
    [[nodiscard]] TrustedKeys keys() const;
};

/// This machine in the words of feeds and manifests: "linux-x86_64".
[[nodiscard]] QString systemName();

/// The C library's version, which is what decides whether a program starts; feeds give their system limits in
/// it.
[[nodiscard]] std::string glibcVersion();

/// The configuration of any bundle.
[[nodiscard]] UpdateConfiguration configurationOf(const std::filesystem::path& bundle);

} // namespace ferrobank::updates
