#include "Platform/linux/updates/session/UpdateSession.h"

#include "Ferrobank/Async/Spawn.h"
#include "Platform/Clock.h"
#include "Platform/linux/updates/session/Prompts.h"
#include "Platform/linux/updates/session/Schedule.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTimeZone>

#include <utility>

namespace ferrobank::updates {

using namespace Qt::StringLiterals;

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kAfterStart = std::chrono::seconds(5); ///< the start of the program comes first
constexpr milliseconds kHealthyAfter = std::chrono::seconds(10);
constexpr int kQuitPatience = 3000; ///< milliseconds
constexpr double kJitterSteps = 1000.0;

double jitter()
{
    return QRandomGenerator::global()->bounded(-1000, 1001) / kJitterSteps;
}

} // namespace

UpdateSession::UpdateSession(SessionCollaborators collaborators) : _with(std::move(collaborators))
{
    _view.installed = _with.configuration.version;
    _view.allowsAutomatic = _with.configuration.allowsAutomaticDownload;
    _with.interface.act = [this](UpdateAction action) { act(action); };
    _with.interface.automaticChanged = [this](bool automatic) { setAutomaticDownload(automatic); };
    _with.surroundings.openUpdate = [this] { checkForUpdates(); };
}

UpdateSession::~UpdateSession()
{
    _with.interface.act = nullptr;
    _with.interface.automaticChanged = nullptr;
    _with.surroundings.openUpdate = nullptr;
}

QDateTime UpdateSession::now() const
{
    const auto sinceEpoch = _with.clock.wallTime().time_since_epoch();
    return QDateTime::fromMSecsSinceEpoch(std::chrono::duration_cast<milliseconds>(sinceEpoch).count(),
                                          QTimeZone::utc());
}

void UpdateSession::save() const
{
    if (!_with.stateFile.save(_state))
        qWarning("The updater's state could not be saved.");
}

// Schedule

void UpdateSession::start()
{
    _state = _with.stateFile.load();
    ++_state.launches;
    while (_state.group == 0)
        _state.group = QRandomGenerator::global()->generate();
    _view.automatic = downloadsAutomatically(_with.configuration, _state);
    save();
    if (_with.isOnTrial())
        spawn(this, reportHealthLater());
    if (_with.configuration.isOn())
        spawn(this, runStartUp());
}

QCoro::Task<> UpdateSession::runStartUp()
{
    const auto hold = _lifeline.hold();
    co_await _with.clock.sleep(kAfterStart);
    if (hold.isCut() || _run || _view.stage != Stage::Idle)
        co_return;
    _run = _with.worker.start(u"status"_s, request(), [this](const QJsonObject& event) { onStatus(event); });
}

QCoro::Task<> UpdateSession::reportHealthLater()
{
    const auto hold = _lifeline.hold();
    co_await _with.clock.sleep(kHealthyAfter);
    if (hold.isCut())
        co_return;
    _healthRun = _with.worker.start(u"healthy"_s, request(), [](const QJsonObject&) {});
}

void UpdateSession::onStatus(const QJsonObject& event)
{
    _run.reset();
    const QJsonObject place = event[u"place"_s].toObject();
    _view.mayReplace = place[u"mayReplace"_s].toBool();
    _view.placeSentence = place[u"sentence"_s].toString();
    _view.advice = place[u"advice"_s].toString();
    const bool hasAnswer = event[u"event"_s] == "status"_L1;
    if (hasAnswer && event.contains(u"staged"_s)) {
        _view.offer = offerFromJson(event[u"staged"_s].toObject());
        staged();
        return;
    }
    if (_view.mayReplace && mustAskForConsent(_with.configuration, _state)) {
        _manner = Manner::InWindow;
        enter(Stage::Asking);
        return;
    }
    planNextCheck();
}

void UpdateSession::planNextCheck()
{
    ++_turn;
    const bool isQuiet = _view.stage == Stage::Idle || _view.stage == Stage::Ready;
    if (!isQuiet || !_view.mayReplace || !checksAutomatically(_with.configuration, _state))
        return;
    ScheduleFacts facts;
    facts.now = now();
    facts.lastCheck = _state.lastCheck;
    facts.interval = _with.configuration.interval;
    facts.failures = _state.failures;
    facts.hasStaged = _hasStaged;
    facts.needsAnswer = _hasStaged ? _stagedOffer.critical : !_state.announced.isEmpty();
    facts.jitter = jitter();
    spawn(this, runScheduledCheck(_turn, untilNextCheck(facts)));
}

QCoro::Task<> UpdateSession::runScheduledCheck(int turn, milliseconds delay)
{
    const auto hold = _lifeline.hold();
    co_await _with.clock.sleep(delay);
    if (hold.isCut() || turn != _turn)
        co_return;
    if (isReplaced()) {
        bundleChanged();
        co_return;
    }
    offerToDelegate();
    remind();
    if (_view.stage == Stage::Idle || _view.stage == Stage::Ready)
        beginCheck(Manner::Background);
}

// The user's wishes

void UpdateSession::checkForUpdates()
{
    if (_windowIsOpen) {
        _with.interface.raise();
        return;
    }
    _manner = Manner::InWindow;
    if (_view.stage != Stage::Installing && isReplaced()) {
        _run.reset();
        enter(Stage::Replaced);
    } else if (_view.stage == Stage::Idle)
        beginCheck(Manner::InWindow);
    else
        showIfInWindow();
}

void UpdateSession::reconsider()
{
    if (!isReplaced())
        offerToDelegate();
}

void UpdateSession::bundleChanged()
{
    if (_view.stage == Stage::Installing || !isReplaced() || _toldReplacement == _view.replacement)
        return;
    _toldReplacement = _view.replacement;
    _with.surroundings.notify(
        tr("Ferrobank was updated"),
        tr("Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.").arg(_view.replacement));
}

bool UpdateSession::isReplaced()
{
    const QString version = _with.versionInPlace();
    if (version.isEmpty() || version == _with.configuration.version)
        return false;
    _view.replacement = version;
    return true;
}

void UpdateSession::applicationQuits()
{
    if (_with.isOnTrial() && !_healthRun) {
        const auto run = _with.worker.start(u"healthy"_s, request(), [](const QJsonObject&) {});
        run->waitForEvent(0);
        run->release();
    }
    if (!_hasStaged || _view.stage == Stage::Installing || isReplaced())
        return;
    QJsonObject order = request();
    order[u"pid"_s] = qint64{QCoreApplication::applicationPid()};
    const auto run = _with.worker.start(u"install"_s, order, [](const QJsonObject&) {});
    // Until it has left our control group, or has refused, it would be ended together with us.
    run->waitForEvent(kQuitPatience);
    run->release();
}

void UpdateSession::act(UpdateAction action)
{
    switch (action) {
    case UpdateAction::Close:
        if (_view.stage == Stage::Preparing || _view.stage == Stage::Installing) {
            leaveWindow();
            return;
        }
        _waitsForQuit = _waitsForQuit || _view.stage == Stage::Ready;
        finishSession();
        return;
    case UpdateAction::Cancel:
    case UpdateAction::RemindLater:
        finishSession();
        return;
    case UpdateAction::Install:
        beginFetch(Manner::InWindow);
        return;
    case UpdateAction::InstallAndRelaunch:
        beginInstall();
        return;
    case UpdateAction::Relaunch:
        beginRelaunch();
        return;
    case UpdateAction::Skip:
        skip();
        return;
    case UpdateAction::OpenPage:
    case UpdateAction::ShowHistory: {
        const bool isOffer = _view.stage == Stage::Found;
        const QUrl url = action == UpdateAction::ShowHistory ? _view.nothingNew.history
                         : isOffer                           ? _view.offer.link
                                                             : _view.nothingNew.page;
        _with.surroundings.openPage(QString::fromUtf8(url.toEncoded()));
        finishSession();
        return;
    }
    case UpdateAction::AllowAutomatic:
        answerConsent(true);
        return;
    case UpdateAction::DeclineAutomatic:
        answerConsent(false);
        return;
    }
}

void UpdateSession::skip()
{
    if (_view.offer.major) {
        _state.skippedMajorVersion = _minimumForAutomatic;
        _state.skippedMajorRelease = _view.offer.version;
    } else
        _state.skippedVersion = _view.offer.version;
    save();
    finishSession();
}

void UpdateSession::answerConsent(bool automatic)
{
    _state.automaticChecks = automatic;
    save();
    finishSession();
}

void UpdateSession::setAutomaticDownload(bool automatic)
{
    _state.automaticDownload = automatic;
    _view.automatic = automatic;
    save();
}

// The window

void UpdateSession::enter(Stage stage)
{
    _view.stage = stage;
    showIfInWindow();
}

void UpdateSession::showIfInWindow()
{
    if (_manner != Manner::InWindow)
        return;
    if (const auto prompt = promptFor(_view, QLocale())) {
        _windowIsOpen = true;
        _with.interface.show(*prompt);
    }
}

void UpdateSession::leaveWindow()
{
    _manner = Manner::Background;
    if (std::exchange(_windowIsOpen, false))
        _with.interface.close();
}

void UpdateSession::finishSession()
{
    _run.reset();
    leaveWindow();
    _view.stage = _hasStaged ? Stage::Ready : Stage::Idle;
    if (_hasStaged)
        _view.offer = _stagedOffer;
    planNextCheck();
}

} // namespace ferrobank::updates
