#include "Ferrobank/Views/LoginItemsPresenter.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/LoginServices.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Model/FailureText.h"

namespace ferrobank {

LoginItemRow::LoginItemRow(LoginServices& services, LoginService service)
    : _services(services), _service(service), _status(services.known(service))
{
    connect(&_services, &LoginServices::changed, this, &LoginItemRow::follow);
    refresh();
}

bool LoginItemRow::isOn() const
{
    return _wish.value_or(_status == LoginServiceStatus::Enabled);
}

bool LoginItemRow::isAvailable() const
{
    return _status && *_status != LoginServiceStatus::NotFound;
}

QString LoginItemRow::state() const
{
    if (!_status) {
        return tr("Your system has not answered yet.");
    }
    return _service == LoginService::Agent ? stateOfAgent(*_status) : stateOfMenu(*_status);
}

QString LoginItemRow::stateOfAgent(LoginServiceStatus status) const
{
    switch (status) {
    case LoginServiceStatus::Enabled:
        return tr("On. Your drive is there when you log in.");
    case LoginServiceStatus::RequiresApproval:
        return tr("Switched off. Your drive stays away until you turn this on.");
    case LoginServiceStatus::NotRegistered:
        return tr("Off. Setup turns this on.");
    case LoginServiceStatus::NotFound:
        return tr("Not available: a part of Ferrobank is missing.");
    }
    return {};
}

QString LoginItemRow::stateOfMenu(LoginServiceStatus status) const
{
    switch (status) {
    case LoginServiceStatus::Enabled:
        return tr("On. The Ferrobank menu appears when you log in.");
    case LoginServiceStatus::RequiresApproval:
        return tr("Switched off. The menu appears only when you open Ferrobank.");
    case LoginServiceStatus::NotRegistered:
        return tr("Off. The menu appears only when you open Ferrobank.");
    case LoginServiceStatus::NotFound:
        return tr("Not available: a part of Ferrobank is missing.");
    }
    return {};
}

void LoginItemRow::setOn(bool on)
{
    spawn(this, carryOut(on));
}

QCoro::Task<> LoginItemRow::carryOut(bool on)
{
    const auto life = _lifeline.hold();
    _failure.clear();
    _wish = on;
    ++_wishesUnderWay;
    Q_EMIT changed();
    QString failure;
    try {
        co_await _services.setOn(_service, on);
    } catch (const std::exception& error) {
        failure = failureText(error);
    }
    if (life.isCut()) {
        co_return;
    }
    _failure = failure;
    --_wishesUnderWay;
    if (_wishesUnderWay == 0) {
        _wish.reset();
    }
    _status = _services.known(_service);
    Q_EMIT changed();
}

void LoginItemRow::refresh()
{
    _services.look(_service);
}

void LoginItemRow::follow()
{
    const auto status = _services.known(_service);
    if (_status != status && _wishesUnderWay == 0) {
        _status = status;
        _failure.clear();
        Q_EMIT changed();
    }
}

LoginItemsPresenter::LoginItemsPresenter(const WindowCollaborators& with)
    : _agent(with.loginServices, LoginService::Agent),
      _menu(with.loginServices, LoginService::MainApp),
      _diagnostics(with.diagnostics)
{
    connect(&with.model, &AppModel::statusChanged, this, &LoginItemsPresenter::refresh);
}

void LoginItemsPresenter::refresh()
{
    _agent.refresh();
    _menu.refresh();
}

} // namespace ferrobank
