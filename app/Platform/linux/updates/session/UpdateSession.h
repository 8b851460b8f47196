#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Platform/UpdateController.h"
#include "Platform/UpdateInterface.h"
#include "Platform/linux/updates/session/SessionView.h"
#include "Platform/linux/updates/session/UpdateState.h"
#include "Platform/linux/updates/session/UpdateSurroundings.h"
#include "Platform/linux/updates/session/UpdateWorker.h"
#include "Platform/linux/updates/values/UpdateConfiguration.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>

#include <chrono>
#include <memory>

namespace ferrobank {
class Clock;
}

namespace ferrobank::updates {

/// What a session works with. References must outlive it.
struct SessionCollaborators {
    UpdateConfiguration configuration;
    QString bundle; ///< real path of the running bundle
    UpdateDelegate& delegate;
    UpdateInterface& interface;
    UpdateSurroundings& surroundings;
    UpdateWorker& worker;
    Clock& clock;
    UpdateStateStore& states;
    std::function<void()> quit;              ///< asks the application to end
    std::function<bool()> isOnTrial;         ///< whether the running version was just installed
    std::function<QString()> versionInPlace; ///< the version that a start would run now; empty for none
    std::function<std::uint32_t()> random;   ///< any number; the system's own where it is empty
};

/// The updater: schedule, consent, one session at a time, and the update that waits. Main thread; lives as
/// long as the application.
///
/// A session runs in the background or, once the user has asked, in the window; asking during a background
/// session brings that one up. A version that was downloaded in the background is offered to the delegate: at
/// once, after each reconsider(), at each scheduled check and at the next start. What the delegate refuses is
/// installed when the application quits. Failures of background sessions are silent and only delay the next
/// check, until a fortnight has passed without anything else: then the user is told, in the words of the
/// failure. An offer that was refused is not downloaded again before a day, later a week, has passed.
///
/// A copy that somebody else has replaced while it runs, a package manager or a person, is left alone: the
/// user is told once for each version and offered the relaunch; nothing is checked or installed before it.
class UpdateSession : public QObject {
    Q_OBJECT

public:
    explicit UpdateSession(SessionCollaborators collaborators);
    ~UpdateSession() override;

    /// Counts the launch and starts looking after updates.
    void start();

    void checkForUpdates();
    void reconsider();

    /// Something about the bundle's files has changed.
    void bundleChanged();

    /// To be called once when the application ends: installs what waits, without starting it again, and tells
    /// that the running version worked.
    void applicationQuits();

    [[nodiscard]] const SessionView& view() const { return _view; }

private:
    enum class Manner { Background, InWindow };

    QCoro::Task<> runStartUp();
    QCoro::Task<> runScheduledCheck(int turn, std::chrono::milliseconds delay);
    QCoro::Task<> reportHealthAfter(std::chrono::milliseconds delay);

    void planNextCheck();
    void beginCheck(Manner manner);
    void beginFetch(Manner manner);
    void beginInstall();
    void beginRelaunch();

    void onStatus(const QJsonObject& event);
    void onCheckEvent(const QJsonObject& event);
    void onFetchEvent(const QJsonObject& event);
    void onInstallEvent(const QJsonObject& event);

    void rememberGenuineFeed(const QJsonObject& event);
    void takeOffer(const QJsonObject& event);
    void takeNothing(const QJsonObject& event);
    void announceOffer();
    void staged();
    void offerToDelegate();
    void remind();
    [[nodiscard]] bool isReplaced();
    enum class About { TheWay, TheOffer };
    void fail(const QJsonObject& event, About about = About::TheWay);
    void wentWell(); ///< and the user knows what there is to know
    void countSilence(const QString& title, const QString& sentence); ///< of a session in the background
    void tellTakenBack(const QJsonObject& takenBack);
    void takePlace(const QJsonObject& event);
    void noteInstalling(); ///< before the program ends for an installation
    void settleInstallation(const QJsonObject& status);

    void act(UpdateAction action);
    void skip();
    void answerConsent(bool automatic);
    void setAutomaticDownload(bool automatic);

    void enter(Stage stage);
    void leaveWindow(); ///< what runs goes on without it
    void finishSession();
    void showIfInWindow();
    [[nodiscard]] QJsonObject request() const;
    [[nodiscard]] QDateTime now() const;
    [[nodiscard]] QDateTime latestKnown() const; ///< now, or a date that is past for certain
    [[nodiscard]] std::uint32_t random() const;
    void save() const;

    SessionCollaborators _with;
    UpdateState _state;
    SessionView _view;
    Manner _manner = Manner::Background;
    bool _hasStaged = false;
    Offer _stagedOffer;
    bool _waitsForQuit = false; ///< the user said so; the delegate is not asked before the next start
    bool _windowIsOpen = false;
    QString _minimumForAutomatic;
    QString _toldReplacement; ///< the version that the user was told of last
    std::unique_ptr<WorkerRun> _run;
    std::unique_ptr<WorkerRun> _healthRun;
    std::chrono::milliseconds _healthPause{0}; ///< before the note is tried again
    bool _isFolder = false;                    ///< this copy is of the kind that replaces itself
    int _turn = 0; ///< of the schedule; a planned check of an earlier turn is void
    Lifeline _lifeline;
};

} // namespace ferrobank::updates
