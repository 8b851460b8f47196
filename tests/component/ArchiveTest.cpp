#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Unpack.h"
#include "Platform/linux/updates/worker/WorkerContext.h"
#include "support/TestProgram.h"
#include "support/updates/TestRelease.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>
#include <QtTest/QTest>

#include <sys/stat.h>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;
using Json = nlohmann::json;

namespace {

Expectation expectation()
{
    return {"org.ferrobank.Ferrobank",  "1.0.1",        "1.0.0",   "",
            systemName().toStdString(), glibcVersion(), qVersion()};
}

TestRelease release()
{
    return {u"1.0.1"_s, u"https://localhost/feed.xml"_s, SigningKey()};
}

TestEntry entry(std::string path, unsigned type = 0100000)
{
    return {.path = std::move(path), .content = {}, .type = type, .mode = 0644, .target = {}, .hardLink = {}};
}

/// What unpacking an archive came to.
struct Result {
    QTemporaryDir folder;
    std::string refusal; ///< empty for success
    Problem problem = Problem::Off;

    [[nodiscard]] std::filesystem::path root() const { return folder.path().toStdString() + "/App 1"; }
};

std::unique_ptr<Result> unpack(const QByteArray& archive, const Expectation& expected = expectation())
{
    auto result = std::make_unique<Result>();
    QTemporaryFile file;
    if (!file.open() || file.write(archive) != archive.size() || !file.flush())
        qFatal("The archive cannot be written.");
    try {
        unpackArchive(file.handle(), static_cast<std::uint64_t>(archive.size()),
                      result->folder.path().toStdString(), "App 1", expected);
    } catch (const UpdateFailure& failure) {
        result->refusal = failure.what();
        result->problem = failure.problem();
    }
    return result;
}

bool isRefused(const QByteArray& archive)
{
    const auto result = unpack(archive);
    return !result->refusal.empty() && result->problem == Problem::Archive;
}

bool isRefusedWith(const TestEntry& added)
{
    TestRelease one = release();
    one.add(added);
    return isRefused(one.archive());
}

mode_t modeOf(const std::filesystem::path& path)
{
    struct stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 ? facts.st_mode & 07777U : 0;
}

} // namespace

class ArchiveTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void completeArchiveBecomesExactlyTheManifestsTree()
    {
        const auto result = unpack(release().archive());
        QCOMPARE(result->refusal, "");
        const Manifest manifest = checkTree(result->root());
        QCOMPARE(manifest.version, "1.0.1");
        QCOMPARE(modeOf(result->root() / "Contents/Linux/Ferrobank"), 0755U);
        QCOMPARE(modeOf(result->root() / "Contents/Info.plist"), 0644U);
        QCOMPARE(modeOf(result->root() / "Contents/Linux"), 0755U);
        QCOMPARE(std::filesystem::read_symlink(result->root() / "Contents/Linux/alias"), "Ferrobank");
    }

    void entriesThatLeaveTheFolderAreRefusedAndNothingIsWrittenOutside_data()
    {
        QTest::addColumn<QByteArray>("path");
        for (const char* path :
             {"../evil", "Ferrobank.app/../evil", "/tmp/ferrobank-evil", "Ferrobank.app/a/../../../evil",
              "Other.app/evil", "evil", "Ferrobank.app//evil", "Ferrobank.app/./evil", "Ferrobank.apps/evil"})
            QTest::newRow(path) << QByteArray(path);
    }

    void entriesThatLeaveTheFolderAreRefusedAndNothingIsWrittenOutside()
    {
        QFETCH(QByteArray, path);
        TestRelease one = release();
        TestEntry evil = entry(path.toStdString());
        evil.content = "evil";
        one.add(evil);
        const auto result = unpack(one.archive());
        QVERIFY(result->problem == Problem::Archive);
        QCOMPARE(
            QDir(result->folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
            QStringList{u"App 1"_s});
        QVERIFY(!std::filesystem::exists("/tmp/ferrobank-evil"));
    }

    void linksThatLeaveTheFolderAreRefused()
    {
        for (const char* target : {"/etc/passwd", "../../../etc", "..//x", ""}) {
            TestEntry link = entry("Ferrobank.app/Contents/evil", 0120000);
            link.target = target;
            QVERIFY2(isRefusedWith(link), target);
        }
    }

    void fileBehindALinkIsRefused()
    {
        TestRelease one = release();
        TestEntry link = entry("Ferrobank.app/Contents/there", 0120000);
        link.target = "Linux";
        one.add(link);
        one.add(entry("Ferrobank.app/Contents/there/file"));
        one.editManifest([](Json& json) {
            json["entries"].push_back({{"path", "Contents/there"}, {"type", "link"}, {"target", "Linux"}});
        });
        QVERIFY(isRefused(one.archive()));
    }

    void linkThatTheManifestAimsElsewhereIsRefused()
    {
        TestRelease one = release();
        one.editManifest([](Json& json) { json["entries"].back()["target"] = "libferrobank-app.so"; });
        QVERIFY(isRefused(one.archive()));
    }

    void hardLinksAndSpecialFilesAreRefused()
    {
        TestEntry hard = entry("Ferrobank.app/Contents/hard");
        hard.hardLink = "/etc/passwd";
        QVERIFY(isRefusedWith(hard));
        for (const unsigned type : {0010000U, 0020000U, 0060000U})
            QVERIFY(isRefusedWith(entry("Ferrobank.app/Contents/special", type)));
    }

    void specialRightsAreRefused()
    {
        for (const unsigned mode : {04755U, 02755U, 01755U}) {
            TestEntry rights = entry("Ferrobank.app/Contents/Linux/tool");
            rights.mode = mode;
            QVERIFY(isRefusedWith(rights));
        }
    }

    void fileThatTheManifestDoesNotListIsRefused()
    {
        QVERIFY(isRefusedWith(entry("Ferrobank.app/Contents/extra")));
    }

    void fileThatComesTwiceIsRefused() { QVERIFY(isRefusedWith(entry("Ferrobank.app/Contents/Info.plist"))); }

    void folderInAFilesPlaceIsRefused()
    {
        QVERIFY(isRefusedWith(entry("Ferrobank.app/Contents/Info.plist", 0040000)));
    }

    void missingFileIsRefused()
    {
        TestRelease one = release();
        one.editManifest([](Json& json) {
            json["entries"].push_back({{"path", "Contents/missing"},
                                       {"type", "file"},
                                       {"size", 0},
                                       {"executable", false},
                                       {"sha256", std::string(64, '0')}});
        });
        QVERIFY(isRefused(one.archive()));
    }

    void otherContentsOrSizesAreRefused()
    {
        for (const int change : {0, 1, 2}) {
            TestRelease one = release();
            one.editManifest([change](Json& json) {
                Json& first = json["entries"][0];
                const auto size = first["size"].get<std::uint64_t>();
                if (change == 0)
                    first["sha256"] = std::string(64, '0');
                else
                    first["size"] = change == 1 ? size + 1 : size - 1;
            });
            QVERIFY(isRefused(one.archive()));
        }
    }

    void manifestComesFirstAndIsAList()
    {
        TestEntry early = entry("Ferrobank.app/Contents/Info.plist");
        early.content = "x";
        QVERIFY(isRefused(packArchive({early})));
        TestEntry manifest = entry("Ferrobank.app/Contents/Resources/update-manifest.json");
        manifest.content = "{}";
        QVERIFY(isRefused(packArchive({manifest})));
        QVERIFY(isRefused(packArchive({entry("Ferrobank.app/", 0040000)})));
        QVERIFY(isRefused(packArchive({})));
        manifest.content = QByteArray(9 * 1024 * 1024, ' ');
        QVERIFY(isRefused(packArchive({manifest}, false)));
    }

    void bombIsStoppedLongBeforeItsEnd()
    {
        TestRelease one = release();
        const QByteArray zeros(40 * 1024 * 1024, '\0');
        one.setFile("Contents/Resources/zeros", zeros);
        const auto result = unpack(one.archive());
        QVERIFY(result->refusal.find("out of proportion") != std::string::npos);
        QVERIFY(std::filesystem::file_size(result->root() / "Contents/Resources/zeros") < 10'000'000);
    }

    void damagedAndCutArchivesAreRefused()
    {
        const QByteArray whole = release().archive();
        QVERIFY(isRefused(QByteArray()));
        QVERIFY(isRefused("not an archive"));
        QVERIFY(isRefused(QByteArray(10'000, '\0')));
        for (const qsizetype length : {qsizetype{10}, whole.size() / 2, whole.size() - 20})
            QVERIFY(isRefused(whole.first(length)));
        for (qsizetype at = 20; at < whole.size(); at += whole.size() / 7) {
            QByteArray damaged = whole;
            damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
            const auto result = unpack(damaged);
            // A bit that no content depends on may flip; then the tree is still exactly the manifest's.
            if (result->refusal.empty())
                checkTree(result->root());
        }
    }

    void announcementIsCheckedBeforeAnythingIsWritten()
    {
        Expectation other = expectation();
        other.version = "1.0.2";
        const auto result = unpack(release().archive(), other);
        QCOMPARE(result->problem, Problem::Version);
        QVERIFY(!std::filesystem::exists(result->root()));
    }

    void treeCheckSeesEveryLaterChange()
    {
        const auto changed = [](auto change) {
            const auto result = unpack(release().archive());
            change(result->root());
            try {
                checkTree(result->root());
                return false;
            } catch (const UpdateFailure& failure) {
                return failure.problem() == Problem::Archive;
            }
        };
        namespace fs = std::filesystem;
        QVERIFY(!changed([](const fs::path&) {}));
        QVERIFY(changed([](const fs::path& root) { fs::remove(root / "Contents/Info.plist"); }));
        QVERIFY(changed([](const fs::path& root) { fs::resize_file(root / "Contents/Info.plist", 3); }));
        QVERIFY(changed(
            [](const fs::path& root) { fs::copy(root / "Contents/Info.plist", root / "Contents/more"); }));
        QVERIFY(changed([](const fs::path& root) {
            fs::permissions(root / "Contents/Linux/Ferrobank", fs::perms::owner_read);
        }));
        QVERIFY(changed([](const fs::path& root) {
            fs::remove(root / "Contents/Linux/alias");
            fs::create_symlink("/bin/sh", root / "Contents/Linux/alias");
        }));
        QVERIFY(changed(
            [](const fs::path& root) { fs::remove(root / "Contents/Resources/update-manifest.json"); }));
        QVERIFY(changed([](const fs::path& root) {
            fs::rename(root / "Contents/Info.plist", root / "Contents/Info");
            fs::create_symlink("Info", root / "Contents/Info.plist");
        }));
    }
};

FERROBANK_TEST(ArchiveTest)
#include "ArchiveTest.moc"
