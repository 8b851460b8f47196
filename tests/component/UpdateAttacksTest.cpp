#include "support/TestProgram.h"
#include "support/updates/UpdateStage.h"

#include <QtCore/QDir>
#include <QtCore/QUrl>
#include <QtTest/QTest>

#include <algorithm>

using namespace ferrobank;
using namespace Qt::StringLiterals;
using Json = nlohmann::json;
using Fault = ServedFile::Fault;

namespace {

QJsonObject offerIn(const WorkerOutcome& outcome)
{
    return outcome.last()[u"offer"_s].toObject();
}

TestItem itemWith(const QString& version, const QString& url, qint64 length, const QString& signature)
{
    TestItem item;
    item.version = version;
    item.url = url;
    item.length = length;
    item.signature = signature;
    return item;
}

/// After any refusal: the installed version is whole, nothing of the new one is kept, and there are words.
bool isHarmless(const UpdateStage& stage, const WorkerOutcome& outcome, const QString& problem,
                const QStringList& mayStay = {})
{
    QStringList leftovers = stage.leftovers();
    for (const QString& name : mayStay)
        leftovers.removeAll(name);
    if (outcome.problem() != problem || !leftovers.isEmpty() || stage.installedVersion() != u"1.0.0"_s) {
        qWarning() << outcome.last() << stage.leftovers() << stage.installedVersion();
        return false;
    }
    return outcome.exitCode == 1 && !outcome.last()[u"sentence"_s].toString().isEmpty();
}

const QStringList kResumable{u"archive.part"_s, u"archive.json"_s};

} // namespace

class UpdateAttacksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void genuineUpdateIsFoundFetchedAndInstalled()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s),
                      u"<description>New &lt;b&gt;things&lt;/b&gt;</description>"_s);
        const WorkerOutcome checked = stage.check();
        QCOMPARE(checked.lastEvent(), u"checked"_s);
        QCOMPARE(offerIn(checked)[u"version"_s].toString(), u"1.0.1"_s);
        QCOMPARE(offerIn(checked)[u"notes"_s].toString(), u"New things"_s);
        const WorkerOutcome fetched = stage.fetch(offerIn(checked));
        QCOMPARE(fetched.lastEvent(), u"staged"_s);
        QVERIFY(fetched.events.contains(QJsonObject{{u"event"_s, u"verifying"_s}}));
        QCOMPARE(stage.installedVersion(), u"1.0.0"_s);
        QCOMPARE(stage.run(u"install"_s).lastEvent(), u"installed"_s);
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void requestsCarryNothingAboutTheUser()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        QCOMPARE(stage.server.requests().size(), 2);
        for (const QByteArray& request : stage.server.requests()) {
            // The whole list: whatever is new in it has to be thought about.
            QByteArrayList headers = request.trimmed().split('\n');
            for (QByteArray& header : headers) {
                header = header.trimmed();
            }
            QVERIFY2(headers.takeFirst().endsWith(" HTTP/1.1"), request.constData());
            std::sort(headers.begin(), headers.end());
            const QByteArray host = "Host: " + QUrl(stage.server.address(u"/"_s)).authority().toUtf8();
            QCOMPARE(headers, (QByteArrayList{"Accept-Encoding: identity", "Accept-Language: *",
                                              "Cache-Control: no-cache", "Connection: Keep-Alive", host,
                                              "User-Agent: Ferrobank/1.0.0"}));
        }
    }

    void archiveChangedOnTheServerIsDiscarded()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        QByteArray archive = stage.makeRelease(u"1.0.1"_s).archive();
        archive[archive.size() / 2] = static_cast<char>(archive[archive.size() / 2] ^ 1);
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, archive);
        QVERIFY(isHarmless(stage, stage.update(), u"signature"_s));
        QCOMPARE(stage.server.requestsFor("/Ferrobank_1.0.1.tar.zst"), 1);
    }

    void changedFeedIsRefused()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        QByteArray feed = signedFeed(feedOf({}), stage.key);
        stage.server.serve(u"/feed.xml"_s, feed.replace("Ferrobank", "Ferr0bank"));
        QVERIFY(isHarmless(stage, stage.check(), u"signature"_s));
        stage.server.serve(u"/feed.xml"_s, feedOf({}));
        QVERIFY(isHarmless(stage, stage.check(), u"signature"_s));
        stage.server.serve(u"/feed.xml"_s, signedFeed(feedOf({}), SigningKey()));
        QVERIFY(isHarmless(stage, stage.check(), u"signature"_s));
        stage.server.serve(u"/feed.xml"_s, signedFeed(feedOf({}), stage.key) + "<item/>");
        QVERIFY(isHarmless(stage, stage.check(), u"signature"_s));
    }

    void unreadableFeedIsRefusedEvenWhenSigned()
    {
        UpdateStage stage;
        stage.publishFeed("<rss><channel>");
        QVERIFY(isHarmless(stage, stage.check(), u"feed"_s));
    }

    void strippedOrGarbageArchiveSignatureIsRefused()
    {
        UpdateStage stage;
        const QByteArray archive = stage.makeRelease(u"1.0.1"_s).archive();
        stage.server.serve(u"/a.tar.zst"_s, archive);
        const SigningKey stranger;
        for (const QString& signature :
             {QString(), u"garbage"_s, u" "_s, QString(u"A"_s).repeated(86) + u"=="_s,
              QString::fromStdString(stranger.sign(archive))})
        {
            const TestItem item =
                itemWith(u"1.0.1"_s, stage.server.address(u"/a.tar.zst"_s), archive.size(), signature);
            stage.publishFeed(feedOf({item}));
            QVERIFY(isHarmless(stage, stage.update(), u"signature"_s));
        }
    }

    void oldArchiveUnderANewNumberIsRefused()
    {
        UpdateStage stage;
        stage.publishArchive(u"1.0.2"_s, stage.makeRelease(u"0.9.0"_s).archive());
        QVERIFY(isHarmless(stage, stage.update(), u"version"_s));
        stage.publishArchive(u"1.0.2"_s, stage.makeRelease(u"1.0.0"_s).archive());
        QVERIFY(isHarmless(stage, stage.update(), u"version"_s));
        stage.publishArchive(u"1.0.2"_s, stage.makeRelease(u"1.0.1"_s).archive());
        QVERIFY(isHarmless(stage, stage.update(), u"version"_s));
    }

    void equalOrLowerVersionIsNotEvenOffered()
    {
        UpdateStage stage;
        for (const QString& version : {u"1.0.0"_s, u"1.0"_s, u"0.9"_s}) {
            stage.publish(stage.makeRelease(version));
            QVERIFY(!stage.check().last().contains(u"offer"_s));
        }
    }

    void archiveOfAnotherProductSystemOrChannelIsRefused()
    {
        for (const char* key : {"product", "system", "channel"}) {
            UpdateStage stage;
            TestRelease release = stage.makeRelease(u"1.0.1"_s);
            release.editManifest([key](Json& json) { json[key] = "other"; });
            stage.publish(release);
            QVERIFY2(isHarmless(stage, stage.update(), u"version"_s), key);
        }
    }

    void replayedOldFeedIsStale()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        const auto checkWith = [&stage](const QString& version, const QString& date) {
            return stage.run(
                u"check"_s,
                {{u"byUser"_s, true}, {u"highestVersionSeen"_s, version}, {u"newestDateSeen"_s, date}});
        };
        QCOMPARE(checkWith(u"1.0.1"_s, u"2026-11-20T10:00:00Z"_s).lastEvent(), u"checked"_s);
        QVERIFY(isHarmless(stage, checkWith(u"1.0.2"_s, {}), u"stale"_s));
        QVERIFY(isHarmless(stage, checkWith({}, u"2026-11-20T10:00:01Z"_s), u"stale"_s));
    }

    void expiredFeedIsStale()
    {
        UpdateStage stage;
        stage.publishFeed(feedOf({}, u"Fri, 20 Nov 2020 10:00:00 +0000"_s));
        QVERIFY(isHarmless(stage, stage.check(), u"stale"_s));
        stage.publishFeed(feedOf({}, u"Fri, 20 Nov 2099 10:00:00 +0000"_s));
        QCOMPARE(stage.check().lastEvent(), u"checked"_s);
    }

    void feedWithoutAnEndIsRefused()
    {
        UpdateStage stage;
        stage.publishFeed(feedOf({}, kWithoutEnd));
        QVERIFY(isHarmless(stage, stage.check(), u"feed"_s));
    }

    void feedThatEndsBeforeOneSeenIsStaleThoughItsVersionsAreTheSame()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        const WorkerOutcome first = stage.check();
        const QString end = first.last()[u"validUntil"_s].toString();
        QVERIFY(QDateTime::fromString(end, Qt::ISODate).isValid());
        // An end in the far future is remembered as the longest that makes sense.
        QVERIFY(QDateTime::fromString(end, Qt::ISODate) < QDateTime::currentDateTimeUtc().addDays(401));
        QCOMPARE(stage.run(u"check"_s, {{u"validUntilSeen"_s, end}}).lastEvent(), u"checked"_s);
        const QString later = u"2100-01-01T00:00:00Z"_s;
        QVERIFY(isHarmless(stage, stage.run(u"check"_s, {{u"validUntilSeen"_s, later}}), u"stale"_s));
    }

    void updateThatCouldNotBeUpdatedAgainIsRefused_data()
    {
        QTest::addColumn<QString>("feed");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QByteArray>("marker");
        QTest::addColumn<bool>("isGood");
        const QString feed = u"https://example.org/feed.xml"_s;
        const QStringList good{QString::fromStdString(SigningKey().publicBase64()),
                               QString::fromStdString(SigningKey().publicBase64())};
        const auto row = [&](const char* name, const QString& itsFeed, const QStringList& keys,
                             const QByteArray& marker = "folder\n", bool isGood = false) {
            QTest::newRow(name) << itsFeed << keys << marker << isGood;
        };
        row("nothing wrong", feed, good, "folder\n", true);
        row("no feed", QString(), good);
        row("feed without a host", u"https:///feed.xml"_s, good);
        row("plain http", u"http://example.org/feed.xml"_s, good);
        row("no key", feed, {});
        row("one key", feed, {good[0]});
        row("the same key twice", feed, {good[0], good[0]});
        row("rubbish beside good keys", feed, {good[0], good[1], u"rubbish"_s});
        row("a letter too few", feed, {good[0], good[1].chopped(1)});
        row("no marker", feed, good, QByteArray());
        row("marker of a package", feed, good, "package\n");
    }

    void updateThatCouldNotBeUpdatedAgainIsRefused()
    {
        QFETCH(QString, feed);
        QFETCH(QStringList, keys);
        QFETCH(QByteArray, marker);
        QFETCH(bool, isGood);
        UpdateStage stage;
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        release.setConfiguration(feed, keys);
        release.removeFile("Contents/Resources/install-kind");
        if (!marker.isEmpty())
            release.setFile("Contents/Resources/install-kind", marker);
        stage.publish(release);
        if (isGood)
            QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        else
            QVERIFY(isHarmless(stage, stage.update(), u"version"_s));
    }

    void versionOfOtherLettersIsRefused()
    {
        UpdateStage stage;
        for (const QString& version :
             {u"../../x"_s, u"2/3"_s, u"2 3"_s, u"-2"_s, u".."_s, u"2ä"_s, QString(65, u'1')})
        {
            TestItem item = itemWith(version, stage.server.address(u"/a"_s), 10, u"x"_s);
            stage.publishFeed(feedOf({item}));
            QVERIFY2(isHarmless(stage, stage.check(), u"feed"_s), qPrintable(version));
        }
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        release.editManifest([](Json& json) { json["version"] = "1.0.1/../../x"; });
        stage.publish(release);
        QVERIFY(isHarmless(stage, stage.update(), u"archive"_s));
    }

    void keysAreReplacedByAReleaseThatAnOldKeySignedAndCountFromThenOn()
    {
        UpdateStage stage;
        const SigningKey oldKey = stage.key;
        const SigningKey newKey;
        stage.key = newKey;
        const TestRelease withNewKey = stage.makeRelease(u"1.0.1"_s);
        stage.publish(withNewKey);
        QCOMPARE(stage.update().problem(), u"signature"_s);

        const QByteArray archive = withNewKey.archive();
        stage.key = oldKey;
        stage.publishArchive(u"1.0.1"_s, archive);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        QCOMPARE(stage.run(u"healthy"_s).lastEvent(), u"healthy"_s);

        stage.publish(stage.makeRelease(u"1.0.2"_s));
        QCOMPARE(stage.update().problem(), u"signature"_s);
        stage.key = newKey;
        stage.publish(stage.makeRelease(u"1.0.2"_s));
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
    }

    void updateThatDoesNotStartIsRefused()
    {
        for (const char* script : {"#!/bin/sh\nexit 1\n", "#!/bin/sh\necho Ferrobank 9\n",
                                   "#!/no/such/interpreter\n", "#!/bin/sh\nkill -SEGV $$\n"})
        {
            UpdateStage stage;
            TestRelease release = stage.makeRelease(u"1.0.1"_s);
            release.setFile("Contents/Helpers/ferrobank-update", script, true);
            stage.publish(release);
            QVERIFY2(isHarmless(stage, stage.update(), u"install"_s), script);
        }
    }

    void updateThatHangsWhenStartedIsRefusedAfterAWhile()
    {
        UpdateStage stage;
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        release.setFile("Contents/Helpers/ferrobank-update", "#!/bin/sh\nexec sleep 60\n", true);
        stage.publish(release);
        QVERIFY(isHarmless(stage, stage.update(), u"install"_s));
    }

    void plainHttpIsNeverFollowed()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        QCOMPARE(stage.check().lastEvent(), u"checked"_s);
        // Everything behind it would be accepted: the feed is genuine, and somebody serves it.
        PlainServer plain(signedFeed(feedOf({}), stage.key));
        ServedFile redirect;
        redirect.location = plain.address(u"/feed.xml"_s).toUtf8();
        stage.server.serve(u"/feed.xml"_s, redirect);
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s));
        QCOMPARE(plain.connections(), 0);
        redirect.location = "file:///etc/passwd";
        stage.server.serve(u"/feed.xml"_s, redirect);
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s));
    }

    void redirectWithAnEndlessBodyIsLeftAtItsHead()
    {
        UpdateStage stage;
        ServedFile first;
        first.location = "/moved.xml";
        first.isRedirectEndless = true;
        stage.server.serve(u"/moved.xml"_s, signedFeed(feedOf({}), stage.key));
        stage.server.serve(u"/feed.xml"_s, first);
        QCOMPARE(stage.check().lastEvent(), u"checked"_s);
        QVERIFY2(stage.server.flooded() < 16 * 1024 * 1024,
                 qPrintable(QString::number(stage.server.flooded())));
    }

    void allRedirectsTogetherHaveOneDeadline()
    {
        UpdateStage stage;
        stage.server.serve(u"/4.xml"_s, signedFeed(feedOf({}), stage.key));
        ServedFile slow;
        slow.pause = 500; // each of them alone is in time
        for (const int hop : {0, 1, 2, 3}) {
            slow.location = "/" + QByteArray::number(hop + 1) + ".xml";
            stage.server.serve(hop == 0 ? u"/feed.xml"_s : u"/%1.xml"_s.arg(hop), slow);
        }
        const auto checkWithin = [&stage](int milliseconds) {
            return stage.run(u"check"_s,
                             {{u"byUser"_s, true}, {u"stall"_s, 10'000}, {u"total"_s, milliseconds}});
        };
        const WorkerOutcome outcome = checkWithin(1'400);
        QVERIFY(isHarmless(stage, outcome, u"network"_s));
        QVERIFY(outcome.last()[u"sentence"_s].toString().contains(u"too slow"_s));
        QCOMPARE(checkWithin(30'000).lastEvent(), u"checked"_s);
    }

    void placesInTheFeedAreThoseOfTheAddressThatTheBuildNames()
    {
        UpdateStage stage;
        TestItem item = itemWith(u"1.0.1"_s, u"a.tar.zst"_s, 10, u"x"_s);
        item.more = u"<link>page.html</link>"_s;
        ServedFile first;
        first.location = "/elsewhere/feed.xml";
        stage.server.serve(u"/feed.xml"_s, first);
        stage.server.serve(u"/elsewhere/feed.xml"_s, signedFeed(feedOf({item}), stage.key));
        const QJsonObject offer = offerIn(stage.check());
        QCOMPARE(offer[u"archive"_s].toString(), stage.server.address(u"/a.tar.zst"_s));
        QCOMPARE(offer[u"link"_s].toString(), stage.server.address(u"/page.html"_s));
        item.more = u"<link>http://example.org/page.html</link>"_s;
        stage.server.serve(u"/elsewhere/feed.xml"_s, signedFeed(feedOf({item}), stage.key));
        QCOMPARE(offerIn(stage.check())[u"link"_s].toString(), QString());
    }

    void secureRedirectsAreFollowedButNotForEver()
    {
        UpdateStage stage;
        stage.publishFeed(feedOf({}));
        ServedFile first;
        first.content.clear();
        first.location = "/moved.xml";
        stage.server.serve(u"/moved.xml"_s, signedFeed(feedOf({}), stage.key));
        stage.server.serve(u"/feed.xml"_s, first);
        QCOMPARE(stage.check().lastEvent(), u"checked"_s);
        first.location = "/feed.xml";
        stage.server.serve(u"/feed.xml"_s, first);
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s));
    }

    void unknownCertificateIsFinal()
    {
        UpdateStage stage;
        stage.publishFeed(feedOf({}));
        QFile::remove(stage.root() + u"/Contents/Resources/update-authority.pem"_s);
        const WorkerOutcome outcome = stage.check();
        QCOMPARE(outcome.problem(), u"network"_s);
        QCOMPARE(stage.server.requests().size(), 0);
    }

    void truncatedDownloadIsFetchedAgainOnceAndThenTold()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        file.fault = Fault::CutShort;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s, kResumable));
        QCOMPARE(stage.server.requestsFor("/Ferrobank_1.0.1.tar.zst"), 2);
    }

    void downloadThatBreaksOnceIsResumed()
    {
        UpdateStage stage;
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        file.fault = Fault::CutShortOnce;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        const QByteArray second = stage.server.requests().last();
        QVERIFY(second.contains("\r\nRange: bytes=" + QByteArray::number(file.content.size() / 2) + "-\r\n"));
        QVERIFY(second.contains("\r\nIf-Range: \"one\"\r\n"));
        QCOMPARE(stage.installedVersion(), u"1.0.1"_s);
    }

    void otherFileBehindTheSameAddressIsFetchedFromTheStart()
    {
        UpdateStage stage;
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        file.fault = Fault::CutShort;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QCOMPARE(stage.update().problem(), u"network"_s);
        file.fault = Fault::None;
        file.entityTag = "\"two\"";
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
    }

    void weakEntityTagIsNoProofForResuming()
    {
        UpdateStage stage;
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        file.entityTag = "W/\"one\"";
        file.fault = Fault::CutShortOnce;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QCOMPARE(stage.update().lastEvent(), u"installed"_s);
        QVERIFY(!stage.server.requests().last().contains("\r\nRange:"));
    }

    void answerWithAnotherRangeIsRefused()
    {
        UpdateStage stage;
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        file.fault = Fault::CutShort;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QCOMPARE(stage.update().problem(), u"network"_s);
        file.fault = Fault::WrongRange;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s, kResumable));
    }

    void endlessAndLongerBodiesAreCutOff()
    {
        UpdateStage stage;
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        ServedFile endless = file;
        endless.fault = Fault::Endless;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, endless);
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s, kResumable));
        file.content += "x";
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s, kResumable));
        stage.server.serve(u"/feed.xml"_s, endless);
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s, kResumable));
    }

    void stalledServerIsGivenUp()
    {
        UpdateStage stage;
        ServedFile file;
        file.content = stage.makeRelease(u"1.0.1"_s).archive();
        stage.publishArchive(u"1.0.1"_s, file.content);
        file.fault = Fault::StopsSending;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s, kResumable));
        stage.server.serve(u"/feed.xml"_s, file);
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s, kResumable));
    }

    void errorsOfTheServerAreTold()
    {
        UpdateStage stage;
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s));
        ServedFile file;
        file.status = 500;
        stage.server.serve(u"/feed.xml"_s, file);
        QVERIFY(isHarmless(stage, stage.check(), u"network"_s));
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        file.status = 404;
        stage.server.serve(u"/Ferrobank_1.0.1.tar.zst"_s, file);
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s));
    }

    void unsafeArchiveIsRefusedEvenWhenSigned()
    {
        UpdateStage stage;
        TestRelease release = stage.makeRelease(u"1.0.1"_s);
        release.add({.path = "Ferrobank.app/../../evil",
                     .content = "x",
                     .type = 0100000,
                     .mode = 0644,
                     .target = {},
                     .hardLink = {}});
        stage.publish(release);
        QVERIFY(isHarmless(stage, stage.update(), u"archive"_s));
        QVERIFY(!QFile::exists(stage.parent() + u"/evil"_s));
    }

    void notesBesideTheFeedNeedASignatureOfTheirOwn()
    {
        UpdateStage stage;
        const QByteArray notes = "<p>Signed notes</p>";
        stage.server.serve(u"/notes.html"_s, notes);
        const auto shown = [&stage](const QString& attributes) {
            stage.publish(stage.makeRelease(u"1.0.1"_s),
                          u"<sparkle:releaseNotesLink %1>%2</sparkle:releaseNotesLink>"_s.arg(
                              attributes, stage.server.address(u"/notes.html"_s)));
            return offerIn(stage.check())[u"notes"_s].toString();
        };
        const QString good = u"sparkle:edSignature=\"%1\" sparkle:length=\"%2\""_s.arg(
            QString::fromStdString(stage.key.sign(notes)), QString::number(notes.size()));
        QCOMPARE(shown(good), u"Signed notes"_s);
        QCOMPARE(shown({}), QString());
        QCOMPARE(shown(QString(good).replace(u"length=\"1"_s, u"length=\"2"_s)), QString());
        stage.server.serve(u"/notes.html"_s, QByteArray("<p>Forged notes</p>"));
        QCOMPARE(shown(good), QString());
    }

    void hugeLengthsAreRefusedBeforeTheDownload()
    {
        UpdateStage stage;
        TestItem item = itemWith(u"1.0.1"_s, stage.server.address(u"/a"_s), 0, u"x"_s);
        for (const qint64 length : {qint64{0}, qint64{500} * 1024 * 1024 + 1}) {
            item.length = length;
            stage.publishFeed(feedOf({item}));
            QVERIFY(isHarmless(stage, stage.update(), u"feed"_s));
        }
        QCOMPARE(stage.server.requestsFor("/a"), 0);
    }

    void archiveWithoutASecureAddressIsNotFetched()
    {
        UpdateStage stage;
        const QByteArray archive = stage.makeRelease(u"1.0.1"_s).archive();
        PlainServer plain(archive);
        const TestItem item = itemWith(u"1.0.1"_s, plain.address(u"/a"_s), archive.size(),
                                       QString::fromStdString(stage.key.sign(archive)));
        stage.publishFeed(feedOf({item}));
        QVERIFY(isHarmless(stage, stage.update(), u"network"_s));
        QCOMPARE(plain.connections(), 0);
    }

    void sizesThatNoCalculationHoldsAreRefused()
    {
        UpdateStage stage;
        for (const char* length : {"9223372036854775807", "4611686018427387904", "2147483649"}) {
            QByteArray feed = feedOf({itemWith(u"1.0.1"_s, stage.server.address(u"/a"_s), 10, u"x"_s)});
            feed.replace("<enclosure ", QByteArray("<enclosure fb:unpackedLength=\"") + length + "\" ");
            stage.publishFeed(feed);
            QVERIFY2(isHarmless(stage, stage.update(), u"feed"_s), length);
        }
        QCOMPARE(stage.server.requestsFor("/a"), 0);
    }

    void scheduledCheckRespectsSkipsAndAUsersDoesNot()
    {
        UpdateStage stage;
        stage.publish(stage.makeRelease(u"1.0.1"_s));
        const QJsonObject skips{{u"version"_s, u"1.0.1"_s}};
        QVERIFY(!stage.run(u"check"_s, {{u"skips"_s, skips}}).last().contains(u"offer"_s));
        QVERIFY(
            stage.run(u"check"_s, {{u"skips"_s, skips}, {u"byUser"_s, true}}).last().contains(u"offer"_s));
    }
};

FERROBANK_TEST(UpdateAttacksTest)
#include "UpdateAttacksTest.moc"
