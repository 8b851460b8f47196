#include "Ferrobank/FerrobankApp/MenuContent.h"

#include "Ferrobank/Model/ByteCount.h"
#include "Ferrobank/Model/DriveState.h"
#include "Ferrobank/Words/Said.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;
using Kind = MenuEntry::Kind;

QString tr(const char* text)
{
    return QCoreApplication::translate("MenuContent", text);
}

MenuEntry entry(MenuItem item, Kind kind, const QString& text = {}, bool checked = false)
{
    return {static_cast<int>(item), kind, text, checked};
}

QString usage(const DriveStatus& status)
{
    return tr("%1 used · %2 saved")
        .arg(byteCount(status.volume_used.value_or(0)), byteCount(status.saved.value_or(0)));
}

bool showsUsage(const DriveStatus& status)
{
    return status.mounted && status.volume_used.has_value();
}

} // namespace

QList<MenuEntry> menuContent(const MenuFacts& facts)
{
    QList<MenuEntry> entries;
    if (facts.status) {
        entries << entry(MenuItem::State, Kind::Text,
                         tr("Ferrobank · %1").arg(DriveState(*facts.status).word()));
        if (showsUsage(*facts.status)) {
            entries << entry(MenuItem::Usage, Kind::Text, usage(*facts.status));
        }
        entries << entry(MenuItem::StatusDivider, Kind::Divider);
    }
    if (facts.setupComplete) {
        entries << entry(MenuItem::Open, Kind::Button, tr("Open Ferrobank"));
    } else {
        entries << entry(MenuItem::SetUp, Kind::Button, tr("Set Up Ferrobank…"));
    }
    if (!facts.commandInstalled) {
        entries << entry(MenuItem::InstallCommand, Kind::Button, tr("Install Command-Line Tool…"));
    }
    entries << entry(MenuItem::CheckForUpdates, Kind::Button, tr("Check for Updates…"))
            << entry(MenuItem::RunChecks, Kind::Button, tr("Run Checks…"))
            << entry(MenuItem::Divider, Kind::Divider)
            << entry(MenuItem::OpenAtLogin, Kind::Toggle, tr("Open Menu at Login"), facts.menuOpensAtLogin);
    if (facts.status) {
        entries << entry(MenuItem::ShowLog, Kind::Button, tr("Show Log"));
    }
    entries << entry(MenuItem::Uninstall, Kind::Button, tr("Uninstall Ferrobank…"))
            << entry(MenuItem::Quit, Kind::Button, tr("Quit Ferrobank Menu"));
    return entries;
}

StatusItemFace menuFace(const MenuFacts& facts)
{
    StatusItemFace face{tr("Ferrobank"), {}, false};
    if (!facts.status) {
        return face;
    }
    const DriveState state(*facts.status);
    face.needsAttention = state.kind() == DriveState::NeedsAttention;
    if (face.needsAttention) {
        face.title = tr("Ferrobank · %1").arg(state.word());
        face.toolTip = said(facts.status->attach_error.value_or(QString()));
    } else {
        face.toolTip = showsUsage(*facts.status) ? usage(*facts.status) : state.word();
    }
    return face;
}

std::optional<MenuItem> menuItemFromAction(const QString& action)
{
    static const QHash<QString, MenuItem> actions{
        {u"open"_s, MenuItem::Open},
        {u"set-up"_s, MenuItem::SetUp},
        {u"install-command"_s, MenuItem::InstallCommand},
        {u"check-for-updates"_s, MenuItem::CheckForUpdates},
        {u"run-checks"_s, MenuItem::RunChecks},
        {u"show-log"_s, MenuItem::ShowLog},
        {u"uninstall"_s, MenuItem::Uninstall},
        {u"quit"_s, MenuItem::Quit},
    };
    const auto found = actions.constFind(action);
    return found == actions.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace ferrobank
