#include "support/ProcessFacts.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <unistd.h>

namespace ferrobank::test {

using namespace Qt::StringLiterals;

namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A field of /proc/self/status that is given in kilobytes.
qint64 bytesOf(const QByteArray& status, const QByteArray& field)
{
    const qsizetype at = status.indexOf('\n' + field + ':') + field.size() + 2;
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toLongLong() * 1024;
}

QStringList processes()
{
    return QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs);
}

} // namespace

ProcessFacts::ProcessFacts()
    : openDescriptors(static_cast<int>(
          QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size()))
{
    const QByteArray status = contents(u"/proc/self/status"_s);
    residentBytes = bytesOf(status, "VmRSS");
    peakBytes = bytesOf(status, "VmHWM");
}

void ProcessFacts::resetPeak()
{
    QFile file(u"/proc/self/clear_refs"_s);
    if (file.open(QIODevice::WriteOnly)) {
        file.write("5");
    }
}

bool ProcessFacts::freedMemoryIsReused()
{
#if defined(__SANITIZE_ADDRESS__)
    return false;
#elif defined(__has_feature)
    return !__has_feature(address_sanitizer);
#else
    return true;
#endif
}

int ProcessFacts::children() const
{
    const QByteArray ids = contents(u"/proc/self/task/%1/children"_s.arg(::getpid())).simplified();
    return ids.isEmpty() ? 0 : static_cast<int>(ids.split(' ').size());
}

QList<int> ProcessFacts::processesRunning(const QString& executable) const
{
    QList<int> ids;
    const QString wanted = QFileInfo(executable).canonicalFilePath();
    for (const QString& process : processes()) {
        if (QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(process)) == wanted) {
            ids.append(process.toInt());
        }
    }
    return ids;
}

} // namespace ferrobank::test
