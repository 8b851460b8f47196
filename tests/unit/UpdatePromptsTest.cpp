#include "Platform/linux/updates/session/Prompts.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

SessionView viewAt(Stage stage)
{
    SessionView view;
    view.stage = stage;
    view.installed = u"1.0.0"_s;
    view.offer.displayVersion = u"1.0.1"_s;
    view.offer.notes = u"Faster."_s;
    view.offer.length = 4'000'000;
    return view;
}

UpdatePrompt prompt(const SessionView& view)
{
    return promptFor(view, QLocale::c()).value_or(UpdatePrompt());
}

QStringList titles(const UpdatePrompt& prompt)
{
    QStringList texts;
    for (const UpdateButton& button : prompt.buttons)
        texts.append(button.text);
    return texts;
}

} // namespace

class UpdatePromptsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void nothingIsShownWhenNothingHappens() { QVERIFY(!promptFor(viewAt(Stage::Idle), QLocale::c())); }

    void checkingCanBeCancelled()
    {
        const UpdatePrompt shown = prompt(viewAt(Stage::Checking));
        QCOMPARE(shown.headline, u"Checking for updates…"_s);
        QVERIFY(shown.isBusy && !shown.progress);
        QCOMPARE(titles(shown), QStringList{u"Cancel"_s});
        QCOMPARE(shown.dismiss, UpdateAction::Cancel);
    }

    void upToDateNamesTheVersion()
    {
        SessionView view = viewAt(Stage::NothingNew);
        view.nothingNew.reason = u"onLatest"_s;
        QCOMPARE(prompt(view).headline, u"You’re up to date!"_s);
        QCOMPARE(prompt(view).text, u"Ferrobank 1.0.0 is currently the newest version available."_s);
        QCOMPARE(titles(prompt(view)), QStringList{u"OK"_s});
        view.nothingNew.history = QUrl(u"https://example.org"_s);
        QCOMPARE(titles(prompt(view)), (QStringList{u"OK"_s, u"Version History"_s}));
        view.nothingNew.reason = u"newerThanLatest"_s;
        view.nothingNew.latest = u"0.9"_s;
        QCOMPARE(
            prompt(view).text,
            u"Ferrobank 0.9 is currently the newest version available. You are running version 1.0.0."_s);
    }

    void unfitSystemIsExplained()
    {
        SessionView view = viewAt(Stage::NothingNew);
        view.nothingNew = {u"systemTooOld"_s, u"2.0"_s, QUrl(u"https://example.org"_s), {}};
        QVERIFY(prompt(view).text.contains(u"newer system"_s));
        QCOMPARE(titles(prompt(view)), (QStringList{u"OK"_s, u"Learn More…"_s}));
        view.nothingNew.reason = u"systemTooNew"_s;
        QVERIFY(prompt(view).text.contains(u"as new as yours"_s));
    }

    void foundOffersThreeChoicesAndTheCheckBox()
    {
        const UpdatePrompt shown = prompt(viewAt(Stage::Found));
        QCOMPARE(shown.text, u"Ferrobank 1.0.1 is now available; you have 1.0.0."_s);
        QCOMPARE(shown.notes, u"Faster."_s);
        QCOMPARE(titles(shown),
                 (QStringList{u"Install Update"_s, u"Remind Me Later"_s, u"Skip This Version"_s}));
        QVERIFY(!shown.automaticTitle.isEmpty());
        QCOMPARE(shown.dismiss, UpdateAction::RemindLater);
    }

    void criticalUpdateCannotBeSkipped()
    {
        SessionView view = viewAt(Stage::Found);
        view.offer.critical = true;
        QCOMPARE(titles(prompt(view)), (QStringList{u"Install Update"_s, u"Remind Me Later"_s}));
        QVERIFY(prompt(view).headline.contains(u"important"_s));
    }

    void informationalUpdateOpensItsPage()
    {
        SessionView view = viewAt(Stage::Found);
        view.offer.informational = true;
        QCOMPARE(prompt(view).buttons.first().action, UpdateAction::OpenPage);
        QVERIFY(prompt(view).automaticTitle.isEmpty());
    }

    void checkBoxIsHiddenWhereAutomaticUpdatesAreForbidden()
    {
        SessionView view = viewAt(Stage::Found);
        view.allowsAutomatic = false;
        QVERIFY(prompt(view).automaticTitle.isEmpty());
    }

    void packagedCopyIsToldItsWayAndNeverOffersToInstall()
    {
        SessionView view = viewAt(Stage::Found);
        view.mayReplace = false;
        view.placeSentence = u"This copy belongs to the system's package manager, which updates it."_s;
        view.advice = u"sudo apt install --only-upgrade ferrobank"_s;
        const UpdatePrompt shown = prompt(view);
        QCOMPARE(titles(shown), QStringList{u"OK"_s});
        QVERIFY(shown.text.contains(u"1.0.1"_s) && shown.text.contains(u"package manager"_s) &&
                shown.text.contains(u"sudo apt install --only-upgrade ferrobank"_s));
        QVERIFY(shown.automaticTitle.isEmpty());
    }

    void downloadShowsHowFarItIs()
    {
        SessionView view = viewAt(Stage::Downloading);
        view.bytes = 1'000'000;
        const UpdatePrompt shown = prompt(view);
        QCOMPARE(shown.text, u"1.0 MB of 4.0 MB"_s);
        QCOMPARE(shown.progress, std::optional(0.25));
        view.bytes = 9'000'000;
        QCOMPARE(prompt(view).progress, std::optional(1.0));
        view.offer.length = 0;
        QVERIFY(!prompt(view).progress);
    }

    void preparingAndInstallingCannotBeCancelled()
    {
        QVERIFY(titles(prompt(viewAt(Stage::Preparing))).isEmpty());
        QVERIFY(titles(prompt(viewAt(Stage::Installing))).isEmpty());
    }

    void readyOffersBothWays()
    {
        QCOMPARE(titles(prompt(viewAt(Stage::Ready))),
                 (QStringList{u"Install and Relaunch"_s, u"Install on Quit"_s}));
    }

    void failureShowsItsReasonAndOneButton()
    {
        SessionView view = viewAt(Stage::Failed);
        view.problem = Problem::Signature;
        view.sentence = u"The downloaded update is not signed by its maker."_s;
        QCOMPARE(prompt(view).headline, u"Update error!"_s);
        QCOMPARE(prompt(view).text, view.sentence);
        QCOMPARE(titles(prompt(view)), QStringList{u"OK"_s});
    }

    void buildWithoutAFeedSaysThatUpdatesAreOff()
    {
        SessionView view = viewAt(Stage::Failed);
        view.problem = Problem::Off;
        view.sentence = u"This copy was built without an address for updates."_s;
        QCOMPARE(prompt(view).headline, u"Updates are switched off"_s);
        QCOMPARE(titles(prompt(view)), QStringList{u"OK"_s});
    }

    void consentAsksForBothAnswers()
    {
        const UpdatePrompt shown = prompt(viewAt(Stage::Asking));
        QCOMPARE(titles(shown), (QStringList{u"Check Automatically"_s, u"Don’t Check"_s}));
        QVERIFY(!shown.automaticTitle.isEmpty());
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(UpdatePromptsTest)
#include "UpdatePromptsTest.moc"
