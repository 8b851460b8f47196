#include "Platform/linux/SmallFile.h"

#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace ferrobank {

class SmallFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void contentComesBack();
    void fileAtTheLimitIsReadAndOneAboveIsNot();
    void missingFileReadsAsNone();
    void folderPipeAndDeviceAreRefusedWithoutWaiting();
    void missingFoldersAreMade();
    void replacementIsReadableByAllAndWritableByTheOwner();
    void failedReplacementLeavesTheOldContentAndNoTemporaryFile();

private:
    std::filesystem::path file(const char* name) const
    {
        return std::filesystem::path(_folder.path().toStdString()) / name;
    }

    QTemporaryDir _folder;
};

void SmallFileTest::contentComesBack()
{
    const std::string content("two\nlines\0and a zero", 20);
    replaceSmallFile(file("content"), content);
    QVERIFY(readSmallFile(file("content"), 100) == content);
    replaceSmallFile(file("content"), "");
    QVERIFY(readSmallFile(file("content"), 100) == "");
}

void SmallFileTest::fileAtTheLimitIsReadAndOneAboveIsNot()
{
    replaceSmallFile(file("limit"), std::string(1000, 'x'));
    QVERIFY(readSmallFile(file("limit"), 1000).has_value());
    QVERIFY(!readSmallFile(file("limit"), 999).has_value());
}

void SmallFileTest::missingFileReadsAsNone()
{
    QVERIFY(!readSmallFile(file("missing"), 10));
}

void SmallFileTest::folderPipeAndDeviceAreRefusedWithoutWaiting()
{
    QCOMPARE(mkfifo(file("pipe").c_str(), 0600), 0);
    QVERIFY(!readSmallFile(file("pipe"), 10));
    QVERIFY(!readSmallFile(file("."), 10));
    QVERIFY(!readSmallFile("/dev/zero", 10));
}

void SmallFileTest::missingFoldersAreMade()
{
    replaceSmallFile(file("one/two/three"), "x");
    QVERIFY(readSmallFile(file("one/two/three"), 10) == "x");
}

void SmallFileTest::replacementIsReadableByAllAndWritableByTheOwner()
{
    replaceSmallFile(file("mode"), "x");
    struct stat facts{};
    QCOMPARE(stat(file("mode").c_str(), &facts), 0);
    QCOMPARE(facts.st_mode & 07777U, 0644U);
}

void SmallFileTest::failedReplacementLeavesTheOldContentAndNoTemporaryFile()
{
    // A folder cannot be replaced by a file, and the temporary file is written before that shows.
    std::filesystem::create_directories(file("taken/inner"));
    QVERIFY_THROWS_EXCEPTION(std::system_error, replaceSmallFile(file("taken"), "x"));
    QVERIFY(std::filesystem::is_directory(file("taken/inner")));
    QCOMPARE(QDir(_folder.path()).entryList({u".taken*"_s}, QDir::AllEntries | QDir::Hidden), QStringList{});
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::SmallFileTest)
#include "SmallFileTest.moc"
