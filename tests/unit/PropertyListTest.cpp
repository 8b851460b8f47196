#include "Platform/linux/PropertyList.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <limits>
#include <string>
#include <string_view>

namespace ferrobank {

namespace {

std::string documentOf(std::string_view body)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + std::string(body) +
           "</dict></plist>";
}

} // namespace

class PropertyListTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valuesAreReadByTheirType();
    void valueOfAnotherTypeReadsAsNone();
    void arrayWithSomethingElseThanTextsReadsAsNone();
    void missingKeyReadsAsNone();
    void escapedLettersAreDecoded();
    void wholeNumbersAreRead();
    void keysAndValuesComeInPairs_data();
    void keysAndValuesComeInPairs();
    void declaredNamesAreRefused();
    void whatIsNoDictionaryIsRefused_data();
    void whatIsNoDictionaryIsRefused();
    void missingFileIsRefused();
};

void PropertyListTest::valuesAreReadByTheirType()
{
    const auto list = PropertyList::parse(
        documentOf("<key>t</key><string>word</string><key>yes</key><true/><key>no</key><false/>"
                   "<key>a</key><array><string>one</string><string>two</string></array>"
                   "<key>d</key><dict><key>inner</key><false/></dict>"));
    QVERIFY(list.has_value());
    QVERIFY(list->text("t") == "word");
    QVERIFY(list->flag("yes") == true);
    QVERIFY(list->flag("no") == false);
    QVERIFY(list->flag("d", "inner") == false);
    QVERIFY(list->texts("a") == (std::vector<std::string>{"one", "two"}));
}

void PropertyListTest::valueOfAnotherTypeReadsAsNone()
{
    const auto list =
        PropertyList::parse(documentOf("<key>t</key><string>word</string><key>yes</key><true/>"));
    QVERIFY(list.has_value());
    QVERIFY(!list->text("yes"));
    QVERIFY(!list->flag("t"));
    QVERIFY(!list->flag("t", "yes"));
    QVERIFY(!list->texts("t"));
}

void PropertyListTest::arrayWithSomethingElseThanTextsReadsAsNone()
{
    const auto list = PropertyList::parse(
        documentOf("<key>a</key><array><string>one</string><integer>2</integer></array>"));
    QVERIFY(list.has_value());
    QVERIFY(!list->texts("a"));
}

void PropertyListTest::missingKeyReadsAsNone()
{
    const auto list = PropertyList::parse(documentOf(""));
    QVERIFY(list.has_value());
    QVERIFY(!list->text("t"));
    QVERIFY(!list->flag("t"));
    QVERIFY(!list->flag("t", "u"));
    QVERIFY(!list->texts("t"));
}

void PropertyListTest::escapedLettersAreDecoded()
{
    const auto list = PropertyList::parse(documentOf("<key>t</key><string>a &amp; ü &lt;b&gt;</string>"));
    QVERIFY(list.has_value());
    QVERIFY(list->text("t") == "a & ü <b>");
}

void PropertyListTest::wholeNumbersAreRead()
{
    const auto list = PropertyList::parse(documentOf(
        "<key>n</key><integer>86400</integer><key>large</key><integer>18446744073709551615</integer>"
        "<key>less</key><integer>-1</integer><key>more</key><integer>18446744073709551616</integer>"
        "<key>word</key><integer>7 days</integer><key>none</key><integer/>"));
    QVERIFY(list.has_value());
    QVERIFY(list->number("n") == 86400U);
    QVERIFY(list->number("large") == std::numeric_limits<std::uint64_t>::max());
    QVERIFY(!list->number("less"));
    QVERIFY(!list->number("more"));
    QVERIFY(!list->number("word"));
    QVERIFY(!list->number("none"));
}

void PropertyListTest::keysAndValuesComeInPairs_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("a key without a value") << QByteArray("<key>a</key>");
    QTest::newRow("two keys") << QByteArray("<key>a</key><key>b</key><true/>");
    QTest::newRow("a value without a key") << QByteArray("<true/>");
    QTest::newRow("a key in an array") << QByteArray("<key>a</key><array><key>b</key></array>");
    QTest::newRow("a second root") << QByteArray("</dict><dict>");
    QTest::newRow("deeper than anybody writes") << QByteArray(
        "<key>a</key>" + QByteArray("<array>").repeated(40) + QByteArray("</array>").repeated(40));
}

void PropertyListTest::keysAndValuesComeInPairs()
{
    QFETCH(QByteArray, body);
    QVERIFY(!PropertyList::parse(documentOf(body.toStdString())));
}

void PropertyListTest::declaredNamesAreRefused()
{
    const std::string document =
        R"(<!DOCTYPE plist [<!ENTITY a "aaaa">]><plist version="1.0"><dict><key>t</key>)"
        "<string>&a;</string></dict></plist>";
    QVERIFY(!PropertyList::parse(document));
}

void PropertyListTest::whatIsNoDictionaryIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("words") << QByteArray("not a property list at all");
    QTest::newRow("an array") << QByteArray("<plist version=\"1.0\"><array/></plist>");
    QTest::newRow("cut off") << QByteArray("<plist version=\"1.0\"><dict><key>Label</key><string>x");
    QTest::newRow("binary magic alone") << QByteArray("bplist00");
    QTest::newRow("too large") << QByteArray::fromStdString(documentOf(std::string(70000, ' ')));
    QTest::newRow("zeros") << QByteArray(64, '\0');
}

void PropertyListTest::whatIsNoDictionaryIsRefused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!PropertyList::parse(bytes.toStdString()));
}

void PropertyListTest::missingFileIsRefused()
{
    QVERIFY(!PropertyList::read("/nonexistent/Info.plist"));
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::PropertyListTest)
#include "PropertyListTest.moc"
