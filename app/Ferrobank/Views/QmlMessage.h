#pragma once

#include "Ferrobank/Views/ForwardingHost.h"
#include "Ferrobank/Views/MessageWindow.h"

#include <QtCore/QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace ferrobank {

class QmlWindow;

/// What the message binds to. Main thread; lives as long as the window's content.
class MessagePresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(QString text READ text CONSTANT)
    Q_PROPERTY(bool question READ isQuestion CONSTANT)

public:
    explicit MessagePresenter(Message message) : _message(std::move(message)) {}

    [[nodiscard]] QString text() const { return _message.text; }

    [[nodiscard]] bool isQuestion() const { return _message.kind == Message::Kind::Question; }

Q_SIGNALS:
    void goesOn();

private:
    Message _message;
};

/// The message drawn in QML, in the look of the other windows.
class QmlMessage : public QObject, public MessageWindow {
    Q_OBJECT

public:
    explicit QmlMessage(WindowHost& host);
    ~QmlMessage() override;

    void show(const Message& message, QWindow* parent, std::function<void(bool)> answered) override;
    [[nodiscard]] bool isOpen() const override;

    /// For tests and pictures, once shown.
    [[nodiscard]] QmlWindow& window() { return *_window; }

private:
    ForwardingHost _host;
    std::function<void(bool)> _answered;
    std::unique_ptr<QmlWindow> _window;
    bool _goesOn = false;
    bool _isOpen = false;
};

} // namespace ferrobank
