#pragma once

#include "Ferrobank/Async/Lifeline.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtQml/qqmlregistration.h>

namespace ferrobank {

class Diagnostics;

/// The action "Copy Diagnostics": gathers the report and puts it on the clipboard. Main thread; owned by the
/// presenter of the window that offers it.
class DiagnosticsCopy : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(bool busy READ isBusy NOTIFY busyChanged)

public:
    /// `diagnostics` must outlive the program's windows.
    explicit DiagnosticsCopy(Diagnostics& diagnostics);

    [[nodiscard]] bool isBusy() const { return _busy; }

    /// Returns at once; copied() follows. Does nothing while busy.
    Q_INVOKABLE void copy();

Q_SIGNALS:
    void busyChanged();
    void copied();

private:
    QCoro::Task<> gather();
    void setBusy(bool busy);

    Diagnostics& _diagnostics;
    bool _busy = false;
    Lifeline _lifeline;
};

} // namespace ferrobank
