#include "Ferrobank/Words/Catalogue.h"

#include "support/TestProgram.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QGuiApplication>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

const QString kTranslations = QStringLiteral(FERROBANK_TRANSLATIONS);

} // namespace

/// Which language somebody gets, and what the catalogues of this build make of a text.
class CatalogueTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void firstLanguageThatThereIsWins_data()
    {
        QTest::addColumn<QStringList>("wanted");
        QTest::addColumn<QString>("expected");
        QTest::newRow("none at all") << QStringList{} << QString();
        QTest::newRow("exactly") << QStringList{u"de"_s} << u"de"_s;
        QTest::newRow("of another country") << QStringList{u"de-AT"_s, u"de"_s} << u"de"_s;
        QTest::newRow("unknown, then known") << QStringList{u"sv-SE"_s, u"fr-FR"_s} << u"fr"_s;
        QTest::newRow("English first") << QStringList{u"en-GB"_s, u"de"_s} << QString();
        QTest::newRow("unknown, then English, then known")
            << QStringList{u"sv"_s, u"en"_s, u"de"_s} << QString();
        QTest::newRow("only unknown ones") << QStringList{u"sv"_s, u"is"_s} << QString();
        QTest::newRow("no language of the system") << QStringList{u"C"_s} << QString();
        QTest::newRow("simplified Chinese") << QStringList{u"zh-Hans-CN"_s, u"zh-CN"_s} << u"zh_CN"_s;
        QTest::newRow("simplified Chinese elsewhere") << QStringList{u"zh-Hans-SG"_s} << u"zh_CN"_s;
        QTest::newRow("traditional Chinese") << QStringList{u"zh-Hant-TW"_s, u"zh-TW"_s} << QString();
        QTest::newRow("Arabic of a country") << QStringList{u"ar-EG"_s} << u"ar"_s;
        QTest::newRow("not a language") << QStringList{u"?"_s, QString()} << QString();
    }

    void firstLanguageThatThereIsWins()
    {
        QFETCH(QStringList, wanted);
        QFETCH(QString, expected);
        const QStringList available{u"ar"_s, u"de"_s, u"es"_s, u"fr"_s, u"ja"_s, u"zh_CN"_s};
        QCOMPARE(catalogueFor(wanted, available), expected);
    }

    void textLeftOutIsNothingRatherThanTheGivenOne()
    {
        Catalogue catalogue;
        QVERIFY(catalogue.load(u"system_en"_s, kTranslations));
        const QString text = catalogue.translate("any", "Open Privacy Settings", nullptr, -1);
        QVERIFY(text.isEmpty());
        QVERIFY(!text.isNull());
    }

    void textThatIsNotInTheCatalogueIsLeftToTheNextOne()
    {
        Catalogue catalogue;
        QVERIFY(catalogue.load(u"system_en"_s, kTranslations));
        QVERIFY(catalogue.translate("any", "Quit", nullptr, -1).isNull());
    }

    void sameTextIsTheSameWordsWhereverItStands()
    {
        Catalogue catalogue;
        QVERIFY(catalogue.load(u"ferrobank_de"_s, kTranslations));
        QCOMPARE(catalogue.translate("one", "Cancel", nullptr, -1), u"Abbrechen"_s);
        QCOMPARE(catalogue.translate("other", "Cancel", nullptr, -1), u"Abbrechen"_s);
    }

    void systemsWordsStandOverThoseOfTheLanguage_data()
    {
        QTest::addColumn<QString>("wanted");
        QTest::addColumn<QString>("quit");
        QTest::addColumn<QString>("free");
        QTest::newRow("English") << u"en"_s << u"Quit"_s << u"Free on this computer"_s;
        QTest::newRow("German") << u"de"_s << u"Beenden"_s << u"Frei auf diesem Computer"_s;
        QTest::newRow("a language without a catalogue") << u"sv"_s << u"Quit"_s << u"Free on this computer"_s;
    }

    void systemsWordsStandOverThoseOfTheLanguage()
    {
        QFETCH(QString, wanted);
        QFETCH(QString, quit);
        QFETCH(QString, free);
        WordsOfATest words({wanted});
        QCOMPARE(QCoreApplication::translate("any", "Quit"), quit);
        QCOMPARE(QCoreApplication::translate("any", "Free on this Mac"), free);
        QCOMPARE(QGuiApplication::layoutDirection(), Qt::LeftToRight);
    }

    void languageWrittenFromTheRightMirrorsTheWindows()
    {
        WordsOfATest words({u"ar"_s});
        QCOMPARE(QGuiApplication::layoutDirection(), Qt::RightToLeft);
    }

    void damagedCatalogueLeavesTheTextsInEnglish()
    {
        const QTemporaryDir folder;
        for (const QString& name : {u"ferrobank_de.qm"_s, u"system_de.qm"_s}) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("not a catalogue");
        }
        WordsOfATest words({u"de"_s}, folder.path());
        QCOMPARE(QCoreApplication::translate("any", "Quit"), u"Quit"_s);
    }

    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto); }

private:
    /// What installWords() installs, until the end of a scope.
    struct WordsOfATest {
        explicit WordsOfATest(const QStringList& wanted, const QString& folder = kTranslations)
        {
            installWords(folder, wanted);
        }

        ~WordsOfATest()
        {
            const auto translators = QCoreApplication::instance()->findChildren<QTranslator*>();
            qDeleteAll(translators);
        }

        Q_DISABLE_COPY_MOVE(WordsOfATest)
    };
};

} // namespace ferrobank

FERROBANK_TEST_WITH_WINDOWS(ferrobank::CatalogueTest)
#include "CatalogueTest.moc"
