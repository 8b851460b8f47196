#include "support/SmallFileSystem.h"

#include <QtCore/QFile>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>

namespace ferrobank::test {

using namespace Qt::StringLiterals;

namespace {

/// Before main(), because a process with several threads cannot do it.
const bool kPrivate = [] {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) {
        return false;
    }
    if (user != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}();

} // namespace

bool SmallFileSystem::isPossible()
{
    return kPrivate;
}

SmallFileSystem::SmallFileSystem(int kilobytes)
{
    const QByteArray options = "size=" + QByteArray::number(kilobytes) + "k,mode=755";
    if (::mount("none", QFile::encodeName(path()).constData(), "tmpfs", 0, options.constData()) != 0) {
        qFatal("cannot mount a file system in memory");
    }
}

SmallFileSystem::~SmallFileSystem()
{
    ::umount2(QFile::encodeName(path()).constData(), MNT_DETACH);
}

void SmallFileSystem::fill() const
{
    std::ofstream filler(file(u"filler"_s).toStdString(), std::ios::app);
    const std::string block(4096, 'x');
    while (filler << block << std::flush) {
    }
}

void SmallFileSystem::makeReadOnly() const
{
    if (::mount(nullptr, QFile::encodeName(path()).constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) !=
        0)
    {
        qFatal("cannot make the file system read-only");
    }
}

} // namespace ferrobank::test
