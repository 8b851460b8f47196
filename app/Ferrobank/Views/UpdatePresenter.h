#pragma once

#include "Ferrobank/Views/DiagnosticsCopy.h"
#include "Platform/UpdateInterface.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace ferrobank {

/// What the update window binds to: one prompt, changed while it is shown. Main thread; lives as long as the
/// window's content. Nothing is decided here.
class UpdatePresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(QString headline READ headline NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString notes READ notes NOTIFY changed)
    Q_PROPERTY(bool busy READ isBusy NOTIFY changed)
    /// 0 to 1, or below 0 where nobody knows.
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(QString automaticTitle READ automaticTitle NOTIFY changed)
    Q_PROPERTY(bool automatic READ isAutomatic WRITE setAutomatic NOTIFY changed)
    /// As they stand from the leading to the trailing edge; the default button is the last.
    Q_PROPERTY(QStringList buttons READ buttons NOTIFY buttonsChanged)
    /// Which version runs.
    Q_PROPERTY(QString about READ about CONSTANT)
    Q_PROPERTY(ferrobank::DiagnosticsCopy* diagnostics READ diagnostics CONSTANT)

public:
    UpdatePresenter(UpdatePrompt prompt, Diagnostics& diagnostics);

    void setPrompt(const UpdatePrompt& prompt);

    [[nodiscard]] QString headline() const { return _prompt.headline; }

    [[nodiscard]] QString text() const { return _prompt.text; }

    [[nodiscard]] QString notes() const { return _prompt.notes; }

    [[nodiscard]] bool isBusy() const { return _prompt.isBusy; }

    [[nodiscard]] double progress() const { return _prompt.progress.value_or(-1); }

    [[nodiscard]] QString automaticTitle() const { return _prompt.automaticTitle; }

    [[nodiscard]] bool isAutomatic() const { return _prompt.automatic; }

    void setAutomatic(bool automatic);

    [[nodiscard]] QStringList buttons() const;

    [[nodiscard]] static QString about();

    [[nodiscard]] DiagnosticsCopy* diagnostics() { return &_diagnostics; }

    Q_INVOKABLE void press(int button);

Q_SIGNALS:
    void changed();
    void buttonsChanged();

    /// The user's wishes.
    void pressed(ferrobank::UpdateAction action);
    void automaticChosen(bool automatic);

private:
    UpdatePrompt _prompt;
    DiagnosticsCopy _diagnostics;
};

} // namespace ferrobank
