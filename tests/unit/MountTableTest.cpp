#include "Platform/linux/report/MountTable.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// How the drive is mounted, from the kernel's table.
class MountTableTest : public QObject {
    Q_OBJECT

private:
    static QByteArray table()
    {
        return "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw,errors=remount-ro\n"
               "40 22 0:35 / /home/anna/Ferrobank rw,nosuid shared:20 master:3 - btrfs /dev/loop0 "
               "rw,compress=zstd:1\n"
               "41 22 0:36 / /home/anna/My\\040Files ro - tmpfs my\\134source ro\n"
               "42 22 0:37 / /home/anna/Ferrobank rw,noatime - btrfs /dev/loop1 rw\n"
               "cut short\n";
    }

private Q_SLOTS:

    void aMountIsOneLine()
    {
        QCOMPARE(mountLineOf(table(), u"/"_s), u"/dev/sda1 / ext4 rw,relatime,rw,errors=remount-ro"_s);
    }

    void ofTwoAtOnePlaceTheLastIsSeen()
    {
        QCOMPARE(mountLineOf(table(), u"/home/anna/Ferrobank"_s),
                 u"/dev/loop1 /home/anna/Ferrobank btrfs rw,noatime,rw"_s);
    }

    void spacesAndBackslashesAreReadBack()
    {
        QCOMPARE(mountLineOf(table(), u"/home/anna/My Files"_s),
                 u"my\\source /home/anna/My Files tmpfs ro,ro"_s);
    }

    void whereNothingIsMountedThereIsNoLine()
    {
        QCOMPARE(mountLineOf(table(), u"/home/anna"_s), QString());
        QCOMPARE(mountLineOf(table(), QString()), QString());
        QCOMPARE(mountLineOf({}, u"/"_s), QString());
    }

    void aLineThatEndsTooSoonIsPassedOver()
    {
        QCOMPARE(mountLineOf("1 2 0:1 / /x rw -\n1 2 0:1 / /x rw - ext4\n1 2 0:1 /", u"/x"_s), QString());
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(MountTableTest)
#include "MountTableTest.moc"
