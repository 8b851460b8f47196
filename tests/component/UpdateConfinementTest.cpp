#include "Platform/linux/updates/worker/Confinement.h"
#include "support/TestProgram.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <thread>

using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

namespace fs = std::filesystem;

/// What `act` returns in a child process that was confined first; 250 for one that did not end by itself.
template <typename Act>
int confined(const std::vector<fs::path>& writable, Programs programs, Act act)
{
    const pid_t child = ::fork();
    if (child == 0) {
        confine(writable, programs);
        ::_exit(act());
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 250;
}

int errorOf(long result)
{
    return result < 0 ? errno : 0;
}

int errorOfWriting(const fs::path& file)
{
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    return descriptor < 0 ? errno : errorOf(::write(descriptor, "x", 1));
}

bool hasLandlock()
{
    return ::syscall(SYS_landlock_create_ruleset, nullptr, std::size_t{0}, LANDLOCK_CREATE_RULESET_VERSION) >
           0;
}

} // namespace

/// What the worker can no longer do once it reads what others wrote. Each is tried in a child process.
class UpdateConfinementTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        if (!isConfinementBuilt())
            QSKIP("Instrumented builds are not confined.");
    }

    void writesReachTheFoldersNamedAndNoOthers()
    {
        if (!hasLandlock())
            QSKIP("This kernel has no Landlock.");
        const QTemporaryDir folder;
        const fs::path own = folder.filePath(u"own"_s).toStdString();
        const fs::path other = folder.filePath(u"other"_s).toStdString();
        for (const fs::path& path : {own, other})
            fs::create_directory(path);
        fs::create_directory(other / "empty");
        QCOMPARE(errorOfWriting(other / "file"), 0);
        QCOMPARE(confined({own}, Programs::MayNotRun, [&] { return errorOfWriting(own / "new"); }), 0);
        QCOMPARE(confined({own}, Programs::MayNotRun,
                          [&] { return errorOf(::rename((own / "new").c_str(), (own / "moved").c_str())); }),
                 0);
        QCOMPARE(confined({own}, Programs::MayNotRun, [&] { return errorOfWriting("/dev/null"); }), 0);
        const auto refused = [&](auto act) { return confined({own}, Programs::MayNotRun, act); };
        QCOMPARE(refused([&] { return errorOfWriting(other / "new"); }), EACCES);
        QCOMPARE(refused([&] { return errorOfWriting(other / "file"); }), EACCES);
        QCOMPARE(refused([&] { return errorOf(::unlink((other / "file").c_str())); }), EACCES);
        QCOMPARE(refused([&] { return errorOf(::mkdir((other / "folder").c_str(), 0700)); }), EACCES);
        QCOMPARE(refused([&] { return errorOf(::rmdir((other / "empty").c_str())); }), EACCES);
        QCOMPARE(refused([&] { return errorOf(::symlink("x", (other / "link").c_str())); }), EACCES);
        QVERIFY(refused([&] {
                    return errorOf(::rename((other / "file").c_str(), (own / "file").c_str()));
                }) != 0);
        // Through a link of its own neither.
        fs::create_symlink(other / "file", own / "way");
        QCOMPARE(refused([&] { return errorOfWriting(own / "way"); }), EACCES);
        // A process that may write nothing at all still reads.
        QCOMPARE(confined({}, Programs::MayNotRun, [&] { return errorOfWriting(own / "new"); }), EACCES);
        QCOMPARE(confined({}, Programs::MayNotRun,
                          [&] { return errorOf(::open((other / "file").c_str(), O_RDONLY | O_CLOEXEC)); }),
                 0);
    }

    void programsRunOnlyWhereTheyAreNeeded()
    {
        const auto runTrue = [] {
            ::execl("/bin/true", "true", nullptr);
            return errno;
        };
        QCOMPARE(confined({}, Programs::MayNotRun, runTrue), EPERM);
        QCOMPARE(confined({}, Programs::MayRun, runTrue), 0);
    }

    void programsThatRunGetNoMoreRightsAndAreConfinedToo()
    {
        const auto bits = [] { return static_cast<int>(::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0)); };
        QCOMPARE(confined({}, Programs::MayRun, bits), 1);
        const auto writeThroughAProgram = [] {
            ::execl("/bin/sh", "sh", "-c",
                    "grep -q 'NoNewPrivs:.1' /proc/self/status && grep -q 'Seccomp:.2' "
                    "/proc/self/status && ! unshare -U true 2>/dev/null",
                    nullptr);
            return errno;
        };
        QCOMPARE(confined({}, Programs::MayRun, writeThroughAProgram), 0);
    }

    void callsThatNobodyNeedsAreRefused()
    {
        const auto refused = [](auto act) { return confined({}, Programs::MayRun, act); };
        QCOMPARE(refused([] { return errorOf(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); }), EPERM);
        QCOMPARE(refused([] { return errorOf(::mount("tmpfs", "/mnt", "tmpfs", 0, nullptr)); }), EPERM);
        QCOMPARE(refused([] { return errorOf(::syscall(SYS_unshare, 0)); }), EPERM);
        QCOMPARE(refused([] { return errorOf(::syscall(SYS_keyctl, 0, 0, 0, 0, 0)); }), EPERM);
        QCOMPARE(refused([] { return errorOf(::syscall(SYS_bpf, 0, nullptr, 0)); }), EPERM);
        QCOMPARE(refused([] { return errorOf(::syscall(SYS_io_uring_setup, 1, nullptr)); }), ENOSYS);
        constexpr long kNewUser = 0x10000000;
        QCOMPARE(refused([] { return errorOf(::syscall(SYS_clone, kNewUser | SIGCHLD, 0, 0, 0, 0)); }),
                 EPERM);
        for (const int family : {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK})
            QVERIFY(refused([family] { return errorOf(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)); }) !=
                    EPERM);
        QCOMPARE(refused([] { return errorOf(::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0)); }), EPERM);
        QCOMPARE(refused([] { return errorOf(::socket(AF_VSOCK, SOCK_STREAM | SOCK_CLOEXEC, 0)); }), EPERM);
    }

    void threadsAndChildrenAreStillMade()
    {
        const int result = confined({}, Programs::MayRun, [] {
            int value = 0;
            std::thread([&value] { value = 7; }).join();
            const pid_t child = ::fork();
            if (child == 0)
                ::_exit(5);
            int status = 0;
            ::waitpid(child, &status, 0);
            return value + WEXITSTATUS(status);
        });
        QCOMPARE(result, 12);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(UpdateConfinementTest)
#include "UpdateConfinementTest.moc"
