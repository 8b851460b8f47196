#include "Platform/linux/PropertyList.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

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
    void binaryFormIsRead();
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

void PropertyListTest::binaryFormIsRead()
{
    // {"t": "x"} as plutil writes it.
    const auto bytes = QByteArray::fromHex("62706c6973743030d1010251745178080b0d000000000000"
                                           "010100000000000000030000000000000000000000000000000f");
    const auto list = PropertyList::parse({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    QVERIFY(list.has_value());
    QVERIFY(list->text("t") == "x");
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
