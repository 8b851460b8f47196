#include "support/fakes/FakeRegistry.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace ferrobank {

LoginServiceStatus FakeRegistry::status(LoginService service)
{
    ++entry(service).statusReads;
    return entry(service).status;
}

void FakeRegistry::registerService(LoginService service, UserSwitch userSwitch)
{
    record(u"register "_s, service);
    Entry& changed = entry(service);
    changed.lastSwitch = userSwitch;
    if (changed.registerError) {
        changed.status = changed.statusAfterRegister.value_or(changed.status);
        throw RegistryError(*changed.registerError);
    }
    changed.status = changed.statusAfterRegister.value_or(LoginServiceStatus::Enabled);
}

void FakeRegistry::unregisterService(LoginService service)
{
    record(u"unregister "_s, service);
    Entry& changed = entry(service);
    if (changed.unregisterError) {
        throw RegistryError(*changed.unregisterError);
    }
    changed.status = LoginServiceStatus::NotRegistered;
}

void FakeRegistry::followMovedBundle(LoginService service)
{
    followed.append(service);
    if (std::exchange(entry(service).moved, false)) {
        entry(service).status = LoginServiceStatus::Enabled;
    }
}

void FakeRegistry::openSystemSettingsLoginItems()
{
    calls.append(u"open settings"_s);
}

FakeRegistry::Entry& FakeRegistry::entry(LoginService service)
{
    return service == LoginService::Agent ? agent : mainApp;
}

void FakeRegistry::record(const QString& verb, LoginService service)
{
    calls.append(verb + (service == LoginService::Agent ? u"agent"_s : u"login item"_s));
    if (meanwhile) {
        meanwhile();
    }
}

} // namespace ferrobank
