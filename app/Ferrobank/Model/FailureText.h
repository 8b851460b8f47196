#pragma once

#include "Ferrobank/Words/Said.h"

#include <QtCore/QString>

#include <exception>

namespace ferrobank {

/// What a failure says to the user: our own errors carry their sentence, the system's come through as they
/// are; in the user's language where there are words for it.
[[nodiscard]] inline QString failureText(const std::exception& error)
{
    return said(QString::fromUtf8(error.what()));
}

} // namespace ferrobank
