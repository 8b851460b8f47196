#include "Platform/linux/process/Launch.h"

#include "Platform/ChildProcess.h"

#include <QtCore/QFile>

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

namespace ferrobank {

namespace {

[[noreturn]] void fail(int error)
{
    const std::string words = std::generic_category().message(error);
    throw LaunchError(
        QString::fromLocal8Bit(words.data(), static_cast<qsizetype>(words.size())).toStdString());
}

/// Above the three standard descriptors, which the child's setup overwrites.
Descriptor aboveStandard(Descriptor descriptor)
{
    if (descriptor.number() > STDERR_FILENO) {
        return descriptor;
    }
    const int moved = ::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0) {
        fail(errno);
    }
    return Descriptor(moved);
}

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

Pipe makePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail(errno);
    }
    Pipe pipe{Descriptor(ends[0]), Descriptor(ends[1])};
    pipe.reading = aboveStandard(std::move(pipe.reading));
    pipe.writing = aboveStandard(std::move(pipe.writing));
    if (::fcntl(pipe.reading.number(), F_SETFL, O_NONBLOCK) != 0) {
        fail(errno);
    }
    return pipe;
}

/// Null-terminated list of C strings, which the texts must outlive.
std::vector<char*> pointers(std::vector<QByteArray>& texts)
{
    std::vector<char*> list;
    list.reserve(texts.size() + 1);
    for (QByteArray& text : texts) {
        list.push_back(text.data());
    }
    list.push_back(nullptr);
    return list;
}

/// The environment that children inherit, byte by byte; empty while that is our own of the moment.
std::vector<QByteArray>& keptVariables()
{
    static std::vector<QByteArray> variables;
    return variables;
}

class SpawnActions {
public:
    SpawnActions() { check(::posix_spawn_file_actions_init(&_actions)); }

    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&_actions); }

    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void connect(int standard, const Descriptor& to)
    {
        check(to.isOpen()
                  ? ::posix_spawn_file_actions_adddup2(&_actions, to.number(), standard)
                  : ::posix_spawn_file_actions_addopen(&_actions, standard, "/dev/null", O_WRONLY, 0));
    }

    void closeEverythingElse()
    {
        check(::posix_spawn_file_actions_addclosefrom_np(&_actions, STDERR_FILENO + 1));
    }

    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &_actions; }

private:
    static void check(int error)
    {
        if (error != 0) {
            fail(error);
        }
    }

    posix_spawn_file_actions_t _actions{};
};

class SpawnAttributes {
public:
    SpawnAttributes()
    {
        ::posix_spawnattr_init(&_attributes);
        sigset_t set;
        ::sigemptyset(&set);
        ::posix_spawnattr_setsigmask(&_attributes, &set);
        ::sigaddset(&set, SIGPIPE);
        ::posix_spawnattr_setsigdefault(&_attributes, &set);
        ::posix_spawnattr_setflags(&_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }

    ~SpawnAttributes() { ::posix_spawnattr_destroy(&_attributes); }

    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    [[nodiscard]] const posix_spawnattr_t* get() const { return &_attributes; }

private:
    posix_spawnattr_t _attributes{};
};

std::vector<QByteArray> encoded(const QStringList& texts)
{
    std::vector<QByteArray> result;
    result.reserve(static_cast<std::size_t>(texts.size()) + 1);
    for (const QString& text : texts) {
        result.push_back(QFile::encodeName(text));
    }
    return result;
}

} // namespace

void keepEnvironment()
{
    std::vector<QByteArray>& variables = keptVariables();
    variables.clear();
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
}

LaunchedChild launchChild(const LaunchRequest& request)
{
    LaunchedChild child;
    Descriptor output;
    Descriptor errorText;
    if (request.captureOutput) {
        Pipe pipe = makePipe();
        child.output = std::move(pipe.reading);
        output = std::move(pipe.writing);
    }
    if (request.captureErrorText) {
        Pipe pipe = makePipe();
        child.errorText = std::move(pipe.reading);
        errorText = std::move(pipe.writing);
    }
    SpawnActions actions;
    actions.connect(STDOUT_FILENO, output);
    actions.connect(STDERR_FILENO, errorText);
    actions.closeEverythingElse();
    const SpawnAttributes attributes;

    std::vector<QByteArray> arguments = encoded(QStringList(request.program) + request.arguments);
    std::vector<QByteArray> variables = encoded(request.environment.value_or(QStringList()));
    const std::vector<char*> argv = pointers(arguments);
    const std::vector<char*> ownEnvironment = pointers(variables);
    std::vector<QByteArray>& kept = keptVariables();
    const std::vector<char*> keptEnvironment = pointers(kept);
    char* const* const inherited = kept.empty() ? environ : keptEnvironment.data();
    char* const* const environment = request.environment ? ownEnvironment.data() : inherited;

    const int error = ::posix_spawn(&child.process, argv.front(), actions.get(), attributes.get(),
                                    argv.data(), environment);
    if (error == ENOENT) {
        // The system's words do not say what it is that is missing.
        const QString name = request.program.section(u'/', -1);
        throw LaunchError(QStringLiteral("“%1” does not exist.").arg(name).toStdString());
    }
    if (error != 0) {
        fail(error);
    }

    child.exit = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, child.process, 0)));
    if (!child.exit.isOpen()) {
        const int reason = errno;
        ::kill(child.process, SIGKILL);
        ::waitpid(child.process, nullptr, 0);
        fail(reason);
    }
    return child;
}

} // namespace ferrobank
