#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/FailureText.h"
#include "Ferrobank/Model/TildePath.h"

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

QStringList uninstallArguments(const std::optional<QString>& exportTo, bool deleteData)
{
    QStringList args{u"uninstall"_s};
    if (exportTo) {
        args << u"--export"_s << *exportTo;
    }
    if (deleteData) {
        args << u"--delete-store"_s;
    }
    return args;
}

} // namespace

QCoro::Task<> AppModel::uninstall(std::optional<QString> exportTo, bool deleteData)
{
    const auto life = _lifeline.hold();
    const UninstallState running{.kind = UninstallState::Kind::Running, .text = {}};
    setUninstallState(running);
    UninstallState outcome{.kind = UninstallState::Kind::Done, .text = {}};
    try {
        const QStringList args = uninstallArguments(exportTo, deleteData);
        co_await _with.cli.run(args);
    } catch (const std::exception& error) {
        outcome.kind = UninstallState::Kind::Failed;
        outcome.text = failureText(error);
    }
    if (life.isCut()) {
        co_return;
    }
    if (outcome.kind == UninstallState::Kind::Done) {
        writeSetupRecord(false);
        outcome.text = uninstalledText(exportTo, deleteData);
    }
    setUninstallState(outcome);
    co_await refresh();
}

QString AppModel::uninstalledText(const std::optional<QString>& exportTo, bool deleteData) const
{
    QString text;
    if (exportTo) {
        text = tr("Your files are in %1. ").arg(abbreviatedWithTilde(*exportTo, _with.home));
    }
    return text + (deleteData
                       ? tr("The drive's data is deleted from this Mac.")
                       : tr("The drive's data is kept, so reinstalling Ferrobank brings your drive back."));
}

void AppModel::setUninstallState(UninstallState state)
{
    if (_uninstallState != state) {
        _uninstallState = std::move(state);
        Q_EMIT uninstallStateChanged();
    }
}

} // namespace ferrobank
