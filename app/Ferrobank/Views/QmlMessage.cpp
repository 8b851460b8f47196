#include "Ferrobank/Views/QmlMessage.h"

#include "Ferrobank/Views/QmlWindow.h"

#include <utility>

namespace ferrobank {

using namespace Qt::StringLiterals;

QmlMessage::QmlMessage(WindowHost& host)
    : _host(host, [this] {
          _isOpen = false;
          if (const auto answered = std::exchange(_answered, nullptr)) {
              answered(_goesOn);
          }
      })
{}

QmlMessage::~QmlMessage() = default;

void QmlMessage::show(const Message& message, QWindow* parent, std::function<void(bool)> answered)
{
    _answered = std::move(answered);
    QmlWindow::Scene scene{QUrl(u"qrc:/qt/qml/Ferrobank/Views/Message.qml"_s), [this, message] {
                               auto presenter = std::make_unique<MessagePresenter>(message);
                               connect(presenter.get(), &MessagePresenter::goesOn, this,
                                       [this] { _goesOn = true; });
                               return presenter;
                           }};
    scene.transientParent = parent;
    _window = std::make_unique<QmlWindow>(std::move(scene), _host);
    _isOpen = true;
    _window->open({});
}

bool QmlMessage::isOpen() const
{
    return _isOpen;
}

} // namespace ferrobank

ferrobank::MessageWindow* ferrobankMakeMessageWindow(const ferrobank::WindowCollaborators& with)
{
    return new ferrobank::QmlMessage(with.host);
}
