#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/FailureText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ferrobank {

QList<CheckItem> AppModel::freshSetupTasks() const
{
    QList<CheckItem> rows{
        pendingRow(u"login"_s, tr("Start your drive at login")),
        pendingRow(u"mount"_s, tr("Create and mount your drive at ~/Ferrobank")),
        pendingRow(u"finder"_s, tr("Add the drive to Finder")),
    };
    if (_choices.installCLI) {
        rows.append(pendingRow(u"cli"_s, tr("Install the ferrobank command")));
    }
    return rows;
}

CheckItem AppModel::pendingRow(const QString& id, const QString& title)
{
    return {.id = id, .title = title, .detail = {}, .fix = {}, .action = {}};
}

bool AppModel::setupDone() const
{
    const auto isFinished = [](const CheckItem& row) {
        switch (row.state) {
        case CheckItem::State::Pass:
        case CheckItem::State::Skipped:
            return true;
        case CheckItem::State::Fail:
            // The command can be installed later, from the menu.
            return row.id == u"cli";
        case CheckItem::State::Pending:
        case CheckItem::State::Running:
        case CheckItem::State::AwaitingUser:
            return false;
        }
        Q_UNREACHABLE();
    };
    return !setupTasks().isEmpty() && std::ranges::all_of(setupTasks(), isFinished);
}

QCoro::Task<> AppModel::installCommandLineTool()
{
    const auto life = _lifeline.hold();
    const auto row = u"cli"_s;
    updateSetupTask(row, CheckItem::State::Running);
    bool cancelled = false;
    std::optional<QString> failure;
    try {
        co_await _with.commandLineTool.install();
    } catch (const CommandLineTool::Cancelled&) {
        cancelled = true;
    } catch (const std::exception& error) {
        failure = failureText(error);
    }
    if (life.isCut()) {
        co_return;
    }
    if (cancelled) {
        updateSetupTask(row, CheckItem::State::Skipped,
                        tr("Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time."));
    } else if (failure) {
        updateSetupTask(row, CheckItem::State::Fail, failure,
                        tr("Choose Install Command-Line Tool… from the Ferrobank menu any time."));
    } else {
        updateSetupTask(row, CheckItem::State::Pass,
                        tr("Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank."));
    }
}

void AppModel::updateSetupTask(const QString& id, CheckItem::State state, std::optional<QString> detail,
                               std::optional<QString> fix)
{
    if (const CheckItem* current = _setupTasks->find(id)) {
        CheckItem row = *current;
        row.state = state;
        row.detail = std::move(detail);
        row.fix = std::move(fix);
        changeSetupTasks(_setupTasks->put(row));
    }
}

void AppModel::changeSetupTasks(bool changed)
{
    if (changed) {
        Q_EMIT setupTasksChanged();
        tellDerived();
    }
}

} // namespace ferrobank
