#include "Ferrobank/Dashboard/DashboardPresenter.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/CLI/CommandLineTool.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/ByteCount.h"
#include "Ferrobank/Model/DriveState.h"
#include "Ferrobank/Model/FailureText.h"
#include "Ferrobank/Model/Footprint.h"
#include "Ferrobank/Model/HealthSummary.h"
#include "Ferrobank/Model/TildePath.h"
#include "Platform/Workspace.h"

#include <QtCore/QFileInfo>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

Tint tintOf(DriveState::Colour colour)
{
    switch (colour) {
    case DriveState::Green:
        return Tint::Green;
    case DriveState::Red:
        return Tint::Red;
    case DriveState::Orange:
        return Tint::Orange;
    case DriveState::Secondary:
        return Tint::Secondary;
    }
    return Tint::Secondary;
}

} // namespace

DashboardPresenter::DashboardPresenter(const WindowCollaborators& with)
    : _with(with), _cliInstalled(with.commandLineTool.isInstalled())
{
    _figures = readFigures();
    _health = readHealth();
    connect(&_with.model, &AppModel::statusChanged, this, [this] {
        updateFigures();
        readCapacities();
    });
    connect(&_with.model, &AppModel::checksChanged, this, &DashboardPresenter::updateHealth);
    connect(&_with.model, &AppModel::checksRunningChanged, this, &DashboardPresenter::updateHealth);
    connect(&_with.model, &AppModel::menuOpensAtLoginChanged, this,
            &DashboardPresenter::menuOpensAtLoginChanged);
}

DashboardPresenter::~DashboardPresenter() = default;

DashboardPresenter::Figures DashboardPresenter::readFigures() const
{
    Figures figures;
    const auto& status = _with.model.status();
    if (!status) {
        return figures;
    }
    figures.hasStatus = true;
    const DriveState state(*status);
    figures.stateWord = state.word();
    figures.stateSymbol = state.symbol();
    figures.stateTint = tintOf(state.colour());
    figures.mountpoint = abbreviatedWithTilde(status->mountpoint, _with.home);
    if (state.kind() == DriveState::NeedsAttention) {
        figures.attachError = said(status->attach_error.value_or(QString()));
    }

    const Footprint footprint = Footprint::of(*status);
    figures.nothingSaved = footprint.nothingSaved();
    if (!figures.nothingSaved) {
        figures.saved = byteCount(footprint.saved);
        figures.savingSentence = footprint.sentence();
        figures.fraction = footprint.fraction();
    }
    figures.filesOnDrive = byteCount(footprint.filesOnDrive);
    figures.storedOnDisk = byteCount(footprint.onDisk);
    figures.freeOnThisMac = byteCountOrDash(_homeAvailable);
    figures.driveSize = byteCountOrDash(status->mounted ? _driveTotal : std::nullopt);
    return figures;
}

DashboardPresenter::Health DashboardPresenter::readHealth() const
{
    const HealthSummary summary = HealthSummary::of(_with.model.checks(), _with.model.checksRunning());
    Health health;
    health.text = summary.text;
    health.note = summary.note;
    switch (summary.kind) {
    case HealthSummary::Kind::Running:
        return health;
    case HealthSummary::Kind::Passed:
        health.symbol = u"checkmark.circle.fill"_s;
        health.tint = Tint::Green;
        break;
    case HealthSummary::Kind::Failing:
        health.symbol = u"exclamationmark.triangle.fill"_s;
        health.tint = Tint::Orange;
        break;
    }
    health.running = false;
    return health;
}

void DashboardPresenter::updateFigures()
{
    Figures figures = readFigures();
    if (_figures != figures) {
        _figures = std::move(figures);
        Q_EMIT figuresChanged();
    }
}

void DashboardPresenter::updateHealth()
{
    Health health = readHealth();
    if (_health != health) {
        _health = std::move(health);
        Q_EMIT healthChanged();
    }
}

void DashboardPresenter::readCapacities()
{
    const auto& status = _with.model.status();
    if (!_shown || !status) {
        return;
    }
    spawn(this, measureHome());
    if (status->mounted) {
        spawn(this, measureDrive(status->mountpoint));
    } else {
        _driveTotal.reset();
    }
}

QCoro::Task<> DashboardPresenter::measureHome()
{
    const auto hold = _lifeline.hold();
    const VolumeCapacity capacity = co_await _with.volumes.capacity(_with.home);
    if (!hold.isCut()) {
        _homeAvailable = capacity.available;
        updateFigures();
    }
}

QCoro::Task<> DashboardPresenter::measureDrive(QString mountpoint)
{
    const auto hold = _lifeline.hold();
    const VolumeCapacity capacity = co_await _with.volumes.capacity(mountpoint);
    if (!hold.isCut()) {
        _driveTotal = capacity.total;
        updateFigures();
    }
}

bool DashboardPresenter::menuOpensAtLogin() const
{
    return _with.model.menuOpensAtLogin();
}

void DashboardPresenter::setMenuOpensAtLogin(bool value)
{
    _with.model.setMenuOpensAtLogin(value);
}

QString DashboardPresenter::cliLink() const
{
    return _with.commandLineTool.link();
}

void DashboardPresenter::appeared()
{
    _shown = true;
    _cliInstalled = _with.commandLineTool.isInstalled();
    Q_EMIT cliChanged();
    readCapacities();
}

void DashboardPresenter::figuresAppeared()
{
    if (_with.model.checks().isEmpty()) {
        spawn(&_with.model, _with.model.runChecks());
    }
}

void DashboardPresenter::disappeared()
{
    _shown = false;
}

void DashboardPresenter::showInFinder()
{
    const auto& status = _with.model.status();
    if (status && !status->mountpoint.isEmpty()) {
        _with.workspace.openPath(status->mountpoint);
    }
}

void DashboardPresenter::runChecks()
{
    _with.model.setScreen(Screen::checks());
    spawn(&_with.model, _with.model.runChecks());
}

void DashboardPresenter::installCommandLineTool()
{
    if (!_cliInstalling) {
        spawn(this, install());
    }
}

QCoro::Task<> DashboardPresenter::install()
{
    const auto hold = _lifeline.hold();
    // The window may be closed while the administrator prompt is open; its outcome is told all the same.
    WindowHost& host = _with.host;
    QString words;
    _cliInstalling = true;
    Q_EMIT cliChanged();
    try {
        co_await _with.commandLineTool.install();
    } catch (const CommandLineTool::Cancelled&) {
        words.clear();
    } catch (const std::exception& error) {
        words = failureText(error);
    }
    if (!hold.isCut()) {
        _cliInstalling = false;
        _cliInstalled = _with.commandLineTool.isInstalled();
        Q_EMIT cliChanged();
    }
    if (!words.isEmpty()) {
        host.showAlert(words);
    }
}

void DashboardPresenter::showLog()
{
    const auto& status = _with.model.status();
    // In the user's own folders, which answer.
    const bool exists = status && !status->log.isEmpty() && QFileInfo::exists(status->log);
    if (exists) {
        _with.workspace.openPath(status->log);
    }
    const QString note = exists ? QString() : tr("There is no log yet.");
    if (_logNote != note) {
        _logNote = note;
        Q_EMIT logNoteChanged();
    }
}

void DashboardPresenter::uninstall()
{
    _with.model.setScreen(Screen::uninstall());
}

} // namespace ferrobank
