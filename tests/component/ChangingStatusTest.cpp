#include "Ferrobank/FerrobankApp/TrayMenu.h"
#include "Platform/SystemChanges.h"
#include "Platform/linux/tray/StatusNotifierItem.h"
#include "support/PrivateBus.h"
#include "support/ProcessFacts.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeSeam.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

constexpr int kPolls = 100;

int openDescriptors()
{
    return static_cast<int>(
        QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::System | QDir::Files).size());
}

/// KiB of the process's own memory.
int ownMemory()
{
    QFile rollup(u"/proc/self/smaps_rollup"_s);
    if (!rollup.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : rollup.readAll().split('\n')) {
        if (line.startsWith("Anonymous:")) {
            return line.simplified().split(' ').at(1).toInt();
        }
    }
    return 0;
}

} // namespace

/// A drive whose figures change at every poll, down to what the panel is told on the bus.
class ChangingStatusTest : public QObject {
    Q_OBJECT

public Q_SLOTS:

    void note(const QDBusMessage& signal) { _told << signal.member(); }

private Q_SLOTS:

    void initTestCase()
    {
        if (!_bus.isUp()) {
            QSKIP("There is no dbus-daemon to start");
        }
    }

    void eachChangeIsToldOnceAndNothingGrows()
    {
        FakeSeam seam;
        seam.finishSetup();
        seam.cli.answerStatus(status(0));
        const auto bus = SessionBus::open();
        StatusNotifierItem item(*bus, TrayIcon("/nowhere"));
        bus->attach();
        AppModel model(seam.collaborators());
        SystemChanges systemChanges;
        TrayMenu menu({.model = model,
                       .commandLineTool = seam.commandLineTool,
                       .workspace = seam.workspace,
                       .item = item,
                       .systemChanges = systemChanges,
                       .openWindow = {},
                       .checkForUpdates = {},
                       .showAlert = {},
                       .quit = {}});
        QTRY_VERIFY(model.status().has_value());

        QDBusConnection panel = _bus.connect();
        const char* name = nullptr;
        sd_bus_get_unique_name(bus->get(), &name);
        for (const QString& signal : {u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s}) {
            QVERIFY(panel.connect(QString::fromLatin1(name), u"/MenuBar"_s, u"com.canonical.dbusmenu"_s,
                                  signal, this, SLOT(note(QDBusMessage))));
        }
        poll(seam, model, 1); // what is made at the first change stays
        QTRY_COMPARE(_told.size(), 1);
        const int descriptors = openDescriptors();
        const int memory = ownMemory();

        for (int round = 2; round <= kPolls; ++round) {
            poll(seam, model, round);
        }
        QTRY_COMPARE(_told.size(), kPolls);
        QCOMPARE(_told.count(u"LayoutUpdated"_s), 0);
        QCOMPARE(openDescriptors(), descriptors);
        if (test::ProcessFacts::freedMemoryIsReused()) {
            QVERIFY2(ownMemory() < memory + 512,
                     qPrintable(u"%1 KiB, then %2 KiB"_s.arg(memory).arg(ownMemory())));
        }
    }

private:
    static DriveStatus status(int round)
    {
        DriveStatus status = mountedStatus();
        status.volume_used = 1'000'000'000U * static_cast<quint64>(round + 1);
        return status;
    }

    static void poll(FakeSeam& seam, AppModel& model, int round)
    {
        seam.cli.answerStatus(status(round));
        QSignalSpy read(&model, &AppModel::statusChanged);
        seam.clock.advance(std::chrono::seconds(5));
        QTRY_COMPARE(read.count(), 1);
    }

    PrivateBus _bus;
    QStringList _told;
};

} // namespace ferrobank

FERROBANK_TEST(ferrobank::ChangingStatusTest)
#include "ChangingStatusTest.moc"
