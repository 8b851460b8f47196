#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Ferrobank/Components/Palette.h"
#include "Ferrobank/Views/MainWindow.h"
#include "Platform/Volumes.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace ferrobank {

/// Everything the dashboard shows, in the words it shows, and what its controls do. Main thread; lives as
/// long as the window. A status that reads the same changes nothing here.
class DashboardPresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(bool hasStatus READ hasStatus NOTIFY figuresChanged)
    Q_PROPERTY(QString stateWord READ stateWord NOTIFY figuresChanged)
    Q_PROPERTY(QString stateSymbol READ stateSymbol NOTIFY figuresChanged)
    Q_PROPERTY(ferrobank::Tints::Tint stateTint READ stateTint NOTIFY figuresChanged)
    Q_PROPERTY(QString mountpoint READ mountpoint NOTIFY figuresChanged)
    Q_PROPERTY(QString attachError READ attachError NOTIFY figuresChanged)

    Q_PROPERTY(bool nothingSaved READ nothingSaved NOTIFY figuresChanged)
    Q_PROPERTY(QString saved READ saved NOTIFY figuresChanged)
    Q_PROPERTY(QString savingSentence READ savingSentence NOTIFY figuresChanged)
    Q_PROPERTY(double fraction READ fraction NOTIFY figuresChanged)

    Q_PROPERTY(QString filesOnDrive READ filesOnDrive NOTIFY figuresChanged)
    Q_PROPERTY(QString storedOnDisk READ storedOnDisk NOTIFY figuresChanged)
    Q_PROPERTY(QString freeOnThisMac READ freeOnThisMac NOTIFY figuresChanged)
    Q_PROPERTY(QString driveSize READ driveSize NOTIFY figuresChanged)

    Q_PROPERTY(bool healthRunning READ healthRunning NOTIFY healthChanged)
    Q_PROPERTY(QString healthSymbol READ healthSymbol NOTIFY healthChanged)
    Q_PROPERTY(ferrobank::Tints::Tint healthTint READ healthTint NOTIFY healthChanged)
    Q_PROPERTY(QString healthText READ healthText NOTIFY healthChanged)
    Q_PROPERTY(QString healthNote READ healthNote NOTIFY healthChanged)

    Q_PROPERTY(
        bool menuOpensAtLogin READ menuOpensAtLogin WRITE setMenuOpensAtLogin NOTIFY menuOpensAtLoginChanged)
    Q_PROPERTY(bool cliInstalled READ cliInstalled NOTIFY cliChanged)
    Q_PROPERTY(bool cliInstalling READ cliInstalling NOTIFY cliChanged)
    Q_PROPERTY(QString cliLink READ cliLink CONSTANT)
    Q_PROPERTY(QString logNote READ logNote NOTIFY logNoteChanged)

public:
    explicit DashboardPresenter(const WindowCollaborators& with);
    ~DashboardPresenter() override;

    /// The first status has been read; until then there is nothing but a spinner.
    [[nodiscard]] bool hasStatus() const { return _figures.hasStatus; }

    [[nodiscard]] QString stateWord() const { return _figures.stateWord; }

    [[nodiscard]] QString stateSymbol() const { return _figures.stateSymbol; }

    [[nodiscard]] Tint stateTint() const { return _figures.stateTint; }

    [[nodiscard]] QString mountpoint() const { return _figures.mountpoint; }

    /// Empty unless the drive needs attention.
    [[nodiscard]] QString attachError() const { return _figures.attachError; }

    [[nodiscard]] bool nothingSaved() const { return _figures.nothingSaved; }

    [[nodiscard]] QString saved() const { return _figures.saved; }

    [[nodiscard]] QString savingSentence() const { return _figures.savingSentence; }

    [[nodiscard]] double fraction() const { return _figures.fraction; }

    [[nodiscard]] QString filesOnDrive() const { return _figures.filesOnDrive; }

    [[nodiscard]] QString storedOnDisk() const { return _figures.storedOnDisk; }

    [[nodiscard]] QString freeOnThisMac() const { return _figures.freeOnThisMac; }

    [[nodiscard]] QString driveSize() const { return _figures.driveSize; }

    [[nodiscard]] bool healthRunning() const { return _health.running; }

    [[nodiscard]] QString healthSymbol() const { return _health.symbol; }

    [[nodiscard]] Tint healthTint() const { return _health.tint; }

    [[nodiscard]] QString healthText() const { return _health.text; }

    [[nodiscard]] QString healthNote() const { return _health.note; }

    [[nodiscard]] bool menuOpensAtLogin() const;
    void setMenuOpensAtLogin(bool value);

    [[nodiscard]] bool cliInstalled() const { return _cliInstalled; }

    [[nodiscard]] bool cliInstalling() const { return _cliInstalling; }

    [[nodiscard]] QString cliLink() const;

    /// Why the log was not shown when it was asked for; empty when it was.
    [[nodiscard]] QString logNote() const { return _logNote; }

    /// The dashboard came on the screen; its settings are read anew.
    Q_INVOKABLE void appeared();

    /// The full dashboard, with a status, came on the screen: runs the checks unless there are results.
    Q_INVOKABLE void figuresAppeared();

    Q_INVOKABLE void disappeared();
    Q_INVOKABLE void showInFinder();
    Q_INVOKABLE void runChecks();
    Q_INVOKABLE void installCommandLineTool();
    Q_INVOKABLE void showLog();
    Q_INVOKABLE void uninstall();

Q_SIGNALS:
    void figuresChanged();
    void healthChanged();
    void menuOpensAtLoginChanged();
    void cliChanged();
    void logNoteChanged();

private:
    struct Figures {
        bool hasStatus = false;
        QString stateWord;
        QString stateSymbol;
        Tint stateTint = Tint::Secondary;
        QString mountpoint;
        QString attachError;
        bool nothingSaved = true;
        QString saved;
        QString savingSentence;
        double fraction = 0;
        QString filesOnDrive;
        QString storedOnDisk;
        QString freeOnThisMac;
        QString driveSize;

        friend bool operator==(const Figures&, const Figures&) = default;
    };

    struct Health {
        bool running = true;
        QString symbol;
        Tint tint = Tint::Secondary;
        QString text;
        QString note;

        friend bool operator==(const Health&, const Health&) = default;
    };

    [[nodiscard]] Figures readFigures() const;
    [[nodiscard]] Health readHealth() const;
    void updateFigures();
    void updateHealth();
    void readCapacities();
    QCoro::Task<> measureHome();
    QCoro::Task<> measureDrive(QString mountpoint);
    QCoro::Task<> install();

    WindowCollaborators _with;
    Figures _figures;
    Health _health;
    std::optional<quint64> _homeAvailable;
    std::optional<quint64> _driveTotal;
    QString _logNote;
    bool _shown = false;
    bool _cliInstalled = false;
    bool _cliInstalling = false;
    Lifeline _lifeline;
};

} // namespace ferrobank
