#include "Ferrobank/Diagnostics/Diagnostics.h"

#include "support/Await.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeSeam.h"
#include "support/fakes/FakeSystemReport.h"

#include <QtTest/QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// Where the facts of a problem report come from.
class DiagnosticsTest : public QObject {
    Q_OBJECT

private:
    [[nodiscard]] QStringList gather()
    {
        Diagnostics diagnostics({.model = *_model,
                                 .loginServices = _seam->loginServices,
                                 .cli = _seam->cli,
                                 .journal = _journal,
                                 .system = _system,
                                 .version = u"1.0.0"_s,
                                 .toolkit = u"Qt"_s,
                                 .home = FakeSeam::kHome});
        return test::await(diagnostics.gather()).split(u'\n');
    }

    void start()
    {
        _model = std::make_unique<AppModel>(_seam->collaborators());
        QCoreApplication::processEvents();
    }

    std::unique_ptr<FakeSeam> _seam;
    FakeSystemReport _system;
    ToolJournal _journal;
    std::unique_ptr<AppModel> _model;

private Q_SLOTS:

    void init()
    {
        _seam = std::make_unique<FakeSeam>();
        _system.askedFor.clear();
    }

    void cleanup()
    {
        _model.reset();
        _seam.reset();
    }

    void theToolIsAskedForItsVersion()
    {
        _seam->cli.answer({u"--version"_s}, FakeCLI::Answer::text(u"ferrobank 1.0.1\n"_s));
        start();
        QVERIFY(gather().contains(u"Drive tool: ferrobank 1.0.1"_s));
    }

    void aToolThatDoesNotTellItsVersionIsToldWithItsWords()
    {
        _seam->cli.answer({u"--version"_s}, FakeCLI::Answer::fails(u"no such option"_s));
        start();
        QVERIFY(gather().contains(u"Drive tool: does not tell its version: no such option"_s));
    }

    void aMissingToolIsTold()
    {
        _seam->cli.answer({u"--version"_s}, FakeCLI::Answer::missing());
        start();
        QVERIFY(gather().contains(u"Drive tool: does not tell its version: No such file or directory"_s));
    }

    void theMountPointOfTheStatusIsLookedUp()
    {
        _seam->cli.answerStatus(mountedStatus());
        start();
        QVERIFY(gather().contains(u"Drive: installed, mounted"_s));
        QCOMPARE(_system.askedFor, QStringList{FakeSeam::kMountpoint});
    }

    void withoutAStatusNoMountPointIsLookedUp()
    {
        _seam->cli.answer(FakeCLI::kStatus, FakeCLI::Answer::fails(u"busy"_s));
        start();
        QVERIFY(gather().contains(u"Drive: no status yet"_s));
        QCOMPARE(_system.askedFor, QStringList{QString()});
    }

    void servicesAndSetupAreAskedForAnew()
    {
        _seam->finishSetup();
        _seam->registry.mainApp.status = LoginServiceStatus::RequiresApproval;
        start();
        const QStringList told = gather();
        QVERIFY(told.contains(u"Drive's service: enabled"_s));
        QVERIFY(told.contains(u"Menu at login: requires-approval"_s));
        QVERIFY(told.contains(u"Setup: complete"_s));
    }
};

FERROBANK_TEST(DiagnosticsTest)
#include "DiagnosticsTest.moc"
