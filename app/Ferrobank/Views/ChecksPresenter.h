#pragma once

#include "Ferrobank/Model/CheckItemModel.h"
#include "Ferrobank/Views/MainWindow.h"

#include <QtCore/QObject>
#include <QtQml/qqmlregistration.h>

namespace ferrobank {

/// The checks screen. Main thread; lives as long as the window and holds no state.
class ChecksPresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(ferrobank::CheckItemModel* checks READ checks CONSTANT)
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged)

public:
    explicit ChecksPresenter(const WindowCollaborators& with);

    [[nodiscard]] CheckItemModel* checks() const;
    [[nodiscard]] bool isRunning() const;

    /// Runs the checks unless there are results.
    Q_INVOKABLE void appeared();
    Q_INVOKABLE void runAgain();
    Q_INVOKABLE void fix(ferrobank::FixActions::Action action);

Q_SIGNALS:
    void runningChanged();

private:
    WindowCollaborators _with;
};

} // namespace ferrobank
