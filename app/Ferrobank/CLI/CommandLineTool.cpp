#include "Ferrobank/CLI/CommandLineTool.h"

#include "Ferrobank/CLI/CLI.h"
#include "Platform/Latch.h"
#include "Platform/LinkPlacement.h"

#include <QtCore/QFile>

#include <exception>
#include <filesystem>
#include <system_error>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

std::filesystem::path pathOf(const QString& text)
{
    return QFile::encodeName(text).toStdString();
}

} // namespace

CommandLineTool::CommandLineTool(QString target, PrivilegedLink& privilegedLink, QString link)
    : _target(std::move(target)), _privilegedLink(privilegedLink), _link(std::move(link))
{}

bool CommandLineTool::isInstalled() const
{
    // Native texts, because paths compare by their components.
    const auto text = storedLinkText(pathOf(_link));
    return text && text->native() == pathOf(_target).native();
}

QCoro::Task<> CommandLineTool::install()
{
    const Lifeline::Hold hold = _lifeline.hold();
    if (_underWay) {
        const Latch over = *_underWay;
        co_await over.wait();
        if (hold.isCut() || !isInstalled()) {
            throw Cancelled();
        }
        co_return;
    }
    Latch over;
    _underWay = std::make_shared<Latch>(over);
    std::exception_ptr failure;
    try {
        co_await installOnce();
    } catch (...) {
        failure = std::current_exception();
    }
    if (!hold.isCut()) {
        _underWay.reset();
    }
    over.open();
    if (failure) {
        std::rethrow_exception(failure);
    }
}

CommandLineTool::Removal CommandLineTool::remove() const
{
    if (!isInstalled()) {
        return Removal::NotThere;
    }
    std::error_code error;
    std::filesystem::remove(pathOf(_link), error);
    return error ? Removal::Refused : Removal::Removed;
}

QCoro::Task<> CommandLineTool::installOnce()
{
    if (isInstalled()) {
        co_return;
    }
    bool needsAdministrator = false;
    try {
        placeLink(pathOf(_target), pathOf(_link));
    } catch (const NotALinkError&) {
        throw CLI::Failure(_link + u" already exists and is not a link, so Ferrobank left it alone."_s);
    } catch (const std::filesystem::filesystem_error&) {
        needsAdministrator = true;
    }
    if (needsAdministrator) {
        co_await installAsAdmin();
    }
}

QCoro::Task<> CommandLineTool::installAsAdmin()
{
    const QString prompt = u"Ferrobank wants to add the ferrobank command to /usr/local/bin."_s;
    const PrivilegedOutcome outcome = co_await _privilegedLink.make(_target, _link, prompt);
    switch (outcome.kind) {
    case PrivilegedOutcome::Kind::Done:
        co_return;
    case PrivilegedOutcome::Kind::Cancelled:
        throw Cancelled();
    case PrivilegedOutcome::Kind::Failed:
        throw CLI::Failure(outcome.message.isEmpty() ? u"Could not add the ferrobank command."_s
                                                     : outcome.message);
    }
}

} // namespace ferrobank
