#include "Platform/linux/link/PolkitLink.h"

#include "Platform/ChildProcess.h"
#include "Platform/LinkPlacement.h"
#include "Platform/linux/process/ForeignEnvironment.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>
#include <memory>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

using Kind = PrivilegedOutcome::Kind;

/// pkexec's own exit statuses.
constexpr int kDismissed = 126;
constexpr int kNotAuthorized = 127;

std::filesystem::path pathOf(const QString& text)
{
    return QFile::encodeName(text).toStdString();
}

/// What somebody should know before a program that a user can replace becomes everybody's.
QString warning()
{
    return QCoreApplication::translate(
        "PolkitLink",
        "This copy of Ferrobank can be changed without a password, and everybody on this computer would run "
        "it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from "
        "that.");
}

PrivilegedOutcome outcomeOf(Kind kind, const QString& message = {})
{
    PrivilegedOutcome outcome;
    outcome.kind = kind;
    outcome.message = message;
    return outcome;
}

/// pkexec puts its reason behind a preamble and adds a line for the system's log.
QString reasonIn(const QString& errorText)
{
    constexpr QStringView kPreamble = u"Error executing command as another user: ";
    QString line = errorText.section(u'\n', 0, 0).trimmed();
    if (line.startsWith(kPreamble)) {
        line.remove(0, kPreamble.size());
    }
    return line;
}

} // namespace

PolkitLink::Places PolkitLink::installedPlaces()
{
    const QString helpers = QStringLiteral(FERROBANK_INSTALLED_BUNDLE) + u"/Contents/Helpers/"_s;
    Places places;
    places.pkexec = u"/usr/bin/pkexec"_s;
    places.installedTool = helpers + u"ferrobank"_s;
    places.helper = helpers + u"ferrobank-link-helper"_s;
    places.installedLink = u"/usr/local/bin/ferrobank"_s;
    return places;
}

QCoro::Task<PrivilegedOutcome> PolkitLink::make(QString target, QString link, QString prompt)
{
    if (helperServes(target, link)) {
        const QStringList command{_places.helper};
        co_return co_await asAdministrator(command);
    }
    co_return co_await makeWithSystemTools(target, link, prompt);
}

bool PolkitLink::helperServes(const QString& target, const QString& link) const
{
    return target == _places.installedTool && link == _places.installedLink &&
           QFileInfo(_places.helper).isExecutable();
}

QCoro::Task<PrivilegedOutcome> PolkitLink::makeWithSystemTools(QString target, QString link, QString prompt)
{
    if (_explain) {
        const QString words = isOnlyRootsToWrite(pathOf(target)) ? prompt : prompt + u"\n\n"_s + warning();
        const bool goOn = co_await _explain(words);
        if (!goOn) {
            co_return outcomeOf(Kind::Cancelled);
        }
    }
    const QString folder = QFileInfo(link).path();
    if (!QFileInfo(folder).isDir()) {
        const QStringList makeFolder{u"/bin/mkdir"_s, u"-p"_s, u"--"_s, folder};
        const PrivilegedOutcome made = co_await asAdministrator(makeFolder);
        if (made.kind != Kind::Done) {
            co_return made;
        }
    }
    // Without -f, ln leaves alone whatever has appeared while the password was typed.
    const QStringList makeLink{u"/bin/ln"_s, u"-s"_s, u"-n"_s, u"-T"_s, u"--"_s, target, link};
    if (!QFileInfo(link).isSymLink()) {
        co_return co_await asAdministrator(makeLink);
    }
    // A link is replaced, and find sees whether it is one only then. It ends well in any case.
    const QStringList replaceLink{u"/usr/bin/find"_s,
                                  link,
                                  u"-prune"_s,
                                  u"-type"_s,
                                  u"l"_s,
                                  u"-exec"_s,
                                  u"/bin/ln"_s,
                                  u"-s"_s,
                                  u"-f"_s,
                                  u"-n"_s,
                                  u"-T"_s,
                                  u"--"_s,
                                  target,
                                  link,
                                  u";"_s};
    const PrivilegedOutcome replaced = co_await asAdministrator(replaceLink);
    const auto text = storedLinkText(pathOf(link));
    if (replaced.kind == Kind::Done && (!text || text->native() != pathOf(target).native())) {
        co_return outcomeOf(Kind::Failed, link + u" was changed meanwhile, so Ferrobank left it alone."_s);
    }
    co_return replaced;
}

QCoro::Task<PrivilegedOutcome> PolkitLink::asAdministrator(QStringList command)
{
    const auto errorText = std::make_shared<QByteArray>();
    ChildProcess::Setup setup;
    setup.program = _places.pkexec;
    setup.arguments = QStringList(u"--disable-internal-agent"_s) + command;
    setup.environment = foreignEnvironment();
    setup.errorText = [errorText](const QByteArray& piece) { *errorText += piece; };

    std::unique_ptr<ChildProcess> process;
    QString launchFailure;
    try {
        process = ChildProcess::launch(std::move(setup));
    } catch (const LaunchError& error) {
        launchFailure = u"The program pkexec, which asks for an administrator, cannot be started: %1."_s.arg(
            QString::fromUtf8(error.what()));
    }
    if (!process) {
        co_return outcomeOf(Kind::Failed, launchFailure);
    }
    const int status = co_await process->finished();
    const QString words = QString::fromUtf8(*errorText).trimmed();
    switch (status) {
    case 0:
        co_return outcomeOf(Kind::Done);
    case kDismissed:
        co_return outcomeOf(Kind::Cancelled);
    case kNotAuthorized:
        co_return outcomeOf(Kind::Failed, reasonIn(words));
    default:
        co_return outcomeOf(Kind::Failed, words);
    }
}

} // namespace ferrobank
