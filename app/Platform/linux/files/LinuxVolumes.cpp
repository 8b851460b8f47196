#include "Platform/linux/files/LinuxVolumes.h"

#include "Platform/linux/files/CachedLookup.h"

#include <QtCore/QFile>

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <limits>
#include <system_error>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds kLimit{1};

quint64 product(quint64 one, quint64 other)
{
    constexpr quint64 kMost = std::numeric_limits<qint64>::max();
    quint64 result = 0;
    return __builtin_mul_overflow(one, other, &result) || result > kMost ? kMost : result;
}

} // namespace

VolumeCapacity capacityOf(quint64 blockSize, quint64 blocks, quint64 availableBlocks)
{
    VolumeCapacity capacity;
    if (blocks > 0) {
        capacity.total = product(blockSize, blocks);
        capacity.available = product(blockSize, availableBlocks);
    }
    return capacity;
}

QCoro::Task<VolumeCapacity> LinuxVolumes::capacity(QString path)
{
    const std::function<VolumeCapacity()> question = [file = QFile::encodeName(path)] {
        struct statvfs facts{};
        return ::statvfs(file.constData(), &facts) == 0
                   ? capacityOf(facts.f_frsize, facts.f_blocks, facts.f_bavail)
                   : VolumeCapacity();
    };
    const auto answer = co_await _elsewhere.ask(u"capacity "_s + path, question, kLimit);
    co_return answer.value_or(VolumeCapacity());
}

QCoro::Task<std::optional<bool>> LinuxVolumes::exists(QString path)
{
    const QByteArray encoded = QFile::encodeName(path);
    // Asked at every poll, and nearly always known: a thread would cost more than the rest of the poll's end.
    if (const std::optional<bool> known = existsInCache(encoded.constData())) {
        co_return known;
    }
    const std::function<bool()> question = [file = encoded] {
        struct stat facts{};
        if (::lstat(file.constData(), &facts) == 0) {
            return true;
        }
        if (errno == ENOENT || errno == ENOTDIR) {
            return false;
        }
        throw std::system_error(errno, std::generic_category());
    };
    co_return co_await _elsewhere.ask(u"exists "_s + path, question, kLimit);
}

} // namespace ferrobank
