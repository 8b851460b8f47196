#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/Appcast.h"
#include "Platform/linux/updates/feed/Freshness.h"
#include "Platform/linux/updates/feed/ItemChoice.h"
#include "Platform/linux/updates/feed/ReleaseNotes.h"
#include "Platform/linux/updates/feed/SignedFeed.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/values/Offer.h"
#include "Platform/linux/updates/worker/Commands.h"
#include "Platform/linux/updates/worker/Confinement.h"
#include "Platform/linux/updates/worker/Metered.h"
#include "Platform/linux/updates/worker/PlaceJson.h"

#include <QtCore/QLocale>
#include <QtCore/QSysInfo>

#include <algorithm>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr std::int64_t kMostDocumentBytes = std::int64_t{1024} * 1024;

ChoiceFacts choiceFacts(const WorkerContext& context, const std::vector<Ban>& bans)
{
    const QJsonObject& request = context.request;
    const QJsonObject skips = request[u"skips"_s].toObject();
    ChoiceFacts facts;
    facts.installed = context.configuration.version.toStdString();
    facts.systemVersion = glibcVersion();
    facts.qtVersion = qVersion();
    facts.systemNames = QStringList{systemName(), u"linux"_s};
    facts.processors = QStringList{QSysInfo::buildCpuArchitecture()};
    facts.channels = context.configuration.channels;
    facts.rolloutGroup = static_cast<unsigned>(request[u"group"_s].toInteger()) % 7;
    facts.now = QDateTime::currentDateTimeUtc();
    facts.kind = request[u"byUser"_s].toBool() ? CheckKind::ByUser : CheckKind::Scheduled;
    facts.skips.version = skips[u"version"_s].toString().toStdString();
    facts.skips.majorVersion = skips[u"majorVersion"_s].toString().toStdString();
    facts.skips.majorVersionRelease = skips[u"majorVersionRelease"_s].toString().toStdString();
    for (const Ban& ban : bans) {
        if (isInForce(ban, facts.now.toSecsSinceEpoch()))
            facts.bannedVersions.push_back(ban.version);
    }
    return facts;
}

Freshness seenBefore(const QJsonObject& request)
{
    Freshness seen;
    seen.highest = request[u"highestVersionSeen"_s].toString().toStdString();
    seen.newest = QDateTime::fromString(request[u"newestDateSeen"_s].toString(), Qt::ISODate);
    seen.validUntil = QDateTime::fromString(request[u"validUntilSeen"_s].toString(), Qt::ISODate);
    return seen;
}

const NotesLink* notesLinkFor(const AppcastItem& item)
{
    const QString language = QLocale::system().name().section(u'_', 0, 0);
    for (const QString& wanted : {language, u"en"_s}) {
        const auto found = std::ranges::find(item.notesLinks, wanted, &NotesLink::language);
        if (found != item.notesLinks.end())
            return &*found;
    }
    return nullptr;
}

/// Notes beside the feed are shown only with a signature of their own; without notes an update is still an
/// update.
QString notesOf(const AppcastItem& item, const WorkerContext& context, const TrustedKeys& keys)
{
    if (!item.notes.isEmpty())
        return notesAsText(item.notes, item.notesFormat);
    const NotesLink* link = notesLinkFor(item);
    if (!link)
        return {};
    try {
        const Document document = fetchDocument(link->url, kMostDocumentBytes, context.rules);
        const std::span<const char> bytes(document.bytes.constData(),
                                          static_cast<std::size_t>(document.bytes.size()));
        const bool isGenuine =
            document.bytes.size() == link->length && keys.haveSigned(std::as_bytes(bytes), link->signature);
        const bool isMarkdown = link->url.path().endsWith(".md"_L1);
        const bool isText = link->url.path().endsWith(".txt"_L1);
        const NotesFormat format = isMarkdown ? NotesFormat::Markdown
                                   : isText   ? NotesFormat::PlainText
                                              : NotesFormat::Html;
        return isGenuine ? notesAsText(QString::fromUtf8(document.bytes), format) : QString();
    } catch (const UpdateFailure&) {
        return {};
    }
}

Offer offerOf(const Choice& choice, const QString& notes)
{
    const AppcastItem& item = *choice.item;
    Offer offer;
    offer.version = QString::fromStdString(item.version);
    offer.displayVersion = item.displayVersion;
    offer.channel = item.channel;
    offer.notes = notes;
    offer.link = item.link;
    offer.archive = item.archive;
    offer.length = item.length;
    offer.unpackedLength = item.unpackedLength;
    offer.signature = QString::fromStdString(item.signature);
    offer.critical = choice.critical;
    offer.major = choice.major;
    offer.informational = choice.informational;
    offer.phased = item.phasedRolloutInterval.count() > 0;
    return offer;
}

QString reasonWord(NoUpdate reason)
{
    switch (reason) {
    case NoUpdate::OnLatest:
        return u"onLatest"_s;
    case NoUpdate::NewerThanLatest:
        return u"newerThanLatest"_s;
    case NoUpdate::SystemTooOld:
        return u"systemTooOld"_s;
    case NoUpdate::SystemTooNew:
        return u"systemTooNew"_s;
    case NoUpdate::TakenBack:
        return u"takenBack"_s;
    case NoUpdate::Unknown:
        break;
    }
    return u"unknown"_s;
}

} // namespace

void runCheck(const WorkerContext& context)
{
    const TrustedKeys keys = context.keys();
    if (!context.request[u"byUser"_s].toBool() && isConnectionMetered()) {
        context.tell(QJsonObject{{u"event"_s, u"metered"_s}});
        return;
    }
    confine({}, Programs::MayNotRun);
    const Document document = fetchDocument(context.configuration.feed, kMostDocumentBytes, context.rules);
    const std::string_view file(document.bytes.constData(), static_cast<std::size_t>(document.bytes.size()));
    const Appcast appcast = readAppcast(verifiedFeedContent(file, keys), context.configuration.feed);
    const QDateTime clock = QDateTime::currentDateTimeUtc();
    expectFresh(appcast, seenBefore(context.request), clock);
    const Freshness freshness = freshnessOf(appcast, clock);

    const std::vector<Ban> bans = bansAt(context.place);
    const Choice choice = chooseItem(appcast.items, choiceFacts(context, bans));
    QJsonObject result{{u"event"_s, u"checked"_s},
                       {u"installed"_s, context.configuration.version},
                       {u"place"_s, placeToJson(context.verdict)},
                       {u"highestVersion"_s, QString::fromStdString(freshness.highest)},
                       {u"newestDate"_s, freshness.newest.toString(Qt::ISODate)},
                       {u"validUntil"_s, freshness.validUntil.toString(Qt::ISODate)}};
    if (choice.item) {
        const QString notes = notesOf(*choice.item, context, keys);
        Offer offer = offerOf(choice, notes);
        offer.takenBack = timesBanned(bans, choice.item->version) > 0;
        result[u"offer"_s] = offerToJson(offer);
        result[u"minimumForAutomatic"_s] = QString::fromStdString(choice.item->minimumForAutomatic);
    } else {
        result[u"reason"_s] = reasonWord(choice.reason);
        if (choice.latest) {
            result[u"latest"_s] = choice.latest->displayVersion;
            result[u"latestLink"_s] = QString::fromUtf8(choice.latest->link.toEncoded());
            result[u"history"_s] = QString::fromUtf8(choice.latest->versionHistory.toEncoded());
        }
    }
    context.tell(result);
}

} // namespace ferrobank::updates
