#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Ferrobank/Views/DiagnosticsCopy.h"
#include "Ferrobank/Views/MainWindow.h"
#include "Platform/LoginItemRegistry.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace ferrobank {

class LoginServices;

/// One switch of the Login Items window. Main thread; owned by the LoginItemsPresenter.
class LoginItemRow : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(bool on READ isOn NOTIFY changed)
    Q_PROPERTY(bool available READ isAvailable NOTIFY changed)
    Q_PROPERTY(QString state READ state NOTIFY changed)
    Q_PROPERTY(QString failure READ failure NOTIFY changed)

public:
    LoginItemRow(LoginServices& services, LoginService service);

    /// What the user wants while that is carried out, otherwise what the system has.
    [[nodiscard]] bool isOn() const;

    /// There is something that could be switched.
    [[nodiscard]] bool isAvailable() const;

    /// In words what is on.
    [[nodiscard]] QString state() const;

    /// Why the last switch did not work; empty otherwise.
    [[nodiscard]] QString failure() const { return _failure; }

    /// The user's own click: may undo an earlier switch-off. Ends when the system has it so, or refused.
    Q_INVOKABLE void setOn(bool on);

    void refresh();

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] QString stateOfAgent(LoginServiceStatus status) const;
    [[nodiscard]] QString stateOfMenu(LoginServiceStatus status) const;
    QCoro::Task<> carryOut(bool on);
    void follow();

    LoginServices& _services;
    LoginService _service;
    std::optional<LoginServiceStatus> _status; ///< absent while the system has not answered
    std::optional<bool> _wish;
    int _wishesUnderWay = 0;
    QString _failure;
    Lifeline _lifeline;
};

/// The Login Items window: both services of this application and a switch for each. Main thread; lives as
/// long as the window. Asks the registry anew whenever the window becomes active and at every poll of the
/// drive.
class LoginItemsPresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(ferrobank::LoginItemRow* agent READ agent CONSTANT)
    Q_PROPERTY(ferrobank::LoginItemRow* menu READ menu CONSTANT)
    Q_PROPERTY(ferrobank::DiagnosticsCopy* diagnostics READ diagnostics CONSTANT)

public:
    explicit LoginItemsPresenter(const WindowCollaborators& with);

    [[nodiscard]] LoginItemRow* agent() { return &_agent; }

    [[nodiscard]] LoginItemRow* menu() { return &_menu; }

    [[nodiscard]] DiagnosticsCopy* diagnostics() { return &_diagnostics; }

    Q_INVOKABLE void refresh();

private:
    LoginItemRow _agent;
    LoginItemRow _menu;
    DiagnosticsCopy _diagnostics;
};

} // namespace ferrobank
