#include "Platform/linux/instance/BusInstance.h"
#include "Platform/linux/instance/SocketInstance.h"
#include "support/PrivateBus.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;
using Role = SingleInstance::Role;

const QString kApplication = u"org.freedesktop.Application"_s;

/// One more start of the program, from a thread, because it waits for the first to answer.
template <typename Start>
class Later {
public:
    explicit Later(Start start)
        : _thread([this, start] {
              _role = start();
              _ended = true;
          })
    {}

    ~Later() { _thread.join(); }

    [[nodiscard]] bool ended() const { return _ended; }

    [[nodiscard]] Role role() const { return _role; }

private:
    std::atomic<Role> _role{Role::First};
    std::atomic<bool> _ended{false};
    std::thread _thread;
};

} // namespace

class SingleInstanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        _bus = std::make_unique<PrivateBus>();
        if (!_bus->isUp()) {
            QSKIP("There is no dbus-daemon to start");
        }
        _requests.clear();
    }

    void cleanup() { _bus.reset(); }

    void firstStartOnTheBusIsTheFirst()
    {
        const auto bus = SessionBus::open();
        BusInstance instance(*bus);
        QCOMPARE(instance.claim({}), Role::First);
    }

    void secondStartOnTheBusIsForwardedWithItsToken()
    {
        const auto bus = SessionBus::open();
        BusInstance first(*bus);
        QCOMPARE(first.claim({}), Role::First);
        bus->attach();
        first.serve(note());
        const Later second([] { return startOnBus({.action = {}, .activationToken = u"token-9"_s}); });
        QTRY_VERIFY(second.ended());
        QCOMPARE(second.role(), Role::Forwarded);
        QCOMPARE(_requests.size(), 1);
        QCOMPARE(_requests.constFirst().activationToken, u"token-9"_s);
        QVERIFY(_requests.constFirst().action.isEmpty());
    }

    void secondStartOnTheBusWaitsForTheFirstToServe()
    {
        const auto bus = SessionBus::open();
        BusInstance first(*bus);
        QCOMPARE(first.claim({}), Role::First);
        // The name is taken, but the first has not built its window system yet.
        const Later second([] { return startOnBus({}); });
        QTest::qWait(0);
        QVERIFY(!second.ended());
        bus->attach();
        first.serve(note());
        QTRY_VERIFY(second.ended());
        QCOMPARE(second.role(), Role::Forwarded);
    }

    void manyStartsAtOnceHaveExactlyOneFirst()
    {
        constexpr int kStarts = 8;
        std::vector<std::unique_ptr<SessionBus>> buses;
        std::vector<std::unique_ptr<BusInstance>> instances;
        std::atomic<int> firsts{0};
        std::atomic<int> forwarded{0};
        for (int index = 0; index < kStarts; ++index) {
            buses.push_back(SessionBus::open());
            instances.push_back(std::make_unique<BusInstance>(*buses.back()));
        }
        std::atomic<BusInstance*> winner{nullptr};
        std::atomic<SessionBus*> winnersBus{nullptr};
        std::vector<std::thread> threads;
        for (size_t index = 0; index < kStarts; ++index) {
            threads.emplace_back([&, index] {
                const Role role = instances[index]->claim({});
                firsts += role == Role::First ? 1 : 0;
                forwarded += role == Role::Forwarded ? 1 : 0;
                if (role == Role::First) {
                    winnersBus = buses[index].get();
                    winner = instances[index].get();
                }
            });
        }
        QTRY_VERIFY(winner.load() != nullptr);
        winnersBus.load()->attach();
        winner.load()->serve(note());
        QTRY_COMPARE(forwarded.load(), kStarts - 1);
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(firsts.load(), 1);
        QCOMPARE(_requests.size(), kStarts - 1);
    }

    void nameIsFreeAgainAfterTheFirstHasEnded()
    {
        {
            const auto bus = SessionBus::open();
            BusInstance first(*bus);
            QCOMPARE(first.claim({}), Role::First);
        }
        const auto bus = SessionBus::open();
        BusInstance next(*bus);
        QTRY_COMPARE(next.claim({}), Role::First);
    }

    void desktopsOpenAndActivateActions()
    {
        const auto bus = SessionBus::open();
        BusInstance first(*bus);
        QCOMPARE(first.claim({}), Role::First);
        bus->attach();
        first.serve(note());
        const QDBusConnection desktop = _bus->connect();
        const QVariantMap data{{u"activation-token"_s, u"t"_s}, {u"something-else"_s, 42}};
        const auto call = [&](const QString& method, const QVariantList& arguments) {
            return PrivateBus::call(desktop, u"org.ferrobank.Ferrobank"_s, u"/org/ferrobank/Ferrobank"_s,
                                    kApplication, method, arguments)
                .type();
        };
        QCOMPARE(call(u"Activate"_s, {data}), QDBusMessage::ReplyMessage);
        QCOMPARE(call(u"Open"_s, {QStringList{u"file:///tmp/x"_s}, data}), QDBusMessage::ReplyMessage);
        QCOMPARE(call(u"ActivateAction"_s, {u"run-checks"_s, QVariantList(), data}),
                 QDBusMessage::ReplyMessage);
        QCOMPARE(call(u"ActivateAction"_s, {u"unknown"_s, QVariantList(), data}), QDBusMessage::ErrorMessage);
        QCOMPARE(_requests.size(), 4);
        QCOMPARE(_requests.at(0).activationToken, u"t"_s);
        QCOMPARE(_requests.at(2).action, u"run-checks"_s);
    }

    void startupIdCountsWhereThereIsNoToken()
    {
        const auto bus = SessionBus::open();
        BusInstance first(*bus);
        QCOMPARE(first.claim({}), Role::First);
        bus->attach();
        first.serve(note());
        const QVariantMap data{{u"desktop-startup-id"_s, u"id_TIME1"_s}};
        PrivateBus::call(_bus->connect(), u"org.ferrobank.Ferrobank"_s, u"/org/ferrobank/Ferrobank"_s,
                         kApplication, u"Activate"_s, {data});
        QCOMPARE(_requests.constFirst().activationToken, u"id_TIME1"_s);
    }

    void secondStartWithoutABusIsForwarded()
    {
        QTemporaryDir folder;
        SocketInstance first(folder.path().toStdString());
        QCOMPARE(first.claim({}), Role::First);
        first.serve(note());
        const std::string path = folder.path().toStdString();
        const Later second(
            [path] { return SocketInstance(path).claim({.action = {}, .activationToken = u"tok en"_s}); });
        QTRY_VERIFY(second.ended());
        QCOMPARE(second.role(), Role::Forwarded);
        QCOMPARE(_requests.size(), 1);
        QCOMPARE(_requests.constFirst().activationToken, u"tok en"_s);
    }

    void leftOverSocketOfAKilledProgramIsNoInstance()
    {
        QTemporaryDir folder;
        const std::string socketFile = folder.filePath(u"org.ferrobank.Ferrobank.socket"_s).toStdString();
        const int leftOver = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, socketFile.c_str());
        QCOMPARE(bind(leftOver, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        ::close(leftOver);
        SocketInstance first(folder.path().toStdString());
        QCOMPARE(first.claim({}), Role::First);
        first.serve(note());
        const std::string path = folder.path().toStdString();
        const Later second([path] { return SocketInstance(path).claim({}); });
        QTRY_VERIFY(second.ended());
        QCOMPARE(second.role(), Role::Forwarded);
    }

    void manyStartsAtOnceWithoutABusHaveExactlyOneFirst()
    {
        constexpr size_t kStarts = 8;
        QTemporaryDir folder;
        std::vector<std::unique_ptr<SocketInstance>> instances;
        for (size_t index = 0; index < kStarts; ++index) {
            instances.push_back(std::make_unique<SocketInstance>(folder.path().toStdString()));
        }
        std::atomic<int> firsts{0};
        std::atomic<int> forwarded{0};
        std::atomic<SocketInstance*> winner{nullptr};
        std::vector<std::thread> threads;
        for (const auto& instance : instances) {
            threads.emplace_back([&, one = instance.get()] {
                const Role role = one->claim({});
                forwarded += role == Role::Forwarded ? 1 : 0;
                if (role == Role::First) {
                    ++firsts;
                    winner = one;
                }
            });
        }
        QTRY_VERIFY(winner.load() != nullptr);
        winner.load()->serve(note());
        QTRY_COMPARE(forwarded.load(), static_cast<int>(kStarts) - 1);
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(firsts.load(), 1);
    }

    void chatterOnTheSocketIsCutOff()
    {
        QTemporaryDir folder;
        SocketInstance first(folder.path().toStdString());
        QCOMPARE(first.claim({}), Role::First);
        first.serve(note());
        const int chatter = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path,
                    folder.filePath(u"org.ferrobank.Ferrobank.socket"_s).toUtf8().constData());
        QCOMPARE(::connect(chatter, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        const QByteArray flood(16'384, 'x');
        QVERIFY(send(chatter, flood.constData(), static_cast<size_t>(flood.size()), MSG_NOSIGNAL) > 0);
        char byte = 0;
        QTRY_VERIFY(recv(chatter, &byte, 1, 0) == 0 || (errno != EAGAIN && errno != EWOULDBLOCK));
        QVERIFY(_requests.isEmpty());
        ::close(chatter);
    }

    void folderThatCannotBeWrittenLeavesTheProgramRunning()
    {
        SocketInstance first("/proc/no/such/folder");
        QCOMPARE(first.claim({}), Role::First);
        first.serve(note());
    }

    void withoutAFolderNothingIsWrittenWhereItWasStarted()
    {
        QTemporaryDir folder;
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder.path()));
        SocketInstance first(std::filesystem::path{});
        QCOMPARE(first.claim({}), Role::First);
        first.serve(note());
        SocketInstance second(std::filesystem::path{});
        QCOMPARE(second.claim({}), Role::First);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(QDir(folder.path()).isEmpty());
    }

    void filesOfTheSocketAreTheUsersAlone()
    {
        QTemporaryDir folder;
        SocketInstance first(folder.path().toStdString());
        QCOMPARE(first.claim({}), Role::First);
        struct stat info{};
        QCOMPARE(stat(folder.filePath(u"org.ferrobank.Ferrobank.lock"_s).toUtf8().constData(), &info), 0);
        QCOMPARE(info.st_mode & 0777U, 0600U);
    }

private:
    SingleInstance::Handler note()
    {
        return [this](const InstanceRequest& request) {
            _requests << request;
            return request.action != u"unknown"_s;
        };
    }

    static Role startOnBus(const InstanceRequest& request)
    {
        const auto bus = SessionBus::open();
        return BusInstance(*bus).claim(request);
    }

    std::unique_ptr<PrivateBus> _bus;
    QList<InstanceRequest> _requests;
};

} // namespace ferrobank

FERROBANK_TEST(ferrobank::SingleInstanceTest)
#include "SingleInstanceTest.moc"
