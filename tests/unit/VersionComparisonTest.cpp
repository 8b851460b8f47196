#include "Platform/linux/updates/feed/VersionComparison.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using ferrobank::updates::compareVersions;

namespace {

char sign(std::string_view left, std::string_view right)
{
    const auto order = compareVersions(left, right);
    return order < 0 ? '<' : order > 0 ? '>' : '=';
}

} // namespace

class VersionComparisonTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void versionsAreOrderedAsTheFeedFormatSays_data()
    {
        QTest::addColumn<QByteArray>("left");
        QTest::addColumn<char>("order");
        QTest::addColumn<QByteArray>("right");
        const auto row = [](const char* left, char order, const char* right) {
            QTest::addRow("%s %c %s", left, order, right) << QByteArray(left) << order << QByteArray(right);
        };
        row("1.0", '=', "1.0.0");
        row("1.0", '<', "1.1");
        row("0.1", '>', "0.0.1");
        row("0.1", '<', "0.1.2");
        row("1.5.5-335d3e2", '=', "1.5.5-a655360");
        row("1.5-335d3e2", '=', "1.5.0-335d3e2");
        row("1.5.5", '<', "1.5.6a1");
        row("1.1.1.1818", '=', "1.1.1.1818.0");
        row("201210251627", '<', "201211051041");
        row("1.0rc", '<', "1.0");
        row("1.0b9", '<', "1.0b10");
        row("1.0b", '<', "1.0b2");
        row("0.9", '<', "1.0a1");
        row("1.1.1b2", '<', "1.1.2a1");
        row("1.0 (1234)", '<', "1.0 (1235)");
        row("3.3 (5847)", '=', "3.3.0 (5847)");
        row("1.0b1 (1234)", '<', "1.0 (1234)");
        row("1.0pre1", '=', "1.0.0pre1");
        row("", '=', "0.0");
        row("", '<', "1");
        row("01.002", '=', "1.2");
        row("99999999999999999999999998", '<', "99999999999999999999999999");
        row("18446744073709551616", '>', "18446744073709551615");
        row("1.0\xc3\xa9", '<', "1.0");
        row("-1", '=', "0");
    }

    void versionsAreOrderedAsTheFeedFormatSays()
    {
        QFETCH(QByteArray, left);
        QFETCH(char, order);
        QFETCH(QByteArray, right);
        QCOMPARE(sign(left.toStdString(), right.toStdString()), order);
        const char opposite = order == '<' ? '>' : order == '>' ? '<' : '=';
        QCOMPARE(sign(right.toStdString(), left.toStdString()), opposite);
    }

    void orderIsTransitiveOverEveryTripleOfOddTexts()
    {
        const std::vector<std::string_view> texts{
            "",    "1",    "1.",  ".1", "1..2", "1.0",  "1.0a", "1.0a1", "1a.0", "a",    "a1",    "1 a",
            "1 2", "1 .2", "1_2", "b",  "1-2",  "1.0b", "1.00", "10.0",  "(1)",  "1(1)", "1.0 1", "0.0.0"};
        for (const auto a : texts) {
            for (const auto b : texts) {
                for (const auto c : texts) {
                    if (compareVersions(a, b) <= 0 && compareVersions(b, c) <= 0)
                        QVERIFY2(compareVersions(a, c) <= 0,
                                 (std::string(a) + "|" + std::string(b) + "|" + std::string(c)).c_str());
                }
            }
        }
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(VersionComparisonTest)
#include "VersionComparisonTest.moc"
