#include "Platform/linux/updates/session/UpdateState.h"

#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/install/Files.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

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
                           {u"announced"_s, state.announced}};
    return QJsonDocument(json).toJson();
}

UpdateState readState(const QByteArray& text)
{
    const QJsonObject json = QJsonDocument::fromJson(text).object();
    UpdateState state;
    state.launches = json[u"launches"_s].toInt();
    state.lastCheck = readDate(json[u"lastCheckTime"_s]);
    state.lastGenuine = readDate(json[u"lastGenuineTime"_s]);
    state.failures = json[u"failures"_s].toInt();
    state.automaticChecks = readAnswer(json[u"automaticChecks"_s]);
    state.automaticDownload = readAnswer(json[u"automaticDownload"_s]);
    state.skippedVersion = json[u"skippedVersion"_s].toString();
    state.skippedMajorVersion = json[u"skippedMajorVersion"_s].toString();
    state.skippedMajorRelease = json[u"skippedMajorRelease"_s].toString();
    state.group = static_cast<std::uint32_t>(json[u"groupId"_s].toInteger());
    state.highestVersionSeen = json[u"highestVersionSeen"_s].toString();
    state.newestDateSeen = json[u"newestDateSeen"_s].toString();
    state.announced = json[u"announced"_s].toString();
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

bool UpdateStateFile::save(const UpdateState& state) const
{
    std::error_code error;
    std::filesystem::create_directories(_file.parent_path(), error);
    if (error)
        return false;
    const QByteArray text = stateText(state);
    return writeFileAtomically(_file, {text.constData(), static_cast<std::size_t>(text.size())}) == 0;
}

} // namespace ferrobank::updates
