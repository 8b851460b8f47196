#include "Platform/linux/appearance/PortalAppearance.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusServiceWatcher>

#include <chrono>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr auto kService = "org.freedesktop.portal.Desktop"_L1;
constexpr auto kPath = "/org/freedesktop/portal/desktop"_L1;
constexpr auto kInterface = "org.freedesktop.portal.Settings"_L1;
constexpr auto kAppearance = "org.freedesktop.appearance"_L1;
constexpr auto kGnomeInterface = "org.gnome.desktop.interface"_L1;
constexpr auto kKdeGlobals = "org.kde.kdeglobals.KDE"_L1;
constexpr auto kPatience = 150ms;

// Values may be wrapped in one more variant, depending on the portal's version.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

// Three doubles from 0 to 1; anything outside means "no accent colour".
std::optional<QColor> colorFrom(const QVariant& value)
{
    if (!value.canConvert<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != "(ddd)"_L1) {
        return std::nullopt;
    }
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    for (const double part : {red, green, blue}) {
        if (!(part >= 0 && part <= 1)) {
            return std::nullopt;
        }
    }
    return QColor::fromRgbF(float(red), float(green), float(blue));
}

} // namespace

std::unique_ptr<DesktopAppearance> DesktopAppearance::make()
{
    return std::make_unique<PortalAppearance>();
}

PortalAppearance::PortalAppearance() : _firstAnswer(QDBusPendingCall::fromError(QDBusError()))
{
    qDBusRegisterMetaType<Settings>();
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        _answered = true;
        return;
    }
    bus.connect(kService, kPath, kInterface, u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto* watcher = new QDBusServiceWatcher(kService, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &PortalAppearance::ask);
    ask();
}

void PortalAppearance::ask()
{
    auto message = QDBusMessage::createMethodCall(kService, kPath, kInterface, u"ReadAll"_s);
    message.setArguments({QStringList{kAppearance, kGnomeInterface, kKdeGlobals}});
    // A portal that nobody has started yet is not started for this: its arrival is noticed.
    message.setAutoStartService(false);
    _firstAnswer = QDBusConnection::sessionBus().asyncCall(message, int(kPatience.count()));
    _answered = false;
    auto* watcher = new QDBusPendingCallWatcher(_firstAnswer, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* done) {
        take(*done);
        done->deleteLater();
    });
}

void PortalAppearance::settle()
{
    if (!_answered) {
        _firstAnswer.waitForFinished();
        take(_firstAnswer);
    }
}

void PortalAppearance::take(const QDBusPendingCall& answer)
{
    const QDBusPendingReply<Settings> reply = answer;
    _answered = true;
    if (reply.isValid()) {
        _settings = reply.value();
        setWishes(wishesFrom(_settings));
    }
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    _settings[group][key] = value.variant();
    setWishes(wishesFrom(_settings));
}

DesktopAppearance::Wishes PortalAppearance::wishesFrom(const Settings& settings)
{
    Wishes wishes;
    const auto appearance = settings.value(kAppearance);
    const uint scheme = unwrapped(appearance.value(u"color-scheme"_s)).toUInt();
    if (scheme == 1) {
        wishes.dark = true;
    } else if (scheme == 2) {
        wishes.dark = false;
    }
    wishes.accent = colorFrom(unwrapped(appearance.value(u"accent-color"_s)));

    const auto animations = unwrapped(settings.value(kGnomeInterface).value(u"enable-animations"_s));
    const auto factor = unwrapped(settings.value(kKdeGlobals).value(u"AnimationDurationFactor"_s));
    bool isNumber = false;
    const double duration = factor.toString().toDouble(&isNumber);
    wishes.reducedMotion = (animations.isValid() && !animations.toBool()) || (isNumber && duration <= 0);
    return wishes;
}

} // namespace ferrobank
