#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace ferrobank::updates {

/// An offer that was downloaded or installed in vain: refused by what it turned out to be, not stopped on the
/// way. Plain value.
struct FailedOffer {
    QString version;
    QString signature; ///< of the archive: another archive of the same version is another offer
    int attempts = 0;
    QDateTime last;
    QString sentence; ///< why, for the user

    friend bool operator==(const FailedOffer&, const FailedOffer&) = default;
};

/// What the updater remembers between runs. Plain value.
struct UpdateState {
    int launches = 0;
    QDateTime lastCheck;                   ///< start or end of the last session; invalid for never
    QDateTime lastGenuine;                 ///< when a fresh, genuine feed was last seen
    int failures = 0;                      ///< sessions that stopped on the way, in a row
    QDateTime silentSince;                 ///< the first session that came to nothing since one that did not
    int silentSessions = 0;                ///< how many did since then
    std::optional<bool> automaticChecks;   ///< the user's answer
    std::optional<bool> automaticDownload; ///< the user's choice
    QString skippedVersion;
    QString skippedMajorVersion;
    QString skippedMajorRelease;
    std::uint32_t group = 0; ///< random; decides when a phased release reaches this copy; never sent
    QString highestVersionSeen;
    QString newestDateSeen; ///< ISO 8601
    QString validUntilSeen; ///< ISO 8601
    QString announced;      ///< version of the last notification
    QString toldTakenBack;  ///< version and number of the failure that the user was told of last
    QString installing;     ///< version whose installation was begun when the program ended
    QString installingSignature;
    QList<FailedOffer> failedOffers; ///< the newest first, at most kMostFailedOffers

    static constexpr qsizetype kMostFailedOffers = 8;

    friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

/// The state as JSON text and back. What cannot be read keeps its default. Pure.
[[nodiscard]] QByteArray stateText(const UpdateState& state);
[[nodiscard]] UpdateState readState(const QByteArray& text);

/// Where the state is kept between runs. Main thread.
class UpdateStateStore {
public:
    virtual ~UpdateStateStore() = default;

    /// What was saved last, or the state of a first run.
    [[nodiscard]] virtual UpdateState load() const = 0;

    /// The result tells whether it will be there after a restart.
    virtual bool save(const UpdateState& state) = 0;
};

/// The file it lies in: mode 0600, replaced in one step. A missing file reads as a first run.
class UpdateStateFile final : public UpdateStateStore {
public:
    explicit UpdateStateFile(std::filesystem::path file);

    /// $XDG_STATE_HOME/org.ferrobank.Ferrobank/updates.json
    [[nodiscard]] static std::filesystem::path usualPlace();

    [[nodiscard]] UpdateState load() const override;
    bool save(const UpdateState& state) override;

private:
    std::filesystem::path _file;
};

} // namespace ferrobank::updates
