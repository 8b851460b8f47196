#include "Ferrobank/CLI/CLI.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/Breather.h"
#include "Ferrobank/Model/FailureText.h"
#include "Platform/Clock.h"
#include "Platform/SettingsPages.h"

#include <QtCore/QDebug>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ferrobank {

namespace {

constexpr auto kRestartPause = 1s;
constexpr auto kRestartLimit = 30s;

} // namespace

QCoro::Task<> AppModel::runChecks()
{
    const auto life = _lifeline.hold();
    if (_checksRunning) {
        co_return;
    }
    setChecksRunning(true);
    const QList<CheckItem> placeholders{
        pendingRow(u"running"_s, tr("Ferrobank is running")),
        pendingRow(u"drive"_s, tr("Drive is mounted and writable")),
        pendingRow(u"login"_s, tr("Starts at login")),
        pendingRow(u"space"_s, tr("Room on this Mac")),
    };
    changeChecks(_checks->replaceAll(placeholders));
    const std::optional<QString> failure = co_await streamChecks();
    if (life.isCut()) {
        co_return;
    }
    if (failure) {
        CheckItem row = pendingRow(u"error"_s, tr("Running the checks"));
        row.state = CheckItem::State::Fail;
        row.detail = failure;
        changeChecks(_checks->append(row));
    }
    co_await refresh();
    if (!life.isCut()) {
        setChecksRunning(false);
    }
}

QCoro::Task<std::optional<QString>> AppModel::streamChecks()
{
    const auto life = _lifeline.hold();
    std::optional<QString> failure;
    try {
        const QStringList args{u"check"_s, u"--json"_s};
        Breather breather;
        auto lines = _with.cli.lines(args);
        auto line = co_await lines.begin();
        while (!life.isCut() && line != lines.end()) {
            applyCheckLine(*line);
            if (breather.isDue()) {
                co_await _with.clock.sleep(0ms);
                breather.restart();
            }
            if (!life.isCut()) {
                co_await ++line;
            }
        }
    } catch (const std::exception& error) {
        failure = failureText(error);
    }
    co_return failure;
}

void AppModel::applyCheckLine(const QString& line)
{
    std::optional<CheckItem> row;
    try {
        row = CheckItem::decode(line.toUtf8());
    } catch (const std::exception&) {
        return; // the tool may say other things between its rows
    }
    changeChecks(_checks->put(*row));
}

void AppModel::setChecksRunning(bool running)
{
    if (_checksRunning != running) {
        _checksRunning = running;
        Q_EMIT checksRunningChanged();
        tellDerived();
    }
}

void AppModel::changeChecks(bool changed)
{
    if (changed) {
        Q_EMIT checksChanged();
        tellDerived();
    }
}

bool AppModel::checksPassed() const
{
    return !checks().isEmpty() && !_checksRunning &&
           _checks->countOf(CheckItem::State::Pass) == checks().size();
}

bool AppModel::mountFailed() const
{
    return std::ranges::any_of(setupTasks(), [](const CheckItem& row) {
        return row.id == u"mount" && row.state == CheckItem::State::Fail;
    });
}

QCoro::Task<> AppModel::fix(FixAction action)
{
    switch (action) {
    case FixAction::Restart:
        co_await restartDrive();
        break;
    case FixAction::LoginItems:
        _with.loginServices.openSystemSettingsLoginItems();
        break;
    case FixAction::PrivacySettings:
        _with.settingsPages.open(SettingsPage::FilesAndFolders);
        break;
    case FixAction::StorageSettings:
        _with.settingsPages.open(SettingsPage::Storage);
        break;
    }
}

QCoro::Task<> AppModel::restartDrive()
{
    const auto life = _lifeline.hold();
    if (const CheckItem* running = _checks->find(u"running"_s)) {
        CheckItem row = *running;
        row.state = CheckItem::State::Running;
        row.detail = tr("Restarting Ferrobank…");
        row.fix.reset();
        changeChecks(_checks->put(row));
    }
    const bool isRegistered = co_await isAgentRegistered();
    if (life.isCut()) {
        co_return;
    }
    if (isRegistered) {
        const QStringList args{u"restart"_s};
        co_await runIgnoringFailure(args);
    } else {
        co_await registerIgnoringFailure();
    }
    if (life.isCut()) {
        co_return;
    }
    const auto start = _with.clock.wallTime();
    do {
        co_await _with.clock.sleep(kRestartPause);
        if (life.isCut()) {
            co_return;
        }
        co_await refresh();
        if (life.isCut()) {
            co_return;
        }
    } while (!isMounted() && _with.clock.wallTime() - start < kRestartLimit);
    co_await runChecks();
}

QCoro::Task<bool> AppModel::isAgentRegistered()
{
    const auto life = _lifeline.hold();
    auto answer = co_await _with.loginServices.ask(LoginService::Agent);
    if (!answer && !life.isCut()) {
        answer = _with.loginServices.known(LoginService::Agent);
    }
    co_return answer.value_or(LoginServiceStatus::Enabled) == LoginServiceStatus::Enabled;
}

QCoro::Task<> AppModel::registerIgnoringFailure()
{
    try {
        co_await _with.loginServices.registerDrive();
    } catch (const std::exception& error) {
        // The checks that follow report the real state.
        qWarning("The agent could not be registered: %s", error.what());
    }
}

} // namespace ferrobank
