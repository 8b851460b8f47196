#include "Platform/linux/desktop/DesktopFolderChooser.h"
#include "support/PrivateBus.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusContext>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusObjectPath>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>

#include <memory>

namespace ferrobank {

using namespace Qt::StringLiterals;

/// A desktop's portal whose dialog the test answers.
class FakePortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileChooser")

public:
    bool refuses = false;
    QVariantMap options;
    QString title;

    explicit FakePortal(QDBusConnection on) : _bus(std::move(on))
    {
        _bus.registerObject(u"/org/freedesktop/portal/desktop"_s, this, QDBusConnection::ExportAllSlots);
        _bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }

    ~FakePortal() override { _bus.unregisterService(u"org.freedesktop.portal.Desktop"_s); }

    void answer(uint response, const QStringList& uris)
    {
        QDBusMessage signal =
            QDBusMessage::createSignal(_request, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        signal << response << QVariantMap{{u"uris"_s, uris}};
        _bus.send(signal);
    }

    [[nodiscard]] bool isAsked() const { return !_request.isEmpty(); }

public Q_SLOTS:

    QDBusObjectPath OpenFile(const QString&, const QString& ofTitle, const QVariantMap& with) // NOLINT
    {
        if (refuses) {
            sendErrorReply(QDBusError::UnknownMethod, u"No backend"_s);
            return {};
        }
        title = ofTitle;
        options = with;
        QString sender = message().service().mid(1);
        sender.replace(u'.', u'_');
        _request = u"/org/freedesktop/portal/desktop/request/"_s + sender + u'/' +
                   with.value(u"handle_token"_s).toString();
        return QDBusObjectPath(_request);
    }

private:
    QDBusConnection _bus;
    QString _request;
};

class FolderChooserTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void portalIsAskedForOneFolderInOurWords()
    {
        FakePortal portal(_bus.connect());
        choose();
        QTRY_VERIFY(portal.isAsked());
        QCOMPARE(portal.title, u"Choose a Folder"_s);
        QCOMPARE(portal.options.value(u"directory"_s).toBool(), true);
        QCOMPARE(portal.options.value(u"accept_label"_s).toString(), u"Copy Here"_s);
        const QByteArray folder = portal.options.value(u"current_folder"_s).toByteArray();
        QCOMPARE(folder, QByteArray("/home/anna\0", 11));
        portal.answer(1, {});
    }

    void chosenFolderOfThePortalArrivesAsAPath()
    {
        FakePortal portal(_bus.connect());
        choose();
        QTRY_VERIFY(portal.isAsked());
        portal.answer(0, {QUrl::fromLocalFile(u"/home/anna/my Ördner"_s).toString(QUrl::FullyEncoded)});
        QTRY_COMPARE(_chosen, QStringList{u"/home/anna/my Ördner"_s});
    }

    void leavingThePortalsDialogChoosesNothingAndAllowsAnother()
    {
        FakePortal portal(_bus.connect());
        choose();
        QTRY_VERIFY(portal.isAsked());
        portal.answer(1, {});
        portal.options.clear();
        QTRY_VERIFY((choose(), QCoreApplication::processEvents(), !portal.options.isEmpty()));
        QVERIFY(_chosen.isEmpty());
        portal.answer(1, {});
    }

    void folderThatIsNoPlaceOnThisComputerIsNotTaken()
    {
        FakePortal portal(_bus.connect());
        choose();
        QTRY_VERIFY(portal.isAsked());
        portal.answer(0, {u"smb://server/share"_s});
        // Answered once a further request reaches the portal.
        portal.options.clear();
        QTRY_VERIFY((choose(), QCoreApplication::processEvents(), !portal.options.isEmpty()));
        QVERIFY(_chosen.isEmpty());
        portal.answer(1, {});
    }

    void withoutAPortalOurOwnDialogIsShown()
    {
        choose();
        QTRY_VERIFY(ownDialog() != nullptr);
        QCOMPARE(ownDialog()->fileMode(), QFileDialog::Directory);
        QCOMPARE(ownDialog()->labelText(QFileDialog::Accept), u"Copy Here"_s);
        QCOMPARE(ownDialog()->windowTitle(), u"Choose a Folder"_s);
        ownDialog()->reject();
        QTRY_VERIFY(ownDialog() == nullptr);
        QVERIFY(_chosen.isEmpty());
    }

    void portalWithoutABackendLeadsToOurOwnDialog()
    {
        FakePortal portal(_bus.connect());
        portal.refuses = true;
        choose();
        QTRY_VERIFY(ownDialog() != nullptr);
        ownDialog()->reject();
        QTRY_VERIFY(ownDialog() == nullptr);
    }

    void folderFromOurOwnDialogIsAbsolute()
    {
        QTemporaryDir folder;
        choose(folder.path());
        QTRY_VERIFY(ownDialog() != nullptr);
        ownDialog()->selectFile(folder.path());
        QMetaObject::invokeMethod(ownDialog(), "accept");
        QTRY_COMPARE(_chosen.size(), 1);
        QVERIFY(QDir::isAbsolutePath(_chosen.constFirst()));
    }

    void secondWishWhileADialogIsOpenOpensNoOther()
    {
        choose();
        QTRY_VERIFY(ownDialog() != nullptr);
        choose();
        QCoreApplication::processEvents();
        int dialogs = 0;
        for (const QWidget* widget : QApplication::topLevelWidgets()) {
            dialogs += qobject_cast<const QFileDialog*>(widget) != nullptr ? 1 : 0;
        }
        QCOMPARE(dialogs, 1);
        ownDialog()->reject();
        QTRY_VERIFY(ownDialog() == nullptr);
    }

    void portalThatEndsWithItsDialogOpenAllowsAnother()
    {
        {
            FakePortal portal(_bus.connect());
            choose();
            QTRY_VERIFY(portal.isAsked());
        }
        QTRY_VERIFY((choose(), QCoreApplication::processEvents(), ownDialog() != nullptr));
        QVERIFY(_chosen.isEmpty());
        ownDialog()->reject();
        QTRY_VERIFY(ownDialog() == nullptr);
    }

    void init()
    {
        if (!_bus.isUp()) {
            QSKIP("There is no dbus-daemon to start");
        }
        _chooser = std::make_unique<DesktopFolderChooser>();
        _chosen.clear();
    }

private:
    void choose(const QString& folder = u"/home/anna"_s)
    {
        _chooser->choose(
            {.title = u"Choose a Folder"_s, .confirm = u"Copy Here"_s, .folder = folder, .parent = nullptr},
            [this](const QString& path) { _chosen << path; });
    }

    static QFileDialog* ownDialog()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<QFileDialog*>(widget)) {
                return dialog;
            }
        }
        return nullptr;
    }

    PrivateBus _bus;
    std::unique_ptr<DesktopFolderChooser> _chooser;
    QStringList _chosen;
};

} // namespace ferrobank

FERROBANK_TEST_WITH_WINDOWS(ferrobank::FolderChooserTest)

#include "FolderChooserTest.moc"
