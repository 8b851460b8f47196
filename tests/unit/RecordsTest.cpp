#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/CLI/DecodingError.h"
#include "Ferrobank/CLI/DriveStatus.h"
#include "Ferrobank/CLI/JsonRecord.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <limits>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

/// A complete document with other text for one key; no text leaves the key out.
QByteArray statusWith(const QByteArray& key, const QByteArray& value)
{
    QList<std::pair<QByteArray, QByteArray>> members{
        {"installed", "true"}, {"mounted", "true"},   {"mountpoint", "\"/home/ann/Ferrobank\""},
        {"volume_used", "12"}, {"store_bytes", "34"}, {"saved", "56"},
        {"log", "\"/log\""}};
    QByteArrayList texts;
    bool replaced = false;
    for (const auto& [name, text] : members) {
        const QByteArray& chosen = name == key ? value : text;
        replaced = replaced || name == key;
        if (!chosen.isEmpty()) {
            texts.append('"' + name + "\":" + chosen);
        }
    }
    if (!replaced && !key.isEmpty()) {
        texts.append('"' + key + "\":" + value);
    }
    return '{' + texts.join(',') + '}';
}

} // namespace

class RecordsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void statusDecodesEveryKey()
    {
        const auto status = DriveStatus::decode(
            R"({"installed":true,"mounted":false,"mountpoint":"/home/ann/Ferrobank","volume_used":12,
                "store_bytes":34,"saved":56,"attach_error":"no loop device","update_pending":true,
                "log":"/home/ann/log"})");
        const DriveStatus expected{
            true, false, u"/home/ann/Ferrobank"_s, 12, 34, 56, u"no loop device"_s, true, u"/home/ann/log"_s};
        QCOMPARE(status, expected);
    }

    void textBehindAZeroByteIsNoPartOfOneObject_data()
    {
        QTest::addColumn<QByteArray>("tail");
        QTest::newRow("zero byte") << QByteArray("\0", 1);
        QTest::newRow("words") << QByteArray("\0drive: ok", 10);
        QTest::newRow("another object") << QByteArray("\0{}", 3);
        QTest::newRow("line break first") << QByteArray("\n\0x", 3);
        QTest::newRow("line break behind") << QByteArray("\0\n", 2);
    }

    void textBehindAZeroByteIsNoPartOfOneObject()
    {
        QFETCH(const QByteArray, tail);
        const QByteArray whole = statusWith({}, {});
        QCOMPARE(DriveStatus::decode(whole + '\n').log, u"/log"_s);
        QVERIFY_THROWS_EXCEPTION(DecodingError, DriveStatus::decode(whole + tail));
        QVERIFY_THROWS_EXCEPTION(DecodingError, DriveStatus::decode(statusWith("log", "\"a" + tail + "b\"")));
    }

    void statusWithOnlyTheRequiredKeysHasNoOptionalOnes()
    {
        const auto status =
            DriveStatus::decode(R"({"installed":false,"mounted":false,"mountpoint":"","log":""})");
        QCOMPARE(status, DriveStatus());
    }

    void nullIsAbsentForOptionalKeys_data()
    {
        QTest::addColumn<QByteArray>("key");
        for (const char* key : {"volume_used", "store_bytes", "saved", "attach_error", "update_pending"}) {
            QTest::addRow("%s", key) << QByteArray(key);
        }
    }

    void nullIsAbsentForOptionalKeys()
    {
        QFETCH(QByteArray, key);
        const auto status = DriveStatus::decode(statusWith(key, "null"));
        QVERIFY(key != "volume_used" || !status.volume_used);
        QVERIFY(key != "store_bytes" || !status.store_bytes);
        QVERIFY(key != "saved" || !status.saved);
        QVERIFY(!status.attach_error);
        QVERIFY(!status.update_pending);
    }

    void statusWithoutARequiredKeyFails_data()
    {
        QTest::addColumn<QByteArray>("key");
        for (const char* key : {"installed", "mounted", "mountpoint", "log"}) {
            QTest::addRow("%s", key) << QByteArray(key);
        }
    }

    void statusWithoutARequiredKeyFails()
    {
        QFETCH(QByteArray, key);
        QVERIFY_THROWS_EXCEPTION(DecodingError, static_cast<void>(DriveStatus::decode(statusWith(key, {}))));
        QVERIFY_THROWS_EXCEPTION(DecodingError,
                                 static_cast<void>(DriveStatus::decode(statusWith(key, "null"))));
    }

    void statusWithAWrongTypeFails_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("number for a boolean") << QByteArray("installed") << QByteArray("1");
        QTest::newRow("text for a boolean") << QByteArray("mounted") << QByteArray("\"true\"");
        QTest::newRow("number for a text") << QByteArray("mountpoint") << QByteArray("7");
        QTest::newRow("object for a text") << QByteArray("log") << QByteArray("{\"log\":\"x\"}");
        QTest::newRow("array for a text") << QByteArray("attach_error") << QByteArray("[\"x\"]");
        QTest::newRow("text for a size") << QByteArray("saved") << QByteArray("\"12\"");
        QTest::newRow("boolean for a size") << QByteArray("saved") << QByteArray("true");
        QTest::newRow("number for an optional boolean") << QByteArray("update_pending") << QByteArray("0");
    }

    void statusWithAWrongTypeFails()
    {
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, value);
        QVERIFY_THROWS_EXCEPTION(DecodingError,
                                 static_cast<void>(DriveStatus::decode(statusWith(key, value))));
    }

    void wholeSizesDecodeExactly_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<quint64>("value");
        constexpr quint64 kMost = std::numeric_limits<quint64>::max();
        QTest::newRow("zero") << QByteArray("0") << quint64{0};
        QTest::newRow("minus zero") << QByteArray("-0") << quint64{0};
        QTest::newRow("zero as a fraction") << QByteArray("0.000") << quint64{0};
        QTest::newRow("zero with an exponent") << QByteArray("0e77") << quint64{0};
        QTest::newRow("fraction of zeros") << QByteArray("1.0") << quint64{1};
        QTest::newRow("exponent") << QByteArray("1e3") << quint64{1000};
        QTest::newRow("exponent with a plus") << QByteArray("1E+3") << quint64{1000};
        QTest::newRow("fraction and exponent") << QByteArray("12.345e3") << quint64{12345};
        QTest::newRow("negative exponent") << QByteArray("1200e-2") << quint64{12};
        QTest::newRow("above 2^53") << QByteArray("9007199254740993.0") << quint64{9007199254740993U};
        QTest::newRow("2^63") << QByteArray("9223372036854775808") << quint64{9223372036854775808U};
        QTest::newRow("2^64 - 1") << QByteArray("18446744073709551615") << kMost;
        QTest::newRow("2^64 - 1 with an exponent") << QByteArray("1.8446744073709551615e19") << kMost;
        QTest::newRow("2^64 - 1 with a fraction") << QByteArray("18446744073709551615.0") << kMost;
    }

    void wholeSizesDecodeExactly()
    {
        QFETCH(QByteArray, text);
        QFETCH(quint64, value);
        const auto status = DriveStatus::decode(statusWith("saved", text));
        QCOMPARE(status.saved, std::optional(value));
    }

    void otherSizesFailTheWholeRecord_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char* text :
             {"-1", "-1.0", "-9223372036854775809", "1.5", "1e-1", "0.1", "18446744073709551616",
              "18446744073709551615.5", "1e20", "1e300", "1e99999999999999999999", "1e-99999999999999999999"})
        {
            QTest::addRow("%s", text) << QByteArray(text);
        }
    }

    void otherSizesFailTheWholeRecord()
    {
        QFETCH(QByteArray, text);
        QVERIFY_THROWS_EXCEPTION(DecodingError,
                                 static_cast<void>(DriveStatus::decode(statusWith("volume_used", text))));
    }

    void exponentsBeyondAnyIntegerAreNoCounts()
    {
        QVERIFY(!wholeNumber("1e99999999999999999999"));
        QVERIFY(!wholeNumber("1e-99999999999999999999"));
        QVERIFY(!wholeNumber("10e9223372036854775807"));
        QCOMPARE(wholeNumber("0e99999999999999999999"), std::optional<quint64>(0));
    }

    void unknownKeysAreIgnoredHoweverDeep()
    {
        const auto status = DriveStatus::decode(
            R"({"extra":{"installed":false,"list":[{"log":1},[2]]},"installed":true,"mounted":true,
                "mountpoint":"/m","log":"/l","more":[{"mounted":false}]})");
        QVERIFY(status.installed);
        QVERIFY(status.mounted);
        QCOMPARE(status.log, u"/l"_s);
    }

    void keysAreMatchedExactly()
    {
        QVERIFY_THROWS_EXCEPTION(DecodingError,
                                 static_cast<void>(DriveStatus::decode(
                                     R"({"Installed":true,"mounted":true,"mountpoint":"","log":""})")));
    }

    void ofEqualKeysTheLastCounts()
    {
        const auto status = DriveStatus::decode(
            R"({"installed":"wrong","mounted":true,"mountpoint":"","log":"","installed":true,"saved":1,"saved":null})");
        QVERIFY(status.installed);
        QVERIFY(!status.saved);
    }

    void whatIsNotOneObjectFails_data()
    {
        QTest::addColumn<QByteArray>("text");
        const QByteArray good = statusWith({}, {});
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("blank") << QByteArray(" \n");
        QTest::newRow("text after it") << good + " x";
        QTest::newRow("a second object") << good + good;
        QTest::newRow("in an array") << '[' + good + ']';
        QTest::newRow("a bare text") << QByteArray("\"x\"");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("cut off") << good.chopped(1);
        QTest::newRow("a trailing comma") << good.chopped(1) + ",}";
        QTest::newRow("not JSON") << QByteArray("drive is busy");
        QTest::newRow("a line break in a text") << statusWith("log", "\"a\nb\"");
    }

    void whatIsNotOneObjectFails()
    {
        QFETCH(QByteArray, text);
        QVERIFY_THROWS_EXCEPTION(DecodingError, static_cast<void>(DriveStatus::decode(text)));
    }

    void blanksAroundTheObjectAreFine()
    {
        QCOMPARE(DriveStatus::decode(" \r\n" + statusWith({}, {}) + "\n\n").saved,
                 std::optional<quint64>(56));
    }

    void deepNestingNeitherCrashesNorCounts()
    {
        constexpr int kDeep = 200'000;
        const QByteArray nested = QByteArray(kDeep, '[') + QByteArray(kDeep, ']');
        QVERIFY(DriveStatus::decode(statusWith("extra", nested)).installed);
        QVERIFY_THROWS_EXCEPTION(DecodingError,
                                 static_cast<void>(DriveStatus::decode(QByteArray(kDeep, '['))));
    }

    void invalidUtf8IsReplacedNotRefused()
    {
        const auto status = DriveStatus::decode(statusWith("log", "\"/l\xff\xc3(g\""));
        QCOMPARE(status.log, u"/l\uFFFD\uFFFD(g"_s);
    }

    void textsKeepEveryCharacter()
    {
        const auto status = DriveStatus::decode(statusWith("attach_error", R"("\u0000 \ud83d\ude00 ü \n")"));
        QCOMPARE(status.attach_error, std::optional(QStringLiteral(u"\0 \U0001F600 ü \n")));
    }

    void checkItemDecodesWithoutDetail()
    {
        const auto item = CheckItem::decode(
            R"({"id":"drive","title":"T","state":"fail","fix":"Do it.","action":"restart"})");
        CheckItem expected;
        expected.id = u"drive"_s;
        expected.title = u"T"_s;
        expected.state = CheckItem::State::Fail;
        expected.fix = u"Do it."_s;
        expected.action = FixAction::Restart;
        QCOMPARE(item, expected);
        QVERIFY(!item.detail);
    }

    void nullIsAbsentInCheckItems()
    {
        const auto item = CheckItem::decode(
            R"({"id":"a","title":"b","state":"pass","detail":null,"fix":null,"action":null,"extra":1})");
        QVERIFY(!item.detail);
        QVERIFY(!item.fix);
        QVERIFY(!item.action);
    }

    void everyStateHasItsExactWord_data()
    {
        using State = CheckItem::State;
        QTest::addColumn<QString>("word");
        QTest::addColumn<State>("state");
        QTest::newRow("pending") << u"pending"_s << State::Pending;
        QTest::newRow("running") << u"running"_s << State::Running;
        QTest::newRow("awaitingUser") << u"awaitingUser"_s << State::AwaitingUser;
        QTest::newRow("pass") << u"pass"_s << State::Pass;
        QTest::newRow("fail") << u"fail"_s << State::Fail;
        QTest::newRow("skipped") << u"skipped"_s << State::Skipped;
    }

    void everyStateHasItsExactWord()
    {
        QFETCH(QString, word);
        QFETCH(CheckItem::State, state);
        QCOMPARE(checkStateFromRawValue(word), std::optional(state));
        QCOMPARE(rawValue(state), word);
        const auto item =
            CheckItem::decode(R"({"id":"a","title":"b","state":)" + ('"' + word.toUtf8() + "\"}"));
        QCOMPARE(item.state, state);
    }

    void everyActionHasItsExactWord_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<FixAction>("action");
        QTest::newRow("restart") << u"restart"_s << FixAction::Restart;
        QTest::newRow("login-items") << u"login-items"_s << FixAction::LoginItems;
        QTest::newRow("privacy-settings") << u"privacy-settings"_s << FixAction::PrivacySettings;
        QTest::newRow("storage-settings") << u"storage-settings"_s << FixAction::StorageSettings;
    }

    void everyActionHasItsExactWord()
    {
        QFETCH(QString, word);
        QFETCH(FixAction, action);
        QCOMPARE(fixActionFromRawValue(word), std::optional(action));
        QCOMPARE(rawValue(action), word);
    }

    void wordsThatAreNoStateFailTheItem_data()
    {
        QTest::addColumn<QByteArray>("state");
        for (const char* state : {"\"awaiting_user\"", "\"Pass\"", "\"\"", "\"pass \"", "null", "3"}) {
            QTest::addRow("%s", state) << QByteArray(state);
        }
    }

    void wordsThatAreNoStateFailTheItem()
    {
        QFETCH(QByteArray, state);
        QVERIFY_THROWS_EXCEPTION(DecodingError, static_cast<void>(CheckItem::decode(
                                                    R"({"id":"a","title":"b","state":)" + state + '}')));
    }

    void wordsThatAreNoActionFailTheItem_data()
    {
        QTest::addColumn<QByteArray>("action");
        for (const char* action : {"\"loginItems\"", "\"Restart\"", "\"reboot\"", "\"\"", "false"}) {
            QTest::addRow("%s", action) << QByteArray(action);
        }
    }

    void wordsThatAreNoActionFailTheItem()
    {
        QFETCH(QByteArray, action);
        QVERIFY_THROWS_EXCEPTION(DecodingError,
                                 static_cast<void>(CheckItem::decode(
                                     R"({"id":"a","title":"b","state":"pass","action":)" + action + '}')));
    }

    void checkItemsWithoutIdTitleOrStateFail_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("no id") << QByteArray(R"({"title":"b","state":"pass"})");
        QTest::newRow("no title") << QByteArray(R"({"id":"a","state":"pass"})");
        QTest::newRow("no state") << QByteArray(R"({"id":"a","title":"b"})");
        QTest::newRow("id is a number") << QByteArray(R"({"id":1,"title":"b","state":"pass"})");
        QTest::newRow("an empty line") << QByteArray();
    }

    void checkItemsWithoutIdTitleOrStateFail()
    {
        QFETCH(QByteArray, text);
        QVERIFY_THROWS_EXCEPTION(DecodingError, static_cast<void>(CheckItem::decode(text)));
    }

    void itemsThatDifferOnlyInDetailAreTheSameCheckButNotEqual()
    {
        const auto one = CheckItem::decode(R"({"id":"a","title":"b","state":"pass","detail":"x"})");
        const auto other = CheckItem::decode(R"({"id":"a","title":"b","state":"pass"})");
        QVERIFY(one != other);
        QCOMPARE(one.id, other.id);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(RecordsTest)
#include "RecordsTest.moc"
