#include "Ferrobank/Model/DriveState.h"

#include <QtCore/QCoreApplication>

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

DriveState::Kind kindOf(const DriveStatus& status)
{
    if (status.mounted) {
        return DriveState::Mounted;
    }
    if (status.attach_error) {
        return DriveState::NeedsAttention;
    }
    return status.installed ? DriveState::Starting : DriveState::NotSetUp;
}

} // namespace

DriveState::DriveState(const DriveStatus& status) : _kind(kindOf(status)) {}

QString DriveState::word() const
{
    switch (_kind) {
    case Mounted:
        return QCoreApplication::translate("DriveState", "Mounted");
    case NeedsAttention:
        return QCoreApplication::translate("DriveState", "Needs attention");
    case Starting:
        return QCoreApplication::translate("DriveState", "Starting…");
    case NotSetUp:
        return QCoreApplication::translate("DriveState", "Not set up");
    }
    Q_UNREACHABLE();
}

QString DriveState::symbol() const
{
    switch (_kind) {
    case Mounted:
        return u"checkmark.circle.fill"_s;
    case NeedsAttention:
        return u"exclamationmark.triangle.fill"_s;
    case Starting:
        return u"clock.fill"_s;
    case NotSetUp:
        return u"minus.circle.fill"_s;
    }
    Q_UNREACHABLE();
}

DriveState::Colour DriveState::colour() const
{
    switch (_kind) {
    case Mounted:
        return Green;
    case NeedsAttention:
        return Red;
    case Starting:
        return Orange;
    case NotSetUp:
        return Secondary;
    }
    Q_UNREACHABLE();
}

} // namespace ferrobank
