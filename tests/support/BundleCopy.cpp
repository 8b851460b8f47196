#include "support/BundleCopy.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <unistd.h>

#include <array>
#include <string>

namespace ferrobank::test {

using namespace Qt::StringLiterals;

namespace {

void copyFile(const QString& from, const QString& to)
{
    if (!QDir().mkpath(QFileInfo(to).path()) || !QFile::copy(from, to)) {
        qFatal("cannot copy %s to %s", qPrintable(from), qPrintable(to));
    }
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

QByteArray linkTarget(const QByteArray& link)
{
    std::array<char, 4096> target{};
    const ssize_t length = readlink(link.constData(), target.data(), target.size());
    return length < 0 ? QByteArray() : QByteArray(target.data(), length);
}

} // namespace

BundleCopy::BundleCopy(const QString& folder) : _root(folder + u"/Ferrobank.app"_s)
{
    copyFile(QStringLiteral(FERROBANK_EXECUTABLE), executable());
    copyFile(QStringLiteral(FERROBANK_AGENT_PLIST), agentPropertyList());
    copyFile(QStringLiteral(SCRIPTED_DRIVE_TOOL), driveTool());
    writeFile(driveTool() + u".scenario"_s, R"({"runs": [{"play": [{"hang": true}]}]})");
}

QString BundleCopy::executable() const
{
    return besideExecutable(u"Ferrobank"_s);
}

QString BundleCopy::driveTool() const
{
    return _root + u"/Contents/Helpers/ferrobank"_s;
}

QString BundleCopy::agentPropertyList() const
{
    return _root + u"/Contents/Library/LaunchAgents/org.ferrobank.Ferrobank.agent.plist"_s;
}

QString BundleCopy::besideExecutable(const QString& name) const
{
    return _root + u"/Contents/Linux/"_s + name;
}

QList<int> BundleCopy::processes(const QStringList& arguments) const
{
    const QByteArray program = QFile::encodeName(QFileInfo(driveTool()).canonicalFilePath());
    QByteArray tail;
    for (const QString& argument : arguments) {
        tail += argument.toUtf8() + '\0';
    }
    QList<int> found;
    for (const QString& name : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        bool isNumber = false;
        const int number = name.toInt(&isNumber);
        const QByteArray process = "/proc/" + name.toLatin1();
        QFile commandLine(QString::fromLatin1(process + "/cmdline"));
        if (!isNumber || linkTarget(process + "/exe") != program || !commandLine.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QByteArray words = commandLine.readAll();
        if (words.mid(words.indexOf('\0') + 1) == tail) {
            found.append(number);
        }
    }
    return found;
}

void BundleCopy::moveTo(const QString& folder)
{
    const QString root = folder + u"/Ferrobank.app"_s;
    if (!QDir().mkpath(folder) || !QDir().rename(_root, root)) {
        qFatal("cannot move the bundle");
    }
    _root = root;
}

} // namespace ferrobank::test
