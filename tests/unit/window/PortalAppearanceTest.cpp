#include "Platform/linux/appearance/PortalAppearance.h"

#include "support/TestProgram.h"

#include <QtDBus/QDBusArgument>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// What the settings portal's answers mean.
class PortalAppearanceTest : public QObject {
    Q_OBJECT

private:
    static PortalAppearance::Settings appearance(const QString& key, const QVariant& value)
    {
        return {{u"org.freedesktop.appearance"_s, {{key, value}}}};
    }

    static QVariant wrapped(const QVariant& value) { return QVariant::fromValue(QDBusVariant(value)); }

private Q_SLOTS:

    void noSettingsAreNoWishes()
    {
        QCOMPARE(PortalAppearance::wishesFrom({}, {}), DesktopAppearance::Wishes());
    }

    void theColourSchemeIsDarkLightOrNotTold()
    {
        const auto dark = [](uint scheme) {
            return PortalAppearance::wishesFrom(appearance(u"color-scheme"_s, scheme), {}).dark;
        };
        QCOMPARE(dark(0), std::optional<bool>());
        QCOMPARE(dark(1), std::optional(true));
        QCOMPARE(dark(2), std::optional(false));
        QCOMPARE(dark(77), std::optional<bool>());
    }

    void wrappedValuesAreUnwrapped()
    {
        const auto wishes =
            PortalAppearance::wishesFrom(appearance(u"color-scheme"_s, wrapped(wrapped(1U))), {});
        QCOMPARE(wishes.dark, std::optional(true));
    }

    void anAccentOfAnotherTypeIsNone()
    {
        QVERIFY(!PortalAppearance::wishesFrom(appearance(u"accent-color"_s, u"blue"_s), {}).accent);
    }

    void gnomeSwitchesMotionOff()
    {
        const auto reduced = [](const QVariant& enabled) {
            const PortalAppearance::Settings settings{
                {u"org.gnome.desktop.interface"_s, {{u"enable-animations"_s, enabled}}}};
            return PortalAppearance::wishesFrom(settings, {}).reducedMotion;
        };
        QVERIFY(reduced(false));
        QVERIFY(!reduced(true));
    }

    void kdeSwitchesMotionOffWithAFactorOfZero()
    {
        const auto reduced = [](const QVariant& factor) {
            const PortalAppearance::Settings settings{
                {u"org.kde.kdeglobals.KDE"_s, {{u"AnimationDurationFactor"_s, factor}}}};
            return PortalAppearance::wishesFrom(settings, {}).reducedMotion;
        };
        QVERIFY(reduced(u"0"_s));
        QVERIFY(reduced(0.0));
        QVERIFY(!reduced(u"1"_s));
        QVERIFY(!reduced(u"0.25"_s));
        QVERIFY(!reduced(u"fast"_s));
    }

    void contrastIsHighWhereAnyDesktopSaysSo()
    {
        QVERIFY(PortalAppearance::wishesFrom(appearance(u"contrast"_s, 1U), {}).highContrast);
        QVERIFY(!PortalAppearance::wishesFrom(appearance(u"contrast"_s, 0U), {}).highContrast);
        const PortalAppearance::Settings settings{
            {u"org.gnome.desktop.a11y.interface"_s, {{u"high-contrast"_s, true}}}};
        QVERIFY(PortalAppearance::wishesFrom(settings, u"GNOME"_s).highContrast);
    }

    void gnomesFontIsFollowedWithItsFactor()
    {
        const PortalAppearance::Settings settings{
            {u"org.gnome.desktop.interface"_s,
             {{u"font-name"_s, u"Cantarell Bold 11"_s}, {u"text-scaling-factor"_s, 1.5}}}};
        const auto wishes = PortalAppearance::wishesFrom(settings, u"ubuntu:GNOME"_s);
        QCOMPARE(wishes.fontFamily, u"Cantarell"_s);
        QCOMPARE(wishes.fontSize, 16.5);
    }

    void gnomesSettingsMeanNothingOnOtherDesktops()
    {
        const PortalAppearance::Settings settings{
            {u"org.gnome.desktop.interface"_s,
             {{u"font-name"_s, u"Cantarell 11"_s}, {u"gtk-theme"_s, u"Adwaita-dark"_s}}}};
        QCOMPARE(PortalAppearance::wishesFrom(settings, u"XFCE"_s), DesktopAppearance::Wishes());
        QCOMPARE(PortalAppearance::wishesFrom(settings, u"GNOME"_s).dark, std::optional(true));
    }

    void thePortalComesBeforeTheDisplay()
    {
        DesktopAppearance::Wishes portal;
        DesktopAppearance::Wishes display;
        display.dark = true;
        display.fontFamily = u"Sans"_s;
        QCOMPARE(PortalAppearance::joined(portal, display), display);
        portal.dark = false;
        QCOMPARE(PortalAppearance::joined(portal, display).dark, std::optional(false));
        QCOMPARE(PortalAppearance::joined(portal, display).fontFamily, u"Sans"_s);
        QCOMPARE(PortalAppearance::joined(portal, std::nullopt), portal);
    }
};

FERROBANK_TEST(PortalAppearanceTest)
#include "PortalAppearanceTest.moc"
