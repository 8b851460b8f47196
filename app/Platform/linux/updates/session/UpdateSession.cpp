#include "Platform/linux/updates/session/UpdateSession.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Words/Said.h"
#include "Platform/Clock.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "Platform/linux/updates/session/Prompts.h"
#include "Platform/linux/updates/session/Schedule.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTimeZone>

#include <algorithm>
#include <utility>

namespace ferrobank::updates {

using namespace Qt::StringLiterals;

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kAfterStart = std::chrono::seconds(5); ///< the start of the program comes first
constexpr milliseconds kHealthyAfter = std::chrono::seconds(10);
constexpr milliseconds kFirstHealthPause = std::chrono::minutes(1);
constexpr milliseconds kLongestHealthPause = std::chrono::hours(1);
constexpr int kQuitPatience = 3000; ///< milliseconds
constexpr double kJitterSteps = 1000.0;

/// A random number as a share from -1 to 1.
double shareOf(std::uint32_t number)
{
    return (static_cast<double>(number % 2001) - kJitterSteps) / kJitterSteps;
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

QDateTime UpdateSession::latestKnown() const
{
    const QDateTime seen = QDateTime::fromString(_state.newestDateSeen, Qt::ISODate);
    return seen.isValid() ? std::max(seen, now()) : now();
}

std::uint32_t UpdateSession::random() const
{
    return _with.random ? _with.random() : QRandomGenerator::global()->generate();
}

void UpdateSession::save() const
{
    if (!_with.states.save(_state))
        qWarning("The updater's state could not be saved.");
}

// Schedule

void UpdateSession::start()
{
    _state = _with.states.load();
    ++_state.launches;
    while (_state.group == 0)
        _state.group = random();
    endAtNow(_state, latestKnown());
    _state.failedOffers.removeIf([this](const FailedOffer& offer) {
        return !isNewer(offer.version.toStdString(), _with.configuration.version.toStdString());
    });
    _view.automatic = downloadsAutomatically(_with.configuration, _state);
    save();
    if (_with.isOnTrial())
        spawn(this, reportHealthAfter(kHealthyAfter));
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

QCoro::Task<> UpdateSession::reportHealthAfter(milliseconds delay)
{
    const auto hold = _lifeline.hold();
    co_await _with.clock.sleep(delay);
    if (hold.isCut() || !_with.isOnTrial())
        co_return;
    _healthRun = _with.worker.start(u"healthy"_s, request(), [this](const QJsonObject& event) {
        if (event[u"event"_s] != "failed"_L1)
            return;
        // Without the note the next two starts would count against a version that works.
        _healthRun.reset();
        _healthPause = std::clamp(2 * _healthPause, kFirstHealthPause, kLongestHealthPause);
        spawn(this, reportHealthAfter(_healthPause));
    });
}

void UpdateSession::onStatus(const QJsonObject& event)
{
    _run.reset();
    if (event[u"event"_s] != "status"_L1) {
        // Nothing is known of the place now, which is no reason never to look for updates again.
        fail(event);
        return;
    }
    takePlace(event);
    settleInstallation(event);
    tellTakenBack(event[u"takenBack"_s].toObject());
    if (event.contains(u"staged"_s)) {
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

void UpdateSession::takePlace(const QJsonObject& event)
{
    const QJsonObject place = event[u"place"_s].toObject();
    _view.mayReplace = place[u"mayReplace"_s].toBool();
    _view.placeSentence = said(place[u"sentence"_s].toString());
    _view.advice = place[u"advice"_s].toString();
    _isFolder = place[u"isFolder"_s].toBool(_view.mayReplace);
}

void UpdateSession::settleInstallation(const QJsonObject& status)
{
    // What was begun when the program ended last time could tell its end to nobody.
    if (_state.installing.isEmpty())
        return;
    Offer offer;
    offer.version = std::exchange(_state.installing, {});
    offer.signature = std::exchange(_state.installingSignature, {});
    const bool isInstalled = !isNewer(offer.version.toStdString(), _with.configuration.version.toStdString());
    const bool waits = status[u"staged"_s].toObject()[u"version"_s].toString() == offer.version;
    const bool isTakenBack = status[u"takenBack"_s].toObject()[u"version"_s].toString() == offer.version;
    if (!isInstalled && !waits && !isTakenBack)
        noteRefusal(_state, offer, now(), tr("Ferrobank %1 could not be installed.").arg(offer.version));
    save();
}

void UpdateSession::tellTakenBack(const QJsonObject& takenBack)
{
    const QString version = takenBack[u"version"_s].toString();
    const QString failure = version + u' ' + QString::number(takenBack[u"times"_s].toInt());
    if (version.isEmpty() || _state.toldTakenBack == failure)
        return;
    _state.toldTakenBack = failure;
    save();
    const QDate until =
        QDateTime::fromString(takenBack[u"until"_s].toString(), Qt::ISODate).toLocalTime().date();
    _with.surroundings.notify(
        tr("Ferrobank %1 was taken back").arg(version),
        tr("It did not start on this computer, so %1 was put back. It is tried again after "
           "%2, or when you choose “Check for Updates…”.")
            .arg(_with.configuration.version, QLocale().toString(until, QLocale::ShortFormat)));
}

void UpdateSession::planNextCheck()
{
    ++_turn;
    const bool isQuiet = _view.stage == Stage::Idle || _view.stage == Stage::Ready;
    // A copy of the kind that replaces itself, but cannot in its place, looks too, and tells what it finds.
    const bool isOurs = _view.mayReplace || _isFolder;
    if (!isQuiet || !isOurs || !checksAutomatically(_with.configuration, _state))
        return;
    if (endAtNow(_state, latestKnown()))
        save();
    ScheduleFacts facts;
    facts.now = now();
    facts.lastCheck = _state.lastCheck;
    facts.interval = _with.configuration.interval;
    facts.failures = _state.failures;
    facts.hasStaged = _hasStaged;
    facts.needsAnswer = _hasStaged ? _stagedOffer.critical : !_state.announced.isEmpty();
    facts.clockIsBehind = now() < latestKnown();
    facts.jitter = shareOf(random());
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
    if (_view.replacementIsOlder)
        _with.surroundings.notify(tr("An older Ferrobank is installed"),
                                  tr("Ferrobank %1 was put in the place of %2, which is still running. The "
                                     "next start runs the older one.")
                                      .arg(_view.replacement, _view.installed));
    else
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
    _view.replacementIsOlder = isNewer(_with.configuration.version.toStdString(), version.toStdString());
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
    noteInstalling();
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
