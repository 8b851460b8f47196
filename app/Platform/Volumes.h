#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// Capacities of the file system that holds a path, in bytes. Absent means that the system does not tell.
struct VolumeCapacity {
    std::optional<quint64> total;
    std::optional<quint64> available; ///< for a file of the user, without what is reserved for the system
};

/// Questions to file systems that may be dead or slow. Main thread; asked elsewhere and answered within a
/// second, or as unknown.
class Volumes {
public:
    virtual ~Volumes() = default;

    virtual QCoro::Task<VolumeCapacity> capacity(QString path) = 0;

    /// Whether anything, a dangling link included, is at the path. No value when the file system does not
    /// answer.
    virtual QCoro::Task<std::optional<bool>> exists(QString path) = 0;
};

} // namespace ferrobank
