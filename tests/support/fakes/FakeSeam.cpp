#include "support/fakes/FakeSeam.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

using namespace Qt::StringLiterals;

namespace ferrobank {

const QString FakeSeam::kHome = u"/home/anna"_s;
const QString FakeSeam::kMountpoint = u"/home/anna/Ferrobank"_s;
const QString FakeSeam::kStore = u"/home/anna/Library/Application Support/Ferrobank/store"_s;

FakeSeam::FakeSeam() : commandLineTool(cli.url(), privilegedLink, folder.filePath(u"bin/ferrobank"_s))
{
    QDir(folder.path()).mkdir(u"bin"_s);
    QFile icon(folder.filePath(u"VolumeIcon.icns"_s));
    if (!icon.open(QIODevice::WriteOnly)) {
        qFatal("The test's folder cannot be written");
    }
    workspace.onVolumeIcon = [this](const QString& volume) {
        volumes.present.insert(volume + u"/.VolumeIcon.icns"_s);
    };
}

ModelCollaborators FakeSeam::collaborators(CLI& otherCli)
{
    return {.cli = otherCli,
            .loginServices = loginServices,
            .commandLineTool = commandLineTool,
            .workspace = workspace,
            .settingsPages = settingsPages,
            .defaults = defaults,
            .volumes = volumes,
            .clock = clock,
            .home = kHome,
            .volumeIcon = folder.filePath(u"VolumeIcon.icns"_s)};
}

void FakeSeam::finishSetup()
{
    defaults.values.insert(u"setupComplete"_s, true);
    registry.agent.status = LoginServiceStatus::Enabled;
}

void FakeSeam::forgetCalls()
{
    cli.forgetCalls();
    clock.forgetSleeps();
    registry.calls = {};
    volumes.existenceQuestions = {};
    defaults.reads = {};
}

void FakeSeam::removeLinkFolder()
{
    QDir(folder.filePath(u"bin"_s)).removeRecursively();
}

DriveStatus unmountedStatus()
{
    DriveStatus status;
    status.installed = true;
    status.mountpoint = FakeSeam::kMountpoint;
    status.log = u"/home/anna/Library/Logs/Ferrobank/ferrobank.log"_s;
    return status;
}

DriveStatus mountedStatus()
{
    DriveStatus status = unmountedStatus();
    status.mounted = true;
    status.volume_used = 10'000'000'000U;
    status.store_bytes = 2'500'000'000U;
    status.saved = 7'500'000'000U;
    return status;
}

DriveStatus attachErrorStatus(const QString& error)
{
    DriveStatus status = unmountedStatus();
    status.attach_error = error;
    return status;
}

} // namespace ferrobank
