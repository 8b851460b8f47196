#include "Platform/linux/workspace/LinuxWorkspace.h"

#include "Ferrobank/Async/Spawn.h"
#include "Platform/linux/workspace/DesktopPrograms.h"
#include "Platform/linux/workspace/DesktopServices.h"
#include "Platform/linux/workspace/Trash.h"
#include "Platform/linux/workspace/VolumeIcon.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <sys/stat.h>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds kLookLimit{1};
constexpr std::chrono::seconds kIconLimit{10};
constexpr std::chrono::seconds kTrashLimit{60};

enum class Kind { Missing, File, Folder };

Kind lookAt(const QByteArray& path)
{
    struct stat facts{};
    if (::stat(path.constData(), &facts) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return Kind::Missing;
        }
        throw std::system_error(errno, std::generic_category()); // a mount point whose server has died, say
    }
    return S_ISDIR(facts.st_mode) ? Kind::Folder : Kind::File;
}

QString takeToken(const DesktopMessages& messages)
{
    return messages.activationToken ? messages.activationToken() : QString();
}

void tell(const DesktopMessages& messages, const QString& sentence)
{
    if (messages.show) {
        messages.show(sentence);
    }
}

QList<Command> openers(const QString& what)
{
    return {Command{u"xdg-open"_s, what}, Command{u"gio"_s, u"open"_s, what}};
}

/// The ways to open a folder, best first.
QCoro::Task<bool> openFolder(QString path, QString token)
{
    const bool shown = co_await showFolder(path, token);
    if (shown) {
        co_return true;
    }
    const QList<Command> commands = openers(path);
    co_return co_await startFirstThatWorks(commands, token);
}

/// A file for which there is no program is at least shown in its folder.
QCoro::Task<bool> openFile(QString path, QString token)
{
    const QList<Command> commands = openers(path);
    const bool opened = co_await startFirstThatWorks(commands, token);
    if (opened) {
        co_return true;
    }
    co_return co_await revealFile(path, token);
}

QCoro::Task<> open(QString path, QCoro::Task<std::optional<Kind>> look, DesktopMessages messages)
{
    const std::optional<Kind> kind = co_await std::move(look);
    if (!kind) {
        tell(messages, u"“%1” does not answer."_s.arg(path));
        co_return;
    }
    if (*kind == Kind::Missing) {
        tell(messages, u"“%1” does not exist."_s.arg(path));
        co_return;
    }
    const QString token = takeToken(messages);
    bool opened = false;
    if (isSandboxed()) {
        opened = co_await openFileThroughPortal(path, token);
    } else if (*kind == Kind::Folder) {
        opened = co_await openFolder(path, token);
    } else {
        opened = co_await openFile(path, token);
    }
    if (!opened) {
        tell(messages, u"No program on this computer could open “%1”."_s.arg(path));
    }
}

QCoro::Task<> openAddress(QString url, DesktopMessages messages)
{
    const QString token = takeToken(messages);
    bool opened = false;
    if (isSandboxed()) {
        opened = co_await openThroughPortal(url, token);
    } else {
        const QList<Command> commands = openers(url);
        opened = co_await startFirstThatWorks(commands, token);
    }
    if (!opened) {
        tell(messages, u"No program on this computer could open “%1”."_s.arg(url));
    }
}

} // namespace

void LinuxWorkspace::openPath(const QString& path)
{
    const std::function<Kind()> look = [file = QFile::encodeName(path)] { return lookAt(file); };
    spawn(this, open(path, _elsewhere.ask(u"look "_s + path, look, kLookLimit), _messages));
}

void LinuxWorkspace::openUrl(const QString& url)
{
    spawn(this, openAddress(url, _messages));
}

QCoro::Task<> LinuxWorkspace::setVolumeIcon(QString imageFile, QString folder)
{
    const std::function<bool()> work = [image = QFile::encodeName(imageFile).toStdString(),
                                        place = QFile::encodeName(folder).toStdString()] {
        return giveVolumeIcon(image, place);
    };
    co_await _elsewhere.ask(u"icon "_s + folder, work, kIconLimit);
}

QCoro::Task<bool> LinuxWorkspace::recycle(QString path)
{
    const std::function<bool()> work = [path] { return moveToTrash(path); };
    const auto moved = co_await _elsewhere.ask(u"recycle "_s + path, work, kTrashLimit);
    if (moved.value_or(false)) {
        co_return true;
    }
    const QList<Command> commands{Command{u"gio"_s, u"trash"_s, u"--"_s, path}};
    const bool started = co_await startFirstThatWorks(commands, QString());
    co_return started && !QFileInfo(path).isSymLink() && !QFileInfo::exists(path);
}

} // namespace ferrobank
