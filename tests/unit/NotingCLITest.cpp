#include "Ferrobank/Diagnostics/NotingCLI.h"

#include "Ferrobank/Diagnostics/ToolJournal.h"
#include "Platform/ChildProcess.h"
#include "support/Await.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeCLI.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// Failed runs of the drive tool are noted, and nothing else about them changes.
class NotingCLITest : public QObject {
    Q_OBJECT

private:
    FakeCLI _tool;
    ToolJournal _journal;
    NotingCLI _cli{_tool, _journal};

private Q_SLOTS:

    void init() { _journal = {}; }

    void aRunIsPassedOnWithItsOutput()
    {
        _tool.answer({u"status"_s}, FakeCLI::Answer::text(u"fine"_s));
        QCOMPARE(test::await(_cli.run({u"status"_s})), u"fine"_s);
        QCOMPARE(_cli.url(), _tool.url());
        QVERIFY(_journal.entries().isEmpty());
    }

    void aFailureIsNotedAndThrown()
    {
        _tool.answer({u"restart"_s}, FakeCLI::Answer::fails(u"volume busy"_s));
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(test::await(_cli.run({u"restart"_s}))), CLI::Failure);
        QCOMPARE(_journal.entries().size(), 1);
        QCOMPARE(_journal.entries().constFirst().args, QStringList{u"restart"_s});
        QCOMPARE(_journal.entries().constFirst().words, u"volume busy"_s);
    }

    void aToolThatCannotStartIsNotedToo()
    {
        _tool.answer({u"status"_s}, FakeCLI::Answer::missing());
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(test::await(_cli.run({u"status"_s}))), LaunchError);
        QCOMPARE(_journal.entries().constFirst().words, u"No such file or directory"_s);
    }
};

FERROBANK_TEST(NotingCLITest)
#include "NotingCLITest.moc"
