#include "Platform/linux/updates/session/UpdateState.h"

#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/install/Files.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

QJsonValue answer(const std::optional<bool>& value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

std::optional<bool> readAnswer(const QJsonValue& value)
{
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

QDateTime readDate(const QJsonValue& value)
{
    return QDateTime::fromString(value.toString(), Qt::ISODate);
}

QJsonArray failedOffersJson(const QList<FailedOffer>& offers)
{
    QJsonArray array;
    for (const FailedOffer& offer : offers)
        array.append(QJsonObject{{u"version"_s, offer.version},
                                 {u"signature"_s, offer.signature},
                                 {u"attempts"_s, offer.attempts},
                                 {u"lastTime"_s, offer.last.toString(Qt::ISODate)},
                                 {u"sentence"_s, offer.sentence}});
    return array;
}

QList<FailedOffer> readFailedOffers(const QJsonArray& array)
{
    QList<FailedOffer> offers;
    for (const QJsonValue& value : array) {
        const QJsonObject json = value.toObject();
        const FailedOffer offer{json[u"version"_s].toString(), json[u"signature"_s].toString(),
                                std::max(json[u"attempts"_s].toInt(), 0), readDate(json[u"lastTime"_s]),
                                json[u"sentence"_s].toString()};
        if (!offer.version.isEmpty() && offers.size() < UpdateState::kMostFailedOffers)
            offers.append(offer);
    }
    return offers;
}

} // namespace

QByteArray stateText(const UpdateState& state)
{
    const QJsonObject json{{u"launches"_s, state.launches},
                           {u"lastCheckTime"_s, state.lastCheck.toString(Qt::ISODate)},
                           {u"lastGenuineTime"_s, state.lastGenuine.toString(Qt::ISODate)},
                           {u"failures"_s, state.failures},
                           {u"automaticChecks"_s, answer(state.automaticChecks)},
                           {u"automaticDownload"_s, answer(state.automaticDownload)},
                           {u"skippedVersion"_s, state.skippedVersion},
                           {u"skippedMajorVersion"_s, state.skippedMajorVersion},
                           {u"skippedMajorRelease"_s, state.skippedMajorRelease},
                           {u"groupId"_s, qint64{state.group}},
                           {u"highestVersionSeen"_s, state.highestVersionSeen},
                           {u"newestDateSeen"_s, state.newestDateSeen},
                           {u"announced"_s, state.announced},
                           {u"silentSince"_s, state.silentSince.toString(Qt::ISODate)},
                           {u"silentSessions"_s, state.silentSessions},
                           {u"validUntilSeen"_s, state.validUntilSeen},
                           {u"toldTakenBack"_s, state.toldTakenBack},
                           {u"installing"_s, state.installing},
                           {u"installingSignature"_s, state.installingSignature},
                           {u"failedOffers"_s, failedOffersJson(state.failedOffers)}};
    return QJsonDocument(json).toJson();
}

UpdateState readState(const QByteArray& text)
{
    const QJsonObject json = QJsonDocument::fromJson(text).object();
    UpdateState state;
    state.launches = json[u"launches"_s].toInt();
    state.lastCheck = readDate(json[u"lastCheckTime"_s]);
    state.lastGenuine = readDate(json[u"lastGenuineTime"_s]);
    state.failures = std::max(json[u"failures"_s].toInt(), 0);
    state.automaticChecks = readAnswer(json[u"automaticChecks"_s]);
    state.automaticDownload = readAnswer(json[u"automaticDownload"_s]);
    state.skippedVersion = json[u"skippedVersion"_s].toString();
    state.skippedMajorVersion = json[u"skippedMajorVersion"_s].toString();
    state.skippedMajorRelease = json[u"skippedMajorRelease"_s].toString();
    state.group = static_cast<std::uint32_t>(json[u"groupId"_s].toInteger());
    state.highestVersionSeen = json[u"highestVersionSeen"_s].toString();
    state.newestDateSeen = json[u"newestDateSeen"_s].toString();
    state.announced = json[u"announced"_s].toString();
    state.silentSince = readDate(json[u"silentSince"_s]);
    state.silentSessions = std::max(json[u"silentSessions"_s].toInt(), 0);
    state.validUntilSeen = json[u"validUntilSeen"_s].toString();
    state.toldTakenBack = json[u"toldTakenBack"_s].toString();
    state.installing = json[u"installing"_s].toString();
    state.installingSignature = json[u"installingSignature"_s].toString();
    state.failedOffers = readFailedOffers(json[u"failedOffers"_s].toArray());
    return state;
}

UpdateStateFile::UpdateStateFile(std::filesystem::path file) : _file(std::move(file)) {}

std::filesystem::path UpdateStateFile::usualPlace()
{
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    // An empty or relative value counts as none, as the base directory rules say.
    const std::filesystem::path folder = state && state[0] == '/'
                                             ? std::filesystem::path(state)
                                             : std::filesystem::path(home ? home : "/") / ".local/state";
    return folder / "org.ferrobank.Ferrobank/updates.json";
}

UpdateState UpdateStateFile::load() const
{
    const auto text = readSmallFile(_file, kLongestRecord);
    return text ? readState(QByteArray::fromStdString(*text)) : UpdateState();
}

bool UpdateStateFile::save(const UpdateState& state)
{
    std::error_code error;
    std::filesystem::create_directories(_file.parent_path(), error);
    if (error)
        return false;
    const QByteArray text = stateText(state);
    return writeFileAtomically(_file, {text.constData(), static_cast<std::size_t>(text.size())}) == 0;
}

} // namespace ferrobank::updates
