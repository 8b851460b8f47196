#include "Platform/linux/appearance/XSettings.h"

#include "Platform/linux/appearance/GtkNames.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

/// Writes settings as a daemon does.
class Writer {
public:
    explicit Writer(bool bigEndian = false) : _big(bigEndian) {}

    void integer(const QByteArray& name, qint32 value)
    {
        head(0, name);
        number(quint32(value), 4);
    }

    void text(const QByteArray& name, const QByteArray& value)
    {
        head(1, name);
        number(quint32(value.size()), 4);
        padded(value);
    }

    void colour(const QByteArray& name)
    {
        head(2, name);
        number(0, 4);
        number(0, 4);
    }

    [[nodiscard]] QByteArray done()
    {
        const QByteArray settings = std::exchange(_bytes, {});
        _bytes.append(_big ? '\1' : '\0').append(3, '\0');
        number(7, 4);
        number(_count, 4);
        return _bytes + settings;
    }

private:
    void head(char type, const QByteArray& name)
    {
        ++_count;
        _bytes.append(type).append('\0');
        number(quint32(name.size()), 2);
        padded(name);
        number(1, 4);
    }

    void number(quint32 value, int bytes)
    {
        for (int index = 0; index < bytes; ++index) {
            const int shift = 8 * (_big ? bytes - 1 - index : index);
            _bytes.append(char(value >> shift));
        }
    }

    void padded(const QByteArray& text) { _bytes.append(text).append((4 - text.size() % 4) % 4, '\0'); }

    QByteArray _bytes;
    quint32 _count = 0;
    bool _big;
};

QByteArray usual(bool bigEndian)
{
    Writer writer(bigEndian);
    writer.text("Net/ThemeName", "Adwaita-dark");
    writer.colour("Gtk/Colour");
    writer.integer("Gdk/WindowScalingFactor", 2);
    writer.text("Gtk/FontName", "Noto Sans Semi-Bold 10.5");
    return writer.done();
}

} // namespace

/// What the settings daemons of X desktops publish, and what it means.
class XSettingsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void settingsAreReadInEitherByteOrder()
    {
        for (const bool big : {false, true}) {
            const XSettingsValues values = decodeXSettings(usual(big));
            QCOMPARE(values.size(), 3);
            QCOMPARE(std::get<int>(values["Gdk/WindowScalingFactor"]), 2);
            QCOMPARE(std::get<QByteArray>(values["Net/ThemeName"]), QByteArray("Adwaita-dark"));
        }
    }

    void everyBeginningOfThemIsHarmless()
    {
        const QByteArray whole = usual(false);
        for (qsizetype length = 0; length < whole.size(); ++length) {
            QVERIFY(decodeXSettings(whole.first(length)).size() < 3 || length + 4 > whole.size());
        }
        QByteArray boastful = whole;
        boastful[8] = char(0xff);
        boastful[11] = char(0xff);
        QCOMPARE(decodeXSettings(boastful).size(), 3);
        QByteArray long_ = whole;
        long_[14] = char(0xff);
        long_[15] = char(0xff);
        QVERIFY(decodeXSettings(long_).isEmpty());
    }

    void theThemesNameTellsDarkness_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<bool>("dark");
        QTest::newRow("Adwaita") << u"Adwaita"_s << false;
        QTest::newRow("Adwaita-dark") << u"Adwaita-dark"_s << true;
        QTest::newRow("Mint") << u"Mint-Y-Dark-Aqua"_s << true;
        QTest::newRow("MATE") << u"BlackMATE"_s << true;
        QTest::newRow("variant") << u"Adwaita:dark"_s << true;
        QTest::newRow("inverse") << u"HighContrastInverse"_s << true;
        QTest::newRow("dark bar only") << u"Arc-Darker"_s << false;
        QTest::newRow("TraditionalOk") << u"TraditionalOk"_s << false;
        QTest::newRow("Greybird") << u"Greybird-dark"_s << true;
    }

    void theThemesNameTellsDarkness()
    {
        QFETCH(const QString, theme);
        QFETCH(const bool, dark);
        QCOMPARE(isDarkGtkTheme(theme), dark);
    }

    void fontsComeWithoutTheirStyle()
    {
        QCOMPARE(gtkFont(u"Noto Sans Semi-Bold 10.5"_s), (GtkFont{u"Noto Sans"_s, 10.5}));
        QCOMPARE(gtkFont(u"Cantarell 11"_s), (GtkFont{u"Cantarell"_s, 11}));
        QCOMPARE(gtkFont(u"Source Code Pro"_s), (GtkFont{u"Source Code Pro"_s, 0}));
        QCOMPARE(gtkFont(u"Sans, 10"_s), (GtkFont{u"Sans"_s, 10}));
        QVERIFY(!gtkFont(u"12"_s));
        QVERIFY(!gtkFont(QString()));
    }

    void settingsBecomeWishes()
    {
        const auto wishes = wishesFrom(decodeXSettings(usual(false)));
        QCOMPARE(wishes.dark, std::optional(true));
        QCOMPARE(wishes.fontFamily, u"Noto Sans"_s);
        QCOMPARE(wishes.fontSize, 10.5);
        QCOMPARE(wishesFrom({}), DesktopAppearance::Wishes());
    }

    void windowsAreEnlargedWhereTheResolutionDoesNotTellIt()
    {
        const XSettingsValues doubled{{"Gdk/WindowScalingFactor", 2}};
        QCOMPARE(windowScale(doubled, 96), 2);
        QCOMPARE(windowScale(doubled, 120), 2);
        QCOMPARE(windowScale(doubled, 192), 1);
        QCOMPARE(windowScale({{"Gdk/WindowScalingFactor", 1}}, 96), 1);
        QCOMPARE(windowScale({{"Gdk/WindowScalingFactor", 400}}, 96), 1);
        QCOMPARE(windowScale({}, 96), 1);
    }
};

FERROBANK_TEST(XSettingsTest)
#include "XSettingsTest.moc"
