#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/worker/Commands.h"
#include "Platform/linux/updates/worker/Probe.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <sys/prctl.h>

#include <csignal>
#include <cstdio>
#include <map>
#include <string_view>

// The update worker: one command a process. It reads one request, a JSON object, from standard input until
// its end, and writes one event a line, each a JSON object, to standard output. Exit status 0, or 1 after an
// event "failed", or 2 for a command line that it does not know. What is fetched from the network is read
// only here, away from the application, and the memory it takes goes with the process.

namespace {

using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

constexpr qint64 kLongestRequest = qint64{4} * 1024 * 1024;

void tell(const QJsonObject& event)
{
    const QByteArray line = QJsonDocument(event).toJson(QJsonDocument::Compact) + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}

QJsonObject readRequest()
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(input.read(kLongestRequest)).object();
}

void failed(const UpdateFailure& failure)
{
    const std::string_view word = problemWord(failure.problem());
    tell(QJsonObject{{u"event"_s, u"failed"_s},
                     {u"problem"_s, QString::fromLatin1(word.data(), static_cast<qsizetype>(word.size()))},
                     {u"sentence"_s, QString::fromUtf8(failure.what())}});
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "probe")
        return probeOwnBundle();

    static const std::map<std::string_view, void (*)(const WorkerContext&)> commands{
        {"status", runStatus},   {"check", runCheck},     {"fetch", runFetch},
        {"install", runInstall}, {"healthy", runHealthy}, {"relaunch", runRelaunch},
    };
    const auto found = commands.find(command);
    if (found == commands.end()) {
        std::fputs("ferrobank-update: status, check, fetch, install, healthy, relaunch or probe\n", stderr);
        return 2;
    }
    // Nobody is left to show a check or a download to once the application is gone; an installation goes on.
    if (command == "check" || command == "fetch")
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    // The application may be gone when an installation tells what it did.
    std::signal(SIGPIPE, SIG_IGN);

    const QCoreApplication application(argc, argv);
    try {
        found->second(WorkerContext::of(readRequest(), tell));
        return 0;
    } catch (const UpdateFailure& failure) {
        failed(failure);
    } catch (const std::exception& error) {
        // An answer in words in any case: the application takes silence for an updater that is broken.
        failed({Problem::Install, std::string("The update stopped on an error: ") + error.what()});
    }
    return 1;
}
