#include "Platform/linux/workspace/VolumeIcon.h"

#include "Platform/linux/workspace/IconImage.h"
#include "support/SmallFileSystem.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>
#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray number(quint32 value)
{
    const quint32 ordered = qToBigEndian(value);
    return {reinterpret_cast<const char*>(&ordered), sizeof ordered};
}

/// The beginning of a picture, as far as its width is told.
QByteArray png(quint32 width, qsizetype bytes = 100)
{
    return (QByteArray::fromHex("89504e470d0a1a0a0000000d49484452") + number(width) + number(width))
        .leftJustified(bytes, 'p');
}

QByteArray entry(const QByteArray& type, const QByteArray& data)
{
    return type + number(static_cast<quint32>(data.size() + 8)) + data;
}

QByteArray icns(const QByteArray& entries)
{
    return "icns" + number(static_cast<quint32>(entries.size() + 8)) + entries;
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool give(const QString& icon, const QString& folder)
{
    return giveVolumeIcon(QFile::encodeName(icon).toStdString(), QFile::encodeName(folder).toStdString());
}

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

const QByteArray kIcon = icns(entry("TOC ", "x") + entry("ic07", png(128)) + entry("ic09", png(512)));

} // namespace

class VolumeIconTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> _folder;

    [[nodiscard]] QString icon() const { return _folder->filePath(u"VolumeIcon.icns"_s); }

    [[nodiscard]] QString volume() const { return _folder->filePath(u"my \\volume"_s); }

    [[nodiscard]] QString on(const QString& name) const { return volume() + u'/' + name; }

private Q_SLOTS:

    void init()
    {
        _folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir().mkdir(volume()));
        write(icon(), kIcon);
    }

    void everyFileManagerFindsTheIcon()
    {
        QVERIFY(give(icon(), volume()));
        QCOMPARE(contentOf(on(u".VolumeIcon.icns"_s)), kIcon);
        QCOMPARE(contentOf(on(u".VolumeIcon.png"_s)), png(512));
        QCOMPARE(contentOf(on(u".xdg-volume-info"_s)),
                 "[Volume Info]\nName=Ferrobank\nIconFile=.VolumeIcon.png\n");
        const QByteArray escapedVolume = QFile::encodeName(volume()).replace('\\', "\\\\");
        QCOMPARE(contentOf(on(u".directory"_s)),
                 "[Desktop Entry]\nIcon=" + escapedVolume + "/.VolumeIcon.png\n");
    }

    void iconThatIsThereIsKept()
    {
        write(on(u".VolumeIcon.icns"_s), "the user's");
        QVERIFY(!give(icon(), volume()));
        QCOMPARE(contentOf(on(u".VolumeIcon.icns"_s)), "the user's");
        QCOMPARE(entriesOf(volume()), QStringList{u".VolumeIcon.icns"_s});
    }

    void danglingLinkInThePlaceIsKept()
    {
        QVERIFY(QFile::link(u"/nonexistent"_s, on(u".VolumeIcon.icns"_s)));
        QVERIFY(!give(icon(), volume()));
        QCOMPARE(entriesOf(volume()), QStringList{u".VolumeIcon.icns"_s});
    }

    void desktopsOwnIconIsKept_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("GNOME's") << u".xdg-volume-info"_s;
        QTest::newRow("KDE's") << u".directory"_s;
    }

    void desktopsOwnIconIsKept()
    {
        QFETCH(QString, name);
        write(on(name), "the user's");
        QVERIFY(give(icon(), volume()));
        QCOMPARE(contentOf(on(name)), "the user's");
        QCOMPARE(entriesOf(volume()), (QStringList{u".VolumeIcon.icns"_s, name}));
    }

    void secondTimeChangesNothing()
    {
        QVERIFY(give(icon(), volume()));
        QVERIFY(QFile::remove(on(u".directory"_s)));
        QVERIFY(!give(icon(), volume()));
        QVERIFY(!QFile::exists(on(u".directory"_s)));
    }

    void missingOrUnreadableIconFileChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no icon file") << QByteArray("hello, this is text");
        QTest::newRow("cut off") << kIcon.chopped(3);
        QTest::newRow("no picture in it") << icns(entry("it32", "raw"));
    }

    void missingOrUnreadableIconFileChangesNothing()
    {
        QFETCH(QByteArray, content);
        write(icon(), content);
        QVERIFY(!give(icon(), volume()));
        QVERIFY(!give(_folder->filePath(u"nothing"_s), volume()));
        QCOMPARE(entriesOf(volume()), QStringList());
    }

    void missingVolumeIsNoError() { QVERIFY(!give(icon(), u"/nonexistent"_s)); }

    void readOnlyVolumeIsLeftAsItIs()
    {
        if (!SmallFileSystem::isPossible()) {
            QSKIP("this machine allows no private mounts");
        }
        const SmallFileSystem disk(256);
        disk.makeReadOnly();
        QVERIFY(!give(icon(), disk.path()));
        QCOMPARE(entriesOf(disk.path()), QStringList());
    }

    void fullVolumeIsLeftAsItIs_data()
    {
        QTest::addColumn<int>("kilobytesFree");
        for (const int kilobytes : {0, 4, 8, 12, 16}) {
            QTest::addRow("%d kB", kilobytes) << kilobytes;
        }
    }

    void fullVolumeIsLeftAsItIs()
    {
        QFETCH(int, kilobytesFree);
        if (!SmallFileSystem::isPossible()) {
            QSKIP("this machine allows no private mounts");
        }
        constexpr qsizetype kPicture = 9000;
        write(icon(), icns(entry("ic09", png(512, kPicture))));
        const SmallFileSystem disk(64);
        write(disk.file(u"reserve"_s), QByteArray(kilobytesFree * 1024, 'r'));
        disk.fill();
        QVERIFY(QFile::remove(disk.file(u"reserve"_s)));
        QVERIFY(!give(icon(), disk.path()));
        QCOMPARE(entriesOf(disk.path()), QStringList{u"filler"_s});
    }

    void pictureSuitsAFolder_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("picture");
        QTest::newRow("largest up to 512") << icns(entry("a   ", png(16)) + entry("b   ", png(512)) +
                                                   entry("c   ", png(1024)) + entry("d   ", png(256)))
                                           << png(512);
        QTest::newRow("smallest above 512")
            << icns(entry("a   ", png(2048)) + entry("b   ", png(1024))) << png(1024);
        QTest::newRow("other kinds of data")
            << icns(entry("is32", "raw") + entry("a   ", png(32))) << png(32);
        QTest::newRow("bytes after the file") << icns(entry("a   ", png(32))) + "more" << png(32);
        QTest::newRow("entry longer than the file")
            << icns(entry("a   ", png(32)) + "b   " + number(99)) << QByteArray();
        QTest::newRow("entry without its own header") << icns("b   " + number(0)) << QByteArray();
        QTest::newRow("length near 2^32") << icns("b   " + number(0xfffffff0)) << QByteArray();
        QTest::newRow("picture cut off in its header")
            << icns(entry("a   ", png(32).left(18))) << QByteArray();
        QTest::newRow("header only") << icns({}) << QByteArray();
        QTest::newRow("too short") << QByteArray("icns") << QByteArray();
    }

    void pictureSuitsAFolder()
    {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, picture);
        QCOMPARE(pngInIcon(file), picture);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(VolumeIconTest)
#include "VolumeIconTest.moc"
