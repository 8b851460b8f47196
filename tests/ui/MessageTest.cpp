#include "Ferrobank/Views/QmlMessage.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// A modal message.
class MessageTest : public WindowTest {
    Q_OBJECT

private:
    /// After start().
    void open(Message::Kind kind, QWindow* parent = nullptr)
    {
        _answers.clear();
        _message = std::make_unique<QmlMessage>(stage().host);
        _message->show({kind, u"The command could not be installed.\nThe folder is read-only."_s}, parent,
                       [this](bool goesOn) { _answers << goesOn; });
        show(_message->window());
    }

    std::unique_ptr<QmlMessage> _message;
    QList<bool> _answers;

private Q_SLOTS:

    void cleanup()
    {
        _message.reset();
        WindowTest::cleanup();
    }

    void anAlertShowsItsWordsAndOneButton()
    {
        start();
        open(Message::Kind::Alert);
        QCOMPARE(window().title(), u"Ferrobank"_s);
        QCOMPARE(textOf(u"message"_s), u"The command could not be installed.\nThe folder is read-only."_s);
        QCOMPARE(textOf(u"goOn"_s), u"OK"_s);
        QVERIFY(!shows(u"leave"_s));
        QVERIFY(!shows(u"minimise"_s));
        QVERIFY(window().modality() == Qt::ApplicationModal);
        QCOMPARE(window().type(), Qt::Dialog);
    }

    void aQuestionCanBeLeft()
    {
        start();
        open(Message::Kind::Question);
        QCOMPARE(textOf(u"goOn"_s), u"Continue"_s);
        click(u"leave"_s);
        QTRY_COMPARE(_answers, QList{false});
        QVERIFY(!_message->isOpen());
        QCOMPARE(stage().host.closings, 1);
    }

    void itLiesInTheMiddleOfItsWindowWhichIsDimmed()
    {
        openOn(Screen::uninstall());
        QWindow* parent = stage().mainWindow().window();
        parent->setPosition(150, 130);
        open(Message::Kind::Alert, parent);
        QVERIFY((window().geometry().center() - parent->geometry().center()).manhattanLength() <= 3);
        QCOMPARE(parent->property("dimmed").toBool(), true);
        window().close();
        QTRY_VERIFY(!_message->isOpen());
        QTRY_COMPARE(parent->property("dimmed").toBool(), false);
    }

    void theButtonGoesOn()
    {
        start();
        open(Message::Kind::Question);
        QVERIFY(_message->isOpen());
        click(u"goOn"_s);
        QTRY_COMPARE(_answers, QList{true});
    }

    void keysAnswer_data()
    {
        QTest::addColumn<bool>("question");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<bool>("answer");
        QTest::newRow("question, Return") << true << Qt::Key_Return << true;
        QTest::newRow("question, Escape") << true << Qt::Key_Escape << false;
        QTest::newRow("alert, Return") << false << Qt::Key_Return << true;
        QTest::newRow("alert, Escape") << false << Qt::Key_Escape << true;
    }

    void keysAnswer()
    {
        QFETCH(bool, question);
        QFETCH(Qt::Key, key);
        QFETCH(bool, answer);
        start();
        open(question ? Message::Kind::Question : Message::Kind::Alert);
        press(key);
        QTRY_COMPARE(_answers, QList{answer});
    }

    void closingTheWindowLeavesTheQuestion()
    {
        start();
        open(Message::Kind::Question);
        click(u"close"_s);
        QTRY_COMPARE(_answers, QList{false});
    }

    void itBelongsToTheWindowInUse()
    {
        start();
        openWindow();
        QWindow& front = window();
        open(Message::Kind::Alert, &front);
        QCOMPARE(window().transientParent(), &front);
        _message.reset();
    }

    void deletingItAnswersNobody()
    {
        start();
        open(Message::Kind::Question);
        _message.reset();
        QCoreApplication::processEvents();
        QVERIFY(_answers.isEmpty());
    }
};

FERROBANK_TEST_WITH_WINDOWS(MessageTest)
#include "MessageTest.moc"
