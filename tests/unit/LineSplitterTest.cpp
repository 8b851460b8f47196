#include "Ferrobank/CLI/LineSplitter.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using ferrobank::LineSplitter;

namespace {

QByteArrayList linesSoFar(LineSplitter& splitter)
{
    QByteArrayList lines;
    while (auto line = splitter.next()) {
        lines.append(*line);
    }
    return lines;
}

/// All lines of the pieces; the stream ends behind them.
QByteArrayList linesOf(const QByteArrayList& pieces)
{
    LineSplitter splitter;
    QByteArrayList lines;
    for (const QByteArray& piece : pieces) {
        splitter.append(piece);
        lines += linesSoFar(splitter);
    }
    splitter.end();
    return lines + linesSoFar(splitter);
}

} // namespace

class LineSplitterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void linesEndAtEveryKindOfBreak_data()
    {
        QTest::addColumn<QByteArrayList>("pieces");
        QTest::addColumn<QByteArrayList>("lines");
        using L = QByteArrayList;
        QTest::newRow("nothing") << L{} << L{};
        QTest::newRow("LF") << L{"a\nb\n"} << L{"a", "b"};
        QTest::newRow("CR LF") << L{"a\r\nb\r\n"} << L{"a", "b"};
        QTest::newRow("lone CR") << L{"a\rb\r"} << L{"a", "b"};
        QTest::newRow("mixed") << L{"a\rb\nc\r\nd"} << L{"a", "b", "c", "d"};
        QTest::newRow("no last break") << L{"a\nb"} << L{"a", "b"};
        QTest::newRow("empty lines") << L{"\n\r\n\ra\n\n"} << L{"", "", "", "a", ""};
        QTest::newRow("LF CR is two breaks") << L{"a\n\rb"} << L{"a", "", "b"};
        QTest::newRow("CR CR LF is two breaks") << L{"a\r\r\nb"} << L{"a", "", "b"};
        QTest::newRow("in pieces") << L{"a", "b\nc", "", "d", "\n"} << L{"ab", "cd"};
        QTest::newRow("CR LF torn apart") << L{"a\r", "\nb\n"} << L{"a", "b"};
        QTest::newRow("CR LF torn apart at the end") << L{"a\r", "\n"} << L{"a"};
        QTest::newRow("CR, then another line") << L{"a\r", "b\n"} << L{"a", "b"};
        QTest::newRow("a break alone in a piece") << L{"a", "\n", "\n"} << L{"a", ""};
        QTest::newRow("a zero byte is no break") << L{QByteArray("a\0b\n", 4)} << L{QByteArray("a\0b", 3)};
    }

    void linesEndAtEveryKindOfBreak()
    {
        QFETCH(QByteArrayList, pieces);
        QFETCH(QByteArrayList, lines);
        QCOMPARE(linesOf(pieces), lines);
    }

    void anyTearingGivesTheSameLines()
    {
        const QByteArray text = "first\r\n\nthird \xc3\xa4\rfourth\n\r\nsixth\r\r\nlast";
        const QByteArrayList whole = linesOf({text});
        for (qsizetype i = 0; i <= text.size(); ++i) {
            for (qsizetype j = i; j <= text.size(); ++j) {
                QCOMPARE(linesOf({text.left(i), text.mid(i, j - i), text.mid(j)}), whole);
            }
        }
    }

    void aLineIsGivenAtItsBreakNotLater()
    {
        LineSplitter splitter;
        splitter.append("a\r");
        QCOMPARE(linesSoFar(splitter), QByteArrayList{"a"});
        splitter.append("b");
        QVERIFY(linesSoFar(splitter).isEmpty());
    }

    void theLongestLineIsKept()
    {
        const QByteArray longest(LineSplitter::kLongestLine, 'x');
        const QByteArrayList lines = linesOf({longest.left(5), longest.mid(5), "\nnext"});
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines[0], longest);
    }

    void longerLinesAreDroppedAndTheStreamGoesOn()
    {
        const QByteArray piece(LineSplitter::kLongestLine / 2, 'x');
        QCOMPARE(linesOf({"a\n", piece, piece, "x", piece, "tail\nb\n"}), (QByteArrayList{"a", "b"}));
        QCOMPARE(linesOf({piece, piece, "x"}), QByteArrayList{});
    }

    void manyReturnsBeforeALineFeedAreQuick()
    {
        constexpr int kMany = 400'000;
        LineSplitter splitter;
        splitter.append(QByteArray(kMany, '\r') + '\n');
        QCOMPARE(linesSoFar(splitter).size(), kMany);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(LineSplitterTest)
#include "LineSplitterTest.moc"
