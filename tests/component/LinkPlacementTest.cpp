#include "Platform/LinkPlacement.h"

#include "support/TestProgram.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

using namespace ferrobank;

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

class LinkPlacementTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void onlyWhatNobodyButRootCanChangeIsRoots()
    {
        QVERIFY(isOnlyRootsToWrite("/usr"));
        QVERIFY(isOnlyRootsToPlaceIn("/usr"));
        QVERIFY(!isOnlyRootsToWrite("usr"));
        QVERIFY(!isOnlyRootsToPlaceIn("usr"));
        QVERIFY(!isOnlyRootsToWrite("/no/such/file"));
        QVERIFY(!isOnlyRootsToPlaceIn("/no/such/folder"));
        QVERIFY2(!isOnlyRootsToWrite("/proc/self/exe"), "a link may lead elsewhere tomorrow");
        const QTemporaryDir folder; // in a folder that is everybody's
        QVERIFY(!isOnlyRootsToWrite(folder.path().toStdString()));
        QVERIFY(!isOnlyRootsToPlaceIn(folder.path().toStdString()));
    }

    void textOfTheLinkIsReadWithoutFollowingIt()
    {
        const QTemporaryDir folder;
        const fs::path place = folder.path().toStdString();
        fs::create_symlink("first", place / "second");
        fs::create_symlink("second", place / "third");
        QCOMPARE(storedLinkText(place / "third"), std::optional<fs::path>("second"));
        QVERIFY(!storedLinkText(place));
        QVERIFY(!storedLinkText(place / "nothing"));
    }

    void linkToALinkToAFolderIsReplacedNotEntered()
    {
        const QTemporaryDir folder;
        const fs::path place = folder.path().toStdString();
        fs::create_directory(place / "real");
        fs::create_symlink("real", place / "link");
        placeLink("/target", place / "link");
        QCOMPARE(storedLinkText(place / "link"), std::optional<fs::path>("/target"));
        QVERIFY(fs::is_empty(place / "real"));
    }

    void missingFolderIsAnError()
    {
        QVERIFY_THROWS_EXCEPTION(fs::filesystem_error, placeLink("/target", "/nonexistent/bin/link"));
    }

    void leftoverOfAnEarlierTryIsNoObstacle()
    {
        const QTemporaryDir folder;
        const fs::path place = folder.path().toStdString();
        std::ofstream(place / (".ferrobank-" + std::to_string(::getpid()) + "-0")) << "not ours to take";
        fs::create_symlink("old", place / "link");
        placeLink("/target", place / "link");
        QCOMPARE(storedLinkText(place / "link"), std::optional<fs::path>("/target"));
        QCOMPARE(contentOf(place / (".ferrobank-" + std::to_string(::getpid()) + "-0")), "not ours to take");
    }

    /// Another program puts a file in the link's place again and again, by renaming as careful programs do.
    /// At the end of each round either that file is there, whole, or the link; and a file that was put there
    /// last is never lost.
    void fileThatAppearsBetweenLookAndChangeIsNeverLost()
    {
        constexpr int kRounds = 600;
        const QTemporaryDir folder;
        const fs::path place = folder.path().toStdString();
        const fs::path link = place / "link";
        int refused = 0;
        int placed = 0;
        for (int round = 0; round < kRounds; ++round) {
            fs::remove_all(link);
            fs::create_symlink("stale", link);
            std::ofstream(place / "foreign") << "precious";
            std::atomic<bool> go = false;
            std::thread other([&go, &place, &link, round] {
                while (!go) {
                }
                // A little later each time; an atomic counter is not optimised away.
                for (std::atomic<int> i = 0; i < round % 1000 * 10; ++i) {
                }
                ::rename((place / "foreign").c_str(), link.c_str());
            });
            go = true;
            bool isRefused = false;
            try {
                placeLink("/target", link);
            } catch (const NotALinkError&) {
                isRefused = true;
            }
            other.join();
            // The other program may also come after us, and replace our link: then its file is there.
            refused += isRefused ? 1 : 0;
            placed += isRefused ? 0 : 1;
            QVERIFY(fs::is_regular_file(fs::symlink_status(link)));
            QCOMPARE(contentOf(link), "precious");
            QCOMPARE(std::distance(fs::directory_iterator(place), fs::directory_iterator()), 1);
        }
        qInfo("%d times the file came first, %d times the link", refused, placed);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(LinkPlacementTest)
#include "LinkPlacementTest.moc"
