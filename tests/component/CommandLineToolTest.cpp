#include "Ferrobank/CLI/CommandLineTool.h"

#include "Ferrobank/CLI/CLI.h"
#include "Platform/LinkPlacement.h"
#include "support/Await.h"
#include "support/TestProgram.h"
#include "support/fakes/FakePrivilegedLink.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;

namespace {

using Kind = PrivilegedOutcome::Kind;

QByteArray storedText(const QString& link)
{
    const auto text = storedLinkText(QFile::encodeName(link).toStdString());
    return text ? QByteArray::fromStdString(text->native()) : QByteArray();
}

void makeLink(const QByteArray& text, const QString& link)
{
    QCOMPARE(::symlink(text.constData(), QFile::encodeName(link).constData()), 0);
}

void makeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

constexpr auto kReadable = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                           QFileDevice::ReadOther | QFileDevice::ExeOther;

/// Takes the administrator's rights away for a while; anybody else has none to lose.
class AnotherUser {
public:
    AnotherUser() : _before(::geteuid())
    {
        if (_before == 0 && ::seteuid(kNobody) != 0) {
            qFatal("cannot give up the administrator's rights");
        }
    }

    AnotherUser(const AnotherUser&) = delete;
    AnotherUser& operator=(const AnotherUser&) = delete;

    ~AnotherUser()
    {
        if (::seteuid(_before) != 0) {
            qFatal("cannot take the rights back");
        }
    }

private:
    static constexpr uid_t kNobody = 65534;
    uid_t _before;
};

} // namespace

/// The command link in a folder of the test's own.
class CommandLineToolTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<FakePrivilegedLink> _administrator;
    std::unique_ptr<CommandLineTool> _tool;
    const QString _target = u"/opt/Ferrobank App/Contents/Helpers/ferrobank"_s;

    [[nodiscard]] QString link() const { return _folder->filePath(u"bin/ferrobank"_s); }

    /// The words of the failure.
    QString installFails()
    {
        try {
            await(_tool->install());
        } catch (const CLI::Failure& failure) {
            return failure.message();
        }
        return {};
    }

private Q_SLOTS:

    void init()
    {
        _folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(_folder->path()).mkdir(u"bin"_s));
        _administrator = std::make_unique<FakePrivilegedLink>();
        _tool = std::make_unique<CommandLineTool>(_target, *_administrator, link());
    }

    void standardPlaceIsTheOneOnTheSearchPath()
    {
        const CommandLineTool tool(_target, *_administrator);
        QCOMPARE(tool.link(), u"/usr/local/bin/ferrobank"_s);
    }

    void linkIsMadeWithoutAPromptWhereTheUserMayWrite()
    {
        QVERIFY(!_tool->isInstalled());
        await(_tool->install());
        QCOMPARE(storedText(link()), _target.toUtf8());
        QVERIFY(_tool->isInstalled());
        QVERIFY(_administrator->requests.isEmpty());
        QCOMPARE(QDir(_folder->filePath(u"bin"_s))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
                     .size(),
                 1);
    }

    void installedLinkIsLeftAlone()
    {
        makeLink(_target.toUtf8(), link());
        struct stat before{};
        struct stat after{};
        ::lstat(QFile::encodeName(link()).constData(), &before);
        await(_tool->install());
        ::lstat(QFile::encodeName(link()).constData(), &after);
        QCOMPARE(after.st_ino, before.st_ino);
        QVERIFY(_administrator->requests.isEmpty());
    }

    void linksOfOthersAreReplaced_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("stale") << QByteArray("/old/Ferrobank.app/Contents/Helpers/ferrobank");
        QTest::newRow("dangling") << QByteArray("nowhere");
        QTest::newRow("to itself") << QByteArray("ferrobank");
        QTest::newRow("to a folder") << QByteArray("/tmp");
        QTest::newRow("another spelling of the tool")
            << QByteArray("/opt/./Ferrobank App/Contents/Helpers/ferrobank");
        QTest::newRow("a slash too many") << QByteArray("/opt//Ferrobank App/Contents/Helpers/ferrobank");
    }

    void linksOfOthersAreReplaced()
    {
        QFETCH(QByteArray, text);
        makeLink(text, link());
        QVERIFY(!_tool->isInstalled());
        await(_tool->install());
        QCOMPARE(storedText(link()), _target.toUtf8());
        QVERIFY(_administrator->requests.isEmpty());
        QCOMPARE(QDir(_folder->filePath(u"bin"_s))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
                     .size(),
                 1);
    }

    void fileInThePlaceIsLeftAlone()
    {
        makeFile(link(), "precious");
        QCOMPARE(installFails(),
                 link() + u" already exists and is not a link, so Ferrobank left it alone."_s);
        QFile file(link());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), "precious");
        QVERIFY(_administrator->requests.isEmpty());
        QVERIFY(!_tool->isInstalled());
    }

    void folderInThePlaceIsLeftAlone()
    {
        QVERIFY(QDir().mkdir(link()));
        QCOMPARE(installFails(),
                 link() + u" already exists and is not a link, so Ferrobank left it alone."_s);
        QVERIFY(QFileInfo(link()).isDir());
        QVERIFY(_administrator->requests.isEmpty());
    }

    void choosingItTwiceAsksOnce()
    {
        QVERIFY(QDir(_folder->filePath(u"bin"_s)).removeRecursively());
        _administrator->answered.shut();
        const auto first = _tool->install();
        auto second = _tool->install();
        QCOMPARE(_administrator->requests.size(), 1);
        _administrator->answered.open();
        QVERIFY(first.isReady());
        // No link was made here: the first caller tells why, the second is silent.
        QVERIFY_THROWS_EXCEPTION(CommandLineTool::Cancelled, await(std::move(second)));
        QCOMPARE(_administrator->requests.size(), 1);
        await(_tool->install());
        QCOMPARE(_administrator->requests.size(), 2);
    }

    void theLinkIsRemovedWhereItIsOursAndTheUsersToRemove()
    {
        using Removal = CommandLineTool::Removal;
        QCOMPARE(_tool->remove(), Removal::NotThere);
        makeLink("/somewhere/else", link());
        QCOMPARE(_tool->remove(), Removal::NotThere);
        QCOMPARE(storedText(link()), "/somewhere/else");
        QVERIFY(QFile::remove(link()));
        makeLink(_target.toUtf8(), link());
        QCOMPARE(_tool->remove(), Removal::Removed);
        QVERIFY(storedText(link()).isEmpty());
    }

    void missingFolderAsksTheAdministrator()
    {
        QVERIFY(QDir(_folder->filePath(u"bin"_s)).removeRecursively());
        await(_tool->install());
        QCOMPARE(
            _administrator->requests,
            (QList<QStringList>{
                {_target, link(), u"Ferrobank wants to add the ferrobank command to /usr/local/bin."_s}}));
    }

    void folderOfSomebodyElseAsksTheAdministrator()
    {
        makeLink("stale", link());
        QVERIFY(QFile::setPermissions(_folder->path(), kReadable));
        QVERIFY(QFile::setPermissions(_folder->filePath(u"bin"_s), kReadable & ~QFileDevice::WriteOwner));
        {
            const AnotherUser another;
            await(_tool->install());
        }
        QVERIFY(QFile::setPermissions(_folder->filePath(u"bin"_s), kReadable));
        QCOMPARE(_administrator->requests.size(), 1);
        QCOMPARE(storedText(link()), "stale");
    }

    void dismissedPromptIsCancelled()
    {
        QVERIFY(QDir(_folder->filePath(u"bin"_s)).removeRecursively());
        _administrator->outcome.kind = Kind::Cancelled;
        QVERIFY_THROWS_EXCEPTION(CommandLineTool::Cancelled, await(_tool->install()));
    }

    void refusalShowsTheSystemsWords()
    {
        QVERIFY(QDir(_folder->filePath(u"bin"_s)).removeRecursively());
        _administrator->outcome.kind = Kind::Failed;
        _administrator->outcome.message = u"Not authorized"_s;
        QCOMPARE(installFails(), u"Not authorized"_s);
    }

    void refusalWithoutWordsHasOurs()
    {
        QVERIFY(QDir(_folder->filePath(u"bin"_s)).removeRecursively());
        _administrator->outcome.kind = Kind::Failed;
        QCOMPARE(installFails(), u"Could not add the ferrobank command."_s);
    }

    void callerWaitsWhileThePromptIsOpen()
    {
        QVERIFY(QDir(_folder->filePath(u"bin"_s)).removeRecursively());
        _administrator->answered.shut();
        const auto result = std::make_shared<Settled<void>>();
        const auto installing = settle(_tool->install(), result);
        QVERIFY(!result->done);
        _administrator->answered.open();
        QVERIFY(result->done);
        QVERIFY(!result->error);
    }

    void awkwardPathsSurvive_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("double quote") << u"/opt/Ferro\"bank/ferrobank"_s;
        QTest::newRow("backslash") << u"/opt/Ferro\\bank/ferrobank"_s;
        QTest::newRow("spaces") << u"/opt/ Ferro  bank /ferrobank"_s;
        QTest::newRow("line break") << u"/opt/Ferro\nbank/ferrobank"_s;
        QTest::newRow("dollar and quote") << u"/opt/$HOME 'x' `id`/ferrobank"_s;
        QTest::newRow("other letters") << u"/opt/Größe ✓/ferrobank"_s;
    }

    void awkwardPathsSurvive()
    {
        QFETCH(QString, target);
        CommandLineTool tool(target, *_administrator, link());
        await(tool.install());
        QCOMPARE(storedText(link()), target.toUtf8());
        QVERIFY(tool.isInstalled());
    }
};

FERROBANK_TEST(CommandLineToolTest)
#include "CommandLineToolTest.moc"
