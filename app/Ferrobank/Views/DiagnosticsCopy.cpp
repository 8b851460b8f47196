#include "Ferrobank/Views/DiagnosticsCopy.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Diagnostics/Diagnostics.h"

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

namespace ferrobank {

DiagnosticsCopy::DiagnosticsCopy(Diagnostics& diagnostics) : _diagnostics(diagnostics) {}

void DiagnosticsCopy::copy()
{
    if (!_busy) {
        setBusy(true);
        spawn(this, gather());
    }
}

QCoro::Task<> DiagnosticsCopy::gather()
{
    const Lifeline::Hold hold = _lifeline.hold();
    const QString report = co_await _diagnostics.gather();
    if (hold.isCut()) {
        co_return;
    }
    QGuiApplication::clipboard()->setText(report);
    setBusy(false);
    Q_EMIT copied();
}

void DiagnosticsCopy::setBusy(bool busy)
{
    _busy = busy;
    Q_EMIT busyChanged();
}

} // namespace ferrobank
