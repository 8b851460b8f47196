#pragma once

#include "Platform/Volumes.h"
#include "support/fakes/Gate.h"

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ferrobank {

/// File systems in memory: what is there, and what does not answer.
class FakeVolumes : public Volumes {
public:
    QSet<QString> present;
    QSet<QString> silent; ///< paths on a file system that does not answer
    QHash<QString, VolumeCapacity> capacities;
    QStringList existenceQuestions;
    Gate answered; ///< open at first; shut it to keep questions of existence waiting

    FakeVolumes() { answered.open(); }

    QCoro::Task<VolumeCapacity> capacity(QString path) override { co_return capacities.value(path); }

    QCoro::Task<std::optional<bool>> exists(QString path) override
    {
        existenceQuestions.append(path);
        auto answer = answered.passage();
        co_await answer;
        if (silent.contains(path)) {
            co_return std::nullopt;
        }
        co_return present.contains(path);
    }
};

} // namespace ferrobank
