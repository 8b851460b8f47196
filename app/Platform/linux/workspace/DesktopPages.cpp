#include "Platform/linux/workspace/DesktopPages.h"

#include <array>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

/// One desktop's programs, best first, each with its arguments after blanks. Programs that show what fills
/// the disk; none of those that format it.
struct Desktop {
    QStringView name;
    std::array<QStringView, 3> storage;
    std::array<QStringView, 3> filesAndFolders;
};

constexpr std::array<Desktop, 6> kDesktops{{
    {u"gnome",
     {u"baobab", u"gnome-control-center info-overview", {}},
     {u"gnome-control-center applications", u"gnome-control-center privacy", {}}},
    {u"kde",
     {u"filelight", u"kinfocenter", {}},
     {u"systemsettings kcm_app-permissions", u"systemsettings", u"systemsettings5"}},
    {u"xfce", {u"baobab", u"filelight", u"qdirstat"}, {u"xfce4-settings-manager", {}, {}}},
    {u"lxqt", {u"qdirstat", u"filelight", {}}, {u"lxqt-config", {}, {}}},
    {u"mate", {u"mate-disk-usage-analyzer", u"baobab", {}}, {u"mate-control-center", {}, {}}},
    {u"x-cinnamon", {u"baobab", u"filelight", u"nemo computer:///"}, {u"cinnamon-settings", {}, {}}},
}};

bool isCalled(const QString& currentDesktop, QStringView name)
{
    return currentDesktop.split(u':').contains(name, Qt::CaseInsensitive);
}

void addCommands(QList<Command>& commands, const Desktop& desktop, SettingsPage page)
{
    for (const QStringView words : page == SettingsPage::Storage ? desktop.storage : desktop.filesAndFolders)
    {
        const Command command = words.toString().split(u' ', Qt::SkipEmptyParts);
        if (!command.isEmpty() && !commands.contains(command)) {
            commands.append(command);
        }
    }
}

QString sentenceFor(SettingsPage page)
{
    switch (page) {
    case SettingsPage::Storage:
        return u"This desktop has no page that shows what fills the disk. Look for large files in your home folder and in the Trash."_s;
    case SettingsPage::FilesAndFolders:
        return u"This desktop has no settings for access to files and folders."_s;
    }
    Q_UNREACHABLE();
}

QCoro::Task<> show(SettingsPage page, DesktopMessages messages)
{
    const QList<Command> commands = commandsForPage(page, qEnvironmentVariable("XDG_CURRENT_DESKTOP"));
    const QString token = messages.activationToken ? messages.activationToken() : QString();
    const bool shown = co_await startFirstThatWorks(commands, token);
    if (!shown && messages.show) {
        messages.show(sentenceFor(page));
    }
}

} // namespace

void DesktopPages::open(SettingsPage page)
{
    const auto showing = show(page, _messages);
}

QList<Command> commandsForPage(SettingsPage page, const QString& currentDesktop)
{
    QList<Command> commands;
    for (const Desktop& desktop : kDesktops) {
        if (isCalled(currentDesktop, desktop.name)) {
            addCommands(commands, desktop, page);
        }
    }
    for (const Desktop& desktop : kDesktops) {
        addCommands(commands, desktop, page);
    }
    return commands;
}

} // namespace ferrobank
