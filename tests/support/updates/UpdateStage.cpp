#include "support/updates/UpdateStage.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Unpack.h"
#include "Platform/linux/updates/worker/WorkerContext.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace ferrobank {

using namespace Qt::StringLiterals;

UpdateStage::UpdateStage() : _root(parent() + u"/Ferrobank.app"_s)
{
    makeRelease(u"1.0.0"_s).installAt(_root);
    environment[u"RELEASE_LOG"_s] = releaseLog();
    environment[u"HOME"_s] = _folder.filePath(u"user"_s);
    // A version that fails at once fails by itself, and not for want of a display.
    environment[u"QT_QPA_PLATFORM"_s] = u"offscreen"_s;
}

QString UpdateStage::staging() const
{
    return QString::fromStdString(updates::InstallPlace::of(_root.toStdString()).staging());
}

TestRelease UpdateStage::makeRelease(const QString& version) const
{
    TestRelease release(version, server.address(u"/feed.xml"_s), key);
    release.setFile("Contents/Resources/update-authority.pem", server.authority());
    return release;
}

void UpdateStage::publish(const TestRelease& release, const QString& more)
{
    publishArchive(release.version(), release.archive(), more);
}

void UpdateStage::publishArchive(const QString& version, const QByteArray& archive, const QString& more)
{
    const QString path = u"/Ferrobank_%1.tar.zst"_s.arg(version);
    server.serve(path, archive);
    TestItem item;
    item.version = version;
    item.url = server.address(path);
    item.length = archive.size();
    item.signature = QString::fromStdString(key.sign(archive));
    item.more = more;
    publishFeed(feedOf({item}));
}

void UpdateStage::publishFeed(const QByteArray& content)
{
    server.serve(u"/feed.xml"_s, signedFeed(content, key));
}

void UpdateStage::useVersionedLayout()
{
    const QString versions = parent() + u"/versions/1.0.0"_s;
    QDir().mkpath(versions);
    QFile::rename(_root, versions + u"/Ferrobank.app"_s);
    QFile::link(u"versions/1.0.0"_s, parent() + u"/current"_s);
    _root = versions + u"/Ferrobank.app"_s;
}

QJsonObject UpdateStage::request() const
{
    return {{u"bundle"_s, _root}, {u"stall"_s, 700}};
}

WorkerOutcome UpdateStage::run(const QString& command, const QJsonObject& more) const
{
    QJsonObject whole = request();
    for (auto it = more.begin(); it != more.end(); ++it)
        whole[it.key()] = it.value();
    return runWorker(command, whole, environment);
}

WorkerOutcome UpdateStage::check(bool byUser) const
{
    return run(u"check"_s, {{u"byUser"_s, byUser}});
}

WorkerOutcome UpdateStage::fetch(const QJsonObject& offer) const
{
    return run(u"fetch"_s, {{u"offer"_s, offer}});
}

WorkerOutcome UpdateStage::update() const
{
    const WorkerOutcome checked = check();
    if (!checked.last().contains(u"offer"_s))
        return checked;
    const WorkerOutcome fetched = fetch(checked.last()[u"offer"_s].toObject());
    return fetched.lastEvent() == u"staged"_s ? run(u"install"_s) : fetched;
}

QString UpdateStage::installedVersion() const
{
    const auto place = updates::InstallPlace::of(_root.toStdString());
    try {
        return QString::fromStdString(updates::checkTree(place.stableRoot()).version);
    } catch (const updates::UpdateFailure&) {
        return {};
    }
}

QStringList UpdateStage::leftovers() const
{
    QStringList names = QDir(staging()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& name : {u"lock"_s, u"trial-lock"_s, u"bad"_s})
        names.removeAll(name);
    return names;
}

} // namespace ferrobank
