#include "Ferrobank/FerrobankApp/Alerts.h"

#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

namespace ferrobank {

void showAlert(const QString& text, QWindow* parent)
{
    auto* box = new QMessageBox;
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Critical);
    box->setWindowTitle(QApplication::applicationDisplayName());
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->setText(text);
    box->setStandardButtons(QMessageBox::Ok);
    box->setWindowModality(Qt::ApplicationModal);
    if (parent != nullptr) {
        box->winId(); // makes the native window that the parent is set on
        box->windowHandle()->setTransientParent(parent);
    }
    box->show();
    box->raise();
    box->activateWindow();
}

} // namespace ferrobank
