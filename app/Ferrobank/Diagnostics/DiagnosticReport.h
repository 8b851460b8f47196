#pragma once

#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/CLI/DriveStatus.h"
#include "Ferrobank/Diagnostics/ToolJournal.h"
#include "Platform/LoginItemRegistry.h"
#include "Platform/SystemReport.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// Everything that a problem report tells. Plain value; what is unknown is empty.
struct DiagnosticFacts {
    QString version;     ///< of the application
    QString toolVersion; ///< as the drive tool prints it
    QString toolkit;
    QString system;
    QString kernel;
    QString language;
    SystemFacts surroundings;
    LoginServiceStatus agent = LoginServiceStatus::NotRegistered;
    LoginServiceStatus menu = LoginServiceStatus::NotRegistered;
    bool setupComplete = false;
    std::optional<DriveStatus> drive;
    QList<CheckItem> checks;
    QList<ToolJournal::Entry> toolFailures;
    QString home; ///< the user's home folder, written as "~"
};

/// The report: one fact a line, in English, for whoever helps. Pure. It names neither the account nor the
/// computer, and no path shows the home folder's real place.
[[nodiscard]] QString diagnosticReport(const DiagnosticFacts& facts);

} // namespace ferrobank
