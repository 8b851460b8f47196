#include "Ferrobank/Views/CheckRowStyle.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

/// How rows of checks look and what their states and remedies are called.
class CheckRowStyleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void eachStateHasItsIconColourAndWord_data()
    {
        QTest::addColumn<State>("state");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<Tint>("tint");
        QTest::addColumn<QString>("word");
        QTest::newRow("pending") << State::Pending << u"circle.dotted"_s << Tint::Tertiary
                                 << u"not started"_s;
        QTest::newRow("running") << State::Running << QString() << Tint::Secondary << u"in progress"_s;
        QTest::newRow("awaiting") << State::AwaitingUser << u"hand.raised.circle.fill"_s << Tint::Orange
                                  << u"waiting for you"_s;
        QTest::newRow("pass") << State::Pass << u"checkmark.circle.fill"_s << Tint::Green << u"passed"_s;
        QTest::newRow("fail") << State::Fail << u"xmark.circle.fill"_s << Tint::Red << u"failed"_s;
        QTest::newRow("skipped") << State::Skipped << u"minus.circle"_s << Tint::Secondary << u"skipped"_s;
    }

    void eachStateHasItsIconColourAndWord()
    {
        QFETCH(State, state);
        QTEST(CheckRowStyle::symbol(state), "symbol");
        QTEST(CheckRowStyle::tint(state), "tint");
        QTEST(CheckRowStyle::word(state), "word");
        QCOMPARE(CheckRowStyle::isRunning(state), state == State::Running);
    }

    void eachRemedyHasItsTitle()
    {
        QCOMPARE(CheckRowStyle::fixTitle(FixAction::Restart), u"Restart Ferrobank"_s);
        QCOMPARE(CheckRowStyle::fixTitle(FixAction::LoginItems), u"Open Login Items"_s);
        QCOMPARE(CheckRowStyle::fixTitle(FixAction::PrivacySettings), u"Open Privacy Settings"_s);
        QCOMPARE(CheckRowStyle::fixTitle(FixAction::StorageSettings), u"Open Storage Settings"_s);
    }

    void everySymbolHasADrawing()
    {
        for (const QString& name :
             {u"circle.dotted"_s, u"hand.raised.circle.fill"_s, u"checkmark.circle.fill"_s,
              u"xmark.circle.fill"_s, u"minus.circle"_s, u"minus.circle.fill"_s, u"clock.fill"_s,
              u"exclamationmark.triangle.fill"_s, u"folder"_s, u"bell.badge"_s, u"network"_s, u"key"_s,
              u"xmark"_s, u"minus"_s, u"application"_s})
        {
            QVERIFY2(QFile::exists(u":/symbols/%1.svg"_s.arg(name)), qPrintable(name));
        }
    }
};

FERROBANK_TEST(CheckRowStyleTest)
#include "CheckRowStyleTest.moc"
