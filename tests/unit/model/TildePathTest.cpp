#include "Ferrobank/Model/TildePath.h"

#include "support/TestProgram.h"

#include <QtTest/QtTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

class TildePathTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void homeIsAbbreviatedAtAPathBoundaryOnly_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("home");
        QTest::addColumn<QString>("expected");

        const auto anna = u"/home/anna"_s;
        QTest::newRow("inside") << u"/home/anna/Ferrobank"_s << anna << u"~/Ferrobank"_s;
        QTest::newRow("home itself") << anna << anna << u"~"_s;
        QTest::newRow("home with a slash") << u"/home/anna/"_s << anna << u"~/"_s;
        QTest::newRow("another name") << u"/home/annabel/x"_s << anna << u"/home/annabel/x"_s;
        QTest::newRow("outside") << u"/mnt/disk"_s << anna << u"/mnt/disk"_s;
        QTest::newRow("further down") << u"/mnt/home/anna"_s << anna << u"/mnt/home/anna"_s;
        QTest::newRow("home ends with a slash") << u"/home/anna/x"_s << u"/home/anna/"_s << u"~/x"_s;
        QTest::newRow("home is the root") << u"/etc"_s << u"/"_s << u"/etc"_s;
        QTest::newRow("no home") << u"/etc"_s << QString() << u"/etc"_s;
        QTest::newRow("empty path") << QString() << anna << QString();
        QTest::newRow("spaces") << u"/home/anna/My Files"_s << anna << u"~/My Files"_s;
    }

    void homeIsAbbreviatedAtAPathBoundaryOnly()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, home);
        QTEST(abbreviatedWithTilde(path, home), "expected");
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(TildePathTest)
#include "TildePathTest.moc"
