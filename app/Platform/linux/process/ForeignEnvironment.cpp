#include "Platform/linux/process/ForeignEnvironment.h"

#include <QtCore/QFile>

#include <unistd.h>

#include <algorithm>
#include <array>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<QStringView, 14> kOurs{
    u"LD_LIBRARY_PATH",
    u"LD_PRELOAD",
    u"QT_PLUGIN_PATH",
    u"QML_IMPORT_PATH",
    u"QML2_IMPORT_PATH",
    u"QT_QPA_PLATFORM_PLUGIN_PATH",
    u"QT_QUICK_BACKEND",
    u"QT_WAYLAND_CLIENT_BUFFER_INTEGRATION",
    u"APPDIR",
    u"APPIMAGE",
    u"ARGV0",
    u"OWD",
    u"XDG_ACTIVATION_TOKEN",
    u"DESKTOP_STARTUP_ID",
};

QString valueOf(const QStringList& variables, const QString& name)
{
    for (const QString& variable : variables) {
        if (variable.startsWith(name + u'=')) {
            return variable.mid(name.size() + 1);
        }
    }
    return {};
}

QString withoutFoldersBelow(const QString& searchPath, const QString& folder)
{
    QStringList folders = searchPath.split(u':', Qt::SkipEmptyParts);
    folders.removeIf(
        [&folder](const QString& entry) { return entry == folder || entry.startsWith(folder + u'/'); });
    return folders.join(u':');
}

} // namespace

QStringList foreignEnvironment(const QString& activationToken)
{
    QStringList ours;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        ours.append(QFile::decodeName(*variable));
    }
    return foreignEnvironment(ours, activationToken);
}

QStringList foreignEnvironment(const QStringList& ours, const QString& activationToken)
{
    const QString image = valueOf(ours, u"APPDIR"_s);
    QStringList theirs;
    for (const QString& variable : ours) {
        const QString name = variable.section(u'=', 0, 0);
        if (std::find(kOurs.begin(), kOurs.end(), name) != kOurs.end()) {
            continue;
        }
        if (name == u"PATH" && !image.isEmpty()) {
            theirs.append(u"PATH="_s + withoutFoldersBelow(variable.section(u'=', 1), image));
        } else {
            theirs.append(variable);
        }
    }
    if (!activationToken.isEmpty()) {
        theirs.append(u"XDG_ACTIVATION_TOKEN="_s + activationToken);
        theirs.append(u"DESKTOP_STARTUP_ID="_s + activationToken);
    }
    return theirs;
}

} // namespace ferrobank
