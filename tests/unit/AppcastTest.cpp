#include "Platform/linux/updates/feed/Appcast.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/Freshness.h"
#include "Platform/linux/updates/feed/ReleaseNotes.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

QByteArray feed(const QByteArray& items)
{
    return "<?xml version=\"1.0\"?><rss version=\"2.0\" "
           "xmlns:s=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
           "xmlns:fb=\"https://ferrobank.org/xml-namespaces/updates\"><channel>" +
           items + "</channel></rss>";
}

Appcast read(const QByteArray& text)
{
    return readAppcast(text.toStdString(), QUrl(u"https://example.org/updates/feed.xml"_s));
}

AppcastItem readItem(const QByteArray& elements)
{
    const Appcast appcast = read(feed("<item>" + elements + "</item>"));
    return appcast.items.value(0);
}

bool isRefused(const QByteArray& text)
{
    try {
        read(text);
        return false;
    } catch (const UpdateFailure& failure) {
        return failure.problem() == Problem::Feed;
    }
}

constexpr auto kArchive = "<enclosure url=\"f.tar.zst\" length=\"10\" s:edSignature=\"abc\" s:os=\"linux\"/>";

} // namespace

class AppcastTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void clockThatIsBehindDoesNotMakeAnOldFeedFresh()
    {
        const auto date = [](int day) { return QDateTime({2026, 6, day}, {0, 0}, Qt::UTC); };
        Appcast feed;
        feed.validUntil = date(10);
        Freshness seen;
        seen.highest = "1.0";
        const auto isStale = [&](const QDateTime& clock) {
            try {
                expectFresh(feed, seen, clock);
                return false;
            } catch (const UpdateFailure& failure) {
                return failure.problem() == Problem::Stale;
            }
        };
        feed.items.append(AppcastItem());
        feed.items[0].version = "1.0";
        feed.items[0].date = date(9);
        QVERIFY(!isStale(date(1)));
        QVERIFY(isStale(date(11)));
        // The same feed, shown again to somebody who has seen a later release and whose clock was set back.
        Appcast renewed = feed;
        renewed.items[0].date = date(20);
        renewed.validUntil = date(25);
        seen = freshnessOf(renewed, date(1));
        feed.items[0].date = date(20);
        feed.validUntil = date(19);
        bool isRefused = false;
        try {
            expectFresh(feed, {}, date(1));
        } catch (const UpdateFailure& failure) {
            isRefused = failure.problem() == Problem::Feed;
        }
        QVERIFY(isRefused); // it ends before its own newest release
        feed.validUntil = date(21);
        QVERIFY(isStale(date(1)));
        seen.validUntil = date(21);
        QVERIFY(!isStale(date(1)));
    }

    void versionsAreOfPlainLetters()
    {
        for (const char* good : {"1", "1.0.1", "1.0rc2", "2026.11-1", "1_0+3"})
            QVERIFY2(isUsableVersion(good), good);
        for (const char* bad : {"", ".", "..", ".1", "-1", "a/b", "1 0", "1\n2", "1\u00e4", "1%2e"})
            QVERIFY2(!isUsableVersion(bad), bad);
        QVERIFY(isUsableVersion(std::string(64, '1')));
        QVERIFY(!isUsableVersion(std::string(65, '1')));
    }

    void pagesAreSecureOnes()
    {
        const QByteArray base = QByteArray("<s:version>2</s:version>") + kArchive;
        QCOMPARE(readItem(base + "<link>http://example.org/p</link>").link, QUrl());
        QCOMPARE(readItem(base + "<link>p.html</link>").link, QUrl(u"https://example.org/updates/p.html"_s));
    }

    void everyElementOfAnItemIsRead()
    {
        const AppcastItem item = readItem(
            "<title> One </title><link>https://example.org/p</link><pubDate>Fri, 20 Nov 2026 10:00:00 "
            "+0100</pubDate>"
            "<description s:format=\"plain-text\">News</description>"
            "<s:version>1.0.1</s:version><s:shortVersionString>1.0.1 (new)</s:shortVersionString>"
            "<s:minimumSystemVersion>2.36</s:minimumSystemVersion><s:maximumSystemVersion>3</"
            "s:maximumSystemVersion>"
            "<s:minimumUpdateVersion>0.9</s:minimumUpdateVersion><s:hardwareRequirements>arm64, "
            "x</s:hardwareRequirements>"
            "<s:minimumAutoupdateVersion>0.8</s:minimumAutoupdateVersion>"
            "<s:ignoreSkippedUpgradesBelowVersion>1.0</s:ignoreSkippedUpgradesBelowVersion>"
            "<s:phasedRolloutInterval>3600</s:phasedRolloutInterval><s:channel>beta.1_x-y</s:channel>"
            "<s:fullReleaseNotesLink>https://example.org/all</s:fullReleaseNotesLink>"
            "<s:releaseNotesLink xml:lang=\"de\" s:length=\"5\" "
            "s:edSignature=\"sig\">de.md</s:releaseNotesLink>"
            "<s:releaseNotesLink>en.md</s:releaseNotesLink>"
            "<enclosure url=\"a b.tar.zst\" length=\"1234\" s:edSignature=\"abc=\" s:os=\"linux-x86_64\" "
            "fb:unpackedLength=\"5000\" type=\"x\"/>");
        QCOMPARE(item.title, u"One"_s);
        QCOMPARE(item.link, QUrl(u"https://example.org/p"_s));
        QCOMPARE(item.date->toString(Qt::ISODate), u"2026-11-20T09:00:00Z"_s);
        QCOMPARE(item.notes, u"News"_s);
        QVERIFY(item.notesFormat == NotesFormat::PlainText);
        QCOMPARE(item.version, "1.0.1");
        QCOMPARE(item.displayVersion, u"1.0.1 (new)"_s);
        QCOMPARE(item.minimumSystem, "2.36");
        QCOMPARE(item.maximumSystem, "3");
        QCOMPARE(item.minimumInstalled, "0.9");
        QCOMPARE(item.hardware, (QStringList{u"arm64"_s, u"x"_s}));
        QCOMPARE(item.minimumForAutomatic, "0.8");
        QCOMPARE(item.ignoreSkippedMajorsBelow, "1.0");
        QCOMPARE(item.phasedRolloutInterval.count(), 3600);
        QCOMPARE(item.channel, u"beta.1_x-y"_s);
        QCOMPARE(item.versionHistory, QUrl(u"https://example.org/all"_s));
        QCOMPARE(item.notesLinks.size(), 2U);
        QCOMPARE(item.notesLinks[0].language, u"de"_s);
        QCOMPARE(item.notesLinks[0].length, 5);
        QCOMPARE(item.notesLinks[0].signature, "sig");
        QCOMPARE(item.notesLinks[1].language, u"en"_s);
        QCOMPARE(item.notesLinks[1].url, QUrl(u"https://example.org/updates/en.md"_s));
        QCOMPARE(item.archive.toEncoded(), "https://example.org/updates/a%20b.tar.zst");
        QCOMPARE(item.length, 1234);
        QCOMPARE(item.unpackedLength, 5000);
        QCOMPARE(item.signature, "abc=");
        QCOMPARE(item.system, u"linux-x86_64"_s);
    }

    void versionIsLookedForInThreePlaces()
    {
        QCOMPARE(readItem("<s:version>2</s:version><enclosure url=\"f_3.tar\" s:version=\"1\"/>").version,
                 "1");
        QCOMPARE(readItem("<s:version>2</s:version><enclosure url=\"f_3.tar\"/>").version, "2");
        QCOMPARE(readItem("<enclosure url=\"f_3.1.tar\"/>").version, "3.1");
        QVERIFY(isRefused(feed("<item><enclosure url=\"f.tar\"/></item>")));
    }

    void shortVersionFallsBackToTheVersion()
    {
        QCOMPARE(readItem(QByteArray("<s:version>2</s:version>") + kArchive).displayVersion, u"2"_s);
    }

    void namespaceCountsAndPrefixDoesNot()
    {
        const QByteArray other =
            "<rss xmlns:x=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" xmlns:s=\"u:o\">"
            "<channel><item><x:version>1</x:version><s:version>9</s:version>"
            "<link>https://e.org</link></item></channel></rss>";
        QCOMPARE(read(other).items.value(0).version, "1");
    }

    void criticalAndInformationalHaveTheirForms()
    {
        const QByteArray base = QByteArray("<s:version>2</s:version>") + kArchive;
        QVERIFY(!readItem(base).critical);
        QVERIFY(readItem(base + "<s:criticalUpdate/>").critical);
        QVERIFY(readItem(base + "<s:tags><s:criticalUpdate/></s:tags>").critical);
        QCOMPARE(readItem(base + "<s:criticalUpdate s:version=\"1.5\"/>").criticalBelow, "1.5");
        QVERIFY(!readItem(base).informationForAll);
        QVERIFY(readItem(base + "<s:informationalUpdate/>").informationForAll);
        const AppcastItem some =
            readItem(base + "<s:informationalUpdate><s:version>1</s:version>"
                            "<s:belowVersion>0.5</s:belowVersion></s:informationalUpdate>");
        QVERIFY(!some.informationForAll);
        QCOMPARE(some.informationFor, std::vector<std::string>{"1"});
        QCOMPARE(some.informationBelow, "0.5");
        QVERIFY(readItem("<s:version>2</s:version><link>https://example.org</link>").informationForAll);
    }

    void channelOfOtherLettersIsNoChannel()
    {
        const QByteArray base = QByteArray("<s:version>2</s:version>") + kArchive;
        for (const char* name : {"", "a b", "b\xc3\xa9ta", "a/b"})
            QCOMPARE(readItem(base + "<s:channel>" + name + "</s:channel>").channel, QString());
    }

    void differencesAndInstallersAreMarked()
    {
        const QByteArray version = "<s:version>2</s:version>";
        QVERIFY(readItem(version + "<enclosure url=\"a.delta\" s:deltaFrom=\"1\"/>").delta);
        QVERIFY(readItem(version + "<enclosure url=\"a.pkg\"/>").package);
        QVERIFY(readItem(version + "<enclosure url=\"a.tar\" s:installationType=\"package\"/>").package);
        QVERIFY(!readItem(version + "<enclosure url=\"a.tar\" s:installationType=\"application\"/>").package);
        const AppcastItem withDeltas = readItem(
            version + "<s:deltas><enclosure url=\"a.delta\" s:deltaFrom=\"1\"/></s:deltas>" + kArchive);
        QVERIFY(!withDeltas.delta);
        QCOMPARE(withDeltas.length, 10);
    }

    void unreadableDateMeansNone()
    {
        const QByteArray base = QByteArray("<s:version>2</s:version>") + kArchive;
        QVERIFY(!readItem(base + "<pubDate>yesterday</pubDate>").date);
    }

    void expiryIsReadAndMustBeADate()
    {
        const auto appcast = read(feed("<fb:validUntil>Fri, 20 Nov 2026 10:00:00 +0000</fb:validUntil>"));
        QCOMPARE(appcast.validUntil->toString(Qt::ISODate), u"2026-11-20T10:00:00Z"_s);
        QVERIFY(isRefused(feed("<fb:validUntil>soon</fb:validUntil>")));
    }

    void oneBadItemMakesTheWholeFeedInvalid_data()
    {
        QTest::addColumn<QByteArray>("bad");
        const auto row = [](const char* name, const QByteArray& bad) { QTest::newRow(name) << bad; };
        const QByteArray version = "<s:version>2</s:version>";
        row("no version", "<item><link>https://e.org</link></item>");
        row("neither archive nor page", "<item>" + version + "</item>");
        row("two archives", "<item>" + version + kArchive + kArchive + "</item>");
        row("file address", "<item>" + version + "<enclosure url=\"file:///etc/passwd\"/></item>");
        row("address without a host", "<item>" + version + "<enclosure url=\"https:///x\"/></item>");
        row("length in words", "<item>" + version + "<enclosure url=\"a\" length=\"ten\"/></item>");
        row("negative length", "<item>" + version + "<enclosure url=\"a\" length=\"-1\"/></item>");
        row("interval in words", "<item>" + version + kArchive +
                                     "<s:phasedRolloutInterval>a day</s:phasedRolloutInterval></item>");
        row("unclosed element", "<item><title>");
        row("unknown entity", "<item><title>&who;</title>" + version + kArchive + "</item>");
    }

    void oneBadItemMakesTheWholeFeedInvalid()
    {
        QFETCH(QByteArray, bad);
        const QByteArray good = QByteArray("<item><s:version>9</s:version>") + kArchive + "</item>";
        QCOMPARE(read(feed(good)).items.size(), 1);
        QVERIFY(isRefused(feed(good + bad)));
        QVERIFY(isRefused(feed(bad + good)));
    }

    void documentTypesAreRefusedWhateverTheyDeclare()
    {
        const QByteArray bomb = "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;\">]>";
        QVERIFY(
            isRefused("<?xml version=\"1.0\"?>" + bomb + "<rss><channel><title>&b;</title></channel></rss>"));
        QVERIFY(isRefused("<!DOCTYPE r SYSTEM \"file:///etc/passwd\"><rss><channel/></rss>"));
    }

    void somethingElseThanAFeedIsRefused()
    {
        for (const char* text :
             {"", "text", "<html/>", "<rss/>", "<rss><channel/></rss>trailing", "<rss><channel/>"})
            QVERIFY2(isRefused(text), text);
        QVERIFY(!isRefused("<rss><channel/></rss>"));
    }

    void notesLoseEverythingThatCouldAct_data()
    {
        QTest::addColumn<QString>("notes");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const QString& notes, const QString& text) {
            QTest::newRow(name) << notes << text;
        };
        row("tags", u"<h1>New</h1><p>It is <b>fast</b>.</p>"_s, u"New\nIt is fast."_s);
        row("lists", u"<ul><li>One</li><li>Two</li></ul>"_s, u"\u2022 One\n\u2022 Two"_s);
        row("script", u"a<script>alert(1)</script>b<style>x</style>c"_s, u"abc"_s);
        row("unclosed script", u"a<script>alert(1)"_s, u"a"_s);
        row("image and link", u"<a href='https://x'>go</a><img src='https://x'>"_s, u"go"_s);
        row("entities once", u"&amp;lt;b&amp;gt; &lt;i&gt;"_s, u"&lt;b&gt; <i>"_s);
        row("unclosed tag", u"a <b"_s, u"a"_s);
        row("turned writing", u"a\u202eb\u2066c"_s, u"abc"_s);
        row("control characters", u"a\u0007b"_s, u"ab"_s);
    }

    void notesLoseEverythingThatCouldAct()
    {
        QFETCH(QString, notes);
        QFETCH(QString, text);
        QCOMPARE(notesAsText(notes, NotesFormat::Html), text);
    }

    void plainNotesStayAsTheyAreAndLongOnesAreCut()
    {
        QCOMPARE(notesAsText(u"# 1.0\n\n* <b>x</b>"_s, NotesFormat::Markdown), u"# 1.0\n\n* <b>x</b>"_s);
        const QString cut = notesAsText(QString(100'000, u'a'), NotesFormat::PlainText);
        QVERIFY(cut.size() <= 20'001);
        QVERIFY(cut.endsWith(u'…'));
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(AppcastTest)
#include "AppcastTest.moc"
