#include "Ferrobank/Diagnostics/ToolJournal.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// The drive tool's latest failures.
class ToolJournalTest : public QObject {
    Q_OBJECT

private:
    static QDateTime at(int seconds) { return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc()); }

private Q_SLOTS:

    void aNewJournalIsEmpty() { QVERIFY(ToolJournal().entries().isEmpty()); }

    void aFailureIsKeptWithItsTime()
    {
        ToolJournal journal;
        journal.note({u"restart"_s}, u"busy"_s, at(1));
        const QList<ToolJournal::Entry> expected{{{u"restart"_s}, u"busy"_s, at(1), 1}};
        QCOMPARE(journal.entries(), expected);
    }

    void theSameFailureAgainIsCounted()
    {
        ToolJournal journal;
        journal.note({u"status"_s}, u"busy"_s, at(1));
        journal.note({u"status"_s}, u"busy"_s, at(6));
        QCOMPARE(journal.entries().size(), 1);
        QCOMPARE(journal.entries().constFirst().times, 2);
        QCOMPARE(journal.entries().constFirst().at, at(6));
    }

    void otherWordsOrArgumentsAreAnotherFailure()
    {
        ToolJournal journal;
        journal.note({u"status"_s}, u"busy"_s, at(1));
        journal.note({u"status"_s}, u"gone"_s, at(2));
        journal.note({u"restart"_s}, u"gone"_s, at(3));
        journal.note({u"status"_s}, u"busy"_s, at(4));
        QCOMPARE(journal.entries().size(), 4);
    }

    void onlyTheLatestAreKept()
    {
        ToolJournal journal;
        for (int number = 1; number <= ToolJournal::kMost + 2; ++number) {
            journal.note({u"run"_s}, QString::number(number), at(number));
        }
        QCOMPARE(journal.entries().size(), qsizetype(ToolJournal::kMost));
        QCOMPARE(journal.entries().constFirst().words, u"3"_s);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(ToolJournalTest)
#include "ToolJournalTest.moc"
