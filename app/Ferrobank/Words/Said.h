#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// A sentence of one of our own programs or services, which know English alone, in the user's language; one
/// that has no words there stays as it is. Main thread. The words are read at the first call, from the
/// bundle.
[[nodiscard]] QString said(const QString& english);

} // namespace ferrobank
