#include "Ferrobank/Views/ChecksPresenter.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Model/AppModel.h"

namespace ferrobank {

ChecksPresenter::ChecksPresenter(const WindowCollaborators& with) : _with(with)
{
    connect(&_with.model, &AppModel::checksRunningChanged, this, &ChecksPresenter::runningChanged);
}

CheckItemModel* ChecksPresenter::checks() const
{
    return _with.model.checkRows();
}

bool ChecksPresenter::isRunning() const
{
    return _with.model.checksRunning();
}

void ChecksPresenter::appeared()
{
    if (_with.model.checks().isEmpty()) {
        runAgain();
    }
}

void ChecksPresenter::runAgain()
{
    spawn(&_with.model, _with.model.runChecks());
}

void ChecksPresenter::fix(FixActions::Action action)
{
    spawn(&_with.model, _with.model.fix(action));
}

} // namespace ferrobank
