#include "Ferrobank/Views/LoginItemsPresenter.h"

#include "Ferrobank/Model/AppModel.h"

namespace ferrobank {

LoginItemRow::LoginItemRow(LoginItemRegistry& registry, LoginService service)
    : _registry(registry), _service(service), _status(registry.status(service))
{}

QString LoginItemRow::state() const
{
    return _service == LoginService::Agent ? stateOfAgent() : stateOfMenu();
}

QString LoginItemRow::stateOfAgent() const
{
    switch (_status) {
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

QString LoginItemRow::stateOfMenu() const
{
    switch (_status) {
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
    _failure.clear();
    try {
        if (on) {
            _registry.registerService(_service, UserSwitch::Override);
        } else {
            _registry.unregisterService(_service);
        }
    } catch (const RegistryError& error) {
        _failure = QString::fromUtf8(error.what());
    }
    _status = _registry.status(_service);
    Q_EMIT changed();
}

void LoginItemRow::refresh()
{
    const auto status = _registry.status(_service);
    if (_status != status) {
        _status = status;
        _failure.clear();
        Q_EMIT changed();
    }
}

LoginItemsPresenter::LoginItemsPresenter(const WindowCollaborators& with)
    : _agent(with.registry, LoginService::Agent),
      _menu(with.registry, LoginService::MainApp),
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
