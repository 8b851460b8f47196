#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

class QWindow;

namespace ferrobank {

/// For a program that cannot show a window of its own: what draws them is missing.
///
/// Shows one modal message with the program's name, the words and one button, and returns at once. Main
/// thread. The words are plain text and can be selected. `parent` is the window in front of which it belongs,
/// if one is open; without one the message stands alone and asks for the focus itself.
void showAlert(const QString& text, QWindow* parent);

/// The same with a button to go on and one to leave it. True when the user goes on.
QCoro::Task<bool> askToGoOn(QString text, QWindow* parent);

} // namespace ferrobank
