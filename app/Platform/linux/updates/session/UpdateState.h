#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace ferrobank::updates {

/// What the updater remembers between runs. Plain value.
struct UpdateState {
    int launches = 0;
    QDateTime lastCheck;                   ///< start or end of the last session; invalid for never
    QDateTime lastGenuine;                 ///< when a fresh, genuine feed was last seen
    int failures = 0;                      ///< checks that failed in a row
    std::optional<bool> automaticChecks;   ///< the user's answer
    std::optional<bool> automaticDownload; ///< the user's choice
    QString skippedVersion;
    QString skippedMajorVersion;
    QString skippedMajorRelease;
    std::uint32_t group = 0; ///< random; decides when a phased release reaches this copy; never sent
    QString highestVersionSeen;
    QString newestDateSeen; ///< ISO 8601
    QString announced;      ///< version of the last notification

    friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

/// The state as JSON text and back. What cannot be read keeps its default. Pure.
[[nodiscard]] QByteArray stateText(const UpdateState& state);
[[nodiscard]] UpdateState readState(const QByteArray& text);

/// The file it lies in: mode 0600, replaced in one step. A missing file reads as a first run.
class UpdateStateFile {
public:
    explicit UpdateStateFile(std::filesystem::path file);

    /// $XDG_STATE_HOME/org.ferrobank.Ferrobank/updates.json
    [[nodiscard]] static std::filesystem::path usualPlace();

    [[nodiscard]] UpdateState load() const;

    /// The result tells whether it reached the disk.
    bool save(const UpdateState& state) const;

private:
    std::filesystem::path _file;
};

} // namespace ferrobank::updates
