// The steps of a session: what the worker is told to do and what its answers lead to.

#include "Ferrobank/Words/Said.h"
#include "Platform/linux/updates/session/Prompts.h"
#include "Platform/linux/updates/session/Schedule.h"
#include "Platform/linux/updates/session/UpdateSession.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtCore/QPointer>

#include <utility>

namespace ferrobank::updates {

using namespace Qt::StringLiterals;

namespace {

/// What the user is told when sessions in the background have failed for long.
QString silenceTitle(Problem problem, bool isAboutOffer)
{
    if (isAboutOffer)
        return UpdateSession::tr("An update could not be installed");
    const bool isDoubtful =
        problem == Problem::Stale || problem == Problem::Signature || problem == Problem::Feed;
    return isDoubtful ? UpdateSession::tr("Updates could not be confirmed")
                      : UpdateSession::tr("Ferrobank could not look for updates");
}

} // namespace

QJsonObject UpdateSession::request() const
{
    return {{u"bundle"_s, _with.bundle},
            {u"byUser"_s, _manner == Manner::InWindow},
            {u"group"_s, qint64{_state.group}},
            {u"skips"_s, QJsonObject{{u"version"_s, _state.skippedVersion},
                                     {u"majorVersion"_s, _state.skippedMajorVersion},
                                     {u"majorVersionRelease"_s, _state.skippedMajorRelease}}},
            {u"highestVersionSeen"_s, _state.highestVersionSeen},
            {u"newestDateSeen"_s, _state.newestDateSeen},
            {u"validUntilSeen"_s, _state.validUntilSeen}};
}

// Check

void UpdateSession::beginCheck(Manner manner)
{
    _manner = manner;
    ++_turn;
    _state.lastCheck = now();
    save();
    enter(Stage::Checking);
    _run =
        _with.worker.start(u"check"_s, request(), [this](const QJsonObject& event) { onCheckEvent(event); });
}

void UpdateSession::onCheckEvent(const QJsonObject& event)
{
    _run.reset();
    _state.lastCheck = now();
    if (event[u"event"_s] == "metered"_L1) {
        // Counts like a failure for the next attempt, in an hour or more, and for nothing else.
        ++_state.failures;
        countSilence(tr("Ferrobank has not looked for updates"),
                     tr("The connection is paid by volume. Choose “Check for Updates…” to look now."));
        save();
        finishSession();
        return;
    }
    if (event[u"event"_s] != "checked"_L1) {
        fail(event);
        return;
    }
    rememberGenuineFeed(event);
    takePlace(event);
    if (event.contains(u"offer"_s))
        takeOffer(event);
    else
        takeNothing(event);
}

void UpdateSession::rememberGenuineFeed(const QJsonObject& event)
{
    _state.lastGenuine = now();
    _state.highestVersionSeen = event[u"highestVersion"_s].toString();
    _state.newestDateSeen = event[u"newestDate"_s].toString();
    _state.validUntilSeen = event[u"validUntil"_s].toString();
    const bool isByUser = _manner == Manner::InWindow;
    if (isByUser && event.contains(u"offer"_s)) {
        _state.skippedVersion.clear();
        _state.skippedMajorVersion.clear();
        _state.skippedMajorRelease.clear();
    }
    save();
}

void UpdateSession::takeOffer(const QJsonObject& event)
{
    const Offer offer = offerFromJson(event[u"offer"_s].toObject());
    if (_hasStaged && offer.version == _stagedOffer.version) {
        wentWell();
        _manner == Manner::InWindow ? enter(Stage::Ready) : finishSession();
        return;
    }
    _view.offer = offer;
    _minimumForAutomatic = event[u"minimumForAutomatic"_s].toString();
    if (_manner == Manner::InWindow) {
        wentWell();
        enter(Stage::Found);
        return;
    }
    const bool isSilent = _view.mayReplace && !offer.major && !offer.informational &&
                          downloadsAutomatically(_with.configuration, _state);
    if (!isSilent) {
        announceOffer();
        return;
    }
    if (mayFetch(_state, offer, now())) {
        beginFetch(Manner::Background);
        return;
    }
    _state.failures = 0;
    countSilence(tr("An update could not be installed"), refusalOf(_state, offer)->sentence);
    save();
    finishSession();
}

void UpdateSession::takeNothing(const QJsonObject& event)
{
    _view.nothingNew = {event[u"reason"_s].toString(), event[u"latest"_s].toString(),
                        QUrl(event[u"latestLink"_s].toString()), QUrl(event[u"history"_s].toString())};
    if (_manner == Manner::InWindow) {
        wentWell();
        enter(Stage::NothingNew);
        return;
    }
    const QString& reason = _view.nothingNew.reason;
    const bool isKeptBack =
        reason == "systemTooOld"_L1 || reason == "systemTooNew"_L1 || reason == "takenBack"_L1;
    if (isKeptBack) {
        _state.failures = 0;
        SessionView told = _view;
        told.stage = Stage::NothingNew;
        const auto prompt = promptFor(told, QLocale());
        countSilence(prompt->headline, prompt->text);
        save();
    } else
        wentWell();
    finishSession();
}

void UpdateSession::announceOffer()
{
    const Offer& offer = _view.offer;
    wentWell();
    if (_state.announced != offer.version) {
        _state.announced = offer.version;
        save();
        const QString title =
            offer.critical ? tr("Important update for Ferrobank") : tr("Update for Ferrobank");
        _with.surroundings.notify(
            title, tr("Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.")
                       .arg(offer.displayVersion));
    }
    finishSession();
}

// Fetch

void UpdateSession::beginFetch(Manner manner)
{
    _manner = manner;
    _view.bytes = 0;
    _hasStaged = false; // the worker drops what waited before it downloads
    enter(Stage::Downloading);
    QJsonObject order = request();
    order[u"offer"_s] = offerToJson(_view.offer);
    _run = _with.worker.start(u"fetch"_s, order, [this](const QJsonObject& event) { onFetchEvent(event); });
}

void UpdateSession::onFetchEvent(const QJsonObject& event)
{
    const QString name = event[u"event"_s].toString();
    if (name == "progress"_L1) {
        _view.bytes = event[u"bytes"_s].toInteger();
        showIfInWindow();
    } else if (name == "verifying"_L1)
        enter(Stage::Preparing);
    else if (name == "staged"_L1) {
        _run.reset();
        if (_view.offer.phased) {
            _state.group = random();
            save();
        }
        staged();
    } else
        fail(event, About::TheOffer);
}

void UpdateSession::staged()
{
    _hasStaged = true;
    _stagedOffer = _view.offer;
    _waitsForQuit = false;
    _state.announced.clear();
    wentWell();
    enter(Stage::Ready);
    offerToDelegate();
    if (_view.stage != Stage::Ready || _manner == Manner::InWindow)
        return;
    if (_stagedOffer.critical)
        _with.surroundings.notify(tr("Important update for Ferrobank"),
                                  tr("Ferrobank %1 is ready. It is installed when you close the window.")
                                      .arg(_stagedOffer.displayVersion));
    planNextCheck();
}

void UpdateSession::offerToDelegate()
{
    const bool isWaiting = _hasStaged && _view.stage == Stage::Ready && _manner == Manner::Background;
    if (!isWaiting || _waitsForQuit)
        return;
    const QPointer<UpdateSession> self(this);
    _with.delegate.willInstallUpdateOnQuit({_stagedOffer.version, _stagedOffer.displayVersion}, [self] {
        if (self && self->_view.stage == Stage::Ready)
            self->beginInstall();
    });
}

void UpdateSession::remind()
{
    const bool isWaiting = _hasStaged && _view.stage == Stage::Ready && _manner == Manner::Background;
    if (isWaiting)
        _with.surroundings.notify(
            tr("Update for Ferrobank"),
            tr("Ferrobank %1 is ready. It is installed when you close the window or quit.")
                .arg(_stagedOffer.displayVersion));
}

// Install

void UpdateSession::beginInstall()
{
    enter(Stage::Installing);
    QJsonObject order = request();
    order[u"pid"_s] = qint64{QCoreApplication::applicationPid()};
    order[u"relaunch"_s] = true;
    _run =
        _with.worker.start(u"install"_s, order, [this](const QJsonObject& event) { onInstallEvent(event); });
}

void UpdateSession::beginRelaunch()
{
    enter(Stage::Installing);
    QJsonObject order = request();
    order[u"pid"_s] = qint64{QCoreApplication::applicationPid()};
    order[u"from"_s] = _with.configuration.version;
    _run =
        _with.worker.start(u"relaunch"_s, order, [this](const QJsonObject& event) { onInstallEvent(event); });
}

void UpdateSession::onInstallEvent(const QJsonObject& event)
{
    if (event[u"event"_s] == "waiting"_L1) {
        if (_hasStaged)
            noteInstalling();
        // From now on it only waits for this process to end.
        _run->release();
        _run.reset();
        _with.quit();
        return;
    }
    // What cannot be installed is not kept: a later check begins anew.
    const bool isBusy = problemFromWord(event[u"problem"_s].toString().toStdString()) == Problem::Busy;
    const bool wasStaged = std::exchange(_hasStaged, _hasStaged && isBusy);
    fail(event, wasStaged ? About::TheOffer : About::TheWay);
}

void UpdateSession::noteInstalling()
{
    _state.installing = _stagedOffer.version;
    _state.installingSignature = _stagedOffer.signature;
    save();
}

// Failure

void UpdateSession::fail(const QJsonObject& event, About about)
{
    _run.reset();
    _view.problem = problemFromWord(event[u"problem"_s].toString().toStdString());
    _view.sentence = said(event[u"sentence"_s].toString());
    if (about == About::TheOffer && isRefusal(_view.problem)) {
        noteRefusal(_state, _view.offer, now(), _view.sentence);
        _state.failures = 0;
    } else
        ++_state.failures;
    if (_manner == Manner::InWindow) {
        save();
        enter(Stage::Failed);
        return;
    }
    qInfo("Updates: %s", qUtf8Printable(_view.sentence));
    countSilence(silenceTitle(_view.problem, about == About::TheOffer), _view.sentence);
    save();
    finishSession();
}

void UpdateSession::wentWell()
{
    _state.failures = 0;
    endSilence(_state);
    save();
}

void UpdateSession::countSilence(const QString& title, const QString& sentence)
{
    if (!countsAsSilence(_state, latestKnown()))
        return;
    _with.surroundings.notify(title, tr("It has been so for two weeks. %1").arg(sentence));
}

} // namespace ferrobank::updates
