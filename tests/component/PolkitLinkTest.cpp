#include "Platform/linux/link/PolkitLink.h"

#include "support/Await.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;

namespace {

using Kind = PrivilegedOutcome::Kind;

} // namespace

/// The mapping of what pkexec does, with a script in its place that runs the command as the same user.
class PolkitLinkTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> _folder;
    PolkitLink::Places _places;

    [[nodiscard]] QString path(const QString& name) const { return _folder->filePath(name); }

    void writeProgram(const QString& name, const QByteArray& script) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.close();
        QVERIFY(
            file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
    }

    /// Notes its arguments, one a line, and then does what the script says.
    void pkexecDoes(const QByteArray& script) const
    {
        const QByteArray note = "for a; do printf '%s\\n' \"$a\"; done >>\"$(dirname \"$0\")/asked\"\n";
        writeProgram(u"pkexec"_s, note + script);
    }

    [[nodiscard]] QStringList asked() const
    {
        QFile file(path(u"asked"_s));
        return file.open(QIODevice::ReadOnly)
                   ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
                   : QStringList();
    }

    PrivilegedOutcome make(PolkitLink& polkit) const
    {
        return await(polkit.make(path(u"tool"_s), path(u"bin/ferrobank"_s), u"Please."_s));
    }

private Q_SLOTS:

    void init()
    {
        _folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(_folder->path()).mkdir(u"bin"_s));
        _places.pkexec = path(u"pkexec"_s);
        _places.helper = path(u"helper"_s);
        _places.installedTool = path(u"installed tool"_s);
        _places.installedLink = path(u"bin/ferrobank"_s);
    }

    void installedToolIsLinkedByTheHelperWhichGetsNoArguments()
    {
        writeProgram(u"helper"_s, "");
        _places.installedTool = path(u"tool"_s);
        pkexecDoes("exit 0");
        PolkitLink polkit(_places);
        polkit.setExplain([](const QString&) -> QCoro::Task<bool> {
            throw std::logic_error("the system's dialog has the prompt already");
            co_return false;
        });
        QCOMPARE(make(polkit).kind, Kind::Done);
        QCOMPARE(asked(), (QStringList{u"--disable-internal-agent"_s, _places.helper}));
    }

    void otherPlacesAreNotTheHelpers_data()
    {
        QTest::addColumn<bool>("sameTool");
        QTest::addColumn<bool>("sameLink");
        QTest::addColumn<bool>("helperIsThere");
        QTest::newRow("another tool") << false << true << true;
        QTest::newRow("another link") << true << false << true;
        QTest::newRow("no helper") << true << true << false;
    }

    void otherPlacesAreNotTheHelpers()
    {
        QFETCH(bool, sameTool);
        QFETCH(bool, sameLink);
        QFETCH(bool, helperIsThere);
        if (sameTool) {
            _places.installedTool = path(u"tool"_s);
        }
        if (!sameLink) {
            _places.installedLink = u"/elsewhere/ferrobank"_s;
        }
        if (helperIsThere) {
            writeProgram(u"helper"_s, "");
        }
        pkexecDoes("shift; exec \"$@\"");
        PolkitLink polkit(_places);
        QCOMPARE(make(polkit).kind, Kind::Done);
        QVERIFY(!asked().contains(_places.helper));
        QCOMPARE(QFile::symLinkTarget(path(u"bin/ferrobank"_s)), path(u"tool"_s));
    }

    void withoutThePackageTheLinkIsMadeBySystemTools()
    {
        pkexecDoes("shift; exec \"$@\"");
        PolkitLink polkit(_places);
        QStringList explained;
        polkit.setExplain([&explained](const QString& prompt) -> QCoro::Task<bool> {
            explained.append(prompt);
            co_return true;
        });
        QVERIFY(QDir(path(u"bin"_s)).removeRecursively());
        QCOMPARE(make(polkit).kind, Kind::Done);
        QCOMPARE(explained.size(), 1);
        QVERIFY(explained.first().startsWith(u"Please.\n\n"_s));
        QCOMPARE(QFile::symLinkTarget(path(u"bin/ferrobank"_s)), path(u"tool"_s));
    }

    void toolThatOthersCanChangeIsWarnedOfBeforeAnyPassword()
    {
        pkexecDoes("shift; exec \"$@\"");
        PolkitLink polkit(_places);
        QStringList explained;
        polkit.setExplain([&](const QString& words) -> QCoro::Task<bool> {
            explained.append(words);
            co_return false;
        });
        QCOMPARE(make(polkit).kind, Kind::Cancelled);
        QVERIFY(asked().isEmpty());
        QVERIFY2(explained.first().contains(u"can be changed without a password"_s),
                 qPrintable(explained.first()));
        // A program of the system is only root's to write.
        QCOMPARE(await(polkit.make(u"/usr/bin/env"_s, path(u"bin/ferrobank"_s), u"Please."_s)).kind,
                 Kind::Cancelled);
        QCOMPARE(explained.last(), u"Please."_s);
    }

    void whatAppearsWhileThePasswordIsTypedIsKept_data()
    {
        QTest::addColumn<bool>("linkBefore");
        QTest::newRow("nothing was there") << false;
        QTest::newRow("an old link was there") << true;
    }

    void whatAppearsWhileThePasswordIsTypedIsKept()
    {
        QFETCH(bool, linkBefore);
        const QString link = path(u"bin/ferrobank"_s);
        QVERIFY(!linkBefore || QFile::link(u"/old"_s, link));
        pkexecDoes("place=\"$(dirname \"$0\")/bin/ferrobank\"; rm -f \"$place\"; echo precious >\"$place\"\n"
                   "shift; exec \"$@\"");
        PolkitLink polkit(_places);
        const auto outcome = make(polkit);
        QCOMPARE(outcome.kind, Kind::Failed);
        QVERIFY(!outcome.message.isEmpty());
        QFile file(link);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("precious\n"));
    }

    void systemToolsReplaceALinkButNothingElse()
    {
        pkexecDoes("shift; exec \"$@\"");
        PolkitLink polkit(_places);
        QVERIFY(QFile::link(path(u"bin"_s), path(u"bin/ferrobank"_s)));
        QCOMPARE(make(polkit).kind, Kind::Done);
        QCOMPARE(QFile::symLinkTarget(path(u"bin/ferrobank"_s)), path(u"tool"_s));

        QVERIFY(QFile::remove(path(u"bin/ferrobank"_s)));
        QFile file(path(u"bin/ferrobank"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const auto outcome = make(polkit);
        QCOMPARE(outcome.kind, Kind::Failed);
        QVERIFY2(outcome.message.contains(u"File exists"_s), qPrintable(outcome.message));
        QVERIFY(!QFileInfo(path(u"bin/ferrobank"_s)).isSymLink());
    }

    void userWhoDeclinesTheExplanationIsNotAskedForAPassword()
    {
        pkexecDoes("exit 0");
        PolkitLink polkit(_places);
        polkit.setExplain([](const QString&) -> QCoro::Task<bool> { co_return false; });
        QCOMPARE(make(polkit).kind, Kind::Cancelled);
        QVERIFY(asked().isEmpty());
    }

    void endingsOfPkexecAreTold_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("message");
        QTest::newRow("dismissed")
            << QByteArray("echo 'Error executing command as another user: Request dismissed' >&2; exit 126")
            << Kind::Cancelled << QString();
        QTest::newRow("refused")
            << QByteArray("printf 'Error executing command as another user: Not authorized\\n\\nThis "
                          "incident has been reported.\\n' >&2; exit 127")
            << Kind::Failed << u"Not authorized"_s;
        QTest::newRow("no agent") << QByteArray("echo 'Error executing command as another user: No "
                                                "authentication agent found.' >&2; exit 127")
                                  << Kind::Failed << u"No authentication agent found."_s;
        QTest::newRow("no polkit") << QByteArray(
                                          "echo 'Error getting authority: Could not connect' >&2; exit 127")
                                   << Kind::Failed << u"Error getting authority: Could not connect"_s;
        QTest::newRow("the command failed") << QByteArray("echo 'read-only file system' >&2; exit 1")
                                            << Kind::Failed << u"read-only file system"_s;
        QTest::newRow("no words") << QByteArray("exit 3") << Kind::Failed << QString();
        QTest::newRow("killed") << QByteArray("kill -9 $$") << Kind::Failed << QString();
    }

    void endingsOfPkexecAreTold()
    {
        QFETCH(QByteArray, script);
        QFETCH(Kind, kind);
        QFETCH(QString, message);
        pkexecDoes(script);
        PolkitLink polkit(_places);
        const auto outcome = make(polkit);
        QCOMPARE(outcome.kind, kind);
        QCOMPARE(outcome.message, message);
    }

    void missingPkexecIsAFailureWithWords()
    {
        PolkitLink polkit(_places);
        const auto outcome = make(polkit);
        QCOMPARE(outcome.kind, Kind::Failed);
        QVERIFY(outcome.message.contains(u"pkexec"_s));
    }

    void noFolderIsMadeWhenItIsRefused()
    {
        QVERIFY(QDir(path(u"bin"_s)).removeRecursively());
        pkexecDoes("exit 126");
        PolkitLink polkit(_places);
        QCOMPARE(make(polkit).kind, Kind::Cancelled);
        QCOMPARE(asked().count(u"--disable-internal-agent"_s), 1);
    }
};

FERROBANK_TEST(PolkitLinkTest)
#include "PolkitLinkTest.moc"
