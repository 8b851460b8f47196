#include "Platform/linux/appearance/PortalAppearance.h"

#include "Platform/linux/appearance/GtkNames.h"

#include <QtCore/QDeadlineTimer>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusServiceWatcher>
#include <QtGui/QGuiApplication>

#include <algorithm>
#include <chrono>
#include <thread>

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
constexpr auto kGnomeAccessibility = "org.gnome.desktop.a11y.interface"_L1;
constexpr auto kPatience = 150ms;
constexpr auto kStartPatience = 1s;
constexpr auto kLook = 2ms;
// What a bus gives a service that it starts; later answers do not come.
constexpr auto kAnswerLimit = 30s;

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

bool isGnome(const QString& currentDesktop)
{
    static const QStringList kOnItsSettings{u"GNOME"_s, u"Unity"_s, u"Budgie"_s, u"Pantheon"_s};
    const QStringList names = currentDesktop.split(u':');
    return std::ranges::any_of(
        kOnItsSettings, [&names](const QString& name) { return names.contains(name, Qt::CaseInsensitive); });
}

void addGnome(DesktopAppearance::Wishes& wishes, const PortalAppearance::Settings& settings)
{
    const auto interface = settings.value(kGnomeInterface);
    const QString theme = unwrapped(interface.value(u"gtk-theme"_s)).toString();
    if (!wishes.dark && isDarkGtkTheme(theme)) {
        wishes.dark = true;
    }
    const bool high = unwrapped(settings.value(kGnomeAccessibility).value(u"high-contrast"_s)).toBool();
    wishes.highContrast = wishes.highContrast || high || isHighContrastGtkTheme(theme);
    const auto font = gtkFont(unwrapped(interface.value(u"font-name"_s)).toString());
    const double factor = unwrapped(interface.value(u"text-scaling-factor"_s)).toDouble();
    if (font) {
        wishes.fontFamily = font->family;
        if (font->size > 0) {
            // The desktop's own limits for the factor are 0.5 and 3.
            wishes.fontSize = font->size * (factor > 0 ? std::clamp(factor, 0.5, 3.0) : 1.0);
        }
    }
}

} // namespace

std::unique_ptr<DesktopAppearance> DesktopAppearance::make()
{
    return std::make_unique<PortalAppearance>();
}

PortalAppearance::PortalAppearance()
    : _currentDesktop(qEnvironmentVariable("XDG_CURRENT_DESKTOP")),
      _firstAnswer(QDBusPendingCall::fromError(QDBusError()))
{
    qDBusRegisterMetaType<Settings>();
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) {
        _display = XSettingsWatch::make([this] { tell(); });
    }
    tell();
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

PortalAppearance::~PortalAppearance() = default;

void PortalAppearance::ask()
{
    auto message = QDBusMessage::createMethodCall(kService, kPath, kInterface, u"ReadAll"_s);
    message.setArguments({QStringList{kAppearance, kGnomeInterface, kGnomeAccessibility, kKdeGlobals}});
    // This starts a portal that nobody has started yet: there is no other way to learn that the desktop is
    // dark.
    _firstAnswer = QDBusConnection::sessionBus().asyncCall(
        message, int(std::chrono::milliseconds(kAnswerLimit).count()));
    _answered = false;
    auto* watcher = new QDBusPendingCallWatcher(_firstAnswer, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* done) {
        take(*done);
        done->deleteLater();
    });
}

void PortalAppearance::settle()
{
    if (_answered) {
        return;
    }
    // A portal that could not be started in time is not waited for again; what it says later is followed.
    static bool waitedForStart = false;
    const auto* bus = QDBusConnection::sessionBus().interface();
    const bool runs = bus != nullptr && bus->isServiceRegistered(kService);
    const auto patience = runs || waitedForStart ? kPatience : kStartPatience;
    waitedForStart = true;
    const QDeadlineTimer limit(patience);
    while (!_firstAnswer.isFinished() && !limit.hasExpired()) {
        std::this_thread::sleep_for(kLook);
    }
    if (_firstAnswer.isFinished()) {
        take(_firstAnswer);
    }
}

void PortalAppearance::take(const QDBusPendingCall& answer)
{
    const QDBusPendingReply<Settings> reply = answer;
    _answered = true;
    if (reply.isValid()) {
        _settings = reply.value();
        tell();
    }
}

void PortalAppearance::tell()
{
    // These have the toolkit's own knowledge of the desktop; what else is published there is for other
    // toolkits.
    static const QStringList kKnown{u"KDE"_s, u"LXQt"_s};
    const QStringList desktops = _currentDesktop.split(u':');
    const bool known = std::ranges::any_of(
        kKnown, [&desktops](const QString& name) { return desktops.contains(name, Qt::CaseInsensitive); });
    std::optional<Wishes> display;
    if (_display && !known) {
        display = ferrobank::wishesFrom(_display->values());
    }
    setWishes(joined(wishesFrom(_settings, _currentDesktop), display));
}

DesktopAppearance::Wishes PortalAppearance::joined(const Wishes& portal, const std::optional<Wishes>& display)
{
    Wishes both = portal;
    if (!display) {
        return both;
    }
    const auto fill = [](auto& value, const auto& other) {
        if (!value) {
            value = other;
        }
    };
    fill(both.dark, display->dark);
    fill(both.fontFamily, display->fontFamily);
    fill(both.fontSize, display->fontSize);
    both.highContrast = both.highContrast || display->highContrast;
    both.reducedMotion = both.reducedMotion || display->reducedMotion;
    return both;
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    _settings[group][key] = value.variant();
    tell();
}

DesktopAppearance::Wishes PortalAppearance::wishesFrom(const Settings& settings,
                                                       const QString& currentDesktop)
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

    wishes.highContrast = unwrapped(appearance.value(u"contrast"_s)).toUInt() == 1;
    if (isGnome(currentDesktop)) {
        addGnome(wishes, settings);
    }

    const auto animations = unwrapped(settings.value(kGnomeInterface).value(u"enable-animations"_s));
    const auto factor = unwrapped(settings.value(kKdeGlobals).value(u"AnimationDurationFactor"_s));
    bool isNumber = false;
    const double duration = factor.toString().toDouble(&isNumber);
    wishes.reducedMotion = (animations.isValid() && !animations.toBool()) || (isNumber && duration <= 0);
    return wishes;
}

} // namespace ferrobank
