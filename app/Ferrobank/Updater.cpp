#include "Ferrobank/Updater.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

#include <algorithm>
#include <utility>

namespace ferrobank {

bool mayInstallUpdateNow(bool setupComplete, const std::vector<WindowFacts>& windows)
{
    if (!setupComplete)
        return false;
    return std::ranges::none_of(
        windows, [](const WindowFacts& window) { return window.visible && window.canBecomeMain; });
}

Updater::Updater(UpdaterCollaborators collaborators)
    : _collaborators(std::move(collaborators)), _controller(_collaborators.makeController(*this))
{}

void Updater::checkForUpdates()
{
    _controller->checkForUpdates();
}

void Updater::reconsider()
{
    _controller->reconsider();
}

bool Updater::willInstallUpdateOnQuit(const UpdateItem& /*item*/,
                                      std::function<void()> immediateInstallationBlock)
{
    if (QThread::currentThread() != QCoreApplication::instance()->thread())
        qFatal("The decision about an update was asked for outside the main thread.");

    // The windows are asked only when setup is finished: before that the answer is no anyway.
    const bool setupComplete = _collaborators.setupComplete();
    const bool mayInstall = setupComplete && mayInstallUpdateNow(setupComplete, _collaborators.windows());
    if (mayInstall)
        immediateInstallationBlock();
    return mayInstall;
}

} // namespace ferrobank
