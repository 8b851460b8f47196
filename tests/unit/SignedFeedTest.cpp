#include "Platform/linux/updates/feed/SignedFeed.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "support/TestProgram.h"
#include "support/updates/SigningKey.h"

#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::updates;

namespace {

constexpr auto kKey = "rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs=";
constexpr auto kGood =
    "EIawm2YkDZ2gBfkEMF2+1VuuTeXnCGZOdnMdVgPPvDZioq7bvDayXqKkIIzSjKMmeFdcFJOHdnba5ZV60+gPBw==";
constexpr auto kBad =
    "wTcpXCgWoa4NrJpsfzS61FXJIbv963//12U2ef9xstzVOLPHYK2N4/ojgpDV5N1/NGG1uWMBgK+kEWp0Z5zMDQ==";

bool haveSigned(const TrustedKeys& keys, std::string_view bytes, std::string_view signature)
{
    return keys.haveSigned(std::as_bytes(std::span(bytes)), signature);
}

bool isRefused(const QByteArray& file, const TrustedKeys& keys)
{
    try {
        std::ignore = verifiedFeedContent(file.toStdString(), keys);
        return false;
    } catch (const UpdateFailure& failure) {
        return failure.problem() == Problem::Signature;
    }
}

} // namespace

class SignedFeedTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void publishedVectorsVerifyAndFailAsTheyShould()
    {
        const TrustedKeys keys({kKey});
        QVERIFY(haveSigned(keys, "Hello World!\n", kGood));
        QVERIFY(!haveSigned(keys, "Hello World!\n\n", kGood));
        QVERIFY(!haveSigned(keys, "Hello World!\n", kBad));
    }

    void signatureIsTrimmedButOtherwiseReadStrictly()
    {
        const TrustedKeys keys({kKey});
        const std::string good = kGood;
        QVERIFY(haveSigned(keys, "Hello World!\n", " \t" + good + "\r\n"));
        QVERIFY(!haveSigned(keys, "Hello World!\n", ""));
        QVERIFY(!haveSigned(keys, "Hello World!\n", "   "));
        QVERIFY(!haveSigned(keys, "Hello World!\n", good.substr(0, good.size() - 2)));
        QVERIFY(!haveSigned(keys, "Hello World!\n", good.substr(0, 20) + " " + good.substr(20)));
        QVERIFY(!haveSigned(keys, "Hello World!\n", good + good));
        QVERIFY(!haveSigned(keys, "Hello World!\n", "not base64 at all"));
        QVERIFY(!haveSigned(keys, "Hello World!\n", kKey));
    }

    void eitherOfTwoKeysMaySign()
    {
        const SigningKey spare;
        const TrustedKeys keys({kKey, spare.publicBase64()});
        QVERIFY(haveSigned(keys, "Hello World!\n", kGood));
        QVERIFY(haveSigned(keys, "text", spare.sign("text")));
        QVERIFY(!haveSigned(TrustedKeys({kKey}), "text", spare.sign("text")));
        QVERIFY(!haveSigned(TrustedKeys(), "Hello World!\n", kGood));
    }

    void oneOfSeveralSignaturesIsEnough()
    {
        const SigningKey old;
        const SigningKey fresh;
        const std::string both = old.sign("text") + " " + fresh.sign("text");
        QVERIFY(haveSigned(TrustedKeys({old.publicBase64()}), "text", both));
        QVERIFY(haveSigned(TrustedKeys({fresh.publicBase64()}), "text", both));
        QVERIFY(!haveSigned(TrustedKeys({SigningKey().publicBase64()}), "text", both));
        QVERIFY(!haveSigned(TrustedKeys({old.publicBase64()}), "text", both + " rubbish"));
        std::string many;
        for (int i = 0; i < 5; ++i)
            many += old.sign("text") + " ";
        QVERIFY(!haveSigned(TrustedKeys({old.publicBase64()}), "text", many));

        const QByteArray content = "<a/>";
        const QByteArray block =
            "<!-- sparkle-signatures:\nedSignature: " + QByteArray::fromStdString(old.sign(content)) +
            "\nedSignature: " + QByteArray::fromStdString(fresh.sign(content)) + "\nlength: 4\n-->\n";
        for (const SigningKey* key : {&old, &fresh})
            QVERIFY(!isRefused(content + block, TrustedKeys({key->publicBase64()})));
        QVERIFY(isRefused(content + block, TrustedKeys({SigningKey().publicBase64()})));
        QVERIFY(isRefused("<b/>" + block, TrustedKeys({old.publicBase64()})));
    }

    void sameKeyTwiceIsOneKey()
    {
        QCOMPARE(TrustedKeys({kKey, kKey}).distinct(), 1U);
        QCOMPARE(TrustedKeys({kKey, SigningKey().publicBase64()}).distinct(), 2U);
    }

    void damagedKeyIsAnErrorAndNotOneKeyLess()
    {
        for (const char* text : {"", "AAAA", "rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs", "%%%%"})
            QVERIFY_THROWS_EXCEPTION(UpdateFailure, TrustedKeys({kKey, text}));
    }

    void contentOfASignedFeedIsEverythingBeforeTheBlock()
    {
        const SigningKey key;
        const TrustedKeys keys({key.publicBase64()});
        const QByteArray content = "<rss><!-- a comment --></rss>\n";
        const std::string file = signedFeed(content, key).toStdString();
        QCOMPARE(verifiedFeedContent(file, keys), std::string_view(file).substr(0, 30));
        QVERIFY(!isRefused(signedFeed(content, key) + " \r\n\t\n", keys));
    }

    void lastOfTwoBlocksCounts()
    {
        const SigningKey key;
        const SigningKey stranger;
        const TrustedKeys keys({key.publicBase64()});
        QVERIFY(!isRefused(signedFeed(signedFeed("<a/>", stranger), key), keys));
        QVERIFY(isRefused(signedFeed(signedFeed("<a/>", key), stranger), keys));
    }

    void changedFeedsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("file");
        const QByteArray block =
            "<!-- sparkle-signatures:\nedSignature: " + QByteArray(kGood) + "\nlength: 13\n-->\n";
        const QByteArray text = "Hello World!\n";
        const auto row = [&](const char* name, const QByteArray& file) { QTest::newRow(name) << file; };
        row("empty", "");
        row("no block", text);
        row("content changed", "Hallo World!\n" + block);
        row("content longer", text + "\n" + QByteArray(block));
        row("no terminator", text + QByteArray(block).replace("-->", ""));
        row("trailing bytes", text + block + "<rss/>");
        row("second comment behind", text + block + "<!-- -->");
        row("wrong length", text + QByteArray(block).replace("13", "12"));
        row("length with a sign", text + QByteArray(block).replace("13", "+13"));
        row("length with rubbish", text + QByteArray(block).replace("13", "13x"));
        row("length too long for any number",
            text + QByteArray(block).replace("13", "99999999999999999999999"));
        row("no length", text + QByteArray(block).replace("length: 13\n", ""));
        row("no signature",
            text + QByteArray(block).replace("edSignature: " + QByteArray(kGood) + "\n", QByteArray()));
        row("empty signature", text + QByteArray(block).replace(QByteArray(kGood), QByteArray("")));
        row("garbage signature", text + QByteArray(block).replace(QByteArray(kGood), QByteArray("garbage")));
        row("wrong signature", text + QByteArray(block).replace(QByteArray(kGood), QByteArray(kBad)));
        row("length twice", text + QByteArray(block).replace("length: 13\n", "length: 13\nlength: 13\n"));
        row("unknown line", text + QByteArray(block).replace("-->", "more: 1\n-->"));
        row("line without a colon", text + QByteArray(block).replace("-->", "more\n-->"));
        row("CR LF after the marker", text + QByteArray(block).replace("signatures:\n", "signatures:\r\n"));
        row("line endings changed", QByteArray(text + block).replace("\n", "\r\n"));
        row("only a block", QByteArray(block).replace("13", "0"));
    }

    void changedFeedsAreRefused()
    {
        QFETCH(QByteArray, file);
        QVERIFY(isRefused(file, TrustedKeys({kKey})));
    }

    void unchangedFeedOfTheSameFormIsAccepted()
    {
        const QByteArray block =
            "<!-- sparkle-signatures:\nedSignature: " + QByteArray(kGood) + "\nlength: 13\n-->\n";
        QVERIFY(!isRefused("Hello World!\n" + block, TrustedKeys({kKey})));
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(SignedFeedTest)
#include "SignedFeedTest.moc"
