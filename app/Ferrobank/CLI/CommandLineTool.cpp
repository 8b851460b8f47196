#include "Ferrobank/CLI/CommandLineTool.h"

#include "Ferrobank/CLI/CLI.h"
#include "Platform/LinkPlacement.h"

#include <QtCore/QFile>

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
