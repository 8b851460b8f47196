#include "Ferrobank/FerrobankApp/Alerts.h"

#include <QCoro/QCoroSignal>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

namespace ferrobank {

namespace {

QMessageBox* openBox(QMessageBox::Icon icon, const QString& text, QWindow* parent)
{
    auto* box = new QMessageBox;
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(icon);
    box->setWindowTitle(QApplication::applicationDisplayName());
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->setText(text);
    box->setWindowModality(Qt::ApplicationModal);
    if (parent != nullptr) {
        box->winId(); // makes the native window that the parent is set on
        box->windowHandle()->setTransientParent(parent);
    }
    return box;
}

void bringUp(QMessageBox& box)
{
    box.show();
    box.raise();
    box.activateWindow();
}

} // namespace

void showAlert(const QString& text, QWindow* parent)
{
    QMessageBox* box = openBox(QMessageBox::Critical, text, parent);
    box->setStandardButtons(QMessageBox::Ok);
    bringUp(*box);
}

QCoro::Task<bool> askToGoOn(QString text, QWindow* parent)
{
    QMessageBox* box = openBox(QMessageBox::Information, text, parent);
    box->setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
    bringUp(*box);
    const int answer = co_await qCoro(box, &QDialog::finished);
    co_return answer == QMessageBox::Ok;
}

} // namespace ferrobank
