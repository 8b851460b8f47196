#include "support/BundleCopy.h"
#include "support/TestProgram.h"
#include "support/desktop/PrivateSession.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace ferrobank {

using test::BundleCopy;
using test::CommandResult;

namespace {

const QByteArray kNeither = R"({"login_item":"not-registered","agent":"not-registered"})"
                            "\n";

} // namespace

/// The built executable as a shell or a script calls it, without a session around it.
class HeadlessProgramTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();

    void statusIsOneLineAndNothingElse();
    void everyEnvironmentWillDo_data();
    void everyEnvironmentWillDo();
    void closedStandardStreamsAreNoTrouble_data();
    void closedStandardStreamsAreNoTrouble();
    void argumentsBehindTheCommandAreIgnored();
    void everyOtherFirstArgumentStartsTheApplication_data();
    void everyOtherFirstArgumentStartsTheApplication();
    void missingApplicationLibraryIsTold();
    void brokenApplicationLibraryIsTold();
    void libraryOfTheEnvironmentIsNotLoaded();
    void bundleIsFoundThroughALink();
    void bundleIsNeverTakenFromTheEnvironment();
    void executableThatWasReplacedWhileItRunsFindsItsBundle();
    void executableOutsideABundleFindsNothing();
    void outputThatCannotBeWrittenIsAFailure();
    void busThatNeverGreetsEndsTheWaitAndNoGuiLibraryIsMapped();
    void twentyAtOnceAllAnswer();
    void accountWithoutHomeIsAnswered();

private:
    /// Runs the executable in an environment of nothing but a home folder and `more`.
    CommandResult run(const QStringList& arguments, const QStringList& more = {}) const;
    void placeStubApplication() const;

    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<BundleCopy> _bundle;
};

void HeadlessProgramTest::init()
{
    _folder = std::make_unique<QTemporaryDir>(u"/tmp/headless ä-XXXXXX"_s);
    _bundle = std::make_unique<BundleCopy>(_folder->filePath(u"some place"_s));
}

CommandResult HeadlessProgramTest::run(const QStringList& arguments, const QStringList& more) const
{
    const QStringList environment{u"-i"_s, u"HOME="_s + _folder->filePath(u"home"_s),
                                  u"XDG_RUNTIME_DIR="_s + _folder->filePath(u"run"_s)};
    return test::runCommand(u"env"_s, environment + more + QStringList{_bundle->executable()} + arguments);
}

void HeadlessProgramTest::placeStubApplication() const
{
    QVERIFY(QFile::copy(QStringLiteral(FERROBANK_STUB_APPLICATION),
                        _bundle->besideExecutable(u"libferrobank-app.so"_s)));
}

void HeadlessProgramTest::statusIsOneLineAndNothingElse()
{
    const CommandResult result = run({u"--service-status"_s});
    QCOMPARE(result.output, kNeither);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.status, 0);
    QVERIFY(!QDir(_folder->filePath(u"home"_s)).exists());
}

void HeadlessProgramTest::everyEnvironmentWillDo_data()
{
    QTest::addColumn<QStringList>("more");
    QTest::newRow("no runtime folder") << QStringList{u"-u"_s, u"XDG_RUNTIME_DIR"_s};
    QTest::newRow("no home folder") << QStringList{u"-u"_s, u"HOME"_s};
    QTest::newRow("no bus at the address")
        << QStringList{u"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"_s};
    QTest::newRow("an address that is none") << QStringList{u"DBUS_SESSION_BUS_ADDRESS=nonsense"_s};
    QTest::newRow("a display that is none") << QStringList{u"DISPLAY=:4711"_s, u"WAYLAND_DISPLAY=none"_s};
    QTest::newRow("an unknown locale") << QStringList{u"LC_ALL=xx_XX.UTF-8"_s};
    QTest::newRow("a locale with other letters") << QStringList{u"LC_ALL=tr_TR.UTF-8"_s, u"LANG=tr_TR"_s};
    QTest::newRow("a platform of Qt that is none") << QStringList{u"QT_QPA_PLATFORM=nonsense"_s};
    QTest::newRow("a relative configuration folder") << QStringList{u"XDG_CONFIG_HOME=x"_s};
}

void HeadlessProgramTest::everyEnvironmentWillDo()
{
    QFETCH(QStringList, more);
    QStringList environment{u"-i"_s, u"HOME="_s + _folder->filePath(u"home"_s),
                            u"XDG_RUNTIME_DIR="_s + _folder->filePath(u"run"_s)};
    // "env" wants its own options before the first variable.
    for (; more.size() > 1 && more.constFirst() == u"-u"_s; more.remove(0, 2)) {
        environment.removeIf([&more](const QString& word) { return word.startsWith(more.at(1) + u'='); });
    }
    const CommandResult result = test::runCommand(
        u"env"_s, environment + more + QStringList{_bundle->executable(), u"--service-status"_s});
    QCOMPARE(result.output, kNeither);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.status, 0);
}

void HeadlessProgramTest::closedStandardStreamsAreNoTrouble_data()
{
    QTest::addColumn<QString>("redirection");
    QTest::addColumn<QByteArray>("output");
    QTest::newRow("input") << u"<&-"_s << kNeither;
    QTest::newRow("errors") << u"2>&-"_s << kNeither;
    QTest::newRow("output") << u">&-"_s << QByteArray();
    QTest::newRow("all") << u"<&- >&- 2>&-"_s << QByteArray();
}

void HeadlessProgramTest::closedStandardStreamsAreNoTrouble()
{
    QFETCH(QString, redirection);
    QFETCH(QByteArray, output);
    const CommandResult result = test::runCommand(
        u"sh"_s, {u"-c"_s, u"exec \"$0\" --service-status "_s + redirection, _bundle->executable()});
    QCOMPARE(result.status, 0);
    QVERIFY(result.output.isEmpty() == output.isEmpty());
}

void HeadlessProgramTest::argumentsBehindTheCommandAreIgnored()
{
    const CommandResult result = run({u"--service-status"_s, u"--register"_s, u"more"_s});
    QCOMPARE(result.output, kNeither);
    QCOMPARE(result.status, 0);
    QCOMPARE(_bundle->processes().size(), 0);
}

void HeadlessProgramTest::everyOtherFirstArgumentStartsTheApplication_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("seen");
    QTest::newRow("none") << QStringList{} << QByteArray("\n");
    QTest::newRow("another letter case")
        << QStringList{u"--Service-Status"_s} << QByteArray("[--Service-Status]\n");
    QTest::newRow("something appended")
        << QStringList{u"--service-status="_s} << QByteArray("[--service-status=]\n");
    QTest::newRow("empty") << QStringList{u""_s} << QByteArray("[]\n");
    QTest::newRow("process serial number") << QStringList{u"-psn_0_1"_s} << QByteArray("[-psn_0_1]\n");
    QTest::newRow("the command comes second")
        << QStringList{u"/tmp/ä b"_s, u"--register"_s} << QByteArray("[/tmp/ä b][--register]\n");
}

void HeadlessProgramTest::everyOtherFirstArgumentStartsTheApplication()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, seen);
    placeStubApplication();
    const CommandResult result = run(arguments);
    QCOMPARE(result.output, seen);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.status, 42);
}

void HeadlessProgramTest::missingApplicationLibraryIsTold()
{
    const CommandResult result = run({});
    const QByteArray library = _bundle->besideExecutable(u"libferrobank-app.so"_s).toUtf8();
    QCOMPARE(result.errors, "Ferrobank cannot start: " + library +
                                ": cannot open shared object file: No such file or directory\n");
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.status, 1);
}

void HeadlessProgramTest::brokenApplicationLibraryIsTold()
{
    QFile library(_bundle->besideExecutable(u"libferrobank-app.so"_s));
    QVERIFY(library.open(QIODevice::WriteOnly));
    library.write("no library");
    library.close();
    const CommandResult result = run({});
    QVERIFY2(result.errors.startsWith("Ferrobank cannot start: "), result.errors.constData());
    QCOMPARE(result.status, 1);
}

void HeadlessProgramTest::libraryOfTheEnvironmentIsNotLoaded()
{
    QDir().mkpath(_folder->filePath(u"elsewhere"_s));
    QVERIFY(QFile::copy(QStringLiteral(FERROBANK_STUB_APPLICATION),
                        _folder->filePath(u"elsewhere/libferrobank-app.so"_s)));
    const CommandResult result = run({}, {u"LD_LIBRARY_PATH="_s + _folder->filePath(u"elsewhere"_s)});
    QCOMPARE(result.status, 1);
}

void HeadlessProgramTest::bundleIsFoundThroughALink()
{
    const QString link = _folder->filePath(u"link"_s);
    QVERIFY(QFile::link(_bundle->executable(), link));
    QVERIFY(QFile::remove(_bundle->driveTool()));
    const CommandResult result = test::runCommand(link, {u"--service-status"_s});
    QVERIFY2(result.output.contains("\"agent\":\"not-found\""), result.output.constData());
    QVERIFY2(!result.output.contains("\"login_item\":\"not-found\""), result.output.constData());
}

void HeadlessProgramTest::bundleIsNeverTakenFromTheEnvironment()
{
    // Another bundle, whole, is what everything that the caller can say points to; our own lacks its tool.
    const BundleCopy decoy(_folder->filePath(u"decoy"_s));
    const QString folder = QFileInfo(decoy.executable()).path();
    QVERIFY(QFileInfo::exists(decoy.driveTool()));
    QVERIFY(QFile::remove(_bundle->driveTool()));
    const QString script = u"cd \"$1\"; exec -a \"$2\" \"$0\" --service-status"_s;
    const CommandResult result = test::runCommand(
        u"env"_s,
        {u"-i"_s, u"HOME="_s + _folder->path(), u"XDG_RUNTIME_DIR="_s + _folder->path(),
         u"PATH="_s + folder + u':' + QFileInfo(decoy.driveTool()).path() + u":/usr/bin:/bin"_s,
         u"_="_s + decoy.executable(), u"PWD="_s + folder, u"FERROBANK_BUNDLE="_s + folder + u"/../.."_s,
         u"/bin/bash"_s, u"-c"_s, script, _bundle->executable(), folder, decoy.executable()});
    QVERIFY2(result.output.contains("\"agent\":\"not-found\""), result.output.constData());
}

void HeadlessProgramTest::executableThatWasReplacedWhileItRunsFindsItsBundle()
{
    const QString script = u"exec 9<\"$0\"; cp \"$0\" \"$0.new\"; mv \"$0.new\" \"$0\"; "
                           "exec /proc/self/fd/9 --service-status"_s;
    const CommandResult result = test::runCommand(
        u"env"_s, {u"-i"_s, u"HOME="_s + _folder->path(), u"XDG_RUNTIME_DIR="_s + _folder->path(),
                   u"PATH=/usr/bin:/bin"_s, u"sh"_s, u"-c"_s, script, _bundle->executable()});
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.output, kNeither);
}

void HeadlessProgramTest::executableOutsideABundleFindsNothing()
{
    const QString alone = _folder->filePath(u"Ferrobank"_s);
    QVERIFY(QFile::copy(_bundle->executable(), alone));
    const CommandResult result = test::runCommand(alone, {u"--service-status"_s});
    QCOMPARE(result.output, "{\"login_item\":\"not-found\",\"agent\":\"not-found\"}\n"_ba);
    QCOMPARE(result.status, 0);
}

void HeadlessProgramTest::outputThatCannotBeWrittenIsAFailure()
{
    const CommandResult result = test::runCommand(
        u"sh"_s, {u"-c"_s, u"exec \"$0\" --service-status >/dev/full"_s, _bundle->executable()});
    QCOMPARE(result.errors, "Cannot write the status: No space left on device\n"_ba);
    QCOMPARE(result.status, 1);
}

void HeadlessProgramTest::busThatNeverGreetsEndsTheWaitAndNoGuiLibraryIsMapped()
{
    // A socket that takes the connection and says nothing.
    const QByteArray path = QFile::encodeName(_folder->filePath(u"bus"_s));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    QCOMPARE(::bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    QCOMPARE(::listen(listening, 5), 0);

    QElapsedTimer clock;
    clock.start();
    QProcess process;
    QProcessEnvironment environment;
    environment.insert(u"HOME"_s, _folder->path());
    environment.insert(u"XDG_RUNTIME_DIR"_s, _folder->path());
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s,
                       u"unix:path="_s + QString::fromUtf8(path.toPercentEncoding("/-_.")));
    process.setProcessEnvironment(environment);
    process.start(_bundle->executable(), {u"--service-status"_s});
    QVERIFY(process.waitForStarted());
    const int connection = ::accept(listening, nullptr, nullptr);
    QVERIFY(connection >= 0);
    QFile maps(u"/proc/%1/maps"_s.arg(process.processId()));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    const QByteArray mapped = maps.readAll();
    QVERIFY2(mapped.contains("libsystemd"), mapped.constData());
    for (const char* library : {"libQt", "libferrobank", "libX11", "libxcb", "libwayland", "libGL", "libicu"})
    {
        QVERIFY2(!mapped.contains(library), library);
    }
    QVERIFY(process.waitForFinished(10'000));
    QVERIFY2(clock.elapsed() < 5'000, "the limit is two seconds");
    // Silence is not the answer that nothing is registered.
    QCOMPARE(process.readAllStandardOutput(), "{\"login_item\":\"not-registered\",\"agent\":\"unknown\"}\n");
    QCOMPARE(process.exitCode(), 0);
    ::close(connection);
    ::close(listening);
}

void HeadlessProgramTest::twentyAtOnceAllAnswer()
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int number = 0; number < 20; ++number) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(_bundle->executable(), {u"--service-status"_s});
    }
    QByteArray first;
    for (const auto& process : processes) {
        QVERIFY(process->waitForFinished());
        const QByteArray line = process->readAllStandardOutput();
        QVERIFY2(line.startsWith("{\"login_item\":\"") && line.count('\n') == 1, line.constData());
        if (first.isEmpty()) {
            first = line;
        }
        QCOMPARE(line, first);
        QCOMPARE(process->exitCode(), 0);
    }
}

void HeadlessProgramTest::accountWithoutHomeIsAnswered()
{
    if (geteuid() != 0) {
        QSKIP("only root can become an unknown account");
    }
    QVERIFY(QFile::setPermissions(_folder->path(), QFile::Permissions(0x7755)));
    const CommandResult result =
        test::runCommand(u"env"_s, {u"-i"_s, u"setpriv"_s, u"--reuid=59999"_s, u"--regid=59999"_s,
                                    u"--clear-groups"_s, _bundle->executable(), u"--service-status"_s});
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.output, kNeither);
}

} // namespace ferrobank

FERROBANK_TEST(ferrobank::HeadlessProgramTest)
#include "HeadlessProgramTest.moc"
